#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <set>

#include "base/Dates.h"
#include "tallybook/desktop/window/Preferences.h"
#include "tests/support/ScriptedPlatform.h"
#include "tests/support/TempFolder.h"

namespace tallybook::desktop {
namespace {

class PreferencesTest : public ::testing::Test {
 protected:
  Preferences Read(const Text& contents) {
    folder.Write("tallybook.ini", contents);
    return ReadPreferences(folder.Path("tallybook.ini"));
  }
  static LocaleStyle StyleWith(const Text& numbers, const Text& dates) {
    LocaleStyle system;
    system.numbers = {"'", ""};
    system.dates = [](Date) { return Text("by the system"); };
    system.habits.order = DateOrder::kMonthFirst;
    Preferences preferences;
    preferences.numbers = numbers;
    preferences.dates = dates;
    return StyleFor(preferences, system);
  }

  testing::ScriptedPlatform platform;
  testing::TempFolder folder;
};

TEST_F(PreferencesTest, WithoutAFileAllIsTheSystems) {
  const Preferences preferences = ReadPreferences(folder.Path("none.ini"));
  EXPECT_EQ(preferences.font_name, "");
  EXPECT_EQ(preferences.font_size, 0);
  EXPECT_EQ(preferences.numbers, "system");
  EXPECT_EQ(preferences.dates, "system");
  EXPECT_EQ(preferences.folder, "");
  EXPECT_FALSE(preferences.opens_last_book);
}

TEST_F(PreferencesTest, WhatIsSetIsRead) {
  const Preferences preferences =
      Read("[Desktop]\nFontName=Serif\nFontSize=14\nNumbers=comma\nDates=dots\nFolder=" + folder.Path() +
           "\nOpenLastBook=-1\n");
  EXPECT_EQ(preferences.font_name, "Serif");
  EXPECT_EQ(preferences.font_size, 14);
  EXPECT_EQ(preferences.numbers, "comma");
  EXPECT_EQ(preferences.dates, "dots");
  EXPECT_EQ(preferences.folder, folder.Path());
  EXPECT_TRUE(preferences.opens_last_book);
}

TEST_F(PreferencesTest, WhatDoesNotFitIsAsUsual) {
  const Preferences preferences =
      Read("[Desktop]\nFontSize=4000\nNumbers=roman\nDates=\nFolder=/there/is/no/such/folder\nOpenLastBook=perhaps\n");
  EXPECT_EQ(preferences.font_size, 0);
  EXPECT_EQ(preferences.numbers, "system");
  EXPECT_EQ(preferences.dates, "system");
  EXPECT_EQ(preferences.folder, "");
  EXPECT_FALSE(preferences.opens_last_book);
}

TEST_F(PreferencesTest, NumbersAreWrittenAsTheUserWants) {
  const auto written = [](const char* numbers) { return NumberText(1234.5, 2, StyleWith(numbers, "system").numbers); };
  EXPECT_EQ(written("system"), "1234'50");
  EXPECT_EQ(written("point"), "1,234.50");
  EXPECT_EQ(written("comma"), "1.234,50");
  EXPECT_EQ(written("space"), "1\u202F234,50");
}

TEST_F(PreferencesTest, DatesAreWrittenAndReadAsTheUserWants) {
  const Date day = DateFromParts(2024, 2, 3);
  const auto written = [&](const char* dates) { return StyleWith("system", dates).dates(day); };
  EXPECT_EQ(written("system"), "by the system");
  EXPECT_EQ(written("iso"), "2024-02-03");
  EXPECT_EQ(written("dots"), "03.02.2024");
  EXPECT_EQ(written("day-first"), "03/02/2024");
  EXPECT_EQ(written("month-first"), "02/03/2024");
  for (const char* dates : {"iso", "dots", "day-first", "month-first"}) {
    const LocaleStyle style = StyleWith("system", dates);
    EXPECT_EQ(ReadPlainDate(style.dates(day), day, day, style.habits), day) << dates << " reads back what it writes";
  }
}

TEST_F(PreferencesTest, EverySettingHasAKeyAndAUsualValueOfItsKind) {
  std::set<std::pair<Text, Text>> keys;
  for (const PreferenceGroup& group : AllPreferences()) {
    for (const Preference& each : group.preferences) {
      EXPECT_TRUE(keys.insert({each.section, each.key}).second) << each.key;
      EXPECT_EQ(ValueOf(each, folder.Path("none.ini")), each.usual) << each.key;
      EXPECT_NE(Text(each.caption).find('&'), Text::npos) << each.caption << " has no mnemonic";
    }
  }
}

}  // namespace
}  // namespace tallybook::desktop
