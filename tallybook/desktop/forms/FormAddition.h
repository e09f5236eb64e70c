// What the application puts beside what a form brings: a word to be had before the main button acts, and a button of
// its own between the main and the cancelling one. The form knows nothing of either.
#pragma once

#include <QString>
#include <functional>

namespace tallybook::desktop {

struct FormAddition {
  // Asked when the user presses the main button; where it gives false nothing happens. Empty for no question.
  std::function<bool()> may_press = {};
  QString caption = {};  // of the button; empty: there is none
  // Done when it is pressed; where it gives true the main button is pressed behind it.
  std::function<bool()> act = {};
};

}  // namespace tallybook::desktop
