// Whole conversations of the component's dialogs, from the entry point to files, figures and settings on disk.
#include <cstddef>
#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "dialogs/CDataExchangeGUI.h"
#include "dialogs/FormInstances.h"
#include "dialogs/dlgExport.h"
#include "dialogs/frmDelimited.h"
#include "dialogs/frmImport.h"
#include "exchange/CDataExchange.h"
#include "forms/modAllUI.h"
#include "reportdialog/dlgRepPrint.h"
#include "tallybook/application/ReferenceApp.h"
#include "tallybook/application/ReferenceFactory.h"
#include "tallybook/engine/Journal.h"
#include "tests/support/FileSizeLimit.h"
#include "tests/support/Hands.h"
#include "tests/support/OtherProcess.h"
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
using ::testing::Not;
using ::testing::SizeIs;
using ::testing::StartsWith;

const Text kDates = "dlgRepPrint";
const Text kOptions = "dlgExport";
const Text kPrompt = "frmImport";
const Text kDelimited = "frmDelimited";
constexpr Long kShop = 101;
constexpr Long kCafe = 205;
constexpr Integer kSales = 1;
constexpr Integer kGuests = 4;

class ConversationsTest : public ::testing::Test {
 protected:
  ConversationsTest() {
    engine::BookDescription description = ShopDescription();
    for (int day = 0; day < 730; ++day) {
      description.values.push_back({kShop, first_ + day, kSales, 100 + day / 4.0});
      description.values.push_back({kShop, first_ + day, kGuests, 20.0 + day % 7});
      description.values.push_back({kCafe, first_ + day, kSales, 10.5});
    }
    Book::Create(folder_.Path("North.tbk"), description);
    Open();
  }
  ~ConversationsTest() override {
    ReleaseForms();
    EXPECT_EQ(ModalDepth(), 0);
    EXPECT_EQ(platform_.boxes.AnswersLeft(), 0U) << "a question was never asked";
  }

  void Open() {
    book_.reset();
    book_ = Book::Open(folder_.Path("North.tbk"), app_);
  }
  // The figures as they stand on disk.
  [[nodiscard]] FigureMap Stored() {
    Open();
    return FiguresOf(*book_);
  }
  // One of them; 0 where there is none.
  [[nodiscard]] Double StoredFigure(Long account, Date date, Integer field) {
    const FigureMap figures = Stored();
    const auto found = figures.find({account, date, field});
    return found == figures.end() ? 0 : found->second;
  }

  void Export(bool as_table) { EXPECT_TRUE(gui_.ExportQDX(owner_, *book_, as_table, date_)); }
  void ImportCSV() { EXPECT_TRUE(gui_.ImportCSV(owner_, *book_, true)); }
  void ImportDelimited() { EXPECT_TRUE(gui_.ImportDelimited(owner_, *book_, false)); }

  [[nodiscard]] ScriptedUser& User() { return platform_.user; }
  void TakeDates() { User().Click(kDates, "Command1", kNextButton); }
  void TakeAllYears() {
    User().On(kDates,
              [](Form& form) { EXPECT_TRUE(TheHands().Click(dynamic_cast<dlgRepPrint&>(form).optLength(8), 8)); });
    TakeDates();
  }
  void Accept(const Text& form) { User().Click(form, "SaveButtons1", SaveButtons::kMainButton); }
  void Cancel(const Text& form) { User().Click(form, "SaveButtons1", SaveButtons::kCancelButton); }
  void Name(const Text& form, const Text& file) { User().Type(form, "Text1", Path(file)); }
  // What happens once the dialog asks again.
  void WhenAskedAgain(const Text& form, std::function<void()> act) {
    User().On(form, [act = std::move(act)](Form&) { act(); });
  }
  void Answer(std::initializer_list<Integer> answers) { platform_.boxes.Answer(answers); }

