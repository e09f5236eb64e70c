// The figures of a book: rows of figures by account and record, kept in chunks in the book's file, read through a
// bounded cache and written back in large transactions, with the images that the rollback journal needs.
//
// An account is told by its position in the list, counted from 0 (`account`), a record by its number from 0 (`record`):
// the n-th level date from the first date on. A row has a figure for each slot (StoredDescription.h).
//
// Nothing reaches the file but by Commit, which writes all changed chunks and their images in one transaction. A commit
// that fails leaves the file as the one before left it and keeps every change in memory. One thread.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <span>
#include <unordered_map>
#include <vector>

#include "base/Types.h"
#include "tallybook/engine/AccountSums.h"
#include "tallybook/engine/BookStorage.h"
#include "tallybook/engine/Calendar.h"
#include "tallybook/engine/ChunkDirectory.h"
#include "tallybook/engine/ChunkRows.h"
#include "tallybook/engine/JournalEntry.h"
#include "tallybook/engine/JournalRow.h"
#include "tallybook/engine/UndoRequest.h"

namespace tallybook::engine {

class EntryImages;
class FigureUndo;
struct EntryRows;

class FigureStore {
 public:
  // `cache_bytes` bounds what is kept in memory; two chunks are kept at least.
  FigureStore(std::unique_ptr<BookStorage> storage, std::size_t cache_bytes);
  FigureStore(const FigureStore&) = delete;
  FigureStore& operator=(const FigureStore&) = delete;

  [[nodiscard]] BookStorage& Storage() { return *storage_; }
  [[nodiscard]] std::shared_ptr<const StoredDescription> Description() const { return description_; }
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
  // Whether new figures differ from what that row holds.
  [[nodiscard]] bool Differs(const Double* figures) const {
    return DifferFrom(current_->rows.Find(current_row_, shape_.fields), figures);
  }
  // Puts new figures into that row. Gives whether they differ from what it held.
  bool WriteRow(const Double* figures);

  // Bytes of rows changed, and time gone by, since the last commit.
  [[nodiscard]] std::size_t ChangedBytes() const { return changed_bytes_; }
  [[nodiscard]] double SecondsSinceCommit() const;
  // Whether, since then, rows were written into a chunk that had been left for another in between.
  [[nodiscard]] bool ComesBack() const { return comes_back_; }

  void Commit();
  // Commits, and forgets what was written but for the current row: for a walk that does not come back.
  void CommitAndMoveOn();
  // Commits; what was committed is on the disk when this returns. Not within a whole.
  void Settle();

  // Commits, and makes one transaction of all that is written from here to KeepWhole, which stores it, or to DropWhole
  // or the end of this, after which nothing of it is there, here and in the file. It begins with the first write, so
  // that a book of an older format is brought up to date by then. A part of it that cannot be written spoils the whole:
  // all that writes, or reads from the file, fails from then on. Where KeepWhole fails nothing is stored, and DropWhole
  // is due. No entry is open behind BeginWhole and DropWhole.
  void BeginWhole();
  void KeepWhole();
  void DropWhole();
  // A whole of what `act` does. Where that fails it is dropped, and the failure goes on.
  void AsOne(const std::function<void()>& act);

