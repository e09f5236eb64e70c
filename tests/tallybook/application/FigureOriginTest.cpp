#include <gmock/gmock.h>

#include "tallybook/application/FigureOrigin.h"
#include "tallybook/engine/LoginName.h"
#include "tests/tallybook/engine/BookFixture.h"

namespace tallybook::application {
namespace {

using testing::Day;

class FigureOriginTest : public testing::BookFixture {
 protected:
  void SetUp() override { book = CreateAndOpen(); }
  std::unique_ptr<engine::Book> book;
};

TEST_F(FigureOriginTest, TellsTheEntriesWithTheirFilesAndWhoRanThem) {
  book->SetOperationName("import csv day.csv");
  book->SetNotes({.files = {{.path = "day.csv", .size = 4, .xxh3 = {}, .sha256 = {}}}, .facts = {}});
  book->BeginRollback(Day(2003, 5, 5), Day(2003, 5, 5));
  testing::Put(*book, 101, Day(2003, 5, 5), 1, 7);
  book->EndRollback();
  const FigureOrigin origin = OriginOf(*book, 101, Day(2003, 5, 5), 1);
  EXPECT_EQ(origin.code, "100");
  EXPECT_EQ(origin.date, Day(2003, 5, 5));
  EXPECT_EQ(origin.history.value, 7);
  ASSERT_EQ(origin.history.changes.size(), 1U);
  ASSERT_EQ(origin.files.size(), 1U);
  ASSERT_EQ(origin.files[0].size(), 1U);
  EXPECT_EQ(origin.files[0][0].path, "day.csv");
  EXPECT_EQ(origin.WhoRan(origin.history.changes[0]), engine::LoginName());
  EXPECT_EQ(UnknownBeforeWords(origin.history), "");
}

TEST_F(FigureOriginTest, SaysFromWhereOnNothingIsKnown) {
  engine::FigureHistory history;
  history.unknown_before = 3;
  EXPECT_EQ(UnknownBeforeWords(history),
            "Nothing is known of what stood before entry 3, which keeps no figures from before.");
  history.of_first_format = true;
  EXPECT_EQ(UnknownBeforeWords(history),
            "Nothing is known of what stood before entry 3: a book of format 1 does not tell which figures an entry "
            "changed.");
}

}  // namespace
}  // namespace tallybook::application
