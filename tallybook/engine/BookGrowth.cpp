#include "tallybook/engine/BookGrowth.h"

#include <algorithm>
#include <map>
#include <nlohmann/json.hpp>
#include <string>
#include <utility>

#include "base/CodePage.h"
#include "base/Dates.h"
#include "base/Failure.h"
#include "base/Narrow.h"

namespace tallybook::engine {

namespace {

using nlohmann::json;

constexpr const char* kSource = "Tallybook.BookGrowth";

[[noreturn]] void Refuse(const Text& source_name, const Text& place, const Text& found, const Text& wanted) {
  throw Failure(FailureNumber::kInvalidArgument, source_name + ": " + place + " is " + found + "; " + wanted, kSource);
}

Text InWords(const Text& text) {
  return "\"" + text + "\"";
}
Text InWords(Long number) {
  return std::to_string(number);
}

// The single items that may change, under their names. `take` is told each with a reference to it.
template <typename Description, typename Take>
void ForEachChangingItem(Description& description, Take take) {
  take("system_name", description.system_name);
  take("type_name", description.type_name);
  take("calendar.years", description.calendar.years);
  take("calendar.years_in_use", description.calendar.years_in_use);
  take("max_accounts", description.max_accounts);
  take("max_fields", description.max_fields);
}

// The same of two descriptions at once.
template <typename Take>
void ForEachItemOfBoth(const BookDescription& before, const BookDescription& after, Take take) {
  take("system_name", before.system_name, after.system_name);
  take("type_name", before.type_name, after.type_name);
  take("calendar.years", before.calendar.years, after.calendar.years);
  take("calendar.years_in_use", before.calendar.years_in_use, after.calendar.years_in_use);
  take("max_accounts", before.max_accounts, after.max_accounts);
  take("max_fields", before.max_fields, after.max_fields);
}

// --- The difference --------------------------------------------------------------------------------------------------

// Which of some numbers, each there once, stand in the longest run that rises.
std::vector<bool> LongestRising(const std::vector<std::size_t>& numbers) {
  std::vector<std::size_t> ends;  // of the runs of each length, the place of the least end
  std::vector<std::size_t> before(numbers.size());
  constexpr auto kNone = static_cast<std::size_t>(-1);
  for (std::size_t place = 0; place < numbers.size(); ++place) {
    const auto run = std::lower_bound(ends.begin(), ends.end(), numbers[place],
                                      [&](std::size_t end, std::size_t number) { return numbers[end] < number; });
    before[place] = run == ends.begin() ? kNone : *(run - 1);
    if (run == ends.end()) {
      ends.push_back(place);
    } else {
      *run = place;
    }
  }
  std::vector<bool> rising(numbers.size(), false);
  for (std::size_t place = ends.empty() ? kNone : ends.back(); place != kNone; place = before[place]) {
    rising[place] = true;
  }
  return rising;
}

template <typename Row>
std::map<Long, std::size_t> IndexByNumber(const std::vector<Row>& rows) {
  std::map<Long, std::size_t> index;
  for (std::size_t place = 0; place < rows.size(); ++place) index.emplace(rows[place].number, place);
  return index;
}

Integer Position(std::size_t index) {
  return ToInteger(static_cast<long long>(index) + 1);
}

template <typename Row>
ListDifference<Row> DifferenceOf(const std::vector<Row>& before, const std::vector<Row>& after) {
  ListDifference<Row> difference;
  const auto old_places = IndexByNumber(before);
  const auto new_places = IndexByNumber(after);
  for (std::size_t index = 0; index < before.size(); ++index) {
    if (!new_places.contains(before[index].number)) difference.removed.push_back({before[index], Position(index)});
  }
  std::vector<std::size_t> kept;     // places before, in the order of those after
  std::vector<std::size_t> kept_at;  // places after
  for (std::size_t index = 0; index < after.size(); ++index) {
    const auto old_place = old_places.find(after[index].number);
    if (old_place == old_places.end()) {
      difference.added.push_back({after[index], Position(index)});
      continue;
    }
    kept.push_back(old_place->second);
    kept_at.push_back(index);
    const Row& old_row = before[old_place->second];
    if (!(old_row == after[index])) difference.changed.push_back({old_row, after[index]});
  }
  const std::vector<bool> stays = LongestRising(kept);
  for (std::size_t place = 0; place < kept.size(); ++place) {
    if (!stays[place]) {
      difference.moved.push_back({after[kept_at[place]], Position(kept[place]), Position(kept_at[place])});
    }
  }
  return difference;
}

// --- The rules -------------------------------------------------------------------------------------------------------

constexpr const char* kFixed = "it cannot change; a new book made from this one can have another";

class Rules {
 public:
  Rules(const StoredDescription& before, const BookDescription& after, const Text& source_name)
      : stored_(before), before_(before.description), after_(after), source_(source_name) {}

