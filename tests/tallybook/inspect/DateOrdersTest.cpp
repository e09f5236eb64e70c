#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include "tallybook/inspect/DateOrders.h"
#include "tests/import/TextImportSetup.h"

namespace tallybook::inspect {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

const Text kPath = "/in/daily.txt";

class DateOrdersTest : public ::testing::Test {
 protected:
  DateOrders Find(const std::string& bytes, const DelimitedForm& form = {}) {
    setup_.platform.memory.Put(kPath, bytes);
    return FindDateOrders(setup_.book(), kPath, form);
  }
  std::vector<Text> Fitting(const std::string& bytes, const DelimitedForm& form = {}) {
    std::vector<Text> words;
    for (const DateOrder& order : Find(bytes, form).fitting) words.push_back(order.word);
    return words;
  }

  testing::TextImportSetup setup_;
};

TEST_F(DateOrdersTest, OneDateMayDecide) {
  const DateOrders orders = Find("02/03/2004,100,1,5\r02/13/2004,100,1,5\r");
  ASSERT_EQ(orders.fitting.size(), 1U);
  EXPECT_EQ(orders.fitting[0].order, kMonthDayYear);
  EXPECT_EQ(orders.dates, 2);
  EXPECT_EQ(Tell(orders),
            "the dates are MDY (month, day, year): line 1 \"02/03/2004\" rules out YMD, line 2 \"02/13/2004\" rules "
            "out DMY");
  EXPECT_EQ(orders.ruled_out[1].reason, "2004-13-2 is in no calendar and is read as 2005-01-02");
}

TEST_F(DateOrdersTest, WhereSeveralFitTheFirstDateThatTheyReadInTwoWaysIsTold) {
  const DateOrders orders = Find("02/02/2004,100,1,5\r02/03/2004,100,1,5\r");
  EXPECT_EQ(orders.fitting.size(), 2U);
  EXPECT_EQ(Tell(orders), "MDY and DMY both fit all dates: line 2 \"02/03/2004\" is 2004-02-03 or 2004-03-02");
}

TEST_F(DateOrdersTest, OrdersThatReadEveryDateAlikeCountAsOne) {
  EXPECT_THAT(Fitting("02/02/2004,100,1,5\r03.03.2004,100,1,5\r"), ElementsAre("MDY"));
}

TEST_F(DateOrdersTest, WhereNoneFitsEachHasTheDateThatRulesItOut) {
  const DateOrders orders = Find("13/02/2004,100,1,5\r02/13/2004,100,1,5\r");
  EXPECT_THAT(orders.fitting, IsEmpty());
  EXPECT_EQ(orders.ruled_out.size(), 3U);
  EXPECT_EQ(Tell(orders),
            "no order of month, day and year fits all dates: line 1 \"13/02/2004\" rules out MDY and YMD, line 2 "
            "\"02/13/2004\" rules out DMY");
}

TEST_F(DateOrdersTest, TheBooksYearsRuleOutOrdersToo) {
  EXPECT_THAT(Fitting("03/02/04,100,1,5\r"), ElementsAre("MDY", "DMY", "YMD"));
  EXPECT_THAT(Fitting("10/02/04,100,1,5\r"), ElementsAre("MDY", "DMY")) << "2010 is no year of the book";
  EXPECT_THAT(Fitting("2004,2,3,100,1,5\r", {.date_in_one_field = false}), ElementsAre("YMD"));
}

TEST_F(DateOrdersTest, LinesWithoutTextAndCommentsHaveNoDate) {
  EXPECT_EQ(Find("02/13/2004,100,1,5\r\n;note\r\n\r\n").dates, 1);
  EXPECT_EQ(Find("").dates, 0);
}

TEST_F(DateOrdersTest, ATextThatIsNoDateRulesOutEveryOrder) {
  EXPECT_THAT(Fitting("Date,Account\r02/13/2004,100,1,5\r"), IsEmpty());
}

TEST_F(DateOrdersTest, TheUserMayEndIt) {
  setup_.book().progress.CancelAtPoll(2);
  const DateOrders orders = Find("02/13/2004,100,1,5\r02/13/2004,100,1,5\r02/13/2004,100,1,5\r");
  EXPECT_TRUE(orders.cancelled);
  EXPECT_EQ(orders.dates, 2);
  EXPECT_THAT(orders.fitting, IsEmpty());
  EXPECT_FALSE(setup_.book().progress.open);
}

// Dates that were written in one order are read in it, or the choice is left open.
RC_GTEST_PROP(DateOrdersProperties, TheOrderThatTheDatesWereWrittenInAlwaysFits, ()) {
  testing::TextImportSetup setup;
  const int order = *rc::gen::inRange(1, 4);
  std::string bytes;
  for (const int day : *rc::gen::nonEmpty(rc::gen::container<std::vector<int>>(rc::gen::inRange(0, 1096)))) {
    const DateParts parts = PartsOf(setup.book().FirstDate() + day);
    const auto text = [](int number) { return std::to_string(number); };
    if (order == kMonthDayYear) bytes += text(parts.month) + "/" + text(parts.day) + "/" + text(parts.year);
    if (order == kDayMonthYear) bytes += text(parts.day) + "/" + text(parts.month) + "/" + text(parts.year);
    if (order == kYearMonthDay) bytes += text(parts.year) + "/" + text(parts.month) + "/" + text(parts.day);
    bytes += ",100,1,5\r";
  }
  setup.platform.memory.Put(kPath, bytes);
  const DateOrders orders = FindDateOrders(setup.book(), kPath, {});
  RC_ASSERT(std::ranges::none_of(orders.ruled_out, [&](const auto& out) { return out.order.order == order; }));
  RC_ASSERT(!orders.fitting.empty());
}

}  // namespace
}  // namespace tallybook::inspect
