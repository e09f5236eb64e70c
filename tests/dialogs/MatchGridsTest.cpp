// The match pages through their controls and events.
#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <set>
#include <vector>

#include "dialogs/MatchGrids.h"
#include "tests/dialogs/MatchEditor.h"
#include "tests/support/FailsWith.h"
#include "tests/support/ScriptedPlatform.h"

namespace tallybook::testing {
namespace {

using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr MatchPage kAccounts = MatchPage::kAccounts;
constexpr MatchPage kFields = MatchPage::kFields;
constexpr Integer kBackspace = 8;

// Accounts here: 100 (101), 1000 (300), 200 (102), 300 (205). Datafields here: Sales (1), Customers (2), Weather (7).
class MatchGridsTest : public ::testing::Test {
 protected:
  MatchGridsTest() : host_(SmallBook()) {
    host_->book.AddAccount(300, "1000", "Annex");
    editor_ = std::make_unique<MatchEditor>(host_->book);
    for (const auto& [code, description] : std::vector<std::pair<Text, Text>>{
             {"100", "Groceries"}, {"150", "Bakery"}, {"200", "Dairy"}, {"300", "Garden"}}) {
      editor_->AddFileAccount(code, description);
    }
    editor_->AddFileField(4, "weather");
    editor_->AddFileField(2, "Guests");
    editor_->AddFileField(9, "Sales");
  }
  ~MatchGridsTest() override { EXPECT_EQ(failures_expected_, editor_->failures.size()); }

  [[nodiscard]] MatchGrids& grids() { return editor_->grids; }
  [[nodiscard]] Grid& grid(MatchPage page) { return grids().GridOf(page); }
  [[nodiscard]] ComboBox& list(MatchPage page) { return grids().ListOf(page); }
  [[nodiscard]] bool cancel_enabled() const { return editor_->SaveButtons1.CancelEnabled(); }
  // A load, and the way to a page.
  void Open(MatchPage page, const std::vector<MatchEditor::Stored>& matches = {}) {
    editor_->LoadMatches(matches);
    editor_->GoTo(page);
  }
  void Press(Integer key, Integer shift = 0) { editor_->UserKey(key, shift); }
  void Type(const Text& characters) { editor_->Type(characters); }
  [[nodiscard]] Text Ours(MatchPage page, Long row) { return grid(page).Cell(row, 2) + ": " + grid(page).Cell(row, 3); }
  [[nodiscard]] std::vector<Text> Column(MatchPage page, Long column) {
    std::vector<Text> cells;
    for (Long row = 1; row < grid(page).Rows(); ++row) cells.push_back(grid(page).Cell(row, column));
    return cells;
  }
  [[nodiscard]] std::vector<Text> Entries(MatchPage page) {
    std::vector<Text> texts;
    for (Integer i = 0; i < list(page).ListCount(); ++i) texts.push_back(list(page).List(i));
    return texts;
  }
  // What a grid tells from now on.
  void Watch(MatchPage page) {
    grid(page).LeaveCell.Connect([this, page] { told_.push_back("leaves " + std::to_string(grid(page).Row())); });
    grid(page).EnterCell.Connect([this, page] { told_.push_back("enters " + std::to_string(grid(page).Row())); });
  }

