// Which chunks a book can have, by its description, and of which account and dates each of them is. One thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <set>
#include <vector>

#include "base/Types.h"
#include "tallybook/engine/ChunkRows.h"
#include "tallybook/engine/StoredDescription.h"

namespace tallybook::engine {

class ChunkPlaces {
 public:
  explicit ChunkPlaces(const StoredDescription& stored);

  [[nodiscard]] const ChunkShape& Shape() const { return shape_; }
  // The numbers of all accounts that the book has or had.
  [[nodiscard]] const std::set<Long>& Accounts() const { return accounts_; }
  // An account's code; empty where the book does not have it (any more).
  [[nodiscard]] Text CodeOf(Long account) const;

  // How many chunks an account has at most; their numbers are below.
  [[nodiscard]] std::size_t ChunksOfAccount() const { return chunks_of_account_; }
  [[nodiscard]] bool Has(std::int64_t key) const;

  // The first and the last level date that the book holds, kNoDate where it holds none.
  [[nodiscard]] Date FirstDate() const { return dates_.empty() ? kNoDate : dates_.front(); }
  [[nodiscard]] Date LastDate() const { return dates_.empty() ? kNoDate : dates_.back(); }
  // The same of a chunk, whose number is one that accounts have.
  [[nodiscard]] Date FirstDateOf(std::int64_t key) const { return dates_[FirstRowOf(key)]; }
  [[nodiscard]] Date LastDateOf(std::int64_t key) const;

 private:
  [[nodiscard]] std::size_t FirstRowOf(std::int64_t key) const;

  ChunkShape shape_;
  std::set<Long> accounts_;
  std::map<Long, Text> codes_;
  std::vector<Date> dates_;
  std::size_t chunks_of_account_ = 0;
};

}  // namespace tallybook::engine
