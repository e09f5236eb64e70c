#include "tallybook/engine/FigureStore.h"

#include <algorithm>
#include <cstring>
#include <string>
#include <utility>

#include "support/Dates.h"
#include "support/Failure.h"
#include "support/Narrow.h"
#include "tallybook/engine/ChunkCodec.h"

namespace tallybook::engine {

namespace {

// A chunk's key: the account's number above, the chunk's number from 0 below. The numbers stand in book files.
constexpr int kChunkNumberBits = 24;
constexpr std::int64_t kChunkNumberMask = (std::int64_t{1} << kChunkNumberBits) - 1;

// About what a chunk in memory takes beside its figures: itself, and its entry in the table by key.
constexpr std::size_t kBytesOfAChunk = 192;

void SetBit(std::vector<std::byte>& bits, std::size_t index) {
  bits[index / 8] |= std::byte{1} << (index % 8);
}

bool HasBit(std::span<const std::byte> bits, std::size_t index) {
  return (bits[index / 8] & (std::byte{1} << (index % 8))) != std::byte{0};
}

}  // namespace

FigureStore::FigureStore(BookFile file, std::size_t cache_bytes)
    : file_(std::move(file)),
      calendar_(file_.Description().calendar, file_.Description().data_level),
      shape_{file_.RowsOfChunk(), std::max<std::size_t>(file_.Description().fields.size(), 1)},
      row_of_zeros_(shape_.fields),
      cache_bytes_(cache_bytes),
      stored_chunks_(file_.Db()),
      walk_chunks_(file_.Db(), "SELECT key, figures FROM chunk WHERE key BETWEEN ?1 AND ?2 ORDER BY key"),
      insert_chunk_(file_.Db(), "INSERT INTO chunk (key, figures) VALUES (?1, ?2)"),
      update_chunk_(file_.Db(), "UPDATE chunk SET figures = ?2 WHERE id = ?1"),
      delete_chunk_(file_.Db(), "DELETE FROM chunk WHERE id = ?1"),
      find_rows_(file_.Db(), "SELECT rows FROM journal_chunk WHERE entry = ?1 AND key = ?2"),
      write_rows_(file_.Db(), "INSERT INTO journal_chunk (entry, key, rows, image) VALUES (?1, ?2, ?3, ?4)"),
      update_rows_(file_.Db(), "UPDATE journal_chunk SET rows = ?3 WHERE entry = ?1 AND key = ?2"),
      write_image_(file_.Db(), "INSERT INTO image (figures) SELECT figures FROM chunk WHERE id = ?1") {
  BuildTables();
  file_is_empty_ = file_.Db().Number("SELECT count(*) FROM (SELECT 1 FROM chunk LIMIT 1)") == 0;
}

void FigureStore::BuildTables() {
  first_date_ = calendar_.FirstDate();
  for (Date day = first_date_; day <= calendar_.LastDate();) {
    const Date last = calendar_.UnitOf(day, kOwnLevel).last;
    const std::size_t record = date_of_record_.size();
    date_of_record_.push_back(last);
    place_of_record_.push_back(
        {static_cast<std::uint32_t>(record / shape_.rows), static_cast<std::uint32_t>(record % shape_.rows)});
    record_of_day_.insert(record_of_day_.end(), static_cast<std::size_t>(last - day) + 1,
                          static_cast<std::int32_t>(record));
    day = last + 1;
  }
  for (const AccountDescription& account : file_.Description().accounts) {
    base_key_of_account_.push_back(std::int64_t{account.number} << kChunkNumberBits);
  }
  last_of_account_.assign(base_key_of_account_.size(), nullptr);
}

double FigureStore::SecondsSinceCommit() const {
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - last_commit_).count();
}

// A walk over all accounts of a date comes to the next account's row next. Asked for now, it is there by then; without
// this such a walk waits for memory most of its time.
void FigureStore::FetchEarly(std::size_t account, std::size_t row) const {
#if defined(__GNUC__)
  const Chunk* chunk = account < last_of_account_.size() ? last_of_account_[account] : nullptr;
  const Double* figures = chunk == nullptr ? nullptr : chunk->rows.Find(row, shape_.fields);
  if (figures == nullptr) return;
  if (!chunk->touched.empty()) __builtin_prefetch(chunk->touched.data() + row / 8, 1);
  constexpr std::size_t kFiguresOfACacheLine = 8;
  constexpr std::size_t kMostFigures = 64;  // of a long row the processor fetches the rest by itself
  for (std::size_t index = 0; index < std::min(shape_.fields, kMostFigures); index += kFiguresOfACacheLine) {
    __builtin_prefetch(figures + index, 1);
  }
#endif
}

