// Writes what is typed or pasted into a book, and takes it back: each time the right to write is taken for one change,
// and given back. A change that has to wait, because the book is open for writing elsewhere, stays in line with those
// behind it until it is tried again or given up. One thread.
#pragma once

#include <deque>
#include <utility>
#include <vector>

#include "base/Types.h"
#include "host/HostApp.h"
#include "tallybook/application/FigureChanges.h"
#include "tallybook/engine/Book.h"

namespace tallybook::desktop {

class FigureWriter {
 public:
  enum class Outcome {
    kDone,    // nothing is left in line
    kWaits,   // the book is open for writing elsewhere; Words says for whom
    kFailed,  // the first in line could not be written and was dropped; Words says why
  };

  // `app` must outlive it. `path` is the book's.
  FigureWriter(const Text& path, HostApp& app) : path_(path), app_(app) {}

  // Puts a change behind those that wait. An empty one is none.
  void Add(const Text& what_ran, std::vector<application::FigureChange> changes);
  // Puts taking back behind them: of what was written last through this writer and stands, with a paste as one. A
  // change that waits still is simply given up.
  void AddUndo();
  // Something else has written an entry for the user, which AddUndo takes back in its turn. Nothing waits.
  void Note(Long entry, const Text& what_ran) { written_.push_back({entry, what_ran}); }
  // Such an entry has been taken back elsewhere.
  void Forget(Long entry) {
    std::erase_if(written_, [entry](const Written& each) { return each.entry == entry; });
  }
  // Carries out what is in line, in order, until something waits or fails.
  [[nodiscard]] Outcome Try();
  // Gives up all that waits; nothing of it is written.
  void GiveUp() { line_.clear(); }

  [[nodiscard]] bool Waits() const { return !line_.empty(); }
  [[nodiscard]] std::size_t InLine() const { return line_.size(); }
  // The changes that have not been written yet, oldest first.
  [[nodiscard]] std::vector<application::FigureChange> Unwritten() const;
  [[nodiscard]] const Text& Words() const { return words_; }
  // What the book had to say since the last call, as it was opened: a line each.
  [[nodiscard]] std::vector<Text> TakeNotices() { return std::exchange(notices_, {}); }
  [[nodiscard]] bool CanUndo() const { return Waits() || !written_.empty(); }
  // What Undo would take back: "set 100 2003-01-05 1 12.5".
  [[nodiscard]] Text NextUndo() const;
  // Its entry in the journal; 0 where it has none, or where undos wait before it.
  [[nodiscard]] Long NextUndoEntry() const { return Waits() || written_.empty() ? 0 : written_.back().entry; }

 private:
  struct Step {
    bool is_undo = false;
    Text what_ran;
    std::vector<application::FigureChange> changes;
  };
  struct Written {
    Long entry = 0;  // of the journal
    Text what_ran;
  };

  void CarryOut(const Step& step);
  void Write(engine::Book& book, const Step& step);
  void TakeBack(engine::Book& book);

  Text path_;
  HostApp& app_;
  std::deque<Step> line_;
  std::vector<Written> written_;
  Text words_;
  std::vector<Text> notices_;
};

}  // namespace tallybook::desktop
