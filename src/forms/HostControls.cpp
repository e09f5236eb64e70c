#include "forms/HostControls.h"

#include <algorithm>
#include <cmath>

namespace tallybook {

void NumberBox::SetValue(Double value) {
  const Double scale = std::pow(10.0, decimals_);
  const Double rounded = std::nearbyint(value * scale) / scale;
  if (Set(value_, std::clamp(rounded, min_, std::max(min_, max_)))) Change.Raise();
}

void NumberBox::Configure(Double min, Double max, Double step, Integer decimals, bool spinner) {
  min_ = min;
  max_ = max;
  step_ = step;
  decimals_ = decimals;
  spinner_ = spinner;
  Changed.Raise({});
}

bool NumberBox::UserSetValue(Double value) {
  if (!UserFocus()) return false;
  SetValue(value);
  return true;
}

bool NumberBox::UserSpin(int direction) {
  return spinner_ && UserSetValue(value_ + direction * step_);
}

bool SaveButtons::UserClick(Integer button) {
  if (!UserFocus()) return false;
  Click.Raise(button);
  return true;
}

bool CalendarBox::UserChoose(tallybook::Date date) {
  if (date < min_date_ || date > max_date_ || !UserFocus()) return false;
  Set(date_, date);
  DateChanged.Raise();
  return true;
}

}  // namespace tallybook
