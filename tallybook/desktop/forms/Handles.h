// The handles of windows: the numbers by which the component knows widgets. One thread. Widgets belong to others; the
// handle of one that is gone stands for nothing any more, and is not given again.
#pragma once

#include <QHash>
#include <QPointer>

#include "base/Types.h"

class QWidget;

namespace tallybook::desktop {

class Handles {
 public:
  // The widget's handle, which is made on the first call.
  Long Of(QWidget& widget);
  // Its handle; 0 where it has none yet.
  [[nodiscard]] Long IfKnown(const QWidget& widget) const;
  // The widget; null where there is none, or none any more.
  [[nodiscard]] QWidget* Find(Long handle) const;

 private:
  QHash<Long, QPointer<QWidget>> widgets_;
  QHash<const QWidget*, Long> handles_;
  Long last_ = 0;
};

}  // namespace tallybook::desktop
