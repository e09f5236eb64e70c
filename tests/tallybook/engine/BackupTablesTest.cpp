#include <filesystem>

#include "tallybook/engine/BackupTables.h"
#include "tallybook/engine/BookFile.h"
#include "tests/support/FileSizeLimit.h"
#include "tests/tallybook/engine/BookFixture.h"

namespace tallybook::testing {
namespace {

using engine::Companion;
using engine::Database;
using engine::Transaction;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

class BackupTablesTest : public BookFixture {
 protected:
  void SetUp() override { CreateAndOpen()->Close(); }

  void Save(const std::vector<Companion>& companions) {
    Database database = engine::OpenWorkFile(BookPath(), "book");
    Transaction transaction(database);
    engine::SaveBackupTables(database, {"North", 12'345.5}, companions);
    transaction.Commit();
  }
  std::vector<Companion> Load() {
    Database database(BookPath(), Database::Mode::kReadWrite);
    return engine::LoadCompanions(database);
  }
};

const Companion kDefinition{"TBQDX1", "a definition"};
const Companion kSettings{"", Text("bytes \0 of any kind\xFF", 20)};

TEST_F(BackupTablesTest, GiveTheCompanionsBackInTheOrderOfTheirNames) {
  Save({kDefinition, kSettings});
  EXPECT_THAT(Load(), ElementsAre(kSettings, kDefinition));
  Database database(BookPath(), Database::Mode::kReadWrite);
  EXPECT_TRUE(engine::HasBackupTables(database));
  EXPECT_EQ(engine::LoadBackupHead(database).book_name, "North");
  EXPECT_EQ(engine::LoadBackupHead(database).time, 12'345.5);
}

TEST_F(BackupTablesTest, MayHaveNoCompanions) {
  Save({});
  EXPECT_THAT(Load(), IsEmpty());
}

TEST_F(BackupTablesTest, GoWithoutATrace) {
  Save({kDefinition});
  {
    Database database = engine::OpenWorkFile(BookPath(), "book");
    Transaction transaction(database);
    engine::DropBackupTables(database);
    transaction.Commit();
    EXPECT_FALSE(engine::HasBackupTables(database));
  }
  EXPECT_EQ(Open()->Description(), ShopDescription());
}

TEST_F(BackupTablesTest, AreRefusedWhereAnythingInThemIsDamaged) {
  for (const char* damage :
       {"UPDATE companion SET content = x'00'", "UPDATE companion SET stem = 'TBQDX2'", "DELETE FROM companion",
        "INSERT INTO companion VALUES ('TBQDX9', x'00')", "UPDATE backup SET time = 1",
        "UPDATE backup SET book_name = 'South'", "DELETE FROM backup"}) {
    SCOPED_TRACE(damage);
    Save({kDefinition});
    Meddle(damage);
    EXPECT_THAT([&] { Load(); }, FailsWith(FailureNumber::kDeviceError, "companion files do not agree"));
    Meddle("DROP TABLE companion; DROP TABLE backup");
  }
}

TEST_F(BackupTablesTest, CopyADatabaseAsItsConnectionSeesItIntoAFileWithoutALog) {
  const auto writer = Open();
  Put(*writer, 101, Day(2003, 1, 1), 1, 7);
  writer->Commit();
  folder.Write("Copy.tbk", "");
  {
    const bool read_only = true;
    engine::BookFile file(BookPath(), read_only);
    engine::CopyToFile(file.Db(), folder.Path("Copy.tbk"), "the copy");
  }
  EXPECT_FALSE(folder.Has("Copy.tbk-wal"));
  EXPECT_EQ(folder.Read("Copy.tbk").substr(18, 2), "\1\1");
  EXPECT_EQ(FiguresOf(*engine::Book::Open(folder.Path("Copy.tbk"), app)), FiguresOf(*writer));
}

TEST_F(BackupTablesTest, SayByItsShownNameThatTheCopyHasNoRoom) {
  folder.Write("Copy.tbk", "");
  Database database(BookPath(), Database::Mode::kReadWrite);
  const FileSizeLimit full_disk(20'000);
  EXPECT_THAT([&] { engine::CopyToFile(database, folder.Path("Copy.tbk"), "the copy"); },
              FailsWith(FailureNumber::kDiskFull, "the copy"));
}

}  // namespace
}  // namespace tallybook::testing
