// The shell of the command: the folder in force, and opening a file with the desktop's application where the system has
// the means. The system's own folders mean nothing on a terminal.
#pragma once

#include "platform/Shell.h"

namespace tallybook::cli {

class ConsoleShell : public Shell {
 public:
  static constexpr Long kOpened = 33;
  static constexpr Long kNotOpened = 2;

  // Asks the program `xdg-open` (freedesktop.org, "xdg-utils") to open the file and waits for its word: kOpened;
  // kNoAssociation where it is not installed or knows no application; kNotOpened for any other trouble, which it tells
  // itself. The application's window comes up as the desktop has it.
  [[nodiscard]] Long Open(const Text& file_name, Integer state) override;
  // Failure 73 with the program and its arguments: what the component starts is the system's choice of an application,
  // which a terminal has not.
  void Run(const Text& program, const Text& arguments, const Text& folder) override;
  [[nodiscard]] Text SystemFolder() override { return ""; }
  [[nodiscard]] Text WindowsFolder() override { return ""; }
  // Without a separator at the end, but for the root. Fails with 76 where the folder has been taken away, or cannot be
  // entered.
  [[nodiscard]] Text CurrentFolder() override;
  void SetCurrentFolder(const Text& path) override;
  [[nodiscard]] Long PlatformId() override { return 0; }
};

}  // namespace tallybook::cli
