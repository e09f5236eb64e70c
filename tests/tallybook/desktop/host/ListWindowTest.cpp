#include <QAbstractItemModel>
#include <QCheckBox>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QScrollBar>
#include <QTableView>
#include <QTemporaryDir>
#include <gmock/gmock.h>

#include "base/Failure.h"
#include "tallybook/desktop/host/ListWindow.h"
#include "tallybook/desktop/host/QtMessageBoxes.h"
#include "tests/support/ScriptedPlatform.h"
#include "tests/tallybook/desktop/Waiting.h"
#include "tests/tallybook/desktop/host/MapHandles.h"

namespace tallybook::desktop {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using testing::MapHandles;
using testing::Part;
using testing::WhenShown;

// Notes the events, and does besides what a test asks for.
class NotingEvents : public EdtFormEvents {
 public:
  std::vector<Text> noted;
  std::function<void()> act;  // done within each event but the totals
  Text totals = "3 active of 999 maximum";
  Integer added = 0;
  bool saved = true;
  bool shutdown = false;
  Long polls = 0;

  void ShowTotals(Text& text) override { text = totals; }
  void ActionButton(Integer button, Integer record) override {
    Note("action " + std::to_string(button) + " " + std::to_string(record));
  }
  void AddRec(Integer& record) override {
    Note("add " + std::to_string(record));
    if (added != 0) record = added;
  }
  void EditRec(Integer record) override { Note("edit " + std::to_string(record)); }
  void DeleteRec(Integer record) override { Note("delete " + std::to_string(record)); }
  void EditSave(bool& result) override {
    Note("save");
    result = saved;
  }
  void ShowHelp(Long topic) override { Note("help " + std::to_string(topic)); }
  void NeedtoShutdown(bool& flag) override {
    ++polls;
    if (shutdown) flag = true;
  }

 private:
  void Note(const Text& what) {
    noted.push_back(what);
    if (act) act();
  }
};

class ListWindowTest : public ::testing::Test {
 protected:
  ListWindowTest() { SetUpList(list_); }

