#include <QtGui/QPainter>
#include <algorithm>
#include <array>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tallybook/desktop/figures/ChartPicture.h"
#include "tests/tallybook/desktop/TextsPainted.h"

namespace tallybook::desktop {
namespace {

using testing::PaintedText;
using testing::TextsPainted;

constexpr std::array kMonths = {"January", "February", "March",     "April",   "May",      "June",
                                "July",    "August",   "September", "October", "November", "December"};

// A year of days, cut into its months.
ChartData YearOfDays() {
  constexpr std::array<std::size_t, 12> kDays = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  ChartData data;
  data.title = "100  Front of shop  2003";
  for (std::size_t month = 0; month < kMonths.size(); ++month) {
    data.cuts.push_back({data.units.size(), kMonths[month]});
    for (std::size_t day = 1; day <= kDays[month]; ++day) data.units.push_back(kMonths[month]);
  }
  ChartLine line{"Sales", false, {}};
  for (std::size_t unit = 0; unit < data.units.size(); ++unit) line.values.emplace_back(static_cast<Double>(unit % 31));
  data.lines.push_back(line);
  return data;
}

// The names of months that are painted, from left to right.
std::vector<PaintedText> MonthsPainted(double width, bool right_to_left = false) {
  const QSize size(static_cast<int>(width), 300);
  TextsPainted device(size);
  ChartLook look;
  look.right_to_left = right_to_left;
  QPainter painter(&device);
  ChartPicture(YearOfDays(), look).Paint(painter, QRectF(QPointF(0, 0), QSizeF(size)), std::nullopt);
  painter.end();
  std::vector<PaintedText> months;
  std::ranges::copy_if(device.Texts(), std::back_inserter(months), [](const PaintedText& text) {
    return std::ranges::count(kMonths, text.text.toStdString()) != 0;
  });
  std::ranges::sort(months, {}, [](const PaintedText& text) { return text.place.left(); });
  return months;
}

std::vector<std::string> NamesOf(const std::vector<PaintedText>& months) {
  std::vector<std::string> names;
  for (const PaintedText& month : months) names.push_back(month.text.toStdString());
  return names;
}

void ExpectApart(const std::vector<PaintedText>& months) {
  for (std::size_t index = 1; index < months.size(); ++index) {
    EXPECT_LT(months[index - 1].place.right(), months[index].place.left()) << months[index].text.toStdString();
  }
}

TEST(ChartPictureTest, NamesEveryMonthBelowItsDaysWhereThereIsRoom) {
  const auto months = MonthsPainted(1600);
  EXPECT_THAT(NamesOf(months), ::testing::ElementsAreArray(kMonths));
  ExpectApart(months);
}

TEST(ChartPictureTest, NamesMonthsAtTheSameDistanceWhereAllWouldRunIntoEachOther) {
  for (const double width : {260.0, 400.0, 550.0, 700.0}) {
    const auto months = MonthsPainted(width);
    ASSERT_GE(months.size(), 2U) << width;
    ASSERT_LT(months.size(), kMonths.size()) << width;
    ExpectApart(months);
    EXPECT_EQ(months.front().text, "January");
    const auto second = std::ranges::find(kMonths, months[1].text.toStdString()) - kMonths.begin();
    std::vector<std::string> expected;
    for (std::size_t month = 0; expected.size() < months.size(); month += static_cast<std::size_t>(second)) {
      ASSERT_LT(month, kMonths.size()) << width;
      expected.emplace_back(kMonths[month]);
    }
    EXPECT_EQ(NamesOf(months), expected) << width;
  }
}

TEST(ChartPictureTest, GoesFromRightToLeftWhereWordsDo) {
  const bool right_to_left = true;
  const auto months = MonthsPainted(1600, right_to_left);
  std::vector<std::string> backwards(kMonths.begin(), kMonths.end());
  std::ranges::reverse(backwards);
  EXPECT_EQ(NamesOf(months), backwards);
}

}  // namespace
}  // namespace tallybook::desktop
