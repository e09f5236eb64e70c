// The commands of `tallybook`, one unit each (NewCommand.cpp, InfoCommand.cpp ...). Each gives its table.
#pragma once

#include <functional>
#include <vector>

#include "tallybook/cli/Arguments.h"

namespace tallybook::cli {

[[nodiscard]] CommandTable NewCommand();
[[nodiscard]] CommandTable InfoCommand();
[[nodiscard]] CommandTable ValuesCommand();
[[nodiscard]] CommandTable SetCommand();
[[nodiscard]] CommandTable ExportCommand();
[[nodiscard]] CommandTable TextCheckCommand();
[[nodiscard]] CommandTable ImportCommand();
// These two go under `import`.
[[nodiscard]] CommandTable ImportCsvCommand();
[[nodiscard]] CommandTable ImportDelimitedCommand();
[[nodiscard]] CommandTable DefinitionCommand();
[[nodiscard]] CommandTable QdxCommand();
// This goes under `qdx`.
[[nodiscard]] CommandTable QdxCheckCommand();
[[nodiscard]] CommandTable JournalCommand();
[[nodiscard]] CommandTable HistoryCommand();
// These go under `journal`.
[[nodiscard]] CommandTable JournalListCommand();
[[nodiscard]] CommandTable JournalShowCommand();
[[nodiscard]] CommandTable JournalUndoCommand();
[[nodiscard]] CommandTable JournalTrimCommand();
[[nodiscard]] CommandTable VerifyCommand();
[[nodiscard]] CommandTable BookCommand();
[[nodiscard]] CommandTable AccountCommand();
[[nodiscard]] CommandTable FieldCommand();
[[nodiscard]] CommandTable CalendarCommand();
[[nodiscard]] CommandTable ApplyCommand();

// Makes the whole program's table anew.
using TableSource = std::function<CommandTable()>;
[[nodiscard]] CommandTable HelpCommand(const TableSource& program);
[[nodiscard]] CommandTable CompleteCommand(const TableSource& program);

// Runs a command line, without the program's name, as if the user had typed it.
using LineRunner = std::function<ExitStatus(const std::vector<Text>& arguments)>;
[[nodiscard]] CommandTable DemoCommand(const LineRunner& run_line);

}  // namespace tallybook::cli
