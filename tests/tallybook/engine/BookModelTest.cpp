// A book against a plain map of its figures: whatever is done to the book is done to the map, and both must tell the
// same.

#include <algorithm>
#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <iterator>
#include <map>
#include <memory>
#include <optional>
#include <rapidcheck.h>
#include <set>
#include <utility>
#include <vector>

#include "tallybook/engine/Journal.h"
#include "tests/tallybook/engine/BookFixture.h"
#include "tests/tallybook/engine/SampleBook.h"

namespace tallybook::testing {
namespace {

using engine::Book;
using engine::BookDescription;
using engine::BookOptions;
using engine::Journal;
using engine::JournalKind;
using engine::UndoOutcome;
using engine::UndoRequest;
using engine::UndoWay;

constexpr int kAccounts = 4;
constexpr int kFields = 250;  // records of 2,000 bytes, so that a chunk holds eight of them
constexpr int kDays = 60;

BookDescription ModelDescription() {
  BookDescription description = ShopDescription();
  description.accounts.clear();
  description.fields.clear();
  for (int index = 1; index <= kAccounts; ++index) {
    description.accounts.push_back({100 - 10 * index, "Code " + std::to_string(index), ""});
  }
  for (int index = 1; index <= kFields; ++index)
    description.fields.push_back({static_cast<Integer>(3 * index), "", false});
  return description;
}

using RecordKey = std::pair<Long, Date>;
using Row = std::map<Integer, Double>;  // non-zero figures by field number

class Model {
 public:
  Model() = default;
  // Of a book that has figures and entries already; those entries are left alone.
  Model(const FigureMap& figures, Long entries) : last_id_(entries) {
    for (const auto& [key, value] : figures) rows_[{std::get<0>(key), std::get<1>(key)}][std::get<2>(key)] = value;
  }

  [[nodiscard]] Row RowOf(const RecordKey& key) const {
    const auto found = rows_.find(key);
    return found == rows_.end() ? Row{} : found->second;
  }
  // What is written with no entry open gets one that keeps no images.
  void Write(const RecordKey& key, const Row& row) {
    const Row before = RowOf(key);
    if (before == row) return;
    if (!open_) Open(false);
    Write(entries_.back(), key, row);
  }
  void BeginCommand(JournalKind kind) {
    EndOwn();
    in_command_ = true;
    kind_ = kind;
    command_ = ++last_command_;
  }
  void Begin() { Open(true); }
  void End() { open_ = false; }
  void Close() {
    open_ = false;
    in_command_ = false;
    kind_ = JournalKind::kImport;
  }
  void EndOwn() {
    if (open_ && !entries_.back().keeps_images) open_ = false;
  }

  // `choice` is any number; it stands for one of the entries.
  [[nodiscard]] bool IsEmpty() const { return entries_.empty(); }
  [[nodiscard]] Long IdAt(int choice) const { return entries_[IndexAt(choice)].id; }
  [[nodiscard]] std::set<Long> UndoneIds() const {
    std::set<Long> ids;
    for (const Entry& entry : entries_) {
      if (entry.is_undone) ids.insert(entry.id);
    }
    return ids;
  }
  // Of the newest command of which anything is left, what is left, newest first; empty where there is none.
  [[nodiscard]] std::vector<std::size_t> Newest() const {
    std::vector<std::size_t> newest;
    for (std::size_t index = entries_.size(); index-- > 0;) {
      if (entries_[index].is_undone || entries_[index].undoes != 0) continue;
      if (newest.empty() || entries_[index].command == entries_[newest.front()].command) newest.push_back(index);
    }
    return newest;
  }
  [[nodiscard]] std::vector<std::size_t> One(int choice) const { return {IndexAt(choice)}; }

  // Undoes them in this order; false, with all as it was, where that is refused. An entry of the book's own ends with
  // the attempt.
  bool Undo(const std::vector<std::size_t>& asked, UndoWay way) {
    if (asked.empty()) return false;
    for (const std::size_t index : asked) {
      if (entries_[index].is_undone || !entries_[index].keeps_images) return false;
      if (way == UndoWay::kReverse && entries_[index].kind != JournalKind::kImport) return false;
    }
    EndOwn();
    Model after = *this;
    ++after.last_command_;  // the undo is a command of its own; one that it came in the midst of goes on behind it
    for (const std::size_t index : asked) {
      if (!after.UndoAt(index, way)) return false;
    }
    after.open_ = false;
    *this = after;
    return true;
  }
  [[nodiscard]] Long LastId() const { return last_id_; }

