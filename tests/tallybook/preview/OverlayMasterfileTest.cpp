// A database laid over another, beside a twin of the one below that is written in earnest: both must answer alike, and
// the one below must never change.
#include <cmath>
#include <gmock/gmock.h>
#include <limits>
#include <rapidcheck.h>

#include "base/Dates.h"
#include "tallybook/preview/OverlayMasterfile.h"
#include "tests/support/FailsWith.h"
#include "tests/support/MemoryHost.h"
#include "tests/support/ScriptedPlatform.h"

namespace tallybook::preview {
namespace {

using testing::FailsWith;
using testing::MemoryMasterfile;
using FigureMap = MemoryMasterfile::FigureMap;
using ::testing::ElementsAre;

constexpr std::size_t kTinyCache = 300;

Date Day(int year, int month, int day) {
  return DateFromParts(year, month, day);
}

void ApplyOne(FigureMap& figures, const FigureChange& change) {
  const MemoryMasterfile::FigureKey key{change.account_number, change.date, change.field_number};
  const auto found = figures.find(key);
  RC_ASSERT((found == figures.end() ? 0 : found->second) == change.before);
  RC_ASSERT(change.before != change.after);
  figures[key] = change.after;
  if (change.after == 0) figures.erase(key);
}

// `figures` with the changes of a record that are told.
void Apply(FigureMap& figures, std::span<const FigureChange> of_record) {
  RC_ASSERT(!of_record.empty());
  for (const FigureChange& change : of_record) ApplyOne(figures, change);
}

class OverlayMasterfileTest : public ::testing::Test {
 protected:
  explicit OverlayMasterfileTest(const testing::BookShape& shape = {})
      : host_(testing::SmallBook(shape)),
        overlay_(std::make_unique<OverlayMasterfile>(host_->book, host_->factory, host_->app, kTinyCache)) {}

  void Put(Long account, Date date, Integer field, Double value) {
    ASSERT_TRUE(overlay_->ReadRecord(account, date));
    overlay_->SetFieldValue(field, value);
    ASSERT_TRUE(overlay_->WriteRecord());
  }
  std::vector<Text> Told(bool of_file = true) {
    std::vector<Text> told;
    const auto tell = [&](std::span<const FigureChange> of_record) {
      for (const FigureChange& change : of_record) {
        told.push_back(std::to_string(change.account_number) + " " + DateText(change.date) + " " +
                       std::to_string(change.field_number) + ": " + std::to_string(static_cast<Long>(change.before)) +
                       " -> " + std::to_string(static_cast<Long>(change.after)));
      }
      return true;
    };
    counts_ = of_file ? overlay_->VisitFile(tell) : overlay_->VisitAll(tell);
    return told;
  }

