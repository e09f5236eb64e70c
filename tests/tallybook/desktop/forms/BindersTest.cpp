#include <QCalendarWidget>
#include <QCheckBox>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QScrollBar>
#include <QTabBar>
#include <QTableView>
#include <vector>

#include "base/Dates.h"
#include "forms/Grid.h"
#include "forms/HostControls.h"
#include "forms/KeyStrings.h"
#include "forms/ListControls.h"
#include "forms/OptionGroup.h"
#include "forms/PlainControls.h"
#include "forms/TextBox.h"
#include "tallybook/desktop/forms/Binders.h"
#include "tests/tallybook/desktop/forms/FormsFixture.h"

namespace tallybook::desktop::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using views::AtLeast;
using views::Fields;
using views::Rows;
using views::Shown;

class BindersTest : public FormsFixture {
 protected:
  Form form_{"frmTest"};
};

class FirstKeyTest : public BindersTest {
 protected:
  FirstKeyTest() {
    Describe(Fields({Shown({"Text1"}), Shown({"Check1"})}));
    text_.SetText("Export.QDX");
    Show(form_);
  }

  TextBox text_{form_, "Text1"};
  CheckBox check_{form_, "Check1"};
};

TEST_F(FirstKeyTest, TheFormHearsOnceOfAKeyThatNothingTakes) {
  int heard = 0;
  check_.KeyDown.Connect([&](Integer& /*key*/, Integer /*shift*/) { ++heard; });
  check_.SetFocus();
  Press(Qt::Key_F5);
  EXPECT_EQ(heard, 1);
}

TEST_F(FirstKeyTest, WhatIsTypedReplacesWhatStandsInTheBoxThatTheWindowBeginsWith) {
  Type("a");
  EXPECT_EQ(text_.Text(), "a");
}

// --- Text box --------------------------------------------------------------------------------------------------------

class TextBoxBinderTest : public BindersTest {
 protected:
  TextBoxBinderTest() {
    Describe(Fields({Shown({"Text1"}), Shown({"Text2"})}));
    box_.SetCaption("&Name:");
    box_.SetText("abc");
    Show(form_);
  }
  [[nodiscard]] QLineEdit& Edit() const { return WidgetOf<QLineEdit>(box_); }

  TextBox box_{form_, "Text1"};
  TextBox other_{form_, "Text2"};
};

TEST_F(TextBoxBinderTest, ShowsTheTextAndFollowsIt) {
  EXPECT_EQ(Edit().text(), "abc");
  box_.SetText(
      "d\xC3\xA9"
      "f");
  EXPECT_EQ(Edit().text(), QString::fromUtf8("d\xC3\xA9"
                                             "f"));
  box_.SetSelection(1, 2);
  EXPECT_EQ(Edit().selectedText(), QString::fromUtf8("\xC3\xA9"
                                                     "f"));
}

TEST_F(TextBoxBinderTest, WhatIsTypedGoesThroughTheControl) {
  std::vector<Integer> pressed;
  box_.KeyPress.Connect([&](Integer& code) {
    pressed.push_back(code);
    if (code == 'x') code = 'y';
    if (code == 'q') code = 0;
  });
  box_.SetFocus();
  box_.SetSelection(3, 0);
  Type("xq1");
  EXPECT_EQ(box_.Text(), "abcy1");
  EXPECT_EQ(Edit().text(), "abcy1");
  EXPECT_THAT(pressed, ElementsAre('x', 'q', '1'));
}

TEST_F(TextBoxBinderTest, TypingReplacesWhatTheUserHasSelected) {
  box_.SetFocus();
  Edit().setSelection(0, 2);
  Type("Z");
  EXPECT_EQ(box_.Text(), "Zc");
  EXPECT_EQ(box_.SelStart(), 1);
}

TEST_F(TextBoxBinderTest, KeysWithoutACharacterAreTheWidgets) {
  box_.SetFocus();
  Press(Qt::Key_Home);
  Press(Qt::Key_Delete);
  EXPECT_EQ(box_.Text(), "bc");
  Press(Qt::Key_End);
  Press(Qt::Key_Backspace);
  EXPECT_EQ(box_.Text(), "b");
  EXPECT_EQ(Edit().text(), "b");
}

