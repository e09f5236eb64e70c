// Whole roads: exchange files that a book wrote, imported into another by the component, and held against it.
#include <algorithm>
#include <chrono>
#include <filesystem>
#include <gmock/gmock.h>
#include <rapidcheck.h>

#include "tallybook/application/TieOut.h"
#include "tallybook/engine/JournalTrim.h"
#include "tests/tallybook/application/Office.h"

namespace tallybook::application {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

using testing::Day;
using testing::kAdded;
using testing::kReplaced;
using testing::kSubtracted;
using testing::Values;

class Office : public testing::Office {
 public:
  using testing::Office::Office;

  // Holds all files, or one.
  std::unique_ptr<TieOut> Hold(const Text& name = "*.QDX", Integer unknown_math = kReplaced) {
    report_printer_ = factory.NewPrinter();
    auto tie_out = std::make_unique<TieOut>(
        TieOut::Means{.book = *book, .factory = factory, .app = app, .report = *report_printer_});
    held = tie_out->Hold({.definition = definition, .pattern = folder.Path(name), .unknown_math = unknown_math});
    return tie_out;
  }
  static std::vector<Text> Told(TieOut& tie_out) {
    std::vector<Text> told;
    tie_out.VisitDifferences([&](const TieOutFigure& figure) {
      told.push_back(std::to_string(figure.account_number) + " " + DateText(figure.date) + " " +
                     std::to_string(figure.field_number) + ": " +
                     (figure.expected ? std::to_string(static_cast<Long>(*figure.expected)) : "?") + ", stands " +
                     std::to_string(static_cast<Long>(figure.stands)) + ", file " + std::to_string(figure.file));
      return true;
    });
    return told;
  }

  bool held = false;

