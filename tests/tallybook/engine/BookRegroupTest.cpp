// Books made from others: every calendar and level into every other, against sums over the dates of the old book.

#include <algorithm>
#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <optional>
#include <rapidcheck.h>
#include <tuple>
#include <vector>

#include "tallybook/engine/BookCheck.h"
#include "tallybook/engine/BookRegroup.h"
#include "tallybook/engine/Calendar.h"
#include "tallybook/engine/Journal.h"
#include "tests/tallybook/engine/BookFixture.h"

namespace tallybook::testing {
namespace {

using engine::Book;
using engine::BookDescription;
using engine::Calendar;
using engine::CalendarKind;
using engine::Regrouped;
using engine::RegroupedDescription;
using engine::RegroupRequest;
using ::testing::IsEmpty;

class BookRegroupTest : public BookFixture {
 protected:
  [[nodiscard]] Text NewPath() const { return folder.Path("New.tbk"); }
  Regrouped Regroup(Book& old, const RegroupRequest& request) {
    std::filesystem::remove(NewPath());
    const Regrouped regrouped =
        engine::MakeRegroupedBook(old, NewPath(), RegroupedDescription(old.Description(), request));
    made = Book::Open(NewPath(), app, {});
    return regrouped;
  }
  // Makes the old book anew.
  std::unique_ptr<Book> Old(const BookDescription& description) {
    made.reset();
    std::filesystem::remove(BookPath());
    return CreateAndOpen(description);
  }
  std::unique_ptr<Book> made;
};

BookDescription ShopWith(std::vector<engine::ValueDescription> values) {
  BookDescription shop = ShopDescription();
  shop.values = std::move(values);
  return shop;
}

TEST_F(BookRegroupTest, AddsDaysUpToTheirPeriods) {
  const auto old =
      Old(ShopWith({{101, Day(2003, 1, 5), 1, 2}, {101, Day(2003, 1, 6), 1, 3}, {7, Day(2004, 2, 29), 9, 4}}));
  const Regrouped regrouped = Regroup(*old, {.data_level = kPeriodLevel, .calendar = {}, .first_year = {}});
  EXPECT_EQ(regrouped.figures_read, 3);
  EXPECT_EQ(regrouped.figures, 2);
  EXPECT_THAT(regrouped.left_behind, IsEmpty());
  EXPECT_EQ(FiguresOf(*made), (FigureMap{{{101, Day(2003, 1, 31), 1}, 5}, {{7, Day(2004, 2, 29), 9}, 4}}));
  EXPECT_EQ(made->Description().accounts, old->Description().accounts);
  EXPECT_TRUE(engine::Journal(*made).Entries().empty());
}

TEST_F(BookRegroupTest, PutsThePeriodOnItsLastDayWhereDaysAreWanted) {
  BookDescription description = ShopWith({{101, Day(2003, 1, 5), 1, 2}});
  description.data_level = kPeriodLevel;
  const auto old = Old(description);
  Regroup(*old, {.data_level = kDayLevel, .calendar = {}, .first_year = {}});
  EXPECT_EQ(FiguresOf(*made), (FigureMap{{{101, Day(2003, 1, 31), 1}, 2}}));
}

TEST_F(BookRegroupTest, TellsWhatItLeavesBehindWithItsTotals) {
  const auto old =
      Old(ShopWith({{101, Day(2003, 1, 5), 1, 2}, {101, Day(2003, 12, 31), 1, 3}, {101, Day(2004, 1, 1), 1, 4}}));
  const Regrouped regrouped = Regroup(*old, {.data_level = {}, .calendar = {}, .first_year = Integer{2004}});
  EXPECT_EQ(FiguresOf(*made), (FigureMap{{{101, Day(2004, 1, 1), 1}, 4}}));
  ASSERT_EQ(regrouped.left_behind.size(), 1U);
  EXPECT_EQ(regrouped.left_behind[0].figures, 2);
  EXPECT_EQ(regrouped.left_behind[0].total, 5);
  EXPECT_EQ(made->FirstYear(), 2004);
  EXPECT_EQ(made->NumYears(), 1);
  EXPECT_EQ(made->LastDate(), old->LastDate());
}

TEST_F(BookRegroupTest, RefusesAYearThatTheBookHasNot) {
  for (const Integer year : {Integer{2002}, Integer{2005}}) {
    EXPECT_THAT(
        [&] {
          (void)RegroupedDescription(ShopDescription(), {{}, {}, year});
        },
        FailsWith(FailureNumber::kInvalidArgument, "the book has 2003 to 2004"));
  }
}

TEST_F(BookRegroupTest, RefusesAFigureThatTheNewCalendarDoesNotHoldAndLeavesNoFile) {
  BookDescription description = ShopWith({{101, Day(2003, 1, 2), 1, 2}});
  description.calendar.week_ends_on = 7;  // Saturday, January 4: the first year of weeks begins on the day behind it
  description.calendar.first_date = Day(2003, 1, 2);
  const auto old = Old(description);
  const RegroupRequest request = {{}, CalendarKind::k445, {}};
  EXPECT_THAT([&] { Regroup(*old, request); },
              FailsWith(FailureNumber::kInvalidArgument, "has a figure on 2003-01-02"));
  EXPECT_FALSE(folder.Has("New.tbk"));
}

TEST_F(BookRegroupTest, RefusesANameWhoseCompanionsAnotherBookHasLeft) {
  const auto old = Old(ShopWith({{101, Day(2003, 1, 5), 1, 2}}));
  folder.Write("TBQDX1.New", "of a book that is gone");
  EXPECT_THAT([&] { Regroup(*old, {}); },
              FailsWith(FailureNumber::kPathOrAccess, "TBQDX1.New, which would belong to it"));
  EXPECT_FALSE(folder.Has("New.tbk"));
  EXPECT_EQ(folder.Read("TBQDX1.New"), "of a book that is gone");
}

TEST_F(BookRegroupTest, RefusesASumThatIsNoFigureAndAPlaceThatIsTaken) {
  const auto old = Old(ShopWith({{101, Day(2003, 1, 5), 1, 1e308}, {101, Day(2003, 1, 6), 1, 1e308}}));
  const RegroupRequest request = {kPeriodLevel, {}, {}};
  EXPECT_THAT([&] { Regroup(*old, request); }, FailsWith(FailureNumber::kOverflow, "too large for a figure"));
  EXPECT_FALSE(folder.Has("New.tbk"));
  folder.Write("New.tbk", "taken");
  EXPECT_THAT(
      [&] {
        (void)engine::MakeRegroupedBook(*old, NewPath(), RegroupedDescription(old->Description(), {{}, {}, {}}));
      },
      FailsWith(FailureNumber::kPathOrAccess));
  EXPECT_EQ(folder.Read("New.tbk"), "taken");
}

// Whole figures add up exactly in any order.
TEST_F(BookRegroupTest, HasEveryFigureInTheRecordThatHoldsItsDateOverAllCalendarsAndLevels) {
  EXPECT_TRUE(rc::check([&] {
    const auto any_kind = [] {
      return *rc::gen::element(CalendarKind::kMonths, CalendarKind::kWeeks, CalendarKind::k445, CalendarKind::k13x4);
    };
    const auto any_level = [] { return *rc::gen::element(kDayLevel, kWeekLevel, kPeriodLevel); };
    BookDescription description = ShopDescription();
    description.calendar.kind = any_kind();
    description.calendar.first_date = Day(2003, 1, 1) + *rc::gen::inRange(0, 800);
    description.calendar.week_ends_on = *rc::gen::inRange<Integer>(1, 8);
    description.calendar.years = 3;
    description.data_level = any_level();
    auto old = Old(description);
    const Calendar rules(description.calendar, description.data_level);
    FigureMap figures;
    const int count = *rc::gen::inRange(0, 12);
    for (int i = 0; i < count; ++i) {
      const Date date =
          rules.FirstDate() + *rc::gen::inRange(0, static_cast<int>(rules.LastDate() - rules.FirstDate()) + 1);
      figures[{101, rules.UnitOf(date, kOwnLevel).last, 1}] = *rc::gen::inRange(-5, 6);
    }
    for (const auto& [place, value] : figures) Put(*old, 101, std::min(std::get<1>(place), rules.LastDate()), 1, value);
    old->Commit();
    RegroupRequest request;
    request.data_level = any_level();
    if (*rc::gen::arbitrary<bool>()) request.calendar = any_kind();
    if (*rc::gen::arbitrary<bool>()) request.first_year = static_cast<Integer>(2003 + *rc::gen::inRange(0, 3));
    std::optional<BookDescription> wanted;
    try {
      wanted = RegroupedDescription(old->Description(), request);
    } catch (const Failure& failure) {
      RC_ASSERT(failure.Number() == FailureNumber::kInvalidArgument && request.first_year);
      return;
    }
    const Calendar to(wanted->calendar, wanted->data_level);
    FigureMap expected;
    bool fits = true;
    Double left_behind = 0;
    for (const auto& [place, value] : FiguresOf(*old)) {
      const Date date = std::min(std::get<1>(place), rules.LastDate());
      if (rules.PlaceOf(date).year < wanted->calendar.first_year && date < to.FirstDate()) {
        left_behind += value;
        continue;
      }
      fits = fits && date >= to.FirstDate() && date <= to.LastRecordDate();
      if (fits) expected[{101, to.UnitOf(date, kOwnLevel).last, 1}] += value;
    }
    std::erase_if(expected, [](const auto& figure) { return figure.second == 0; });
    if (!fits) {
      RC_ASSERT_THROWS_AS(Regroup(*old, request), Failure);
      RC_ASSERT(!folder.Has("New.tbk"));
      return;
    }
    const Regrouped regrouped = Regroup(*old, request);
    RC_ASSERT(FiguresOf(*made) == expected);
    RC_ASSERT((regrouped.left_behind.empty() ? 0 : regrouped.left_behind.front().total) == left_behind);
    made->Close();
    RC_ASSERT(engine::CheckBook(NewPath(), true).findings.empty());
  }));
}

}  // namespace
}  // namespace tallybook::testing
