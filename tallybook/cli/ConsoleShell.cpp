#include "tallybook/cli/ConsoleShell.h"

#include <filesystem>
#include <fmt/format.h>
#include <optional>
#include <system_error>

#include "base/Failure.h"
#include "tallybook/cli/Terminal.h"

namespace tallybook::cli {

Long ConsoleShell::Open(const Text& file_name, Integer /*state*/) {
  // The program's status where a program that it needs is missing (xdg-open(1), "Exit codes").
  constexpr int kNoApplication = 3;
  const std::optional<int> status = RunProgram("xdg-open", {file_name});
  if (!status || *status == kNoApplication) return kNoAssociation;
  return *status == 0 ? kOpened : kNotOpened;
}

void ConsoleShell::Run(const Text& program, const Text& arguments, const Text& /*folder*/) {
  throw Failure(FailureNumber::kFeatureUnavailable,
                fmt::format("A terminal cannot start this program: {} {}", program, arguments));
}

Text ConsoleShell::CurrentFolder() {
  std::error_code trouble;
  const std::filesystem::path folder = std::filesystem::current_path(trouble);
  if (!trouble) return folder.string();
  throw Failure(FailureNumber::kPathNotFound, "The folder in force cannot be told: " + trouble.message());
}

void ConsoleShell::SetCurrentFolder(const Text& path) {
  std::error_code trouble;
  std::filesystem::current_path(path, trouble);
  if (trouble) {
    throw Failure(FailureNumber::kPathNotFound, "The folder cannot be entered: " + path + ": " + trouble.message());
  }
}

}  // namespace tallybook::cli