TEST_F(TextBoxBinderTest, UndoGoesBackOverWhatWasTyped) {
  box_.SetFocus();
  Press(Qt::Key_End);
  Type("de");
  Press(Qt::Key_Z, Qt::ControlModifier);
  EXPECT_LT(box_.Text().size(), 5U);
  EXPECT_EQ(Edit().text().toStdString(), box_.Text());
}

TEST_F(TextBoxBinderTest, ACharacterThatTheCodePageLacksIsTakenWithTheText) {
  box_.SetFocus();
  Press(Qt::Key_End);
  QTest::sendKeyEvent(QTest::Click, &Edit(), Qt::Key_unknown, QString::fromUtf8("\xC5\x82"), Qt::NoModifier);
  EXPECT_EQ(box_.Text(), "abc\xC5\x82");
}

TEST_F(TextBoxBinderTest, TakesWhatAnInputMethodCommits) {
  box_.SetFocus();
  Edit().selectAll();
  QInputMethodEvent commit;
  commit.setCommitString("whole");
  QApplication::sendEvent(&Edit(), &commit);
  EXPECT_EQ(box_.Text(), "whole");
  EXPECT_EQ(Edit().text(), "whole");
}

TEST_F(TextBoxBinderTest, ALockedBoxOnlyShows) {
  box_.SetLocked(true);
  box_.SetFocus();
  Type("x");
  Press(Qt::Key_Delete);
  EXPECT_EQ(box_.Text(), "abc");
  EXPECT_EQ(Edit().text(), "abc");
}

TEST_F(TextBoxBinderTest, TheLabelBearsTheCaptionAndItsMnemonicLeadsToTheBox) {
  other_.SetFocus();
  Press(Qt::Key_N, Qt::AltModifier);
  EXPECT_TRUE(box_.HasFocus());
  EXPECT_TRUE(Edit().hasFocus());
  EXPECT_EQ(Edit().accessibleName(), "Name");
}

TEST_F(TextBoxBinderTest, TheFocusGoesBothWays) {
  other_.SetFocus();
  EXPECT_TRUE(WidgetOf(other_).hasFocus());
  QTest::mouseClick(&Edit(), Qt::LeftButton);
  EXPECT_TRUE(box_.HasFocus());
  Press(Qt::Key_Tab);
  EXPECT_TRUE(other_.HasFocus());
  EXPECT_TRUE(WidgetOf(other_).hasFocus());
  Press(Qt::Key_Backtab, Qt::ShiftModifier);
  EXPECT_TRUE(box_.HasFocus());
}

TEST_F(TextBoxBinderTest, TheTabKeySelectsWhatStandsInTheBoxThatItComesTo) {
  other_.SetText("old");
  box_.SetFocus();
  Press(Qt::Key_Tab);
  Type("new");
  EXPECT_EQ(other_.Text(), "new");
}

TEST_F(TextBoxBinderTest, AKeyThatTheDialogConsumesDoesNothing) {
  box_.SetFocus();
  box_.KeyDown.Connect([](Integer& key, Integer) { key = 0; });
  Type("x");
  Press(Qt::Key_Delete);
  EXPECT_EQ(box_.Text(), "abc");
}

TEST_F(TextBoxBinderTest, WhatIsDisabledAndEnabledAgainHasTheFocusAgain) {
  box_.SetFocus();
  box_.SetEnabled(false);
  EXPECT_FALSE(Edit().hasFocus());
  EXPECT_TRUE(box_.HasFocus());
  box_.SetEnabled(true);
  EXPECT_TRUE(Edit().hasFocus());
}

// --- Buttons ---------------------------------------------------------------------------------------------------------

class ButtonsTest : public BindersTest {
 protected:
  ButtonsTest() {
    views::Part foot = views::Buttons({views::As(views::Role::kMain, {"SaveButtons1"})});
    Describe(Rows({Shown({"Text1"}), Shown({"Command1"}), Shown({"Check1"}), foot}));
    button_.SetCaption("&Print");
    check_.SetCaption("&On");
    save_.SetCaption("&Save");
    button_.Click.Connect([this] { told_.emplace_back("print"); });
    check_.Click.Connect([this] { told_.emplace_back(check_.Checked() ? "on" : "off"); });
    save_.Click.Connect([this](Integer button) { told_.push_back("save " + std::to_string(button)); });
    Show(form_);
  }

