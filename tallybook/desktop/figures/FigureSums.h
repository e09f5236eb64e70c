// The figures of a book by account and unit of time, added up to the unit and read as they are asked for: an account's
// figures of some neighbouring units at once, which are kept until the reader has seen the file change.
//
// Positions of accounts and fields count from 1, units from 0. One thread. The reader must outlive it.
#pragma once

#include <cstdint>
#include <unordered_map>
#include <vector>

#include "base/Types.h"
#include "tallybook/desktop/figures/BookReader.h"
#include "tallybook/desktop/figures/FigureUnits.h"

namespace tallybook::desktop {

class FigureSums {
 public:
  FigureSums(BookReader& reader, Integer level);

  [[nodiscard]] const FigureUnits& Units() const { return units_; }
  // Fails as BookReader::Read, and with 57 for a damaged book.
  [[nodiscard]] Double At(Integer account, std::size_t unit, Integer field);
  // How many reads of the book there have been; for tests and benchmarks.
  [[nodiscard]] long long Reads() const { return reads_; }

 private:
  using Block = std::vector<Double>;  // a row of fields for each unit

  [[nodiscard]] const Block& BlockOf(Integer account, std::size_t block);
  void ReadBlock(Integer account, UnitRange range, Block& figures);
  void DropWhatIsOld();

  BookReader& reader_;
  FigureUnits units_;
  std::size_t fields_;
  std::size_t units_of_block_;
  std::unordered_map<std::uint64_t, Block> blocks_;
  std::size_t kept_figures_ = 0;
  Long figures_seen_ = 0;
  long long reads_ = 0;
};

}  // namespace tallybook::desktop
