#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include "tests/tallybook/desktop/figures/FiguresFixture.h"

namespace tallybook::desktop {
namespace {

using testing::Day;

class FigureTableTest : public testing::FiguresFixture {};

TEST_F(FigureTableTest, ShowsAnAccountAsFieldsByDates) {
  Choose(FigureView::kAccount, kDayLevel, kPeriodLevel);
  EXPECT_EQ(Table().Rows(), 31);
  EXPECT_EQ(Table().Columns(), 3);
  EXPECT_EQ(Table().RowHead(0, DateText), "Wed 2003-01-01");
  EXPECT_EQ(Table().ColumnHead(1, DateText), "Guests");
  EXPECT_EQ(Table().Value(4, 0), 50);
  EXPECT_EQ(Table().ShownName(DateText), "January 2003");
}

TEST_F(FigureTableTest, ShowsTheAccountsAndFieldsOfItsHeadsWhenOthersChangeTheLists) {
  Choose(FigureView::kDate, kDayLevel, kPeriodLevel, Day(2003, 1, 5));
  EXPECT_EQ(Table().Value(0, 0), 50);
  ChangeLists();
  Reader().Refresh();
  EXPECT_EQ(Table().RowHead(1, DateText), "200  Café");
  EXPECT_EQ(Table().Value(1, 1), 7);
  EXPECT_EQ(Table().Value(0, 0), 0) << "account 101 is gone";
  Reader().TakeLists();
  Table().FollowLists();
  EXPECT_EQ(Table().RowHead(0, DateText), "200  Café");
  EXPECT_EQ(Table().Value(0, 0), 77);
  EXPECT_EQ(Table().Value(0, 2), 7);
}

TEST_F(FigureTableTest, ShowsADateAsAccountsByFields) {
  Choose(FigureView::kDate, kDayLevel, kPeriodLevel, Day(2003, 1, 5));
  EXPECT_EQ(Table().Rows(), 3);
  EXPECT_EQ(Table().RowHead(1, DateText), "200  Café");
  EXPECT_EQ(Table().Value(0, 0), 50);
  EXPECT_EQ(Table().Value(1, 1), 7);
  EXPECT_EQ(Table().ShownName(DateText), "Sun 2003-01-05");
}

TEST_F(FigureTableTest, ShowsAFieldAsAccountsByDates) {
  Choose(FigureView::kField, kDayLevel, engine::kAllYearsLevel);
  EXPECT_EQ(Table().Rows(), 3);
  EXPECT_EQ(Table().Columns(), 365 + 366);
  EXPECT_EQ(Table().Value(0, 30), 310);
  EXPECT_EQ(Table().ColumnHead(30, DateText), "Fri 2003-01-31");
}

TEST_F(FigureTableTest, AddsUpToHigherLevels) {
  Choose(FigureView::kAccount, engine::kYearLevel, engine::kAllYearsLevel);
  EXPECT_EQ(Table().Rows(), 2);
  EXPECT_EQ(Table().Value(0, 0), 10.0 * 31 * 32 / 2);
  EXPECT_EQ(Table().Value(1, 2), 0.5);
}

TEST_F(FigureTableTest, SaysWhyASumCannotBeTypedInto) {
  Choose(FigureView::kAccount, kWeekLevel, kPeriodLevel);
  EXPECT_EQ(Table().WhyNotTyped(0, 0),
            "This is a sum over a Week. Figures are typed at the book's own level: choose \"Day\" under Level.");
  Choose(FigureView::kAccount, kDayLevel, kPeriodLevel);
  EXPECT_EQ(Table().WhyNotTyped(0, 0), "");
  EXPECT_EQ(Table().WhyNotTyped(0, 2), "\"Balance\" is kept by the book itself.");
}

TEST_F(FigureTableTest, GoesThroughTimeAndStopsAtTheEndsOfTheBook) {
  Choose(FigureView::kAccount, kDayLevel, kPeriodLevel, Day(2004, 11, 3));
  EXPECT_TRUE(Table().Go(1));
  EXPECT_EQ(Table().ShownName(DateText), "December 2004");
  EXPECT_FALSE(Table().Go(1));
  EXPECT_TRUE(Table().Go(-12));
  EXPECT_EQ(Table().ShownName(DateText), "December 2003");
}

TEST_F(FigureTableTest, TakesTheNearestThatTheBookHas) {
  FigureChoice choice;
  choice.account = 99;
  choice.field = 0;
  choice.date = Day(1999, 1, 1);
  choice.stretch = kDayLevel;
  choice.level = kPeriodLevel;
  Table().Choose(choice);
  EXPECT_EQ(Table().Choice().account, 3);
  EXPECT_EQ(Table().Choice().field, 1);
  EXPECT_EQ(Table().Choice().date, Day(2003, 1, 1));
  EXPECT_EQ(Table().Choice().stretch, kPeriodLevel);
}

TEST_F(FigureTableTest, ShowsWhatOthersWroteAfterARefresh) {
  Choose(FigureView::kAccount, kDayLevel, kPeriodLevel);
  EXPECT_EQ(Table().Value(0, 0), 10);
  Write(101, Day(2003, 1, 1), 1, 99);
  EXPECT_EQ(Table().Value(0, 0), 10);
  Reader().Refresh();
  EXPECT_EQ(Table().Value(0, 0), 99);
}

TEST_F(FigureTableTest, FindsTheCellThatShowsAFigure) {
  Choose(FigureView::kField, kDayLevel, kPeriodLevel, Day(2003, 2, 1));
  for (int row = 0; row < Table().Rows(); ++row) {
    for (int column = 0; column < Table().Columns(); ++column) {
      const FigurePlace place = Table().PlaceOf(row, column);
      ASSERT_EQ(Table().RowOf(place), row);
      ASSERT_EQ(Table().ColumnOf(place), column);
    }
  }
  EXPECT_EQ(Table().ColumnOf({1, 0, 1}), -1) << "January is not shown";
}

// Against the engine's own figures, whatever the view, the level, the calendar and the stretch.
class FigureTableModelTest : public testing::FiguresFixture {
 protected:
  static engine::BookDescription RandomBook() {
    engine::BookDescription book = testing::ShopDescription();
    book.calendar.kind = static_cast<engine::CalendarKind>(*rc::gen::inRange(0, 4));
    book.data_level = *rc::gen::inRange<Integer>(1, 4);
    const engine::Calendar calendar(book.calendar, book.data_level);
    std::set<std::tuple<Long, Date, Integer>> taken;
    const int count = *rc::gen::inRange(0, 60);
    for (int index = 0; index < count; ++index) {
      const Long account = *rc::gen::element<Long>(101, 205, 7);
      const Integer field = *rc::gen::element<Integer>(1, 4, 9);
      const Date day = calendar.FirstDate() + *rc::gen::inRange(0, 700);
      if (!taken.insert({account, calendar.UnitOf(day, kOwnLevel).last, field}).second) continue;
      book.values.push_back({account, day, field, static_cast<Double>(*rc::gen::inRange(-1000, 1000))});
    }
    return book;
  }

