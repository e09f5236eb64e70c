#include <algorithm>
#include <cstdlib>
#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>

#include "import/QDXImport.h"
#include "tests/import/ImportSetup.h"

namespace tallybook::testing {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;

const Text kRefused = "Could not import the QDX file because of the errors displayed.";
const Text kBadDates =
    "Dates in the QDX file are not valid for this Tallybook Masterfile.  "
    "Information not imported to the datafields.";

Figures FiguresOf(const ExchangeFile& file) {
  const std::vector<Long> numbers = {101, 102, 205};
  Figures figures;
  for (const auto& block : file.blocks) {
    for (const auto& day : block.days) {
      for (const auto& value : day.values) {
        figures[{numbers[static_cast<std::size_t>(block.account_position - 1)], day.date,
                 file.fields[static_cast<std::size_t>(value.field_position - 1)].number}] += value.value;
      }
    }
  }
  return figures;
}

// A book of SmallBook's lists without figures of the tests' days; its own figures lie outside them.
class QDXImportTest : public ::testing::Test {
 protected:
  [[nodiscard]] bool Import() { return setup_.Import(); }
  // The import of one file that stands alone in the folder.
  [[nodiscard]] bool Import(const ExchangeFile& file) {
    setup_.Put("DAY.QDX", file);
    return Import();
  }

  MemoryMasterfile& book() { return setup_.host->book; }
  CallRecord& calls() { return setup_.host->record; }
  DefinitionRecord& definition() { return setup_.definition; }
  [[nodiscard]] std::vector<Text> Boxes() const { return setup_.platform.boxes.Texts(); }
  [[nodiscard]] std::vector<Text> Lines() const { return setup_.Lines(); }
  [[nodiscard]] Double Figure(Long account, int day, Integer field = 1) const {
    return setup_.host->book.Get(account, February(day), field);
  }
  // The calls of ReadRecord and WriteRecord, in order.
  void WatchRecords() {
    calls().Record("ReadRecord", true);
    calls().Record("WriteRecord", true);
  }
  [[nodiscard]] std::vector<Text> RecordCalls() const {
    std::vector<Text> found;
    for (const Text& call : setup_.host->record.calls) {
      if (call.starts_with("ReadRecord") || call.starts_with("WriteRecord")) found.push_back(call);
    }
    return found;
  }
  [[nodiscard]] bool IsClosed() const { return setup_.file_number == 0 && setup_.platform.memory.OpenHandles() == 0; }

