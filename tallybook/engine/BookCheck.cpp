#include "tallybook/engine/BookCheck.h"

#include <algorithm>
#include <map>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <utility>

#include "base/Failure.h"
#include "tallybook/engine/AccountSums.h"
#include "tallybook/engine/BackupTables.h"
#include "tallybook/engine/BookFile.h"
#include "tallybook/engine/BookFormat.h"
#include "tallybook/engine/BookPlace.h"
#include "tallybook/engine/Calendar.h"
#include "tallybook/engine/Checksums.h"
#include "tallybook/engine/ChunkCodec.h"
#include "tallybook/engine/ChunkKey.h"
#include "tallybook/engine/JournalTables.h"
#include "tallybook/engine/SumTable.h"

namespace tallybook::engine {

namespace {

// A chunk as the table and the index have it.
struct Whereabouts {
  std::int64_t row = 0;
  bool in_index = false;
  bool in_table = false;
};

class BookChecker {
 public:
  // `path` is the file's own (ResolvedBookPath).
  BookChecker(const Text& path, bool deep, WorkWatch& watch)
      : path_(path), file_(BookFile::OpenToCheck(path)), deep_(deep), watch_(watch) {
    Db().SetWatch(watch_);
    result_.format = file_.Format();
  }

  BookCheckResult Check() {
    const bool is_backup = IsBackup(Db());
    Try(FindingKind::kCompanions, [this, is_backup] {
      if (is_backup || HasBackupTables(Db())) static_cast<void>(LoadCompanions(Db()));
    });
    if (!is_backup) FindNameTroubles();
    if (deep_) Try(FindingKind::kFile, [this] { CheckFile(); });
    watch_.Step(kFileChecked);
    ReadDescription();
    Try(FindingKind::kIndex, [this] { ReadIndex(); });
    Try(FindingKind::kFile, [this] { ReadTable(); });
    CheckChunks();
    if (HasChecksums()) Try(FindingKind::kSums, [this] { CheckSums(); });
    CheckJournal();
    watch_.Done(1);
    return std::move(result_);
  }

 private:
  [[nodiscard]] bool HasChecksums() const { return file_.Format() > 1; }
  [[nodiscard]] Database& Db() { return file_.Db(); }

  BookFinding& Find(FindingKind kind, const Text& what) {
    BookFinding& finding = result_.findings.emplace_back();
    finding.kind = kind;
    finding.what = what;
    return finding;
  }

  // What a failure says, without the path and the word that it is damage.
  [[nodiscard]] Text Plain(Text what) const {
    for (const Text& beginning :
         {file_.Path() + ": ", Text("the book is damaged: "), Text("the backup is damaged: ")}) {
      if (what.starts_with(beginning)) what.erase(0, beginning.size());
    }
    return what;
  }

  template <typename Act>
  void Try(FindingKind kind, Act act) {
    try {
      act();
    } catch (const Failure& failure) {
      Find(kind, Plain(failure.Description()));
    }
  }

  BookFinding& FindInChunk(FindingKind kind, std::int64_t key, const Text& what) {
    return FindInChunk(kind, key, file_.RowsOfChunk(), what);
  }
  BookFinding& FindInChunk(FindingKind kind, std::int64_t key, std::size_t rows_of_chunk, const Text& what) {
    BookFinding& finding = Find(kind, what);
    finding.account = AccountOf(key);
    const auto code = codes_.find(finding.account);
    if (code != codes_.end()) finding.code = code->second;
    const std::size_t first = std::size_t{ChunkNumberOf(key)} * rows_of_chunk;
    if (first >= dates_.size()) return finding;
    finding.first = dates_[first];
    finding.last = dates_[std::min(first + rows_of_chunk, dates_.size()) - 1];
    return finding;
  }

  void FindNameTroubles() {
    for (const Text& trouble : NameTroubles(path_)) Find(FindingKind::kName, trouble);
  }

  void CheckFile() {
    DbStatement check(Db(), "PRAGMA integrity_check(100)");
    while (check.Step()) {
      const Text line = check.String(0);
      if (line != "ok") Find(FindingKind::kFile, line);
    }
  }

  void ReadDescription() {
    if (!file_.DescriptionTrouble().empty()) {
      Find(FindingKind::kDescription, Plain(file_.DescriptionTrouble()));
      return;
    }
    const BookDescription& description = file_.Description();
    for (const AccountDescription& account : description.accounts) codes_[account.number] = account.code;
    const Calendar calendar(description.calendar, description.data_level);
    for (Date day = calendar.FirstDate(); day <= calendar.LastDate(); day = dates_.back() + 1) {
      dates_.push_back(calendar.UnitOf(day, kOwnLevel).last);
    }
    shape_ = ShapeOf(*file_.Stored());
  }

