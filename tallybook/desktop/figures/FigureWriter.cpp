#include "tallybook/desktop/figures/FigureWriter.h"

#include <limits>
#include <utility>

#include "base/Failure.h"
#include "platform/Platform.h"
#include "tallybook/application/OpenToChange.h"
#include "tallybook/engine/BookHold.h"
#include "tallybook/engine/Journal.h"

namespace tallybook::desktop {

void FigureWriter::Add(const Text& what_ran, std::vector<application::FigureChange> changes) {
  if (!changes.empty()) line_.push_back({.is_undo = false, .what_ran = what_ran, .changes = std::move(changes)});
}

void FigureWriter::AddUndo() {
  if (Waits() && !line_.back().is_undo) {
    line_.pop_back();
  } else if (written_.size() > line_.size()) {
    line_.push_back({.is_undo = true, .what_ran = {}, .changes = {}});
  }
}

FigureWriter::Outcome FigureWriter::Try() {
  words_.clear();
  while (Waits()) {
    try {
      CarryOut(line_.front());
      line_.pop_front();
    } catch (const Failure& failure) {
      words_ = failure.Description();
      if (engine::IsInUse(failure)) return Outcome::kWaits;
      line_.pop_front();
      return Outcome::kFailed;
    }
  }
  return Outcome::kDone;
}

void FigureWriter::CarryOut(const Step& step) {
  engine::BookOptions options;
  options.commit_seconds = std::numeric_limits<double>::max();  // a paste is one transaction, however long it takes
  options.notice = [this](const Text& line) { notices_.push_back(line); };
  const auto book = application::OpenToChange(path_, app_, options, *ThePlatform().files);
  step.is_undo ? TakeBack(*book) : Write(*book, step);
  book->Close();
}

void FigureWriter::Write(engine::Book& book, const Step& step) {
  application::ChangeFigures(book, step.what_ran, step.changes);
  written_.push_back({engine::Journal(book).Entries().back().id, step.what_ran});
}

// What cannot be taken back now, because others have built on it, can be when they have taken theirs back.
void FigureWriter::TakeBack(engine::Book& book) {
  if (written_.empty()) return;
  book.SetOperation(engine::JournalKind::kUndo, "undo of what was typed");
  (void)engine::Journal(book).Undo(written_.back().entry);
  written_.pop_back();
}

std::vector<application::FigureChange> FigureWriter::Unwritten() const {
  std::vector<application::FigureChange> changes;
  for (const Step& step : line_) changes.insert(changes.end(), step.changes.begin(), step.changes.end());
  return changes;
}

Text FigureWriter::NextUndo() const {
  if (Waits() && !line_.back().is_undo) return line_.back().what_ran;
  if (written_.size() <= line_.size()) return "";
  return written_[written_.size() - 1 - line_.size()].what_ran;
}

}  // namespace tallybook::desktop
