// The members of the exchange object around an exchange file's header: finding and reading it, the description for the
// user, and the archive copy's name.
#include <gmock/gmock.h>

#include "exchange/CDataExchange.h"
#include "qdx/HeaderRecord.h"
#include "support/Utility.h"
#include "tests/qdx/ExchangeBytes.h"
#include "tests/support/FailsWith.h"
#include "tests/support/MemoryHost.h"
#include "tests/support/ScriptedPlatform.h"

namespace tallybook::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

class QDXHeaderMembersTest : public ::testing::Test {
 protected:
  static constexpr bool kBackupOk = true;
  static constexpr bool kNoBackup = false;

  QDXHeaderMembersTest() {
    platform.memory.Put("/book/TBQDX4.NORTH", "\"Daily\",\"/q/DAY.QDX\",3,-1,-1\r\n0,0\r\n0\r\n");
    platform.memory.Put("/book/TBQDX7.NORTH", "\"Weekly\",\"/q/WEEK*.QDX\",3,-1,-1\r\n0,0\r\n0\r\n");
    exchange.OpenDefinitions(host->book, 1);
    exchange.SetFile(1);
    host->record.calls.clear();
  }
  ~QDXHeaderMembersTest() override { ResetSharedHeader(); }

  // An exchange file of that system name, changed so many days ago.
  void PutFile(const Text& path, const Text& system_name = "North Shop", Date days_ago = 1) {
    FileHeader header;
    header.system_name = system_name;
    PutHeader(path, header, days_ago);
  }
  void PutHeader(const Text& path, const FileHeader& header, Date days_ago = 1) {
    platform.memory.Put(path, header.All());
    platform.memory.SetModified(path, platform.clock.Now() - days_ago);
  }
  static std::vector<Text> LinesOf(const Text& text) {
    std::vector<Text> lines = {""};
    for (const char c : text) {
      if (c == '\n')
        lines.emplace_back();
      else
        lines.back() += c;
    }
    return lines;
  }
  [[nodiscard]] const std::vector<MemoryLog::Error>& Logged() const { return host->app.log.errors; }

  ScriptedPlatform platform{FilesIn::kMemory};
  std::unique_ptr<MemoryHost> host = SmallBook();
  CDataExchange exchange{host->factory};
  Integer file_number = 0;
};

// --- ReadQDXHeader ---------------------------------------------------------------------------------------------------

TEST_F(QDXHeaderMembersTest, ReadsTheFileOfTheNameIntoTheSharedRecord) {
  PutFile("/q/DAY.QDX");
  EXPECT_TRUE(exchange.ReadQDXHeader("/q/DAY.QDX", file_number, kNoBackup));
  EXPECT_EQ(exchange.TrueFilename(), "/q/DAY.QDX");
  EXPECT_EQ(SharedHeader().SystemName, "North Shop");
  EXPECT_EQ(SharedHeader().AccountCodes(2), "200");
  EXPECT_EQ(FileOf(file_number).Position(), static_cast<long long>(FileHeader().All().size()));
}

TEST_F(QDXHeaderMembersTest, StopsBeforeTheTablesWhereTheHeaderAloneIsWanted) {
  PutFile("/q/DAY.QDX");
  const bool header_only = true;
  EXPECT_TRUE(exchange.ReadQDXHeader("/q/DAY.QDX", file_number, kNoBackup, header_only));
  EXPECT_EQ(FileOf(file_number).Position(), static_cast<long long>(FileHeader().Head().size()));
  EXPECT_EQ(SharedHeader().AccountCodes(1), "");
}

TEST_F(QDXHeaderMembersTest, OverwritesTheHeaderThatAnotherObjectRead) {
  PutFile("/q/DAY.QDX", "North Shop");
  PutFile("/q/WEEK.QDX", "South Shop");
  EXPECT_TRUE(exchange.ReadQDXHeader("/q/DAY.QDX", file_number, kNoBackup));
  CDataExchange other(host->factory);
  other.OpenDefinitions(host->book, 1);
  Integer other_number = 0;
  EXPECT_TRUE(other.ReadQDXHeader("/q/WEEK.QDX", other_number, kNoBackup));
  EXPECT_EQ(SharedHeader().SystemName, "South Shop");
  EXPECT_EQ(exchange.TrueFilename(), "/q/DAY.QDX");
}

