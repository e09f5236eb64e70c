// A book's storage in an SQLite file (docs/book-file.md).
#pragma once

#include <map>
#include <memory>
#include <optional>
#include <span>
#include <utility>
#include <vector>

#include "tallybook/engine/BookFile.h"
#include "tallybook/engine/BookStorage.h"
#include "tallybook/engine/Database.h"
#include "tallybook/engine/JournalTables.h"
#include "tallybook/engine/StoredChunks.h"
#include "tallybook/engine/SumTable.h"

namespace tallybook::engine {

class SqliteStorage final : public BookStorage {
 public:
  explicit SqliteStorage(BookFile file);

  [[nodiscard]] const Text& Path() const override { return file_.Path(); }
  [[nodiscard]] bool ReadOnly() const override { return file_.ReadOnly(); }

  [[nodiscard]] Long Format() const override { return file_.Format(); }
  bool BringUpToDate() override { return file_.BringUpToDate(); }
  void Settle() override { file_.Settle(); }
  void SetNotice(Notice notice) override { file_.SetNotice(std::move(notice)); }
  [[nodiscard]] std::shared_ptr<const StoredDescription> Description() const override { return file_.Stored(); }

  void SaveDescription(const StoredDescription& before, const StoredDescription& after) override;

  [[nodiscard]] std::optional<StoredChunk> FindChunk(std::int64_t key) override { return chunks_.Find(key); }
  void EndWalk() override { chunks_.EndWalk(); }
  [[nodiscard]] bool HasChunks() override;
  bool VisitChunks(std::int64_t first_key, std::int64_t last_key, const ChunkVisitor& visit) override;
  void VisitKeys(std::int64_t first_key, std::int64_t last_key, const KeyVisitor& visit) override;

  void CopyTo(const Text& path, const Text& shown, WorkWatch& watch) override;
  void Compact(WorkWatch& watch) override { file_.Compact(watch); }

  void BeginReading() override { Db().BeginReading(); }
  void BeginWriting() override { transaction_.emplace(Db()); }
  void CommitWriting() override;
  void DropWriting() noexcept override;

  // New rows are put at the end of the table whatever their key, so that a walk over dates, which writes one chunk of
  // each account in turn, never makes room between others.
  [[nodiscard]] std::int64_t InsertChunk(std::int64_t key, std::span<const std::byte> figures) override;
  void UpdateChunk(std::int64_t row, std::span<const std::byte> figures) override;
  void DeleteChunk(std::int64_t row) override;

  void VisitSums(const SumVisitor& visit) override { sums_.Visit(visit); }
  void PutSums(std::int64_t block, std::span<const std::byte> bytes) override { sums_.Put(block, bytes); }

  [[nodiscard]] std::vector<JournalRow> Entries() override { return journal_.Rows(file_.Format()); }
  [[nodiscard]] Long AddCommand(Date time, const Text& what, const Text& who) override {
    return journal_.AddCommand(time, what, who);
  }
  [[nodiscard]] std::map<Long, Text> Users() override;
  void SaveEntry(JournalRow& row) override { journal_.Save(row); }
  void SaveText(JournalRow& row, const Text& name, const Text& value) override { journal_.SaveText(row, name, value); }
  [[nodiscard]] Text TextOf(Long entry, const Text& name) override { return journal_.TextOf(entry, name); }
  [[nodiscard]] std::optional<Text> FindText(Long entry, const Text& name) override {
    return journal_.FindText(entry, name);
  }
  void DropText(JournalRow& row, const Text& name) override { journal_.DropText(row, name); }
  [[nodiscard]] std::map<Long, Text> TextsNamed(const Text& name) override;
  [[nodiscard]] std::span<const std::byte> ReadImage(std::int64_t image) override { return journal_.ReadImage(image); }
  [[nodiscard]] EntryNotes NotesOf(const JournalRow& row) override;
  [[nodiscard]] std::vector<EntryFile> FilesOf(Long entry) override;
  void SaveNotes(JournalRow& row, const EntryNotes& notes) override { journal_.SaveNotes(row, notes); }
  [[nodiscard]] std::int64_t CopyImage(std::int64_t chunk_row) override { return journal_.CopyImage(chunk_row); }
  [[nodiscard]] std::optional<ChunkMark> FindMark(Long entry, std::int64_t key) override {
    return journal_.FindMark(entry, key);
  }
  Checksum InsertMark(Long entry, std::int64_t key, std::span<const std::byte> rows, std::int64_t image) override {
    return journal_.InsertMark(entry, key, rows, image);
  }
  Checksum UpdateMark(Long entry, std::int64_t key, std::span<const std::byte> rows, std::int64_t image) override {
    return journal_.UpdateMark(entry, key, rows, image);
  }
  void VisitMarks(const JournalRow& row, const MarkVisitor& visit) override { journal_.VisitMarks(row, visit); }
  void VisitMarkBits(const JournalRow& row, const MarkBitsVisitor& visit) override {
    journal_.VisitMarkBits(row, visit);
  }
  bool VisitMark(Long entry, std::int64_t key, const MarkVisitor& visit) override {
    return journal_.VisitMark(entry, key, visit);
  }
  void DropImages(JournalRow& row) override { journal_.DropImages(row); }

 private:
  [[nodiscard]] Database& Db() { return file_.Db(); }

  BookFile file_;
  StoredChunks chunks_;
  DbStatement walk_chunks_;
  DbStatement walk_keys_;
  DbStatement insert_chunk_;
  DbStatement update_chunk_;
  DbStatement delete_chunk_;
  SumTable sums_;
  JournalTables journal_;
  std::optional<Transaction> transaction_;
};

}  // namespace tallybook::engine
