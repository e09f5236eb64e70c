#include <gmock/gmock.h>
#include <stdexcept>
#include <vector>

#include "forms/CHookMouseWheel.h"
#include "forms/Form.h"
#include "forms/Grid.h"
#include "forms/ListControls.h"
#include "forms/PlainControls.h"
#include "forms/WheelScroll.h"
#include "platform/Platform.h"
#include "tests/support/ScriptedPlatform.h"

namespace tallybook::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr Long kUp = 120;
constexpr Long kDown = -120;

class WheelScrollTest : public ::testing::Test {
 protected:
  WheelScrollTest() {
    form_.Show();
    grid_.SetSize(101, 2);  // a head and 100 rows
    grid_.SetFixedRows(1);
    grid_.SetRowFactor(0, 1.25);
    // The head and nine rows more.
    grid_.SetPlace({0, 0, 300, grid_.RowHeight(0) + 9 * grid_.RowHeight(1)});
    grid_.Scroll.Connect([this] { scrolled_.push_back(grid_.TopRow()); });
  }

  // A control's own window inside the form's.
  Long WindowOf(Control& control) {
    control.SetHwnd(platform_.screen.AddControlWindow(form_.Hwnd(), {10, 10, 50, 50}));
    return control.Hwnd();
  }

  // The first row after a turn over the grid that stood at `top`.
  Long TopAfter(Long top, Long delta) {
    grid_.SetTopRow(top);
    GridWheelMove(grid_, delta, 0);
    return grid_.TopRow();
  }

  // The value after a turn over the bar that stood at `value`.
  Long ValueAfter(ScrollBar& bar, Long value, Long delta, Long shift = 0) {
    bar.SetValue(value);
    WheelMove(bar.Hwnd(), delta, shift);
    return bar.Value();
  }

  ScriptedPlatform platform_;
  Form form_{"frmWheel"};
  Grid grid_{form_, "Grid1"};
  std::vector<Long> scrolled_;
};

// --- What is under the pointer ---------------------------------------------------------------------------------------

TEST_F(WheelScrollTest, AWindowIsThatOfAFormOrOfAControl) {
  Form other("frmOther");
  other.Load();
  Label label(other, "Label1");
  label.SetHwnd(platform_.screen.AddControlWindow(other.Hwnd(), {0, 0, 10, 10}));
  const Long grid_window = WindowOf(grid_);
  EXPECT_EQ(ControlFromWindow(form_.Hwnd()).form, &form_);
  EXPECT_EQ(ControlFromWindow(other.Hwnd()).form, &other);
  EXPECT_EQ(ControlFromWindow(grid_window).control, &grid_);
  EXPECT_EQ(ControlFromWindow(grid_window).form, nullptr);
  EXPECT_EQ(ControlFromWindow(label.Hwnd()).control, &label);
}

TEST_F(WheelScrollTest, AWindowOfNobodyAndNoWindowAreNothing) {
  const Long host = platform_.screen.AddHostWindow();
  for (const Long window : {host, Long{0}, Long{4711}}) {
    EXPECT_EQ(ControlFromWindow(window).form, nullptr);
    EXPECT_EQ(ControlFromWindow(window).control, nullptr);  // meant for 0 too, which is what controls without one have
    WheelMove(window, kDown, 0);
  }
  EXPECT_THAT(scrolled_, IsEmpty());
}

TEST_F(WheelScrollTest, OverAFormTheControlWithTheFocusMoves) {
  WheelMove(form_.Hwnd(), kDown, 0);
  EXPECT_THAT(scrolled_, IsEmpty()) << "no control has the focus yet";
  grid_.SetFocus();
  WheelMove(form_.Hwnd(), kDown, 0);
  EXPECT_THAT(scrolled_, ElementsAre(4));
}

TEST_F(WheelScrollTest, OverAControlThatOneMovesWhateverHasTheFocus) {
  ListControl list(form_, "List1");
  list.AddItem("a", 1);
  list.AddItem("b", 2);
  list.SetFocus();
  WheelMove(WindowOf(grid_), kDown, 0);
  EXPECT_THAT(scrolled_, ElementsAre(4));
  WheelMove(WindowOf(list), kDown, 0);
  EXPECT_EQ(list.ListIndex(), kNoEntry) << "other kinds of controls stay";
}

// --- Scroll bars -----------------------------------------------------------------------------------------------------

class ScrollBarWheelTest : public WheelScrollTest {
 protected:
  ScrollBarWheelTest() {
    bar_.SetMin(0);
    bar_.SetMax(100);
    bar_.SetSmallChange(3);
    bar_.SetLargeChange(20);
    WindowOf(bar_);
  }
  ScrollBar bar_{form_, "VScroll1"};
};

