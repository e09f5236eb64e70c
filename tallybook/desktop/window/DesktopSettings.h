// What the desktop remembers of books between its runs, in books.ini of the user's state folder: which were opened
// lately, and how each was looked at; and where the main window stood. What cannot be read or written is passed over: a
// window that opens in another place is no reason to keep anybody from a book. One thread.
#pragma once

#include <vector>

#include "base/Types.h"
#include "tallybook/desktop/figures/FigureTable.h"
#include "tallybook/settings/SettingsFile.h"

namespace tallybook::desktop {

// How a book was looked at last.
struct BookLook {
  FigureChoice choice;
  Text sizes;  // of the panes, as Qt tells them, in hexadecimal digits; empty: none yet
  bool chart = true;
  bool against_year_before = true;
};

class DesktopSettings {
 public:
  // `path` is that of the file; its folder is made when something is written.
  explicit DesktopSettings(Text path);

  // Paths, the latest first, at most kMostRecent.
  static constexpr std::size_t kMostRecent = 8;
  [[nodiscard]] std::vector<Text> RecentBooks() const;
  void NoteBook(const Text& path);
  void ForgetBook(const Text& path);

  [[nodiscard]] BookLook LookOf(const Text& book) const;
  void KeepLook(const Text& book, const BookLook& look);

  // Any other thing by its name.
  [[nodiscard]] Text Value(const Text& key, const Text& otherwise) const;
  void SetValue(const Text& key, const Text& value);

 private:
  void WriteRecent(const std::vector<Text>& books);
  [[nodiscard]] Text Read(const Text& section, const Text& key, const Text& otherwise) const;
  void Write(const Text& section, const Text& key, const Text& value);

  Text path_;
};

// Where the user keeps what he makes: the folder of documents, or where there is none yet, his own.
[[nodiscard]] Text DocumentsFolder();

// books.ini in the user's state folder.
[[nodiscard]] Text DesktopSettingsPath();

}  // namespace tallybook::desktop
