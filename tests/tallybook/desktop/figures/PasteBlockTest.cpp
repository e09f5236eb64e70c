#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tallybook/desktop/figures/PasteBlock.h"
#include "tests/tallybook/desktop/figures/FiguresFixture.h"

namespace tallybook::desktop {
namespace {

using application::FigureChange;
using testing::Day;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

class PasteBlockTest : public testing::FiguresFixture {
 protected:
  PasteBlockTest() { Choose(FigureView::kAccount, kDayLevel, kPeriodLevel); }
  PasteBlock Lay(const Text& clipboard, CellRange selection = {0, 0, 0, 0}) {
    return LayOnTable(Table(), selection, clipboard, NumberStyle());
  }
};

TEST_F(PasteBlockTest, TellsOldAndNewOfEachCell) {
  const PasteBlock block = Lay("11\t2\r\n20\t\u2013\r\n");
  EXPECT_THAT(block.troubles, IsEmpty());
  ASSERT_EQ(block.figures.size(), 4U);
  EXPECT_EQ(block.figures[0].before, 10);
  EXPECT_EQ(block.figures[0].after, 11);
  EXPECT_EQ(block.RowsChanged(), 1) << "the second row stands so already";
  EXPECT_EQ(block.FiguresChanged(), 2);
}

TEST_F(PasteBlockTest, ChangesOnlyWhatIsAnother) {
  EXPECT_THAT(ChangesOf(Lay("11\t2\n20\t"), Table()),
              ElementsAre(FigureChange{101, Day(2003, 1, 1), 1, 11}, FigureChange{101, Day(2003, 1, 1), 4, 2}));
}

TEST_F(PasteBlockTest, FillsTheSelectionWithASingleCell) {
  EXPECT_EQ(Lay("5", {0, 0, 2, 1}).figures.size(), 6U);
}

TEST_F(PasteBlockTest, RefusesABlockThatIsLargerThanTheTable) {
  EXPECT_THAT(Lay("1\t2\t3\t4").troubles, ElementsAre("The block has 4 columns, and the table has 3 from here on."));
  EXPECT_THAT(Lay("1\n2\n3", {29, 0, 29, 0}).troubles,
              ElementsAre("The block has 3 rows, and the table has 2 from here on."));
}

TEST_F(PasteBlockTest, RefusesAllOfABlockWithACellThatCannotBeRead) {
  const PasteBlock block = Lay("1\nSales\n3", {5, 1, 5, 1});
  EXPECT_FALSE(block.IsGood());
  EXPECT_THAT(block.troubles, ElementsAre(HasSubstr("Row 2, column 1 of the block: \"Sales\" is no figure")));
}

TEST_F(PasteBlockTest, RefusesWhatTheBookKeepsByItself) {
  EXPECT_THAT(Lay("1", {0, 2, 0, 2}).troubles, ElementsAre("\"Balance\" is kept by the book itself."));
}

TEST_F(PasteBlockTest, NamesAPasteByItsSizeAndASingleFigureInFull) {
  EXPECT_EQ(WhatRan(Table(), ChangesOf(Lay("12.5"), Table())), "set 100 2003-01-01 1 12.5");
  EXPECT_EQ(WhatRan(Table(), ChangesOf(Lay("1\n2\n3"), Table())), "paste 3 figures");
}

TEST_F(PasteBlockTest, IsMadeOfWhatWasCopied) {
  Choose(FigureView::kField, kDayLevel, kPeriodLevel);
  const PasteBlock block = Lay("1\t2\n3\t4", {0, 3, 0, 3});
  EXPECT_THAT(ChangesOf(block, Table()),
              ElementsAre(FigureChange{101, Day(2003, 1, 4), 1, 1}, FigureChange{101, Day(2003, 1, 5), 1, 2},
                          FigureChange{205, Day(2003, 1, 4), 1, 3}, FigureChange{205, Day(2003, 1, 5), 1, 4}));
}

}  // namespace
}  // namespace tallybook::desktop