TEST_F(ScrollBarWheelTest, MovesByItsSmallChangeWhateverTheAmount) {
  EXPECT_EQ(ValueAfter(bar_, 50, kDown), 53);
  EXPECT_EQ(ValueAfter(bar_, 50, kUp), 47);
  EXPECT_EQ(ValueAfter(bar_, 50, 3 * kUp), 47);
  EXPECT_EQ(ValueAfter(bar_, 50, 0), 50);
}

TEST_F(ScrollBarWheelTest, WithShiftAloneMovesByItsLargeChange) {
  EXPECT_EQ(ValueAfter(bar_, 50, kDown, 1), 70);
  EXPECT_EQ(ValueAfter(bar_, 50, kUp, 1), 30);
  for (const Long shift : {2, 3, 4, 5}) EXPECT_EQ(ValueAfter(bar_, 50, kDown, shift), 53) << shift;
}

TEST_F(ScrollBarWheelTest, AStepOutOfItsRangeLeavesItWhereItIs) {
  EXPECT_EQ(ValueAfter(bar_, 98, kDown), 98);
  EXPECT_EQ(ValueAfter(bar_, 97, kDown), 100);
  EXPECT_EQ(ValueAfter(bar_, 2, kUp), 2);
  EXPECT_EQ(ValueAfter(bar_, 3, kUp), 0);
  EXPECT_EQ(ValueAfter(bar_, 90, kDown, 1), 90);
}

TEST_F(ScrollBarWheelTest, ARangeThatRunsTheOtherWayIsOneAsWell) {
  bar_.SetMin(100);
  bar_.SetMax(0);
  EXPECT_EQ(ValueAfter(bar_, 50, kDown), 53);
  EXPECT_EQ(ValueAfter(bar_, 99, kDown), 99);
}

