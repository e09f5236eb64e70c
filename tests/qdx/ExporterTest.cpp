// The walk of an export, and its questions and failures, in the shape of an exchange file unless a test says otherwise.
#include <algorithm>
#include <functional>
#include <gmock/gmock.h>

#include "qdx/Exporter.h"
#include "tests/qdx/ExportFixture.h"
#include "tests/support/FailsWith.h"
#include "tests/support/TempFolder.h"

namespace tallybook::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

class ExporterTest : public ExportFixture {
 protected:
  // The dates that account 101 was read at.
  std::vector<Text> DatesRead() {
    std::vector<Text> dates;
    for (const Text& arguments : host->record.ArgumentsOf("ReadRecord"))
      if (arguments.starts_with("101 ")) dates.push_back(arguments.substr(4));
    return dates;
  }
  bool RunAndWatchReads() {
    host->record.Record("ReadRecord", true);
    return Run();
  }
  // The dates of the records in the file, as days of February.
  std::vector<int> DaysInFile() const {
    std::vector<int> days;
    for (const BodyFigure& figure : FileDecoder(File()).figures) {
      EXPECT_EQ(figure.date[0], 2);
      EXPECT_EQ(figure.date[2], 2004);
      days.push_back(figure.date[1]);
    }
    return days;
  }
};

// --- The walk over dates ---------------------------------------------------------------------------------------------

TEST_F(ExporterTest, ReadsEveryDayOfTheRangeForEveryAccount) {
  UseRange(3, 5);
  EXPECT_TRUE(RunAndWatchReads());
  EXPECT_THAT(host->record.ArgumentsOf("ReadRecord"),
              ElementsAre("101 2004-02-03", "101 2004-02-04", "101 2004-02-05", "205 2004-02-03", "205 2004-02-04",
                          "205 2004-02-05"));
  EXPECT_EQ(CurrentDate(), February(6));
}

TEST_F(ExporterTest, TakesNoFiguresOutsideTheRange) {
  for (int day = 1; day <= 20; ++day) host->book.Set(101, February(day), 1, day);
  UseRange(3, 5);
  EXPECT_TRUE(Run());
  EXPECT_THAT(DaysInFile(), ElementsAre(3, 4, 5));
}

// 2004-02-07, -14 and -21 are Saturdays.
TEST_F(ExporterTest, TakesAWeekThatEndsInTheRangeWholeAndOneThatEndsBeyondNotAtAll) {
  UseLevel(kWeekLevel);
  for (const int day : {7, 14, 20}) host->book.Set(101, February(day), 1, day);
  UseRange(4, 16);
  EXPECT_TRUE(RunAndWatchReads());
  EXPECT_THAT(DatesRead(), ElementsAre("2004-02-07", "2004-02-14"));
  EXPECT_THAT(DaysInFile(), ElementsAre(7, 14));
  EXPECT_EQ(CurrentDate(), February(15));  // where the third week began
}

TEST_F(ExporterTest, TakesNoWeekForOneDayThatIsNotItsLast) {
  UseLevel(kWeekLevel);
  host->book.Set(101, February(7), 1, 7);
  UseRange(6, 6);
  EXPECT_TRUE(RunAndWatchReads());
  EXPECT_THAT(DatesRead(), IsEmpty());
  EXPECT_THAT(DaysInFile(), IsEmpty());
  EXPECT_EQ(CurrentDate(), February(6));
}

TEST_F(ExporterTest, TakesTheWholeWeekForItsLastDayAlone) {
  UseLevel(kWeekLevel);
  host->book.Set(101, February(7), 1, 7);
  UseRange(7, 7);
  EXPECT_TRUE(Run());
  EXPECT_THAT(DaysInFile(), ElementsAre(7));
}

TEST_F(ExporterTest, TellsAPeriodByItsLastDay) {
  UseLevel(kPeriodLevel);
  host->book.Set(101, February(2), 1, 1);
  host->book.Set(101, February(12), 1, 2);
  UseRange(5, 20);
  EXPECT_TRUE(Run());
  EXPECT_THAT(DaysInFile(), ElementsAre(10, 20));
  UseRange(5, 19);
  EXPECT_TRUE(Run());
  EXPECT_THAT(DaysInFile(), ElementsAre(10));
}

TEST_F(ExporterTest, StopsAtTheLastDateOfTheBook) {
  UseRange(18, 29);  // the book ends on the 20th
  EXPECT_TRUE(RunAndWatchReads());
  EXPECT_THAT(DatesRead(), ElementsAre("2004-02-18", "2004-02-19", "2004-02-20"));
  EXPECT_EQ(CurrentDate(), February(20));
}

