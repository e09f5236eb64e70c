#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <limits>
#include <rapidcheck.h>

#include "base/Dates.h"
#include "base/Failure.h"
#include "tests/support/MemoryHost.h"

namespace tallybook::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

Date Day(int year, int month, int day) {
  return DateFromParts(year, month, day);
}

// The number of the failure that `body` raises; 0 where it raises none.
template <typename Body>
int NumberFailed(Body&& body) {
  try {
    body();
  } catch (const Failure& failure) {
    return failure.Code();
  }
  return 0;
}

constexpr int kInvalid = static_cast<int>(FailureNumber::kInvalidArgument);
constexpr int kOutside = static_cast<int>(FailureNumber::kRange);

class MemoryMasterfileTest : public ::testing::Test {
 protected:
  std::unique_ptr<MemoryHost> host_ = SmallBook();
  MemoryMasterfile& book_ = host_->book;

  void Reopen(const BookShape& shape) { Replace(SmallBook(shape)); }
  void Write(Long account, Date date, Integer field, Double value) {
    ASSERT_TRUE(Current().ReadRecord(account, date));
    Current().SetFieldValue(field, value);
    ASSERT_TRUE(Current().WriteRecord());
  }
  MemoryMasterfile& Current() { return reopened_ ? reopened_->book : book_; }

 private:
  void Replace(std::unique_ptr<MemoryHost> host) { reopened_ = std::move(host); }
  std::unique_ptr<MemoryHost> reopened_;
};

// --- Records ---------------------------------------------------------------------------------------------------------

TEST_F(MemoryMasterfileTest, AWrittenValueIsReadAgain) {
  Write(101, Day(2004, 2, 3), 2, 7.25);
  ASSERT_TRUE(book_.ReadRecord(102, Day(2004, 2, 3)));
  EXPECT_EQ(book_.FieldValue(2), 0);
  ASSERT_TRUE(book_.ReadRecord(101, Day(2004, 2, 3)));
  EXPECT_EQ(book_.FieldValue(2), 7.25);
  EXPECT_EQ(book_.Get(101, Day(2004, 2, 3), 2), 7.25);
}

TEST_F(MemoryMasterfileTest, AChangeThatIsNotWrittenIsLostByTheNextRead) {
  for (const Date date : {Day(2003, 1, 1), Day(2003, 1, 2)}) {  // a record with figures, and one never stored
    const Double before = book_.Get(101, date, 1);
    ASSERT_TRUE(book_.ReadRecord(101, date));
    book_.SetFieldValue(1, 99);
    book_.SetFieldValue(1, 100);
    EXPECT_EQ(book_.FieldValue(1), 100);
    EXPECT_EQ(book_.Get(101, date, 1), before) << "a test sees what is stored";
    ASSERT_TRUE(book_.ReadRecord(101, date));
    EXPECT_EQ(book_.FieldValue(1), before);
  }
}

TEST_F(MemoryMasterfileTest, FiguresTellWhatIsStoredAndNotZero) {
  const MemoryMasterfile::FigureMap stored = {{{101, Day(2003, 1, 1), 1}, 12.5},
                                              {{101, Day(2003, 1, 1), 2}, 3},
                                              {{102, Day(2004, 2, 29), 1}, -0.125},
                                              {{205, Day(2005, 12, 31), 1}, 1e6}};
  EXPECT_EQ(book_.Figures(), stored);
  ASSERT_TRUE(book_.ReadRecord(101, Day(2003, 1, 1)));
  book_.SetFieldValue(1, 0);
  book_.SetFieldValue(7, 5);
  EXPECT_EQ(book_.Figures(), stored);
  ASSERT_TRUE(book_.WriteRecord());
  MemoryMasterfile::FigureMap changed = stored;
  changed.erase({101, Day(2003, 1, 1), 1});
  changed[{101, Day(2003, 1, 1), 7}] = 5;
  EXPECT_EQ(book_.Figures(), changed);
}