 private:
  std::unique_ptr<Printer> report_printer_;
};

class TieOutTest : public ::testing::Test {
 protected:
  void SetUp() override {
    office.Write("north.QDX",
                 {{101, Day(2003, 1, 5), 1, 10}, {101, Day(2003, 1, 6), 1, 5}, {205, Day(2003, 2, 1), 4, 3}},
                 Day(2003, 1, 1), Day(2003, 3, 31));
  }
  Office office;
};

TEST_F(TieOutTest, FindsNothingBehindAReplacement) {
  office.Set(101, Day(2003, 1, 31), 1, 99);
  office.Import("north.QDX", kReplaced);
  const auto tie_out = office.Hold();
  ASSERT_TRUE(office.held);
  EXPECT_TRUE(tie_out->Agrees());
  EXPECT_THAT(Office::Told(*tie_out), IsEmpty());
  ASSERT_THAT(tie_out->Files(), SizeIs(1));
  EXPECT_EQ(tie_out->Files()[0].entry, 2);
  EXPECT_EQ(tie_out->Files()[0].applied, 3);
  // Three accounts, three fields and three months, all of which a replacement zeroes first.
  EXPECT_EQ(TieOutWords(*tie_out), "27 figures of 1 file held against the book: none differs.");
  EXPECT_EQ(HeldWords(tie_out->Files()[0]),
            office.folder.Path("north.QDX") + ": held as a replacement, as journal entry 2 tells");
}

TEST_F(TieOutTest, NamesEachFigureThatDiffersWithItsTotals) {
  office.Import("north.QDX", kReplaced);
  office.Set(101, Day(2003, 1, 31), 1, 16);
  office.Set(7, Day(2003, 2, 28), 1, 2);
  const auto tie_out = office.Hold();
  EXPECT_THAT(Office::Told(*tie_out),
              ElementsAre("101 2003-01-31 1: 15, stands 16, file 0", "7 2003-02-28 1: 0, stands 2, file 0"));
  EXPECT_EQ(TieOutWords(*tie_out), "27 figures of 1 file held against the book: 2 differ.");
  ASSERT_THAT(tie_out->AccountTotals(), SizeIs(2));
  EXPECT_EQ(tie_out->AccountTotals()[0].account_number, 101);
  EXPECT_EQ(tie_out->AccountTotals()[0].figures, 3);
  EXPECT_EQ(tie_out->AccountTotals()[0].differ, 1);
  EXPECT_EQ(tie_out->AccountTotals()[0].expected, 15);
  EXPECT_EQ(tie_out->AccountTotals()[0].stands, 16);
  ASSERT_THAT(tie_out->FieldTotals(), SizeIs(3));
  EXPECT_EQ(tie_out->FieldTotals()[0].differ, 2);
  EXPECT_EQ(tie_out->FieldTotals()[0].expected, 15);
  EXPECT_EQ(tie_out->FieldTotals()[0].stands, 18);
  EXPECT_EQ(tie_out->FieldTotals()[1].differ, 0);
}

TEST_F(TieOutTest, HoldsAnAdditionAgainstWhatTheJournalKept) {
  office.Set(101, Day(2003, 1, 31), 1, 100);
  office.Import("north.QDX", kAdded);
  ASSERT_EQ(office.Get(101, Day(2003, 1, 31), 1), 115);
  auto tie_out = office.Hold();
  EXPECT_TRUE(tie_out->Agrees());
  // A file that adds says nothing of figures that it has not.
  EXPECT_LT(tie_out->Figures().figures, 27);
  EXPECT_EQ(HeldWords(tie_out->Files()[0]),
            office.folder.Path("north.QDX") + ": held as an addition to what stood before journal entry 2");
  office.Set(101, Day(2003, 1, 31), 1, 114);
  tie_out = office.Hold();
  EXPECT_THAT(Office::Told(*tie_out), ElementsAre("101 2003-01-31 1: 115, stands 114, file 0"));
}

TEST_F(TieOutTest, HoldsASubtractionLikewise) {
  office.Set(101, Day(2003, 1, 31), 1, 100);
  office.Import("north.QDX", kSubtracted);
  ASSERT_EQ(office.Get(101, Day(2003, 1, 31), 1), 85);
  EXPECT_TRUE(office.Hold()->Agrees());
}

TEST_F(TieOutTest, CountsFiguresOfWhichNobodyCanTellWhatTheyWere) {
  office.Import("north.QDX", kAdded);
  (void)engine::JournalTrim(*office.book).Before(Day(2100, 1, 1));
  const auto tie_out = office.Hold();
  ASSERT_TRUE(office.held);
  EXPECT_FALSE(tie_out->Agrees());
  EXPECT_EQ(tie_out->Figures().untold, tie_out->Figures().figures);
  EXPECT_GT(tie_out->Figures().untold, 0);
  EXPECT_EQ(tie_out->Figures().differ, 0);
  EXPECT_THAT(Office::Told(*tie_out), ::testing::Contains("101 2003-01-31 1: ?, stands 15, file 0"));
  EXPECT_THAT(TieOutWords(*tie_out), ::testing::HasSubstr("cannot be told"));
}

TEST_F(TieOutTest, HoldsAFileThatTheJournalDoesNotKnowAsAReplacementOrAsTold) {
  office.Set(101, Day(2003, 1, 31), 1, 15);
  office.Set(205, Day(2003, 2, 28), 4, 3);
  auto tie_out = office.Hold();
  EXPECT_TRUE(tie_out->Agrees());
  EXPECT_EQ(HeldWords(tie_out->Files()[0]),
            office.folder.Path("north.QDX") + ": held as a replacement; the journal knows no import of it that stands");
  office.Set(7, Day(2003, 2, 28), 1, 2);
  EXPECT_FALSE(office.Hold()->Agrees());
  tie_out = office.Hold("*.QDX", kSubtracted);
  EXPECT_THAT(Office::Told(*tie_out), ::testing::Contains("101 2003-01-31 1: -15, stands 15, file 0"));
}

TEST_F(TieOutTest, LooksAtAFileThatWasUndoneAsIfItHadNotBeenImported) {
  office.Import("north.QDX", kAdded);
  engine::Journal(*office.book).UndoNewest();
  const auto tie_out = office.Hold();
  EXPECT_EQ(tie_out->Files()[0].entry, 0);
  EXPECT_THAT(Office::Told(*tie_out), SizeIs(2));
}

TEST_F(TieOutTest, OfSeveralFilesTheLaterOneCountsAndIsNamed) {
  const std::filesystem::path north(office.folder.Path("north.QDX"));
  std::filesystem::last_write_time(north, std::filesystem::last_write_time(north) - std::chrono::hours(1));
  office.Write("south.QDX", {{101, Day(2003, 1, 7), 1, 4}}, Day(2003, 1, 1), Day(2003, 1, 31));
  office.Import("north.QDX", kReplaced);
  office.Import("south.QDX", kAdded);
  auto tie_out = office.Hold();
  ASSERT_THAT(tie_out->Files(), SizeIs(2));
  EXPECT_TRUE(tie_out->Agrees()) << ::testing::PrintToString(Office::Told(*tie_out));
  office.Set(101, Day(2003, 1, 31), 1, 20);
  office.Set(205, Day(2003, 2, 28), 4, 1);
  tie_out = office.Hold();
  EXPECT_THAT(Office::Told(*tie_out),
              ElementsAre("101 2003-01-31 1: 19, stands 20, file 1", "205 2003-02-28 4: 3, stands 1, file 0"));
}

TEST_F(TieOutTest, TellsWhatCouldNotBeRead) {
  office.folder.Write("north.QDX", "no exchange file");
  office.platform.boxes.Answer({kOk});
  const auto tie_out = office.Hold();
  EXPECT_FALSE(office.held);
  ASSERT_TRUE(tie_out->Record().definitions.front().stop);
  EXPECT_EQ(tie_out->Record().definitions.front().stop->file, office.folder.Path("north.QDX"));
  EXPECT_FALSE(tie_out->Files()[0].held);
}

TEST_F(TieOutTest, IsNotHeldWithoutAFile) {
  const auto tie_out = office.Hold("nothing.QDX");
  EXPECT_FALSE(office.held);
  EXPECT_THAT(tie_out->Record().definitions.front().files, IsEmpty());
}

TEST(TieOut, FiguresDifferThatPeopleSeeToDiffer) {
  EXPECT_FALSE(Differ(0.1 + 0.2, 0.3));
  EXPECT_TRUE(Differ(0.3, 0.31));
  EXPECT_TRUE(Differ(0, 1e-9));
  EXPECT_FALSE(Differ(0.0, -0.0));
}

// --- Over random books and files -----------------------------------------------------------------------------------

Values RandomValues() {
  Values values;
  const int count = *rc::gen::inRange(0, 40);
  for (int index = 0; index < count; ++index) {
    const auto account = *rc::gen::element<Long>(101, 205, 7);
    const auto field = *rc::gen::element<Integer>(1, 4, 9);
    const Date date = Day(2003, 1, 1) + *rc::gen::inRange(0, 200);
    const Double value = *rc::gen::inRange(-5000, 5001) / 100.0;
    values.push_back({account, date, field, value});
  }
  std::ranges::sort(values, {}, [](const auto& value) { return std::tuple(value.account, value.date, value.field); });
  const auto same = [](const auto& one, const auto& other) {
    return std::tuple(one.account, one.date, one.field) == std::tuple(other.account, other.date, other.field);
  };
  values.erase(std::unique(values.begin(), values.end(), same), values.end());
  return values;
}

// What is set by hand, before or behind an import: the record that holds the date, whatever the level is.
struct Change {
  Long account = 0;
  Date date = 0;
  Integer field = 0;
  Double value = 0;
};

Change RandomChange() {
  return {.account = *rc::gen::element<Long>(101, 205, 7),
          .date = Day(2003, 1, 1) + *rc::gen::inRange(0, 90),
          .field = *rc::gen::element<Integer>(1, 4, 9),
          .value = *rc::gen::inRange(-100, 100) / 4.0};
}

TEST(TieOutProperties, FindNothingBehindAnImportAndJustTheOneFigureThatWasChangedSince) {
  const auto ok = rc::check("verify behind an import, and behind one changed figure", [&] {
    const Integer math = *rc::gen::elementOf(std::vector<Integer>{kReplaced, kReplaced, kAdded, kSubtracted});
    Office office(*rc::gen::elementOf(std::vector<Integer>{kDayLevel, kWeekLevel, kPeriodLevel}));
    office.Write("a.QDX", RandomValues(), Day(2003, 1, 1), Day(2003, 1, 1) + *rc::gen::inRange(90, 200));
    const int before = *rc::gen::inRange(0, 8);
    for (int count = 0; count < before; ++count) {
      const Change change = RandomChange();
      office.Set(change.account, change.date, change.field, change.value);
    }
    office.Import("a.QDX", math);
    auto tie_out = office.Hold();
    RC_ASSERT(office.held);
    RC_ASSERT(tie_out->Agrees());
    const Change change = RandomChange();
    const Double old = office.Get(change.account, change.date, change.field);
    office.Set(change.account, change.date, change.field, old + 1.25);
    tie_out = office.Hold();
    const auto told = Office::Told(*tie_out);
    // A file that adds says nothing of figures that it has not.
    RC_ASSERT(told.size() <= 1);
    RC_ASSERT(told.size() == 1 || math != kReplaced);
    tie_out->VisitDifferences([&](const TieOutFigure& figure) {
      RC_ASSERT(figure.account_number == change.account);
      RC_ASSERT(figure.field_number == change.field);
      RC_ASSERT(figure.stands == old + 1.25);
      RC_ASSERT(figure.expected.has_value());
      RC_ASSERT(*figure.expected == old);
      return true;
    });
  });
  EXPECT_TRUE(ok);
}

}  // namespace
}  // namespace tallybook::application
