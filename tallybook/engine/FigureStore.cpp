#include "tallybook/engine/FigureStore.h"

#include <algorithm>
#include <cstring>
#include <string>
#include <utility>

#include "base/Dates.h"
#include "base/Failure.h"
#include "base/Narrow.h"
#include "tallybook/engine/ChunkCodec.h"
#include "tallybook/engine/ChunkKey.h"
#include "tallybook/engine/ChunkRelay.h"
#include "tallybook/engine/EntryImages.h"
#include "tallybook/engine/FigureUndo.h"
#include "tallybook/engine/LoginName.h"
#include "tallybook/engine/RowBits.h"

namespace tallybook::engine {

namespace {

constexpr const char* kSource = "Tallybook.Book";

// About what a chunk in memory takes beside its figures: itself, and its entry in the table by key.
constexpr std::size_t kBytesOfAChunk = 192;

template <typename Rows>
auto& RowIn(Rows& journal, Long id) {
  return *std::ranges::find(journal, id, [](const JournalRow& row) { return row.entry.id; });
}

// A directory that keeps up with what a transaction stores knows nothing at its end, for the transaction may be
// dropped.
class ClearedDirectory {
 public:
  explicit ClearedDirectory(ChunkDirectory& directory) : directory_(directory) { directory_.Clear(); }
  ~ClearedDirectory() { directory_.Clear(); }
  ClearedDirectory(const ClearedDirectory&) = delete;
  ClearedDirectory& operator=(const ClearedDirectory&) = delete;

