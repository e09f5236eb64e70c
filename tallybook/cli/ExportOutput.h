// The file that an export writes, or standard output: the component writes it whole under another name, and it takes
// its name, or goes to standard output, when the export is over.
#pragma once

#include <optional>

#include "tallybook/application/StandardStreams.h"
#include "tallybook/application/WholeFiles.h"
#include "tallybook/cli/ExitStatus.h"

namespace tallybook::cli {

class ExportOutput {
 public:
  // `file` as the component is told it; `to_stream` where it stands for standard output. `files` must outlive this.
  ExportOutput(application::WholeFiles& files, const Text& file, bool to_stream);

  // Ends the output after an operation that gave `done`, and tells on standard error what became of it where that is
  // not the whole new file. A cancelled export is kept as the part that it is.
  //   gives  `status`, or kFailed where the output is not whole though the operation was done
  //   fails  as WholeFile::Keep and CopyToStandardOutput
  [[nodiscard]] ExitStatus Finish(bool done, ExitStatus status);

 private:
  void TellDropped() const;

  application::WholeFiles& files_;
  Text file_;
  std::optional<application::PrivateFolder> folder_;  // of an output for standard output
  std::optional<application::WholeOutput> output_;
};

}  // namespace tallybook::cli
