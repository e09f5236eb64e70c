// What a book's file says of each account's chunks beside the chunks themselves: how many there are, the sum of their
// numbers, and the sum of their checksums. So a chunk is missed that an index hides, or that is not the one written
// last. The sums of up to 256 accounts stand in one row (docs/book-file.md, "Sums").
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <vector>

#include "base/Types.h"
#include "tallybook/engine/Checksums.h"

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
  // Takes a row of what is stored, in the order of the rows. `path` is what failures call the book: 57 where the row is
  // damaged.
  void Take(std::int64_t block, std::span<const std::byte> bytes, const Text& path);

  [[nodiscard]] AccountSum Of(Long account) const;
  // Whether no account has a chunk.
  [[nodiscard]] bool Empty() const;
  // All accounts that are known, in rising order.
  [[nodiscard]] const std::vector<Long>& Accounts() const { return accounts_; }

  void Add(std::int64_t key, Checksum checksum) { Changing(key).Add(key, checksum); }
  void Remove(std::int64_t key, Checksum checksum) { Changing(key).Remove(key, checksum); }
  // Gives the rows that have changed since the last call, to be stored; no bytes for one that is to be taken away.
  using RowTaker = std::function<void(std::int64_t block, std::span<const std::byte> bytes)>;
  void GiveChanged(const RowTaker& take);

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
