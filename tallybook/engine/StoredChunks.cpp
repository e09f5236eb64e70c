#include "tallybook/engine/StoredChunks.h"

namespace tallybook::engine {

StoredChunks::StoredChunks(Database& database)
    : walk_(database, "SELECT key, id, figures FROM chunk WHERE key >= ?1 ORDER BY key") {}

std::optional<StoredChunk> StoredChunks::Find(std::int64_t key) {
  if (state_ == State::kOnChunk && key > key_) Step();
  const bool known =
      (state_ == State::kBehindLast && key >= passed_) || (state_ == State::kOnChunk && key >= passed_ && key <= key_);
  if (!known) Search(key);
  if (state_ != State::kOnChunk || key != key_) return std::nullopt;
  return StoredChunk{walk_.Int(1), walk_.Bytes(2)};
}

void StoredChunks::EndWalk() {
  if (state_ == State::kEnded) return;
  walk_.Reset();
  state_ = State::kEnded;
}

void StoredChunks::Search(std::int64_t key) {
  EndWalk();
  walk_.Bind(1, key);
  passed_ = key;
  Step();
}

void StoredChunks::Step() {
  if (state_ == State::kOnChunk) passed_ = key_ + 1;
  // A step that fails has ended the walk.
  state_ = State::kEnded;
  const bool on_chunk = walk_.Step();
  state_ = on_chunk ? State::kOnChunk : State::kBehindLast;
  if (on_chunk) key_ = walk_.Int(0);
}

}  // namespace tallybook::engine
