// Looks at the exchange definitions of a book before the component loads them. The component's store shows a file that
// it cannot read as the one before it, and clears away what it could not write; so whoever uses definitions looks first
// and goes no further where one is not sound. Nothing is changed here. One thread.
#pragma once

#include <vector>

#include "base/Types.h"
#include "import/DefinitionRecord.h"

namespace tallybook::engine {
class Book;
}

namespace tallybook::application {

struct SeenDefinition {
  Integer number = 0;
  Text path;
  Text title;
  Text exchange_files;  // the pattern of the files that it imports
  Text trouble;         // why it cannot be read; empty where it is sound
};

class WholeFiles;

// The definition files of a book, by number.
//   folder     where the book's companion files lie, with a separator at its end (Masterfile::DataPath)
//   extension  what they end in, without the dot (Masterfile::FileExtension)
// A file that another process holds for a moment is waited for as long as the store would. What was read is what the
// component will see: `files`, which must be those of the installed platform, show it from here on.
//   fails  70 or 57 where the folder cannot be listed
[[nodiscard]] std::vector<SeenDefinition> LookAtDefinitions(WholeFiles& files, const Text& folder,
                                                            const Text& extension);

// Failure 75 that names each definition that cannot be read, with its reason.
void NeedReadableDefinitions(const std::vector<SeenDefinition>& definitions);

// A definition that was seen, with its tables. Failure 75 where it cannot be read any more.
[[nodiscard]] DefinitionRecord ReadDefinitionAt(const Text& path);

// Failure 5 for a definition that there is none of: it names the numbers in use.
[[noreturn]] void FailNoDefinition(const Text& book_path, Integer number, const std::vector<Integer>& numbers);

// The definition of that number. Failure 5 as FailNoDefinition, 75 where it cannot be read.
[[nodiscard]] SeenDefinition NeedDefinition(WholeFiles& files, const engine::Book& book, Integer number);

// The copy that is kept of the file that a definition imported last. `folder` and `extension` as above.
[[nodiscard]] Text ArchiveCopyName(const Text& folder, const Text& extension, Integer number);

// Failure 75 where something that a pattern for exchange files leads to is no regular file: "in/north.QDX is a pipe".
// Folders that match a pattern with wildcards are passed over, as they are by the import. Failure 70 or 57 where the
// folder is there and cannot be listed: the import would take it for an empty one.
void NeedRegularExchangeFiles(const Text& pattern);

// The files that the pattern leads to at present, so that no output goes onto one of them.
[[nodiscard]] std::vector<Text> ExchangeFilesOf(const Text& pattern);

}  // namespace tallybook::application
