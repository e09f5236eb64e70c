#include "tallybook/cli/ExportOutput.h"

#include <fmt/format.h>

#include "tallybook/cli/Lines.h"

namespace tallybook::cli {

namespace {

constexpr const char* kPlace = "output";

}  // namespace

ExportOutput::ExportOutput(application::WholeFiles& files, const Text& file, bool to_stream)
    : files_(files), file_(to_stream ? "standard output" : file) {
  if (to_stream) folder_.emplace();
  output_.emplace(files, file, to_stream ? folder_->Path(kPlace) : Text());
}

ExitStatus ExportOutput::Finish(bool done, ExitStatus status) {
  const Text refusal = files_.LastRefusal();
  if (!done) {
    if (!refusal.empty()) Warn(refusal);
    if (output_->Drop()) TellDropped();
    return status;
  }
  if (!output_->Keep()) {
    TellDropped();
    return ExitStatus::kFailed;
  }
  if (folder_) application::CopyToStandardOutput(folder_->Path(kPlace));
  if (status == ExitStatus::kCancelled) Warn(fmt::format("{} is a part only", file_));
  return status;
}

void ExportOutput::TellDropped() const {
  Warn(fmt::format("{} was not written; what there was of it is removed", file_));
}

}  // namespace tallybook::cli
