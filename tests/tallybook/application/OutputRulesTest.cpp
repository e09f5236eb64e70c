// Where outputs may go, with real books and companion files.
#include <gmock/gmock.h>
#include <sys/stat.h>

#include "tallybook/application/OutputRules.h"
#include "tallybook/engine/Book.h"
#include "tests/support/FailsWith.h"
#include "tests/support/MemoryHost.h"
#include "tests/support/ScriptedPlatform.h"
#include "tests/support/TempFolder.h"
#include "tests/tallybook/engine/BookFixture.h"

namespace tallybook::application {
namespace {

using testing::FailsWith;

class OutputRulesTest : public ::testing::Test {
 protected:
  OutputRulesTest() { engine::Book::Create(folder_.Path("shop.tbk"), testing::ShopDescription()); }

  void ExpectRefused(const Text& name, const Text& words) const {
    EXPECT_THAT([&] { rules_.Check(folder_.Path(name)); }, FailsWith(FailureNumber::kPathOrAccess, words)) << name;
    EXPECT_THAT([&] { rules_.CheckInPlace(folder_.Path(name)); }, FailsWith(FailureNumber::kPathOrAccess, words))
        << name;
  }
  void ExpectPasses(const Text& name) const { EXPECT_NO_THROW(rules_.Check(folder_.Path(name))) << name; }
  void Overwrite(const Text& name, std::streamoff at, const std::string& bytes) const {
    std::fstream file(folder_.Path(name), std::ios::binary | std::ios::in | std::ios::out);
    file.seekp(at);
    file << bytes;
  }

