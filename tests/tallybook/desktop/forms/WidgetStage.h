// Real windows under the tests of the dialogs: every form of the component that is shown there gets a window of Qt's as
// well, and the scripted user's acts become events that are sent to its widgets. What is active, visible and where is
// still told by the windows in memory, so that nothing waits for a window manager.
#pragma once

#include <memory>

#include "tests/support/Hands.h"

class QWidget;

namespace tallybook::desktop::testing {

class WidgetStage : public tallybook::testing::Stage {
 public:
  WidgetStage();
  ~WidgetStage() override;

  [[nodiscard]] Screen& Enter(tallybook::testing::ScriptedScreen& screen) override;
  void Leave() override;
  void Run() override;

  bool Click(Control& control, Integer index) override;
  bool Replace(TextBox& box, const Text& text) override;
  bool TypeKeys(TextBox& box, const Text& keys) override;
  bool Choose(ListControl& list, Integer entry) override;
  bool ChooseTab(TabStrip& tabs, Integer tab) override;
  bool ChooseDate(CalendarBox& calendar, Date date) override;
  bool TypeAt(ListControl& list, const Text& keys) override;
  bool Press(Control& control, Integer key, Integer shift) override;
  void Key(Form& form, Integer key, Integer shift, Integer character) override;
  void Close(Form& form) override;

  // How many acts have been carried out on widgets.
  [[nodiscard]] static long Acts();

 private:
  class MirrorScreen;

  // The widget of a control that the user can act on now; null for a form without a window of Qt's, and, with
  // `reachable` false, for one that cannot be acted on.
  [[nodiscard]] QWidget* Reach(Control& control, bool& reachable) const;

  std::unique_ptr<MirrorScreen> mirror_;
};

}  // namespace tallybook::desktop::testing
