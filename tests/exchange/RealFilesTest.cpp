// The exchange object on the machine's own files, with something in the way: the user is told in the operation's words,
// and what stood before stands.
#include <filesystem>
#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "base/Dates.h"
#include "exchange/CDataExchange.h"
#include "import/DelimitedImport.h"
#include "tests/import/ExchangeFile.h"
#include "tests/support/FileSizeLimit.h"
#include "tests/support/MemoryHost.h"
#include "tests/support/OtherProcess.h"
#include "tests/support/ScriptedPlatform.h"
#include "tests/support/TempFolder.h"

namespace tallybook::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

const Date kDay = DateFromParts(2004, 2, 3);
constexpr Long kAsksToRetry = kQuestionIcon | kRetryCancel;

BookShape ShapeIn(const TempFolder& folder) {
  BookShape shape;
  shape.data_path = folder.Path();
  return shape;
}

class RealFilesTest : public ::testing::Test {
 protected:
  RealFilesTest() {
    ResetSharedHeader();
    EXPECT_TRUE(exchange_.OpenDefinitions(host_->book, 1));
    exchange_.InitFile();
    host_->record.calls.clear();
  }
  ~RealFilesTest() override {
    EXPECT_EQ(host_->book.Figures(), before_) << "nothing was to be imported";
    ResetSharedHeader();
  }

  // The operation ends with false after this one question, at which the user gives up.
  void ExpectGivenUp(const Text& question, Long style, const std::function<bool()>& operation) {
    platform_.boxes.ForgetShown();
    platform_.boxes.Answer({kCancel});
    EXPECT_FALSE(operation()) << question;
    EXPECT_THAT(platform_.boxes.Shown(), ElementsAre(ShownBox{question, style, "Tallybook", kCancel}));
  }

  bool Export() {
    const bool as_table = false;
    return exchange_.WriteQDXFile(Path("OUT.QDX"), kDay, kDay, as_table, 1.0F);
  }
  bool ImportCSV() { return exchange_.ImportCSVFile(Path("figures.csv"), true, {0}); }
  bool ImportDelimited() {
    return exchange_.ImportDelimitedFile(Path("daily.txt"), eMath::mAdd, kMonthDayYear, 0, false);
  }
  // A new definition, or the first one again, of the file DAY.QDX.
  bool AddDefinition() {
    const Integer position = exchange_.FirstAvailRec();
    exchange_.SetDesc(position, "Daily");
    return exchange_.Add(position) == -1;
  }
  bool UpdateDefinition() { return exchange_.Update(1); }
  bool ImportQDX() { return exchange_.ImportQDXFile(host_->printer); }
  // The definition that ImportQDX and UpdateDefinition work with.
  void SelectDefinition() {
    folder_.Write("TBQDX1.NORTH", kDefinitionHead + Path("DAY.QDX") + kDefinitionRest);
    EXPECT_TRUE(exchange_.OpenDefinitions(host_->book, 1));
    exchange_.SetFile(1);
  }

  [[nodiscard]] Text Path(const Text& name) const { return folder_.Path(name); }
  [[nodiscard]] std::vector<Text> Logged() const {
    std::vector<Text> messages;
    for (const MemoryLog::Error& error : host_->app.log.errors) messages.push_back(error.message);
    return messages;
  }

  const std::string kDefinitionHead = "\"Daily\",\"";
  const std::string kDefinitionRest = "\",3,-1,-1\r\n0,0\r\n0\r\n";

  TempFolder folder_;
  ScriptedPlatform platform_;
  std::unique_ptr<MemoryHost> host_ = SmallBook(ShapeIn(folder_));
  CDataExchange exchange_{host_->factory};
  MemoryMasterfile::FigureMap before_ = host_->book.Figures();
};

TEST_F(RealFilesTest, AFolderInTheFilesPlaceIsTold) {
  for (const char* name : {"OUT.QDX", "figures.csv", "daily.txt", "TBQDX1.NORTH"}) {
    std::filesystem::create_directory(Path(name));
  }
  ExpectGivenUp("Error creating export file: " + Path("OUT.QDX"), kAsksToRetry, [&] { return Export(); });
  ExpectGivenUp("Error opening import file: " + Path("figures.csv"), kAsksToRetry, [&] { return ImportCSV(); });
  ExpectGivenUp("Error creating file: " + Path("TBQDX1.NORTH"), kAsksToRetry, [&] { return AddDefinition(); });
  platform_.boxes.ForgetShown();
  EXPECT_FALSE(ImportDelimited());
  EXPECT_THAT(platform_.boxes.Texts(), ElementsAre("File: " + Path("daily.txt") + " does not exist."));
  for (const char* name : {"OUT.QDX", "figures.csv", "daily.txt", "TBQDX1.NORTH"}) {
    EXPECT_TRUE(std::filesystem::is_directory(Path(name))) << name;
  }
}

