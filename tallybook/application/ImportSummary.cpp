#include "tallybook/application/ImportSummary.h"

#include <algorithm>
#include <set>

#include "base/Dates.h"
#include "tallybook/application/Counts.h"
#include "tallybook/application/StopText.h"

namespace tallybook::application {

namespace {

// What was touched, and how many figures came in.
struct Sum {
  std::set<Long> accounts;
  std::set<Long> fields;
  std::set<Date> dates;
  long long applied = 0;
  long long not_mapped = 0;
  long long zeroed = 0;
  long long files = 0;

  void Add(const QDXFileImport& file) {
    accounts.insert(file.accounts.begin(), file.accounts.end());
    fields.insert(file.fields.begin(), file.fields.end());
    dates.insert(file.dates.begin(), file.dates.end());
    applied += file.applied;
    not_mapped += file.not_mapped;
    zeroed += file.zeroed;
    ++files;
  }

  [[nodiscard]] Text Told() const {
    const auto count = [](const auto& set, const Text& noun) {
      return Counted(static_cast<long long>(set.size()), noun);
    };
    return count(accounts, "account") + ", " + count(fields, "field") + ", " + count(dates, "date") + "; " +
           Counted(applied, "figure") + " applied, " + WithCommas(not_mapped) + " not mapped";
  }
};

// An import that only zeroes reads nothing of the file.
bool OnlyZeroed(const QDXFileImport& file) {
  return file.body_end == BodyEnd::kUnread;
}

Text ImportedText(const QDXFileImport& file) {
  const Text name = OnOneLine(file.file);
  if (OnlyZeroed(file)) return "Zeroed the range of " + name + ": " + Counted(file.zeroed, "figure") + ".";
  Sum sum;
  sum.Add(file);
  return "Imported " + name + ": " + sum.Told() + ".";
}

void AddEndOfBody(const QDXFileImport& file, std::vector<ImportNote>& notes) {
  const Text name = OnOneLine(file.file);
  const Text place = "byte " + WithCommas(file.body_end_at);
  if (file.body_end == BodyEnd::kCut) {
    notes.push_back({.text = name + ": the file ends early, at " + place + "; its header tells of " +
                             DateText(file.first_date) + " to " + DateText(file.last_date) +
                             ", and what was there is imported",
                     .warning = true});
  }
  if (file.body_end == BodyEnd::kStray) {
    notes.push_back({.text = name + ": what stands behind " + place + " was not read: no account of its table does",
                     .warning = true});
  }
}

void AddFiles(const QDXDefinitionImport& definition, Sum& sum, std::vector<ImportNote>& notes) {
  for (const QDXFileImport& file : definition.files) {
    if (!file.done) continue;
    sum.Add(file);
    notes.push_back({.text = ImportedText(file)});
    AddEndOfBody(file, notes);
  }
}

bool HasNoFile(const QDXDefinitionImport& definition) {
  return definition.files.empty() && !definition.stop;
}

}  // namespace

std::vector<ImportNote> NotesOf(const QDXImportRecord& record) {
  std::vector<ImportNote> notes;
  Sum sum;
  for (const QDXDefinitionImport& definition : record.definitions) {
    AddFiles(definition, sum, notes);
    if (!HasNoFile(definition)) continue;
    notes.push_back({.text = "no file for the definition \"" + OnOneLine(definition.title) + "\": none matches " +
                             OnOneLine(definition.pattern),
                     .warning = true,
                     .no_file = true});
  }
  if (sum.files > 1) notes.push_back({.text = "Imported " + Counted(sum.files, "file") + ": " + sum.Told() + "."});
  return notes;
}

bool LacksFiles(const QDXImportRecord& record) {
  return std::ranges::any_of(record.definitions, HasNoFile);
}

std::vector<StopReason> StopsOf(const QDXImportRecord& record) {
  std::vector<StopReason> stops;
  for (const QDXDefinitionImport& definition : record.definitions) {
    if (definition.stop) stops.push_back(*definition.stop);
  }
  if (record.stop) stops.push_back(*record.stop);
  return stops;
}

}  // namespace tallybook::application
