// Rows of one kind that come one after another and are told in that order afterwards: the last of them in memory, those
// that came before in a temporary file, which is made where there are more than fit into a mebibyte. One thread.
#pragma once

#include <algorithm>
#include <cstddef>
#include <span>
#include <type_traits>
#include <vector>

#include "tallybook/preview/TemporaryFile.h"

namespace tallybook::preview {

template <typename Row>
class KeptRows {
 public:
  static_assert(std::is_trivially_copyable_v<Row>, "rows go to the file as they stand in memory");

  // May fail as TemporaryFile does, and so may the visit.
  void Add(std::span<const Row> rows) {
    rows_.insert(rows_.end(), rows.begin(), rows.end());
    if (rows_.size() >= kMostInMemory) MoveToFile();
  }
  void Add(const Row& row) { Add(std::span(&row, 1)); }

  // False from `visit` ends the visit and is given back. Nothing may be added meanwhile.
  template <typename Visit>
  bool VisitEach(Visit visit) const {
    std::vector<Row> block;
    for (std::size_t left = in_file_; left != 0; left -= block.size()) {
      block.resize(std::min(kMostInMemory, left));
      const auto bytes_left = static_cast<long long>(left) * static_cast<long long>(sizeof(Row));
      file_.ReadAt(file_.Size() - bytes_left, std::as_writable_bytes(std::span(block)));
      if (!std::ranges::all_of(block, visit)) return false;
    }
    return std::ranges::all_of(rows_, visit);
  }

 private:
  static constexpr std::size_t kMostInMemory = (std::size_t{1} << 20) / sizeof(Row);

  void MoveToFile() {
    file_.WriteAt(file_.Size(), std::as_bytes(std::span(rows_)));
    in_file_ += rows_.size();
    rows_.clear();
  }

  std::vector<Row> rows_;    // behind those in the file
  std::size_t in_file_ = 0;  // rows
  TemporaryFile file_;
};

}  // namespace tallybook::preview
