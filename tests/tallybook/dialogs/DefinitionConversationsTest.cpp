// Whole conversations over the list of exchange definitions, from the entry point to definitions, figures and reports
// on disk.
#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <vector>

#include "base/Texts.h"
#include "dialogs/CDataExchangeGUI.h"
#include "dialogs/FormInstances.h"
#include "exchange/CDataExchange.h"
#include "forms/modAllUI.h"
#include "qdx/HeaderRecord.h"
#include "tallybook/application/ReferenceApp.h"
#include "tallybook/application/ReferenceFactory.h"
#include "tallybook/engine/Journal.h"
#include "tests/import/ExchangeFile.h"
#include "tests/support/MemoryHost.h"
#include "tests/tallybook/engine/BookFixture.h"

namespace tallybook::testing {
namespace {

using application::ReferenceApp;
using application::ReferenceFactory;
using engine::Book;
using engine::Journal;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::SizeIs;

const Text kEditor = "frmDataExc";
const Text kPrompt = "frmImport";
const Text kImport = "dlgQDXImp";
constexpr int kAccounts = 300;
constexpr Integer kImportOne = 1;
constexpr Integer kImportAll = 2;

Text CodeOf(int account) {
  return PadLeft(std::to_string(account), '0', 4);
}

// A book of 300 accounts, and an exchange file of as many, each with a figure of its own.
class DefinitionConversationsTest : public ::testing::Test {
 protected:
  DefinitionConversationsTest() {
    ResetSharedHeader();
    engine::BookDescription description = ShopDescription();
    description.accounts.clear();
    for (int account = 1; account <= kAccounts; ++account)
      description.accounts.push_back({account, CodeOf(account), "Account " + std::to_string(account)});
    Book::Create(folder_.Path("North.tbk"), description);
    book_ = Book::Open(folder_.Path("North.tbk"), app_);
    WriteExchangeFile("south.QDX");
    factory_.SetReportDestination({.path = folder_.Path("report.txt")});
    factory_.SetListWindowMaker([this] {
      auto window = std::make_unique<MemoryEdtForm>(record_);
      window->acts = std::move(acts_);
      shown_ = window->Window();
      return window;
    });
  }
  ~DefinitionConversationsTest() override {
    ReleaseForms();
    ResetSharedHeader();
    EXPECT_EQ(ModalDepth(), 0);
    EXPECT_EQ(platform_.boxes.AnswersLeft(), 0U) << "a question was never asked";
  }

  void WriteExchangeFile(const Text& name) {
    ExchangeFile file;
    file.first = day_;
    file.last = day_;
    for (int account = 1; account <= kAccounts; ++account) {
      file.accounts.push_back({CodeOf(account), "There " + std::to_string(account)});
      file.blocks.push_back({static_cast<Integer>(account), {{day_, {{1, account / 4.0}}}}});
    }
    file.fields = {{1, "Sales"}};
    folder_.Write(name, file.Bytes());
  }
  void WriteDefinition(int number, const Text& title, const Text& qdx_file) {
    folder_.Write("TBQDX" + std::to_string(number) + ".North",
                  "\"" + title + "\",\"" + folder_.Path(qdx_file) + "\",3,-1,-1\r\n0,0\r\n0\r\n");
  }

