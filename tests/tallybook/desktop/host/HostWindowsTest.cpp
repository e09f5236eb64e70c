// What every window must hold to (WindowCheck.h), for the windows of this room: with usual and with long texts.
#include <QDialog>
#include <QPushButton>
#include <QTemporaryDir>
#include <gmock/gmock.h>

#include "platform/MessageBoxes.h"
#include "tallybook/desktop/host/ListWindow.h"
#include "tallybook/desktop/host/MessageWindow.h"
#include "tallybook/desktop/host/ProgressWindow.h"
#include "tallybook/desktop/host/ReportWindow.h"
#include "tests/support/ScriptedPlatform.h"
#include "tests/tallybook/desktop/Waiting.h"
#include "tests/tallybook/desktop/WindowCheck.h"
#include "tests/tallybook/desktop/host/MapHandles.h"

namespace tallybook::desktop {
namespace {

using testing::FaultsOf;
using ::testing::IsEmpty;
using testing::MapHandles;
using testing::Picture;
using testing::WhenShown;

class HostWindowsTest : public ::testing::Test {
 protected:
  void Look(QWidget& window, const std::string& name) {
    ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
    EXPECT_THAT(FaultsOf(window), IsEmpty());
    Picture(window, name);
  }

  tallybook::testing::ScriptedPlatform platform_;
  QTemporaryDir folder_;
  WindowMemory memory_{folder_.filePath("desktop.ini").toStdString()};
};

TEST_F(HostWindowsTest, MessageBoxes) {
  MessageWindow question(
      {.text = "Ok to Delete Exchange Definition # 3", .style = kOkCancel | kQuestionIcon, .title = "Tallybook"},
      nullptr);
  question.show();
  Look(question, "box");
  Text long_text;
  for (int word = 0; word < 60; ++word) long_text += "Rechnungsabgrenzungsposten ";
  MessageWindow trouble(
      {.text = long_text, .style = kRetryCancel | kStopIcon, .title = "Tallybook", .details = "error 57, statement 40"},
      nullptr);
  trouble.show();
  Look(trouble, "box-details");
}

TEST_F(HostWindowsTest, AListWithRowsAndAnEmptyOne) {
  for (const int rows : {12, 0}) {
    MapHandles handles;
    ListWindow list(handles, memory_);
    list.SetTitle("QDX Import Layouts - Head Office Tallybook");
    list.AddColumn("Title", false);
    list.AddColumn("Number", true);
    for (const char* caption : {"File Name", "QDX File Name", "QDX Exists", "Number Matches"})
      list.AddColumn(caption, false);
    list.SetActionButton(1, "Import QDX File");
    list.SetActionButton(2, "Import ALL");
    list.SetActionButton(3, "Refresh");
    list.SetAllowChanges(true);
    for (Integer row = 1; row <= rows; ++row) {
      list.AddRow("K" + std::to_string(row), row, "A shop in the very far north of the country " + std::to_string(row));
      for (const Text& cell :
           {std::to_string(row), Text("TBQDX1.office"), Text("/in/exchange/north-2024.QDX"), Text("True"), Text("1")})
        list.AddCell(cell);
    }
    WhenShown user;
    user.Then("QDX Import Layouts", [&](QWidget& window) {
      Look(window, rows == 0 ? "list-empty" : "list");
      list.UserClose();
    });
    list.Show(0);
  }
}

TEST_F(HostWindowsTest, AReportOfAnImport) {
  report::Report shown;
  shown.title = "QDX Import Report";
  shown.created = "2024-02-03 14:05:09";
  report::Table table;
  table.widths = {1, 3, 1, 3};
  table.head = {{"Account", "Description", "To", "Description"}};
  for (int row = 0; row < 40; ++row)
    table.body.push_back({std::to_string(100 + row), "Department", std::to_string(4100 + row), "North: department"});
  shown.blocks.emplace_back(table);
  ReportSetting setting;
  setting.changes = {"Changed: figures of 2024-01-01 to 2024-12-31 (journal entry 1, import qdx #1)."};
  setting.undo = [] { return false; };
  QWidget owner;
  auto* const window =
      new ReportWindow(shown, {report::Line{.text = "Head Office - QDX Import"}}, setting, &owner, memory_);
  window->show();
  Look(*window, "report");
}

TEST_F(HostWindowsTest, ProgressThatCanBeCancelled) {
  ProgressWindow progress;
  progress.SetCancelWords("What was stored so far stays; the journal can take it back.");
  progress.Begin("Importing QDX File");
  progress.CancelEnabled(true);
  progress.Text("Importing QDX File\r\nAccount: 4110 Bakery");
  QTest::qSleep(ProgressWindow::kShownAfter + ProgressWindow::kEventsEvery);
  progress.Fraction(0.4F);
  QWidget* shown = nullptr;
  for (QWidget* const window : QApplication::topLevelWidgets()) {
    if (window->isVisible() && window->windowTitle() == "Importing QDX File") shown = window;
  }
  ASSERT_NE(shown, nullptr);
  Look(*shown, "progress");
  progress.End();
}

}  // namespace
}  // namespace tallybook::desktop
