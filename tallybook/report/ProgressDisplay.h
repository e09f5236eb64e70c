// Where progress is shown: a bar with a text and perhaps a cancel button. The application implements it (a bar on the
// terminal, a window, nothing at all) and hands it to what reports progress: the database and the report printer.
// One thread. The application owns the display, and it outlives whoever was given it.
#pragma once

#include "support/Types.h"

namespace tallybook::report {

class ProgressDisplay {
 public:
  virtual ~ProgressDisplay() = default;

  // Opens the display with the bar at 0, or retitles the one that is open and takes its bar back to 0.
  virtual void Begin(const Text& title) = 0;
  // Moves the bar: 0 to 1. Values beyond are possible and show as a full bar.
  virtual void SetFraction(Single fraction) = 0;
  // Replaces the shown text, which may hold a line break.
  virtual void SetText(const Text& text) = 0;
  virtual void SetCancelEnabled(bool enabled) = 0;
  // The user asked to cancel since Begin. Polled, never signalled.
  [[nodiscard]] virtual bool Cancelled() const = 0;
  // Closes the display; harmless when none is open.
  virtual void End() = 0;
};

}  // namespace tallybook::report