  // The journal. An entry is written with the first commit under it. One that is open when another begins stays
  // unclosed. `entry` tells all but id and command; a command of 0 is a new one that bears the entry's words.
  void BeginEntry(const JournalEntry& entry, const EntryNotes& notes = {});
  // Commits and closes the entry, in one transaction.
  void EndEntry();
  // Stores another description with an entry of its own, in one transaction; ends an entry that is open, and forgets
  // the current row. Where a change makes rows so long that chunks outgrow a page by far, all are stored anew, which
  // takes as long as an import of them. `change` tells an entry of kind kLists what it was; an undo takes back the
  // entry that it names. All positions, rows and records are those of the new description from then on. A command of 0
  // is a new one. Gives the number of the command.
  Long ChangeDescription(const std::shared_ptr<const StoredDescription>& changed, const JournalEntry& entry,
                         const Text& change);
  // What the change of an entry of kind kLists was.
  [[nodiscard]] Text ChangeOf(Long entry) { return storage_->TextOf(entry, kChangeText); }
  [[nodiscard]] bool EntryIsOpen() const { return entry_ != 0; }
  // The number of the command of the entry that was opened last; 0 where it is not in the file yet.
  [[nodiscard]] Long Command() const { return entry_row_.entry.command; }
  // The number of the entry that was opened last; 0 where it is not in the file yet.
  [[nodiscard]] Long LastEntry() const { return entry_row_.entry.id; }
  // The notes of an entry; SaveNotes puts others in the place of those of each entry by its id, in one transaction.
  // Failure 5 for an id that is none, and nothing is changed.
  [[nodiscard]] EntryNotes NotesOf(Long id);
  void SaveNotes(const std::map<Long, EntryNotes>& notes);
  // The same for the entries' texts kDueText; an empty one is taken away.
  void SaveDue(const std::map<Long, Text>& due);
  [[nodiscard]] std::vector<JournalEntry> Entries();
  // Takes entries back, in the order given, in one transaction; it ends an entry that is open, and forgets the current
  // row. They must keep images and not be undone. Each leaves an entry like `undo`, all of one command, whose number
  // this gives. `outcome` gets what became of the figures; where the request is not to be carried out then, all of it
  // is dropped, with UndoDropped.
  Long Undo(const std::vector<JournalEntry>& entries, const JournalEntry& undo, const UndoRequest& request,
            UndoOutcome& outcome);

  // Drops the images of all entries up to the last that was opened before a date, in one transaction; gives those that
  // had some.
  std::vector<JournalEntry> DropImagesBefore(Date date);
  // The rows of an image of an entry, in chunks as they were then (ShapeOf).
  void DecodeImage(Long entry, std::int64_t key, std::span<const std::byte> image, ChunkRows& rows) const {
    Decode(ShapeOf(*description_, entry), key, image, rows);
  }

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
    bool changed = false;     // differs from the file
    std::int64_t stored = 0;  // its row in the file; 0: the file has none
    Checksum checksum = 0;    // of its bytes there
    bool visited = false;     // used since the hand of the cache passed by
    Long touched_entry = 0;   // the journal entry that the two below belong to, by its serial number
    bool marked = false;      // the file has its mark of the entry
    ChunkMark mark;           // with a bit for each row that was written under the entry
  };

  static constexpr std::int64_t kNoKey = -1;

  void BuildTables();
  void TakeDescription(const std::shared_ptr<const StoredDescription>& description);
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
  // Whether figures differ from those of a row; null stands for a row of zeros.
  [[nodiscard]] bool DifferFrom(const Double* row, const Double* figures) const {
    const Double* stands = row != nullptr ? row : row_of_zeros_.data();
    return std::memcmp(stands, figures, shape_.fields * sizeof(Double)) != 0;
  }
  void Touch(Chunk& chunk);
  // A chunk's place in the file: its row, 0 where the file has none, and the checksum of its bytes.
  struct StoredAs {
    std::int64_t row = 0;
    Checksum checksum = 0;
  };
  // A chunk's mark as the file has it: bits that differ from the chunk's own only where the file had some that the
  // chunk lost with the cache.
  struct MarkedAs {
    std::int64_t image = 0;
    Checksum checksum = 0;
    std::optional<std::vector<std::byte>> rows;
  };

  enum class Whole { kNone, kBegun, kWritten, kSpoiled };

  // A transaction, or a part of a whole, which is spoiled where Commit does not come.
  class Writing {
   public:
    explicit Writing(FigureStore& store) : store_(store) {
      if (store.whole_ == Whole::kNone) {
        own_.emplace(*store.storage_);
      } else {
        store.JoinWhole();
      }
    }
    ~Writing() {
      if (!own_ && !done_) store_.whole_ = Whole::kSpoiled;
    }
    Writing(const Writing&) = delete;
    Writing& operator=(const Writing&) = delete;

    void Commit() {
      if (own_) own_->Commit();
      done_ = true;
    }

   private:
    FigureStore& store_;
    std::optional<WriteTransaction> own_;
    bool done_ = false;
  };