  void WhenListed(MemoryEdtForm::Act act) { acts_.push_back(std::move(act)); }
  void Browse() { EXPECT_TRUE(gui_.ImportQDX(owner_, *book_, 1, 0)); }
  [[nodiscard]] ScriptedUser& User() { return platform_.user; }
  // Keys reach what has the focus, as from a user without a mouse.
  void Press(const Text& form, const Text& keys) { User().Keys(form, keys); }
  // The prompt begins with the focus in its box; a marked letter presses the button.
  void ChooseFile(const Text& name) {
    Press(kPrompt, folder_.Path(name));
    Press(kPrompt, "%o");
  }
  void Accept(const Text& form, const Text& marked) { Press(form, "%" + marked); }
  // Input is handled within a change of pages, and the Tab that it sends arrives afterwards.
  void ChangePage(const Text& keys) {
    Press(kEditor, keys);
    User().Wait(3);
  }
  // Adds a definition of the file and matches all of it.
  void AddMatched() {
    WhenListed([](MemoryEdtForm&, EdtFormEvents& events) {
      Integer record = 0;
      events.AddRec(record);
      EXPECT_EQ(record, 1);
    });
    ChooseFile("south.QDX");
    Press(kEditor, "%tSouth");
    ChangePage("{TAB}{RIGHT}");
    Press(kEditor, "{* " + std::to_string(kAccounts) + "}");
    ChangePage("+{TAB}{RIGHT}");
    Press(kEditor, "*");
    Accept(kEditor, "s");
  }
  [[nodiscard]] FigureMap Imported() const {
    FigureMap figures;
    for (int account = 1; account <= kAccounts; ++account) figures[{account, day_, 1}] = account / 4.0;
    return figures;
  }
  [[nodiscard]] std::vector<Text> Boxes() const { return platform_.boxes.Texts(); }
  [[nodiscard]] std::string Definition(int number) const {
    return folder_.Read("TBQDX" + std::to_string(number) + ".North");
  }

