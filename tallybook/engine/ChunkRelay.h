// Stores all chunks of a book anew with another number of rows each. One thread.
#pragma once

#include <cstdint>
#include <utility>
#include <vector>

#include "base/Types.h"
#include "tallybook/engine/AccountSums.h"
#include "tallybook/engine/BookStorage.h"
#include "tallybook/engine/ChunkRows.h"

namespace tallybook::engine {

class ChunkRelay {
 public:
  // From chunks of one shape to those of another, which has as many figures to a row or more. `storage` must outlive
  // this.
  ChunkRelay(BookStorage& storage, const ChunkShape& from, const ChunkShape& to)
      : storage_(storage), from_(from), to_(to) {}

  // Within a transaction. `sums` are those of all that is stored, and those of what is stored then.
  //   fails   57 where a chunk is damaged, or the chunks of an account do not agree with the sums; as the storage
  void Run(AccountSums& sums);

 private:
  void RelayAccount(Long account, AccountSums& sums);
  void ReadAccount(Long account, AccountSums& sums);
  void TakeRows(std::int64_t key, const ChunkRows& rows);
  void EndChunk();

  BookStorage& storage_;
  ChunkShape from_;
  ChunkShape to_;
  std::vector<std::int64_t> old_rows_;  // of the file, of the account at hand
  std::int64_t key_ = 0;                // of the chunk that is being filled
  ChunkRows filled_;
  using NewChunk = std::pair<std::int64_t, std::vector<std::byte>>;
  std::vector<NewChunk> new_chunks_;
};

}  // namespace tallybook::engine
