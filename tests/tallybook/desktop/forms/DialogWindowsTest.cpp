// Every dialog of the component in a real window: it holds to what every window must, and all of it is reached by
// keyboard.
#include <QLabel>
#include <QTabBar>
#include <QTableView>
#include <cstdlib>
#include <functional>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "base/Dates.h"
#include "dialogs/DefinitionEditor.h"
#include "dialogs/DefinitionRows.h"
#include "dialogs/FormInstances.h"
#include "exchange/CDataExchange.h"
#include "forms/modAllUI.h"
#include "host/AccountRecord.h"
#include "host/FieldRecord.h"
#include "qdx/HeaderRecord.h"
#include "reportdialog/ExchangeReport.h"
#include "tests/import/ExchangeFile.h"
#include "tests/reportdialog/RepPrintFixture.h"
#include "tests/support/MemoryHost.h"
#include "tests/support/TempFolder.h"
#include "tests/tallybook/desktop/forms/FormsFixture.h"

namespace tallybook::desktop::testing {
namespace {

using tallybook::testing::BookShape;
using tallybook::testing::Day;
using tallybook::testing::ExchangeFile;
using tallybook::testing::MemoryEdtForm;
using tallybook::testing::MemoryHost;
using tallybook::testing::TempFolder;
using tallybook::testing::TestReport;
using ::testing::IsEmpty;

// Captions of the print dialog that are stated and share letters.
const std::vector<std::string> kPrintCaptions = {"&Half Year", "&Help",          "&Custom Range",
                                                 "&Cancel",    "Range &Ending:", "&Export Data"};

class DialogWindowsTest : public FormsFixture {
 protected:
  DialogWindowsTest() { ResetSharedHeader(); }
  ~DialogWindowsTest() override {
    ReleaseForms();
    ResetSharedHeader();
  }

  // Looks at a window, once as it is and once with Tab all the way round.
  void Check(Form& form, const std::string& picture, const Allowed& allowed = {}) {
    FormWindow& window = Show(form);
    // A window that has to grow waits for the window manager.
    RunUntil([&] { return FaultsOf(window, allowed).empty(); }, 500);
    Picture(window, picture);
    EXPECT_THAT(FaultsOf(window, allowed), IsEmpty()) << form.Name();
    EXPECT_THAT(NotReached(form), IsEmpty()) << form.Name();
  }
  // The controls that can be acted on and that the Tab key does not come to. An option is reached by the arrow keys
  // from the one that is on.
  static std::set<Text> NotReached(Form& form) {
    std::set<const Control*> reached;
    for (std::size_t press = 0; press <= 2 * form.Controls().size(); ++press) {
      if (form.ActiveControl() != nullptr) reached.insert(form.ActiveControl());
      Press(Qt::Key_Tab);
    }
    std::set<Text> missing;
    for (const Control* const control : form.Controls()) {
      if (!control->TakesFocus() || !control->IsReachable() || !control->TabStop() || reached.contains(control))
        continue;
      missing.insert(control->Name() + std::to_string(control->Index()));
    }
    return missing;
  }

  // A book whose companion files lie in a folder.
  static BookShape Beside(const TempFolder& folder) {
    BookShape shape;
    shape.data_path = folder.Path();
    return shape;
  }

