// The exchange file shape of an export: its bytes, and what the shape alone decides. The walk stands in ExporterTest.
#include <gmock/gmock.h>
#include <map>
#include <rapidcheck.h>
#include <tuple>

#include "base/Texts.h"
#include "qdx/HeaderReader.h"
#include "support/Utility.h"
#include "tests/qdx/ExportFixture.h"

namespace tallybook::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::SizeIs;

class ExchangeFileTargetTest : public ExportFixture {};

// The marks of a body, as documented.
const std::string kBlockEnd = Bytes().I2s({0, 0, 0}).All();
const std::string kBodyEnd = Bytes().I2s({0, 0, 0, 0}).All();

// --- Golden files ----------------------------------------------------------------------------------------------------

TEST_F(ExchangeFileTargetTest, WritesTheDocumentedExample) {
  host->book.Set(101, February(3), 7, 2.5);
  EXPECT_TRUE(Run());
  const std::string body = Bytes().I2s({1, 2, 3, 2004, 1, 2}).Chars({"\0\0\0\0\0\0\4\x40", 8}).All() +
                           Bytes().I2s({0, 0, 0, 2, 0, 0, 0, 0, 0, 0, 0}).All();
  EXPECT_EQ(File(), FileHeader().All() + body);
  EXPECT_THAT(body, SizeIs(8 + 2 * 8 + 8 + 10));
  EXPECT_TRUE(Logged().empty());
  EXPECT_TRUE(platform.boxes.Shown().empty());
  ExpectAllClosed();
}

TEST_F(ExchangeFileTargetTest, WritesABlockForEveryAccountOfABookWithoutFigures) {
  EXPECT_TRUE(Run());
  EXPECT_EQ(Body(), Bytes().I2s({1, 0, 0, 0, 2, 0, 0, 0}).All() + kBodyEnd);
}

TEST_F(ExchangeFileTargetTest, WritesTheBlocksOfTheOthersWhereOnlyTheLastAccountHasFigures) {
  host->book.Set(205, February(20), 1, -4);
  EXPECT_TRUE(Run());
  EXPECT_EQ(Body(), Bytes().I2s({1, 0, 0, 0, 2, 2, 20, 2004, 1, 1}).R8(-4).I2s({0, 0, 0}).All() + kBodyEnd);
}

TEST_F(ExchangeFileTargetTest, WritesDatesAndFieldsInRisingOrder) {
  host->book.Set(101, February(5), 7, 4);
  host->book.Set(101, February(5), 1, 3);
  host->book.Set(101, February(2), 7, 2);
  EXPECT_TRUE(Run());
  EXPECT_EQ(Body(), Bytes().I2s({1, 2, 2, 2004, 1, 2})
                            .R8(2)
                            .I2s({2, 5, 2004, 2, 1})
                            .R8(3)
                            .I2(2)
                            .R8(4)
                            .I2s({0, 0, 0, 2, 0, 0, 0})
                            .All() +
                        kBodyEnd);
}

TEST_F(ExchangeFileTargetTest, StoresNegativeAndVerySmallValuesAndNoZero) {
  host->book.Set(101, February(1), 1, -0.001);
  host->book.Set(101, February(2), 1, 5e-324);
  host->book.Set(101, February(3), 1, 0);
  host->book.Set(101, February(4), 1, -0.0);
  EXPECT_TRUE(Run());
  EXPECT_THAT(FileDecoder(File()).figures,
              ElementsAre(BodyFigure{1, {2, 1, 2004}, 1, -0.001}, BodyFigure{1, {2, 2, 2004}, 1, 5e-324}));
}

TEST_F(ExchangeFileTargetTest, StoresNoZeroWhateverIsAskedOfTables) {
  host->book.Set(101, February(3), 7, 2.5);
  request.with_zeros = true;
  EXPECT_TRUE(Run());
  const std::string with_zeros = File();
  request.with_zeros = false;
  EXPECT_TRUE(Run());
  EXPECT_EQ(File(), with_zeros);
  EXPECT_THAT(FileDecoder(File()).figures, SizeIs(1));
}

