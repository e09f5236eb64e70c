#include "tallybook/cli/EntryPrinter.h"

#include <fmt/format.h>
#include <nlohmann/json.hpp>
#include <string>

#include "base/Dates.h"
#include "tallybook/application/EntryDates.h"
#include "tallybook/application/EntryFacts.h"
#include "tallybook/application/EntryItems.h"
#include "tallybook/application/EntryWords.h"
#include "tallybook/application/FileDisposals.h"
#include "tallybook/application/FileFingerprint.h"
#include "tallybook/cli/Lines.h"
#include "tallybook/cli/TextTable.h"

namespace tallybook::cli {

namespace {

using application::EntryFacts;
using application::FactsOf;
using application::HexText;
using application::KindText;
using application::StateText;
using application::WhatRan;

nlohmann::ordered_json JsonOf(const engine::EntryFile& file) {
  nlohmann::ordered_json json = {{"file", file.path}};
  if (file.size) json["size"] = *file.size;
  if (!file.xxh3.empty()) json["xxh3"] = HexText(file.xxh3);
  if (!file.sha256.empty()) json["sha256"] = HexText(file.sha256);
  return json;
}

nlohmann::ordered_json JsonOf(const application::FileDisposal& disposal) {
  const bool is_rename = !disposal.new_path.empty();
  nlohmann::ordered_json json = {{"file", disposal.path}, {"then", is_rename ? "renamed" : "deleted"}};
  if (is_rename) json["new_file"] = disposal.new_path;
  return json;
}

void AddFacts(const EntryFacts& facts, nlohmann::ordered_json& json) {
  if (facts.definition != 0) json["definition"] = facts.definition;
  if (!facts.title.empty()) json["title"] = facts.title;
  if (!facts.math.empty()) json["math"] = facts.math;
  if (!facts.told_math.empty()) json["told_math"] = facts.told_math;
  if (!facts.options.empty()) json["options"] = facts.options;
  nlohmann::ordered_json counts = nlohmann::ordered_json::object();
  for (const auto& [name, member] : application::NamedCounts()) {
    if (facts.counts.*member) counts[name] = *(facts.counts.*member);
  }
  if (!counts.empty()) json["counts"] = counts;
  if (!facts.result.empty()) json["result"] = facts.result;
  if (!facts.warnings.empty()) json["warnings"] = facts.warnings;
}

// Members that an entry has no value for are left out.
nlohmann::ordered_json JsonOf(const engine::NotedEntry& noted) {
  const engine::JournalEntry& entry = noted.entry;
  const application::EntryDates dates = application::EntryDatesOf(entry);
  nlohmann::ordered_json json = {{"entry", entry.id},
                                 {"command", entry.command},
                                 {"kind", KindText(entry.kind)},
                                 {"time", DateTimeText(entry.time)}};
  if (entry.first != kNoDate) json.update({{"first", dates.first}, {"last", dates.last}});
  json.update({{"state", StateText(entry)}, {"what_ran", entry.what_ran}});
  if (entry.undoes != 0) json["undoes"] = entry.undoes;
  if (!noted.who.empty()) json["who"] = noted.who;
  for (const engine::EntryFile& file : noted.notes.files) json["read_files"].push_back(JsonOf(file));
  AddFacts(FactsOf(noted.notes.facts), json);
  for (const application::FileDisposal& disposal : application::DisposalsOf(noted.due)) {
    json["due"].push_back(JsonOf(disposal));
  }
  return json;
}

Text Joined(const std::vector<Text>& texts) {
  Text joined;
  for (const Text& text : texts) joined += (joined.empty() ? "" : "; ") + text;
  return joined;
}

Text NumberOrNothing(long long number) {
  return number == 0 ? Text() : std::to_string(number);
}

Text CsvHeading() {
  Text line = "entry,command,kind,time,first,last,state,what_ran,undoes,who,files,definition,math,options";
  for (const auto& [name, member] : application::NamedCounts()) line += Text(",") + name;
  return line + ",result,warnings\n";
}

Text CsvLine(const engine::NotedEntry& noted) {
  const engine::JournalEntry& entry = noted.entry;
  const EntryFacts facts = FactsOf(noted.notes.facts);
  const bool dated = entry.first != kNoDate;
  const application::EntryDates dates = application::EntryDatesOf(entry);
  Text line = fmt::format("{},{},{},{},{},{},{},{},{},{},{},{},{},{}", entry.id, entry.command, KindText(entry.kind),
                          DateTimeText(entry.time), dated ? dates.first : "", dated ? dates.last : "", StateText(entry),
                          CsvField(entry.what_ran), NumberOrNothing(entry.undoes), CsvField(noted.who),
                          CsvField(application::PathsOf(noted.notes.files)), NumberOrNothing(facts.definition),
                          CsvField(facts.math), CsvField(facts.options));
  for (const auto& [name, member] : application::NamedCounts()) {
    line += "," + (facts.counts.*member ? std::to_string(*(facts.counts.*member)) : Text());
  }
  return line + fmt::format(",{},{}\n", CsvField(facts.result), CsvField(Joined(facts.warnings)));
}

void PrintTable(const std::vector<engine::NotedEntry>& entries) {
  if (entries.empty()) {
    PrintLine("The journal is empty.");
    return;
  }
  TextTable table({{"ID", Align::kRight}, {"Time"}, {"From"}, {"To"}, {"State"}, {"What ran"}});
  for (const auto& [entry, who, notes, due] : entries) {
    const application::EntryDates dates = application::EntryDatesOf(entry);
    table.AddRow({std::to_string(entry.id), DateTimeText(entry.time), dates.first, dates.last, StateText(entry),
                  WhatRan(entry)});
  }
  table.Print();
}

void PrintItems(const engine::NotedEntry& noted) {
  PrintHeading(application::EntryHeading(noted));
  for (const auto& [name, value] : application::ItemsOf(noted)) PrintLine(fmt::format("  {:<11}{}", name, value));
}

void PrintCsv(const std::vector<engine::NotedEntry>& entries) {
  PrintAsItStands(CsvHeading());
  for (const engine::NotedEntry& entry : entries) PrintAsItStands(CsvLine(entry));
}

}  // namespace

void PrintEntries(const std::vector<engine::NotedEntry>& entries, PrintForm form) {
  switch (form) {
    case PrintForm::kTable:
      return PrintTable(entries);
    case PrintForm::kCsv:
      return PrintCsv(entries);
    case PrintForm::kJson:
      nlohmann::ordered_json json = nlohmann::ordered_json::array();
      for (const engine::NotedEntry& entry : entries) json.push_back(JsonOf(entry));
      return PrintAsItStands(JsonText(json));
  }
}

void PrintEntry(const engine::NotedEntry& entry, PrintForm form) {
  switch (form) {
    case PrintForm::kTable:
      return PrintItems(entry);
    case PrintForm::kCsv:
      return PrintCsv({entry});
    case PrintForm::kJson:
      return PrintAsItStands(JsonText(JsonOf(entry)));
  }
}

}  // namespace tallybook::cli