  void Check() const {
    CheckFixed();
    CheckGrows("calendar.years", before_.calendar.years, after_.calendar.years,
               "years can be added, and not taken away; a new book made from this one can leave years behind");
    CheckGrows("max_accounts", before_.max_accounts, after_.max_accounts, "a limit can grow, and not shrink");
    CheckGrows("max_fields", before_.max_fields, after_.max_fields, "a limit can grow, and not shrink");
    CheckPeriods();
    CheckNumbers("accounts", after_.accounts, stored_.retired_accounts);
    CheckNumbers("fields", after_.fields, stored_.retired_fields);
    CheckTexts();
    CheckSlots();
  }

 private:
  template <typename Value>
  void CheckSame(const Text& place, const Value& before, const Value& after, const Text& words) const {
    if (!(before == after)) Refuse(source_, place, words, kFixed);
  }

  void CheckFixed() const {
    const CalendarDescription& now = before_.calendar;
    const CalendarDescription& asked = after_.calendar;
    CheckSame("data_level", before_.data_level, after_.data_level, InWords(DataLevelName(after_.data_level)));
    CheckSame("calendar.kind", now.kind, asked.kind, InWords(CalendarKindName(asked.kind)));
    CheckSame("calendar.first_date", now.first_date, asked.first_date, InWords(DateText(asked.first_date)));
    CheckSame("calendar.first_year", now.first_year, asked.first_year, InWords(asked.first_year));
    CheckSame("calendar.week_ends_on", now.week_ends_on, asked.week_ends_on, InWords(WeekdayName(asked.week_ends_on)));
  }

  void CheckGrows(const Text& place, Long before, Long after, const Text& wanted) const {
    if (after < before) {
      Refuse(source_, place, std::to_string(after), "it has been " + std::to_string(before) + "; " + wanted);
    }
  }

  // A book of a kind that has its own periods may be given names for them.
  void CheckPeriods() const {
    const auto& now = before_.calendar.periods;
    const auto& asked = after_.calendar.periods;
    if (before_.calendar.kind != CalendarKind::kCustom) return;
    const bool same_lengths =
        std::equal(now.begin(), now.end(), asked.begin(), asked.end(),
                   [](const PeriodDescription& a, const PeriodDescription& b) { return a.length == b.length; });
    if (!same_lengths) Refuse(source_, "calendar.periods", "a list of other lengths", kFixed);
  }

  template <typename Row>
  void CheckNumbers(const Text& list, const std::vector<Row>& after, const std::vector<Long>& retired) const {
    for (std::size_t index = 0; index < after.size(); ++index) {
      if (!std::binary_search(retired.begin(), retired.end(), Long{after[index].number})) continue;
      Refuse(source_, list + "[" + std::to_string(index) + "].number", std::to_string(after[index].number),
             "it was the number of one that has been removed, and is not used again");
    }
  }

  void CheckText(const Text& place, const Text& text) const {
    if (!IsUtf8(text)) Refuse(source_, place, "no text in UTF-8", "a text that can be read is wanted");
  }

  void CheckTexts() const {
    CheckText("system_name", after_.system_name);
    CheckText("type_name", after_.type_name);
    for (const PeriodDescription& period : after_.calendar.periods) CheckText("a period's name", period.name);
    for (const FieldDescription& field : after_.fields) CheckText("a field's description", field.description);
    for (const AccountDescription& account : after_.accounts) {
      CheckText("an account's code", account.code);
      CheckText("an account's description", account.description);
    }
  }

  void CheckSlots() const {
    if (Grown(stored_, after_).slots <= kMostSlots) return;
    Refuse(source_, "fields", "a list of " + std::to_string(after_.fields.size()),
           "fields have been added and removed so often that no more can be; a new book made from this one has room");
  }

