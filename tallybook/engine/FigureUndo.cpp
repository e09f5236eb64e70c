#include "tallybook/engine/FigureUndo.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <functional>
#include <numeric>
#include <string>

#include "base/Dates.h"
#include "base/Failure.h"
#include "tallybook/engine/ChunkKey.h"

namespace tallybook::engine {

namespace {

constexpr const char* kSource = "Tallybook.Journal";

std::span<const JournalRow> Behind(const std::vector<JournalRow>& journal, Long entry) {
  const auto first = std::ranges::upper_bound(journal, entry, {}, [](const JournalRow& row) { return row.entry.id; });
  return {first, journal.end()};
}

std::vector<Integer> FieldsOfSlots(const StoredDescription& stored) {
  std::vector<Integer> fields(std::max<std::size_t>(stored.slots, 1), 0);
  for (std::size_t place = 0; place < stored.slot_of_field.size(); ++place) {
    fields[stored.slot_of_field[place]] = stored.description.fields[place].number;
  }
  return fields;
}

}  // namespace

FigureUndo::FigureUndo(const Means& means, UndoWay way, std::size_t most_listed, const std::vector<JournalRow>& journal,
                       const JournalRow& entry, UndoOutcome& outcome)
    : means_(means),
      way_(way),
      most_listed_(most_listed),
      entry_(entry),
      later_entries_(Behind(journal, entry.entry.id)),
      later_marks_(means.images, entry, later_entries_),
      outcome_(outcome),
      zeros_(means.images.Shape().fields),
      field_of_slot_(FieldsOfSlots(means.description)) {}

RowBits FigureUndo::Apply(const EntryRows& rows, ChunkRows& now) {
  LoadLater(rows.key);
  const ChunkShape& shape = means_.images.Shape();
  RowBits changed = NoRowBits(shape.rows);
  std::vector<Double> becomes(shape.fields);
  ForEachBit(rows.rows, [&](std::size_t row) {
    const Double* stands = FiguresOf(now, row);
    PutBack(row, FiguresOf(rows.before, row), stands, becomes);
    const auto differ =
        std::transform_reduce(becomes.begin(), becomes.end(), stands, 0LL, std::plus(), std::not_equal_to());
    if (differ == 0) return;
    outcome_.figures += differ;
    SetBit(changed, row);
    std::ranges::copy(becomes, now.Hold(row, shape));
  });
  return changed;
}

// What a row becomes.
void FigureUndo::PutBack(std::size_t row, const Double* before, const Double* stands, std::span<Double> becomes) {
  const LeftRow left = LeftIn(row, stands);
  const bool nothing_came_since = left.known && left.figures == stands;
  if (nothing_came_since) {
    std::copy_n(before, becomes.size(), becomes.begin());
    return;
  }
  for (std::size_t slot = 0; slot < becomes.size(); ++slot) {
    becomes[slot] = Decide(row, slot, before[slot],
                           left.known ? std::optional<Double>(left.figures[slot]) : std::nullopt, stands[slot]);
  }
}

void FigureUndo::LoadLater(std::int64_t key) {
  key_ = key;
  later_.clear();
  all_later_.clear();
  all_later_are_read_ = false;
  for (const std::size_t place : later_marks_.Of(key)) {
    const JournalRow& entry = later_entries_[place];
    later_.push_back({&entry, means_.images.Find(entry.entry, key)});
  }
}

FigureUndo::LeftRow FigureUndo::LeftIn(std::size_t row, const Double* stands) const {
  for (const Later& later : later_) {
    if (!later.rows || !HasBit(later.rows->rows, row)) continue;
    if (!later.entry->entry.keeps_images) return {.known = false};
    return {.figures = FiguresOf(later.rows->before, row)};
  }
  return {.figures = stands};
}

const Double* FigureUndo::FiguresOf(const ChunkRows& rows, std::size_t row) const {
  const Double* figures = rows.Find(row, zeros_.size());
  return figures != nullptr ? figures : zeros_.data();
}

// A figure of a field that is gone cannot be told to anyone: it is put back where that is sure to be right.
Double FigureUndo::Decide(std::size_t row, std::size_t slot, Double before, std::optional<Double> left, Double now) {
  if (left && *left == before) return now;
  if (way_ == UndoWay::kReverse) return TakenOut(row, slot, before, left, now);
  if (now == before || (left && now == *left)) return before;
  if (field_of_slot_[slot] != 0) NoteChangedSince(row, slot, before, left, now);
  return way_ == UndoWay::kForce ? before : now;
}

Double FigureUndo::TakenOut(std::size_t row, std::size_t slot, Double before, std::optional<Double> left, Double now) {
  if (!left) RefuseUntold(row, slot);
  if (now == *left) return before;
  const Double result = now - (*left - before);
  if (std::isfinite(result)) return result;
  throw Failure(FailureNumber::kOverflow,
                means_.book + ": journal entry " + std::to_string(entry_.entry.id) +
                    " cannot be taken out: what is left of " + Named(row, slot) + " is too large for a figure",
                kSource);
}

void FigureUndo::NoteChangedSince(std::size_t row, std::size_t slot, Double before, std::optional<Double> left,
                                  Double now) {
  if (means_.told != nullptr && !means_.told->emplace(key_, row, slot).second) return;
  ++outcome_.changed_since;
  if (outcome_.listed.size() >= most_listed_) return;
  outcome_.listed.push_back({.entry = entry_.entry.id,
                             .account_number = AccountOf(key_),
                             .date = means_.date_of(key_, row),
                             .field_number = field_of_slot_[slot],
                             .before = before,
                             .left = left,
                             .now = now,
                             .later = LastToChange(row, slot, now)});
}

// Back from what stands now to the first entry that had something else before. Of one that kept no figures from before
// nothing else is known.
Long FigureUndo::LastToChange(std::size_t row, std::size_t slot, Double now) {
  if (!all_later_are_read_) {
    for (auto entry = later_entries_.rbegin(); entry != later_entries_.rend(); ++entry) {
      if (entry->marks == 0) continue;
      if (auto rows = means_.images.Find(entry->entry, key_)) all_later_.push_back({&*entry, std::move(rows)});
    }
    all_later_are_read_ = true;
  }
  Long last = 0;
  for (const Later& later : all_later_) {
    if (!HasBit(later.rows->rows, row)) continue;
    last = later.entry->entry.id;
    if (!later.entry->entry.keeps_images || FiguresOf(later.rows->before, row)[slot] != now) break;
  }
  return last;
}

Text FigureUndo::Named(std::size_t row, std::size_t slot) const {
  Text code = std::to_string(AccountOf(key_));
  for (const AccountDescription& account : means_.description.description.accounts) {
    if (account.number == AccountOf(key_)) code = account.code;
  }
  return "account " + code + ", " + DateText(means_.date_of(key_, row)) + ", field " +
         std::to_string(field_of_slot_[slot]);
}

void FigureUndo::RefuseUntold(std::size_t row, std::size_t slot) const {
  Text later;
  for (const Later& candidate : later_) {
    if (later.empty() && !candidate.entry->entry.keeps_images && HasBit(candidate.rows->rows, row)) {
      later = std::to_string(candidate.entry->entry.id);
    }
  }
  throw Failure(FailureNumber::kInvalidArgument,
                means_.book + ": what journal entry " + std::to_string(entry_.entry.id) + " added to " +
                    Named(row, slot) + " cannot be told: entry " + later +
                    ", which kept no figures from before, has written the record again",
                kSource);
}

}  // namespace tallybook::engine
