// What the application puts beside what a form brings: a word to be had before the main button acts, buttons of its own
// between the main and the cancelling one, and a switch at their side. The form knows nothing of any.
#pragma once

#include <QString>
#include <functional>
#include <optional>
#include <vector>

namespace tallybook::desktop {

struct AddedButton {
  QString caption;
  // Done when it is pressed; where it gives true the main button is pressed behind it.
  std::function<bool()> act;
};

struct AddedSwitch {
  QString caption;
  QString help;  // a sentence, shown at the switch and told to who does not see it
  bool is_on = false;
  std::function<void(bool on)> turned;
};

struct FormAddition {
  // Asked when the user presses the main button; where it gives false nothing happens. Empty for no question.
  std::function<bool()> may_press = {};
  std::vector<AddedButton> buttons = {};
  std::optional<AddedSwitch> choice = {};
  // Done each time before the window is shown: what came of the time before has ended by then. Empty for nothing.
  std::function<void()> before_shown = {};
};

}  // namespace tallybook::desktop