  testing::ScriptedPlatform platform_;
  std::unique_ptr<testing::MemoryHost> host_;
  std::unique_ptr<OverlayMasterfile> overlay_;
  RecordCounts counts_;
};

TEST_F(OverlayMasterfileTest, ReadsThroughAndKeepsWhatIsWritten) {
  Put(101, Day(2003, 1, 1), 2, 8);
  ASSERT_TRUE(overlay_->ReadRecord(101, Day(2003, 1, 1)));
  EXPECT_EQ(overlay_->FieldValue(1), 12.5);
  EXPECT_EQ(overlay_->FieldValue(2), 8);
  EXPECT_EQ(host_->book.Get(101, Day(2003, 1, 1), 2), 3);
}

TEST_F(OverlayMasterfileTest, DropsWhatWasSetAndNotWritten) {
  ASSERT_TRUE(overlay_->ReadRecord(101, Day(2003, 1, 1)));
  overlay_->SetFieldValue(2, 8);
  EXPECT_EQ(overlay_->FieldValue(2), 8);
  ASSERT_TRUE(overlay_->ReadRecord(101, Day(2003, 1, 1)));
  EXPECT_EQ(overlay_->FieldValue(2), 3);
  EXPECT_THAT(Told(), ElementsAre());
  EXPECT_EQ(counts_.same, 0);
}

TEST_F(OverlayMasterfileTest, TellsChangesInTheOrderOfTheLists) {
  Put(205, Day(2003, 5, 6), 7, 4);
  Put(205, Day(2003, 5, 6), 1, 9);
  Put(101, Day(2003, 1, 2), 1, 5);
  Put(101, Day(2003, 1, 1), 2, 8);
  EXPECT_THAT(Told(), ElementsAre("101 2003-01-01 2: 3 -> 8", "101 2003-01-02 1: 0 -> 5", "205 2003-05-06 1: 0 -> 9",
                                  "205 2003-05-06 7: 0 -> 4"));
  EXPECT_EQ(counts_.changed, 3);
}

TEST_F(OverlayMasterfileTest, CountsRecordsThatEndAsTheyWere) {
  Put(101, Day(2003, 1, 1), 2, 3);
  Put(102, Day(2003, 1, 1), 2, 5);
  Put(102, Day(2003, 1, 1), 2, 0);
  EXPECT_THAT(Told(), ElementsAre());
  EXPECT_EQ(counts_.same, 2);
  EXPECT_EQ(counts_.changed, 0);
}

TEST_F(OverlayMasterfileTest, TellsOfEachFileAloneAndOfAllTogether) {
  Put(101, Day(2003, 1, 1), 2, 8);
  Put(102, Day(2003, 1, 1), 2, 5);
  overlay_->BeginFile();
  Put(101, Day(2003, 1, 1), 2, 9);
  Put(102, Day(2003, 1, 1), 2, 0);
  EXPECT_THAT(Told(), ElementsAre("101 2003-01-01 2: 8 -> 9", "102 2003-01-01 2: 5 -> 0"));
  const bool of_file = false;
  EXPECT_THAT(Told(of_file), ElementsAre("101 2003-01-01 2: 3 -> 9"));
  EXPECT_EQ(counts_.same, 1);
}

TEST_F(OverlayMasterfileTest, RefusesWhatTheDatabaseBelowRefuses) {
  EXPECT_FALSE(overlay_->ReadRecord(999, Day(2003, 1, 1)));
  EXPECT_FALSE(overlay_->ReadRecord(101, Day(1999, 1, 1)));
  EXPECT_FALSE(overlay_->WriteRecord());
  EXPECT_THAT([&] { (void)overlay_->FieldValue(1); }, FailsWith(FailureNumber::kInvalidArgument));
  EXPECT_THAT([&] { overlay_->SetFieldValue(1, 1); }, FailsWith(FailureNumber::kInvalidArgument));
  ASSERT_TRUE(overlay_->ReadRecord(101, Day(2003, 1, 1)));
  EXPECT_THAT([&] { (void)overlay_->FieldValue(55); }, FailsWith(FailureNumber::kInvalidArgument));
  EXPECT_THAT([&] { overlay_->SetFieldValue(55, 1); }, FailsWith(FailureNumber::kInvalidArgument));
  EXPECT_THAT([&] { overlay_->SetFieldValue(1, std::numeric_limits<Double>::infinity()); },
              FailsWith(FailureNumber::kOverflow));
  EXPECT_EQ(overlay_->FieldValue(1), 12.5);
}

TEST_F(OverlayMasterfileTest, FailsAsTheDatabaseBelowDoesWhereItReads) {
  host_->record.FailOn("ReadRecord", 1, Failure(FailureNumber::kDeviceError, "damaged"));
  EXPECT_THAT([&] { (void)overlay_->ReadRecord(101, Day(2003, 1, 1)); },
              FailsWith(FailureNumber::kDeviceError, "damaged"));
  EXPECT_TRUE(overlay_->ReadRecord(101, Day(2003, 1, 1)));
}

TEST_F(OverlayMasterfileTest, MovesNoCursorOfTheDatabaseBelow) {
  host_->book.FiscalCalendar().SetCurrentDate(Day(2004, 5, 6));
  OverlayMasterfile overlay(host_->book, host_->factory, host_->app, kTinyCache);
  EXPECT_EQ(overlay.FiscalCalendar().CurrentDate(), Day(2004, 5, 6));
  overlay.FiscalCalendar().SetCurrentDate(Day(2003, 1, 1));
  (void)overlay.FiscalCalendar().LevelDate(Day(2003, 7, 8), 6);
  EXPECT_EQ(host_->book.FiscalCalendar().CurrentDate(), Day(2004, 5, 6));
}

TEST_F(OverlayMasterfileTest, DaysThatAreRecordsAreNotRegrouped) {
  Put(101, Day(2003, 1, 1), 2, 8);
  EXPECT_TRUE(overlay_->Regrouped().empty());
}

class OverlayOfPeriodsTest : public OverlayMasterfileTest {
 protected:
  static testing::BookShape Periods() {
    testing::BookShape shape;
    shape.data_level = kPeriodLevel;
    return shape;
  }
  OverlayOfPeriodsTest() : OverlayMasterfileTest(Periods()) {}
  // As an import of an exchange file adds a figure.
  void Add(Date day, Double value) {
    const Date level_date = overlay_->FiscalCalendar().LevelDate(day, overlay_->DataLevel());
    ASSERT_TRUE(overlay_->ReadRecord(101, level_date));
    overlay_->SetFieldValue(1, overlay_->FieldValue(1) + value);
    ASSERT_TRUE(overlay_->WriteRecord());
  }
};

TEST_F(OverlayOfPeriodsTest, TellsWhichDaysWentIntoARecord) {
  Add(Day(2003, 1, 30), 1);
  Add(Day(2003, 2, 1), 1);
  Add(Day(2003, 1, 31), 1);
  Put(102, Day(2003, 5, 6), 1, 3);
  const std::vector<RegroupedDays> regrouped = overlay_->Regrouped();
  ASSERT_EQ(regrouped.size(), 3);
  EXPECT_EQ(regrouped[0].record, Day(2003, 1, 31));
  EXPECT_EQ(regrouped[0].first, Day(2003, 1, 30));
  EXPECT_EQ(regrouped[0].last, Day(2003, 1, 31));
  EXPECT_EQ(regrouped[0].days, 2);
  EXPECT_EQ(regrouped[1].record, Day(2003, 2, 28));
  EXPECT_EQ(regrouped[2].first, Day(2003, 5, 6));
}

TEST_F(OverlayOfPeriodsTest, ARangeThatIsZeroedBringsNoDays) {
  (void)overlay_->FiscalCalendar().LevelDate(Day(2003, 1, 5), overlay_->DataLevel());
  Put(101, Day(2003, 1, 31), 1, 0);
  EXPECT_THAT(Told(), ElementsAre("101 2003-01-31 1: 12 -> 0"));
  EXPECT_TRUE(overlay_->Regrouped().empty());
}

// The same acts on the overlay and on a twin.
class Acts {
 public:
  Acts(Masterfile& overlay, Masterfile& twin) : overlay_(overlay), twin_(twin) {}

