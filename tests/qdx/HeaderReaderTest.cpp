#include <gmock/gmock.h>

#include "base/Dates.h"
#include "qdx/HeaderReader.h"
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

constexpr const char* kPath = "/q/DAY.QDX";
constexpr const char* kNoExchangeFileText = "File is NOT an QDX file.";
constexpr const char* kOtherVersionText =
    "The QDX file is a version that cannot be read with this version of the software.";

class HeaderReaderTest : public ::testing::Test {
 protected:
  static constexpr bool kWithTables = false;
  static constexpr bool kHeaderOnly = true;

  void Put(const std::string& bytes) { platform.memory.Put(kPath, bytes); }
  bool Read(bool header_only = kWithTables) {
    return MyReadQDXHeader(host->book, kPath, file_number, header_only, record);
  }
  bool ReadBytes(const std::string& bytes) {
    Put(bytes);
    return Read();
  }
  // As a fresh process would read.
  void StartAfresh() {
    CloseFileEx(file_number);
    record = HeaderRecord();
    host->record.calls.clear();
    host->app.log.errors.clear();
    host->book.progress = {};
    platform.boxes.ForgetShown();
  }
  [[nodiscard]] const std::vector<MemoryLog::Error>& Logged() const { return host->app.log.errors; }

  // How a read ended: the outcomes that the header of the unit allows.
  enum class Outcome { kRead, kNoExchangeFile, kOtherVersion, kFailed, kNoneAllowed };
  Outcome OutcomeOf(bool read) {
    const bool open = file_number > 0 && platform.memory.OpenHandles() == 1;
    const bool closed = file_number == 0 && platform.memory.OpenHandles() == 0;
    const bool begun = host->record.ArgumentsOf("BeginProgress").size() == 1;
    const auto texts = platform.boxes.Texts();
    if (host->book.progress.open || host->record.ArgumentsOf("EndProgress").size() != 1) return Outcome::kNoneAllowed;
    if (read) return open && begun && texts.empty() && Logged().empty() ? Outcome::kRead : Outcome::kNoneAllowed;
    if (texts == std::vector<Text>{kNoExchangeFileText} && open && !begun && Logged().empty())
      return Outcome::kNoExchangeFile;
    if (texts == std::vector<Text>{kOtherVersionText} && open && !begun && Logged().empty())
      return Outcome::kOtherVersion;
    return texts.empty() && closed && Logged().size() == 1 ? Outcome::kFailed : Outcome::kNoneAllowed;
  }

  void ExpectFailed(const Text& source = "Tallybook") {
    ASSERT_THAT(Logged(), SizeIs(1));
    EXPECT_EQ(Logged()[0].message, source + " - CDataExchange:MyReadQDXHeader");
    EXPECT_EQ(Logged()[0].detail, -1);
    EXPECT_EQ(file_number, 0);
    EXPECT_EQ(platform.memory.OpenHandles(), 0);
    EXPECT_TRUE(platform.boxes.Shown().empty());
    EXPECT_FALSE(host->book.progress.open);
    // The entry comes first, the end of the progress last.
    const auto& calls = host->record.calls;
    ASSERT_GE(calls.size(), 2U);
    EXPECT_TRUE(calls[calls.size() - 2].starts_with("Log.LogError ")) << calls[calls.size() - 2];
    EXPECT_EQ(calls.back(), "EndProgress");
  }

  ScriptedPlatform platform{FilesIn::kMemory};
  std::unique_ptr<MemoryHost> host = SmallBook();
  Integer file_number = 0;
  HeaderRecord record;
};

// --- Good files ------------------------------------------------------------------------------------------------------

TEST_F(HeaderReaderTest, ReadsAWholeHeaderAndLeavesTheFileOpenBehindTheTables) {
  const std::string header = FileHeader().All();
  EXPECT_TRUE(ReadBytes(header + "body"));
  EXPECT_EQ(record.SystemName, "North Shop");
  EXPECT_EQ(record.AccountCodes(2), "200");
  EXPECT_EQ(record.FieldDescs(2), "Weather");
  ASSERT_GT(file_number, 0);
  EXPECT_EQ(FileOf(file_number).Position(), static_cast<long long>(header.size()));
  EXPECT_EQ(OpenFileName(file_number), kPath);
  EXPECT_THAT(host->record.calls,
              ElementsAre("BeginProgress Reading QDX File Header", "ProgressFraction 0.25", "ProgressFraction 0.5",
                          "ProgressFraction 0.75", "ProgressFraction 1", "EndProgress"));
  EXPECT_TRUE(platform.boxes.Shown().empty());
}

