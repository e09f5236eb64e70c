#include <algorithm>
#include <cmath>
#include <gmock/gmock.h>
#include <limits>
#include <rapidcheck.h>
#include <rapidcheck/gtest.h>
#include <string>
#include <utility>
#include <vector>

#include "import/CSVImport.h"
#include "tests/import/TextImportSetup.h"

namespace tallybook::testing {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Pair;
using ::testing::SizeIs;
using ::testing::UnorderedElementsAre;

const Text kPath = "/in/figures.csv";

// The positions that the "Error:" box names.
constexpr int kAtAuditRecord = 100;
constexpr int kAtAuditAccount = 103;
constexpr int kAtAuditDate = 104;
constexpr int kAtEndAudit = 110;
constexpr int kAtClear = 150;
constexpr int kAtApplyAccount = 163;
constexpr int kAtReadRecord = 165;
constexpr int kAtApplyValue = 166;

class CSVImportTest : public TextImportFixture {
 protected:
  using TextImportFixture::TextImportFixture;

  bool Import(const std::string& bytes) {
    setup_.platform.memory.Put(kPath, bytes);
    return ImportCSV(setup_.book(), request_, setup_.tally);
  }
  [[nodiscard]] const std::vector<ShownBox>& Boxes() const { return setup_.Boxes(); }
  // Nothing but the box was shown, nothing was changed, and nothing stands open.
  void ExpectRefused(const std::string& bytes, const Text& text) {
    setup_.platform.boxes.ForgetShown();
    EXPECT_FALSE(Import(bytes)) << bytes;
    EXPECT_THAT(Boxes(), ElementsAre(Refusal(text))) << bytes;
    EXPECT_THAT(setup_.Changed(), IsEmpty());
    EXPECT_THAT(setup_.Calls({"BeginProgress", "BeginRollback"}), IsEmpty()) << "not even the audit began";
    EXPECT_TRUE(setup_.LeftNothingOpen());
  }
  // The questions of an audit that were let pass or not: the run ends with false and nothing is changed.
  void ExpectAuditFails(const std::string& bytes, std::initializer_list<ShownBox> questions) {
    setup_.platform.boxes.ForgetShown();
    for (const ShownBox& question : questions) Answer({question.answer});
    EXPECT_FALSE(Import(bytes)) << bytes;
    EXPECT_THAT(Boxes(), ::testing::ElementsAreArray(questions)) << bytes;
    EXPECT_THAT(setup_.Changed(), IsEmpty());
    EXPECT_THAT(setup_.Calls({"BeginRollback"}), IsEmpty());
    EXPECT_TRUE(setup_.LeftNothingOpen());
  }

