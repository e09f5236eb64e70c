#include <ctime>
#include <gmock/gmock.h>

#include "base/Dates.h"
#include "platform/Clock.h"
#include "platform/InputQueue.h"
#include "platform/MessageBoxes.h"
#include "platform/Platform.h"
#include "platform/Screen.h"
#include "platform/posix/PosixPlatform.h"
#include "tests/support/FailsWith.h"
#include "tests/support/ScriptedPlatform.h"
#include "tests/support/TimeZone.h"

namespace tallybook::testing {
namespace {

TEST(PlatformTest, ThereIsNoneBeforeOneIsInstalled) {
  RemovePlatform();
  EXPECT_THAT([] { (void)ThePlatform(); }, FailsWith(FailureNumber::kObjectNotSet));
}

TEST(PlatformTest, OneWithAMissingPartIsRefusedAndTheOneBeforeStays) {
  ScriptedPlatform platform;
  Platform broken = ThePlatform();
  broken.input = nullptr;
  EXPECT_THAT([&] { InstallPlatform(broken); }, FailsWith(FailureNumber::kObjectNotSet));
  EXPECT_EQ(ThePlatform().input, &platform.input);
}

TEST(PlatformTest, NowComesFromThePlatformsClock) {
  ScriptedPlatform platform;
  platform.clock.Set(DateFromParts(2005, 6, 7) + TimeFromParts(8, 9, 10));
  EXPECT_EQ(DateTimeText(Now()), "2005-06-07 08:09:10");
}

TEST(PlatformTest, TheRefusingButtonIsCancelNoOrTheOnlyOne) {
  EXPECT_EQ(RefusingButton(kOkOnly | kStopIcon), kOk);
  EXPECT_EQ(RefusingButton(kOkCancel | kQuestionIcon), kCancel);
  EXPECT_EQ(RefusingButton(kYesNo | kSecondButtonDefault), kNo);
  EXPECT_EQ(RefusingButton(kRetryCancel), kCancel);
}

TEST(PosixPlatformTest, RefusesQuestionsAndHasNoInput) {
  const Platform platform = PosixPlatform("Title");
  EXPECT_EQ(platform.application_title, "Title");
  EXPECT_EQ(platform.message_boxes->Show("Retry?", kRetryCancel, ""), kCancel);
  EXPECT_EQ(platform.message_boxes->Show("Sure?", kYesNo, ""), kNo);
  EXPECT_EQ(platform.message_boxes->Show("Done", kOkOnly, ""), kOk);
  EXPECT_FALSE(platform.input->HasPending(-1));
}

TEST(ScreenWithoutWindowsTest, HasNoWindowWhateverItMade) {
  ScreenWithoutWindows screen;
  EXPECT_FALSE(screen.IsWindow(1));
  EXPECT_EQ(screen.WindowAt(10, 10), 0);
  screen.RefreshWindow(1);
}

class PosixClockTest : public ::testing::Test {
 protected:
  TimeZone zone_{"UTC0"};
  PosixClock clock_;
};

TEST_F(PosixClockTest, NowIsTheSystemsTime) {
  const Double from_epoch = (clock_.Now() - DateFromParts(1970, 1, 1)) * 86400;
  EXPECT_NEAR(from_epoch, static_cast<Double>(std::time(nullptr)), 2);
}

TEST_F(PosixClockTest, TimesAreLocal) {
  const std::timespec moment{1075817109, 500'000'000};  // 2004-02-03 14:05:09.5 UTC
  EXPECT_EQ(DateTimeText(LocalDate({moment.tv_sec, 0})), "2004-02-03 14:05:09");
  EXPECT_NEAR((LocalDate(moment) - LocalDate({moment.tv_sec, 0})) * 86400, 0.5, 0.001);
  zone_.Set("EAST-5:30");
  EXPECT_EQ(DateTimeText(LocalDate({moment.tv_sec, 0})), "2004-02-03 19:35:09");
}

TEST_F(PosixClockTest, UniversalTimeIsTheSameInEveryZone) {
  const std::timespec moment{1075817109, 500'000'000};
  zone_.Set("EAST-5:30");
  EXPECT_EQ(DateTimeText(UniversalDate({moment.tv_sec, 0})), "2004-02-03 14:05:09");
  EXPECT_NEAR((UniversalDate(moment) - UniversalDate({moment.tv_sec, 0})) * 86400, 0.5, 0.001);
  EXPECT_NEAR((clock_.Now() - clock_.UniversalNow()) * 24, 5.5, 0.01);
}

TEST_F(PosixClockTest, TicksAreMillisecondsThatGoOnAndNeverBack) {
  const long long start = clock_.Ticks();
  clock_.Sleep(0.02F);
  const long long end = clock_.Ticks();
  EXPECT_GE(end - start, 19);
  EXPECT_LT(end - start, 60'000);
}

TEST_F(PosixClockTest, DoesNotTakeItsTimeFromTheBuildsVariable) {
  ::setenv("SOURCE_DATE_EPOCH", "0", 1);
  const DateParts now = PartsOf(clock_.Now());
  ::unsetenv("SOURCE_DATE_EPOCH");
  EXPECT_GT(now.year, 2000);
}

TEST_F(PosixClockTest, SleepTakesItsTimeAndTheLongDateIsNamed) {
  const Date start = clock_.Now();
  clock_.Sleep(0.02F);
  EXPECT_GE((clock_.Now() - start) * 86400, 0.019);
  EXPECT_EQ(clock_.LongDate(DateFromParts(2004, 2, 3)), "Tuesday, February 3, 2004");
}

}  // namespace
}  // namespace tallybook::testing
