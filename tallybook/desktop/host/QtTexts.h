// Texts on their way between the component (UTF-8) and Qt.
#pragma once

#include <QString>

#include "base/Types.h"

namespace tallybook::desktop {

[[nodiscard]] inline QString ToQt(const Text& text) {
  return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

[[nodiscard]] inline Text FromQt(const QString& text) {
  return text.toStdString();
}

// A text that may hold names from elsewhere, as a window may show it: its lines stay lines, and every other control
// character is shown as what it is (application/Shown.h).
[[nodiscard]] QString ShownLines(const Text& text);
// The same on one line.
[[nodiscard]] QString ShownLine(const Text& text);

// A caption in which "&" stands for itself.
[[nodiscard]] QString PlainCaption(const Text& text);

}  // namespace tallybook::desktop
