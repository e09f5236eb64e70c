#include "tallybook/cli/CommandLine.h"

#include <iostream>

#include "support/Failure.h"
#include "tallybook/cli/ArgumentParser.h"
#include "tallybook/cli/Commands.h"

namespace tallybook::cli {

namespace {

constexpr const char* kVersion = "tallybook 0.1.0";
constexpr const char* kFooter =
    "A book is one file, NAME.tbk; its companion files lie beside it.\n"
    "Exit status: 0 done, 1 the operation failed, 2 wrong use, 3 cancelled by the user.\n"
    "`tallybook demo` shows all of it at work; `tallybook COMMAND --help` tells more.";

CommandTable Program() {
  return MakeGroup("tallybook",
                   "Keeps operating figures in books and moves them between books, exchange files and tables",
                   {NewCommand(), InfoCommand(), ValuesCommand(), SetCommand(), ExportCommand(), ImportCommand(),
                    DefinitionCommand(), QdxCommand(), JournalCommand(), DemoCommand(RunCommandLine)});
}

ExitStatus Tell(const Text& trouble, ExitStatus status) {
  std::cout << std::flush;
  std::cerr << "tallybook: " << trouble << '\n' << std::flush;
  return status;
}

ExitStatus RunWords(const std::vector<Text>& words) {
  const CommandTable program = Program();
  const CommandTable* command = ParseArguments(program, kVersion, kFooter, words);
  return command == nullptr ? ExitStatus::kDone : command->run();
}

}  // namespace

ExitStatus RunCommandLine(const std::vector<Text>& arguments) {
  try {
    const ExitStatus status = RunWords(arguments);
    if (std::cout << std::flush) return status;
    return Tell("standard output cannot be written", ExitStatus::kFailed);
  } catch (const WrongUse& error) {
    return Tell(error.what(), ExitStatus::kWrongUse);
  } catch (...) {
    return Tell(CurrentFailure().Description(), ExitStatus::kFailed);
  }
}

}  // namespace tallybook::cli
