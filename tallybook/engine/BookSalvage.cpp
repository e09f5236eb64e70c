#include "tallybook/engine/BookSalvage.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <fcntl.h>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <string_view>
#include <unistd.h>
#include <utility>

#include "base/Failure.h"
#include "base/Narrow.h"
#include "tallybook/engine/AccountSums.h"
#include "tallybook/engine/BackupTables.h"
#include "tallybook/engine/BookCompanions.h"
#include "tallybook/engine/BookFile.h"
#include "tallybook/engine/BookHold.h"
#include "tallybook/engine/BookPlace.h"
#include "tallybook/engine/Calendar.h"
#include "tallybook/engine/ChunkCodec.h"
#include "tallybook/engine/ChunkKey.h"
#include "tallybook/engine/DescriptionTables.h"
#include "tallybook/engine/JournalTables.h"
#include "tallybook/engine/LeafRows.h"
#include "tallybook/engine/LogCheck.h"
#include "tallybook/engine/PrivateCopy.h"
#include "tallybook/engine/SumTable.h"
#include "tallybook/engine/Workpiece.h"

namespace tallybook::engine {

namespace {

constexpr const char* kSource = "Tallybook.Book";

// --- The damaged book ------------------------------------------------------------------------------------------------

// The head of every book (SQLite file format, "The Database Header"): what it must say is put there, so that damage in it
// costs nothing. `path` is a copy. Failure 75 where the file does not look like a book at all.
class Head {
 public:
  Head(const Text& path, const Text& shown, bool has_log) : file_(::open(path.c_str(), O_RDWR | O_CLOEXEC)) {
    const bool read = file_ >= 0 && ::pread(file_, bytes_.data(), bytes_.size(), 0) == kHeadSize;
    if (!read || !LooksLikeABooks()) {
      Close();
      throw Failure(FailureNumber::kPathOrAccess,
                    shown + ": this file is not a book, or its head is damaged so much that it cannot be known",
                    kSource);
    }
    const auto pages = static_cast<std::uint32_t>(::lseek(file_, 0, SEEK_END) / off_t{kPageSize});
    const unsigned char version = has_log ? 2 : 1;
    std::copy(kMagic.begin(), kMagic.end(), bytes_.begin());
    Put(16, {kPageSize >> 8, kPageSize & 0xFF, version, version, 0, 64, 32, 32});
    PutNumber(28, pages);
    PutNumber(44, 4);
    PutNumber(52, 0);
    PutNumber(56, 1);
    PutNumber(64, 0);
    PutNumber(68, static_cast<std::uint32_t>(kBookApplicationId));
    std::fill(bytes_.begin() + 72, bytes_.begin() + 92, 0);
    std::copy_n(bytes_.begin() + 24, 4, bytes_.begin() + 92);  // the page count counts for this state of the file
    const bool written = ::pwrite(file_, bytes_.data(), bytes_.size(), 0) == kHeadSize;
    Close();
    if (!written) throw Failure(FailureNumber::kDeviceError, shown + ": its copy cannot be written", kSource);
  }

 private:
  static constexpr std::string_view kMagic{"SQLite format 3\0", 16};
  static constexpr ssize_t kHeadSize = 100;

  [[nodiscard]] bool LooksLikeABooks() const {
    std::uint32_t mark = 0;
    for (std::size_t at = 68; at < 72; ++at) mark = mark << 8 | bytes_[at];
    return mark == kBookApplicationId || std::equal(kMagic.begin(), kMagic.end(), bytes_.begin());
  }
  void Put(std::size_t at, std::initializer_list<std::size_t> values) {
    for (const std::size_t value : values) bytes_[at++] = static_cast<unsigned char>(value);
  }
  void PutNumber(std::size_t at, std::uint32_t number) {
    Put(at, {number >> 24, number >> 16 & 0xFF, number >> 8 & 0xFF, number & 0xFF});
  }
  void Close() const {
    if (file_ >= 0) ::close(file_);
  }

