// The first bytes of a book's file (SQLite file format, "The Database Header"), without which nothing of it can be
// read.
#pragma once

#include "base/Types.h"

namespace tallybook::engine {

// Puts what the head of every book says into the head of a file, so that damage in it costs nothing.
//   path     a copy, to be opened in one piece; nobody has it open
//   shown    what failures call it
//   has_log  whether a log stands beside the copy that is to be read with it
//   fails    75 where the file does not look like a book at all, 57 where it cannot be written
void MendDatabaseHead(const Text& path, const Text& shown, bool has_log);

}  // namespace tallybook::engine
