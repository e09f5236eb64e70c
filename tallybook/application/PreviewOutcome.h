// What an import would come to, file by file, from what its engine told and what its preview saw.
#pragma once

#include <vector>

#include "import/QDXImportRecord.h"
#include "import/TextImport.h"
#include "tallybook/preview/ImportPreview.h"

namespace tallybook::application {

// A file that the import would take, or would have come to.
struct PreviewedImport {
  Text file = {};
  bool imported = false;
  long long figures = 0;  // changed
  preview::RecordCounts records = {};
  preview::FileFate fate = {};
  Text reason = {};  // why it is not imported, or why it could not be deleted or renamed; may be empty
};

struct PreviewOutcome {
  bool done = false;                          // the import would be done
  std::vector<PreviewedImport> imports = {};  // in the order of the run
  std::vector<Text> report = {};              // the lines of the report that the import itself would make
};

// The files of a run of definitions; those of a run that would stop follow as not imported.
[[nodiscard]] std::vector<PreviewedImport> ImportsOf(const QDXImportRecord& record,
                                                     const preview::ImportPreview& preview);
// The one file of a text import.
[[nodiscard]] PreviewedImport ImportOf(const Text& file, const TextImportTally& tally,
                                       const preview::ImportPreview& preview);

// What would become of the file: "kept", "deleted", "renamed to a.XDQ", "renamed to a.XDQ, in place of an older file".
[[nodiscard]] Text FateText(const preview::FileFate& fate);

// Lines of a text without the empty ones at its end.
[[nodiscard]] std::vector<Text> LinesOf(const Text& text);

}  // namespace tallybook::application
