#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <map>
#include <rapidcheck.h>
#include <rapidcheck/gtest.h>

#include "tallybook/engine/AccountSums.h"
#include "tallybook/engine/ChunkKey.h"
#include "tallybook/engine/SumTable.h"
#include "tests/support/FailsWith.h"
#include "tests/support/TempFolder.h"

namespace tallybook::testing {
namespace {

using engine::AccountSum;
using engine::AccountSums;
using engine::Database;
using engine::FirstKeyOf;

class StoredSums {
 public:
  StoredSums() : database_(folder_.Path("sums.tbk"), Database::Mode::kCreate) {
    database_.Execute("CREATE TABLE account_sum (block INTEGER PRIMARY KEY, sums BLOB NOT NULL)");
  }
  [[nodiscard]] Database& Db() { return database_; }
  [[nodiscard]] AccountSums Loaded() {
    AccountSums sums;
    table_.Visit([&](std::int64_t block, std::span<const std::byte> bytes) { sums.Take(block, bytes, "sums.tbk"); });
    return sums;
  }
  void Save(AccountSums& sums) {
    sums.GiveChanged([this](std::int64_t block, std::span<const std::byte> bytes) { table_.Put(block, bytes); });
  }

 private:
  TempFolder folder_;
  Database database_;
  engine::SumTable table_{database_};
};

TEST(AccountSums, AddUpWhatWasAddedAndNotRemoved) {
  StoredSums table;
  AccountSums sums({300, 5});
  EXPECT_TRUE(sums.Empty());
  sums.Add(FirstKeyOf(5) + 3, 100);
  sums.Add(FirstKeyOf(5) + 4, 200);
  sums.Add(FirstKeyOf(300), 50);
  sums.Remove(FirstKeyOf(5) + 3, 100);
  table.Save(sums);
  EXPECT_EQ(table.Loaded().Of(5), (AccountSum{1, 4, 200}));
  EXPECT_EQ(table.Loaded().Of(300), (AccountSum{1, 0, 50}));
  EXPECT_EQ(table.Loaded().Of(6), AccountSum());
  EXPECT_FALSE(table.Loaded().Empty());
}

TEST(AccountSums, TakeARowForManyAccounts) {
  StoredSums table;
  AccountSums sums;
  for (Long account = 1; account <= 9999; ++account) sums.Add(FirstKeyOf(account), 1);
  table.Save(sums);
  EXPECT_EQ(table.Db().Number("SELECT count(*) FROM account_sum"), 40);
}

TEST(AccountSums, TakeNoRowWhereNothingIsLeft) {
  StoredSums table;
  AccountSums sums;
  sums.Add(FirstKeyOf(5), 1);
  table.Save(sums);
  sums.Remove(FirstKeyOf(5), 1);
  table.Save(sums);
  EXPECT_EQ(table.Db().Number("SELECT count(*) FROM account_sum"), 0);
}

TEST(AccountSums, TellThatTheyAreDamaged) {
  StoredSums table;
  AccountSums sums;
  sums.Add(FirstKeyOf(700), 1);
  table.Save(sums);
  table.Db().Execute("UPDATE account_sum SET block = 3");
  EXPECT_THAT([&] { static_cast<void>(table.Loaded()); },
              FailsWith(FailureNumber::kDeviceError, "the sums of the accounts from number 768 on"));
}

RC_GTEST_PROP(AccountSumsProperties, AgreeWithAMapWhateverIsAddedAndSaved, ()) {
  const auto accounts = *rc::gen::container<std::vector<Long>>(rc::gen::inRange<Long>(1, 2000));
  StoredSums table;
  AccountSums sums;
  std::map<Long, AccountSum> model;
  for (const Long account : accounts) {
    const std::int64_t key = FirstKeyOf(account) + account % 7;
    sums.Add(key, static_cast<std::uint64_t>(account) * 1'000'003);
    model[account].Add(key, static_cast<std::uint64_t>(account) * 1'000'003);
    if (account % 3 == 0) table.Save(sums);
  }
  table.Save(sums);
  const AccountSums loaded = table.Loaded();
  for (Long account = 1; account < 2000; ++account) {
    const auto found = model.find(account);
    RC_ASSERT(loaded.Of(account) == (found == model.end() ? AccountSum() : found->second));
  }
}

}  // namespace
}  // namespace tallybook::testing
