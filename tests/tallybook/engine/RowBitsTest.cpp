#include <gtest/gtest.h>
#include <rapidcheck.h>
#include <rapidcheck/gtest.h>

#include "tallybook/engine/RowBits.h"

namespace tallybook {

RC_GTEST_PROP(RowBitsProperties, EachRowWithABitIsVisitedInOrder, ()) {
  const auto rows = *rc::gen::inRange<std::size_t>(0, 40);
  engine::RowBits bits = engine::NoRowBits(rows);
  std::vector<std::size_t> wanted;
  for (std::size_t row = 0; row < rows; ++row) {
    if (!*rc::gen::arbitrary<bool>()) continue;
    engine::SetBit(bits, row);
    wanted.push_back(row);
  }
  std::vector<std::size_t> visited;
  engine::ForEachBit(bits, [&](std::size_t row) { visited.push_back(row); });
  RC_ASSERT(visited == wanted);
}

}  // namespace tallybook