TEST_F(QDXHeaderMembersTest, TakesTheOldestOfThreeFilesThatMatch) {
  PutFile("/q/WEEK1.QDX", "first", 2);
  PutFile("/q/WEEK2.QDX", "second", 3);
  PutFile("/q/WEEK3.QDX", "third", 1);
  EXPECT_TRUE(exchange.ReadQDXHeader("/q/WEEK*.QDX", file_number, kNoBackup));
  EXPECT_EQ(exchange.TrueFilename(), "/q/WEEK2.QDX");
  EXPECT_EQ(SharedHeader().SystemName, "second");
}

TEST_F(QDXHeaderMembersTest, GivesFalseWithoutAWordWhereNothingMatchesAndKeepsTheTrueName) {
  PutFile("/q/DAY.QDX");
  EXPECT_TRUE(exchange.ReadQDXHeader("/q/DAY.QDX", file_number, kNoBackup));
  CloseFileEx(file_number);
  PutFile("/book/TBQDBU4.NORTH");
  host->record.calls.clear();
  EXPECT_FALSE(exchange.ReadQDXHeader("/q/MONTH*.QDX", file_number, kNoBackup));
  EXPECT_EQ(exchange.TrueFilename(), "/q/DAY.QDX");
  EXPECT_EQ(file_number, 0);
  EXPECT_THAT(host->record.calls, IsEmpty());
  EXPECT_TRUE(platform.boxes.Shown().empty());
  EXPECT_TRUE(Logged().empty());
}

TEST_F(QDXHeaderMembersTest, TakesTheArchiveCopyWhereItMay) {
  PutFile("/book/TBQDBU4.NORTH", "archive");
  EXPECT_TRUE(exchange.ReadQDXHeader("/q/DAY.QDX", file_number, kBackupOk));
  EXPECT_EQ(exchange.TrueFilename(), "/book/TBQDBU4.NORTH");
  EXPECT_EQ(SharedHeader().SystemName, "archive");
}

TEST_F(QDXHeaderMembersTest, GivesFalseWithoutAWordWhereThereIsNoArchiveCopyEither) {
  EXPECT_FALSE(exchange.ReadQDXHeader("/q/DAY.QDX", file_number, kBackupOk));
  EXPECT_EQ(exchange.TrueFilename(), "");
  EXPECT_TRUE(platform.boxes.Shown().empty());
  EXPECT_TRUE(Logged().empty());
}

// The name changes before the read, so it may name a file that has failed.
TEST_F(QDXHeaderMembersTest, NamesAFileThatWasRefusedAsTheTrueOne) {
  platform.memory.Put("/q/NOTES.TXT", "nothing of the kind");
  EXPECT_FALSE(exchange.ReadQDXHeader("/q/NOTES.TXT", file_number, kNoBackup));
  EXPECT_EQ(exchange.TrueFilename(), "/q/NOTES.TXT");
  EXPECT_THAT(platform.boxes.Texts(), ElementsAre("File is NOT an QDX file."));
  EXPECT_GT(file_number, 0);
}

TEST_F(QDXHeaderMembersTest, KeepsTheRowsOfAFailedReadInTheSharedRecord) {
  FileHeader header;
  header.periods.assign(27, {"Period", 14});
  PutHeader("/q/DAY.QDX", header);
  EXPECT_FALSE(exchange.ReadQDXHeader("/q/DAY.QDX", file_number, kNoBackup));
  EXPECT_EQ(SharedHeader().PeriodNames(26), "Period");
  ASSERT_THAT(Logged(), SizeIs(1));
  EXPECT_EQ(Logged()[0].message, "Tallybook - CDataExchange:MyReadQDXHeader");
  EXPECT_EQ(platform.memory.OpenHandles(), 0);
}

