// Opens books for the application's windows: with the cache that the installation has set, its progress display and
// report heads, and where a book to be changed is open elsewhere, with a window that says for whom it waits. One
// thread.
#pragma once

#include <memory>
#include <vector>

#include "tallybook/application/ReportHeads.h"
#include "tallybook/desktop/host/DesktopApp.h"
#include "tallybook/engine/Book.h"

class QWidget;

namespace tallybook::desktop {

// What a book that was opened has to say: it was brought up to date, or nothing can be taken back.
struct OpenedBook {
  std::unique_ptr<engine::Book> book;  // null where the user did not want to wait
  std::vector<Text> notices;
};

class BookOpener {
 public:
  // How often a book that is in use is tried again, in milliseconds.
  static constexpr int kTryEvery = 300;

  // All of them outlive the opener and its books.
  BookOpener(DesktopApp& app, engine::ProgressDisplay& progress) : app_(app), progress_(progress) {}

  // Both fail as Book::Open does, but for a book that is in use: to change it is waited for, over the window `owner`,
  // until it is free or the user cancels.
  [[nodiscard]] OpenedBook OpenToRead(const Text& path);
  [[nodiscard]] OpenedBook OpenToChange(const Text& path, QWidget* owner);

 private:
  [[nodiscard]] OpenedBook Open(const Text& path, bool read_only);

  DesktopApp& app_;
  engine::ProgressDisplay& progress_;
  application::ReportHeads report_heads_;
};

}  // namespace tallybook::desktop
