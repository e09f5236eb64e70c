// What an undo makes of figures: those that an entry changed go back to what they were, and what others did to the same
// records stays. Chunk by chunk, in memory; reading and writing chunks is the caller's business.
//
// A figure was changed by an entry where its image and the next later image of the record differ; where no later entry
// wrote the record, the image and the book. One thread.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <set>
#include <span>
#include <tuple>
#include <vector>

#include "base/Types.h"
#include "tallybook/engine/EntryImages.h"
#include "tallybook/engine/LaterMarks.h"
#include "tallybook/engine/UndoRequest.h"

namespace tallybook::engine {

class FigureUndo {
 public:
  // Figures by the keys of their chunks, rows and slots.
  using FigureSet = std::set<std::tuple<std::int64_t, std::size_t, std::size_t>>;

  struct Means {
    EntryImages& images;
    const StoredDescription& description;
    const Text& book;                                                // how failures call it
    std::function<Date(std::int64_t key, std::size_t row)> date_of;  // of a record that the book holds
    FigureSet* told = nullptr;  // where several entries are undone: figures that were found changed since
  };

  // Of one entry of the journal, whose rows are all here, oldest first. What is found is added to `outcome`. All
  // outlive it.
  FigureUndo(const Means& means, UndoWay way, std::size_t most_listed, const std::vector<JournalRow>& journal,
             const JournalRow& entry, UndoOutcome& outcome);

  // Puts rows of a chunk to what they are to be: `now` is what stands there. Gives the rows that differ then.
  //   fails   57 where an image is damaged; 5 where amounts cannot be told because a later entry kept no figures, 6
  //           where taking one out gives no figure
  [[nodiscard]] RowBits Apply(const EntryRows& rows, ChunkRows& now);

 private:
  // A later entry's rows of the chunk at hand.
  struct Later {
    const JournalRow* entry = nullptr;
    std::optional<EntryRows> rows;
  };
  // What the entry left in a row; the figures are null where that cannot be told.
  struct LeftRow {
    bool known = true;
    const Double* figures = nullptr;
  };

  void LoadLater(std::int64_t key);
  void PutBack(std::size_t row, const Double* before, const Double* stands, std::span<Double> becomes);
  [[nodiscard]] LeftRow LeftIn(std::size_t row, const Double* stands) const;
  [[nodiscard]] const Double* FiguresOf(const ChunkRows& rows, std::size_t row) const;
  [[nodiscard]] Double Decide(std::size_t row, std::size_t slot, Double before, std::optional<Double> left, Double now);
  [[nodiscard]] Double TakenOut(std::size_t row, std::size_t slot, Double before, std::optional<Double> left,
                                Double now);
  void NoteChangedSince(std::size_t row, std::size_t slot, Double before, std::optional<Double> left, Double now);
  [[nodiscard]] Long LastToChange(std::size_t row, std::size_t slot, Double now);
  [[nodiscard]] Text Named(std::size_t row, std::size_t slot) const;
  [[noreturn]] void RefuseUntold(std::size_t row, std::size_t slot) const;

  Means means_;
  UndoWay way_;
  std::size_t most_listed_;
  const JournalRow& entry_;
  std::span<const JournalRow> later_entries_;
  LaterMarks later_marks_;
  UndoOutcome& outcome_;
  std::vector<Double> zeros_;
  std::vector<Integer> field_of_slot_;  // 0: of a field that is gone

  // The chunk at hand.
  std::int64_t key_ = -1;
  std::vector<Later> later_;
  std::vector<Later> all_later_;  // newest first; read when a figure is listed
  bool all_later_are_read_ = false;
};

}  // namespace tallybook::engine