  int file_;
  std::array<unsigned char, kHeadSize> bytes_{};
};

// A copy of the book that is read however much is wrong with it. What the file is, and what stands beside it, stays.
class DamagedBook {
 public:
  explicit DamagedBook(const Text& path)
      : hold_(path, BookHold::Purpose::kLeaveAlone),
        copy_(hold_),
        log_trouble_(engine::LogTrouble(copy_.Path() + "-wal")),
        database_(OpenCopy(path)) {}

  [[nodiscard]] Database& Db() { return database_; }
  [[nodiscard]] Text CopyPath() const { return copy_.Path(); }
  // What is wrong with the log; empty where nothing is.
  [[nodiscard]] const Text& LogTrouble() const { return log_trouble_; }
  [[nodiscard]] Long Format() const { return format_; }
  [[nodiscard]] const StoredDescription& Stored() const { return *stored_; }

  // Finds the description and by it the format. Gives what is wrong with it, which is nothing where it agrees with its
  // checksum. Failure 57 where there is none to be had.
  Text LoadDescription(bool as_it_reads) {
    const std::int64_t told = database_.Number("PRAGMA user_version");
    Text trouble;
    for (const Long format : {told == 2 ? 2 : 3, told == 2 ? 3 : 2, 1}) {
      if (format == 1 && told != 1) break;
      try {
        stored_ = engine::LoadDescription(database_, format);
        format_ = format;
        return "";
      } catch (const Failure& failure) {
        if (trouble.empty() || format == told) trouble = failure.Description();
      }
    }
    if (!as_it_reads) throw Failure(FailureNumber::kDeviceError, trouble, kSource);
    format_ = told == 2 ? 2 : kBookFormat;
    stored_ = engine::LoadDescription(database_, format_, Trust::kAsItReads);
    return trouble;
  }

 private:
  // The schema is taken as it reads, which also lets a file be read that has been cut.
  [[nodiscard]] Database OpenCopy(const Text& path) const {
    const bool has_log = StateAt(copy_.Path() + "-wal").size > 0;
    const Head mended(copy_.Path(), path, has_log);
    Database database(path, copy_.Path(), Database::Mode::kReadWrite);
    database.Execute("PRAGMA writable_schema = ON; PRAGMA cell_size_check = ON; PRAGMA query_only = ON");
    return database;
  }

  BookHold hold_;
  PrivateCopy copy_;
  Text log_trouble_;
  Database database_;
  std::optional<StoredDescription> stored_;
  Long format_ = 0;
};

// --- The new book ----------------------------------------------------------------------------------------------------

// A figure's chunk on its way.
struct Candidate {
  std::int64_t key = 0;
  Checksum checksum = 0;
  std::vector<std::byte> bytes;  // with the checksum
};

// The chunks that the new book has, which can be taken away again.
class NewChunks {
 public:
  explicit NewChunks(Database& database)
      : insert_(database, "INSERT INTO chunk (key, figures) VALUES (?1, ?2)"),
        remove_(database, "DELETE FROM chunk WHERE key = ?1") {}

  [[nodiscard]] const std::map<std::int64_t, Checksum>& All() const { return checksums_; }
  [[nodiscard]] bool Has(std::int64_t key) const { return checksums_.contains(key); }
  void Put(std::int64_t key, Checksum checksum, std::span<const std::byte> bytes) {
    insert_.Bind(1, key).Bind(2, bytes).Run();
    checksums_[key] = checksum;
  }
  void Remove(std::int64_t key) {
    remove_.Bind(1, key).Run();
    checksums_.erase(key);
  }
  // The keys of an account.
  [[nodiscard]] std::vector<std::int64_t> KeysOf(Long account) const {
    std::vector<std::int64_t> keys;
    const auto end = checksums_.lower_bound(FirstKeyOf(account + 1));
    for (auto at = checksums_.lower_bound(FirstKeyOf(account)); at != end; ++at) keys.push_back(at->first);
    return keys;
  }
  [[nodiscard]] AccountSum SumOf(Long account) const {
    AccountSum sum;
    for (const std::int64_t key : KeysOf(account)) sum.Add(key, checksums_.at(key));
    return sum;
  }

