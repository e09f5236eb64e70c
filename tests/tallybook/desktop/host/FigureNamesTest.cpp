#include <QLocale>
#include <gtest/gtest.h>
#include <limits>

#include "tallybook/desktop/host/FigureNames.h"
#include "tests/tallybook/engine/BookFixture.h"

namespace tallybook::desktop {
namespace {

using tallybook::testing::Day;

// The user's locale is another one while it lives.
class LocaleOf {
 public:
  explicit LocaleOf(const QLocale& locale) { QLocale::setDefault(locale); }
  ~LocaleOf() { QLocale::setDefault(before_); }
  LocaleOf(const LocaleOf&) = delete;
  LocaleOf& operator=(const LocaleOf&) = delete;

 private:
  QLocale before_;
};

TEST(FigureNames, AreCodeOrNumberWithTheDescription) {
  const engine::BookDescription shop = tallybook::testing::ShopDescription();
  EXPECT_EQ(AccountName(shop, 2), "200  Café");
  EXPECT_EQ(FieldName(shop, 2), "4  Guests");
}

TEST(FigureNames, DatesAndNumbersAreWrittenAsTheLocaleHasThem) {
  const LocaleOf german{QLocale(QLocale::German)};
  EXPECT_EQ(DateIn(Day(2004, 2, 3)), "03.02.2004");
  EXPECT_EQ(FigureIn(-1234.5), "\u22121.234,50");
}

TEST(FigureNames, ALocaleWithoutALanguageWritesDatesFromTheYear) {
  const LocaleOf bare{QLocale::c()};
  EXPECT_EQ(DateIn(Day(2004, 2, 3)), "2004-02-03");
}

TEST(FigureNames, FiguresHaveTheDecimalsThatTheyNeedAndTwoWhereTheyNeedAny) {
  const LocaleOf bare{QLocale::c()};
  EXPECT_EQ(FigureIn(12), "12");
  EXPECT_EQ(FigureIn(12.5), "12.50");
  EXPECT_EQ(FigureIn(0.1234567), "0.1234567");
  EXPECT_EQ(FigureIn(1e300), "1e+300");
  EXPECT_EQ(FigureIn(std::numeric_limits<Double>::quiet_NaN()), "?");
}

}  // namespace
}  // namespace tallybook::desktop
