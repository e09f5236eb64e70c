#include <filesystem>

#include "tallybook/engine/DatabaseHead.h"
#include "tests/support/FileSizeLimit.h"
#include "tests/tallybook/engine/BookFixture.h"

namespace tallybook::testing {
namespace {

using engine::MendDatabaseHead;

constexpr bool kHasLog = true;
constexpr bool kHasNoLog = false;

class DatabaseHeadTest : public BookFixture {
 protected:
  void SetUp() override {
    CreateAndOpen()->Close();
    bytes = folder.Read("North.tbk");
  }
  void Damage(std::initializer_list<std::size_t> places) {
    for (const std::size_t place : places) bytes[place] = static_cast<char>(bytes[place] ^ 0x55);
    folder.Write("North.tbk", bytes);
  }

  std::string bytes;
};

TEST_F(DatabaseHeadTest, MakesABookReadableWhoseHeadIsDamagedInAnyByteButItsMarks) {
  const engine::BookDescription description = Open()->Description();
  for (std::size_t place = 0; place < 100; ++place) {
    // The state of the schema and the number of the format are the book's own.
    if ((place >= 40 && place < 48) || (place >= 60 && place < 64)) continue;
    SCOPED_TRACE(place);
    const std::string before = bytes;
    Damage({place});
    MendDatabaseHead(BookPath(), "book", kHasNoLog);
    ASSERT_EQ(OpenToRead()->Description(), description);
    bytes = before;
  }
}

TEST_F(DatabaseHeadTest, SaysWhetherALogIsToBeRead) {
  MendDatabaseHead(BookPath(), "book", kHasLog);
  EXPECT_EQ(folder.Read("North.tbk").substr(18, 2), "\2\2");
  MendDatabaseHead(BookPath(), "book", kHasNoLog);
  EXPECT_EQ(folder.Read("North.tbk").substr(18, 2), "\1\1");
}

TEST_F(DatabaseHeadTest, KnowsABookByEitherOfItsMarks) {
  Damage({0, 1, 2});
  MendDatabaseHead(BookPath(), "book", kHasNoLog);
  bytes = folder.Read("North.tbk");
  Damage({68});
  MendDatabaseHead(BookPath(), "book", kHasNoLog);
  bytes = folder.Read("North.tbk");
  Damage({0, 68});
  EXPECT_THAT([&] { MendDatabaseHead(BookPath(), "book", kHasNoLog); },
              FailsWith(FailureNumber::kPathOrAccess, "book: this file is not a book"));
  EXPECT_EQ(folder.Read("North.tbk"), bytes);
}

TEST_F(DatabaseHeadTest, RefusesAFileThatIsShorterThanAHead) {
  folder.Write("North.tbk", bytes.substr(0, 99));
  EXPECT_THAT([&] { MendDatabaseHead(BookPath(), "book", kHasNoLog); },
              FailsWith(FailureNumber::kPathOrAccess, "not a book"));
}

TEST_F(DatabaseHeadTest, FailsWhereTheHeadCannotBeWritten) {
  const FileSizeLimit no_room(50);
  EXPECT_THAT([&] { MendDatabaseHead(BookPath(), "book", kHasNoLog); },
              FailsWith(FailureNumber::kDeviceError, "book: its copy cannot be written"));
}

}  // namespace
}  // namespace tallybook::testing
