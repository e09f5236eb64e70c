#include "tallybook/desktop/window/ListsDraft.h"

#include <algorithm>
#include <functional>
#include <set>
#include <unordered_map>
#include <utility>

#include "base/Failure.h"
#include "base/Narrow.h"
#include "tallybook/application/Counts.h"
#include "tallybook/application/ListEdits.h"

namespace tallybook::desktop {

namespace {

using application::Counted;
using engine::AccountDescription;
using engine::BookDescription;
using engine::FieldDescription;
using engine::ListDifference;
using engine::PlacedRow;
using engine::StoredDescription;

template <typename Row>
const Row& RowOf(const std::vector<Row>& rows, Long number) {
  return *std::ranges::find_if(rows, [&](const Row& row) { return row.number == number; });
}

// The rows of the numbers, with their positions, rising.
template <typename Row>
std::vector<PlacedRow<Row>> Placed(const std::vector<Row>& rows, const std::set<Long>& numbers) {
  std::vector<PlacedRow<Row>> placed;
  for (std::size_t index = 0; index < rows.size(); ++index) {
    if (numbers.contains(rows[index].number)) {
      placed.push_back({rows[index], ToInteger(static_cast<long long>(index) + 1)});
    }
  }
  return placed;
}

template <typename Row>
std::vector<RowState> StatesOf(const ListDifference<Row>& list, const std::vector<Row>& rows) {
  std::unordered_map<Long, RowState> states;
  for (const auto& moved : list.moved) states[moved.row.number] = RowState::kMoved;
  for (const auto& changed : list.changed) states[changed.after.number] = RowState::kChanged;
  for (const auto& added : list.added) states[added.row.number] = RowState::kAdded;
  std::vector<RowState> all;
  all.reserve(rows.size());
  for (const Row& row : rows) {
    const auto found = states.find(row.number);
    all.push_back(found == states.end() ? RowState::kAsItIs : found->second);
  }
  return all;
}

// The numbers of `before` that are not in `now`.
template <typename Row>
void AddGone(const std::vector<Row>& before, const std::vector<Row>& now, std::vector<Long>& gone) {
  std::set<Long> there;
  for (const Row& row : now) there.insert(row.number);
  for (const Row& row : before) {
    if (!there.contains(row.number)) gone.push_back(row.number);
  }
  std::ranges::sort(gone);
}

}  // namespace

ListsDraft::ListsDraft(engine::StoredDescription stored, Text path)
    : stored_(std::move(stored)), now_(stored_), path_(std::move(path)) {}

engine::BookDifference ListsDraft::Difference() const {
  return FindDifference(stored_.description, now_.description);
}

// --- Steps -----------------------------------------------------------------------------------------------------------

template <typename Row>
ListsDraft::Swap<Row> ListsDraft::SwapOf(const ListDifference<Row>& list, const std::vector<Row>& before) {
  Swap<Row> swap;
  for (const auto& removed : list.removed) swap.touched.insert(removed.row.number);
  for (const auto& changed : list.changed) swap.touched.insert(changed.after.number);
  for (const auto& moved : list.moved) swap.touched.insert(moved.row.number);
  swap.before = Placed(before, swap.touched);
  for (const auto& added : list.added) swap.touched.insert(added.row.number);
  return swap;
}

template <typename Row>
ListsDraft::Swap<Row> ListsDraft::SwapOf(Long moved, const std::vector<Row>& before) {
  return {{moved}, Placed(before, {moved})};
}

template <typename Row>
void ListsDraft::TakeBack(const Swap<Row>& swap, std::vector<Row>& rows) {
  std::erase_if(rows, [&](const Row& row) { return swap.touched.contains(row.number); });
  for (const auto& placed : swap.before) rows.insert(rows.begin() + (placed.position - 1), placed.row);
}

void ListsDraft::Take(const BookDescription& after, Step step) {
  CheckGrowth(stored_, after, path_);
  const BookDescription& before = now_.description;
  const bool goes_on =
      step.moved != 0 && !done_.empty() && done_.back().moved == step.moved && done_.back().is_field == step.is_field;
  if (after == before) return;
  if (!goes_on) {
    const engine::BookDifference difference = FindDifference(before, after);
    step.calendar = before.calendar;
    step.max_accounts = before.max_accounts;
    step.max_fields = before.max_fields;
    if (step.moved == 0) {
      step.accounts = SwapOf(difference.accounts, before.accounts);
      step.fields = SwapOf(difference.fields, before.fields);
    } else if (step.is_field) {
      step.fields = SwapOf(step.moved, before.fields);
    } else {
      step.accounts = SwapOf(step.moved, before.accounts);
    }
    done_.push_back(std::move(step));
  }
  now_.description = after;
  Retire();
}

// --- The book changed by others --------------------------------------------------------------------------------------

namespace {

// What was done to a list, once more.
template <typename Row>
void Repeat(const ListDifference<Row>& list, const std::vector<Long>& retired, std::vector<Row>& rows,
            const std::function<void(const Row& before, const Row& after, Row& row)>& edit) {
  const auto find = [&](Long number) {
    return std::ranges::find_if(rows, [&](const Row& row) { return row.number == number; });
  };
  for (const auto& removed : list.removed) {
    std::erase_if(rows, [&](const Row& row) { return row.number == removed.row.number; });
  }
  for (const auto& changed : list.changed) {
    if (const auto row = find(changed.after.number); row != rows.end()) edit(changed.before, changed.after, *row);
  }
  const auto place = [&](Integer position) {
    return rows.begin() + std::min<std::ptrdiff_t>(position - 1, static_cast<std::ptrdiff_t>(rows.size()));
  };
  for (const auto& moved : list.moved) {
    const auto found = find(moved.row.number);
    if (found == rows.end()) continue;
    const Row row = *found;
    rows.erase(found);
    rows.insert(place(moved.to), row);
  }
  for (const auto& added : list.added) {
    Row row = added.row;
    const bool is_taken = find(row.number) != rows.end() || std::ranges::binary_search(retired, Long{row.number});
    if (is_taken) row.number = 0;
    rows.insert(place(added.position), row);
  }
}

// Rows of the number 0 get free ones.
void GiveNumbers(StoredDescription& stored) {
  BookDescription& book = stored.description;
  StoredDescription numbered = stored;
  std::erase_if(numbered.description.accounts, [](const AccountDescription& row) { return row.number == 0; });
  std::erase_if(numbered.description.fields, [](const FieldDescription& row) { return row.number == 0; });
  const std::vector<Long> free = FreeAccountNumbers(numbered, book.accounts.size());
  auto next = free.begin();
  for (AccountDescription& row : book.accounts) {
    if (row.number == 0 && next != free.end()) row.number = *next++;
  }
  for (FieldDescription& row : book.fields) {
    if (row.number != 0) continue;
    row.number = FreeFieldNumber(numbered);
    numbered.description.fields.push_back(row);
  }
}

}  // namespace

Text ListsDraft::Rebase(StoredDescription stored) {
  const engine::BookDifference edits = Difference();
  const engine::CalendarDescription was = stored_.description.calendar;
  const engine::CalendarDescription wanted = Now().calendar;
  const Long max_accounts = Now().max_accounts;
  const Long max_fields = Now().max_fields;
  stored_ = std::move(stored);
  now_ = stored_;
  done_.clear();
  StoredDescription after = stored_;
  after.description.max_accounts = std::max(after.description.max_accounts, max_accounts);
  after.description.max_fields = std::max(after.description.max_fields, max_fields);
  Repeat<AccountDescription>(edits.accounts, stored_.retired_accounts, after.description.accounts,
                             [](const auto& before, const auto& edited, auto& row) {
                               if (before.code != edited.code) row.code = edited.code;
                               if (before.description != edited.description) row.description = edited.description;
                             });
  Repeat<FieldDescription>(edits.fields, stored_.retired_fields, after.description.fields,
                           [](const auto& before, const auto& edited, auto& row) {
                             if (before.description != edited.description) row.description = edited.description;
                             if (before.system != edited.system) row.system = edited.system;
                           });
  engine::CalendarDescription& calendar = after.description.calendar;
  if (wanted.years != was.years) calendar.years = std::max(calendar.years, wanted.years);
  if (wanted.years_in_use != was.years_in_use) calendar.years_in_use = std::min(wanted.years_in_use, calendar.years);
  GiveNumbers(after);
  try {
    Take(after.description, {.what = "all changes"});
    return "";
  } catch (const Failure& failure) {
    return failure.Description();
  }
}

// What stands in the book keeps its number for good; what was never there does not.
void ListsDraft::Retire() {
  now_.retired_accounts = stored_.retired_accounts;
  now_.retired_fields = stored_.retired_fields;
  AddGone(stored_.description.accounts, now_.description.accounts, now_.retired_accounts);
  AddGone(stored_.description.fields, now_.description.fields, now_.retired_fields);
}

void ListsDraft::Undo() {
  if (done_.empty()) return;
  const Step& step = done_.back();
  TakeBack(step.accounts, now_.description.accounts);
  TakeBack(step.fields, now_.description.fields);
  now_.description.calendar = step.calendar;
  now_.description.max_accounts = step.max_accounts;
  now_.description.max_fields = step.max_fields;
  done_.pop_back();
  Retire();
}

// --- Acts ------------------------------------------------------------------------------------------------------------

void ListsDraft::Add(const std::vector<AccountDescription>& accounts, Long position) {
  if (accounts.empty()) return;
  const Text what = accounts.size() == 1 ? "adding " + accounts.front().code
                                         : "adding " + Counted(static_cast<long long>(accounts.size()), "account");
  Take(application::WithAccounts(now_, accounts, position), {.what = what});
}

void ListsDraft::Add(const FieldDescription& field, Long position) {
  Take(application::WithField(now_, field, position), {.what = "adding " + field.description});
}

void ListsDraft::AddFields(const std::vector<FieldDescription>& fields) {
  StoredDescription after = now_;
  for (FieldDescription field : fields) {
    field.number = 0;
    after.description = application::WithField(after, field, std::nullopt);
  }
  Take(after.description, {.what = "adding " + Counted(static_cast<long long>(fields.size()), "field")});
}

void ListsDraft::Edit(Long number, const Text& code, const Text& description) {
  Take(application::WithAccountEdited(Now(), number, code, description),
       {.what = "changing " + RowOf(Now().accounts, number).code});
}

void ListsDraft::EditField(Integer number, const Text& description, bool system) {
  Take(application::WithFieldEdited(Now(), number, description, system),
       {.what = "changing " + RowOf(Now().fields, number).description});
}

void ListsDraft::Move(Long number, Long position) {
  Take(application::WithAccountMoved(Now(), number, position),
       {.what = "moving " + RowOf(Now().accounts, number).code, .moved = number});
}

void ListsDraft::MoveField(Integer number, Long position) {
  Take(application::WithFieldMoved(Now(), number, position),
       {.what = "moving " + RowOf(Now().fields, number).description, .moved = number, .is_field = true});
}

void ListsDraft::Remove(const std::vector<Long>& accounts) {
  const std::set<Long> gone(accounts.begin(), accounts.end());
  BookDescription after = Now();
  std::erase_if(after.accounts, [&](const AccountDescription& account) { return gone.contains(account.number); });
  Take(after, {.what = gone.size() == 1 ? "removing " + RowOf(Now().accounts, accounts.front()).code
                                        : "removing " + Counted(static_cast<long long>(gone.size()), "account")});
}

void ListsDraft::RemoveFields(const std::vector<Integer>& fields) {
  const std::set<Integer> gone(fields.begin(), fields.end());
  BookDescription after = Now();
  std::erase_if(after.fields, [&](const FieldDescription& field) { return gone.contains(field.number); });
  Take(after, {.what = gone.size() == 1 ? "removing " + RowOf(Now().fields, fields.front()).description
                                        : "removing " + Counted(static_cast<long long>(gone.size()), "field")});
}

void ListsDraft::SetYears(Long held, Long in_use) {
  const engine::CalendarDescription& own = stored_.description.calendar;
  BookDescription after = Now();
  after.calendar = own;
  if (held != own.years) after = application::WithMoreYears(after, held - own.years);
  if (in_use != own.years_in_use) after = application::WithYearsInUse(after, in_use);
  Take(after, {.what = "changing the years", .is_years = true});
}

void ListsDraft::SetLimits(Long accounts, Long fields) {
  BookDescription after = Now();
  after.max_accounts = accounts;
  after.max_fields = fields;
  Take(after, {.what = "changing the limits"});
}

std::vector<RowState> ListsDraft::AccountStates() const {
  return StatesOf(Difference().accounts, Now().accounts);
}

std::vector<RowState> ListsDraft::FieldStates() const {
  return StatesOf(Difference().fields, Now().fields);
}

}  // namespace tallybook::desktop