  TextBox text_{form_, "Text1"};
  CommandButton button_{form_, "Command1"};
  CheckBox check_{form_, "Check1"};
  SaveButtons save_{form_, "SaveButtons1"};
  std::vector<Text> told_;
};

TEST_F(ButtonsTest, AreClicked) {
  QTest::mouseClick(&WidgetOf(button_), Qt::LeftButton);
  EXPECT_TRUE(button_.HasFocus());
  Press(Qt::Key_Space);
  EXPECT_THAT(told_, ElementsAre("print", "print"));
}

TEST_F(ButtonsTest, EnterPressesTheButtonWithTheFocusAndElsewhereTheMainOne) {
  button_.SetFocus();
  Press(Qt::Key_Return);
  text_.SetFocus();
  Press(Qt::Key_Return);
  Press(Qt::Key_Escape);
  EXPECT_THAT(told_, ElementsAre("print", "save 1", "save 0"));
}

TEST_F(ButtonsTest, ACheckBoxIsSetFromBothSides) {
  check_.SetFocus();
  Press(Qt::Key_Space);
  EXPECT_TRUE(check_.Checked());
  check_.SetChecked(false);
  EXPECT_FALSE(WidgetOf<QCheckBox>(check_).isChecked());
  EXPECT_THAT(told_, ElementsAre("on", "off"));
}

TEST_F(ButtonsTest, TheSaveButtonsAreOneStopWithTwoButtons) {
  check_.SetFocus();
  Press(Qt::Key_Tab);
  EXPECT_TRUE(save_.HasFocus());
  Press(Qt::Key_Tab);
  EXPECT_TRUE(save_.HasFocus());
  Press(Qt::Key_Return);
  Press(Qt::Key_Tab);
  EXPECT_TRUE(text_.HasFocus());
  EXPECT_THAT(told_, ElementsAre("save 0"));
}

TEST_F(ButtonsTest, WhatWouldLoseNothingSaysClose) {
  auto* const cancel = WindowOf(form_).findChild<QPushButton*>("SaveButtons1Cancel");
  EXPECT_EQ(cancel->text(), "&Cancel");
  save_.SetCancelEnabled(false);
  EXPECT_EQ(cancel->text(), "&Close");
  QTest::mouseClick(cancel, Qt::LeftButton);
  EXPECT_THAT(told_, ElementsAre("save 0"));
}

TEST_F(ButtonsTest, AMnemonicPresses) {
  Press(Qt::Key_P, Qt::AltModifier);
  EXPECT_TRUE(RunUntil([&] { return !told_.empty(); }, 1000));
  EXPECT_THAT(told_, ElementsAre("print"));
}

TEST_F(ButtonsTest, ADisabledButtonIsNotClicked) {
  button_.SetEnabled(false);
  QTest::mouseClick(&WidgetOf(button_), Qt::LeftButton);
  EXPECT_THAT(told_, IsEmpty());
}

// What the application puts beside the buttons of a form.
class AddedButtonTest : public ButtonsTest {
 protected:
  AddedButtonTest() {
    form_.Unload();
    text_.SetCaption("Name:");
    screen.SetAdditions([this](const Form& form) {
      EXPECT_EQ(&form, &form_);
      FormAddition addition;
      addition.may_press = [this] {
        told_.emplace_back("may it?");
        return may_;
      };
      addition.buttons = {{.caption = "Pre&view",
                           .act =
                               [this] {
                                 told_.emplace_back("view");
                                 return goes_on_;
                               }},
                          {.caption = "Chec&k", .act = [this] {
                             told_.emplace_back("check");
                             return false;
                           }}};
      addition.choice = {
          .caption = "&Whole", .help = "All of it or nothing.", .is_on = true, .turned = [this](bool on) {
            told_.emplace_back(on ? "whole" : "in part");
          }};
      addition.before_shown = [this] { ++shown_; };
      return addition;
    });
    Show(form_);
  }

  bool may_ = true;
  bool goes_on_ = false;
  int shown_ = 0;
};

