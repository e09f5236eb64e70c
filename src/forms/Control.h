// Logical controls: what the boxes, lists and buttons of a dialog hold and tell. A dialog owns them under their design
// names and answers their events; a renderer draws them and hands the user's acts in; tests do both. No toolkit type
// appears here.
//
// The event rules, the same for all kinds:
//   - Every change of what a control shows raises Changed, for renderers. Dialogs do not listen to it.
//   - A user's act comes in through an operation whose name begins with User. It gives false, with nothing done, where
//     the control or its form is disabled or hidden.
//   - What a program sets raises the same reaction as the user's act where that is a choice or a text that really
//     changes; setting what is set already raises nothing. A selection that becomes none raises nothing.
//   - A user who chooses the selected entry of a list again raises the reaction again; an option that is on already is
//     not chosen again.
//   - A date set by program raises nothing and is not held to its limits.
//
// One thread. A control belongs to its form and must not outlive it.
#pragma once

#include <utility>

#include "base/Types.h"
#include "forms/Event.h"

namespace tallybook {

class Form;

// A control that stands alone has no index.
inline constexpr Integer kNoIndex = -1;

class Control {
 public:
  // Registers with `form`, in tab order. `index` tells apart the controls of one design name.
  Control(Form& form, Text name, Integer index = kNoIndex);
  virtual ~Control();
  Control(const Control&) = delete;
  Control& operator=(const Control&) = delete;

  [[nodiscard]] Form& Parent() const { return form_; }
  [[nodiscard]] const Text& Name() const { return name_; }
  [[nodiscard]] Integer Index() const { return index_; }

  [[nodiscard]] bool Enabled() const { return enabled_; }
  void SetEnabled(bool enabled) { Set(enabled_, enabled); }
  [[nodiscard]] bool Visible() const { return visible_; }
  void SetVisible(bool visible) { Set(visible_, visible); }
  // An ampersand marks the letter that reaches the control by keyboard.
  [[nodiscard]] const Text& Caption() const { return caption_; }
  void SetCaption(const Text& caption) { Set(caption_, caption); }
  // The words of the tool tip.
  [[nodiscard]] const Text& Hint() const { return hint_; }
  void SetHint(const Text& hint) { Set(hint_, hint); }
  // The control that stands around this one, a frame as a rule; null for the form itself. Hidden with it.
  [[nodiscard]] Control* Container() const { return container_; }
  void SetContainer(Control* container) { Set(container_, container); }
  // The font; an empty name and a size of 0 mean the form's.
  [[nodiscard]] const Text& FontName() const { return font_name_; }
  [[nodiscard]] Single FontSize() const { return font_size_; }
  void SetFont(const Text& name, Single size);

  // Gives the control the focus. Failure 5 where it or its form cannot take it: disabled or hidden.
  void SetFocus();
  [[nodiscard]] bool HasFocus() const;

  // True where a user can act on it now: it, what stands around it and its form are enabled and visible.
  [[nodiscard]] bool IsReachable() const;

  Event<> Changed;    // for renderers: draw anew
  Event<> Repainted;  // for renderers: draw at once, before anything else happens
  Event<> GotFocus;
  Event<> LostFocus;
  Event<Integer&, Integer> KeyDown;  // key code, which a listener sets to 0 to consume it; shift 1, control 2, alt 4
  Event<Integer&> KeyPress;          // character code, likewise

  // The user moves the focus here, or presses a key.
  bool UserFocus();
  // Raises KeyDown of the form, then of the control; false where it was consumed.
  bool UserKeyDown(Integer key, Integer shift = 0);

  void Repaint() const { Repainted.Raise(); }

 protected:
  template <typename Value>
  bool Set(Value& member, const Value& value) {
    if (member == value) return false;
    member = value;
    Changed.Raise();
    return true;
  }

 private:
  Form& form_;
  Text name_;
  Integer index_;
  bool enabled_ = true;
  bool visible_ = true;
  Text caption_;
  Text hint_;
  Control* container_ = nullptr;
  Text font_name_;
  Single font_size_ = 0;
};

}  // namespace tallybook