  [[nodiscard]] FigureMap Figures() const {
    FigureMap figures;
    for (const auto& [key, row] : rows_) {
      for (const auto& [field, value] : row) figures[{key.first, key.second, field}] = value;
    }
    return figures;
  }

 private:
  struct Entry {
    Long id = 0;
    int command = 0;
    JournalKind kind = JournalKind::kImport;
    Long undoes = 0;
    bool keeps_images = true;
    bool is_undone = false;
    std::map<RecordKey, Row> before;  // records that were written, and what they were
    std::map<RecordKey, Row> left;    // and what they were behind it
  };

  [[nodiscard]] std::size_t IndexAt(int choice) const { return static_cast<std::size_t>(choice) % entries_.size(); }
  [[nodiscard]] Entry& ById(Long id) {
    return *std::find_if(entries_.begin(), entries_.end(), [&](const Entry& entry) { return entry.id == id; });
  }
  void Open(bool keeps_images) {
    if (!in_command_) command_ = ++last_command_;
    Entry entry;
    entry.id = ++last_id_;
    entry.command = command_;
    entry.kind = kind_;
    entry.keeps_images = keeps_images;
    entries_.push_back(entry);
    open_ = true;
  }
  void Write(Entry& entry, const RecordKey& key, const Row& row) {
    entry.before.emplace(key, RowOf(key));
    entry.left[key] = row;
    Set(key, row);
  }
  static Double In(const Row& row, Integer field) {
    const auto found = row.find(field);
    return found == row.end() ? 0 : found->second;
  }
  // What the next entry to write the record kept tells what this one left there.
  [[nodiscard]] bool IsLeftKnown(std::size_t index, const RecordKey& key) const {
    for (std::size_t later = index + 1; later < entries_.size(); ++later) {
      if (entries_[later].before.contains(key)) return entries_[later].keeps_images;
    }
    return true;
  }
  bool UndoAt(std::size_t index, UndoWay way) {
    Entry undo;
    undo.id = ++last_id_;
    undo.command = last_command_;
    undo.kind = JournalKind::kUndo;
    undo.undoes = entries_[index].id;
    for (const auto& [key, before] : entries_[index].before) {
      const Row left = entries_[index].left[key];
      const bool known = IsLeftKnown(index, key);
      if (!known && way == UndoWay::kReverse) return false;
      const Row now = RowOf(key);
      Row becomes;
      for (Integer field = 0; field <= 3 * kFields; ++field) {
        const Double was = In(before, field);
        const Double is = In(now, field);
        Double figure = is;
        if (known && In(left, field) == was) {
          figure = is;
        } else if (way == UndoWay::kReverse) {
          figure = is == In(left, field) ? was : is - (In(left, field) - was);
        } else if (is == was || (known && is == In(left, field)) || way == UndoWay::kForce) {
          figure = was;
        } else if (way == UndoWay::kExact) {
          return false;
        }
        if (figure != 0) becomes[field] = figure;
      }
      if (becomes != now) Write(undo, key, becomes);
    }
    entries_.push_back(undo);
    MarkUndone(entries_[index].id);
    return true;
  }
  void MarkUndone(Long id) {
    Entry& entry = ById(id);
    if (std::exchange(entry.is_undone, true) || entry.undoes == 0) return;
    MarkStanding(entry.undoes);
  }
  void MarkStanding(Long id) {
    Entry& entry = ById(id);
    if (!std::exchange(entry.is_undone, false) || entry.undoes == 0) return;
    MarkUndone(entry.undoes);
  }
  void Set(const RecordKey& key, const Row& row) {
    if (row.empty()) {
      rows_.erase(key);
    } else {
      rows_[key] = row;
    }
  }

