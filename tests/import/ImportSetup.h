// What the tests of the import engines stand on: a small book, files in memory, and the state that an import works
// with. The fixtures add their own verbs.
#pragma once

#include <memory>
#include <vector>

#include "base/Dates.h"
#include "import/QDXImport.h"
#include "qdx/HeaderReader.h"
#include "tests/import/ExchangeFile.h"
#include "tests/support/MemoryHost.h"
#include "tests/support/ScriptedPlatform.h"

namespace tallybook::testing {

inline const Text kFolder = "/in/";
inline const Text kArchive = "/book/TBQDBU1.NORTH";

// The clock as it stands, in the report's words; the question of a run that has failed.
inline const Text kNow = "2004-02-03 14:05:09";
inline const Text kAsk = "Error reading QDX file";

// The first three days of February 2004, a Sunday to a Tuesday.
inline Date February(int day) {
  return DateFromParts(2004, 2, day);
}

// A file of the accounts "100", "200" and "300" and the fields 1 and 2 of SmallBook, without a figure yet.
inline ExchangeFile ShopFile(Date first = February(1), Date last = February(3)) {
  ExchangeFile file;
  file.first = first;
  file.last = last;
  file.accounts = {{"100", "Front of shop"}, {"200", "Back of shop"}, {"300", "Yard"}};
  file.fields = {{1, "Sales"}, {2, "Customers"}};
  return file;
}

// One figure of account "100" on 3 February.
inline ExchangeFile OneFigure(Double value = 2.5) {
  ExchangeFile file = ShopFile();
  file.blocks = {{1, {{February(3), {{1, value}}}}}};
  return file;
}

// Figures of all three accounts on three days, some accounts with several.
inline ExchangeFile ManyFigures() {
  ExchangeFile file = ShopFile();
  file.blocks = {{1, {{February(1), {{1, 1}, {2, 2}}}, {February(3), {{1, 4}}}}},
                 {2, {}},
                 {3, {{February(2), {{2, 8}}}, {February(3), {{1, 16}, {2, 32}}}}}};
  return file;
}

// The lists of SmallBook.
inline const std::vector<std::pair<Long, Text>> kBookAccounts = {{101, "100"}, {102, "200"}, {205, "300"}};
inline const std::vector<Integer> kBookFields = {1, 2, 7};

using Figures = MemoryMasterfile::FigureMap;

class ImportSetup {
 public:
  explicit ImportSetup(const BookShape& shape = {}) : host(SmallBook(shape)) {
    definition.QdxFileName = kFolder + "*.QDX";
    definition.Disp = kDispKeep;
    definition.AcctMatch = kOneForOne;
    definition.FldMatch = kOneForOne;
    definition.accounts.Reset(kMaxDefinitionRows);
    definition.fields.Reset(kMaxDefinitionRows);
    for (int i = 0; i < 4; ++i) host->printer.Columns().Add(1.0F);
  }

  // Files count their age from the first put; `minutes` later is younger.
  void Put(const Text& name, const std::string& bytes, int minutes = 0) {
    platform.memory.Put(kFolder + name, bytes);
    platform.memory.SetModified(kFolder + name, February(1) + minutes / 1440.0);
  }
  void Put(const Text& name, const ExchangeFile& file, int minutes = 0) { Put(name, file.Bytes(), minutes); }
  [[nodiscard]] bool Has(const Text& name) const { return platform.memory.Has(kFolder + name); }

  [[nodiscard]] bool Import() {
    QDXImportMeans means{.masterfile = host->book,
                         .definition = definition,
                         .header = *header,
                         .file_number = file_number,
                         .file_list = file_list,
                         .math = math,
                         .write_rollback = write_rollback,
                         .read_header =
                             [this](const Text& file, StopReason& why) {
                               const bool header_only = false;
                               return MyReadQDXHeader(host->book, file, file_number, header_only, *header, &why);
                             },
                         .archive_name = [] { return kArchive; }};
    record = {};
    return ImportQDX(means, host->printer, record);
  }

  // The rows of the definition's tables, for the manual modes.
  void MatchAccounts(const std::vector<std::pair<Text, Text>>& rows) {
    definition.AcctMatch = kManually;
    definition.NumAccounts = static_cast<Integer>(rows.size());
    Long row = 0;
    for (const auto& [from, to] : rows) {
      definition.accounts(++row) = {.AccountFrom = 0, .AccountTo = 0, .from_code = from, .to_code = to};
    }
  }
  void MatchFields(const std::vector<std::pair<Integer, Integer>>& rows) {
    definition.FldMatch = kManually;
    definition.NumFields = static_cast<Integer>(rows.size());
    Long row = 0;
    for (const auto& [from, to] : rows) definition.fields(++row) = {.FieldFrom = from, .FieldTo = to};
  }

  [[nodiscard]] std::vector<Text> Lines() const { return host->printer->Lines(); }

  ScriptedPlatform platform{FilesIn::kMemory};
  std::unique_ptr<MemoryHost> host;
  DefinitionRecord definition;
  std::unique_ptr<HeaderRecord> header = std::make_unique<HeaderRecord>();
  Integer file_number = 0;
  std::vector<Text> file_list;
  Integer math = static_cast<Integer>(eMath::mAdd);
  bool write_rollback = true;
  QDXDefinitionImport record;  // of the last import
};

}  // namespace tallybook::testing
