#include "tallybook/engine/LogCheck.h"

#include <cstddef>
#include <cstdint>
#include <fstream>
#include <span>
#include <vector>

namespace tallybook::engine {

namespace {

constexpr std::size_t kHeadSize = 32;
constexpr std::size_t kHeadSummed = 24;  // of the head; its checksum follows
constexpr std::size_t kFrameHeadSize = 24;
constexpr std::size_t kFrameSummed = 8;  // of a frame's head, before the page
constexpr std::uint32_t kMagic =
    0x377F0682;  // the last bit says that sums take the numbers most significant byte first

constexpr const char* kDamaged = "the log beside the book is damaged: what was written last is lost";

std::uint32_t BigEndian(std::span<const unsigned char> bytes) {
  return std::uint32_t{bytes[0]} << 24 | std::uint32_t{bytes[1]} << 16 | std::uint32_t{bytes[2]} << 8 | bytes[3];
}

std::uint32_t LittleEndian(std::span<const unsigned char> bytes) {
  return std::uint32_t{bytes[3]} << 24 | std::uint32_t{bytes[2]} << 16 | std::uint32_t{bytes[1]} << 8 | bytes[0];
}

// The running sum of a log.
class Sum {
 public:
  explicit Sum(bool big_endian) : read_(big_endian ? BigEndian : LittleEndian) {}

  // A whole number of pairs of numbers.
  void Add(std::span<const unsigned char> bytes) {
    for (std::size_t at = 0; at + 8 <= bytes.size(); at += 8) {
      first_ += read_(bytes.subspan(at, 4)) + second_;
      second_ += read_(bytes.subspan(at + 4, 4)) + first_;
    }
  }
  [[nodiscard]] bool Is(std::span<const unsigned char> stored) const {
    return BigEndian(stored) == first_ && BigEndian(stored.subspan(4)) == second_;
  }

 private:
  std::uint32_t (*read_)(std::span<const unsigned char>);
  std::uint32_t first_ = 0;
  std::uint32_t second_ = 0;
};

class Log {
 public:
  explicit Log(const Text& path) : file_(path, std::ios::binary) {}

  // Reads so many bytes on; fewer at the end.
  std::span<const unsigned char> Read(std::size_t size) {
    bytes_.resize(size);
    file_.read(reinterpret_cast<char*>(bytes_.data()), static_cast<std::streamsize>(size));
    return std::span(bytes_).first(static_cast<std::size_t>(file_.gcount()));
  }

 private:
  std::ifstream file_;
  std::vector<unsigned char> bytes_;
};

}  // namespace

Text LogTrouble(const Text& path) {
  Log log(path);
  const auto head = log.Read(kHeadSize);
  if (head.empty()) return "";
  if (head.size() < kHeadSize || (BigEndian(head) | 1U) != (kMagic | 1U)) return kDamaged;
  Sum sum((BigEndian(head) & 1U) != 0);
  sum.Add(head.first(kHeadSummed));
  if (!sum.Is(head.subspan(kHeadSummed))) return kDamaged;
  const std::size_t page_size = BigEndian(head.subspan(8));
  const std::uint64_t salt = std::uint64_t{BigEndian(head.subspan(16))} << 32 | BigEndian(head.subspan(20));
  if (page_size < 512 || page_size > 65536) return kDamaged;
  for (;;) {
    const auto frame = log.Read(kFrameHeadSize + page_size);
    if (frame.size() < kFrameHeadSize) return "";
    // Behind the last page stand those of earlier rounds, which bear other numbers.
    if ((std::uint64_t{BigEndian(frame.subspan(8))} << 32 | BigEndian(frame.subspan(12))) != salt) return "";
    if (frame.size() < kFrameHeadSize + page_size) return kDamaged;
    sum.Add(frame.first(kFrameSummed));
    sum.Add(frame.subspan(kFrameHeadSize));
    if (!sum.Is(frame.subspan(16))) return kDamaged;
  }
}

}  // namespace tallybook::engine
