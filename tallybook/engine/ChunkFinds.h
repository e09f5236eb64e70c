// The ways to the chunks of a damaged book: along its table from both ends, by its index, and over the pages that no
// tree leads to any more. What one way misses another may find. One thread.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <span>
#include <vector>

#include "base/Types.h"
#include "tallybook/engine/ChunkPlaces.h"
#include "tallybook/engine/DamagedBook.h"
#include "tallybook/engine/SalvagedChunks.h"

namespace tallybook::engine {

class ChunkFinds {
 public:
  // All must outlive this.
  ChunkFinds(DamagedBook& book, const ChunkPlaces& places, SalvagedChunks& chunks)
      : book_(book), places_(places), chunks_(chunks) {}

  // Puts every chunk that table or index lead to, that is whole and has a place, into the new book.
  void CopyAll();
  // From then on: those that differ from one that was put in their place before.
  [[nodiscard]] const std::vector<FoundChunk>& Others() const { return others_; }
  // The keys that could be read of the index, and whether these are all.
  [[nodiscard]] const std::set<std::int64_t>& Index() const { return index_; }
  [[nodiscard]] bool IndexIsWhole() const { return index_is_whole_; }
  // The keys of an account that the index has and the new book does not.
  [[nodiscard]] std::vector<std::int64_t> MissingOfIndex(Long account) const;

  // The chunks of an account that stand in leaves of the file and were not found before, by key; they can be of any
  // age. The first call reads the whole file.
  [[nodiscard]] const std::vector<FoundChunk>& OfLeaves(Long account);

 private:
  [[nodiscard]] std::optional<FoundChunk> Checked(std::int64_t key, std::span<const std::byte> stored) const;
  void Take(std::int64_t key, std::span<const std::byte> stored);
  void WalkTable();
  void ReadIndex();
  void TakeByIndex(std::int64_t key);
  void ReadLeaves();

  DamagedBook& book_;
  const ChunkPlaces& places_;
  SalvagedChunks& chunks_;
  std::vector<FoundChunk> others_;
  std::set<std::int64_t> index_;
  bool index_is_whole_ = false;
  bool leaves_are_read_ = false;
  std::map<Long, std::vector<FoundChunk>> leaves_;
};

}  // namespace tallybook::engine
