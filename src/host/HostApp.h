// The embedding application as a whole: its title, folders, log, help and idle time. Owned by the application; it
// outlives every database and every object of the component.
#pragma once

#include "base/Types.h"

namespace tallybook {

class HostLog;

class HostApp {
 public:
  virtual ~HostApp() = default;

  // The caption of every message box.
  [[nodiscard]] virtual Text Title() const = 0;
  virtual HostLog& Log() = 0;

  // Path of the installation's settings file; section "Files", key "WriteRollback" lives there.
  [[nodiscard]] virtual Text SettingsFileName() const = 0;

  // Told once per exchange file, before the import of that file starts.
  virtual void BeginImport() = 0;

  // Folder that import files default to, ready to have a file name appended.
  [[nodiscard]] virtual Text DefaultFolder() const = 0;
  // Start folder of the delimited file picker where nothing else is known.
  [[nodiscard]] virtual Text DefaultDataFolder() const = 0;
  // Non-zero lifts the limit on file browsing, whatever Masterfile::AccessRight says.
  [[nodiscard]] virtual Integer UnrestrictedFiles() const = 0;

  [[nodiscard]] virtual Text HelpFile() const = 0;
  virtual void HelpTopic(Long topic) = 0;

  [[nodiscard]] virtual Text FontName() const = 0;
  [[nodiscard]] virtual Single FontSize() const = 0;  // points

  // Milliseconds within which keystrokes extend a type-ahead search.
  [[nodiscard]] virtual Long TypeAheadDelay() const = 0;

  // The value that a batch import hands to Printer::SetOutputOption; its meaning is between application and printer.
  [[nodiscard]] virtual Integer UserOption() const = 0;

  // Minutes without the user after which the print dialog closes; 0 means never.
  [[nodiscard]] virtual Long IdleMinutes() const = 0;
  // Idle time has run out: open dialogs hide.
  [[nodiscard]] virtual bool IdleExpired() const = 0;
  virtual void SetIdleExpired(bool expired) = 0;

  // True when the application wants to close.
  [[nodiscard]] virtual bool Finished() const = 0;
};

}  // namespace tallybook
