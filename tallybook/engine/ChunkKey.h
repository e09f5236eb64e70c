// A chunk's key: the account's number above, the chunk's number from 0 below. Keys stand in book files.
#pragma once

#include <cstdint>

#include "base/Types.h"

namespace tallybook::engine {

inline constexpr int kChunkNumberBits = 24;
inline constexpr std::int64_t kChunkNumberMask = (std::int64_t{1} << kChunkNumberBits) - 1;

// The key of an account's first chunk.
[[nodiscard]] inline std::int64_t FirstKeyOf(Long account) {
  return std::int64_t{account} << kChunkNumberBits;
}
[[nodiscard]] inline Long AccountOf(std::int64_t key) {
  return static_cast<Long>(key >> kChunkNumberBits);
}
[[nodiscard]] inline std::uint32_t ChunkNumberOf(std::int64_t key) {
  return static_cast<std::uint32_t>(key & kChunkNumberMask);
}

}  // namespace tallybook::engine
