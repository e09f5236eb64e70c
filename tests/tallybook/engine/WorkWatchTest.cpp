// Long work that is watched: it tells how far it is, and whatever moment it is cancelled at, nothing is left of it.
#include <algorithm>
#include <filesystem>
#include <functional>
#include <map>
#include <vector>

#include "tallybook/engine/BookBackup.h"
#include "tallybook/engine/BookCheck.h"
#include "tallybook/engine/BookCompact.h"
#include "tallybook/engine/BookHold.h"
#include "tallybook/engine/BookSalvage.h"
#include "tallybook/engine/Database.h"
#include "tests/tallybook/engine/BookFixture.h"

namespace tallybook::testing {
namespace {

using engine::WorkCancelled;
using engine::WorkPart;
using engine::WorkWatch;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

// Cancels when it has been asked so many times.
class CountingWatch final : public WorkWatch {
 public:
  static constexpr int kNever = -1;
  explicit CountingWatch(int asks_before_cancel = kNever) : left_(asks_before_cancel) {}

  void Done(Single fraction) override { told.push_back(fraction); }
  [[nodiscard]] bool IsCancelled() override {
    if (left_ > 0) --left_;
    return left_ == 0;
  }

  std::vector<Single> told;

 private:
  int left_;
};

class WorkWatchTest : public BookFixture {
 protected:
  void SetUp() override {
    const auto book = CreateAndOpen();
    book->BeginRollback(Day(2003, 1, 1), Day(2004, 12, 31));
    for (int day = 0; day < 731; ++day) {
      for (const Long account : {Long{101}, Long{205}, Long{7}})
        Put(*book, account, Day(2003, 1, 1) + day, 1, day / 7.0);
    }
    book->EndRollback();
    book->BeginRollback(Day(2003, 1, 1), Day(2004, 12, 31));
    for (int day = 0; day < 700; ++day) Put(*book, 101, Day(2003, 1, 1) + day, 1, 0);
    book->EndRollback();
    figures = FiguresOf(*book);
    book->Close();
    folder.Write("TBQDX1.North", "a definition");
  }
  std::map<Text, std::string> Files() const {
    std::map<Text, std::string> files;
    for (const auto& entry : std::filesystem::directory_iterator(folder.Path())) {
      const Text name = entry.path().filename().string();
      files[name] = folder.Read(name);
    }
    return files;
  }

  using Work = std::function<void(WorkWatch& watch)>;
  // Cancels at each moment that the work asks, up to its end.
  void ExpectNothingLeftOf(const Work& work) {
    const auto before = Files();
    constexpr int kMostAsks = 1000;
    for (int asks = 1; asks < kMostAsks; ++asks) {
      CountingWatch watch(asks);
      try {
        work(watch);
        EXPECT_GT(asks, 2) << "it never asks";
        EXPECT_EQ(FiguresOf(*OpenToRead()), figures);
        return;
      } catch (const WorkCancelled&) {
        ASSERT_EQ(Files(), before) << "cancelled at ask " << asks;
      }
    }
    FAIL() << "it asks on and on";
  }
  static void ExpectToldToItsEnd(const Work& work) {
    CountingWatch watch;
    work(watch);
    EXPECT_GT(watch.told.size(), 2U);
    EXPECT_TRUE(std::ranges::is_sorted(watch.told));
    EXPECT_GE(watch.told.front(), 0);
    EXPECT_EQ(watch.told.back(), 1);
  }

  FigureMap figures;
};

TEST_F(WorkWatchTest, EndsACheckAtAnyMoment) {
  const bool deep = true;
  const Work check = [&](WorkWatch& watch) { EXPECT_THAT(CheckBook(BookPath(), deep, watch).findings, IsEmpty()); };
  ExpectNothingLeftOf(check);
  ExpectToldToItsEnd(check);
}

TEST_F(WorkWatchTest, EndsCompactingAtAnyMoment) {
  const Work compact = [&](WorkWatch& watch) { engine::CompactBook(BookPath(), 0, watch); };
  ExpectNothingLeftOf(compact);
  ExpectToldToItsEnd(compact);
}

TEST_F(WorkWatchTest, EndsASalvageAtAnyMoment) {
  const Work salvage = [&](WorkWatch& watch) {
    const auto result = engine::SalvageBook(BookPath(), folder.Path("Saved.tbk"), false, watch);
    EXPECT_THAT(result.lost, IsEmpty());
  };
  ExpectNothingLeftOf(salvage);
  for (const char* name : {"Saved.tbk", "Saved.tbk-lock", "TBQDX1.Saved"}) std::filesystem::remove(folder.Path(name));
  ExpectToldToItsEnd(salvage);
}

TEST_F(WorkWatchTest, EndsTheCopyingOfABackup) {
  folder.Write("safe", "");
  CountingWatch watch(1);
  EXPECT_THROW(engine::WriteBackup(BookPath(), folder.Path("safe"), "safe", watch), WorkCancelled);
  engine::WriteBackup(BookPath(), folder.Path("safe"), "safe");
  folder.Write("Back.tbk", "");
  CountingWatch other(1);
  EXPECT_THROW(engine::UnpackBackup(folder.Path("safe"), folder.Path("Back.tbk"), "Back", other), WorkCancelled);
}

TEST_F(WorkWatchTest, EndsTheWaitForABookThatIsInUse) {
  const auto writer = Open();
  constexpr double kLong = 600;
  CountingWatch watch(3);
  EXPECT_THROW(engine::CompactBook(BookPath(), kLong, watch), WorkCancelled);
}

TEST_F(WorkWatchTest, EndsAStatementThatRunsLongAndTakesItsChangesBack) {
  engine::Database database(BookPath(), engine::Database::Mode::kReadWrite);
  CountingWatch watch(2);
  database.SetWatch(watch);
  EXPECT_THROW(database.Execute("CREATE TABLE long AS WITH RECURSIVE n (i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n "
                                "LIMIT 1000000) SELECT i FROM n"),
               WorkCancelled);
  engine::Database other(BookPath(), engine::Database::Mode::kReadWrite);
  EXPECT_EQ(other.Number("SELECT count(*) FROM sqlite_master WHERE name = 'long'"), 0);
}

TEST(WorkPartTest, TellsItsPartOfTheWholeAndIsCancelledWithIt) {
  CountingWatch whole(2);
  WorkPart part(whole, 0.5F, 0.75F);
  part.Step(0);
  part.Done(0.5F);
  EXPECT_THROW(part.Step(1), WorkCancelled);
  EXPECT_THAT(whole.told, ElementsAre(0.5F, 0.625F, 0.75F));
}

TEST(WorkPartTest, IsNeverCancelledWhereNobodyWatches) {
  engine::Unwatched().Step(1);
  EXPECT_FALSE(engine::Unwatched().IsCancelled());
}

}  // namespace
}  // namespace tallybook::testing
