#include <gmock/gmock.h>
#include <vector>

#include "dialogs/DefinitionControls.h"
#include "forms/Form.h"
#include "forms/Grid.h"
#include "forms/ListControls.h"

namespace tallybook::testing {
namespace {

using ::testing::ElementsAre;

class DefinitionControlsTest : public ::testing::Test {
 protected:
  [[nodiscard]] std::vector<Text> Column(Long column) const {
    std::vector<Text> cells;
    for (Long row = 0; row < grid.Rows(); ++row) cells.push_back(grid.Cell(row, column));
    return cells;
  }
  [[nodiscard]] std::vector<Text> Entries() const {
    std::vector<Text> entries;
    for (Integer i = 0; i < list.ListCount(); ++i) entries.push_back(list.List(i));
    return entries;
  }

  Form form{"form"};
  Grid grid{form, "QDXGrid"};
  ComboBox list{form, "Combo1"};
};

TEST_F(DefinitionControlsTest, BuildsSixFixedRowsAndAnEmptyColumn) {
  BuildHeaderGrid(grid);
  EXPECT_THAT(Column(0), ElementsAre("Filename:", "System Name in QDX File:", "Date/Time File Created:",
                                     "First Date in File:", "Last Date in File:", "Data Level of Data:"));
  EXPECT_THAT(Column(1), ElementsAre("", "", "", "", "", ""));
  EXPECT_EQ(grid.FixedColumns(), 1);
}

TEST_F(DefinitionControlsTest, PutsLineByLineIntoTheRightColumn) {
  BuildHeaderGrid(grid);
  ShowHeaderLines(grid, "a\nb\n\nd\ne\nf");
  EXPECT_THAT(Column(1), ElementsAre("a", "b", "", "d", "e", "f"));
}

TEST_F(DefinitionControlsTest, TakesALastLineWithAndWithoutItsLineFeed) {
  for (const char* text : {"a\nb", "a\nb\n"}) {
    BuildHeaderGrid(grid);
    ShowHeaderLines(grid, text);
    EXPECT_THAT(Column(1), ElementsAre("a", "b", "", "", "", "")) << text;
  }
}

TEST_F(DefinitionControlsTest, ShowsNothingOfAnEmptyText) {
  BuildHeaderGrid(grid);
  ShowHeaderLines(grid, "a\nb\nc\nd\ne\nf");
  ShowHeaderLines(grid, "");
  EXPECT_THAT(Column(1), ElementsAre("a", "b", "c", "d", "e", "f"));
}

TEST_F(DefinitionControlsTest, DropsLinesBeyondTheGrid) {
  BuildHeaderGrid(grid);
  ShowHeaderLines(grid, "1\n2\n3\n4\n5\n6\n7\n8");
  EXPECT_THAT(Column(1), ElementsAre("1", "2", "3", "4", "5", "6"));
}

TEST_F(DefinitionControlsTest, FillsTheListsInTheOrderOfTheirCodes) {
  FillDispositions(list);
  EXPECT_THAT(Entries(), ElementsAre("Deleted", "Renamed (*.XDQ)", "Kept"));
  list.Clear();
  FillAccountModes(list);
  EXPECT_THAT(Entries(), ElementsAre("Manually", "One-for-One", "All-to-One"));
  list.Clear();
  FillFieldModes(list);
  EXPECT_THAT(Entries(), ElementsAre("Manually", "One-for-One"));
}

TEST_F(DefinitionControlsTest, SelectsNoneForAPositionThatTheListHasNot) {
  FillFieldModes(list);
  for (const int position : {-1, 2, 40'000}) {
    SelectPosition(list, 1);
    EXPECT_EQ(list.ListIndex(), 1);
    SelectPosition(list, position);
    EXPECT_EQ(list.ListIndex(), kNoEntry) << position;
  }
}

}  // namespace
}  // namespace tallybook::testing