TEST_F(ExchangeFileTargetTest, WritesAFileWithoutAccountsAndFields) {
  host = std::make_unique<MemoryHost>(host->book.Shape());
  EXPECT_TRUE(Run());
  FileHeader expected = Header();
  expected.accounts.clear();
  expected.fields.clear();
  expected.database_version = 1;
  expected.year_field = expected.field_slots = 0;
  expected.account_slots = 1;
  EXPECT_EQ(File(), expected.All() + kBodyEnd);
}

TEST_F(ExchangeFileTargetTest, TakesRangeReportLengthVersionAndClockIntoTheHeader) {
  UseRange(3, 7);
  request.report_length = 2;
  request.version = 2;
  platform.clock.Set(DateFromParts(2026, 12, 31) + TimeFromParts(0, 0, 59));
  EXPECT_TRUE(Run());
  FileHeader expected;
  expected.start = {2, 3, 2004};
  expected.last = {2, 7, 2004};
  expected.report_length = 2;
  expected.version = std::string("\x00\x00\x00\x40", 4);
  expected.create_date = "12-31-2026";
  expected.create_time = "00:00:59";
  EXPECT_EQ(File().substr(0, expected.All().size()), expected.All());
}

TEST_F(ExchangeFileTargetTest, IsWrittenWholeBeyondTheSizeOfABuffer) {
  for (Integer field = 100; field < 600; ++field) host->book.AddField(field, "Field " + std::to_string(field));
  for (int day = 1; day <= 20; ++day)
    for (Integer field = 100; field < 600; ++field) host->book.Set(205, February(day), field, day * 1000 + field);
  EXPECT_TRUE(Run());
  const FileDecoder decoded(File());
  ASSERT_THAT(decoded.figures, SizeIs(20 * 500));
  EXPECT_EQ(decoded.figures.front(), (BodyFigure{2, {2, 1, 2004}, 3, 1100}));
  EXPECT_EQ(decoded.figures.back(), (BodyFigure{2, {2, 20, 2004}, 502, 20599}));
}

TEST_F(ExchangeFileTargetTest, EndsBeforeTheLastDateWhereTheAccountsDoNotFit) {
  host->book.answers.num_accounts = 32768;
  EXPECT_FALSE(Run());
  EXPECT_EQ(File(), FileHeader().All().substr(0, 39));
  ExpectLoggedOnce();
  ExpectAllClosed();
}

// Meant: the writer enforces none of the reader's limits.
TEST_F(ExchangeFileTargetTest, WritesMorePeriodsThanAReaderTakes) {
  host->book.answers.num_periods = 27;
  EXPECT_TRUE(Run());
  HeaderRecord record;
  Integer file_number = 0;
  EXPECT_FALSE(MyReadQDXHeader(host->book, kExported, file_number, false, record));
  EXPECT_EQ(record.NumPeriods, 27);
  EXPECT_EQ(record.PeriodNames(26), "Period 26");
}

// --- Progress --------------------------------------------------------------------------------------------------------

TEST_F(ExchangeFileTargetTest, ShowsThreeThirdsOfProgressUnderTheLastAccountOfTheTable) {
  EXPECT_TRUE(Run());
  // Meant: nothing selects an account in the body's walk.
  const Text text = "ProgressText Writing Export File\r\nAccount: " + PadRight("Yard", ' ', 30);
  EXPECT_THAT(host->record.calls,
              ElementsAre("BeginProgress Writing Export File", "ProgressCancelEnabled true",
                          "ProgressFraction " + ArgumentText(static_cast<Single>(1.0 / 2 / 3)),
                          "ProgressFraction " + ArgumentText(static_cast<Single>(2.0 / 2 / 3)),
                          "ProgressFraction " + ArgumentText(static_cast<Single>(1.0 / 2 / 3 + 0.33)),
                          "ProgressFraction " + ArgumentText(static_cast<Single>(2.0 / 2 / 3 + 0.33)), text,
                          "ProgressFraction " + ArgumentText(static_cast<Single>(1.0 / 2 / 3 + 0.66)), text,
                          "ProgressFraction " + ArgumentText(static_cast<Single>(2.0 / 2 / 3 + 0.66)), "EndProgress"));
}