TEST_F(AddedButtonTest, ItsButtonPressesTheMainOneWhereWhatItDoesWantsThat) {
  auto* const added = WindowOf(form_).findChild<QPushButton*>("SaveButtons1Added");
  QTest::mouseClick(added, Qt::LeftButton);
  EXPECT_THAT(told_, ElementsAre("view"));
  goes_on_ = true;
  QTest::mouseClick(added, Qt::LeftButton);
  EXPECT_THAT(told_, ElementsAre("view", "view", "may it?", "save 1"));
}

TEST_F(AddedButtonTest, IsAskedBeforeTheMainButtonActsHoweverItIsPressed) {
  may_ = false;
  text_.SetFocus();
  Press(Qt::Key_Return);
  EXPECT_THAT(told_, ElementsAre("may it?"));
  may_ = true;
  QTest::mouseClick(&WidgetOf(save_), Qt::LeftButton);
  Press(Qt::Key_Escape);
  EXPECT_THAT(told_, ElementsAre("may it?", "may it?", "save 1", "save 0"));
}

TEST_F(AddedButtonTest, ItsButtonStandsBetweenTheTwoAndIsReachedByEveryKey) {
  check_.SetFocus();
  for (int times = 0; times < 2; ++times) Press(Qt::Key_Tab);
  EXPECT_TRUE(save_.HasFocus());
  Press(Qt::Key_Return);
  EXPECT_THAT(told_, ElementsAre("view"));
  for (int times = 0; times < 2; ++times) Press(Qt::Key_Right);
  Press(Qt::Key_Return);
  for (int times = 0; times < 2; ++times) Press(Qt::Key_Left);
  Press(Qt::Key_Space);
  EXPECT_THAT(told_, ElementsAre("view", "save 0", "view"));
  Press(Qt::Key_V, Qt::AltModifier);
  EXPECT_TRUE(RunUntil([&] { return told_.size() == 4; }, 1000));
  EXPECT_EQ(told_.back(), "view");
  EXPECT_THAT(FaultsOf(WindowOf(form_)), IsEmpty());
}

TEST_F(AddedButtonTest, ASecondButtonDoesItsOwn) {
  QTest::mouseClick(WindowOf(form_).findChild<QPushButton*>("SaveButtons1Added2"), Qt::LeftButton);
  EXPECT_THAT(told_, ElementsAre("check"));
}

TEST_F(AddedButtonTest, ItsSwitchIsTurnedByEveryKeyAndPressesNothing) {
  auto* const whole = WindowOf(form_).findChild<QCheckBox*>("SaveButtons1Switch");
  EXPECT_TRUE(whole->isChecked());
  EXPECT_EQ(whole->accessibleDescription(), "All of it or nothing.");
  save_.SetFocus();
  for (int times = 0; times < 4; ++times) Press(Qt::Key_Tab);
  EXPECT_EQ(QApplication::focusWidget(), whole);
  Press(Qt::Key_Space);
  EXPECT_THAT(told_, ElementsAre("in part"));
  text_.SetFocus();
  Press(Qt::Key_W, Qt::AltModifier);
  EXPECT_TRUE(RunUntil([&] { return told_.size() == 2; }, 1000));
  EXPECT_EQ(told_.back(), "whole");
  whole->setFocus();
  Press(Qt::Key_Return);
  EXPECT_EQ(told_.back(), "save 1");
}

TEST_F(AddedButtonTest, IsToldEachTimeTheWindowIsShown) {
  EXPECT_EQ(shown_, 1);
  form_.Hide();
  form_.Show();
  EXPECT_EQ(shown_, 2);
}

// --- Lists -----------------------------------------------------------------------------------------------------------

class ListBinderTest : public BindersTest {
 protected:
  ListBinderTest() {
    Describe(Fields({Shown({"Combo1"}), AtLeast(Shown({"List1"}), 10, 4)}));
    for (const char* entry : {"Add", "Replace", "Subtract"}) {
      combo_.AddItem(entry);
      list_.AddItem(entry);
    }
    combo_.SetListIndex(0);
    combo_.Click.Connect([this] { told_.push_back(combo_.SelectedText()); });
    list_.Click.Connect([this] { told_.push_back("list " + list_.SelectedText()); });
    Show(form_);
  }
  [[nodiscard]] QComboBox& Box() const { return WidgetOf<QComboBox>(combo_); }

  ComboBox combo_{form_, "Combo1"};
  ListBox list_{form_, "List1"};
  std::vector<Text> told_;
};

