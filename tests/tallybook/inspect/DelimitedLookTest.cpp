#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <optional>

#include "tallybook/inspect/DelimitedLook.h"
#include "tests/import/TextImportSetup.h"
#include "tests/tallybook/inspect/Findings.h"

namespace tallybook::inspect {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

const Text kPath = "/in/daily.txt";

class DelimitedLookTest : public ::testing::Test {
 protected:
  const std::vector<Finding>& Look(const std::string& bytes) {
    list_.emplace();
    setup_.platform.memory.Put(kPath, bytes);
    tally_ = LookAtDelimited(setup_.book(), request_, *list_);
    EXPECT_EQ(tally_.All(), static_cast<long long>(list_->findings.size()));
    return list_->findings;
  }
  std::vector<Text> Words(const std::string& bytes) {
    std::vector<Text> words;
    for (const Finding& finding : Look(bytes)) {
      words.push_back(std::to_string(finding.line) + " " + std::to_string(finding.column) + " " + finding.column_name +
                      " \"" + finding.text + "\" " + WordOf(finding.effect) + ": " + finding.reason);
    }
    return words;
  }

  testing::TextImportSetup setup_;
  DelimitedLookRequest request_{.file = kPath};
  std::optional<testing::FindingList> list_;
  LookTally tally_;
};

TEST_F(DelimitedLookTest, ASoundFileHasNoFindings) {
  const std::string file = "02/03/2004,100,1,5,2,6\r\n02/03/2004\t\"200\"\t1\t5\r\n02.04.2004,300,1,5";
  EXPECT_THAT(Look(file), IsEmpty());
  EXPECT_EQ(tally_.records, 3);
  EXPECT_EQ(list_->sound, file);
  EXPECT_EQ(list_->rejects, "");
  EXPECT_THAT(setup_.Changed(), IsEmpty());
}

TEST_F(DelimitedLookTest, ALineWithFindingsIsWrittenBackAsItStands) {
  Look("02/03/2004,100,1,5\r\n02/03/2004,999,1,\"5\"\r\n02/03/2004,200,1,5\r\n");
  EXPECT_THAT(list_->findings,
              ElementsAre(Finding{2, 2, 2, "account", "999", Effect::kAudit, "is no account code of the book", ""}));
  EXPECT_EQ(list_->rejects, "02/03/2004,999,1,\"5\"\r\n");
  EXPECT_EQ(list_->sound, "02/03/2004,100,1,5\r\n02/03/2004,200,1,5\r\n");
}

TEST_F(DelimitedLookTest, WhatTheAuditAsksAboutIsFound) {
  EXPECT_THAT(
      Words("02/03/2007,100,1,5\r\n02/03/2004,100,77,5,7,1\r\n"),
      ElementsAre(
          "1 1 date \"02/03/2007\" audit: 2007-02-03 is no date of the book, which has 2003-01-01 to 2005-12-31",
          "2 3 field \"77\" audit: is no field number of the book",
          "2 5 field \"7\" audit: is a field that the system keeps by itself"));
  request_.system_fields = true;
  EXPECT_THAT(Words("02/03/2004,100,7,1\r\n"), IsEmpty());
}

TEST_F(DelimitedLookTest, WhatEndsTheSecondPassIsFound) {
  EXPECT_THAT(
      Words("02/03/2004,100,1,5x\r\n02/03/2004,100,x,5\r\n02/03/2004,100,0,5\r\n02/03/2004,100,,5\r\n"),
      ElementsAre("1 4 value \"5x\" stop: \"5x\" is not a number", "2 3 field \"x\" stop: \"x\" is not a number",
                  "3 3 field \"0\" stop: is no field number: they count from 1",
                  "4 3 field \"\" stop: \"\" is not a number"));
}

TEST_F(DelimitedLookTest, ADecimalCommaInQuotesIsToldWithItsMending) {
  Look("02/03/2004,100,1,\"1.234,50\"\r\n");
  ASSERT_THAT(list_->findings, SizeIs(1));
  EXPECT_EQ(list_->findings[0].effect, Effect::kStop);
  EXPECT_EQ(list_->findings[0].help, "write 1234.50");
}

TEST_F(DelimitedLookTest, PairsThatTheSecondPassDropsAreTold) {
  EXPECT_THAT(
      Words("02/03/2004,100,1,,2,5\r\n02/03/2004,100,1,5,2\r\n02/04/2004,100,1,5,,,2,5\r\n"),
      ElementsAre("1 4 value \"1\" silent: has no value, and ends the line's pairs: 1 pair behind it is dropped",
                  "2 6 value \"2\" silent: has no value, and is passed over",
                  "3 5 field \"\" silent: an empty pair ends the line's pairs: 1 pair behind it is dropped"));
}

TEST_F(DelimitedLookTest, ACommentThatTheImportReadsIsTold) {
  EXPECT_THAT(
      Words("02/03/2004,100,1,5;note\r\n02/04/2004,100,1,5,;note,more\r\n"),
      ElementsAre(
          "1 3 field \"1,5;note\" stop: is broken by a comment: the audit ends at a semicolon, and the import "
          "reads on",
          "2 5 field \";note,more\" stop: is broken by a comment: the audit ends at a semicolon, and the import "
          "reads on"));
  EXPECT_THAT(Words("02/03/2004,100,1,5,;note\r\n"), IsEmpty()) << "nothing stands behind it";
}

TEST_F(DelimitedLookTest, ALineWithSemicolonsForCommasIsToldWhatTheyDo) {
  Look("02/03/2004;100;1;5\r\n");
  EXPECT_THAT(
      list_->findings,
      ElementsAre(Finding{1, 1, 2, "account", "", Effect::kAudit, "is no account code of the book",
                          "write commas between the fields: a semicolon begins a comment, which ends the line"}));
}

TEST_F(DelimitedLookTest, ANumberThatMayHaveNoSumIsToldWhereFiguresAreAdded) {
  EXPECT_THAT(Words("02/03/2004,100,1,1e308\r\n"),
              ElementsAre("1 4 value \"1e308\" silent: is so large that its sum with another may be no number, which "
                          "ends the import"));
  request_.math = eMath::mReplace;
  EXPECT_THAT(Words("02/03/2004,100,1,1e308\r\n"), IsEmpty());
}

TEST_F(DelimitedLookTest, ALineWithoutTextIsARecordWithoutADate) {
  EXPECT_THAT(
      Words("02/03/2004,100,1,5\r;note\r  ,\r"),
      ElementsAre(
          "2 0  \";note\" stop: is a comment, which the audit passes over and the import takes for a record "
          "without a date",
          "3 0  \"  ,\" stop: has no text, which the audit passes over and the import takes for a record without "
          "a date"));
  EXPECT_THAT(Words("02/03/2004,100,1,5\r\n;note\r\n\r\n02/03/2004,200,1,5\r\n"),
              ElementsAre("2 0  \";note\" audit: is a comment, which counts as a record without a date",
                          "3 0  \"\" audit: has no text, which counts as a record without a date"));
}

TEST_F(DelimitedLookTest, ADateThatIsCutOrInNoCalendarIsTold) {
  EXPECT_THAT(
      Words("02/31/2004,100,1,5\r\n02/03/2004 12:00,100,1,5\r\n02-03-2004,100,1,5\r\n"),
      ElementsAre("1 1 date \"02/31/2004\" silent: 2004-2-31 is in no calendar and is read as 2004-03-02",
                  "2 1 date \"02/03/2004 12:00\" silent: has more than three parts; the rest is passed over",
                  "3 1 date \"02-03-2004\" silent: is read as 2: what stands behind the number is passed over",
                  "3 1 date \"02-03-2004\" audit: 2000-2-0, read as 2000-01-31, is no date of the book, which has "
                  "2003-01-01 to 2005-12-31"));
}

TEST_F(DelimitedLookTest, ADateInThreeFieldsHasItsOrder) {
  request_.form.date_in_one_field = false;
  request_.date_order = kYearMonthDay;
  EXPECT_THAT(Words("2004,2,3,100,1,5\r\n"), IsEmpty());
  EXPECT_THAT(Words("2004,13,3,100,1,5\r\n2004,x,3,200,1,5\r\n"),
              ElementsAre("1 1 date \"2004,13,3\" silent: 2004-13-3 is in no calendar and is read as 2005-01-03",
                          "2 2 date \"2004,x,3\" silent: is read as 0: it does not begin with a number",
                          "2 1 date \"2004,x,3\" silent: 2004-0-3 is in no calendar and is read as 2003-12-03"));
}

TEST_F(DelimitedLookTest, AMonthOfMinusOneMarksAPeriod) {
  EXPECT_THAT(Words("-1/2/2004,100,1,5\r\n"), IsEmpty());
}

TEST_F(DelimitedLookTest, TheSameFigureTwiceIsTold) {
  EXPECT_THAT(Words("02/03/2004,100,1,5,1,6\r\n"),
              ElementsAre("1 5 field \"2004-02-03, 1\" silent: the file names this figure before: both are added"));
}

TEST_F(DelimitedLookTest, AnOpenQuoteIsTold) {
  EXPECT_THAT(
      Words("02/03/2004,100,1,5,2,\"6\r\n"),
      ElementsAre(
          "1 0  \"02/03/2004,100,1,5,2,\"6\" silent: has a quote that is never closed: separators behind it are "
          "text"));
}

TEST_F(DelimitedLookTest, WhatStandsBehindTheLastFieldIsTold) {
  std::string line = "02/03/2004,100";
  for (int i = 0; i < 126; ++i) line += ",1,5";
  EXPECT_THAT(Look(line + ",1,5\r"), SizeIs(126)) << "256 fields, 126 of them named before";
  const auto& findings = Look(line + ",1,5,1,5\r");
  ASSERT_FALSE(findings.empty());
  EXPECT_EQ(findings.front().reason, "has more than 256 fields; the rest is dropped");
}

TEST_F(DelimitedLookTest, LineFeedsAloneAreOneFindingUnlessTheyAreRead) {
  EXPECT_THAT(Words("02/03/2004,100,1,5\n02/03/2004,999,1,5\n"),
              ElementsAre("1 0  \"\" stop: lines end in LF; wanted are CR or CR LF"));
  request_.form.any_line_end = true;
  EXPECT_THAT(Words("02/03/2004,100,1,5\n\n02/03/2004,999,1,5\r\n\r\n02/03/2004,998,1,5\n"),
              ElementsAre("3 2 account \"999\" audit: is no account code of the book",
                          "5 2 account \"998\" audit: is no account code of the book"));
  EXPECT_EQ(list_->rejects, "02/03/2004,999,1,5\r\n02/03/2004,998,1,5\n");
}

TEST_F(DelimitedLookTest, AnEmptyFileHasNothingToFind) {
  EXPECT_THAT(Look(""), IsEmpty());
  EXPECT_EQ(tally_.records, 0);
}

}  // namespace
}  // namespace tallybook::inspect