TEST_F(HeaderReaderTest, StopsBeforeTheTablesWhereTheHeaderAloneIsWanted) {
  record.AccountCodes(1) = "before";
  record.FieldNumbers(1) = 99;
  Put(FileHeader().All());
  EXPECT_TRUE(Read(kHeaderOnly));
  EXPECT_EQ(FileOf(file_number).Position(), static_cast<long long>(FileHeader().Head().size()));
  EXPECT_EQ(record.YearCodes(1), 2004);
  EXPECT_EQ(record.NumAccounts, 2);
  EXPECT_EQ(record.AccountCodes(1), "before");
  EXPECT_EQ(record.FieldNumbers(1), 99);
  EXPECT_THAT(host->record.calls, ElementsAre("BeginProgress Reading QDX File Header", "EndProgress"));
}

TEST_F(HeaderReaderTest, LetsOthersReadAndWriteTheFileMeanwhile) {
  EXPECT_TRUE(ReadBytes(FileHeader().All()));
  EXPECT_NE(platform.memory.Open(kPath, Access::kReadWrite, Sharing::kShared, Creation::kMustExist), nullptr);
}

// Meant: both tables are measured against the number of accounts.
TEST_F(HeaderReaderTest, DrivesTheBarPastOneForMoreFieldsThanAccounts) {
  FileHeader header;
  header.fields.assign(4, {1, "Sales"});
  EXPECT_TRUE(ReadBytes(header.All()));
  EXPECT_THAT(host->book.progress.fractions, ElementsAre(0.25F, 0.5F, 0.75F, 1.0F, 1.25F, 1.5F));
}

TEST_F(HeaderReaderTest, ReadsAFileWithoutAccountsAndFields) {
  FileHeader header;
  header.accounts.clear();
  header.fields.clear();
  EXPECT_TRUE(ReadBytes(header.All()));
  EXPECT_EQ(record.NumAccounts, 0);
  EXPECT_EQ(record.NumFields, 0);
  EXPECT_THAT(host->book.progress.fractions, IsEmpty());
}

TEST_F(HeaderReaderTest, ReadsAsManyRowsAsTheTablesHold) {
  FileHeader header;
  header.periods.assign(26, {"Period", 14});
  header.years.assign(9, 2004);
  header.accounts.assign(9999, {"1", ""});
  header.fields.assign(9999, {5, ""});
  EXPECT_TRUE(ReadBytes(header.All()));
  EXPECT_EQ(record.PeriodNames(26), "Period");
  EXPECT_EQ(record.YearCodes(9), 2004);
  EXPECT_EQ(record.AccountCodes(9999), "1");
  EXPECT_EQ(record.FieldNumbers(9999), 5);
}

// --- No file, no open ------------------------------------------------------------------------------------------------

TEST_F(HeaderReaderTest, GivesFalseWithoutAWordWhereThereIsNoFile) {
  EXPECT_FALSE(Read());
  EXPECT_EQ(file_number, 0);
  EXPECT_THAT(host->record.calls, ElementsAre("EndProgress"));
  EXPECT_TRUE(platform.boxes.Shown().empty());
  EXPECT_TRUE(Logged().empty());
}

TEST_F(HeaderReaderTest, AsksAboutAFileThatCannotBeOpenedUntilTheUserGivesUp) {
  Put(FileHeader().All());
  platform.files.FailPath(FileCall::kOpen, "DAY.QDX", FailureNumber::kDeviceError);
  platform.boxes.Answer({kRetry, kCancel});
  EXPECT_FALSE(Read());
  const Text question = "Error opening QDX file: /q/DAY.QDX";
  EXPECT_THAT(platform.boxes.Shown(),
              ElementsAre(ShownBox{question, kQuestionIcon | kRetryCancel, "Tallybook", kRetry},
                          ShownBox{question, kQuestionIcon | kRetryCancel, "Tallybook", kCancel}));
  EXPECT_THAT(platform.boxes.Sounds(), ElementsAre("SystemQuestion", "SystemQuestion"));
  EXPECT_EQ(platform.files.Calls(FileCall::kOpen), 2);
  EXPECT_EQ(file_number, 0);
  EXPECT_THAT(host->record.calls, IsEmpty());  // meant: not even the end of the progress
  EXPECT_TRUE(Logged().empty());
}

