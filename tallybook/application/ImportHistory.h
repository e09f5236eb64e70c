// Whether a file that is about to be imported stands in the book's history already: a rule of the host, since nothing
// in a file says that its figures have been added before. One thread.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "base/Types.h"
#include "tallybook/application/EntryFacts.h"
#include "tallybook/engine/JournalNotes.h"

namespace tallybook::application {

// An entry under which the file was imported, the same way, and which is not undone; or a file of the same run.
struct EarlierImport {
  engine::JournalEntry entry;  // its id is 0 where it is of the same run
  Text who;                    // empty where it is not known
  Text file;                   // as it was called then, or is in the run
  bool likely = false;         // that import ended before it had read the file: only name and size are the same
  Text math = {};              // as EntryFacts tells it
};

class ImportHistory {
 public:
  // Reads the journal of an open book. Failure 57 where it is damaged.
  explicit ImportHistory(engine::Book& book);

  // The newest such entry. Of a file whose size no import of that kind had, nothing but the size is looked at; any
  // other is read to its end.
  //   path   by which the entry tells the file
  //   place  where its bytes are
  //   way    how it is to be imported
  [[nodiscard]] std::optional<EarlierImport> Find(const Text& path, const Text& place, const EntryFacts& way) const;

  // The file is going to be imported: another one of its bytes is found from now on.
  void Expect(const Text& path, const Text& place, const EntryFacts& way);

 private:
  struct Known {
    engine::NotedEntry noted;
    EntryFacts facts;
  };
  // What a file begins with tells it from nearly all others of its size.
  struct Expected {
    Text path;
    Text place;
    EntryFacts way;
    std::int64_t size = 0;
    Text head;
  };
  [[nodiscard]] std::optional<EarlierImport> FindExpected(const Text& place, const EntryFacts& way) const;

  std::vector<Known> imports_;  // not undone, oldest first
  std::vector<Expected> expected_;
};

// "in/north.QDX was imported on 2024-03-01 12:00:00 by anna (journal entry 3), and has not been taken back", and under
// which name where that was another; "in/south.QDX: it has the same bytes as in/north.QDX, which is imported as well".
[[nodiscard]] Text EarlierImportText(const Text& path, const EarlierImport& earlier);
// The same without the path in front.
[[nodiscard]] Text EarlierImportReason(const Text& path, const EarlierImport& earlier);

}  // namespace tallybook::application
