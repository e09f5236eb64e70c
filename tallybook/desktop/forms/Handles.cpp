#include "tallybook/desktop/forms/Handles.h"

#include <QWidget>

namespace tallybook::desktop {

Long Handles::Of(QWidget& widget) {
  if (const Long known = IfKnown(widget); known != 0) return known;
  widgets_.insert(++last_, &widget);
  handles_.insert(&widget, last_);
  return last_;
}

Long Handles::IfKnown(const QWidget& widget) const {
  const Long handle = handles_.value(&widget, 0);
  // A new widget may stand where one stood that is gone.
  return Find(handle) == &widget ? handle : 0;
}

QWidget* Handles::Find(Long handle) const {
  return widgets_.value(handle).data();
}

}  // namespace tallybook::desktop
