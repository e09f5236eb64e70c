// What is lost of a damaged book, put together while it is salvaged. One thread.
#pragma once

#include <cstdint>
#include <utility>
#include <vector>

#include "base/Types.h"
#include "tallybook/engine/BookCheck.h"
#include "tallybook/engine/ChunkPlaces.h"

namespace tallybook::engine {

class SalvageLosses {
 public:
  // `path` is the damaged book's, which is left out of what is told; `places` must outlive this.
  SalvageLosses(Text path, const ChunkPlaces& places) : path_(std::move(path)), places_(places) {}

  // Each takes a sentence, without the path and the words that say that it is damage.
  void Add(FindingKind kind, Text what);
  // Of an account, at all its dates.
  void AddOfAccount(FindingKind kind, Long account, const Text& what);
  // The figures of a chunk that the places have.
  void AddChunk(std::int64_t key, const Text& what);
  void AddEntry(Long entry, const Text& what);

  // Gives them away, in the order in which they came.
  [[nodiscard]] std::vector<BookFinding> Take() { return std::move(lost_); }

 private:
  Text path_;
  const ChunkPlaces& places_;
  std::vector<BookFinding> lost_;
};

}  // namespace tallybook::engine