  [[nodiscard]] Text Path(const Text& name) const { return folder_.Path(name); }
  [[nodiscard]] std::vector<Text> Boxes() const { return platform_.boxes.Texts(); }
  [[nodiscard]] std::string Log() const { return folder_.Read("tallybook.log"); }
  [[nodiscard]] std::string BookSettings() const { return folder_.Read("North.ini"); }
  [[nodiscard]] Text CouldNotDelete(const Text& name) const {
    return "The output file: \r\n" + Path(name) +
           "\r\nalready exists, and could not delete it.  Close the file, and try again.";
  }
  [[nodiscard]] Text WantsToOpen(const Text& name) const {
    return "Export file created at:\r\n" + Path(name) + "\r\n\r\nWould you like to open the file?";
  }

  const Date first_ = Day(2003, 1, 1);
  TempFolder folder_;
  ScriptedPlatform platform_;
  ReferenceApp app_{{.title = "Tallybook",
                     .settings_file = folder_.Path("tallybook.ini"),
                     .log_file = folder_.Path("tallybook.log"),
                     .import_folder = folder_.Path(),
                     .data_folder = folder_.Path()}};
  ReferenceFactory factory_;
  std::unique_ptr<Book> book_;
  CDataExchangeGUI gui_{factory_};
  Long owner_ = platform_.screen.AddHostWindow();
  Date date_ = first_;
};

// --- An exchange file ------------------------------------------------------------------------------------------------

TEST_F(ConversationsTest, AnExchangeFileHoldsWhatTheExchangeObjectWrites) {
  TakeAllYears();
  Name(kPrompt, "all.QDX");
  Accept(kPrompt);
  Export(false);
  const std::string written = folder_.Read("all.QDX");
  CDataExchange exchange(factory_);
  exchange.SetOwner(book_.get());
  ASSERT_TRUE(exchange.WriteQDXFile(Path("direct.QDX"), first_, first_ + 730, false, 1.0F));
  // Three accounts of 730 days: month, day, year, count, and ten bytes for each figure.
  EXPECT_GT(written.size(), 730U * (8 + 2 * 10 + 8 + 10));
  // The two tell of different lengths of report, in the byte behind the time.
  const std::string direct = folder_.Read("direct.QDX");
  constexpr std::size_t kLength = 31;
  EXPECT_EQ(written[kLength], 8);
  EXPECT_EQ(direct[kLength], 0);
  EXPECT_TRUE(written.substr(0, kLength) == direct.substr(0, kLength));
  EXPECT_TRUE(written.substr(kLength + 1) == direct.substr(kLength + 1));
  EXPECT_THAT(Log(), IsEmpty());
}

TEST_F(ConversationsTest, AnExportThatIsCancelledAtAnyStepWritesNothing) {
  for (const bool as_table : {true, false}) {
    const Text& second = as_table ? kOptions : kPrompt;
    User().Click(kDates, "Command1", kCancelButton);
    Export(as_table);
    User().Close(kDates);
    Export(as_table);
    TakeDates();
    Name(second, "never.csv");
    Cancel(second);
    Export(as_table);
    TakeDates();
    User().Close(second);
    Export(as_table);
  }
  EXPECT_FALSE(folder_.Has("never.csv"));
  EXPECT_FALSE(folder_.Has("Export.csv"));
  EXPECT_FALSE(folder_.Has("Export.QDX"));
  EXPECT_FALSE(folder_.Has("North.ini")) << "no setting was written";
  EXPECT_THAT(Boxes(), IsEmpty());
  EXPECT_THAT(Log(), IsEmpty());
}

