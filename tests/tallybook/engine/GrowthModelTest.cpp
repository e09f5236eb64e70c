// A book whose lists and years change, against a small model in memory: random changes of lists, imports, single
// figures and undos over all calendars and levels, with the book closed, opened and its process killed between. What is
// refused leaves the file byte for byte as it was.

#include <algorithm>
#include <array>
#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <map>
#include <memory>
#include <optional>
#include <rapidcheck.h>
#include <set>
#include <utility>
#include <vector>

#include "tallybook/engine/BookCheck.h"
#include "tallybook/engine/BookGrowth.h"
#include "tallybook/engine/Calendar.h"
#include "tallybook/engine/Journal.h"
#include "tests/tallybook/engine/BookFixture.h"
#include "tests/tallybook/engine/OtherProcesses.h"

namespace tallybook::testing {
namespace {

using engine::AccountDescription;
using engine::Book;
using engine::BookDescription;
using engine::Calendar;
using engine::CalendarKind;
using engine::FieldDescription;
using engine::Journal;
using engine::JournalKind;

using RecordKey = std::pair<Long, Date>;  // account number, level date
using Row = std::map<Integer, Double>;    // by field number, not zero; also of fields and accounts that are gone

struct Shape {
  CalendarKind kind;
  Integer level;
};

BookDescription Describe(const Shape& shape) {
  BookDescription description;
  description.system_name = "Model";
  description.type_name = "Sales";
  description.data_level = shape.level;
  description.calendar.kind = shape.kind;
  description.calendar.first_date = Day(2003, 3, 5);
  description.calendar.first_year = 2003;
  if (shape.kind == CalendarKind::kCustom) description.calendar.periods = {{"One", 20}, {"Two", 25}};
  description.accounts = {{10, "A", ""}, {20, "B", ""}};
  description.fields = {{1, "One", false}, {2, "Two", false}};
  return description;
}

// The level date of the n-th record.
std::vector<Date> RecordDates(const BookDescription& description) {
  const Calendar calendar(description.calendar, description.data_level);
  std::vector<Date> dates;
  for (Date day = calendar.FirstDate(); day <= calendar.LastDate(); day = dates.back() + 1) {
    dates.push_back(calendar.UnitOf(day, kOwnLevel).last);
  }
  return dates;
}

template <typename List>
bool HasNumber(const List& rows, Long number) {
  return std::ranges::any_of(rows, [&](const auto& row) { return row.number == number; });
}

class Model {
 public:
  explicit Model(BookDescription description) : now_(std::move(description)) {}

  [[nodiscard]] const BookDescription& Description() const { return now_; }
  [[nodiscard]] bool IsRetired(bool field, Long number) const { return (field ? fields_ : accounts_).contains(number); }
  [[nodiscard]] std::size_t EntryCount() const { return entries_.size() + undos_; }

  void Grow(const BookDescription& after) {
    Entry& entry = AddEntry();
    entry.is_lists = true;
    entry.before = now_;
    Become(after);
  }
  void Begin() { AddEntry(); }
  // Lists and figures at once: what differs of each is an entry, both of one command.
  void Apply(const BookDescription& after, const std::vector<engine::ValueDescription>& values) {
    const bool lists_change = !(after == now_);
    if (lists_change) Grow(after);
    const bool figures_change = std::ranges::any_of(values, [&](const auto& value) {
      const Row row = RowOf({value.account, value.date});
      return (row.contains(value.field) ? row.at(value.field) : 0) != value.value;
    });
    if (!figures_change) return;
    Begin();
    if (lists_change) entries_.back().command = entries_[entries_.size() - 2].command;
    for (const auto& value : values) Write({value.account, value.date}, value.field, value.value);
  }
  void Write(const RecordKey& key, Integer field, Double value) {
    Row row = RowOf(key);
    row[field] = value;
    if (value == 0) row.erase(field);
    if (row == RowOf(key)) return;
    entries_.back().images.emplace(key, RowOf(key));
    entries_.back().left[key] = row;
    Set(key, row);
  }

  [[nodiscard]] FigureMap Figures() const {
    FigureMap figures;
    for (const auto& [key, row] : rows_) {
      if (!HasNumber(now_.accounts, key.first)) continue;
      for (const auto& [field, value] : row) {
        if (HasNumber(now_.fields, field)) figures[{key.first, key.second, field}] = value;
      }
    }
    return figures;
  }