  void ReadIndex() {
    DbStatement walk(Db(), "SELECT key, id FROM chunk ORDER BY key");
    std::optional<std::int64_t> before;
    while (walk.Step()) {
      const std::int64_t key = walk.Int(0);
      if (before && key <= *before) FindInChunk(FindingKind::kIndex, key, "the index is out of order here");
      before = key;
      Whereabouts& place = places_[key];
      place.row = walk.Int(1);
      place.in_index = true;
    }
  }

  void ReadTable() {
    DbStatement walk(Db(), "SELECT id, key FROM chunk NOT INDEXED ORDER BY id");
    while (walk.Step()) {
      Whereabouts& place = places_[walk.Int(1)];
      if (place.in_index && place.row != walk.Int(0)) {
        FindInChunk(FindingKind::kIndex, walk.Int(1), "the index leads to another row");
      }
      place.row = walk.Int(0);
      place.in_table = true;
    }
  }

  void CheckChunks() {
    WorkPart part(watch_, kFileChecked, kChunksChecked);
    const auto all = static_cast<Single>(places_.size());
    for (const auto& [key, place] : places_) {
      CheckChunk(key, place);
      part.Step(static_cast<Single>(result_.chunks) / all);
    }
  }

  void CheckChunk(std::int64_t key, const Whereabouts& place) {
    ++result_.chunks;
    if (!place.in_index) FindInChunk(FindingKind::kIndex, key, "the index hides these figures");
    if (shape_ && (!HasOrHad(AccountOf(key)) || key >> kChunkNumberBits != AccountOf(key))) {
      FindInChunk(FindingKind::kChunk, key, "the book has no such account");
    } else if (shape_ && std::size_t{ChunkNumberOf(key)} * shape_->rows >= dates_.size()) {
      FindInChunk(FindingKind::kChunk, key, "the book has no such dates");
    }
    try {
      DbStatement read(Db(), "SELECT figures FROM chunk WHERE id = ?1");
      if (!read.Bind(1, place.row).Step()) {
        FindInChunk(FindingKind::kChunk, key, "the index has these figures, and the file has not");
        return;
      }
      const Checksum checksum = Look(key, read.Bytes(0));
      // What is found by the table alone is there all the same.
      seen_[AccountOf(key)].Add(key, checksum);
    } catch (const Failure& failure) {
      FindInChunk(FindingKind::kChunk, key, Plain(failure.Description()));
      damaged_accounts_[AccountOf(key)] = true;
    }
  }

  // An account that was removed keeps its figures for the way back.
  [[nodiscard]] bool HasOrHad(Long account) const {
    const std::vector<Long>& retired = file_.Stored()->retired_accounts;
    return codes_.contains(account) || std::binary_search(retired.begin(), retired.end(), account);
  }

  // Gives the checksum of a chunk's bytes; fails where they are damaged.
  Checksum Look(std::int64_t key, std::span<const std::byte> bytes) const {
    CheckedBytes checked{bytes, 0};
    if (HasChecksums()) {
      const auto taken = TakeChecked(bytes, key);
      if (!taken) throw Failure(FailureNumber::kDeviceError, "the figures do not agree with their checksum", "");
      checked = *taken;
    }
    ChunkRows rows;
    if (shape_) DecodeChunk(*shape_, checked.bytes, rows);
    return checked.checksum;
  }

  void CheckSums() {
    AccountSums sums;
    SumTable(Db()).Visit([&](std::int64_t block, std::span<const std::byte> bytes) { sums.Take(block, bytes, path_); });
    std::map<Long, AccountSum> written;
    for (const Long account : sums.Accounts()) written[account] = sums.Of(account);
    for (const auto& [account, seen] : seen_) written.try_emplace(account);
    for (const auto& [account, sum] : written) {
      const auto found = seen_.find(account);
      const AccountSum seen = found == seen_.end() ? AccountSum() : found->second;
      if (seen == sum || damaged_accounts_.contains(account)) continue;
      CompareSums(account, sum, seen);
    }
  }

