#include "tallybook/application/ImportSummary.h"

#include <algorithm>
#include <set>
#include <vector>

#include "base/Dates.h"
#include "host/FiscalCalendar.h"
#include "host/Masterfile.h"
#include "tallybook/application/Counts.h"
#include "tallybook/application/Shown.h"

namespace tallybook::application {

namespace {

// What was touched, and how many figures came in. Touched is a list of each kind, of one file or of several.
template <typename Touched>
Text ToldOf(const Touched& touched) {
  const auto count = [](const auto& list, const Text& noun) {
    return Counted(static_cast<long long>(list.size()), noun);
  };
  return count(touched.accounts, "account") + ", " + count(touched.fields, "field") + ", " +
         count(touched.dates, "date") + "; " + Counted(touched.applied, "figure") + " applied, " +
         WithCommas(touched.not_mapped) + " not mapped";
}

// Of several files. One file's lists can be large, and are not copied.
struct Sum {
  std::set<Long> accounts = {};
  std::set<Long> fields = {};
  std::set<Date> dates = {};
  long long applied = 0;
  long long not_mapped = 0;

  void Add(const QDXFileImport& file) {
    accounts.insert(file.accounts.begin(), file.accounts.end());
    fields.insert(file.fields.begin(), file.fields.end());
    dates.insert(file.dates.begin(), file.dates.end());
    applied += file.applied;
    not_mapped += file.not_mapped;
  }
};

using Files = std::vector<const QDXFileImport*>;

Text ImportedText(const Files& files) {
  Sum sum;
  for (const QDXFileImport* file : files) sum.Add(*file);
  return "Imported " + Counted(static_cast<long long>(files.size()), "file") + ": " + ToldOf(sum) + ".";
}

// An import that only zeroes reads nothing of the file.
bool OnlyZeroed(const QDXFileImport& file) {
  return file.body_end == BodyEnd::kUnread;
}

Text ImportedText(const QDXFileImport& file) {
  const Text name = OnOneLine(file.file);
  if (OnlyZeroed(file)) return "Zeroed the range of " + name + ": " + Counted(file.zeroed, "figure") + ".";
  return "Imported " + name + ": " + ToldOf(file) + ".";
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

void AddFiles(const QDXDefinitionImport& definition, Files& files, std::vector<ImportNote>& notes) {
  for (const QDXFileImport& file : definition.files) {
    if (!file.stored) continue;
    files.push_back(&file);
    notes.push_back({.text = ImportedText(file)});
    AddEndOfBody(file, notes);
    if (!file.stays) continue;
    notes.push_back({.text = StaysText(file.file, *file.stays), .warning = true});
  }
}

bool HasStored(const QDXDefinitionImport& definition) {
  return std::ranges::any_of(definition.files, &QDXFileImport::stored);
}

// Names under what became of them, "; not imported: b.QDX, c.QDX".
class Outcomes {
 public:
  void Add(const Text& outcome, const Text& name) {
    const auto found = std::ranges::find(lists_, outcome, &List::outcome);
    List& list = found == lists_.end() ? lists_.emplace_back(List{.outcome = outcome}) : *found;
    list.names += (list.names.empty() ? "" : ", ") + name;
    ++count_;
  }
  [[nodiscard]] bool AreSeveral() const { return lists_.size() > 1; }
  [[nodiscard]] Text Told() const {
    Text text = "of " + Counted(count_, "file");
    for (const List& list : lists_) text += (&list == &lists_.front() ? ", " : "; ") + list.outcome + ": " + list.names;
    return text;
  }

 private:
  struct List {
    Text outcome = {};
    Text names = {};
  };
  std::vector<List> lists_;
  long long count_ = 0;
};

Text OutcomeOf(const QDXFileImport& file) {
  if (file.stored) return "imported";
  return file.begun ? "ended half way" : "not imported";
}

// Where a run has imported some files and others not: what became of each.
void AddOutcomes(const QDXImportRecord& record, std::vector<ImportNote>& notes) {
  Outcomes outcomes;
  for (const QDXDefinitionImport& definition : record.definitions) {
    const Text title = record.definitions.size() > 1 ? " (" + OnOneLine(definition.title) + ")" : "";
    for (const QDXFileImport& file : definition.files) outcomes.Add(OutcomeOf(file), OnOneLine(file.file) + title);
    for (const Text& file : definition.not_begun) outcomes.Add("not looked at", OnOneLine(file) + title);
  }
  const bool some_are_stored = std::ranges::any_of(record.definitions, HasStored);
  if (some_are_stored && outcomes.AreSeveral()) notes.push_back({.text = outcomes.Told(), .warning = true});
}

bool HasNoFile(const QDXDefinitionImport& definition) {
  return definition.files.empty() && !definition.stop;
}

bool IsWholeStored(const QDXDefinitionImport& definition) {
  return HasNoFile(definition) || (!definition.files.empty() && definition.not_begun.empty() &&
                                   std::ranges::all_of(definition.files, &QDXFileImport::stored));
}

// The delimited import tells the dates of its lines, and several of them may share a record.
std::size_t RecordDates(Masterfile& masterfile, const std::set<Date>& dates) {
  std::set<Date> level_dates;
  for (const Date date : dates) {
    level_dates.insert(masterfile.FiscalCalendar().LevelDate(date, masterfile.DataLevel()));
  }
  return level_dates.size();
}

}  // namespace

std::vector<ImportNote> NotesOf(const QDXImportRecord& record) {
  std::vector<ImportNote> notes;
  Files files;
  for (const QDXDefinitionImport& definition : record.definitions) {
    AddFiles(definition, files, notes);
    if (!HasNoFile(definition)) continue;
    notes.push_back({.text = "no file for the definition \"" + OnOneLine(definition.title) + "\": none matches " +
                             OnOneLine(definition.pattern),
                     .warning = true,
                     .no_file = true});
  }
  AddOutcomes(record, notes);
  if (files.size() > 1) notes.push_back({.text = ImportedText(files)});
  return notes;
}

Text StaysText(const Text& file, const StopReason& why) {
  return OnOneLine(file) + " keeps its name, and can be imported once more: " + OnOneLine(why.words);
}

Text AppliedText(const Text& file, const TextImportTally& tally, Masterfile& masterfile) {
  return "Imported " + OnOneLine(file) + ": " + Counted(tally.records, "record") + ", " +
         Counted(static_cast<long long>(tally.accounts.size()), "account") + ", " +
         Counted(static_cast<long long>(tally.fields.size()), "field") + ", " +
         Counted(static_cast<long long>(RecordDates(masterfile, tally.dates)), "date") + ".";
}

bool IsStored(const QDXImportRecord& record, std::size_t definitions) {
  return record.definitions.size() == definitions && std::ranges::all_of(record.definitions, IsWholeStored) &&
         std::ranges::any_of(record.definitions, HasStored);
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
