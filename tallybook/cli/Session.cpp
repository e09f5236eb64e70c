#include "tallybook/cli/Session.h"

#include <exception>
#include <fmt/format.h>
#include <iostream>

#include "support/Failure.h"
#include "support/Utility.h"

namespace tallybook::cli {

Integer ConsoleLog::LogError(const Text& message, Long line_number, Integer detail) {
  progress_.Hide();
  // Whoever logs is handling the failure, so it is still there to be asked.
  if (std::current_exception()) {
    std::cerr << fmt::format("tallybook: {} ({}, statement {})\n", CurrentFailure().Description(), message,
                             line_number);
  } else {
    std::cerr << fmt::format("tallybook: {} (statement {})\n", message, line_number);
  }
  return log_.LogError(message, line_number, detail);
}

Session::Session(const AskOptions& asking) : platform_(asking), app_(platform_.Progress()) {
  factory_.SetProgressDisplay(&platform_.Progress());
}

std::unique_ptr<engine::Book> Session::Open(const Text& path, bool read_only) {
  engine::BookOptions options;
  options.read_only = read_only;
  options.progress = &platform_.Progress();
  options.reports = &report_heads_;
  return engine::Book::Open(BookPath(path), app_, options);
}

ExitStatus Session::StatusOf(bool done) {
  if (platform_.Progress().WasCancelled()) return ExitStatus::kCancelled;
  if (platform_.Boxes().WasMisanswered()) return ExitStatus::kWrongUse;
  if (done) return ExitStatus::kDone;
  return platform_.Boxes().WasRefused() ? ExitStatus::kCancelled : ExitStatus::kFailed;
}

Text BookPath(const Text& named) {
  const bool has_extension = FileBaseName(named).find('.') != Text::npos;
  return has_extension || FileExists(named) ? named : named + ".tbk";
}

}  // namespace tallybook::cli