TEST_F(RealFilesTest, AFileThatAnotherProcessHoldsIsTold) {
  SelectDefinition();
  for (const char* name : {"OUT.QDX", "figures.csv", "daily.txt", "DAY.QDX"}) folder_.Write(name, "old");
  const std::string definition = folder_.Read("TBQDX1.NORTH");
  const OtherProcess exporter("BL", Path("OUT.QDX"));
  const OtherProcess csv("BL", Path("figures.csv"));
  const OtherProcess delimited("BL", Path("daily.txt"));
  const OtherProcess source("BL", Path("DAY.QDX"));
  const OtherProcess editor("BL", Path("TBQDX1.NORTH"));
  ASSERT_TRUE(exporter.Holds() && csv.Holds() && delimited.Holds() && source.Holds() && editor.Holds());

  ExpectGivenUp("The output file: \r\n" + Path("OUT.QDX") +
                    "\r\nalready exists, and could not delete it.  Close the file, and try again.",
                kStopIcon | kRetryCancel, [&] { return Export(); });
  ExpectGivenUp("Error opening import file: " + Path("figures.csv"), kAsksToRetry, [&] { return ImportCSV(); });
  ExpectGivenUp("Error opening import file: " + Path("daily.txt"), kAsksToRetry, [&] { return ImportDelimited(); });
  ExpectGivenUp("Error opening QDX file: " + Path("DAY.QDX"), kAsksToRetry, [&] { return ImportQDX(); });
  ExpectGivenUp("Error creating file: " + Path("TBQDX1.NORTH"), kAsksToRetry, [&] { return UpdateDefinition(); });

  for (const char* name : {"OUT.QDX", "figures.csv", "daily.txt", "DAY.QDX"}) {
    EXPECT_EQ(folder_.Read(name), "old") << name;
  }
  EXPECT_EQ(folder_.Read("TBQDX1.NORTH"), definition);
}

// A folder that nobody may write, and a user whom that binds: the superuser may do everything.
class ReadOnly {
 public:
  explicit ReadOnly(Text path) : path_(std::move(path)) {
    using std::filesystem::perms;
    std::filesystem::permissions(path_, perms::owner_read | perms::owner_exec | perms::group_read | perms::group_exec |
                                            perms::others_read | perms::others_exec);
    if (::geteuid() == 0 && ::seteuid(65534) != 0) ADD_FAILURE() << "cannot become another user";
  }
  ~ReadOnly() {
    if (::geteuid() != user_ && ::seteuid(user_) != 0) ADD_FAILURE() << "cannot become the user again";
    std::filesystem::permissions(path_, std::filesystem::perms::owner_all);
  }
  ReadOnly(const ReadOnly&) = delete;
  ReadOnly& operator=(const ReadOnly&) = delete;

 private:
  Text path_;
  uid_t user_ = ::geteuid();
};

TEST_F(RealFilesTest, AReadOnlyFolderIsTold) {
  const ReadOnly folder(folder_.Path());
  ExpectGivenUp("Error creating export file: " + Path("OUT.QDX"), kAsksToRetry, [&] { return Export(); });
  ExpectGivenUp("Error creating file: " + Path("TBQDX1.NORTH"), kAsksToRetry, [&] { return AddDefinition(); });
  EXPECT_FALSE(folder_.Has("OUT.QDX"));
  EXPECT_FALSE(folder_.Has("TBQDX1.NORTH"));
}

TEST_F(RealFilesTest, AFileInAReadOnlyFolderIsImportedAndKeepsItsName) {
  SelectDefinition();
  exchange_.SetDisp(kDispRename);
  ExchangeFile file;
  file.first = file.last = kDay;
  file.accounts = {{"100", "Front of shop"}};
  file.fields = {{1, "Sales"}};
  file.blocks = {{1, {{kDay, {{1, 2.5}}}}}};
  folder_.Write("DAY.QDX", file.Bytes());
  folder_.Write("daily.txt", "2,3,2004,100,1,5\r");
  {
    const ReadOnly folder(folder_.Path());
    platform_.boxes.Answer({kOk});
    EXPECT_TRUE(ImportDelimited());
    EXPECT_EQ(host_->book.Get(101, kDay, 1), 5);
    EXPECT_TRUE(ImportQDX());
    EXPECT_EQ(host_->book.Get(101, kDay, 1), 7.5);
  }
  EXPECT_TRUE(folder_.Has("daily.txt"));
  EXPECT_TRUE(folder_.Has("DAY.QDX"));
  EXPECT_THAT(host_->printer->Lines(), ::testing::Contains("The file could not be renamed to: " + Path("DAY.XDQ")));
  EXPECT_TRUE(host_->book.UndoLastRollback() && host_->book.UndoLastRollback());
}

TEST_F(RealFilesTest, AFullDiskIsToldAndNoHalfDefinitionStays) {
  const FileSizeLimit limit(16);
  EXPECT_FALSE(Export());
  EXPECT_THAT(platform_.boxes.Shown(), IsEmpty());
  ASSERT_EQ(Logged().size(), 1U);
  EXPECT_THAT(Logged()[0], ::testing::EndsWith(" - CDataExchange:WriteQDXFile"));
  EXPECT_EQ(folder_.Read("OUT.QDX").size(), 16U) << "the file stays as far as it got";
  ExpectGivenUp("Error creating file: " + Path("TBQDX1.NORTH"), kAsksToRetry, [&] { return AddDefinition(); });
  EXPECT_FALSE(folder_.Has("TBQDX1.NORTH"));
}

}  // namespace
}  // namespace tallybook::testing