// The date that is walked is compared, not the one that holds its data: a week that begins on the book's last date ends
// the walk.
TEST_F(ExporterTest, ComparesTheWalkedDateWithTheLastDateOfTheBook) {
  UseLevel(kWeekLevel);
  UseRange(20, 28);
  EXPECT_TRUE(RunAndWatchReads());
  EXPECT_THAT(DatesRead(), ElementsAre("2004-02-21"));
  EXPECT_EQ(CurrentDate(), February(20));
}

TEST_F(ExporterTest, WritesEmptyBlocksWhereTheRangeIsTurnedRound) {
  host->book.Set(101, February(5), 1, 5);
  UseRange(6, 4);
  EXPECT_TRUE(RunAndWatchReads());
  EXPECT_EQ(Body(), Bytes().I2s({1, 0, 0, 0, 2, 0, 0, 0, 0, 0, 0, 0}).All());
  EXPECT_THAT(DatesRead(), IsEmpty());
  EXPECT_EQ(CurrentDate(), February(6));
}

TEST_F(ExporterTest, WalksNoDateThatIsNotAboveZero) {
  request.start_date = kNoDate;
  EXPECT_TRUE(RunAndWatchReads());
  EXPECT_THAT(DatesRead(), IsEmpty());
  EXPECT_EQ(CurrentDate(), kNoDate);
}

TEST_F(ExporterTest, LeavesTheCursorWhereTheUserCancelled) {
  UseRange(3, 9);
  host->book.progress.CancelAtPoll(1 + 3);  // before the third date
  EXPECT_TRUE(Run());
  EXPECT_EQ(CurrentDate(), February(5));
}

TEST_F(ExporterTest, ChangesNothing) {
  host->book.Set(101, February(5), 1, 5);
  const auto before = host->book.Figures();
  host->record.Record("WriteRecord", true);
  host->record.Record("SetFieldValue", true);
  EXPECT_TRUE(Run());
  EXPECT_THAT(host->record.ArgumentsOf("WriteRecord"), IsEmpty());
  EXPECT_THAT(host->record.ArgumentsOf("SetFieldValue"), IsEmpty());
  EXPECT_EQ(host->book.Figures(), before);
  EXPECT_TRUE(host->book.Journal().empty());
}

TEST_F(ExporterTest, OffersTheUserToCancel) {
  EXPECT_TRUE(Run());
  EXPECT_TRUE(host->book.progress.cancel_enabled);
  EXPECT_THAT(host->book.progress.titles, ElementsAre("Writing Export File"));
}

// --- A file of the name ----------------------------------------------------------------------------------------------

constexpr const char* kCannotDelete =
    "The output file: \r\n/out/SALES.QDX\r\nalready exists, and could not delete it.  Close the file, and try again.";

TEST_F(ExporterTest, ReplacesAFileOfTheName) {
  platform.memory.Put(kExported, std::string(1000, 'x'));
  EXPECT_TRUE(Run());
  EXPECT_EQ(Body(), Bytes().I2s({1, 0, 0, 0, 2, 0, 0, 0, 0, 0, 0, 0}).All());
}

TEST_F(ExporterTest, AsksAboutAFileThatCannotBeDeletedUntilTheUserGivesUp) {
  platform.memory.Put(kExported, "old");
  platform.files.FailPath(FileCall::kDelete, "SALES.QDX", FailureNumber::kPermissionDenied);
  platform.boxes.Answer({kRetry, kCancel});
  EXPECT_FALSE(Run());
  const ShownBox retried{kCannotDelete, kStopIcon | kRetryCancel, "Tallybook", kRetry};
  const ShownBox cancelled{kCannotDelete, kStopIcon | kRetryCancel, "Tallybook", kCancel};
  EXPECT_THAT(platform.boxes.Shown(), ElementsAre(retried, cancelled));
  EXPECT_THAT(platform.boxes.Sounds(), ElementsAre("SystemHand", "SystemHand"));
  EXPECT_EQ(File(), "old");
  EXPECT_THAT(host->record.calls, ElementsAre("EndProgress"));  // the clean-up, with nothing begun
  EXPECT_TRUE(Logged().empty());
  EXPECT_EQ(platform.files.Calls(FileCall::kOpen), 0);
}

TEST_F(ExporterTest, GoesOnOnceTheFileCanBeDeleted) {
  platform.memory.Put(kExported, std::string(1000, 'x'));
  platform.files.FailNth(FileCall::kDelete, 1, FailureNumber::kPermissionDenied);
  platform.boxes.Answer({kRetry});
  EXPECT_TRUE(Run());
  EXPECT_EQ(platform.files.Calls(FileCall::kDelete), 2);
  EXPECT_EQ(Body(), Bytes().I2s({1, 0, 0, 0, 2, 0, 0, 0, 0, 0, 0, 0}).All());
}

