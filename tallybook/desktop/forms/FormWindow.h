// The window of one form: its controls as widgets, laid out from the form's view, and the way from what the user does
// to the form. One thread.
//
// The form outlives the window or takes it away (Form::Unload). Made and ended by QtScreen.
#pragma once

#include <QElapsedTimer>
#include <QHash>
#include <QWidget>
#include <memory>
#include <vector>

#include "base/Types.h"
#include "tallybook/desktop/forms/FormAddition.h"
#include "tallybook/desktop/forms/KeyCodes.h"

class QTimer;

namespace tallybook {
class Control;
class Form;
class Timer;
}  // namespace tallybook

namespace tallybook::views {
struct FormView;
}

namespace tallybook::desktop {

class ControlBinder;
class Handles;
struct LaidOut;

class FormWindow : public QWidget {
 public:
  // Each control that has a widget gets a handle. Fails with 5 where the view does not fit the form.
  FormWindow(Form& form, const views::FormView& view, Handles& handles, FormAddition addition = {});
  ~FormWindow() override;

  [[nodiscard]] Form& Shown() const { return form_; }
  // The widget that has the focus where the control has it; null for a control that the window does not show.
  [[nodiscard]] QWidget* WidgetOf(const Control& control) const;
  [[nodiscard]] ControlBinder* BinderOf(const Control& control) const;

  // To be called before each time that it is shown. Fails as the application's part of it does (FormAddition).
  void BeforeShown();
  // As large as its contents want to be, unless the user has chosen a size.
  void FitContents();
  // Shows what is not shown yet, before anything else happens.
  void DrawNow();
  // The form lets go of it: from here on nothing goes to the form any more.
  void Detach();

 protected:
  bool event(QEvent* event) override;
  bool eventFilter(QObject* object, QEvent* event) override;
  void closeEvent(QCloseEvent* event) override;
  void showEvent(QShowEvent* event) override;
  // Where the focus goes is the form's to say.
  bool focusNextPrevChild(bool /*next*/) override { return false; }

 private:
  void Add(FormAddition addition);
  void FollowForm();
  void ListenTo(ControlBinder& binder);
  void LayOut();
  void ReportPlaces();
  void MeasureGrids();
  void Activated();
  void TakeFirstFocus();
  void SelectText();
  void TickTimers();

  void TakeFocus(ControlBinder& binder);
  bool TakeKey(const KeyPress& press);
  void PressCancel(Control* before);
  bool TakeTab(bool backwards);
  void TakeEnter(ControlBinder* at);

  Form& form_;
  Handles& handles_;
  std::unique_ptr<LaidOut> made_;
  QHash<const QObject*, ControlBinder*> binders_;  // by the widgets that take input
  std::shared_ptr<const void> life_ = std::make_shared<char>();
  QTimer* timer_ = nullptr;
  QHash<const Timer*, qint64> ticked_;  // when each of the form's timers ticked last
  QElapsedTimer clock_;
  std::function<void()> before_shown_;
  bool detached_ = false;
  bool was_shown_ = false;
  bool expects_activation_ = false;  // the one that showing brings
  bool laying_out_ = false;
};

}  // namespace tallybook::desktop