  const Date day_ = Day(2004, 2, 3);
  TempFolder folder_;
  ScriptedPlatform platform_;
  CallRecord record_;
  ReferenceApp app_{{.title = "Tallybook",
                     .settings_file = folder_.Path("tallybook.ini"),
                     .log_file = folder_.Path("tallybook.log"),
                     .import_folder = folder_.Path(),
                     .data_folder = folder_.Path()}};
  ReferenceFactory factory_;
  std::unique_ptr<Book> book_;
  CDataExchangeGUI gui_{factory_};
  Long owner_ = platform_.screen.AddHostWindow();
  std::vector<MemoryEdtForm::Act> acts_;
  std::shared_ptr<ListWindow> shown_;
};

TEST_F(DefinitionConversationsTest, ADefinitionIsAddedAndMatchedByKeysAloneImportedTakenBackAndDeleted) {
  AddMatched();
  WhenListed([&](MemoryEdtForm&, EdtFormEvents& events) {
    EXPECT_THAT(Definition(1), HasSubstr("\r\n1,300\r\n1,1\r\n\"0001\",\"0001\"\r\n"));
    EXPECT_THAT(Definition(1), HasSubstr("\"0300\",\"0300\"\r\n0\r\n"));
    EXPECT_EQ(folder_.Read("TBQDBU1.North"), folder_.Read("south.QDX"));
    events.ActionButton(kImportOne, 1);
  });
  Press(kImport, "%i{TAB}{ENTER}");  // both the last list and the button are marked so
  WhenListed([&](MemoryEdtForm&, EdtFormEvents& events) {
    EXPECT_EQ(FiguresOf(*book_), Imported());
    EXPECT_THAT(folder_.Read("report.txt"), HasSubstr("Completed Import of: "));
    EXPECT_FALSE(folder_.Has("south.QDX")) << "renamed, as a new definition says";
    events.DeleteRec(1);
  });
  platform_.boxes.Answer({kOk});
  Browse();
  EXPECT_THAT(Boxes(), ElementsAre("Ok to Delete Exchange Definition # 1"));
  EXPECT_THAT(shown_->rows, IsEmpty());
  EXPECT_FALSE(folder_.Has("TBQDX1.North"));
  Journal(*book_).UndoNewest();
  EXPECT_THAT(FiguresOf(*book_), IsEmpty());
}

TEST_F(DefinitionConversationsTest, TheLayoutIsPrintedInBothOrders) {
  AddMatched();
  WhenListed([](MemoryEdtForm&, EdtFormEvents& events) { events.EditRec(1); });
  Press(kEditor, "%p");
  User().Close(kEditor);
  Browse();
  const std::string report = folder_.Read("report.txt");
  EXPECT_THAT(report, HasSubstr("Tallybook QDX Import Layout\n==="));
  EXPECT_THAT(report, HasSubstr("North Shop - QDX Import Layout\n"));
  for (const char* heading :
       {"\nList of Account Matchups (sorted by From):\n", "\nList of Account Matchups (sorted by To):\n",
        "\nList of Field Matchups (sorted by From):\n", "\nList of Field Matchups (sorted by To):\n"})
    EXPECT_THAT(report, HasSubstr(heading));
  EXPECT_THAT(report, HasSubstr("\n0300         There 300"));
  EXPECT_THAT(report, HasSubstr("\f")) << "new pages";
}

TEST_F(DefinitionConversationsTest, AllIsImportedButTheDefinitionThatFails) {
  WriteDefinition(1, "Good", "south.QDX");
  folder_.Write("bad.QDX", "no exchange file");
  WriteDefinition(2, "Bad", "bad.QDX");
  WhenListed([](MemoryEdtForm&, EdtFormEvents& events) { events.ActionButton(kImportAll, 1); });
  Browse();
  ASSERT_THAT(Boxes(), SizeIs(2));
  EXPECT_EQ(Boxes()[0], "File is NOT an QDX file.");
  EXPECT_THAT(Boxes()[1], HasSubstr("At least one set of QDX files were not able to be Imported."));
  FigureMap figures = Imported();
  EXPECT_EQ(FiguresOf(*book_), figures);
  EXPECT_THAT(folder_.Read("report.txt"), HasSubstr("Reading files for Good"));
}

TEST_F(DefinitionConversationsTest, ADefinitionIsEditedWhileItsFileIsGone) {
  AddMatched();
  WhenListed([&](MemoryEdtForm&, EdtFormEvents& events) {
    std::filesystem::remove(folder_.Path("south.QDX"));
    events.ActionButton(kImportOne, 1);
    events.EditRec(1);
  });
  User().On(kEditor,
            [](Form& form) { EXPECT_EQ(dynamic_cast<DefinitionEditor&>(form).QDXGrid.Cell(0, 1), "Archive Copy"); });
  ChangePage("%a");
  Press(kEditor, "00");
  Accept(kEditor, "s");
  Browse();
  EXPECT_THAT(Boxes(), ElementsAre("QDX File cannot be imported because it does not exist"));
  EXPECT_THAT(Definition(1), HasSubstr("\r\n1,298\r\n1,1\r\n\"0003\",\"0003\"\r\n"));
}

TEST_F(DefinitionConversationsTest, AFullStoreIsListedWholeAndTakesNoMore) {
  for (int number = 1; number <= 999; ++number)
    WriteDefinition(number, "Title " + std::to_string(number), number == 500 ? "south.QDX" : "none.QDX");
  WhenListed([](MemoryEdtForm& window, EdtFormEvents& events) {
    EXPECT_THAT(window->rows, SizeIs(999));
    Integer record = 1;
    events.AddRec(record);
    EXPECT_EQ(record, 1);
    EXPECT_THAT(window->rows, SizeIs(999));
    events.DeleteRec(window.FindRow("K7")->record);
  });
  ChooseFile("south.QDX");
  platform_.boxes.Answer({kOk});
  WhenListed([](MemoryEdtForm& window, EdtFormEvents& events) {
    EXPECT_EQ(window->totals, "998 active of 999 maximum");
    Integer record = 0;
    events.AddRec(record);
    EXPECT_EQ(record, 999);
  });
  ChooseFile("south.QDX");
  Accept(kEditor, "s");
  Browse();
  EXPECT_EQ(shown_->totals, "999 active of 999 maximum");
  EXPECT_THAT(Definition(7), HasSubstr("DataExchange #7"));
  EXPECT_THAT(Boxes(), ElementsAre("There are 999 exchange definitions already, and there can be no more",
                                   "Ok to Delete Exchange Definition # 7"));
}

}  // namespace
}  // namespace tallybook::testing