  // By the place of an entry in the journal.
  [[nodiscard]] bool CanUndo(std::size_t index) const {
    const Entry& entry = entries_[index];
    if (entry.is_undone) return false;
    if (!entry.is_lists) return CanRestore(entry);
    for (std::size_t later = index + 1; later < entries_.size(); ++later) {
      if (!entries_[later].is_undone && entries_[later].is_lists) return false;
    }
    return CanTakeBack(entry);
  }
  // Of the newest command of which anything is left, what is left, newest first.
  [[nodiscard]] std::vector<std::size_t> Newest() const {
    std::vector<std::size_t> newest;
    for (std::size_t index = entries_.size(); index-- > 0;) {
      if (entries_[index].is_undone) continue;
      if (newest.empty() || entries_[index].command == entries_[newest.front()].command) newest.push_back(index);
    }
    return newest;
  }
  [[nodiscard]] bool CanUndoNewest() const {
    Model after = *this;
    for (const std::size_t index : Newest()) {
      if (!after.CanUndo(index)) return false;
      after.Undo(index);
    }
    return !Newest().empty();
  }
  void UndoNewest() {
    for (const std::size_t index : Newest()) Undo(index);
  }
  [[nodiscard]] Long IdOf(std::size_t index) const { return entries_[index].id; }
  [[nodiscard]] std::size_t Entries() const { return entries_.size(); }
  void Undo(std::size_t index) {
    Entry& entry = entries_[index];
    entry.is_undone = true;
    ++undos_;
    ++last_id_;
    if (entry.is_lists) {
      Become(entry.before);
    } else {
      for (const auto& [key, row] : entry.images) Restore(entry, key);
    }
  }

 private:
  struct Entry {
    Long id = 0;
    Long command = 0;
    bool is_lists = false;
    bool is_undone = false;
    BookDescription before;
    std::map<RecordKey, Row> images;
    std::map<RecordKey, Row> left;
  };

  static Double In(const Row& row, Integer field) { return row.contains(field) ? row.at(field) : 0; }
  // Neither what the entry left nor what was there before.
  [[nodiscard]] bool IsChangedSince(const Entry& entry, const RecordKey& key, Integer field) const {
    const Double before = In(entry.images.at(key), field);
    const Double left = In(entry.left.at(key), field);
    const Double now = In(RowOf(key), field);
    return left != before && now != left && now != before;
  }
  // What was changed since is of a field that is gone.
  void Restore(const Entry& entry, const RecordKey& key) {
    Row row = RowOf(key);
    for (Integer field = 0; field <= 1000; ++field) {
      const Double before = In(entry.images.at(key), field);
      if (before == In(entry.left.at(key), field) || IsChangedSince(entry, key, field)) continue;
      row[field] = before;
      if (before == 0) row.erase(field);
    }
    Set(key, row);
  }

  Entry& AddEntry() {
    Entry& entry = entries_.emplace_back();
    entry.id = ++last_id_;
    entry.command = entry.id;
    return entry;
  }
  void Become(const BookDescription& after) {
    for (const auto& row : now_.accounts) accounts_.insert(row.number);
    for (const auto& row : now_.fields) fields_.insert(row.number);
    now_ = after;
    for (const auto& row : now_.accounts) accounts_.erase(row.number);
    for (const auto& row : now_.fields) fields_.erase(row.number);
  }
  [[nodiscard]] Row RowOf(const RecordKey& key) const {
    const auto found = rows_.find(key);
    return found == rows_.end() ? Row{} : found->second;
  }
  void Set(const RecordKey& key, const Row& row) {
    if (row.empty()) {
      rows_.erase(key);
    } else {
      rows_[key] = row;
    }
  }
  // What goes with the change has no figures that are seen.
  [[nodiscard]] bool CanTakeBack(const Entry& entry) const {
    const Date last = RecordDates(entry.before).back();
    return std::ranges::all_of(Figures(), [&](const auto& figure) {
      const auto& [account, date, field] = figure.first;
      return HasNumber(entry.before.accounts, account) && HasNumber(entry.before.fields, field) && date <= last;
    });
  }
  [[nodiscard]] bool CanRestore(const Entry& entry) const {
    const Date last = RecordDates(now_).back();
    return std::ranges::all_of(entry.images, [&](const auto& image) {
      return HasNumber(now_.accounts, image.first.first) && image.first.second <= last &&
             std::ranges::none_of(now_.fields, [&](const FieldDescription& field) {
               return IsChangedSince(entry, image.first, field.number);
             });
    });
  }

