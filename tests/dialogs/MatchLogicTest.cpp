// The keys of the match pages by their tables, each row and condition of them, over lists that are plain vectors.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <limits>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include "base/Failure.h"
#include "base/Texts.h"
#include "dialogs/MatchLogic.h"
#include "forms/Keys.h"
#include "tests/support/FailsWith.h"

namespace tallybook::testing {
namespace {

constexpr Integer kBackspace = 8;
constexpr Integer kEnter = 13;
constexpr Integer kEscape = 27;

// Entries as they stand: value and text.
class PlainEntries : public MatchEntries {
 public:
  explicit PlainEntries(std::vector<std::pair<Long, Text>> entries) : entries_(std::move(entries)) {}
  [[nodiscard]] std::optional<Integer> WithPrefix(const Text& text) const override {
    return First([&](const auto& entry) { return UpperCase(entry.second).starts_with(UpperCase(text)); });
  }
  [[nodiscard]] std::optional<Integer> WithText(const Text& text) const override {
    return First([&](const auto& entry) { return UpperCase(entry.second) == UpperCase(text); });
  }
  [[nodiscard]] std::optional<Integer> WithValue(Long value) const override {
    return First([&](const auto& entry) { return entry.first == value; });
  }

 private:
  template <typename Matches>
  [[nodiscard]] std::optional<Integer> First(Matches matches) const {
    for (std::size_t i = 0; i < entries_.size(); ++i)
      if (matches(entries_[i])) return static_cast<Integer>(i);
    return std::nullopt;
  }
  std::vector<std::pair<Long, Text>> entries_;
};

KeyOutcome Selects(Integer position) {
  return {.select = position};
}
KeyOutcome SelectsAndSteps(Integer position) {
  return {.select = position, .steps = true};
}
const KeyOutcome kNothing;

class TypeAheadTest : public ::testing::Test {
 protected:
  TypeAheadTest() { keys_.SetDelay(1000); }

  KeyOutcome Press(Integer code) { return keys_.Press(code, now_, row_, entries_); }
  KeyOutcome Type(const char* text) {
    KeyOutcome last;
    for (; *text != '\0'; ++text) last = Press(static_cast<unsigned char>(*text));
    return last;
  }
  void OnFields() { row_ = {MatchPage::kFields, 1, "7", "Hours worked"}; }

