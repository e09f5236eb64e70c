#include "tallybook/engine/ChunkCodec.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <cstring>
#include <limits>
#include <string>
#include <type_traits>

#include "base/Failure.h"

namespace tallybook::engine {

static_assert(std::endian::native == std::endian::little, "chunks are copied as they lie in memory");

namespace {

constexpr std::byte kDense{1};
constexpr std::byte kSparse{2};
constexpr std::byte kDecimals{3};
constexpr std::size_t kHeadSize = 5;
constexpr std::size_t kDecimalHeadSize = kHeadSize + 2;
constexpr std::array<Double, 4> kPowersOfTen = {1, 10, 100, 1000};
constexpr std::size_t kUsualDecimals = 2;

[[noreturn]] void FailDamaged(const std::string& what) {
  throw Failure(FailureNumber::kDeviceError, "the book is damaged: a chunk " + what, "Tallybook.Book");
}

void PutHead(std::byte form, RowRange rows, std::vector<std::byte>& bytes) {
  const std::uint16_t head[] = {static_cast<std::uint16_t>(rows.first), static_cast<std::uint16_t>(rows.Count())};
  bytes[0] = form;
  std::memcpy(&bytes[1], head, sizeof head);
}

// The rows held without the rows of zeros at both ends.
RowRange Trimmed(const ChunkShape& shape, const ChunkRows& rows) {
  const auto is_blank = [&](std::size_t row) {
    const Double* values = rows.Find(row, shape.fields);
    return std::all_of(values, values + shape.fields, [](Double value) { return value == 0; });
  };
  RowRange range = rows.Range();
  while (range.Count() != 0 && is_blank(range.first)) ++range.first;
  while (range.Count() != 0 && is_blank(range.end - 1)) --range.end;
  return range;
}

// Added to a value below 2 to the 51st, 1.5 times 2 to the 52nd leaves the nearest whole number, ties to even, in the
// lowest bits of the sum; taken away again it leaves that number as a value. For other values both give something far
// off. These are instructions that can be done for several values at a time, which no library call is.
constexpr Double kShift = 6755399441055744.0;

Double NearestWhole(Double value) {
  return (value + kShift) - kShift;
}

std::uint64_t BitsOf(Double value) {
  return std::bit_cast<std::uint64_t>(value);
}

// What is to be taken from the bits of a value with kShift added, so that the rest has no bit beyond those of `Whole`
// just where the whole number is one of `Whole`.
template <typename Whole>
constexpr std::uint64_t kLeastBits = std::bit_cast<std::uint64_t>(kShift + std::numeric_limits<Whole>::min());

template <typename Whole>
bool AreWithin(std::uint64_t bits) {
  return bits <= std::numeric_limits<std::make_unsigned_t<Whole>>::max();
}

// Which whole numbers hold all values exactly, when each is divided by the power of ten that was asked.
struct DecimalFit {
  bool wide = true;       // of 4 bytes
  bool narrow = true;     // of 2 bytes
  bool undivided = true;  // of 2 bytes, without a division
  [[nodiscard]] std::size_t Width() const { return wide ? (narrow ? sizeof(std::int16_t) : sizeof(std::int32_t)) : 0; }
};

// One pass finds out all of it: bits are gathered that are zero, or few, as long as all values fit. What stops early, and
// comparisons, would keep the inner loop from being done several figures at a time. Infinities and not-a-number have bits
// beyond any whole number's.
DecimalFit FitOf(std::span<const Double> values, std::size_t decimals) {
  constexpr std::size_t kBlock = 256;
  const Double power = kPowersOfTen[decimals];
  std::uint64_t other = 0;  // bits that differ when the whole number is divided again
  std::uint64_t fraction = 0;
  std::uint64_t wide = 0;
  std::uint64_t narrow = 0;
  std::uint64_t undivided = 0;
  const auto all_fit = [&] { return other == 0 && AreWithin<std::int32_t>(wide); };
  while (!values.empty() && all_fit()) {
    const auto block = values.first(std::min(kBlock, values.size()));
    for (const Double value : block) {
      const Double scaled = value * power + kShift;
      const Double plain = value + kShift;
      other |= BitsOf((scaled - kShift) / power) ^ BitsOf(value);
      fraction |= BitsOf(plain - kShift) ^ BitsOf(value);
      wide |= BitsOf(scaled) - kLeastBits<std::int32_t>;
      narrow |= BitsOf(scaled) - kLeastBits<std::int16_t>;
      undivided |= BitsOf(plain) - kLeastBits<std::int16_t>;
    }
    values = values.subspan(block.size());
  }
  return {all_fit(), AreWithin<std::int16_t>(narrow), fraction == 0 && AreWithin<std::int16_t>(undivided)};
}

template <typename Whole>
void PutDecimals(std::span<const Double> values, std::size_t decimals, RowRange rows, std::vector<std::byte>& bytes) {
  bytes.resize(kDecimalHeadSize + values.size() * sizeof(Whole));
  PutHead(kDecimals, rows, bytes);
  bytes[kHeadSize] = static_cast<std::byte>(decimals);
  bytes[kHeadSize + 1] = static_cast<std::byte>(sizeof(Whole));
  const Double power = kPowersOfTen[decimals];
  std::byte* out = bytes.data() + kDecimalHeadSize;
  for (std::size_t index = 0; index < values.size(); ++index) {
    const auto whole = static_cast<Whole>(NearestWhole(values[index] * power));
    std::memcpy(out + index * sizeof(Whole), &whole, sizeof(Whole));
  }
}

struct DecimalForm {
  std::size_t decimals = 0;
  std::size_t width = 0;  // 0: the values have no decimal form
};

// Money is tried first: two decimals hold whole numbers and tenths as well, only sometimes in more bytes.
DecimalForm FindDecimalForm(std::span<const Double> values) {
  const DecimalFit money = FitOf(values, kUsualDecimals);
  if (money.wide) {
    const bool shorter_undivided = money.undivided && !money.narrow;
    return shorter_undivided ? DecimalForm{0, sizeof(std::int16_t)} : DecimalForm{kUsualDecimals, money.Width()};
  }
  for (const std::size_t decimals : {std::size_t{3}, std::size_t{0}}) {
    if (const std::size_t width = FitOf(values, decimals).Width(); width != 0) return {decimals, width};
  }
  return {};
}

void PutDense(std::span<const Double> values, RowRange rows, std::vector<std::byte>& bytes) {
  bytes.resize(kHeadSize + values.size_bytes());
  PutHead(kDense, rows, bytes);
  std::memcpy(bytes.data() + kHeadSize, values.data(), values.size_bytes());
}

void PutSparse(std::span<const Double> values, std::size_t held, RowRange rows, std::vector<std::byte>& bytes) {
  const std::size_t map_size = (values.size() + 7) / 8;
  bytes.assign(kHeadSize + map_size + held * sizeof(Double), std::byte{0});
  PutHead(kSparse, rows, bytes);
  std::byte* out = bytes.data() + kHeadSize + map_size;
  for (std::size_t index = 0; index < values.size(); ++index) {
    if (values[index] == 0) continue;
    bytes[kHeadSize + index / 8] |= std::byte{1} << (index % 8);
    std::memcpy(out, &values[index], sizeof(Double));
    out += sizeof(Double);
  }
}

void TakeSparse(std::span<const std::byte> bytes, std::span<Double> values) {
  const std::size_t map_size = (values.size() + 7) / 8;
  if (bytes.size() < map_size) FailDamaged("is shorter than its map");
  std::span<const std::byte> held = bytes.subspan(map_size);
  for (std::size_t index = 0; index < values.size(); ++index) {
    if ((bytes[index / 8] & (std::byte{1} << (index % 8))) == std::byte{0}) continue;
    if (held.size() < sizeof(Double)) FailDamaged("holds fewer figures than its map says");
    std::memcpy(&values[index], held.data(), sizeof(Double));
    held = held.subspan(sizeof(Double));
  }
  if (!held.empty()) FailDamaged("holds more figures than its map says");
}

template <typename Whole>
void TakeDecimals(std::span<const std::byte> bytes, Double power, std::span<Double> values) {
  if (bytes.size() != values.size() * sizeof(Whole)) FailDamaged("has the wrong length");
  for (std::size_t index = 0; index < values.size(); ++index) {
    Whole whole = 0;
    std::memcpy(&whole, bytes.data() + index * sizeof(Whole), sizeof(Whole));
    values[index] = static_cast<Double>(whole) / power;
  }
}

void TakeDecimals(std::span<const std::byte> bytes, std::span<Double> values) {
  if (bytes.size() < 2) FailDamaged("is shorter than its head");
  const auto decimals = std::to_integer<std::size_t>(bytes[0]);
  const auto width = std::to_integer<std::size_t>(bytes[1]);
  if (decimals >= kPowersOfTen.size()) FailDamaged("has " + std::to_string(decimals) + " decimals");
  const auto wholes = bytes.subspan(2);
  if (width == sizeof(std::int16_t)) {
    TakeDecimals<std::int16_t>(wholes, kPowersOfTen[decimals], values);
  } else if (width == sizeof(std::int32_t)) {
    TakeDecimals<std::int32_t>(wholes, kPowersOfTen[decimals], values);
  } else {
    FailDamaged("has numbers of " + std::to_string(width) + " bytes");
  }
}

}  // namespace

void EncodeChunk(const ChunkShape& shape, const ChunkRows& rows, std::vector<std::byte>& bytes) {
  bytes.clear();
  const RowRange range = Trimmed(shape, rows);
  if (range.Count() == 0) return;
  const std::span<const Double> values(rows.Find(range.first, shape.fields), range.Count() * shape.fields);
  const auto zeros = static_cast<std::size_t>(std::count(values.begin(), values.end(), 0.0));
  const std::size_t held = values.size() - zeros;
  const std::size_t sparse_size = (values.size() + 7) / 8 + held * sizeof(Double);
  // Decimals cost two bytes a figure at the least, so a chunk that is mostly empty need not be tried.
  const DecimalForm decimal = sparse_size > values.size() * 2 ? FindDecimalForm(values) : DecimalForm{};
  if (decimal.width != 0 && values.size() * decimal.width < sparse_size) {
    if (decimal.width == sizeof(std::int16_t)) {
      PutDecimals<std::int16_t>(values, decimal.decimals, range, bytes);
    } else {
      PutDecimals<std::int32_t>(values, decimal.decimals, range, bytes);
    }
  } else if (sparse_size < values.size_bytes()) {
    PutSparse(values, held, range, bytes);
  } else {
    PutDense(values, range, bytes);
  }
}

void DecodeChunk(const ChunkShape& shape, std::span<const std::byte> bytes, ChunkRows& rows) {
  if (bytes.size() < kHeadSize) FailDamaged("is shorter than its head");
  std::uint16_t head[2];
  std::memcpy(head, &bytes[1], sizeof head);
  const RowRange range = {head[0], std::size_t{head[0]} + head[1]};
  if (range.end > shape.rows)
    FailDamaged("tells of row " + std::to_string(range.end) + ", and has " + std::to_string(shape.rows));
  const std::span<Double> values = rows.Renew(range, shape.fields);
  const auto body = bytes.subspan(kHeadSize);
  if (bytes[0] == kDense) {
    if (body.size() != values.size_bytes()) FailDamaged("has the wrong length");
    std::memcpy(values.data(), body.data(), body.size());
  } else if (bytes[0] == kSparse) {
    TakeSparse(body, values);
  } else if (bytes[0] == kDecimals) {
    TakeDecimals(body, values);
  } else {
    FailDamaged("has the form " + std::to_string(std::to_integer<int>(bytes[0])));
  }
}

}  // namespace tallybook::engine
