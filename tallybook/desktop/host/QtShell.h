// The desktop's shell: opens a file with the program that the desktop has for it, or one that the user chooses, and the
// folder in force. One thread.
#pragma once

#include <functional>

#include "platform/Shell.h"

namespace tallybook::desktop {

class QtShell : public Shell {
 public:
  static constexpr Long kOpened = 33;
  static constexpr Long kNotOpened = 2;

  // Asks the program `xdg-open` (freedesktop.org, "xdg-utils"): kOpened once it has handed the file on or is still at
  // it after a few seconds; kNoAssociation where it is not installed or knows no program; kNotOpened for any other
  // trouble. Events are let in meanwhile. The window comes up as the desktop has it.
  [[nodiscard]] Long Open(const Text& file_name, Integer state) override;
  // The choice of a program for a file, which the component asks for by its system's name
  // ("shell32.dll,OpenAs_RunDLL FILE"), lets the user choose one of those that are installed, and starts it. Any other
  // program is started as it is. Failure 53 where a program cannot be started.
  void Run(const Text& program, const Text& arguments, const Text& folder) override;
  [[nodiscard]] Text SystemFolder() override { return ""; }
  [[nodiscard]] Text WindowsFolder() override { return ""; }
  // Without a separator at the end, but for the root. Fails with 76 where the folder has been taken away, or cannot be
  // entered.
  [[nodiscard]] Text CurrentFolder() override;
  void SetCurrentFolder(const Text& path) override;
  [[nodiscard]] Long PlatformId() override { return 0; }

  // Done before a file is opened: an output must have its own name by then. Empty for nothing.
  void SetBeforeOpen(std::function<void()> act) { before_open_ = std::move(act); }

 private:
  std::function<void()> before_open_;
};

}  // namespace tallybook::desktop
