#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <stdexcept>

#include "base/Failure.h"
#include "support/GuardedEdtFormEvents.h"
#include "tests/support/MemoryHost.h"
#include "tests/support/ScriptedPlatform.h"

namespace tallybook::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

// Answers every event after it has failed, where that is wanted.
class Listener : public EdtFormEvents {
 public:
  void ShowTotals(Text& text) override { Answer(text, Text("totals")); }
  void ActionButton(Integer button, Integer record) override { Answer(last, Text("action " + Pair(button, record))); }
  void AddRec(Integer& record) override { Answer(record, Integer{9}); }
  void EditRec(Integer record) override { Answer(last, "edit " + std::to_string(record)); }
  void DeleteRec(Integer record) override { Answer(last, "delete " + std::to_string(record)); }
  void EditSave(bool& result) override { Answer(result, true); }
  void ShowHelp(Long topic) override { Answer(last, "help " + std::to_string(topic)); }
  void NeedtoShutdown(bool& flag) override { Answer(flag, true); }

  bool fails = false;
  Text last;

 private:
  static Text Pair(Integer one, Integer other) { return std::to_string(one) + " " + std::to_string(other); }
  // What a listener that fails has set by then does not count.
  template <typename Value>
  void Answer(Value& into, Value answer) const {
    into = answer;
    if (fails) throw Failure(FailureNumber::kInvalidArgument, "no room");
  }
};

class GuardedEdtFormEventsTest : public ::testing::Test {
 protected:
  [[nodiscard]] std::vector<Text> Boxes() const { return platform.boxes.Texts(); }

  ScriptedPlatform platform;
  Listener listener;
  GuardedEdtFormEvents events{&listener};
};

TEST_F(GuardedEdtFormEventsTest, HandsEveryEventOn) {
  Text totals;
  events.ShowTotals(totals);
  EXPECT_EQ(totals, "totals");
  Integer record = 0;
  events.AddRec(record);
  EXPECT_EQ(record, 9);
  bool saved = false;
  events.EditSave(saved);
  EXPECT_TRUE(saved);
  bool ends = false;
  events.NeedtoShutdown(ends);
  EXPECT_TRUE(ends);
  events.ActionButton(2, 7);
  EXPECT_EQ(listener.last, "action 2 7");
  events.EditRec(3);
  EXPECT_EQ(listener.last, "edit 3");
  events.DeleteRec(4);
  EXPECT_EQ(listener.last, "delete 4");
  events.ShowHelp(5);
  EXPECT_EQ(listener.last, "help 5");
  EXPECT_THAT(Boxes(), IsEmpty());
}

TEST_F(GuardedEdtFormEventsTest, TellsAFailureAndLeavesTheArgumentAsItCame) {
  listener.fails = true;
  Text totals = "before";
  events.ShowTotals(totals);
  EXPECT_EQ(totals, "before");
  Integer record = 3;
  events.AddRec(record);
  EXPECT_EQ(record, 3);
  bool ends = false;
  events.NeedtoShutdown(ends);
  EXPECT_FALSE(ends);
  events.ActionButton(1, 1);
  events.EditRec(1);
  events.DeleteRec(1);
  events.ShowHelp(1);
  EXPECT_THAT(Boxes(), ElementsAre("no room", "no room", "no room", "no room", "no room", "no room", "no room"));
  EXPECT_EQ(platform.boxes.Shown()[0].style, kExclamationIcon);
  EXPECT_EQ(platform.boxes.Shown()[0].caption, ScriptedPlatform::kTitle);
}

TEST_F(GuardedEdtFormEventsTest, TakesASaveThatFailsForOneThatIsNotDone) {
  listener.fails = true;
  bool saved = true;
  events.EditSave(saved);
  EXPECT_FALSE(saved);
}

TEST_F(GuardedEdtFormEventsTest, DoesNothingWithoutAListener) {
  GuardedEdtFormEvents nobody(nullptr);
  bool saved = true;
  nobody.EditSave(saved);
  EXPECT_TRUE(saved);
  nobody.EditRec(1);
  EXPECT_THAT(Boxes(), IsEmpty());
}

TEST_F(GuardedEdtFormEventsTest, KeepsAListWindowOpenWhereItsListenerFails) {
  listener.fails = true;
  CallRecord record;
  MemoryEdtForm form(record);
  form.SetEvents(&listener);
  bool went_on = false;
  form.acts = {[](MemoryEdtForm&, EdtFormEvents& shown) { shown.EditRec(1); },
               [&](MemoryEdtForm& window, EdtFormEvents&) { went_on = window->open; }};
  form.Show(0);
  EXPECT_TRUE(went_on);
  EXPECT_THAT(Boxes(), ElementsAre("no room", "no room")) << "the totals and the row";
}

}  // namespace
}  // namespace tallybook::testing