TEST_F(QDXHeaderMembersTest, KeepsWhatAShorterFileDoesNotTell) {
  PutFile("/q/DAY.QDX");
  EXPECT_TRUE(exchange.ReadQDXHeader("/q/DAY.QDX", file_number, kNoBackup));
  FileHeader shorter;
  shorter.report_length = 3;
  platform.memory.Put("/q/SHORT.QDX", shorter.All().substr(0, 33));
  EXPECT_TRUE(exchange.ReadQDXHeader("/q/SHORT.QDX", file_number, kNoBackup));
  EXPECT_EQ(SharedHeader().ReportLength, 3);
  EXPECT_EQ(SharedHeader().SystemName, "North Shop");
  EXPECT_EQ(SharedHeader().NumAccounts, 2);
}

TEST_F(QDXHeaderMembersTest, LogsAFailedSearchUnderItsOwnName) {
  platform.files.FailNth(FileCall::kFind, 1, FailureNumber::kDeviceError);
  EXPECT_FALSE(exchange.ReadQDXHeader("/q/DAY*.QDX", file_number, kNoBackup));
  ASSERT_THAT(Logged(), SizeIs(1));
  EXPECT_EQ(Logged()[0].message, "FaultyFileSystem - CDataExchange:ReadQDXHeader");
  EXPECT_EQ(Logged()[0].detail, -1);
}

TEST_F(QDXHeaderMembersTest, TellsOfADatabaseThatCannotGiveItsApplication) {
  PutFile("/q/DAY.QDX");
  for (int call = 1; call <= 9; ++call) {
    host->record.FailOn("App", call, Failure(FailureNumber::kDeviceError, "no application", "Engine"));
  }
  EXPECT_FALSE(exchange.ReadQDXHeader("/q/DAY.QDX", file_number, kNoBackup));
  EXPECT_THAT(platform.boxes.Texts(), ElementsAre("no application"));
}

// Every call of the host, failed in turn: no failure leaves the member, and each is told once, by the one handler or
// the other.
TEST_F(QDXHeaderMembersTest, TellsEveryHostFailureOnce) {
  PutFile("/q/DAY.QDX");
  int failed_runs = 0;
  for (int nth = 1; nth < 100; ++nth) {
    host->app.log.errors.clear();
    host->book.progress = {};
    CloseFileEx(file_number);
    host->record.FailOn(kAnyOperation, nth, Failure(FailureNumber::kDeviceError, "asked to fail", "Engine"));
    const bool read = exchange.ReadQDXHeader("/q/DAY.QDX", file_number, kNoBackup);
    if (!host->record.AllFaultsStruck()) {
      EXPECT_TRUE(read);
      break;
    }
    ++failed_runs;
    EXPECT_FALSE(read) << nth;
    ASSERT_THAT(Logged(), SizeIs(1)) << nth;
    EXPECT_TRUE(Logged()[0].message == "Engine - CDataExchange:ReadQDXHeader" ||
                Logged()[0].message == "Engine - CDataExchange:MyReadQDXHeader")
        << Logged()[0].message;
  }
  EXPECT_GT(failed_runs, 6);
}

// --- QDXHeaderText ---------------------------------------------------------------------------------------------------

TEST_F(QDXHeaderMembersTest, DescribesAFileAndClosesIt) {
  PutFile("/q/DAY.QDX");
  EXPECT_EQ(exchange.QDXHeaderText("/q/DAY.QDX"),
            "/q/DAY.QDX\nNorth Shop\nTuesday, February 3, 2004 14:05:09\nSunday, February 1, 2004\n"
            "Friday, February 20, 2004\nDay");
  EXPECT_EQ(platform.memory.OpenHandles(), 0);
  EXPECT_EQ(SharedHeader().AccountCodes(1), "100");
}

TEST_F(QDXHeaderMembersTest, DescribesTheFileThatAPatternFinds) {
  PutFile("/q/WEEK2.QDX");
  EXPECT_EQ(LinesOf(exchange.QDXHeaderText("/q/WEEK*.QDX"))[0], "/q/WEEK2.QDX");
}

