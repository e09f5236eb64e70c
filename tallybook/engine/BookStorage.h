// What a book asks of the database that it is kept in: its description, chunks of figures by their keys, the sums
// beside them, the journal with its images, one writer, and one transaction at a time. Nothing here knows what the
// database is: SqliteStorage is a file, and a server can stand beside it.
//
// Bytes are kept and given as they are; what they mean, and whether they agree with their checksums, is the caller's
// business but for the rows of description and journal, which an implementation holds against their checksums when it
// reads them. Every trouble is a Failure that names the book: 61 no room, 70 not permitted or in use, 57 damage and all
// else. Spans that are handed out last until the next call. One thread.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <span>
#include <vector>

#include "base/Types.h"
#include "tallybook/engine/Checksums.h"
#include "tallybook/engine/JournalRow.h"
#include "tallybook/engine/Notice.h"
#include "tallybook/engine/StoredDescription.h"
#include "tallybook/engine/WorkWatch.h"

namespace tallybook::engine {

// A chunk as it is stored. `row` tells it from all others for as long as it is there.
struct StoredChunk {
  std::int64_t row = 0;
  std::span<const std::byte> figures;  // as ChunkCodec.h tells, and the checksum
};

class BookStorage {
 public:
  BookStorage() = default;
  virtual ~BookStorage() = default;
  BookStorage(const BookStorage&) = delete;
  BookStorage& operator=(const BookStorage&) = delete;

  // How failures call the book: the path of a file.
  [[nodiscard]] virtual const Text& Path() const = 0;
  [[nodiscard]] virtual bool ReadOnly() const = 0;

  // The format that is stored, and bringing it to the present one, which is due before the first write and outside a
  // transaction: gives whether that had to be done, and `notice` is told of it. Description gives what was stored when
  // the storage was opened.
  [[nodiscard]] virtual Long Format() const = 0;
  virtual bool BringUpToDate() = 0;
  // What was committed is on the disk when this returns, whatever becomes of the machine. Failure 57 where it is not.
  virtual void Settle() = 0;
  virtual void SetNotice(Notice notice) = 0;
  [[nodiscard]] virtual std::shared_ptr<const StoredDescription> Description() const = 0;

  // Stores a description in the place of `before`, the one that is stored. Within a transaction.
  virtual void SaveDescription(const StoredDescription& before, const StoredDescription& after) = 0;

  // The chunk of a key; none where there is none. Keys that are asked for in rising order cost a step each, any other a
  // search. The walk that this leaves open is ended before anything is written.
  [[nodiscard]] virtual std::optional<StoredChunk> FindChunk(std::int64_t key) = 0;
  virtual void EndWalk() = 0;
  [[nodiscard]] virtual bool HasChunks() = 0;
  // All chunks from one key to another, in rising order, and their keys alone. False from `visit` ends the walk and is
  // given back.
  using ChunkVisitor = std::function<bool(std::int64_t key, std::span<const std::byte> figures)>;
  virtual bool VisitChunks(std::int64_t first_key, std::int64_t last_key, const ChunkVisitor& visit) = 0;
  using KeyVisitor = std::function<void(std::int64_t key)>;
  virtual void VisitKeys(std::int64_t first_key, std::int64_t last_key, const KeyVisitor& visit) = 0;

  // Puts all that is stored, as one moment has it, into an empty file, which is a book then; writers may be at work
  // meanwhile. Failures call the file `shown`, and it is not handed to the disk.
  virtual void CopyTo(const Text& path, const Text& shown, WorkWatch& watch) = 0;

  // Stores what is stored anew, without the room that it leaves unused. Outside a transaction; what it holds, and the
  // rows that tell chunks and images apart, stay as they are, and whatever ends it meanwhile leaves all as it was.
  virtual void Compact(WorkWatch& watch) = 0;

  // Makes the operations that read see one state, whatever a writer commits meanwhile, until a transaction begins.
  virtual void BeginReading() = 0;

  // One transaction at a time: all that follows is stored by CommitWriting, or not at all. WriteTransaction holds it.
  virtual void BeginWriting() = 0;
  virtual void CommitWriting() = 0;
  virtual void DropWriting() noexcept = 0;