  BookDescription now_;
  std::set<Long> accounts_;  // retired
  std::set<Long> fields_;
  std::map<RecordKey, Row> rows_;
  std::vector<Entry> entries_;
  std::size_t undos_ = 0;
  Long last_id_ = 0;
};

enum class Act {
  kImport,
  kKilledImport,
  kSet,
  kAdd,
  kEdit,
  kMove,
  kRemove,
  kYears,
  kApply,
  kUndoNewest,
  kUndoOne,
  kReopen
};

struct Step {
  Act act;
  bool field;  // the list that it is about
  int one;     // any numbers: which row, which date, which entry
  int other;
  Double value;
};

void showValue(const Step& step, std::ostream& out) {
  out << "act " << static_cast<int>(step.act) << (step.field ? " field " : " account ") << step.one << ' ' << step.other
      << " value " << step.value;
}

rc::Gen<Step> AnyStep() {
  constexpr int kAny = 1000;
  return rc::gen::construct<Step>(rc::gen::weightedElement<Act>({{10, Act::kImport},
                                                                 {1, Act::kKilledImport},
                                                                 {4, Act::kSet},
                                                                 {6, Act::kAdd},
                                                                 {3, Act::kEdit},
                                                                 {3, Act::kMove},
                                                                 {4, Act::kRemove},
                                                                 {2, Act::kYears},
                                                                 {6, Act::kApply},
                                                                 {6, Act::kUndoNewest},
                                                                 {4, Act::kUndoOne},
                                                                 {2, Act::kReopen}}),
                                  rc::gen::arbitrary<bool>(), rc::gen::inRange(0, kAny), rc::gen::inRange(0, kAny),
                                  rc::gen::element<Double>(0, 1, -2.5, 12.34, 0.1 + 0.2));
}

// The changes that a step stands for; the number of what is added may have been used before.
template <typename Row>
void Change(std::vector<Row>& rows, const Step& step, const Row& added) {
  const auto at = static_cast<std::size_t>(step.one);
  const auto other = static_cast<std::size_t>(step.other);
  if (step.act == Act::kAdd) rows.insert(rows.begin() + static_cast<std::ptrdiff_t>(at % (rows.size() + 1)), added);
  if (rows.empty() || step.act == Act::kAdd) return;
  if (step.act == Act::kRemove) rows.erase(rows.begin() + static_cast<std::ptrdiff_t>(at % rows.size()));
  if (step.act == Act::kEdit) rows[at % rows.size()].description = "Edited " + std::to_string(other % 3);
  if (step.act == Act::kMove) {
    const Row row = rows[at % rows.size()];
    rows.erase(rows.begin() + static_cast<std::ptrdiff_t>(at % rows.size()));
    rows.insert(rows.begin() + static_cast<std::ptrdiff_t>(other % (rows.size() + 1)), row);
  }
}

class GrowthModelTest : public BookFixture {
 protected:
  void Start(const Shape& shape) {
    book.reset();
    for (const char* name : {"North.tbk", "North.tbk-wal", "North.tbk-shm"}) std::filesystem::remove(folder.Path(name));
    Create(Describe(shape));
    model.emplace(Describe(shape));
    book = Open(options);
  }

  Text Bytes() { return folder.Read("North.tbk") + (folder.Has("North.tbk-wal") ? folder.Read("North.tbk-wal") : ""); }

  // Runs what must be refused, and sees that the file is as it was.
  template <typename Refused>
  void Refuses(Refused act) {
    const Text before = Bytes();
    RC_ASSERT_THROWS_AS(act(), Failure);
    RC_ASSERT(Bytes() == before);
  }

  void Reopen() {
    book.reset();
    book = Open(options);
  }

