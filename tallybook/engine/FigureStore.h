// The figures of a book: rows of figures by account and record, kept in chunks in the book's file, read through a
// bounded cache and written back in large transactions, with the images that the rollback journal needs.
//
// An account is told by its position in the list, counted from 0 (`account`), a record by its number from 0 (`record`):
// the n-th level date from the first date on. A row has a figure for each field, in position order.
//
// Nothing reaches the file but by Commit, which writes all changed chunks and their images in one transaction. A commit
// that fails leaves the file as the one before left it and keeps every change in memory. One thread.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <span>
#include <unordered_map>
#include <vector>

#include "support/Types.h"
#include "tallybook/engine/BookFile.h"
#include "tallybook/engine/Calendar.h"
#include "tallybook/engine/ChunkRows.h"
#include "tallybook/engine/Database.h"
#include "tallybook/engine/Journal.h"
#include "tallybook/engine/StoredChunks.h"

namespace tallybook::engine {

class FigureStore {
 public:
  // `cache_bytes` bounds what is kept in memory; two chunks are kept at least.
  FigureStore(BookFile file, std::size_t cache_bytes);
  FigureStore(const FigureStore&) = delete;
  FigureStore& operator=(const FigureStore&) = delete;

  [[nodiscard]] BookFile& File() { return file_; }
  [[nodiscard]] const Calendar& Rules() const { return calendar_; }

  // The record that holds a date, and its level date. A date that no record of the book holds gives -1. The last record
  // can reach beyond the last date held, and its dates are known here: a walk over level dates arrives at its end.
  [[nodiscard]] std::int32_t RecordOf(Date date) const {
    const Date offset = date - first_date_;
    if (!(offset >= 0 && offset < static_cast<Date>(record_of_day_.size()))) return -1;
    return record_of_day_[static_cast<std::size_t>(offset)];
  }
  [[nodiscard]] Date DateOfRecord(std::int32_t record) const {
    return date_of_record_[static_cast<std::size_t>(record)];
  }

  // The row of an account and a record, and the row that WriteRow changes from then on. It stays where it is until the
  // next call of Row or of an operation below.
  [[nodiscard]] const Double* Row(std::size_t account, std::int32_t record) {
    const RecordPlace place = place_of_record_[static_cast<std::size_t>(record)];
    const std::int64_t key = base_key_of_account_[account] + place.chunk;
    if (current_->key != key) SwitchTo(account, key, place.row);
    current_row_ = place.row;
    const Double* figures = current_->rows.Find(place.row, shape_.fields);
    return figures != nullptr ? figures : row_of_zeros_.data();
  }
  // Puts new figures into that row. Gives whether they differ from what it held.
  bool WriteRow(const Double* figures);

  // Bytes of rows changed, and time gone by, since the last commit.
  [[nodiscard]] std::size_t ChangedBytes() const { return changed_bytes_; }
  [[nodiscard]] double SecondsSinceCommit() const;

  void Commit();

  // The journal. An entry that is open when another begins stays unclosed. Undo is one transaction; it ends an entry
  // that is open, and forgets the current row. `id` must be an entry that is not undone.
  void BeginEntry(Date time, Date first, Date last, const Text& what_ran);
  void EndEntry();
  [[nodiscard]] bool EntryIsOpen() const { return entry_ != 0; }
  [[nodiscard]] std::vector<JournalEntry> Entries();
  void Undo(Long id);

  // Commits, then gives the stored rows of an account in the order of their records, from `first` to `last`; rows of
  // zeros may be left out. False from `visit` ends the walk and is given back.
  using RowVisitor = std::function<bool(std::int32_t record, std::span<const Double> figures)>;
  bool VisitRows(std::size_t account, std::int32_t first, std::int32_t last, const RowVisitor& visit);

 private:
  struct RecordPlace {
    std::uint32_t chunk;
    std::uint32_t row;
  };

  struct Chunk {
    std::int64_t key = kNoKey;
    ChunkRows rows;
    bool changed = false;            // differs from the file
    std::int64_t stored = 0;         // its row in the file; 0: the file has none
    bool visited = false;            // used since the hand of the cache passed by
    Long touched_entry = 0;          // the journal entry that the two below belong to
    bool imaged = false;             // the file has its image from before the entry
    std::vector<std::byte> touched;  // a bit for each row that was written under the entry
  };

  static constexpr std::int64_t kNoKey = -1;

  void BuildTables();
  void SwitchTo(std::size_t account, std::int64_t key, std::size_t row);
  void FetchEarly(std::size_t account, std::size_t row) const;
  Chunk& Load(std::int64_t key);
  void LoadStored(Chunk& chunk);
  Chunk& NewChunk();
  void MakeRoom();
  void GiveUpOne();
  void Forget(Chunk& chunk);
  void ForgetAll();
  // The current row for writing, where the chunk does not hold it yet.
  Double* HoldRow(Chunk& chunk);
  [[nodiscard]] RowRange LikelyRows(const Chunk& chunk) const;
  [[nodiscard]] RowRange RecordsBetween(Date first, Date last) const;
  void Touch(Chunk& chunk);
  void WriteImage(Chunk& chunk);
  // Writes a chunk's figures into its row of the file, 0 for a new one, or takes the row away where they are all zero.
  // Gives the row that the file has now. New rows are put at the end of the table whatever their key, so that a walk
  // over dates, which writes one chunk of each account in turn, never makes room between others.
  std::int64_t Store(std::int64_t row, std::int64_t key, const ChunkRows& rows);
  void Decode(std::int64_t key, std::span<const std::byte> bytes, ChunkRows& rows) const;
  void RestoreImage(StoredChunks& chunks, std::int64_t key, std::span<const std::byte> touched,
                    std::span<const std::byte> image);

  BookFile file_;
  Calendar calendar_;
  ChunkShape shape_;
  std::vector<Double> row_of_zeros_;

  Date first_date_ = 0;
  std::vector<std::int32_t> record_of_day_;
  std::vector<Date> date_of_record_;
  std::vector<RecordPlace> place_of_record_;
  std::vector<std::int64_t> base_key_of_account_;

  // The cache: chunks that never move, a hand that goes round them to find one to give up, and two ways to a chunk: the
  // last one used of each account (which may have been given up since: its key tells), and by key.
  std::size_t cache_bytes_;
  std::size_t held_bytes_ = 0;
  std::deque<Chunk> chunks_;
  std::vector<Chunk*> free_chunks_;
  std::size_t hand_ = 0;
  std::vector<Chunk*> last_of_account_;
  std::unordered_map<std::int64_t, Chunk*> by_key_;
  Chunk none_;
  Chunk* current_ = &none_;
  std::size_t current_row_ = 0;
  bool file_is_empty_ = false;  // the file has no chunk at all, so none need be looked for
  std::vector<Chunk*> changed_;
  std::size_t changed_bytes_ = 0;
  std::chrono::steady_clock::time_point last_commit_ = std::chrono::steady_clock::now();

  Long entry_ = 0;                // the open entry; 0: none
  RowRange entry_records_;        // those of the entry's dates
  bool images_given_up_ = false;  // a chunk that had an image under the entry has left the cache

  std::vector<std::byte> bytes_;
  StoredChunks stored_chunks_;
  DbStatement walk_chunks_;
  DbStatement insert_chunk_;
  DbStatement update_chunk_;
  DbStatement delete_chunk_;
  DbStatement find_rows_;
  DbStatement write_rows_;
  DbStatement update_rows_;
  DbStatement write_image_;
};

}  // namespace tallybook::engine