  void SetUpList(ListWindow& list) {
    list.SetEvents(&events_);
    list.SetTitle(kTitle);
    list.AddColumn("Title", false);
    list.AddColumn("Number", true);
    list.AddColumn("QDX File Name", false);
    list.SetActionButton(1, "Import QDX File");
    list.SetActionButton(2, "Import ALL");
    list.SetActionButton(3, "Refresh");
    list.SetAllowChanges(true);
    list.SetHelpContext(10'500);
    AddRow(list, 1, "North", "  12", "/in/north.QDX");
    AddRow(list, 2, "South", "   9", "/in/south.QDX");
    AddRow(list, 3, "East", " 100", "/in/east.QDX");
  }

  static void AddRow(ListWindow& list, Integer record, const Text& title, const Text& number, const Text& file) {
    list.AddRow("K" + std::to_string(record), record, title);
    list.AddCell(number);
    list.AddCell(file);
  }

  // Shows the list, does `act` in it, and closes it unless the act did.
  void ShowAnd(const std::function<void()>& act) {
    WhenShown user;
    user.Then(kTitle, [&](QWidget&) {
      act();
      list_.UserClose();
    });
    list_.Show(0);
  }

  [[nodiscard]] QTableView& Table() { return Part<QTableView>(list_.Window(), "rows"); }
  [[nodiscard]] Text Cell(int row, int column = 0) {
    return Table().model()->index(row, column).data().toString().toStdString();
  }
  [[nodiscard]] std::vector<Text> Titles() {
    std::vector<Text> titles;
    for (int row = 0; row < Table().model()->rowCount(); ++row) titles.push_back(Cell(row));
    return titles;
  }
  [[nodiscard]] Text Selected() { return Cell(Table().currentIndex().row()); }
  void Press(int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
    QTest::keyClick(&Table(), static_cast<Qt::Key>(key), modifiers);
  }
  void Click(const char* button) { QTest::mouseClick(&Part<QPushButton>(list_.Window(), button), Qt::LeftButton); }

  static constexpr const char* kTitle = "QDX Import Layouts - North Shop Tallybook";
  tallybook::testing::ScriptedPlatform platform_;
  QTemporaryDir folder_;
  WindowMemory memory_{folder_.filePath("desktop.ini").toStdString()};
  MapHandles handles_;
  NotingEvents events_;
  ListWindow list_{handles_, memory_};
};

TEST_F(ListWindowTest, ColumnsThatHaveRoomNeedNoScrollBar) {
  AddRow(list_, 4, "North Shop, the year", "1", "/home/sam/tallybook-demo/exchange/north-2024.QDX");
  ShowAnd([&] {
    QApplication::processEvents();
    EXPECT_FALSE(Table().horizontalScrollBar()->isVisible());
    const QHeaderView& heads = *Table().horizontalHeader();
    EXPECT_EQ(heads.length(), Table().viewport()->width()) << "the last column ends with the table";
  });
}

TEST_F(ListWindowTest, ShowsTheRowsAsTheyWereAddedWithTheTotalsBelow) {
  ShowAnd([&] {
    EXPECT_THAT(Titles(), ElementsAre("North", "South", "East"));
    EXPECT_EQ(Cell(0, 1), "  12");
    EXPECT_EQ(Part<QLabel>(list_.Window(), "totals").text(), "3 active of 999 maximum");
    EXPECT_EQ(Selected(), "North");
  });
}

TEST_F(ListWindowTest, ANumericColumnStandsAtTheRightAndSortsByNumber) {
  ShowAnd([&] {
    const auto alignment = Table().model()->index(0, 1).data(Qt::TextAlignmentRole).value<Qt::Alignment>();
    EXPECT_TRUE(alignment & Qt::AlignRight);
    Press(Qt::Key_2, Qt::ControlModifier);
    EXPECT_THAT(Titles(), ElementsAre("South", "North", "East"));
    Press(Qt::Key_2, Qt::ControlModifier);
    EXPECT_THAT(Titles(), ElementsAre("East", "North", "South"));
  });
}

TEST_F(ListWindowTest, AClickOnAHeadSortsAndKeepsTheSelectedRowSelected) {
  ShowAnd([&] {
    QHeaderView& heads = *Table().horizontalHeader();
    const QPoint first(heads.sectionViewportPosition(0) + 20, heads.height() / 2);
    QTest::mouseClick(heads.viewport(), Qt::LeftButton, Qt::NoModifier, first);
    EXPECT_THAT(Titles(), ElementsAre("East", "North", "South"));
    EXPECT_EQ(Selected(), "North");
  });
}

TEST_F(ListWindowTest, TheActionButtonsAndKeysRaiseTheirEventsForTheSelectedRow) {
  ShowAnd([&] {
    Press(Qt::Key_Down);
    Click("action1");
    Click("action2");
    Click("action3");
    Press(Qt::Key_Return);
    Press(Qt::Key_F2);
    Click("edit");
    Click("delete");
    Press(Qt::Key_Delete);
    Press(Qt::Key_F1);
    Press(Qt::Key_S, Qt::ControlModifier);
    EXPECT_THAT(events_.noted, ElementsAre("action 1 2", "action 2 2", "action 3 2", "edit 2", "edit 2", "edit 2",
                                           "delete 2", "delete 2", "help 10500", "save"));
  });
}

TEST_F(ListWindowTest, WhatTheApplicationAddsIsReachedInTheOrderInWhichItStands) {
  list_.SetAddition(
      "Preview", [] { return false; }, 1);
  list_.SetAddition(
      "Check", [] { return false; }, 1);
  bool is_on = false;
  list_.SetSwitch({.caption = "Whole",
                   .help = "All of it.",
                   .is_on = [&] { return is_on; },
                   .turned = [&](bool on) { is_on = on; }});
  ShowAnd([&] {
    auto& window = list_.Window();
    Part<QPushButton>(window, "action3").setFocus();
    QStringList reached;
    for (int tab = 0; tab < 4; ++tab) {
      QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
      reached << QApplication::focusWidget()->objectName();
    }
    EXPECT_EQ(reached, QStringList({"added", "added2", "switch", "close"}));
    QTest::keyClick(&Part<QCheckBox>(window, "switch"), Qt::Key_Space);
    EXPECT_TRUE(is_on);
    EXPECT_TRUE(Part<QCheckBox>(window, "switch").isChecked());
  });
}

TEST_F(ListWindowTest, MnemonicsReachEveryButtonAndNoneIsTakenTwice) {
  ShowAnd([&] {
    QStringList letters;
    for (const auto* button : list_.Window().findChildren<QPushButton*>()) {
      if (!button->isVisible()) continue;
      const QString letter = QKeySequence::mnemonic(button->text()).toString();
      EXPECT_FALSE(letter.isEmpty()) << button->text().toStdString();
      EXPECT_FALSE(letters.contains(letter)) << letter.toStdString();
      letters.append(letter);
    }
    EXPECT_EQ(Part<QPushButton>(list_.Window(), "action2").accessibleName(), "Import ALL");
    testing::WaitUntil([&] { return list_.Window().isActiveWindow(); }, "the list is in front");
    QTest::keyClick(&Table(), Qt::Key_R, Qt::AltModifier);
    testing::WaitUntil([&] { return !events_.noted.empty(); }, "the button is pressed");
    EXPECT_THAT(events_.noted, ElementsAre("action 3 1"));
  });
}

TEST_F(ListWindowTest, WithoutARowTheActionsHandOnZeroAndEditingIsOff) {
  list_.ClearList();
  ShowAnd([&] {
    Click("action3");
    EXPECT_FALSE(Part<QPushButton>(list_.Window(), "edit").isEnabled());
    Press(Qt::Key_Delete);
    EXPECT_THAT(events_.noted, ElementsAre("action 3 0"));
    EXPECT_TRUE(Part<QLabel>(list_.Window(), "nothing").isVisible());
  });
}

TEST_F(ListWindowTest, WithoutTheRightToChangeNothingIsOfferedThatChanges) {
  list_.SetAllowChanges(false);
  ShowAnd([&] {
    for (const char* name : {"add", "edit", "delete"})
      EXPECT_FALSE(Part<QPushButton>(list_.Window(), name).isVisible());
    Press(Qt::Key_Insert);
    Press(Qt::Key_Return);
    Press(Qt::Key_Delete);
    EXPECT_THAT(events_.noted, IsEmpty());
  });
}

TEST_F(ListWindowTest, AnAddedRowIsSelectedAndTheTotalsAreAskedAgain) {
  events_.added = 4;
  events_.act = [&] {
    AddRow(list_, 4, "West", "   4", "/in/west.QDX");
    events_.totals = "4 active of 999 maximum";
  };
  ShowAnd([&] {
    Press(Qt::Key_Insert);
    EXPECT_EQ(events_.noted.front(), "add 1");
    EXPECT_EQ(Selected(), "West");
    EXPECT_EQ(Part<QLabel>(list_.Window(), "totals").text(), "4 active of 999 maximum");
    events_.act = {};
  });
}

TEST_F(ListWindowTest, AListFilledAnewKeepsTheSelectionByKeyAndByPlaceWhereTheRowHasGone) {
  ShowAnd([&] {
    Press(Qt::Key_Down);
    events_.act = [&] {
      list_.ClearList();
      AddRow(list_, 7, "Before", "1", "");
      AddRow(list_, 2, "South", "9", "");
    };
    Click("action3");
    EXPECT_EQ(Selected(), "South");
    events_.act = [&] { list_.RemoveRow("K2"); };
    Click("action3");
    EXPECT_EQ(Selected(), "Before");
    events_.act = {};
  });
}

TEST_F(ListWindowTest, OfSeveralRowsOfOneKeyTheFirstGoes) {
  AddRow(list_, 1, "North again", "13", "");
  list_.RemoveRow("K1");
  list_.RemoveRow("K9");
  ShowAnd([&] { EXPECT_THAT(Titles(), ElementsAre("South", "East", "North again")); });
}

TEST_F(ListWindowTest, LettersSelectTheNextRowThatBeginsSo) {
  AddRow(list_, 4, "Northern", "13", "");
  list_.SetTypeAheadDelay(10'000);
  ShowAnd([&] {
    QTest::keyClicks(&Table(), "e");
    EXPECT_EQ(Selected(), "East");
    QTest::keyClicks(&Table(), "a");
    EXPECT_EQ(Selected(), "East");
    QTest::keyClicks(&Table(), "x");
    EXPECT_EQ(Selected(), "East");
  });
}

TEST_F(ListWindowTest, LettersBeginAnewBehindTheDelay) {
  AddRow(list_, 4, "Northern", "13", "");
  list_.SetTypeAheadDelay(50);
  ShowAnd([&] {
    QTest::keyClicks(&Table(), "n");
    EXPECT_EQ(Selected(), "Northern");
    testing::WaitUntil([&] { return Part<QLabel>(list_.Window(), "note").isHidden(); }, "the letters are forgotten");
    QTest::keyClicks(&Table(), "n");
    EXPECT_EQ(Selected(), "North");
    testing::WaitUntil([&] { return Part<QLabel>(list_.Window(), "note").isHidden(); }, "the letters are forgotten");
    QTest::keyClicks(&Table(), "s");
    EXPECT_EQ(Selected(), "South");
  });
}

TEST_F(ListWindowTest, WhileAnEventIsAnsweredTheWindowTakesNoActsAndStays) {
  events_.act = [&] {
    Press(Qt::Key_Delete);
    Click("action2");
    list_.Window().close();
    EXPECT_TRUE(list_.IsBusy());
    EXPECT_TRUE(list_.Window().isVisible());
  };
  ShowAnd([&] {
    Click("action1");
    EXPECT_THAT(events_.noted, ElementsAre("action 1 1"));
    events_.act = {};
  });
}

TEST_F(ListWindowTest, AnEventThatFailsIsToldAndTheWindowStays) {
  events_.act = [] { throw Failure(FailureNumber::kInvalidArgument, "There can be no more"); };
  ShowAnd([&] {
    Click("action1");
    EXPECT_THAT(platform_.boxes.Texts(), ElementsAre("There can be no more"));
    EXPECT_TRUE(list_.Window().isVisible());
    events_.act = {};
  });
}

TEST_F(ListWindowTest, ClosingHasWhatWasChangedSaved) {
  ShowAnd([&] { Press(Qt::Key_Return); });
  EXPECT_THAT(events_.noted, ElementsAre("edit 1", "save"));
}

TEST_F(ListWindowTest, ClosingSavesNothingWhereNothingWasChanged) {
  ShowAnd([&] { Press(Qt::Key_Down); });
  EXPECT_THAT(events_.noted, IsEmpty());
}

TEST_F(ListWindowTest, WhatCannotBeSavedKeepsTheWindowUnlessTheUserLeavesAllTheSame) {
  events_.saved = false;
  platform_.boxes.Answer({kNo, kYes});
  ShowAnd([&] {
    Press(Qt::Key_Delete);
    Press(Qt::Key_Escape);
    EXPECT_TRUE(list_.Window().isVisible());
  });
  EXPECT_EQ(platform_.boxes.Shown().size(), 2U);
  EXPECT_FALSE(list_.Window().isVisible());
}

TEST_F(ListWindowTest, ClosesWhenTheApplicationWantsTo) {
  WhenShown user;
  user.Then(kTitle, [&](QWidget&) { events_.shutdown = true; });
  list_.Show(0);
  EXPECT_GT(events_.polls, 0);
  EXPECT_FALSE(list_.Window().isVisible());
}

TEST_F(ListWindowTest, BelongsToItsOwnerWhichStaysUsable) {
  QWidget owner;
  owner.setWindowTitle("Owner");
  owner.show();
  ASSERT_TRUE(QTest::qWaitForWindowExposed(&owner));
  const Long handle = handles_.HandleOf(owner);
  WhenShown user;
  user.Then(kTitle, [&](QWidget& window) {
    EXPECT_EQ(window.windowHandle()->transientParent(), owner.windowHandle());
    EXPECT_TRUE(owner.isEnabled());
    EXPECT_EQ(QApplication::activeModalWidget(), nullptr);
    list_.UserClose();
  });
  list_.Show(handle);
}

TEST_F(ListWindowTest, RemembersTheOrderAndTheWidthsOfColumns) {
  ShowAnd([&] {
    Press(Qt::Key_1, Qt::ControlModifier);
    Press(Qt::Key_1, Qt::ControlModifier);
    Table().setColumnWidth(0, 333);
  });
  ListWindow again(handles_, memory_);
  SetUpList(again);
  WhenShown user;
  user.Then(kTitle, [&](QWidget& window) {
    auto& table = Part<QTableView>(window, "rows");
    EXPECT_EQ(table.model()->index(0, 0).data().toString(), "South");
    EXPECT_EQ(table.columnWidth(0), 333);
    again.UserClose();
  });
  again.Show(0);
}

TEST_F(ListWindowTest, PointsAtTheRowsOfKeys) {
  list_.SetOnShown([&](ListWindow& list) { list.Point({"K3", "K1"}, "2 definitions match north.QDX."); });
  ShowAnd([&] {
    testing::WaitUntil([&] { return Selected() == "East"; }, "the first of them is selected");
    EXPECT_TRUE(Table().model()->index(0, 0).data(Qt::FontRole).value<QFont>().bold());
    EXPECT_FALSE(Table().model()->index(1, 0).data(Qt::FontRole).isValid());
    EXPECT_EQ(Part<QLabel>(list_.Window(), "note").text(), "2 definitions match north.QDX.");
  });
}

}  // namespace
}  // namespace tallybook::desktop
