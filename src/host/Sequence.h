// The saved print sequences of a database and the control in which one is chosen. Both are the application's; the
// print dialog only passes the list on and asks the control for four things.
#pragma once

#include "base/Types.h"

namespace tallybook {

// The saved print sequences of a database (Masterfile::PrintSequences). Opaque to the component.
class SequenceList {
 public:
  virtual ~SequenceList() = default;
};

// The report whose sequences are being chosen, as the sequence control sees it.
class SequenceReport {
 public:
  virtual ~SequenceReport() = default;
  [[nodiscard]] virtual Integer NumSequences() const = 0;
  virtual void RestoreOrigSequence() = 0;
};

// The control of the print dialog's sequence page.
class PrintSequence {
 public:
  virtual ~PrintSequence() = default;
  // Takes the sequences of `report`, which must outlive the control's use of it.
  virtual void LoadSequences(SequenceReport& report) = 0;
  // True: the user may look at the sequence but not choose another.
  [[nodiscard]] virtual bool SequenceFixed() const = 0;
  virtual void SetSequenceFixed(bool fixed) = 0;
  virtual void RefreshSequences() = 0;
  // Gives the user's choice back to the report.
  virtual void ApplySequences() = 0;
};

}  // namespace tallybook
