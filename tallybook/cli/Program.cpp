#include "tallybook/cli/Program.h"

#include "tallybook/cli/CommandLine.h"
#include "tallybook/cli/Commands.h"

namespace tallybook::cli {

CommandTable Program() {
  CommandTable program =
      MakeGroup("tallybook", "Keeps operating figures in books and moves them between books, exchange files and tables",
                {NewCommand(),         InfoCommand(),           ValuesCommand(),
                 SetCommand(),         AccountCommand(),        FieldCommand(),
                 CalendarCommand(),    ApplyCommand(),          ExportCommand(),
                 TextCheckCommand(),   ImportCommand(),         DefinitionCommand(),
                 QdxCommand(),         JournalCommand(),        HistoryCommand(),
                 VerifyCommand(),      BookCommand(),           DemoCommand(RunCommandLine),
                 HelpCommand(Program), CompleteCommand(Program)});
  program.notes = {"A book is one file, NAME.tbk; its companion files lie beside it.",
                   "Exit status: 0 done, 1 the operation failed, 2 wrong use, 3 cancelled by the user.",
                   "`tallybook help COMMAND` tells more of a command; `tallybook demo` shows all of it at work."};
  AddHelpEverywhere(program);
  AddVersion(program);
  return program;
}

}  // namespace tallybook::cli