TEST_F(MemoryMasterfileTest, WritingKeepsTheRecordCurrent) {
  Write(101, Day(2004, 2, 3), 1, 1);
  EXPECT_EQ(book_.FieldValue(1), 1);
  book_.SetFieldValue(1, 2);
  EXPECT_TRUE(book_.WriteRecord());
  EXPECT_EQ(book_.Get(101, Day(2004, 2, 3), 1), 2);
}

TEST_F(MemoryMasterfileTest, WritingWithNoRecordReadDoesNothing) {
  const auto before = book_.Figures();
  EXPECT_FALSE(book_.WriteRecord());
  EXPECT_EQ(book_.Figures(), before);
}

TEST_F(MemoryMasterfileTest, AFieldOfNoRecordOrOfNoNumberIsInvalid) {
  EXPECT_EQ(NumberFailed([&] { static_cast<void>(book_.FieldValue(1)); }), kInvalid);
  EXPECT_EQ(NumberFailed([&] { book_.SetFieldValue(1, 1); }), kInvalid);
  ASSERT_TRUE(book_.ReadRecord(101, Day(2004, 2, 3)));
  for (const Integer number : {Integer{0}, Integer{3}, Integer{-1}, Integer{999}, Integer{32767}}) {
    EXPECT_EQ(NumberFailed([&] { static_cast<void>(book_.FieldValue(number)); }), kInvalid) << number;
    EXPECT_EQ(NumberFailed([&] { book_.SetFieldValue(number, 1); }), kInvalid) << number;
  }
}

TEST_F(MemoryMasterfileTest, ARecordNeedsAListedAccountAndAValidDate) {
  EXPECT_FALSE(book_.ReadRecord(103, Day(2004, 2, 3)));
  EXPECT_FALSE(book_.ReadRecord(0, Day(2004, 2, 3)));
  EXPECT_FALSE(book_.ReadRecord(101, Day(2002, 12, 31)));
  EXPECT_FALSE(book_.ReadRecord(101, Day(2006, 1, 1)));
  EXPECT_TRUE(book_.ReadRecord(101, Day(2003, 1, 1)));
  EXPECT_TRUE(book_.ReadRecord(101, Day(2005, 12, 31)));
  EXPECT_FALSE(book_.ReadRecord(103, Day(2004, 2, 3)));
  EXPECT_EQ(NumberFailed([&] { static_cast<void>(book_.FieldValue(1)); }), kInvalid) << "no record is current";
}

TEST_F(MemoryMasterfileTest, ARecordsDateIsLevelled) {
  BookShape shape;
  shape.data_level = kPeriodLevel;
  Reopen(shape);
  Write(101, Day(2004, 2, 3), 2, 4);
  EXPECT_EQ(Current().Get(101, Day(2004, 2, 17), 2), 4);
  EXPECT_EQ(Current().Figures().at({101, Day(2004, 2, 29), 2}), 4);
}

TEST_F(MemoryMasterfileTest, TheLastWeekIsHeldThoughItEndsBehindTheLastDate) {
  BookShape shape;
  shape.data_level = kWeekLevel;
  shape.week_ends_on = 6;  // 2005-12-31 is a Saturday, its week ends on Friday, 2006-01-06
  Reopen(shape);
  EXPECT_FALSE(Current().DateValid(Day(2006, 1, 6)));
  Write(101, Day(2005, 12, 31), 1, 4);
  EXPECT_TRUE(Current().ReadRecord(101, Day(2006, 1, 6)));
  EXPECT_EQ(Current().FieldValue(1), 4);
  EXPECT_FALSE(Current().ReadRecord(101, Day(2006, 1, 7)));
}

TEST_F(MemoryMasterfileTest, AFieldAddedLaterIsZeroAndMovesNothing) {
  const auto before = book_.Figures();
  book_.AddField(3, "Hours");
  EXPECT_EQ(book_.Figures(), before);
  EXPECT_EQ(book_.Get(101, Day(2003, 1, 1), 3), 0);
  Write(101, Day(2003, 1, 1), 3, 8);
  EXPECT_EQ(book_.Get(101, Day(2003, 1, 1), 3), 8);
  EXPECT_EQ(book_.Get(101, Day(2003, 1, 1), 2), 3);
}

