#include "tallybook/desktop/window/SearchLine.h"

#include <QtGui/QKeyEvent>
#include <QtWidgets/QAbstractItemView>
#include <QtWidgets/QApplication>
#include <algorithm>

namespace tallybook::desktop {

bool SearchWords::StandIn(const QString& line) const {
  return std::ranges::all_of(words_, [&](const QString& word) { return line.contains(word, Qt::CaseInsensitive); });
}

SearchLine::SearchLine(const QString& what, QAbstractItemView& list) : list_(list) {
  setObjectName("search");
  setPlaceholderText("Find " + what + " (Ctrl+F)");
  setAccessibleName("Find " + what);
  setClearButtonEnabled(true);
}

void SearchLine::Begin() {
  setFocus(Qt::ShortcutFocusReason);
  selectAll();
}

void SearchLine::keyPressEvent(QKeyEvent* event) {
  switch (event->key()) {
    case Qt::Key_Up:
    case Qt::Key_Down:
    case Qt::Key_PageUp:
    case Qt::Key_PageDown:
      QApplication::sendEvent(&list_, event);
      return event->accept();
    case Qt::Key_Return:
    case Qt::Key_Enter:
      if (done_) done_();
      return event->accept();
    case Qt::Key_Escape:
      if (text().isEmpty()) return event->ignore();
      return clear();
    default:
      QLineEdit::keyPressEvent(event);
  }
}

}  // namespace tallybook::desktop
