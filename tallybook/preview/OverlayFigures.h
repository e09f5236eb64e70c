// The figures that were written onto a database without reaching it: for each what it was before and what it is now.
// What does not fit into memory is packed, and what does not fit then stands in a temporary file.
//
// An account, a record (the n-th level date) and a column (a field that something was written to) are told by their
// places, counted from 0. Writing goes in rounds, such as the files of an import: "before" is before the round. A
// figure that nobody wrote is kUnwritten, which is no number that a database holds. One thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <limits>
#include <span>
#include <vector>

#include "base/Types.h"
#include "tallybook/preview/TemporaryFile.h"

namespace tallybook::preview {

inline constexpr Double kUnwritten = std::numeric_limits<Double>::quiet_NaN();
[[nodiscard]] inline bool IsUnwritten(Double figure) {
  return figure != figure;
}

class OverlayFigures {
 public:
  // Whether it is kept what figures were before.
  enum class Kept { kNow, kBeforeAndNow };

  // `cache_bytes` bounds the figures that are kept in memory; two chunks of them are kept at least.
  OverlayFigures(std::size_t accounts, std::size_t records, std::size_t cache_bytes, Kept kept = Kept::kBeforeAndNow);
  OverlayFigures(const OverlayFigures&) = delete;
  OverlayFigures& operator=(const OverlayFigures&) = delete;

  // Makes a record current. What follows goes by it. May fail as TemporaryFile does.
  void Select(std::size_t account, std::size_t record);
  // Whether the current record was touched in any round.
  [[nodiscard]] bool IsTouched() const { return current_ != nullptr && (current_->touched & row_bit_) != 0; }
  // A figure as it is now.
  [[nodiscard]] Double Now(std::size_t column) const { return column < width_ ? now_[column] : kUnwritten; }
  // Notes that the record was written in this round, whether its figures differ or not.
  void Touch() {
    Chunk& chunk = Need();
    chunk.touched |= row_bit_;
    chunk.touched_now |= row_bit_;
  }
  // Writes a figure.
  void Put(std::size_t column, Double figure) {
    if (column >= width_ || current_->round != round_) HoldForWriting(column);
    now_[column] = figure;
    current_->changed = true;
  }
  // The same where it is kept what it was before: Now calls that `old` or, where it does not know it, the database.
  void Put(std::size_t column, Double old, Double figure) {
    if (column >= width_ || current_->round != round_) HoldForWriting(column);
    Double& before = *(now_ - width_ + column);
    if (IsUnwritten(before)) before = old;
    Put(column, figure);
  }

  // What comes from here on is another round.
  void BeginRound();

  // One record's figures by column; empty where none was changed, and `before` where it is not kept. `net`: `before` is
  // that of the database, and not of a later round alone.
  struct Row {
    std::size_t account = 0;
    std::size_t record = 0;
    std::span<const Double> before = {};
    std::span<const Double> now = {};
    bool net = true;
  };
  // False ends the visit. No record is current afterwards.
  using RowVisitor = std::function<bool(const Row& row)>;
  // The records touched in this round, or in any, in the order of accounts and records. Must not be written meanwhile.
  void VisitRound(const RowVisitor& visit);
  void VisitAll(const RowVisitor& visit);

 private:
  static constexpr std::size_t kRows = 32;
  static constexpr std::size_t kFewRows = 4;
  using RowBits = std::uint32_t;
  static constexpr std::uint32_t kNone = 0;

  // How a chunk's figures are kept while it is given up.
  enum class Form : std::uint8_t {
    kPlain,       // as they are
    kHundredths,  // as whole hundredths
    kOverZeros,   // likewise, and those before left out: they are zero where a figure was written
  };

  // The figures of an account for kRows consecutive records, as many of them as have any. A row is all its columns
  // before, where that is kept, then all of them now.
  struct Chunk {
    std::vector<Double> figures;
    std::vector<std::int32_t> packed;  // when it was given up last; empty where that stands in the file
    long long place = 0;               // in the file
    std::uint32_t room = 0;            // bytes there; 0: it has no place
    std::uint32_t round = 0;           // the last that touched it
    RowBits touched = 0;               // in any round
    RowBits touched_now = 0;           // in that round
    RowBits settled = 0;               // rows whose figures come from an earlier round
    std::uint16_t width = 0;           // columns
    std::uint8_t first = 0;            // of the rows held
    std::uint8_t count = 0;
    Form form = Form::kPlain;
    bool loaded = true;
    bool changed = false;  // differs from what was packed, or from the file
    bool visited = false;  // used since the hand of the cache passed by
  };

  [[nodiscard]] static std::size_t Bytes(const Chunk& chunk) { return chunk.figures.capacity() * sizeof(Double); }
  [[nodiscard]] static std::size_t PackedBytes(const Chunk& chunk) {
    return chunk.packed.size() * sizeof(std::int32_t);
  }
  [[nodiscard]] std::uint32_t& Place(std::size_t account, std::size_t group);
  void Find();
  Chunk& Need() {
    if (current_ == nullptr) MakeChunk();
    if (current_->round != round_) BeginRoundIn(*current_);
    return *current_;
  }
  void MakeChunk();
  void TakeRow();
  void BeginRoundIn(Chunk& chunk) const;
  void HoldForWriting(std::size_t column);
  void HoldRow(Chunk& chunk, std::size_t row);
  void Widen(Chunk& chunk, std::size_t width);
  void Load(Chunk& chunk);
  void MakeRoom();
  void GiveUpOne();
  void GiveUp(Chunk& chunk, std::uint32_t number);
  [[nodiscard]] bool IsOverZeros(const Chunk& chunk) const;
  [[nodiscard]] bool Pack(Chunk& chunk) const;
  static void Unpack(const Chunk& chunk, std::span<Double> figures);
  void MovePackedToFile();
  void WriteToFile(Chunk& chunk, std::span<const std::byte> bytes);
  void Visit(bool all, const RowVisitor& visit);
  bool VisitChunk(std::size_t account, std::size_t group, Chunk& chunk, bool all, const RowVisitor& visit);

  std::size_t groups_;
  std::size_t cache_bytes_;
  std::size_t halves_;                                      // of a row: 1, or 2 with what was before
  std::vector<std::vector<std::uint32_t>> chunk_of_group_;  // by account; from 1, 0 for none; empty until one is needed
  std::deque<Chunk> chunks_;
  std::vector<std::uint32_t> loaded_;  // from 0
  std::size_t hand_ = 0;
  std::size_t held_bytes_ = 0;        // by loaded chunks
  std::deque<std::uint32_t> packed_;  // from 0; chunks with packed figures in memory, that which came first in front
  std::size_t packed_bytes_ = 0;
  TemporaryFile file_;
  std::uint32_t round_ = 1;
  std::size_t columns_ = 0;  // the widest row so far

  // The current record: its chunk, null where there is none, and its figures there.
  std::size_t account_ = 0;
  std::size_t group_ = 0;
  std::size_t row_ = 0;
  RowBits row_bit_ = 0;
  Chunk* current_ = nullptr;
  bool found_ = false;
  Double* now_ = nullptr;
  std::size_t width_ = 0;
};

}  // namespace tallybook::preview