void FigureStore::SwitchTo(std::size_t account, std::int64_t key, std::size_t row) {
  FetchEarly(account + 1, row);
  current_ = &none_;
  Chunk* chunk = last_of_account_[account];
  if (chunk == nullptr || chunk->key != key) {
    const auto found = by_key_.find(key);
    if (found != by_key_.end()) {
      chunk = found->second;
    } else {
      chunk = &Load(key);
    }
    last_of_account_[account] = chunk;
  }
  chunk->visited = true;
  current_ = chunk;
}

FigureStore::Chunk& FigureStore::Load(std::int64_t key) {
  MakeRoom();
  Chunk& chunk = NewChunk();
  chunk.key = key;
  by_key_.emplace(key, &chunk);
  held_bytes_ += kBytesOfAChunk;
  try {
    if (!file_is_empty_) LoadStored(chunk);
  } catch (...) {
    Forget(chunk);
    throw;
  }
  return chunk;
}

void FigureStore::LoadStored(Chunk& chunk) {
  file_.Db().BeginReading();
  const std::optional<StoredChunk> stored = stored_chunks_.Find(chunk.key);
  if (!stored) return;
  ChunkRows rows;
  Decode(chunk.key, stored->figures, rows);
  held_bytes_ += rows.Bytes();
  chunk.rows = std::move(rows);
  chunk.stored = stored->row;
}

FigureStore::Chunk& FigureStore::NewChunk() {
  if (free_chunks_.empty()) return chunks_.emplace_back();
  Chunk& chunk = *free_chunks_.back();
  free_chunks_.pop_back();
  return chunk;
}

// Gives up chunks that were not used of late until the rest fits, all but the current one and one other.
void FigureStore::MakeRoom() {
  while (held_bytes_ > cache_bytes_ && by_key_.size() > 2) {
    // Changed chunks are written all together, so that one transaction serves many.
    if (changed_.size() * 2 > by_key_.size()) Commit();
    GiveUpOne();
  }
}

void FigureStore::GiveUpOne() {
  for (;;) {
    Chunk& chunk = chunks_[hand_];
    hand_ = (hand_ + 1) % chunks_.size();
    if (chunk.key == kNoKey || chunk.changed || &chunk == current_) continue;
    if (!chunk.visited) {
      Forget(chunk);
      return;
    }
    chunk.visited = false;
  }
}

void FigureStore::Forget(Chunk& chunk) {
  if (entry_ != 0 && chunk.touched_entry == entry_) images_given_up_ = true;
  by_key_.erase(chunk.key);
  held_bytes_ -= kBytesOfAChunk + chunk.rows.Bytes();
  chunk = {};
  free_chunks_.push_back(&chunk);
}

void FigureStore::ForgetAll() {
  current_ = &none_;
  for (Chunk& chunk : chunks_) {
    if (chunk.key != kNoKey) Forget(chunk);
  }
}

void FigureStore::Decode(std::int64_t key, std::span<const std::byte> bytes, ChunkRows& rows) const {
  try {
    DecodeChunk(shape_, bytes, rows);
  } catch (const Failure& failure) {
    const auto first_record = static_cast<std::size_t>(key & kChunkNumberMask) * shape_.rows;
    const Text from =
        first_record < date_of_record_.size() ? DateText(date_of_record_[first_record]) : Text("beyond the last date");
    throw Failure(failure.Number(),
                  file_.Path() + ": " + failure.Description() + " (account number " +
                      std::to_string(key >> kChunkNumberBits) + ", from " + from + ")",
                  failure.Source());
  }
}

bool FigureStore::WriteRow(const Double* figures) {
  Chunk& chunk = *current_;
  const std::size_t size = shape_.fields * sizeof(Double);
  const Double* stands = chunk.rows.Find(current_row_, shape_.fields);
  if (std::memcmp(stands != nullptr ? stands : row_of_zeros_.data(), figures, size) == 0) return false;
  Double* row = stands != nullptr ? chunk.rows.Hold(current_row_, shape_) : HoldRow(chunk);
  if (entry_ != 0) Touch(chunk);
  if (!chunk.changed) {
    changed_.push_back(&chunk);
    chunk.changed = true;
  }
  std::memcpy(row, figures, size);
  changed_bytes_ += size;
  return true;
}

Double* FigureStore::HoldRow(Chunk& chunk) {
  MakeRoom();
  held_bytes_ -= chunk.rows.Bytes();
  Double* row = chunk.rows.Hold(current_row_, shape_, LikelyRows(chunk));
  held_bytes_ += chunk.rows.Bytes();
  return row;
}