TEST_F(QDXHeaderMembersTest, DescribesNothingWhereThereIsNoFile) {
  EXPECT_EQ(exchange.QDXHeaderText("/q/DAY.QDX"), "");
  EXPECT_TRUE(platform.boxes.Shown().empty());
}

TEST_F(QDXHeaderMembersTest, DescribesNothingWhereTheFileIsRefusedOrFails) {
  platform.memory.Put("/q/NOTES.TXT", "nothing of the kind");
  EXPECT_EQ(exchange.QDXHeaderText("/q/NOTES.TXT"), "");
  FileHeader header;
  header.years.assign(10, 2004);
  PutHeader("/q/DAY.QDX", header);
  EXPECT_EQ(exchange.QDXHeaderText("/q/DAY.QDX"), "");
  EXPECT_THAT(Logged(), SizeIs(1));
}

TEST_F(QDXHeaderMembersTest, CallsTheArchiveCopyByThatName) {
  PutFile("/book/TBQDBU4.NORTH");
  EXPECT_EQ(LinesOf(exchange.QDXHeaderText("/q/DAY.QDX")),
            (std::vector<Text>{"Archive Copy", "North Shop", "Tuesday, February 3, 2004 14:05:09",
                               "Sunday, February 1, 2004", "Friday, February 20, 2004", "Day"}));
}

TEST_F(QDXHeaderMembersTest, KnowsTheArchiveCopyWhateverTheCaseOfItsName) {
  PutFile("/BOOK/tbqdbu4.north");
  EXPECT_EQ(LinesOf(exchange.QDXHeaderText("/BOOK/tbqdbu4.north"))[0], "Archive Copy");
}

TEST_F(QDXHeaderMembersTest, NamesTheLevelsAndRepeatsTheFirstLineForAnyOther) {
  const std::vector<std::pair<int, Text>> levels = {{1, "Day"}, {2, "Week"}, {3, "Period"}, {4, "/q/DAY.QDX"}};
  for (const auto& [level, line] : levels) {
    FileHeader header;
    header.data_level = level;
    PutHeader("/q/DAY.QDX", header);
    EXPECT_EQ(LinesOf(exchange.QDXHeaderText("/q/DAY.QDX")).back(), line);
  }
}

// --- QDXFileExists, QDXBackupName ------------------------------------------------------------------------------------

TEST_F(QDXHeaderMembersTest, FindsADefinitionsFileByItsExactName) {
  EXPECT_FALSE(exchange.QDXFileExists(1, kNoBackup));
  PutFile("/q/DAY.QDX");
  EXPECT_TRUE(exchange.QDXFileExists(1, kNoBackup));
  EXPECT_TRUE(exchange.QDXFileExists(-1, kNoBackup)) << "the selected definition";
}

TEST_F(QDXHeaderMembersTest, NeverFindsAFileByAPattern) {
  PutFile("/q/WEEK1.QDX");
  EXPECT_FALSE(exchange.QDXFileExists(2, kBackupOk));
}

// Meant: the archive copy counts in every case.
TEST_F(QDXHeaderMembersTest, CountsTheArchiveCopyWhetherItMayOrNot) {
  PutFile("/book/TBQDBU7.NORTH");
  EXPECT_TRUE(exchange.QDXFileExists(2, kNoBackup));
  EXPECT_TRUE(exchange.QDXFileExists(2, kBackupOk));
  EXPECT_FALSE(exchange.QDXFileExists(1, kBackupOk));
}

TEST_F(QDXHeaderMembersTest, NamesTheArchiveCopyByTheDefinitionsNumber) {
  EXPECT_EQ(exchange.QDXBackupName(), "/book/TBQDBU4.NORTH");
  EXPECT_EQ(exchange.QDXBackupName(-1), "/book/TBQDBU4.NORTH");
  EXPECT_EQ(exchange.QDXBackupName(2), "/book/TBQDBU7.NORTH");
  exchange.SetFile(2);
  EXPECT_EQ(exchange.QDXBackupName(), "/book/TBQDBU7.NORTH");
  EXPECT_THAT([&] { static_cast<void>(exchange.QDXBackupName(1000)); }, FailsWith(FailureNumber::kRange));
}

