#include "tallybook/cli/Growth.h"

#include <algorithm>
#include <fmt/format.h>
#include <nlohmann/json.hpp>
#include <optional>
#include <vector>

#include "base/Failure.h"
#include "tallybook/application/DefinitionFollow.h"
#include "tallybook/application/ListEdits.h"
#include "tallybook/cli/AfterCommit.h"
#include "tallybook/cli/Lines.h"
#include "tallybook/cli/TextTable.h"
#include "tallybook/engine/BookGrowth.h"

namespace tallybook::cli {

namespace {

using engine::AccountDescription;
using engine::BookDifference;
using engine::FieldDescription;
using engine::FiguresLost;
using engine::ListDifference;
using Json = nlohmann::ordered_json;

// All that is told of a change.
struct Growth {
  BookDifference difference;
  std::vector<FiguresLost> lost;
  std::vector<application::DefinitionUse> definitions;
  bool definitions_follow = false;
  std::vector<Text> beyond_exchange_files;  // that were not so before
};

Text NameOf(const AccountDescription& account) {
  return account.code;
}
Text NameOf(const FieldDescription& field) {
  return field.description;
}
const char* KindOf(const AccountDescription& /*account*/) {
  return "account";
}
const char* KindOf(const FieldDescription& /*field*/) {
  return "field";
}

long long FiguresOf(const Growth& growth, bool is_field, Long number) {
  const auto row = std::ranges::find_if(
      growth.lost, [&](const FiguresLost& lost) { return lost.is_field == is_field && lost.number == number; });
  return row == growth.lost.end() ? 0 : row->figures;
}

Text ChangeWords(const AccountDescription& before, const AccountDescription& after) {
  Text words;
  if (before.code != after.code) words = fmt::format("code {} becomes {}", before.code, after.code);
  if (before.description != after.description) {
    words += fmt::format("{}description \"{}\" becomes \"{}\"", words.empty() ? "" : ", ", before.description,
                         after.description);
  }
  return words;
}
Text ChangeWords(const FieldDescription& before, const FieldDescription& after) {
  Text words;
  if (before.description != after.description) {
    words = fmt::format("description \"{}\" becomes \"{}\"", before.description, after.description);
  }
  if (before.system != after.system) {
    words += fmt::format("{}{} kept by the book", words.empty() ? "" : ", ", after.system ? "now" : "no longer");
  }
  return words;
}

// The rows of one list.
template <typename Row>
void AddRows(const ListDifference<Row>& list, const Growth& growth, bool is_field, TextTable& table) {
  const auto add = [&](const char* change, const Row& row, const Text& what) {
    table.AddRow({change, KindOf(row), std::to_string(row.number), NameOf(row), what});
  };
  for (const auto& removed : list.removed) {
    const long long figures = FiguresOf(growth, is_field, removed.row.number);
    add("remove", removed.row, figures == 0 ? Text("no figures") : Counted(figures, "figure"));
  }
  for (const auto& changed : list.changed) {
    add("change", changed.before, ChangeWords(changed.before, changed.after));
  }
  for (const auto& moved : list.moved) {
    add("move", moved.row, fmt::format("position {} becomes {}", moved.from, moved.to));
  }
  for (const auto& added : list.added) add("add", added.row, fmt::format("at position {}", added.position));
}

void PrintTable(const Growth& growth) {
  if (growth.difference.IsEmpty()) {
    PrintLine("Nothing differs.");
    return;
  }
  TextTable table({{"Change"}, {"What"}, {"Number", Align::kRight}, {"Name"}, {""}});
  for (const auto& item : growth.difference.items) {
    table.AddRow({"change", "book", "", item.name, fmt::format("{} becomes {}", item.before, item.after)});
  }
  const bool is_field = true;
  AddRows(growth.difference.accounts, growth, !is_field, table);
  AddRows(growth.difference.fields, growth, is_field, table);
  table.Print();
}

Json RowJson(const AccountDescription& row) {
  return {{"account", row.number}, {"code", row.code}, {"description", row.description}};
}
Json RowJson(const FieldDescription& row) {
  return {{"field", row.number}, {"description", row.description}, {"system", row.system}};
}

template <typename Row>
Json ListJson(const ListDifference<Row>& list, const Growth& growth, bool is_field) {
  Json json = {
      {"removed", Json::array()}, {"changed", Json::array()}, {"moved", Json::array()}, {"added", Json::array()}};
  for (const auto& removed : list.removed) {
    Json row = RowJson(removed.row);
    row.update({{"position", removed.position}, {"figures", FiguresOf(growth, is_field, removed.row.number)}});
    json["removed"].push_back(row);
  }
  for (const auto& changed : list.changed) {
    json["changed"].push_back({{"old", RowJson(changed.before)}, {"new", RowJson(changed.after)}});
  }
  for (const auto& moved : list.moved) {
    Json row = RowJson(moved.row);
    row.update({{"old_position", moved.from}, {"position", moved.to}});
    json["moved"].push_back(row);
  }
  for (const auto& added : list.added) {
    Json row = RowJson(added.row);
    row.update({{"position", added.position}});
    json["added"].push_back(row);
  }
  return json;
}

void PrintJson(const Growth& growth, bool is_done) {
  Json json = {{"done", is_done}, {"book_changes", Json::array()}};
  for (const auto& item : growth.difference.items) {
    json["book_changes"].push_back({{"what", item.name}, {"old", item.before}, {"new", item.after}});
  }
  const bool is_field = true;
  json["account_changes"] = ListJson(growth.difference.accounts, growth, !is_field);
  json["field_changes"] = ListJson(growth.difference.fields, growth, is_field);
  json["definitions"] = Json::array();
  for (const application::DefinitionUse& use : growth.definitions) {
    json["definitions"].push_back({{"number", use.number},
                                   {"title", use.title},
                                   {"names", use.names},
                                   {"followed", growth.definitions_follow && use.can_follow && is_done}});
  }
  json["beyond_exchange_files"] = growth.beyond_exchange_files;
  PrintAsItStands(JsonText(json));
}

// What a user should see besides, on standard error.
void TellBesides(const Growth& growth, bool is_done) {
  for (const application::DefinitionUse& use : growth.definitions) {
    Text names;
    for (const Text& name : use.names) names += (names.empty() ? "" : ", ") + name;
    const Text title = fmt::format("exchange definition {} ({})", use.number, use.title);
    if (use.can_follow && growth.definitions_follow) {
      if (is_done) TellLine(fmt::format("{} follows: {}", title, names));
    } else {
      Warn(fmt::format("{} names what changes: {}{}", title, names,
                       use.can_follow ? "; --with-definitions writes the new code into it" : ""));
    }
  }
  for (const Text& trouble : growth.beyond_exchange_files) {
    Warn("the book cannot be exported as an exchange file any more: it has " + trouble);
  }
}

void NeedFiguresToGo(const engine::Book& book, const Growth& growth) {
  if (growth.lost.empty()) return;
  Text names;
  for (const FiguresLost& lost : growth.lost) {
    names += (names.empty() ? "" : ", ") +
             fmt::format("{} has {}", lost.is_field ? fmt::format("field {}", lost.number) : "account " + lost.name,
                         Counted(lost.figures, "figure"));
  }
  throw Failure(FailureNumber::kInvalidArgument,
                fmt::format("{}: {}; --with-figures removes {} together with them", book.Path(), names,
                            growth.lost.size() == 1 ? "it" : "all"));
}

Growth LookAtGrowth(Session& session, engine::Book& book, const engine::BookDescription& after,
                    const GrowthOptions& options) {
  CheckGrowth(book.Stored(), after, book.Path());
  Growth growth;
  growth.difference = FindDifference(book.Description(), after);
  growth.lost = book.LostBy(after);
  growth.definitions =
      application::DefinitionsNaming(session.Files(), book.DataPath(), book.FileExtension(), growth.difference);
  growth.definitions_follow = options.with_definitions;
  if (application::BeyondExchangeFiles(book.Description()).empty()) {
    growth.beyond_exchange_files = application::BeyondExchangeFiles(after);
  }
  return growth;
}

void Print(const Growth& growth, const GrowthOptions& options, bool is_done) {
  if (options.form == PrintForm::kJson) {
    PrintJson(growth, is_done);
  } else {
    PrintTable(growth);
  }
  TellBesides(growth, is_done);
}

}  // namespace

void AddBookToGrow(CommandTable& command, GrowthOptions& options) {
  AddBookToChange(command, options.book, options.wait);
}

void AddWithFigures(CommandTable& command, GrowthOptions& options) {
  AddFlag(command, "--with-figures", options.with_figures, "Remove what has figures together with them");
}

void AddWithDefinitions(CommandTable& command, GrowthOptions& options) {
  AddFlag(command, "--with-definitions", options.with_definitions,
          "Write a new code into the exchange definitions that name the old one");
}

void GrowBook(Session& session, engine::Book& book, const engine::BookDescription& after, const Text& what_ran,
              const GrowthOptions& options) {
  const Growth growth = LookAtGrowth(session, book, after, options);
  if (options.dry_run) {
    const bool is_done = false;
    Print(growth, options, is_done);
    return;
  }
  if (!options.with_figures) NeedFiguresToGo(book, growth);
  std::optional<application::FollowedDefinitions> followed;
  if (options.with_definitions) followed.emplace(session.Files(), growth.definitions, growth.difference);
  book.Grow(after, what_ran);
  if (followed) DoAfterCommit([&] { followed->Keep(); });
  const bool is_done = true;
  DoAfterCommit([&] { Print(growth, options, is_done); });
}

}  // namespace tallybook::cli