  void Read() {
    const Long account = *rc::gen::element<Long>(101, 102, 205, 999);
    const Date date = Day(2003, 1, 1) + *rc::gen::inRange(-3, 70);
    current_ = twin_.ReadRecord(account, date);
    RC_ASSERT(overlay_.ReadRecord(account, date) == current_);
  }
  void Ask() {
    if (!current_) return;
    const auto field = *rc::gen::element<Integer>(1, 2, 7);
    RC_ASSERT(overlay_.FieldValue(field) == twin_.FieldValue(field));
  }
  void Set() {
    if (!current_) return;
    const auto field = *rc::gen::element<Integer>(1, 2, 7);
    const Double value = *rc::gen::inRange(-2, 3);
    overlay_.SetFieldValue(field, value);
    twin_.SetFieldValue(field, value);
  }
  void Write() { RC_ASSERT(overlay_.WriteRecord() == twin_.WriteRecord()); }

 private:
  Masterfile& overlay_;
  Masterfile& twin_;
  bool current_ = false;
};

void CompareWithATwin(Integer data_level) {
  testing::BookShape shape;
  shape.data_level = data_level;
  const auto host = testing::SmallBook(shape);
  const auto twin = testing::SmallBook(shape);
  const FigureMap before = host->book.Figures();
  FigureMap before_file = before;
  OverlayMasterfile overlay(host->book, host->factory, host->app, kTinyCache);
  Acts acts(overlay, twin->book);
  const auto check_file = [&] {
    overlay.VisitFile([&](std::span<const FigureChange> of_record) {
      Apply(before_file, of_record);
      return true;
    });
    (void)twin->book.ReadRecord(999, 0);
    RC_ASSERT(before_file == twin->book.Figures());
  };
  const int count = *rc::gen::inRange(1, 300);
  for (int act = 0; act < count; ++act) {
    const int choice = *rc::gen::inRange(0, 40);
    if (choice == 0) {
      check_file();
      overlay.BeginFile();
      acts.Read();
    } else if (choice < 12) {
      acts.Read();
    } else if (choice < 18) {
      acts.Ask();
    } else if (choice < 30) {
      acts.Set();
    } else {
      acts.Write();
    }
  }
  check_file();
  FigureMap net = before;
  overlay.VisitAll([&](std::span<const FigureChange> of_record) {
    Apply(net, of_record);
    return true;
  });
  RC_ASSERT(net == twin->book.Figures());
  RC_ASSERT(host->book.Figures() == before);
}

TEST_F(OverlayMasterfileTest, AnswersAsADatabaseThatIsWrittenInEarnest) {
  EXPECT_TRUE(rc::check([] { CompareWithATwin(*rc::gen::element(kDayLevel, kWeekLevel, kPeriodLevel)); }));
}

}  // namespace
}  // namespace tallybook::preview
