#include <chrono>
#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <set>

#include "tallybook/engine/BookHold.h"
#include "tallybook/engine/Workpiece.h"
#include "tests/support/FileSizeLimit.h"
#include "tests/tallybook/engine/BookFixture.h"
#include "tests/tallybook/engine/OtherProcesses.h"

namespace tallybook::testing {
namespace {

namespace fs = std::filesystem;

using engine::Book;
using engine::BookHold;
using engine::Workpiece;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

class WorkpieceTest : public BookFixture {
 protected:
  [[nodiscard]] std::set<Text> Names() const {
    std::set<Text> names;
    for (const auto& entry : fs::directory_iterator(folder.Path())) names.insert(entry.path().filename());
    return names;
  }
  // As if it had been left an hour ago.
  void Age(const Text& name) const {
    fs::last_write_time(folder.Path(name), fs::file_time_type::clock::now() - std::chrono::hours(1));
  }
};

TEST_F(WorkpieceTest, StandsUnderANameOfItsOwnUntilItIsMoved) {
  Workpiece one(BookPath());
  {
    const Workpiece two(BookPath());
    EXPECT_NE(one.Path(), two.Path());
    EXPECT_FALSE(folder.Has("North.tbk"));
  }
  one.MoveToPlace();
  EXPECT_THAT(Names(), ElementsAre("North.tbk"));
}

TEST_F(WorkpieceTest, AFailureTellsOfTheBookByTheNameThatItIsToHave) {
  for (const rlim_t size : {1U, 4096U, 20'000U, 70'000U, 200'000U}) {
    Text words;
    try {
      const FileSizeLimit limit(size);
      Book::Create(BookPath(), ShopDescription());
    } catch (const Failure& failure) {
      words = failure.Description();
    }
    EXPECT_EQ(words.substr(0, BookPath().size() + 2), BookPath() + ": ") << size;
  }
}

TEST_F(WorkpieceTest, ReplacesNothingThatCameToTheNameMeanwhile) {
  Workpiece workpiece(BookPath());
  folder.Write("North.tbk", "a letter");
  EXPECT_THAT([&] { workpiece.MoveToPlace(); }, FailsWith(FailureNumber::kPathOrAccess, "the file exists already"));
  EXPECT_EQ(folder.Read("North.tbk"), "a letter");
}

TEST_F(WorkpieceTest, IsNotMovedWhereALogWasLeftThatCouldNotBeCopiedBack) {
  {
    Workpiece workpiece(BookPath());
    folder.Write(fs::path(workpiece.Path() + "-wal").filename().string(), "figures");
    EXPECT_THAT([&] { workpiece.MoveToPlace(); }, FailsWith(FailureNumber::kDeviceError, "cannot be written whole"));
  }
  EXPECT_THAT(Names(), IsEmpty());
}

TEST_F(WorkpieceTest, RefusesANameThatIsALinkToNowhere) {
  fs::create_symlink("nowhere", BookPath());
  EXPECT_THAT([&] { Create(ShopDescription()); },
              FailsWith(FailureNumber::kPathOrAccess, "the file exists already, as a link that leads nowhere"));
  EXPECT_THAT(Names(), ElementsAre("North.tbk"));
  EXPECT_FALSE(folder.Has("nowhere"));
}

TEST_F(WorkpieceTest, RefusesANameWhoseCompanionsAnotherBookHasLeft) {
  for (const char* name : {"TBQDX1.North", "TBQDBU2.North", "KVQDX3.North", "North.ini"}) {
    folder.Write(name, "of a book that is gone");
    EXPECT_THAT([&] { Create(ShopDescription()); },
                FailsWith(FailureNumber::kPathOrAccess, Text(name) + ", which would belong to it"));
    EXPECT_THAT(Names(), ElementsAre(name));
    fs::remove(folder.Path(name));
  }
  folder.Write("TBQDX1.South", "of another book");
  Create(ShopDescription());
  EXPECT_TRUE(folder.Has("North.tbk"));
}

TEST_F(WorkpieceTest, NeedsAFolder) {
  EXPECT_THAT([&] { Book::Create(folder.Path("none/North.tbk"), ShopDescription()); },
              FailsWith(FailureNumber::kPathNotFound, "the folder does not exist"));
}

TEST_F(WorkpieceTest, TakesAwayWhatAKilledProgramLeft) {
  folder.Write("North.tbk-new-0123456789abcdef", "half");
  folder.Write("North.tbk-new-0123456789abcdef-wal", "half");
  folder.Write("North.tbk-new-somebody's", "notes");
  Age("North.tbk-new-0123456789abcdef");
  Age("North.tbk-new-somebody's");
  Create(ShopDescription());
  EXPECT_THAT(Names(), ElementsAre("North.tbk", "North.tbk-new-somebody's"));
}

TEST_F(WorkpieceTest, LeavesOneAloneThatAnotherWorksOn) {
  folder.Write("North.tbk-new-0123456789abcdef", "half");
  SecondProcess other([&] {
    static auto* hold = new BookHold(folder.Path("North.tbk-new-0123456789abcdef"), BookHold::Purpose::kChange);
    hold->TakeRightToWrite(0);
    return 0;
  });
  other.Act();
  Age("North.tbk-new-0123456789abcdef");
  Create(ShopDescription());
  EXPECT_TRUE(folder.Has("North.tbk-new-0123456789abcdef"));
}

TEST_F(WorkpieceTest, IsGoneWhereTheDiskIsFull) {
  EXPECT_EQ(InAnotherProcess([&] {
              const FileSizeLimit full_disk(20'000);
              Create(ShopDescription());
              return 0;
            }),
            61);
  EXPECT_THAT(Names(), IsEmpty());
}

TEST_F(WorkpieceTest, LetsOneOfTwoMakeABookWhole) {
  for (int round = 0; round < 20; ++round) {
    const Text path = folder.Path("Book" + std::to_string(round) + ".tbk");
    const auto make = [&] {
      Book::Create(path, ShopDescription());
      return 0;
    };
    SecondProcess one(make);
    SecondProcess two(make);
    one.Start();
    two.Start();
    const std::set<int> ends = {one.End(), two.End()};
    EXPECT_THAT(ends, ElementsAre(0, 75));
    EXPECT_EQ(Book::Open(path, app)->Description(), ShopDescription());
  }
}

}  // namespace
}  // namespace tallybook::testing
