// The desktop's shell, and the process's folders. One thread.
#pragma once

#include "base/Types.h"

namespace tallybook {

// No application is associated with a file's type: an answer of Shell::Open.
inline constexpr Long kNoAssociation = 31;

// The desktop's shell, and the process's folders.
class Shell {
 public:
  virtual ~Shell() = default;
  // Opens a file with its associated application, whose window is to come up in `state` (0 normal, 1 minimised,
  // 2 maximised); a shell that has no say in that leaves it to the application. Above 32 is success.
  [[nodiscard]] virtual Long Open(const Text& file_name, Integer state) = 0;
  // Starts a program in a folder.
  virtual void Run(const Text& program, const Text& arguments, const Text& folder) = 0;
  // Each ends in the separator; empty where it cannot be told.
  [[nodiscard]] virtual Text SystemFolder() = 0;
  [[nodiscard]] virtual Text WindowsFolder() = 0;
  [[nodiscard]] virtual Text CurrentFolder() = 0;
  virtual void SetCurrentFolder(const Text& path) = 0;
  // The platform id of the system's version information.
  [[nodiscard]] virtual Long PlatformId() = 0;
};

}  // namespace tallybook