TEST_F(MemoryMasterfileTest, SettingAFigureWhileARecordIsCurrentShowsInIt) {
  ASSERT_TRUE(book_.ReadRecord(101, Day(2004, 2, 3)));  // never stored
  book_.Set(101, Day(2004, 2, 3), 1, 5);
  EXPECT_EQ(book_.FieldValue(1), 5);
  for (int day = 1; day <= 300; ++day) book_.Set(101, Day(2005, 1, day), 1, day);  // storage moves
  EXPECT_EQ(book_.FieldValue(1), 5);
  book_.SetFieldValue(1, 6);
  ASSERT_TRUE(book_.WriteRecord());
  EXPECT_EQ(book_.Get(101, Day(2004, 2, 3), 1), 6);
}

TEST_F(MemoryMasterfileTest, TakenNumbersAndUnknownFiguresAreRefused) {
  EXPECT_EQ(NumberFailed([&] { book_.AddAccount(101, "X"); }), kInvalid);
  EXPECT_EQ(NumberFailed([&] { book_.AddAccount(10000, "X"); }), kInvalid);
  EXPECT_EQ(NumberFailed([&] { book_.AddField(7, "X"); }), kInvalid);
  EXPECT_EQ(NumberFailed([&] { book_.Set(103, Day(2004, 2, 3), 1, 1); }), kInvalid);
  EXPECT_EQ(NumberFailed([&] { book_.Set(101, Day(2006, 2, 3), 1, 1); }), kInvalid);
  EXPECT_EQ(NumberFailed([&] { static_cast<void>(book_.Get(101, Day(2004, 2, 3), 3)); }), kInvalid);
}

TEST_F(MemoryMasterfileTest, NumbersOfEverySizeAreFound) {
  BookShape shape;
  shape.max_accounts = std::numeric_limits<Long>::max();
  MemoryHost host(shape);
  host.book.AddField(1, "Sales");
  for (const Long number : {Long{2147483647}, Long{0}, Long{-5}, Long{1 << 20}, Long{1048575}}) {
    host.book.AddAccount(number, "C");
    host.book.Set(number, Day(2004, 2, 3), 1, number);
  }
  EXPECT_EQ(host.book.Get(2147483647, Day(2004, 2, 3), 1), 2147483647);
  EXPECT_EQ(host.book.Get(-5, Day(2004, 2, 3), 1), -5);
  EXPECT_EQ(host.book.Get(1048575, Day(2004, 2, 3), 1), 1048575);
  EXPECT_FALSE(host.book.ReadRecord(1048574, Day(2004, 2, 3)));
  EXPECT_FALSE(host.book.ReadRecord(-1, Day(2004, 2, 3)));
}

// --- Lists and shape -------------------------------------------------------------------------------------------------

TEST_F(MemoryMasterfileTest, ListsGiveNumbersByPosition) {
  EXPECT_EQ(book_.NumAccounts(), 3);
  EXPECT_EQ(book_.AccountNumber(3), 205);
  EXPECT_EQ(book_.NumFields(), 3);
  EXPECT_EQ(book_.FieldNumber(3), 7);
  EXPECT_EQ(book_.FieldName(3), "Weather");
  for (const Integer position : {Integer{0}, Integer{4}, Integer{-1}}) {
    EXPECT_EQ(NumberFailed([&] { static_cast<void>(book_.AccountNumber(position)); }), kOutside);
    EXPECT_EQ(NumberFailed([&] { static_cast<void>(book_.FieldNumber(position)); }), kOutside);
    EXPECT_EQ(NumberFailed([&] { static_cast<void>(book_.FieldName(position)); }), kOutside);
  }
}