  TempFolder folder;
  std::unique_ptr<MemoryHost> host = tallybook::testing::SmallBook(Beside(folder));
};

TEST_F(DialogWindowsTest, FileNamePrompt) {
  frmImport form;
  form.SetCaption("Import CSV Data File - North");
  form.Label1[0].SetCaption("Enter the name of the CSV File");
  form.Text1.SetText("/home/sam/books/figures of january.csv");
  Check(form, "frmImport");
  form.SetPromptforSkips(true);
  form.SetPromptforOverwrite(true);
  Check(form, "frmImport-options");
}

TEST_F(DialogWindowsTest, ImportConfirmation) {
  dlgQDXImp form;
  CDataExchange exchange(host->factory);
  exchange.SetOwner(&host->book);
  form.SetFields(exchange);
  form.Text1.SetText("South shop, every week");
  form.Text2.SetText("/home/sam/books/SOUTH.QDX");
  form.QDXGrid.SetCell(1, 1, "South Shop");
  form.QDXGrid.SetCell(2, 1, "2004-02-03 14:05:09");
  Check(form, "dlgQDXImp", {.same_mnemonics = {"&Imported information will be:", "&Import"}});
}

TEST_F(DialogWindowsTest, ExportOptions) {
  dlgExport form;
  for (const char* type : {"Comma separated (CSV)", "Spreadsheet (XLSX)"}) form.Combo1.AddItem(type);
  form.Combo1.SetListIndex(1);
  form.Text1.SetText("/home/sam/books/figures.xlsx");
  form.chkNonZero.SetVisible(true);
  Check(form, "dlgExport");
}

TEST_F(DialogWindowsTest, DelimitedImport) {
  frmDelimited form(host->factory);
  form.Text1.SetText("/home/sam/books/Import.csv");
  form.cmbMath.SetListIndex(0);
  form.cmbDate.SetListIndex(2);
  form.chkDate.SetChecked(true);
  Check(form, "frmDelimited");
}

TEST_F(DialogWindowsTest, SaveAsQuestion) {
  dlgRepSaveAs form;
  form.Text1.SetText("Exchange Definition #2");
  Check(form, "dlgRepSaveAs");
}

TEST_F(DialogWindowsTest, PrintDialog) {
  TestReport report(&host->book);
  dlgRepPrint form(host->factory);
  form.SetFields(report, "Export Data to File", "Export Data", 11000);
  for (Integer length = 1; length <= 8; ++length) {
    if (!form.optLength(length).Enabled()) continue;
    form.optLength.SetValue(length, true);
    Check(form, "dlgRepPrint-" + std::to_string(length), {.same_mnemonics = kPrintCaptions});
  }
}

TEST_F(DialogWindowsTest, RepeatedPressesOfALetterGoRoundTheCaptionsThatShareIt) {
  TestReport report(&host->book);
  dlgRepPrint form(host->factory);
  form.SetFields(report, "Export Data to File", "Export Data", 11000);
  Show(form);
  std::set<Text> reached;
  for (int press = 0; press < 4; ++press) {
    Press(Qt::Key_H, Qt::AltModifier);
    reached.insert(form.ActiveControl()->Caption());
  }
  EXPECT_THAT(reached, ::testing::ElementsAre("&Half Year", "&Help"));
}

TEST_F(DialogWindowsTest, PrintDialogOfAStyledReport) {
  TestReport report(&host->book);
  report.type = kStyledReport;
  dlgRepPrint form(host->factory);
  form.SetFields(report, "Sales by Account", "Print", 11000);
  Check(form, "dlgRepPrint-styles", {.same_mnemonics = kPrintCaptions});
}

// The editor over a definition of a file with three accounts and three datafields, and of a book with twenty.
class EditorWindowTest : public DialogWindowsTest {
 protected:
  EditorWindowTest() {
    for (int account = 1; account <= 20; ++account)
      host->book.AddAccount(1000 + account, std::to_string(4100 + account), "Account " + std::to_string(account));
    ExchangeFile file;
    file.first = Day(2004, 2, 1);
    file.last = Day(2004, 2, 29);
    file.accounts = {{"100", "Counter"}, {"200", "Store"}, {"900", "Cellar"}};
    file.fields = {{1, "Sales"}, {2, "Customers"}, {8, "Tips"}};
    folder.Write("SOUTH.QDX", file.Bytes());
    folder.Write("TBQDX1.NORTH", "\"South shop, every week\",\"" + folder.Path("SOUTH.QDX") +
                                     "\",3,0,0\r\n1,1\r\n1,1\r\n\"100\",\"100\"\r\n0\r\n");
    exchange_.OpenDefinitions(host->book, 1);
    editor_.FillLists();
    editor_.SetCaption("Edit QDX Import Layout Number: 1");
    EXPECT_TRUE(editor_.LoadDefinitionIntoForm(1, false));
  }
  void ChoosePage(int tab) {
    auto& bar = WidgetOf<QTabBar>(editor_.TabStrip1);
    QTest::mouseClick(&bar, Qt::LeftButton, {}, bar.tabRect(tab).center());
    for (int turn = 0; turn < 3; ++turn) Run();
  }