  BookDescription ChangedBy(const Step& step) const {
    BookDescription after = model->Description();
    const auto number = static_cast<Integer>(step.other % 12 + 1);
    const auto field = static_cast<Integer>(step.other % 12 * fields_at_once + 1);
    if (step.act == Act::kYears) {
      after.calendar.years = static_cast<Integer>(after.calendar.years + step.one % 3 - (step.other % 5 == 0 ? 1 : 0));
      after.calendar.years_in_use = static_cast<Integer>(step.other % std::max<int>(after.calendar.years, 1) + 1);
    } else if (step.field) {
      Change(after.fields, step, {field, "Field " + std::to_string(field), step.one % 2 == 0});
      for (Integer more = 1; step.act == Act::kAdd && more < fields_at_once; ++more) {
        after.fields.push_back({static_cast<Integer>(field + more), "", false});
      }
    } else {
      Change(after.accounts, step, {number * 10, "Code" + std::to_string(number), ""});
    }
    return after;
  }

  [[nodiscard]] bool MayBecome(const BookDescription& after) const {
    const auto sound = [&](const auto& rows, bool field) {
      std::set<Long> numbers;
      return std::ranges::all_of(rows, [&](const auto& row) {
        return !model->IsRetired(field, row.number) && numbers.insert(row.number).second;
      });
    };
    return after.calendar.years >= model->Description().calendar.years && sound(after.accounts, false) &&
           sound(after.fields, true);
  }

  void Grow(const BookDescription& after) {
    constexpr Integer kMostYears = 6;  // of the test, for its speed
    if (after.calendar.years > kMostYears) return;
    if (!MayBecome(after)) {
      Refuses([&] { book->Grow(after, "grow"); });
    } else if (after == model->Description()) {
      book->Grow(after, "nothing");
    } else {
      book->Grow(after, "grow");
      model->Grow(after);
    }
  }

  // The record that a step stands for; none where the book has no accounts or fields.
  std::optional<RecordKey> KeyOf(const Step& step, int offset) const {
    return KeyIn(model->Description(), step, offset);
  }
  static std::optional<RecordKey> KeyIn(const BookDescription& now, const Step& step, int offset) {
    if (now.accounts.empty() || now.fields.empty()) return std::nullopt;
    const std::vector<Date> dates = RecordDates(now);
    const auto account = static_cast<std::size_t>(step.one + offset) % now.accounts.size();
    const auto place = static_cast<std::size_t>(step.other + 7 * offset) % dates.size();
    return RecordKey{now.accounts[account].number, dates[place]};
  }
  Integer FieldOf(const Step& step, int offset) const { return FieldIn(model->Description(), step, offset); }
  static Integer FieldIn(const BookDescription& now, const Step& step, int offset) {
    const auto& fields = now.fields;
    return fields[static_cast<std::size_t>(step.one + step.other + offset) % fields.size()].number;
  }

  // `book` is written; the model as well where `keep` is true.
  void WriteSome(Book& written, const Step& step, int first, int end, bool keep) {
    for (int offset = first; offset < end; ++offset) {
      const RecordKey key = *KeyOf(step, offset);
      const Integer field = FieldOf(step, offset);
      const Double value = step.value * (1 + offset % 3);
      if (!written.ReadRecord(key.first, key.second)) throw Failure(FailureNumber::kInternal, "no such record");
      written.SetFieldValue(field, value);
      written.WriteRecord();
      if (keep) model->Write(key, field, value);
    }
  }

  void Import(const Step& step, JournalKind kind, int count) {
    if (!KeyOf(step, 0)) return;
    book->SetOperation(kind, "import");
    book->BeginRollback(kNoDate, kNoDate);
    model->Begin();
    const bool keep = true;
    WriteSome(*book, step, 0, count, keep);
    book->EndRollback();
  }

  // What was committed stays, in an entry that is never closed; what was not is gone.
  void KilledImport(const Step& step) {
    if (!KeyOf(step, 0)) return;
    book.reset();
    const int code = InAnotherProcess([&] {
      const auto killed = Open(options);
      killed->BeginRollback(kNoDate, kNoDate);
      const bool keep = false;
      WriteSome(*killed, step, 0, 3, keep);
      killed->Commit();
      // A small cache commits to make room.
      if (everything_fits) WriteSome(*killed, step, 3, 6, keep);
      _exit(0);
      return 0;
    });
    RC_ASSERT(code == 0);
    book = Open(options);
    model->Begin();
    for (int offset = 0; offset < 3; ++offset) {
      model->Write(*KeyOf(step, offset), FieldOf(step, offset), step.value * (1 + offset % 3));
    }
  }

