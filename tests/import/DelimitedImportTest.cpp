#include <algorithm>
#include <cstdlib>
#include <gmock/gmock.h>
#include <rapidcheck.h>
#include <rapidcheck/gtest.h>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "import/DelimitedImport.h"
#include "tests/import/TextImportSetup.h"

namespace tallybook::testing {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::ElementsAreArray;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::SizeIs;

const Text kPath = "/in/daily.txt";
const Text kBackup = "/in/daily.txt.bak";

// The positions that the "Error:" box names.
constexpr int kAtAuditLine = 60;
constexpr int kAtAuditDate = 65;
constexpr int kAtAuditPairs = 67;
constexpr int kAtApplyLine = 100;
constexpr int kAtApplyAccount = 103;
constexpr int kAtOpenRecord = 105;
constexpr int kAtApplyPairs = 107;
constexpr int kAtLastWrite = 110;

ShownBox RecordsRead(int number) {
  return {std::to_string(number) + " records read from Delimited file: /in/daily.txt", kTellBox, kCaption, kOk};
}
const ShownBox kConfirmation = {"OK to Add data from the import file to the database?", kConfirmBox, kCaption, kOk};

class DelimitedImportTest : public TextImportFixture {
 protected:
  using TextImportFixture::TextImportFixture;

  // Imports with OK to the confirmation, and these answers to what is asked behind it.
  bool Import(const std::string& bytes, std::initializer_list<Integer> answers = {}) {
    Answer({kOk});
    Answer(answers);
    return ImportAsAnswered(bytes);
  }
  bool ImportAsAnswered(const std::string& bytes) {
    setup_.platform.memory.Put(kPath, bytes);
    setup_.platform.boxes.ForgetShown();
    return ImportDelimited(setup_.book(), request_, setup_.tally);
  }
  // What was shown behind the confirmation.
  [[nodiscard]] std::vector<ShownBox> Boxes() const {
    std::vector<ShownBox> boxes = setup_.Boxes();
    if (boxes.empty() || boxes.front().style != kConfirmBox) {
      ADD_FAILURE() << "no confirmation was asked for";
      return boxes;
    }
    boxes.erase(boxes.begin());
    return boxes;
  }
  [[nodiscard]] bool IsRenamed() const {
    const bool renamed = setup_.platform.memory.Has(kBackup);
    EXPECT_NE(setup_.platform.memory.Has(kPath), renamed) << "it bears one name";
    return renamed;
  }
  // As if nothing had been imported.
  void StartAgain() {
    EXPECT_TRUE(setup_.book().UndoLastRollback());
    Record().calls.clear();
    TakeBackTheName();
  }
  void TakeBackTheName() {
    if (setup_.platform.memory.Has(kBackup)) setup_.platform.memory.Delete(kBackup);
  }
  // The audit shows these questions and the run ends with false; the file is renamed or not.
  void ExpectAuditFails(const std::string& bytes, std::initializer_list<ShownBox> questions, bool renamed) {
    Answer({kOk});
    for (const ShownBox& question : questions) Answer({question.answer});
    EXPECT_FALSE(ImportAsAnswered(bytes)) << bytes;
    EXPECT_THAT(Boxes(), ElementsAreArray(questions)) << bytes;
    EXPECT_EQ(IsRenamed(), renamed) << bytes;
    EXPECT_THAT(setup_.Changed(), IsEmpty());
    EXPECT_THAT(setup_.Calls({"BeginRollback"}), IsEmpty());
    EXPECT_TRUE(setup_.LeftNothingOpen());
    TakeBackTheName();
  }
  // The audit ends with the box of a run-time failure; the file is renamed.
  void ExpectAuditError(const std::string& bytes, const ShownBox& box) {
    EXPECT_FALSE(Import(bytes)) << bytes;
    EXPECT_THAT(Boxes(), ElementsAre(box)) << bytes;
    EXPECT_TRUE(IsRenamed());
    EXPECT_THAT(setup_.Changed(), IsEmpty());
    EXPECT_THAT(setup_.Calls({"BeginRollback"}), IsEmpty());
    EXPECT_TRUE(setup_.LeftNothingOpen());
    TakeBackTheName();
  }
  // The audit passes and the second pass ends with the box; the file is renamed and the journal stays open.
  void ExpectApplyError(const std::string& bytes, const ShownBox& box) {
    EXPECT_FALSE(Import(bytes)) << bytes;
    EXPECT_THAT(Boxes(), ElementsAre(box)) << bytes;
    EXPECT_TRUE(IsRenamed());
    ASSERT_FALSE(setup_.book().Journal().empty());
    EXPECT_FALSE(setup_.book().Journal().back().closed);
    EXPECT_TRUE(setup_.LeftNothingOpen());
    TakeBackTheName();
  }

