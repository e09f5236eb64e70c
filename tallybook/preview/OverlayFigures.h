// The figures that were written onto a database without reaching it: for each what it was before and what it is now.
// What does not fit into memory stands in a temporary file.
//
// An account, a record (the n-th level date) and a column (a field that something was written to) are told by their
// places, counted from 0. Writing goes in rounds, such as the files of an import: "before" is before the round. A figure
// that nobody wrote is kUnwritten, which is no number that a database holds. One thread.
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
  // `cache_bytes` bounds the figures that are kept in memory; two chunks of them are kept at least.
  OverlayFigures(std::size_t accounts, std::size_t records, std::size_t cache_bytes);
  OverlayFigures(const OverlayFigures&) = delete;
  OverlayFigures& operator=(const OverlayFigures&) = delete;

  // Makes a record current. What follows goes by it. May fail as TemporaryFile does.
  void Select(std::size_t account, std::size_t record);
  // Whether the current record was touched in any round.
  [[nodiscard]] bool IsTouched() const { return current_ != nullptr && (current_->touched & row_bit_) != 0; }
  // A figure as it is now.
  [[nodiscard]] Double Now(std::size_t column) const { return column < width_ ? now_[column] : kUnwritten; }
  // The same where it was written in this round; kUnwritten where it comes from an earlier one.
  [[nodiscard]] Double NowOfRound(std::size_t column) const {
    if (column >= width_ || current_->round != round_ || IsUnwritten(*(now_ - width_ + column))) return kUnwritten;
    return now_[column];
  }
  // Notes that the record was written in this round, whether its figures differ or not.
  void Touch();
  // Writes a figure, which Now calls `old` or, where it does not know it, the database.
  void Put(std::size_t column, Double old, Double figure);

  // What comes from here on is another round.
  void BeginRound();

  // One record's figures by column; empty where none was changed. `net`: `before` is that of the database, and not of
  // a later round alone.
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

  // The figures of an account for kRows consecutive records, as many of them as have any. A row is all its columns
  // before, then all of them now.
  struct Chunk {
    std::vector<Double> figures;
    long long place = 0;      // in the file
    std::uint32_t room = 0;   // bytes there; 0: it has no place
    std::uint32_t round = 0;  // the last that touched it
    RowBits touched = 0;      // in any round
    RowBits touched_now = 0;  // in that round
    RowBits settled = 0;      // rows whose figures come from an earlier round
    std::uint16_t width = 0;  // columns
    std::uint8_t first = 0;   // of the rows held
    std::uint8_t count = 0;
    bool packed = false;  // in the file
    bool loaded = true;
    bool changed = false;  // differs from the file
    bool visited = false;  // used since the hand of the cache passed by
  };

  [[nodiscard]] static std::size_t Bytes(const Chunk& chunk) { return chunk.figures.capacity() * sizeof(Double); }
  [[nodiscard]] std::uint32_t& Place(std::size_t account, std::size_t group);
  void Find();
  Chunk& Need();
  void TakeRow();
  void BeginRoundIn(Chunk& chunk) const;
  void HoldRow(Chunk& chunk, std::size_t row);
  void Widen(Chunk& chunk, std::size_t width);
  void Load(Chunk& chunk);
  void MakeRoom();
  void GiveUpOne();
  void Store(Chunk& chunk);
  void Visit(bool all, const RowVisitor& visit);
  bool VisitChunk(std::size_t account, std::size_t group, Chunk& chunk, bool all, const RowVisitor& visit);

  std::size_t groups_;
  std::size_t cache_bytes_;
  std::vector<std::vector<std::uint32_t>> chunk_of_group_;  // by account; from 1, 0 for none; empty until one is needed
  std::deque<Chunk> chunks_;
  std::vector<std::uint32_t> loaded_;  // from 0
  std::size_t hand_ = 0;
  std::size_t held_bytes_ = 0;
  TemporaryFile file_;
  std::vector<std::int32_t> packed_;
  std::uint32_t round_ = 1;
  std::size_t columns_ = 0;  // the widest row so far

  // The current record: its chunk, null where there is none, and its figures there.
  std::size_t account_ = 0;
  std::size_t group_ = 0;
  std::size_t row_ = 0;
  RowBits row_bit_ = 0;
  Chunk* current_ = nullptr;
  bool found_ = false;
  const Double* now_ = nullptr;
  std::size_t width_ = 0;
};

}  // namespace tallybook::preview
