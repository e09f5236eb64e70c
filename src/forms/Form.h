// A window of logical controls. A dialog derives from it or owns one, and adds its controls as members, in tab order. A
// form is loaded when its window is made and unloaded when that goes; hiding keeps it loaded, with all its controls
// hold. Forms that are loaded now are in one list, OpenForms.
//
// The window itself is the screen's: the form asks it (platform/Screen.h) to make, show, hide and place it.
#pragma once

#include <functional>
#include <memory>
#include <vector>

#include "base/Types.h"
#include "forms/Event.h"

namespace tallybook {

class Control;
class Timer;

// As the platform counts them; both bits at once are 3.
inline constexpr Integer kNormalWindow = 0;
inline constexpr Integer kMinimisedWindow = 1;
inline constexpr Integer kMaximisedWindow = 2;

// The key code of F1, as a KeyDown event tells it.
inline constexpr Integer kF1Key = 112;

// The tag of a form that stays usable while another is shown modally.
inline constexpr const char* kStaysEnabledTag = "1";

class Form {
 public:
  explicit Form(Text name);
  virtual ~Form();
  Form(const Form&) = delete;
  Form& operator=(const Form&) = delete;

  [[nodiscard]] const Text& Name() const { return name_; }
  [[nodiscard]] const Text& Caption() const { return caption_; }
  void SetCaption(const Text& caption);
  [[nodiscard]] const Text& Tag() const { return tag_; }
  void SetTag(const Text& tag) { tag_ = tag; }
  [[nodiscard]] bool Enabled() const { return enabled_; }
  void SetEnabled(bool enabled);
  [[nodiscard]] bool Visible() const { return visible_; }
  // A topic of the help file; 0 for none.
  [[nodiscard]] Long HelpContext() const { return help_context_; }
  void SetHelpContext(Long topic) { help_context_ = topic; }
  [[nodiscard]] const Text& FontName() const { return font_name_; }
  [[nodiscard]] Single FontSize() const { return font_size_; }
  void SetFont(const Text& name, Single size);
  [[nodiscard]] Integer WindowState() const;
  void SetWindowState(Integer state);

  // Expires when the form is gone: for who keeps a pointer to it over a nested input loop.
  [[nodiscard]] std::weak_ptr<const void> Life() const { return life_; }

  // The window's handle; 0 while the form is not loaded.
  [[nodiscard]] Long Hwnd() const { return window_; }
  [[nodiscard]] bool IsLoaded() const { return window_ != 0; }

  // Makes the window, raises Loading, and lists the form. Does nothing where it is loaded.
  void Load();
  // Shows the window, loading it on need, and raises Activate. Hides it. Takes it away, raising Unloading; harmless
  // twice.
  void Show();
  void Hide();
  void Unload();

  // The control that has the focus; null for none.
  [[nodiscard]] Control* ActiveControl() const { return active_control_; }
  // All of them in tab order, timers apart.
  [[nodiscard]] const std::vector<Control*>& Controls() const { return controls_; }
  [[nodiscard]] const std::vector<Timer*>& Timers() const { return timers_; }
  // The control of a design name and index; null where there is none. For renderers and tests.
  [[nodiscard]] Control* Find(const Text& name, Integer index = -1) const;

  Event<> Changed;                   // for renderers: caption, enabled, visible, font
  Event<> Loading;                   // once for each time the window is made
  Event<> Unloading;                 // before it goes
  Event<> Activate;                  // it was brought to the front
  Event<bool&> QueryClose;           // the user closes it; a listener sets true to refuse
  Event<Integer&, Integer> KeyDown;  // before the control with the focus hears of it; set the key to 0 to consume it

  // What most dialogs do alike. The close box does what `cancel` does and closes nothing by itself. F1 does what `help`
  // does, and no control hears of it.
  void OnCloseBox(std::function<void()> cancel);
  void OnF1(std::function<void()> help);

  // The user presses the close box: true where the form was unloaded.
  bool UserClose();
  // The user presses a key while the form is in front: Tab, with Shift or without, moves the focus, and any other key
  // goes to the control with the focus, with the character that it gives (0 for none) where nobody consumes the key.
  bool UserKey(Integer key, Integer shift = 0, Integer character_code = 0);
  // Moves the focus to the next control in tab order that takes it and can be reached, or to the one before; past the
  // last it goes on with the first. False where there is none.
  bool UserTab(bool backwards = false);
  // The user brings it to the front.
  void UserActivate() { Activate.Raise(); }

 private:
  friend class Control;
  friend class Timer;
  void Register(Control& control);
  void Unregister(Control& control);
  void Register(Timer& timer);
  void Unregister(Timer& timer);
  void MoveFocus(Control* control);

  std::shared_ptr<const void> life_ = std::make_shared<char>();
  Text name_;
  Text caption_;
  Text tag_;
  bool enabled_ = true;
  bool visible_ = false;
  Long help_context_ = 0;
  Text font_name_;
  Single font_size_ = 0;
  Long window_ = 0;
  bool unloading_ = false;
  Control* active_control_ = nullptr;
  std::vector<Control*> controls_;
  std::vector<Timer*> timers_;
};

// The forms that are loaded now, in the order of their loading.
[[nodiscard]] const std::vector<Form*>& OpenForms();

// A timer of a form: ticks while the form is loaded and the timer is enabled. Who drives the screen raises the ticks.
class Timer {
 public:
  Timer(Form& form, Text name);
  ~Timer();
  Timer(const Timer&) = delete;
  Timer& operator=(const Timer&) = delete;

  [[nodiscard]] const Text& Name() const { return name_; }
  [[nodiscard]] bool Enabled() const { return enabled_; }
  void SetEnabled(bool enabled) { enabled_ = enabled; }
  [[nodiscard]] Long Interval() const { return interval_; }  // milliseconds
  void SetInterval(Long milliseconds) { interval_ = milliseconds; }

  Event<> Tick;
  // The interval has passed: raises Tick, unless the timer is off or its form is not loaded.
  void Elapse() const;

 private:
  Form& form_;
  Text name_;
  bool enabled_ = false;
  Long interval_ = 0;
};

}  // namespace tallybook
