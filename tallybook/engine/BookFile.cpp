#include "tallybook/engine/BookFile.h"

#include <utility>

#include "support/Failure.h"
#include "tallybook/engine/DescriptionTables.h"

namespace tallybook::engine {

namespace {

constexpr const char* kSource = "Tallybook.Book";

}  // namespace

BookFile BookFile::Create(const Text& path, const BookDescription& description) {
  return {path, description};
}

BookFile::BookFile(const Text& path, const BookDescription& description) : path_(path), read_only_(false) {
  database_ = std::make_unique<Database>(path, Database::Mode::kCreate);
  TakeRightToWrite();
  *description_ = description;
  description_->values.clear();
  rows_of_chunk_ = ChooseRowsOfChunk(description);
  Database& database = *database_;
  SetPageSize(database);
  database.Execute("PRAGMA journal_mode = WAL; PRAGMA synchronous = NORMAL");
  Transaction transaction(database);
  CreateTables(database);
  SaveDescription(database, *description_, rows_of_chunk_);
  transaction.Commit();
}

BookFile::BookFile(const Text& path, bool read_only) : path_(path), read_only_(read_only) {
  database_ = std::make_unique<Database>(path, read_only ? Database::Mode::kReadOnly : Database::Mode::kReadWrite);
  static_cast<void>(FormatOf(*database_));  // a file that is no book gets no companions
  if (read_only_) {
    // One long read transaction: whatever a writer commits meanwhile, this book stays one consistent state.
    database_->BeginReading();
  } else {
    TakeRightToWrite();
    // A log of up to 64 MiB is left to grow before it is copied back, so that a large commit is not written twice at
    // once.
    // SQLite keeps 16 MiB of pages besides, so that the index pages of a large commit are written once.
    database_->Execute(
        "PRAGMA journal_mode = WAL; PRAGMA synchronous = NORMAL; PRAGMA wal_autocheckpoint = 4096; "
        "PRAGMA cache_size = -16384");
  }
  format_ = FormatOf(*database_);
  StoredDescription stored = LoadDescription(*database_);
  *description_ = std::move(stored.description);
  rows_of_chunk_ = stored.rows_of_chunk;
}

void BookFile::TakeRightToWrite() {
  try {
    right_to_write_ = ThePlatform().files->Open(path_ + "-lock", Access::kReadWrite, Sharing::kLockReadWrite,
                                                Creation::kCreateIfMissing);
  } catch (const Failure& failure) {
    if (failure.Number() != FailureNumber::kPermissionDenied) throw;
    throw Failure(FailureNumber::kPermissionDenied,
                  path_ + ": the book is open for writing elsewhere, or its folder may not be written (" +
                      failure.Description() + ")",
                  kSource);
  }
}

}  // namespace tallybook::engine
