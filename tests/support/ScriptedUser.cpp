#include "tests/support/ScriptedUser.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <utility>

#include "forms/HostControls.h"
#include "forms/KeyStrings.h"
#include "forms/ListControls.h"
#include "forms/TextBox.h"
#include "forms/modAllUI.h"
#include "tests/support/Hands.h"

namespace tallybook::testing {

namespace {

// Turns of a modal loop without a step, after which the script has run dry. More than one: what a step sets off may
// take a turn or two to show.
constexpr int kPatience = 5;

// The control as one of a kind; null, with the test failed, where it is of another.
template <typename Kind>
Kind* As(Control& control) {
  auto* const one = dynamic_cast<Kind*>(&control);
  if (one == nullptr) ADD_FAILURE() << control.Name() << " is of another kind than the step needs";
  return one;
}

}  // namespace

ScriptedUser& ScriptedUser::On(const Text& form, Act act) {
  steps_.push_back({form, std::move(act), nullptr, 0});
  return *this;
}

ScriptedUser& ScriptedUser::Do(std::function<void()> act) {
  steps_.push_back({"", nullptr, std::move(act), 0});
  return *this;
}

ScriptedUser& ScriptedUser::Wait(int turns) {
  steps_.push_back({"", nullptr, [] {}, turns});
  return *this;
}

ScriptedUser& ScriptedUser::OnControl(const Text& form, const Text& control, Integer index,
                                      std::function<bool(Control&)> act, const Text& what) {
  return On(form, [=](Form& shown) {
    Control* found = shown.Find(control, index);
    // The index of save buttons tells the button, not the control.
    if (found == nullptr) found = dynamic_cast<SaveButtons*>(shown.Find(control));
    if (found == nullptr) {
      ADD_FAILURE() << shown.Name() << " has no control " << control << " of index " << index;
    } else if (!act(*found)) {
      ADD_FAILURE() << "The user cannot " << what << " " << control << " of " << shown.Name()
                    << (found->IsReachable() ? ": it does not take that" : ": it is disabled or hidden");
    }
  });
}

ScriptedUser& ScriptedUser::Type(const Text& form, const Text& control, const Text& text, Integer index) {
  return OnControl(
      form, control, index,
      [text](Control& found) {
        auto* const box = As<TextBox>(found);
        return box == nullptr || TheHands().Replace(*box, text);
      },
      "type into");
}

ScriptedUser& ScriptedUser::TypeKeys(const Text& form, const Text& control, const Text& keys, Integer index) {
  return OnControl(
      form, control, index,
      [keys](Control& found) {
        auto* const box = As<TextBox>(found);
        return box == nullptr || TheHands().TypeKeys(*box, keys);
      },
      "type into");
}

ScriptedUser& ScriptedUser::Choose(const Text& form, const Text& control, const Text& entry, Integer index) {
  return OnControl(
      form, control, index,
      [entry](Control& found) {
        auto* const list = As<ListControl>(found);
        if (list == nullptr) return true;
        for (Integer i = 0; i < list->ListCount(); ++i) {
          if (list->List(i) == entry) return TheHands().Choose(*list, i);
        }
        ADD_FAILURE() << list->Name() << " has no entry \"" << entry << "\"";
        return true;
      },
      "choose in");
}

ScriptedUser& ScriptedUser::Click(const Text& form, const Text& control, Integer index) {
  return OnControl(
      form, control, index, [index](Control& found) { return TheHands().Click(found, index); }, "click");
}

ScriptedUser& ScriptedUser::Press(const Text& form, const Text& control, Integer key, Integer shift, Integer index) {
  return OnControl(
      form, control, index, [key, shift](Control& found) { return TheHands().Press(found, key, shift); },
      "press a key in");
}

ScriptedUser& ScriptedUser::Keys(const Text& form, const Text& keys) {
  return On(form, [keys](Form& /*shown*/) { SendKeysEx(keys, false); });
}

ScriptedUser& ScriptedUser::Close(const Text& form) {
  return On(form, [](Form& shown) { TheHands().Close(shown); });
}

Form* ScriptedUser::FindForm(const Text& name) {
  const auto& forms = OpenForms();
  const auto found = std::find_if(forms.begin(), forms.end(), [&](const Form* form) {
    return form->Name() == name && form->Visible() && form->Enabled();
  });
  return found == forms.end() ? nullptr : *found;
}

bool ScriptedUser::IsReady() const {
  if (steps_.empty()) return false;
  return steps_.front().form.empty() ? ModalDepth() > 0 : FindForm(steps_.front().form) != nullptr;
}

void ScriptedUser::DoNext() {
  if (!IsReady()) return;
  idle_turns_ = 0;
  if (steps_.front().turns > 0) {
    --steps_.front().turns;
    return;
  }
  // Taken off first: what it opens runs the steps behind it.
  const Step step = std::move(steps_.front());
  steps_.pop_front();
  if (step.form.empty())
    step.free_act();
  else
    step.act(*FindForm(step.form));
}

void ScriptedUser::EndTurn() {
  Form* const waiting = TopModalDialog();
  if (waiting == nullptr || IsReady() || ++idle_turns_ < kPatience) return;
  idle_turns_ = 0;
  ADD_FAILURE() << "The script has run dry while " << waiting->Name() << " waits"
                << (steps_.empty() ? "" : "; its next step needs " + steps_.front().form);
  HideLikeModal(*waiting);
}

void ScriptedUser::ExpectDone() {
  if (steps_.empty()) return;
  const Text form = steps_.front().form;
  ADD_FAILURE() << steps_.size() << " steps of the script were never done"
                << (form.empty() ? "" : "; the first needs " + form);
  steps_.clear();
}

}  // namespace tallybook::testing
