#include "tallybook/engine/SalvagedChunks.h"

#include <span>

#include "tallybook/engine/ChunkKey.h"
#include "tallybook/engine/SumTable.h"

namespace tallybook::engine {

SalvagedChunks::SalvagedChunks(Database& database)
    : database_(database),
      insert_(database, "INSERT INTO chunk (key, figures) VALUES (?1, ?2)"),
      remove_(database, "DELETE FROM chunk WHERE key = ?1") {}

void SalvagedChunks::Put(const FoundChunk& chunk) {
  insert_.Bind(1, chunk.key).Bind(2, std::span<const std::byte>(chunk.bytes)).Run();
  checksums_[chunk.key] = chunk.checksum;
}

void SalvagedChunks::Remove(std::int64_t key) {
  remove_.Bind(1, key).Run();
  checksums_.erase(key);
}

std::vector<std::int64_t> SalvagedChunks::KeysOf(Long account) const {
  std::vector<std::int64_t> keys;
  const auto end = checksums_.lower_bound(FirstKeyOf(account + 1));
  for (auto at = checksums_.lower_bound(FirstKeyOf(account)); at != end; ++at) keys.push_back(at->first);
  return keys;
}

AccountSum SalvagedChunks::SumOf(Long account) const {
  AccountSum sum;
  for (const std::int64_t key : KeysOf(account)) sum.Add(key, checksums_.at(key));
  return sum;
}

void SalvagedChunks::SaveSums() {
  AccountSums sums;
  for (const auto& [key, checksum] : checksums_) sums.Add(key, checksum);
  SumTable table(database_);
  sums.GiveChanged([&](std::int64_t block, std::span<const std::byte> bytes) { table.Put(block, bytes); });
}

}  // namespace tallybook::engine
