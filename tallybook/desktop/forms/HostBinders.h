// Binders of the controls that stand for those of the host's libraries: number box, save buttons, calendar.
#pragma once

#include "tallybook/desktop/forms/ControlBinder.h"
#include "tallybook/desktop/forms/FormAddition.h"

class QAbstractButton;
class QCalendarWidget;
class QCheckBox;
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

// The pair of buttons at a dialog's foot, one control and one stop for the form, with what the application adds; within
// it the Tab key goes from button to button, and to the switch last. The one that leaves says "Close" where there is
// nothing that it would lose.
class SaveButtonsBinder : public ControlBinder {
 public:
  SaveButtonsBinder(SaveButtons& buttons, QWidget& parent);
  // To be called before the window listens to the input widgets. Gives the buttons that were added.
  const std::vector<QPushButton*>& Add(FormAddition addition);
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
  [[nodiscard]] std::vector<QAbstractButton*> Row() const;
  // The place in the row of the one that has the focus; the first where none has.
  [[nodiscard]] std::size_t Place() const;
  bool Move(bool backwards);
  void PressMain();
  void PressAdded(std::size_t index);
  void AddSwitch(const AddedSwitch& choice);

  SaveButtons& buttons_;
  QPushButton& main_;
  QPushButton& cancel_;
  std::vector<QPushButton*> added_;
  QCheckBox* switch_ = nullptr;
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
