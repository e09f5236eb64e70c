// Figures that were written and kept apart: against a plain map, with a cache that holds next to nothing.
#include <gmock/gmock.h>
#include <malloc.h>
#include <map>
#include <rapidcheck.h>
#include <set>
#include <tuple>
#include <vector>

#include "tallybook/preview/OverlayFigures.h"

namespace tallybook::preview {
namespace {

constexpr std::size_t kAccounts = 5;
constexpr std::size_t kRecords = 200;
constexpr std::size_t kColumns = 7;
constexpr std::size_t kTinyCache = 500;

using Key = std::tuple<std::size_t, std::size_t, std::size_t>;  // account, record, column
using Record = std::pair<std::size_t, std::size_t>;

// What the database below holds: some figure for each place.
Double StoredAt(std::size_t account, std::size_t record, std::size_t column) {
  return static_cast<Double>(account * 10'000 + record * 10 + column);
}

class Model {
 public:
  explicit Model(std::size_t cache_bytes) : figures_(kAccounts, kRecords, cache_bytes) {}

  void Write(std::size_t account, std::size_t record, std::size_t column, Double value) {
    figures_.Select(account, record);
    figures_.Touch();
    const Key key{account, record, column};
    const Double old = now_.contains(key) ? now_[key] : StoredAt(account, record, column);
    const Double told = figures_.Now(column);
    RC_ASSERT((IsUnwritten(told) ? !now_.contains(key) : told == old));
    figures_.Put(column, old, value);
    before_.emplace(key, old);
    now_[key] = value;
    touched_now_.insert({account, record});
    touched_.insert({account, record});
  }
  void BeginRound() {
    figures_.BeginRound();
    before_.clear();
    touched_now_.clear();
  }

  void CheckNow() {
    for (std::size_t account = 0; account < kAccounts; ++account) {
      for (std::size_t record = 0; record < kRecords; ++record) {
        figures_.Select(account, record);
        RC_ASSERT(figures_.IsTouched() == touched_.contains({account, record}));
        for (std::size_t column = 0; column < kColumns; ++column) {
          const auto found = now_.find({account, record, column});
          const Double told = figures_.Now(column);
          RC_ASSERT((found == now_.end() ? IsUnwritten(told) : told == found->second));
        }
      }
    }
  }

  void CheckRound() {
    std::vector<Record> visited;
    figures_.VisitRound([&](const OverlayFigures::Row& row) {
      visited.emplace_back(row.account, row.record);
      for (std::size_t column = 0; column < row.before.size(); ++column) {
        const auto found = before_.find({row.account, row.record, column});
        const Double told = row.before[column];
        RC_ASSERT((found == before_.end() ? IsUnwritten(told) : told == found->second));
      }
      return true;
    });
    RC_ASSERT(visited == std::vector<Record>(touched_now_.begin(), touched_now_.end()));
  }

  void CheckAll() {
    std::vector<Record> visited;
    std::size_t seen = 0;
    figures_.VisitAll([&](const OverlayFigures::Row& row) {
      visited.emplace_back(row.account, row.record);
      for (std::size_t column = 0; column < row.now.size(); ++column) {
        if (IsUnwritten(row.now[column])) continue;
        ++seen;
        RC_ASSERT(row.now[column] == now_.at({row.account, row.record, column}));
        if (row.net) RC_ASSERT(row.before[column] == StoredAt(row.account, row.record, column));
      }
      return true;
    });
    RC_ASSERT(visited == std::vector<Record>(touched_.begin(), touched_.end()));
    RC_ASSERT(seen == now_.size());
  }

 private:
  OverlayFigures figures_;
  std::map<Key, Double> now_;
  std::map<Key, Double> before_;
  std::set<Record> touched_;
  std::set<Record> touched_now_;
};

// Whole numbers, hundredths, and what is neither.
Double AnyFigure() {
  return *rc::gen::element(0.0, 7.0, -0.01, 12.34, 1.0 / 3, 1e12, -2147483646.0, 21474836.46, -21474836.48);
}

void ActAtRandom(Model& model) {
  const int acts = *rc::gen::inRange(1, 200);
  for (int act = 0; act < acts; ++act) {
    const auto account = *rc::gen::inRange<std::size_t>(0, kAccounts);
    const auto record = *rc::gen::inRange<std::size_t>(0, kRecords);
    const int choice = *rc::gen::inRange(0, 20);
    if (choice == 0) {
      model.BeginRound();
    } else if (choice < 5) {
      for (std::size_t next = record; next < std::min(record + 40, kRecords); ++next)
        model.Write(account, next, 2, AnyFigure());
    } else {
      model.Write(account, record, *rc::gen::inRange<std::size_t>(0, kColumns), AnyFigure());
    }
  }
  model.CheckNow();
  model.CheckRound();
  model.CheckAll();
}

TEST(OverlayFigures, HoldWhatAPlainMapHoldsWhateverFitsIntoMemory) {
  EXPECT_TRUE(rc::check([] {
    Model model(*rc::gen::element<std::size_t>(1, kTinyCache, std::size_t{1} << 20));
    ActAtRandom(model);
  }));
}

TEST(OverlayFigures, HoldWhatTheyAreNowWhereNothingElseIsKept) {
  EXPECT_TRUE(rc::check([] {
    const auto cache = *rc::gen::element<std::size_t>(1, kTinyCache, std::size_t{1} << 20);
    OverlayFigures figures(kAccounts, kRecords, cache, OverlayFigures::Kept::kNow);
    std::map<Key, Double> model;
    const int acts = *rc::gen::inRange(1, 200);
    for (int act = 0; act < acts; ++act) {
      const Key key{*rc::gen::inRange<std::size_t>(0, kAccounts), *rc::gen::inRange<std::size_t>(0, kRecords),
                    *rc::gen::inRange<std::size_t>(0, kColumns)};
      const auto [account, record, column] = key;
      figures.Select(account, record);
      const auto found = model.find(key);
      const Double told = figures.Now(column);
      RC_ASSERT((found == model.end() ? IsUnwritten(told) : told == found->second));
      figures.Touch();
      figures.Put(column, model[key] = AnyFigure());
    }
    std::size_t seen = 0;
    figures.VisitAll([&](const OverlayFigures::Row& row) {
      RC_ASSERT(row.before.empty());
      for (std::size_t column = 0; column < row.now.size(); ++column) {
        if (IsUnwritten(row.now[column])) continue;
        ++seen;
        RC_ASSERT(row.now[column] == model.at({row.account, row.record, column}));
      }
      return true;
    });
    RC_ASSERT(seen == model.size());
  }));
}

TEST(OverlayFigures, TakeNoMoreMemoryThanTheyMay) {
  constexpr std::size_t kMany = 100'000;
  constexpr std::size_t kCache = std::size_t{1} << 20;
  constexpr std::size_t kBesides = std::size_t{2} << 20;  // what tells of chunks that stand in the file
  const std::size_t before = ::mallinfo2().uordblks;
  OverlayFigures figures(1, kMany, kCache);
  for (std::size_t record = 0; record < kMany; ++record) {
    figures.Select(0, record);
    figures.Touch();
    for (std::size_t column = 0; column < kColumns; ++column) figures.Put(column, 0, 0.5);
  }
  EXPECT_LT(::mallinfo2().uordblks, before + kCache + kBesides);
  std::size_t seen = 0;
  figures.VisitRound([&](const OverlayFigures::Row& row) { return ++seen == row.record + 1; });
  EXPECT_EQ(seen, kMany);
  EXPECT_LT(::mallinfo2().uordblks, before + kCache + kBesides);
}

TEST(OverlayFigures, AVisitEndsWhereItIsTold) {
  OverlayFigures figures(kAccounts, kRecords, kTinyCache);
  for (std::size_t record = 0; record < 10; ++record) {
    figures.Select(1, record);
    figures.Touch();
  }
  int visited = 0;
  figures.VisitAll([&](const OverlayFigures::Row&) { return ++visited < 3; });
  EXPECT_EQ(visited, 3);
}

TEST(OverlayFigures, ATouchedRecordNeedsNoFigures) {
  OverlayFigures figures(kAccounts, kRecords, kTinyCache);
  figures.Select(4, kRecords - 1);
  EXPECT_FALSE(figures.IsTouched());
  figures.Touch();
  EXPECT_TRUE(figures.IsTouched());
  figures.VisitRound([](const OverlayFigures::Row& row) {
    EXPECT_TRUE(row.now.empty());
    return true;
  });
}

}  // namespace
}  // namespace tallybook::preview