TEST_F(ExchangeFileTargetTest, SelectsTheAccountsForTheTableOnly) {
  host->record.Record("AccountRecord.SetSelect", true);
  EXPECT_TRUE(Run());
  EXPECT_THAT(host->record.ArgumentsOf("AccountRecord.SetSelect"), ElementsAre("101", "205"));
}

// --- Cancel ----------------------------------------------------------------------------------------------------------

// The body up to the `poll`th question whether the user has cancelled, with the end of the file. Account 1 has a figure
// on each of the three days, account 2 on the second alone.
std::string BodyCancelledAt(int poll) {
  Bytes bytes;
  for (int account = 1; account <= 2; ++account) {
    bytes.I2(account);
    if (--poll == 0) break;
    for (int day = 1; day <= 3 && poll > 0; ++day) {
      if (--poll == 0) break;
      if (account == 1 || day == 2) bytes.I2s({2, day, 2004, 1, 1}).R8(account * 10 + day);
    }
    if (poll == 0) break;
    bytes.I2s({0, 0, 0});
  }
  return bytes.All() + kBodyEnd;
}

TEST_F(ExchangeFileTargetTest, EndsAsAShorterWellFormedFileWhereverTheUserCancels) {
  const int polls_of_a_whole_run = 2 * (1 + 3);
  for (int poll = 1; poll <= polls_of_a_whole_run; ++poll) {
    host = TwentyDays();
    UseRange(1, 3);
    for (int day = 1; day <= 3; ++day) host->book.Set(101, February(day), 1, 10 + day);
    host->book.Set(205, February(2), 1, 22);
    host->book.progress.CancelAtPoll(poll);
    EXPECT_TRUE(Run()) << poll;
    EXPECT_EQ(Body(), BodyCancelledAt(poll)) << poll;
    const FileDecoder decoded(File());  // raises where the file is not well-formed
    EXPECT_EQ(decoded.blocks.size(), poll <= 4 ? 1U : 2U) << poll;
    EXPECT_TRUE(Logged().empty());
    ExpectAllClosed();
  }
}

TEST_F(ExchangeFileTargetTest, IsWholeWhereTheUserNeverCancels) {
  UseRange(1, 3);
  host->book.progress.CancelAtPoll(2 * (1 + 3) + 1);
  EXPECT_TRUE(Run());
  EXPECT_EQ(Body(), Bytes().I2s({1, 0, 0, 0, 2, 0, 0, 0}).All() + kBodyEnd);
}

// --- Failures of the file --------------------------------------------------------------------------------------------

class BigExchangeFileTest : public ExchangeFileTargetTest {
 protected:
  BigExchangeFileTest() { Fill(); }
  // Some 200 kB, so that several blocks are written.
  void Fill() {
    for (Integer field = 100; field < 600; ++field) host->book.AddField(field, "Field");
    for (int day = 1; day <= 20; ++day)
      for (Integer field = 100; field < 600; ++field)
        for (const Long account : {101, 205}) host->book.Set(account, February(day), field, day * 1000 + field);
    host->record.SetRecording(false);
  }
};

TEST_F(BigExchangeFileTest, TellsOfAnyWriteThatFailsAndKeepsWhatWasWritten) {
  EXPECT_TRUE(Run());
  const std::string whole = File();
  int failed_runs = 0;
  for (int nth = 1;; ++nth) {
    host->app.log.errors.clear();
    platform.files.ClearFaults();
    const int faults_before = platform.files.FaultsRaised();
    platform.files.FailNth(FileCall::kWrite, nth, FailureNumber::kDiskFull);
    const bool done = Run();
    ExpectAllClosed();
    if (platform.files.FaultsRaised() == faults_before) {
      EXPECT_TRUE(done);
      EXPECT_EQ(File(), whole);
      break;
    }
    ++failed_runs;
    EXPECT_FALSE(done) << nth;
    ExpectLoggedOnce("FaultyFileSystem");
    EXPECT_TRUE(whole.starts_with(File())) << nth;
  }
  EXPECT_GE(failed_runs, 3);
}

