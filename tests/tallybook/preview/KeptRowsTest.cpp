// Rows that are kept for later.
#include <cstdint>
#include <cstdlib>
#include <gmock/gmock.h>
#include <vector>

#include "tallybook/preview/KeptRows.h"
#include "tests/support/FailsWith.h"
#include "tests/support/TempFolder.h"

namespace tallybook::preview {
namespace {

using testing::FailsWith;

constexpr std::int64_t kMoreThanAMebibyte = 300'000;

std::vector<std::int64_t> RowsOf(const KeptRows<std::int64_t>& kept) {
  std::vector<std::int64_t> rows;
  kept.VisitEach([&](std::int64_t row) {
    rows.push_back(row);
    return true;
  });
  return rows;
}

TEST(KeptRows, ComeBackInTheirOrderWhateverFitsIntoMemory) {
  KeptRows<std::int64_t> kept;
  std::vector<std::int64_t> expected;
  for (std::int64_t row = 0; row < kMoreThanAMebibyte; ++row) {
    kept.Add(row);
    expected.push_back(row);
  }
  const std::vector<std::int64_t> several = {-1, -2, -3};
  kept.Add(several);
  expected.insert(expected.end(), several.begin(), several.end());
  EXPECT_EQ(RowsOf(kept), expected);
  EXPECT_EQ(RowsOf(kept), expected);
}

TEST(KeptRows, AreToldUntilTheVisitorHasEnough) {
  KeptRows<std::int64_t> kept;
  for (std::int64_t row = 0; row < kMoreThanAMebibyte; ++row) kept.Add(row);
  for (const std::int64_t last : {std::int64_t{5}, kMoreThanAMebibyte - 1}) {
    std::int64_t told = 0;
    EXPECT_FALSE(kept.VisitEach([&](std::int64_t row) { return ++told != 0 && row != last; }));
    EXPECT_EQ(told, last + 1);
  }
}

TEST(KeptRows, NeedNoFileWhileTheyFitIntoMemory) {
  const testing::TempFolder folder;
  ::setenv("TMPDIR", folder.Path("missing").c_str(), 1);
  KeptRows<std::int64_t> kept;
  kept.Add(7);
  EXPECT_THAT(RowsOf(kept), ::testing::ElementsAre(7));
  EXPECT_THAT(
      [&] {
        for (std::int64_t row = 0; row < kMoreThanAMebibyte; ++row) kept.Add(row);
      },
      FailsWith(FailureNumber::kFileNotFound));
  ::unsetenv("TMPDIR");
}

}  // namespace
}  // namespace tallybook::preview
