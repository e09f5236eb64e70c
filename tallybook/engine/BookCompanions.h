// The companion files of a book: its definitions (TBQDX1.NAME), exchange file archives (TBQDBU1.NAME) and settings
// (NAME.ini). They are read and put in place together when a book is backed up and restored.
//
// A book whose file does not end in ".tbk" bore a name without all that follows the last point while its
// format was 1, so that shop.2024 and shop.2025 had one set of companions. Now NAME is the whole name of the file.
#pragma once

#include <vector>

#include "base/Types.h"

namespace tallybook::engine {

// A companion file out of its place.
struct Companion {
  Text stem;  // the name before ".NAME"; empty for NAME.ini
  Text content;
  bool operator==(const Companion&) const = default;
};

// Where a companion of that stem stands.
[[nodiscard]] Text CompanionPath(const Text& folder, const Text& stem, const Text& name);
// True for the name of a definition or of an archive copy, of whatever book and in whatever case.
[[nodiscard]] bool IsDefinitionName(const Text& file);
// Where a book would stand that took a file at this path for its log, its lock, its settings, a definition or an
// archive copy.
[[nodiscard]] std::vector<Text> PossibleOwners(const Text& path);
// The paths of the companions that bear a name in a folder, which ends in a separator; in order.
[[nodiscard]] std::vector<Text> CompanionPaths(const Text& folder, const Text& name);
// The same with what they hold.
//   fails   70, 57 with the path where one cannot be read, 75 where it is no regular file
[[nodiscard]] std::vector<Companion> ReadCompanions(const Text& folder, const Text& name);
// What is wrong where companions, or the log of a book that is gone, stand that a new book at this path would take for
// its own; empty where none do.
[[nodiscard]] Text StrayCompanionTrouble(const Text& path);
// Failure 75 with the same.
void RefuseStrayCompanions(const Text& path);
// Makes a book's companions just these: each is written whole, and those that it has besides are taken away. What is
// there and the same is left alone. They may be read and written by whoever may read and write the book.
//   fails   70, 61, 57 with the path; the call can be repeated
void PutCompanions(const Text& path, const std::vector<Companion>& companions);

// True where a book of format 1 has taken its name: its two names are one, or there is NAME.ini, which tells that, so
// that whoever deletes a copy later does not get it again.
[[nodiscard]] bool HasTakenItsName(const Text& path);
// True where there are companions under the older name. They may be another book's besides.
[[nodiscard]] bool HasOlderCompanions(const Text& path);

// Copies them to the book's name, the settings last, which are made where there were none. What has the new name
// already stays as it is; those of before stay for whoever else uses them. Gives the names of the files that were
// copied.
//   fails   70, 61, 57 with the path; what was copied by then is whole, and the call can be repeated
std::vector<Text> CopyOlderCompanions(const Text& path);

}  // namespace tallybook::engine
