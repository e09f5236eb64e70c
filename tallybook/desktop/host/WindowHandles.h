// How the component knows windows that the application has made: by numbers, which whoever draws the screen gives out.
// A window that has gone has none, and its number is not given again. One thread.
#pragma once

#include "base/Types.h"

class QWidget;

namespace tallybook::desktop {

class WindowHandles {
 public:
  virtual ~WindowHandles() = default;
  // The number of a window, given on first asking.
  [[nodiscard]] virtual Long HandleOf(QWidget& window) = 0;
  // The window of a number; null where it has gone, or never was.
  [[nodiscard]] virtual QWidget* WidgetOf(Long handle) = 0;
};

}  // namespace tallybook::desktop
