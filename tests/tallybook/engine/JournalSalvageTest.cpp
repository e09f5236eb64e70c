#include "tallybook/engine/BookFormat.h"
#include "tallybook/engine/JournalNotes.h"
#include "tallybook/engine/JournalSalvage.h"
#include "tests/tallybook/engine/SalvageFixture.h"

namespace tallybook::testing {
namespace {

using engine::BookFinding;
using engine::FindingKind;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::Field;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

class JournalSalvageTest : public SalvageFixture {
 protected:
  void SetUp() override {
    SalvageFixture::SetUp();
    const auto book = Open();
    book->SetOperationName("second");
    book->BeginRollback(Day(2003, 1, 1), Day(2003, 1, 1));
    Put(*book, 205, Day(2003, 1, 1), 4, 6);
    book->EndRollback();
  }
  long long Salvage() {
    Begin();
    const long long entries = engine::JournalSalvage(*damaged, *losses).CopyTo(file->Db());
    for (const BookFinding& lost : losses->Take()) what_is_lost.push_back(lost.what);
    rows = engine::JournalTables(file->Db()).Rows(engine::kBookFormat);
    return entries;
  }

  std::vector<Text> what_is_lost;
  std::vector<engine::JournalRow> rows;
};

TEST_F(JournalSalvageTest, TakesAllOfAJournalThatIsWhole) {
  EXPECT_EQ(Salvage(), 3);
  EXPECT_THAT(what_is_lost, IsEmpty());
  ASSERT_EQ(rows.size(), 3U);
  EXPECT_FALSE(rows[0].entry.keeps_images);
  EXPECT_EQ(rows[1].entry.what_ran, "set");
  EXPECT_TRUE(rows[1].entry.keeps_images);
  EXPECT_EQ(rows[1].marks, 1);
  EXPECT_EQ(file->Db().Number("SELECT count(*) FROM image"), 2);
}

TEST_F(JournalSalvageTest, LeavesFilesAloneThatWereStillToBeDeleted) {
  engine::JournalNotes(*Open()).SaveDue(3, "due");
  EXPECT_EQ(Salvage(), 3);
  EXPECT_THAT(what_is_lost, ElementsAre(HasSubstr("still to be deleted or renamed")));
  EXPECT_EQ(file->Db().Number("SELECT count(*) FROM journal_text WHERE name = 'due'"), 0);
}

TEST_F(JournalSalvageTest, KeepsImagesOnlyBehindTheLastEntryThatIsDamaged) {
  Meddle("UPDATE image SET figures = x'01' WHERE id = 1");
  EXPECT_EQ(Salvage(), 1);
  EXPECT_THAT(what_is_lost, Contains(HasSubstr("figures from before this entry")));
  ASSERT_EQ(rows.size(), 3U);
  EXPECT_EQ(rows[1].entry.what_ran, "set");
  EXPECT_FALSE(rows[1].entry.keeps_images);
  EXPECT_TRUE(rows[2].entry.keeps_images);
}

TEST_F(JournalSalvageTest, LeavesAnEntryInThePlaceOfOneThatIsGone) {
  Meddle("DELETE FROM journal WHERE id = 2");
  EXPECT_EQ(Salvage(), 1);
  EXPECT_THAT(what_is_lost, Contains(HasSubstr("this entry is damaged or missing")));
  ASSERT_EQ(rows.size(), 3U);
  EXPECT_EQ(rows[1].entry.what_ran, "(what ran is lost)");
  EXPECT_EQ(rows[2].entry.what_ran, "second");
}

TEST_F(JournalSalvageTest, KnowsOfAnEntryThatIsMissingAtTheEnd) {
  Meddle("DELETE FROM journal WHERE id = 3");
  EXPECT_EQ(Salvage(), 0);
  EXPECT_EQ(rows.size(), 3U);
  EXPECT_THAT(what_is_lost, Contains(HasSubstr("this entry is damaged or missing")));
}

TEST_F(JournalSalvageTest, KnowsOfADamagedEntryAtTheEndWhereTheNumbersGivenAreLost) {
  Meddle("UPDATE journal SET what = 'other' WHERE id = 3");
  Meddle(
      "DELETE FROM sqlite_sequence; PRAGMA writable_schema = ON; DELETE FROM sqlite_master WHERE name = "
      "'sqlite_sequence'");
  EXPECT_EQ(Salvage(), 0);
  EXPECT_EQ(rows.size(), 3U);
}

TEST_F(JournalSalvageTest, SaysThatACommandIsLost) {
  Meddle("UPDATE command SET what = 'another' WHERE id = (SELECT max(id) FROM command)");
  EXPECT_EQ(Salvage(), 3);
  EXPECT_THAT(what_is_lost, ElementsAre(HasSubstr("is damaged or missing")));
}

TEST_F(JournalSalvageTest, SaysThatAJournalCannotBeRead) {
  Meddle("DROP TABLE journal");
  EXPECT_EQ(Salvage(), 0);
  EXPECT_THAT(what_is_lost, Contains("the journal cannot be read"));
}

}  // namespace
}  // namespace tallybook::testing