  // What the cell at a place shows, added up from all figures one by one.
  static Double Expected(const std::vector<engine::Figure>& figures, const FigureTable& table,
                         const FigurePlace& place) {
    Double sum = 0;
    for (const engine::Figure& figure : figures) {
      const bool here = figure.account_position == place.account && figure.field_position == place.field &&
                        table.Units().IndexOf(figure.date) == place.unit;
      if (here) sum += figure.value;
    }
    return sum;
  }
};

TEST_F(FigureTableModelTest, EveryCellIsTheSumOfTheBooksFigures) {
  EXPECT_TRUE(rc::check([this] {
    const Text path = folder.Path("random.tbk");
    std::filesystem::remove(path);
    engine::Book::Create(path, RandomBook());
    BookReader reader(path, app);
    std::vector<engine::Figure> figures;
    reader.Read().VisitFigures({}, [&](const engine::Figure& figure) {
      figures.push_back(figure);
      return true;
    });
    FigureTable table(reader);
    FigureChoice choice;
    choice.view = static_cast<FigureView>(*rc::gen::inRange(0, 3));
    choice.level = *rc::gen::inRange<Integer>(1, 7);
    choice.stretch = *rc::gen::inRange<Integer>(1, 8);
    choice.account = *rc::gen::inRange<Integer>(1, 4);
    choice.field = *rc::gen::inRange<Integer>(1, 4);
    choice.date = reader.CalendarRules().FirstDate() + *rc::gen::inRange(0, 720);
    table.Choose(choice);
    for (int row = 0; row < table.Rows(); ++row) {
      for (int column = 0; column < table.Columns(); ++column) {
        RC_ASSERT(table.Value(row, column) == Expected(figures, table, table.PlaceOf(row, column)));
      }
    }
  }));
}

}  // namespace
}  // namespace tallybook::desktop
