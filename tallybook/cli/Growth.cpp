#include "tallybook/cli/Growth.h"

#include <algorithm>
#include <fmt/format.h>
#include <map>
#include <nlohmann/json.hpp>

#include "base/Dates.h"
#include "base/Failure.h"
#include "tallybook/application/ListEdits.h"
#include "tallybook/cli/AfterCommit.h"
#include "tallybook/cli/Lines.h"
#include "tallybook/cli/TextTable.h"
#include "tallybook/engine/Calendar.h"

namespace tallybook::cli {

namespace {

using engine::AccountDescription;
using engine::BookDifference;
using engine::FieldDescription;
using engine::FiguresLost;
using engine::ListDifference;
using Json = nlohmann::ordered_json;

// The figures of an account that are set.
struct FiguresSet {
  AccountDescription account;
  long long figures = 0;
  Date first = kNoDate;  // of their records
  Date last = kNoDate;
};

// All that is told of a change.
struct Growth {
  BookDifference difference;
  std::vector<FiguresLost> lost;
  std::vector<FiguresSet> set;
  std::vector<Text> beyond_exchange_files;  // that were not so before
  [[nodiscard]] bool IsEmpty() const { return difference.IsEmpty() && set.empty(); }
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
  if (growth.IsEmpty()) {
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
  for (const FiguresSet& set : growth.set) {
    table.AddRow(
        {"set", "account", std::to_string(set.account.number), set.account.code,
         fmt::format("{}, {} to {}", Counted(set.figures, "figure"), DateText(set.first), DateText(set.last))});
  }
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

void PrintJson(const Growth& growth, const NamedDefinitions& definitions, bool is_done) {
  Json json = {{"done", is_done}, {"book_changes", Json::array()}};
  for (const auto& item : growth.difference.items) {
    json["book_changes"].push_back({{"what", item.name}, {"old", item.before}, {"new", item.after}});
  }
  const bool is_field = true;
  json["account_changes"] = ListJson(growth.difference.accounts, growth, !is_field);
  json["field_changes"] = ListJson(growth.difference.fields, growth, is_field);
  json["figure_changes"] = Json::array();
  for (const FiguresSet& set : growth.set) {
    json["figure_changes"].push_back({{"account", set.account.number},
                                      {"code", set.account.code},
                                      {"figures", set.figures},
                                      {"first", DateText(set.first)},
                                      {"last", DateText(set.last)}});
  }
  json["definitions"] = Json::array();
  for (const application::DefinitionUse& use : definitions.Uses()) {
    json["definitions"].push_back({{"number", use.number},
                                   {"title", use.title},
                                   {"names", use.names},
                                   {"followed", definitions.Follows(use) && is_done}});
  }
  json["beyond_exchange_files"] = growth.beyond_exchange_files;
  PrintAsItStands(JsonText(json));
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

// By account, in the order of the list that is to be.
std::vector<FiguresSet> FiguresSetBy(const std::vector<engine::ValueDescription>& values,
                                     const engine::BookDescription& after) {
  const engine::Calendar calendar(after.calendar, after.data_level);
  std::map<Long, FiguresSet> by_account;
  for (const engine::ValueDescription& value : values) {
    FiguresSet& set = by_account[value.account];
    const Date record = calendar.UnitOf(value.date, kOwnLevel).last;
    set.first = set.figures == 0 ? record : std::min(set.first, record);
    set.last = set.figures == 0 ? record : std::max(set.last, record);
    ++set.figures;
  }
  std::vector<FiguresSet> sets;
  for (const AccountDescription& account : after.accounts) {
    const auto found = by_account.find(account.number);
    if (found == by_account.end()) continue;
    sets.push_back(found->second);
    sets.back().account = account;
  }
  return sets;
}

// Of what cannot change: whether a new book made from this one can have it.
bool NeedsNewBook(const engine::BookDescription& before, const engine::BookDescription& after) {
  return before.data_level != after.data_level || before.calendar.kind != after.calendar.kind ||
         before.calendar.first_date != after.calendar.first_date ||
         before.calendar.first_year != after.calendar.first_year || before.calendar.years > after.calendar.years;
}

void NeedGrowth(const engine::Book& book, const engine::BookDescription& after, const Text& source) {
  try {
    CheckGrowth(book.Stored(), after, source);
  } catch (const Failure& failure) {
    if (!NeedsNewBook(book.Description(), after)) throw;
    throw Failure(failure.Number(),
                  fmt::format("{}: tallybook new NEW --from-book {}", failure.Description(), book.Path()));
  }
}

Growth LookAtGrowth(engine::Book& book, const engine::BookDescription& after, const GrowthOptions& options) {
  NeedGrowth(book, after, options.source.empty() ? book.Path() : options.source);
  Growth growth;
  growth.difference = FindDifference(book.Description(), after);
  growth.lost = book.LostBy(after);
  growth.set = FiguresSetBy(book.ChangedValues(after), after);
  if (application::BeyondExchangeFiles(book.Description()).empty()) {
    growth.beyond_exchange_files = application::BeyondExchangeFiles(after);
  }
  return growth;
}

// What a user should see besides, on standard error.
void TellBesides(const Growth& growth, const NamedDefinitions& definitions, bool is_done) {
  definitions.Tell(is_done);
  for (const Text& trouble : growth.beyond_exchange_files) {
    Warn("the book cannot be exported as an exchange file any more: it has " + trouble);
  }
}

void Print(const Growth& growth, const NamedDefinitions& definitions, const GrowthOptions& options, bool is_done) {
  if (options.form == PrintForm::kJson) {
    PrintJson(growth, definitions, is_done);
  } else if (!is_done || !options.show_first) {
    PrintTable(growth);
  }
  TellBesides(growth, definitions, is_done);
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

NamedDefinitions::NamedDefinitions(Session& session, const engine::Book& book, const BookDifference& difference,
                                   bool follow, bool dry_run)
    : uses_(application::DefinitionsNaming(session.Files(), book.DataPath(), book.FileExtension(), difference)),
      follow_(follow) {
  if (follow_ && !dry_run) followed_.emplace(session.Files(), uses_, difference);
}

void NamedDefinitions::Keep() {
  if (followed_) DoAfterCommit([this] { followed_->Keep(); });
}

void NamedDefinitions::Tell(bool is_done) const {
  for (const application::DefinitionUse& use : uses_) {
    Text names;
    for (const Text& name : use.names) names += (names.empty() ? "" : ", ") + name;
    const Text title = fmt::format("exchange definition {} ({})", use.number, use.title);
    if (Follows(use)) {
      TellLine(fmt::format("{} {}: {}", title, is_done ? "follows" : "would follow", names));
    } else {
      Warn(fmt::format("{} names what changes: {}{}", title, names,
                       use.can_follow ? "; --with-definitions writes the new code into it" : ""));
    }
  }
}

void GrowBook(Session& session, engine::Book& book, const engine::BookDescription& after, const Text& what_ran,
              const GrowthOptions& options) {
  const Growth growth = LookAtGrowth(book, after, options);
  NamedDefinitions definitions(session, book, growth.difference, options.with_definitions, options.dry_run);
  const bool is_done = true;
  if (options.dry_run) return Print(growth, definitions, options, !is_done);
  if (options.show_first && options.form == PrintForm::kTable) PrintTable(growth);
  if (!options.with_figures) NeedFiguresToGo(book, growth);
  book.Grow(after, what_ran);
  definitions.Keep();
  DoAfterCommit([&] { Print(growth, definitions, options, is_done); });
}

}  // namespace tallybook::cli
