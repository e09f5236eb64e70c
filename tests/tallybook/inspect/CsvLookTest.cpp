#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <optional>

#include "tallybook/inspect/CsvLook.h"
#include "tests/import/TextImportSetup.h"
#include "tests/support/FailsWith.h"
#include "tests/tallybook/inspect/CsvFieldsIn.h"
#include "tests/tallybook/inspect/Findings.h"

namespace tallybook::inspect {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

const Text kPath = "/in/figures.csv";
const std::string kHead = "2,3,2004,1,1\r\n";

class CsvLookTest : public ::testing::Test {
 protected:
  explicit CsvLookTest(Integer level = kDayLevel) : setup_(testing::ShapeOfLevel(level)) {}

  const std::vector<Finding>& Look(const std::string& bytes) {
    list_.emplace();
    setup_.platform.memory.Put(kPath, bytes);
    tally_ = LookAtCsv(setup_.book(), request_, *list_);
    EXPECT_EQ(FieldsIn(list_->whole), FieldsIn(bytes)) << "the pieces make up the file";
    EXPECT_EQ(tally_.All(), static_cast<long long>(list_->findings.size()));
    return list_->findings;
  }
  // "line column_name text effect: reason" of each.
  std::vector<Text> Words(const std::string& bytes) {
    std::vector<Text> words;
    for (const Finding& finding : Look(bytes)) {
      words.push_back(std::to_string(finding.line) + " " + finding.column_name + " \"" + finding.text + "\" " +
                      WordOf(finding.effect) + ": " + finding.reason);
    }
    return words;
  }

  std::vector<std::string> FieldsIn(const std::string& bytes) { return testing::FieldsIn(setup_, bytes); }