 private:
  DbStatement insert_;
  DbStatement remove_;
  std::map<std::int64_t, Checksum> checksums_;
};

class Salvager {
 public:
  Salvager(const Text& damaged, const Text& new_place)
      : damaged_path_(damaged), new_place_(new_place), damaged_(damaged) {}

  SalvageResult Run(bool as_it_reads) {
    const Text trouble = damaged_.LoadDescription(as_it_reads);
    if (!trouble.empty()) Lose(FindingKind::kDescription, trouble);
    if (!damaged_.LogTrouble().empty()) Lose(FindingKind::kFile, damaged_.LogTrouble());
    TakeDescription();
    result_.format = damaged_.Format();
    if (!HasChecksums()) {
      Lose(FindingKind::kFile,
           "a book of format 1 has no checksums: whether its figures are as they were cannot be told");
    }
    Workpiece workpiece(new_place_);
    Write(workpiece.Path());
    RequireSound(workpiece.Path(), new_place_);
    workpiece.MoveToPlace();
    const bool read_only = false;
    const BookFile with_companions(new_place_, read_only);
    return std::move(result_);
  }

 private:
  [[nodiscard]] bool HasChecksums() const { return damaged_.Format() > 1; }
  [[nodiscard]] Database& Old() { return damaged_.Db(); }

  // --- What is lost ---

  BookFinding& Lose(FindingKind kind, Text what) {
    for (const Text& beginning : {damaged_path_ + ": ", Text("the book is damaged: ")}) {
      if (what.starts_with(beginning)) what.erase(0, beginning.size());
    }
    BookFinding& lost = result_.lost.emplace_back();
    lost.kind = kind;
    lost.what = what;
    return lost;
  }

  BookFinding& LoseOf(FindingKind kind, Long account, const Text& what) {
    BookFinding& lost = Lose(kind, what);
    lost.account = account;
    if (const auto code = codes_.find(account); code != codes_.end()) lost.code = code->second;
    if (!dates_.empty()) {
      lost.first = dates_.front();
      lost.last = dates_.back();
    }
    return lost;
  }

  void LoseChunk(std::int64_t key, const Text& what) {
    BookFinding& lost = LoseOf(FindingKind::kChunk, AccountOf(key), what);
    const std::size_t first = std::size_t{ChunkNumberOf(key)} * damaged_.Stored().rows_of_chunk;
    lost.first = dates_[first];
    lost.last = dates_[std::min(first + damaged_.Stored().rows_of_chunk, dates_.size()) - 1];
  }

  // Goes on after damage. Gives whether there was none.
  template <typename Act>
  static bool Tries(Act act) {
    try {
      act();
      return true;
    } catch (const Failure& failure) {
      if (failure.Number() == FailureNumber::kDiskFull) throw;
      return false;
    }
  }

  // --- Description ---

  void TakeDescription() {
    const StoredDescription& stored = damaged_.Stored();
    for (const AccountDescription& account : stored.description.accounts) codes_[account.number] = account.code;
    for (const auto& [account, code] : codes_) known_.insert(account);
    known_.insert(stored.retired_accounts.begin(), stored.retired_accounts.end());
    const Calendar calendar(stored.description.calendar, stored.description.data_level);
    for (Date day = calendar.FirstDate(); day <= calendar.LastDate(); day = dates_.back() + 1) {
      dates_.push_back(calendar.UnitOf(day, kOwnLevel).last);
    }
    shape_ = ShapeOf(stored);
    chunks_of_account_ = (dates_.size() + shape_.rows - 1) / shape_.rows;
  }

  // --- Everything ---

  void Write(const Text& path) {
    BookFile file = BookFile::Create(path, damaged_.Stored());
    chunks_ = std::make_unique<NewChunks>(file.Db());
    {
      Transaction transaction(file.Db());
      ReadSums();
      CopyChunks();
      JudgeAccounts();
      SaveSums(file.Db());
      transaction.Commit();
    }
    Transaction transaction(file.Db());
    CopyJournal(file.Db());
    CopyCompanions(file.Db());
    transaction.Commit();
    result_.chunks = static_cast<long long>(chunks_->All().size());
    chunks_.reset();
  }

  // --- Figures ---

