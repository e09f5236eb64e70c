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
constexpr std::byte kTellsWidth{0x80};  // added to a form
constexpr std::size_t kHeadSize = 5;
constexpr std::size_t kWidthSize = 2;
constexpr std::size_t kDecimalHeadSize = 2;  // behind the head
constexpr std::array<Double, 4> kPowersOfTen = {1, 10, 100, 1000};
constexpr std::size_t kUsualDecimals = 2;

[[noreturn]] void FailDamaged(const std::string& what) {
  throw Failure(FailureNumber::kDeviceError, "the book is damaged: a chunk " + what, "Tallybook.Book");
}

// What stands before the figures.
struct Head {
  RowRange rows;
  std::size_t width = 0;  // figures of a stored row; 0 where the chunk does not tell it
  [[nodiscard]] std::size_t Size() const { return width == 0 ? kHeadSize : kHeadSize + kWidthSize; }
};

void PutHead(std::byte form, const Head& head, std::vector<std::byte>& bytes) {
  const std::uint16_t items[] = {static_cast<std::uint16_t>(head.rows.first),
                                 static_cast<std::uint16_t>(head.rows.Count()), static_cast<std::uint16_t>(head.width)};
  bytes[0] = head.width == 0 ? form : form | kTellsWidth;
  std::memcpy(&bytes[1], items, head.Size() - 1);
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

// One pass finds out all of it: bits are gathered that are zero, or few, as long as all values fit. What stops early,
// and comparisons, would keep the inner loop from being done several figures at a time. Infinities and not-a-number
// have bits beyond any whole number's.
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
void PutDecimals(std::span<const Double> values, std::size_t decimals, const Head& head,
                 std::vector<std::byte>& bytes) {
  const std::size_t begin = head.Size() + kDecimalHeadSize;
  bytes.resize(begin + values.size() * sizeof(Whole));
  PutHead(kDecimals, head, bytes);
  bytes[head.Size()] = static_cast<std::byte>(decimals);
  bytes[head.Size() + 1] = static_cast<std::byte>(sizeof(Whole));
  const Double power = kPowersOfTen[decimals];
  std::byte* out = bytes.data() + begin;
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

void PutDense(std::span<const Double> values, const Head& head, std::vector<std::byte>& bytes) {
  bytes.resize(head.Size() + values.size_bytes());
  PutHead(kDense, head, bytes);
  std::memcpy(bytes.data() + head.Size(), values.data(), values.size_bytes());
}

void PutSparse(std::span<const Double> values, std::size_t held, const Head& head, std::vector<std::byte>& bytes) {
  const std::size_t map_size = (values.size() + 7) / 8;
  bytes.assign(head.Size() + map_size + held * sizeof(Double), std::byte{0});
  PutHead(kSparse, head, bytes);
  std::byte* map = bytes.data() + head.Size();
  std::byte* out = map + map_size;
  for (std::size_t index = 0; index < values.size(); ++index) {
    if (values[index] == 0) continue;
    map[index / 8] |= std::byte{1} << (index % 8);
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

// Rows as they are stored and where they go: `width` figures each, and so many places from one row to the next. Rows
// without a gap between them are one long row.
struct RowLayout {
  std::size_t rows = 0;
  std::size_t width = 0;
  std::size_t stride = 0;
  [[nodiscard]] std::size_t Figures() const { return rows * width; }
};

RowLayout LayoutOf(std::size_t rows, std::size_t width, std::size_t fields) {
  return width == fields ? RowLayout{1, rows * width, rows * width} : RowLayout{rows, width, fields};
}

template <typename Whole>
void TakeDecimals(std::span<const std::byte> bytes, Double power, const RowLayout& layout, std::span<Double> values) {
  if (bytes.size() != layout.Figures() * sizeof(Whole)) FailDamaged("has the wrong length");
  for (std::size_t row = 0; row < layout.rows; ++row) {
    const std::byte* from = bytes.data() + row * layout.width * sizeof(Whole);
    Double* to = values.data() + row * layout.stride;
    for (std::size_t index = 0; index < layout.width; ++index) {
      Whole whole = 0;
      std::memcpy(&whole, from + index * sizeof(Whole), sizeof(Whole));
      to[index] = static_cast<Double>(whole) / power;
    }
  }
}

void TakeDecimals(std::span<const std::byte> bytes, const RowLayout& layout, std::span<Double> values) {
  if (bytes.size() < 2) FailDamaged("is shorter than its head");
  const auto decimals = std::to_integer<std::size_t>(bytes[0]);
  const auto width = std::to_integer<std::size_t>(bytes[1]);
  if (decimals >= kPowersOfTen.size()) FailDamaged("has " + std::to_string(decimals) + " decimals");
  const auto wholes = bytes.subspan(2);
  if (width == sizeof(std::int16_t)) {
    TakeDecimals<std::int16_t>(wholes, kPowersOfTen[decimals], layout, values);
  } else if (width == sizeof(std::int32_t)) {
    TakeDecimals<std::int32_t>(wholes, kPowersOfTen[decimals], layout, values);
  } else {
    FailDamaged("has numbers of " + std::to_string(width) + " bytes");
  }
}

// Writes figures in the shortest form.
void PutShortest(std::span<const Double> values, const Head& head, std::vector<std::byte>& bytes) {
  const auto zeros = static_cast<std::size_t>(std::count(values.begin(), values.end(), 0.0));
  const std::size_t held = values.size() - zeros;
  const std::size_t sparse_size = (values.size() + 7) / 8 + held * sizeof(Double);
  // Decimals cost two bytes a figure at the least, so a chunk that is mostly empty need not be tried.
  const DecimalForm decimal = sparse_size > values.size() * 2 ? FindDecimalForm(values) : DecimalForm{};
  if (decimal.width != 0 && values.size() * decimal.width < sparse_size) {
    if (decimal.width == sizeof(std::int16_t)) {
      PutDecimals<std::int16_t>(values, decimal.decimals, head, bytes);
    } else {
      PutDecimals<std::int32_t>(values, decimal.decimals, head, bytes);
    }
  } else if (sparse_size < values.size_bytes()) {
    PutSparse(values, held, head, bytes);
  } else {
    PutDense(values, head, bytes);
  }
}

// How many figures of each row are to be stored: the usual ones, and more up to the last that is not zero.
std::size_t WidthOf(std::span<const Double> values, const ChunkShape& shape) {
  std::size_t width = shape.UsualWidth();
  for (std::size_t row = 0; width < shape.fields && row < values.size(); row += shape.fields) {
    std::size_t used = shape.fields;
    while (used > width && values[row + used - 1] == 0) --used;
    width = used;
  }
  return width;
}

// The first `width` figures of each row.
std::vector<Double> Narrowed(std::span<const Double> values, std::size_t fields, std::size_t width) {
  std::vector<Double> narrow;
  narrow.reserve(values.size() / fields * width);
  for (std::size_t row = 0; row < values.size(); row += fields) {
    const auto figures = values.subspan(row, width);
    narrow.insert(narrow.end(), figures.begin(), figures.end());
  }
  return narrow;
}

// Puts rows that lie one behind another at their places, from the last one on, with zeros behind each.
void Widen(std::span<Double> values, std::size_t rows, std::size_t width, std::size_t fields) {
  for (std::size_t row = rows; row-- > 0;) {
    Double* place = values.data() + row * fields;
    std::memmove(place, values.data() + row * width, width * sizeof(Double));
    std::fill(place + width, place + fields, 0.0);
  }
}

// `values` are zeros.
void TakeFigures(std::byte form, std::span<const std::byte> body, const RowLayout& layout, std::span<Double> values) {
  if (form == kDecimals) return TakeDecimals(body, layout, values);
  const std::span<Double> stored = values.first(layout.Figures());
  if (form == kDense) {
    if (body.size() != stored.size_bytes()) FailDamaged("has the wrong length");
    std::memcpy(stored.data(), body.data(), body.size());
  } else if (form == kSparse) {
    TakeSparse(body, stored);
  } else {
    FailDamaged("has the form " + std::to_string(std::to_integer<int>(form)));
  }
  if (layout.width != layout.stride) Widen(values, layout.rows, layout.width, layout.stride);
}

// The figures of a stored row, as the chunk tells them or as usual.
std::size_t TakeWidth(const ChunkShape& shape, std::span<const std::byte>& body) {
  if (body.size() < kWidthSize) FailDamaged("is shorter than its head");
  std::uint16_t width = 0;
  std::memcpy(&width, body.data(), sizeof width);
  body = body.subspan(kWidthSize);
  if (width <= shape.UsualWidth() || width > shape.fields) {
    FailDamaged("tells of rows of " + std::to_string(width) + " figures");
  }
  return width;
}

}  // namespace

void EncodeChunk(const ChunkShape& shape, const ChunkRows& rows, std::vector<std::byte>& bytes) {
  bytes.clear();
  const RowRange range = Trimmed(shape, rows);
  if (range.Count() == 0) return;
  const std::span<const Double> values(rows.Find(range.first, shape.fields), range.Count() * shape.fields);
  const std::size_t width = WidthOf(values, shape);
  const Head head = {range, width == shape.UsualWidth() ? 0 : width};
  if (width == shape.fields) {
    PutShortest(values, head, bytes);
  } else {
    PutShortest(Narrowed(values, shape.fields, width), head, bytes);
  }
}

void DecodeChunk(const ChunkShape& shape, std::span<const std::byte> bytes, ChunkRows& rows) {
  if (bytes.size() < kHeadSize) FailDamaged("is shorter than its head");
  std::uint16_t head[2];
  std::memcpy(head, &bytes[1], sizeof head);
  const RowRange range = {head[0], std::size_t{head[0]} + head[1]};
  if (range.end > shape.rows)
    FailDamaged("tells of row " + std::to_string(range.end) + ", and has " + std::to_string(shape.rows));
  const bool tells_width = (bytes[0] & kTellsWidth) != std::byte{0};
  auto body = bytes.subspan(kHeadSize);
  const std::size_t width = tells_width ? TakeWidth(shape, body) : shape.UsualWidth();
  const std::span<Double> values = rows.Renew(range, shape.fields);
  TakeFigures(bytes[0] & ~kTellsWidth, body, LayoutOf(range.Count(), width, shape.fields), values);
}

}  // namespace tallybook::engine
