// The lists and years of a book while a user edits them: what they are to become, checked at every step as a change of
// the book is, and the way back step by step. Plain data; no widget, no file.
//
//   ListsDraft draft(book.Stored(), book.Path());
//   draft.Add({0, "4200", "Kiosk"}, position);       // Failure 5 in the words of the check, with nothing changed
//   if (draft.IsChanged()) book.Grow(draft.Now(), ...);
//
// One thread.
#pragma once

#include <deque>
#include <set>
#include <vector>

#include "base/Types.h"
#include "tallybook/engine/BookDescription.h"
#include "tallybook/engine/BookGrowth.h"
#include "tallybook/engine/StoredDescription.h"

namespace tallybook::desktop {

// What a row of a list is beside that of the book.
enum class RowState { kAsItIs, kAdded, kChanged, kMoved };

class ListsDraft {
 public:
  // `path` is what the check calls the book.
  ListsDraft(engine::StoredDescription stored, Text path);

  [[nodiscard]] const engine::BookDescription& Now() const { return now_.description; }
  // The book's own, as it was when the draft was begun.
  [[nodiscard]] const engine::StoredDescription& Stored() const { return stored_; }
  [[nodiscard]] bool IsChanged() const { return now_.description != stored_.description; }
  [[nodiscard]] engine::BookDifference Difference() const;

  // All fail with 5 and change nothing: as the functions of application/ListEdits.h, and as CheckGrowth. Numbers name
  // rows that the lists have. A number of 0 is a free one; accounts are added at a position, one behind the other.
  void Add(const std::vector<engine::AccountDescription>& accounts, Long position);
  void Add(const engine::FieldDescription& field, Long position);
  // At the end of the list, with numbers of their own.
  void AddFields(const std::vector<engine::FieldDescription>& fields);
  void Edit(Long number, const Text& code, const Text& description);
  void EditField(Integer number, const Text& description, bool system);
  // What is moved again and again is one step on the way back.
  void Move(Long number, Long position);
  void MoveField(Integer number, Long position);
  void Remove(const std::vector<Long>& accounts);
  void RemoveFields(const std::vector<Integer>& fields);
  // Held are at least those of the book. Choosing again and again is one step.
  void SetYears(Long held, Long in_use);
  // The highest numbers that accounts and fields may have; they can only grow.
  void SetLimits(Long accounts, Long fields);

  // Takes another state of the book for its own, because others have changed it: what was edited is done once more, as
  // far as the rows are there still; numbers that were taken meanwhile are given anew. The way back begins anew. Gives
  // why that is no sound change, and the draft is the book's new state alone then; empty where it is one.
  [[nodiscard]] Text Rebase(engine::StoredDescription stored);

  [[nodiscard]] bool CanUndo() const { return !done_.empty(); }
  // "adding 4200"; empty where nothing can be taken back.
  [[nodiscard]] Text NextUndo() const { return done_.empty() ? Text() : done_.back().what; }
  void Undo();

  // By position, from 0: those of the whole list at once.
  [[nodiscard]] std::vector<RowState> AccountStates() const;
  [[nodiscard]] std::vector<RowState> FieldStates() const;

 private:
  // What a step did to a list: the rows that it added, changed, moved or removed, and where those stood that were
  // there.
  template <typename Row>
  struct Swap {
    std::set<Long> touched;                      // numbers
    std::vector<engine::PlacedRow<Row>> before;  // by their positions, rising
  };
  struct Step {
    Text what;
    Long moved = 0;  // the number of the row that was moved; 0: something else was done
    bool is_field = false;
    bool is_years = false;
    Swap<engine::AccountDescription> accounts = {};
    Swap<engine::FieldDescription> fields = {};
    engine::CalendarDescription calendar = {};  // from before, as the limits
    Long max_accounts = 0;
    Long max_fields = 0;
  };

  template <typename Row>
  static Swap<Row> SwapOf(const engine::ListDifference<Row>& list, const std::vector<Row>& before);
  template <typename Row>
  static Swap<Row> SwapOf(Long moved, const std::vector<Row>& before);
  template <typename Row>
  static void TakeBack(const Swap<Row>& swap, std::vector<Row>& rows);
  void Take(const engine::BookDescription& after, Step step);
  void Retire();

  engine::StoredDescription stored_;
  engine::StoredDescription now_;  // with the numbers retired that are free in the draft alone
  Text path_;
  std::deque<Step> done_;
};

}  // namespace tallybook::desktop
