#include "tallybook/cli/Growth.h"

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include "base/Dates.h"
#include "base/Failure.h"
#include "tallybook/application/GrowthPlan.h"
#include "tallybook/cli/AfterCommit.h"
#include "tallybook/cli/Lines.h"
#include "tallybook/cli/TextTable.h"

namespace tallybook::cli {

namespace {

using application::GrowthPlan;
using application::GrowthRow;
using engine::AccountDescription;
using engine::BookDifference;
using engine::FieldDescription;
using engine::ListDifference;
using Json = nlohmann::ordered_json;

void PrintTable(const GrowthPlan& plan) {
  if (plan.IsEmpty()) {
    PrintLine("Nothing differs.");
    return;
  }
  TextTable table({{"Change"}, {"What"}, {"Number", Align::kRight}, {"Name"}, {""}});
  for (const GrowthRow& row : application::RowsOf(plan)) {
    table.AddRow({row.change, row.what, row.number, row.name, row.words});
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
Json ListJson(const ListDifference<Row>& list, const GrowthPlan& plan, bool is_field) {
  Json json = {
      {"removed", Json::array()}, {"changed", Json::array()}, {"moved", Json::array()}, {"added", Json::array()}};
  for (const auto& removed : list.removed) {
    Json row = RowJson(removed.row);
    row.update({{"position", removed.position}, {"figures", plan.FiguresOf(is_field, removed.row.number)}});
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

void PrintJson(const GrowthPlan& plan, const NamedDefinitions& definitions, bool is_done) {
  Json json = {{"done", is_done}, {"book_changes", Json::array()}};
  for (const auto& item : plan.difference.items) {
    json["book_changes"].push_back({{"what", item.name}, {"old", item.before}, {"new", item.after}});
  }
  const bool is_field = true;
  json["account_changes"] = ListJson(plan.difference.accounts, plan, !is_field);
  json["field_changes"] = ListJson(plan.difference.fields, plan, is_field);
  json["figure_changes"] = Json::array();
  for (const application::FiguresSet& set : plan.set) {
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
  json["beyond_exchange_files"] = plan.beyond_exchange_files;
  PrintAsItStands(JsonText(json));
}

void NeedFiguresToGo(const engine::Book& book, const GrowthPlan& plan) {
  if (plan.lost.empty()) return;
  throw Failure(FailureNumber::kInvalidArgument,
                fmt::format("{}: {}; --with-figures removes {} together with them", book.Path(),
                            application::LostWords(plan.lost), plan.lost.size() == 1 ? "it" : "all"));
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

GrowthPlan LookAtGrowth(engine::Book& book, const engine::BookDescription& after, const GrowthOptions& options) {
  NeedGrowth(book, after, options.source.empty() ? book.Path() : options.source);
  return application::PlanGrowth(book, after);
}

// What a user should see besides, on standard error.
void TellBesides(const GrowthPlan& plan, const NamedDefinitions& definitions, bool is_done) {
  definitions.Tell(is_done);
  for (const Text& trouble : plan.beyond_exchange_files) Warn(application::BeyondWords(trouble));
}

void Print(const GrowthPlan& plan, const NamedDefinitions& definitions, const GrowthOptions& options, bool is_done) {
  if (options.form == PrintForm::kJson) {
    PrintJson(plan, definitions, is_done);
  } else if (!is_done || !options.show_first) {
    PrintTable(plan);
  }
  TellBesides(plan, definitions, is_done);
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

bool NamedDefinitions::Follows(const application::DefinitionUse& use) const {
  return follow_ && use.can_follow && !not_kept_.contains(use.number);
}

void NamedDefinitions::Keep() {
  if (!followed_) return;
  for (const auto& [number, why] : followed_->Keep()) {
    not_kept_.insert(number);
    WarnAfterCommit(why);
  }
}

void NamedDefinitions::Tell(bool is_done) const {
  for (const application::DefinitionUse& use : uses_) {
    const Text title = application::TitleOf(use);
    const Text names = application::NamesOf(use);
    if (Follows(use)) {
      TellLine(fmt::format("{} {}: {}", title, is_done ? "follows" : "would follow", names));
    } else {
      Warn(fmt::format("{} names what changes: {}{}", title, names,
                       use.can_follow && !follow_ ? "; --with-definitions writes the new code into it" : ""));
    }
  }
}

void GrowBook(Session& session, engine::Book& book, const engine::BookDescription& after, const Text& what_ran,
              const GrowthOptions& options) {
  const GrowthPlan plan = LookAtGrowth(book, after, options);
  NamedDefinitions definitions(session, book, plan.difference, options.with_definitions, options.dry_run);
  const bool is_done = true;
  if (options.dry_run) return Print(plan, definitions, options, !is_done);
  if (options.show_first && options.form == PrintForm::kTable) PrintTable(plan);
  if (!options.with_figures) NeedFiguresToGo(book, plan);
  book.Grow(after, what_ran);
  definitions.Keep();
  DoAfterCommit([&] { Print(plan, definitions, options, is_done); });
}

}  // namespace tallybook::cli