TEST_F(MemoryMasterfileTest, AnAccountsCodeAndDescriptionArePadded) {
  book_.AddAccount(300, "A", "Caf\xC3\xA9");
  const auto accounts = book_.NewAccountRecord();
  accounts->SetSelect(101);
  EXPECT_EQ(accounts->Code(), "100       ");
  EXPECT_EQ(accounts->Description(), "Front of shop                 ");
  accounts->SetSelect(300);
  EXPECT_EQ(accounts->Description(), "Caf\xC3\xA9" + Text(26, ' '));
  EXPECT_EQ(accounts->Number(), 300);
  EXPECT_EQ(accounts->MaxNumber(), 300);
  accounts->SetSelect(103);
  EXPECT_EQ(accounts->Code(), Text(10, ' '));
  EXPECT_EQ(accounts->Number(), 103);
}

TEST_F(MemoryMasterfileTest, FieldsTellWhetherTheSystemKeepsThem) {
  const auto fields = book_.NewFieldRecord();
  fields->SetSelect(7);
  EXPECT_TRUE(fields->SystemMaintained());
  EXPECT_EQ(fields->Description(), "Weather");
  fields->SetSelect(2);
  EXPECT_FALSE(fields->SystemMaintained());
  fields->SetSelect(3);
  EXPECT_FALSE(fields->SystemMaintained());
  EXPECT_EQ(fields->Description(), "");
  EXPECT_EQ(fields->MaxNumber(), 7);
}

TEST_F(MemoryMasterfileTest, PeriodsAndYearsAreNamedAndMeasured) {
  EXPECT_EQ(book_.NumPeriods(), 12);
  EXPECT_EQ(book_.PeriodName(2), "February");
  EXPECT_EQ(book_.PeriodLength(2), 28);
  EXPECT_EQ(book_.FirstYear(), 2003);
  EXPECT_EQ(book_.YearCode(3), 2005);
  EXPECT_EQ(book_.YearStart(2006), Day(2006, 1, 1));
  EXPECT_EQ(NumberFailed([&] { static_cast<void>(book_.YearStart(2007)); }), kOutside);
  EXPECT_EQ(NumberFailed([&] { static_cast<void>(book_.PeriodName(13)); }), kOutside);
  EXPECT_EQ(NumberFailed([&] { static_cast<void>(book_.PeriodLength(0)); }), kOutside);
  EXPECT_EQ(NumberFailed([&] { static_cast<void>(book_.YearCode(4)); }), kOutside);
}

TEST_F(MemoryMasterfileTest, AYearThatBeginsInJulyNamesItsPeriodsFromJuly) {
  BookShape shape;
  shape.first_date = Day(2003, 7, 1);
  MemoryHost host(shape);
  EXPECT_EQ(host.book.PeriodName(1), "July");
  EXPECT_EQ(host.book.PeriodName(8), "February");
  EXPECT_EQ(host.book.PeriodLength(8), 29);
}

TEST_F(MemoryMasterfileTest, AnswersCanDifferFromTheTruthWithoutChangingIt) {
  book_.answers.num_periods = 27;
  book_.answers.num_years = 10;
  book_.answers.num_accounts = 10000;
  book_.answers.period_lengths[3] = -31;
  book_.answers.period_names[27] = "Last";
  book_.answers.year_codes[10] = -1;
  EXPECT_EQ(book_.NumPeriods(), 27);
  EXPECT_EQ(book_.PeriodName(26), "Period 26");
  EXPECT_EQ(book_.PeriodName(27), "Last");
  EXPECT_EQ(book_.PeriodLength(3), -31);
  EXPECT_EQ(book_.PeriodLength(27), 0);
  EXPECT_EQ(book_.NumYears(), 10);
  EXPECT_EQ(book_.YearCode(9), 2011);
  EXPECT_EQ(book_.YearCode(10), -1);
  EXPECT_EQ(book_.NumAccounts(), 10000);
  EXPECT_EQ(book_.LastDate(), Day(2005, 12, 31));
  EXPECT_EQ(book_.FiscalCalendar().LevelDate(Day(2004, 3, 5), kPeriodLevel), Day(2004, 3, 31));
}

