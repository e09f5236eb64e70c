#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "base/Dates.h"
#include "tallybook/desktop/window/DesktopSettings.h"
#include "tests/support/ScriptedPlatform.h"
#include "tests/support/TempFolder.h"

namespace tallybook::desktop {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class DesktopSettingsTest : public ::testing::Test {
 protected:
  testing::ScriptedPlatform platform;
  testing::TempFolder folder;
  DesktopSettings settings{folder.Path("new/desktop.ini")};
};

TEST_F(DesktopSettingsTest, RemembersTheBooksOpenedLatelyOnceEach) {
  EXPECT_THAT(settings.RecentBooks(), IsEmpty());
  for (const char* book : {"/a.tbk", "/b.tbk", "/a.tbk"}) settings.NoteBook(book);
  EXPECT_THAT(settings.RecentBooks(), ElementsAre("/a.tbk", "/b.tbk"));
  settings.ForgetBook("/a.tbk");
  EXPECT_THAT(settings.RecentBooks(), ElementsAre("/b.tbk"));
}

TEST_F(DesktopSettingsTest, RemembersNoMoreThanEightBooks) {
  for (int book = 1; book <= 10; ++book) settings.NoteBook("/" + std::to_string(book) + ".tbk");
  EXPECT_EQ(settings.RecentBooks().size(), DesktopSettings::kMostRecent);
  EXPECT_EQ(settings.RecentBooks().front(), "/10.tbk");
}

TEST_F(DesktopSettingsTest, RemembersHowEachBookWasLookedAt) {
  BookLook look;
  look.choice.view = FigureView::kField;
  look.choice.level = kWeekLevel;
  look.choice.stretch = engine::kAllYearsLevel;
  look.choice.account = 12;
  look.choice.field = 3;
  look.choice.date = DateFromParts(2024, 5, 6);
  look.sizes = "00ff 0102";
  look.chart = false;
  settings.KeepLook("/odd ] = name.tbk", look);
  const BookLook kept = DesktopSettings(folder.Path("new/desktop.ini")).LookOf("/odd ] = name.tbk");
  EXPECT_EQ(kept.choice, look.choice);
  EXPECT_EQ(kept.sizes, "00ff 0102");
  EXPECT_FALSE(kept.chart);
  EXPECT_TRUE(kept.against_year_before);
  EXPECT_EQ(settings.LookOf("/another.tbk").choice, FigureChoice());
}

TEST_F(DesktopSettingsTest, PassesOverWhatCannotBeWritten) {
  folder.Write("file", "");
  DesktopSettings useless(folder.Path("file/desktop.ini"));
  useless.NoteBook("/a.tbk");
  EXPECT_THAT(useless.RecentBooks(), IsEmpty());
}

TEST_F(DesktopSettingsTest, TakesNonsenseForNothing) {
  folder.Write("desktop.ini", "[Book /a.tbk]\nView = 77\nLevel = x\nDate = soon\nAccount = 1e9\n");
  const BookLook look = DesktopSettings(folder.Path("desktop.ini")).LookOf("/a.tbk");
  EXPECT_EQ(look.choice.account, 1);
  EXPECT_LE(static_cast<int>(look.choice.view), 2);
  EXPECT_EQ(look.choice.date, 0);
}

}  // namespace
}  // namespace tallybook::desktop
