#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tallybook/application/FileDisposals.h"
#include "tallybook/desktop/figures/FigureWriter.h"
#include "tallybook/engine/JournalNotes.h"
#include "tests/tallybook/desktop/figures/FiguresFixture.h"

namespace tallybook::desktop {
namespace {

using testing::Day;
using ::testing::HasSubstr;
using testing::Put;
using Outcome = FigureWriter::Outcome;

class FigureWriterTest : public testing::FiguresFixture {
 protected:
  void Set(int day, Double value) { writer.Add("set", {{101, Day(2003, 1, day), 1, value}}); }
  Double Sales(int day) { return Stored(101, Day(2003, 1, day), 1); }
  std::vector<engine::JournalEntry> Entries() {
    const auto book = OpenToRead();
    return engine::Journal(*book).Entries();
  }

  FigureWriter writer{BookPath(), app};
};

TEST_F(FigureWriterTest, WritesOneChangeAsOneEntryOfTheJournal) {
  writer.Add("paste 2 figures", {{101, Day(2003, 1, 3), 1, 5}, {205, Day(2003, 1, 2), 4, 6}});
  EXPECT_EQ(writer.Try(), Outcome::kDone);
  EXPECT_EQ(Sales(3), 5);
  EXPECT_EQ(Stored(205, Day(2003, 1, 2), 4), 6);
  const auto entries = Entries();
  ASSERT_EQ(entries.size(), 1U);
  EXPECT_EQ(entries[0].kind, engine::JournalKind::kSet);
  EXPECT_EQ(entries[0].what_ran, "paste 2 figures");
  EXPECT_EQ(entries[0].first, Day(2003, 1, 2));
  EXPECT_EQ(entries[0].last, Day(2003, 1, 3));
  EXPECT_EQ(entries[0].state, engine::JournalState::kClosed);
}

TEST_F(FigureWriterTest, TakesBackInTurnWhatWasTyped) {
  Set(1, 1);
  Set(1, 2);
  Set(2, 3);
  EXPECT_EQ(writer.Try(), Outcome::kDone);
  for (int step = 0; step < 2; ++step) {
    writer.AddUndo();
    EXPECT_EQ(writer.Try(), Outcome::kDone);
  }
  EXPECT_EQ(Sales(1), 1);
  EXPECT_EQ(Sales(2), 20);
  writer.AddUndo();
  EXPECT_EQ(writer.Try(), Outcome::kDone);
  EXPECT_EQ(Sales(1), 10);
  EXPECT_FALSE(writer.CanUndo());
}

TEST_F(FigureWriterTest, GoesOnTakingBackBehindNewTyping) {
  Set(1, 1);
  Set(2, 2);
  EXPECT_EQ(writer.Try(), Outcome::kDone);
  writer.AddUndo();
  Set(3, 3);
  EXPECT_EQ(writer.Try(), Outcome::kDone);
  writer.AddUndo();
  writer.AddUndo();
  EXPECT_EQ(writer.Try(), Outcome::kDone);
  EXPECT_EQ(Sales(1), 10);
  EXPECT_EQ(Sales(2), 20);
  EXPECT_EQ(Sales(3), 30);
}

TEST_F(FigureWriterTest, WaitsInOrderWhileTheBookIsOpenElsewhere) {
  Set(1, 1);
  {
    const auto other = Open();
    EXPECT_EQ(writer.Try(), Outcome::kWaits);
    EXPECT_THAT(writer.Words(), HasSubstr("open for writing elsewhere"));
    Set(1, 2);
    EXPECT_EQ(writer.Unwritten().size(), 2U);
  }
  EXPECT_EQ(writer.Try(), Outcome::kDone);
  EXPECT_EQ(Sales(1), 2);
  EXPECT_EQ(Entries().size(), 2U);
}

TEST_F(FigureWriterTest, GivesUpWhatWaitsWithoutWritingIt) {
  Set(1, 1);
  {
    const auto other = Open();
    EXPECT_EQ(writer.Try(), Outcome::kWaits);
  }
  writer.GiveUp();
  EXPECT_EQ(writer.Try(), Outcome::kDone);
  EXPECT_EQ(Sales(1), 10);
}

TEST_F(FigureWriterTest, TakesBackWhatWaitsByNotWritingIt) {
  Set(1, 1);
  {
    const auto other = Open();
    EXPECT_EQ(writer.Try(), Outcome::kWaits);
    writer.AddUndo();
  }
  EXPECT_EQ(writer.Try(), Outcome::kDone);
  EXPECT_TRUE(Entries().empty());
}

TEST_F(FigureWriterTest, TellsWhyWhatWasTypedCannotBeTakenBack) {
  Set(1, 1);
  EXPECT_EQ(writer.Try(), Outcome::kDone);
  {
    const auto other = Open();
    other->BeginRollback(Day(2003, 1, 1), Day(2003, 1, 1));
    Put(*other, 101, Day(2003, 1, 1), 1, 77);
    other->EndRollback();
  }
  writer.AddUndo();
  EXPECT_EQ(writer.Try(), Outcome::kFailed);
  EXPECT_THAT(writer.Words(), HasSubstr("cannot be undone exactly: 1 figure has been changed since"));
  EXPECT_EQ(Sales(1), 77);
  EXPECT_TRUE(writer.CanUndo());
}

TEST_F(FigureWriterTest, LeavesNothingOfAChangeThatFails) {
  writer.Add("set", {{101, Day(2003, 1, 1), 1, 5}, {101, Day(2003, 1, 2), 77, 5}});
  EXPECT_EQ(writer.Try(), Outcome::kFailed);
  EXPECT_THAT(writer.Words(), HasSubstr("no field of number 77"));
  EXPECT_EQ(Sales(1), 10);
  EXPECT_TRUE(Entries().empty());
}

TEST_F(FigureWriterTest, DoesFirstWhatAnImportHasLeftToDoWithItsFiles) {
  Set(1, 1);
  ASSERT_EQ(writer.Try(), Outcome::kDone);
  folder.Write("a.QDX", "a");
  {
    const auto book = Open();
    const application::FileDisposal disposal{
        .path = folder.Path("a.QDX"), .new_path = {}, .stamp = *application::StampOf(folder.Path("a.QDX"))};
    engine::JournalNotes(*book).SaveDue(1, application::TextOfDisposals({disposal}));
  }
  EXPECT_THAT(writer.TakeNotices(), ::testing::IsEmpty());
  Set(2, 2);
  EXPECT_EQ(writer.Try(), Outcome::kDone);
  EXPECT_FALSE(folder.Has("a.QDX"));
  EXPECT_THAT(writer.TakeNotices(), ::testing::ElementsAre(HasSubstr("a.QDX is deleted now")));
  EXPECT_THAT(writer.TakeNotices(), ::testing::IsEmpty());
}

TEST_F(FigureWriterTest, NamesWhatWouldBeTakenBack) {
  EXPECT_EQ(writer.NextUndo(), "");
  writer.Add("paste 2 figures", {{101, Day(2003, 1, 3), 1, 5}});
  EXPECT_EQ(writer.Try(), Outcome::kDone);
  EXPECT_EQ(writer.NextUndo(), "paste 2 figures");
}

}  // namespace
}  // namespace tallybook::desktop
