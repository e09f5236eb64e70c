#include <fmt/format.h>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>

#include "base/Dates.h"
#include "tallybook/application/EntryItems.h"
#include "tallybook/application/EntryWords.h"
#include "tallybook/application/FigureOrigin.h"
#include "tallybook/cli/BookLookUp.h"
#include "tallybook/cli/Commands.h"
#include "tallybook/cli/FigurePrinter.h"
#include "tallybook/cli/Lines.h"
#include "tallybook/cli/PrintForm.h"
#include "tallybook/cli/Session.h"
#include "tallybook/cli/TextTable.h"

namespace tallybook::cli {

namespace {

struct HistoryOptions {
  Text book;
  Text code;
  Date date = kNoDate;
  Integer field = 0;
  PrintForm form = PrintForm::kTable;
};

using application::FigureOrigin;
using application::PathsOf;

Text ValueText(const std::optional<Double>& value, const Text& otherwise) {
  return value ? ShortestText(*value) : otherwise;
}

void PrintTable(const FigureOrigin& told) {
  const engine::FigureHistory& history = told.history;
  if (history.unknown_before != 0) PrintLine(application::UnknownBeforeWords(history));
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
                    application::WhatRan(entry), PathsOf(told.files[index]), ValueText(before, "?"),
                    ShortestText(after)});
    }
    table.Print();
  }
  const Text stands =
      fmt::format("{} {} field {}: {}", told.code, DateText(told.date), told.field, ShortestText(history.value));
  const bool untouched = history.changes.empty() && history.unknown_before == 0;
  PrintLine(stands + (untouched ? ", which no entry of the journal has changed" : ""));
}

void PrintCsv(const FigureOrigin& told) {
  PrintAsItStands("entry,time,kind,state,what_ran,undoes,who,files,figure_before,figure_after\n");
  for (std::size_t index = 0; index < told.history.changes.size(); ++index) {
    const auto& [entry, before, after] = told.history.changes[index];
    PrintAsItStands(fmt::format("{},{},{},{},{},{},{},{},{},{}\n", entry.id, DateTimeText(entry.time),
                                application::KindText(entry.kind), application::StateText(entry),
                                CsvField(entry.what_ran), entry.undoes == 0 ? "" : std::to_string(entry.undoes),
                                CsvField(told.WhoRan(told.history.changes[index])),
                                CsvField(PathsOf(told.files[index])), ValueText(before, ""), ShortestText(after)));
  }
}

void PrintJson(const FigureOrigin& told) {
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
    if (const Text who = told.WhoRan(history.changes[index]); !who.empty()) change["who"] = who;
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
  const FigureOrigin told = application::OriginOf(*book, account, options.date, options.field);
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
