// A look at a text file before it is imported, from a window (tallybook/inspect): what was found as plain data, and the
// lines with findings, which stay when the file and the book have been closed. One thread.
#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <vector>

#include "base/TextEncoding.h"
#include "base/Types.h"
#include "import/QDXImport.h"
#include "tallybook/inspect/Finding.h"
#include "tallybook/preview/TemporaryFile.h"

namespace tallybook::engine {
class Book;
}

namespace tallybook::desktop {

// What is looked at, and how it will be imported.
struct FileCheckWish {
  Text file;
  bool is_delimited = false;  // else comma-separated
  eMath math = eMath::mDefault;
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
  inspect::LookTally tally;
  std::vector<inspect::Finding> findings;
  long long found = 0;  // kept or not
  // What has findings, in the file's own form.
  std::unique_ptr<preview::TemporaryFile> rejects;

  [[nodiscard]] long long NotKept() const { return found - static_cast<long long>(findings.size()); }
};

// Moves the book's calendar, shows progress, and changes nothing. Where the user cancels it the tally says so.
//   fails  75 where the file is the book, or no regular one; as the looks do; 5 where no order of day, month and year
//          fits, or more than one; and as TemporaryFile
[[nodiscard]] FileCheckResult CheckTextFile(engine::Book& book, const FileCheckWish& wish);

// "4 records, 3 findings: 1 that the audit asks about, ...".
[[nodiscard]] Text FileCheckWords(const FileCheckResult& result);
// What the import does about a finding: "asks about it", "ends there", "takes it in silence".
[[nodiscard]] Text EffectWords(inspect::Effect effect);

// Writes what has findings to a file, to be mended and imported. Never onto the file that was looked at, nor a book.
//   fails  as SaveWhole
void SaveRejects(FileCheckResult& result, const Text& book, const Text& path);

}  // namespace tallybook::desktop
