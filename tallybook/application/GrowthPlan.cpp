#include "tallybook/application/GrowthPlan.h"

#include <algorithm>
#include <fmt/format.h>
#include <map>

#include "base/Dates.h"
#include "tallybook/application/Counts.h"
#include "tallybook/application/ListEdits.h"
#include "tallybook/engine/Calendar.h"

namespace tallybook::application {

namespace {

using engine::AccountDescription;
using engine::BookDifference;
using engine::FieldDescription;
using engine::FiguresLost;
using engine::ItemDifference;
using engine::ListDifference;

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
void AddRows(const ListDifference<Row>& list, const GrowthPlan& plan, bool is_field, std::vector<GrowthRow>& rows) {
  const auto add = [&](const char* change, const Row& row, const Text& words) {
    rows.push_back({change, KindOf(row), std::to_string(row.number), NameOf(row), words});
  };
  for (const auto& removed : list.removed) {
    const long long figures = plan.FiguresOf(is_field, removed.row.number);
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

// --- What ran --------------------------------------------------------------------------------------------------------

template <typename Row>
std::size_t SizeOf(const ListDifference<Row>& list) {
  return list.removed.size() + list.changed.size() + list.moved.size() + list.added.size();
}

Text KeyOf(const AccountDescription& account) {
  return account.code;
}
Text KeyOf(const FieldDescription& field) {
  return std::to_string(field.number);
}

template <typename Row>
Text SingleChange(const ListDifference<Row>& list) {
  for (const auto& removed : list.removed) return fmt::format("{} remove {}", KindOf(removed.row), KeyOf(removed.row));
  for (const auto& changed : list.changed)
    return fmt::format("{} edit {}", KindOf(changed.after), KeyOf(changed.before));
  for (const auto& moved : list.moved) {
    return fmt::format("{} move {} {}", KindOf(moved.row), KeyOf(moved.row), moved.to);
  }
  for (const auto& added : list.added) return fmt::format("{} add {}", KindOf(added.row), NameOf(added.row));
  return "";
}

Text SingleChange(const ItemDifference& item) {
  if (item.name == "calendar.years") {
    return fmt::format("calendar extend --years {}", std::stoi(item.after) - std::stoi(item.before));
  }
  if (item.name == "calendar.years_in_use") return "calendar use --years " + item.after;
  return item.name + " " + item.after;
}

Text ItemWords(const ItemDifference& item) {
  if (item.name == "calendar.years") return Counted(std::stoll(item.after), "year") + " held";
  if (item.name == "calendar.years_in_use") return Counted(std::stoll(item.after), "year") + " in use";
  return fmt::format("{} {} becomes {}", item.name, item.before, item.after);
}

void AddCount(std::size_t count, const char* noun, const char* verb, Text& words) {
  if (count == 0) return;
  words += (words.empty() ? "" : ", ") + Counted(static_cast<long long>(count), noun) + " " + verb;
}

template <typename Row>
void AddCounts(const ListDifference<Row>& list, const char* noun, Text& words) {
  AddCount(list.added.size(), noun, "added", words);
  AddCount(list.changed.size(), noun, "changed", words);
  AddCount(list.moved.size(), noun, "moved", words);
  AddCount(list.removed.size(), noun, "removed", words);
}

}  // namespace

long long GrowthPlan::FiguresOf(bool is_field, Long number) const {
  const auto row = std::ranges::find_if(
      lost, [&](const FiguresLost& each) { return each.is_field == is_field && each.number == number; });
  return row == lost.end() ? 0 : row->figures;
}

GrowthPlan PlanGrowth(engine::Book& book, const engine::BookDescription& after) {
  GrowthPlan plan;
  plan.difference = FindDifference(book.Description(), after);
  plan.lost = book.LostBy(after);
  plan.set = FiguresSetBy(book.ChangedValues(after), after);
  if (BeyondExchangeFiles(book.Description()).empty()) plan.beyond_exchange_files = BeyondExchangeFiles(after);
  return plan;
}

std::vector<GrowthRow> RowsOf(const GrowthPlan& plan) {
  std::vector<GrowthRow> rows;
  for (const ItemDifference& item : plan.difference.items) {
    rows.push_back({"change", "book", "", item.name, fmt::format("{} becomes {}", item.before, item.after)});
  }
  const bool is_field = true;
  AddRows(plan.difference.accounts, plan, !is_field, rows);
  AddRows(plan.difference.fields, plan, is_field, rows);
  for (const FiguresSet& set : plan.set) {
    rows.push_back(
        {"set", "account", std::to_string(set.account.number), set.account.code,
         fmt::format("{}, {} to {}", Counted(set.figures, "figure"), DateText(set.first), DateText(set.last))});
  }
  return rows;
}

Text LostWords(const std::vector<FiguresLost>& lost) {
  Text names;
  for (const FiguresLost& each : lost) {
    names += (names.empty() ? "" : ", ") +
             fmt::format("{} has {}", each.is_field ? fmt::format("field {}", each.number) : "account " + each.name,
                         Counted(each.figures, "figure"));
  }
  return names;
}

Text BeyondWords(const Text& trouble) {
  return "the book cannot be exported as an exchange file any more: it has " + trouble;
}

Text TitleOf(const DefinitionUse& use) {
  return fmt::format("exchange definition {} ({})", use.number, use.title);
}

Text NamesOf(const DefinitionUse& use) {
  Text names;
  for (const Text& name : use.names) names += (names.empty() ? "" : ", ") + name;
  return names;
}

Text WhatRan(const BookDifference& difference) {
  if (difference.IsEmpty()) return "";
  if (difference.items.size() + SizeOf(difference.accounts) + SizeOf(difference.fields) == 1) {
    if (!difference.items.empty()) return SingleChange(difference.items.front());
    return difference.accounts.IsEmpty() ? SingleChange(difference.fields) : SingleChange(difference.accounts);
  }
  return "lists: " + CountsOf(difference);
}

Text CountsOf(const BookDifference& difference) {
  Text words;
  AddCounts(difference.accounts, "account", words);
  AddCounts(difference.fields, "field", words);
  for (const ItemDifference& item : difference.items) words += (words.empty() ? "" : ", ") + ItemWords(item);
  return words;
}

}  // namespace tallybook::application