  const StoredDescription& stored_;
  const BookDescription& before_;
  const BookDescription& after_;
  const Text& source_;
};

// --- Numbers ---------------------------------------------------------------------------------------------------------

// Up to `count` numbers: those above all that were given, then the lowest that never were.
template <typename Row>
std::vector<Long> FreeNumbers(const std::vector<Row>& rows, const std::vector<Long>& retired, Long most,
                              std::size_t count) {
  std::vector<Long> given = retired;
  for (const Row& row : rows) given.push_back(row.number);
  std::sort(given.begin(), given.end());
  std::vector<Long> free;
  for (Long next = given.empty() ? 1 : given.back() + 1; next <= most && free.size() < count; ++next) {
    free.push_back(next);
  }
  auto taken = given.begin();
  for (Long lowest = 1; taken != given.end() && free.size() < count && lowest <= most; ++lowest) {
    while (taken != given.end() && *taken < lowest) ++taken;
    if (taken != given.end() && *taken > lowest) free.push_back(lowest);
  }
  return free;
}

template <typename Row>
Long FreeNumber(const std::vector<Row>& rows, const std::vector<Long>& retired, Long most) {
  const std::vector<Long> free = FreeNumbers(rows, retired, most, 1);
  return free.empty() ? 0 : free.front();
}

// --- What the journal keeps ------------------------------------------------------------------------------------------

// Rows as lists of their items.
json RowText(const AccountDescription& row) {
  return json::array({row.number, row.code, row.description});
}
json RowText(const PeriodDescription& row) {
  return json::array({row.name, row.length});
}
struct SlottedField {
  FieldDescription field;
  std::size_t slot = 0;
  bool operator==(const SlottedField&) const = default;
};
json RowText(const SlottedField& row) {
  return json::array({row.field.number, row.field.description, row.field.system, row.slot});
}

void TakeRow(const json& text, AccountDescription& row) {
  row = {text.at(0).get<Long>(), text.at(1).get<Text>(), text.at(2).get<Text>()};
}
void TakeRow(const json& text, PeriodDescription& row) {
  row = {text.at(0).get<Text>(), text.at(1).get<Integer>()};
}
void TakeRow(const json& text, SlottedField& row) {
  row = {{text.at(0).get<Integer>(), text.at(1).get<Text>(), text.at(2).get<bool>()}, text.at(3).get<std::size_t>()};
}

std::vector<SlottedField> FieldsOf(const StoredDescription& stored) {
  std::vector<SlottedField> fields;
  for (std::size_t index = 0; index < stored.slot_of_field.size(); ++index) {
    fields.push_back({stored.description.fields[index], stored.slot_of_field[index]});
  }
  return fields;
}

template <typename Row>
json RowsText(const std::vector<Row>& rows, std::size_t first, std::size_t end) {
  json list = json::array();
  for (std::size_t index = first; index < end; ++index) list.push_back(RowText(rows[index]));
  return list;
}

// What lies between the rows that both lists begin with and those that both end with.
template <typename Row>
void PutSplice(json& change, const char* name, const std::vector<Row>& before, const std::vector<Row>& after) {
  if (before == after) return;
  const std::size_t shorter = std::min(before.size(), after.size());
  std::size_t head = 0;
  while (head < shorter && before[head] == after[head]) ++head;
  std::size_t tail = 0;
  while (tail < shorter - head && before[before.size() - 1 - tail] == after[after.size() - 1 - tail]) ++tail;
  change[name] = {{"at", head},
                  {"before", RowsText(before, head, before.size() - tail)},
                  {"after", RowsText(after, head, after.size() - tail)}};
}

template <typename Row>
std::vector<Row> RowsIn(const json& list) {
  std::vector<Row> rows(list.size());
  for (std::size_t index = 0; index < list.size(); ++index) TakeRow(list.at(index), rows[index]);
  return rows;
}

// False where the list does not hold what the change had put there.
template <typename Row>
bool TakeSpliceBack(const json& change, const char* name, std::vector<Row>& rows) {
  if (!change.contains(name)) return true;
  const json& splice = change.at(name);
  const auto before = RowsIn<Row>(splice.at("before"));
  const auto after = RowsIn<Row>(splice.at("after"));
  const auto at = splice.at("at").get<std::size_t>();
  if (at > rows.size() || after.size() > rows.size() - at) return false;
  const auto first = rows.begin() + static_cast<std::ptrdiff_t>(at);
  const auto end = first + static_cast<std::ptrdiff_t>(after.size());
  if (!std::equal(first, end, after.begin())) return false;
  rows.insert(rows.erase(first, end), before.begin(), before.end());
  return true;
}

bool TakeItemsBack(const json& change, BookDescription& description) {
  bool fits = true;
  ForEachChangingItem(description, [&]<typename Item>(const char* name, Item& item) {
    if (!change.contains(name)) return;
    fits = fits && change.at(name).at(1).get<Item>() == item;
    item = change.at(name).at(0).get<Item>();
  });
  return fits;
}

void TakeAway(std::vector<Long>& numbers, const std::vector<Long>& others) {
  std::erase_if(numbers, [&](Long number) { return std::ranges::find(others, number) != others.end(); });
}

bool TakeBack(const json& change, StoredDescription& stored) {
  BookDescription description = stored.description;
  if (!TakeItemsBack(change, description)) return false;
  if (!TakeSpliceBack(change, "periods", description.calendar.periods)) return false;
  if (!TakeSpliceBack(change, "accounts", description.accounts)) return false;
  std::vector<SlottedField> fields = FieldsOf(stored);
  if (!TakeSpliceBack(change, "fields", fields)) return false;
  description.fields.clear();
  for (const SlottedField& field : fields) description.fields.push_back(field.field);
  const std::size_t slots = stored.slots;  // what comes back has its own
  stored = Grown(stored, description);
  stored.slots = slots;
  for (std::size_t index = 0; index < fields.size(); ++index) stored.slot_of_field[index] = fields[index].slot;
  std::vector<Long> numbers;
  for (const AccountDescription& account : description.accounts) numbers.push_back(account.number);
  TakeAway(stored.retired_accounts, numbers);
  numbers.clear();
  for (const FieldDescription& field : description.fields) numbers.push_back(field.number);
  TakeAway(stored.retired_fields, numbers);
  return true;
}

}  // namespace

BookDifference FindDifference(const BookDescription& before, const BookDescription& after) {
  BookDifference difference;
  ForEachItemOfBoth(before, after, [&](const char* name, const auto& old_item, const auto& new_item) {
    if (old_item != new_item) difference.items.push_back({name, InWords(old_item), InWords(new_item)});
  });
  if (before.calendar.periods != after.calendar.periods) {
    const auto count = [](const auto& list) { return std::to_string(list.size()) + " rows"; };
    difference.items.push_back({"calendar.periods", count(before.calendar.periods), count(after.calendar.periods)});
  }
  difference.accounts = DifferenceOf(before.accounts, after.accounts);
  difference.fields = DifferenceOf(before.fields, after.fields);
  return difference;
}

void CheckGrowth(const StoredDescription& before, const BookDescription& after, const Text& source_name) {
  CheckNewBookDescription(after, source_name);
  Rules(before, after, source_name).Check();
}

Long FreeAccountNumber(const StoredDescription& stored) {
  return FreeNumber(stored.description.accounts, stored.retired_accounts, stored.description.max_accounts);
}

std::vector<Long> FreeAccountNumbers(const StoredDescription& stored, std::size_t count) {
  return FreeNumbers(stored.description.accounts, stored.retired_accounts, stored.description.max_accounts, count);
}

Integer FreeFieldNumber(const StoredDescription& stored) {
  return ToInteger(FreeNumber(stored.description.fields, stored.retired_fields, stored.description.max_fields));
}

Text ChangeText(const StoredDescription& before, const StoredDescription& after) {
  json change = json::object();
  ForEachItemOfBoth(before.description, after.description,
                    [&](const char* name, const auto& old_item, const auto& new_item) {
                      if (old_item != new_item) change[name] = json::array({old_item, new_item});
                    });
  PutSplice(change, "periods", before.description.calendar.periods, after.description.calendar.periods);
  PutSplice(change, "accounts", before.description.accounts, after.description.accounts);
  PutSplice(change, "fields", FieldsOf(before), FieldsOf(after));
  return change.dump();
}

StoredDescription TakenBack(const StoredDescription& now, const Text& change, const Text& path) {
  StoredDescription before = now;
  bool fits = false;
  try {
    fits = TakeBack(json::parse(change), before);
  } catch (const json::exception&) {
    fits = false;  // told below
  }
  if (fits) return before;
  throw Failure(FailureNumber::kDeviceError,
                path + ": the book is damaged: what a change of its lists was does not agree with the lists", kSource);
}

}  // namespace tallybook::engine
