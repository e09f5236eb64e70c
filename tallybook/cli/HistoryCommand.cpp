#include <fmt/format.h>
#include <map>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>

#include "base/Dates.h"
#include "host/FiscalCalendar.h"
#include "tallybook/application/EntryWords.h"
#include "tallybook/cli/BookLookUp.h"
#include "tallybook/cli/Commands.h"
#include "tallybook/cli/FigurePrinter.h"
#include "tallybook/cli/Lines.h"
#include "tallybook/cli/PrintForm.h"
#include "tallybook/cli/Session.h"
#include "tallybook/cli/TextTable.h"
#include "tallybook/engine/JournalNotes.h"
#include "tallybook/engine/Lineage.h"

namespace tallybook::cli {

namespace {

struct HistoryOptions {
  Text book;
  Text code;
  Date date = kNoDate;
  Integer field = 0;
  PrintForm form = PrintForm::kTable;
};

// The figure, and what the entries of its history tell besides.
struct ToldHistory {
  Long account = 0;
  Text code;
  Date date = kNoDate;
  Integer field = 0;
  engine::FigureHistory history;
  std::map<Long, Text> users;
  std::vector<std::vector<engine::EntryFile>> files;  // of each change
};

Text JoinedPaths(const std::vector<engine::EntryFile>& files) {
  Text paths;
  for (const engine::EntryFile& file : files) paths += (paths.empty() ? "" : "; ") + file.path;
  return paths;
}

Text ValueText(const std::optional<Double>& value, const Text& otherwise) {
  return value ? ShortestText(*value) : otherwise;
}

void PrintTable(const ToldHistory& told) {
  const engine::FigureHistory& history = told.history;
  if (history.unknown_before != 0) {
    PrintLine(fmt::format("Nothing is known of what stood before entry {}, which keeps no figures from before.",
                          history.unknown_before));
  }
  if (!history.changes.empty()) {
    TextTable table({{"ID", Align::kRight},
                     {"Time"},
                     {"State"},
                     {"What ran"},
                     {"File"},
                     {"Before", Align::kRight},
                     {"After", Align::kRight}});
    for (std::size_t index = 0; index < history.changes.size(); ++index) {
      const auto& [entry, before, after] = history.changes[index];
      table.AddRow({std::to_string(entry.id), DateTimeText(entry.time), application::StateText(entry),
                    application::WhatRan(entry), JoinedPaths(told.files[index]), ValueText(before, "?"),
                    ShortestText(after)});
    }
    table.Print();
  }
  const Text stands =
      fmt::format("{} {} field {}: {}", told.code, DateText(told.date), told.field, ShortestText(history.value));
  const bool untouched = history.changes.empty() && history.unknown_before == 0;
  PrintLine(stands + (untouched ? ", which no entry of the journal has changed" : ""));
}

void PrintCsv(const ToldHistory& told) {
  PrintAsItStands("entry,time,kind,state,what_ran,undoes,who,files,figure_before,figure_after\n");
  for (std::size_t index = 0; index < told.history.changes.size(); ++index) {
    const auto& [entry, before, after] = told.history.changes[index];
    const auto who = told.users.find(entry.command);
    PrintAsItStands(fmt::format("{},{},{},{},{},{},{},{},{},{}\n", entry.id, DateTimeText(entry.time),
                                application::KindText(entry.kind), application::StateText(entry),
                                CsvField(entry.what_ran), entry.undoes == 0 ? "" : std::to_string(entry.undoes),
                                CsvField(who == told.users.end() ? "" : who->second),
                                CsvField(JoinedPaths(told.files[index])), ValueText(before, ""), ShortestText(after)));
  }
}

void PrintJson(const ToldHistory& told) {
  const engine::FigureHistory& history = told.history;
  nlohmann::ordered_json json = {{"account", told.account},
                                 {"code", told.code},
                                 {"date", DateText(told.date)},
                                 {"field", told.field},
                                 {"value", history.value}};
  if (history.unknown_before != 0) json["unknown_before"] = history.unknown_before;
  json["history"] = nlohmann::ordered_json::array();
  for (std::size_t index = 0; index < history.changes.size(); ++index) {
    const auto& [entry, before, after] = history.changes[index];
    nlohmann::ordered_json& change = json["history"].emplace_back();
    change = {{"entry", entry.id},
              {"time", DateTimeText(entry.time)},
              {"kind", application::KindText(entry.kind)},
              {"state", application::StateText(entry)},
              {"what_ran", entry.what_ran}};
    if (entry.undoes != 0) change["undoes"] = entry.undoes;
    if (const auto who = told.users.find(entry.command); who != told.users.end() && !who->second.empty()) {
      change["who"] = who->second;
    }
    for (const engine::EntryFile& file : told.files[index]) change["files"].push_back(file.path);
    if (before) change["figure_before"] = *before;
    change["figure_after"] = after;
  }
  PrintAsItStands(JsonText(json));
}

ExitStatus RunHistory(const HistoryOptions& options) {
  Session session;
  const auto book = session.OpenToRead(options.book);
  const Long account = AccountNumberOf(*book, options.code);
  NeedField(*book, options.field);
  NeedDate(*book, options.date);
  const engine::JournalNotes notes(*book);
  ToldHistory told;
  told.account = account;
  told.code = options.code;
  told.date = book->FiscalCalendar().LevelDate(options.date, kOwnLevel);
  told.field = options.field;
  told.history = engine::Lineage(*book).Of(account, options.date, options.field);
  told.users = notes.Users();
  for (const engine::FigureChange& change : told.history.changes) told.files.push_back(notes.FilesOf(change.entry.id));
  switch (options.form) {
    case PrintForm::kTable:
      PrintTable(told);
      break;
    case PrintForm::kCsv:
      PrintCsv(told);
      break;
    case PrintForm::kJson:
      PrintJson(told);
      break;
  }
  return ExitStatus::kDone;
}

}  // namespace

CommandTable HistoryCommand() {
  const auto options = std::make_shared<HistoryOptions>();
  CommandTable command =
      MakeCommand("history", "List every entry of the journal that changed a figure, oldest first",
                  {"tallybook history north 100 2003-01-05 1", "tallybook history north 100 2003-01-05 1 --json"},
                  options, RunHistory);
  AddBook(command, options->book);
  AddText(command, "CODE", options->code, "", "The account's code").Required().As(ArgumentKind::kAccountCode);
  AddDate(command, "DATE", options->date, "A date of the record").Required();
  AddNumber(command, "FIELD", options->field, "", "The field's number").Required().As(ArgumentKind::kFieldNumber);
  AddForm(command, options->form);
  return command;
}

}  // namespace tallybook::cli
