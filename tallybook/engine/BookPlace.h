// Where a book stands: the file that a path leads to, and the name that its companion files bear.
#pragma once

#include <vector>

#include "base/Types.h"

namespace tallybook::engine {

// A path in the words of the machine. Both separators are taken everywhere, as the platform's files do.
[[nodiscard]] Text NativeBookPath(Text path);

// The path of the file itself, in the words of the machine: where the path's last part is a symbolic link, what it
// leads to, to the end of a chain. Everything beside a book is named after this path, so
// that a book has one log, one lock and one set of companions whatever it is called by. A link that leads nowhere gives
// the path that it names.
//   fails   75 for links that lead in a circle, or that cannot be read
[[nodiscard]] Text ResolvedBookPath(const Text& path);

// Refuses what cannot be a book to open: 76 no such folder, 53 no such file, 75 a path that the system refuses, a
// folder, a device, a pipe or a socket, and a file with more than one name. A second name (a hard link) would have a
// log and a lock of its own, and what one name's log holds is missing under the other.
void CheckIsBookFile(const Text& path);

// The folder of a path, with a separator at its end.
[[nodiscard]] Text BookFolder(const Text& path);
// The name that a book's companion files bear: the file's name without its folder, and without ".tbk" where it ends so.
[[nodiscard]] Text BookName(const Text& path);
// The name that books of format 1 had: without all that follows the last point.
[[nodiscard]] Text OlderBookName(const Text& path);

// What is wrong with the name of a book, a sentence for each: that it holds what stands for other names in a search, or
// that another book in its folder has the same name, or one that differs in case only - such books take each other's
// companion files where names are compared without regard to case -, or that another book would take the file for its
// log, its settings, a definition of it or the like. Empty where the name is good. The book itself need
// not be there.
[[nodiscard]] std::vector<Text> NameTroubles(const Text& path);

}  // namespace tallybook::engine
