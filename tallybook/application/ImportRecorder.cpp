#include "tallybook/application/ImportRecorder.h"

#include <algorithm>
#include <cstdint>
#include <map>
#include <utility>

#include "exchange/CDataExchange.h"
#include "tallybook/application/ImportBalance.h"
#include "tallybook/application/ImportSummary.h"
#include "tallybook/application/StopText.h"
#include "tallybook/engine/JournalNotes.h"

namespace tallybook::application {

struct ImportRecorder::Running {
  Running(Run begun, const Text& place) : run(std::move(begun)), reader(place), size(reader.Size()) {}

  Run run;
  FingerprintReader reader;
  std::optional<std::int64_t> size;
  std::optional<FileFingerprint> print;
  bool ended = false;
};

ImportRecorder::ImportRecorder(engine::Book& book)
    : book_(book), entries_before_(static_cast<Long>(engine::Journal(book).Entries().size())) {}

ImportRecorder::~ImportRecorder() = default;

void ImportRecorder::BeginFile(const Text& path, const Text& place, const EntryFacts& facts) {
  EndFile();
  const Long before = std::max(entries_before_, book_.LastEntry());
  files_.push_back(std::make_unique<Running>(Run{path, facts, before, before}, place));
  const engine::EntryFile file = {.path = path, .size = files_.back()->size, .xxh3 = {}, .sha256 = {}};
  book_.SetNotes({.files = {file}, .facts = TextOfFacts(facts)});
}

void ImportRecorder::EndFile() {
  if (files_.empty() || files_.back()->ended) return;
  Running& running = *files_.back();
  running.ended = true;
  running.run.last = std::max(entries_before_, book_.LastEntry());
  running.print = running.reader.Take();
}

std::vector<ImportRecorder::Run*> ImportRecorder::Runs() {
  EndFile();
  std::vector<Run*> runs;
  runs.reserve(files_.size());
  for (const auto& file : files_) runs.push_back(&file->run);
  return runs;
}

void ImportRecorder::Save() {
  EndFile();
  std::map<Long, engine::EntryNotes> notes;
  for (const auto& file : files_) {
    engine::EntryFile kept = {.path = file->run.path, .size = file->size, .xxh3 = {}, .sha256 = {}};
    if (file->print) {
      kept.size = file->print->size;
      kept.xxh3 = file->print->xxh3;
      kept.sha256 = file->print->sha256;
    }
    for (Long entry = file->run.before + 1; entry <= file->run.last; ++entry) {
      notes[entry] = {.files = {kept}, .facts = TextOfFacts(file->run.facts)};
    }
  }
  engine::JournalNotes(book_).Save(notes);
}

void AddOutcome(EntryFacts& facts, const QDXFileImport& file, const std::optional<StopReason>& stop) {
  facts.counts.applied = file.applied;
  facts.counts.not_mapped = file.not_mapped;
  facts.counts.zeroed = file.zeroed;
  facts.counts.refused = file.refused;
  facts.counts.read = file.read;
  facts.counts.accounts = static_cast<long long>(file.accounts.size());
  facts.counts.fields = static_cast<long long>(file.fields.size());
  facts.counts.dates = static_cast<long long>(file.dates.size());
  facts.result = file.stored ? "imported" : "not imported";
  if (stop && !file.done) facts.result += (file.stored ? ", but " : ": ") + StopText(*stop);
  QDXImportRecord alone;
  alone.definitions.push_back({.title = facts.title, .files = {file}});
  for (const ImportNote& note : NotesOf(alone)) {
    if (note.warning) facts.warnings.push_back(note.text);
  }
}

void AddOutcomes(ImportRecorder& recorder, const QDXImportRecord& record) {
  const auto runs = recorder.Runs();
  auto run = runs.begin();
  for (const QDXDefinitionImport& import : record.definitions) {
    for (const QDXFileImport& file : import.files) {
      if (run == runs.end() || (*run)->path != file.file) continue;
      const bool is_last = &file == &import.files.back();
      AddOutcome((*run)->facts, file, is_last ? import.stop : std::nullopt);
      ++run;
    }
  }
}

void AddOutcome(EntryFacts& facts, const TextImportTally& tally, bool imported) {
  if (facts.math != MathWord(tally.math)) facts.told_math = MathWord(tally.math);
  facts.counts.records = tally.records;
  facts.counts.read = FiguresRead(tally);
  facts.counts.applied = tally.applied;
  facts.counts.not_mapped = 0;
  facts.counts.refused = FiguresRead(tally) - tally.applied;
  facts.counts.accounts = static_cast<long long>(tally.accounts.size());
  facts.counts.fields = static_cast<long long>(tally.fields.size());
  facts.counts.dates = static_cast<long long>(tally.dates.size());
  const bool stored = imported || tally.stored;
  facts.result = stored ? "imported" : "not imported";
  if (tally.stop) facts.result += (stored ? ", but " : ": ") + StopText(*tally.stop);
  if (const Text grown = GrownText(tally); !grown.empty()) facts.warnings.push_back(grown);
  if (tally.stays) facts.warnings.push_back("the file keeps its name: " + StopText(*tally.stays));
}

Text MathWord(Integer math) {
  switch (math) {
    case static_cast<Integer>(eMath::mAdd):
      return "add";
    case static_cast<Integer>(eMath::mSubtract):
      return "subtract";
    case static_cast<Integer>(eMath::mReplace):
      return "replace";
    case kZeroOnly:
      return "zero";
    default:
      return "";
  }
}

}  // namespace tallybook::application