  ScriptedPlatform platform_{FilesIn::kMemory};
  std::unique_ptr<MemoryHost> host_;
  std::unique_ptr<MatchEditor> editor_;
  std::vector<Text> told_;
  std::size_t failures_expected_ = 0;
};

// --- What the pages show ---------------------------------------------------------------------------------------------

TEST_F(MatchGridsTest, HeadsHintsAndNotesHaveTheirWords) {
  const auto heads = [&](MatchPage page) {
    std::vector<Text> cells;
    for (Long column = 0; column < grid(page).Columns(); ++column) cells.push_back(grid(page).Cell(0, column));
    return cells;
  };
  EXPECT_THAT(heads(kAccounts), ElementsAre("Account Code", "QDX Account Description", "Account Code",
                                            "Account Description in this System"));
  EXPECT_THAT(heads(kFields),
              ElementsAre("#", "QDX DataField Description", "#", "DataField Description in this System"));
  EXPECT_EQ(list(kAccounts).Hint(), "Use * to match by Code");
  EXPECT_EQ(list(kFields).Hint(), "Use * to match by number.  Use + to match by Description");
  EXPECT_EQ(grids().NoteOf(kAccounts).Caption(), "Note: Press \"*\" to match Description.  Press \"0\" to not send.");
  EXPECT_EQ(grids().NoteOf(kFields).Caption(),
            "Note: Press \"*\" to match Description.  Press  \"+\" to match Number.  Press \"0\" to not send.");
}

TEST_F(MatchGridsTest, TheHeadIsHigherTheFilesSideShadedAndNumbersStandOnTheRight) {
  for (const MatchPage page : {kAccounts, kFields}) {
    EXPECT_EQ(grid(page).RowHeight(0), grid(page).UsualRowHeight() * 5 / 4);
    EXPECT_EQ(grid(page).FixedRows(), 1);
    for (Long column = 0; column < 4; ++column) {
      EXPECT_EQ(grid(page).ColumnShaded(column), column < 2);
      const bool number = page == kFields && column % 2 == 0;
      EXPECT_EQ(grid(page).ColumnAlignment(column), number ? Alignment::kRight : Alignment::kLeft);
    }
  }
  EXPECT_EQ(grid(kAccounts).ColumnWidth(0), 15 * grid(kAccounts).CharacterWidth());
  EXPECT_EQ(grid(kFields).ColumnWidth(2), 10 * grid(kFields).CharacterWidth());
}

TEST_F(MatchGridsTest, AccountsStandInTheFilesOrderWithWhatReceivesThem) {
  editor_->LoadMatches({{kAccounts, 2, 102}, {kAccounts, 4, 999}});
  EXPECT_THAT(Column(kAccounts, 0), ElementsAre("100", "150", "200", "300"));
  EXPECT_THAT(Column(kAccounts, 1), ElementsAre("Groceries", "Bakery", "Dairy", "Garden"));
  EXPECT_THAT(Column(kAccounts, 2), ElementsAre("", "200", "", ""));
  EXPECT_THAT(Column(kAccounts, 3), ElementsAre("Not to be sent", "Back of shop", "Not to be sent", ""))
      << "a number that no account has shows a blank record";
}

TEST_F(MatchGridsTest, DatafieldsStandInTheOrderOfTheirDescriptionsAndMatchByTheirNumberInTheFile) {
  editor_->LoadMatches({{kFields, 4, 7}, {kFields, 9, 1}});
  EXPECT_THAT(Column(kFields, 0), ElementsAre("2", "9", "4"));
  EXPECT_THAT(Column(kFields, 1), ElementsAre("Guests", "Sales", "weather"));
  EXPECT_THAT(Column(kFields, 2), ElementsAre("0", "1", "7"));
  EXPECT_THAT(Column(kFields, 3), ElementsAre("Not to be sent", "Sales", "Weather"));
  EXPECT_EQ(grids().FileFields().ItemData(2), 4);
  EXPECT_FALSE(dynamic_cast<const Control&>(grids().FileFields()).Visible());
}

TEST_F(MatchGridsTest, TheListsAreSortedAsTextBehindTheEntryThatSendsNothing) {
  grids().AddAccountEntry("", 400);
  grids().AddAccountEntry("  !  ", 401);
  EXPECT_THAT(Entries(kAccounts), ElementsAre(" (not to be sent)", "", "  !", "100", "1000", "200", "300"));
  EXPECT_EQ(list(kAccounts).ItemData(0), 0);
  EXPECT_EQ(list(kAccounts).ItemData(4), 300);
  EXPECT_THAT(Entries(kFields), ElementsAre(" (not to be sent)", "Customers", "Sales", "Weather"));
  grids().ClearEntries();
  EXPECT_THAT(Entries(kFields), ElementsAre(" (not to be sent)"));
}

TEST_F(MatchGridsTest, AnotherLoadLeavesNothingOfTheOneBefore) {
  Open(kAccounts, {{kAccounts, 1, 102}, {kFields, 9, 1}});
  *editor_->header = HeaderRecord();
  editor_->AddFileAccount("7", "Seven");
  editor_->LoadMatches();
  EXPECT_EQ(grids().CurrentPage(), 0);
  EXPECT_EQ(grids().Match(kAccounts, 1), 0);
  EXPECT_EQ(grids().Match(kFields, 9), 0);
  EXPECT_THAT(Column(kAccounts, 0), ElementsAre("7"));
  EXPECT_EQ(Ours(kAccounts, 1), ": Not to be sent");
  EXPECT_EQ(grid(kFields).Rows(), 1);
  EXPECT_EQ(grids().FileFields().ListCount(), 0);
}

TEST_F(MatchGridsTest, AnIndexOutsideTheMatchesIsAFailureOfTheForm) {
  editor_->AddFileField(10'000, "too high");
  EXPECT_THAT([&] { editor_->LoadMatches(); }, FailsWith(FailureNumber::kRange));
  EXPECT_THAT([&] { grids().SetMatch(kFields, -1, 1); }, FailsWith(FailureNumber::kRange));
  EXPECT_THAT([&] { (void)grids().Match(kAccounts, 10'000); }, FailsWith(FailureNumber::kRange));
  EXPECT_TRUE(grids().Loading()) << "nothing answers until the next load";
}

// --- Entering and leaving --------------------------------------------------------------------------------------------

TEST_F(MatchGridsTest, ThePageOpensWithTheListOverTheFirstRowAndTheFocusOnIt) {
  Open(kAccounts, {{kAccounts, 1, 102}});
  EXPECT_EQ(grid(kAccounts).Row(), 1);
  EXPECT_EQ(grid(kAccounts).Column(), 2);
  EXPECT_EQ(list(kAccounts).SelectedText(), "200");
  EXPECT_TRUE(list(kAccounts).HasFocus());
  const Place cell = grid(kAccounts).CellPlace(1, 2);
  EXPECT_EQ(list(kAccounts).Place(), cell);
  EXPECT_EQ(cell.top, 30 + 25);
  Open(kFields);
  EXPECT_EQ(grid(kFields).Column(), 3);
  EXPECT_EQ(list(kFields).Place(), grid(kFields).CellPlace(1, 3));
  EXPECT_TRUE(list(kFields).HasFocus());
}

TEST_F(MatchGridsTest, TheListGoesAlongWithTheRowAndKeepsAHeightOfItsOwn) {
  Open(kAccounts);
  list(kAccounts).SetPlace({0, 0, 10, 23});
  Press(kDownKey);
  Place expected = grid(kAccounts).CellPlace(2, 2);
  expected.height = 23;
  EXPECT_EQ(list(kAccounts).Place(), expected);
}

TEST_F(MatchGridsTest, AClickOnTheFilesSideEntersTheCellUnderTheListOfThatRow) {
  Open(kAccounts, {{kAccounts, 3, 101}});
  Watch(kAccounts);
  EXPECT_TRUE(grid(kAccounts).UserClick(3, 0));
  EXPECT_EQ(grid(kAccounts).Column(), 2);
  EXPECT_EQ(list(kAccounts).SelectedText(), "100");
  EXPECT_TRUE(list(kAccounts).HasFocus());
  // The cell that the click led to is entered, and left at once for the one under the list.
  EXPECT_THAT(told_, ElementsAre("leaves 1", "leaves 3", "enters 3", "enters 3"));
  EXPECT_EQ(grids().Match(kAccounts, 3), 101) << "what the row before had selected was not stored here";
}

TEST_F(MatchGridsTest, AClickOnThePresentCellEntersItAgainAndLeavesNothing) {
  Open(kAccounts);
  Watch(kAccounts);
  EXPECT_TRUE(grid(kAccounts).UserClick(1, 2));
  EXPECT_THAT(told_, ElementsAre("enters 1"));
  EXPECT_FALSE(cancel_enabled());
  EXPECT_TRUE(list(kAccounts).HasFocus());
}

TEST_F(MatchGridsTest, AChoiceIsStoredShownAndAChange) {
  Open(kAccounts);
  EXPECT_FALSE(cancel_enabled());
  EXPECT_TRUE(list(kAccounts).UserChoose(3));
  EXPECT_TRUE(cancel_enabled());
  EXPECT_EQ(grids().Match(kAccounts, 1), 102);
  EXPECT_EQ(Ours(kAccounts, 1), "200: Back of shop");
  EXPECT_EQ(grid(kAccounts).Row(), 1);
  list(kAccounts).UserChoose(0);
  EXPECT_EQ(grids().Match(kAccounts, 1), 0);
  EXPECT_EQ(Ours(kAccounts, 1), ": Not to be sent");
}

TEST_F(MatchGridsTest, AChoiceOnADatafieldIsStoredUnderItsNumberInTheFile) {
  Open(kFields);
  list(kFields).UserChoose(3);
  EXPECT_EQ(grids().Match(kFields, 2), 7);
  EXPECT_EQ(Ours(kFields, 1), "7: Weather");
  list(kFields).UserChoose(0);
  EXPECT_EQ(Ours(kFields, 1), "0: Not to be sent");
}

TEST_F(MatchGridsTest, LeavingACellCountsAsAChangeAndEnteringOneDoesNot) {
  Open(kAccounts, {{kAccounts, 1, 102}, {kAccounts, 2, 205}});
  EXPECT_FALSE(cancel_enabled());
  Press(kDownKey);
  EXPECT_TRUE(cancel_enabled());
  EXPECT_EQ(grids().Match(kAccounts, 1), 102);
  EXPECT_EQ(list(kAccounts).SelectedText(), "300");
}

TEST_F(MatchGridsTest, ASelectionThatAnEarlierRowLeftStaysWhereTheValueIsNotInTheListAndLeavingStoresIt) {
  Open(kAccounts, {{kAccounts, 1, 102}, {kAccounts, 2, 999}});
  Press(kDownKey);
  EXPECT_EQ(list(kAccounts).SelectedText(), "200");
  EXPECT_EQ(grids().Match(kAccounts, 2), 999) << "not before the row is left";
  Press(kDownKey);
  EXPECT_EQ(grids().Match(kAccounts, 2), 102);
  EXPECT_EQ(Ours(kAccounts, 2), "200: Back of shop");
}

TEST_F(MatchGridsTest, ARowWhoseValueIsNotInTheListIsNotSentWhereNothingIsSelectedAtAll) {
  editor_->LoadMatches({{kAccounts, 1, 999}});
  list(kAccounts).SetListIndex(kNoEntry);
  editor_->GoTo(kAccounts);
  EXPECT_EQ(list(kAccounts).ListIndex(), kNoEntry);
  EXPECT_EQ(grids().Match(kAccounts, 1), 0);
  Press(kDownKey);
  EXPECT_EQ(grids().Match(kAccounts, 1), 0);
}

TEST_F(MatchGridsTest, WhatIsSelectedForARowThatIsEnteredIsNoChange) {
  editor_->LoadMatches({{kAccounts, 1, 999}, {kAccounts, 2, 102}});
  list(kAccounts).SetListIndex(kNoEntry);
  editor_->GoTo(kAccounts);
  Press(kDownKey);
  EXPECT_EQ(list(kAccounts).ItemData(list(kAccounts).ListIndex()), 102);
  EXPECT_FALSE(cancel_enabled());
}

TEST_F(MatchGridsTest, NothingAnswersWhileTheEditorLoads) {
  Open(kAccounts, {{kAccounts, 1, 102}});
  grids().BeginLoad();
  grids().Fill(*editor_->header);
  list(kAccounts).SetListIndex(2);
  grid(kAccounts).SetCurrent(2, 2);
  grid(kAccounts).SetTopRow(3);
  Type("*");
  grids().CommitOpenCells();
  EXPECT_EQ(grid(kAccounts).Row(), 2);
  EXPECT_EQ(grids().Match(kAccounts, 1), 0);
  EXPECT_EQ(grids().Match(kAccounts, 2), 0);
  EXPECT_FALSE(cancel_enabled());
}

TEST_F(MatchGridsTest, ASaveStoresTheOpenCellOfBothPages) {
  Open(kAccounts, {{kAccounts, 1, 102}, {kAccounts, 2, 999}});
  Press(kDownKey);
  editor_->GoTo(kFields);
  grids().CommitOpenCells();
  EXPECT_EQ(grids().Match(kAccounts, 2), 102);
  EXPECT_EQ(Ours(kAccounts, 2), "200: Back of shop");
  EXPECT_TRUE(cancel_enabled());
}

TEST_F(MatchGridsTest, APageThatWasNotEnteredSinceTheLoadHasNoOpenCell) {
  Open(kAccounts);
  Open(kFields, {{kAccounts, 1, 999}});
  grids().CommitOpenCells();
  EXPECT_EQ(grids().Match(kAccounts, 1), 999) << "nor does an earlier load leave one open";
}

// --- Keys ------------------------------------------------------------------------------------------------------------

TEST_F(MatchGridsTest, AStarMatchesTheCodeAndNotALongerOneAndStepsOn) {
  Open(kAccounts);
  Type("*");
  EXPECT_EQ(grids().Match(kAccounts, 1), 101);
  EXPECT_EQ(Ours(kAccounts, 1), "100: Front of shop");
  EXPECT_EQ(grid(kAccounts).Row(), 2);
  EXPECT_TRUE(cancel_enabled());
}

TEST_F(MatchGridsTest, AStarOnACodeThatIsAbsentShowsNotToBeSentAndIsOnTheNextRow) {
  Open(kAccounts, {{kAccounts, 2, 205}});
  Press(kDownKey);
  EXPECT_EQ(list(kAccounts).SelectedText(), "300");
  Type("*");
  EXPECT_EQ(Ours(kAccounts, 2), ": Not to be sent");
  EXPECT_EQ(grids().Match(kAccounts, 2), 0);
  EXPECT_EQ(grid(kAccounts).Row(), 3);
}

TEST_F(MatchGridsTest, AStarHeldDownMatchesTheWholeFileAndWraps) {
  Open(kAccounts);
  Type("****");
  EXPECT_THAT(Column(kAccounts, 2), ElementsAre("100", "", "200", "300"));
  EXPECT_EQ(grid(kAccounts).Row(), 1);
}

TEST_F(MatchGridsTest, OnDatafieldsAStarMatchesTheDescriptionAndAPlusTheNumber) {
  Open(kFields);
  Type("+**");
  EXPECT_EQ(Ours(kFields, 1), "2: Customers") << "although the descriptions differ";
  EXPECT_EQ(Ours(kFields, 2), "1: Sales");
  EXPECT_EQ(Ours(kFields, 3), "7: Weather");
  EXPECT_EQ(grid(kFields).Row(), 1);
}

TEST_F(MatchGridsTest, ANumberThatIsMissingLeavesThePreviousSelectionAndSteppingDownStoresIt) {
  Open(kFields, {{kFields, 9, 7}});
  Press(kDownKey);
  Type("+");
  EXPECT_EQ(grids().Match(kFields, 9), 7);
  EXPECT_EQ(grid(kFields).Row(), 3);
}

TEST_F(MatchGridsTest, APlusOnAccountsSearchesAgainAndStaysOnTheRow) {
  Open(kAccounts);
  Type("2");
  list(kAccounts).UserChoose(0);
  Type("+");
  EXPECT_EQ(list(kAccounts).SelectedText(), "200");
  EXPECT_EQ(grid(kAccounts).Row(), 1);
  EXPECT_EQ(grids().Match(kAccounts, 1), 102) << "a search is a choice";
}

TEST_F(MatchGridsTest, AZeroOnTheLastRowClearsItAndTheCursorIsOnTheFirst) {
  Open(kAccounts, {{kAccounts, 4, 101}});
  Press(kUpKey);
  EXPECT_EQ(grid(kAccounts).Row(), 1) << "up does not wrap";
  for (int i = 0; i < 3; ++i) Press(kDownKey);
  Type("0");
  EXPECT_EQ(grids().Match(kAccounts, 4), 0);
  EXPECT_EQ(Ours(kAccounts, 4), ": Not to be sent");
  EXPECT_EQ(grid(kAccounts).Row(), 1);
}

TEST_F(MatchGridsTest, TypingWithinTheDelaySelectsTheFirstEntryInTextOrderThatBeginsSo) {
  Open(kAccounts);
  Type("100");
  EXPECT_EQ(list(kAccounts).SelectedText(), "100");
  Type("0");
  EXPECT_EQ(list(kAccounts).SelectedText(), "1000");
  EXPECT_EQ(grid(kAccounts).Row(), 1);
  EXPECT_EQ(grids().Match(kAccounts, 1), 300);
}

TEST_F(MatchGridsTest, TwoKeysFartherApartThanTheDelayStartANewSearch) {
  Open(kAccounts);
  Type("1");
  platform_.clock.Advance(1.1);
  Type("2");
  EXPECT_EQ(list(kAccounts).SelectedText(), "200");
}

TEST_F(MatchGridsTest, AZeroIsTheCommandOnTheRowThatAStarHasLedTo) {
  Open(kAccounts);
  Type("*0");
  EXPECT_EQ(grids().Match(kAccounts, 1), 101);
  EXPECT_EQ(grid(kAccounts).Row(), 3);
}

TEST_F(MatchGridsTest, AZeroIsTheCommandAfterAnArrowThatStaysInItsRow) {
  Open(kAccounts);
  Type("1");
  Press(kUpKey);
  Type("0");
  EXPECT_EQ(grids().Match(kAccounts, 1), 0);
  EXPECT_EQ(grid(kAccounts).Row(), 2);
}

TEST_F(MatchGridsTest, TheSearchTextIsSharedByBothPages) {
  Open(kAccounts);
  Type("s");
  editor_->GoTo(kFields);
  Type("a");
  EXPECT_EQ(list(kFields).SelectedText(), "Sales");
}

TEST_F(MatchGridsTest, ALoadEndsTheSearch) {
  Open(kAccounts);
  Type("1");
  Open(kAccounts);
  Type("2");
  EXPECT_EQ(list(kAccounts).SelectedText(), "200");
}

TEST_F(MatchGridsTest, DeleteAndThePointClearTheSearchAndSelectTheFirstEntry) {
  for (const bool point : {false, true}) {
    Open(kAccounts, {{kAccounts, 1, 102}});
    Type("1");
    if (point)
      Type(".");
    else
      Press(kDeleteKey);
    EXPECT_EQ(list(kAccounts).ListIndex(), 0);
    EXPECT_EQ(grids().Match(kAccounts, 1), 0);
    EXPECT_EQ(grid(kAccounts).Row(), 1);
    Type("2");
    EXPECT_EQ(list(kAccounts).SelectedText(), "200") << "the search began anew";
  }
}

TEST_F(MatchGridsTest, BackspaceWithAnEmptySearchTextChangesNothing) {
  Open(kAccounts, {{kAccounts, 1, 102}});
  editor_->UserKey(kBackspace, 0, kBackspace);
  EXPECT_EQ(list(kAccounts).SelectedText(), "200");
  EXPECT_FALSE(cancel_enabled());
}

TEST_F(MatchGridsTest, EveryCharacterIsConsumed) {
  Open(kAccounts);
  for (const Integer code : std::vector<Integer>{'*', '0', 'x', 13, 8, 32, 27})
    EXPECT_FALSE(list(kAccounts).UserKeyPress(code)) << code;
}

TEST_F(MatchGridsTest, KeysThatMoveAreConsumedAndOthersAreNot) {
  Open(kAccounts);
  for (const Integer key : {kHomeKey, kDownKey, kUpKey, kPageDownKey, kPageUpKey, kDeleteKey}) {
    EXPECT_FALSE(list(kAccounts).UserKeyDown(key)) << key;
  }
  for (const Integer key : {kEndKey, kLeftKey, kEnterKey}) EXPECT_TRUE(list(kAccounts).UserKeyDown(key)) << key;
}

TEST_F(MatchGridsTest, OnAFileOfOneRowAWrapRaisesNeitherLeavingNorEntering) {
  *editor_->header = HeaderRecord();
  editor_->AddFileAccount("200", "Dairy");
  Open(kAccounts);
  Watch(kAccounts);
  Press(kDownKey);
  EXPECT_FALSE(cancel_enabled());
  Type("*");
  EXPECT_EQ(grids().Match(kAccounts, 1), 102) << "what was chosen is stored all the same";
  EXPECT_TRUE(cancel_enabled());
  EXPECT_THAT(told_, IsEmpty());
}

TEST_F(MatchGridsTest, OnAFileOfOneRowAStarForWhatIsMatchedAlreadyIsNoChange) {
  *editor_->header = HeaderRecord();
  editor_->AddFileAccount("200", "Dairy");
  Open(kAccounts, {{kAccounts, 1, 102}});
  Type("*");
  EXPECT_EQ(grids().Match(kAccounts, 1), 102);
  EXPECT_FALSE(cancel_enabled());
}

TEST_F(MatchGridsTest, HomeGoesToTheFirstRowInEveryShiftStateAndWithTheListOpen) {
  Open(kAccounts);
  for (Integer shift = 0; shift <= 4; ++shift) {
    Press(kDownKey);
    Press(kDownKey);
    Press(kDownKey, kAltState);
    Press(kHomeKey, shift);
    EXPECT_EQ(grid(kAccounts).Row(), 1) << shift;
    EXPECT_EQ(grid(kAccounts).Column(), 2);
    EXPECT_FALSE(list(kAccounts).DroppedDown());
  }
}

class LongFileTest : public MatchGridsTest {
 protected:
  // 30 accounts, of which eight are in sight; ten rows go into the grid's height, its head taken for one of them.
  LongFileTest() {
    *editor_->header = HeaderRecord();
    for (int i = 1; i <= 30; ++i) editor_->AddFileAccount(std::to_string(i), "account");
    grid(kAccounts).SetPlace({0, 0, 800, MatchEditor::HeightOf(8) + 15});
    Open(kAccounts);
    EXPECT_EQ(grid(kAccounts).WholeRows(), 10);
  }
  [[nodiscard]] Long Row() { return grid(kAccounts).Row(); }
  [[nodiscard]] Long TopRow() { return grid(kAccounts).TopRow(); }
  void ExpectListOverItsRow() {
    EXPECT_EQ(list(kAccounts).Place().top, grid(kAccounts).CellPlace(Row(), 2).top);
    EXPECT_TRUE(grid(kAccounts).IsRowVisible(Row()) || Row() == TopRow() + 8) << Row() << " below " << TopRow();
  }
};

TEST_F(LongFileTest, PageKeysMoveByTheRowsThatFitLessTwo) {
  std::vector<Long> rows;
  for (const Integer key : {kPageDownKey, kPageDownKey, kPageDownKey, kPageDownKey, kPageDownKey, kPageUpKey,
                            kPageUpKey, kPageUpKey, kPageUpKey, kPageUpKey}) {
    Press(key);
    rows.push_back(Row());
    ExpectListOverItsRow();
  }
  EXPECT_THAT(rows, ElementsAre(9, 17, 25, 30, 30, 22, 14, 6, 1, 1));
}

TEST_F(LongFileTest, AKeyThatLeavesTheRowsInSightBringsTheNextOneThere) {
  for (int i = 0; i < 12; ++i) {
    Press(kDownKey);
    ExpectListOverItsRow();
  }
  EXPECT_EQ(Row(), 13);
  EXPECT_EQ(TopRow(), 6);
  for (int i = 0; i < 18; ++i) Type("0");
  EXPECT_EQ(Row(), 1);
  EXPECT_EQ(TopRow(), 1);
}

TEST_F(LongFileTest, AScrollThatKeepsTheRowInSightMovesTheListAlong) {
  for (int i = 0; i < 4; ++i) Press(kDownKey);
  Watch(kAccounts);
  EXPECT_TRUE(grid(kAccounts).UserScroll(3));
  EXPECT_EQ(Row(), 5);
  EXPECT_EQ(list(kAccounts).Place().top, grid(kAccounts).CellPlace(5, 2).top);
  EXPECT_THAT(told_, IsEmpty());
}

TEST_F(LongFileTest, AScrollBelowTheRowTakesTheTopRowAndStoresTheOneItLeaves) {
  list(kAccounts).UserChoose(1);
  EXPECT_TRUE(grid(kAccounts).UserScroll(7));
  EXPECT_EQ(Row(), 7);
  EXPECT_EQ(grids().Match(kAccounts, 1), 101);
  EXPECT_EQ(grids().Match(kAccounts, 7), 0);
  ExpectListOverItsRow();
}

TEST_F(LongFileTest, AScrollAboveTheRowTakesTheLastInSight) {
  grid(kAccounts).UserScroll(20);
  for (int i = 0; i < 6; ++i) Press(kDownKey);
  EXPECT_EQ(Row(), 26);
  grid(kAccounts).UserScroll(17);
  EXPECT_EQ(Row(), 25) << "the ninth, as the height's ten rows less one count";
  EXPECT_EQ(TopRow(), 17) << "and what is shown stays";
  grid(kAccounts).UserScroll(1);
  EXPECT_EQ(Row(), 9);
  ExpectListOverItsRow();
}

TEST_F(LongFileTest, AScrollToTheLastRowTakesIt) {
  grid(kAccounts).UserScroll(30);
  EXPECT_EQ(Row(), 30);
  ExpectListOverItsRow();
}

// --- The open list ---------------------------------------------------------------------------------------------------

TEST_F(MatchGridsTest, AltWithAnArrowOpensTheListAndArrowsMoveInItUntilTheNextCellIsEntered) {
  Open(kAccounts);
  Press(kDownKey, kAltState);
  EXPECT_TRUE(list(kAccounts).DroppedDown());
  EXPECT_FALSE(cancel_enabled());
  Press(kDownKey);
  Press(kDownKey);
  EXPECT_EQ(list(kAccounts).SelectedText(), "1000");
  EXPECT_EQ(grid(kAccounts).Row(), 1);
  EXPECT_EQ(grids().Match(kAccounts, 1), 300);
  grid(kAccounts).UserClick(2, 3);
  EXPECT_FALSE(list(kAccounts).DroppedDown());
  Press(kDownKey);
  EXPECT_EQ(grid(kAccounts).Row(), 3);
}

TEST_F(MatchGridsTest, AltWithAPageKeySetsTheOpenMarkAndIsNotConsumed) {
  for (const Integer key : {kDownKey, kUpKey, kPageDownKey, kPageUpKey}) {
    Open(kAccounts);
    EXPECT_TRUE(list(kAccounts).UserKeyDown(key, kAltState)) << key;
    Press(kDownKey);
    EXPECT_EQ(grid(kAccounts).Row(), 1) << key;
    EXPECT_EQ(list(kAccounts).ListIndex(), 1) << key;
  }
}

TEST_F(MatchGridsTest, WithTheOpenMarkSetTheStepAfterAStarStaysAway) {
  Open(kAccounts);
  Press(kDownKey, kAltState);
  Type("*");
  EXPECT_EQ(grid(kAccounts).Row(), 1);
  EXPECT_EQ(grids().Match(kAccounts, 1), 101);
}

TEST_F(MatchGridsTest, OtherShiftStatesDoNothing) {
  Open(kAccounts);
  Watch(kAccounts);
  for (const Integer key : {kDownKey, kUpKey, kPageDownKey, kPageUpKey}) {
    for (const Integer shift : std::vector<Integer>{1, 2, 3, 5, 6, 7})
      EXPECT_TRUE(list(kAccounts).UserKeyDown(key, shift));
  }
  EXPECT_THAT(told_, IsEmpty());
  EXPECT_EQ(list(kAccounts).ListIndex(), 0);
  EXPECT_FALSE(list(kAccounts).DroppedDown());
  Press(kDownKey);
  EXPECT_EQ(grid(kAccounts).Row(), 2) << "the open mark is not set";
}

// --- Pages -----------------------------------------------------------------------------------------------------------

TEST_F(MatchGridsTest, APageIsRefusedWithASoundWhereItsMatchesAreNotMadeManually) {
  editor_->LoadMatches();
  for (Integer mode = 1; mode <= 2; ++mode) {
    editor_->Combo2.SetListIndex(mode);
    editor_->GoTo(kAccounts);
    EXPECT_EQ(editor_->TabStrip1.Selected(), 1);
    EXPECT_TRUE(editor_->General.Visible());
    EXPECT_FALSE(grids().FrameOf(kAccounts).Visible());
  }
  editor_->GoTo(kFields);
  EXPECT_EQ(grids().CurrentPage(), 2) << "each page has its own mode";
  editor_->TabStrip1.UserChoose(1);
  editor_->Combo3.SetListIndex(1);
  editor_->GoTo(kFields);
  EXPECT_EQ(grids().CurrentPage(), 0);
  EXPECT_THAT(platform_.boxes.Sounds(), ElementsAre("SystemDefault", "SystemDefault", "SystemDefault"));
  EXPECT_THAT(platform_.boxes.Texts(), IsEmpty());
}

TEST_F(MatchGridsTest, ARefusedPageLeavesTheOneThatIsShown) {
  Open(kAccounts);
  editor_->Combo3.SetListIndex(1);
  editor_->GoTo(kFields);
  EXPECT_EQ(editor_->TabStrip1.Selected(), 2);
  EXPECT_TRUE(grids().FrameOf(kAccounts).Visible());
}

TEST_F(MatchGridsTest, OnePageIsShownAtATime) {
  editor_->LoadMatches();
  const auto shown = [&] {
    std::vector<bool> pages{editor_->General.Visible()};
    for (const MatchPage page : {kAccounts, kFields}) pages.push_back(grids().FrameOf(page).Visible());
    return pages;
  };
  editor_->GoTo(kAccounts);
  EXPECT_THAT(shown(), ElementsAre(false, true, false));
  editor_->GoTo(kFields);
  EXPECT_THAT(shown(), ElementsAre(false, false, true));
  editor_->TabStrip1.UserChoose(1);
  EXPECT_THAT(shown(), ElementsAre(true, false, false));
}

TEST_F(MatchGridsTest, AChangeOfPagesLeavesWhetherThereAreChangesAsItWas) {
  Open(kAccounts);
  grid(kAccounts).SetCurrent(1, 1);  // so that entering the page moves the cell
  for (const bool enabled : {false, true}) {
    editor_->SaveButtons1.SetCancelEnabled(enabled);
    editor_->GoTo(kFields);
    EXPECT_EQ(cancel_enabled(), enabled);
    editor_->GoTo(kAccounts);
    EXPECT_EQ(cancel_enabled(), enabled);
  }
}

TEST_F(MatchGridsTest, TheTabKeyOfAChangeOfPagesArrivesWhenThePageIsShown) {
  editor_->LoadMatches();
  editor_->TabStrip1.UserChoose(2);
  EXPECT_TRUE(platform_.keyboard.HasWaiting());
  EXPECT_TRUE(editor_->TabStrip1.HasFocus());
  EXPECT_TRUE(grids().FrameOf(kAccounts).Visible());
  platform_.input.RunOnce();
  EXPECT_TRUE(list(kAccounts).HasFocus());
  editor_->TabStrip1.UserChoose(1);
  EXPECT_FALSE(platform_.keyboard.HasWaiting()) << "the first page needs none";
}

TEST_F(MatchGridsTest, ATabThatIsChosenAgainChangesNothing) {
  Open(kAccounts);
  Watch(kAccounts);
  editor_->TabStrip1.UserChoose(2);
  EXPECT_FALSE(platform_.keyboard.HasWaiting());
  EXPECT_THAT(told_, IsEmpty());
}

TEST_F(MatchGridsTest, APageSelectedByProgramTakesItsTabAlong) {
  editor_->LoadMatches();
  grids().SelectPage(2);
  EXPECT_EQ(editor_->TabStrip1.Selected(), 3);
  EXPECT_EQ(grids().CurrentPage(), 2);
}

TEST_F(MatchGridsTest, APageThatIsChosenWithinAChangeOfPagesComesAfterIt) {
  editor_->LoadMatches();
  bool once = true;
  list(kAccounts).Changed.Connect([&](const Change& change) {
    if (change.kind == Change::Kind::kFront && std::exchange(once, false)) editor_->TabStrip1.UserChoose(3);
  });
  editor_->GoTo(kAccounts);
  EXPECT_EQ(grids().CurrentPage(), 2);
  EXPECT_FALSE(grids().FrameOf(kAccounts).Visible());
  EXPECT_TRUE(grids().FrameOf(kFields).Visible());
}

TEST_F(MatchGridsTest, AFileWithoutAccountsOpensAnEmptyPageWithNothingToEnter) {
  *editor_->header = HeaderRecord();
  Open(kAccounts);
  list(kAccounts).UserFocus();
  for (const Integer key : {kHomeKey, kDownKey, kUpKey, kPageDownKey, kDeleteKey}) Press(key);
  Type("*0+1");
  grid(kAccounts).UserClick(0, 0);
  grids().CommitOpenCells();
  EXPECT_FALSE(cancel_enabled());
}

// --- Looks -----------------------------------------------------------------------------------------------------------

TEST_F(MatchGridsTest, APageThatIsChosenSharesTheWidthOfItsColumnsAnew) {
  editor_->LoadMatches();
  const Long shared = grid(kAccounts).ColumnWidth(1);
  grid(kAccounts).SetColumnWidth(0, grid(kAccounts).ColumnWidth(0) + 100);
  EXPECT_EQ(grid(kAccounts).ColumnWidth(1), shared);
  editor_->GoTo(kAccounts);
  EXPECT_EQ(grid(kAccounts).ColumnWidth(1), shared - 50);
  EXPECT_EQ(grid(kAccounts).ColumnWidth(3), shared - 50);
}

TEST_F(MatchGridsTest, TheColumnsOfDescriptionsShareTheWidthThatIsLeft) {
  Open(kAccounts);
  Grid& shown = grid(kAccounts);
  const auto expect_shared = [&](Long width) {
    const Long left =
        width - 2 * Grid::kBorder - ScriptedScreen::kScrollBarWidth - shown.ColumnWidth(0) - shown.ColumnWidth(2);
    EXPECT_EQ(shown.ColumnWidth(1), left / 2);
    EXPECT_EQ(shown.ColumnWidth(3), left / 2);
  };
  expect_shared(800);
  shown.SetPlace({10, 30, 1000, 300});
  expect_shared(1000);
  EXPECT_EQ(list(kAccounts).Place(), shown.CellPlace(1, 2)) << "the list follows";
  const Long shared = shown.ColumnWidth(1);
  shown.SetColumnWidth(0, 200);
  shown.UserClick(1, 2);
  EXPECT_EQ(shown.ColumnWidth(1), shared) << "entering a cell shares nothing anew";
  Press(kDownKey);
  expect_shared(1000);
}

TEST_F(MatchGridsTest, NothingButTheRowsThatChangedIsDrawnAgain) {
  Open(kAccounts);
  Type("*");
  std::set<Long> drawn;
  std::vector<Change> others;
  grid(kAccounts).Changed.Connect([&](const Change& change) {
    if (change.kind == Change::Kind::kRows)
      drawn.insert(change.first);
    else
      others.push_back(change);
  });
  Press(kDownKey);
  Type("*");
  EXPECT_THAT(drawn, ElementsAre(3));
  EXPECT_THAT(others, ElementsAre(Change{Change::Kind::kSelection, 2, 3}, Change{Change::Kind::kSelection, 3, 4}));
}

// --- Failures --------------------------------------------------------------------------------------------------------

TEST_F(MatchGridsTest, AFailureOfTheHostIsToldOnceAndTheEditorKeepsWhatItHolds) {
  Open(kAccounts);
  host_->record.FailOn("AccountRecord.Code", 1, Failure(FailureNumber::kDeviceError, "gone", "Accounts"));
  Type("*");
  failures_expected_ = 1;
  ASSERT_EQ(editor_->failures.size(), 1U);
  EXPECT_EQ(editor_->failures[0].Description(), "gone");
  EXPECT_EQ(grids().Match(kAccounts, 1), 101);
  Press(kHomeKey);
  Type("*");
  EXPECT_EQ(Ours(kAccounts, 1), "100: Front of shop") << "nothing is stuck";
}

}  // namespace
}  // namespace tallybook::testing