  // Rows of sums agree with their checksums or are not known.
  void ReadSums() {
    if (!HasChecksums()) return;
    all_sums_read_ = Tries([&] {
      SumTable(Old()).Visit([&](std::int64_t block, std::span<const std::byte> bytes) {
        AccountSums sums;
        if (!Tries([&] { sums.Take(block, bytes, damaged_path_); })) return;
        blocks_.insert(block);
        for (const Long account : sums.Accounts()) sums_[account] = sums.Of(account);
      });
    });
  }

  // What an account must have; nothing where that is not known. A block of which there is no row has no chunks, or has
  // lost its row: the latter where chunks of it are found.
  [[nodiscard]] std::optional<AccountSum> SumOf(Long account) const {
    constexpr int kBlockBits = 8;
    const std::int64_t block = account >> kBlockBits;
    if (blocks_.contains(block)) {
      const auto found = sums_.find(account);
      return found == sums_.end() ? AccountSum() : found->second;
    }
    const auto of_block = chunks_->All().lower_bound(FirstKeyOf(static_cast<Long>(block << kBlockBits)));
    const bool has_chunks = of_block != chunks_->All().end() && AccountOf(of_block->first) >> kBlockBits == block;
    const auto in_index = index_.lower_bound(FirstKeyOf(static_cast<Long>(block << kBlockBits)));
    const bool has_keys = in_index != index_.end() && AccountOf(*in_index) >> kBlockBits == block;
    if (all_sums_read_ && !has_chunks && !has_keys) return AccountSum();
    return std::nullopt;
  }

  // A chunk as it is stored: nothing where it is damaged, or belongs nowhere in this book.
  std::optional<Candidate> Checked(std::int64_t key, std::span<const std::byte> stored) {
    const bool has_place = key >> kChunkNumberBits == AccountOf(key) && known_.contains(AccountOf(key)) &&
                           ChunkNumberOf(key) < chunks_of_account_;
    if (!has_place) return std::nullopt;
    CheckedBytes checked{stored, 0};
    if (HasChecksums()) {
      const auto taken = TakeChecked(stored, key);
      if (!taken) return std::nullopt;
      checked = *taken;
    }
    ChunkRows rows;
    if (!Tries([&] { DecodeChunk(shape_, checked.bytes, rows); })) return std::nullopt;
    Candidate candidate{key, checked.checksum, {checked.bytes.begin(), checked.bytes.end()}};
    candidate.checksum = AppendChecksum(candidate.bytes, key);
    return candidate;
  }

  void Take(std::int64_t key, std::span<const std::byte> stored) {
    auto candidate = Checked(key, stored);
    if (!candidate) return;
    if (!chunks_->Has(key)) {
      chunks_->Put(key, candidate->checksum, candidate->bytes);
    } else if (chunks_->All().at(key) != candidate->checksum) {
      others_.push_back(std::move(*candidate));
    }
  }

  // Along the table from both ends, and then by the index: what one way does not lead to another may.
  void CopyChunks() {
    std::int64_t last = 0;
    const bool whole = Tries([&] {
      DbStatement walk(Old(), "SELECT id, key, figures FROM chunk NOT INDEXED ORDER BY id");
      while (walk.Step()) {
        last = walk.Int(0);
        Take(walk.Int(1), walk.Bytes(2));
      }
    });
    if (!whole) {
      Tries([&] {
        DbStatement walk(Old(), "SELECT id, key, figures FROM chunk NOT INDEXED ORDER BY id DESC");
        while (walk.Step() && walk.Int(0) > last) Take(walk.Int(1), walk.Bytes(2));
      });
    }
    ReadIndex();
    for (const std::int64_t key : index_) {
      if (!chunks_->Has(key)) Tries([&] { TakeByIndex(key); });
    }
  }

  void ReadIndex() {
    index_is_whole_ = true;
    for (const char* sql : {"SELECT key FROM chunk ORDER BY key", "SELECT key FROM chunk ORDER BY key DESC"}) {
      const bool whole = Tries([&] {
        DbStatement walk(Old(), sql);
        while (walk.Step()) index_.insert(walk.Int(0));
      });
      index_is_whole_ = index_is_whole_ && whole;
    }
  }