  PlainEntries entries_{
      {{0, " (not to be sent)"}, {11, "100"}, {12, "1000"}, {13, "2 North"}, {7, "Bread"}, {9, "bRoom"}}};
  MatchRow row_{MatchPage::kAccounts, 1, "100", "Groceries"};
  TypeAhead keys_;
  Long now_ = 50'000;
};

TEST_F(TypeAheadTest, CharactersAddToTheSearchTextAndSelectTheFirstEntryThatBeginsSo) {
  EXPECT_EQ(Press('1'), Selects(1));
  EXPECT_EQ(Type("00"), Selects(1));
  EXPECT_EQ(Type("0"), Selects(2));
  EXPECT_EQ(keys_.SearchText(), "1000");
  EXPECT_EQ(Press('x'), kNothing) << "nothing begins so: the selection stays";
  EXPECT_EQ(keys_.SearchText(), "1000x");
}

TEST_F(TypeAheadTest, TheCaseOfCharactersIsNotRegarded) {
  EXPECT_EQ(Type("bR"), Selects(4));
  EXPECT_EQ(Type("O"), Selects(5));
}

TEST_F(TypeAheadTest, KeysFartherApartThanTheDelayBeginANewSearch) {
  Press('1');
  now_ += 1000;
  Press('x');
  EXPECT_EQ(keys_.SearchText(), "1x") << "the delay itself is not too long";
  now_ += 1001;
  EXPECT_EQ(Press('b'), Selects(4));
  EXPECT_EQ(keys_.SearchText(), "b");
}

TEST_F(TypeAheadTest, EveryKeyPressRenewsTheKeyTimeAndEnterDoesNothingElse) {
  Press('1');
  for (int i = 0; i < 3; ++i) {
    now_ += 900;
    EXPECT_EQ(Press(kEnter), kNothing);
  }
  now_ += 900;
  Press('0');
  EXPECT_EQ(keys_.SearchText(), "10");
}

TEST_F(TypeAheadTest, TheTickMayWrap) {
  now_ = std::numeric_limits<Long>::max();
  Press('1');
  now_ = std::numeric_limits<Long>::min() + 900;
  Press('x');
  EXPECT_EQ(keys_.SearchText(), "1x");
}

TEST_F(TypeAheadTest, DeleteEmptiesTheSearchTextAndSelectsTheFirstEntry) {
  Type("10");
  EXPECT_EQ(Press('.'), Selects(0));
  EXPECT_EQ(keys_.SearchText(), "");
}

TEST_F(TypeAheadTest, ABlankGoesOnWithASearchAndBeginsNone) {
  EXPECT_EQ(Press(' '), kNothing);
  EXPECT_EQ(keys_.SearchText(), "");
  Press('2');
  EXPECT_EQ(Press(' '), Selects(3));
  EXPECT_EQ(keys_.SearchText(), "2 ");
}

TEST_F(TypeAheadTest, BackspaceTakesTheLastCharacterAndSearchesAgain) {
  EXPECT_EQ(Press(kBackspace), kNothing);
  Type("bro\xC4");
  EXPECT_EQ(keys_.SearchText(), "bro\xC3\x84") << "a character, whatever its bytes";
  EXPECT_EQ(Press(kBackspace), Selects(5));
  Press(kBackspace);
  EXPECT_EQ(Press(kBackspace), Selects(4));
  EXPECT_EQ(Press(kBackspace), kNothing) << "an empty text is not searched";
  EXPECT_EQ(Press(kBackspace), kNothing);
}

TEST_F(TypeAheadTest, AStarMatchesAnAccountByItsCodeAndSteps) {
  EXPECT_EQ(Press('*'), SelectsAndSteps(1)) << "100, and not 1000";
  EXPECT_EQ(keys_.SearchText(), "100");
}

TEST_F(TypeAheadTest, AStarMatchesADatafieldByItsDescriptionAndSteps) {
  OnFields();
  row_.description = "BREAD";
  EXPECT_EQ(Press('*'), SelectsAndSteps(4));
  EXPECT_EQ(keys_.SearchText(), "BREAD");
}

TEST_F(TypeAheadTest, AStarThatFindsNoPartnerSetsNotSentAndSteps) {
  row_.name = "10";
  EXPECT_EQ(Press('*'), SelectsAndSteps(0)) << "what only begins so is no partner";
  EXPECT_EQ(keys_.SearchText(), "10") << "the search text stays";
}

TEST_F(TypeAheadTest, APlusMatchesADatafieldByItsNumberAndSteps) {
  OnFields();
  EXPECT_EQ(Press('+'), SelectsAndSteps(4)) << "although the descriptions differ";
}

TEST_F(TypeAheadTest, APlusThatFindsNoNumberLeavesTheSelectionAndSteps) {
  OnFields();
  row_.name = "8";
  EXPECT_EQ(Press('+'), (KeyOutcome{.select = std::nullopt, .steps = true}));
}

TEST_F(TypeAheadTest, APlusOnAccountsSearchesAgainAndMatchesNothing) {
  EXPECT_EQ(Press('+'), kNothing);
  Press('b');
  EXPECT_EQ(Press('+'), Selects(4));
  EXPECT_EQ(keys_.SearchText(), "b");
}

TEST_F(TypeAheadTest, AZeroSelectsTheEntryOfValueZeroAndSteps) {
  EXPECT_EQ(Press('0'), SelectsAndSteps(0));
  EXPECT_EQ(keys_.SearchText(), "");
}

TEST_F(TypeAheadTest, AZeroIsACharacterWhereTheSearchTextWasTypedHereWithinTheDelay) {
  EXPECT_EQ(Type("100"), Selects(1));
  now_ += 1001;
  EXPECT_EQ(Press('0'), SelectsAndSteps(0));
}

TEST_F(TypeAheadTest, AZeroIsACharacterBehindABlankAndBackspace) {
  Type("2 ");
  EXPECT_EQ(Press('0'), kNothing);
  EXPECT_EQ(keys_.SearchText(), "2 0");
  Press('*');
  EXPECT_EQ(Press(kBackspace), Selects(1)) << "10 is searched on";
  EXPECT_EQ(Press('0'), Selects(1));
  EXPECT_EQ(keys_.SearchText(), "100");
}

TEST_F(TypeAheadTest, AZeroIsTheCommandWhereBackspaceHasTakenAll) {
  Type("1\b");
  EXPECT_EQ(Press('0'), SelectsAndSteps(0));
}

TEST_F(TypeAheadTest, AZeroIsTheCommandAfterStarPlusZeroAnArrowAndOnAnotherRow) {
  Press('*');
  EXPECT_EQ(Press('0'), SelectsAndSteps(0));
  EXPECT_EQ(Press('0'), SelectsAndSteps(0));
  Type(".1*");
  EXPECT_EQ(Press('0'), SelectsAndSteps(0)) << "where the step stayed away";
  Type(".1+");
  EXPECT_EQ(Press('0'), SelectsAndSteps(0));
  Type(".1");
  keys_.EndTyping();
  EXPECT_EQ(Press('0'), SelectsAndSteps(0));
  Type(".1");
  row_.row = 2;
  EXPECT_EQ(Press('0'), SelectsAndSteps(0));
  row_.row = 1;
  EXPECT_EQ(Press('0'), SelectsAndSteps(0)) << "back where it was typed";
  Type(".1");
  row_.page = MatchPage::kFields;
  EXPECT_EQ(Press('0'), SelectsAndSteps(0));
}

TEST_F(TypeAheadTest, BothPagesShareOneSearchText) {
  Press('b');
  OnFields();
  EXPECT_EQ(Press('r'), Selects(4));
  EXPECT_EQ(keys_.SearchText(), "br");
}

TEST_F(TypeAheadTest, KeysWithoutACharacterAreNotSearchedFor) {
  Press('1');
  for (const Integer code : {Integer{0}, Integer{9}, kEscape, Integer{256}, Integer{-1}}) {
    EXPECT_EQ(Press(code), kNothing) << code;
  }
  EXPECT_EQ(keys_.SearchText(), "1");
}

TEST_F(TypeAheadTest, AResetForgetsTheSearch) {
  Press('1');
  keys_.Reset();
  EXPECT_EQ(Press('0'), SelectsAndSteps(0));
}

// --- Moving ----------------------------------------------------------------------------------------------------------

// A head and twenty rows, of which seven go into the height: a page is five.
MatchView At(Long row) {
  return {.row = row, .rows = 21, .fixed_rows = 1, .whole_rows = 7};
}

Long RowAfter(Integer key, Long row) {
  return MoveByKey(key, 0, false, At(row)).row.value_or(-1);
}

TEST(MoveByKeyTest, DownGoesDownAndWraps) {
  EXPECT_EQ(RowAfter(kDownKey, 1), 2);
  EXPECT_EQ(RowAfter(kDownKey, 19), 20);
  EXPECT_EQ(RowAfter(kDownKey, 20), 1);
}

TEST(MoveByKeyTest, UpGoesUpAndStaysAtTheTop) {
  EXPECT_EQ(RowAfter(kUpKey, 20), 19);
  EXPECT_EQ(RowAfter(kUpKey, 2), 1);
  EXPECT_EQ(RowAfter(kUpKey, 1), 1) << "and is consumed";
}

TEST(MoveByKeyTest, APageIsTwoRowsLessThanWhatGoesIntoTheHeight) {
  EXPECT_EQ(RowAfter(kPageDownKey, 1), 6);
  EXPECT_EQ(RowAfter(kPageDownKey, 15), 20);
  EXPECT_EQ(RowAfter(kPageDownKey, 16), 20);
  EXPECT_EQ(RowAfter(kPageDownKey, 20), 20);
  EXPECT_EQ(RowAfter(kPageUpKey, 20), 15);
  EXPECT_EQ(RowAfter(kPageUpKey, 7), 2);
  EXPECT_EQ(RowAfter(kPageUpKey, 6), 1);
  EXPECT_EQ(RowAfter(kPageUpKey, 3), 1);
  EXPECT_EQ(RowAfter(kPageUpKey, 1), 1);
}

TEST(MoveByKeyTest, AGridTooLowForAPageStaysInItsRows) {
  MatchView low = At(10);
  for (Long rows = 0; rows <= 2; ++rows) {
    low.whole_rows = rows;
    EXPECT_EQ(MoveByKey(kPageDownKey, 0, false, low).row, 10);
    EXPECT_EQ(MoveByKey(kPageUpKey, 0, false, low).row, 10);
  }
}

TEST(MoveByKeyTest, HomeMovesInEveryShiftStateAndWithTheListOpen) {
  const MoveOutcome home{.row = 1, .to_pick_column = true};
  for (Integer shift = 0; shift < 8; ++shift) {
    EXPECT_EQ(MoveByKey(kHomeKey, shift, false, At(9)), home);
    EXPECT_EQ(MoveByKey(kHomeKey, shift, true, At(9)), home);
  }
}

TEST(MoveByKeyTest, WithTheListOpenArrowsAndPageKeysAreLeftToIt) {
  for (const Integer key : {kDownKey, kUpKey, kPageDownKey, kPageUpKey}) {
    for (Integer shift = 0; shift < 8; ++shift) EXPECT_EQ(MoveByKey(key, shift, true, At(9)), MoveOutcome{});
  }
}

TEST(MoveByKeyTest, AltAloneSetsTheOpenMarkAndNoShiftStateMovesOrConsumes) {
  for (const Integer key : {kDownKey, kUpKey, kPageDownKey, kPageUpKey}) {
    for (Integer shift = 1; shift < 8; ++shift) {
      const MoveOutcome outcome = MoveByKey(key, shift, false, At(9));
      EXPECT_FALSE(outcome.row) << key << " " << shift;
      EXPECT_EQ(outcome.opens, shift == kAltState) << key << " " << shift;
    }
  }
}

TEST(MoveByKeyTest, OtherKeysAreNotHandled) {
  for (Integer key = 0; key < 256; ++key) {
    EXPECT_EQ(MoveByKey(key, 0, false, At(9)).row.has_value(), IsMovingKey(key)) << key;
  }
  EXPECT_FALSE(IsMovingKey(kEndKey));
}

TEST(MoveByKeyTest, AGridOfItsHeadAloneHasNowhereToMove) {
  for (const Integer key : {kHomeKey, kDownKey, kUpKey, kPageDownKey, kPageUpKey}) {
    EXPECT_EQ(MoveByKey(key, 0, false, {.row = 0, .rows = 1, .fixed_rows = 1, .whole_rows = 7}), MoveOutcome{});
  }
}

TEST(RowAfterScrollTest, TheCurrentRowStaysWhereItIsInSight) {
  // Rows 5 to 10 are in sight: the last that counts is the one before top row and whole rows less one.
  EXPECT_EQ(RowAfterScroll(At(5), 5), std::nullopt);
  EXPECT_EQ(RowAfterScroll(At(10), 5), std::nullopt);
}

TEST(RowAfterScrollTest, ARowThatLeavesAtTheTopBecomesTheTopRow) {
  EXPECT_EQ(RowAfterScroll(At(4), 5), 5);
  EXPECT_EQ(RowAfterScroll(At(1), 20), 20);
}

TEST(RowAfterScrollTest, ARowThatLeavesAtTheBottomBecomesTheLastInSight) {
  EXPECT_EQ(RowAfterScroll(At(11), 5), 10);
  EXPECT_EQ(RowAfterScroll(At(20), 1), 6);
}

TEST(RowAfterScrollTest, InAGridTooLowForARowTheTopRowIsInSight) {
  MatchView low = At(9);
  low.whole_rows = 0;
  EXPECT_EQ(RowAfterScroll(low, 9), std::nullopt);
  EXPECT_EQ(RowAfterScroll(low, 3), 3);
}

// --- Rows and columns ------------------------------------------------------------------------------------------------

TEST(EnterRowTest, SelectsTheFirstEntryOfTheRowsMatch) {
  const PlainEntries entries{{{0, "none"}, {5, "a"}, {5, "b"}}};
  EXPECT_EQ(EnterRow(5, true, entries), (EntryOutcome{.select = 1}));
  EXPECT_EQ(EnterRow(0, false, entries), (EntryOutcome{.select = 0}));
}

TEST(EnterRowTest, AMatchThatIsNotInTheListLeavesTheSelectionAndWithoutOneIsCleared) {
  const PlainEntries entries{{{0, "none"}}};
  EXPECT_EQ(EnterRow(5, true, entries), EntryOutcome{});
  EXPECT_EQ(EnterRow(5, false, entries), (EntryOutcome{.select = std::nullopt, .clears_match = true}));
}

TEST(DescriptionWidthTest, TheColumnsOfDescriptionsShareWhatIsLeft) {
  EXPECT_EQ(DescriptionWidth(500, 100, 150), 125);
  EXPECT_EQ(DescriptionWidth(501, 100, 150), 125);
  EXPECT_EQ(DescriptionWidth(250, 100, 150), std::nullopt);
  EXPECT_EQ(DescriptionWidth(-20, 100, 150), std::nullopt);
}

TEST(MatchTableTest, HoldsBothPagesFromIndex0To9999AndNoMore) {
  const auto matches = std::make_unique<MatchTable>();
  (*matches)(MatchPage::kAccounts, 0) = 1;
  (*matches)(MatchPage::kAccounts, 9999) = 2;
  (*matches)(MatchPage::kFields, 0) = 3;
  EXPECT_EQ((*matches)(MatchPage::kAccounts, 0), 1);
  EXPECT_EQ((*matches)(MatchPage::kAccounts, 9999), 2);
  EXPECT_EQ((*matches)(MatchPage::kFields, 0), 3);
  EXPECT_EQ((*matches)(MatchPage::kFields, 9999), 0);
  const MatchTable& held = *matches;
  for (const Long index : {-1, 10'000}) {
    EXPECT_THAT([&] { (*matches)(MatchPage::kFields, index) = 1; }, FailsWith(FailureNumber::kRange));
    EXPECT_THAT([&] { (void)held(MatchPage::kAccounts, index); }, FailsWith(FailureNumber::kRange));
  }
  matches->Reset();
  EXPECT_EQ(held(MatchPage::kAccounts, 9999), 0);
}

}  // namespace
}  // namespace tallybook::testing
