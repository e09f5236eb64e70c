#include "tallybook/engine/SqliteStorage.h"

#include <utility>

#include "tallybook/engine/BackupTables.h"
#include "tallybook/engine/BookFormat.h"
#include "tallybook/engine/DescriptionTables.h"

namespace tallybook::engine {

SqliteStorage::SqliteStorage(BookFile file)
    : file_(std::move(file)),
      chunks_(Db()),
      walk_chunks_(Db(), "SELECT key, figures FROM chunk WHERE key BETWEEN ?1 AND ?2 ORDER BY key"),
      walk_keys_(Db(), "SELECT key FROM chunk WHERE key BETWEEN ?1 AND ?2 ORDER BY key"),
      insert_chunk_(Db(), "INSERT INTO chunk (key, figures) VALUES (?1, ?2)"),
      update_chunk_(Db(), "UPDATE chunk SET figures = ?2 WHERE id = ?1"),
      delete_chunk_(Db(), "DELETE FROM chunk WHERE id = ?1"),
      sums_(Db()),
      journal_(Db()) {}

void SqliteStorage::SaveDescription(const StoredDescription& before, const StoredDescription& after) {
  ReplaceDescription(Db(), before, after, kBookFormat);
}

bool SqliteStorage::HasChunks() {
  return Db().Number("SELECT count(*) FROM (SELECT 1 FROM chunk LIMIT 1)") != 0;
}

bool SqliteStorage::VisitChunks(std::int64_t first_key, std::int64_t last_key, const ChunkVisitor& visit) {
  const EndOfWalk end(walk_chunks_);
  walk_chunks_.Bind(1, first_key).Bind(2, last_key);
  while (walk_chunks_.Step()) {
    if (!visit(walk_chunks_.Int(0), walk_chunks_.Bytes(1))) return false;
  }
  return true;
}

void SqliteStorage::VisitKeys(std::int64_t first_key, std::int64_t last_key, const KeyVisitor& visit) {
  const EndOfWalk end(walk_keys_);
  walk_keys_.Bind(1, first_key).Bind(2, last_key);
  while (walk_keys_.Step()) visit(walk_keys_.Int(0));
}

void SqliteStorage::CopyTo(const Text& path, const Text& shown, WorkWatch& watch) {
  CopyToFile(Db(), path, shown, watch);
}

std::map<Long, Text> SqliteStorage::Users() {
  return Format() == 1 ? std::map<Long, Text>() : journal_.Users();
}

std::map<Long, Text> SqliteStorage::TextsNamed(const Text& name) {
  return Format() == 1 ? std::map<Long, Text>() : journal_.TextsNamed(name);
}

EntryNotes SqliteStorage::NotesOf(const JournalRow& row) {
  return Format() < kFirstFormatOfNotes ? EntryNotes() : journal_.NotesOf(row);
}

std::vector<EntryFile> SqliteStorage::FilesOf(Long entry) {
  return Format() < kFirstFormatOfNotes ? std::vector<EntryFile>() : journal_.FilesOf(entry);
}

void SqliteStorage::CommitWriting() {
  transaction_->Commit();
  transaction_.reset();
}

// A walk that a failure left open would keep the transaction from being rolled back.
void SqliteStorage::DropWriting() noexcept {
  chunks_.EndWalk();
  transaction_.reset();
}

std::int64_t SqliteStorage::InsertChunk(std::int64_t key, std::span<const std::byte> figures) {
  insert_chunk_.Bind(1, key).Bind(2, figures).Run();
  return Db().LastRow();
}

void SqliteStorage::UpdateChunk(std::int64_t row, std::span<const std::byte> figures) {
  update_chunk_.Bind(1, row).Bind(2, figures).Run();
}

void SqliteStorage::DeleteChunk(std::int64_t row) {
  delete_chunk_.Bind(1, row).Run();
}

}  // namespace tallybook::engine