TEST_F(MemoryMasterfileTest, DatesAreValidFromTheFirstToTheLast) {
  EXPECT_FALSE(book_.DateValid(Day(2002, 12, 31)));
  EXPECT_TRUE(book_.DateValid(Day(2003, 1, 1)));
  EXPECT_TRUE(book_.DateValid(Day(2005, 12, 31) + 0.5));
  EXPECT_FALSE(book_.DateValid(Day(2006, 1, 1)));
}

TEST_F(MemoryMasterfileTest, RightsAreThoseTheUserHolds) {
  EXPECT_TRUE(book_.AccessRight("A"));
  book_.rights.clear();
  EXPECT_FALSE(book_.AccessRight("A"));
}

TEST_F(MemoryMasterfileTest, TheTitleLookupKnowsItsOwnContextOnly) {
  EXPECT_EQ(book_.TitleSource().TitleFor(book_.TitleContext()), book_.SystemName());
  EXPECT_EQ(book_.TitleSource().TitleFor("other"), "");
}

// --- Progress --------------------------------------------------------------------------------------------------------

TEST_F(MemoryMasterfileTest, CancelComesAtTheChosenPollAndStaysUntilTheDisplayEnds) {
  book_.progress.CancelAtPoll(3);
  book_.BeginProgress("Copying");
  EXPECT_FALSE(book_.ProgressCancelled());
  EXPECT_FALSE(book_.ProgressCancelled());
  EXPECT_TRUE(book_.ProgressCancelled());
  EXPECT_TRUE(book_.ProgressCancelled());
  book_.EndProgress();
  EXPECT_FALSE(book_.ProgressCancelled());
}

TEST_F(MemoryMasterfileTest, TheDisplayRemembersTitlesTextsAndFractions) {
  book_.EndProgress();  // harmless
  book_.BeginProgress("One");
  book_.SetProgressFraction(0.5F);
  book_.SetProgressText("Half");
  book_.SetProgressCancelEnabled(true);
  EXPECT_TRUE(book_.progress.open);
  EXPECT_TRUE(book_.progress.cancel_enabled);
  EXPECT_EQ(book_.progress.text, "Half");
  book_.EndProgress();
  book_.BeginProgressText("Two");
  book_.EndProgress();
  EXPECT_FALSE(book_.progress.open);
  EXPECT_THAT(book_.progress.titles, ElementsAre("One", "Two"));
  EXPECT_THAT(book_.progress.fractions, ElementsAre(0.5F));
}

// --- Journal ---------------------------------------------------------------------------------------------------------

TEST_F(MemoryMasterfileTest, UndoGivesBackExactlyTheFiguresBefore) {
  const auto before = book_.Figures();
  EXPECT_EQ(book_.BeginRollback(Day(2003, 1, 1), Day(2003, 12, 31)), 1);
  Write(101, Day(2003, 1, 1), 1, 0);
  Write(101, Day(2003, 1, 1), 1, 77);
  Write(102, Day(2003, 5, 5), 7, 4);
  book_.EndRollback();
  EXPECT_NE(book_.Figures(), before);
  EXPECT_TRUE(book_.Journal().at(0).closed);
  EXPECT_EQ(book_.Journal().at(0).last, Day(2003, 12, 31));
  EXPECT_TRUE(book_.UndoLastRollback());
  EXPECT_EQ(book_.Figures(), before);
  EXPECT_THAT(book_.Journal(), IsEmpty());
  EXPECT_FALSE(book_.UndoLastRollback());
}

TEST_F(MemoryMasterfileTest, WhatWasWrittenOutsideTheEntryStays) {
  Write(101, Day(2003, 1, 2), 1, 1);
  book_.BeginRollback(Day(2003, 1, 1), Day(2003, 1, 31));
  Write(101, Day(2003, 1, 3), 1, 2);
  book_.EndRollback();
  Write(101, Day(2003, 1, 4), 1, 3);
  book_.UndoLastRollback();
  EXPECT_EQ(book_.Get(101, Day(2003, 1, 2), 1), 1);
  EXPECT_EQ(book_.Get(101, Day(2003, 1, 3), 1), 0);
  EXPECT_EQ(book_.Get(101, Day(2003, 1, 4), 1), 3);
}

