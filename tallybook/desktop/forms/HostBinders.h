// Binders of the controls that stand for those of the host's libraries: number box, save buttons, calendar.
#pragma once

#include "tallybook/desktop/forms/ControlBinder.h"
#include "tallybook/desktop/forms/FormAddition.h"

class QCalendarWidget;
class QDoubleSpinBox;

namespace tallybook {
class CalendarBox;
class NumberBox;
class SaveButtons;
}  // namespace tallybook

namespace tallybook::desktop {

class NumberBoxBinder : public ControlBinder {
 public:
  NumberBoxBinder(NumberBox& box, QWidget& parent);

 protected:
  void Follow(const Change& change) override;

 private:
  NumberBox& box_;
  QDoubleSpinBox& spin_;
};

// The pair of buttons at a dialog's foot, one control and one stop for the form; within it the Tab key goes from button
// to button. The one that leaves says "Close" where there is nothing that it would lose.
class SaveButtonsBinder : public ControlBinder {
 public:
  SaveButtonsBinder(SaveButtons& buttons, QWidget& parent);
  // To be called before the window listens to the input widgets. Gives the button that was added; null for none.
  QPushButton* Add(FormAddition addition);
  [[nodiscard]] bool DrawsCaption() const override { return true; }
  [[nodiscard]] std::vector<QWidget*> InputWidgets() const override;
  [[nodiscard]] QWidget& FocusWidget() const override;
  [[nodiscard]] std::vector<QPushButton*> FootButtons() const override;
  bool TabWithin(bool backwards) override;
  bool TakeKey(const KeyPress& press) override;
  bool TakeEnter() override;
  void Press(bool cancel) override;

 protected:
  void Follow(const Change& change) override;
  void DrawCaption(const QString& caption) override;
  [[nodiscard]] std::vector<QWidget*> NamedWidgets() const override { return {}; }

 private:
  [[nodiscard]] std::vector<QPushButton*> Row() const;
  // The place in the row of the one that has the focus; the first where none has.
  [[nodiscard]] std::size_t Place() const;
  bool Move(bool backwards);
  void PressMain();
  void PressAdded();

  SaveButtons& buttons_;
  QPushButton& main_;
  QPushButton& cancel_;
  QPushButton* added_ = nullptr;
  FormAddition addition_;
};

class CalendarBinder : public ControlBinder {
 public:
  CalendarBinder(CalendarBox& box, QWidget& parent);
  [[nodiscard]] std::vector<QWidget*> InputWidgets() const override;
  [[nodiscard]] QWidget& FocusWidget() const override;

 protected:
  void Follow(const Change& change) override;
  [[nodiscard]] std::vector<QWidget*> NamedWidgets() const override { return InputWidgets(); }

 private:
  CalendarBox& box_;
  QCalendarWidget& calendar_;
};

}  // namespace tallybook::desktop
