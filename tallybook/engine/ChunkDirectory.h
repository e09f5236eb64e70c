// Which chunks a book has stored, account by account: the account's keys in the index, held against the account's sums
// when they are first asked for. It answers whether a chunk that was not found is none, or is hidden by a damaged
// index. One thread.
#pragma once

#include <cstdint>
#include <unordered_map>
#include <vector>

#include "base/Types.h"
#include "tallybook/engine/AccountSums.h"
#include "tallybook/engine/BookStorage.h"

namespace tallybook::engine {

class ChunkDirectory {
 public:
  // `storage` must outlive it.
  explicit ChunkDirectory(BookStorage& storage) : storage_(storage) {}

  // Whether the file has the chunk of this key.
  //   sum     of the key's account
  //   fails   57 where the index does not show what the sum says of the account
  [[nodiscard]] bool Has(std::int64_t key, const AccountSum& sum);

  // How many chunks the file has from one key to another of the same account. Fails as Has.
  [[nodiscard]] std::uint32_t CountBetween(std::int64_t first_key, std::int64_t last_key, const AccountSum& sum);

  // Keeps up with what was stored.
  void Note(std::int64_t key, bool is_there);
  void Clear() { numbers_of_account_.clear(); }

 private:
  using Numbers = std::vector<std::uint32_t>;  // of chunks, rising

  [[nodiscard]] const Numbers& NumbersOf(Long account, const AccountSum& sum);
  [[nodiscard]] Numbers Read(Long account, const AccountSum& sum);

  BookStorage& storage_;
  std::unordered_map<Long, Numbers> numbers_of_account_;
};

}  // namespace tallybook::engine