TEST_F(HeaderReaderTest, ReadsTheFileOnceItCanBeOpened) {
  Put(FileHeader().All());
  platform.files.FailNth(FileCall::kOpen, 1, FailureNumber::kDeviceError, 2);
  platform.boxes.Answer({kRetry, kRetry});
  EXPECT_TRUE(Read());
  EXPECT_EQ(platform.boxes.AnswersLeft(), 0U);
  EXPECT_EQ(record.SystemName, "North Shop");
}

// --- Refusals --------------------------------------------------------------------------------------------------------

TEST_F(HeaderReaderTest, RefusesAFileOfAnotherKindAndLeavesItOpen) {
  FileHeader header;
  header.magic = "Kelvo qdx";
  EXPECT_FALSE(ReadBytes(header.All()));
  EXPECT_THAT(platform.boxes.Shown(),
              ElementsAre(ShownBox{kNoExchangeFileText, kExclamationIcon | kOkOnly, "Tallybook", kOk}));
  EXPECT_THAT(platform.boxes.Sounds(), ElementsAre("SystemExclamation"));
  EXPECT_GT(file_number, 0);
  EXPECT_EQ(platform.memory.OpenHandles(), 1);
  EXPECT_THAT(host->record.calls, ElementsAre("EndProgress"));
  EXPECT_TRUE(Logged().empty());
  EXPECT_EQ(record.SystemName, "");
}

TEST_F(HeaderReaderTest, RefusesAFileOfAnotherVersionAndLeavesItOpen) {
  FileHeader header;
  header.version = std::string("\x00\x00\x00\x40", 4);
  EXPECT_FALSE(ReadBytes(header.All()));
  EXPECT_THAT(platform.boxes.Shown(),
              ElementsAre(ShownBox{kOtherVersionText, kExclamationIcon | kOkOnly, "Tallybook", kOk}));
  EXPECT_THAT(platform.boxes.Sounds(), ElementsAre("SystemExclamation"));
  EXPECT_GT(file_number, 0);
  EXPECT_EQ(platform.memory.OpenHandles(), 1);
  EXPECT_THAT(host->record.calls, ElementsAre("EndProgress"));
  EXPECT_TRUE(Logged().empty());
}

TEST_F(HeaderReaderTest, TakesTheFourBytesOfVersionOneAlone) {
  for (int bit = 0; bit < 32; ++bit) {
    StartAfresh();
    FileHeader header;
    char& byte = header.version[static_cast<std::size_t>(bit / 8)];
    byte = static_cast<char>(byte ^ (1 << bit % 8));
    EXPECT_EQ(OutcomeOf(ReadBytes(header.All())), Outcome::kOtherVersion) << "bit " << bit;
  }
}

TEST_F(HeaderReaderTest, ClosesARefusedFileAtTheNextOpenThroughItsNumber) {
  platform.memory.Put("/q/OTHER.TXT", "no exchange file");
  EXPECT_FALSE(MyReadQDXHeader(host->book, "/q/OTHER.TXT", file_number, kWithTables, record));
  const Integer refused = file_number;
  EXPECT_TRUE(ReadBytes(FileHeader().All()));
  EXPECT_EQ(file_number, refused);
  EXPECT_EQ(OpenFileName(file_number), kPath);
  EXPECT_EQ(platform.memory.OpenHandles(), 1);
}

// What an earlier file left in the record must not pass for the magic and the version of this one.
TEST_F(HeaderReaderTest, JudgesAShortFileByItsOwnBytes) {
  EXPECT_TRUE(ReadBytes(FileHeader().All()));
  platform.boxes.ForgetShown();
  EXPECT_FALSE(ReadBytes("Kelvo QD"));
  EXPECT_THAT(platform.boxes.Texts(), ElementsAre(kNoExchangeFileText));
  platform.boxes.ForgetShown();
  EXPECT_FALSE(ReadBytes("Kelvo QDX"));
  EXPECT_THAT(platform.boxes.Texts(), ElementsAre(kOtherVersionText));
}

