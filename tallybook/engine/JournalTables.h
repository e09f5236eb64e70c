// The journal's tables in a book's file (docs/book-file.md, "The journal"): commands, entries, and which rows of which
// chunks an entry changed, with the chunks' images from before. Every row is held against its checksum when it is read.
//
// The operations that write want a file of the present format, and a transaction. One thread.
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
#include "tallybook/engine/Database.h"
#include "tallybook/engine/JournalRow.h"

namespace tallybook::engine {

class JournalTables {
 public:
  // `database` must outlive it.
  explicit JournalTables(Database& database);
  ~JournalTables();

  // All entries, oldest first. Failure 57 where a row is damaged or missing; with `tell` that is told instead, and the
  // rows are given that are whole. Entry 0 stands for the journal as a whole.
  using TroubleTaker = std::function<void(Long entry, const Text& what)>;
  [[nodiscard]] std::vector<JournalRow> Rows(Long format, const TroubleTaker& tell = nullptr);
  // Tells the commands whose rows are damaged.
  void CheckCommands(const std::function<void(const Text& what)>& tell);

  // Begins a command; gives its number.
  Long AddCommand(Date time, const Text& what, const Text& who);
  // Who ran each command. Failure 57 where a row is damaged.
  [[nodiscard]] std::map<Long, Text> Users();
  // Writes an entry: a new one where its id is 0, which it is given then.
  void Save(JournalRow& row);

  // A text of an entry under a name. Failure 57 where it is damaged, and of TextOf where there is none. The row counts
  // what is saved, and has to be saved behind it.
  void SaveText(JournalRow& row, const Text& name, const Text& value);
  [[nodiscard]] std::optional<Text> FindText(Long entry, const Text& name);
  [[nodiscard]] Text TextOf(Long entry, const Text& name);
  // Takes it away, where there is one; the row has to be saved behind it.
  void DropText(JournalRow& row, const Text& name);
  // The texts of all entries under a name, by entry. Failure 57 where one is damaged.
  [[nodiscard]] std::map<Long, Text> TextsNamed(const Text& name);

  // The notes of an entry that has been stored: its files, and its text kFactsText. SaveNotes puts others in their
  // place; the row has to be saved behind it. Failure 57 where a text or file of the entry is damaged or missing.
  [[nodiscard]] EntryNotes NotesOf(const JournalRow& row);
  void SaveNotes(JournalRow& row, const EntryNotes& notes);
  // Its files alone, each held against its checksum, whatever their number should be.
  [[nodiscard]] std::vector<EntryFile> FilesOf(Long entry);
  // Counts the texts of an entry of a format that did not. Failure 57 where one is damaged.
  void CountTexts(JournalRow& row);

  // Copies a chunk from its row, and gives the image's row.
  std::int64_t CopyImage(std::int64_t chunk_row);
  // An image's bytes, which last until the next call. Failure 57 where it is missing.
  [[nodiscard]] std::span<const std::byte> ReadImage(std::int64_t image);
  [[nodiscard]] std::optional<ChunkMark> FindMark(Long entry, std::int64_t key);
  // Writes a mark of these bits and this image. Gives its checksum.
  Checksum InsertMark(Long entry, std::int64_t key, std::span<const std::byte> rows, std::int64_t image);
  Checksum UpdateMark(Long entry, std::int64_t key, std::span<const std::byte> rows, std::int64_t image);

  // Gives each mark of an entry with the bytes of its image, empty where there was no chunk, in the order of the keys.
  // Failure 57 where one is damaged or missing.
  void VisitMarks(const JournalRow& row, const MarkVisitor& visit);
  // The same without the images, which are not read.
  void VisitMarkBits(const JournalRow& row, const MarkBitsVisitor& visit);

  // The same for the mark of one chunk; false where there is none.
  bool VisitMark(Long entry, std::int64_t key, const MarkVisitor& visit);

  // Takes the images of an entry away; its marks stay, and say so. The row has to be saved behind it. Failure 57 where
  // a mark is damaged or missing.
  void DropImages(JournalRow& row);

 private:
  struct Statements;

  [[nodiscard]] Statements& Prepared();
  // A statement that is kept, as entry after entry asks it.
  [[nodiscard]] DbStatement& Prepared(std::optional<DbStatement>& statement, const char* sql);
  [[nodiscard]] std::vector<JournalRow> RowsOfFirstFormat();
  void WalkMarks(DbStatement& walk, const JournalRow& row, const MarkBitsVisitor& visit);
  [[nodiscard]] ChunkMark CheckedMark(Long entry, std::int64_t key, const DbStatement& statement, int column);
  Checksum WriteMark(DbStatement& statement, Long entry, std::int64_t key, std::span<const std::byte> rows,
                     std::int64_t image);
  // The value of a text, from a row of value and checksum.
  [[nodiscard]] Text CheckedText(Long entry, const Text& name, const DbStatement& statement) const;
  [[noreturn]] void FailDamaged(const Text& what) const;
  void Tell(const TroubleTaker& tell, Long entry, const Text& what) const;

  // Both count what they read in `seen`, whose number says of which entry it is.
  [[nodiscard]] std::map<Text, Text> TextsOf(JournalRow& seen);
  [[nodiscard]] std::vector<EntryFile> FilesOf(JournalRow& seen);
  void DropNotes(JournalRow& row);
  // Takes rows of an entry away that it counts: `from_where` has the table and what tells them there.
  void DropCounted(JournalRow& row, const Text& from_where);
  void SaveFile(JournalRow& row, std::int64_t position, const EntryFile& file);

  Database& database_;
  std::unique_ptr<Statements> statements_;  // made when they are needed: a file of an older format lacks their columns
  // The same, one by one, since not every format has all of them.
  std::optional<DbStatement> visit_mark_;
  std::optional<DbStatement> files_of_;
  std::optional<DbStatement> texts_of_;
  std::vector<std::byte> bytes_;        // of a mark
  std::vector<std::byte> image_bytes_;  // of the image that was read last
};

// The checksums of rows as they stand in the file.
[[nodiscard]] Checksum CommandChecksum(Long id, Date time, const Text& what, const Text& who);
[[nodiscard]] Checksum EntryChecksum(const JournalRow& row, Long format);

}  // namespace tallybook::engine
