// Puts into the journal which files an import read, what they were, and what came of them. Size and name of a file
// stand in its entry from the entry's first moment on; the sums over its bytes, which are made beside the import, and
// the outcome are put there at the end. One thread uses this object.
#pragma once

#include <memory>
#include <optional>
#include <vector>

#include "base/Failure.h"
#include "base/Types.h"
#include "import/QDXImportRecord.h"
#include "import/TextImport.h"
#include "tallybook/application/EntryFacts.h"
#include "tallybook/application/FileFingerprint.h"
#include "tallybook/engine/Book.h"

namespace tallybook::application {

class ImportRecorder {
 public:
  // `book` is open to be changed and outlives this.
  explicit ImportRecorder(engine::Book& book);
  ~ImportRecorder();
  ImportRecorder(const ImportRecorder&) = delete;
  ImportRecorder& operator=(const ImportRecorder&) = delete;

  // The import comes to a file: the entries that are opened from here to the next file are of it. To be called behind
  // Book::SetOperation.
  //   path   as the entry is to tell it
  //   place  where its bytes are
  //   facts  what is known by now
  void BeginFile(const Text& path, const Text& place, const EntryFacts& facts);

  // A file of the run. Its entries: those that were opened while it was imported.
  struct Run {
    Text path;
    EntryFacts facts;
    Long before = 0;  // the last entry of before
    Long last = 0;
  };
  // The files of the run, which is over, in their order, so that what came of them can be added.
  [[nodiscard]] std::vector<Run*> Runs();

  // Keeps all of it. Fails as JournalNotes::Save; the figures are stored whatever becomes of it.
  void Save();

 private:
  struct Running;
  void EndFile();

  engine::Book& book_;
  Long entries_before_;
  std::vector<std::unique_ptr<Running>> files_;
};

// What came of a file.
void AddOutcome(EntryFacts& facts, const QDXFileImport& file, const std::optional<StopReason>& stop);
void AddOutcome(EntryFacts& facts, const TextImportTally& tally, bool imported);
// What came of each exchange file of a run that is over. Files came in the order in which the recorder has them; one
// that ended before it was recorded has no run there.
void AddOutcomes(ImportRecorder& recorder, const QDXImportRecord& record);

// The word of an import's math; empty for one that has none.
[[nodiscard]] Text MathWord(Integer math);

}  // namespace tallybook::application