  // Lists and figures in one step.
  void Apply(const Step& step) {
    constexpr std::array kActs = {Act::kAdd, Act::kEdit, Act::kMove, Act::kRemove, Act::kYears};
    Step changed = step;
    changed.act = kActs[static_cast<std::size_t>(step.other) % kActs.size()];
    BookDescription after = ChangedBy(changed);
    constexpr Integer kMostYears = 6;  // as above
    if (after.calendar.years > kMostYears) return;
    const BookDescription lists = after;
    std::map<std::pair<RecordKey, Integer>, Double> values;
    for (int offset = 0; offset < 3 && !after.accounts.empty() && !after.fields.empty() && after.calendar.years > 0;
         ++offset) {
      values[{*KeyIn(after, step, offset), FieldIn(after, step, offset)}] = step.value;
    }
    for (const auto& [place, value] : values) {
      after.values.push_back({place.first.first, place.first.second, place.second, value});
    }
    if (!MayBecome(after)) return Refuses([&] { book->Grow(after, "apply"); });
    book->Grow(after, "apply");
    model->Apply(lists, after.values);
  }

  void UndoNewest() {
    if (model->CanUndoNewest()) {
      Journal(*book).UndoNewest();
      model->UndoNewest();
    } else {
      Refuses([&] { Journal(*book).UndoNewest(); });
    }
  }
  void UndoOne(const Step& step) {
    if (model->Entries() == 0) return;
    const std::size_t index = static_cast<std::size_t>(step.one) % model->Entries();
    if (model->CanUndo(index)) {
      Journal(*book).Undo(model->IdOf(index));
      model->Undo(index);
    } else {
      Refuses([&] { Journal(*book).Undo(model->IdOf(index)); });
    }
  }

  void Do(const Step& step) {
    switch (step.act) {
      case Act::kImport:
        return Import(step, JournalKind::kImport, 12);
      case Act::kSet:
        return Import(step, JournalKind::kSet, 1);
      case Act::kKilledImport:
        return KilledImport(step);
      case Act::kAdd:
      case Act::kEdit:
      case Act::kMove:
      case Act::kRemove:
      case Act::kYears:
        return Grow(ChangedBy(step));
      case Act::kApply:
        return Apply(step);
      case Act::kUndoNewest:
        return UndoNewest();
      case Act::kUndoOne:
        return UndoOne(step);
      case Act::kReopen:
        return Reopen();
    }
  }

  void Compare() {
    RC_ASSERT(book->Description() == model->Description());
    RC_ASSERT(FiguresOf(*book) == model->Figures());
    RC_ASSERT(Journal(*book).Entries().size() == model->EntryCount());
    for (const auto& [key, value] : model->Figures()) {
      const auto& [account, date, field] = key;
      RC_ASSERT(book->ReadRecord(account, date));
      RC_ASSERT(book->FieldValue(field) == value);
    }
  }

  void CheckSteps() {
    EXPECT_TRUE(rc::check([this] {
      const Shape shape = {*rc::gen::element(CalendarKind::kMonths, CalendarKind::kWeeks, CalendarKind::k445,
                                             CalendarKind::k13x4, CalendarKind::kCustom),
                           *rc::gen::element(kDayLevel, kWeekLevel, kPeriodLevel)};
      const auto steps = *rc::gen::container<std::vector<Step>>(AnyStep());
      Start(shape);
      for (const Step& step : steps) {
        Do(step);
        RC_ASSERT(book->Description() == model->Description());
      }
      Compare();
      Reopen();
      Compare();
      book.reset();
      RC_ASSERT(engine::CheckBook(BookPath(), true).findings.empty());
      book = Open(options);
      while (model->CanUndoNewest()) UndoNewest();
      Compare();
      book.reset();
    }));
  }

  engine::BookOptions options;
  bool everything_fits = true;
  int fields_at_once = 1;  // that come with a step that adds one
  std::optional<Model> model;
  std::unique_ptr<Book> book;
};

TEST_F(GrowthModelTest, IsWhatTheModelSaysWhenEverythingFits) {
  CheckSteps();
}

// With the first fields that come rows are so long that all chunks are stored anew, and with later ones again.
TEST_F(GrowthModelTest, IsWhatTheModelSaysWhereChunksAreStoredAnew) {
  fields_at_once = 25;
  CheckSteps();
}

TEST_F(GrowthModelTest, IsWhatTheModelSaysWithACacheOfTwoChunks) {
  options.cache_bytes = 1;
  everything_fits = false;
  CheckSteps();
}

}  // namespace
}  // namespace tallybook::testing
