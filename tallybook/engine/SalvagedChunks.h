// The chunks that a book has which is made of a damaged one: they come as they are found, and can be taken away again.
// One thread.
#pragma once

#include <cstdint>
#include <map>
#include <vector>

#include "base/Types.h"
#include "tallybook/engine/AccountSums.h"
#include "tallybook/engine/Checksums.h"
#include "tallybook/engine/Database.h"

namespace tallybook::engine {

// A chunk that was found whole.
struct FoundChunk {
  std::int64_t key = 0;
  Checksum checksum = 0;
  std::vector<std::byte> bytes;  // with the checksum
};

class SalvagedChunks {
 public:
  // `database` is the new book's, within a transaction, and must outlive this.
  explicit SalvagedChunks(Database& database);

  // The checksums of all by their keys.
  [[nodiscard]] const std::map<std::int64_t, Checksum>& All() const { return checksums_; }
  [[nodiscard]] bool Has(std::int64_t key) const { return checksums_.contains(key); }
  // The place is free.
  void Put(const FoundChunk& chunk);
  void Remove(std::int64_t key);

  // The keys of an account, rising, and their sum.
  [[nodiscard]] std::vector<std::int64_t> KeysOf(Long account) const;
  [[nodiscard]] AccountSum SumOf(Long account) const;
  // Stores the sums of all.
  void SaveSums();

 private:
  Database& database_;
  DbStatement insert_;
  DbStatement remove_;
  std::map<std::int64_t, Checksum> checksums_;
};

}  // namespace tallybook::engine