// An operation under the journal tells its dates beforehand.
RowRange FigureStore::LikelyRows(const Chunk& chunk) const {
  if (entry_ == 0) return {0, shape_.rows};
  const auto first = static_cast<std::size_t>(chunk.key & kChunkNumberMask) * shape_.rows;
  const auto row_of = [&](std::size_t record) { return std::clamp(record, first, first + shape_.rows) - first; };
  return {row_of(entry_records_.first), row_of(entry_records_.end)};
}

void FigureStore::Touch(Chunk& chunk) {
  if (chunk.touched_entry != entry_) {
    chunk.touched.assign((shape_.rows + 7) / 8, std::byte{0});
    chunk.touched_entry = entry_;
    chunk.imaged = false;
  }
  SetBit(chunk.touched, current_row_);
}

void FigureStore::Commit() {
  stored_chunks_.EndWalk();
  if (!changed_.empty()) {
    std::sort(changed_.begin(), changed_.end(), [](const Chunk* a, const Chunk* b) { return a->key < b->key; });
    std::vector<std::int64_t> stored;
    stored.reserve(changed_.size());
    Transaction transaction(file_.Db());
    for (Chunk* chunk : changed_) {
      if (entry_ != 0) WriteImage(*chunk);
      stored.push_back(Store(chunk->stored, chunk->key, chunk->rows));
    }
    transaction.Commit();
    // Only now is anything of it true; a failure above leaves all chunks changed.
    for (std::size_t index = 0; index < changed_.size(); ++index) {
      changed_[index]->changed = false;
      changed_[index]->stored = stored[index];
      changed_[index]->imaged = entry_ != 0;
    }
    changed_.clear();
    file_is_empty_ = false;
  }
  changed_bytes_ = 0;
  last_commit_ = std::chrono::steady_clock::now();
}

// Every chunk that is changed while an entry is open was touched under it: an entry begins and ends with a commit.
void FigureStore::WriteImage(Chunk& chunk) {
  bool imaged = chunk.imaged;
  if (!imaged && images_given_up_) {
    const EndOfWalk end(find_rows_);
    imaged = find_rows_.Bind(1, std::int64_t{entry_}).Bind(2, chunk.key).Step();
    if (imaged) {
      const auto before = find_rows_.Bytes(0);
      for (std::size_t index = 0; index < std::min(before.size(), chunk.touched.size()); ++index) {
        chunk.touched[index] |= before[index];
      }
    }
  }
  DbStatement& statement = imaged ? update_rows_ : write_rows_;
  statement.Bind(1, std::int64_t{entry_}).Bind(2, chunk.key).Bind(3, std::span<const std::byte>(chunk.touched));
  if (!imaged && chunk.stored != 0) {
    write_image_.Bind(1, chunk.stored).Run();
    statement.Bind(4, file_.Db().LastRow());
  } else if (!imaged) {
    statement.BindNull(4);
  }
  statement.Run();
}

std::int64_t FigureStore::Store(std::int64_t row, std::int64_t key, const ChunkRows& rows) {
  EncodeChunk(shape_, rows, bytes_);
  if (bytes_.empty()) {
    if (row != 0) delete_chunk_.Bind(1, row).Run();
    return 0;
  }
  if (row != 0) {
    update_chunk_.Bind(1, row).Bind(2, std::span<const std::byte>(bytes_)).Run();
    return row;
  }
  insert_chunk_.Bind(1, key).Bind(2, std::span<const std::byte>(bytes_)).Run();
  return file_.Db().LastRow();
}

void FigureStore::BeginEntry(Date time, Date first, Date last, const Text& what_ran) {
  Commit();
  entry_ = 0;
  Transaction transaction(file_.Db());
  DbStatement insert(file_.Db(),
                     "INSERT INTO journal (time, first, last, what, state, chunks) VALUES (?1, ?2, ?3, ?4, ?5, 0)");
  insert.Bind(1, time).Bind(2, first).Bind(3, last).Bind(4, what_ran);
  insert.Bind(5, static_cast<std::int64_t>(JournalState::kOpen)).Run();
  const Long entry = ToLong(file_.Db().LastRow());
  transaction.Commit();
  entry_ = entry;
  entry_records_ = RecordsBetween(first, last);
  images_given_up_ = false;
}

// All of them where the dates are not the book's.
RowRange FigureStore::RecordsBetween(Date first, Date last) const {
  const std::int32_t first_record = RecordOf(first);
  const std::int32_t last_record = RecordOf(last);
  return {first_record < 0 ? 0 : static_cast<std::size_t>(first_record),
          last_record < 0 ? date_of_record_.size() : static_cast<std::size_t>(last_record) + 1};
}

