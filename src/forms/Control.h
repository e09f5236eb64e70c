// Logical controls: what the boxes, lists and buttons of a dialog hold and tell. A dialog owns them under their design
// names and answers their events; a renderer draws them and hands the user's acts in; tests do both. No toolkit type
// appears here.
//
// The event rules, the same for all kinds:
//   - Every change of what a control shows raises Changed, which tells what is to be drawn anew, for renderers. Dialogs
//     do not listen to it.
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
#include "forms/Keys.h"
#include "platform/Screen.h"

namespace tallybook {

class Form;

// What of a control is to be drawn anew. Rows are those of a grid or the entries of a list, counted from 0.
struct Change {
  enum class Kind {
    kAll,        // everything
    kRows,       // the rows from `first` to `last`
    kSelection,  // what is selected: the current row or entry was `first` and is `last`, -1 for none
    kScroll,     // the first row that is shown was `first` and is `last`
    kAdded,      // a row has come, at `first`
    kRemoved,    // a row has gone, from `first`
    kPlace,      // where it stands
    kFront,      // it stands before the controls around it
    kDropDown,   // whether a list is dropped down
  };
  Kind kind = Kind::kAll;
  Long first = -1;
  Long last = -1;
  bool operator==(const Change&) const = default;
};

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

  // Where it stands, in the units of the screen, from the upper left corner of what stands around it. Empty until
  // a renderer or the dialog places it.
  [[nodiscard]] const tallybook::Place& Place() const { return place_; }
  void SetPlace(const tallybook::Place& place);
  // The handle of the control's own window; 0 where it has none. The renderer's to set.
  [[nodiscard]] Long Hwnd() const { return window_; }
  void SetHwnd(Long window) { window_ = window; }
  // Before the controls that it shares its place with.
  void BringToFront() { Changed.Raise({Change::Kind::kFront}); }

  // Whether the Tab key stops at it, where it takes the focus at all.
  [[nodiscard]] bool TabStop() const { return tab_stop_; }
  void SetTabStop(bool stop) { tab_stop_ = stop; }
  [[nodiscard]] virtual bool TakesFocus() const { return true; }

  // Gives the control the focus. Failure 5 where it or its form cannot take it: disabled or hidden.
  void SetFocus();
  [[nodiscard]] bool HasFocus() const;

  // True where a user can act on it now: it, what stands around it and its form are enabled and visible.
  [[nodiscard]] bool IsReachable() const;

  Event<Change> Changed;  // for renderers: draw anew
  Event<> Repainted;      // for renderers: draw at once, before anything else happens
  Event<> Moved;          // its place changed
  Event<> GotFocus;
  Event<> LostFocus;
  Event<Integer&, Integer> KeyDown;  // key code, which a listener sets to 0 to consume it; shift 1, control 2, alt 4
  Event<Integer&> KeyPress;          // character code, likewise

  // The user moves the focus here, or presses a key.
  bool UserFocus();
  // Raises KeyDown of the form, then of the control; false where it was consumed. One that was not does what the
  // control's kind does at it.
  bool UserKeyDown(Integer key, Integer shift = 0);
  // The character that a key press gives, in the code page of files: raises KeyPress; false where it was consumed.
  virtual bool UserKeyPress(Integer character_code);

  void Repaint() const { Repainted.Raise(); }

 protected:
  template <typename Value>
  bool Set(Value& member, const Value& value, const Change& change = {}) {
    if (member == value) return false;
    member = value;
    Changed.Raise(change);
    return true;
  }
  // What the control does by itself at a key that nobody has consumed.
  virtual void PressOwnKey(Integer key, Integer shift);

 private:
  Form& form_;
  Text name_;
  Integer index_;
  bool enabled_ = true;
  bool visible_ = true;
  Text caption_;
  Text hint_;
  Control* container_ = nullptr;
  tallybook::Place place_;
  Long window_ = 0;
  bool tab_stop_ = true;
  Text font_name_;
  Single font_size_ = 0;
};

}  // namespace tallybook