TEST_F(QDXHeaderMembersTest, NeedsABook) {
  CDataExchange unbound(host->factory);
  EXPECT_THAT([&] { static_cast<void>(unbound.QDXBackupName(0)); }, FailsWith(FailureNumber::kObjectNotSet));
}

// --- WriteQDXFile ----------------------------------------------------------------------------------------------------

TEST_F(QDXHeaderMembersTest, ExportsWhatTheReaderTakes) {
  exchange.SetReportLength(6);
  const bool as_table = true;
  EXPECT_TRUE(exchange.WriteQDXFile("/q/OUT.QDX", host->book.FirstDate(), host->book.FirstDate(), !as_table, 1));
  EXPECT_TRUE(exchange.ReadQDXHeader("/q/OUT.QDX", file_number, kNoBackup));
  EXPECT_EQ(SharedHeader().ReportLength, 6);
  EXPECT_EQ(SharedHeader().AccountCodes(3), "300");
  EXPECT_THAT(FileDecoder(platform.memory.Bytes("/q/OUT.QDX")).figures,
              ElementsAre(BodyFigure{1, {1, 1, 2003}, 1, 12.5}, BodyFigure{1, {1, 1, 2003}, 2, 3}));
}

// As a report that is printed from a command line has it.
class UnattendedExchange : public CDataExchange {
 public:
  explicit UnattendedExchange(HostFactory& factory) : CDataExchange(factory) { SetCommandLinePrinting(true); }
};

TEST_F(QDXHeaderMembersTest, AsksAboutAnOldFileUnlessItPrintsFromACommandLine) {
  const Date first = host->book.FirstDate();
  const bool as_table = true;
  platform.memory.Put("/q/OUT.QDX", "old");
  platform.files.FailPath(FileCall::kDelete, "OUT.QDX", FailureNumber::kPermissionDenied);
  platform.boxes.Answer({kCancel});
  EXPECT_FALSE(exchange.WriteQDXFile("/q/OUT.QDX", first, first, !as_table, 1));
  EXPECT_THAT(platform.boxes.Shown(), SizeIs(1));
  UnattendedExchange unattended(host->factory);
  unattended.SetOwner(&host->book);
  EXPECT_TRUE(unattended.WriteQDXFile("/q/OUT.QDX", first, first, !as_table, 1));
  EXPECT_THAT(platform.boxes.Shown(), SizeIs(1));
}

// Meant: an account that is asked for makes no difference.
TEST_F(QDXHeaderMembersTest, ExportsAllAccountsWhicheverIsAskedFor) {
  const Date first = host->book.FirstDate();
  const bool as_table = true;
  EXPECT_TRUE(exchange.WriteQDXFile("/q/ALL.QDX", first, first, !as_table, 1));
  EXPECT_TRUE(exchange.WriteQDXFileEx("/q/ONE.QDX", first, first, !as_table, 1, "", 205));
  EXPECT_EQ(platform.memory.Bytes("/q/ONE.QDX"), platform.memory.Bytes("/q/ALL.QDX"));
}

TEST_F(QDXHeaderMembersTest, ExportsTablesWithOrWithoutZerosThroughTheLibraryItWasGiven) {
  const auto library = std::make_shared<MemoryExportObject>(host->record);
  exchange.SetDataExportObject(library);
  const Date first = host->book.FirstDate();
  const bool as_table = true;
  EXPECT_TRUE(exchange.WriteQDXFile("/q/ALL", first, first, as_table, 1, "DBF"));
  exchange.SetTransZeros(false);
  EXPECT_TRUE(exchange.WriteQDXFile("/q/SOME", first, first, as_table, 1, "DBF"));
  ASSERT_THAT(*library->Written(), SizeIs(2));
  EXPECT_EQ(library->Written()->at(0)->path, "/q/ALL.dbf");
  EXPECT_THAT(library->Written()->at(0)->rows, SizeIs(3 * 3));
  EXPECT_THAT(library->Written()->at(1)->rows, SizeIs(2));
}

}  // namespace
}  // namespace tallybook::testing