  void TakeByIndex(std::int64_t key) {
    DbStatement find(Old(), "SELECT key, figures FROM chunk WHERE key = ?1");
    if (find.Bind(1, key).Step() && find.Int(0) == key) Take(key, find.Bytes(1));
  }

  // --- What is the last that was written ---

  void JudgeAccounts() {
    std::set<Long> accounts = known_;
    for (const auto& [account, sum] : sums_) accounts.insert(account);
    for (const Long account : accounts) {
      if (!HasChecksums()) {
        LoseMissingOfIndex(account);
      } else if (const auto sum = SumOf(account)) {
        Judge(account, *sum);
      } else {
        JudgeWithoutSum(account);
      }
    }
  }

  void JudgeWithoutSum(Long account) {
    DropOthers(account);
    LoseMissingOfIndex(account);
    LoseOf(FindingKind::kSums, account, "whether these are all figures that were written cannot be told");
  }

  // Of two chunks in one place neither counts where nothing tells which it is.
  void DropOthers(Long account) {
    for (const Candidate& other : others_) {
      if (AccountOf(other.key) != account || !chunks_->Has(other.key)) continue;
      chunks_->Remove(other.key);
      if (!index_.contains(other.key)) LoseChunk(other.key, "these figures are there twice, and differ");
    }
  }

  void LoseMissingOfIndex(Long account) {
    for (const std::int64_t key : MissingOfIndex(account)) LoseChunk(key, "these figures cannot be read");
  }

  [[nodiscard]] std::vector<std::int64_t> MissingOfIndex(Long account) const {
    std::vector<std::int64_t> missing;
    const auto end = index_.lower_bound(FirstKeyOf(account + 1));
    for (auto at = index_.lower_bound(FirstKeyOf(account)); at != end; ++at) {
      if (!chunks_->Has(*at) && ChunkNumberOf(*at) < chunks_of_account_) missing.push_back(*at);
    }
    return missing;
  }

  void Judge(Long account, const AccountSum& sum) {
    if (chunks_->SumOf(account) == sum) return;
    if (WithoutUnindexed(account, sum) || WithOther(account, sum) || WithLeafRows(account, sum)) return;
    DropOthers(account);
    const AccountSum seen = chunks_->SumOf(account);
    const std::vector<std::int64_t> missing = MissingOf(account, sum, seen);
    if (seen.chunks < sum.chunks && !missing.empty()) {
      for (const std::int64_t key : missing) LoseChunk(key, "these figures cannot be read");
    } else if (seen.chunks < sum.chunks && sum.chunks - seen.chunks > 1) {
      LoseOf(FindingKind::kChunk, account,
             "of " + std::to_string(sum.chunks) + " chunks of figures " + std::to_string(seen.chunks) +
                 " can be read; where the others belong cannot be told");
    } else {
      for (const std::int64_t key : chunks_->KeysOf(account)) chunks_->Remove(key);
      LoseOf(FindingKind::kChunk, account, "what can be read of these figures is not what was written last");
    }
  }

  // Figures that were taken away can be found still where the table is damaged; the index does not have them.
  bool WithoutUnindexed(Long account, const AccountSum& sum) {
    if (!index_is_whole_) return false;
    AccountSum indexed = chunks_->SumOf(account);
    std::vector<std::int64_t> extra;
    for (const std::int64_t key : chunks_->KeysOf(account)) {
      if (index_.contains(key)) continue;
      indexed.Remove(key, chunks_->All().at(key));
      extra.push_back(key);
    }
    if (indexed != sum) return false;
    for (const std::int64_t key : extra) chunks_->Remove(key);
    return true;
  }

  bool WithOther(Long account, const AccountSum& sum) {
    for (const Candidate& other : others_) {
      if (AccountOf(other.key) != account || !chunks_->Has(other.key)) continue;
      AccountSum with = chunks_->SumOf(account);
      with.Remove(other.key, chunks_->All().at(other.key));
      with.Add(other.key, other.checksum);
      if (with != sum) continue;
      chunks_->Remove(other.key);
      chunks_->Put(other.key, other.checksum, other.bytes);
      return true;
    }
    return false;
  }

