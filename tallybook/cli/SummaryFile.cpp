#include "tallybook/cli/SummaryFile.h"

#include <fmt/format.h>
#include <span>

#include "base/Failure.h"
#include "platform/Platform.h"
#include "support/FileStream.h"
#include "tallybook/application/StandardStreams.h"
#include "tallybook/cli/ExitStatus.h"
#include "tallybook/cli/Lines.h"

namespace tallybook::cli {

void AddSummary(CommandTable& command, Text& path) {
  AddText(command, "--summary", path, "FILE", "Write the balance of the import to FILE, as JSON")
      .As(ArgumentKind::kFile);
}

SummaryFile::SummaryFile(Session& session, const Text& path) : path_(path) {
  if (path.empty()) return;
  if (path == application::kStandardStream) throw WrongUse("--summary: standard output has the report; name a file");
  session.AddOutput(path);
  output_.emplace(session.Files(), path);
}

void SummaryFile::Write(const std::vector<application::FileBalance>& balances, bool done) {
  if (!output_) return;
  Text why;
  try {
    FileStream stream(ThePlatform().files->Open(path_, Access::kWrite, Sharing::kLockWrite, Creation::kReplace));
    const Text json = application::BalanceJson(balances, done);
    stream.Write(std::as_bytes(std::span(json)));
    stream.Close();
    if (!output_->Keep()) why = ": it could not be kept";
  } catch (...) {
    why = ": " + CurrentFailure().Description();
  }
  if (!why.empty()) Warn(fmt::format("the summary {} was not written{}", path_, why));
  output_.reset();
}

}  // namespace tallybook::cli
