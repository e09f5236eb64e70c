
#include "tallybook/cli/ArgumentParser.h"
#include "tallybook/cli/Colours.h"
#include "tallybook/cli/Commands.h"
#include "tallybook/cli/Help.h"
#include "tallybook/cli/Lines.h"

namespace tallybook::cli {

namespace {

struct HelpOptions {
  std::vector<Text> command;
  TableSource program;
};

ExitStatus RunHelp(const HelpOptions& options) {
  const CommandTable program = options.program();
  PrintAsItStands(HelpText(FindCommand(program, options.command), HeadingText));
  return ExitStatus::kDone;
}

}  // namespace

CommandTable HelpCommand(const TableSource& program) {
  const auto options = std::make_shared<HelpOptions>();
  options->program = program;
  CommandTable command = MakeCommand("help", "Tell how a command is used",
                                     {"tallybook help", "tallybook help import qdx"}, options, RunHelp);
  AddText(command, "COMMAND", options->command, "", "The words of the command; without them, all commands are listed")
      .As(ArgumentKind::kCommand);
  return command;
}

}  // namespace tallybook::cli