  testing::TextImportSetup setup_;
  CsvLookRequest request_{.file = kPath};
  std::optional<testing::FindingList> list_;
  LookTally tally_;
};

class PeriodCsvLookTest : public CsvLookTest {
 protected:
  PeriodCsvLookTest() : CsvLookTest(kPeriodLevel) {}
};

TEST_F(CsvLookTest, ASoundFileHasNoFindingsAndIsSoundAsAWhole) {
  const std::string file = kHead + "100,1,12.5\r\n200,2,-3\r\n,0,0,2,4,2004\r\n100,1,7";
  EXPECT_THAT(Look(file), IsEmpty());
  EXPECT_EQ(tally_.records, 3);
  EXPECT_EQ(list_->sound, file);
  EXPECT_EQ(list_->rejects, kHead);
  EXPECT_THAT(setup_.Changed(), IsEmpty());
}

TEST_F(CsvLookTest, AFindingTellsWhereItIsAndWhatWouldMendIt) {
  Look(kHead + "100,1,5\r\n200,2,\"1.234,50\"\r\n");
  EXPECT_THAT(list_->findings,
              ElementsAre(Finding{3, 2, 3, "value", "1.234,50", Effect::kSilent,
                                  "is read as 1.234: what stands behind the number is passed over", "write 1234.50"}));
  EXPECT_EQ(list_->rejects, kHead + "200,2,\"1.234,50\"\r\n");
  EXPECT_EQ(list_->sound, kHead + "100,1,5\r\n");
}

TEST_F(CsvLookTest, WhatTheAuditAsksAboutIsFound) {
  EXPECT_THAT(
      Words(kHead + "999,1,5\r\n100,77,5\r\n100,0,5\r\n,0,0,1,1,2007\r\n"),
      ElementsAre("2 account \"999\" audit: is no account code of the book",
                  "3 field \"77\" audit: is no field number of the book",
                  "4 field \"0\" audit: is no field number of the book",
                  "5 year \"2007\" audit: 2007-01-01 is no date of the book, which has 2003-01-01 to 2005-12-31"));
  EXPECT_THAT(Words("2,3,2004,1,0\r\n999,1,5\r\n"),
              ElementsAre("2 account \"999\" audit: is no account number of the book"));
}

TEST_F(CsvLookTest, WhatEndsTheImportIsFound) {
  EXPECT_THAT(Words(kHead + "100,1,1e999\r\n100,9999999999,1\r\n"),
              ElementsAre("2 value \"1e999\" stop: is too large for a number",
                          "3 field \"9999999999\" stop: is beyond -2147483648 to 2147483647"));
  setup_.book().AddAccount(301, "NORTH YARD");
  EXPECT_THAT(
      Words(kHead + "north yards,1,5\r\n"),
      ElementsAre("2 account \"north yards\" stop: has more than 10 characters, which the audit cuts off and the "
                  "import ends at"));
}

TEST_F(CsvLookTest, AHeaderThatTheImportRefusesIsFound) {
  EXPECT_THAT(Words("2,3,2004"), ElementsAre("1  \"\" stop: the file ends within its header"));
  EXPECT_THAT(Words(""), ElementsAre("1  \"\" stop: the file ends within its header"));
  EXPECT_THAT(Words("2,3,2004,4,1\r\n"),
              ElementsAre("1 math \"4\" stop: is none of 1 (add), 2 (subtract) and 3 (replace)"));
  EXPECT_THAT(Words("-1,3,2004,1,1\r\n"),
              ElementsAre("1 month \"-1\" stop: says that the file is of periods, and the book is not"));
  EXPECT_THAT(
      Words("2,3,2010,1,1\r\n"),
      ElementsAre("1 year \"2010\" stop: 2010-02-03 is no date of the book, which has 2003-01-01 to 2005-12-31"));
  EXPECT_THAT(Words("2,99999,2004,1,1\r\n"), ElementsAre("1 day \"99999\" stop: is beyond -32768 to 32767"));
}

TEST_F(CsvLookTest, TheHeadersMathDoesNotCountWhereItIsSaid) {
  request_.math = eMath::mReplace;
  EXPECT_THAT(Words("2,3,2004,9,1\r\n"), IsEmpty());
}

TEST_F(PeriodCsvLookTest, APeriodMustBeOneOfTheYear) {
  EXPECT_THAT(Words("-1,12,2004,1,1\r\n100,1,5\r\n"), IsEmpty());
  EXPECT_THAT(Words("-1,13,2004,1,1\r\n"), ElementsAre("1 day \"13\" stop: is none of the 12 periods of a year"));
}

TEST_F(PeriodCsvLookTest, TheYearOfAPeriodThatTheAuditAsksAboutIsFound) {
  EXPECT_THAT(Words("-1,1,2004,1,1\r\n,0,0,-1,2,2004\r\n100,1,5\r\n"), IsEmpty());
  EXPECT_THAT(Words("-1,1,2004,1,1\r\n,0,0,-1,2,2003\r\n"),
              ElementsAre("2 year \"2003\" audit: is the year of a period, which the audit asks about"));
}

TEST_F(PeriodCsvLookTest, APeriodsNumberThatMakesNoDateOfTheBookIsFound) {
  const std::string file = "-1,1,2004,1,1\r\n,0,0,-1,30,2004\r\n100,1,5\r\n";
  EXPECT_THAT(Words(file),
              ElementsAre("2 day \"30\" stop: is a period's number that makes no date of the book: the import "
                          "ends at its first record"));
  setup_.platform.boxes.Answer({kOk});
  EXPECT_FALSE(ImportCSV(setup_.book(), {.file_name = kPath, .no_prompts = true}, setup_.tally));
}

TEST_F(CsvLookTest, YearsBeyondAllThatCanBeWrittenAreTold) {
  EXPECT_THAT(Words(kHead + ",0,0,32767,1,32767\r\n"),
              ElementsAre("2 year \"32767\" audit: 32767-32767-1 is no date of the book, which has 2003-01-01 to "
                          "2005-12-31"));
}

TEST_F(CsvLookTest, ADateInNoCalendarIsTold) {
  EXPECT_THAT(Words(kHead + ",0,0,2,30,2004\r\n100,1,5\r\n"),
              ElementsAre("2 year \"2004\" silent: 2004-2-30 is in no calendar and is read as 2004-03-01"));
  EXPECT_EQ(list_->rejects, kHead + ",0,0,2,30,2004\r\n100,1,5\r\n") << "a record goes with its date";
}

TEST_F(CsvLookTest, NumbersThatAChangeOfTheDateHasNoUseForMustFit) {
  EXPECT_THAT(Words(kHead + ",99999999999,1e999,2,4,2004\r\n100,1,5\r\n"),
              ElementsAre("2 field \"99999999999\" stop: is beyond -2147483648 to 2147483647",
                          "2 value \"1e999\" stop: is too large for a number"));
  EXPECT_THAT(Words("2,3,2004,1,1,100,99999999999"),
              ElementsAre("1  \"100\" silent: begins a record that the file ends in, and that is dropped",
                          "1 field \"99999999999\" stop: is beyond -2147483648 to 2147483647"));
  EXPECT_THAT(Words(kHead + ",x,y,2,4,2004\r\n100,1,5\r\n"), IsEmpty());
}

TEST_F(CsvLookTest, ANumberThatMayHaveNoSumIsToldWhereFiguresAreAdded) {
  const Text words =
      "2 value \"-1e308\" silent: is so large that its sum with another may be no number, which ends "
      "the import";
  EXPECT_THAT(Words(kHead + "100,1,-1e308\r\n100,2,8e307\r\n"), ElementsAre(words));
  request_.math = eMath::mReplace;
  EXPECT_THAT(Words(kHead + "100,1,-1e308\r\n"), IsEmpty());
}

TEST_F(CsvLookTest, TheSameFigureTwiceIsToldWithWhatBecomesOfIt) {
  EXPECT_THAT(Words(kHead + "100,1,5\r\n100,1,6\r\n"),
              ElementsAre("3  \"100, 2004-02-03, 1\" silent: the file names this figure before: both are added"));
  request_.math = eMath::mReplace;
  EXPECT_THAT(
      Words(kHead + "100,1,5\r\n100,1,6\r\n"),
      ElementsAre("3  \"100, 2004-02-03, 1\" silent: the file names this figure before: only the last one counts"));
  EXPECT_THAT(Words(kHead + "100,1,5\r\n100,2,5\r\n200,1,5\r\n,0,0,2,4,2004\r\n100,1,6\r\n"), IsEmpty());
}

TEST_F(PeriodCsvLookTest, TwoDaysOfAPeriodAreTheSameFigure) {
  EXPECT_THAT(Words(kHead + "100,1,5\r\n,0,0,2,20,2004\r\n100,1,6\r\n"), SizeIs(1));
}

TEST_F(CsvLookTest, ALineOfMoreOrFewerFieldsIsPassedOverAndTheNextLookedAt) {
  EXPECT_THAT(
      Words(kHead + "100,1,1,5\r\n100,1\r\n999,1,5\r\n200,1,5\r\n"),
      ElementsAre("2  \"100,1,1,5\" silent: has 4 fields where a record has 3: to the import, all that follows moves",
                  "3  \"100,1\" silent: has 2 fields where a record has 3: to the import, all that follows moves",
                  "4 account \"999\" audit: is no account code of the book"));
}

TEST_F(CsvLookTest, AnEmptyLineMovesAllThatFollowsButNotAtTheEnd) {
  EXPECT_THAT(
      Words(kHead + "100,1,5\r\n\r\n\r\n200,1,5\r\n"),
      ElementsAre("3  \"\" silent: is an empty line, which counts as an empty field and moves all that follows"));
  EXPECT_THAT(Words(kHead + "100,1,5\r\n\r\n\r\n\r\n"), IsEmpty());
  EXPECT_THAT(Words(kHead + "100,1,5\r\n\r\n\r\n\r\n\r\n"), SizeIs(1));
}

TEST_F(CsvLookTest, AFileThatIsNotOfLinesIsReadAsOneRunOfFields) {
  EXPECT_THAT(Words("2\n3\n2004\n1,1\n100\n1\n5,200,1,6,300\r1\r7"), IsEmpty());
  EXPECT_EQ(tally_.records, 3);
  EXPECT_THAT(Words("2,3,2004,1,1,100,1,5,999,1,6\n"),
              ElementsAre("1 account \"999\" audit: is no account code of the book"));
  EXPECT_THAT(Words("2,3,2004,1,1,100,1,5,200,1"),
              ElementsAre("1  \"200\" silent: begins a record that the file ends in, and that is dropped"));
}

TEST_F(CsvLookTest, ThePartsOfARunOfFieldsAreFilesOfLines) {
  Look(kHead + "100,1,5,999,1,5\r\n300\r\n1,5,,0,0,2\r\n4,2004,100,2,7,");
  EXPECT_EQ(list_->sound, kHead + "100,1,5\r\n300,1,5\r\n,0,0,2,4,2004\r\n100,2,7\r\n");
  EXPECT_EQ(list_->rejects, kHead + "999,1,5\r\n");
  const std::string sound = list_->sound;
  EXPECT_THAT(Words(sound), IsEmpty());
}

TEST_F(CsvLookTest, WhatALineOfARunLacksIsNotMendedInItsPart) {
  Look("2,3,2004,1,1,100,1,5,\"200\"x,1,");
  EXPECT_EQ(list_->sound, "2,3,2004,1,1\r\n100,1,5\r\n");
  EXPECT_EQ(list_->rejects, "2,3,2004,1,1\r\n\"200\"x,1\r\n");
}

TEST_F(CsvLookTest, ALineThatHoldsSeveralRecordsShowsThatLinesMeanNothing) {
  EXPECT_THAT(Words(kHead + "100,1,5,200,1,5\r\n"), IsEmpty());
  EXPECT_EQ(tally_.records, 2);
  EXPECT_THAT(Words(kHead + "300,1,5\r\n100,1,5,200,1,5\r\n300,2,5\r\n"), IsEmpty());
  EXPECT_EQ(tally_.records, 4);
}

TEST_F(CsvLookTest, ADateMayStandBehindItsRecordOrOnALineOfItsOwn) {
  EXPECT_THAT(Words(kHead + ",0,0\r\n2,4,2004\r\n100,1,5\r\n"), IsEmpty());
  EXPECT_THAT(Words("2,3,2004,1,0\r\n0,0,0,2,4,2004\r\n101,1,5\r\n"), IsEmpty());
  EXPECT_THAT(Words("2,3,2004,1,1,,0,0,2,4"),
              ElementsAre("1  \"\" stop: changes the date, and the file ends before the date does"));
}

TEST_F(CsvLookTest, ATextThatStandsForAnAccountNumberIsNoChangeOfTheDate) {
  EXPECT_THAT(
      Words("2,3,2004,1,0\r\nA7,1,5\r\n101,1,5\r\n"),
      ElementsAre("2 account \"A7\" silent: is read as 0: it does not begin with a number",
                  "2 account \"A7\" silent: is read as a change of the date: the file tells of accounts by number"));
  EXPECT_EQ(list_->sound, "2,3,2004,1,0\r\n101,1,5\r\n");
}

TEST_F(CsvLookTest, AnOpenQuoteIsToldOnce) {
  EXPECT_THAT(
      Words(kHead + "100,1,5\r\n\"200,1,5\r\n300,1,5\r\n"),
      ElementsAre(
          "3  \"200,1,5\r\n300,1,5\r\n\" silent: begins with a quote that is never closed: all behind it is one "
          "text"));
}

TEST_F(CsvLookTest, TextBehindAClosingQuoteIsTold) {
  EXPECT_THAT(
      Words(kHead + "\"100\"x,1,5\r\n200,1,5\r\n300,1,5\r\n"),
      ElementsAre("2  \"100\" silent: is followed by more than a separator, which counts as a field of its own",
                  "2  \"\"100\"x,1,5\" silent: has 4 fields where a record has 3: to the import, all that follows "
                  "moves"));
}

TEST_F(CsvLookTest, AFileThatIsMissingIsToldWithItsPath) {
  testing::FindingList list;
  EXPECT_THAT([&] { LookAtCsv(setup_.book(), request_, list); },
              testing::FailsWith(FailureNumber::kFileNotFound, kPath));
}

}  // namespace
}  // namespace tallybook::inspect