  void CompareSums(Long account, const AccountSum& sum, const AccountSum& seen) {
    if (sum.chunks == seen.chunks + 1) {
      // The numbers added up tell which one it is.
      const std::uint64_t number = sum.numbers - seen.numbers;
      FindInChunk(FindingKind::kChunk, FirstKeyOf(account) + static_cast<std::int64_t>(number & kChunkNumberMask),
                  "these figures are missing");
      return;
    }
    BookFinding& finding =
        FindInChunk(FindingKind::kSums, FirstKeyOf(account),
                    "of " + std::to_string(sum.chunks) + " chunks that were written " + std::to_string(seen.chunks) +
                        " are there" + (sum.chunks == seen.chunks ? ", not all as they were written last" : ""));
    finding.first = finding.last = kNoDate;
  }

  void CheckJournal() {
    JournalTables tables(Db());
    std::vector<JournalRow> rows;
    Try(FindingKind::kJournal, [&] {
      rows = tables.Rows(file_.Format(),
                         [this](Long entry, const Text& what) { Find(FindingKind::kJournal, what).entry = entry; });
    });
    result_.entries = static_cast<long long>(rows.size());
    if (!HasChecksums()) return;
    Try(FindingKind::kJournal,
        [&] { tables.CheckCommands([this](const Text& what) { Find(FindingKind::kJournal, what); }); });
    WorkPart part(watch_, kChunksChecked, 1);
    const auto all = static_cast<Single>(rows.size());
    Single done = 0;
    for (const JournalRow& row : rows) {
      CheckEntry(tables, row);
      part.Step(++done / all);
    }
  }

  void CheckEntry(JournalTables& tables, const JournalRow& row) {
    const Long entry = row.entry.id;
    try {
      if (row.entry.kind == JournalKind::kLists) static_cast<void>(tables.TextOf(entry, kChangeText));
      if (file_.Format() >= kFirstFormatOfNotes) static_cast<void>(tables.NotesOf(row));
      tables.VisitMarks(row, [&](std::int64_t key, const ChunkMark& mark, std::span<const std::byte> image) {
        if (mark.image != 0) CheckImage(entry, key, image);
      });
    } catch (const Failure& failure) {
      Find(FindingKind::kJournal, Plain(failure.Description())).entry = entry;
    }
  }

  void CheckImage(Long entry, std::int64_t key, std::span<const std::byte> image) {
    ++result_.images;
    const auto taken = TakeChecked(image, key);
    const ChunkShape shape = ShapeOf(*file_.Stored(), entry);
    try {
      if (!taken) throw Failure(FailureNumber::kDeviceError, "the figures do not agree with their checksum", "");
      ChunkRows rows;
      if (deep_ && shape_) DecodeChunk(shape, taken->bytes, rows);
    } catch (const Failure& failure) {
      FindInChunk(FindingKind::kImage, key, shape.rows, Plain(failure.Description())).entry = entry;
    }
  }

  // How far the whole is then; the sizes of its parts differ from book to book.
  static constexpr Single kFileChecked = 0.3F;
  static constexpr Single kChunksChecked = 0.7F;

  Text path_;
  BookFile file_;
  bool deep_;
  WorkWatch& watch_;
  std::optional<ChunkShape> shape_;  // none where the description is damaged
  std::map<Long, Text> codes_;
  std::vector<Date> dates_;  // of the records
  std::map<std::int64_t, Whereabouts> places_;
  std::map<Long, AccountSum> seen_;
  std::map<Long, bool> damaged_accounts_;
  BookCheckResult result_;
};

}  // namespace

Text FindingKindName(FindingKind kind) {
  switch (kind) {
    case FindingKind::kName:
      return "name";
    case FindingKind::kFile:
      return "file";
    case FindingKind::kDescription:
      return "description";
    case FindingKind::kSums:
      return "sums";
    case FindingKind::kIndex:
      return "index";
    case FindingKind::kChunk:
      return "chunk";
    case FindingKind::kJournal:
      return "journal";
    case FindingKind::kImage:
      return "image";
    case FindingKind::kCompanions:
      return "companions";
  }
  return "";
}

BookCheckResult CheckBook(const Text& path, bool deep, WorkWatch& watch) {
  return BookChecker(ResolvedBookPath(path), deep, watch).Check();
}

void RequireSound(const Text& path, const Text& shown, WorkWatch& watch) {
  const bool deep = true;
  std::vector<BookFinding> findings = CheckBook(path, deep, watch).findings;
  std::erase_if(findings, [](const BookFinding& finding) { return finding.kind == FindingKind::kName; });
  if (findings.empty()) return;
  throw Failure(FailureNumber::kDeviceError,
                shown + ": the book is damaged: " + findings.front().what +
                    (findings.size() == 1 ? "" : ", and " + std::to_string(findings.size() - 1) + " findings more"),
                "Tallybook.Book");
}

}  // namespace tallybook::engine
