// Whether the figures of exchange files stand in a book as they were imported, however long ago: the very engine that
// imports them runs on a database laid over the book, which holds what the files say should stand, and each figure that
// it wrote is held against the book. Nothing of the book is changed, and no file is deleted or renamed.
//
//   TieOut tie_out(means);
//   if (tie_out.Hold({.definition = definitions.front()})) {
//     tie_out.VisitDifferences(...);
//   }
//
// How a file's figures met those that stood is what the journal tells of its import. A replacement says what stands by
// itself. What an addition or a subtraction says goes back to the figures from before, which that entry of the journal
// kept; of a figure of which it did not, nothing is told but that. A file that the journal knows no import of is held
// as a replacement, or as the caller says, to zeros.
//
// One thread. What does not fit into memory goes to temporary files.
#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <vector>

#include "base/Types.h"
#include "host/HostFactory.h"
#include "host/Printer.h"
#include "import/DefinitionRecord.h"
#include "import/QDXImport.h"
#include "import/QDXImportRecord.h"
#include "qdx/HeaderRecord.h"
#include "tallybook/application/DefinitionLook.h"
#include "tallybook/engine/Book.h"
#include "tallybook/preview/ExpectedMasterfile.h"
#include "tallybook/preview/KeptRows.h"

namespace tallybook::application {

class ImportHistory;

// A file that was to be held against the book.
struct TieOutFile {
  Text file;
  bool held = false;  // it was read to its end
  Integer math = 0;   // how its figures met those that stood: eMath::mAdd, mSubtract or mReplace
  Long entry = 0;  // the newest entry of the journal under which it was imported; 0: there is none that is not undone
  long long applied = 0;     // figures of the file
  long long not_mapped = 0;  // figures of accounts and fields that the definition sends nowhere
};

// A figure that differs, or of which nobody can tell what should stand.
using TieOutFigure = preview::ExpectedFigure;

// Figures added up. Those of which nobody can tell what should stand are in neither sum.
struct TieOutTotal {
  Integer account_position = 0;  // 0: of all accounts
  Long account_number = 0;
  Integer field_position = 0;
  Integer field_number = 0;
  long long figures = 0;  // held against the book, and not to be told
  long long differ = 0;
  long long untold = 0;
  Double expected = 0;
  Double stands = 0;
};

class TieOut {
 public:
  // All of it belongs to the caller and outlives this.
  struct Means {
    engine::Book& book;  // not written meanwhile
    HostFactory& factory;
    HostApp& app;                                         // as MasterfileLayer takes it
    Printer& report;                                      // a new one; gets what an import would tell
    std::function<Text(const Text& path)> place_of = {};  // where the bytes of a file are; empty: at its path
    std::function<bool()> cancelled = {};                 // asked now and then; empty: never
    std::size_t cache_bytes = std::size_t{128} << 20;     // of figures
  };

  struct Request {
    SeenDefinition definition;  // a sound one
    Text pattern = {};          // of the files; empty: as the definition has it
    // How files were imported that the journal knows no import of: eMath::mReplace, or mAdd and mSubtract to zeros.
    Integer unknown_math = static_cast<Integer>(eMath::mReplace);
  };

  explicit TieOut(const Means& means);
  ~TieOut();
  TieOut(const TieOut&) = delete;
  TieOut& operator=(const TieOut&) = delete;

  // Holds the files against the book, oldest first; what a later one says of a figure counts. Once. False where there
  // is no file, or one could not be read to its end: Record tells which and why, and nothing below has a value then.
  //   fails   75 for a definition that cannot be read any more, 57 for a damaged book or journal, and as TemporaryFile
  [[nodiscard]] bool Hold(const Request& request);
  [[nodiscard]] const QDXImportRecord& Record() const { return record_; }
  [[nodiscard]] const std::vector<TieOutFile>& Files() const { return files_; }

  // Of all figures that the files wrote. Agrees: none differs, and of each one it is known what should stand.
  [[nodiscard]] const TieOutTotal& Figures() const { return figures_; }
  [[nodiscard]] bool Agrees() const { return figures_.differ == 0 && figures_.untold == 0; }
  // Of all fields that the files wrote, in the order of the book's list.
  [[nodiscard]] std::vector<TieOutTotal> FieldTotals() const;
  // Of the accounts' fields in which something differs or cannot be told, in the order of the lists.
  [[nodiscard]] const std::vector<TieOutTotal>& AccountTotals() const { return account_totals_; }
  // Each figure that differs or cannot be told, in the order of account positions, dates and field positions; `file` is
  // its place in Files, from 0. False ends the visit.
  using FigureVisitor = std::function<bool(const TieOutFigure& figure)>;
  void VisitDifferences(const FigureVisitor& visit) const;

 private:
  class JournalBaseline;

  [[nodiscard]] bool Run(const std::vector<Text>& files, const Request& request);
  [[nodiscard]] bool HoldFile(const Text& file, const Request& request);
  [[nodiscard]] bool Import(const Text& file, Integer math);
  [[nodiscard]] bool Compare();
  void TakeRecord(const preview::ExpectedRecord& record);
  void EndAccount();

  Means means_;
  preview::ExpectedMasterfile expected_;
  std::unique_ptr<ImportHistory> history_;
  std::unique_ptr<HeaderRecord> header_;
  DefinitionRecord definition_;
  QDXImportRecord record_;
  std::vector<TieOutFile> files_;
  TieOutTotal figures_;
  Integer account_position_ = 0;             // of the account under way
  std::vector<TieOutTotal> field_totals_;    // by position from 1
  std::vector<TieOutTotal> account_totals_;  // in order
  std::vector<TieOutTotal> of_account_;      // of the account under way, by the places of records
  preview::KeptRows<TieOutFigure> kept_;     // what differs or cannot be told
};

// Whether two figures are not the same to people: sums of the same amounts in another order may differ behind their
// 15th digit, which no table shows.
[[nodiscard]] bool DifferInText(Double one, Double other);
[[nodiscard]] inline bool Differ(Double one, Double other) {
  return one != other && DifferInText(one, other);
}

// "120 figures of 2 files held against the book: 3 differ, 4 cannot be told.", "... none differs."
[[nodiscard]] Text TieOutWords(const TieOut& tie_out);

// How a file was held: "north.QDX: held as an addition to what stood before journal entry 3".
[[nodiscard]] Text HeldWords(const TieOutFile& file);

}  // namespace tallybook::application
