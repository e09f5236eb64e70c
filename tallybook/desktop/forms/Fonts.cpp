#include "tallybook/desktop/forms/Fonts.h"

#include <QApplication>
#include <QFont>
#include <QFontMetrics>
#include <QWidget>
#include <algorithm>

#include "tallybook/desktop/forms/Words.h"

namespace tallybook::desktop {

// What is not said is not set, so that a control without a font of its own has its window's.
QFont FontOf(const Text& name, Single points) {
  QFont font;
  if (!name.empty()) font.setFamily(ToQt(name));
  if (points > 0) font.setPointSizeF(points);
  return font;
}

int Unit(const QWidget& widget) {
  return std::max(widget.fontMetrics().height() / 4, 3);
}

int CharacterWidth(const QWidget& widget) {
  return std::max(widget.fontMetrics().averageCharWidth(), 1);
}

}  // namespace tallybook::desktop
