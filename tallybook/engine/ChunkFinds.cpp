#include "tallybook/engine/ChunkFinds.h"

#include <algorithm>
#include <utility>

#include "tallybook/engine/BookFormat.h"
#include "tallybook/engine/Checksums.h"
#include "tallybook/engine/ChunkCodec.h"
#include "tallybook/engine/ChunkKey.h"
#include "tallybook/engine/LeafRows.h"

namespace tallybook::engine {

namespace {

// What tells two chunks in leaves apart.
std::pair<std::int64_t, Checksum> MarkOf(const FoundChunk& chunk) {
  return {chunk.key, chunk.checksum};
}

}  // namespace

void ChunkFinds::CopyAll() {
  WalkTable();
  ReadIndex();
  for (const std::int64_t key : index_) {
    if (!chunks_.Has(key)) Tries([&] { TakeByIndex(key); });
  }
}

// Nothing where the chunk is damaged, or belongs nowhere in this book.
std::optional<FoundChunk> ChunkFinds::Checked(std::int64_t key, std::span<const std::byte> stored) const {
  if (!places_.Has(key)) return std::nullopt;
  CheckedBytes checked{stored, 0};
  if (book_.HasChecksums()) {
    const auto taken = TakeChecked(stored, key);
    if (!taken) return std::nullopt;
    checked = *taken;
  }
  ChunkRows rows;
  if (!Tries([&] { DecodeChunk(places_.Shape(), checked.bytes, rows); })) return std::nullopt;
  FoundChunk chunk{key, checked.checksum, {checked.bytes.begin(), checked.bytes.end()}};
  chunk.checksum = AppendChecksum(chunk.bytes, key);
  return chunk;
}

void ChunkFinds::Take(std::int64_t key, std::span<const std::byte> stored) {
  auto chunk = Checked(key, stored);
  if (!chunk) return;
  if (!chunks_.Has(key)) {
    chunks_.Put(*chunk);
  } else if (chunks_.All().at(key) != chunk->checksum) {
    others_.push_back(std::move(*chunk));
  }
}

void ChunkFinds::WalkTable() {
  std::int64_t last = 0;
  const bool whole = Tries([&] {
    DbStatement walk(book_.Db(), "SELECT id, key, figures FROM chunk NOT INDEXED ORDER BY id");
    while (walk.Step()) {
      last = walk.Int(0);
      Take(walk.Int(1), walk.Bytes(2));
    }
  });
  if (whole) return;
  Tries([&] {
    DbStatement walk(book_.Db(), "SELECT id, key, figures FROM chunk NOT INDEXED ORDER BY id DESC");
    while (walk.Step() && walk.Int(0) > last) Take(walk.Int(1), walk.Bytes(2));
  });
}

void ChunkFinds::ReadIndex() {
  index_is_whole_ = true;
  for (const char* sql : {"SELECT key FROM chunk ORDER BY key", "SELECT key FROM chunk ORDER BY key DESC"}) {
    const bool whole = Tries([&] {
      DbStatement walk(book_.Db(), sql);
      while (walk.Step()) index_.insert(walk.Int(0));
    });
    index_is_whole_ = index_is_whole_ && whole;
  }
}

void ChunkFinds::TakeByIndex(std::int64_t key) {
  DbStatement find(book_.Db(), "SELECT key, figures FROM chunk WHERE key = ?1");
  if (find.Bind(1, key).Step() && find.Int(0) == key) Take(key, find.Bytes(1));
}

std::vector<std::int64_t> ChunkFinds::MissingOfIndex(Long account) const {
  std::vector<std::int64_t> missing;
  const auto end = index_.lower_bound(FirstKeyOf(account + 1));
  for (auto at = index_.lower_bound(FirstKeyOf(account)); at != end; ++at) {
    if (!chunks_.Has(*at) && ChunkNumberOf(*at) < places_.ChunksOfAccount()) missing.push_back(*at);
  }
  return missing;
}

const std::vector<FoundChunk>& ChunkFinds::OfLeaves(Long account) {
  if (!std::exchange(leaves_are_read_, true)) ReadLeaves();
  return leaves_[account];
}

void ChunkFinds::ReadLeaves() {
  Tries([&] {
    VisitLeafRows(book_.CopyDescriptor(), kPageSize, [&](std::int64_t key, std::span<const std::byte> bytes) {
      if (chunks_.Has(key)) return;
      auto chunk = Checked(key, bytes);
      if (chunk) leaves_[AccountOf(key)].push_back(std::move(*chunk));
    });
  });
  for (auto& [account, chunks] : leaves_) {
    std::ranges::sort(chunks, {}, MarkOf);
    const auto same = std::unique(chunks.begin(), chunks.end(), [](const FoundChunk& one, const FoundChunk& other) {
      return MarkOf(one) == MarkOf(other);
    });
    chunks.erase(same, chunks.end());
  }
}

}  // namespace tallybook::engine