  ImportSetup setup_;
};

// --- Files and narration ---------------------------------------------------------------------------------------------

TEST_F(QDXImportTest, APatternWithoutFilesPrintsOneLineAndIsTrue) {
  EXPECT_TRUE(Import());
  EXPECT_THAT(Lines(), ElementsAre("No Files were imported.  None matched the filename: /in/*.QDX"));
  EXPECT_THAT(calls().calls, Not(Contains("App.BeginImport")));
}

TEST_F(QDXImportTest, AnEmptyPatternMatchesNothing) {
  setup_.Put("DAY.QDX", OneFigure());
  definition().QdxFileName = "";
  EXPECT_TRUE(Import());
  EXPECT_THAT(Lines(), ElementsAre("No Files were imported.  None matched the filename: "));
}

TEST_F(QDXImportTest, ASingleFileIsNotAnnounced) {
  EXPECT_TRUE(Import(OneFigure()));
  EXPECT_THAT(Lines(), ElementsAre("Begining Import of: /in/DAY.QDX at " + kNow,
                                   "Completed Import of: /in/DAY.QDX at " + kNow, ""));
  EXPECT_THAT(Boxes(), IsEmpty());
}

TEST_F(QDXImportTest, TwoFilesAreAnnouncedAndTakenOldestFirst) {
  setup_.Put("A.QDX", OneFigure(), 30);
  setup_.Put("B.QDX", OneFigure(), 10);
  EXPECT_TRUE(Import());
  EXPECT_THAT(Lines(),
              ElementsAre("Importing Files that match: /in/*.QDX at " + kNow, "",
                          "Begining Import of: /in/B.QDX at " + kNow, "Completed Import of: /in/B.QDX at " + kNow, "",
                          "Begining Import of: /in/A.QDX at " + kNow, "Completed Import of: /in/A.QDX at " + kNow, ""));
  EXPECT_EQ(Figure(101, 3), 5);
}

TEST_F(QDXImportTest, EachTimeOnTheReportIsReadFromTheClockThen) {
  setup_.Put("DAY.QDX", OneFigure());
  setup_.platform.clock.SetStep(60);
  EXPECT_TRUE(Import());
  EXPECT_THAT(Lines(), ElementsAre("Begining Import of: /in/DAY.QDX at 2004-02-03 14:05:09",
                                   "Completed Import of: /in/DAY.QDX at 2004-02-03 14:06:09", ""));
}

TEST_F(QDXImportTest, TheWholeRunTellsTheHostInThisOrder) {
  calls().Record("ReadRecord", true);
  calls().Record("WriteRecord", true);
  calls().Record("SetFieldValue", true);
  setup_.math = 3;
  setup_.MatchAccounts({{"100", "100"}});
  setup_.MatchFields({{1, 1}});
  ExchangeFile file = ShopFile(February(3), February(3));
  file.accounts.resize(1);
  file.fields.resize(1);
  file.blocks = {{1, {{February(3), {{1, 2.5}}}}}};
  const std::size_t data_at = file.Head().size() + file.Tables().size() + 8;
  const Text fraction =
      ArgumentText(static_cast<Single>(static_cast<Double>(data_at) / static_cast<Double>(file.Bytes().size())));
  EXPECT_TRUE(Import(file));
  EXPECT_THAT(
      calls().calls,
      ElementsAre("BeginProgress Reading QDX File Header", "ProgressFraction 0.5", "ProgressFraction 1", "EndProgress",
                  "Printer.PrintLine Begining Import of: /in/DAY.QDX at " + kNow, "App.BeginImport",
                  "Printer.BeginProgress Matching Account and DataFields between QDX file and Database",
                  "Printer.ProgressFraction 0", "ProgressFraction 0", "ProgressFraction 0.5",
                  "Printer.BeginProgress Verifying Accounts and DataFields", "BeginRollback 2004-02-03 2004-02-03",
                  "EndProgress", "Printer.BeginProgress Zeroing out data", "Printer.ProgressFraction 0",
                  "Printer.ProgressFraction 1", "ReadRecord 101 2004-02-03", "SetFieldValue 1 0", "WriteRecord",
                  "Printer.EndProgress", "Printer.BeginProgress Importing data in QDX file:\n/in/DAY.QDX",
                  "Printer.ProgressFraction " + fraction, "ReadRecord 101 2004-02-03", "SetFieldValue 1 2.5",
                  "WriteRecord", "Printer.EndProgress", "EndRollback",
                  "Printer.PrintLine Completed Import of: /in/DAY.QDX at " + kNow, "Printer.PrintLine "));
}

TEST_F(QDXImportTest, BeginImportComesBeforeTheComparisonAndOnceAFile) {
  setup_.platform.memory.Put(kArchive, ShopFile().Bytes());
  setup_.Put("A.QDX", OneFigure());
  setup_.Put("B.QDX", OneFigure());
  definition().FldMatch = kManually;
  EXPECT_TRUE(Import());
  const std::vector<Text>& all = calls().calls;
  EXPECT_EQ(std::count(all.begin(), all.end(), "App.BeginImport"), 2);
  // The comparison is what moves the report's bar before the matching begins.
  const auto begin = std::find(all.begin(), all.end(), "App.BeginImport");
  const auto compared = std::find_if(all.begin(), all.end(),
                                     [](const Text& call) { return call.starts_with("Printer.ProgressFraction"); });
  EXPECT_LT(begin, compared);
  EXPECT_LT(compared, std::find(all.begin(), all.end(),
                                "Printer.BeginProgress Matching Account and DataFields between QDX file and Database"));
}

TEST_F(QDXImportTest, ModesThatFillTheTablesLeaveThemFilled) {
  EXPECT_TRUE(Import(OneFigure()));
  EXPECT_EQ(definition().NumAccounts, 3);
  EXPECT_EQ(definition().accounts(3).from_code, "300");
  EXPECT_EQ(definition().accounts(3).AccountTo, 205);
  EXPECT_EQ(definition().NumFields, 2);
  EXPECT_EQ(definition().fields(2).FieldTo, 2);
}

class MatchFilesTest : public ::testing::Test {
 protected:
  std::vector<Text> FilesOf(const Text& pattern) {
    std::vector<Text> files = {"left over"};
    const Integer count = MatchFiles(pattern, files);
    EXPECT_EQ(count, static_cast<Integer>(files.size()));
    return files;
  }
  ImportSetup setup_;
};

TEST_F(MatchFilesTest, SortsByTimeAndKeepsTheDirectorysOrderOfEqualTimes) {
  setup_.Put("e.QDX", "", 5);
  setup_.Put("D.QDX", "", 5);
  setup_.Put("c.qdx", "", 7);
  setup_.Put("B.QDX", "", 2);
  setup_.Put("a.QDX", "", 5);
  EXPECT_THAT(FilesOf("/in/*.QDX"), ElementsAre("/in/B.QDX", "/in/a.QDX", "/in/D.QDX", "/in/e.QDX", "/in/c.qdx"));
}

TEST_F(MatchFilesTest, KeepsTheDirectorysOrderOfManyFilesOfTwoTimes) {
  std::vector<Text> expected;
  for (int i = 10; i < 60; ++i) {
    setup_.Put("F" + std::to_string(i) + ".QDX", "", i % 2);
    if (i % 2 == 0) expected.push_back("/in/F" + std::to_string(i) + ".QDX");
  }
  for (int i = 11; i < 60; i += 2) expected.push_back("/in/F" + std::to_string(i) + ".QDX");
  EXPECT_EQ(FilesOf("/in/*.QDX"), expected);
}

TEST_F(MatchFilesTest, KeepsTheFolderAsThePatternWroteIt) {
  setup_.Put("A.QDX", "");
  EXPECT_THAT(FilesOf("\\in\\A.*"), ElementsAre("\\in\\A.QDX"));
}

TEST_F(MatchFilesTest, EmptiesTheListWhereNothingMatches) {
  EXPECT_THAT(FilesOf("/in/*.QDX"), IsEmpty());
}

TEST_F(MatchFilesTest, TakesMoreFilesThanOneStepOfTheList) {
  for (int i = 0; i < 13; ++i) setup_.Put("F" + std::to_string(10 + i) + ".QDX", "", -i);
  const std::vector<Text> files = FilesOf("/in/F??.QDX");
  EXPECT_EQ(files.size(), 13U);
  EXPECT_EQ(files.front(), "/in/F22.QDX");
  EXPECT_EQ(files.back(), "/in/F10.QDX");
}

// --- The modes -------------------------------------------------------------------------------------------------------

struct Mode {
  Integer math;
  Double outcome;  // of 10 in the book and 2.5 in the file
};

class MathTest : public QDXImportTest, public ::testing::WithParamInterface<Mode> {};

TEST_P(MathTest, CombinesStoredAndImportedFigures) {
  book().Set(101, February(3), 1, 10);
  book().Set(102, February(2), 2, 7);
  setup_.math = GetParam().math;
  EXPECT_TRUE(Import(OneFigure()));
  EXPECT_EQ(Figure(101, 3), GetParam().outcome);
  EXPECT_EQ(Figure(102, 2, 2), GetParam().math >= 3 ? 0 : 7) << "figures of the range that the file does not name";
}

INSTANTIATE_TEST_SUITE_P(ZeroToFiveAndBeyond, MathTest,
                         ::testing::Values(Mode{0, 12.5}, Mode{1, 12.5}, Mode{2, 7.5}, Mode{3, 2.5}, Mode{4, 0},
                                           Mode{5, 2.5}, Mode{32'767, 2.5}, Mode{-1, 12.5}));

TEST_F(QDXImportTest, ZeroingAloneNeverReadsTheData) {
  book().Set(101, February(3), 1, 10);
  setup_.math = kZeroOnly;
  definition().Disp = kDispRename;
  ExchangeFile file = ShopFile();
  // A date that no import could take.
  file.behind_blocks = FileBytes().I2(1).I2(32'767).I2(32'767).I2(32'767).I2(0).Bytes();
  EXPECT_TRUE(Import(file));
  EXPECT_EQ(Figure(101, 3), 0);
  EXPECT_THAT(Lines(), Contains("Completed Import of: /in/DAY.QDX at " + kNow));
  EXPECT_THAT(setup_.host->printer->progress.titles, Not(Contains(HasSubstr("Importing data in QDX file:"))));
  EXPECT_FALSE(setup_.Has("DAY.QDX"));
  EXPECT_TRUE(setup_.Has("DAY.XDQ"));
  ASSERT_EQ(book().Journal().size(), 1U);
  EXPECT_TRUE(book().Journal()[0].closed);
  EXPECT_TRUE(IsClosed());
}

TEST_F(QDXImportTest, ZeroingWalksDaysThenRowsOfTheDefinition) {
  WatchRecords();
  calls().Record("Calendar.LevelDate", true);
  calls().Record("SetFieldValue", true);
  setup_.math = kZeroOnly;
  setup_.MatchAccounts({{"300", "300"}, {"100", "100"}});
  setup_.MatchFields({{2, 2}, {1, 7}});
  ExchangeFile file = ShopFile(February(1), February(2));
  EXPECT_TRUE(Import(file));
  const auto from = std::find(calls().calls.begin(), calls().calls.end(), "Printer.BeginProgress Zeroing out data");
  ASSERT_NE(from, calls().calls.end());
  EXPECT_THAT(
      std::vector<Text>(from, std::find(from, calls().calls.end(), "EndRollback")),
      ElementsAre("Printer.BeginProgress Zeroing out data", "Printer.ProgressFraction 0",
                  "Calendar.LevelDate 2004-02-01 1", "Printer.ProgressFraction 0.5", "ReadRecord 205 2004-02-01",
                  "SetFieldValue 2 0", "SetFieldValue 7 0", "WriteRecord", "ReadRecord 101 2004-02-01",
                  "SetFieldValue 2 0", "SetFieldValue 7 0", "WriteRecord", "Calendar.LevelDate 2004-02-02 -1",
                  "Printer.ProgressFraction 1", "ReadRecord 205 2004-02-02", "SetFieldValue 2 0", "SetFieldValue 7 0",
                  "WriteRecord", "ReadRecord 101 2004-02-02", "SetFieldValue 2 0", "SetFieldValue 7 0", "WriteRecord",
                  "Calendar.LevelDate 2004-02-03 -1", "Printer.EndProgress"));
}

TEST_F(QDXImportTest, ZeroingLeavesOtherAccountsFieldsAndDates) {
  for (const Long account : {101, 102}) {
    for (const Integer field : kBookFields) {
      for (int day = 1; day <= 5; ++day) book().Set(account, February(day), field, 9);
    }
  }
  setup_.math = kZeroOnly;
  setup_.MatchAccounts({{"100", "100"}});
  setup_.MatchFields({{1, 1}});
  EXPECT_TRUE(Import(ShopFile(February(2), February(4))));
  for (int day = 1; day <= 5; ++day) {
    EXPECT_EQ(Figure(101, day, 1), day >= 2 && day <= 4 ? 0 : 9) << day;
    EXPECT_EQ(Figure(101, day, 2), 9) << day;
    EXPECT_EQ(Figure(101, day, 7), 9) << day;
    EXPECT_EQ(Figure(102, day, 1), 9) << day;
  }
}

TEST_F(QDXImportTest, CancelDuringZeroingEndsTheRunAtThatDate) {
  for (int poll = 1; poll <= 3; ++poll) {
    ImportSetup setup;
    for (int day = 1; day <= 3; ++day) setup.host->book.Set(101, February(day), 1, 9);
    const Figures before = setup.host->book.Figures();
    setup.Put("DAY.QDX", OneFigure());
    setup.math = 3;
    setup.host->printer->progress.CancelAtPoll(poll);
    EXPECT_FALSE(setup.Import());
    EXPECT_THAT(setup.Lines(), ElementsAre("Begining Import of: /in/DAY.QDX at " + kNow, "Import Aborted by User"));
    for (int day = 1; day <= 3; ++day) {
      EXPECT_EQ(setup.host->book.Get(101, February(day), 1), day <= poll ? 0 : 9) << poll << " " << day;
    }
    EXPECT_TRUE(setup.Has("DAY.QDX"));
    EXPECT_EQ(setup.platform.memory.OpenHandles(), 0);
    EXPECT_FALSE(setup.host->printer->progress.open);
    EXPECT_THAT(setup.host->record.calls, Not(Contains("EndRollback")));
    EXPECT_FALSE(setup.host->book.Journal().back().closed);
    EXPECT_TRUE(setup.host->book.UndoLastRollback());
    EXPECT_EQ(setup.host->book.Figures(), before);
  }
}

TEST_F(QDXImportTest, NobodyIsAskedAboutCancelWhileDataIsRead) {
  calls().Record("Printer.ProgressCancelled", true);
  EXPECT_TRUE(Import(ManyFigures()));
  EXPECT_THAT(calls().ArgumentsOf("Printer.ProgressCancelled"), IsEmpty());
}

// --- Levels ----------------------------------------------------------------------------------------------------------

class LevelTest : public ::testing::Test {
 protected:
  static BookShape Shape(Integer level) {
    BookShape shape;
    shape.data_level = level;
    return shape;
  }
  // A figure of 1 for each of 1 to `days` February, of account "100".
  static ExchangeFile DayFile(int days) {
    ExchangeFile file = ShopFile(February(1), February(days));
    file.blocks = {{1, {}}};
    for (int day = 1; day <= days; ++day) file.blocks[0].days.push_back({February(day), {{1, 1}}});
    return file;
  }
};

TEST_F(LevelTest, AWeeksRecordEndsWithTheSumOfItsDays) {
  ImportSetup setup(Shape(kWeekLevel));
  setup.host->book.Set(101, February(7), 1, 100);
  setup.host->book.Set(101, February(14), 1, 100);
  setup.math = 3;
  setup.Put("DAY.QDX", DayFile(16));
  EXPECT_TRUE(setup.Import());
  EXPECT_EQ(setup.host->book.Get(101, February(1), 1), 7);
  EXPECT_EQ(setup.host->book.Get(101, February(8), 1), 7);
  EXPECT_EQ(setup.host->book.Get(101, February(15), 1), 2);
}

TEST_F(LevelTest, AMonthsRecordEndsWithTheSumOfItsDays) {
  ImportSetup setup(Shape(kPeriodLevel));
  setup.host->book.Set(101, February(29), 1, 100);
  setup.math = 3;
  setup.Put("DAY.QDX", DayFile(29));
  EXPECT_TRUE(setup.Import());
  EXPECT_EQ(setup.host->book.Get(101, February(29), 1), 29);
}

TEST_F(LevelTest, TheWalksEndIsNotLevelledSoALastPartWeekIsNotZeroed) {
  ImportSetup setup(Shape(kWeekLevel));
  setup.host->book.Set(101, February(7), 1, 100);
  setup.host->book.Set(101, February(14), 1, 100);
  setup.math = 3;
  setup.Put("DAY.QDX", DayFile(10));
  EXPECT_TRUE(setup.Import());
  EXPECT_EQ(setup.host->book.Get(101, February(7), 1), 7);
  EXPECT_EQ(setup.host->book.Get(101, February(14), 1), 103);
}

TEST_F(LevelTest, ARangeWithinOneWeekIsNotZeroedAtAll) {
  ImportSetup setup(Shape(kWeekLevel));
  setup.host->book.Set(101, February(7), 1, 100);
  setup.math = 3;
  setup.Put("DAY.QDX", DayFile(2));
  EXPECT_TRUE(setup.Import());
  EXPECT_EQ(setup.host->book.Get(101, February(7), 1), 102);
  EXPECT_THAT(setup.host->printer->progress.titles, Contains("Zeroing out data"));
}

TEST_F(LevelTest, AWalkAcrossWeeksReachesTheWeeksThatEndInTheRange) {
  ImportSetup setup(Shape(kWeekLevel));
  setup.math = kZeroOnly;
  setup.MatchAccounts({{"100", "100"}});
  setup.host->record.Record("ReadRecord", true);
  setup.Put("DAY.QDX", ShopFile(February(3), February(21)));
  EXPECT_TRUE(setup.Import());
  EXPECT_THAT(setup.host->record.ArgumentsOf("ReadRecord"),
              ElementsAre("101 2004-02-07", "101 2004-02-14", "101 2004-02-21"));
  // Days from the walk's start, the first week's end, over the days from there to the end.
  const auto fractions = setup.host->printer->progress.fractions;
  ASSERT_GE(fractions.size(), 5U);
  EXPECT_EQ(std::vector<Single>(fractions.begin() + 2, fractions.begin() + 5),
            (std::vector<Single>{1.0F / 15, 8.0F / 15, 1.0F}));
}

// --- Several into one ------------------------------------------------------------------------------------------------

TEST_F(QDXImportTest, TwoAccountsOfTheFileMappedToOneEndWithTheirSum) {
  book().Set(205, February(3), 1, 1000);
  setup_.math = 3;
  setup_.MatchAccounts({{"100", "300"}, {"200", "300"}});
  ExchangeFile file = ShopFile();
  file.blocks = {{1, {{February(3), {{1, 2}}}}}, {2, {{February(3), {{1, 3}}}}}};
  EXPECT_TRUE(Import(file));
  EXPECT_EQ(Figure(205, 3), 5);
}

TEST_F(QDXImportTest, AllToOneGathersEveryAccount) {
  setup_.math = 3;
  definition().AcctMatch = kAllToOne;
  definition().AcctAll = 102;
  EXPECT_TRUE(Import(ManyFigures()));
  EXPECT_EQ(Figure(102, 1, 1), 1);
  EXPECT_EQ(Figure(102, 3, 1), 20);
  EXPECT_EQ(Figure(102, 3, 2), 32);
  EXPECT_EQ(Figure(101, 3, 1), 0);
}

TEST_F(QDXImportTest, ALaterFileReplacesAnEarlierOneOfTheSameRange) {
  setup_.math = 3;
  definition().AcctMatch = kAllToOne;
  definition().AcctAll = 102;
  setup_.Put("A.QDX", OneFigure(2), 1);
  setup_.Put("B.QDX", OneFigure(3), 2);
  EXPECT_TRUE(Import());
  EXPECT_EQ(Figure(102, 3), 3);
}

TEST_F(QDXImportTest, FilesOfOtherRangesReplaceNothingOfEachOther) {
  setup_.math = 3;
  ExchangeFile later = ShopFile(February(4), February(5));
  later.blocks = {{1, {{February(4), {{1, 3}}}}}};
  setup_.Put("A.QDX", OneFigure(2), 1);
  setup_.Put("B.QDX", later, 2);
  EXPECT_TRUE(Import());
  EXPECT_EQ(Figure(101, 3), 2);
  EXPECT_EQ(Figure(101, 4), 3);
}

// The second file has other accounts and fields at the places of the first one's.
TEST_F(QDXImportTest, EachFileIsMappedByItsOwnTablesAlone) {
  setup_.MatchAccounts({{"200", "200"}});
  setup_.MatchFields({{2, 2}});
  ExchangeFile first = ShopFile();
  first.blocks = {{2, {{February(3), {{2, 1}}}}}};
  ExchangeFile second = ShopFile();
  second.accounts = {{"200", "Back of shop"}, {"900", "Elsewhere"}};
  second.fields = {{2, "Customers"}, {9, "Other"}};
  second.blocks = {{1, {{February(3), {{1, 10}, {2, 100}}}}}, {2, {{February(3), {{1, 1000}}}}}};
  setup_.Put("A.QDX", first, 1);
  setup_.Put("B.QDX", second, 2);
  EXPECT_TRUE(Import());
  EXPECT_EQ(Figure(102, 3, 2), 11);
}

TEST_F(QDXImportTest, TheNextFileWritesTheLastChangedRecordOnceMore) {
  WatchRecords();
  ExchangeFile second = ShopFile();
  second.blocks = {{2, {{February(1), {{1, 1}}}, {February(2), {{1, 1}}}}}};
  setup_.Put("A.QDX", OneFigure(), 1);
  setup_.Put("B.QDX", second, 2);
  EXPECT_TRUE(Import());
  EXPECT_THAT(RecordCalls(),
              ElementsAre("ReadRecord 101 2004-02-03", "WriteRecord",  // the end of the first file
                          "WriteRecord",                               // once more
                          "ReadRecord 102 2004-02-01", "WriteRecord", "ReadRecord 102 2004-02-02", "WriteRecord"));
  EXPECT_EQ(Figure(101, 3), 2.5);
}

TEST_F(QDXImportTest, AFileWithoutATargetWritesTheRecordLeftDirtyAtItsEnd) {
  WatchRecords();
  setup_.MatchAccounts({{"100", "100"}});
  ExchangeFile second = ShopFile();
  second.blocks = {{2, {{February(1), {{1, 1}}}}}};
  setup_.Put("A.QDX", OneFigure(), 1);
  setup_.Put("B.QDX", second, 2);
  EXPECT_TRUE(Import());
  EXPECT_THAT(RecordCalls(), ElementsAre("ReadRecord 101 2004-02-03", "WriteRecord", "WriteRecord"));
}

TEST_F(QDXImportTest, ARecordWithoutAChangeIsNotWritten) {
  WatchRecords();
  setup_.MatchFields({{1, 1}});
  ExchangeFile file = ShopFile();
  file.blocks = {{1, {{February(1), {{2, 9}}}, {February(2), {{1, 4}}}, {February(3), {{2, 9}}}}}};
  EXPECT_TRUE(Import(file));
  EXPECT_THAT(RecordCalls(), ElementsAre("ReadRecord 101 2004-02-01", "ReadRecord 101 2004-02-02", "WriteRecord",
                                         "ReadRecord 101 2004-02-03"));
}

// --- The body --------------------------------------------------------------------------------------------------------

TEST_F(QDXImportTest, ManyFiguresArriveWhereTheyBelong) {
  const Figures before = book().Figures();
  Figures expected = FiguresOf(ManyFigures());
  expected.insert(before.begin(), before.end());
  EXPECT_TRUE(Import(ManyFigures()));
  EXPECT_EQ(book().Figures(), expected);
}

TEST_F(QDXImportTest, APositionOutsideTheFilesAccountsEndsTheDataSilently) {
  for (const Integer position : {Integer{0}, Integer{-1}, Integer{4}, Integer{32'767}}) {
    ImportSetup setup;
    ExchangeFile file = OneFigure(4);
    file.blocks.push_back({position, {{February(2), {{1, 50}}}}});
    file.blocks.push_back({2, {{February(2), {{1, 60}}}}});
    const Figures before = setup.host->book.Figures();
    setup.Put("DAY.QDX", file);
    EXPECT_TRUE(setup.Import()) << position;
    Figures expected = before;
    expected[{101, February(3), 1}] = 4;
    EXPECT_EQ(setup.host->book.Figures(), expected) << position;
    EXPECT_THAT(setup.platform.boxes.Shown(), IsEmpty());
    EXPECT_THAT(setup.Lines(), Contains("Completed Import of: /in/DAY.QDX at " + kNow));
  }
}

TEST_F(QDXImportTest, ItemsOfUnmappedAccountsAndFieldsAreConsumed) {
  setup_.MatchAccounts({{"300", "300"}});
  setup_.MatchFields({{2, 2}});
  const Figures before = book().Figures();
  Figures expected = before;
  expected[{205, February(2), 2}] = 8;
  expected[{205, February(3), 2}] = 32;
  EXPECT_TRUE(Import(ManyFigures()));
  EXPECT_EQ(book().Figures(), expected);
}

TEST_F(QDXImportTest, FieldsGoByPositionInTheFileAndNumberInTheBook) {
  setup_.MatchFields({{7, 2}, {5, 1}});
  ExchangeFile file = ShopFile();
  file.fields = {{9, "Nine"}, {5, "Five"}, {7, "Seven"}};
  file.blocks = {{1, {{February(3), {{1, 100}, {2, 3}, {3, 4}}}}}};
  EXPECT_TRUE(Import(file));
  EXPECT_EQ(Figure(101, 3, 1), 3);
  EXPECT_EQ(Figure(101, 3, 2), 4);
}

TEST_F(QDXImportTest, TheFirstOfARepeatedFieldNumberIsTheOneThatIsImported) {
  setup_.MatchFields({{5, 1}});
  ExchangeFile file = ShopFile();
  file.fields = {{5, "Five"}, {5, "Five again"}};
  file.blocks = {{1, {{February(3), {{1, 1}, {2, 10}}}}}};
  EXPECT_TRUE(Import(file));
  EXPECT_EQ(Figure(101, 3, 1), 1);
}

TEST_F(QDXImportTest, AMonthOfZeroIsNoEndMarkWhileTheSumIsAboveZero) {
  ExchangeFile file = ShopFile();
  file.behind_blocks = FileBytes()
                           .I2(1)
                           .I2(0)
                           .I2(5)
                           .I2(2004)
                           .I2(1)
                           .I2(1)
                           .R8(6)  // month 0 is December before
                           .I2(2)
                           .I2(31)
                           .I2(2004)
                           .I2(1)
                           .I2(1)
                           .R8(7)  // 31 February is 2 March
                           .I2(-1)
                           .I2(0)
                           .I2(0)
                           .I2(2)
                           .I2(2)
                           .I2(3)
                           .I2(2004)
                           .I2(1)
                           .I2(1)
                           .R8(8)
                           .I2(0)
                           .I2(0)
                           .I2(0)
                           .Bytes();
  EXPECT_TRUE(Import(file));
  EXPECT_EQ(book().Get(101, DateFromParts(2003, 12, 5), 1), 6);
  EXPECT_EQ(book().Get(101, DateFromParts(2004, 3, 2), 1), 7);
  EXPECT_EQ(Figure(102, 3), 8);
}

TEST_F(QDXImportTest, ACountOfZeroOrLessHasNoItems) {
  ExchangeFile file = ShopFile();
  file.behind_blocks = FileBytes()
                           .I2(1)
                           .I2(2)
                           .I2(1)
                           .I2(2004)
                           .I2(0)
                           .I2(2)
                           .I2(2)
                           .I2(2004)
                           .I2(-5)
                           .I2(2)
                           .I2(3)
                           .I2(2004)
                           .I2(1)
                           .I2(1)
                           .R8(7)
                           .I2(0)
                           .I2(0)
                           .I2(0)
                           .Bytes();
  EXPECT_TRUE(Import(file));
  EXPECT_EQ(Figure(101, 3), 7);
}

TEST_F(QDXImportTest, ADateWhoseSumDoesNotFit16BitsIsAFailure) {
  ExchangeFile file = OneFigure();
  file.behind_blocks = FileBytes().I2(2).I2(12).I2(31).I2(32'767).I2(0).Bytes();
  setup_.platform.boxes.Answer({kCancel});
  EXPECT_FALSE(Import(file));
  EXPECT_THAT(Boxes(), ElementsAre(kAsk));
  EXPECT_TRUE(IsClosed());
  EXPECT_TRUE(setup_.Has("DAY.QDX"));
}

TEST_F(QDXImportTest, AFieldPositionThatTheMapHasIsDroppedAndAnyOtherIsAFailure) {
  for (const Integer position : {Integer{0}, Integer{3}, Integer{9999}}) {
    ImportSetup setup;
    ExchangeFile file = ShopFile();
    file.blocks = {{1, {{February(3), {{position, 50}, {1, 4}}}}}};
    setup.Put("DAY.QDX", file);
    EXPECT_TRUE(setup.Import()) << position;
    EXPECT_EQ(setup.host->book.Get(101, February(3), 1), 4) << position;
  }
  for (const Integer position : {Integer{-1}, Integer{10'000}, Integer{32'767}, Integer{-32'768}}) {
    ImportSetup setup;
    ExchangeFile file = ShopFile();
    file.blocks = {{1, {{February(3), {{position, 50}}}}}};
    setup.Put("DAY.QDX", file);
    setup.platform.boxes.Answer({kCancel});
    EXPECT_FALSE(setup.Import()) << position;
    EXPECT_THAT(setup.platform.boxes.Texts(), ElementsAre(kAsk));
  }
}

TEST_F(QDXImportTest, AFileThatEndsBehindItsTablesHasNoData) {
  setup_.Put("DAY.QDX", ShopFile().Head() + ShopFile().Tables());
  EXPECT_TRUE(Import());
  EXPECT_THAT(Lines(), Contains("Completed Import of: /in/DAY.QDX at " + kNow));
}

TEST_F(QDXImportTest, ABlockWhoseStartIsTheFilesEndIsDropped) {
  calls().Record("ReadRecord", true);
  ExchangeFile file = OneFigure();
  const std::string whole = file.Head() + file.Tables();
  setup_.Put("DAY.QDX", whole + FileBytes().I2(1).MonthDayYear(February(3)).Bytes());
  EXPECT_TRUE(Import());
  EXPECT_THAT(calls().ArgumentsOf("ReadRecord"), IsEmpty());
  // With one byte more the block is taken: its record is read, though its count is not whole.
  setup_.Put("DAY.QDX", whole + FileBytes().I2(1).MonthDayYear(February(3)).Fixed("x").Bytes());
  EXPECT_TRUE(Import());
  EXPECT_THAT(calls().ArgumentsOf("ReadRecord"), ElementsAre("101 2004-02-03"));
}

// Where each figure of a body ends, counted from the body's start.
std::vector<std::pair<std::size_t, MemoryMasterfile::FigureKey>> EndsOfFigures(const ExchangeFile& file) {
  const std::vector<Long> numbers = {101, 102, 205};
  std::vector<std::pair<std::size_t, MemoryMasterfile::FigureKey>> ends;
  std::size_t offset = 0;
  for (const auto& block : file.blocks) {
    offset += 2;
    for (const auto& day : block.days) {
      offset += 8;
      for (const auto& value : day.values) {
        offset += 10;
        ends.push_back({offset,
                        {numbers[static_cast<std::size_t>(block.account_position - 1)], day.date,
                         file.fields[static_cast<std::size_t>(value.field_position - 1)].number}});
      }
    }
    offset += 6;
  }
  return ends;
}

TEST_F(QDXImportTest, ABodyCutAtAnyByteStoresWhatWasWholeAndNothingElse) {
  const ExchangeFile file = ManyFigures();
  const Figures figures = FiguresOf(file);
  const std::string head = file.Head() + file.Tables();
  const std::string body = file.Body();
  for (std::size_t length = 0; length <= body.size(); ++length) {
    ImportSetup setup;
    Figures expected = setup.host->book.Figures();
    for (const auto& [end, key] : EndsOfFigures(file)) {
      if (end <= length) expected[key] = figures.at(key);
    }
    setup.Put("DAY.QDX", head + body.substr(0, length));
    EXPECT_TRUE(setup.Import()) << length;
    EXPECT_EQ(setup.host->book.Figures(), expected) << "cut at byte " << length;
    EXPECT_THAT(setup.platform.boxes.Shown(), IsEmpty()) << length;
    EXPECT_THAT(setup.Lines(), Contains("Completed Import of: /in/DAY.QDX at " + kNow));
  }
}

// Imports a file whose body is damaged and tells whether everything stands as one of the outcomes leaves it.
bool EndsInOrder(const std::string& bytes) {
  ImportSetup setup;
  const Figures before = setup.host->book.Figures();
  setup.Put("DAY.QDX", bytes);
  setup.platform.boxes.Answer({kCancel});
  const bool done = setup.Import();
  const bool told = setup.platform.boxes.Texts() == std::vector<Text>{kAsk};
  const bool journal_fits = setup.host->book.Journal().back().closed == done;
  return done != told && journal_fits && setup.platform.memory.OpenHandles() == 0 &&
         !setup.host->printer->progress.open && setup.host->book.UndoLastRollback() &&
         setup.host->book.Figures() == before;
}

TEST(QDXImportDeathTest, ABodyWithAnyByteFlippedEndsInOneOfTheToldWays) {
  constexpr int kInOrder = 0;
  constexpr int kOutOfOrder = 3;
  const ExchangeFile file = ManyFigures();
  const std::string head = file.Head() + file.Tables();
  for (std::size_t at = 0; at < file.Body().size(); ++at) {
    std::string bytes = file.Bytes();
    bytes[head.size() + at] = static_cast<char>(bytes[head.size() + at] ^ 0x55);
    // A date that the book does not hold stops the program, hence the process of its own.
    EXPECT_EXIT(
        std::_Exit(EndsInOrder(bytes) ? kInOrder : kOutOfOrder),
        [](int status) {
          return ::testing::ExitedWithCode(kInOrder)(status) || ::testing::ExitedWithCode(EXIT_FAILURE)(status);
        },
        "")
        << "byte " << at;
  }
}

// --- What becomes of the file ----------------------------------------------------------------------------------------

TEST_F(QDXImportTest, DispOneDeletesTheFile) {
  definition().Disp = kDispDelete;
  EXPECT_TRUE(Import(OneFigure()));
  EXPECT_FALSE(setup_.Has("DAY.QDX"));
  EXPECT_FALSE(setup_.Has("DAY.XDQ"));
}

TEST_F(QDXImportTest, AFileThatCannotBeDeletedStaysWithoutAWord) {
  definition().Disp = kDispDelete;
  setup_.platform.files.FailPath(FileCall::kDelete, "DAY.QDX", FailureNumber::kPermissionDenied);
  EXPECT_TRUE(Import(OneFigure()));
  EXPECT_TRUE(setup_.Has("DAY.QDX"));
  EXPECT_THAT(Boxes(), IsEmpty());
  EXPECT_EQ(Lines().size(), 3U);
}

TEST_F(QDXImportTest, DispTwoRenamesTheFileAndReplacesOneOfThatName) {
  definition().Disp = kDispRename;
  setup_.Put("DAY.XDQ", "of last week");
  const ExchangeFile file = OneFigure();
  EXPECT_TRUE(Import(file));
  EXPECT_FALSE(setup_.Has("DAY.QDX"));
  EXPECT_EQ(setup_.platform.memory.Bytes("/in/DAY.XDQ"), file.Bytes());
}

TEST_F(QDXImportTest, AFileThatCannotBeRenamedIsToldOnTheReport) {
  definition().Disp = kDispRename;
  setup_.platform.files.FailPath(FileCall::kRename, "DAY.QDX", FailureNumber::kPermissionDenied);
  EXPECT_TRUE(Import(OneFigure()));
  EXPECT_TRUE(setup_.Has("DAY.QDX"));
  EXPECT_THAT(Lines(),
              ElementsAre("Begining Import of: /in/DAY.QDX at " + kNow, "The file could not be renamed to: /in/DAY.XDQ",
                          "Completed Import of: /in/DAY.QDX at " + kNow, ""));
}

TEST_F(QDXImportTest, AnyOtherDispKeepsTheFile) {
  for (const Integer disp : {kDispKeep, Integer{0}, Integer{4}, Integer{-1}}) {
    definition().Disp = disp;
    EXPECT_TRUE(Import(OneFigure()));
    EXPECT_TRUE(setup_.Has("DAY.QDX")) << disp;
    EXPECT_FALSE(setup_.Has("DAY.XDQ")) << disp;
  }
}

TEST_F(QDXImportTest, TheNamesLastThreeCharactersAreOverwrittenWhateverTheyAre) {
  definition().Disp = kDispRename;
  const std::vector<std::pair<Text, Text>> names = {{"SALES", "SAXDQ"},
                                                    {"day.q", "daXDQ"},
                                                    {"a.data", "a.dXDQ"},
                                                    {"t\xC3\xA4glich", "t\xC3\xA4glXDQ"},
                                                    {"x\xC3\xA4\xC3\xB6\xC3\xBC", "xXDQ"}};
  for (const auto& [name, renamed] : names) {
    ImportSetup setup;
    setup.definition.Disp = kDispRename;
    setup.definition.QdxFileName = kFolder + name;
    setup.Put(name, OneFigure());
    EXPECT_TRUE(setup.Import()) << name;
    EXPECT_FALSE(setup.Has(name)) << name;
    EXPECT_TRUE(setup.Has(renamed)) << renamed;
  }
}

TEST_F(QDXImportTest, AFileThatBearsItsXDQNameAlreadyIsNotLost) {
  definition().Disp = kDispRename;
  definition().QdxFileName = "/in/*.XDQ";
  setup_.Put("DAY.XDQ", OneFigure());
  EXPECT_TRUE(Import());
  EXPECT_TRUE(setup_.Has("DAY.XDQ"));
}

// --- Ways out before anything is written -----------------------------------------------------------------------------

TEST_F(QDXImportTest, AHeaderThatCannotBeReadLeavesAtOnceWithoutCleaningUp) {
  definition().Disp = kDispDelete;
  ExchangeFile bad = OneFigure();
  bad.magic = "Kelvo QDY";
  setup_.Put("A.QDX", OneFigure(), 1);
  setup_.Put("B.QDX", bad, 2);
  setup_.Put("C.QDX", OneFigure(), 3);
  EXPECT_FALSE(Import());
  EXPECT_THAT(Boxes(), ElementsAre("File is NOT an QDX file."));
  EXPECT_EQ(Lines().back(), "") << "nothing is printed behind the first file";
  EXPECT_EQ(Lines().size(), 5U);
  EXPECT_EQ(calls().calls.back(), "EndProgress") << "the header's own, and nothing behind it";
  EXPECT_NE(setup_.file_number, 0) << "the refused file stays open";
  EXPECT_EQ(Figure(101, 3), 2.5);
  EXPECT_FALSE(setup_.Has("A.QDX"));
  EXPECT_TRUE(setup_.Has("B.QDX"));
  EXPECT_TRUE(setup_.Has("C.QDX"));
}

TEST_F(QDXImportTest, CancelAtTheComparisonLeavesBookAndFile) {
  ExchangeFile last = ShopFile();
  last.accounts[0].description = "Counter";
  setup_.platform.memory.Put(kArchive, last.Bytes());
  definition().Disp = kDispDelete;
  setup_.math = 3;
  const Figures before = book().Figures();
  setup_.platform.boxes.Answer({kCancel});
  EXPECT_FALSE(Import(OneFigure()));
  EXPECT_EQ(book().Figures(), before);
  EXPECT_THAT(book().Journal(), IsEmpty());
  EXPECT_TRUE(setup_.Has("DAY.QDX"));
  EXPECT_TRUE(IsClosed());
  EXPECT_EQ(setup_.host->printer->Everything().back(), "100 | Counter | 100 | Front of shop");
  EXPECT_EQ(calls().calls.back(), "Printer.EndProgress");
}

// What may be wrong with a file or its definition, and what is told of it.
struct Refusal {
  Text name;
  std::function<void(ImportSetup&, ExchangeFile&)> spoil;
  std::vector<Text> told;
};

class RefusalTest : public ::testing::TestWithParam<Refusal> {};

TEST_P(RefusalTest, IsToldAndChangesNothing) {
  for (const Integer math : {Integer{1}, Integer{3}, kZeroOnly}) {
    ImportSetup setup;
    ExchangeFile file = ManyFigures();
    setup.definition.Disp = kDispDelete;
    setup.math = math;
    GetParam().spoil(setup, file);
    setup.Put("DAY.QDX", file);
    const Figures before = setup.host->book.Figures();
    for (const char* call : {"ReadRecord", "WriteRecord", "SetFieldValue"}) setup.host->record.Record(call, true);
    std::vector<Text> told = GetParam().told;
    told.push_back(kRefused);

    EXPECT_FALSE(setup.Import());

    EXPECT_EQ(setup.platform.boxes.Texts(), told);
    for (const ShownBox& box : setup.platform.boxes.Shown()) {
      EXPECT_EQ(box.style, kExclamationIcon | kOkOnly);
      EXPECT_EQ(box.caption, "Tallybook");
    }
    told.insert(told.begin(), "Begining Import of: /in/DAY.QDX at " + kNow);
    EXPECT_EQ(setup.Lines(), told);
    EXPECT_EQ(setup.host->book.Figures(), before);
    EXPECT_THAT(setup.host->book.Journal(), IsEmpty());
    for (const char* call : {"ReadRecord", "WriteRecord", "SetFieldValue"}) {
      EXPECT_THAT(setup.host->record.ArgumentsOf(call), IsEmpty());
    }
    EXPECT_TRUE(setup.Has("DAY.QDX"));
    EXPECT_EQ(setup.platform.memory.OpenHandles(), 0);
    EXPECT_FALSE(setup.host->printer->progress.open);
    EXPECT_THAT(setup.host->printer->progress.titles, Contains("Verifying Accounts and DataFields"));
    EXPECT_EQ(setup.host->record.calls.back(), "Printer.EndProgress");
  }
}

const Text kNoAccountInFile = "Account Code: GONE is in the Layout and not in the QDX file";
const Text kNoAccountInBook = "Account Code: 200 is in the Layout and not in the Database";
const Text kNoFieldInFile = "Field Number: 5 is in the Layout and not in the QDX file";
const Text kNoFieldInBook = "Field Number: 6 is in the Layout and not in the Database";

void LoseAccountInFile(ImportSetup& setup, ExchangeFile&) {
  setup.MatchAccounts({{"100", "100"}, {"GONE", "200"}, {"GONE TOO", "300"}});
}
void LoseFieldInFile(ImportSetup& setup, ExchangeFile&) {
  setup.MatchFields({{1, 1}, {5, 2}, {6, 2}});
}
Date FirstHeld() {
  return DateFromParts(2003, 1, 1);
}
Date LastHeld() {
  return DateFromParts(2005, 12, 31);
}

INSTANTIATE_TEST_SUITE_P(
    EachKind, RefusalTest,
    ::testing::Values(
        Refusal{"AccountNotInFile", LoseAccountInFile, {kNoAccountInFile}},
        Refusal{"AccountNotInBook",
                [](ImportSetup& setup, ExchangeFile&) {
                  setup.MatchAccounts({{"100", "100"}, {"200", "GONE"}, {"GONE", "300"}});
                },
                {kNoAccountInBook}},
        Refusal{"AccountInNeither",
                [](ImportSetup& setup, ExchangeFile&) {
                  setup.MatchAccounts({{"GONE", "GONE"}});
                },
                {kNoAccountInFile}},
        Refusal{"OneForOneAccountNotInBook",
                [](ImportSetup&, ExchangeFile& file) { file.accounts[1].code = "XYZ"; },
                {"Account Code: XYZ is in the Layout and not in the Database"}},
        Refusal{"AllToOneTargetNotInBook",
                [](ImportSetup& setup, ExchangeFile&) {
                  setup.definition.AcctMatch = kAllToOne;
                  setup.definition.AcctAll = 999;
                },
                {"Account Code: 100 is in the Layout and not in the Database"}},
        Refusal{"FieldNotInFile", LoseFieldInFile, {kNoFieldInFile}},
        Refusal{"FieldNotInBook",
                [](ImportSetup& setup, ExchangeFile&) {
                  setup.MatchFields({{1, 1}, {2, 6}, {5, 1}});
                },
                {kNoFieldInBook}},
        Refusal{"FieldOfNumberZeroNotInBook",
                [](ImportSetup&, ExchangeFile& file) { file.fields[0].number = 0; },
                {"Field Number: 0 is in the Layout and not in the Database"}},
        Refusal{
            "StartsADayTooEarly", [](ImportSetup&, ExchangeFile& file) { file.first = FirstHeld() - 1; }, {kBadDates}},
        Refusal{"EndsADayTooLate", [](ImportSetup&, ExchangeFile& file) { file.last = LastHeld() + 1; }, {kBadDates}},
        Refusal{"BothDatesOutsideIsToldOnce",
                [](ImportSetup&, ExchangeFile& file) {
                  file.first = FirstHeld() - 1;
                  file.last = LastHeld() + 1;
                },
                {kBadDates}},
        Refusal{"EveryKindAtOnce",
                [](ImportSetup& setup, ExchangeFile& file) {
                  LoseAccountInFile(setup, file);
                  LoseFieldInFile(setup, file);
                  file.last = LastHeld() + 1;
                },
                {kNoAccountInFile, kNoFieldInFile, kBadDates}}),
    [](const ::testing::TestParamInfo<Refusal>& refusal) { return refusal.param.name; });

TEST_F(QDXImportTest, AFileThatFillsTheBooksRangeToTheDayIsAccepted) {
  ExchangeFile file = ShopFile(FirstHeld(), LastHeld());
  file.blocks = {{1, {{FirstHeld(), {{2, 1}}}, {LastHeld(), {{1, 2}}}}}};
  EXPECT_TRUE(Import(file));
  EXPECT_EQ(book().Get(101, FirstHeld(), 2), 4);
  EXPECT_EQ(book().Get(101, LastHeld(), 1), 2);
}

TEST_F(QDXImportTest, AnEarlierFileStaysImportedWhenALaterOneIsRefused) {
  definition().Disp = kDispDelete;
  ExchangeFile late = OneFigure(100);
  late.last = LastHeld() + 1;
  setup_.Put("A.QDX", OneFigure(2), 1);
  setup_.Put("B.QDX", late, 2);
  setup_.Put("C.QDX", OneFigure(1000), 3);
  EXPECT_FALSE(Import());
  EXPECT_EQ(Figure(101, 3), 2);
  EXPECT_FALSE(setup_.Has("A.QDX"));
  EXPECT_TRUE(setup_.Has("B.QDX"));
  EXPECT_TRUE(setup_.Has("C.QDX"));
}

// --- The journal -----------------------------------------------------------------------------------------------------

TEST_F(QDXImportTest, TheJournalCoversTheFilesRangeAndIsClosedAtItsEnd) {
  for (const Integer math : {Integer{1}, Integer{3}, kZeroOnly}) {
    setup_.math = math;
    EXPECT_TRUE(Import(OneFigure()));
    const auto entry = book().Journal().back();
    EXPECT_EQ(entry.first, February(1)) << math;
    EXPECT_EQ(entry.last, February(3)) << math;
    EXPECT_TRUE(entry.closed) << math;
  }
  EXPECT_EQ(book().Journal().size(), 3U);
}

TEST_F(QDXImportTest, EachFileHasAJournalEntryOfItsOwn) {
  setup_.Put("A.QDX", OneFigure(), 1);
  setup_.Put("B.QDX", OneFigure(), 2);
  EXPECT_TRUE(Import());
  EXPECT_EQ(book().Journal().size(), 2U);
}

TEST_F(QDXImportTest, NoJournalIsKeptWhereTheSettingIsOff) {
  setup_.write_rollback = false;
  for (const Integer math : {Integer{1}, Integer{3}, kZeroOnly}) {
    setup_.math = math;
    EXPECT_TRUE(Import(OneFigure()));
  }
  EXPECT_THAT(book().Journal(), IsEmpty());
  EXPECT_THAT(calls().calls, Not(Contains("EndRollback")));
}

}  // namespace
}  // namespace tallybook::testing
