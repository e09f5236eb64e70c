// The commands of `tallybook`, one unit each (NewCommand.cpp, InfoCommand.cpp ...). Each adds itself to the command
// line and, when the user's words name it, sets `chosen` to what is to be done.
#pragma once

#include <functional>
#include <vector>

#include "tallybook/cli/Arguments.h"

namespace tallybook::cli {

void AddNewCommand(CLI::App& app, Command& chosen);
void AddInfoCommand(CLI::App& app, Command& chosen);
void AddValuesCommand(CLI::App& app, Command& chosen);
void AddSetCommand(CLI::App& app, Command& chosen);
void AddExportCommand(CLI::App& app, Command& chosen);
void AddImportCommand(CLI::App& app, Command& chosen);
// These two go under `import`.
void AddImportCsvCommand(CLI::App& group, Command& chosen);
void AddImportDelimitedCommand(CLI::App& group, Command& chosen);
void AddDefinitionCommand(CLI::App& app, Command& chosen);
void AddQdxCommand(CLI::App& app, Command& chosen);
void AddJournalCommand(CLI::App& app, Command& chosen);

// Runs a command line, without the program's name, as if the user had typed it.
using LineRunner = std::function<ExitStatus(const std::vector<Text>& arguments)>;
void AddDemoCommand(CLI::App& app, Command& chosen, const LineRunner& run_line);

}  // namespace tallybook::cli
