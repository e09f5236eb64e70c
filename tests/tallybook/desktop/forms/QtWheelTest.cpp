#include <QApplication>
#include <QWheelEvent>
#include <QWidget>
#include <gmock/gmock.h>
#include <memory>
#include <string>
#include <vector>

#include "tallybook/desktop/forms/QtScreen.h"
#include "tallybook/desktop/forms/QtWheel.h"

namespace tallybook::desktop {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr QPoint kNotchUp{0, 120};
constexpr QPoint kNotchRight{120, 0};

// Counts the turns that reach it, and passes them on to what is around it.
class Pane : public QWidget {
 public:
  using QWidget::QWidget;
  int turns = 0;

 protected:
  void wheelEvent(QWheelEvent* event) override {
    ++turns;
    event->ignore();
  }
};

// A window with a pane in it, of which nothing needs to be seen.
class QtWheelTest : public ::testing::Test {
 protected:
  struct Told {
    std::string by;
    Long message;
    int amount;  // from the upper half of the first parameter
    int y, x;    // from the second
    bool operator==(const Told&) const = default;
  };

  QtWheelTest() : handle_(screen_.HandleOf(*window_)) {}

  // A hook that notes what it hears and hands it on, or keeps it.
  WindowHook Noting(const char* name, bool keeps = false) {
    return [this, name, keeps](Long window, Long message, Long first, Long second) {
      told_.push_back({name, message, static_cast<std::int16_t>(first >> 16), static_cast<std::int16_t>(second >> 16),
                       static_cast<std::int16_t>(second & 0xFFFF)});
      return keeps ? Long{0} : wheel_.CallNextHook(window, message, first, second);
    };
  }
  void Turn(QPoint amount, const QPointF& place = {3, 5}) {
    ++time_;
    Send(*pane_, amount, place);
  }
  void Send(Pane& pane, QPoint amount, const QPointF& place = {3, 5}) const {
    QWheelEvent event(pane.mapFromGlobal(place), place, {}, amount, Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase,
                      false);
    event.setTimestamp(time_);
    QApplication::sendEvent(&pane, &event);
  }
  std::vector<std::string> Names() const {
    std::vector<std::string> names;
    for (const Told& each : told_) names.emplace_back(each.by);
    return names;
  }

  std::vector<Told> told_;  // the hooks note the end of the window, too
  QtScreen screen_;
  QtWheel wheel_{screen_};
  std::unique_ptr<Pane> window_ = std::make_unique<Pane>();
  Pane* pane_ = new Pane(window_.get());
  Long handle_;
  quint64 time_ = 0;
};

TEST_F(QtWheelTest, TellsATurnWithItsAmountAndTheScreenPlaceOfThePointer) {
  ASSERT_TRUE(wheel_.AddHook(handle_, this, Noting("hook")));
  Turn(kNotchUp, {30, 50});
  Turn(-kNotchUp, {-2, 7});
  EXPECT_THAT(told_, ElementsAre(Told{"hook", kWheelTurned, 120, 50, 30}, Told{"hook", kWheelTurned, -120, 7, -2}));
}

TEST_F(QtWheelTest, TellsATurnSidewaysAsATilt) {
  ASSERT_TRUE(wheel_.AddHook(handle_, this, Noting("hook")));
  Turn(kNotchRight);
  EXPECT_THAT(told_, ElementsAre(Told{"hook", kWheelTilted, 120, 5, 3}));
}

TEST_F(QtWheelTest, TellsNothingOfATouchThatBeginsOrEnds) {
  ASSERT_TRUE(wheel_.AddHook(handle_, this, Noting("hook")));
  Turn({0, 0});
  EXPECT_THAT(told_, IsEmpty());
}

TEST_F(QtWheelTest, TellsATurnOnceThoughThePaneHandsItOnToItsWindow) {
  ASSERT_TRUE(wheel_.AddHook(handle_, this, Noting("hook")));
  Turn(kNotchUp);
  Send(*window_, kNotchUp);  // as Qt does with one that the pane ignores
  EXPECT_THAT(told_, ::testing::SizeIs(1));
  EXPECT_EQ(window_->turns, 1);
}

TEST_F(QtWheelTest, KeepsFromTheWindowWhatAHookDoesNotHandOn) {
  const bool keeps = true;
  ASSERT_TRUE(wheel_.AddHook(handle_, this, Noting("hook", keeps)));
  Turn(kNotchUp);
  EXPECT_EQ(pane_->turns, 0);
}

TEST_F(QtWheelTest, AsksTheNewestHookFirst) {
  const int older = 0;
  ASSERT_TRUE(wheel_.AddHook(handle_, &older, Noting("older")));
  ASSERT_TRUE(wheel_.AddHook(handle_, this, Noting("newer")));
  Turn(kNotchUp);
  EXPECT_THAT(Names(), ElementsAre("newer", "older"));
}

TEST_F(QtWheelTest, TellsNothingToAHookThatWasRemoved) {
  const int other = 0;
  ASSERT_TRUE(wheel_.AddHook(handle_, &other, Noting("other")));
  ASSERT_TRUE(wheel_.AddHook(handle_, this, Noting("removed")));
  EXPECT_TRUE(wheel_.RemoveHook(handle_, this));
  EXPECT_FALSE(wheel_.RemoveHook(handle_, this));
  Turn(kNotchUp);
  EXPECT_THAT(Names(), ElementsAre("other"));
}

TEST_F(QtWheelTest, LetsAHookRemoveItselfWhileItRuns) {
  ASSERT_TRUE(wheel_.AddHook(handle_, this, [&](Long window, Long message, Long first, Long second) {
    EXPECT_TRUE(wheel_.RemoveHook(window, this));
    return Noting("hook")(window, message, first, second);
  }));
  Turn(kNotchUp);
  Turn(kNotchUp);
  EXPECT_THAT(Names(), ElementsAre("hook"));
  EXPECT_EQ(pane_->turns, 2);
}

TEST_F(QtWheelTest, LeavesTheTurnsOfOtherWindowsAlone) {
  Pane other;
  ASSERT_TRUE(wheel_.AddHook(screen_.HandleOf(other), this, Noting("hook")));
  Turn(kNotchUp);
  EXPECT_THAT(told_, IsEmpty());
  EXPECT_EQ(pane_->turns, 1);
}

TEST_F(QtWheelTest, TellsTheEndOfAWindowOnceToEachHook) {
  const int older = 0;
  ASSERT_TRUE(wheel_.AddHook(handle_, &older, Noting("older")));
  ASSERT_TRUE(wheel_.AddHook(handle_, this, Noting("newer")));
  window_.reset();
  EXPECT_THAT(told_, ElementsAre(Told{"newer", kWindowDestroyed, 0, 0, 0}, Told{"older", kWindowDestroyed, 0, 0, 0}));
}

TEST_F(QtWheelTest, HooksNoWindowThatIsNotThere) {
  constexpr Long kNobodys = 4711;
  EXPECT_FALSE(wheel_.AddHook(kNobodys, this, Noting("hook")));
}

}  // namespace
}  // namespace tallybook::desktop
