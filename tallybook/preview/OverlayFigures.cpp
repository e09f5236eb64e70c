#include "tallybook/preview/OverlayFigures.h"

#include <algorithm>
#include <bit>
#include <utility>

namespace tallybook::preview {

namespace {

// Amounts, which most figures are, take half the room: as whole hundredths, where that is exact for all of a chunk.
// Added to a value below 2 to the 51st and taken away again, kShift leaves the nearest whole number.
constexpr Double kHundredths = 100;
constexpr Double kShift = 6755399441055744.0;
constexpr Double kMostHundredths = 2147483646;
constexpr Double kUnwrittenHundredths = -2147483648.0;

std::uint64_t BitsOf(Double figure) {
  return std::bit_cast<std::uint64_t>(figure);
}

// By value, and so several at a time, which std::clamp is not.
Double Bounded(Double hundredths) {
  const Double not_above = hundredths > kMostHundredths ? kMostHundredths : hundredths;
  return not_above < -kMostHundredths ? -kMostHundredths : not_above;
}

// Whether all are exact. Bits are gathered, and what was not written is told by a number: so several can be done at a
// time.
bool ToHundredths(std::span<const Double> figures, std::int32_t* hundredths) {
  std::uint64_t differ = 0;
  for (std::size_t index = 0; index < figures.size(); ++index) {
    const Double figure = figures[index];
    const Double whole = (Bounded(figure * kHundredths) + kShift) - kShift;
    differ |= IsUnwritten(figure) ? 0 : BitsOf(whole / kHundredths) ^ BitsOf(figure);
    hundredths[index] = static_cast<std::int32_t>(IsUnwritten(figure) ? kUnwrittenHundredths : whole);
  }
  return differ == 0;
}

void FromHundredths(const std::int32_t* hundredths, std::span<Double> figures) {
  for (std::size_t index = 0; index < figures.size(); ++index) {
    const auto whole = static_cast<Double>(hundredths[index]);
    figures[index] = whole == kUnwrittenHundredths ? kUnwritten : whole / kHundredths;
  }
}

// Whether a figure was zero wherever one was written.
bool WereZeros(std::span<const Double> before, std::span<const Double> now) {
  std::uint64_t other = 0;
  for (std::size_t index = 0; index < now.size(); ++index) {
    const std::uint64_t zero = IsUnwritten(now[index]) ? BitsOf(kUnwritten) : 0;
    other |= BitsOf(before[index]) ^ zero;
  }
  return other == 0;
}

}  // namespace

OverlayFigures::OverlayFigures(std::size_t accounts, std::size_t records, std::size_t cache_bytes, Kept kept)
    : groups_((records + kRows - 1) / kRows),
      cache_bytes_(cache_bytes),
      halves_(kept == Kept::kNow ? 1 : 2),
      chunk_of_group_(accounts) {}

std::uint32_t& OverlayFigures::Place(std::size_t account, std::size_t group) {
  std::vector<std::uint32_t>& chunks = chunk_of_group_[account];
  if (chunks.empty()) chunks.assign(groups_, kNone);
  return chunks[group];
}

void OverlayFigures::Select(std::size_t account, std::size_t record) {
  const std::size_t group = record / kRows;
  row_ = record % kRows;
  row_bit_ = RowBits{1} << row_;
  if (!found_ || account != account_ || group != group_) {
    found_ = false;
    account_ = account;
    group_ = group;
    Find();
    found_ = true;
  }
  TakeRow();
}

void OverlayFigures::Find() {
  current_ = nullptr;
  width_ = 0;
  const std::vector<std::uint32_t>& chunks = chunk_of_group_[account_];
  if (chunks.empty() || chunks[group_] == kNone) return;
  Chunk& chunk = chunks_[chunks[group_] - 1];
  if (!chunk.loaded) Load(chunk);
  chunk.visited = true;
  current_ = &chunk;
}

// Where the current row's figures stand, if it has any.
void OverlayFigures::TakeRow() {
  width_ = 0;
  if (current_ == nullptr || row_ < current_->first || row_ >= std::size_t{current_->first} + current_->count) return;
  width_ = current_->width;
  now_ = current_->figures.data() + ((row_ - current_->first + 1) * halves_ - 1) * width_;
}

void OverlayFigures::MakeChunk() {
  std::uint32_t& place = Place(account_, group_);
  current_ = &chunks_.emplace_back();
  current_->round = round_;
  loaded_.push_back(static_cast<std::uint32_t>(chunks_.size() - 1));
  place = static_cast<std::uint32_t>(chunks_.size());
}

// What the rounds before have left is where this one begins.
void OverlayFigures::BeginRoundIn(Chunk& chunk) const {
  chunk.round = round_;
  chunk.touched_now = 0;
  const std::size_t width = chunk.width;
  for (std::size_t row = 0; row < chunk.count; ++row) {
    if (halves_ == 2) std::fill_n(chunk.figures.data() + row * 2 * width, width, kUnwritten);
    chunk.settled |= RowBits{1} << (chunk.first + row);
  }
  chunk.changed = true;
}

// Apart, so that what is written into a row that is held already costs next to nothing.
void OverlayFigures::HoldForWriting(std::size_t column) {
  Chunk& chunk = Need();
  columns_ = std::max(columns_, column + 1);
  if (width_ > column) return;
  if (chunk.width <= column) Widen(chunk, columns_);
  HoldRow(chunk, row_);
  TakeRow();
}

// Rows held grow towards the new one. Room comes in two sizes, so that what one chunk gives up fits the next.
void OverlayFigures::HoldRow(Chunk& chunk, std::size_t row) {
  const std::size_t end = std::size_t{chunk.first} + chunk.count;
  if (row >= chunk.first && row < end) return;
  MakeRoom();
  held_bytes_ -= Bytes(chunk);
  const std::size_t first = chunk.count == 0 ? row : std::min<std::size_t>(chunk.first, row);
  const std::size_t last = chunk.count == 0 ? row : std::max(end - 1, row);
  const std::size_t count = last - first + 1;
  const std::size_t size = halves_ * chunk.width;
  if (count * size > chunk.figures.capacity()) chunk.figures.reserve((count <= kFewRows ? kFewRows : kRows) * size);
  if (chunk.count != 0 && first < chunk.first) {
    chunk.figures.insert(chunk.figures.begin(), (chunk.first - first) * size, kUnwritten);
  }
  chunk.figures.resize(count * size, kUnwritten);
  chunk.first = static_cast<std::uint8_t>(first);
  chunk.count = static_cast<std::uint8_t>(count);
  held_bytes_ += Bytes(chunk);
}

void OverlayFigures::Widen(Chunk& chunk, std::size_t width) {
  held_bytes_ -= Bytes(chunk);
  std::vector<Double> wide(chunk.count * halves_ * width, kUnwritten);
  for (std::size_t half = 0; half < halves_ * chunk.count; ++half) {
    std::copy_n(chunk.figures.data() + half * chunk.width, chunk.width, wide.data() + half * width);
  }
  chunk.figures = std::move(wide);
  chunk.width = static_cast<std::uint16_t>(width);
  held_bytes_ += Bytes(chunk);
}

void OverlayFigures::BeginRound() {
  ++round_;
}

// --- The cache -------------------------------------------------------------------------------------------------------

void OverlayFigures::Load(Chunk& chunk) {
  MakeRoom();
  std::vector<Double> figures(chunk.count * halves_ * chunk.width);
  if (!chunk.packed.empty()) {
    Unpack(chunk, figures);
  } else if (chunk.form == Form::kPlain) {
    file_.ReadAt(chunk.place, std::as_writable_bytes(std::span(figures)));
  } else {
    chunk.packed.resize(figures.size() / (chunk.form == Form::kOverZeros ? 2 : 1));
    file_.ReadAt(chunk.place, std::as_writable_bytes(std::span(chunk.packed)));
    Unpack(chunk, figures);
    std::vector<std::int32_t>().swap(chunk.packed);
  }
  chunk.figures = std::move(figures);
  chunk.loaded = true;
  chunk.changed = false;
  held_bytes_ += Bytes(chunk);
  loaded_.push_back(chunk_of_group_[account_][group_] - 1);
}

// Half of the room at most is for what is packed.
void OverlayFigures::MakeRoom() {
  while (held_bytes_ + packed_bytes_ > cache_bytes_) {
    if (!packed_.empty() && packed_bytes_ > cache_bytes_ / 2) {
      MovePackedToFile();
    } else if (loaded_.size() > 2) {
      GiveUpOne();
    } else {
      return;
    }
  }
}

// The first that was not used since the hand came by last; never the current one.
void OverlayFigures::GiveUpOne() {
  for (;;) {
    if (hand_ >= loaded_.size()) hand_ = 0;
    Chunk& chunk = chunks_[loaded_[hand_]];
    if (&chunk == current_ || std::exchange(chunk.visited, false)) {
      ++hand_;
      continue;
    }
    GiveUp(chunk, loaded_[hand_]);
    loaded_[hand_] = loaded_.back();
    loaded_.pop_back();
    return;
  }
}

void OverlayFigures::GiveUp(Chunk& chunk, std::uint32_t number) {
  if (chunk.changed && !chunk.figures.empty()) {
    const bool was_packed = !chunk.packed.empty();
    packed_bytes_ -= PackedBytes(chunk);
    if (Pack(chunk)) {
      if (!was_packed) packed_.push_back(number);
      packed_bytes_ += PackedBytes(chunk);
    } else {
      if (was_packed) std::erase(packed_, number);
      WriteToFile(chunk, std::as_bytes(std::span(chunk.figures)));
    }
  }
  held_bytes_ -= Bytes(chunk);
  std::vector<Double>().swap(chunk.figures);  // to assign nothing would keep the room
  chunk.loaded = false;
  chunk.changed = false;
}

bool OverlayFigures::IsOverZeros(const Chunk& chunk) const {
  if (halves_ == 1) return false;
  const std::size_t width = chunk.width;
  const std::span<const Double> figures(chunk.figures);
  for (std::size_t row = 0; row < chunk.count; ++row) {
    const auto before = figures.subspan(row * 2 * width, width);
    if (!WereZeros(before, figures.subspan((row * 2 + 1) * width, width))) return false;
  }
  return true;
}

// False for a chunk that must be kept as it is.
bool OverlayFigures::Pack(Chunk& chunk) const {
  const std::size_t width = chunk.width;
  const std::span<const Double> figures(chunk.figures);
  const bool over_zeros = IsOverZeros(chunk);
  chunk.form = over_zeros ? Form::kOverZeros : Form::kHundredths;
  std::vector<std::int32_t> packed(over_zeros ? figures.size() / 2 : figures.size());
  bool exact = over_zeros || ToHundredths(figures, packed.data());
  for (std::size_t row = 0; over_zeros && exact && row < chunk.count; ++row) {
    exact = ToHundredths(figures.subspan((row * 2 + 1) * width, width), packed.data() + row * width);
  }
  if (!exact) {
    chunk.form = Form::kPlain;
    packed = {};
  }
  chunk.packed = std::move(packed);
  return exact;
}

void OverlayFigures::Unpack(const Chunk& chunk, std::span<Double> figures) {
  if (chunk.form == Form::kHundredths) return FromHundredths(chunk.packed.data(), figures);
  const std::size_t width = chunk.width;
  for (std::size_t row = 0; row < chunk.count; ++row) {
    const auto before = figures.subspan(row * 2 * width, width);
    const auto now = figures.subspan((row * 2 + 1) * width, width);
    FromHundredths(chunk.packed.data() + row * width, now);
    std::ranges::transform(now, before.begin(), [](Double figure) { return IsUnwritten(figure) ? kUnwritten : 0; });
  }
}

// One that was loaded and changed since is packed anew when it is given up.
void OverlayFigures::MovePackedToFile() {
  Chunk& chunk = chunks_[packed_.front()];
  packed_.pop_front();
  packed_bytes_ -= PackedBytes(chunk);
  if (!chunk.changed) WriteToFile(chunk, std::as_bytes(std::span(chunk.packed)));
  std::vector<std::int32_t>().swap(chunk.packed);
}

// A chunk that has outgrown its place gets another, at the end.
void OverlayFigures::WriteToFile(Chunk& chunk, std::span<const std::byte> bytes) {
  if (bytes.size() > chunk.room) {
    chunk.place = file_.Size();
    chunk.room = static_cast<std::uint32_t>(bytes.size());
  }
  file_.WriteAt(chunk.place, bytes);
}

// --- Visits ----------------------------------------------------------------------------------------------------------

void OverlayFigures::VisitRound(const RowVisitor& visit) {
  const bool all = false;
  Visit(all, visit);
}

void OverlayFigures::VisitAll(const RowVisitor& visit) {
  const bool all = true;
  Visit(all, visit);
}

void OverlayFigures::Visit(bool all, const RowVisitor& visit) {
  for (std::size_t account = 0; account < chunk_of_group_.size(); ++account) {
    for (std::size_t group = 0; group < chunk_of_group_[account].size(); ++group) {
      const std::uint32_t place = chunk_of_group_[account][group];
      if (place == kNone || (!all && chunks_[place - 1].round != round_)) continue;
      Select(account, group * kRows);
      if (!VisitChunk(account, group, *current_, all, visit)) return;
    }
  }
}

bool OverlayFigures::VisitChunk(std::size_t account, std::size_t group, Chunk& chunk, bool all,
                                const RowVisitor& visit) {
  const RowBits bits = all ? chunk.touched : chunk.touched_now;
  const std::span<const Double> figures(chunk.figures);
  Row row{.account = account};
  for (std::size_t index = 0; index < kRows; ++index) {
    const RowBits bit = RowBits{1} << index;
    if ((bits & bit) == 0) continue;
    row.record = group * kRows + index;
    row.net = (chunk.settled & bit) == 0;
    row.before = {};
    row.now = {};
    if (index >= chunk.first && index < std::size_t{chunk.first} + chunk.count) {
      const auto held = figures.subspan((index - chunk.first) * halves_ * chunk.width, halves_ * chunk.width);
      row.before = held.first((halves_ - 1) * chunk.width);
      row.now = held.last(chunk.width);
    }
    if (!visit(row)) return false;
  }
  return true;
}

}  // namespace tallybook::preview
