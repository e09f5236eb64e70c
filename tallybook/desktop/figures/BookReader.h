// The window's own look into a book: a connection that is open while something is read, and shut at rest, so that a writer
// beside it can put its log back and nobody is kept from anything. It never is the book that a conversation works on.
//
// What the book is made of (its lists and calendar) stays known at rest. One thread.
#pragma once

#include <memory>

#include "base/Types.h"
#include "host/HostApp.h"
#include "tallybook/engine/Book.h"
#include "tallybook/engine/FileState.h"

namespace tallybook::desktop {

class BookReader {
 public:
  // Reads the book once, so that its lists are known. `app` must outlive the reader. Fails as Book::Open.
  BookReader(const Text& path, HostApp& app);

  // The path of the file itself: links are followed.
  [[nodiscard]] const Text& Path() const { return path_; }
  [[nodiscard]] const engine::BookDescription& Description() const { return *description_; }
  [[nodiscard]] const engine::Calendar& CalendarRules() const { return *calendar_; }

  // The book as it was committed when the read began: at the first call after Rest or Refresh. Fails as Book::Open.
  [[nodiscard]] engine::Book& Read();
  // Ends the read.
  void Rest();
  // Whether the file has been written since the last read began, by whomever. Does not open it.
  [[nodiscard]] bool HasChanged() const;
  // Ends the read, and begins one that shows what has been committed by now. Fails as Book::Open, and leaves the reader
  // at rest then.
  void Refresh();

  // Rises whenever a read has begun on a file that may differ from what the one before saw: what was kept of the
  // figures is out of date then. That of the lists rises when accounts, fields or the calendar are others.
  [[nodiscard]] Long FiguresSeen() const { return figures_seen_; }
  [[nodiscard]] Long ListsSeen() const { return lists_seen_; }

 private:
  struct Files {
    engine::FileState book;
    engine::FileState log;  // as none where it holds nothing: each reader makes and takes away an empty one
    bool operator==(const Files&) const = default;
  };
  [[nodiscard]] Files StateOfFiles() const;
  void Open();
  void TakeDescription();

  Text path_;
  HostApp& app_;
  std::unique_ptr<engine::Book> book_;
  std::shared_ptr<const engine::BookDescription> description_;
  std::unique_ptr<engine::Calendar> calendar_;
  Files seen_;
  bool was_settled_ = false;
  Long figures_seen_ = 0;
  Long lists_seen_ = 0;
};

}  // namespace tallybook::desktop
