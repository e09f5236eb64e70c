// What a book's file says of each account's chunks beside the chunks themselves: how many there are, the sum of their
// numbers, and the sum of their checksums. So a chunk is missed that an index hides, or that is not the one written last.
// The sums of up to 256 accounts stand in one row (docs/book-file.md, "Sums").
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "base/Types.h"
#include "tallybook/engine/Checksums.h"
#include "tallybook/engine/Database.h"

namespace tallybook::engine {

struct AccountSum {
  std::uint32_t chunks = 0;
  std::uint64_t numbers = 0;    // of the chunks, added up
  std::uint64_t checksums = 0;  // added up, modulo 2 to the 64th
  bool operator==(const AccountSum&) const = default;

  void Add(std::int64_t key, Checksum checksum);
  void Remove(std::int64_t key, Checksum checksum);
};

class AccountSums {
 public:
  // No chunks. `accounts` are numbers that are likely to be asked for.
  explicit AccountSums(const std::vector<Long>& accounts = {});
  // Reads the file's sums. Failure 57 where they are damaged.
  void Load(Database& database);

  [[nodiscard]] AccountSum Of(Long account) const;
  // Whether no account has a chunk.
  [[nodiscard]] bool Empty() const;
  // All accounts that are known, in rising order.
  [[nodiscard]] const std::vector<Long>& Accounts() const { return accounts_; }

  void Add(std::int64_t key, Checksum checksum) { Changing(key).Add(key, checksum); }
  void Remove(std::int64_t key, Checksum checksum) { Changing(key).Remove(key, checksum); }
  // Writes the rows that have changed. Within a transaction.
  void Save(Database& database);

 private:
  [[nodiscard]] std::size_t PlaceOf(Long account) const;  // where it stands, or would
  AccountSum& Changing(std::int64_t key);
  std::size_t MakePlace(Long account);

  std::vector<Long> accounts_;
  std::vector<AccountSum> sums_;        // of the account at the same place
  std::vector<Long> changed_blocks_;    // the last one is that of the last change
  mutable std::size_t last_place_ = 0;  // accounts are asked for in rising order mostly
};

}  // namespace tallybook::engine