 private:
  ChunkDirectory& directory_;
};

}  // namespace

FigureStore::FigureStore(std::unique_ptr<BookStorage> storage, std::size_t cache_bytes)
    : storage_(std::move(storage)),
      description_(storage_->Description()),
      calendar_(description_->description.calendar, description_->description.data_level),
      shape_(ShapeOf(*description_)),
      row_of_zeros_(shape_.fields),
      cache_bytes_(cache_bytes),
      directory_(*storage_) {
  BuildTables();
  file_is_empty_ = !storage_->HasChunks();
  LoadSums();
}

void FigureStore::LoadSums() {
  std::vector<Long> accounts;
  for (const AccountDescription& account : description_->description.accounts) accounts.push_back(account.number);
  sums_ = AccountSums(accounts);
  if (storage_->Format() == 1) return;
  storage_->VisitSums(
      [this](std::int64_t block, std::span<const std::byte> bytes) { sums_.Take(block, bytes, storage_->Path()); });
  if (sums_.Empty() != file_is_empty_) {
    throw Failure(FailureNumber::kDeviceError,
                  storage_->Path() + ": the book is damaged: its chunks and the sums beside them do not agree",
                  kSource);
  }
}

void FigureStore::SaveSums(AccountSums& sums) {
  sums.GiveChanged([this](std::int64_t block, std::span<const std::byte> bytes) { storage_->PutSums(block, bytes); });
}

void FigureStore::TakeDescription(const std::shared_ptr<const StoredDescription>& description) {
  ForgetAll();
  directory_.Clear();
  description_ = description;
  calendar_ = Calendar(description_->description.calendar, description_->description.data_level);
  shape_ = ShapeOf(*description_);
  row_of_zeros_.assign(shape_.fields, 0);
  BuildTables();
}

void FigureStore::BuildTables() {
  date_of_record_.clear();
  place_of_record_.clear();
  record_of_day_.clear();
  base_key_of_account_.clear();
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
  for (const AccountDescription& account : description_->description.accounts) {
    base_key_of_account_.push_back(FirstKeyOf(account.number));
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
  if (!chunk->mark.rows.empty()) __builtin_prefetch(chunk->mark.rows.data() + row / 8, 1);
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
  NeedUnspoiled();
  storage_->BeginReading();
  const std::optional<StoredChunk> stored = storage_->FindChunk(chunk.key);
  const AccountSum sum = sums_.Of(AccountOf(chunk.key));
  if (!stored) {
    if (directory_.Has(chunk.key, sum)) FailDamaged(chunk.key, "a chunk is not found where the index has it");
    return;
  }
  if (storage_->Format() > 1 && sum.chunks == 0) FailDamaged(chunk.key, "a chunk is there that was not written");
  ChunkRows rows;
  chunk.checksum = Decode(chunk.key, stored->figures, rows);
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
  if (entry_ != 0 && chunk.touched_entry == entry_) last_mark_given_up_ = std::max(last_mark_given_up_, chunk.key);
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

// Of the first format no bytes have a checksum; it is told as if they had, so that the chunk can be kept in memory when
// the file is brought up to date.
Checksum FigureStore::Decode(const ChunkShape& shape, std::int64_t key, std::span<const std::byte> bytes,
                             ChunkRows& rows) const {
  CheckedBytes checked;
  if (storage_->Format() == 1) {
    checked = {bytes, ChecksumOf(bytes, key)};
  } else if (const auto taken = TakeChecked(bytes, key)) {
    checked = *taken;
  } else {
    FailDamaged(shape, key, "a chunk does not agree with its checksum");
  }
  try {
    DecodeChunk(shape, checked.bytes, rows);
  } catch (const Failure& failure) {
    FailDamaged(shape, key, failure.Description());
  }
  return checked.checksum;
}

void FigureStore::FailDamaged(const ChunkShape& shape, std::int64_t key, const Text& what) const {
  const Text damaged = what.starts_with("the book is damaged") ? what : "the book is damaged: " + what;
  const auto first_record = std::size_t{ChunkNumberOf(key)} * shape.rows;
  const Text from =
      first_record < date_of_record_.size() ? DateText(date_of_record_[first_record]) : Text("beyond the last date");
  throw Failure(FailureNumber::kDeviceError,
                storage_->Path() + ": " + damaged + " (account number " + std::to_string(key >> kChunkNumberBits) +
                    ", from " + from + ")",
                kSource);
}

bool FigureStore::WriteRow(const Double* figures) {
  Chunk& chunk = *current_;
  const Double* stands = chunk.rows.Find(current_row_, shape_.fields);
  if (!DifferFrom(stands, figures)) return false;
  const std::size_t size = shape_.fields * sizeof(Double);
  Double* row = stands != nullptr ? chunk.rows.Hold(current_row_, shape_) : HoldRow(chunk);
  if (entry_ != 0) Touch(chunk);
  comes_back_ = comes_back_ || (chunk.changed && &chunk != last_written_);
  last_written_ = &chunk;
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
    chunk.mark.image = 0;
    chunk.mark.checksum = 0;
    chunk.mark.rows.assign((shape_.rows + 7) / 8, std::byte{0});
    chunk.touched_entry = entry_;
    chunk.marked = false;
  }
  SetBit(chunk.mark.rows, current_row_);
}

void FigureStore::BringUpToDate() {
  if (storage_->BringUpToDate()) LoadSums();
}

void FigureStore::Commit() {
  CommitAs(entry_row_.entry.state);
}

void FigureStore::CommitAndMoveOn() {
  const std::vector<Chunk*> written = changed_;
  Commit();
  for (Chunk* chunk : written) {
    if (chunk != current_) Forget(*chunk);
  }
}

void FigureStore::Settle() {
  Commit();
  storage_->Settle();
}

void FigureStore::BeginWhole() {
  if (whole_ != Whole::kNone) {
    throw Failure(FailureNumber::kInternal, storage_->Path() + ": two wholes cannot be under way at once", kSource);
  }
  Commit();
  entry_ = 0;
  whole_ = Whole::kBegun;
}

void FigureStore::JoinWhole() {
  NeedUnspoiled();
  if (whole_ == Whole::kWritten) return;
  before_whole_ = {description_, sums_, file_is_empty_};
  whole_transaction_.emplace(*storage_);
  whole_ = Whole::kWritten;
}

// What could not be written may have taken all of the transaction with it.
void FigureStore::NeedUnspoiled() const {
  if (whole_ != Whole::kSpoiled) return;
  throw Failure(FailureNumber::kDeviceError,
                storage_->Path() + ": a part of what is kept as a whole could not be written, so nothing of it is kept",
                kSource);
}

void FigureStore::KeepWhole() {
  Commit();
  NeedUnspoiled();
  if (whole_transaction_) whole_transaction_->Commit();
  whole_transaction_.reset();
  before_whole_.reset();
  whole_ = Whole::kNone;
}

void FigureStore::DropWhole() {
  whole_transaction_.reset();
  whole_ = Whole::kNone;
  entry_ = 0;
  entry_row_ = {};
  changed_.clear();
  changed_bytes_ = 0;
  last_written_ = nullptr;
  comes_back_ = false;
  if (before_whole_) {
    sums_ = before_whole_->sums;
    file_is_empty_ = before_whole_->file_is_empty;
  }
  TakeDescription(before_whole_ ? before_whole_->description : description_);
  before_whole_.reset();
}

void FigureStore::AsOne(const std::function<void()>& act) {
  BeginWhole();
  try {
    act();
    KeepWhole();
  } catch (...) {
    DropWhole();
    throw;
  }
}

void FigureStore::CommitAs(JournalState state) {
  storage_->EndWalk();
  const bool entry_differs = entry_ != 0 && (entry_row_.entry.id == 0 || entry_row_.entry.state != state);
  if (!changed_.empty() || entry_differs) {
    BringUpToDate();
    std::sort(changed_.begin(), changed_.end(), [](const Chunk* a, const Chunk* b) { return a->key < b->key; });
    JournalRow entry = entry_row_;
    entry.entry.state = state;
    AccountSums sums = sums_;
    std::vector<StoredAs> stored;
    std::vector<MarkedAs> marks;
    Writing transaction(*this);
    WriteAll(entry, sums, stored, marks);
    transaction.Commit();
    // Only now is anything of it true; a failure above leaves all chunks changed.
    for (std::size_t index = 0; index < changed_.size(); ++index) {
      Chunk& chunk = *changed_[index];
      chunk.changed = false;
      directory_.Note(chunk.key, stored[index].row != 0);
      chunk.stored = stored[index].row;
      chunk.checksum = stored[index].checksum;
      if (entry_ == 0) continue;
      MarkedAs& mark = marks[index];
      chunk.mark.image = mark.image;
      chunk.mark.checksum = mark.checksum;
      if (mark.rows) chunk.mark.rows = std::move(*mark.rows);
      chunk.marked = true;
    }
    if (!changed_.empty()) file_is_empty_ = false;
    changed_.clear();
    sums_ = std::move(sums);
    entry_row_ = entry;
  }
  changed_bytes_ = 0;
  last_written_ = nullptr;
  comes_back_ = false;
  last_commit_ = std::chrono::steady_clock::now();
}

// Every chunk that is changed while an entry is open was touched under it: an entry begins and ends with a commit.
void FigureStore::WriteAll(JournalRow& entry, AccountSums& sums, std::vector<StoredAs>& stored,
                           std::vector<MarkedAs>& marks) {
  stored.reserve(changed_.size());
  marks.reserve(entry_ == 0 ? 0 : changed_.size());
  if (entry_ != 0) NeedCommand(entry.entry);
  if (entry_ != 0 && entry.entry.id == 0) {
    storage_->SaveEntry(entry);
    if (!entry_notes_.Empty()) storage_->SaveNotes(entry, entry_notes_);
  }
  for (const Chunk* chunk : changed_) {
    if (entry_ != 0) marks.push_back(WriteMark(*chunk, entry));
    stored.push_back(Store({chunk->stored, chunk->checksum}, chunk->key, chunk->rows, sums));
  }
  SaveSums(sums);
  if (entry_ != 0) storage_->SaveEntry(entry);
}

void FigureStore::NeedCommand(JournalEntry& entry) {
  if (entry.command == 0) entry.command = storage_->AddCommand(entry.time, entry.what_ran, LoginName());
}

FigureStore::MarkedAs FigureStore::WriteMark(const Chunk& chunk, JournalRow& entry) {
  const Long id = entry.entry.id;
  const ChunkMark& mark = chunk.mark;
  MarkedAs marked;
  if (chunk.marked) {
    entry.marks_sum -= mark.checksum;
    marked.image = mark.image;
    marked.checksum = storage_->UpdateMark(id, chunk.key, mark.rows, marked.image);
  } else if (auto stands = chunk.key <= last_mark_given_up_ ? storage_->FindMark(id, chunk.key) : std::nullopt) {
    entry.marks_sum -= stands->checksum;
    marked.image = stands->image;
    marked.rows = WithBits(std::move(stands->rows), mark.rows);
    marked.checksum = storage_->UpdateMark(id, chunk.key, *marked.rows, marked.image);
  } else {
    marked.image = entry.entry.keeps_images && chunk.stored != 0 ? storage_->CopyImage(chunk.stored) : 0;
    marked.checksum = storage_->InsertMark(id, chunk.key, mark.rows, marked.image);
    ++entry.marks;
    ++entry.entry.chunks;
  }
  entry.marks_sum += marked.checksum;
  return marked;
}

FigureStore::StoredAs FigureStore::Store(StoredAs stands, std::int64_t key, const ChunkRows& rows, AccountSums& sums) {
  if (stands.row != 0) sums.Remove(key, stands.checksum);
  EncodeChunk(shape_, rows, bytes_);
  if (bytes_.empty()) {
    if (stands.row != 0) storage_->DeleteChunk(stands.row);
    return {};
  }
  const Checksum checksum = AppendChecksum(bytes_, key);
  sums.Add(key, checksum);
  if (stands.row != 0) {
    storage_->UpdateChunk(stands.row, bytes_);
    return {stands.row, checksum};
  }
  return {storage_->InsertChunk(key, bytes_), checksum};
}

void FigureStore::BeginEntry(const JournalEntry& entry, const EntryNotes& notes) {
  Commit();
  entry_ = ++last_entry_;
  entry_row_ = {};
  entry_row_.entry = entry;
  entry_notes_ = notes;
  entry_records_ = RecordsBetween(entry.first, entry.last);
  last_mark_given_up_ = kNoKey;
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
  CommitAs(JournalState::kClosed);
  entry_ = 0;
}

std::vector<JournalEntry> FigureStore::Entries() {
  if (!storage_->ReadOnly()) Commit();
  std::vector<JournalEntry> entries;
  for (JournalRow& row : storage_->Entries()) entries.push_back(std::move(row.entry));
  return entries;
}

JournalRow& FigureStore::RowOfEntry(std::vector<JournalRow>& journal, Long id) const {
  for (JournalRow& row : journal) {
    if (row.entry.id == id) return row;
  }
  throw Failure(FailureNumber::kInvalidArgument, storage_->Path() + ": the journal has no entry " + std::to_string(id),
                kSource);
}

EntryNotes FigureStore::NotesOf(Long id) {
  std::vector<JournalRow> journal = storage_->Entries();
  return storage_->NotesOf(RowOfEntry(journal, id));
}

void FigureStore::SaveNotes(const std::map<Long, EntryNotes>& notes) {
  ChangeNotes(notes, [&](JournalRow& row, const EntryNotes& kept) { storage_->SaveNotes(row, kept); });
}

void FigureStore::SaveDue(const std::map<Long, Text>& due) {
  ChangeNotes(due, [&](JournalRow& row, const Text& kept) {
    storage_->DropText(row, kDueText);
    if (!kept.empty()) storage_->SaveText(row, kDueText, kept);
  });
}

template <typename Kept, typename Change>
void FigureStore::ChangeNotes(const std::map<Long, Kept>& kept, Change change) {
  if (kept.empty()) return;
  Commit();
  BringUpToDate();
  std::vector<JournalRow> journal = storage_->Entries();
  for (const auto& [id, of_entry] : kept) static_cast<void>(RowOfEntry(journal, id));
  Writing transaction(*this);
  for (const auto& [id, of_entry] : kept) {
    JournalRow& row = RowOfEntry(journal, id);
    change(row, of_entry);
    storage_->SaveEntry(row);
  }
  transaction.Commit();
  const Long open_entry = entry_row_.entry.id;
  if (!kept.contains(open_entry)) return;
  const JournalRow& row = RowOfEntry(journal, open_entry);
  entry_row_.notes = row.notes;
  entry_row_.notes_sum = row.notes_sum;
}

Long FigureStore::Undo(const std::vector<JournalEntry>& entries, const JournalEntry& undo, const UndoRequest& request,
                       UndoOutcome& outcome) {
  Commit();
  BringUpToDate();
  AccountSums sums = sums_;
  JournalRow row;
  row.entry = undo;
  const ClearedDirectory undone_or_not(directory_);
  EntryImages images(*storage_, *description_,
                     [this](const ChunkShape& shape, std::int64_t key, std::span<const std::byte> bytes,
                            ChunkRows& rows) { static_cast<void>(Decode(shape, key, bytes, rows)); });
  FigureUndo::FigureSet told;
  const FigureUndo::Means means = {
      .images = images,
      .description = *description_,
      .book = storage_->Path(),
      .date_of =
          [this](std::int64_t key, std::size_t in_chunk) {
            return date_of_record_[std::size_t{ChunkNumberOf(key)} * shape_.rows + in_chunk];
          },
      .told = entries.size() > 1 ? &told : nullptr};
  Writing transaction(*this);
  NeedCommand(row.entry);
  for (const JournalEntry& entry : entries) {
    const std::vector<JournalRow> journal = storage_->Entries();
    const JournalRow& entry_row = RowIn(journal, entry.id);
    FigureUndo figures(means, request.way, request.most_listed, journal, entry_row, outcome);
    UndoEntry(entry_row, row, images, figures, sums);
  }
  SaveSums(sums);
  if (request.way == UndoWay::kExact && outcome.changed_since != 0) throw UndoDropped();
  if (request.only_look && whole_ == Whole::kNone) throw UndoDropped();
  transaction.Commit();
  entry_ = 0;
  sums_ = std::move(sums);
  file_is_empty_ = false;
  ForgetAll();
  return row.entry.command;
}

void FigureStore::UndoEntry(JournalRow row, JournalRow undo, EntryImages& images, FigureUndo& figures,
                            AccountSums& sums) {
  undo.entry.undoes = row.entry.id;
  undo.entry.first = row.entry.first;
  undo.entry.last = row.entry.last;
  storage_->SaveEntry(undo);
  images.Visit(row, [&](const EntryRows& rows) {
    CheckCanRestore(row.entry.id, rows);
    Restore(rows, figures, undo, sums);
  });
  storage_->SaveEntry(undo);
  std::vector<JournalRow> journal = storage_->Entries();
  MarkUndone(journal, row.entry.id, undo.entry.id);
}

void FigureStore::MarkUndone(std::vector<JournalRow>& journal, Long id, Long undo) {
  JournalRow& row = RowIn(journal, id);
  if (row.entry.state == JournalState::kUndone) return;
  // An undo that stands again told it when it was made.
  const bool is_told = storage_->FindText(undo, kWasText).has_value();
  if (row.entry.state == JournalState::kOpen && !is_told) {
    JournalRow& undo_row = RowIn(journal, undo);
    storage_->SaveText(undo_row, kWasText, kWasOpen);
    storage_->SaveEntry(undo_row);
  }
  row.entry.state = JournalState::kUndone;
  storage_->SaveEntry(row);
  if (row.entry.undoes != 0) MarkStanding(journal, row.entry.undoes, id);
}

void FigureStore::MarkStanding(std::vector<JournalRow>& journal, Long id, Long undo) {
  JournalRow& row = RowIn(journal, id);
  if (row.entry.state != JournalState::kUndone) return;
  const bool was_open = storage_->FindText(undo, kWasText) == kWasOpen;
  row.entry.state = was_open ? JournalState::kOpen : JournalState::kClosed;
  storage_->SaveEntry(row);
  if (row.entry.undoes != 0) MarkUndone(journal, row.entry.undoes, id);
}

Long FigureStore::ChangeDescription(const std::shared_ptr<const StoredDescription>& changed, const JournalEntry& entry,
                                    const Text& change) {
  Commit();
  entry_ = 0;
  BringUpToDate();
  JournalRow row;
  row.entry = entry;
  Writing transaction(*this);
  NeedCommand(row.entry);
  storage_->SaveEntry(row);
  if (entry.undoes == 0) {
    storage_->SaveText(row, kChangeText, change);
    storage_->SaveEntry(row);
  } else {
    std::vector<JournalRow> journal = storage_->Entries();
    MarkUndone(journal, entry.undoes, row.entry.id);
  }
  const auto fitting = std::make_shared<const StoredDescription>(
      entry.undoes == 0 ? WithLayoutThatFits(*changed, row.entry.id) : *changed);
  AccountSums sums = sums_;
  if (fitting->rows_of_chunk != description_->rows_of_chunk) {
    ChunkRelay(*storage_, shape_, ShapeOf(*fitting)).Run(sums);
    SaveSums(sums);
  }
  storage_->SaveDescription(*description_, *fitting);
  transaction.Commit();
  sums_ = std::move(sums);
  TakeDescription(fitting);
  return row.entry.command;
}

void FigureStore::CheckCanRestore(Long entry, const EntryRows& rows) const {
  const auto refuse = [&](const Text& why) {
    throw Failure(FailureNumber::kInvalidArgument,
                  storage_->Path() + ": journal entry " + std::to_string(entry) + " cannot be undone: " + why, kSource);
  };
  const std::vector<Long>& retired = description_->retired_accounts;
  if (std::binary_search(retired.begin(), retired.end(), AccountOf(rows.key))) {
    refuse("account number " + std::to_string(AccountOf(rows.key)) + ", whose figures it changed, has been removed");
  }
  const std::size_t first = std::size_t{ChunkNumberOf(rows.key)} * shape_.rows;
  ForEachBit(rows.rows, [&](std::size_t row) {
    if (first + row >= date_of_record_.size()) refuse("the years that it changed have been taken away");
  });
}

void FigureStore::Restore(const EntryRows& rows, FigureUndo& figures, JournalRow& undo, AccountSums& sums) {
  const std::int64_t key = rows.key;
  const std::optional<StoredChunk> stored = storage_->FindChunk(key);
  ChunkRows now;
  StoredAs stands;
  if (stored) {
    stands = {stored->row, Decode(key, stored->figures, now)};
  } else if (directory_.Has(key, sums.Of(AccountOf(key)))) {
    FailDamaged(key, "a chunk is not found where the index has it");
  }
  const RowBits changed = figures.Apply(rows, now);
  if (HasAnyBit(changed)) {
    const std::int64_t image = stored ? storage_->CopyImage(stands.row) : 0;
    undo.marks_sum += storage_->InsertMark(undo.entry.id, key, changed, image);
    ++undo.marks;
    ++undo.entry.chunks;
    directory_.Note(key, Store(stands, key, now, sums).row != 0);
  }
  storage_->EndWalk();
}

std::vector<JournalEntry> FigureStore::DropImagesBefore(Date date) {
  Commit();
  entry_ = 0;
  BringUpToDate();
  std::vector<JournalRow> rows = storage_->Entries();
  // The clock may have gone back: an entry of that day or later keeps its way back, and all behind it, which need it.
  rows.erase(std::ranges::find_if(rows, [&](const JournalRow& row) { return row.entry.time >= date; }), rows.end());
  std::vector<JournalEntry> dropped;
  Writing transaction(*this);
  for (JournalRow& row : rows) {
    if (!row.entry.keeps_images || row.entry.kind == JournalKind::kLists) continue;
    storage_->DropImages(row);
    storage_->SaveEntry(row);
    dropped.push_back(row.entry);
  }
  transaction.Commit();
  return dropped;
}

bool FigureStore::VisitRows(std::size_t account, std::int32_t first, std::int32_t last, const RowVisitor& visit) {
  if (!storage_->ReadOnly()) Commit();
  if (first > last) return true;
  const std::int64_t base = base_key_of_account_[account];
  const std::int64_t first_key = base + place_of_record_[static_cast<std::size_t>(first)].chunk;
  const std::int64_t last_key = base + place_of_record_[static_cast<std::size_t>(last)].chunk;
  AccountSum seen;
  ChunkRows rows;
  const auto visit_chunk = [&](std::int64_t key, std::span<const std::byte> bytes) {
    if (key < first_key || key > last_key) FailDamaged(key, "the index is out of order");
    seen.Add(key, Decode(key, bytes, rows));
    const auto first_of_chunk = static_cast<std::int32_t>(ChunkNumberOf(key)) * static_cast<std::int32_t>(shape_.rows);
    for (std::size_t row = rows.Range().first; row < rows.Range().end; ++row) {
      const std::int32_t record = first_of_chunk + static_cast<std::int32_t>(row);
      if (record < first || record > last) continue;
      if (!visit(record, {rows.Find(row, shape_.fields), shape_.fields})) return false;
    }
    return true;
  };
  if (!storage_->VisitChunks(first_key, last_key, visit_chunk)) return false;
  const bool whole = place_of_record_[static_cast<std::size_t>(first)].chunk == 0 &&
                     static_cast<std::size_t>(last) + 1 == place_of_record_.size();
  if (storage_->Format() > 1) CheckSeen(first_key, last_key, whole, seen);
  return true;
}

// A walk over the whole account must have come by all its chunks; a shorter one by those that the account's index has.
void FigureStore::CheckSeen(std::int64_t first_key, std::int64_t last_key, bool whole, const AccountSum& seen) {
  const AccountSum sum = sums_.Of(AccountOf(first_key));
  if (whole && seen == sum) return;
  if (whole) FailDamaged(first_key, "the account's chunks do not agree with the sums beside them");
  if (directory_.CountBetween(first_key, last_key, sum) != seen.chunks) {
    FailDamaged(first_key, "a chunk is not found where the index has it");
  }
}

}  // namespace tallybook::engine
