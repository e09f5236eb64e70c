#include <cstring>
#include <fcntl.h>
#include <map>
#include <random>
#include <sqlite3.h>
#include <unistd.h>

#include "tallybook/engine/LeafRows.h"
#include "tests/tallybook/engine/BookFixture.h"

namespace tallybook::testing {
namespace {

constexpr std::size_t kPageSize = 4096;

class LeafRowsTest : public ::testing::Test {
 protected:
  void Execute(const Text& sql) {
    sqlite3* handle = nullptr;
    ASSERT_EQ(sqlite3_open(Path().c_str(), &handle), SQLITE_OK);
    ASSERT_EQ(sqlite3_exec(handle, sql.c_str(), nullptr, nullptr, nullptr), SQLITE_OK) << sqlite3_errmsg(handle);
    sqlite3_close(handle);
  }
  [[nodiscard]] Text Path() const { return folder_.Path("rows.db"); }

  std::map<std::int64_t, std::size_t> Sizes() {
    std::map<std::int64_t, std::size_t> sizes;
    const int file = ::open(Path().c_str(), O_RDONLY | O_CLOEXEC);
    engine::VisitLeafRows(file, kPageSize,
                          [&](std::int64_t number, std::span<const std::byte> bytes) { sizes[number] = bytes.size(); });
    ::close(file);
    return sizes;
  }

  TempFolder folder_;
};

TEST_F(LeafRowsTest, FindsRowsOfEverySizeWithoutTheTreesThatLeadToThem) {
  Text sql = "PRAGMA page_size = 4096; CREATE TABLE chunk (id INTEGER PRIMARY KEY, key INTEGER, figures BLOB);";
  std::map<std::int64_t, std::size_t> sizes;
  for (const std::size_t size : {0U, 1U, 100U, 4040U, 4050U, 4060U, 4061U, 4070U, 8200U, 20000U}) {
    for (const std::int64_t key :
         {std::int64_t{0}, std::int64_t{1}, std::int64_t{-7}, std::int64_t{300}, std::int64_t{1} << 40}) {
      const std::int64_t number = key * 100'000 + static_cast<std::int64_t>(size);
      sizes[number] = size;
      sql += "INSERT INTO chunk (key, figures) VALUES (" + std::to_string(number) + ", randomblob(" +
             std::to_string(size) + "));";
    }
  }
  sizes.erase(0);  // a run of no bytes is none
  Execute(sql);
  std::string bytes = folder_.Read("rows.db");
  std::memset(bytes.data(), 0x55, kPageSize);  // the first page, with the schema
  folder_.Write("rows.db", bytes);
  const auto found = Sizes();
  for (const auto& [number, size] : sizes) {
    if (size == 0) continue;
    ASSERT_TRUE(found.contains(number)) << number;
    EXPECT_EQ(found.at(number), size);
  }
}

TEST_F(LeafRowsTest, PassesOverRowsOfAnotherShape) {
  Execute(
      "PRAGMA page_size = 4096; CREATE TABLE other (id INTEGER PRIMARY KEY, name TEXT, figures BLOB);"
      "INSERT INTO other (name, figures) VALUES ('name', x'0102'); CREATE TABLE two (id INTEGER PRIMARY KEY, number "
      "INTEGER);"
      "INSERT INTO two (number) VALUES (7)");
  EXPECT_TRUE(Sizes().empty());
}

TEST_F(LeafRowsTest, FailsWhereTheFileCannotBeRead) {
  EXPECT_THAT([] { engine::VisitLeafRows(-1, kPageSize, [](std::int64_t, std::span<const std::byte>) {}); },
              FailsWith(FailureNumber::kDeviceError, "cannot be read"));
}

TEST_F(LeafRowsTest, EndsWhateverThePagesHold) {
  std::mt19937 random(7);
  for (int trial = 0; trial < 20; ++trial) {
    std::string bytes(kPageSize * 3, '\0');
    for (char& byte : bytes) byte = static_cast<char>(random());
    for (const std::size_t page : {kPageSize, 2 * kPageSize}) bytes[page] = 0x0D;
    folder_.Write("rows.db", bytes);
    Sizes();
  }
}

}  // namespace
}  // namespace tallybook::testing