  // A new chunk, which gives its row; new bytes for one that is there; taking one away.
  [[nodiscard]] virtual std::int64_t InsertChunk(std::int64_t key, std::span<const std::byte> figures) = 0;
  virtual void UpdateChunk(std::int64_t row, std::span<const std::byte> figures) = 0;
  virtual void DeleteChunk(std::int64_t row) = 0;

  // The rows of sums (AccountSums.h) by their blocks, in rising order. No bytes take a row away.
  using SumVisitor = std::function<void(std::int64_t block, std::span<const std::byte> bytes)>;
  virtual void VisitSums(const SumVisitor& visit) = 0;
  virtual void PutSums(std::int64_t block, std::span<const std::byte> bytes) = 0;

  // All entries of the journal, oldest first. Failure 57 where a row is damaged or missing.
  [[nodiscard]] virtual std::vector<JournalRow> Entries() = 0;
  // Begins a command; gives its number.
  [[nodiscard]] virtual Long AddCommand(Date time, const Text& what, const Text& who) = 0;
  // Who ran each command, by its number. Failure 57 where the journal is damaged.
  [[nodiscard]] virtual std::map<Long, Text> Users() = 0;
  // Writes an entry: a new one where its id is 0, which it is given then.
  virtual void SaveEntry(JournalRow& row) = 0;
  // A text of an entry under a name, each once. The entry counts it, and has to be saved then. TextOf fails with 57
  // where there is none.
  virtual void SaveText(JournalRow& row, const Text& name, const Text& value) = 0;
  [[nodiscard]] virtual std::optional<Text> FindText(Long entry, const Text& name) = 0;
  [[nodiscard]] virtual Text TextOf(Long entry, const Text& name) = 0;
  // Takes a text away, where there is one; the entry has to be saved then.
  virtual void DropText(JournalRow& row, const Text& name) = 0;
  // The texts of all entries under a name, by entry. Failure 57 where one is damaged.
  [[nodiscard]] virtual std::map<Long, Text> TextsNamed(const Text& name) = 0;
  // The notes of an entry. SaveNotes puts others in their place, and the entry has to be saved then. Failure 57 where
  // they are damaged.
  [[nodiscard]] virtual EntryNotes NotesOf(const JournalRow& row) = 0;
  [[nodiscard]] virtual std::vector<EntryFile> FilesOf(Long entry) = 0;
  virtual void SaveNotes(JournalRow& row, const EntryNotes& notes) = 0;
  // Copies a chunk from its row, and gives the image's row.
  [[nodiscard]] virtual std::int64_t CopyImage(std::int64_t chunk_row) = 0;
  // An image's bytes by its row. Failure 57 where it is missing.
  [[nodiscard]] virtual std::span<const std::byte> ReadImage(std::int64_t image) = 0;
  [[nodiscard]] virtual std::optional<ChunkMark> FindMark(Long entry, std::int64_t key) = 0;
  // Writes a mark of these bits and this image. Gives its checksum.
  virtual Checksum InsertMark(Long entry, std::int64_t key, std::span<const std::byte> rows, std::int64_t image) = 0;
  virtual Checksum UpdateMark(Long entry, std::int64_t key, std::span<const std::byte> rows, std::int64_t image) = 0;
  // Gives each mark of an entry, in the order of the keys. Failure 57 where one is damaged or missing.
  virtual void VisitMarks(const JournalRow& row, const MarkVisitor& visit) = 0;
  // The same without the images.
  virtual void VisitMarkBits(const JournalRow& row, const MarkBitsVisitor& visit) = 0;
  // Gives the mark of one chunk, as VisitMarks; false where the entry did not write it.
  virtual bool VisitMark(Long entry, std::int64_t key, const MarkVisitor& visit) = 0;
  // Takes the images of an entry away, and tells so in its marks and in the row, which has to be saved then. Failure 57
  // where a mark is damaged.
  virtual void DropImages(JournalRow& row) = 0;
};

// A transaction: dropped by its end unless Commit came first.
class WriteTransaction {
 public:
  explicit WriteTransaction(BookStorage& storage) : storage_(storage) { storage_.BeginWriting(); }
  ~WriteTransaction() {
    if (open_) storage_.DropWriting();
  }
  WriteTransaction(const WriteTransaction&) = delete;
  WriteTransaction& operator=(const WriteTransaction&) = delete;

  void Commit() {
    storage_.CommitWriting();
    open_ = false;
  }

 private:
  BookStorage& storage_;
  bool open_ = true;
};

}  // namespace tallybook::engine
