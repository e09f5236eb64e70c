#include "tallybook/engine/SumTable.h"

namespace tallybook::engine {

void SumTable::Visit(const std::function<void(std::int64_t block, std::span<const std::byte> bytes)>& visit) {
  DbStatement select(database_, "SELECT block, sums FROM account_sum ORDER BY block");
  while (select.Step()) visit(select.Int(0), select.Bytes(1));
}

void SumTable::Put(std::int64_t block, std::span<const std::byte> bytes) {
  if (bytes.empty()) {
    DbStatement(database_, "DELETE FROM account_sum WHERE block = ?1").Bind(1, block).Run();
    return;
  }
  if (!write_) write_.emplace(database_, "INSERT OR REPLACE INTO account_sum (block, sums) VALUES (?1, ?2)");
  write_->Bind(1, block).Bind(2, bytes).Run();
}

}  // namespace tallybook::engine
