// What the user's locale says of numbers and dates, in the forms that the figures' logic takes.
#pragma once

#include "tallybook/desktop/forms/NumberText.h"
#include "tallybook/desktop/forms/PlainDate.h"
#include "tallybook/desktop/forms/Words.h"

class QLocale;

namespace tallybook::desktop {

struct LocaleStyle {
  NumberStyle numbers;
  DateWriter dates;
  DateHabits habits;
};

// A locale without a language (that of a bare system) writes dates as 2024-02-03.
[[nodiscard]] LocaleStyle StyleOf(const QLocale& locale);
// That of the system, as Qt was told it.
[[nodiscard]] LocaleStyle SystemStyle();

// A number as it is drawn: its sign stays before it in windows whose words go from right to left.
[[nodiscard]] QString Upright(const QString& number);

}  // namespace tallybook::desktop