  void JoinWhole();
  void NeedUnspoiled() const;

  // Commits, and leaves the open entry in this state.
  void CommitAs(JournalState state);
  void WriteAll(JournalRow& entry, AccountSums& sums, std::vector<StoredAs>& stored, std::vector<MarkedAs>& marks);
  // Within a transaction: gives an entry a new command that bears its words, where it has none.
  void NeedCommand(JournalEntry& entry);
  // Gives the chunk's mark as the file has it now.
  [[nodiscard]] MarkedAs WriteMark(const Chunk& chunk, JournalRow& entry);
  // Writes a chunk's figures into its row of the file, 0 for a new one, or takes the row away where they are all zero.
  // Gives what the file has now.
  StoredAs Store(StoredAs stands, std::int64_t key, const ChunkRows& rows, AccountSums& sums);
  // Brings the file to the present format, where it is not.
  void BringUpToDate();
  void LoadSums();
  void SaveSums(AccountSums& sums);
  // Gives the checksum of the bytes.
  Checksum Decode(std::int64_t key, std::span<const std::byte> bytes, ChunkRows& rows) const {
    return Decode(shape_, key, bytes, rows);
  }
  Checksum Decode(const ChunkShape& shape, std::int64_t key, std::span<const std::byte> bytes, ChunkRows& rows) const;
  [[noreturn]] void FailDamaged(std::int64_t key, const Text& what) const { FailDamaged(shape_, key, what); }
  [[noreturn]] void FailDamaged(const ChunkShape& shape, std::int64_t key, const Text& what) const;
  // Within a transaction: takes one entry of the journal back, whose rows are all here. What was written for each chunk
  // is told by `figures`.
  void UndoEntry(JournalRow row, JournalRow undo, EntryImages& images, FigureUndo& figures, AccountSums& sums);
  // Puts rows of a chunk back, and gives the undo its mark and its image of the chunk as it is before that.
  void Restore(const EntryRows& rows, FigureUndo& figures, JournalRow& undo, AccountSums& sums);
  // What a mark names must still be there.
  void CheckCanRestore(Long entry, const EntryRows& rows) const;
  // Failure 5 for an id that is none.
  [[nodiscard]] JournalRow& RowOfEntry(std::vector<JournalRow>& journal, Long id) const;
  // Commits, then changes what entries keep beside their figures, and saves them.
  template <typename Kept, typename Change>
  void ChangeNotes(const std::map<Long, Kept>& kept, Change change);
  // An entry is undone, or after the undo of its undo is not any more; and with an undo what it took back.
  void MarkUndone(std::vector<JournalRow>& journal, Long id, Long undo);
  void MarkStanding(std::vector<JournalRow>& journal, Long id, Long undo);
  void CheckSeen(std::int64_t first_key, std::int64_t last_key, bool whole, const AccountSum& seen);

  std::unique_ptr<BookStorage> storage_;
  std::shared_ptr<const StoredDescription> description_;
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
  const Chunk* last_written_ = nullptr;  // null: none since the last commit
  bool comes_back_ = false;
  std::chrono::steady_clock::time_point last_commit_ = std::chrono::steady_clock::now();

  Long entry_ = 0;                            // the serial number of the open entry; 0: none
  Long last_entry_ = 0;                       // the last serial number given
  JournalRow entry_row_;                      // the open entry as the file has it; with no id where it has it not yet
  EntryNotes entry_notes_;                    // to be written with it
  RowRange entry_records_;                    // those of the entry's dates
  std::int64_t last_mark_given_up_ = kNoKey;  // the highest key of chunks marked under the entry that left the cache

  // The whole that is under way, and what was true when its transaction began.
  struct BeforeWhole {
    std::shared_ptr<const StoredDescription> description;
    AccountSums sums;
    bool file_is_empty = false;
  };
  Whole whole_ = Whole::kNone;
  std::optional<BeforeWhole> before_whole_;
  std::optional<WriteTransaction> whole_transaction_;

  std::vector<std::byte> bytes_;
  ChunkDirectory directory_;
  AccountSums sums_;  // as of the last commit; nothing in a file of format 1
};

}  // namespace tallybook::engine
