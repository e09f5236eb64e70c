#include "tallybook/engine/FigureSalvage.h"
#include "tests/tallybook/engine/SalvageFixture.h"

namespace tallybook::testing {
namespace {

using engine::BookFinding;
using engine::FindingKind;
using engine::FirstKeyOf;
using ::testing::AllOf;
using ::testing::ElementsAre;
using ::testing::Field;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

auto Lost(FindingKind kind, Long account, const Text& what) {
  return AllOf(Field(&BookFinding::kind, kind), Field(&BookFinding::account, account),
               Field(&BookFinding::what, HasSubstr(what)));
}

class FigureSalvageTest : public SalvageFixture {
 protected:
  std::vector<BookFinding> Salvage() {
    Begin();
    engine::FigureSalvage(*damaged, *places, *losses, *chunks).Run();
    return losses->Take();
  }
};

TEST_F(FigureSalvageTest, TakesAllOfABookThatIsWhole) {
  const auto keys = StoredKeys();
  EXPECT_THAT(Salvage(), IsEmpty());
  EXPECT_EQ(NewKeys(), keys);
}

TEST_F(FigureSalvageTest, NamesTheDatesOfTheOnlyChunkThatIsMissingByTheSums) {
  Meddle("DELETE FROM chunk WHERE key = (101 << 24) + 1");
  const auto lost = Salvage();
  ASSERT_THAT(lost, ElementsAre(Lost(FindingKind::kChunk, 101, "these figures cannot be read")));
  EXPECT_EQ(lost[0].first, places->FirstDateOf(FirstKeyOf(101) + 1));
}

TEST_F(FigureSalvageTest, TakesNoChunkThatIsOlderThanTheSums) {
  Meddle("UPDATE chunk SET figures = (SELECT figures FROM image) WHERE key = 101 << 24");
  EXPECT_THAT(Salvage(), ElementsAre(Lost(FindingKind::kChunk, 101, "is not what was written last")));
  EXPECT_THAT(chunks->KeysOf(101), IsEmpty());
  EXPECT_TRUE(chunks->Has(FirstKeyOf(205)));
}

TEST_F(FigureSalvageTest, TakesOfTwoChunksOfAPlaceTheOneThatTheSumsHave) {
  Meddle(
      "CREATE TABLE other (id INTEGER PRIMARY KEY, key INTEGER, figures BLOB);"
      "INSERT INTO other (key, figures) SELECT 101 << 24, figures FROM image;"
      "INSERT INTO other (key, figures) SELECT key, figures FROM chunk; DROP TABLE chunk;"
      "ALTER TABLE other RENAME TO chunk");
  EXPECT_THAT(Salvage(), IsEmpty());
  EXPECT_FALSE(chunks->KeysOf(101).empty());
}

TEST_F(FigureSalvageTest, TakesNeitherOfTwoChunksWhereTheSumsAreLost) {
  Meddle(
      "CREATE TABLE other (id INTEGER PRIMARY KEY, key INTEGER, figures BLOB); INSERT INTO other SELECT * FROM chunk;"
      "INSERT INTO other (key, figures) SELECT 101 << 24, figures FROM image; DROP TABLE chunk;"
      "ALTER TABLE other RENAME TO chunk; UPDATE account_sum SET sums = x'00'");
  const auto lost = Salvage();
  EXPECT_THAT(lost, ::testing::Contains(Lost(FindingKind::kSums, 101, "cannot be told")));
  EXPECT_FALSE(chunks->Has(FirstKeyOf(101)));
  EXPECT_TRUE(chunks->Has(FirstKeyOf(205)));
}

TEST_F(FigureSalvageTest, SaysWhereTheSumsAreLostThatFiguresMayBeMissing) {
  Meddle("DELETE FROM account_sum");
  const auto lost = Salvage();
  EXPECT_THAT(
      lost, ElementsAre(Lost(FindingKind::kSums, 7, "cannot be told"), Lost(FindingKind::kSums, 101, "cannot be told"),
                        Lost(FindingKind::kSums, 205, "cannot be told")));
}

TEST_F(FigureSalvageTest, TakesFiguresAwayThatTheIndexDoesNotHaveAnyMore) {
  // Put past the sums and the index, as a table shows it whose page has come back from before.
  Meddle("CREATE TABLE back AS SELECT figures FROM chunk WHERE key = (101 << 24) + 1");
  {
    const auto book = Open();
    book->BeginRollback(Day(2003, 1, 1), Day(2004, 12, 31));
    for (int day = 0; day < 700; ++day) Put(*book, 101, Day(2003, 1, 1) + day, 1, 0);
    Put(*book, 101, Day(2003, 1, 1), 4, 0);
    book->EndRollback();
  }
  ASSERT_THAT(StoredKeys(), ElementsAre(FirstKeyOf(205)));
  Meddle("INSERT INTO chunk (key, figures) SELECT (101 << 24) + 1, figures FROM back; DROP TABLE back");
  EXPECT_THAT(Salvage(), ElementsAre(Lost(FindingKind::kChunk, 101, "is not what was written last")));
  EXPECT_THAT(NewKeys(), ElementsAre(FirstKeyOf(205)));
}

}  // namespace
}  // namespace tallybook::testing
