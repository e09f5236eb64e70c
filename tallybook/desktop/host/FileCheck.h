// A look at a file before it is imported, from a window (tallybook/inspect): what was found as plain data, and of a
// text file the lines with findings, which stay when the file and the book have been closed. One thread.
#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <vector>

#include "base/TextEncoding.h"
#include "base/Types.h"
#include "import/QDXImport.h"
#include "tallybook/application/WholeFiles.h"
#include "tallybook/inspect/Finding.h"
#include "tallybook/inspect/QdxLook.h"
#include "tallybook/preview/TemporaryFile.h"

namespace tallybook::engine {
class Book;
}

namespace tallybook::desktop {

enum class ImportKind { kCommaSeparated, kDelimited, kExchange };

// What is looked at, and how it will be imported.
struct FileCheckWish {
  Text file;
  ImportKind kind = ImportKind::kCommaSeparated;
  Integer math = static_cast<Integer>(eMath::mDefault);  // of an exchange file also kZeroOnly
  Integer definition = 0;                                // of an exchange file: its number
  // Of a text file.
  TextEncoding encoding = TextEncoding::kDetect;
  // Of a delimited file.
  Integer date_order = 0;  // 0: the one that fits its dates
  bool any_line_end = false;
  bool date_parts = false;
  bool system_fields = false;
};

struct FileCheckResult {
  // So many findings are kept, the first; what there is besides is counted.
  static constexpr std::size_t kMostKept = 100'000;

  FileCheckWish wish;
  inspect::QdxLookTally tally;  // of a text file what every look has
  std::vector<inspect::Finding> findings;
  long long found = 0;  // kept or not
  // What has findings, in the file's own form; null for an exchange file.
  std::unique_ptr<preview::TemporaryFile> rejects;

  [[nodiscard]] bool IsOfText() const { return wish.kind != ImportKind::kExchange; }
  // Looked at as an exchange file, it is something else, which is its one finding.
  [[nodiscard]] bool IsNoExchangeFile() const { return !IsOfText() && !tally.begins_as_one; }
  [[nodiscard]] long long NotKept() const { return found - static_cast<long long>(findings.size()); }
};

// Moves the book's calendar, shows progress, and changes nothing. Where the user cancels it the tally says so.
//   files  those of the installed platform
//   fails  75 where the file is the book, or no regular one; as the looks do; 5 where no order of day, month and year
//          fits, or more than one; and as TemporaryFile
[[nodiscard]] FileCheckResult CheckFile(application::WholeFiles& files, engine::Book& book, const FileCheckWish& wish);

// "4 records, 3 findings: 1 that the audit asks about, ...".
[[nodiscard]] Text FileCheckWords(const FileCheckResult& result);
// What the import does about a finding: "asks about it", "ends there", "takes it in silence", "does as it is told".
[[nodiscard]] Text EffectWords(inspect::Effect effect);

// Writes what has findings of a text file to a file, to be mended and imported. Never onto the one that was looked at,
// nor a book.
//   fails  as SaveWhole
void SaveRejects(FileCheckResult& result, const Text& book, const Text& path);

}  // namespace tallybook::desktop
