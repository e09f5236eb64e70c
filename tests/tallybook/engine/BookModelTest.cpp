// A book against a plain map of its figures: whatever is done to the book is done to the map, and both must tell the
// same.

#include <algorithm>
#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <map>
#include <memory>
#include <optional>
#include <rapidcheck.h>
#include <utility>
#include <vector>

#include "tallybook/engine/Journal.h"
#include "tests/tallybook/engine/BookFixture.h"

namespace tallybook::testing {
namespace {

using engine::Book;
using engine::BookDescription;
using engine::BookOptions;
using engine::Journal;
using engine::JournalKind;

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
    entries_.back().images.emplace(key, before);
    Set(key, row);
  }
  void BeginCommand() {
    EndOwn();
    in_command_ = true;
    ++command_;
  }
  void Begin() { Open(true); }
  void End() { open_ = false; }
  void Close() {
    open_ = false;
    in_command_ = false;
  }
  void EndOwn() {
    if (open_ && !entries_.back().keeps_images) open_ = false;
  }

  // `choice` is any number; it stands for one of the entries.
  [[nodiscard]] bool IsEmpty() const { return entries_.empty(); }
  [[nodiscard]] Long IdAt(int choice) const { return entries_[IndexAt(choice)].id; }
  [[nodiscard]] bool CanUndoNewest() const {
    return !entries_.empty() && std::all_of(entries_.begin(), entries_.end(), [&](const Entry& entry) {
      return entry.command != entries_.back().command || entry.keeps_images;
    });
  }
  [[nodiscard]] bool CanUndo(int choice) const {
    const std::size_t index = IndexAt(choice);
    if (!entries_[index].keeps_images) return false;
    for (std::size_t later = index + 1; later < entries_.size(); ++later) {
      if (entries_[later].keeps_images || ShareRecords(entries_[index], entries_[later])) return false;
    }
    return true;
  }
  void UndoNewest() {
    const int command = entries_.back().command;
    while (!entries_.empty() && entries_.back().command == command) UndoAt(entries_.size() - 1);
  }
  void Undo(int choice) { UndoAt(IndexAt(choice)); }
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
    bool keeps_images = true;
    std::map<RecordKey, Row> images;  // of one that keeps none its keys count
  };

  [[nodiscard]] std::size_t IndexAt(int choice) const { return static_cast<std::size_t>(choice) % entries_.size(); }
  static bool ShareRecords(const Entry& one, const Entry& other) {
    return std::any_of(one.images.begin(), one.images.end(),
                       [&](const auto& image) { return other.images.contains(image.first); });
  }
  void Open(bool keeps_images) {
    if (!in_command_) ++command_;
    entries_.push_back({++last_id_, command_, keeps_images, {}});
    open_ = true;
  }
  void UndoAt(std::size_t index) {
    open_ = false;
    for (const auto& [key, row] : entries_[index].images) Set(key, row);
    entries_.erase(entries_.begin() + static_cast<std::ptrdiff_t>(index));
    ++last_id_;
  }
  void Set(const RecordKey& key, const Row& row) {
    if (row.empty()) {
      rows_.erase(key);
    } else {
      rows_[key] = row;
    }
  }

  std::map<RecordKey, Row> rows_;
  std::vector<Entry> entries_;  // that are not undone, and are no undos
  Long last_id_ = 0;
  int command_ = 0;
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
    std::filesystem::copy_file(std::filesystem::path(SAMPLES) / "book-v1.tbk", folder.Path("empty"),
                               std::filesystem::copy_options::overwrite_existing);
    std::filesystem::copy_file(folder.Path("empty"), BookPath());
    const auto sample = OpenToRead();
    start = Model(FiguresOf(*sample), static_cast<Long>(Journal(*sample).Entries().size()));
  }

  RecordKey KeyOf(const Step& step) const {
    return {book->AccountNumber(static_cast<Integer>(step.account + 1)), Day(2003, 1, 1) + step.day};
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

  // What cannot be taken back is refused, and nothing changes.
  void UndoNewest() {
    if (model.IsEmpty()) return;
    if (model.CanUndoNewest()) {
      Journal(*book).UndoNewest();
      model.UndoNewest();
    } else {
      RC_ASSERT_THROWS_AS(Journal(*book).UndoNewest(), Failure);
    }
  }
  void UndoOne(int choice) {
    if (model.IsEmpty()) return;
    if (model.CanUndo(choice)) {
      Journal(*book).Undo(model.IdAt(choice));
      model.Undo(choice);
    } else {
      RC_ASSERT_THROWS_AS(Journal(*book).Undo(model.IdAt(choice)), Failure);
    }
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
        model.BeginCommand();
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
        model.BeginCommand();
        book->BeginRollback(key.second, key.second);
        model.Begin();
        WriteOne(key, step);
        book->EndRollback();
        model.End();
        break;
      case Act::kUndoNewest:
        UndoNewest();
        break;
      case Act::kUndoOne:
        UndoOne(step.day);
        break;
      case Act::kCompare:
        RC_ASSERT(FiguresOf(*book) == model.Figures());
        break;
    }
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
      while (model.CanUndoNewest()) {
        UndoNewest();
        RC_ASSERT(FiguresOf(*book) == model.Figures());
      }
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