TEST_F(ConversationsTest, AnExchangeFileThatFindsNoRoomIsWrittenOnceThereIs) {
  std::optional<FileSizeLimit> full_disk(std::in_place, 20'000);
  TakeAllYears();
  Name(kPrompt, "all.QDX");
  Accept(kPrompt);
  WhenAskedAgain(kPrompt, [&] {
    EXPECT_THAT(Log(), HasSubstr("CDataExchange:WriteQDXFile"));
    full_disk.reset();
  });
  Accept(kPrompt);
  Export(false);
  EXPECT_FALSE(full_disk.has_value());
  EXPECT_GT(folder_.Read("all.QDX").size(), 20'000U);
}

TEST_F(ConversationsTest, AnExchangeFileThatAnotherProgramHoldsIsLeftAndWrittenWhenItIsFree) {
  folder_.Write("all.QDX", "old");
  auto holder = std::make_unique<OtherProcess>("BL", Path("all.QDX"));
  ASSERT_TRUE(holder->Holds());
  TakeDates();
  Name(kPrompt, "all.QDX");
  Accept(kPrompt);
  Answer({kRetry, kCancel});
  WhenAskedAgain(kPrompt, [&] {
    EXPECT_EQ(folder_.Read("all.QDX"), "old");
    holder.reset();
  });
  Accept(kPrompt);
  Export(false);
  EXPECT_THAT(Boxes(), ElementsAre(CouldNotDelete("all.QDX"), CouldNotDelete("all.QDX")));
  EXPECT_GT(folder_.Read("all.QDX").size(), 100U);
}

// --- Tables ----------------------------------------------------------------------------------------------------------

TEST_F(ConversationsTest, ATableIsWrittenInEveryFormatAndRememberedForTheNextTime) {
  struct Format {
    Text name;
    Text file;
    Text begins;
  };
  const std::vector<Format> formats = {
      {"Comma-separated values (csv)", "t.csv", "\"Date\",\"Account\",\"Field\",\"Value\"\r\n"},
      {"Spreadsheet (Office Open XML) (xlsx)", "t.xlsx", "PK"},
      {"dBASE table (dbf)", "t.dbf", "\x03"},
      {"Text in columns of fixed width (txt)", "t.txt", ""},
      {"SQLite table (db)", "t.db", "SQLite format 3"}};
  for (const Format& format : formats) {
    TakeDates();
    User().Choose(kOptions, "Combo1", format.name);
    Name(kOptions, format.file);
    Accept(kOptions);
    Answer({kCancel});
    Export(true);
    EXPECT_EQ(Boxes().back(), WantsToOpen(format.file));
    EXPECT_THAT(folder_.Read(format.file), StartsWith(format.begins));
    EXPECT_THAT(folder_.Read(format.file), Not(IsEmpty())) << format.file;
    TakeDates();
    User().On(kOptions, [&](Form& form) {
      EXPECT_EQ(dynamic_cast<dlgExport&>(form).Text1.Text(), Path(format.file));
      EXPECT_EQ(dynamic_cast<dlgExport&>(form).Combo1.SelectedText(), format.name);
    });
    Cancel(kOptions);
    Export(true);
  }
  EXPECT_THAT(Log(), IsEmpty());
}

TEST_F(ConversationsTest, ATableHoldsTheFiguresOfTheDatesThatWereChosen) {
  TakeDates();
  User().Click(kOptions, "chkNonZero");
  Name(kOptions, "day.csv");
  Accept(kOptions);
  Answer({kCancel});
  Export(true);
  EXPECT_EQ(folder_.Read("day.csv"),
            "\"Date\",\"Account\",\"Field\",\"Value\"\r\n"
            "2003-01-01,\"100\",1,100.000\r\n"
            "2003-01-01,\"100\",4,20.000\r\n"
            "2003-01-01,\"200\",1,10.500\r\n");
}

TEST_F(ConversationsTest, ATableThatFindsNoRoomIsAskedForAgain) {
  std::optional<FileSizeLimit> full_disk(std::in_place, 20'000);
  TakeAllYears();
  Name(kOptions, "all.csv");
  Accept(kOptions);
  WhenAskedAgain(kOptions, [&] {
    EXPECT_THAT(BookSettings(), IsEmpty()) << "nothing is remembered of an export that failed";
    full_disk.reset();
  });
  Accept(kOptions);
  Answer({kCancel});
  Export(true);
  EXPECT_FALSE(full_disk.has_value());
  EXPECT_THAT(Log(), HasSubstr("CDataExchange:WriteQDXFile"));
  EXPECT_GT(folder_.Read("all.csv").size(), 20'000U);
  EXPECT_THAT(BookSettings(), HasSubstr(Path("all.csv")));
}

TEST_F(ConversationsTest, ATableThatIsLockedIsWrittenAfterARetry) {
  folder_.Write("Export.csv", "old");
  platform_.files.FailNth(FileCall::kDelete, 1, FailureNumber::kPermissionDenied);
  TakeDates();
  Accept(kOptions);
  Answer({kRetry, kOk});
  Export(true);
  EXPECT_THAT(Boxes(), ElementsAre(CouldNotDelete("Export.csv"), WantsToOpen("Export.csv")));
  EXPECT_THAT(folder_.Read("Export.csv"), StartsWith("\"Date\""));
  EXPECT_THAT(platform_.shell.Opened(), ElementsAre(Path("Export.csv")));
}

// --- A comma-separated file ------------------------------------------------------------------------------------------

const std::string kFigures = "2,3,2004,1,1\r\n100,1,12.5\r\n200,4,3\r\n";

TEST_F(ConversationsTest, ACommaSeparatedFileChangesTheBookAndCanBeTakenBack) {
  const FigureMap before = Stored();
  folder_.Write("day.csv", kFigures);
  Name(kPrompt, "day.csv");
  Accept(kPrompt);
  Answer({kOk});
  ImportCSV();
  FigureMap expected = before;
  expected[{kShop, Day(2004, 2, 3), kSales}] += 12.5;
  expected[{kCafe, Day(2004, 2, 3), kGuests}] += 3;
  EXPECT_EQ(Stored(), expected);
  EXPECT_THAT(BookSettings(), HasSubstr(Path("day.csv")));
  ASSERT_THAT(Journal(*book_).Entries(), SizeIs(1));
  Journal(*book_).UndoNewest();
  EXPECT_EQ(Stored(), before);
  EXPECT_THAT(Log(), Not(HasSubstr("rror")));
}

TEST_F(ConversationsTest, ACommaSeparatedImportThatEndsAtAnyStepChangesNothing) {
  const FigureMap before = Stored();
  folder_.Write("day.csv", kFigures);
  folder_.Write("bad.csv", "2,3,2004,1,1\r\n100,1,12.5\r\nNONE,1,1\r\n");
  Cancel(kPrompt);
  ImportCSV();
  User().Close(kPrompt);
  ImportCSV();
  Name(kPrompt, "day.csv");
  Accept(kPrompt);
  Answer({kCancel});
  Cancel(kPrompt);
  ImportCSV();
  Name(kPrompt, "bad.csv");
  Accept(kPrompt);
  Answer({kOk, kNo});
  Cancel(kPrompt);
  ImportCSV();
  EXPECT_THAT(Boxes().back(), StartsWith("Invalid Account Code NONE      \r\nIn record number: 2\r\n"));
  EXPECT_EQ(Stored(), before);
  EXPECT_THAT(Journal(*book_).Entries(), IsEmpty());
  EXPECT_FALSE(folder_.Has("North.ini"));
}

TEST_F(ConversationsTest, ACommaSeparatedFileThatAnotherProgramHoldsIsImportedWhenItIsFree) {
  folder_.Write("day.csv", kFigures);
  auto holder = std::make_unique<OtherProcess>("BL", Path("day.csv"));
  ASSERT_TRUE(holder->Holds());
  Name(kPrompt, "day.csv");
  Accept(kPrompt);
  Answer({kRetry, kCancel, kOk});
  WhenAskedAgain(kPrompt, [&] { holder.reset(); });
  Accept(kPrompt);
  ImportCSV();
  const Text question = "Error opening import file: " + Path("day.csv");
  ASSERT_THAT(Boxes(), SizeIs(3));
  EXPECT_EQ(Boxes()[0], question);
  EXPECT_EQ(Boxes()[1], question);
  EXPECT_EQ(StoredFigure(kCafe, Day(2004, 2, 3), kGuests), 3);
}

// --- A delimited file ------------------------------------------------------------------------------------------------

const std::string kLines = "3/2/2004,100,1,5,4,7\r\n4/2/2004,200,1,6\r\n";

TEST_F(ConversationsTest, ADelimitedFileChangesTheBookAsTheUserSaysAndCanBeTakenBack) {
  const FigureMap before = Stored();
  folder_.Write("days.txt", kLines);
  Name(kDelimited, "days.txt");
  User().Choose(kDelimited, "cmbMath", "Add").Choose(kDelimited, "cmbDate", "DMY");
  Accept(kDelimited);
  Answer({kOk});
  ImportDelimited();
  FigureMap expected = before;
  expected[{kShop, Day(2004, 2, 3), kSales}] += 5;
  expected[{kShop, Day(2004, 2, 3), kGuests}] += 7;
  expected[{kCafe, Day(2004, 2, 4), kSales}] += 6;
  EXPECT_EQ(Stored(), expected);
  EXPECT_FALSE(folder_.Has("days.txt"));
  EXPECT_EQ(folder_.Read("days.txt.bak"), kLines);
  Journal(*book_).UndoNewest();
  EXPECT_EQ(Stored(), before);
  User().On(kDelimited, [&](Form& form) {
    auto& shown = dynamic_cast<frmDelimited&>(form);
    EXPECT_EQ(shown.Text1.Text(), Path("days.txt"));
    EXPECT_EQ(shown.cmbMath.SelectedText(), "Add");
    EXPECT_EQ(shown.cmbDate.SelectedText(), "DMY");
  });
  Cancel(kDelimited);
  ImportDelimited();
}

TEST_F(ConversationsTest, ADelimitedImportThatEndsAtAnyStepChangesNothing) {
  const FigureMap before = Stored();
  folder_.Write("bad.txt", "2/3/2004,100,9,5\r\n");
  Cancel(kDelimited);
  ImportDelimited();
  User().Close(kDelimited);
  ImportDelimited();
  EXPECT_FALSE(folder_.Has("North.ini"));
  Name(kDelimited, "bad.txt");
  Accept(kDelimited);
  Answer({kOk, kNo});
  ImportDelimited();
  EXPECT_THAT(Boxes().back(), StartsWith("Cannot import System Maintained Datafields with this option. "));
  EXPECT_EQ(Stored(), before);
  EXPECT_TRUE(folder_.Has("bad.txt")) << "a file with errors keeps its name";
  EXPECT_THAT(Journal(*book_).Entries(), IsEmpty());
}

TEST_F(ConversationsTest, ADelimitedFileThatAnotherProgramHoldsIsGivenUpAndTakenLater) {
  folder_.Write("days.txt", kLines);
  {
    const OtherProcess holder("BL", Path("days.txt"));
    ASSERT_TRUE(holder.Holds());
    Name(kDelimited, "days.txt");
    User().Choose(kDelimited, "cmbDate", "DMY");
    Accept(kDelimited);
    Answer({kRetry, kCancel});
    ImportDelimited();
    EXPECT_TRUE(folder_.Has("days.txt"));
  }
  Name(kDelimited, "days.txt");
  User().Choose(kDelimited, "cmbDate", "DMY");
  Accept(kDelimited);
  Answer({kOk});
  ImportDelimited();
  EXPECT_EQ(StoredFigure(kCafe, Day(2004, 2, 4), kSales), 6);
}

}  // namespace
}  // namespace tallybook::testing