// --- Failures --------------------------------------------------------------------------------------------------------

TEST_F(HeaderReaderTest, FailsOnThePeriodBeyondTheTableAndKeepsTheRowsBefore) {
  FileHeader header;
  header.periods.assign(27, {"Period", 14});
  EXPECT_FALSE(ReadBytes(header.All()));
  ExpectFailed();
  EXPECT_EQ(record.PeriodNames(26), "Period");
  EXPECT_EQ(record.PeriodLengths(26), 14);
}

TEST_F(HeaderReaderTest, FailsOnTheYearBeyondTheTableAndKeepsTheRowsBefore) {
  FileHeader header;
  header.years.assign(10, 2004);
  EXPECT_FALSE(ReadBytes(header.All()));
  ExpectFailed();
  EXPECT_EQ(record.YearCodes(9), 2004);
}

TEST_F(HeaderReaderTest, FailsOnTheAccountBeyondTheTableAndKeepsTheRowsBefore) {
  FileHeader header;
  header.accounts.assign(10000, {"1", "one"});
  EXPECT_FALSE(ReadBytes(header.All()));
  ExpectFailed();
  EXPECT_EQ(record.AccountDescs(9999), "one");
}

TEST_F(HeaderReaderTest, FailsOnTheFieldBeyondTheTableAndKeepsTheRowsBefore) {
  FileHeader header;
  header.fields.assign(10000, {5, "five"});
  EXPECT_FALSE(ReadBytes(header.All()));
  ExpectFailed();
  EXPECT_EQ(record.FieldDescs(9999), "five");
}

// Meant: the bar divides by the number of accounts.
TEST_F(HeaderReaderTest, FailsOnAFieldWhereThereAreNoAccounts) {
  FileHeader header;
  header.accounts.clear();
  header.fields.resize(1);
  EXPECT_FALSE(ReadBytes(header.All()));
  ExpectFailed();
  EXPECT_THAT(host->book.progress.fractions, IsEmpty());
}

TEST_F(HeaderReaderTest, FailsOnATextOfNegativeLength) {
  std::string bytes = FileHeader().All();
  bytes.replace(45, 2, Bytes().I2(-1).All());
  EXPECT_FALSE(ReadBytes(bytes));
  ExpectFailed();
}

TEST_F(HeaderReaderTest, FailsWhereTheHostFailsAndTellsItsSource) {
  for (const auto& [operation, nth] : {std::pair{"BeginProgress", 1}, std::pair{"ProgressFraction", 1},
                                       std::pair{"ProgressFraction", 2}, std::pair{"ProgressFraction", 4}}) {
    StartAfresh();
    host->record.FailOn(operation, nth, Failure(FailureNumber::kDeviceError, "asked to fail", "Engine"));
    EXPECT_FALSE(ReadBytes(FileHeader().All()));
    EXPECT_TRUE(host->record.AllFaultsStruck());
    ExpectFailed("Engine");
  }
}

TEST_F(HeaderReaderTest, FailsWhereTheFileCannotBeRead) {
  int failed_runs = 0;
  for (int nth = 1; nth < 100; ++nth) {
    StartAfresh();
    platform.files.ClearFaults();
    Put(FileHeader().All().substr(0, 150));  // short, so that the size is asked for too
    const int before = platform.files.FaultsRaised();
    platform.files.FailNth(FileCall::kRead, nth, FailureNumber::kDeviceError);
    const bool read = Read();
    if (platform.files.FaultsRaised() == before) {
      EXPECT_TRUE(read);
      break;
    }
    ++failed_runs;
    EXPECT_FALSE(read);
    ExpectFailed("FaultyFileSystem");
  }
  EXPECT_GE(failed_runs, 2);
}

// --- Damage ----------------------------------------------------------------------------------------------------------