// Meant: where nobody may be asked the export writes over the file, and what reaches beyond the new end stays behind
// the marks that end the body.
TEST_F(ExporterTest, WritesOverAFileThatCannotBeDeletedWhereNobodyMayBeAsked) {
  platform.memory.Put(kExported, std::string(1000, 'x'));
  platform.files.FailPath(FileCall::kDelete, "SALES.QDX", FailureNumber::kPermissionDenied);
  request.may_ask = false;
  EXPECT_TRUE(Run());
  EXPECT_TRUE(platform.boxes.Shown().empty());
  const std::string written = Header().All() + Bytes().I2s({1, 0, 0, 0, 2, 0, 0, 0, 0, 0, 0, 0}).All();
  EXPECT_EQ(File(), written + std::string(1000 - written.size(), 'x'));
  EXPECT_THAT(FileDecoder(File()).blocks, ElementsAre(1, 2));
}

// --- Creating --------------------------------------------------------------------------------------------------------

constexpr const char* kCannotCreate = "Error creating export file: /out/SALES.QDX";

TEST_F(ExporterTest, AsksAboutAFileThatCannotBeCreatedAndEndsWithoutCleanUp) {
  platform.files.FailPath(FileCall::kOpen, "SALES.QDX", FailureNumber::kPathNotFound);
  platform.boxes.Answer({kRetry, kCancel});
  EXPECT_FALSE(Run());
  const ShownBox retried{kCannotCreate, kQuestionIcon | kRetryCancel, "Tallybook", kRetry};
  const ShownBox cancelled{kCannotCreate, kQuestionIcon | kRetryCancel, "Tallybook", kCancel};
  EXPECT_THAT(platform.boxes.Shown(), ElementsAre(retried, cancelled));
  EXPECT_THAT(platform.boxes.Sounds(), ElementsAre("SystemQuestion", "SystemQuestion"));
  EXPECT_THAT(host->record.calls, IsEmpty());
  EXPECT_TRUE(Logged().empty());
}

// A retry creates again; it does not delete again.
TEST_F(ExporterTest, CreatesTheFileOnRetry) {
  platform.memory.Put(kExported, "old");
  platform.files.FailNth(FileCall::kOpen, 1, FailureNumber::kPathNotFound);
  platform.boxes.Answer({kRetry});
  EXPECT_TRUE(Run());
  EXPECT_EQ(platform.files.Calls(FileCall::kDelete), 1);
  EXPECT_EQ(platform.files.Calls(FileCall::kOpen), 2);
  ExpectAllClosed();
}

TEST_F(ExporterTest, WaitsForAFileThatIsInUseBeforeItAsks) {
  platform.memory.Put(kExported, "old");
  const auto user = platform.memory.Open(kExported, Access::kRead, Sharing::kShared, Creation::kMustExist);
  request.may_ask = false;  // about the deletion; the creation asks all the same
  platform.boxes.Answer({kCancel});
  EXPECT_FALSE(Run());
  EXPECT_THAT(platform.boxes.Texts(), ElementsAre(kCannotCreate));
  EXPECT_NEAR(platform.clock.Slept(), 3, 0.5);
  EXPECT_EQ(File(), "old");
}

// A book that lets a test look around each time the user's cancel is asked for.
class WatchedBook : public MemoryMasterfile {
 public:
  using MemoryMasterfile::MemoryMasterfile;
  std::function<void()> on_poll;
  [[nodiscard]] bool ProgressCancelled() const override {
    on_poll();
    return MemoryMasterfile::ProgressCancelled();
  }
};

TEST_F(ExporterTest, LocksTheFileWhileItWrites) {
  WatchedBook book(host->app, host->record, host->book.Shape());
  book.AddAccount(101, "100");
  int looks = 0;
  book.on_poll = [&] {
    ++looks;
    const auto open = [&] {
      static_cast<void>(platform.memory.Open(kExported, Access::kRead, Sharing::kShared, Creation::kMustExist));
    };
    EXPECT_THAT(open, FailsWith(FailureNumber::kPermissionDenied));
  };
  EXPECT_TRUE(Export({.masterfile = book, .factory = host->factory, .library = library}, request));
  EXPECT_EQ(looks, 1 + 20);
  EXPECT_EQ(platform.memory.OpenHandles(), 0);
}

// --- Failures on the way ---------------------------------------------------------------------------------------------