TEST_F(ListBinderTest, ShowsEntriesAndSelectionAndFollowsThem) {
  EXPECT_EQ(Box().count(), 3);
  EXPECT_EQ(Box().currentText(), "Add");
  combo_.AddItem("Zero");
  combo_.SetListIndex(3);
  EXPECT_EQ(Box().currentText(), "Zero");
  combo_.RemoveItem(3);
  Run();
  EXPECT_EQ(Box().count(), 3);
  EXPECT_EQ(Box().currentIndex(), -1);
}

TEST_F(ListBinderTest, TheArrowKeysChoose) {
  combo_.SetFocus();
  Press(Qt::Key_Down);
  Press(Qt::Key_End);
  EXPECT_THAT(told_, ElementsAre("Replace", "Subtract"));
  EXPECT_EQ(Box().currentText(), "Subtract");
}

TEST_F(ListBinderTest, TypingFindsAnEntry) {
  combo_.SetFocus();
  Type("s");
  EXPECT_THAT(told_, ElementsAre("Subtract"));
}

TEST_F(ListBinderTest, DropsDownAndClosesByKey) {
  combo_.SetFocus();
  Press(Qt::Key_Down, Qt::AltModifier);
  EXPECT_TRUE(combo_.DroppedDown());
  EXPECT_TRUE(Box().view()->isVisible());
  Press(Qt::Key_Down);
  EXPECT_EQ(combo_.ListIndex(), 1);
  Press(Qt::Key_Escape);
  EXPECT_FALSE(combo_.DroppedDown());
  EXPECT_FALSE(Box().view()->isVisible());
}

TEST_F(ListBinderTest, AnEntryIsChosenWithTheMouse) {
  // As long as a double click may take, Qt holds a release for that of the press which opened the list.
  const int usual = QApplication::doubleClickInterval();
  QApplication::setDoubleClickInterval(1);
  QTest::mouseClick(&Box(), Qt::LeftButton);
  EXPECT_TRUE(combo_.DroppedDown());
  const QModelIndex entry = Box().model()->index(2, 0);
  EXPECT_TRUE(RunUntil([&] {
    QTest::mouseClick(Box().view()->viewport(), Qt::LeftButton, {}, Box().view()->visualRect(entry).center());
    return !told_.empty();
  }));
  QApplication::setDoubleClickInterval(usual);
  EXPECT_THAT(told_, ElementsAre("Subtract"));
  EXPECT_FALSE(combo_.DroppedDown());
}

TEST_F(ListBinderTest, TheProgramDropsItDown) {
  combo_.SetFocus();
  combo_.SetDroppedDown(true);
  EXPECT_TRUE(Box().view()->isVisible());
  combo_.SetDroppedDown(false);
  EXPECT_FALSE(Box().view()->isVisible());
}

TEST_F(ListBinderTest, TheWheelChangesNothing) {
  QWheelEvent turn(QPointF(5, 5), Box().mapToGlobal(QPointF(5, 5)), {}, {0, -120}, Qt::NoButton, Qt::NoModifier,
                   Qt::NoScrollPhase, false);
  QApplication::sendEvent(&Box(), &turn);
  EXPECT_THAT(told_, IsEmpty());
}

TEST_F(ListBinderTest, AListBoxIsChosenFrom) {
  Run();
  auto& view = WidgetOf<QAbstractItemView>(list_);
  QTest::mouseClick(view.viewport(), Qt::LeftButton, {}, view.visualRect(view.model()->index(1, 0)).center());
  Press(Qt::Key_Down);
  EXPECT_THAT(told_, ElementsAre("list Replace", "list Subtract"));
  EXPECT_EQ(view.currentIndex().row(), 2);
}

// --- Options ---------------------------------------------------------------------------------------------------------

class OptionBinderTest : public BindersTest {
 protected:
  OptionBinderTest() {
    Describe(Rows({Shown({"Text1"}), Shown({"opt", 1}), Shown({"opt", 2}), Shown({"opt", 3})}));
    options_.SetValue(1, true);
    options_.Click.Connect([this](Integer index) { told_.push_back(index); });
    Show(form_);
  }

  TextBox text_{form_, "Text1"};
  OptionGroup options_{form_, "opt", 1, 3};
  std::vector<Integer> told_;
};