TEST_F(ScrollBarWheelTest, AStepBeyond32BitsIsOutOfAnyRange) {
  bar_.SetMax(2'147'483'647);
  bar_.SetSmallChange(2'147'483'647);
  EXPECT_EQ(ValueAfter(bar_, 5, kDown), 5);
  EXPECT_EQ(ValueAfter(bar_, 0, kDown), 2'147'483'647);
}

TEST_F(ScrollBarWheelTest, WithoutAStepOfItsOwnItMovesByOne) {
  ScrollBar plain(form_, "HScroll1");
  WindowOf(plain);
  EXPECT_EQ(ValueAfter(plain, 5, kDown), 6);
  EXPECT_EQ(ValueAfter(plain, 5, kDown, 1), 6);
}

TEST_F(ScrollBarWheelTest, AListenerThatFailsIsPassedOver) {
  bar_.Change.Connect([] { throw std::runtime_error("odd"); });
  EXPECT_NO_THROW(WheelMove(bar_.Hwnd(), kDown, 0));
  EXPECT_EQ(bar_.Value(), 3);
}

// --- Grids, by lines -------------------------------------------------------------------------------------------------

TEST_F(WheelScrollTest, AGridMovesByTheLinesThatTheUserHasSet) {
  EXPECT_EQ(TopAfter(10, kDown), 13);
  EXPECT_EQ(TopAfter(10, kUp), 7);
  platform_.wheel.SetScrollLines(1);
  EXPECT_EQ(TopAfter(10, kDown), 11);
  EXPECT_EQ(TopAfter(10, 5 * kDown), 11) << "whatever the amount";
  EXPECT_EQ(TopAfter(10, 0), 11) << "no amount counts as down";
}

TEST_F(WheelScrollTest, AGridStopsAtItsFirstRowBelowTheHeadAndAtItsLast) {
  EXPECT_EQ(TopAfter(2, kUp), 1);
  EXPECT_EQ(TopAfter(1, kUp), 1);
  EXPECT_EQ(TopAfter(98, kDown), 100);
  EXPECT_EQ(TopAfter(100, kDown), 100);
}

TEST_F(WheelScrollTest, ShiftMakesNoDifferenceOnAGrid) {
  const Long window = WindowOf(grid_);
  for (const Long shift : {0, 1, 7}) {
    grid_.SetTopRow(10);
    WheelMove(window, kDown, shift);
    EXPECT_EQ(grid_.TopRow(), 13) << shift;
  }
}

TEST_F(WheelScrollTest, AGridTellsThatItWasScrolledOnceAndOnlyWhereItMoved) {
  GridWheelMove(grid_, kDown, 0);
  EXPECT_THAT(scrolled_, ElementsAre(4));
  GridWheelMove(grid_, kUp, 0);
  EXPECT_THAT(scrolled_, ElementsAre(4, 1));
  GridWheelMove(grid_, kUp, 0);
  EXPECT_THAT(scrolled_, ElementsAre(4, 1));
}

TEST_F(WheelScrollTest, AnEmptyGridAndOneWithItsHeadAloneStay) {
  for (const Long rows : {0, 1}) {
    for (const Long lines : {Long{3}, kScrollPage}) {
      platform_.wheel.SetScrollLines(lines);
      grid_.SetSize(rows, 2);
      EXPECT_NO_THROW(GridWheelMove(grid_, kDown, 0));
      EXPECT_NO_THROW(GridWheelMove(grid_, kUp, 0));
    }
  }
  EXPECT_THAT(scrolled_, IsEmpty());
}

TEST_F(WheelScrollTest, AListenerOfTheGridThatFailsIsPassedOver) {
  grid_.Scroll.Connect([] { throw std::runtime_error("odd"); });
  EXPECT_NO_THROW(GridWheelMove(grid_, kDown, 0));
  EXPECT_EQ(grid_.TopRow(), 4);
}

TEST_F(WheelScrollTest, WithoutAWheelAGridStays) {
  ThePlatform().wheel = nullptr;
  EXPECT_EQ(TopAfter(10, kDown), 10);
}

// --- Grids, by pages -------------------------------------------------------------------------------------------------

class PageWheelTest : public WheelScrollTest {
 protected:
  PageWheelTest() { platform_.wheel.SetScrollLines(kScrollPage); }
};

TEST_F(PageWheelTest, APageIsWhatGoesIntoTheGridInRowsOfTheHeadsHeight) {
  // Nine rows and a head of a row and a quarter: 8.2 of the head's.
  EXPECT_EQ(TopAfter(10, kDown), 18);
  EXPECT_EQ(TopAfter(30, kUp), 22);
}

TEST_F(PageWheelTest, APageEndsAtARowThatIsShown) {
  for (const Long row : {12, 13, 14}) grid_.SetRowFactor(row, 2);
  // The rows 10 to 15 are shown: two, three of double height, and one.
  EXPECT_EQ(TopAfter(10, kDown), 15);
}

TEST_F(PageWheelTest, NearTheEndAPageIsWhatIsStillThere) {
  EXPECT_EQ(TopAfter(97, kDown), 100);
  EXPECT_EQ(TopAfter(97, kUp), 94);
  EXPECT_EQ(TopAfter(100, kDown), 100);
}

// Meant: a page is what is shown below the top row, and there that is nothing. Lines lead back, and so do the keys.
TEST_F(PageWheelTest, AGridThatShowsItsLastRowAloneIsNotScrolledUpByPages) {
  EXPECT_EQ(TopAfter(100, kUp), 100);
  EXPECT_EQ(TopAfter(99, kUp), 98) << "of two rows a page is one";
  platform_.wheel.SetScrollLines(3);
  EXPECT_EQ(TopAfter(100, kUp), 97);
}

TEST_F(PageWheelTest, AGridWithRoomForMoreRowsThanItHasStays) {
  grid_.SetSize(7, 2);  // 8 heads' heights fit
  EXPECT_EQ(TopAfter(3, kDown), 3);
  EXPECT_EQ(TopAfter(3, kUp), 3);
  grid_.SetSize(8, 2);
  EXPECT_EQ(TopAfter(3, kDown), 7);
}

TEST_F(PageWheelTest, AGridWhoseHeadHasNoHeightStays) {
  grid_.SetRowFactor(0, 0);
  EXPECT_EQ(TopAfter(10, kDown), 10);
}

TEST_F(PageWheelTest, AGridThatWasNeverPlacedStays) {
  grid_.SetPlace({});
  EXPECT_EQ(TopAfter(10, kDown), 10);
}

// --- From the message to the control ---------------------------------------------------------------------------------

TEST_F(WheelScrollTest, AListenerThatHandsTheTurnOnScrollsWhatIsUnderThePointer) {
  platform_.screen.SetWindowPlace(form_.Hwnd(), {100, 100, 400, 300});
  grid_.SetHwnd(platform_.screen.AddControlWindow(form_.Hwnd(), {120, 120, 300, 164}));
  CHookMouseWheel hook;
  hook.SetHwnd(form_.Hwnd());
  hook.MouseWheel.Connect(
      [](Long window, Long delta, Long shift, Long, Long, Long, bool&) { WheelMove(window, delta, shift); });
  platform_.wheel.Turn(form_.Hwnd(), -120, 130, 130);
  EXPECT_EQ(grid_.TopRow(), 4);
  platform_.wheel.Turn(form_.Hwnd(), -120, 105, 105);
  EXPECT_EQ(grid_.TopRow(), 4) << "over the form, where nothing has the focus";
  platform_.wheel.Turn(form_.Hwnd(), -120, 10, 10);
  EXPECT_EQ(grid_.TopRow(), 4) << "over nothing";
}

}  // namespace
}  // namespace tallybook::testing
