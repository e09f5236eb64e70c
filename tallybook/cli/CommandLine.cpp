#include "tallybook/cli/CommandLine.h"

#include <CLI/CLI.hpp>
#include <iostream>

#include "support/Failure.h"
#include "tallybook/cli/Commands.h"

namespace tallybook::cli {

namespace {

constexpr const char* kVersion = "tallybook 0.1.0";
constexpr const char* kFooter =
    "A book is one file, NAME.tbk; its companion files lie beside it.\n"
    "Exit status: 0 done, 1 the operation failed, 2 wrong use, 3 cancelled by the user.\n"
    "`tallybook demo` shows all of it at work; `tallybook COMMAND --help` tells more.";

constexpr const char* kSee = "See: tallybook --help, tallybook COMMAND --help";

void AddCommands(CLI::App& app, Command& chosen) {
  app.require_subcommand(1);
  app.fallthrough(false);
  app.set_version_flag("--version", kVersion);
  app.footer(kFooter);
  AddNewCommand(app, chosen);
  AddInfoCommand(app, chosen);
  AddValuesCommand(app, chosen);
  AddSetCommand(app, chosen);
  AddExportCommand(app, chosen);
  AddImportCommand(app, chosen);
  AddDefinitionCommand(app, chosen);
  AddQdxCommand(app, chosen);
  AddJournalCommand(app, chosen);
  AddDemoCommand(app, chosen, RunCommandLine);
}

ExitStatus Tell(const Text& trouble, ExitStatus status) {
  std::cout << std::flush;
  std::cerr << "tallybook: " << trouble << '\n' << std::flush;
  return status;
}

// Runs the command and turns whatever leaves it into a status.
ExitStatus RunChosen(const Command& command) {
  try {
    const ExitStatus status = command();
    if (std::cout << std::flush) return status;
    return Tell("standard output cannot be written", ExitStatus::kFailed);
  } catch (const WrongUse& error) {
    return Tell(error.what(), ExitStatus::kWrongUse);
  } catch (...) {
    return Tell(CurrentFailure().Description(), ExitStatus::kFailed);
  }
}

// Words that no option and no command took, from the innermost command that was reached.
std::vector<Text> UnknownWords(const CLI::App& app) {
  const bool with_subcommands = true;
  return app.remaining(with_subcommands);
}

// Help and version end with 0; everything else that the words are wrong with with 2.
ExitStatus TellParsing(const CLI::App& app, const CLI::ParseError& error) {
  if (error.get_exit_code() == static_cast<int>(CLI::ExitCodes::Success)) {
    app.exit(error, std::cout, std::cerr);
    return ExitStatus::kDone;
  }
  const std::vector<Text> unknown = UnknownWords(app);
  if (!unknown.empty() && error.get_exit_code() == static_cast<int>(CLI::ExitCodes::RequiredError)) {
    return Tell("'" + unknown.front() + "' is no command here\n" + kSee, ExitStatus::kWrongUse);
  }
  return Tell(Text(error.what()) + "\n" + kSee, ExitStatus::kWrongUse);
}

}  // namespace

ExitStatus RunCommandLine(const std::vector<Text>& arguments) {
  CLI::App app("Keeps operating figures in books and moves them between books, exchange files and tables", "tallybook");
  Command chosen;
  AddCommands(app, chosen);
  try {
    // The library takes the words from the last to the first.
    app.parse(std::vector<Text>(arguments.rbegin(), arguments.rend()));
  } catch (const CLI::ParseError& error) {
    return TellParsing(app, error);
  }
  return RunChosen(chosen);
}

}  // namespace tallybook::cli
