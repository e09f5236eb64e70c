// Texts of the component as windows may show them, beside the plain ways between both (forms/Words.h).
#pragma once

#include <QString>

#include "base/Types.h"
#include "tallybook/desktop/forms/Words.h"

namespace tallybook::desktop {

// A text that may hold names from elsewhere, as a window may show it: its lines stay lines, and every other control
// character is shown as what it is (application/Shown.h).
[[nodiscard]] QString ShownLines(const Text& text);
// The same on one line.
[[nodiscard]] QString ShownLine(const Text& text);

// A caption in which "&" stands for itself.
[[nodiscard]] QString PlainCaption(const Text& text);

}  // namespace tallybook::desktop