TEST_F(MemoryMasterfileTest, AnEntryThatWasNeverClosedCanBeUndone) {
  const auto before = book_.Figures();
  book_.BeginRollback(Day(2003, 1, 1), Day(2003, 1, 31));
  Write(101, Day(2003, 1, 1), 1, 5);
  book_.SetFieldValue(1, 6);  // not written
  EXPECT_FALSE(book_.Journal().at(0).closed);
  EXPECT_TRUE(book_.UndoLastRollback());
  EXPECT_EQ(book_.Figures(), before);
}

TEST_F(MemoryMasterfileTest, EntriesAreUndoneLastFirst) {
  const auto before = book_.Figures();
  book_.BeginRollback(Day(2003, 1, 1), Day(2003, 1, 31));
  Write(101, Day(2003, 1, 1), 1, 5);
  EXPECT_EQ(book_.BeginRollback(Day(2003, 1, 1), Day(2003, 1, 31)), 2);
  const auto between = book_.Figures();
  Write(101, Day(2003, 1, 1), 1, 6);
  book_.EndRollback();
  EXPECT_FALSE(book_.Journal().at(0).closed);
  book_.UndoLastRollback();
  EXPECT_EQ(book_.Figures(), between);
  book_.UndoLastRollback();
  EXPECT_EQ(book_.Figures(), before);
}

// Any run of reads, changes, writes, journal entries and undos behaves like a map that is copied where an entry begins.
// No entry is closed here, so that after the first one everything is journalled, by the last entry that is left.
TEST_F(MemoryMasterfileTest, HoldsAgainstAPlainModel) {
  enum class Step { kRead, kChange, kWrite, kBegin, kUndo };
  const bool held = rc::check([] {
    const auto host = SmallBook();
    MemoryMasterfile& book = host->book;
    MemoryMasterfile::FigureMap stored = book.Figures();
    MemoryMasterfile::FigureMap unwritten;
    std::vector<MemoryMasterfile::FigureMap> images;
    std::optional<std::pair<Long, Date>> current;
    const auto steps = *rc::gen::container<std::vector<Step>>(rc::gen::weightedElement<Step>(
        {{4, Step::kRead}, {8, Step::kChange}, {5, Step::kWrite}, {1, Step::kBegin}, {1, Step::kUndo}}));
    for (const Step step : steps) {
      switch (step) {
        case Step::kRead:
          current = {*rc::gen::element<Long>(101, 205), Day(2003, 1, *rc::gen::inRange(1, 4))};
          RC_ASSERT(book.ReadRecord(current->first, current->second));
          unwritten.clear();
          break;
        case Step::kChange: {
          if (!current) break;
          const auto field = *rc::gen::element<Integer>(1, 7);
          const auto value = *rc::gen::inRange(1, 1000);
          book.SetFieldValue(field, value);
          unwritten[{current->first, current->second, field}] = value;
          RC_ASSERT(book.FieldValue(field) == value);
          break;
        }
        case Step::kWrite:
          RC_ASSERT(book.WriteRecord() == current.has_value());
          for (const auto& [key, value] : unwritten) stored[key] = value;
          unwritten.clear();
          break;
        case Step::kBegin:
          book.BeginRollback(Day(2003, 1, 1), Day(2003, 1, 31));
          images.push_back(stored);
          break;
        case Step::kUndo:
          RC_ASSERT(book.UndoLastRollback() != images.empty());
          unwritten.clear();
          if (images.empty()) break;
          stored = images.back();
          images.pop_back();
          break;
      }
      RC_ASSERT(book.Figures() == stored);
    }
  });
  EXPECT_TRUE(held);
}

}  // namespace
}  // namespace tallybook::testing
