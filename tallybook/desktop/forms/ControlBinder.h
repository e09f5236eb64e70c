// What ties one logical control to the widget that shows it: what the control tells is drawn, and only that; what the
// user does at the widget goes to the control. There is one kind of binder for each kind of control.
//
// One thread. The widget belongs to its Qt parent; the binder to the window, which ends it before the widget. The
// control must not go before its binder.
#pragma once

#include <QObject>
#include <QPointer>
#include <memory>
#include <vector>

#include "base/Types.h"
#include "tallybook/desktop/forms/KeyCodes.h"
#include "tallybook/desktop/forms/UserActs.h"

class QLabel;
class QPushButton;
class QString;
class QWidget;

namespace tallybook {
class Control;
struct Change;
}  // namespace tallybook

namespace tallybook::views {
struct Part;
}

namespace tallybook::desktop {

// Forms count from the left. In a window whose words go from right to left they are told, and tell, places as a mirror
// within `around` shows them.
[[nodiscard]] QRect Mirrored(const QRect& place, const QWidget& around);

class ControlBinder {
 public:
  ControlBinder(Control& control, QWidget& widget);
  virtual ~ControlBinder();
  ControlBinder(const ControlBinder&) = delete;
  ControlBinder& operator=(const ControlBinder&) = delete;

  [[nodiscard]] Control& Bound() const { return control_; }
  [[nodiscard]] QWidget& Widget() const { return widget_; }

  // Shows all that the control holds, and follows it from here on.
  void Start();

  // Whether the widget draws the caption itself; if not, a label stands beside it.
  [[nodiscard]] virtual bool DrawsCaption() const { return false; }
  // The label for the caption, which follows it. Belongs to `parent`.
  QLabel& MakeCaptionLabel(QWidget& parent);
  // The control that names this one with its caption.
  void SetNamedBy(Control& label);
  // What names it where neither caption nor label does.
  void SetSpoken(const std::string& name) { spoken_ = name; }

  // Seen only while none of these is.
  void SetBehind(std::vector<Control*> others);
  // Draws what waits to be drawn.
  virtual void BringUpToDate() {}

  // What the view says of its size.
  virtual void SetLeastSize(const views::Part& part);
  // The form places it itself.
  void SetFloating();
  [[nodiscard]] bool IsFloating() const { return floats_; }
  // Puts the widget where the form wants it, when what is around it has changed.
  void PutFloat();
  // Where the control's own place is seen in the window, in the coordinates of `around`.
  [[nodiscard]] virtual QRect PlaceWithin(const QWidget& around) const;

  // The widgets whose keys and focus are this control's. Those that come and go are asked for again.
  [[nodiscard]] virtual std::vector<QWidget*> InputWidgets() const;
  // The one that gets the focus.
  [[nodiscard]] virtual QWidget& FocusWidget() const;
  // Moves the focus on within the control; false where it leaves it.
  virtual bool TabWithin(bool /*backwards*/) { return false; }
  // Its buttons, where it stands at the foot.
  [[nodiscard]] virtual std::vector<QPushButton*> FootButtons() const { return {}; }

  // --- Keys ---

  // Before a key goes to the control: what only the widget knows yet goes into it.
  virtual void BeforeKey() {}
  void ExpectKey() { character_left_ = 0; }
  // What those who heard the last key left of its character.
  [[nodiscard]] Integer CharacterLeft() const { return character_left_; }
  // A key that nobody has consumed. True where it is done with; false leaves it to the widget.
  virtual bool TakeKey(const KeyPress& press);
  // What Enter does here, where it does something else than the dialog's main button: true where it did.
  virtual bool TakeEnter() { return false; }
  // The main or the cancelling button of a dialog is pressed from elsewhere.
  virtual void Press(bool /*cancel*/) {}

 protected:
  // Draws what has changed. `IsFollowing` is true meanwhile: what the widget signals then is not the user.
  virtual void Follow(const Change& change) = 0;
  [[nodiscard]] bool IsFollowing() const { return following_ > 0; }
  // Runs `act` as a reaction to the user, unless the widget only follows.
  template <typename Act>
  void User(Act act);

  // Whether the widget is shown and hidden as the control is; otherwise what it stands in does that.
  [[nodiscard]] virtual bool ShowsItself() const { return true; }
  // What names the control where it is read aloud.
  [[nodiscard]] virtual QString AccessibleName() const;
  // Where captions are drawn by the widget.
  virtual void DrawCaption(const QString& /*caption*/) {}
  // The widgets that are named. The widget itself, as a rule.
  [[nodiscard]] virtual std::vector<QWidget*> NamedWidgets() const;

  // Held while the widget is set from the control.
  class Following {
   public:
    explicit Following(ControlBinder& binder) : binder_(binder) { ++binder_.following_; }
    ~Following() { --binder_.following_; }
    Following(const Following&) = delete;
    Following& operator=(const Following&) = delete;

   private:
    ControlBinder& binder_;
  };
  // What the widget's signals are connected to: they end with the binder.
  [[nodiscard]] const QObject& Receiver() const { return receiver_; }
  [[nodiscard]] const std::shared_ptr<const void>& Life() const { return life_; }

 private:
  void Hear(const Change& change);
  void ShowState();
  [[nodiscard]] bool IsSeen() const;
  void TakeFocusBack();

  Control& control_;
  QWidget& widget_;
  std::shared_ptr<const void> life_ = std::make_shared<char>();
  QObject receiver_;
  QPointer<QLabel> caption_label_;
  const Control* named_by_ = nullptr;
  Text spoken_;
  int following_ = 0;
  std::vector<Control*> before_;  // those that it stands behind
  bool floats_ = false;
  Integer character_left_ = 0;
};

template <typename Act>
void ControlBinder::User(Act act) {
  if (!IsFollowing()) CarryOut(act);
}

}  // namespace tallybook::desktop