// A file cut short passes as read, with three exceptions: it has no magic, it has no version, or it tells of fields and
// has lost the number of accounts.
TEST_F(HeaderReaderTest, TakesEveryPrefixAsTheRulesForShortFilesSay) {
  const std::string whole = FileHeader().All();
  const std::size_t field_count_end = 92;
  const std::size_t account_count_end = 96;
  for (std::size_t length = 0; length <= whole.size(); ++length) {
    StartAfresh();
    Outcome expected = Outcome::kRead;
    if (length < 9)
      expected = Outcome::kNoExchangeFile;
    else if (length < 13)
      expected = Outcome::kOtherVersion;
    else if (length >= field_count_end && length < account_count_end)
      expected = Outcome::kFailed;
    EXPECT_EQ(OutcomeOf(ReadBytes(whole.substr(0, length))), expected) << length << " bytes";
  }
}

TEST_F(HeaderReaderTest, EndsInAnAllowedOutcomeWhicheverByteIsFlipped) {
  const std::string whole = FileHeader().All();
  std::map<Outcome, int> outcomes;
  for (std::size_t offset = 0; offset < whole.size(); ++offset) {
    for (const int flip : {0x01, 0x02, 0x04, 0x08, 0x10, 0x20, 0x40, 0x80, 0xFF}) {
      StartAfresh();
      std::string damaged = whole;
      damaged[offset] = static_cast<char>(damaged[offset] ^ flip);
      const Outcome outcome = OutcomeOf(ReadBytes(damaged));
      EXPECT_NE(outcome, Outcome::kNoneAllowed) << "byte " << offset << " flipped by " << flip;
      const bool judged =
          offset < 9 ? outcome == Outcome::kNoExchangeFile : offset >= 13 || outcome == Outcome::kOtherVersion;
      EXPECT_TRUE(judged) << "byte " << offset << " flipped by " << flip;
      ++outcomes[outcome];
    }
  }
  EXPECT_GT(outcomes[Outcome::kRead], 0);
  EXPECT_GT(outcomes[Outcome::kFailed], 0);
}

// --- Finding a file --------------------------------------------------------------------------------------------------

class FindQDXFileTest : public ::testing::Test {
 protected:
  void PutFile(const Text& path, Date modified) {
    platform.memory.Put(path, "x");
    platform.memory.SetModified(path, modified);
  }
  Text Find(const Text& name) {
    return FindQDXFile(name, [] { return Text("/book/TBQDBU1.NORTH"); });
  }

  ScriptedPlatform platform{FilesIn::kMemory};
  const Date now = platform.clock.Now();
};

TEST_F(FindQDXFileTest, TakesTheFileOfExactlyTheName) {
  PutFile("/q/DAY.QDX", now + 100);  // whatever its time
  PutFile("/q/DAY.QDX2", 1);
  EXPECT_EQ(Find("/q/DAY.QDX"), "/q/DAY.QDX");
}

TEST_F(FindQDXFileTest, TakesTheOldestFileOfAPattern) {
  PutFile("/q/DAY1.QDX", now - 2);
  PutFile("/q/DAY2.QDX", now - 3);
  PutFile("/q/DAY3.QDX", now - 1);
  PutFile("/q/WEEK.QDX", now - 9);
  EXPECT_EQ(Find("/q/DAY*.QDX"), "/q/DAY2.QDX");
}

TEST_F(FindQDXFileTest, TakesTheFirstFoundOfFilesOfOneTime) {
  PutFile("/q/dayB.QDX", now - 3);
  PutFile("/q/DAYA.QDX", now - 3);
  PutFile("/q/DAYC.QDX", now - 3);
  EXPECT_EQ(Find("/q/DAY?.QDX"), "/q/DAYA.QDX");
}

TEST_F(FindQDXFileTest, NeverTakesAFileOfTheFutureNorOfThisMoment) {
  PutFile("/q/DAY1.QDX", now + 1);
  PutFile("/q/DAY2.QDX", now);
  EXPECT_EQ(Find("/q/DAY*.QDX"), "");
  PutFile("/q/DAY3.QDX", now - 0.001);
  EXPECT_EQ(Find("/q/DAY*.QDX"), "/q/DAY3.QDX");
}

TEST_F(FindQDXFileTest, TheFutureBeginsAtOneMomentWhateverTheLocalClockSays) {
  constexpr Double kHour = 1.0 / 24;
  platform.clock.SetHoursAhead(2);
  PutFile("/q/DAY1.QDX", now - kHour);
  EXPECT_EQ(Find("/q/DAY*.QDX"), "");
  PutFile("/q/DAY2.QDX", now - 3 * kHour);
  EXPECT_EQ(Find("/q/DAY*.QDX"), "/q/DAY2.QDX");
}