  CDataExchange exchange_{host->factory};
  std::unique_ptr<AccountRecord> accounts_ = host->book.NewAccountRecord();
  std::unique_ptr<FieldRecord> fields_ = host->book.NewFieldRecord();
  MemoryEdtForm list_{host->record};
  DefinitionRows rows_{list_, exchange_};
  DefinitionEditor editor_{{.factory = host->factory,
                            .masterfile = host->book,
                            .exchange = exchange_,
                            .accounts = *accounts_,
                            .fields = *fields_,
                            .rows = rows_}};
};

TEST_F(EditorWindowTest, GeneralPage) {
  Check(editor_, "frmDataExc-general");
}

TEST_F(EditorWindowTest, AccountsPage) {
  Show(editor_);
  ChoosePage(1);
  EXPECT_TRUE(editor_.Grids().ListOf(MatchPage::kAccounts).HasFocus());
  Check(editor_, "frmDataExc-accounts", {.floating = {"cboGridList1", "Grid1"}});
}

TEST_F(EditorWindowTest, FieldsPage) {
  Show(editor_);
  ChoosePage(2);
  Check(editor_, "frmDataExc-fields", {.floating = {"cboGridList2", "Grid2"}});
}

TEST_F(EditorWindowTest, PagesThatAreTurnedByKeyboardHaveTheirListInHand) {
  Show(editor_);
  Press(Qt::Key_PageDown, Qt::ControlModifier);
  for (int turn = 0; turn < 3; ++turn) Run();
  EXPECT_TRUE(editor_.Grids().ListOf(MatchPage::kAccounts).HasFocus());
  Press(Qt::Key_Asterisk, Qt::ShiftModifier);
  Press(Qt::Key_PageDown, Qt::ControlModifier);
  for (int turn = 0; turn < 3; ++turn) Run();
  EXPECT_TRUE(editor_.Grids().ListOf(MatchPage::kFields).HasFocus());
  Press(Qt::Key_F, Qt::AltModifier);
  Press(Qt::Key_A, Qt::AltModifier);
  for (int turn = 0; turn < 3; ++turn) Run();
  EXPECT_EQ(editor_.CurrentPage(), 1);
  EXPECT_TRUE(editor_.Grids().ListOf(MatchPage::kAccounts).HasFocus());
}

TEST_F(EditorWindowTest, AShiftKeyThatGoesDownBeforeASignLeavesTheListInHand) {
  Show(editor_);
  ChoosePage(2);
  Press(Qt::Key_Shift);
  EXPECT_TRUE(editor_.Grids().ListOf(MatchPage::kFields).HasFocus());
}

// Both ways in which words can go.
class ListOverCellTest : public EditorWindowTest, public ::testing::WithParamInterface<Qt::LayoutDirection> {
 protected:
  ListOverCellTest() { QApplication::setLayoutDirection(GetParam()); }
  ~ListOverCellTest() override { QApplication::setLayoutDirection(Qt::LeftToRight); }

