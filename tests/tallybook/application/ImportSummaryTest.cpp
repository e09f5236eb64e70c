#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "base/Dates.h"
#include "tallybook/application/ImportSummary.h"
#include "tests/tallybook/application/Office.h"

namespace tallybook::application {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

QDXFileImport WholeFile(const Text& name) {
  QDXFileImport file;
  file.file = name;
  file.done = true;
  file.begun = true;
  file.stored = true;
  file.accounts = {1, 2};
  file.fields = {5};
  file.dates = {DateFromParts(2003, 1, 31)};
  file.applied = 1234;
  file.not_mapped = 4;
  file.body_end = BodyEnd::kMarked;
  file.body_end_at = 5678;
  file.first_date = DateFromParts(2003, 1, 1);
  file.last_date = DateFromParts(2003, 12, 31);
  return file;
}

QDXImportRecord RecordOf(const std::vector<QDXFileImport>& files) {
  QDXImportRecord record;
  record.definitions.push_back({.title = "North", .pattern = "*.QDX", .files = files});
  return record;
}

std::vector<Text> Lines(const QDXImportRecord& record) {
  std::vector<Text> lines;
  for (const ImportNote& note : NotesOf(record)) lines.push_back((note.warning ? "! " : "") + note.text);
  return lines;
}

TEST(ImportSummaryTest, TellsWhatAFileBrought) {
  EXPECT_THAT(Lines(RecordOf({WholeFile("year.QDX")})),
              ElementsAre("Imported year.QDX: 2 accounts, 1 field, 1 date; 1,234 figures applied, 4 not mapped."));
}

TEST(ImportSummaryTest, TellsTheSumOfSeveralFilesByWhatTheyTouchedTogether) {
  QDXFileImport second = WholeFile("b.QDX");
  second.accounts = {2, 3};
  second.applied = 1;
  EXPECT_THAT(Lines(RecordOf({WholeFile("a.QDX"), second})),
              ElementsAre(::testing::StartsWith("Imported a.QDX: "), ::testing::StartsWith("Imported b.QDX: "),
                          "Imported 2 files: 3 accounts, 1 field, 1 date; 1,235 figures applied, 8 not mapped."));
}

TEST(ImportSummaryTest, AFileThatEndsEarlyIsTold) {
  QDXFileImport file = WholeFile("cut.QDX");
  file.body_end = BodyEnd::kCut;
  EXPECT_THAT(
      Lines(RecordOf({file})),
      ElementsAre(::testing::StartsWith("Imported cut.QDX: "),
                  "! cut.QDX: the file ends early, at byte 5,678; its header tells of 2003-01-01 to 2003-12-31, "
                  "and what was there is imported"));
}

TEST(ImportSummaryTest, WhatWasPassedOverIsTold) {
  QDXFileImport file = WholeFile("odd.QDX");
  file.body_end = BodyEnd::kStray;
  EXPECT_THAT(Lines(RecordOf({file})),
              ElementsAre(::testing::StartsWith("Imported odd.QDX: "),
                          "! odd.QDX: what stands behind byte 5,678 was not read: no account of its table does"));
}

TEST(ImportSummaryTest, AFileThatKeepsItsNameIsToldWithTheReason) {
  QDXFileImport file = WholeFile("year.QDX");
  file.stays = StopReason{.words = "Cannot rename \"year.QDX\": Permission denied"};
  EXPECT_THAT(Lines(RecordOf({file})), ElementsAre(::testing::StartsWith("Imported year.QDX: "),
                                                   "! year.QDX keeps its name, and can be imported once more: "
                                                   "Cannot rename \"year.QDX\": Permission denied"));
}

TEST(ImportSummaryTest, WhatBecameOfEachFileIsToldWhereSomeAreImportedAndOthersNot) {
  QDXFileImport half = WholeFile("b.QDX");
  half.stored = half.done = false;
  QDXFileImport refused = half;
  refused.file = "c.QDX";
  refused.begun = false;
  QDXImportRecord record = RecordOf({WholeFile("a.QDX"), half});
  record.definitions[0].not_begun = {"d.QDX", "e.QDX"};
  EXPECT_THAT(Lines(record), ElementsAre(::testing::StartsWith("Imported a.QDX: "),
                                         "! of 4 files, imported: a.QDX; ended half way: b.QDX; "
                                         "not looked at: d.QDX, e.QDX"));
  record.definitions.push_back({.title = "South", .pattern = "c.QDX", .files = {refused}});
  EXPECT_THAT(Lines(record), ElementsAre(::testing::StartsWith("Imported a.QDX: "),
                                         "! of 5 files, imported: a.QDX (North); ended half way: b.QDX (North); "
                                         "not looked at: d.QDX (North), e.QDX (North); not imported: c.QDX (South)"));
  EXPECT_THAT(Lines(RecordOf({half})), IsEmpty()) << "the reason says it all";
}

TEST(ImportSummaryTest, ARunIsStoredWhereEachFileOfEachDefinitionIs) {
  QDXFileImport half = WholeFile("b.QDX");
  half.stored = half.done = false;
  QDXImportRecord record = RecordOf({WholeFile("a.QDX")});
  record.definitions[0].stop = StopReason{.words = "the report is full"};
  EXPECT_TRUE(IsStored(record, 1));
  EXPECT_FALSE(IsStored(record, 2)) << "a definition has not been run";
  record.definitions.push_back({.title = "None", .pattern = "none.QDX"});
  EXPECT_TRUE(IsStored(record, 2)) << "where there is no file there is nothing to store";
  record.definitions[0].not_begun = {"c.QDX"};
  EXPECT_FALSE(IsStored(record, 2));
  EXPECT_FALSE(IsStored(RecordOf({WholeFile("a.QDX"), half}), 1));
  EXPECT_FALSE(IsStored(RecordOf({}), 1)) << "nothing is stored";
  EXPECT_FALSE(IsStored({}, 0));
}

TEST(ImportSummaryTest, ZeroingAloneHasCountsOfItsOwn) {
  QDXFileImport file = WholeFile("year.QDX");
  file.applied = file.not_mapped = 0;
  file.zeroed = 48;
  file.body_end = BodyEnd::kUnread;
  EXPECT_THAT(Lines(RecordOf({file})), ElementsAre("Zeroed the range of year.QDX: 48 figures."));
}

TEST(ImportSummaryTest, ADefinitionWithoutFilesIsTold) {
  const QDXImportRecord record = RecordOf({});
  EXPECT_THAT(Lines(record), ElementsAre("! no file for the definition \"North\": none matches *.QDX"));
  EXPECT_TRUE(LacksFiles(record));
  EXPECT_FALSE(LacksFiles(RecordOf({WholeFile("year.QDX")})));
}

TEST(ImportSummaryTest, OfATextFileTheDatesAreThoseOfRecords) {
  testing::Office office;  // of months
  TextImportTally tally;
  tally.records = 3;
  tally.accounts = {101, 205};
  tally.fields = {1};
  tally.dates = {DateFromParts(2003, 1, 5), DateFromParts(2003, 1, 6), DateFromParts(2003, 2, 1)};
  EXPECT_EQ(AppliedText("day.csv", tally, *office.book), "Imported day.csv: 3 records, 2 accounts, 1 field, 2 dates.");
}

TEST(ImportSummaryTest, AFileThatStoppedTheRunIsNoImport) {
  QDXFileImport half = WholeFile("half.QDX");
  half.stored = half.done = false;
  QDXImportRecord record = RecordOf({half});
  record.definitions[0].stop = StopReason{.file = "half.QDX", .words = "broken"};
  record.stop = StopReason{.words = "the batch, too"};
  EXPECT_THAT(Lines(record), IsEmpty());
  const auto stops = StopsOf(record);
  ASSERT_EQ(stops.size(), 2U);
  EXPECT_EQ(stops[0].words, "broken");
  EXPECT_EQ(stops[1].words, "the batch, too");
}

}  // namespace
}  // namespace tallybook::application