  std::map<RecordKey, Row> rows_;
  std::vector<Entry> entries_;
  Long last_id_ = 0;
  int last_command_ = 0;
  int command_ = 0;  // the one that goes on
  JournalKind kind_ = JournalKind::kImport;
  bool in_command_ = false;
  bool open_ = false;
};

enum class Act {
  kWrite,
  kWriteRun,
  kForget,
  kRead,
  kCommit,
  kReopen,
  kCommand,
  kBegin,
  kEnd,
  kSet,
  kUndoNewest,
  kUndoOne,
  kCompare
};

struct Step {
  Act act;
  int account;
  int day;
  int field;
  Double value;
};

void showValue(const Step& step, std::ostream& out) {
  out << "act " << static_cast<int>(step.act) << " account " << step.account << " day " << step.day << " field "
      << step.field << " value " << step.value;
}

rc::Gen<Step> AnyStep() {
  return rc::gen::construct<Step>(rc::gen::weightedElement<Act>({{30, Act::kWrite},
                                                                 {10, Act::kWriteRun},
                                                                 {3, Act::kForget},
                                                                 {15, Act::kRead},
                                                                 {4, Act::kCommit},
                                                                 {1, Act::kReopen},
                                                                 {4, Act::kBegin},
                                                                 {3, Act::kEnd},
                                                                 {2, Act::kCommand},
                                                                 {3, Act::kSet},
                                                                 {3, Act::kUndoNewest},
                                                                 {3, Act::kUndoOne},
                                                                 {2, Act::kCompare}}),
                                  rc::gen::inRange(0, kAccounts), rc::gen::inRange(0, kDays),
                                  rc::gen::inRange(0, kFields),
                                  rc::gen::element<Double>(0, 0, 1, -2.5, 12.34, 1e10, 0.1 + 0.2, -1e-300));
}

class BookModelTest : public BookFixture {
 protected:
  void SetUp() override {
    Create(ModelDescription());
    std::filesystem::rename(BookPath(), folder.Path("empty"));
  }

  void Start() {
    book.reset();  // of a walk that failed
    std::filesystem::copy_file(folder.Path("empty"), BookPath(), std::filesystem::copy_options::overwrite_existing);
    model = start;
    book = Open(options);
  }
  // The walk begins in a book of an older format, so that it is brought up to date somewhere on the way.
  void StartFromSample() {
    std::filesystem::copy_file(tallybook::testing::SampleBook("book-v1.tbk"), folder.Path("empty"),
                               std::filesystem::copy_options::overwrite_existing);
    std::filesystem::copy_file(folder.Path("empty"), BookPath());
    const auto sample = OpenToRead();
    start = Model(FiguresOf(*sample), static_cast<Long>(Journal(*sample).Entries().size()));
  }

  RecordKey KeyOf(const Step& step) const {
    return {book->AccountNumber(static_cast<Integer>(step.account + 1)), Day(2003, 1, 1) + step.day};
  }

  static UndoWay WayOf(const Step& step) {
    constexpr UndoWay kWays[] = {UndoWay::kExact, UndoWay::kExact, UndoWay::kSkip, UndoWay::kForce, UndoWay::kReverse};
    return kWays[static_cast<std::size_t>(step.field) % std::size(kWays)];
  }

  void WriteOne(const RecordKey& key, const Step& step) {
    const Integer field = book->FieldNumber(static_cast<Integer>(step.field % book->NumFields() + 1));
    RC_ASSERT(book->ReadRecord(key.first, key.second));
    book->SetFieldValue(field, step.value);
    RC_ASSERT(book->WriteRecord());
    Row row = model.RowOf(key);
    row[field] = step.value;
    if (step.value == 0) row.erase(field);
    model.Write(key, row);
  }

  // What cannot be taken back is refused, and nothing changes. A look finds out the same, and changes nothing either.
  void Undo(const std::vector<std::size_t>& asked, std::optional<Long> id, UndoWay way) {
    UndoRequest request;
    request.id = id;
    request.way = way;
    request.only_look = true;
    const std::optional<UndoOutcome> look = TakeBack(request);
    request.only_look = false;
    const std::optional<UndoOutcome> outcome = TakeBack(request);
    const bool is_done = outcome && outcome->done;
    RC_ASSERT(is_done == model.Undo(asked, way));
    RC_ASSERT(look.has_value() == outcome.has_value());
    if (!outcome) return;
    RC_ASSERT(!look->done);
    RC_ASSERT(look->changed_since == outcome->changed_since);
    RC_ASSERT(look->figures == outcome->figures);
    const bool is_free = way != UndoWay::kExact || outcome->changed_since == 0;
    RC_ASSERT(is_done == is_free);
  }
  std::optional<UndoOutcome> TakeBack(const UndoRequest& request) {
    try {
      return Journal(*book).TakeBack(request);
    } catch (const Failure& failure) {
      RC_ASSERT(failure.Number() == FailureNumber::kInvalidArgument);
      return std::nullopt;
    }
  }
  void UndoNewest(UndoWay way) {
    const bool would_reach_the_sample = model.Newest().empty() && start.LastId() != 0;
    if (would_reach_the_sample) return;
    Undo(model.Newest(), std::nullopt, way);
  }

