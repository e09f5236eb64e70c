// Standard input and output where an operation needs files: the input is read to its end into a private file first, and
// an output that is whole goes from one to standard output. One thread.
#pragma once

#include "base/Types.h"

namespace tallybook::application {

// What stands for standard input or output in place of a file's name.
inline constexpr const char* kStandardStream = "-";

// Keeps the numbers of those standard streams that the process was started without (`>&-`) from going to a file that it
// opens, where what is printed would land in the file. Reading and writing there fails as it would with nothing open.
// Before anything else is opened; ends the process with status 1 where it cannot be done.
void HoldClosedStandardStreams();

// A folder of its own for this process's user alone, in the system's folder for temporary files ($TMPDIR, or /tmp);
// removed with all it holds by its end.
class PrivateFolder {
 public:
  // Fails with 70, 61 or 75 where it cannot be made.
  PrivateFolder();
  ~PrivateFolder();
  PrivateFolder(const PrivateFolder&) = delete;
  PrivateFolder& operator=(const PrivateFolder&) = delete;

  [[nodiscard]] Text Path(const Text& name) const { return path_ + "/" + name; }

 private:
  Text path_;
};

// Reads standard input to its end into a new file.
//   fails  75 where it is a folder, or a device that has no end; 57, 61 and the like
void SpoolStandardInput(const Text& to_path);

// Copies a file to standard output, behind what was printed there. Failure 57 or 61 where not all of it could be
// written.
void CopyToStandardOutput(const Text& from_path);

}  // namespace tallybook::application
