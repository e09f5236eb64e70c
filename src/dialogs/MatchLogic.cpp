#include "dialogs/MatchLogic.h"

#include <algorithm>
#include <cstdint>

#include "base/CodePage.h"
#include "base/Narrow.h"
#include "base/Texts.h"
#include "forms/Keys.h"

namespace tallybook {

namespace {

// Codes of key presses.
constexpr Integer kBackspaceCode = 8;
constexpr Integer kBlankCode = 32;
constexpr Integer kDeleteCode = 46;  // the point's
constexpr Integer kHighestCode = 255;

// A page leaves so many rows in sight.
constexpr Long kRowsKept = 2;

Text Character(Integer code) {
  return FromCodePage(std::string(1, static_cast<char>(code)));
}

Text WithoutLastCharacter(const Text& text) {
  std::size_t last = 0;
  for (std::size_t offset = 0; offset < text.size(); offset += CharacterLength(text, offset)) last = offset;
  return text.substr(0, last);
}

}  // namespace

// --- The table -------------------------------------------------------------------------------------------------------

void MatchTable::Reset() {
  for (Row& row : rows_) row.fill(0);
}

Integer& MatchTable::operator()(MatchPage page, Long index) {
  if (index < 0 || index > kHighestIndex) FailOutsideTable(index, kHighestIndex);
  return rows_[page == MatchPage::kAccounts ? 0 : 1][static_cast<std::size_t>(index)];
}

Integer MatchTable::operator()(MatchPage page, Long index) const {
  if (index < 0 || index > kHighestIndex) FailOutsideTable(index, kHighestIndex);
  return rows_[page == MatchPage::kAccounts ? 0 : 1][static_cast<std::size_t>(index)];
}

// --- Keys that search ------------------------------------------------------------------------------------------------

void TypeAhead::Reset() {
  text_.clear();
  EndTyping();
}

bool TypeAhead::IsLate(Long now) const {
  return static_cast<std::uint32_t>(now) - static_cast<std::uint32_t>(last_key_) > static_cast<std::uint32_t>(delay_);
}

bool TypeAhead::IsTypedOn(const MatchRow& row) const {
  return !text_.empty() && typed_page_ == row.page && typed_row_ == row.row;
}

KeyOutcome TypeAhead::Press(Integer code, Long now, const MatchRow& row, const MatchEntries& entries) {
  if (IsLate(now)) Reset();
  last_key_ = now;
  switch (code) {
    case kDeleteCode:
      Reset();
      return {.select = 0};
    case kBackspaceCode:
      return Backspace(row, entries);
    case kBlankCode:
      return text_.empty() ? KeyOutcome() : Type(" ", row, entries);
    case '*':
      return MatchByText(row, entries);
    case '+':
      return Plus(row, entries);
    case '0':
      if (IsTypedOn(row)) return Type("0", row, entries);
      EndTyping();
      return {.select = entries.WithValue(0), .steps = true};
    default:
      if (code < kBlankCode || code > kHighestCode) return {};
      return Type(Character(code), row, entries);
  }
}

KeyOutcome TypeAhead::Search(const MatchEntries& entries) const {
  if (text_.empty()) return {};
  return {.select = entries.WithPrefix(text_)};
}

KeyOutcome TypeAhead::Type(const Text& character, const MatchRow& row, const MatchEntries& entries) {
  text_ += character;
  typed_page_ = row.page;
  typed_row_ = row.row;
  return Search(entries);
}

KeyOutcome TypeAhead::Backspace(const MatchRow& row, const MatchEntries& entries) {
  text_ = WithoutLastCharacter(text_);
  return Type("", row, entries);
}

KeyOutcome TypeAhead::MatchByText(const MatchRow& row, const MatchEntries& entries) {
  EndTyping();
  text_ = row.page == MatchPage::kAccounts ? row.name : row.description;
  const std::optional<Integer> found = entries.WithText(text_);
  return {.select = found ? found : entries.WithValue(0), .steps = true};
}

KeyOutcome TypeAhead::Plus(const MatchRow& row, const MatchEntries& entries) {
  EndTyping();
  if (row.page == MatchPage::kAccounts) return Search(entries);
  return {.select = entries.WithValue(LeadingLong(row.name)), .steps = true};
}

// --- Keys that move --------------------------------------------------------------------------------------------------

bool IsMovingKey(Integer key) {
  return key == kHomeKey || key == kDownKey || key == kUpKey || key == kPageDownKey || key == kPageUpKey;
}

MoveOutcome MoveByKey(Integer key, Integer shift, bool open, const MatchView& view) {
  constexpr Long kFirst = 1;
  const Long last = view.rows - 1;
  if (!IsMovingKey(key) || last < view.fixed_rows) return {};
  if (key == kHomeKey) return {.row = kFirst, .to_pick_column = true};
  if (open) return {};
  if (shift != 0) return {.row = {}, .opens = shift == kAltState};
  // A grid too low for a page pages by no row.
  const Long page = std::max(view.whole_rows - kRowsKept, Long{0});
  switch (key) {
    case kDownKey:
      return {.row = view.row < last ? view.row + 1 : kFirst};
    case kUpKey:
      return {.row = view.row > view.fixed_rows ? view.row - 1 : view.row};
    case kPageDownKey:
      return {.row = view.row < view.rows - page ? std::min(view.row + page, last) : last};
    default:
      return {.row = view.row > view.fixed_rows + page ? view.row - page : kFirst};
  }
}

std::optional<Long> RowAfterScroll(const MatchView& view, Long top_row) {
  // The first row shown is always in sight.
  const Long last = std::max(top_row + view.whole_rows - 1, top_row + 1);
  if (view.row < top_row) return top_row;
  if (view.row < last) return std::nullopt;
  return last - 1;
}

// --- Rows and columns ------------------------------------------------------------------------------------------------

EntryOutcome EnterRow(Integer value, bool has_selection, const MatchEntries& entries) {
  const std::optional<Integer> found = entries.WithValue(value);
  return {.select = found, .clears_match = !found && !has_selection};
}

std::optional<Long> DescriptionWidth(Long room, Long first, Long third) {
  const Long left = room - first - third;
  if (left <= 0) return std::nullopt;
  return left / 2;
}

}  // namespace tallybook