TEST_F(FindQDXFileTest, FallsBackOnTheArchiveCopyWhereNothingMatches) {
  EXPECT_EQ(Find("/q/DAY*.QDX"), "");
  PutFile("/book/TBQDBU1.NORTH", now - 1);
  EXPECT_EQ(Find("/q/DAY*.QDX"), "/book/TBQDBU1.NORTH");
  EXPECT_EQ(Find("/q/DAY.QDX"), "/book/TBQDBU1.NORTH");
  EXPECT_EQ(FindQDXFile("/q/DAY.QDX", nullptr), "");
  PutFile("/q/DAY5.QDX", now - 1);
  EXPECT_EQ(Find("/q/DAY*.QDX"), "/q/DAY5.QDX");
}

TEST_F(FindQDXFileTest, RaisesWhatTheSearchRaises) {
  platform.files.FailNth(FileCall::kFind, 1, FailureNumber::kDeviceError);
  EXPECT_THAT([&] { static_cast<void>(Find("/q/DAY*.QDX")); }, FailsWith(FailureNumber::kDeviceError));
}

// --- Describing ------------------------------------------------------------------------------------------------------

class DescribeHeaderTest : public ::testing::Test {
 protected:
  DescribeHeaderTest() {
    record.SystemName = "North Shop";
    record.CreateDate = "02-03-2004";
    record.CreateTime = "14:05:09";
    record.StartMonth = 1;
    record.StartDay = 1;
    record.StartYear = 2004;
    record.LastMonth = 1;
    record.LastDay = 31;
    record.LastYear = 2004;
    record.DataLevel = 1;
  }
  // The lines of the description, under the first line "DAY.QDX".
  std::vector<Text> Lines() const {
    std::vector<Text> lines = {""};
    for (const char c : DescribeHeader(record, "DAY.QDX")) {
      if (c == '\n')
        lines.emplace_back();
      else
        lines.back() += c;
    }
    return lines;
  }

  ScriptedPlatform platform{FilesIn::kMemory};
  HeaderRecord record;
};

TEST_F(DescribeHeaderTest, TellsOfTheFileInSixLines) {
  EXPECT_EQ(DescribeHeader(record, "DAY.QDX"),
            "DAY.QDX\nNorth Shop\nTuesday, February 3, 2004 14:05:09\nThursday, January 1, 2004\n"
            "Saturday, January 31, 2004\nDay");
}

TEST_F(DescribeHeaderTest, NamesTheDataLevel) {
  record.DataLevel = 2;
  EXPECT_EQ(Lines().back(), "Week");
  record.DataLevel = 3;
  EXPECT_EQ(Lines().back(), "Period");
}

TEST_F(DescribeHeaderTest, RepeatsTheFirstLineForALevelThatIsNone) {
  for (const int level : {0, 4, -1}) {
    record.DataLevel = static_cast<Integer>(level);
    EXPECT_EQ(Lines().back(), "DAY.QDX") << level;
    EXPECT_THAT(Lines(), SizeIs(6));
  }
}

// The parts stand at fixed places; what is no number counts as 0, and a date of such parts runs over.
TEST_F(DescribeHeaderTest, TakesTheCreationDateByItsPlaces) {
  record.CreateDate = "12/31/1999";
  EXPECT_EQ(Lines()[2], "Friday, December 31, 1999 14:05:09");
  record.CreateDate = "xx-xx-2004";
  EXPECT_EQ(Lines()[2], "Sunday, November 30, 2003 14:05:09");
}

// A damaged header may tell of dates that no calendar names.
TEST_F(DescribeHeaderTest, TellsDatesBeyondTheCalendarAsPlainNumbers) {
  record.StartYear = 32767;
  record.LastMonth = -30000;
  record.CreateDate = "02-03-9e99";
  EXPECT_EQ(Lines()[2], "2-3-0 14:05:09");
  EXPECT_EQ(Lines()[3], "1-1-32767");
  EXPECT_EQ(Lines()[4], "-30000-31-2004");
}

}  // namespace
}  // namespace tallybook::testing
