// Looks through a book's file for damage. Unlike every other reader it goes on after what it finds.
#pragma once

#include <vector>

#include "base/Types.h"
#include "tallybook/engine/WorkWatch.h"

namespace tallybook::engine {

enum class FindingKind { kName, kFile, kDescription, kSums, kIndex, kChunk, kJournal, kImage, kCompanions };

// The word for a kind: "name", "file", "description", "sums", "index", "chunk", "journal", "image",
// "companions".
[[nodiscard]] Text FindingKindName(FindingKind kind);

struct BookFinding {
  FindingKind kind = FindingKind::kFile;
  Long account = 0;      // the number of the account whose figures are concerned; 0: none
  Text code;             // its code; empty where it is not known
  Date first = kNoDate;  // the dates whose figures are concerned; kNoDate where they are not known
  Date last = kNoDate;
  Long entry = 0;  // the journal entry that is concerned; 0: none
  Text what;       // without the book's path
};

struct BookCheckResult {
  Long format = 0;
  long long chunks = 0;   // that were looked at
  long long entries = 0;  // of the journal
  long long images = 0;
  std::vector<BookFinding> findings;
};

// Checks that a book's name is its own (NameTroubles), and that all of it agrees with its checksums: the description,
// every chunk, what the index shows against what was written, and the journal. A book of format 1 has no checksums, and
// is read for what can be read of it.
//   deep    SQLite's own check of the whole file as well, and every image is read as figures
//   fails   as Book::Open where the file cannot be opened as a book at all; WorkCancelled
// Companion files that a restore has left within the book are looked at too. Takes a backup as well, whose name is
// nobody's business.
[[nodiscard]] BookCheckResult CheckBook(const Text& path, bool deep, WorkWatch& watch = Unwatched());

// Looks as deep as that goes, and fails with 57 where anything is damaged; names are nobody's business here. Failures
// call the book `shown`.
void RequireSound(const Text& path, const Text& shown, WorkWatch& watch = Unwatched());

}  // namespace tallybook::engine
