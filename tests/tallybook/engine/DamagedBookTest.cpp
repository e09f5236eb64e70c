#include <cstdlib>
#include <filesystem>

#include "tallybook/engine/BookFormat.h"
#include "tallybook/engine/DamagedBook.h"
#include "tests/tallybook/engine/BookFixture.h"
#include "tests/tallybook/engine/SampleBook.h"

namespace tallybook::testing {
namespace {

using engine::DamagedBook;
using ::testing::HasSubstr;

constexpr bool kAsItReads = true;
constexpr bool kNotAsItReads = false;

class DamagedBookTest : public BookFixture {
 protected:
  void SetUp() override {
    CreateAndOpen()->Close();
    bytes = folder.Read("North.tbk");
  }
  void PutSample(const char* name) const {
    std::filesystem::copy_file(tallybook::testing::SampleBook(name), BookPath(),
                               std::filesystem::copy_options::overwrite_existing);
  }

  std::string bytes;
};

TEST_F(DamagedBookTest, ReadsTheDescriptionOfABookThatIsWhole) {
  DamagedBook book(BookPath());
  EXPECT_EQ(book.LoadDescription(kNotAsItReads), "");
  EXPECT_EQ(book.Stored().description, ShopDescription());
  EXPECT_EQ(book.Format(), engine::kBookFormat);
  EXPECT_TRUE(book.HasChecksums());
  EXPECT_EQ(book.LogTrouble(), "");
}

TEST_F(DamagedBookTest, LeavesTheBookAndWhatStandsBesideItAsTheyAre) {
  const std::string half = bytes.substr(0, bytes.size() / 2);
  folder.Write("North.tbk", half);
  folder.Write("North.tbk-wal", "no log");
  {
    DamagedBook book(BookPath());
    engine::Tries([&] { book.LoadDescription(kAsItReads); });
    EXPECT_THAT(book.LogTrouble(), HasSubstr("the log beside the book is damaged"));
  }
  EXPECT_EQ(folder.Read("North.tbk"), half);
  EXPECT_EQ(folder.Read("North.tbk-wal"), "no log");
  EXPECT_FALSE(folder.Has("North.tbk-shm"));
}

TEST_F(DamagedBookTest, HasNoCopyWithANameOnceItIsOpen) {
  std::filesystem::create_directory(folder.Path("tmp"));
  ::setenv("TMPDIR", folder.Path("tmp").c_str(), 1);
  const auto writer = Open();
  Put(*writer, 101, Day(2003, 1, 1), 1, 5);
  writer->Commit();
  std::filesystem::copy_file(BookPath(), folder.Path("Left.tbk"));
  std::filesystem::copy_file(BookPath() + "-wal", folder.Path("Left.tbk-wal"));
  DamagedBook book(folder.Path("Left.tbk"));
  EXPECT_TRUE(std::filesystem::is_empty(folder.Path("tmp")));
  EXPECT_EQ(book.LoadDescription(kNotAsItReads), "");
  EXPECT_EQ(book.Db().Number("SELECT count(*) FROM chunk"), 1);
  ::unsetenv("TMPDIR");
}

TEST_F(DamagedBookTest, TellsTheFormatsOfOlderBooks) {
  PutSample("book-v1.tbk");
  DamagedBook first(BookPath());
  EXPECT_EQ(first.LoadDescription(kNotAsItReads), "");
  EXPECT_EQ(first.Format(), 1);
  EXPECT_FALSE(first.HasChecksums());
  PutSample("book-v2.tbk");
  DamagedBook second(BookPath());
  EXPECT_EQ(second.LoadDescription(kNotAsItReads), "");
  EXPECT_EQ(second.Format(), 2);
}

TEST_F(DamagedBookTest, FindsTheFormatWhereItsNumberIsDamaged) {
  for (const int number : {0, 2, 1, 77}) {
    Meddle("PRAGMA user_version = " + std::to_string(number));
    DamagedBook book(BookPath());
    EXPECT_EQ(book.LoadDescription(kNotAsItReads), "") << number;
    EXPECT_EQ(book.Format(), engine::kBookFormat) << number;
  }
}

TEST_F(DamagedBookTest, TakesADescriptionThatIsDamagedWhereItIsTold) {
  Meddle("UPDATE property SET value = 'South' WHERE name = 'system_name'");
  DamagedBook book(BookPath());
  EXPECT_THAT([&] { book.LoadDescription(kNotAsItReads); },
              FailsWith(FailureNumber::kDeviceError, "description does not agree"));
  EXPECT_THAT(book.LoadDescription(kAsItReads), HasSubstr("description does not agree"));
  EXPECT_EQ(book.Stored().description.system_name, "South");
}

TEST_F(DamagedBookTest, FailsWhereThereIsNoDescription) {
  Meddle("DROP TABLE property");
  DamagedBook book(BookPath());
  EXPECT_THAT([&] { book.LoadDescription(kAsItReads); }, FailsWith(FailureNumber::kDeviceError));
}

TEST_F(DamagedBookTest, GoesOnAfterDamageButNotOnAFullDisk) {
  EXPECT_TRUE(engine::Tries([] {}));
  EXPECT_FALSE(engine::Tries([] { throw Failure(FailureNumber::kDeviceError, "damage"); }));
  EXPECT_THAT([] { engine::Tries([] { throw Failure(FailureNumber::kDiskFull, "full"); }); },
              FailsWith(FailureNumber::kDiskFull));
}

}  // namespace
}  // namespace tallybook::testing