void FigureStore::EndEntry() {
  if (entry_ == 0) return;
  Commit();
  Transaction transaction(file_.Db());
  DbStatement update(file_.Db(),
                     "UPDATE journal SET state = ?2, chunks = (SELECT count(*) FROM journal_chunk WHERE entry = ?1) "
                     "WHERE id = ?1");
  update.Bind(1, std::int64_t{entry_}).Bind(2, static_cast<std::int64_t>(JournalState::kClosed)).Run();
  transaction.Commit();
  entry_ = 0;
}

std::vector<JournalEntry> FigureStore::Entries() {
  DbStatement select(file_.Db(),
                     "SELECT id, time, first, last, what, state, "
                     "CASE state WHEN 0 THEN (SELECT count(*) FROM journal_chunk WHERE entry = id) ELSE chunks END "
                     "FROM journal ORDER BY id");
  std::vector<JournalEntry> entries;
  while (select.Step()) {
    JournalEntry& entry = entries.emplace_back();
    entry.id = ToLong(select.Int(0));
    entry.time = select.Real(1);
    entry.first = select.Real(2);
    entry.last = select.Real(3);
    entry.what_ran = select.String(4);
    entry.state = static_cast<JournalState>(select.Int(5));
    entry.chunks = ToLong(select.Int(6));
  }
  return entries;
}

void FigureStore::Undo(Long id) {
  Commit();
  entry_ = 0;
  Database& database = file_.Db();
  const std::int64_t entry = id;
  Transaction transaction(database);
  {
    // Its own, so that a failure leaves no walk open when the transaction is rolled back.
    StoredChunks chunks(database);
    DbStatement walk(database,
                     "SELECT journal_chunk.key, rows, figures FROM journal_chunk "
                     "LEFT JOIN image ON image.id = journal_chunk.image WHERE entry = ?1 ORDER BY journal_chunk.key");
    walk.Bind(1, entry);
    while (walk.Step()) RestoreImage(chunks, walk.Int(0), walk.Bytes(1), walk.Bytes(2));
  }
  DbStatement update(database,
                     "UPDATE journal SET state = ?2, chunks = (SELECT count(*) FROM journal_chunk WHERE entry = ?1) "
                     "WHERE id = ?1");
  update.Bind(1, entry).Bind(2, static_cast<std::int64_t>(JournalState::kUndone)).Run();
  DbStatement(database, "DELETE FROM image WHERE id IN (SELECT image FROM journal_chunk WHERE entry = ?1)")
      .Bind(1, entry)
      .Run();
  DbStatement(database, "DELETE FROM journal_chunk WHERE entry = ?1").Bind(1, entry).Run();
  transaction.Commit();
  file_is_empty_ = false;
  ForgetAll();
}

// An empty image says that there was no chunk: zeros.
void FigureStore::RestoreImage(StoredChunks& chunks, std::int64_t key, std::span<const std::byte> touched,
                               std::span<const std::byte> image) {
  ChunkRows before;
  ChunkRows now;
  if (!image.empty()) Decode(key, image, before);
  const std::optional<StoredChunk> stored = chunks.Find(key);
  if (stored) Decode(key, stored->figures, now);
  chunks.EndWalk();
  for (std::size_t row = 0; row < std::min(shape_.rows, touched.size() * 8); ++row) {
    if (!HasBit(touched, row)) continue;
    const Double* figures = before.Find(row, shape_.fields);
    std::copy_n(figures != nullptr ? figures : row_of_zeros_.data(), shape_.fields, now.Hold(row, shape_));
  }
  Store(stored ? stored->row : 0, key, now);
}

bool FigureStore::VisitRows(std::size_t account, std::int32_t first, std::int32_t last, const RowVisitor& visit) {
  if (!file_.ReadOnly()) Commit();
  if (first > last) return true;
  const std::int64_t base = base_key_of_account_[account];
  walk_chunks_.Bind(1, base + place_of_record_[static_cast<std::size_t>(first)].chunk);
  walk_chunks_.Bind(2, base + place_of_record_[static_cast<std::size_t>(last)].chunk);
  const EndOfWalk end(walk_chunks_);
  ChunkRows rows;
  while (walk_chunks_.Step()) {
    const std::int64_t key = walk_chunks_.Int(0);
    Decode(key, walk_chunks_.Bytes(1), rows);
    const auto first_of_chunk =
        static_cast<std::int32_t>(key & kChunkNumberMask) * static_cast<std::int32_t>(shape_.rows);
    for (std::size_t row = rows.Range().first; row < rows.Range().end; ++row) {
      const std::int32_t record = first_of_chunk + static_cast<std::int32_t>(row);
      if (record < first || record > last) continue;
      if (!visit(record, {rows.Find(row, shape_.fields), shape_.fields})) return false;
    }
  }
  return true;
}

}  // namespace tallybook::engine
