#include "tallybook/desktop/forms/ElidedBox.h"

#include <QStyleOptionComboBox>
#include <QStylePainter>

namespace tallybook::desktop {

void ElidedBox::paintEvent(QPaintEvent* /*event*/) {
  constexpr int kWithin = 2;  // what styles leave free on both sides of the text, together
  QStylePainter painter(this);
  QStyleOptionComboBox option;
  initStyleOption(&option);
  const QRect room = style()->subControlRect(QStyle::CC_ComboBox, &option, QStyle::SC_ComboBoxEditField, this);
  option.currentText = fontMetrics().elidedText(option.currentText, Qt::ElideRight, room.width() - kWithin);
  painter.drawComplexControl(QStyle::CC_ComboBox, option);
  painter.drawControl(QStyle::CE_ComboBoxLabel, option);
}

}  // namespace tallybook::desktop
