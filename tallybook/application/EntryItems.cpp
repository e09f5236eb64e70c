#include "tallybook/application/EntryItems.h"

#include <fmt/format.h>

#include "base/Dates.h"
#include "tallybook/application/Counts.h"
#include "tallybook/application/EntryDates.h"
#include "tallybook/application/EntryFacts.h"
#include "tallybook/application/EntryWords.h"
#include "tallybook/application/FileDisposals.h"
#include "tallybook/application/FileFingerprint.h"

namespace tallybook::application {

namespace {

// "12 read: 10 applied, 2 not mapped"; empty where an import of that kind counts no figures.
Text FiguresText(const EntryFacts::Counts& counts) {
  if (!counts.read) return "";
  Text text = fmt::format("{} read: {} applied", WithCommas(*counts.read), WithCommas(counts.applied.value_or(0)));
  if (counts.not_mapped.value_or(0) != 0) text += fmt::format(", {} not mapped", WithCommas(*counts.not_mapped));
  if (counts.refused.value_or(0) != 0) text += fmt::format(", {} refused", WithCommas(*counts.refused));
  if (counts.zeroed.value_or(0) != 0) text += fmt::format("; {} zeroed before", WithCommas(*counts.zeroed));
  return text;
}

Text ReachText(const EntryFacts::Counts& counts) {
  if (!counts.accounts) return "";
  Text text = counts.records ? Counted(*counts.records, "record") + ", " : Text();
  text += Counted(*counts.accounts, "account") + ", " + Counted(counts.fields.value_or(0), "field");
  return text + ", " + Counted(counts.dates.value_or(0), "date");
}

Text DefinitionOf(const EntryFacts& facts) {
  if (facts.definition == 0) return "";
  return facts.title.empty() ? std::to_string(facts.definition) : fmt::format("{}: {}", facts.definition, facts.title);
}

Text DatesText(const engine::JournalEntry& entry) {
  if (entry.first == kNoDate) return "";
  const EntryDates dates = EntryDatesOf(entry);
  return fmt::format("{} to {}", dates.first, dates.last);
}

Text StateInFull(const engine::JournalEntry& entry) {
  const bool open = entry.state == engine::JournalState::kOpen;
  return StateText(entry) + (open ? ": it failed or was cut off, and what it wrote stands" : "");
}

class Items {
 public:
  void Add(const Text& name, const Text& value) {
    if (!value.empty()) items_.push_back({name, value});
  }
  void AddFile(const engine::EntryFile& file) {
    Add("File", file.size ? fmt::format("{}, {}", file.path, Counted(*file.size, "byte")) : file.path);
    Add("  XXH3", HexText(file.xxh3));
    Add("  SHA-256", HexText(file.sha256));
  }
  [[nodiscard]] std::vector<EntryItem> Take() { return std::move(items_); }

 private:
  std::vector<EntryItem> items_;
};

}  // namespace

Text EntryHeading(const engine::NotedEntry& noted) {
  const Text what = WhatRan(noted.entry);
  return fmt::format("Journal entry {}{}", noted.entry.id, noted.entry.what_ran.empty() ? "" : ": " + what);
}

std::vector<EntryItem> ItemsOf(const engine::NotedEntry& noted) {
  const engine::JournalEntry& entry = noted.entry;
  const EntryFacts facts = FactsOf(noted.notes.facts);
  Items items;
  items.Add("Kind", KindText(entry.kind));
  items.Add("Command", std::to_string(entry.command));
  items.Add("Time", DateTimeText(entry.time));
  items.Add("Who", noted.who);
  items.Add("Dates", DatesText(entry));
  items.Add("State", StateInFull(entry));
  items.Add("Definition", DefinitionOf(facts));
  items.Add("Math", facts.told_math.empty() ? facts.math : facts.math + ": " + facts.told_math);
  items.Add("Options", facts.options);
  for (const engine::EntryFile& file : noted.notes.files) items.AddFile(file);
  items.Add("Figures", FiguresText(facts.counts));
  items.Add("Reached", ReachText(facts.counts));
  items.Add("Result", facts.result);
  for (const Text& warning : facts.warnings) items.Add("Warning", warning);
  for (const FileDisposal& disposal : DisposalsOf(noted.due)) items.Add("Still due", DueText(disposal));
  return items.Take();
}

Text PathsOf(const std::vector<engine::EntryFile>& files) {
  Text paths;
  for (const engine::EntryFile& file : files) paths += (paths.empty() ? "" : "; ") + file.path;
  return paths;
}

}  // namespace tallybook::application