  void Do(const Step& step) {
    const RecordKey key = KeyOf(step);
    switch (step.act) {
      case Act::kWrite:
        WriteOne(key, step);
        break;
      case Act::kWriteRun:
        for (int day = 0; day < kDays; day += 7) WriteOne({key.first, Day(2003, 1, 1) + day}, step);
        break;
      case Act::kForget:
        RC_ASSERT(book->ReadRecord(key.first, key.second));
        book->SetFieldValue(book->FieldNumber(1), 999);
        break;
      case Act::kRead: {
        RC_ASSERT(book->ReadRecord(key.first, key.second));
        const Row row = model.RowOf(key);
        for (Integer position = 1; position <= book->NumFields(); ++position) {
          const auto held = row.find(book->FieldNumber(position));
          RC_ASSERT(book->FieldValue(book->FieldNumber(position)) == (held == row.end() ? 0 : held->second));
        }
        break;
      }
      case Act::kCommit:
        book->Commit();
        break;
      case Act::kReopen:
        book.reset();
        book = Open(options);
        model.Close();
        break;
      case Act::kCommand:
        book->SetOperationName("command");
        model.BeginCommand(JournalKind::kImport);
        break;
      case Act::kBegin:
        book->BeginRollback(key.second, key.second);
        model.Begin();
        break;
      case Act::kEnd:
        book->EndRollback();
        model.End();
        break;
      case Act::kSet:
        book->SetOperation(JournalKind::kSet, "set");
        model.BeginCommand(JournalKind::kSet);
        book->BeginRollback(key.second, key.second);
        model.Begin();
        WriteOne(key, step);
        book->EndRollback();
        model.End();
        break;
      case Act::kUndoNewest:
        UndoNewest(WayOf(step));
        break;
      case Act::kUndoOne:
        if (!model.IsEmpty()) Undo(model.One(step.day), model.IdAt(step.day), WayOf(step));
        break;
      case Act::kCompare:
        RC_ASSERT(FiguresOf(*book) == model.Figures());
        break;
    }
  }

  void CompareStates() {
    std::set<Long> undone;
    for (const engine::JournalEntry& entry : Journal(*book).Entries()) {
      if (entry.state == engine::JournalState::kUndone && entry.id > start.LastId()) undone.insert(entry.id);
    }
    RC_ASSERT(undone == model.UndoneIds());
  }

  void CheckSteps() {
    EXPECT_TRUE(rc::check([this] {
      const auto steps = *rc::gen::container<std::vector<Step>>(AnyStep());
      Start();
      for (const Step& step : steps) Do(step);
      RC_ASSERT(FiguresOf(*book) == model.Figures());
      book.reset();
      book = Open(options);
      RC_ASSERT(FiguresOf(*book) == model.Figures());
      model.Close();
      RC_ASSERT(Journal(*book).Entries().size() == static_cast<std::size_t>(model.LastId()));
      CompareStates();
      while (!model.Newest().empty() && model.Undo(model.Newest(), UndoWay::kForce)) {
        UndoRequest request;
        request.way = UndoWay::kForce;
        RC_ASSERT(Journal(*book).TakeBack(request).done);
        RC_ASSERT(FiguresOf(*book) == model.Figures());
      }
      CompareStates();
      book.reset();
    }));
  }

  BookOptions options;
  Model start;
  Model model;
  std::unique_ptr<Book> book;
};

TEST_F(BookModelTest, IsAMapOfFiguresWithACacheOfTwoChunks) {
  options.cache_bytes = 1;
  CheckSteps();
}

TEST_F(BookModelTest, IsAMapOfFiguresWithACacheOfSomeChunks) {
  options.cache_bytes = 10 * 2'000;
  CheckSteps();
}

TEST_F(BookModelTest, IsAMapOfFiguresWhenItBeginsInAnOlderFormat) {
  StartFromSample();
  options.cache_bytes = 10 * 2'000;
  CheckSteps();
}

TEST_F(BookModelTest, IsAMapOfFiguresWhenEverythingFits) {
  CheckSteps();
}

}  // namespace
}  // namespace tallybook::testing