  // What no tree leads to any more: taken only where the account's sums are met with it, for it can be of any age.
  bool WithLeafRows(Long account, const AccountSum& sum) {
    if (chunks_->SumOf(account).chunks >= sum.chunks) return false;
    ReadLeafRows();
    const auto found = leaf_rows_.find(account);
    if (found == leaf_rows_.end()) return false;
    std::vector<const Candidate*> candidates;
    for (const Candidate& candidate : found->second) {
      if (!chunks_->Has(candidate.key)) candidates.push_back(&candidate);
    }
    std::vector<const Candidate*> chosen;
    long steps = 0;
    if (!Choose(candidates, 0, chunks_->SumOf(account), sum, chosen, steps)) return false;
    for (const Candidate* candidate : chosen) chunks_->Put(candidate->key, candidate->checksum, candidate->bytes);
    return true;
  }

  // Finds candidates, one of a key, with which `seen` becomes `sum`; gives up after many steps. They are in the order of
  // the keys.
  static bool Choose(const std::vector<const Candidate*>& candidates, std::size_t at, const AccountSum& seen,
                     const AccountSum& sum, std::vector<const Candidate*>& chosen, long& steps) {
    constexpr long kMostSteps = 1'000'000;
    if (seen == sum) return true;
    if (seen.chunks >= sum.chunks || ++steps > kMostSteps) return false;
    for (; at < candidates.size() && candidates.size() - at >= sum.chunks - seen.chunks; ++at) {
      const Candidate& candidate = *candidates[at];
      if (!chosen.empty() && chosen.back()->key == candidate.key) continue;
      AccountSum with = seen;
      with.Add(candidate.key, candidate.checksum);
      chosen.push_back(&candidate);
      if (Choose(candidates, at + 1, with, sum, chosen, steps)) return true;
      chosen.pop_back();
    }
    return false;
  }

  void ReadLeafRows() {
    if (std::exchange(leaf_rows_read_, true)) return;
    Tries([&] {
      VisitLeafRows(damaged_.CopyPath(), kPageSize, [&](std::int64_t key, std::span<const std::byte> bytes) {
        if (chunks_->Has(key)) return;
        auto candidate = Checked(key, bytes);
        if (candidate) leaf_rows_[AccountOf(key)].push_back(std::move(*candidate));
      });
    });
    for (auto& [account, candidates] : leaf_rows_) {
      std::ranges::sort(candidates, [](const Candidate& one, const Candidate& other) {
        return std::pair(one.key, one.checksum) < std::pair(other.key, other.checksum);
      });
      const auto same =
          std::unique(candidates.begin(), candidates.end(), [](const Candidate& one, const Candidate& other) {
            return one.key == other.key && one.checksum == other.checksum;
          });
      candidates.erase(same, candidates.end());
    }
  }

  // The keys of the chunks that are missing, where they can be told: empty where not.
  [[nodiscard]] std::vector<std::int64_t> MissingOf(Long account, const AccountSum& sum, const AccountSum& seen) const {
    const std::uint64_t numbers = sum.numbers - seen.numbers;
    if (sum.chunks == seen.chunks + 1) {
      if (numbers >= chunks_of_account_) return {};
      const std::int64_t key = FirstKeyOf(account) + static_cast<std::int64_t>(numbers);
      return chunks_->Has(key) ? std::vector<std::int64_t>() : std::vector<std::int64_t>{key};
    }
    std::vector<std::int64_t> missing = MissingOfIndex(account);
    std::uint64_t of_index = 0;
    for (const std::int64_t key : missing) of_index += ChunkNumberOf(key);
    if (missing.size() + seen.chunks != sum.chunks || of_index != numbers) missing.clear();
    return missing;
  }

  void SaveSums(Database& database) const {
    AccountSums sums;
    for (const auto& [key, checksum] : chunks_->All()) sums.Add(key, checksum);
    SumTable table(database);
    sums.GiveChanged([&](std::int64_t block, std::span<const std::byte> bytes) { table.Put(block, bytes); });
  }

