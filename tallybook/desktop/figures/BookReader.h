// The window's own look into a book: a connection that is open while something is read, and shut at rest, so that a
// writer beside it can put its log back and nobody is kept from anything. It never is the book that a conversation
// works on.
//
// What the book is made of (its lists and calendar) stays known at rest, and stays as it is known until TakeLists:
// whoever shows rows and columns says when they become others, and what is read meanwhile is that of the accounts and
// fields known. One thread.
#pragma once

#include <functional>
#include <memory>
#include <vector>

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
  // Visits the figures of an account from `first` to `last`, in the order of dates: of one field, or with 0 of all.
  // Account and fields go by their positions in the lists known; what the book has no more has no figures. Fails as
  // Read.
  struct FigureSeen {
    Date date = 0;
    Integer field = 0;  // position
    Double value = 0;
  };
  void VisitAccount(Integer account, Date first, Date last, Integer field,
                    const std::function<void(const FigureSeen&)>& visit);
  // The last date up to `until` on which the first account that has figures by then has one; `until` where none has.
  // Fails as Read.
  [[nodiscard]] Date DateOfNewestFigures(Date until);
  // Whether the file has been written since the last read began, by whomever. Does not open it.
  [[nodiscard]] bool HasChanged() const;
  // Ends the read, and begins one that shows what has been committed by now. Fails as Book::Open, and leaves the reader
  // at rest then.
  void Refresh();

  // Rises whenever a read has begun on a file that may differ from what the one before saw: what was kept of the
  // figures is out of date then.
  [[nodiscard]] Long FiguresSeen() const { return figures_seen_; }
  // Whether the last read has found other accounts, fields or another calendar than are known; TakeLists makes them
  // known. False where there are none.
  [[nodiscard]] bool HasOtherLists() const { return found_ != nullptr; }
  bool TakeLists();
  // Rises with each TakeLists that was true.
  [[nodiscard]] Long ListsSeen() const { return lists_seen_; }

 private:
  struct Files {
    engine::FileState book;
    engine::FileState log;  // as none where it holds nothing: each reader makes and takes away an empty one
    bool operator==(const Files&) const = default;
  };
  [[nodiscard]] Files StateOfFiles() const;
  void Open();
  void LookAtLists();

  Text path_;
  HostApp& app_;
  std::unique_ptr<engine::Book> book_;
  std::unique_ptr<const engine::BookDescription> description_;
  std::unique_ptr<const engine::BookDescription> found_;  // where it differs
  std::vector<Integer> known_fields_;                     // the positions known, by those found
  std::unique_ptr<engine::Calendar> calendar_;
  Files seen_;
  bool was_settled_ = false;
  Long figures_seen_ = 0;
  Long lists_seen_ = 0;
};

}  // namespace tallybook::desktop
