// Fonts and the distances that follow from them. All distances of a window come from one unit, a quarter of the font's
// height, so that a larger font makes a larger window of the same proportions. One thread.
#pragma once

#include "base/Types.h"

class QFont;
class QWidget;

namespace tallybook::desktop {

// The application's font with what the component says of it; an empty name and a size of 0 leave the application's.
[[nodiscard]] QFont FontOf(const Text& name, Single points);

// In pixels, by the font of a widget: the unit, and the width of a usual character.
[[nodiscard]] int Unit(const QWidget& widget);
[[nodiscard]] int CharacterWidth(const QWidget& widget);

}  // namespace tallybook::desktop