  // --- Journal ---

  void CopyJournal(Database& database) {
    JournalTables old(Old());
    JournalTables fresh(database);
    ReadEntries(old);
    CopyCommands(fresh);
    DbStatement put_image(database, "INSERT INTO image (figures) VALUES (?1)");
    for (Long id = 1; id <= last_entry_; ++id) {
      const auto found = entries_.find(id);
      JournalRow row = found != entries_.end() ? found->second : LostEntry();
      const bool whole = found != entries_.end() && id > damaged_entry_;
      if (!whole) row.entry.keeps_images = false;
      row.entry.id = 0;
      row.marks = 0;
      row.marks_sum = 0;
      fresh.Save(row);
      if (const auto text = texts_.find(id); text != texts_.end()) fresh.SaveText(id, kChangeText, text->second);
      if (!whole) continue;
      old.VisitMarks(found->second, [&](std::int64_t key, const ChunkMark& mark, std::span<const std::byte> image) {
        std::int64_t new_image = 0;
        if (mark.image != 0) {
          put_image.Bind(1, image).Run();
          new_image = database.LastRow();
        }
        row.marks_sum += fresh.InsertMark(id, key, mark.rows, new_image);
        ++row.marks;
      });
      fresh.Save(row);
      ++result_.entries;
    }
    if (damaged_entry_ > 0 && last_entry_ > 0) TellWayBack();
  }

  // Stands in the place of one that is lost, so that the others keep their numbers.
  [[nodiscard]] JournalRow LostEntry() const {
    JournalRow row;
    row.entry.what_ran = "(what ran is lost)";
    row.entry.state = JournalState::kClosed;
    row.entry.command = 1;
    return row;
  }

  void TellWayBack() {
    const Long last = std::min(damaged_entry_, last_entry_);
    const bool any = std::ranges::any_of(entries_, [&](const auto& entry) {
      return entry.first <= last && entry.second.entry.keeps_images &&
             entry.second.entry.state != JournalState::kUndone && entry.second.entry.kind != JournalKind::kUndo;
    });
    if (!any) return;
    Lose(FindingKind::kJournal, "what ran up to this entry cannot be taken back any more").entry = last;
  }

  void LoseEntry(Long entry, const Text& what) {
    damaged_entry_ = std::max(damaged_entry_, entry);
    Lose(FindingKind::kJournal, what).entry = entry;
  }

  void ReadEntries(JournalTables& old) {
    const bool read = Tries([&] {
      for (JournalRow& row : old.Rows(damaged_.Format(), [](Long, const Text&) {})) {
        last_entry_ = std::max(last_entry_, row.entry.id);
        if (row.entry.id > 0) entries_[row.entry.id] = std::move(row);
      }
    });
    constexpr std::int64_t kMostEntries = 10'000'000;
    Tries([&] {
      const std::int64_t given = Old().Number("SELECT max(id) FROM journal");
      const std::int64_t told = Old().Number("SELECT seq FROM sqlite_sequence WHERE name = 'journal'");
      for (const std::int64_t number : {given, told}) {
        if (number > last_entry_ && number < last_entry_ + kMostEntries) last_entry_ = ToLong(number);
      }
    });
    if (!read) {
      entries_.clear();
      LoseEntry(last_entry_, "the journal cannot be read");
    }
    if (!HasChecksums()) {
      damaged_entry_ = last_entry_;
      return;
    }
    for (Long id = 1; read && id <= last_entry_; ++id) {
      if (!entries_.contains(id)) LoseEntry(id, "this entry is damaged or missing");
    }
    for (auto entry = entries_.begin(); entry != entries_.end();) {
      entry = ReadEntry(old, entry->second) ? std::next(entry) : entries_.erase(entry);
    }
  }

