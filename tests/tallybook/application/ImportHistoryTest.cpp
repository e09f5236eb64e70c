#include "tallybook/application/ImportHistory.h"
#include "tallybook/application/ImportRecorder.h"
#include "tallybook/engine/LoginName.h"
#include "tests/tallybook/engine/BookFixture.h"

namespace tallybook::application {
namespace {

using testing::Day;

class ImportHistoryTest : public testing::BookFixture {
 protected:
  void SetUp() override {
    book = CreateAndOpen();
    folder.Write("north.QDX", "figures");
    platform.clock.Set(Day(2004, 2, 3) + 0.5);
  }

  static EntryFacts Way(Integer definition = 1) {
    EntryFacts way;
    way.kind = "qdx";
    way.definition = definition;
    way.math = "add";
    return way;
  }

  // An import of a file, told by its name without its folder.
  void Import(const Text& name, bool ends = true) {
    ImportRecorder recorder(*book);
    book->SetOperationName("import qdx #1");
    recorder.BeginFile(name, folder.Path(name), Way());
    book->BeginRollback(Day(2003, 5, 5), Day(2003, 5, 5));
    testing::Put(*book, 101, Day(2003, 5, 5), 1, next_++);
    if (!ends) return book->Commit();
    book->EndRollback();
    recorder.Save();
  }

  std::optional<EarlierImport> Find(const Text& name, const EntryFacts& way = Way()) {
    return ImportHistory(*book).Find(name, folder.Path(name), way);
  }

  std::unique_ptr<engine::Book> book;
  Double next_ = 1;
};

TEST_F(ImportHistoryTest, KnowsAFileByItsBytesUnderAnyName) {
  EXPECT_FALSE(Find("north.QDX"));
  Import("north.QDX");
  folder.Write("south.QDX", "figures");
  folder.Write("other.QDX", "FIGURES");
  folder.Write("longer.QDX", "figures and more");
  const auto earlier = Find("north.QDX");
  ASSERT_TRUE(earlier);
  EXPECT_EQ(earlier->entry.id, 1);
  EXPECT_EQ(earlier->who, engine::LoginName());
  EXPECT_EQ(EarlierImportText("north.QDX", *earlier), "north.QDX: it was imported on 2004-02-03 12:00:00 by " +
                                                          engine::LoginName() +
                                                          " (journal entry 1), and that has not been taken back");
  ASSERT_TRUE(Find("south.QDX"));
  EXPECT_EQ(EarlierImportText("south.QDX", *Find("south.QDX")),
            "south.QDX: it was imported on 2004-02-03 12:00:00 by " + engine::LoginName() +
                " as north.QDX (journal entry 1), and that has not been taken back");
  EXPECT_FALSE(Find("other.QDX"));
  EXPECT_FALSE(Find("longer.QDX"));
  EXPECT_FALSE(Find("missing.QDX"));
}

TEST_F(ImportHistoryTest, KnowsTheBytesOfAFileThatTheSameRunImports) {
  const Text head(5000, 'x');
  for (const char* name : {"a.QDX", "b.QDX"}) folder.Write(name, head + "end");
  folder.Write("other.QDX", head + "END");
  ImportHistory history(*book);
  const auto find = [&](const Text& name, Integer definition) {
    return history.Find(name, folder.Path(name), Way(definition));
  };
  EXPECT_FALSE(find("a.QDX", 1));
  history.Expect("a.QDX", folder.Path("a.QDX"), Way(1));
  ASSERT_TRUE(find("b.QDX", 1));
  EXPECT_EQ(EarlierImportText("b.QDX", *find("b.QDX", 1)),
            "b.QDX: it has the same bytes as a.QDX, which is imported as well");
  EXPECT_FALSE(find("b.QDX", 2));
  EXPECT_FALSE(find("other.QDX", 1));
  EXPECT_FALSE(find("missing.QDX", 1));
}

TEST_F(ImportHistoryTest, KnowsItForTheSameDefinitionAlone) {
  Import("north.QDX");
  EXPECT_FALSE(Find("north.QDX", Way(2)));
}

TEST_F(ImportHistoryTest, ForgetsWhatWasUndone) {
  Import("north.QDX");
  Import("north.QDX");
  engine::Journal(*book).UndoNewest();
  ASSERT_TRUE(Find("north.QDX"));
  EXPECT_EQ(Find("north.QDX")->entry.id, 1);
  engine::Journal(*book).Undo(1);
  EXPECT_FALSE(Find("north.QDX"));
}

TEST_F(ImportHistoryTest, TellsOfAnImportThatWasCutOffByNameAndSize) {
  Import("north.QDX", false);
  book->Abandon();
  book = Open();
  folder.Write("south.QDX", "figures");
  ASSERT_TRUE(Find("north.QDX"));
  EXPECT_TRUE(Find("north.QDX")->likely);
  EXPECT_THAT(EarlierImportText("north.QDX", *Find("north.QDX")),
              ::testing::StartsWith("north.QDX: a file of this name and size: the import of it was begun and not "
                                    "finished on 2004-02-03 12:00:00"));
  EXPECT_FALSE(Find("south.QDX"));
}

}  // namespace
}  // namespace tallybook::application