  DelimitedImportRequest request_{.file_name = kPath, .math = eMath::mAdd};
};

// A book that holds November 30, 1999, where a line without any number stands.
class OldBookDelimitedImportTest : public DelimitedImportTest {
 protected:
  OldBookDelimitedImportTest() : DelimitedImportTest(Shape()) {}
  static BookShape Shape() {
    BookShape shape;
    shape.first_date = DateFromParts(1999, 1, 1);
    shape.first_year = 1999;
    shape.years = 8;
    return shape;
  }
  const Date kNoNumbers = DateFromParts(1999, 11, 30);
};

class PeriodDelimitedImportTest : public DelimitedImportTest {
 protected:
  PeriodDelimitedImportTest() : DelimitedImportTest(ShapeOfLevel(kPeriodLevel)) {}
};

// --- What a file may look like ---------------------------------------------------------------------------------------

TEST_F(DelimitedImportTest, AddsTheFiguresOfALine) {
  setup_.book().Set(101, kThird, 1, 100);
  EXPECT_TRUE(Import("2,3,2004,100,1,12.5,2,3\r2,4,2004,200,1,-7\r"));
  EXPECT_EQ(Figure(101, kThird, 1), 112.5);
  EXPECT_EQ(Figure(101, kThird, 2), 3);
  EXPECT_EQ(Figure(102, kFourth, 1), -7);
  EXPECT_THAT(Boxes(), ElementsAre(RecordsRead(3)));
  EXPECT_TRUE(IsRenamed());
  EXPECT_TRUE(setup_.LeftNothingOpen());
}

TEST_F(DelimitedImportTest, SubtractsAndReplaces) {
  setup_.book().Set(101, kThird, 1, 100);
  setup_.book().Set(102, kThird, 1, 100);
  request_.math = eMath::mSubtract;
  EXPECT_TRUE(Import("2,3,2004,100,1,12.5\r"));
  request_.math = eMath::mReplace;
  EXPECT_TRUE(Import("2,3,2004,200,1,12.5\r"));
  EXPECT_EQ(Figure(101, kThird, 1), 87.5);
  EXPECT_EQ(Figure(102, kThird, 1), 12.5);
}

TEST_F(DelimitedImportTest, TabsSeparateAndQuotesProtect) {
  setup_.book().AddAccount(301, "A,B;C");
  EXPECT_TRUE(Import("2\t3\t2004\t\"a,b;c\"\t1\t5\r\"2\",\"3\",\"2004\",\"100\",\"1\",\"6\"\r"));
  EXPECT_EQ(Figure(301, kThird, 1), 5);
  EXPECT_EQ(Figure(101, kThird, 1), 6);
}

TEST_F(DelimitedImportTest, ReadsTheDateInTheOrderTold) {
  for (const auto& [order, line] :
       {std::pair<Integer, Text>(1, "2,3,2004"), {2, "3,2,2004"}, {3, "2004,2,3"}, {0, "2004,2,3"}, {-7, "04,2,3"}}) {
    request_.date_order = order;
    EXPECT_TRUE(Import(line + ",100,1,5\r")) << line;
  }
  EXPECT_EQ(Figure(101, kThird, 1), 25);
}

TEST_F(DelimitedImportTest, InOneFieldASlashAPointAndABlankReadAlike) {
  request_.date_fields = 1;
  EXPECT_TRUE(Import("2/3/2004,100,1,1\r2.3.2004,100,1,2\r2 3 2004,100,1,4\r2/3.04 and more/5,100,1,8\r"));
  EXPECT_EQ(Figure(101, kThird, 1), 15);
  EXPECT_THAT(setup_.Changed(), SizeIs(1));
}

TEST_F(DelimitedImportTest, EveryDateFieldsOtherThanZeroMeansOneField) {
  request_.date_fields = -1;
  request_.date_order = kYearMonthDay;
  EXPECT_TRUE(Import("2004.2.3,100,1,5,2,6\r"));
  EXPECT_EQ(Figure(101, kThird, 1), 5);
  EXPECT_EQ(Figure(101, kThird, 2), 6);
}

// The pairs are strict, the date's parts are not.
TEST_F(DelimitedImportTest, DatePartsAreReadAsFarAsTheyAreNumbers) {
  EXPECT_TRUE(Import("2,3,2004,100,1,5\r\n  2nd,2.6 or so,2004AD,100,1,5\r\n"));
  EXPECT_EQ(Figure(101, kThird, 1), 10);
}

TEST_F(DelimitedImportTest, YearsOfTwoDigitsAreCompleted) {
  EXPECT_TRUE(Import("2,3,4,100,1,5\r2,3,04,100,1,5\r"));
  EXPECT_EQ(Figure(101, kThird, 1), 10);
}

TEST_F(DelimitedImportTest, CodesAreTrimmedAndCompareWithoutRegardToCase) {
  setup_.book().AddAccount(301, "NORTH YARD");
  EXPECT_TRUE(Import("2,3,2004,  north yard ,1,5\r"));
  EXPECT_EQ(Figure(301, kThird, 1), 5);
}

TEST_F(DelimitedImportTest, BlanksAroundDatafieldAndValueAreAllowed) {
  EXPECT_TRUE(Import("2,3,2004,100, 1 , -5e1 \r"));
  EXPECT_EQ(Figure(101, kThird, 1), -50);
}

TEST_F(DelimitedImportTest, ReadsUtf8WithAndWithoutAMarkAndTheCodePage) {
  setup_.book().AddAccount(301, "M\xC3\x9CLLER");
  EXPECT_TRUE(Import("2,3,2004,m\xC3\xBCller,1,1\r"));
  EXPECT_TRUE(
      Import("\xEF\xBB\xBF"
             "2,3,2004,m\xC3\xBCller,1,2\r"));
  EXPECT_TRUE(Import("2,3,2004,m\xFCller,1,4\r"));
  EXPECT_EQ(Figure(301, kThird, 1), 7);
}

TEST_F(DelimitedImportTest, TheApplicationMayFixTheEncoding) {
  setup_.book().AddAccount(301, "\xC3\x83\xC2\xBC");  // what the bytes of a UTF-8 letter are in the code page
  setup_.book().AddAccount(302, "\xC3\x9C");
  ThePlatform().text_encoding = TextEncoding::kCodePage;
  EXPECT_TRUE(Import("2,3,2004,\xC3\xBC,1,5\r"));
  ThePlatform().text_encoding = TextEncoding::kUtf8;
  EXPECT_TRUE(Import("2,3,2004,\xC3\xBC,1,7\r"));
  EXPECT_EQ(Figure(301, kThird, 1), 5);
  EXPECT_EQ(Figure(302, kThird, 1), 7);
}

TEST_F(PeriodDelimitedImportTest, AMonthOfMinusOneMarksAPeriod) {
  EXPECT_TRUE(Import("-1,5,2004,100,1,5\r"));
  EXPECT_EQ(Figure(101, DateFromParts(2004, 5, 31), 1), 5);
  EXPECT_THAT(setup_.Calls({"BeginRollback"}), ElementsAre("BeginRollback 2004-05-01 2004-05-01"));
  request_.date_order = kDayMonthYear;
  request_.date_fields = 1;
  EXPECT_TRUE(Import("6/-1/2004,100,1,5\r"));
  EXPECT_EQ(Figure(101, DateFromParts(2004, 6, 30), 1), 5);
}

// --- Lines -----------------------------------------------------------------------------------------------------------

TEST_F(DelimitedImportTest, LinesOfCarriageReturnAndLineFeedCountOneAboveTheirNumber) {
  EXPECT_TRUE(Import("2,3,2004,100,1,5\r\n2,4,2004,100,1,6\r\n"));
  EXPECT_THAT(Boxes(), ElementsAre(RecordsRead(3)));
  EXPECT_EQ(Figure(101, kThird, 1), 5);
  EXPECT_EQ(Figure(101, kFourth, 1), 6);
}

TEST_F(DelimitedImportTest, ALastLineNeedsNoEnd) {
  EXPECT_TRUE(Import("2,3,2004,100,1,5\r\n2,4,2004,100,1,6"));
  EXPECT_THAT(Boxes(), ElementsAre(RecordsRead(3)));
  EXPECT_EQ(Figure(101, kFourth, 1), 6);
}

TEST_F(DelimitedImportTest, CarriageReturnsWithAndWithoutLineFeedsMayMix) {
  EXPECT_TRUE(Import("2,3,2004,100,1,5\r2,4,2004,100,1,6\r\n2,5,2004,100,1,7\r\r2,6,2004,100,1,8\r\r"));
  EXPECT_EQ(Figure(101, kThird, 1), 5);
  EXPECT_EQ(Figure(101, kFourth, 1), 6);
  EXPECT_EQ(Figure(101, kFourth + 1, 1), 7);
  EXPECT_EQ(Figure(101, kFourth + 2, 1), 8);
}

TEST_F(DelimitedImportTest, ALoneTrailingByteIsDropped) {
  EXPECT_TRUE(Import("2,3,2004,100,1,5\r2"));
  EXPECT_THAT(Boxes(), ElementsAre(RecordsRead(2)));
}

TEST_F(DelimitedImportTest, AFileOfLineFeedsAloneIsOneLongLine) {
  EXPECT_FALSE(Import("2,3,2004,100,1,5\n2,4,2004,100,1,6\n", {kYes, kYes}));
  EXPECT_THAT(Boxes(), ElementsAre(AuditQuestion("Invalid Datafield number 4\r\nIn record number 1", kYes),
                                   AuditQuestion("Invalid Datafield number 100\r\nIn record number 1", kYes),
                                   ErrorBox(13, kAtAuditPairs)))
      << "the last pair is a 6 with a line feed, and nothing";
}

// What an empty line of a file of carriage returns and line feeds gives.
TEST_F(DelimitedImportTest, ALineFeedAloneCountsAsText) {
  ExpectAuditFails("2,3,2004,100,1,5\r\n\r\n2,4,2004,100,1,6\r\n",
                   {AuditQuestion("Invalid date: 1999-11-30 in import file", kYes),
                    AuditQuestion("Invalid Account Code           \r\nIn record number: 2", kYes)},
                   false);
}

// A block of the reader holds 32,767 bytes. The line end lies at every place around its end.
TEST_F(DelimitedImportTest, ReadsTheSameWhereverABlockEnds) {
  for (int shift = 0; shift < 8; ++shift) {
    std::string bytes = "2,3,2004,100,1," + std::string(32'767 - 15 - 4, '0') +
                        std::string(static_cast<std::size_t>(shift), '0') + "\r\n";
    bytes += "2,4,2004,100,1,6\r\n2,4,2004,200,1,7\r\n";
    EXPECT_TRUE(Import(bytes)) << shift;
    EXPECT_THAT(Boxes(), ElementsAre(RecordsRead(4))) << shift;
  }
  EXPECT_EQ(Figure(101, kFourth, 1), 48);
  EXPECT_EQ(Figure(102, kFourth, 1), 56);
}

TEST_F(DelimitedImportTest, AnEmptyFileWritesOnceWithNoRecordRead) {
  setup_.RecordWork();
  EXPECT_TRUE(Import(""));
  EXPECT_THAT(Boxes(), ElementsAre(RecordsRead(1)));
  EXPECT_THAT(setup_.Calls({"ReadRecord", "WriteRecord"}), ElementsAre("WriteRecord"));
  EXPECT_THAT(setup_.Calls({"BeginRollback"}), ElementsAre("BeginRollback 9999-12-31 " + DateText(0)));
  EXPECT_TRUE(IsRenamed());
}

// --- Fields ----------------------------------------------------------------------------------------------------------

std::string PairsOf(int count) {
  std::string pairs;
  for (int i = 1; i <= count; ++i) pairs += ",1," + std::to_string(i);
  return pairs;
}

TEST_F(DelimitedImportTest, TheFieldArrayGrowsAsOftenAsALineAsksForIt) {
  for (const int count : {1, 2, 5, 6, 7, 10, 11, 12, 40, 100, 126}) {
    EXPECT_TRUE(Import("2,3,2004,100" + PairsOf(count) + "\r"));
    EXPECT_EQ(Figure(101, kThird, 1), count * (count + 1) / 2) << count;
    EXPECT_TRUE(setup_.book().UndoLastRollback());
  }
}

TEST_F(DelimitedImportTest, OfMoreThan256FieldsTheFirst256AreKept) {
  request_.math = eMath::mReplace;
  EXPECT_TRUE(Import("2,3,2004,100" + PairsOf(127) + "\r"));
  EXPECT_EQ(Figure(101, kThird, 1), 126);
  EXPECT_TRUE(Import("2,3,2004,100" + PairsOf(126) + ",99,and text\r")) << "nobody looks behind";
}

TEST_F(DelimitedImportTest, WithTheDateInOneFieldTheShiftDropsTheArraysLastTwo) {
  request_.date_fields = 1;
  request_.math = eMath::mReplace;
  EXPECT_TRUE(Import("2/3/2004,100" + PairsOf(127) + "\r"));
  EXPECT_EQ(Figure(101, kThird, 1), 126) << "the pair in the fields 255 and 256 is gone";
}

// Five fields leave the array at six, and the shift pushes the fifth out.
TEST_F(DelimitedImportTest, WithTheDateInOneFieldALoneDatafieldBehindTheFirstPairIsNotSeen) {
  request_.date_fields = 1;
  EXPECT_TRUE(Import("2/3/2004,100,1,5,99\r"));
  EXPECT_EQ(Figure(101, kThird, 1), 5);
  StartAgain();
  ExpectAuditFails("2/3/2004,100,1,5,2,6\r2/3/2004,100,1,5,99\r",
                   {AuditQuestion("Invalid Datafield number 99\r\nIn record number 2", kNo)}, true);
}

// An entry that is empty does not count, and the array grows only for a line that fills it to its last.
TEST_F(DelimitedImportTest, ALineWhoseFieldAtTheUpperBoundIsEmptyDoesNotGrowTheArray) {
  EXPECT_TRUE(Import("2,3,2004,100,1,,99,text\r"));
  EXPECT_THAT(setup_.Changed(), IsEmpty());
  StartAgain();
  ExpectAuditFails("2,3,2004,200,1,6\r2,3,2004,100,1,,99,text\r",
                   {AuditQuestion("Invalid Datafield number 99\r\nIn record number 2", kNo)}, true);
}

TEST_F(DelimitedImportTest, DatafieldsMustConvertAsAWhole) {
  for (const char* field : {"1x", "one", "1.5", "1 2", " ", "\n1", "--1", "0x1"}) {
    ExpectAuditError("2,3,2004,100," + std::string(field) + ",5\r", ErrorBox(13, kAtAuditPairs));
  }
  ExpectAuditError("2,3,2004,100,3000000000,5\r", ErrorBox(6, kAtAuditPairs));
}

TEST_F(DelimitedImportTest, ADatafieldOfZeroOrBelowIsARunTimeFailure) {
  ExpectAuditError("2,3,2004,100,0,5\r", ErrorBox(9, kAtAuditPairs));
  ExpectAuditError("2,3,2004,100,-1,5\r", ErrorBox(9, kAtAuditPairs));
}

TEST_F(DelimitedImportTest, AnEmptyDatafieldWithAValueIsARunTimeFailureInTheAudit) {
  ExpectAuditError("2,3,2004,100,,5\r", ErrorBox(13, kAtAuditPairs));
}

// The audit looks at datafields alone.
TEST_F(DelimitedImportTest, ValuesMustConvertAsAWholeAndAreFirstConvertedInTheSecondPass) {
  for (const char* value : {"5x", "five", "1,000", "5 6", " "}) {
    ExpectApplyError("2,3,2004,100,1,\"" + std::string(value) + "\"\r", ErrorBox(13, kAtApplyPairs));
  }
  ExpectApplyError("2,3,2004,100,1,1e999\r", ErrorBox(6, kAtApplyPairs));
  EXPECT_THAT(setup_.Changed(), IsEmpty());
}

TEST_F(DelimitedImportTest, ASumBeyondANumberEndsTheRunAndIsNotStored) {
  setup_.book().Set(101, kThird, 1, -1e308);
  request_.math = eMath::mSubtract;
  ExpectApplyError("2,3,2004,100,1,1e308\r", ErrorBox(6, kAtApplyPairs));
  EXPECT_EQ(Figure(101, kThird, 1), -1e308);
}

TEST_F(DelimitedImportTest, TellsOfADatabaseThatCannotGiveItsApplication) {
  for (int call = 1; call <= 9; ++call) setup_.host->record.FailOn("App", call, Fault());
  EXPECT_FALSE(ImportAsAnswered("2,3,2004,100,1,5\r"));
  EXPECT_THAT(setup_.Boxes(),
              ElementsAre(ShownBox{ErrorBox(kFailed, 0).text, kRefusalBox, ScriptedPlatform::kTitle, kOk}));
  EXPECT_FALSE(IsRenamed());
  EXPECT_THAT(setup_.Changed(), IsEmpty());
}

TEST_F(DelimitedImportTest, ADatePartTooLargeIsARunTimeFailure) {
  ExpectAuditError("40000,3,2004,100,1,5\r", ErrorBox(6, kAtAuditDate));
  ExpectAuditError("2,40000,2004,100,1,5\r", ErrorBox(6, kAtAuditDate));
  ExpectAuditError("2,3,40000,100,1,5\r", ErrorBox(6, kAtAuditDate));
}

// --- Before the audit ------------------------------------------------------------------------------------------------

TEST_F(DelimitedImportTest, AMathOtherThanOneToThreeIsRefusedAndTheFileRenamed) {
  for (const int math : {0, 4, -1}) {
    request_.math = static_cast<eMath>(math);
    EXPECT_FALSE(ImportAsAnswered("2,3,2004,100,1,5\r"));
    EXPECT_THAT(setup_.Boxes(), ElementsAre(Refusal("Add, Subtract or Replace not indicated in settings. ")));
    EXPECT_TRUE(IsRenamed());
    EXPECT_THAT(setup_.Changed(), IsEmpty());
    EXPECT_TRUE(setup_.LeftNothingOpen());
    TakeBackTheName();
  }
}

TEST_F(DelimitedImportTest, AMissingFileIsRefused) {
  EXPECT_FALSE(ImportDelimited(setup_.book(), request_, setup_.tally));
  EXPECT_THAT(setup_.Boxes(), ElementsAre(Refusal("File: /in/daily.txt does not exist.")));
  EXPECT_FALSE(setup_.platform.memory.Has(kBackup));
  EXPECT_TRUE(setup_.LeftNothingOpen());
}

TEST_F(DelimitedImportTest, ABackupOfAMissingFileStays) {
  setup_.platform.memory.Put(kBackup, "of yesterday");
  EXPECT_FALSE(ImportDelimited(setup_.book(), request_, setup_.tally));
  EXPECT_EQ(setup_.platform.memory.Bytes(kBackup), "of yesterday");
}

TEST_F(DelimitedImportTest, AFileThatCannotBeOpenedIsAskedAboutAndCancelLeavesWithoutTheEndStep) {
  setup_.platform.files.FailNth(FileCall::kOpen, 1, FailureNumber::kDeviceError, 2);
  Answer({kRetry, kCancel});
  EXPECT_FALSE(ImportAsAnswered("2,3,2004,100,1,5\r"));
  const Text question = "Error opening import file: /in/daily.txt";
  EXPECT_THAT(setup_.Boxes(), ElementsAre(ShownBox{question, kRetryBox, kCaption, kRetry},
                                          ShownBox{question, kRetryBox, kCaption, kCancel}));
  EXPECT_FALSE(IsRenamed());
  EXPECT_THAT(Record().calls, IsEmpty()) << "not even the end of a progress display";
}

TEST_F(DelimitedImportTest, RetryOpensTheFileAgain) {
  setup_.platform.files.FailNth(FileCall::kOpen, 1, FailureNumber::kDeviceError);
  Answer({kRetry, kOk});
  EXPECT_TRUE(ImportAsAnswered("2,3,2004,100,1,5\r"));
  EXPECT_EQ(Figure(101, kThird, 1), 5);
}

TEST_F(DelimitedImportTest, AFileThatAnotherProgramWritesIsImported) {
  setup_.platform.memory.Put(kPath, "2,3,2004,100,1,5\r");
  const auto writer = setup_.platform.memory.Open(kPath, Access::kReadWrite, Sharing::kShared, Creation::kMustExist);
  Answer({kOk});
  EXPECT_TRUE(ImportDelimited(setup_.book(), request_, setup_.tally));
  EXPECT_EQ(Figure(101, kThird, 1), 5);
}

// The file goes away while the question stands.
TEST_F(DelimitedImportTest, RetryLooksAgainWhetherTheFileIsThere) {
  setup_.platform.files.FailNth(FileCall::kOpen, 1, FailureNumber::kPermissionDenied, 4);
  setup_.platform.input.SetPending(5);
  setup_.platform.input.OnRun([&] {
    if (setup_.platform.memory.Has(kPath)) setup_.platform.memory.Delete(kPath);
  });
  Answer({kRetry});
  EXPECT_FALSE(ImportAsAnswered("2,3,2004,100,1,5\r"));
  EXPECT_THAT(setup_.platform.boxes.Texts(),
              ElementsAre("Error opening import file: /in/daily.txt", "File: /in/daily.txt does not exist."));
}

TEST_F(DelimitedImportTest, AsksWhetherToGoOnWithTheWordOfItsMath) {
  for (const auto& [math, word] : {std::pair(eMath::mAdd, "Add"), std::pair(eMath::mSubtract, "Subtract"),
                                   std::pair(eMath::mReplace, "Replace")}) {
    request_.math = math;
    EXPECT_TRUE(Import("2,3,2004,100,1,5\r"));
    EXPECT_EQ(setup_.Boxes().front(), (ShownBox{"OK to " + Text(word) + " data from the import file to the database?",
                                                kConfirmBox, kCaption, kOk}));
  }
}

TEST_F(DelimitedImportTest, CancelAtTheFirstQuestionRenamesTheFileWithNothingImported) {
  Answer({kCancel});
  EXPECT_FALSE(ImportAsAnswered("2,3,2004,100,1,5\r"));
  EXPECT_THAT(setup_.Boxes(), SizeIs(1));
  EXPECT_TRUE(IsRenamed());
  EXPECT_THAT(setup_.Changed(), IsEmpty());
  EXPECT_TRUE(setup_.LeftNothingOpen());
}

// --- The audit's questions, their order and what they count ----------------------------------------------------------

TEST_F(DelimitedImportTest, ShowsItsProgressStepByStep) {
  EXPECT_TRUE(Import("2,3,2004,100,1,5\r2,4,2004,100,1,6\r"));
  EXPECT_THAT(setup_.Calls({"BeginProgress", "ProgressFraction", "EndProgress", "BeginRollback", "EndRollback"}),
              ElementsAre("BeginProgress Auditing Import File", "ProgressFraction 0.5", "ProgressFraction 0.5",
                          "EndProgress", "BeginRollback 2004-02-03 2004-02-04", "BeginProgress Reading Import File",
                          "ProgressFraction 1", "ProgressFraction 1", "EndRollback", "EndProgress"));
}

const ShownBox kBadDate = AuditQuestion("Invalid date: 2010-02-03 in import file", kYes);
const ShownBox kBadCode = AuditQuestion("Invalid Account Code NOBODY    \r\nIn record number: 1", kYes);
const ShownBox kBadField = AuditQuestion("Invalid Datafield number 99\r\nIn record number 1", kYes);
const ShownBox kSystemField = AuditQuestion(
    "Cannot import System Maintained Datafields with this option. System Maintained Datafield number 7\r\nIn record "
    "number 1",
    kYes);

ShownBox Refused(ShownBox box) {
  box.answer = kNo;
  return box;
}

TEST_F(DelimitedImportTest, AsksAboutDateCodeAndEachDatafieldInThisOrder) {
  ExpectAuditFails("2,3,2010,nobody,7,1,99,2\r", {kBadDate, kBadCode, kSystemField, kBadField}, false);
}

// The date's question comes behind the count, the code's before it; and the file keeps its name once one has counted.
TEST_F(DelimitedImportTest, NoOnAFirstErrorDecidesTheNameByWhetherItHasCounted) {
  ExpectAuditFails("2,3,2010,100,1,5\r", {Refused(kBadDate)}, false);
  ExpectAuditFails("2,3,2004,nobody,1,5\r", {Refused(kBadCode)}, true);
  ExpectAuditFails("2,3,2004,100,99,5\r", {Refused(kBadField)}, true);
  ExpectAuditFails("2,3,2004,100,7,5\r", {Refused(kSystemField)}, false);
}

TEST_F(DelimitedImportTest, YesToAnyErrorKeepsTheFilesNameAndTheDatabase) {
  ExpectAuditFails("2,3,2010,100,1,5\r", {kBadDate}, false);
  ExpectAuditFails("2,3,2004,nobody,1,5\r", {kBadCode}, false);
  ExpectAuditFails("2,3,2004,100,99,5\r", {kBadField}, false);
  ExpectAuditFails("2,3,2004,100,7,5\r", {kSystemField}, false);
}

TEST_F(DelimitedImportTest, NoOnASecondErrorKeepsTheName) {
  ExpectAuditFails("2,3,2004,nobody,99,5\r", {kBadCode, Refused(kBadField)}, false);
  ExpectAuditFails("2,3,2004,100,99,5,99,6\r", {kBadField, Refused(kBadField)}, false);
}

TEST_F(DelimitedImportTest, ARunTimeFailureBehindACountedErrorKeepsTheName) {
  EXPECT_FALSE(Import("2,3,2004,nobody,x,5\r", {kYes}));
  EXPECT_THAT(Boxes(), ElementsAre(kBadCode, ErrorBox(13, kAtAuditPairs)));
  EXPECT_FALSE(IsRenamed());
}

TEST_F(DelimitedImportTest, LinesThatRepeatADateAreNotAskedAboutAgain) {
  ExpectAuditFails("2,3,2010,100,1,5\r2,3,2010,100,1,5\r2,3,2004,100,1,5\r2,3,2010,100,1,5\r", {kBadDate, kBadDate},
                   false);
}

TEST_F(DelimitedImportTest, ADatafieldAboveTheLastIsAskedAbout) {
  ExpectAuditFails("2,3,2004,100,1000,5\r",
                   {AuditQuestion("Invalid Datafield number 1000\r\nIn record number 1", kYes)}, false);
}

TEST_F(DelimitedImportTest, SystemMaintainedDatafieldsPassWhereTheyMay) {
  request_.can_import_system_fields = true;
  EXPECT_TRUE(Import("2,3,2004,100,7,5\r"));
  EXPECT_EQ(Figure(101, kThird, 7), 5);
}

TEST_F(DelimitedImportTest, OfSeveralAccountsWithOneCodeTheFirstIsTaken) {
  setup_.book().AddAccount(301, "100");
  EXPECT_TRUE(Import("2,3,2004,100,1,5\r"));
  EXPECT_EQ(Figure(101, kThird, 1), 5);
}

// --- The seven differences between the passes ------------------------------------------------------------------------

// First pass: what follows the semicolon is a comment. Second pass: it is the first field of a pair.
TEST_F(DelimitedImportTest, ASemicolonEndsTheLineInTheFirstPassAndIsACharacterInTheSecond) {
  EXPECT_TRUE(Import("2,3,2004,100,1,5,;note\r")) << "with nothing behind it the pair ends the line's pairs";
  EXPECT_THAT(Boxes(), ElementsAre(RecordsRead(2)));
  EXPECT_EQ(Figure(101, kThird, 1), 5);
  ExpectApplyError("2,3,2004,100,1,5,;note,more\r", ErrorBox(13, kAtApplyPairs));
  ExpectApplyError("2,3,2004,100,1,5;note\r", ErrorBox(13, kAtApplyPairs));
}

TEST_F(DelimitedImportTest, ASemicolonInQuotesIsACharacterInBothPasses) {
  setup_.book().AddAccount(301, "A;B");
  EXPECT_TRUE(Import("2,3,2004,\"A;B\",1,5\r"));
  EXPECT_EQ(Figure(301, kThird, 1), 5);
}

// First pass: not a record, so that the line behind it is record 2 of the question. Second pass: a record.
TEST_F(OldBookDelimitedImportTest, ALineOfACommentIsSkippedInTheFirstPassAndARecordInTheSecond) {
  setup_.RecordWork();
  const std::string before = "2,3,2004,100,1,5\r;a comment\r";
  EXPECT_TRUE(Import(before + "2,3,2004,100,1,6\r"));
  EXPECT_THAT(Boxes(), ElementsAre(RecordsRead(4)));
  EXPECT_THAT(setup_.Calls({"ReadRecord"}),
              ElementsAre("ReadRecord 101 2004-02-03", "ReadRecord 101 1999-11-30", "ReadRecord 101 2004-02-03"));
  EXPECT_THAT(setup_.Calls({"BeginRollback"}), ElementsAre("BeginRollback 2004-02-03 2004-02-03"));
  EXPECT_FALSE(Import(before + "2,3,2004,100,99,6\r", {kNo}));
  EXPECT_THAT(Boxes(), ElementsAre(AuditQuestion("Invalid Datafield number 99\r\nIn record number 2", kNo)));
}

TEST_F(OldBookDelimitedImportTest, ALineOfBlanksIsSkippedInTheFirstPassAndARecordInTheSecond) {
  setup_.RecordWork();
  EXPECT_TRUE(Import("2,3,2004,100,1,5\r   ,  , \r"));
  EXPECT_THAT(setup_.Calls({"ReadRecord"}), ElementsAre("ReadRecord 101 2004-02-03", "ReadRecord 101 1999-11-30"));
}

// First pass: the empty value does not end the pairs, so that the wrong datafield behind it is found. Second pass: it
// does, and the good pair behind it is dropped in silence.
TEST_F(DelimitedImportTest, PairsEndAtBothEmptyInTheFirstPassAndAtEitherInTheSecond) {
  EXPECT_FALSE(Import("2,3,2004,100,1,5,1,,99,6\r", {kNo}));
  EXPECT_THAT(Boxes(), ElementsAre(AuditQuestion("Invalid Datafield number 99\r\nIn record number 1", kNo)));
  EXPECT_TRUE(Import("2,3,2004,100,1,5,1,,2,6\r"));
  EXPECT_EQ(Figure(101, kThird, 1), 5);
  EXPECT_EQ(Figure(101, kThird, 2), 0);
  EXPECT_TRUE(Import("2,3,2004,200,1,5,,,99,6\r")) << "both empty end them in the first pass too";
  EXPECT_EQ(Figure(102, kThird, 1), 5);
}

// First pass: cut at ten, it is that of an account. Second pass: too long.
TEST_F(DelimitedImportTest, ACodeAboveTenCharactersIsCutInTheFirstPassAndAFailureInTheSecond) {
  setup_.book().AddAccount(301, "NORTH YARD");
  ExpectApplyError("2,3,2004,100,1,5\r2,3,2004,north yard 2,1,6\r", ErrorBox(5, kAtApplyAccount));
  EXPECT_EQ(Figure(301, kThird, 1), 0);
  EXPECT_EQ(Figure(101, kThird, 1), 0) << "the record in work is lost";
  // Alone in the file: what the first pass made of the code does not reach the second.
  ExpectApplyError("2,3,2004,north yard 2,1,6\r", ErrorBox(5, kAtApplyAccount));
  EXPECT_TRUE(Import("2,3,2004,      north yard      ,1,6\r")) << "blanks around it do not count";
  EXPECT_EQ(Figure(301, kThird, 1), 6);
}

// First pass: the semicolon ends the code, which is known. Second pass: it belongs to the code, which is unknown.
TEST_F(DelimitedImportTest, AnUnknownCodeIsAskedAboutInTheFirstPassAndKeepsTheAccountInTheSecond) {
  ExpectAuditFails("2,3,2004,200,1,5\r2,3,2004,nobody,1,6\r",
                   {AuditQuestion("Invalid Account Code NOBODY    \r\nIn record number: 2", kYes)}, false);
  EXPECT_TRUE(Import("2,3,2004,200,1,5\r2,3,2004,100;x,1,6\r"));
  EXPECT_EQ(Figure(102, kThird, 1), 11);
  EXPECT_EQ(Figure(101, kThird, 1), 0);
}

// The line is a comment for the first pass, which leaves the array at 16; the second pass reads no further.
TEST_F(DelimitedImportTest, TheFieldArrayGrowsInTheFirstPassAndStaysInTheSecond) {
  EXPECT_TRUE(Import("2,3,2004,100,1,5\r;0,3,2004,100" + PairsOf(20) + "\r"));
  EXPECT_EQ(Figure(101, DateFromParts(2003, 12, 3), 1), 1 + 2 + 3 + 4 + 5 + 6) << "the pairs up to field 16";
}

TEST_F(DelimitedImportTest, TheFieldArrayKeepsItsSizeFromTheFirstPassForAllLinesOfTheSecond) {
  EXPECT_TRUE(Import("2,3,2004,100,1,5\r;0,3,2004,100" + PairsOf(20) + "\r2,4,2004,100" + PairsOf(20) + "\r"));
  EXPECT_EQ(Figure(101, DateFromParts(2003, 12, 3), 1), 210);
}

// First pass: the lines with text are numbered. Second pass: all lines, and the end.
TEST_F(OldBookDelimitedImportTest, TheRecordNumberCountsLinesWithTextInTheFirstPassAndAllInTheSecond) {
  const std::string bytes = "2,3,2004,100,1,5\r;one\r;two\r,,,\r2,3,2004,100,1,6\r";
  EXPECT_TRUE(Import(bytes));
  EXPECT_THAT(Boxes(), ElementsAre(RecordsRead(6)));
  EXPECT_FALSE(Import(bytes + "2,3,2004,nobody,1,6\r", {kNo}));
  EXPECT_THAT(Boxes(), ElementsAre(AuditQuestion("Invalid Account Code NOBODY    \r\nIn record number: 3", kNo)));
}

// --- Applying --------------------------------------------------------------------------------------------------------

TEST_F(DelimitedImportTest, LinesOfOneDateAndAccountInARowShareOneRecord) {
  setup_.RecordWork();
  EXPECT_TRUE(Import("2,3,2004,100,1,5\r2,3,2004,100,2,6\r2,3,2004,100,1,7\r"));
  EXPECT_THAT(setup_.Calls({"ReadRecord", "WriteRecord", "SetFieldValue"}),
              ElementsAre("ReadRecord 101 2004-02-03", "SetFieldValue 1 5", "SetFieldValue 2 6", "SetFieldValue 1 12",
                          "WriteRecord"));
}

TEST_F(DelimitedImportTest, AReturnToAnEarlierAccountAddsToWhatTheLastWriteLeft) {
  setup_.RecordWork();
  EXPECT_TRUE(Import("2,3,2004,100,1,5\r2,3,2004,200,1,6\r2,3,2004,100,1,7\r"));
  EXPECT_THAT(setup_.Calls({"ReadRecord", "WriteRecord"}),
              ElementsAre("ReadRecord 101 2004-02-03", "WriteRecord", "ReadRecord 102 2004-02-03", "WriteRecord",
                          "ReadRecord 101 2004-02-03", "WriteRecord"));
  EXPECT_EQ(Figure(101, kThird, 1), 12);
  EXPECT_EQ(Figure(102, kThird, 1), 6);
}

TEST_F(DelimitedImportTest, SortedByAccountAndDateEachLineCostsAReadAndAWrite) {
  setup_.RecordWork();
  EXPECT_TRUE(Import("2,3,2004,100,1,5\r2,4,2004,100,1,6\r2,3,2004,200,1,7\r2,4,2004,200,1,8\r"));
  EXPECT_THAT(setup_.Calls({"ReadRecord"}), SizeIs(4));
  EXPECT_THAT(setup_.Calls({"WriteRecord"}), SizeIs(4));
}

TEST_F(DelimitedImportTest, SmallSumsStayAsTheyAre) {
  setup_.book().Set(101, kThird, 1, 5e-8);
  EXPECT_TRUE(Import("2,3,2004,100,1,5e-8\r"));
  EXPECT_EQ(Figure(101, kThird, 1), 1e-7) << "no residue is taken away here";
}

TEST_F(DelimitedImportTest, TheJournalGoesFromTheFirstToTheLastDate) {
  EXPECT_TRUE(Import("2,3,2004,100,1,5\r1,3,2004,100,1,6\r2,1,2004,100,1,7\r"));
  EXPECT_THAT(setup_.Calls({"BeginRollback", "EndRollback"}),
              ElementsAre("BeginRollback 2004-01-03 2004-02-03", "EndRollback"));
  EXPECT_TRUE(setup_.book().UndoLastRollback());
  EXPECT_THAT(setup_.Changed(), IsEmpty());
}

TEST_F(DelimitedImportTest, WithoutAJournalNoneIsBegunOrEnded) {
  request_.write_rollback = false;
  EXPECT_TRUE(Import("2,3,2004,100,1,5\r"));
  EXPECT_THAT(setup_.Calls({"BeginRollback", "EndRollback"}), IsEmpty());
}

TEST_F(DelimitedImportTest, WhatWasWrittenBeforeAFailureStays) {
  ExpectApplyError("2,3,2004,100,1,5\r2,3,2004,200,1,6\r2,3,2004,200,1,x\r", ErrorBox(13, kAtApplyPairs));
  EXPECT_EQ(Figure(101, kThird, 1), 5);
  EXPECT_EQ(Figure(102, kThird, 1), 0) << "the record in work is lost";
  EXPECT_TRUE(setup_.book().UndoLastRollback());
  EXPECT_THAT(setup_.Changed(), IsEmpty());
}

TEST_F(DelimitedImportTest, AWriteRecordThatSaysNoIsPassedOver) {
  Record().GiveFalseOn("WriteRecord", 1);
  EXPECT_TRUE(Import("2,3,2004,100,1,5\r2,3,2004,200,1,6\r"));
  EXPECT_TRUE(Record().AllFaultsStruck());
}

TEST_F(DelimitedImportTest, TellsWhatItTouched) {
  EXPECT_TRUE(Import("2,3,2004,100,1,5,2,5\r2,4,2004,300,1,6\r2,4,2004,300,1,6\r"));
  EXPECT_EQ(setup_.tally.records, 3);
  EXPECT_THAT(setup_.tally.accounts, ElementsAre(101, 205));
  EXPECT_THAT(setup_.tally.fields, ElementsAre(1, 2));
  EXPECT_THAT(setup_.tally.dates, ElementsAre(kThird, kFourth));
}

// --- The renaming ----------------------------------------------------------------------------------------------------

TEST_F(DelimitedImportTest, TheNewNameReplacesAFileThatBearsIt) {
  setup_.platform.memory.Put(kBackup, "of yesterday");
  EXPECT_TRUE(Import("2,3,2004,100,1,5\r"));
  EXPECT_EQ(setup_.platform.memory.Bytes(kBackup), "2,3,2004,100,1,5\r");
}

TEST_F(DelimitedImportTest, ARenamingThatFailsTakesNothingBack) {
  setup_.platform.files.FailNth(FileCall::kRename, 1, FailureNumber::kPermissionDenied);
  EXPECT_TRUE(Import("2,3,2004,100,1,5\r"));
  EXPECT_FALSE(IsRenamed());
  EXPECT_EQ(Figure(101, kThird, 1), 5);
  EXPECT_TRUE(setup_.LeftNothingOpen());
}

// --- A record that cannot be read ------------------------------------------------------------------------------------

using DelimitedImportDeathTest = DelimitedImportTest;
using OldBookDelimitedImportDeathTest = OldBookDelimitedImportTest;

TEST_F(DelimitedImportDeathTest, AReadRecordThatSaysNoStopsTheProcessAtOnce) {
  for (const int read : {1, 2, 3}) {  // the first of all, for another account, for another date
    EXPECT_EXIT(
        {
          Record().GiveFalseOn("ReadRecord", read);
          (void)Import("2,3,2004,100,1,5\r2,3,2004,200,1,6\r2,4,2004,200,1,6\r");
        },
        ::testing::ExitedWithCode(EXIT_FAILURE), "")
        << read;
  }
}

TEST_F(DelimitedImportDeathTest, ACommentLineStopsTheProcessWhereTheBookDoesNotHoldItsDate) {
  EXPECT_EXIT((void)Import("2,3,2004,100,1,5\r;a comment\r"), ::testing::ExitedWithCode(EXIT_FAILURE), "");
}

// No account has been read yet, and none has the number 0.
TEST_F(OldBookDelimitedImportDeathTest, ACommentInTheFirstLineStopsTheProcess) {
  EXPECT_EXIT((void)Import(";a comment\r2,3,2004,100,1,5\r"), ::testing::ExitedWithCode(EXIT_FAILURE), "");
}

// --- Failures before the first line are passed over one by one -------------------------------------------------------

struct PassedOver {
  const char* operation;
  int nth;
  std::vector<Text> texts;  // of the questions; none: the import goes through
};

class DelimitedImportBeforeTheAuditTest : public DelimitedImportTest,
                                          public ::testing::WithParamInterface<PassedOver> {};

TEST_P(DelimitedImportBeforeTheAuditTest, TheNextStepRuns) {
  const PassedOver& fault = GetParam();
  Record().FailOn(fault.operation, fault.nth, Fault());
  if (!fault.texts.empty()) Answer({kOk, kNo});
  EXPECT_EQ(fault.texts.empty() ? Import("2,3,2004,200,2,5\r") : ImportAsAnswered("2,3,2004,200,2,5\r"),
            fault.texts.empty());
  EXPECT_TRUE(Record().AllFaultsStruck());
  std::vector<Text> texts;
  for (const ShownBox& box : Boxes()) {
    if (box.style == kAuditBox) texts.push_back(box.text);
  }
  EXPECT_EQ(texts, fault.texts);
  EXPECT_EQ(Figure(102, kThird, 2), fault.texts.empty() ? 5 : 0);
  EXPECT_TRUE(setup_.LeftNothingOpen());
}

const Text kAgain = "\r\n\r\nOk to continue auditing file?";
const std::vector<Text> kNoSuchCode = {"Invalid Account Code 200       \r\nIn record number: 1" + kAgain};
const std::vector<Text> kNoSuchField = {"Invalid Datafield number 2\r\nIn record number 1" + kAgain};

INSTANTIATE_TEST_SUITE_P(
    Every, DelimitedImportBeforeTheAuditTest,
    ::testing::Values(PassedOver{"BeginProgress", 1, {}}, PassedOver{"NewAccountRecord", 1, kNoSuchCode},
                      PassedOver{"NumAccounts", 1, kNoSuchCode}, PassedOver{"AccountNumber", 1, {}},
                      PassedOver{"AccountNumber", 2, kNoSuchCode}, PassedOver{"AccountNumber", 3, {}},
                      PassedOver{"AccountRecord.SetSelect", 1, {}},
                      PassedOver{"AccountRecord.SetSelect", 2, kNoSuchCode},
                      PassedOver{"AccountRecord.SetSelect", 3, {}}, PassedOver{"AccountRecord.Code", 1, {}},
                      PassedOver{"AccountRecord.Code", 2, kNoSuchCode}, PassedOver{"AccountRecord.Code", 3, {}},
                      PassedOver{"MaxFields", 1, kNoSuchField}, PassedOver{"NewFieldRecord", 1, {}},
                      PassedOver{"NumFields", 1, kNoSuchField}, PassedOver{"FieldNumber", 1, {}},
                      PassedOver{"FieldNumber", 2, kNoSuchField}, PassedOver{"FieldNumber", 3, {}},
                      PassedOver{"FieldRecord.SetSelect", 2, {}}, PassedOver{"FieldRecord.SystemMaintained", 2, {}}));

TEST_F(DelimitedImportTest, AFieldOfWhichNothingIsKnownCountsAsTheUsersOwn) {
  for (const char* operation : {"FieldRecord.SetSelect", "FieldRecord.SystemMaintained"}) {
    Record().FailOn(operation, 3, Fault());
    EXPECT_TRUE(Import("2,3,2004,100,7,5\r")) << operation;
  }
}

TEST_F(DelimitedImportTest, AConfirmationThatCannotBeShownIsNone) {
  Record().FailOn("App.Title", 1, Fault());
  EXPECT_FALSE(ImportAsAnswered("2,3,2004,100,1,5\r"));
  EXPECT_THAT(setup_.Boxes(), IsEmpty());
  EXPECT_THAT(setup_.Changed(), IsEmpty());
  EXPECT_TRUE(IsRenamed());
}

// --- Failures from the first line on end the run ---------------------------------------------------------------------

TEST_F(DelimitedImportTest, EveryFailureOfTheHostInThePassesEndsTheRunWithTheErrorBox) {
  const std::string bytes = "2,3,2004,100,1,5\r2,3,2004,200,2,6\r2,4,2004,100,1,7,2,8\r";
  RecordAll();
  ASSERT_TRUE(Import(bytes));
  const std::vector<Text> calls = Record().calls;
  const auto place = [&](const Text& operation) {
    const auto found =
        std::find_if(calls.begin(), calls.end(), [&](const Text& call) { return call.starts_with(operation); });
    return static_cast<long long>(found - calls.begin()) + 1;
  };
  const auto all = static_cast<long long>(calls.size());
  const long long first = place("ProgressFraction");
  const long long journal = place("BeginRollback");
  const long long ended = place("EndRollback");
  ASSERT_GT(all - first, 20) << "both passes ask for much";
  ASSERT_TRUE(setup_.book().UndoLastRollback());
  TakeBackTheName();

  for (long long n = first; n < all; ++n) {
    SCOPED_TRACE(calls[static_cast<std::size_t>(n - 1)]);
    Record().calls.clear();
    Record().FailOn(kAnyOperation, n, Fault());
    EXPECT_FALSE(Import(bytes));
    EXPECT_TRUE(Record().AllFaultsStruck());
    ASSERT_THAT(Boxes(), SizeIs(1));
    const ShownBox box = Boxes().front();
    EXPECT_TRUE(box.text.starts_with("Error:" + std::to_string(kFailed) + ":")) << box.text;
    EXPECT_TRUE(box.text.ends_with("\r\nInformation not imported.")) << box.text;
    EXPECT_EQ(box.text.find(":0\r"), Text::npos) << "a statement of its own";
    EXPECT_EQ(box.style, kRefusalBox);
    EXPECT_TRUE(setup_.LeftNothingOpen());
    EXPECT_TRUE(IsRenamed()) << "no error was counted";
    if (n <= journal) {
      EXPECT_THAT(setup_.book().Journal(), IsEmpty());
    } else {
      ASSERT_THAT(setup_.book().Journal(), SizeIs(1));
      EXPECT_EQ(setup_.book().Journal().back().closed, n > ended);
      EXPECT_TRUE(setup_.book().UndoLastRollback());
    }
    EXPECT_THAT(setup_.Changed(), IsEmpty());
    TakeBackTheName();
  }
}

TEST_F(DelimitedImportTest, AnEndOfTheDisplayThatFailsOnTheWayOutChangesNothing) {
  Record().FailOn("EndProgress", 2, Fault());
  EXPECT_TRUE(Import("2,3,2004,100,1,5\r"));
  EXPECT_TRUE(Record().AllFaultsStruck());
  EXPECT_THAT(Boxes(), ElementsAre(RecordsRead(2)));
}

TEST_F(DelimitedImportTest, TheBoxNamesTheStatementThatFailed) {
  for (const auto& [operation, nth, statement] :
       {std::tuple("ProgressFraction", 1, kAtAuditDate), std::tuple("DateValid", 1, kAtAuditDate),
        std::tuple("EndProgress", 1, 70), std::tuple("BeginRollback", 1, 80), std::tuple("BeginProgress", 2, 90),
        std::tuple("ProgressFraction", 2, kAtApplyAccount), std::tuple("AccountNumber", 4, kAtApplyAccount),
        std::tuple("ReadRecord", 1, kAtOpenRecord), std::tuple("SetFieldValue", 1, kAtApplyPairs),
        std::tuple("WriteRecord", 1, kAtLastWrite), std::tuple("EndRollback", 1, kAtLastWrite)}) {
    Record().FailOn(operation, nth, Fault());
    EXPECT_FALSE(Import("2,3,2004,100,1,5\r"));
    EXPECT_THAT(Boxes(), ElementsAre(ErrorBox(kFailed, statement))) << operation;
  }
}

// Every read of the file, one after the other, fails. A file of several blocks, so that there are some in each pass.
TEST_F(DelimitedImportTest, EveryReadThatFailsIsToldAndLosesNothing) {
  std::string bytes;
  while (bytes.size() < 100'000) bytes += "2,3,2004,100,1,1.25\r\n2,4,2004,200,2,-3\r\n";
  std::vector<Text> statements;
  bool passed = false;
  for (int n = 1; !passed; ++n) {
    SCOPED_TRACE(n);
    setup_.platform.files.FailNth(FileCall::kRead, n, FailureNumber::kDeviceError);
    passed = Import(bytes);
    setup_.platform.files.ClearFaults();
    if (passed) break;
    ASSERT_THAT(Boxes(), SizeIs(1));
    EXPECT_EQ(Boxes().front().style, kRefusalBox);
    statements.push_back(Boxes().front().text);
    EXPECT_TRUE(setup_.LeftNothingOpen());
    EXPECT_TRUE(IsRenamed());
    setup_.book().UndoLastRollback();
    EXPECT_THAT(setup_.Changed(), IsEmpty());
    TakeBackTheName();
  }
  EXPECT_THAT(statements, Contains(ErrorBox(57, kAtAuditLine).text));
  EXPECT_THAT(statements, Contains(ErrorBox(57, kAtApplyLine).text));
  EXPECT_THAT(setup_.Changed(), SizeIs(2));
}

// --- Any file against a plain model ----------------------------------------------------------------------------------

const std::vector<std::pair<Long, Text>> kAccounts = {{101, "100"}, {102, "200"}, {205, "300"}};

struct ModelLine {
  int day = 0;              // of the year 2004, 0 January 1
  std::size_t account = 0;  // index
  std::vector<std::pair<Integer, Double>> pairs;
};

std::vector<ModelLine> AnyLines() {
  std::vector<ModelLine> lines(static_cast<std::size_t>(*rc::gen::inRange(0, 30)));
  for (ModelLine& line : lines) {
    line.day = *rc::gen::inRange(0, 20);
    line.account = *rc::gen::inRange<std::size_t>(0, kAccounts.size());
    line.pairs.resize(static_cast<std::size_t>(
        *rc::gen::weightedOneOf<int>({{5, rc::gen::inRange(0, 4)}, {1, rc::gen::inRange(4, 127)}})));
    for (auto& [field, value] : line.pairs) {
      field = *rc::gen::elementOf(std::vector<Integer>{1, 2, 7});
      value = *rc::gen::elementOf(std::vector<Double>{0, 1, -1, 12.25, -0.1, 0.1, 5e-7, 1e15, 3.0000001});
    }
  }
  return lines;
}

std::string LineOf(const ModelLine& line, Integer order, bool one_field) {
  const auto between = [] { return *rc::gen::elementOf(std::vector<std::string>{",", "\t"}); };
  const auto dressed = [](const std::string& field) {
    return *rc::gen::elementOf(std::vector<std::string>{field, "\"" + field + "\"", " " + field, field + "  "});
  };
  const DateParts date = PartsOf(DateFromParts(2004, 1, 1) + line.day);
  const std::string year = *rc::gen::elementOf(std::vector<std::string>{"2004", "4", "04"});
  const std::string month = std::to_string(date.month);
  const std::string day = std::to_string(date.day);
  std::vector<std::string> parts = {year, month, day};
  if (order == kMonthDayYear) parts = {month, day, year};
  if (order == kDayMonthYear) parts = {day, month, year};
  const auto separator = [&] {
    return one_field ? *rc::gen::elementOf(std::vector<std::string>{"/", ".", " "}) : between();
  };
  std::string text = parts[0] + separator() + parts[1] + separator() + parts[2] + between();
  text += dressed(kAccounts[line.account].second);
  for (const auto& [field, value] : line.pairs) {
    text += between() + dressed(std::to_string(field)) + between() + dressed(ArgumentText(value));
  }
  return text;
}

RC_GTEST_FIXTURE_PROP(DelimitedImportTest, AppliesWhatAPlainModelSays, ()) {
  const Integer level = *rc::gen::elementOf(std::vector<Integer>{kDayLevel, kWeekLevel, kPeriodLevel});
  const int math = *rc::gen::inRange(1, 4);
  const Integer order = *rc::gen::inRange<Integer>(0, 4);
  const bool one_field = *rc::gen::arbitrary<bool>();
  const std::vector<ModelLine> lines = AnyLines();
  std::string bytes;
  for (const ModelLine& line : lines) {
    bytes += LineOf(line, order, one_field) + *rc::gen::elementOf(std::vector<std::string>{"\r", "\r\n", "\r\r"});
  }
  RC_LOG() << bytes;

  TextImportSetup setup(ShapeOfLevel(level));
  setup.platform.memory.Put(kPath, bytes);
  for (int day = 0; day < 20; day += 3) setup.book().Set(101, DateFromParts(2004, 1, 1) + day, 1, day - 0.1);
  MemoryMasterfile::FigureMap model = setup.book().Figures();
  const MemoryMasterfile::FigureMap before = model;
  for (const ModelLine& line : lines) {
    const Date date = setup.book().FiscalCalendar().LevelDate(DateFromParts(2004, 1, 1) + line.day, level);
    for (const auto& [field, value] : line.pairs) {
      Double& figure = model[{kAccounts[line.account].first, date, field}];
      figure = math == 1 ? figure + value : math == 2 ? figure - value : value;
    }
  }
  std::erase_if(model, [](const auto& entry) { return entry.second == 0; });

  setup.platform.boxes.Answer({kOk});
  const DelimitedImportRequest request{.file_name = kPath,
                                       .math = static_cast<eMath>(math),
                                       .date_order = order,
                                       .date_fields = static_cast<Integer>(one_field),
                                       .can_import_system_fields = true};
  RC_ASSERT(ImportDelimited(setup.book(), request, setup.tally));
  RC_ASSERT(setup.Boxes().size() == 2U);
  RC_ASSERT(setup.Boxes().back() == RecordsRead(static_cast<int>(lines.size()) + 1));
  RC_ASSERT(setup.book().Figures() == model);
  RC_ASSERT(setup.platform.memory.Has(kBackup));
  RC_ASSERT(setup.book().UndoLastRollback());
  RC_ASSERT(setup.book().Figures() == before);
}

// A wrong code or datafield anywhere: asked about, and nothing is applied.
RC_GTEST_FIXTURE_PROP(DelimitedImportTest, AppliesNothingOfAFileWithAnError, ()) {
  const std::string wrong =
      *rc::gen::elementOf(std::vector<std::string>{"2,3,2004,nobody,1,5", "2,3,2004,100,3,5", "2,3,2010,100,1,5"});
  const std::vector<ModelLine> lines = AnyLines();
  const auto place = *rc::gen::inRange<std::size_t>(0, lines.size() + 1);
  std::string bytes;
  for (std::size_t i = 0; i <= lines.size(); ++i) {
    if (i == place) bytes += wrong + "\r\n";
    if (i < lines.size()) bytes += LineOf(lines[i], kMonthDayYear, false) + "\r\n";
  }
  RC_LOG() << bytes;
  TextImportSetup setup;
  setup.platform.memory.Put(kPath, bytes);
  setup.platform.boxes.Answer({kOk, kYes});
  const DelimitedImportRequest request{.file_name = kPath, .math = eMath::mAdd, .can_import_system_fields = true};
  RC_ASSERT(!ImportDelimited(setup.book(), request, setup.tally));
  RC_ASSERT(setup.Boxes().size() == 2U);
  RC_ASSERT(setup.Boxes().back().style == kAuditBox);
  RC_ASSERT(setup.Changed().empty());
  RC_ASSERT(setup.platform.memory.Has(kPath));
}

}  // namespace
}  // namespace tallybook::testing
