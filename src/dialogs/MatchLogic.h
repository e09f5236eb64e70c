// How accounts and datafields of a file are matched from the keyboard: what each key asks of the list over the current
// row and of the grid, which selection a row finds, and how wide the columns are. It knows no form and no control: rows
// and entries come in through what is declared here. One thread.
#pragma once

#include <array>
#include <optional>

#include "base/FixedTable.h"
#include "base/Types.h"

namespace tallybook {

// The two pages, by the index of their controls.
enum class MatchPage : Integer { kAccounts = 1, kFields = 2 };

// What receives each row of the file: the number of an account or datafield here, 0 for not sent. Accounts stand at
// their position in the file's list, datafields at their number in the file. An index outside 0 to 9999 is failure 9.
class MatchTable {
 public:
  static constexpr Long kHighestIndex = 9999;

  // All to not sent.
  void Reset();
  Integer& operator()(MatchPage page, Long index);
  Integer operator()(MatchPage page, Long index) const;

 private:
  using Row = std::array<Integer, kHighestIndex + 1>;
  std::array<Row, 2> rows_{};
};

// --- Keys that search ------------------------------------------------------------------------------------------------

// The entries of a page's list, as the keys look for them: the first from the list's start, positions counting from 0.
// Texts are compared without regard to case.
class MatchEntries {
 public:
  virtual ~MatchEntries() = default;
  [[nodiscard]] virtual std::optional<Integer> WithPrefix(const Text& text) const = 0;
  [[nodiscard]] virtual std::optional<Integer> WithText(const Text& text) const = 0;
  [[nodiscard]] virtual std::optional<Integer> WithValue(Long value) const = 0;
};

// The current row: its place, and the file's side of it.
struct MatchRow {
  MatchPage page = MatchPage::kAccounts;
  Long row = 0;
  Text name;  // an account's code, a datafield's number
  Text description;
};

struct KeyOutcome {
  std::optional<Integer> select;  // the entry to select; none: the selection stays
  bool steps = false;             // and then on, as by the Down key
  bool operator==(const KeyOutcome&) const = default;
};

// The search by typing. Both pages share one: a text goes on where the last key press, on either of them, is not longer
// ago than the delay.
class TypeAhead {
 public:
  // Milliseconds within which a key press goes on with the search text.
  void SetDelay(Long milliseconds) { delay_ = milliseconds; }
  // No search text, and nothing typed.
  void Reset();
  [[nodiscard]] const Text& SearchText() const { return text_; }

  // A key press on `row` at the tick `now`, in milliseconds; ticks may wrap. Every key press counts for the delay.
  //   .  Delete      no search text; the first entry
  //   Enter          nothing; so have all codes below the blank that are not named here
  //   blank          goes on with a search, and begins none
  //   Backspace      takes the last character, and searches again
  //   *              accounts by code, datafields by description: the entry of just that text, or else that of value 0
  //   +              datafields by number: the entry of that value; accounts: the search text again
  //   0              the entry of value 0. A character instead where the search text was typed, or searched on by blank
  //                  or Backspace, on this very row within the delay
  //   others         are added to the search text: the first entry that begins with it
  // "*", "0" and, for datafields, "+" step on, whether something was found or not.
  [[nodiscard]] KeyOutcome Press(Integer code, Long now, const MatchRow& row, const MatchEntries& entries);
  // An arrow or its like was pressed: "0" is no character.
  void EndTyping() { typed_page_.reset(); }

 private:
  [[nodiscard]] bool IsLate(Long now) const;
  [[nodiscard]] bool IsTypedOn(const MatchRow& row) const;
  [[nodiscard]] KeyOutcome Search(const MatchEntries& entries) const;
  [[nodiscard]] KeyOutcome Type(const Text& character, const MatchRow& row, const MatchEntries& entries);
  [[nodiscard]] KeyOutcome Backspace(const MatchRow& row, const MatchEntries& entries);
  [[nodiscard]] KeyOutcome MatchByText(const MatchRow& row, const MatchEntries& entries);
  [[nodiscard]] KeyOutcome Plus(const MatchRow& row, const MatchEntries& entries);

  Long delay_ = 0;
  Long last_key_ = 0;
  Text text_;
  std::optional<MatchPage> typed_page_;  // where the search text was typed
  Long typed_row_ = 0;
};

// --- Keys that move --------------------------------------------------------------------------------------------------

// A grid as the keys move in it: rows from 0, the fixed ones first; how many rows go into its height.
struct MatchView {
  Long row = 0;
  Long rows = 0;
  Long fixed_rows = 0;
  Long whole_rows = 0;
};

struct MoveOutcome {
  std::optional<Long> row;      // where the key leads, maybe to the row itself; none: the key is not consumed
  bool to_pick_column = false;  // and into the column that the list stands over
  bool opens = false;           // the list's open mark is to be set
  bool operator==(const MoveOutcome&) const = default;
};

// Whether a key is one that moves; what it does. With the list's open mark set all of them but Home are left to the
// list. With a shift key held nothing moves, Home apart; Alt alone sets the mark.
[[nodiscard]] bool IsMovingKey(Integer key);
[[nodiscard]] MoveOutcome MoveByKey(Integer key, Integer shift, bool open, const MatchView& view);

// The row that a scroll makes current, so that the list stays in sight; none: the current row does.
[[nodiscard]] std::optional<Long> RowAfterScroll(const MatchView& view, Long top_row);

// --- Rows and columns ------------------------------------------------------------------------------------------------

struct EntryOutcome {
  std::optional<Integer> select;  // none: what an earlier row has left selected stays, and leaving the row stores it
  bool clears_match = false;      // nothing is selected at all: the row is not sent
  bool operator==(const EntryOutcome&) const = default;
};

// What entering a row of the match `value` selects.
[[nodiscard]] EntryOutcome EnterRow(Integer value, bool has_selection, const MatchEntries& entries);

// The width of each of the two columns of descriptions: half of what the columns `first` and `third` leave of `room`;
// none where they leave nothing.
[[nodiscard]] std::optional<Long> DescriptionWidth(Long room, Long first, Long third);

}  // namespace tallybook
