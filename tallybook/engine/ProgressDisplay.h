// The progress display that an application gives to the books and reports that it opens. The application owns it, and
// it outlives them. One display shows one operation at a time.
#pragma once

#include "base/Types.h"

namespace tallybook::engine {

class ProgressDisplay {
 public:
  virtual ~ProgressDisplay() = default;

  // Opens the display with the fraction at 0, or gives an open one a new title.
  virtual void Begin(const Text& title) = 0;
  // Moves the bar. 0 to 1; a value above 1 shows as 1.
  virtual void Fraction(Single fraction) = 0;
  // Replaces the shown text, which may hold a line break.
  virtual void Text(const tallybook::Text& text) = 0;
  // Offers or withdraws the user's cancel.
  virtual void CancelEnabled(bool enabled) = 0;
  // True from the user's cancel on, until the display ends. Polled.
  [[nodiscard]] virtual bool Cancelled() = 0;
  // Closes the display. Harmless where none is open.
  virtual void End() = 0;
};

}  // namespace tallybook::engine