  CSVImportRequest request_{.file_name = kPath, .no_prompts = true};
};

class PeriodCSVImportTest : public CSVImportTest {
 protected:
  PeriodCSVImportTest() : CSVImportTest(ShapeOfLevel(kPeriodLevel)) {}
};
class WeekCSVImportTest : public CSVImportTest {
 protected:
  WeekCSVImportTest() : CSVImportTest(ShapeOfLevel(kWeekLevel)) {}
};

// --- What a file may look like ---------------------------------------------------------------------------------------

TEST_F(CSVImportTest, AddsFiguresOfAccountsByCode) {
  setup_.book().Set(101, kThird, 1, 100);
  EXPECT_TRUE(Import("2,3,2004,1,1\r\n100,1,12.5\r\n200,2,3\r\n"));
  EXPECT_EQ(Figure(101, kThird, 1), 112.5);
  EXPECT_EQ(Figure(102, kThird, 2), 3);
  EXPECT_THAT(Boxes(), IsEmpty());
  EXPECT_TRUE(setup_.LeftNothingOpen());
}

TEST_F(CSVImportTest, TakesAccountsByNumber) {
  EXPECT_TRUE(Import("2,3,2004,1,0\r\n101,1,12.5\r\n205,2,3\r\n"));
  EXPECT_EQ(Figure(101, kThird, 1), 12.5);
  EXPECT_EQ(Figure(205, kThird, 2), 3);
}

TEST_F(CSVImportTest, AnyByCodeOtherThanZeroMeansByCode) {
  EXPECT_TRUE(Import("2,3,2004,1,-1\n100,1,5\n"));
  EXPECT_TRUE(Import("2,3,2004,1,7\n100,1,5\n"));
  EXPECT_EQ(Figure(101, kThird, 1), 10);
}

TEST_F(CSVImportTest, SubtractsAndReplaces) {
  setup_.book().Set(101, kThird, 1, 100);
  setup_.book().Set(102, kThird, 1, 100);
  EXPECT_TRUE(Import("2,3,2004,2,1\n100,1,12.5\n"));
  EXPECT_TRUE(Import("2,3,2004,3,1\n200,1,12.5\n"));
  EXPECT_EQ(Figure(101, kThird, 1), 87.5);
  EXPECT_EQ(Figure(102, kThird, 1), 12.5);
}

TEST_F(CSVImportTest, ARecordMayBeSpreadOverLinesAndManyMayStandOnOne) {
  EXPECT_TRUE(Import("2\n3\n2004\n1,1\n100\n1\n5,200,1,6,300\r1\r7"));
  EXPECT_EQ(Figure(101, kThird, 1), 5);
  EXPECT_EQ(Figure(102, kThird, 1), 6);
  EXPECT_EQ(Figure(205, kThird, 1), 7);
}

TEST_F(CSVImportTest, EveryKindOfLineEndReadsAlikeWithAndWithoutALastOne) {
  for (const std::string end : {"\r", "\n", "\r\n"}) {
    for (const std::string& last : {std::string(), end}) {
      EXPECT_TRUE(Import("2,3,2004,3,1" + end + "100,1,5" + end + "200,2,6" + last));
      EXPECT_EQ(Figure(101, kThird, 1), 5);
      EXPECT_EQ(Figure(102, kThird, 2), 6);
      EXPECT_TRUE(Import("2,3,2004,3,1" + end + "100,1,0" + end + "200,2,0" + last));
      EXPECT_THAT(setup_.Changed(), IsEmpty());
    }
  }
}

TEST_F(CSVImportTest, CodesAreTrimmedAndCompareWithoutRegardToCase) {
  setup_.book().AddAccount(301, "NORTH YARD");
  EXPECT_TRUE(Import("2,3,2004,1,1\n  north yard ,1,5\n\" 100 \",1,6\n"));
  EXPECT_EQ(Figure(301, kThird, 1), 5);
  EXPECT_EQ(Figure(101, kThird, 1), 6);
}

// The codes of the database keep their own case: one with small letters is never met.
TEST_F(CSVImportTest, ACodeThatTheDatabaseKeepsInSmallLettersIsNotFound) {
  setup_.book().AddAccount(301, "yard");
  ExpectAuditFails("2,3,2004,1,1\nyard,1,5\n",
                   {AuditQuestion("Invalid Account Code YARD      \r\nIn record number: 1", kYes),
                    AuditQuestion("Invalid Account Number 0\r\nIn record number: 1", kYes)});
}

TEST_F(CSVImportTest, OfSeveralAccountsWithOneCodeTheFirstIsTaken) {
  setup_.book().AddAccount(301, "100");
  EXPECT_TRUE(Import("2,3,2004,1,1\n100,1,5\n"));
  EXPECT_EQ(Figure(101, kThird, 1), 5);
  EXPECT_EQ(Figure(301, kThird, 1), 0);
}

TEST_F(CSVImportTest, NumbersMayBeQuotedAndCarryText) {
  EXPECT_TRUE(Import("\"2\",3rd,\"2004\",1,1\n\"100\",\"1\",\"12.5 EUR\"\n"));
  EXPECT_EQ(Figure(101, kThird, 1), 12.5);
}

TEST_F(CSVImportTest, AnEmptyValueIsZero) {
  setup_.book().Set(101, kThird, 1, 9);
  EXPECT_TRUE(Import("2,3,2004,3,1\n100,1,\n"));
  EXPECT_EQ(Figure(101, kThird, 1), 0);
}

TEST_F(CSVImportTest, YearsOfTwoDigitsAreCompleted) {
  EXPECT_TRUE(Import("2,3,4,1,1\n100,1,5\n,,\n2,4,04\n100,1,6\n"));
  EXPECT_EQ(Figure(101, kThird, 1), 5);
  EXPECT_EQ(Figure(101, kFourth, 1), 6);
}

TEST_F(CSVImportTest, ReadsUtf8WithAndWithoutAMarkAndTheCodePage) {
  setup_.book().AddAccount(301, "M\xC3\x9CLLER");
  const std::string utf8 = "2,3,2004,1,1\nm\xC3\xBCller,1,5\n";
  EXPECT_TRUE(Import(utf8));
  EXPECT_TRUE(Import("\xEF\xBB\xBF" + utf8));
  EXPECT_TRUE(Import("2,3,2004,1,1\nm\xFCller,1,5\n"));
  EXPECT_EQ(Figure(301, kThird, 1), 15);
}

TEST_F(CSVImportTest, TheApplicationMayFixTheEncoding) {
  setup_.book().AddAccount(301, "\xC3\x83\xC2\xBC");  // what the bytes of a UTF-8 letter are in the code page
  setup_.book().AddAccount(302, "\xC3\x9C");
  ThePlatform().text_encoding = TextEncoding::kCodePage;
  EXPECT_TRUE(Import("2,3,2004,1,1\n\xC3\xBC,1,5\n"));
  ThePlatform().text_encoding = TextEncoding::kUtf8;
  EXPECT_TRUE(Import("2,3,2004,1,1\n\xC3\xBC,1,7\n"));
  EXPECT_EQ(Figure(301, kThird, 1), 5);
  EXPECT_EQ(Figure(302, kThird, 1), 7);
}

TEST_F(CSVImportTest, ARecordCutShortAtTheEndIsDroppedWithoutAWord) {
  for (const char* rest : {"200", "200,", "200,1", "200,1,", "999", "nobody,99,"}) {
    SCOPED_TRACE(rest);
    EXPECT_TRUE(Import(std::string("2,3,2004,3,1\n100,1,5\n") + rest));
    EXPECT_THAT(Boxes(), IsEmpty());
    EXPECT_EQ(Figure(102, kThird, 1), 0);
  }
}

// --- Opening ---------------------------------------------------------------------------------------------------------

TEST_F(CSVImportTest, AFileThatCannotBeOpenedIsAskedAboutUntilTheUserGivesUp) {
  setup_.platform.files.FailNth(FileCall::kOpen, 1, FailureNumber::kDeviceError, 3);
  Answer({kRetry, kRetry, kCancel});
  EXPECT_FALSE(Import("2,3,2004,1,1\n100,1,5\n"));
  const Text question = "Error opening import file: /in/figures.csv";
  EXPECT_THAT(Boxes(), ElementsAre(ShownBox{question, kRetryBox, kCaption, kRetry},
                                   ShownBox{question, kRetryBox, kCaption, kRetry},
                                   ShownBox{question, kRetryBox, kCaption, kCancel}));
  EXPECT_THAT(setup_.Changed(), IsEmpty());
}

TEST_F(CSVImportTest, RetryOpensTheFileAgain) {
  setup_.platform.files.FailNth(FileCall::kOpen, 1, FailureNumber::kDeviceError);
  Answer({kRetry});
  EXPECT_TRUE(Import("2,3,2004,1,1\n100,1,5\n"));
  EXPECT_EQ(Figure(101, kThird, 1), 5);
}

TEST_F(CSVImportTest, AMissingFileIsAnOpeningErrorToo) {
  Answer({kCancel});
  EXPECT_FALSE(ImportCSV(setup_.book(), request_, setup_.tally));
  EXPECT_THAT(Boxes(),
              ElementsAre(ShownBox{"Error opening import file: /in/figures.csv", kRetryBox, kCaption, kCancel}));
}

// While the file is open others may read it and not write it.
TEST_F(CSVImportTest, AFileThatAnotherProgramWritesCannotBeOpened) {
  setup_.platform.memory.Put(kPath, "2,3,2004,1,1\n100,1,5\n");
  const auto writer = setup_.platform.memory.Open(kPath, Access::kReadWrite, Sharing::kShared, Creation::kMustExist);
  Answer({kCancel});
  EXPECT_FALSE(ImportCSV(setup_.book(), request_, setup_.tally));
  EXPECT_THAT(setup_.platform.boxes.Texts(), ElementsAre("Error opening import file: /in/figures.csv"));
  EXPECT_NEAR(setup_.platform.clock.Slept(), 3, 0.01) << "after three more attempts";
}

TEST_F(CSVImportTest, AFileThatAnotherProgramReadsIsImported) {
  setup_.platform.memory.Put(kPath, "2,3,2004,1,1\n100,1,5\n");
  const auto reader = setup_.platform.memory.Open(kPath, Access::kRead, Sharing::kLockWrite, Creation::kMustExist);
  EXPECT_TRUE(ImportCSV(setup_.book(), request_, setup_.tally));
}

// --- The header ------------------------------------------------------------------------------------------------------

TEST_F(CSVImportTest, AHeaderThatCannotBeReadIsRefused) {
  const Text text = "Import file: /in/figures.csv does not contain a valid header";
  for (const char* bytes : {"", "2", "2,3", "2,3,2004", "2,3,2004,1", "2,3,2004,1,", "40000,3,2004,1,1\n",
                            "2,40000,2004,1,1\n", "2,3,40000,1,1\n", "2,3,2004,40000,1\n", "2,3,2004,1,40000\n"}) {
    ExpectRefused(bytes, text);
  }
}

TEST_F(CSVImportTest, TheFileIsClosedBeforeItsHeaderIsRefused) {
  std::vector<std::size_t> boxes_at_run;
  setup_.platform.input.SetPending(2);
  setup_.platform.input.OnRun([&] { boxes_at_run.push_back(Boxes().size()); });
  EXPECT_FALSE(Import("2,3"));
  EXPECT_THAT(boxes_at_run, ElementsAre(0U, 0U)) << "pending input is handled when the file is opened and closed";
  EXPECT_THAT(Boxes(), SizeIs(1));
}

TEST_F(CSVImportTest, AFileThatCannotBeReadHasNoValidHeader) {
  setup_.platform.files.FailNth(FileCall::kRead, 1, FailureNumber::kDeviceError);
  ExpectRefused("2,3,2004,1,1\n100,1,5\n", "Import file: /in/figures.csv does not contain a valid header");
}

TEST_F(CSVImportTest, AHeaderOfBareTextReadsAsZerosAndHasNoValidDate) {
  ExpectRefused("month,day,year,math,code\n", "Invalid date: 2000-0-0 in import file");
}

TEST_F(CSVImportTest, APeriodFileIsRefusedByABookOfDays) {
  ExpectRefused("-1,5,2004,1,1\n100,1,5\n",
                "The information in the import file is for a period.  It cannot be imported into this database.");
}

TEST_F(WeekCSVImportTest, APeriodFileIsRefusedByABookOfWeeks) {
  ExpectRefused("-1,5,2004,1,1\n100,1,5\n",
                "The information in the import file is for a period.  It cannot be imported into this database.");
}

TEST_F(PeriodCSVImportTest, APeriodBelowOneOrAboveTheLastIsRefused) {
  for (const char* period : {"13", "0", "-1", "32767"}) {
    ExpectRefused("-1," + std::string(period) + ",2004,1,1\n100,1,5\n", "Invalid period number in import file");
  }
}

TEST_F(PeriodCSVImportTest, APeriodFileGoesToTheEndOfItsPeriod) {
  EXPECT_TRUE(Import("-1,12,2004,1,1\n100,1,5\n"));
  EXPECT_EQ(Figure(101, DateFromParts(2004, 12, 31), 1), 5);
  EXPECT_TRUE(Import("-1,1,2004,1,1\n100,1,6\n"));
  EXPECT_EQ(Figure(101, DateFromParts(2004, 1, 31), 1), 6);
}

TEST_F(CSVImportTest, ADateThatTheBookDoesNotHoldIsRefusedWithPlainNumbers) {
  ExpectRefused("2,3,2010,1,1\n100,1,5\n", "Invalid date: 2010-2-3 in import file");
  ExpectRefused("2,3,2,1,1\n100,1,5\n", "Invalid date: 2002-2-3 in import file");
  ExpectRefused("12,31,2002,1,1\n", "Invalid date: 2002-12-31 in import file");
  EXPECT_TRUE(Import("12,31,2005,1,1\n"));
}

TEST_F(PeriodCSVImportTest, TheDateOfAPeriodFileIsToldWithItsFirstDay) {
  ExpectRefused("-1,5,2010,1,1\n100,1,5\n", "Invalid date: 2010-5-1 in import file");
}

TEST_F(WeekCSVImportTest, LeavesTheCalendarAtTheEndOfTheHeadersWeek) {
  Record().Record("Calendar.SetCurrentDate", true);
  EXPECT_TRUE(Import("2,3,2004,1,1\n"));
  EXPECT_THAT(setup_.Calls({"Calendar.SetCurrentDate"}),
              ElementsAre("Calendar.SetCurrentDate 2004-02-03", "Calendar.SetCurrentDate 2004-02-07"));
  EXPECT_EQ(setup_.book().FiscalCalendar().CurrentDate(), DateFromParts(2004, 2, 7));
}

TEST_F(CSVImportTest, AMathOtherThanOneToThreeIsRefusedBeforeAnyAudit) {
  for (const char* math : {"0", "4", "-1", "", "add"}) {
    ExpectRefused("2,3,2004," + std::string(math) + ",1\nnobody,99,5\n",
                  "Add, subtract or replace not indicated in import file. ");
  }
}

TEST_F(CSVImportTest, AMathGivenByTheCallerOverridesTheFiles) {
  request_.math = eMath::mSubtract;
  for (const char* math : {"1", "3", "0", "-5", "anything"}) {
    EXPECT_TRUE(Import("2,3,2004," + std::string(math) + ",1\n100,1,5\n")) << math;
  }
  EXPECT_EQ(Figure(101, kThird, 1), -25);
}

TEST_F(CSVImportTest, AMathThatIsOverriddenMustStillBeReadable) {
  request_.math = eMath::mSubtract;
  ExpectRefused("2,3,2004,40000,1\n100,1,5\n", "Import file: /in/figures.csv does not contain a valid header");
}

TEST_F(CSVImportTest, AMathOfTheCallerThatIsNoneIsRefusedWhateverTheFileSays) {
  request_.math = static_cast<eMath>(4);
  ExpectRefused("2,3,2004,1,1\n100,1,5\n", "Add, subtract or replace not indicated in import file. ");
}

// --- The confirmation ------------------------------------------------------------------------------------------------

TEST_F(CSVImportTest, AsksWhetherToGoOnWithTheWordOfItsMathAndTheLongDate) {
  request_.no_prompts = false;
  for (const auto& [math, word] : {std::pair("1", "Add"), std::pair("2", "Subtract"), std::pair("3", "Replace")}) {
    setup_.platform.boxes.ForgetShown();
    Answer({kOk});
    EXPECT_TRUE(Import("2,3,2004," + std::string(math) + ",1\n"));
    EXPECT_THAT(Boxes(), ElementsAre(ShownBox{"OK to " + Text(word) +
                                                  " data from the import file to the database, starting at "
                                                  "Tuesday, February 3, 2004",
                                              kConfirmBox, kCaption, kOk}));
  }
}

TEST_F(CSVImportTest, CancelLeavesTheDatabaseAsItWas) {
  request_.no_prompts = false;
  Answer({kCancel});
  EXPECT_FALSE(Import("2,3,2004,1,1\n100,1,5\n"));
  EXPECT_THAT(Boxes(), SizeIs(1));
  EXPECT_THAT(setup_.Changed(), IsEmpty());
  EXPECT_TRUE(setup_.LeftNothingOpen());
}

TEST_F(WeekCSVImportTest, TheConfirmationTellsTheDateThatHoldsTheData) {
  request_.no_prompts = false;
  Answer({kCancel});
  EXPECT_FALSE(Import("2,3,2004,2,1\n100,1,5\n"));
  EXPECT_THAT(
      setup_.platform.boxes.Texts(),
      ElementsAre("OK to Subtract data from the import file to the database, starting at Saturday, February 7, 2004"));
}

TEST_F(CSVImportTest, NoPromptsDoesNotSilenceTheAudit) {
  ExpectAuditFails("2,3,2004,1,0\n999,1,5\n",
                   {AuditQuestion("Invalid Account Number 999\r\nIn record number: 1", kYes)});
}

// --- The audit -------------------------------------------------------------------------------------------------------

TEST_F(CSVImportTest, AuditsTheWholeFileBeforeItWritesAnything) {
  RecordAll();
  EXPECT_TRUE(Import("2,3,2004,1,1\n100,1,5\n"));
  const auto& calls = Record().calls;
  const auto audited = std::find(calls.begin(), calls.end(), "EndProgress");
  ASSERT_NE(audited, calls.end());
  EXPECT_EQ(std::find_if(calls.begin(), audited,
                         [](const Text& call) { return call.starts_with("ReadRecord") || call == "WriteRecord"; }),
            audited);
}

TEST_F(CSVImportTest, ShowsItsProgressStepByStep) {
  //                      13 bytes        9 bytes      8 bytes: half of 22/30, half of 30/30
  EXPECT_TRUE(Import("2,3,2004,1,1\n100,1,55\n200,1,5\n"));
  EXPECT_THAT(
      setup_.Calls({"BeginProgress", "ProgressFraction", "EndProgress", "BeginRollback", "EndRollback"}),
      ElementsAre("BeginProgress Auditing Import File", "BeginProgress Reading Account Codes",
                  "ProgressFraction 0.33333334", "ProgressFraction 0.6666667", "ProgressFraction 1",
                  "BeginProgress Reading DataField Info", "ProgressFraction 0.33333334", "ProgressFraction 0.6666667",
                  "ProgressFraction 1", "ProgressFraction 0.36666667", "ProgressFraction 0.5", "EndProgress",
                  "BeginRollback 2004-02-03 1899-12-30", "BeginProgress Reading Import File",
                  "ProgressFraction 0.8666667", "ProgressFraction 1", "EndRollback", "EndProgress"));
}

TEST_F(CSVImportTest, ABadCodeBringsTwoQuestionsAndItsDatafieldIsAuditedAllTheSame) {
  ExpectAuditFails("2,3,2004,1,1\n100,1,5\nnobody,99,5\n",
                   {AuditQuestion("Invalid Account Code NOBODY    \r\nIn record number: 2", kYes),
                    AuditQuestion("Invalid Account Number 0\r\nIn record number: 2", kYes),
                    AuditQuestion("Invalid Datafield number 99\r\nIn record number 2", kYes)});
}

// 32,767 errors fit the count. One bad code counts for two of them.
TEST_F(CSVImportTest, ABadCodeIsCountedTwice) {
  std::string bytes = "2,3,2004,1,1\n";
  constexpr int kPairs = 16'383;
  for (int i = 0; i < kPairs; ++i) {
    bytes += "x,1,5\n";
    Answer({kYes, kYes});
  }
  Answer({kYes, kYes});
  EXPECT_FALSE(Import(bytes + "100,99,5\n100,99,5\n"));
  EXPECT_EQ(Boxes().size(), 2U * kPairs + 3) << "both questions of each bad code, those of the last records, the end";
  EXPECT_EQ(Boxes().back(), ErrorBox(6, 106)) << "the error above 32,767";
}

TEST_F(CSVImportTest, TheSameBadCodeIsAskedAboutInEveryRecord) {
  ExpectAuditFails("2,3,2004,1,1\nx,1,5\nx,1,5\n",
                   {AuditQuestion("Invalid Account Code X         \r\nIn record number: 1", kYes),
                    AuditQuestion("Invalid Account Number 0\r\nIn record number: 1", kYes),
                    AuditQuestion("Invalid Account Code X         \r\nIn record number: 2", kYes),
                    AuditQuestion("Invalid Account Number 0\r\nIn record number: 2", kYes)});
}

TEST_F(CSVImportTest, NoEndsTheAuditAtOnce) {
  const std::string bytes = "2,3,2004,1,1\nnobody,99,5\nnobody,99,5\n";
  const ShownBox code = AuditQuestion("Invalid Account Code NOBODY    \r\nIn record number: 1", kYes);
  const ShownBox number = AuditQuestion("Invalid Account Number 0\r\nIn record number: 1", kYes);
  const ShownBox field = AuditQuestion("Invalid Datafield number 99\r\nIn record number 1", kYes);
  const auto refused = [](ShownBox box) {
    box.answer = kNo;
    return box;
  };
  ExpectAuditFails(bytes, {refused(code)});
  ExpectAuditFails(bytes, {code, refused(number)});
  ExpectAuditFails(bytes, {code, number, refused(field)});
}

TEST_F(CSVImportTest, ACodeIsShownAsItIsCompared) {
  ExpectAuditFails("2,3,2004,1,1\n  much too long a code,1,5\n",
                   {AuditQuestion("Invalid Account Code MUCH TOO L\r\nIn record number: 1", kYes),
                    AuditQuestion("Invalid Account Number 0\r\nIn record number: 1", kNo)});
}

TEST_F(CSVImportTest, AnUnknownOrTooLargeAccountNumberIsAskedAboutOnce) {
  ExpectAuditFails("2,3,2004,1,0\n103,1,5\n10000,1,5\n2147483647,2,5\n",
                   {AuditQuestion("Invalid Account Number 103\r\nIn record number: 1", kYes),
                    AuditQuestion("Invalid Account Number 10000\r\nIn record number: 2", kYes),
                    AuditQuestion("Invalid Account Number 2147483647\r\nIn record number: 3", kYes)});
}

TEST_F(CSVImportTest, ADatafieldThatTheBookHasNotIsAskedAbout) {
  ExpectAuditFails("2,3,2004,1,1\n100,3,5\n100,0,5\n100,-1,5\n100,1000,5\n100,,5\n",
                   {AuditQuestion("Invalid Datafield number 3\r\nIn record number 1", kYes),
                    AuditQuestion("Invalid Datafield number 0\r\nIn record number 2", kYes),
                    AuditQuestion("Invalid Datafield number -1\r\nIn record number 3", kYes),
                    AuditQuestion("Invalid Datafield number 1000\r\nIn record number 4", kYes),
                    AuditQuestion("Invalid Datafield number 0\r\nIn record number 5", kNo)});
}

TEST_F(CSVImportTest, SystemMaintainedDatafieldsAreImportedLikeAnyOther) {
  EXPECT_TRUE(Import("2,3,2004,1,1\n100,7,5\n"));
  EXPECT_EQ(Figure(101, kThird, 7), 5);
}

TEST_F(CSVImportTest, AccountNumbersAreRoundedAndReadAsFarAsTheyAreNumbers) {
  EXPECT_TRUE(Import("2,3,2004,1,0\n101.4,1,5\n101 shop,1.5,6\n"));
  EXPECT_EQ(Figure(101, kThird, 1), 5);
  EXPECT_EQ(Figure(101, kThird, 2), 6);
}

// The first change of date counts as the records 2 and 3.
TEST_F(CSVImportTest, ABadDateIsAskedAboutAndDoesNotCount) {
  Answer({kYes});
  EXPECT_TRUE(Import("2,3,2004,1,1\n100,1,5\n,,\n2,3,2010\n"));
  EXPECT_THAT(Boxes(),
              ElementsAre(AuditQuestion("Invalid date: 2010-2-3 in import file\r\nIn record number: 3", kYes)));
  EXPECT_EQ(Figure(101, kThird, 1), 5);
}

TEST_F(CSVImportTest, InAFileByNumberTheTextBehindABadDateHasTwoBlanks) {
  Answer({kYes});
  EXPECT_TRUE(Import("2,3,2004,1,0\n101,1,5\n0,,\n2,3,2010\n"));
  EXPECT_THAT(Boxes(),
              ElementsAre(AuditQuestion("Invalid date: 2010-2-3  in import file\r\nIn record number: 3", kYes)));
}

TEST_F(CSVImportTest, NoAtABadDateEndsTheAudit) {
  ExpectAuditFails("2,3,2004,1,1\n,,\n2,3,2010\n100,1,5\n",
                   {AuditQuestion("Invalid date: 2010-2-3 in import file\r\nIn record number: 2", kNo)});
}

// A date that was let pass meets a database that has no record for it.
TEST_F(CSVImportTest, ABadDateThatWasLetPassEndsTheRunAtItsFirstRecord) {
  Answer({kYes});
  EXPECT_FALSE(Import("2,3,2004,1,1\n100,1,5\n,,\n2,3,2010\n100,1,6\n"));
  EXPECT_EQ(Boxes().back(), ErrorBox(0, kAtReadRecord));
  EXPECT_EQ(Figure(101, kThird, 1), 5) << "what was written stays";
}

TEST_F(CSVImportTest, DatafieldAndValueOfADateChangeAreReadAndIgnored) {
  EXPECT_TRUE(Import("2,3,2004,1,1\n,99,abc\n2,4,2004\n100,1,6\n"));
  EXPECT_THAT(Boxes(), IsEmpty());
  EXPECT_EQ(Figure(101, kFourth, 1), 6);
}

TEST_F(CSVImportTest, InAFileByNumberEveryAccountBelowOneChangesTheDate) {
  EXPECT_TRUE(
      Import("2,3,2004,1,0\n101,1,5\n0,0,0\n2,4,2004\n101,1,6\n,,\n2,5,2004\n101,1,7\n-2,0,0\n2,6,2004\n101,1,8\n"));
  EXPECT_EQ(Figure(101, kThird, 1), 5);
  EXPECT_EQ(Figure(101, kFourth, 1), 6);
  EXPECT_EQ(Figure(101, kThird + 2, 1), 7);
  EXPECT_EQ(Figure(101, kThird + 3, 1), 8);
}

TEST_F(CSVImportTest, InAFileByCodeMinusOneIsACodeLikeAnyOther) {
  ExpectAuditFails("2,3,2004,1,1\n-1,1,5\n",
                   {AuditQuestion("Invalid Account Code -1        \r\nIn record number: 1", kYes),
                    AuditQuestion("Invalid Account Number 0\r\nIn record number: 1", kNo)});
}

TEST_F(CSVImportTest, ADateChangeAtTheVeryEndIsNoError) {
  EXPECT_TRUE(Import("2,3,2004,1,1\n100,1,5\n,,\n"));
  EXPECT_THAT(Boxes(), IsEmpty());
}

TEST_F(CSVImportTest, ADateChangeThatIsCutShortIsARunTimeFailure) {
  for (const char* rest : {"2", "2,4", "2\n4\n"}) {
    setup_.platform.boxes.ForgetShown();
    EXPECT_FALSE(Import(std::string("2,3,2004,1,1\n100,1,5\n,,\n") + rest));
    EXPECT_THAT(Boxes(), ElementsAre(ErrorBox(62, kAtAuditDate))) << rest;
    EXPECT_THAT(setup_.Changed(), IsEmpty());
    EXPECT_TRUE(setup_.LeftNothingOpen());
  }
}

TEST_F(CSVImportTest, NumbersTooLargeForTheirFieldAreRunTimeFailures) {
  const auto expect_error = [&](const std::string& records, const char* by_code, const ShownBox& box) {
    setup_.platform.boxes.ForgetShown();
    EXPECT_FALSE(Import("2,3,2004,1," + std::string(by_code) + "\n" + records)) << records;
    EXPECT_THAT(Boxes(), ElementsAre(box)) << records;
    EXPECT_THAT(setup_.Changed(), IsEmpty());
    EXPECT_TRUE(setup_.LeftNothingOpen());
  };
  expect_error("100,3000000000,5\n", "1", ErrorBox(6, kAtAuditRecord));
  expect_error("3000000000,1,5\n", "0", ErrorBox(6, kAtAuditAccount));
  expect_error(",,\n40000,4,2004\n", "1", ErrorBox(6, kAtAuditDate));
  expect_error(",,\n2,40000,2004\n", "1", ErrorBox(6, kAtAuditDate));
  expect_error(",,\n2,4,40000\n", "1", ErrorBox(6, kAtAuditDate));
}

TEST_F(CSVImportTest, AValueBeyondANumberIsSeenByTheAudit) {
  for (const char* const record : {"100,1,1e999\n", "100,1,-1e999\n", ",,1e999\n"}) {
    setup_.platform.boxes.ForgetShown();
    EXPECT_FALSE(Import("2,3,2004,3,1\n100,2,5\n" + std::string(record))) << record;
    EXPECT_THAT(Boxes(), ElementsAre(ErrorBox(6, kAtAuditRecord))) << record;
    EXPECT_THAT(setup_.Changed(), IsEmpty());
    EXPECT_TRUE(setup_.LeftNothingOpen());
  }
}

TEST_F(CSVImportTest, ASumBeyondANumberEndsTheRunAndIsNotStored) {
  setup_.book().Set(101, kThird, 1, 1e308);
  EXPECT_FALSE(Import("2,3,2004,1,1\n100,1,1e308\n"));
  EXPECT_THAT(Boxes(), ElementsAre(ErrorBox(6, kAtApplyValue)));
  EXPECT_EQ(Figure(101, kThird, 1), 1e308);
}

TEST_F(CSVImportTest, TellsOfADatabaseThatCannotGiveItsApplication) {
  for (int call = 1; call <= 9; ++call) setup_.host->record.FailOn("App", call, Fault());
  EXPECT_FALSE(Import("2,3,2004,1,1\n100,1,5\n"));
  EXPECT_THAT(Boxes(), ElementsAre(ShownBox{ErrorBox(kFailed, 0).text, kRefusalBox, ScriptedPlatform::kTitle, kOk}));
  EXPECT_THAT(setup_.Changed(), IsEmpty());
  EXPECT_EQ(setup_.platform.memory.OpenHandles(), 0);
}

// --- Dates of the audit and of the application -----------------------------------------------------------------------

TEST_F(CSVImportTest, TheJournalGoesFromTheSmallestDateToTheLargestChange) {
  EXPECT_TRUE(Import("2,3,2004,1,1\n,,\n2,5,2004\n,,\n2,1,2004\n,,\n2,4,2004\n"));
  EXPECT_THAT(setup_.Calls({"BeginRollback"}), ElementsAre("BeginRollback 2004-02-01 2004-02-05"));
}

TEST_F(CSVImportTest, WithoutADateChangeTheLargestDateIsNone) {
  EXPECT_TRUE(Import("2,3,2004,1,1\n100,1,5\n"));
  EXPECT_THAT(setup_.Calls({"BeginRollback"}), ElementsAre("BeginRollback 2004-02-03 " + DateText(0)));
}

TEST_F(CSVImportTest, TheHeadersDateCountsForTheSmallestAloneNotForTheLargest) {
  EXPECT_TRUE(Import("2,3,2004,1,1\n,,\n2,1,2004\n"));
  EXPECT_THAT(setup_.Calls({"BeginRollback"}), ElementsAre("BeginRollback 2004-02-01 2004-02-01"));
}

TEST_F(CSVImportTest, WithoutAJournalNoneIsBegunOrEnded) {
  request_.write_rollback = false;
  EXPECT_TRUE(Import("2,3,2004,1,1\n100,1,5\n"));
  EXPECT_THAT(setup_.Calls({"BeginRollback", "EndRollback"}), IsEmpty());
}

TEST_F(CSVImportTest, TheJournalTakesAnImportBack) {
  EXPECT_TRUE(Import("2,3,2004,1,1\n100,1,5\n,,\n1,1,2003\n100,1,6\n"));
  EXPECT_THAT(setup_.Changed(), SizeIs(2));
  EXPECT_TRUE(setup_.book().Journal().back().closed);
  EXPECT_TRUE(setup_.book().UndoLastRollback());
  EXPECT_THAT(setup_.Changed(), IsEmpty());
}

// In the audit these three fields are a date of month -1, two months before January.
TEST_F(PeriodCSVImportTest, ADateChangeToAPeriodIsAPeriodOnlyInTheSecondPass) {
  EXPECT_TRUE(Import("-1,1,2004,1,1\n,,\n-1,5,2004\n100,1,6\n"));
  EXPECT_THAT(Boxes(), IsEmpty()) << "November 5, 2003 is a date of the book";
  EXPECT_EQ(Figure(101, DateFromParts(2004, 5, 31), 1), 6);
  EXPECT_THAT(setup_.Calls({"BeginRollback"}), ElementsAre("BeginRollback 2003-11-05 2003-11-05"));
}

TEST_F(PeriodCSVImportTest, APeriodWhoseAuditedDateTheBookDoesNotHoldIsAskedAbout) {
  Answer({kYes});
  EXPECT_TRUE(Import("-1,1,2003,1,1\n,,\n-1,5,2003\n100,1,6\n"));
  EXPECT_THAT(Boxes(),
              ElementsAre(AuditQuestion("Invalid date: 2003--1-5 in import file\r\nIn record number: 2", kYes)));
  EXPECT_EQ(Figure(101, DateFromParts(2003, 5, 31), 1), 6);
}

TEST_F(WeekCSVImportTest, FiguresGoToTheEndOfTheirWeek) {
  EXPECT_TRUE(Import("2,3,2004,1,1\n100,1,5\n,,\n2,6,2004\n100,1,6\n,,\n2,9,2004\n100,1,7\n"));
  EXPECT_EQ(Figure(101, DateFromParts(2004, 2, 7), 1), 11);
  EXPECT_EQ(Figure(101, DateFromParts(2004, 2, 14), 1), 7);
}

// --- Clearing --------------------------------------------------------------------------------------------------------

class ClearingCSVImportTest : public CSVImportTest {
 protected:
  ClearingCSVImportTest() {
    for (const Long account : {101, 102, 205}) {
      for (const Date date : {kThird, kFourth, kFourth + 1}) {
        setup_.book().Set(account, date, 1, 11);
        setup_.book().Set(account, date, 2, 22);
      }
    }
    request_.clear_fields = {0, 0, 1};  // field 2
  }
  // Whether field 2 of all accounts is clear at a date; a mixture fails the test.
  [[nodiscard]] bool Cleared(Date date) const {
    const bool cleared = Figure(101, date, 2) == 0;
    for (const Long account : {101, 102, 205}) {
      EXPECT_EQ(Figure(account, date, 2), cleared ? 0 : 22);
      EXPECT_EQ(Figure(account, date, 1), 11) << "a field without a flag";
    }
    return cleared;
  }
};

TEST_F(ClearingCSVImportTest, AFileOfTheHeaderAloneClearsAtItsDate) {
  EXPECT_TRUE(Import("2,3,2004,1,1\n"));
  EXPECT_TRUE(Cleared(kThird));
  EXPECT_FALSE(Cleared(kFourth));
  EXPECT_TRUE(setup_.LeftNothingOpen());
}

TEST_F(ClearingCSVImportTest, ClearsAtEveryDateOfTheFile) {
  EXPECT_TRUE(Import("2,3,2004,1,0\n0,,\n2,4,2004\n"));
  EXPECT_TRUE(Cleared(kThird));
  EXPECT_TRUE(Cleared(kFourth));
  EXPECT_FALSE(Cleared(kFourth + 1));
}

TEST_F(ClearingCSVImportTest, AnAccountOfMinusOneTurnsClearingOffForTheRestOfTheRun) {
  EXPECT_TRUE(Import("2,3,2004,1,0\n-1,,\n2,4,2004\n0,,\n2,5,2004\n"));
  EXPECT_TRUE(Cleared(kThird)) << "the header's date is cleared before any record is read";
  EXPECT_FALSE(Cleared(kFourth));
  EXPECT_FALSE(Cleared(kFourth + 1));
}

TEST_F(ClearingCSVImportTest, OnlyExactlyMinusOneDoes) {
  EXPECT_TRUE(Import("2,3,2004,1,0\n-2,,\n2,4,2004\n"));
  EXPECT_TRUE(Cleared(kFourth));
}

TEST_F(ClearingCSVImportTest, AMinusOneInTheMiddleLeavesTheDatesBeforeItCleared) {
  EXPECT_TRUE(Import("2,3,2004,1,0\n0,,\n2,4,2004\n-1,,\n2,5,2004\n"));
  EXPECT_TRUE(Cleared(kFourth));
  EXPECT_FALSE(Cleared(kFourth + 1));
}

TEST_F(ClearingCSVImportTest, AListOfPositionZeroAloneClearsNothing) {
  request_.clear_fields = {1};
  EXPECT_TRUE(Import("2,3,2004,1,1\n"));
  EXPECT_FALSE(Cleared(kThird));
  EXPECT_THAT(setup_.Calls({"BeginProgress"}), ::testing::Not(Contains(::testing::HasSubstr("Clearing"))));
}

TEST_F(CSVImportTest, AListOfOneFieldClearsThatField) {
  setup_.book().Set(101, kThird, 1, 11);
  setup_.book().Set(101, kThird, 2, 22);
  request_.clear_fields = {0, 1};
  EXPECT_TRUE(Import("2,3,2004,1,1\n"));
  EXPECT_EQ(Figure(101, kThird, 1), 0);
  EXPECT_EQ(Figure(101, kThird, 2), 22);
}

TEST_F(ClearingCSVImportTest, PositionZeroIsNeverLookedAt) {
  request_.clear_fields = {1, 0, -1};
  EXPECT_TRUE(Import("2,3,2004,1,1\n"));
  EXPECT_TRUE(Cleared(kThird)) << "and any number but 0 is a flag";
}

TEST_F(ClearingCSVImportTest, AListThatIsNotThereFailsInTheSecondPass) {
  request_.clear_fields = {};
  EXPECT_FALSE(Import("2,3,2004,1,1\n100,1,5\n"));
  EXPECT_THAT(Boxes(), ElementsAre(ErrorBox(9, kAtClear)));
  EXPECT_THAT(setup_.Calls({"BeginRollback", "EndRollback"}), SizeIs(1)) << "the journal stays open";
  EXPECT_TRUE(setup_.LeftNothingOpen());
}

TEST_F(ClearingCSVImportTest, ShowsWhatItClears) {
  EXPECT_TRUE(Import("2,3,2004,1,1\n"));
  EXPECT_THAT(setup_.Calls({"BeginProgress"}), Contains("BeginProgress Clearing Data in Sales Master File"));
}

TEST_F(ClearingCSVImportTest, ReadsAndWritesEveryAccountOfTheListInOrder) {
  setup_.RecordWork();
  EXPECT_TRUE(Import("2,3,2004,1,1\n"));
  EXPECT_THAT(
      setup_.Calls({"ReadRecord", "WriteRecord", "SetFieldValue"}),
      ElementsAre("ReadRecord 101 2004-02-03", "SetFieldValue 2 0", "WriteRecord", "ReadRecord 102 2004-02-03",
                  "SetFieldValue 2 0", "WriteRecord", "ReadRecord 205 2004-02-03", "SetFieldValue 2 0", "WriteRecord"));
}

TEST_F(ClearingCSVImportTest, ARecordThatCannotBeReadOrWrittenEndsTheRunInSilence) {
  for (const char* operation : {"ReadRecord", "WriteRecord"}) {
    SCOPED_TRACE(operation);
    Record().GiveFalseOn(operation, 2);
    EXPECT_FALSE(Import("2,3,2004,1,1\n100,1,5\n"));
    EXPECT_TRUE(Record().AllFaultsStruck());
    EXPECT_THAT(Boxes(), IsEmpty());
    EXPECT_EQ(Figure(101, kThird, 2), 0) << "what was written stays";
    EXPECT_EQ(Figure(205, kThird, 2), 22);
    EXPECT_FALSE(setup_.book().Journal().back().closed);
    EXPECT_TRUE(setup_.LeftNothingOpen());
    EXPECT_TRUE(setup_.book().UndoLastRollback());
    setup_.book().Set(101, kThird, 2, 22);
  }
}

TEST_F(ClearingCSVImportTest, AFlagOfAFieldThatTheBookHasNotIsARunTimeFailure) {
  request_.clear_fields = {0, 0, 0, 1};
  EXPECT_FALSE(Import("2,3,2004,1,1\n"));
  EXPECT_THAT(Boxes(), ElementsAre(ErrorBox(5, kAtClear)));
}

TEST_F(ClearingCSVImportTest, FiguresAreAppliedToWhatWasCleared) {
  EXPECT_TRUE(Import("2,3,2004,1,1\n100,2,5\n100,1,5\n"));
  EXPECT_EQ(Figure(101, kThird, 2), 5);
  EXPECT_EQ(Figure(101, kThird, 1), 16);
}

// --- Applying --------------------------------------------------------------------------------------------------------

TEST_F(CSVImportTest, RecordsOfOneAccountInARowShareOneReadAndOneWrite) {
  setup_.RecordWork();
  EXPECT_TRUE(Import("2,3,2004,3,1\n100,1,5\n100,2,6\n200,1,7\n100,1,8\n"));
  EXPECT_THAT(setup_.Calls({"ReadRecord", "WriteRecord", "SetFieldValue"}),
              ElementsAre("ReadRecord 101 2004-02-03", "SetFieldValue 1 5", "SetFieldValue 2 6", "WriteRecord",
                          "ReadRecord 102 2004-02-03", "SetFieldValue 1 7", "WriteRecord", "ReadRecord 101 2004-02-03",
                          "SetFieldValue 1 8", "WriteRecord"));
}

TEST_F(CSVImportTest, ADateChangeWritesTheOpenAccountAndReadsItAgain) {
  setup_.RecordWork();
  EXPECT_TRUE(Import("2,3,2004,3,1\n100,1,5\n,,\n2,4,2004\n100,1,6\n"));
  EXPECT_THAT(setup_.Calls({"ReadRecord", "WriteRecord"}),
              ElementsAre("ReadRecord 101 2004-02-03", "WriteRecord", "ReadRecord 101 2004-02-04", "WriteRecord"));
}

TEST_F(CSVImportTest, AFileThatEndsBehindADateChangeWritesOnceMoreWithNoRecordRead) {
  setup_.RecordWork();
  EXPECT_TRUE(Import("2,3,2004,3,1\n100,1,5\n,,\n2,4,2004\n"));
  EXPECT_THAT(setup_.Calls({"ReadRecord", "WriteRecord"}),
              ElementsAre("ReadRecord 101 2004-02-03", "WriteRecord", "WriteRecord"));
}

TEST_F(CSVImportTest, AFileWithoutARecordWritesNothing) {
  setup_.RecordWork();
  EXPECT_TRUE(Import("2,3,2004,3,1\n,,\n2,4,2004\n"));
  EXPECT_THAT(setup_.Calls({"ReadRecord", "WriteRecord"}), IsEmpty());
}

TEST_F(CSVImportTest, AReplaceKeepsTheLastOfRepeatedValues) {
  EXPECT_TRUE(Import("2,3,2004,3,1\n100,1,5\n200,1,1\n100,1,6\n100,1,7\n"));
  EXPECT_EQ(Figure(101, kThird, 1), 7);
}

TEST_F(CSVImportTest, AnAddSumsRepeatedValues) {
  EXPECT_TRUE(Import("2,3,2004,1,1\n100,1,5\n200,1,1\n100,1,6\n100,1,7\n"));
  EXPECT_EQ(Figure(101, kThird, 1), 18);
}

TEST_F(CSVImportTest, ResidueOfCancellingSumsBecomesZero) {
  setup_.book().Set(101, kThird, 1, 5e-8);
  EXPECT_TRUE(Import("2,3,2004,1,1\n100,1,5e-8\n100,2,-0.0000009999\n200,1,0.000001\n200,2,-0.000001\n"));
  EXPECT_EQ(Figure(101, kThird, 1), 0) << "0.0000001";
  EXPECT_EQ(Figure(101, kThird, 2), 0);
  EXPECT_EQ(Figure(102, kThird, 1), 0.000001) << "the bound itself stays";
  EXPECT_EQ(Figure(102, kThird, 2), -0.000001);
}

TEST_F(CSVImportTest, ResidueIsLookedForAfterAReplaceToo) {
  EXPECT_TRUE(Import("2,3,2004,3,1\n100,1,0.0000001\n"));
  EXPECT_EQ(Figure(101, kThird, 1), 0);
}

TEST_F(CSVImportTest, AReplaceDoesNotReadTheValueThatItReplaces) {
  Record().Record("FieldValue", true);
  EXPECT_TRUE(Import("2,3,2004,3,1\n100,1,5\n"));
  EXPECT_THAT(setup_.Calls({"FieldValue"}), SizeIs(1)) << "the look for residue";
}

// Cut at ten characters in the audit, it finds the account; whole, in the second pass, it fits none.
TEST_F(CSVImportTest, ACodeAboveTenCharactersPassesTheAuditAndFailsInTheSecondPass) {
  setup_.book().AddAccount(301, "NORTH YARD");
  EXPECT_FALSE(Import("2,3,2004,1,1\n100,1,5\nnorth yard 2,1,6\n"));
  EXPECT_THAT(Boxes(), ElementsAre(ErrorBox(5, kAtApplyAccount)));
  EXPECT_EQ(Figure(301, kThird, 1), 0);
  EXPECT_EQ(Figure(101, kThird, 1), 0) << "the record in work is lost";
  EXPECT_FALSE(setup_.book().Journal().back().closed);
}

TEST_F(CSVImportTest, AReadRecordThatSaysNoIsToldAsErrorZeroAndDoesNotStopTheProcess) {
  Record().GiveFalseOn("ReadRecord", 2);
  EXPECT_FALSE(Import("2,3,2004,1,1\n100,1,5\n200,1,6\n"));
  EXPECT_THAT(Boxes(), ElementsAre(ErrorBox(0, kAtReadRecord)));
  EXPECT_EQ(Figure(101, kThird, 1), 5) << "what was written stays";
  EXPECT_FALSE(setup_.book().Journal().back().closed);
  EXPECT_TRUE(setup_.LeftNothingOpen());
}

TEST_F(CSVImportTest, AWriteRecordThatSaysNoIsPassedOver) {
  Record().GiveFalseOn("WriteRecord", 1);
  EXPECT_TRUE(Import("2,3,2004,1,1\n100,1,5\n200,1,6\n"));
  EXPECT_TRUE(Record().AllFaultsStruck());
  EXPECT_THAT(Boxes(), IsEmpty());
}

TEST_F(CSVImportTest, TellsWhatItTouched) {
  EXPECT_TRUE(Import("2,3,2004,1,1\n100,1,5\n100,2,5\n,,\n2,4,2004\n300,1,6\n"));
  EXPECT_EQ(setup_.tally.records, 3);
  EXPECT_THAT(setup_.tally.accounts, ElementsAre(101, 205));
  EXPECT_THAT(setup_.tally.fields, ElementsAre(1, 2));
  EXPECT_THAT(setup_.tally.dates, ElementsAre(kThird, kFourth));
}

// --- Failures before the audit's first record are passed over one by one ---------------------------------------------

struct PassedOver {
  const char* operation;
  int nth;
  std::vector<Text> texts;  // of the boxes; none: the import goes through
};

class CSVImportBeforeTheAuditTest : public CSVImportTest, public ::testing::WithParamInterface<PassedOver> {};

TEST_P(CSVImportBeforeTheAuditTest, TheNextStepRuns) {
  request_.no_prompts = false;
  Answer({kOk, kNo});
  const PassedOver& fault = GetParam();
  Record().FailOn(fault.operation, fault.nth, Fault());
  EXPECT_EQ(Import("2,3,2004,1,1\n200,2,5\n"), fault.texts.empty());
  EXPECT_TRUE(Record().AllFaultsStruck());
  const Text confirmation =
      "OK to Add data from the import file to the database, starting at Tuesday, February 3, 2004";
  std::vector<Text> texts = setup_.platform.boxes.Texts();
  std::erase(texts, confirmation);
  EXPECT_EQ(texts, fault.texts);
  EXPECT_EQ(Figure(102, kThird, 2), fault.texts.empty() ? 5 : 0);
  EXPECT_TRUE(setup_.LeftNothingOpen());
}

const Text kAgain = "\r\n\r\nOk to continue auditing file?";
const std::vector<Text> kNoSuchCode = {"Invalid Account Code 200       \r\nIn record number: 1" + kAgain};
const std::vector<Text> kNoSuchField = {"Invalid Datafield number 2\r\nIn record number 1" + kAgain};

INSTANTIATE_TEST_SUITE_P(
    Every, CSVImportBeforeTheAuditTest,
    ::testing::Values(
        PassedOver{"DateValid", 1, {"Invalid date: 2004-2-3 in import file"}}, PassedOver{"FiscalCalendar", 1, {}},
        PassedOver{"FiscalCalendar", 2, {}}, PassedOver{"Calendar.SetCurrentDate", 1, {}},
        PassedOver{"Calendar.SetCurrentDate", 2, {}}, PassedOver{"DataLevel", 1, {}},
        PassedOver{"Calendar.LevelDate", 1, {}}, PassedOver{"BeginProgress", 1, {}}, PassedOver{"BeginProgress", 2, {}},
        PassedOver{"BeginProgress", 3, {}}, PassedOver{"MaxAccounts", 1, {}}, PassedOver{"MaxFields", 1, kNoSuchField},
        PassedOver{"NewAccountRecord", 1, kNoSuchCode}, PassedOver{"NumAccounts", 1, kNoSuchCode},
        PassedOver{"ProgressFraction", 1, {}}, PassedOver{"ProgressFraction", 6, {}},
        PassedOver{"AccountNumber", 1, {}}, PassedOver{"AccountNumber", 2, kNoSuchCode},
        PassedOver{"AccountNumber", 3, {}}, PassedOver{"AccountRecord.SetSelect", 1, {}},
        PassedOver{"AccountRecord.SetSelect", 2, kNoSuchCode}, PassedOver{"AccountRecord.SetSelect", 3, {}},
        PassedOver{"AccountRecord.Code", 1, {}}, PassedOver{"AccountRecord.Code", 2, kNoSuchCode},
        PassedOver{"AccountRecord.Code", 3, {}}, PassedOver{"AccountRecord.Number", 2, {}},
        PassedOver{"NumFields", 1, kNoSuchField}, PassedOver{"FieldNumber", 1, {}},
        PassedOver{"FieldNumber", 2, kNoSuchField}, PassedOver{"FieldNumber", 3, {}}));

TEST_F(CSVImportTest, AnAccountWhoseNumberCouldNotBeReadIsNoValidNumber) {
  Record().FailOn("AccountRecord.Number", 2, Fault());
  ExpectAuditFails("2,3,2004,1,0\n102,1,5\n",
                   {AuditQuestion("Invalid Account Number 102\r\nIn record number: 1", kNo)});
}

TEST_F(CSVImportTest, ADatabaseThatWillNotSayItsLevelTakesNoPeriodFile) {
  Record().FailOn("DataLevel", 1, Fault());
  ExpectRefused("-1,5,2004,1,1\n",
                "The information in the import file is for a period.  It cannot be imported into this database.");
}

TEST_F(PeriodCSVImportTest, ADatabaseThatWillNotCountItsPeriodsTakesNoPeriodFile) {
  Record().FailOn("NumPeriods", 1, Fault());
  ExpectRefused("-1,5,2004,1,1\n", "Invalid period number in import file");
}

TEST_F(CSVImportTest, AConfirmationThatCannotBeShownIsNone) {
  request_.no_prompts = false;
  Record().FailOn("App.Title", 1, Fault());
  EXPECT_FALSE(Import("2,3,2004,1,1\n100,1,5\n"));
  EXPECT_THAT(Boxes(), IsEmpty());
  EXPECT_THAT(setup_.Changed(), IsEmpty());
}

// --- Failures from the first record on end the run -------------------------------------------------------------------

TEST_F(CSVImportTest, EveryFailureOfTheHostInThePassesEndsTheRunWithTheErrorBox) {
  const std::string bytes = "2,3,2004,1,1\n100,1,5\n200,2,6\n,,\n2,4,2004\n100,1,7\n";
  request_.clear_fields = {0, 0, 1};
  RecordAll();
  ASSERT_TRUE(Import(bytes));
  const std::vector<Text> calls = Record().calls;
  const auto last_table =
      std::find_if(calls.rbegin(), calls.rend(), [](const Text& call) { return call.starts_with("FieldNumber"); });
  const auto before = static_cast<long long>(calls.rend() - last_table);
  const auto all = static_cast<long long>(calls.size());
  const auto journal =
      std::find_if(calls.begin(), calls.end(), [](const Text& call) { return call.starts_with("BeginRollback"); });
  const auto audited = static_cast<long long>(journal - calls.begin());
  ASSERT_TRUE(setup_.book().UndoLastRollback());
  ASSERT_GT(all - before, 30) << "both passes ask for much";

  for (long long n = before + 1; n < all; ++n) {
    SCOPED_TRACE(calls[static_cast<std::size_t>(n - 1)]);
    setup_.platform.boxes.ForgetShown();
    Record().calls.clear();
    Record().FailOn(kAnyOperation, n, Fault());
    EXPECT_FALSE(Import(bytes));
    EXPECT_TRUE(Record().AllFaultsStruck());
    ASSERT_THAT(Boxes(), SizeIs(1));
    EXPECT_TRUE(Boxes().front().text.starts_with("Error:" + std::to_string(kFailed) + ":")) << Boxes().front().text;
    EXPECT_TRUE(Boxes().front().text.ends_with("\r\nInformation not imported.")) << Boxes().front().text;
    EXPECT_EQ(Boxes().front().text.find(":0\r"), Text::npos) << "a statement of its own";
    EXPECT_EQ(Boxes().front().style, kRefusalBox);
    EXPECT_TRUE(setup_.LeftNothingOpen());
    if (n <= audited + 1) {
      EXPECT_THAT(setup_.book().Journal(), IsEmpty());
    } else {
      ASSERT_THAT(setup_.book().Journal(), SizeIs(1));
      EXPECT_FALSE(setup_.book().Journal().back().closed) << "the journal stays open";
      EXPECT_TRUE(setup_.book().UndoLastRollback());
    }
    EXPECT_THAT(setup_.Changed(), IsEmpty());
  }
}

TEST_F(CSVImportTest, AnEndOfTheDisplayThatFailsOnTheWayOutChangesNothing) {
  Record().FailOn("EndProgress", 2, Fault());
  EXPECT_TRUE(Import("2,3,2004,1,1\n100,1,5\n"));
  EXPECT_TRUE(Record().AllFaultsStruck());
  EXPECT_THAT(Boxes(), IsEmpty());
}

TEST_F(CSVImportTest, TheBoxNamesTheStatementThatFailed) {
  for (const auto& [operation, nth, statement] :
       {std::tuple("ProgressFraction", 7, kAtAuditRecord), std::tuple("EndProgress", 1, kAtEndAudit),
        std::tuple("BeginRollback", 1, 120), std::tuple("BeginProgress", 4, 130),
        std::tuple("Calendar.LevelDate", 2, 140), std::tuple("ProgressFraction", 8, 160),
        std::tuple("ReadRecord", 1, kAtReadRecord), std::tuple("SetFieldValue", 1, kAtApplyValue),
        std::tuple("WriteRecord", 1, 170), std::tuple("EndRollback", 1, 170)}) {
    setup_.platform.boxes.ForgetShown();
    Record().FailOn(operation, nth, Fault());
    EXPECT_FALSE(Import("2,3,2004,1,1\n100,1,5\n"));
    EXPECT_THAT(Boxes(), ElementsAre(ErrorBox(kFailed, statement))) << operation;
  }
}

// Every read of the file, one after the other, fails. A file of several blocks, so that there are some in each pass.
TEST_F(CSVImportTest, EveryReadThatFailsIsToldAndLosesNothing) {
  std::string bytes = "2,3,2004,1,1\n";
  while (bytes.size() < 140'000) bytes += "100,1,1.25\n200,2,-3\n";
  bool passed = false;
  int failures = 0;
  for (int n = 1; !passed; ++n) {
    SCOPED_TRACE(n);
    setup_.platform.boxes.ForgetShown();
    setup_.platform.files.FailNth(FileCall::kRead, n, FailureNumber::kDeviceError);
    passed = Import(bytes);
    setup_.platform.files.ClearFaults();
    if (passed) break;
    ++failures;
    ASSERT_THAT(Boxes(), SizeIs(1));
    EXPECT_EQ(Boxes().front().style, kRefusalBox);
    const Text& text = Boxes().front().text;
    const bool header = text == "Import file: /in/figures.csv does not contain a valid header";
    EXPECT_TRUE(header || text.starts_with("Error:57:")) << text;
    EXPECT_TRUE(setup_.LeftNothingOpen());
    setup_.book().UndoLastRollback();
    EXPECT_THAT(setup_.Changed(), IsEmpty());
  }
  EXPECT_GT(failures, 4);
  EXPECT_THAT(setup_.Changed(), SizeIs(2));
}

// --- Any file against a plain model ----------------------------------------------------------------------------------

struct ModelRecord {
  std::size_t account = 0;  // index
  Integer field = 0;
  Double value = 0;
};
struct ModelBlock {
  int day = 0;  // of the year 2004, 0 January 1
  bool clearing_off = false;
  std::vector<ModelRecord> records;
};

const std::vector<std::pair<Long, Text>> kAccounts = {{101, "100"}, {102, "200"}, {205, "300"}};

std::vector<ModelBlock> AnyBlocks() {
  std::vector<ModelBlock> blocks(static_cast<std::size_t>(*rc::gen::inRange(1, 6)));
  for (ModelBlock& block : blocks) {
    block.day = *rc::gen::inRange(0, 40);
    block.clearing_off = *rc::gen::weightedElement<bool>({{3, false}, {1, true}});
    block.records.resize(static_cast<std::size_t>(*rc::gen::inRange(0, 8)));
    for (ModelRecord& record : block.records) {
      record.account = *rc::gen::inRange<std::size_t>(0, kAccounts.size());
      record.field = *rc::gen::elementOf(std::vector<Integer>{1, 2, 7});
      record.value = *rc::gen::elementOf(std::vector<Double>{0, 1, -1, 12.25, -0.1, 0.1, 5e-7, -5e-7, 1e15, 3.0000001});
    }
  }
  return blocks;
}

Text ValueText(Double value) {
  return ArgumentText(value);
}

// The file, in one of the many forms that say the same.
std::string FileOf(const std::vector<ModelBlock>& blocks, int math, bool by_code) {
  std::string bytes;
  const auto end = [] { return *rc::gen::elementOf(std::vector<std::string>{",", "\n", "\r\n", " , ", "\r"}); };
  const auto date = [&](int day) {
    const DateParts parts = PartsOf(DateFromParts(2004, 1, 1) + day);
    bytes += std::to_string(parts.month) + end() + std::to_string(parts.day) + end() + "04" + end();
  };
  date(blocks.front().day);
  bytes += std::to_string(math) + end() + (by_code ? "1" : "0") + end();
  for (std::size_t i = 0; i < blocks.size(); ++i) {
    if (i > 0) {
      const Text account = by_code ? "" : blocks[i].clearing_off ? "-1" : "0";
      bytes += account + "," + end() + ",";
      date(blocks[i].day);
    }
    for (const ModelRecord& record : blocks[i].records) {
      const auto& [number, code] = kAccounts[record.account];
      bytes += (by_code ? "\"" + code + "\"" : std::to_string(number)) + end() + std::to_string(record.field) + end() +
               ValueText(record.value) + end();
    }
  }
  return bytes;
}

RC_GTEST_FIXTURE_PROP(CSVImportTest, AppliesWhatAPlainModelSays, ()) {
  const Integer level = *rc::gen::elementOf(std::vector<Integer>{kDayLevel, kWeekLevel, kPeriodLevel});
  const int math = *rc::gen::inRange(1, 4);
  const bool by_code = *rc::gen::arbitrary<bool>();
  const bool clears = *rc::gen::arbitrary<bool>();
  const std::vector<ModelBlock> blocks = AnyBlocks();
  const std::string bytes = FileOf(blocks, math, by_code);
  RC_LOG() << bytes;

  TextImportSetup setup(ShapeOfLevel(level));
  setup.platform.memory.Put(kPath, bytes);
  for (int day = 0; day < 40; day += 3) setup.book().Set(101, DateFromParts(2004, 1, 1) + day, 1, day - 0.1);
  MemoryMasterfile::FigureMap model = setup.book().Figures();
  bool clearing = clears;
  for (std::size_t i = 0; i < blocks.size(); ++i) {
    if (i > 0 && !by_code && blocks[i].clearing_off) clearing = false;
    const Date date = setup.book().FiscalCalendar().LevelDate(DateFromParts(2004, 1, 1) + blocks[i].day, level);
    for (const auto& [number, code] : kAccounts) {
      if (clearing) model[{number, date, 2}] = 0;
    }
    for (const ModelRecord& record : blocks[i].records) {
      Double& figure = model[{kAccounts[record.account].first, date, record.field}];
      figure = math == 1 ? figure + record.value : math == 2 ? figure - record.value : record.value;
      if (std::abs(figure) < 0.000001) figure = 0;
    }
  }
  std::erase_if(model, [](const auto& entry) { return entry.second == 0; });

  CSVImportRequest request{.file_name = kPath, .no_prompts = true};
  if (clears) request.clear_fields = {0, 0, 1};
  RC_ASSERT(ImportCSV(setup.book(), request, setup.tally));
  RC_ASSERT(setup.Boxes().empty());
  RC_ASSERT(setup.book().Figures() == model);
  RC_ASSERT(setup.book().UndoLastRollback());
  RC_ASSERT(!setup.book().progress.open);
}

// A wrong code or datafield anywhere: asked about, and nothing is applied.
RC_GTEST_FIXTURE_PROP(CSVImportTest, AppliesNothingOfAFileWithAnError, ()) {
  const bool by_code = *rc::gen::arbitrary<bool>();
  std::string bytes = FileOf(AnyBlocks(), 1, by_code);
  const bool wrong_field = *rc::gen::arbitrary<bool>();
  const Text good = by_code ? "100" : "101";
  const Text bad = by_code ? "nobody" : "4711";
  bytes += wrong_field ? good + ",3,5\n" : bad + ",1,5\n";
  RC_LOG() << bytes;
  TextImportSetup setup;
  setup.platform.memory.Put(kPath, bytes);
  setup.platform.boxes.Answer({kYes, kYes});
  const CSVImportRequest request{.file_name = kPath, .no_prompts = true, .clear_fields = {0, 1, 1}};
  RC_ASSERT(!ImportCSV(setup.book(), request, setup.tally));
  RC_ASSERT(setup.Boxes().size() == (by_code && !wrong_field ? 2U : 1U));
  RC_ASSERT(setup.Changed().empty());
}

}  // namespace
}  // namespace tallybook::testing
