// The platform of the command: files as on any POSIX system with outputs that are written whole, questions and file
// dialogs on the terminal, and a clock that can be fixed.
#pragma once

#include <optional>

#include "platform/Clock.h"
#include "platform/posix/PosixFileSystem.h"
#include "platform/posix/PosixPlatform.h"
#include "tallybook/application/CompanionFiles.h"
#include "tallybook/application/WholeFiles.h"
#include "tallybook/cli/ConsoleFileDialogs.h"
#include "tallybook/cli/ConsoleMessageBoxes.h"
#include "tallybook/cli/ConsoleProgress.h"
#include "tallybook/cli/ConsoleShell.h"

namespace tallybook::cli {

// The system's clock; the value of the variable SOURCE_DATE_EPOCH, seconds since 1970-01-01 in UTC, where that is set,
// so that what is written into files can be repeated to the byte (reproducible-builds.org, "SOURCE_DATE_EPOCH").
class ConsoleClock : public PosixClock {
 public:
  // Fails with WrongUse for a value of the variable that is no whole number of seconds.
  ConsoleClock();
  [[nodiscard]] Date Now() override;

 private:
  std::optional<Date> fixed_;
};

// All of it, installed while the object lives.
class ConsolePlatform {
 public:
  explicit ConsolePlatform(const AskOptions& options);
  ~ConsolePlatform();
  ConsolePlatform(const ConsolePlatform&) = delete;
  ConsolePlatform& operator=(const ConsolePlatform&) = delete;

  [[nodiscard]] application::WholeFiles& Files() { return whole_files_; }
  [[nodiscard]] ConsoleProgress& Progress() { return progress_; }
  [[nodiscard]] ConsoleMessageBoxes& Boxes() { return boxes_; }
  [[nodiscard]] const ConsoleMessageBoxes& Boxes() const { return boxes_; }

 private:
  ConsoleClock clock_;
  PosixFileSystem disk_;
  application::CompanionFiles files_{disk_};
  application::WholeFiles whole_files_{files_};
  ConsoleProgress progress_;
  ConsoleMessageBoxes boxes_;
  ConsoleShell shell_;
  ConsoleFileDialogs file_dialogs_;
  EmptyInputQueue input_;
  NoScreen screen_;
};

}  // namespace tallybook::cli
