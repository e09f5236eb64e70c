#include <fmt/format.h>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "base/Dates.h"
#include "tallybook/application/EntryDates.h"
#include "tallybook/application/EntryWords.h"
#include "tallybook/cli/Commands.h"
#include "tallybook/cli/Lines.h"
#include "tallybook/cli/PrintForm.h"
#include "tallybook/cli/Session.h"
#include "tallybook/cli/TextTable.h"
#include "tallybook/engine/Journal.h"

namespace tallybook::cli {

namespace {

using application::KindText;
using application::StateText;
using application::WhatRan;

struct JournalListOptions {
  Text book;
  PrintForm form = PrintForm::kTable;
};

// Members that an entry has no value for are left out.
nlohmann::ordered_json JsonOf(const engine::JournalEntry& entry) {
  const application::EntryDates dates = application::EntryDatesOf(entry);
  nlohmann::ordered_json json = {{"entry", entry.id},
                                 {"command", entry.command},
                                 {"kind", KindText(entry.kind)},
                                 {"time", DateTimeText(entry.time)}};
  if (entry.first != kNoDate) json.update({{"first", dates.first}, {"last", dates.last}});
  json.update({{"state", StateText(entry)}, {"what_ran", entry.what_ran}});
  if (entry.undoes != 0) json["undoes"] = entry.undoes;
  return json;
}

void PrintJson(const std::vector<engine::JournalEntry>& entries) {
  nlohmann::ordered_json json = nlohmann::ordered_json::array();
  for (const engine::JournalEntry& entry : entries) json.push_back(JsonOf(entry));
  PrintAsItStands(JsonText(json));
}

void PrintCsv(const std::vector<engine::JournalEntry>& entries) {
  PrintAsItStands("entry,command,kind,time,first,last,state,what_ran,undoes\n");
  for (const engine::JournalEntry& entry : entries) {
    const bool dated = entry.first != kNoDate;
    const application::EntryDates dates = application::EntryDatesOf(entry);
    PrintAsItStands(fmt::format("{},{},{},{},{},{},{},{},{}\n", entry.id, entry.command, KindText(entry.kind),
                                DateTimeText(entry.time), dated ? dates.first : "", dated ? dates.last : "",
                                StateText(entry), CsvField(entry.what_ran),
                                entry.undoes == 0 ? "" : std::to_string(entry.undoes)));
  }
}

void PrintTable(const std::vector<engine::JournalEntry>& entries) {
  if (entries.empty()) {
    PrintLine("The journal is empty.");
    return;
  }
  TextTable table({{"ID", Align::kRight}, {"Time"}, {"From"}, {"To"}, {"State"}, {"What ran"}});
  for (const engine::JournalEntry& entry : entries) {
    const application::EntryDates dates = application::EntryDatesOf(entry);
    table.AddRow({std::to_string(entry.id), DateTimeText(entry.time), dates.first, dates.last, StateText(entry),
                  WhatRan(entry)});
  }
  table.Print();
}

ExitStatus RunList(const JournalListOptions& options) {
  Session session;
  const auto book = session.OpenToRead(options.book);
  const auto entries = engine::Journal(*book).Entries();
  switch (options.form) {
    case PrintForm::kTable:
      PrintTable(entries);
      break;
    case PrintForm::kCsv:
      PrintCsv(entries);
      break;
    case PrintForm::kJson:
      PrintJson(entries);
      break;
  }
  return ExitStatus::kDone;
}

}  // namespace

CommandTable JournalListCommand() {
  const auto options = std::make_shared<JournalListOptions>();
  CommandTable command =
      MakeCommand("list", "List what changed figures, oldest first",
                  {"tallybook journal list office", "tallybook journal list office --json"}, options, RunList);
  AddBook(command, options->book);
  AddForm(command, options->form);
  return command;
}

}  // namespace tallybook::cli