  [[nodiscard]] QRect ListPlace(MatchPage page) {
    QWidget& list = WidgetOf(editor_.Grids().ListOf(page));
    return {list.mapTo(list.window(), QPoint(0, 0)), list.size()};
  }
  [[nodiscard]] QRect CellPlace(MatchPage page) {
    Grid& grid = editor_.Grids().GridOf(page);
    auto& table = WidgetOf<QTableView>(grid);
    const QRect cell = table.visualRect(table.model()->index(grid.Row() - 1, grid.Column()));
    return {table.viewport()->mapTo(table.window(), cell.topLeft()), cell.size()};
  }
  // To the pixel that the line between cells takes.
  void ExpectOnCell(MatchPage page) {
    EXPECT_LE(std::abs(ListPlace(page).left() - CellPlace(page).left()), 1);
    EXPECT_EQ(ListPlace(page).top(), CellPlace(page).top());
    EXPECT_LE(std::abs(ListPlace(page).width() - CellPlace(page).width()), 1);
    EXPECT_LE(ListPlace(page).height(), CellPlace(page).height());
  }
};

TEST_P(ListOverCellTest, TheListLiesOnTheCellThatItIsFor) {
  FormWindow& window = Show(editor_);
  for (const auto& [tab, page] : {std::pair(1, MatchPage::kAccounts), std::pair(2, MatchPage::kFields)}) {
    ChoosePage(tab);
    ExpectOnCell(page);
    Press(Qt::Key_Down);
    ExpectOnCell(page);
  }
  const QSize larger = window.size() + QSize(100, 60);
  window.resize(larger);
  // The columns are shared anew when the window manager has answered.
  EXPECT_TRUE(RunUntil([&] {
    const int off = ListPlace(MatchPage::kFields).width() - CellPlace(MatchPage::kFields).width();
    return window.size() == larger && std::abs(off) <= 1;
  }));
  ExpectOnCell(MatchPage::kFields);
}

INSTANTIATE_TEST_SUITE_P(EachDirection, ListOverCellTest, ::testing::Values(Qt::LeftToRight, Qt::RightToLeft),
                         [](const auto& each) { return each.param == Qt::LeftToRight ? "ToRight" : "ToLeft"; });

TEST_F(EditorWindowTest, InAMirroredWindowAPathKeepsItsFirstStroke) {
  QApplication::setLayoutDirection(Qt::RightToLeft);
  const QString path = QString::fromStdString(folder.Path("SOUTH.QDX"));
  Show(editor_);
  bool found = false;
  for (const auto* const table : WindowOf(editor_).findChildren<QTableView*>()) {
    for (int row = 0; row < table->model()->rowCount(); ++row) {
      const QString cell = table->model()->index(row, 1).data().toString();
      found = found || cell == QChar(0x200E) + path + QChar(0x200E);
    }
  }
  QApplication::setLayoutDirection(Qt::LeftToRight);
  EXPECT_TRUE(found) << "no cell holds the path with its direction";
}

TEST_F(EditorWindowTest, WhatIsNotMatchedYetIsCounted) {
  FormWindow& window = Show(editor_);
  ChoosePage(1);
  auto* const count = window.findChild<QLabel*>("Grid1Count");
  ASSERT_NE(count, nullptr);
  EXPECT_EQ(count->text(), "2 of 3 not sent");
  Press(Qt::Key_0);
  EXPECT_EQ(count->text(), "3 of 3 not sent");
}

TEST_F(EditorWindowTest, AHeldKeyMatchesRowAfterRow) {
  Show(editor_);
  ChoosePage(1);
  QWidget& list = WidgetOf(editor_.Grids().ListOf(MatchPage::kAccounts));
  for (int row = 0; row < 3; ++row) QTest::sendKeyEvent(QTest::Click, &list, Qt::Key_Asterisk, "*", Qt::ShiftModifier);
  EXPECT_EQ(editor_.Grids().Match(MatchPage::kAccounts, 1), 101);
  EXPECT_EQ(editor_.Grids().Match(MatchPage::kAccounts, 3), 0);
  EXPECT_EQ(editor_.Grids().GridOf(MatchPage::kAccounts).Row(), 1) << "round to the first row again";
}

TEST_F(EditorWindowTest, APageThatIsRefusedIsNotShown) {
  editor_.Combo2.SetListIndex(1);
  Show(editor_);
  ChoosePage(1);
  EXPECT_EQ(editor_.CurrentPage(), 0);
  EXPECT_EQ(WidgetOf<QTabBar>(editor_.TabStrip1).currentIndex(), 0);
  editor_.Text1.SetFocus();
  Press(Qt::Key_PageDown, Qt::ControlModifier);
  EXPECT_EQ(editor_.CurrentPage(), 0);
  EXPECT_TRUE(editor_.Text1.HasFocus()) << "who is refused stays where he was";
}

}  // namespace
}  // namespace tallybook::desktop::testing