TEST_F(BigExchangeFileTest, TellsOfADiskThatStaysFull) {
  platform.files.FailNth(FileCall::kWrite, 2, FailureNumber::kDiskFull, 1000);
  EXPECT_FALSE(Run());
  ExpectLoggedOnce("FaultyFileSystem");
  ExpectAllClosed();
}

TEST_F(ExchangeFileTargetTest, TellsOfADiskThatIsFullAtTheLastFlush) {
  platform.files.FailNth(FileCall::kWrite, 1, FailureNumber::kDiskFull, 1000);
  EXPECT_FALSE(Run());
  ExpectLoggedOnce("FaultyFileSystem");
  EXPECT_THAT(Logged(), ElementsAre(::testing::Field(&MemoryLog::Error::line_number, 110)));
  ExpectAllClosed();
}

TEST_F(ExchangeFileTargetTest, TellsOfAFileThatCannotBeClosed) {
  platform.files.FailNth(FileCall::kClose, 1, FailureNumber::kDiskFull);
  EXPECT_FALSE(Run());
  ExpectLoggedOnce("FaultyFileSystem");
  ExpectAllClosed();
}

// --- Round trips -----------------------------------------------------------------------------------------------------

TEST_F(ExchangeFileTargetTest, IsAcceptedByTheReader) {
  host->book.Set(101, February(3), 7, 2.5);
  EXPECT_TRUE(Run());
  HeaderRecord record;
  Integer file_number = 0;
  ASSERT_TRUE(MyReadQDXHeader(host->book, kExported, file_number, false, record));
  EXPECT_EQ(record.SystemName, "North Shop");
  EXPECT_EQ(record.AccountCodes(2), "200");
  EXPECT_EQ(record.FieldNumbers(2), 7);
  EXPECT_EQ(static_cast<std::size_t>(FileOf(file_number).Position()), FileDecoder(File()).body_at);
  CloseFileEx(file_number);
}

// Account position, day of the book, field position.
using Model = std::map<std::tuple<int, int, int>, Double>;

TEST_F(ExchangeFileTargetTest, CarriesTheFiguresOfAnySmallBook) {
  rc::check("an exported book reads back as its figures", [this] {
    const int accounts = *rc::gen::inRange(0, 4);
    const int fields = *rc::gen::inRange(0, 4);
    const int first_day = *rc::gen::inRange(1, 21);
    const int last_day = *rc::gen::inRange(1, 21);
    host = std::make_unique<MemoryHost>(TwentyDays()->book.Shape());
    for (int i = 1; i <= accounts; ++i) host->book.AddAccount(i * 7, "A" + std::to_string(i), "account");
    for (int i = 1; i <= fields; ++i) host->book.AddField(static_cast<Integer>(i * 3), "F" + std::to_string(i));
    Model model;
    const int figures = accounts == 0 || fields == 0 ? 0 : *rc::gen::inRange(0, 12);
    for (int i = 0; i < figures; ++i) {
      const auto place = std::make_tuple(*rc::gen::inRange(1, accounts + 1), *rc::gen::inRange(1, 21),
                                         *rc::gen::inRange(1, fields + 1));
      const Double value = *rc::gen::oneOf(rc::gen::arbitrary<Double>(), rc::gen::just(0.0), rc::gen::just(-1e-300));
      host->book.Set(std::get<0>(place) * 7, February(std::get<1>(place)), static_cast<Integer>(std::get<2>(place) * 3),
                     value);
      model[place] = value;
    }
    UseRange(first_day, last_day);
    RC_ASSERT(Run());

    std::vector<BodyFigure> expected;
    for (const auto& [place, value] : model) {
      const auto& [account, day, field] = place;
      if (value != 0 && day >= first_day && day <= last_day)
        expected.push_back({account, {2, day, 2004}, field, value});
    }
    const FileDecoder decoded(File());
    RC_ASSERT(decoded.figures == expected);
    RC_ASSERT(static_cast<int>(decoded.accounts.size()) == accounts);
    RC_ASSERT(static_cast<int>(decoded.fields.size()) == fields);
    RC_ASSERT(static_cast<int>(decoded.blocks.size()) == accounts);
  });
}

}  // namespace
}  // namespace tallybook::testing