  testing::ScriptedPlatform platform_;
  testing::TempFolder folder_;
  OutputRules rules_;
};

TEST_F(OutputRulesTest, NothingGoesOntoABookByAnyNameOrLink) {
  std::filesystem::create_symlink("shop.tbk", folder_.Path("link.QDX"));
  std::filesystem::create_hard_link(folder_.Path("shop.tbk"), folder_.Path("hard.csv"));
  std::filesystem::copy_file(folder_.Path("shop.tbk"), folder_.Path("copy.xlsx"));
  for (const char* name : {"shop.tbk", "link.QDX", "hard.csv", "copy.xlsx"}) ExpectRefused(name, "is a book");
}

TEST_F(OutputRulesTest, ADamagedBookIsABookToo) {
  Overwrite("shop.tbk", 0, "XXXXXXXXXXXXXXXX");
  ExpectRefused("shop.tbk", "is a book");
}

TEST_F(OutputRulesTest, ABookWhoseMarkIsDamagedIsADatabaseStill) {
  Overwrite("shop.tbk", 68, "X");
  ExpectRefused("shop.tbk", "is the database of a program");
}

TEST_F(OutputRulesTest, ABookThatIsOpenIsToldWithoutOpeningIt) {
  std::filesystem::create_symlink("shop.tbk", folder_.Path("link"));
  rules_.ProtectBook(folder_.Path("shop.tbk"));
  // What would be read there says nothing any more.
  Overwrite("shop.tbk", 0, std::string(100, 'X'));
  ExpectRefused("link", "is the book of this command");
  ExpectRefused("shop.tbk-wal", "belongs to the book");
}

TEST_F(OutputRulesTest, NothingGoesOntoACompanionFileOfABookThereOrNot) {
  folder_.Write("TBQDX1.shop", "x\r\n");
  folder_.Write("shop.tbk-lock", "");
  std::filesystem::create_symlink("TBQDX1.shop", folder_.Path("link.txt"));
  std::filesystem::create_symlink("shop.tbk-wal", folder_.Path("dangling.txt"));
  for (const char* name : {"TBQDX1.shop", "tbqdx2.shop", "TBQDBU1.shop", "shop.ini", "shop.tbk-lock", "shop.tbk-wal",
                           "shop.tbk-shm", "link.txt", "dangling.txt"})
    ExpectRefused(name, "belongs to the book");
}

TEST_F(OutputRulesTest, ADefinitionIsOneWithoutItsBookToo) {
  folder_.Write("TBQDX12.gone", "x\r\n");
  ExpectRefused("TBQDX12.gone", "is an exchange definition");
  ExpectPasses("TBQDX13.gone");
}

TEST_F(OutputRulesTest, NamesThatOnlyResembleThosePass) {
  folder_.Write("other.ini", "x");
  folder_.Write("TBQDXx.shop", "x");
  folder_.Write("old.QDX", "Kelvo QDX");
  for (const char* name : {"other.ini", "TBQDXx.shop", "old.QDX", "new.tbk", "year-wal", "-wal"}) ExpectPasses(name);
}

TEST_F(OutputRulesTest, NothingGoesOntoWhatTheCommandReadsOrWritesBesides) {
  folder_.Write("lines.txt", "x");
  std::filesystem::create_symlink("lines.txt", folder_.Path("link"));
  rules_.ProtectInput(folder_.Path("lines.txt"));
  rules_.ProtectOutput(folder_.Path("report.txt"), "the report");
  ExpectRefused("link", "is the input of this command; nothing is written over it");
  ExpectRefused("./report.txt", "is the report");
}

TEST_F(OutputRulesTest, AnInputIsNoBookOfTheCommandAndNoOutputButMayBeReadTwice) {
  folder_.Write("lines.txt", "x");
  folder_.Write("report.txt", "x");
  rules_.ProtectBook(folder_.Path("shop.tbk"));
  rules_.ProtectInput(folder_.Path("lines.txt"));
  rules_.ProtectOutput(folder_.Path("report.txt"), "the report");
  rules_.CheckInput(folder_.Path("lines.txt"));
  for (const char* name : {"shop.tbk", "report.txt"}) {
    EXPECT_THAT([&] { rules_.CheckInput(folder_.Path(name)); },
                FailsWith(FailureNumber::kPathOrAccess, "it cannot be read as well"));
  }
}

TEST_F(OutputRulesTest, WhatIsDeletedOnTheWayIsNoBook) {
  folder_.Write("lines.txt.bak", "x");
  std::filesystem::create_symlink("shop.tbk", folder_.Path("link.bak"));
  rules_.NeedNoBook(folder_.Path("lines.txt.bak"));
  rules_.NeedNoBook(folder_.Path("missing"));
  EXPECT_THAT([&] { rules_.NeedNoBook(folder_.Path("link.bak")); },
              FailsWith(FailureNumber::kPathOrAccess, "is a book"));
}

TEST_F(OutputRulesTest, WhatIsNoFileIsRefusedByItsKind) {
  std::filesystem::create_directory(folder_.Path("folder"));
  ASSERT_EQ(::mkfifo(folder_.Path("pipe").c_str(), 0600), 0);
  std::filesystem::create_symlink("/dev/null", folder_.Path("null"));
  ExpectRefused("folder", "is a folder; an output needs a file");
  ExpectRefused("pipe", "is a pipe");
  ExpectRefused("null", "is a device");
}

TEST_F(OutputRulesTest, MessagesAndReportsGoOntoNoExchangeFileAndNoFileOfTwoNames) {
  folder_.Write("year.QDX", "Kelvo QDX and more");
  folder_.Write("first", "x");
  std::filesystem::create_hard_link(folder_.Path("first"), folder_.Path("second"));
  for (const char* name : {"year.QDX", "second"}) ExpectPasses(name);
  EXPECT_THAT([&] { rules_.CheckInPlace(folder_.Path("year.QDX")); },
              FailsWith(FailureNumber::kPathOrAccess, "is an exchange file"));
  EXPECT_THAT([&] { rules_.CheckInPlace(folder_.Path("second")); },
              FailsWith(FailureNumber::kPathOrAccess, "has more than one name"));
}

TEST_F(OutputRulesTest, ATableThatWasExportedAsADatabaseMayBeReplaced) {
  sqlite3* database = nullptr;
  ASSERT_EQ(sqlite3_open(folder_.Path("table.db").c_str(), &database), SQLITE_OK);
  ASSERT_EQ(sqlite3_exec(database, "CREATE TABLE t (x)", nullptr, nullptr, nullptr), SQLITE_OK);
  sqlite3_close(database);
  ExpectPasses("table.db");
}

}  // namespace
}  // namespace tallybook::application
