// A book against a plain map of its figures: whatever is done to the book is done to the map, and both must tell the
// same.

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
  [[nodiscard]] Row RowOf(const RecordKey& key) const {
    const auto found = rows_.find(key);
    return found == rows_.end() ? Row{} : found->second;
  }
  void Write(const RecordKey& key, const Row& row) {
    const Row before = RowOf(key);
    if (before == row) return;
    if (open_) entries_.back().images.emplace(key, before);
    Set(key, row);
  }
  void Begin() {
    entries_.push_back({});
    open_ = true;
  }
  void End() { open_ = false; }
  [[nodiscard]] bool CanUndo() const { return !entries_.empty(); }
  void Undo() {
    open_ = false;
    for (const auto& [key, row] : entries_.back().images) Set(key, row);
    entries_.pop_back();
  }
  [[nodiscard]] FigureMap Figures() const {
    FigureMap figures;
    for (const auto& [key, row] : rows_) {
      for (const auto& [field, value] : row) figures[{key.first, key.second, field}] = value;
    }
    return figures;
  }

 private:
  struct Entry {
    std::map<RecordKey, Row> images;
  };

  void Set(const RecordKey& key, const Row& row) {
    if (row.empty()) {
      rows_.erase(key);
    } else {
      rows_[key] = row;
    }
  }

  std::map<RecordKey, Row> rows_;
  std::vector<Entry> entries_;
  bool open_ = false;
};

enum class Act { kWrite, kWriteRun, kForget, kRead, kCommit, kReopen, kBegin, kEnd, kUndo, kCompare };

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
                                                                 {3, Act::kUndo},
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
    std::filesystem::copy_file(folder.Path("empty"), BookPath(), std::filesystem::copy_options::overwrite_existing);
    model = Model();
    book = Open(options);
  }

  RecordKey KeyOf(const Step& step) const {
    return {book->AccountNumber(static_cast<Integer>(step.account + 1)), Day(2003, 1, 1) + step.day};
  }

  void WriteOne(const RecordKey& key, const Step& step) {
    const Integer field = book->FieldNumber(static_cast<Integer>(step.field + 1));
    RC_ASSERT(book->ReadRecord(key.first, key.second));
    book->SetFieldValue(field, step.value);
    RC_ASSERT(book->WriteRecord());
    Row row = model.RowOf(key);
    row[field] = step.value;
    if (step.value == 0) row.erase(field);
    model.Write(key, row);
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
        for (Integer position = 1; position <= kFields; ++position) {
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
        model.End();
        break;
      case Act::kBegin:
        book->BeginRollback(key.second, key.second);
        model.Begin();
        break;
      case Act::kEnd:
        book->EndRollback();
        model.End();
        break;
      case Act::kUndo:
        if (!model.CanUndo()) break;
        Journal(*book).Undo();
        model.Undo();
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
      while (model.CanUndo()) {
        Journal(*book).Undo();
        model.Undo();
        RC_ASSERT(FiguresOf(*book) == model.Figures());
      }
      book.reset();
    }));
  }

  BookOptions options;
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

TEST_F(BookModelTest, IsAMapOfFiguresWhenEverythingFits) {
  CheckSteps();
}

}  // namespace
}  // namespace tallybook::testing
