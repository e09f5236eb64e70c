// How the acts of a scripted user are carried out: on the logical controls, as any renderer would, or on real widgets
// through events (tests/tallybook/desktop). The same list of steps serves both.
//
// Each act gives false where the user cannot do it: the control is disabled or hidden.
#pragma once

#include "base/Types.h"

namespace tallybook {
class CalendarBox;
class Control;
class Form;
class ListControl;
class Screen;
class TabStrip;
class TextBox;
}  // namespace tallybook

namespace tallybook::testing {

class ScriptedScreen;

class Hands {
 public:
  virtual ~Hands() = default;
  // `index` tells which one of save buttons. A control that cannot be clicked at all fails the test.
  virtual bool Click(Control& control, Integer index);
  // The whole text at once, as by pasting; key by key.
  virtual bool Replace(TextBox& box, const Text& text);
  virtual bool TypeKeys(TextBox& box, const Text& keys);
  virtual bool Choose(ListControl& list, Integer entry);
  virtual bool ChooseTab(TabStrip& tabs, Integer tab);
  virtual bool ChooseDate(CalendarBox& calendar, Date date);
  // Characters of the code page, typed while the list has the focus.
  virtual bool TypeAt(ListControl& list, const Text& keys);
  // A key while the control has the focus: without what it would do to the dialog as a whole.
  virtual bool Press(Control& control, Integer key, Integer shift);
  // A key that a program has handed to the system, with the character that it gives, for the form in front.
  virtual void Key(Form& form, Integer key, Integer shift, Integer character);
  virtual void Close(Form& form);
};

// A renderer under the tests' platform. It stands between the component and the screen of the tests, which goes on
// telling what is active and visible, so that a test looks at the same windows with it as without.
class Stage : public Hands {
 public:
  // For as long as a platform lives.
  [[nodiscard]] virtual Screen& Enter(ScriptedScreen& screen) = 0;
  virtual void Leave() = 0;
  // A turn of the input: whatever the renderer's events lead to.
  virtual void Run() = 0;
};

// For the whole program, before its first test; null for none.
void UseStage(Stage* stage);
[[nodiscard]] Stage* TheStage();
// Those of the stage, or plain ones.
[[nodiscard]] Hands& TheHands();

}  // namespace tallybook::testing