TEST_F(OptionBinderTest, OneIsOnWhoeverChoseIt) {
  QTest::mouseClick(&WidgetOf(options_(2)), Qt::LeftButton, {}, {8, WidgetOf(options_(2)).height() / 2});
  EXPECT_THAT(told_, ElementsAre(2));
  EXPECT_FALSE(WidgetOf<QRadioButton>(options_(1)).isChecked());
  options_.SetValue(3, true);
  EXPECT_TRUE(WidgetOf<QRadioButton>(options_(3)).isChecked());
}

TEST_F(OptionBinderTest, TheArrowKeysGoRoundThoseThatCanBeChosen) {
  options_(2).SetEnabled(false);
  options_(1).SetFocus();
  Press(Qt::Key_Down);
  Press(Qt::Key_Down);
  EXPECT_THAT(told_, ElementsAre(3, 1));
}

TEST_F(OptionBinderTest, AClickOnTheOneThatIsOnIsNoChoice) {
  QTest::mouseClick(&WidgetOf(options_(1)), Qt::LeftButton, {}, {8, WidgetOf(options_(1)).height() / 2});
  EXPECT_THAT(told_, IsEmpty());
  EXPECT_TRUE(WidgetOf<QRadioButton>(options_(1)).isChecked());
}

TEST_F(OptionBinderTest, TheTabKeyStopsAtTheOneThatIsOn) {
  options_.SetValue(2, true);
  text_.SetFocus();
  Press(Qt::Key_Tab);
  EXPECT_TRUE(options_(2).HasFocus());
  Press(Qt::Key_Tab);
  EXPECT_TRUE(text_.HasFocus());
}

// --- Host controls ---------------------------------------------------------------------------------------------------

class HostBindersTest : public BindersTest {
 protected:
  HostBindersTest() {
    Describe(Fields({Shown({"Number1"}), Shown({"Calendar"})}));
    number_.SetCaption("Rows");
    number_.Configure(0, 100, 1, 0, true);
    calendar_.SetMinDate(DateFromParts(2003, 1, 1));
    calendar_.SetMaxDate(DateFromParts(2005, 12, 31));
    calendar_.SetDate(DateFromParts(2004, 2, 3));
    Show(form_);
  }

  NumberBox number_{form_, "Number1"};
  CalendarBox calendar_{form_, "Calendar"};
};

TEST_F(HostBindersTest, ANumberIsSpunAndFollowed) {
  auto& spin = WidgetOf<QDoubleSpinBox>(number_);
  number_.SetFocus();
  Press(Qt::Key_Up);
  Press(Qt::Key_Up);
  EXPECT_EQ(number_.Value(), 2);
  number_.SetValue(50);
  EXPECT_EQ(spin.value(), 50);
}

TEST_F(HostBindersTest, ADayIsChosenAndFollowed) {
  auto* const widget = WindowOf(form_).findChild<QCalendarWidget*>();
  EXPECT_EQ(widget->selectedDate(), QDate(2004, 2, 3));
  int told = 0;
  calendar_.DateChanged.Connect([&] { ++told; });
  calendar_.SetFocus();
  Press(Qt::Key_Right);
  EXPECT_EQ(calendar_.Date(), DateFromParts(2004, 2, 4));
  calendar_.SetDate(DateFromParts(2005, 1, 31));
  EXPECT_EQ(widget->selectedDate(), QDate(2005, 1, 31));
  EXPECT_EQ(told, 1);
}

// --- Grid and tabs ---------------------------------------------------------------------------------------------------

class GridBinderTest : public BindersTest {
 protected:
  GridBinderTest() {
    Describe(Rows({Shown({"Tabs"}), views::Stretched(AtLeast(Shown({"Grid"}), 40, 8))}));
    grid_.SetSize(101, 3);
    grid_.SetFixedRows(1);
    grid_.SetFormat("<Code    |<Description        |>Number   ");
    for (Long row = 1; row < grid_.Rows(); ++row) grid_.SetCell(row, 0, "Row " + std::to_string(row));
    tabs_.SetTabs({"&One", "&Two"});
    Show(form_);
  }
  [[nodiscard]] QTableView& Table() const { return WidgetOf<QTableView>(grid_); }

  TabStrip tabs_{form_, "Tabs"};
  Grid grid_{form_, "Grid"};
};