class ExporterFaultTest : public ExporterTest {
 protected:
  void Refill() {
    host = TwentyDays();
    host->book.Set(101, February(1), 1, 12.5);
    host->book.Set(101, February(2), 7, -3);
    host->book.Set(205, February(2), 1, 8);
    UseRange(1, 2);
  }
  std::ptrdiff_t CallsBefore(const Text& operation) const {
    const auto found = std::find_if(host->record.calls.begin(), host->record.calls.end(),
                                    [&](const Text& call) { return call.starts_with(operation); });
    return found - host->record.calls.begin();
  }
};

// Every single call of the host, failed in turn. The application object itself is the first: without it there is no
// log to tell.
TEST_F(ExporterFaultTest, TellsOfEveryHostCallThatFailsAndKeepsWhatWasWritten) {
  Refill();
  ASSERT_TRUE(Run());
  const std::string whole = File();
  int failed_runs = 0;
  for (int nth = 2; nth < 1000; ++nth) {
    Refill();
    host->record.FailOn(kAnyOperation, nth, Failure(FailureNumber::kDeviceError, "asked to fail", "Engine"));
    const bool done = Run();
    EXPECT_EQ(platform.memory.OpenHandles(), 0) << nth;
    if (!host->record.AllFaultsStruck()) {
      EXPECT_TRUE(done);
      break;
    }
    if (done) {  // an end of progress that fails does not undo a file that stands
      EXPECT_EQ(File(), whole) << nth;
      EXPECT_EQ(host->record.calls.back(), "EndProgress") << nth;
      continue;
    }
    EXPECT_FALSE(host->book.progress.open) << nth;
    ++failed_runs;
    EXPECT_FALSE(done) << nth;
    ExpectLoggedOnce("Engine");
    EXPECT_THAT(Logged(), ElementsAre(::testing::Field(&MemoryLog::Error::line_number, ::testing::Gt(0)))) << nth;
    EXPECT_TRUE(whole.starts_with(File())) << nth;
    EXPECT_LT(CallsBefore("Log.LogError"), CallsBefore("EndProgress")) << nth;
    EXPECT_EQ(host->record.ArgumentsOf("EndProgress").size(), 1U) << nth;
  }
  EXPECT_GT(failed_runs, 50);
}

TEST_F(ExporterFaultTest, TellsOfEveryHostCallThatFailsInATable) {
  Refill();
  UseTable("CSV");
  ASSERT_TRUE(Run());
  const std::vector<std::vector<Text>> whole = Table().rows;
  int failed_runs = 0;
  for (int nth = 2; nth < 1000; ++nth) {
    Refill();
    library.reset();
    UseTable("CSV");
    platform.boxes.ForgetShown();
    platform.boxes.Answer({kCancel});
    host->record.FailOn(kAnyOperation, nth, Failure(FailureNumber::kDeviceError, "asked to fail", "Engine"));
    const bool done = Run();
    if (!host->record.AllFaultsStruck()) {
      EXPECT_TRUE(done);
      break;
    }
    if (done) {  // an end of progress that fails does not undo a table that stands
      EXPECT_EQ(Table().rows, whole) << nth;
      continue;
    }
    EXPECT_FALSE(host->book.progress.open) << nth;
    ++failed_runs;
    ExpectLoggedOnce("Engine");
    // A table that cannot be created is asked about as well.
    const bool creating = Logged().front().line_number == 40;
    EXPECT_EQ(platform.boxes.Shown().size(), creating ? 1U : 0U) << nth;
  }
  EXPECT_GT(failed_runs, 50);
}

TEST_F(ExporterTest, StopsTheProgramWithoutCleanUpWhereARecordCannotBeRead) {
  const TempFolder folder;
  ScriptedPlatform machine;
  request.file_name = folder.Path("SALES.QDX");
  host->record.GiveFalseOn("ReadRecord", 3);
  EXPECT_EXIT(static_cast<void>(Run()), ::testing::ExitedWithCode(EXIT_FAILURE), "");
  // Created by the process that stopped, and never flushed.
  EXPECT_TRUE(folder.Has("SALES.QDX"));
  EXPECT_EQ(folder.Read("SALES.QDX"), "");
}

TEST_F(ExporterTest, TellsOfADatabaseThatCannotGiveItsApplication) {
  for (int call = 1; call <= 9; ++call) {
    host->record.FailOn("App", call, Failure(FailureNumber::kDeviceError, "no application", "Engine"));
  }
  EXPECT_FALSE(Run());
  EXPECT_EQ(platform.boxes.Shown(),
            (std::vector<ShownBox>{{"no application", kExclamationIcon | kOkOnly, ScriptedPlatform::kTitle, kOk}}));
  EXPECT_FALSE(platform.memory.Has(kExported));
  ExpectAllClosed();
}

}  // namespace
}  // namespace tallybook::testing