  // False where nothing but the entry's number can be kept.
  bool ReadEntry(JournalTables& old, const JournalRow& row) {
    const Long id = row.entry.id;
    if (row.entry.kind == JournalKind::kLists && !Tries([&] { texts_[id] = old.TextOf(id, kChangeText); })) {
      texts_.erase(id);
      LoseEntry(id, "what this entry changed is damaged or missing");
      return false;
    }
    const bool whole = Tries([&] {
      old.VisitMarks(row, [&](std::int64_t key, const ChunkMark& mark, std::span<const std::byte> image) {
        if (mark.image == 0) return;
        const auto taken = TakeChecked(image, key);
        ChunkRows rows;
        if (!taken) throw Failure(FailureNumber::kDeviceError, "", kSource);
        DecodeChunk(shape_, taken->bytes, rows);
      });
    });
    if (!whole) LoseEntry(id, "figures from before this entry, or what it changed, are damaged or missing");
    return true;
  }

  void CopyCommands(JournalTables& fresh) {
    struct Command {
      Date time = 0;
      Text what;
    };
    std::map<Long, Command> commands;
    Long last = 0;
    for (const auto& [id, row] : entries_) {
      last = std::max(last, row.entry.command);
      if (!HasChecksums()) commands[row.entry.command] = {row.entry.time, row.entry.what_ran};
    }
    if (HasChecksums()) {
      Tries([&] {
        DbStatement select(Old(), "SELECT id, time, what, who, checksum FROM command ORDER BY id");
        while (select.Step()) {
          const Long id = ToLong(select.Int(0));
          const Checksum checksum = CommandChecksum(id, select.Real(1), select.String(2), select.String(3));
          if (checksum == FromColumn(select.Int(4))) commands[id] = {select.Real(1), select.String(2)};
        }
      });
      if (!commands.empty()) last = std::max(last, commands.rbegin()->first);
    }
    if (last_entry_ > 0) last = std::max(last, Long{1});
    for (Long id = 1; id <= last; ++id) {
      const auto found = commands.find(id);
      if (found == commands.end())
        Lose(FindingKind::kJournal, "command " + std::to_string(id) + " is damaged or missing");
      const Command command = found == commands.end() ? Command() : found->second;
      static_cast<void>(fresh.AddCommand(command.time, command.what));
    }
  }

  // --- Companion files ---

  void CopyCompanions(Database& database) {
    std::vector<Companion> companions;
    const bool read = Tries([&] {
      // A backup has them within.
      companions = HasBackupTables(Old()) ? LoadCompanions(Old())
                                          : ReadCompanions(BookFolder(damaged_path_), BookName(damaged_path_));
    });
    if (!read) Lose(FindingKind::kCompanions, "the companion files cannot be read");
    if (companions.empty()) return;
    SaveBackupTables(database, {BookName(damaged_path_), 0}, companions);
    result_.companions = static_cast<long long>(companions.size());
  }

  Text damaged_path_;
  Text new_place_;
  DamagedBook damaged_;
  SalvageResult result_;

  ChunkShape shape_;
  std::map<Long, Text> codes_;
  std::set<Long> known_;  // accounts that the book has or had
  std::vector<Date> dates_;
  std::size_t chunks_of_account_ = 0;

  std::unique_ptr<NewChunks> chunks_;
  std::vector<Candidate> others_;  // for places that are taken
  std::set<std::int64_t> index_;   // the keys that the index has
  bool index_is_whole_ = false;
  std::set<std::int64_t> blocks_;  // of sums that are known
  std::map<Long, AccountSum> sums_;
  bool all_sums_read_ = false;
  bool leaf_rows_read_ = false;
  std::map<Long, std::vector<Candidate>> leaf_rows_;

  std::map<Long, JournalRow> entries_;
  std::map<Long, Text> texts_;
  Long last_entry_ = 0;
  Long damaged_entry_ = 0;  // the last one
};

}  // namespace

SalvageResult SalvageBook(const Text& damaged, const Text& new_book, bool as_it_reads) {
  const Text place = NativeBookPath(new_book);
  const std::vector<Text> troubles = NameTroubles(place);
  if (!troubles.empty()) throw Failure(FailureNumber::kPathOrAccess, place + ": " + troubles.front(), kSource);
  if (!StateAt(place).exists) RefuseStrayCompanions(place);
  return Salvager(ResolvedBookPath(damaged), place).Run(as_it_reads);
}

}  // namespace tallybook::engine
