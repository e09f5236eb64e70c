#include "tallybook/preview/OverlayFigures.h"

#include <algorithm>
#include <utility>

namespace tallybook::preview {

namespace {

// Amounts, which most figures are, take half the room in the file: as whole hundredths, where that is exact for all of a
// chunk. Added to a value below 2 to the 51st and taken away again, kShift leaves the nearest whole number.
constexpr Double kHundredths = 100;
constexpr Double kShift = 6755399441055744.0;
constexpr Double kMostHundredths = 2147483646;
constexpr std::int32_t kUnwrittenHundredths = std::numeric_limits<std::int32_t>::min();

bool Pack(std::span<const Double> figures, std::vector<std::int32_t>& packed) {
  packed.resize(figures.size());
  bool exact = true;
  for (std::size_t index = 0; index < figures.size(); ++index) {
    const Double figure = figures[index];
    const bool unwritten = IsUnwritten(figure);
    const Double wanted = unwritten ? 0 : std::clamp(figure * kHundredths, -kMostHundredths, kMostHundredths);
    const Double whole = (wanted + kShift) - kShift;
    exact = exact && (unwritten || whole / kHundredths == figure);
    packed[index] = unwritten ? kUnwrittenHundredths : static_cast<std::int32_t>(whole);
  }
  return exact;
}

void Unpack(std::span<const std::int32_t> packed, std::span<Double> figures) {
  for (std::size_t index = 0; index < packed.size(); ++index) {
    figures[index] = packed[index] == kUnwrittenHundredths ? kUnwritten : packed[index] / kHundredths;
  }
}

}  // namespace

OverlayFigures::OverlayFigures(std::size_t accounts, std::size_t records, std::size_t cache_bytes)
    : groups_((records + kRows - 1) / kRows), cache_bytes_(cache_bytes), chunk_of_group_(accounts) {}

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
  now_ = current_->figures.data() + (row_ - current_->first) * 2 * width_ + width_;
}

OverlayFigures::Chunk& OverlayFigures::Need() {
  if (current_ == nullptr) {
    std::uint32_t& place = Place(account_, group_);
    current_ = &chunks_.emplace_back();
    current_->round = round_;
    loaded_.push_back(static_cast<std::uint32_t>(chunks_.size() - 1));
    place = static_cast<std::uint32_t>(chunks_.size());
  }
  if (current_->round != round_) BeginRoundIn(*current_);
  return *current_;
}

// What the rounds before have left is where this one begins.
void OverlayFigures::BeginRoundIn(Chunk& chunk) const {
  chunk.round = round_;
  chunk.touched_now = 0;
  const std::size_t width = chunk.width;
  for (std::size_t row = 0; row < chunk.count; ++row) {
    Double* const before = chunk.figures.data() + row * 2 * width;
    std::fill_n(before, width, kUnwritten);
    chunk.settled |= RowBits{1} << (chunk.first + row);
  }
  chunk.changed = true;
}

void OverlayFigures::Touch() {
  Chunk& chunk = Need();
  chunk.touched |= row_bit_;
  chunk.touched_now |= row_bit_;
}

void OverlayFigures::Put(std::size_t column, Double old, Double figure) {
  Chunk& chunk = Need();
  columns_ = std::max(columns_, column + 1);
  if (width_ <= column) {
    if (chunk.width <= column) Widen(chunk, columns_);
    HoldRow(chunk, row_);
    TakeRow();
  }
  Double* const before = chunk.figures.data() + (row_ - chunk.first) * 2 * width_;
  if (IsUnwritten(before[column])) before[column] = old;
  before[width_ + column] = figure;
  chunk.changed = true;
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
  const std::size_t size = std::size_t{2} * chunk.width;
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
  std::vector<Double> wide(chunk.count * 2 * width, kUnwritten);
  for (std::size_t half = 0; half < std::size_t{2} * chunk.count; ++half) {
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
  std::vector<Double> figures(std::size_t{chunk.count} * 2 * chunk.width);
  if (chunk.packed) {
    packed_.resize(figures.size());
    file_.ReadAt(chunk.place, std::as_writable_bytes(std::span(packed_)));
    Unpack(packed_, figures);
  } else {
    file_.ReadAt(chunk.place, std::as_writable_bytes(std::span(figures)));
  }
  chunk.figures = std::move(figures);
  chunk.loaded = true;
  chunk.changed = false;
  held_bytes_ += Bytes(chunk);
  const std::uint32_t number = chunk_of_group_[account_][group_] - 1;
  loaded_.push_back(number);
}

void OverlayFigures::MakeRoom() {
  while (held_bytes_ > cache_bytes_ && loaded_.size() > 2) GiveUpOne();
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
    Store(chunk);
    loaded_[hand_] = loaded_.back();
    loaded_.pop_back();
    return;
  }
}

// A chunk that has outgrown its place gets another, at the end.
void OverlayFigures::Store(Chunk& chunk) {
  if (chunk.changed && !chunk.figures.empty()) {
    chunk.packed = Pack(chunk.figures, packed_);
    const std::span<const std::byte> bytes =
        chunk.packed ? std::as_bytes(std::span(packed_)) : std::as_bytes(std::span(chunk.figures));
    if (bytes.size() > chunk.room) {
      chunk.place = file_.Size();
      chunk.room = static_cast<std::uint32_t>(bytes.size());
    }
    file_.WriteAt(chunk.place, bytes);
  }
  held_bytes_ -= Bytes(chunk);
  std::vector<Double>().swap(chunk.figures);  // to assign nothing would keep the room
  chunk.loaded = false;
  chunk.changed = false;
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
      row.before = figures.subspan((index - chunk.first) * 2 * chunk.width, chunk.width);
      row.now = figures.subspan(((index - chunk.first) * 2 + 1) * chunk.width, chunk.width);
    }
    if (!visit(row)) return false;
  }
  return true;
}

}  // namespace tallybook::preview
