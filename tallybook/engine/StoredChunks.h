// The chunks in a book's file, found by their keys. Keys that are asked for in rising order, as a pass over all
// accounts does, are found by one walk over the file, a step each; any other key costs a search. One thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

#include "tallybook/engine/BookStorage.h"
#include "tallybook/engine/Database.h"

namespace tallybook::engine {

class StoredChunks {
 public:
  // `database` must outlive it.
  explicit StoredChunks(Database& database);

  // The chunk of a key; none where the file has none. Its bytes last until the next call.
  [[nodiscard]] std::optional<StoredChunk> Find(std::int64_t key);

  // Ends the walk that Find leaves open. Due before chunks are written.
  void EndWalk();

 private:
  // Where the walk stands: on a chunk, behind the last one, or nowhere yet.
  enum class State { kEnded, kOnChunk, kBehindLast };

  void Search(std::int64_t key);
  void Step();

  DbStatement walk_;
  State state_ = State::kEnded;
  std::int64_t passed_ = 0;  // from this key up to the walk's chunk the file has none
  std::int64_t key_ = 0;     // of the walk's chunk
};

}  // namespace tallybook::engine
