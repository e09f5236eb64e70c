// The controls that stand for those of the host's own libraries: number box, save buttons, calendar.
#pragma once

#include "forms/Control.h"

namespace tallybook {

// A box for a number between limits, with a spinner where one is wanted. The caption is its label.
class NumberBox : public Control {
 public:
  using Control::Control;

  [[nodiscard]] Double Value() const { return value_; }
  // Held to the limits and rounded to the decimals. Raises Change where it changes.
  void SetValue(Double value);
  [[nodiscard]] Double Min() const { return min_; }
  [[nodiscard]] Double Max() const { return max_; }
  [[nodiscard]] Double Step() const { return step_; }
  [[nodiscard]] Integer Decimals() const { return decimals_; }
  [[nodiscard]] bool HasSpinner() const { return spinner_; }
  void Configure(Double min, Double max, Double step, Integer decimals, bool spinner);

  Event<> Change;
  bool UserSetValue(Double value);
  // One step up (1) or down (-1).
  bool UserSpin(int direction);

 private:
  Double value_ = 0;
  Double min_ = 0;
  Double max_ = 0;
  Double step_ = 1;
  Integer decimals_ = 0;
  bool spinner_ = false;
};

// The pair of buttons at a dialog's foot: the main button, index 1, and Cancel, index 0. The caption is the main
// button's.
class SaveButtons : public Control {
 public:
  using Control::Control;
  static constexpr Integer kCancelButton = 0;
  static constexpr Integer kMainButton = 1;

  // Whether the dialog holds something that Cancel would lose. For the looks of the button alone: it can be pressed
  // either way, and then leaves the dialog.
  [[nodiscard]] bool CancelEnabled() const { return cancel_enabled_; }
  void SetCancelEnabled(bool enabled) { Set(cancel_enabled_, enabled); }

  Event<Integer> Click;
  bool UserClick(Integer button);

 private:
  bool cancel_enabled_ = true;
};

// A calendar in which one date is chosen. A date set by program raises nothing and is not held to the limits.
class CalendarBox : public Control {
 public:
  using Control::Control;

  [[nodiscard]] tallybook::Date Date() const { return date_; }
  void SetDate(tallybook::Date date) { Set(date_, date); }
  // What the user can choose, both ends included.
  [[nodiscard]] tallybook::Date MinDate() const { return min_date_; }
  void SetMinDate(tallybook::Date date) { Set(min_date_, date); }
  [[nodiscard]] tallybook::Date MaxDate() const { return max_date_; }
  void SetMaxDate(tallybook::Date date) { Set(max_date_, date); }
  // Off while several of them change together.
  [[nodiscard]] bool Redraw() const { return redraw_; }
  void SetRedraw(bool redraw) { Set(redraw_, redraw); }
  // The control's further flag, set when a dialog loads.
  [[nodiscard]] bool FurtherFlag() const { return further_flag_; }
  void SetFurtherFlag(bool flag) { Set(further_flag_, flag); }

  Event<> DateChanged;
  // False, with nothing done, for a date outside the limits too.
  bool UserChoose(tallybook::Date date);

 private:
  tallybook::Date date_ = kNoDate;
  tallybook::Date min_date_ = kNoDate;
  tallybook::Date max_date_ = kNoDate;
  bool redraw_ = true;
  bool further_flag_ = false;
};

}  // namespace tallybook
