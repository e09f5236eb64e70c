// Writes the man pages and the shells' completions, made from the tables of the command line, into a folder:
//
//   tallybook_pages FOLDER VERSION DATE
//
// The build runs it, and the installation takes the folder: man/, bash/, zsh/ and fish/.
#include <filesystem>
#include <fstream>
#include <iostream>

#include "tallybook/cli/CompletionScripts.h"
#include "tallybook/cli/ManPage.h"
#include "tallybook/cli/Program.h"

namespace {

namespace fs = std::filesystem;
using tallybook::Text;
using tallybook::cli::CommandPath;
using tallybook::cli::CommandTable;

void Write(const fs::path& path, const Text& content) {
  fs::create_directories(path.parent_path());
  std::ofstream file(path, std::ios::binary);
  file << content;
  file.close();
  if (!file) throw std::runtime_error(path.string() + " cannot be written");
}

void WriteManPages(const fs::path& folder, const CommandPath& path, const tallybook::cli::ManEdition& edition) {
  Write(folder / (ManPageName(path) + ".1"), ManPage(path, edition));
  for (const CommandTable& command : path.back()->commands) {
    if (command.hidden) continue;
    CommandPath longer = path;
    longer.push_back(&command);
    WriteManPages(folder, longer, edition);
  }
}

void WriteAll(const fs::path& folder, const tallybook::cli::ManEdition& edition) {
  const CommandTable program = tallybook::cli::Program();
  WriteManPages(folder / "man", {&program}, edition);
  Write(folder / "bash" / "tallybook", BashCompletion(program));
  Write(folder / "zsh" / "_tallybook", ZshCompletion(program));
  Write(folder / "fish" / "tallybook.fish", FishCompletion(program));
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 4) {
    std::cerr << "use: tallybook_pages FOLDER VERSION DATE\n";
    return 2;
  }
  try {
    WriteAll(argv[1], {.version = argv[2], .date = argv[3]});
    return 0;
  } catch (const std::exception& error) {
    std::cerr << "tallybook_pages: " << error.what() << '\n';
    return 1;
  }
}
