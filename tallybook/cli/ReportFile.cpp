#include "tallybook/cli/ReportFile.h"

#include <fmt/format.h>

#include "base/Failure.h"
#include "tallybook/cli/ExitStatus.h"
#include "tallybook/cli/Lines.h"
#include "tallybook/report/ReportPrinter.h"

namespace tallybook::cli {

void SendReportTo(Session& session, const Text& path) {
  if (path.empty()) return;
  report::Destination destination;
  destination.path = path;
  try {
    session.Factory().SetReportDestination(destination);
  } catch (const Failure& failure) {
    if (failure.Number() != FailureNumber::kInvalidArgument) throw;
    throw WrongUse("--report: " + failure.Description());
  }
}

ReportFile::ReportFile(application::WholeFiles& files, const Text& path) : path_(path) {
  if (!path.empty()) output_.emplace(files, path);
}

ReportFile::~ReportFile() {
  try {
    if (output_) output_->Keep();
  } catch (...) {
    return;  // meant: the failure that led here is what is told
  }
}

bool ReportFile::Finish(bool done) {
  if (!output_) return true;
  bool written = true;
  try {
    written = output_->Keep() || !done;
    if (!written) TellUnwritten("");
  } catch (...) {
    written = false;
    TellUnwritten(": " + CurrentFailure().Description());
  }
  output_.reset();
  return written;
}

void ReportFile::TellUnwritten(const Text& why) const {
  Warn(fmt::format("the report {} was not written{}", path_, why));
}

}  // namespace tallybook::cli