TEST_F(GridBinderTest, ShowsTheCellsBelowTheHeads) {
  EXPECT_EQ(Table().model()->rowCount(), 100);
  EXPECT_EQ(Table().model()->index(0, 0).data(), "Row 1");
  EXPECT_EQ(Table().model()->headerData(1, Qt::Horizontal), "Description");
  grid_.SetCell(1, 0, "changed");
  EXPECT_EQ(Table().model()->index(0, 0).data(), "changed");
}

TEST_F(GridBinderTest, CellsStandWhereTheGridCountsThem) {
  for (const Long top : {1, 20}) {
    grid_.SetTopRow(top);
    Run();
    for (const Long row : {top, top + 3}) {
      const QModelIndex index = Table().model()->index(row - 1, 2);
      const QPoint corner = Table().viewport()->mapTo(&WindowOf(form_), Table().visualRect(index).topLeft());
      const Place place = grid_.CellPlace(row, 2);
      EXPECT_EQ(corner, QPoint(place.left, place.top)) << "row " << row << " with " << top << " on top";
      EXPECT_NEAR(Table().visualRect(index).height(), place.height, 1);
    }
  }
}

TEST_F(GridBinderTest, AClickMakesACellTheCurrentOne) {
  const QModelIndex cell = Table().model()->index(2, 1);
  QTest::mouseClick(Table().viewport(), Qt::LeftButton, {}, Table().visualRect(cell).center());
  EXPECT_EQ(grid_.Row(), 3);
  EXPECT_EQ(grid_.Column(), 1);
  EXPECT_EQ(Table().currentIndex(), cell);
}

TEST_F(GridBinderTest, MovingTheCurrentCellBringsItIntoSight) {
  grid_.MoveCurrent(80, 0);
  EXPECT_EQ(Table().verticalScrollBar()->value(), grid_.TopRow() - 1);
  const QRect row = Table().visualRect(Table().model()->index(79, 0));
  EXPECT_TRUE(Table().viewport()->rect().contains(row.adjusted(0, 0, -row.width() / 2, 0)));
}

TEST_F(GridBinderTest, TheScrollBarMovesTheGridAndTheEndIsTheLastRowsLowerEdge) {
  Table().verticalScrollBar()->setValue(10);
  EXPECT_EQ(grid_.TopRow(), 11);
  grid_.SetTopRow(100);
  EXPECT_EQ(grid_.TopRow(), Table().verticalScrollBar()->maximum() + 1);
}

TEST_F(GridBinderTest, TheArrowKeysMoveWithinIt) {
  grid_.SetFocus();
  Press(Qt::Key_Down);
  Press(Qt::Key_Right);
  EXPECT_EQ(grid_.Row(), 2);
  EXPECT_EQ(grid_.Column(), 1);
  Press(Qt::Key_End);
  EXPECT_EQ(grid_.Row(), 100);
}

TEST_F(GridBinderTest, TabsAreChosenAndMayBeRefused) {
  auto& bar = WidgetOf<QTabBar>(tabs_);
  tabs_.Click.Connect([this] {
    if (tabs_.Selected() == 2) tabs_.SetSelected(1);
  });
  QTest::mouseClick(&bar, Qt::LeftButton, {}, bar.tabRect(1).center());
  EXPECT_EQ(tabs_.Selected(), 1);
  EXPECT_EQ(bar.currentIndex(), 0);
}

TEST_F(GridBinderTest, TabsTurnFromAnywhere) {
  grid_.SetFocus();
  Press(Qt::Key_PageDown, Qt::ControlModifier);
  EXPECT_EQ(tabs_.Selected(), 2);
  Press(Qt::Key_T, Qt::AltModifier);
  Press(Qt::Key_O, Qt::AltModifier);
  EXPECT_EQ(tabs_.Selected(), 1);
}

// --- Keys that the program presses -----------------------------------------------------------------------------------

TEST_F(TextBoxBinderTest, KeysOfTheProgramGoWhereTheFocusIsWhenTheInputRuns) {
  box_.SetFocus();
  SendKeyString("{END}x{tab}");
  EXPECT_EQ(box_.Text(), "abc");
  SendKeyString("{tab}");
  Run();
  Run();
  EXPECT_EQ(box_.Text(), "abcx");
}

}  // namespace
}  // namespace tallybook::desktop::testing
