// The user of a test: a list of steps, one of which is done at each turn of the input while a dialog waits. The test
// writes the steps first and then calls what shows the dialogs; ShowLikeModal's loop runs them.
//
//   platform.user.Type("dlgExport", "Text1", "/out/a.txt")
//       .Choose("dlgExport", "cmbType", "Comma separated")
//       .On("dlgExport", [](Form& form) { EXPECT_EQ(form.Caption(), "Export"); })
//       .Click("dlgExport", "SaveButtons1", SaveButtons::kMainButton);
//   EXPECT_TRUE(gui.ExportQDX(...));
//
// A step waits until the form of its name is shown and enabled, and is then done through the form's own controls, as a
// renderer would, or through a renderer's widgets (Hands.h). Steps may follow one another over several forms: whatever
// a step opens, the next one finds. Where no step can be done any more and a dialog still waits, the test fails with
// the dialog's name, and the dialog is hidden: nothing ever hangs. Steps that are left when the platform ends fail the
// test too.
#pragma once

#include <deque>
#include <functional>

#include "base/Types.h"
#include "forms/Control.h"
#include "forms/Form.h"

namespace tallybook::testing {

class ScriptedUser {
 public:
  using Act = std::function<void(Form& form)>;

  // Does or looks at anything, once the form of this name is shown and enabled.
  ScriptedUser& On(const Text& form, Act act);
  // Does anything at the next turn of the input within a modal loop, whatever is shown: what the host or another
  // program does meanwhile.
  ScriptedUser& Do(std::function<void()> act);
  // Lets so many turns of a modal loop pass.
  ScriptedUser& Wait(int turns);

  // Acts on a control of a form, told by design name and, where there are several, index. Each fails the test where
  // there is no such control, where it is of a kind that cannot do it, and where the user cannot reach it. Replaces the
  // text of a box; types a text key by key, through the box's own filter.
  ScriptedUser& Type(const Text& form, const Text& control, const Text& text, Integer index = kNoIndex);
  ScriptedUser& TypeKeys(const Text& form, const Text& control, const Text& keys, Integer index = kNoIndex);
  // Chooses the entry of a list that has this text.
  ScriptedUser& Choose(const Text& form, const Text& control, const Text& entry, Integer index = kNoIndex);
  // Clicks a button, a check box, an option, a menu entry; of save buttons, the one of this index.
  ScriptedUser& Click(const Text& form, const Text& control, Integer index = kNoIndex);
  // Presses a key while the control has the focus: KeyDown alone. Shift 1, control 2, alt 4.
  ScriptedUser& Press(const Text& form, const Text& control, Integer key, Integer shift = 0, Integer index = kNoIndex);
  // Presses keys, in the language of forms/KeyStrings.h, wherever the focus is: "{DOWN}", "%{DOWN}", "*", "{+}". They
  // have been pressed when the next step is done.
  ScriptedUser& Keys(const Text& form, const Text& keys);
  // Presses the close box.
  ScriptedUser& Close(const Text& form);

  [[nodiscard]] std::size_t StepsLeft() const { return steps_.size(); }
  // Drops what is left.
  void Forget() { steps_.clear(); }

  // For the platform. Whether the next step can be done now; do it; a turn of a modal loop is over.
  [[nodiscard]] bool IsReady() const;
  void DoNext();
  void EndTurn();
  // Fails the test where steps are left.
  void ExpectDone();

 private:
  struct Step {
    Text form;  // empty: none is needed
    Act act;
    std::function<void()> free_act;  // where no form is needed
    int turns = 0;                   // that are to pass first
  };

  ScriptedUser& OnControl(const Text& form, const Text& control, Integer index, std::function<bool(Control&)> act,
                          const Text& what);
  [[nodiscard]] static Form* FindForm(const Text& name);

  std::deque<Step> steps_;
  int idle_turns_ = 0;
};

}  // namespace tallybook::testing
