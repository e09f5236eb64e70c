#include "tallybook/engine/ChunkRelay.h"

#include <algorithm>
#include <optional>
#include <span>
#include <string>

#include "base/Failure.h"
#include "tallybook/engine/Checksums.h"
#include "tallybook/engine/ChunkCodec.h"
#include "tallybook/engine/ChunkKey.h"

namespace tallybook::engine {

namespace {

[[noreturn]] void FailDamaged(const Text& path, Long account) {
  throw Failure(FailureNumber::kDeviceError,
                path + ": the book is damaged: the chunks of account number " + std::to_string(account) +
                    " do not agree with their checksums, or with the sums beside them",
                "Tallybook.Book");
}

}  // namespace

void ChunkRelay::Run(AccountSums& sums) {
  const std::vector<Long> accounts = sums.Accounts();
  for (const Long account : accounts) RelayAccount(account, sums);
}

// Keys of before are keys again, of other rows: all chunks of the account go before the first one comes.
void ChunkRelay::RelayAccount(Long account, AccountSums& sums) {
  ReadAccount(account, sums);
  for (const std::int64_t row : old_rows_) storage_.DeleteChunk(row);
  for (const auto& [key, bytes] : new_chunks_) static_cast<void>(storage_.InsertChunk(key, bytes));
}

void ChunkRelay::ReadAccount(Long account, AccountSums& sums) {
  old_rows_.clear();
  new_chunks_.clear();
  key_ = FirstKeyOf(account);
  std::vector<std::int64_t> keys;
  storage_.VisitKeys(key_, FirstKeyOf(account + 1) - 1, [&](std::int64_t key) { keys.push_back(key); });
  ChunkRows rows;
  for (const std::int64_t key : keys) {
    const std::optional<StoredChunk> stored = storage_.FindChunk(key);
    const auto checked = stored ? TakeChecked(stored->figures, key) : std::nullopt;
    if (!checked) FailDamaged(storage_.Path(), account);
    sums.Remove(key, checked->checksum);
    old_rows_.push_back(stored->row);
    DecodeChunk(from_, checked->bytes, rows);
    TakeRows(key, rows);
  }
  storage_.EndWalk();
  EndChunk();
  if (sums.Of(account) != AccountSum()) FailDamaged(storage_.Path(), account);
  for (auto& [key, bytes] : new_chunks_) sums.Add(key, AppendChecksum(bytes, key));
}

void ChunkRelay::TakeRows(std::int64_t key, const ChunkRows& rows) {
  const std::int64_t first = FirstKeyOf(AccountOf(key));
  const std::size_t first_record = std::size_t{ChunkNumberOf(key)} * from_.rows;
  for (std::size_t row = rows.Range().first; row < rows.Range().end; ++row) {
    const Double* figures = rows.Find(row, from_.fields);
    if (std::all_of(figures, figures + from_.fields, [](Double figure) { return figure == 0; })) continue;
    const std::size_t record = first_record + row;
    const std::int64_t new_key = first + static_cast<std::int64_t>(record / to_.rows);
    if (new_key != key_) EndChunk();
    key_ = new_key;
    std::copy_n(figures, from_.fields, filled_.Hold(record % to_.rows, to_));
  }
}

void ChunkRelay::EndChunk() {
  std::vector<std::byte> bytes;
  EncodeChunk(to_, filled_, bytes);
  if (!bytes.empty()) new_chunks_.emplace_back(key_, std::move(bytes));
  filled_ = {};
}

}  // namespace tallybook::engine
