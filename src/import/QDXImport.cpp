#include "import/QDXImport.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "base/Dates.h"
#include "base/Narrow.h"
#include "base/Statements.h"
#include "host/FiscalCalendar.h"
#include "host/HostApp.h"
#include "host/Masterfile.h"
#include "host/Printer.h"
#include "import/Combine.h"
#include "import/Matching.h"
#include "import/XDQName.h"
#include "platform/Clock.h"
#include "platform/FileSystem.h"
#include "platform/MessageBoxes.h"
#include "platform/Platform.h"
#include "platform/Screen.h"
#include "platform/StopProgram.h"
#include "qdx/Body.h"
#include "support/HostMessages.h"
#include "support/LastFailures.h"
#include "support/Utility.h"
#include "support/WinAPI.h"

namespace tallybook {

namespace {

// The statements of an import, as its log entries number them.
enum Statement : Long {
  kMatchFiles = 10,
  kAnnounceFiles = 20,
  kReadHeader = 40,
  kAnnounceFile = 50,
  kBeginImport = 60,
  kCompare = 70,
  kBeginMatching = 80,
  kMatch = 90,
  kCheckAccounts = 100,
  kBeginVerifying = 110,
  kCheckFields = 120,
  kCheckDates = 130,
  kTellRefusal = 140,
  kBeginRollback = 150,
  kEndMatching = 160,
  kBeginZeroing = 170,
  kZeroProgress = 171,
  kZeroRead = 172,
  kZeroValue = 173,
  kZeroWrite = 174,
  kZeroNextDate = 175,
  kZeroCancel = 176,
  kEndZeroing = 177,
  kEndZeroOnly = 180,
  kBeginData = 190,
  kReadBlock = 200,
  kDataProgress = 201,
  kDataLevelDate = 202,
  kDataWrite = 203,
  kDataRead = 204,
  kReadCount = 205,
  kReadValue = 206,
  kMapValue = 207,
  kGetValue = 208,
  kSetValue = 209,
  kReadDate = 210,
  kLastWrite = 215,
  kEndData = 216,
  kEndRollback = 217,
  kCloseFile = 220,
  kDispose = 230,
  kAnnounceEnd = 240,
};

// From positions in the file's tables to account and field numbers of the database; 0 means not imported. Positions run
// from 0 to 9,999; any other is failure 9.
class ImportMap {
 public:
  void Clear() {
    numbers_.fill(0);
    used_.fill(false);
  }
  Integer& operator()(Integer position) { return numbers_[Checked(position)]; }
  Integer operator()(Integer position) const { return numbers_[Checked(position)]; }

  // A position that figures were applied from, one that has been looked up; and the numbers that such positions gave.
  void Use(Integer position) { used_[static_cast<std::size_t>(position)] = true; }
  [[nodiscard]] std::vector<Long> UsedNumbers() const {
    std::vector<Long> numbers;
    for (std::size_t i = 0; i < kColumns; ++i) {
      if (used_[i]) numbers.push_back(numbers_[i]);
    }
    std::sort(numbers.begin(), numbers.end());
    numbers.erase(std::unique(numbers.begin(), numbers.end()), numbers.end());
    return numbers;
  }

  static constexpr std::size_t kColumns = 10'000;

 private:
  static std::size_t Checked(Integer position) {
    // A negative number wraps to one that no table reaches.
    const std::size_t place = static_cast<std::uint16_t>(position);
    if (place < kColumns) return place;
    FailOutsideTable(position, static_cast<Long>(kColumns - 1));
  }
  std::array<Integer, kColumns> numbers_{};
  std::array<bool, kColumns> used_{};
};

// The dates that figures were applied to. A file tells them account after account, so that most have been met before:
// those within the header's range are marked in a table of days.
class DateMarks {
 public:
  void Clear(Date first, Date last) {
    constexpr Date kMostDays = 400'000;  // a header may hold any dates
    first_ = first;
    day_count_ = std::floor(std::clamp(last - first + 1, 0.0, kMostDays));
    days_.assign(static_cast<std::size_t>(day_count_), 0);
    others_.clear();
  }
  void Mark(Date date) {
    const Date day = date - first_;
    if (day >= 0 && day < day_count_) {
      days_[static_cast<std::size_t>(static_cast<Long>(day))] = 1;
    } else {
      others_.insert(date);
    }
  }
  [[nodiscard]] std::set<Date> Marked() const {
    std::set<Date> dates = others_;
    for (std::size_t day = 0; day < days_.size(); ++day) {
      if (days_[day] != 0) dates.insert(first_ + static_cast<Date>(day));
    }
    return dates;
  }

 private:
  Date first_ = kNoDate;
  Date day_count_ = 0;
  std::vector<unsigned char> days_;  // one of bits would take longer to mark
  std::set<Date> others_;
};

class ImportRun {
 public:
  ImportRun(QDXImportMeans& means, Printer& report, QDXDefinitionImport& record)
      : record_(record),
        means_(means),
        masterfile_(means.masterfile),
        app_(means.masterfile.App()),
        definition_(means.definition),
        header_(means.header),
        report_(report),
        math_(static_cast<Integer>(means.math == static_cast<Integer>(eMath::mSubtract) ? eMath::mSubtract
                                                                                        : eMath::mAdd)),
        at_(Policy::kAsk, [this](const Failure& failure) { return TellFailure(failure); }) {}

  bool Run() {
    const bool done = at_.Run([&] {
      const Integer count = at_(kMatchFiles, [&] { return MatchFiles(definition_.QdxFileName, means_.file_list); });
      AnnounceFiles(count);
      // A copy: what runs within an import may look for files itself.
      const std::vector<Text> files = means_.file_list;
      record_.not_begun = files;
      for (const Text& file : files) ImportFile(file);
    });
    if (done) record_.stop.reset();  // of a failure behind which a Retry got on
    if (!done && in_body_) NoteApplied(record_.files.back());
    if (!done && !header_failed_) CloseQuietly();
    return done;
  }

 private:
  // True: the user wants the statement repeated.
  bool TellFailure(const Failure& failure) {
    LogExchangeFailure(app_, failure, "ImportQDXFile");
    record_.stop = ReasonOf(failure);
    record_.stop->file = FileUnderWay();
    record_.stop->place = Place();
    return AskRetry(app_, "Error reading QDX file");
  }

  // --- What the record tells -----------------------------------------------------------------------------------------

  [[nodiscard]] Text FileUnderWay() const { return record_.files.empty() ? Text() : record_.files.back().file; }

  // How far the file has been read, once its body is.
  [[nodiscard]] Text Place() const {
    if (!in_body_) return record_.files.empty() ? "" : "before its first figure";
    if (means_.file_number == 0) return "behind its last figure";
    const auto ahead = static_cast<long long>(BytesOf<BodyValue>()) * values_ahead_;
    Text place = "byte " + std::to_string(FileOf(means_.file_number).Position() - ahead);
    if (block_.account.account_index >= 1 && block_.account.account_index <= header_.NumAccounts) {
      place += ", account " + header_.AccountCodes(block_.account.account_index);
    }
    return place;
  }

  // Ends the run for a reason that is no failure. It has been told, but for what the words add.
  [[noreturn]] void Leave(const Text& words) {
    record_.stop = StopReason{.file = FileUnderWay(), .words = words};
    Statements::Leave();
  }

  void NoteRefusal(const Text& words) { refusal_ += (refusal_.empty() ? "" : "; ") + words; }

  void NoteApplied(QDXFileImport& file) {
    file.field_tallies.clear();
    file.applied = 0;
    file.not_mapped = 0;
    for (std::size_t position = 0; position < ImportMap::kColumns; ++position)
      NoteField(file, static_cast<Integer>(position));
    file.accounts = accounts_.UsedNumbers();
    file.fields = fields_.UsedNumbers();
    file.dates = dates_.Marked();
    file.read = read_;
    file.refused = file.read - file.applied - file.not_mapped;
  }

  void NoteField(QDXFileImport& file, Integer position) {
    const Sum& applied = applied_sums_[static_cast<std::size_t>(position)];
    const Sum& not_mapped = not_mapped_sums_[static_cast<std::size_t>(position)];
    if (applied.figures == 0 && not_mapped.figures == 0) return;
    if (applied.figures != 0) fields_.Use(position);
    file.applied += applied.figures;
    file.not_mapped += not_mapped.figures;
    const bool in_table = position >= 1 && position <= header_.NumFields;
    file.field_tallies.push_back({.in_file = in_table ? header_.FieldNumbers(position) : 0,
                                  .in_database = fields_(position),
                                  .applied = applied.figures,
                                  .applied_total = applied.total,
                                  .not_mapped = not_mapped.figures,
                                  .not_mapped_total = not_mapped.total});
  }

  void PrintLine(Long statement, const Text& line) {
    at_(statement, [&] { report_.PrintLine(line); });
  }

  // Shows a text, then prints it.
  void ShowAndPrint(Long statement, const Text& text) {
    at_(statement, [&] { Refuse(app_, text); });
    PrintLine(statement, text);
  }

  // A finding that ends the import once all checks have run.
  void RefuseFile(Long statement, const Text& text) {
    ShowAndPrint(statement, text);
    NoteRefusal(text);
  }

  void AnnounceFiles(Integer count) {
    const Text& pattern = definition_.QdxFileName;
    if (count == 0) {
      PrintLine(kAnnounceFiles, "No Files were imported.  None matched the filename: " + pattern);
    } else if (count > 1) {
      PrintLine(kAnnounceFiles, "Importing Files that match: " + pattern + " at " + DateTimeText(Now()));
      PrintLine(kAnnounceFiles, "");
    }
  }

  void ImportFile(const Text& file) {
    record_.not_begun.erase(record_.not_begun.begin());
    record_.files.push_back({.file = file});
    in_body_ = false;
    StopReason why;
    if (!at_(kReadHeader, [&] { return means_.read_header(file, why); })) {
      header_failed_ = true;
      record_.stop = why;
      record_.stop->file = file;
      Statements::Leave();
    }
    PrintLine(kAnnounceFile, "Begining Import of: " + file + " at " + DateTimeText(Now()));
    at_(kBeginImport, [&] { app_.BeginImport(); });
    const bool go_on = at_(kCompare, [&] {
      return CompareWithLastImport(definition_, header_, means_.archive_name(), masterfile_, report_);
    });
    if (!go_on) Leave("cancelled: its tables have changed since the last import");
    Validate();
    ApplyFile(file);
    record_.files.back().stored = true;
    at_(kCloseFile, [&] { CloseFileEx(means_.file_number); });
    at_(kDispose, [&] { Dispose(file); });
    PrintLine(kAnnounceEnd, "Completed Import of: " + file + " at " + DateTimeText(Now()));
    PrintLine(kAnnounceEnd, "");
    record_.files.back().done = true;
  }

  // --- Validation: nothing is written before all of it has passed ----------------------------------------------------

  void Validate() {
    accounts_.Clear();
    fields_.Clear();
    refusal_.clear();
    BeginReportProgress(kBeginMatching, "Matching Account and DataFields between QDX file and Database");
    at_(kBeginMatching, [&] { report_.SetProgressFraction(0); });
    at_(kMatch, [&] { FillTables(definition_, header_, masterfile_); });
    at_(kMatch, [&] { MatchAccountCodes(definition_, header_, masterfile_); });
    const bool accounts = CheckAccounts();
    BeginReportProgress(kBeginVerifying, "Verifying Accounts and DataFields");
    const bool fields = CheckFields();
    const bool dates = CheckDates();
    if (accounts && fields && dates) return;
    ShowAndPrint(kTellRefusal, "Could not import the QDX file because of the errors displayed.");
    Leave("not imported: " + refusal_);
  }

  // Of several failing accounts only the first is told.
  bool CheckAccounts() {
    for (int i = 1; i <= definition_.NumAccounts; ++i) {
      const AccountRow& row = at_(kCheckAccounts, [&] { return definition_.accounts(i); });
      const bool in_file = row.AccountFrom != 0;
      if (!in_file || row.AccountTo == 0) {
        const Text where = in_file ? "Database" : "QDX file";
        RefuseFile(kCheckAccounts, "Account Code: " + row.from_code + " is in the Layout and not in the " + where);
        return false;
      }
      at_(kCheckAccounts, [&] { accounts_(row.AccountFrom) = row.AccountTo; });
    }
    return true;
  }

  bool CheckFields() {
    for (int i = 1; i <= definition_.NumFields; ++i) {
      const FieldRow row = at_(kCheckFields, [&] { return definition_.fields(i); });
      const Integer position = at_(kCheckFields, [&] { return PositionInFile(row.FieldFrom); });
      if (position == 0) return MissingField(row.FieldFrom, "QDX file");
      if (!at_(kCheckFields, [&] { return IsInDatabase(row.FieldTo); })) return MissingField(row.FieldTo, "Database");
      at_(kCheckFields, [&] { fields_(position) = row.FieldTo; });
    }
    return true;
  }

  bool MissingField(Integer number, const Text& where) {
    RefuseFile(kCheckFields, "Field Number: " + std::to_string(number) + " is in the Layout and not in the " + where);
    return false;
  }

  // The first position of a field number in the file's table; 0 where it has none.
  [[nodiscard]] Integer PositionInFile(Integer field_number) const {
    for (int i = 1; i <= header_.NumFields; ++i) {
      if (header_.FieldNumbers(i) == field_number) return static_cast<Integer>(i);
    }
    return 0;
  }

  [[nodiscard]] bool IsInDatabase(Integer field_number) const {
    const Long fields = masterfile_.NumFields();
    for (Long i = 1; i <= fields; ++i) {
      if (masterfile_.FieldNumber(ToInteger(i)) == field_number) return true;
    }
    return false;
  }

  // A file must lie wholly inside the database's range.
  bool CheckDates() {
    const bool inside = at_(kCheckDates, [&] {
      return masterfile_.FirstDate() <= header_.StartDate() && masterfile_.LastDate() >= header_.LastDate();
    });
    if (inside) return true;
    ShowAndPrint(kCheckDates,
                 "Dates in the QDX file are not valid for this Tallybook Masterfile.  "
                 "Information not imported to the datafields.");
    NoteRefusal("its dates are " + DateText(header_.StartDate()) + " to " + DateText(header_.LastDate()) +
                ", those of the database " + DateText(masterfile_.FirstDate()) + " to " +
                DateText(masterfile_.LastDate()));
    return false;
  }

  // --- Applying ------------------------------------------------------------------------------------------------------

  void ApplyFile(const Text& file) {
    read_ = 0;
    applied_sums_.fill({});
    not_mapped_sums_.fill({});
    dates_.Clear(header_.StartDate(), header_.LastDate());
    QDXFileImport& told = record_.files.back();
    told.first_date = header_.StartDate();
    told.last_date = header_.LastDate();
    if (means_.write_rollback) {
      at_(kBeginRollback, [&] { masterfile_.BeginRollback(header_.StartDate(), header_.LastDate()); });
    }
    at_(kEndMatching, [&] { masterfile_.EndProgress(); });
    told.begun = true;
    if (means_.math >= static_cast<Integer>(eMath::mReplace)) ZeroRange();
    if (means_.math == kZeroOnly) {
      EndRollback(kEndZeroOnly);
      return;
    }
    ReadData(file);
    NoteApplied(told);
    if (dirty_) at_(kLastWrite, [&] { masterfile_.WriteRecord(); });
    // Meant: the flag stays set, and the next file of the run writes this record once more before it reads its own.
    at_(kEndData, [&] { report_.EndProgress(); });
    EndRollback(kEndRollback);
  }

  void EndRollback(Long statement) {
    if (means_.write_rollback) at_(statement, [&] { masterfile_.EndRollback(); });
  }

  void BeginReportProgress(Long statement, const Text& title) {
    at_(statement, [&] { report_.BeginProgress(title); });
  }

  // Stops the program where the record cannot be read: no figure is written into a record that cannot be trusted.
  void ReadRecord(Long statement, Integer account, Date date) {
    at_(statement, [&] {
      if (!masterfile_.ReadRecord(account, date)) StopAtRecord(statement, account, date);
    });
  }

  [[noreturn]] void StopAtRecord(Long statement, Integer account, Date date) const {
    StopReason reason = MissingRecord(masterfile_, account, date, statement);
    reason.file = FileUnderWay();
    reason.place = Place();
    StopProgram(reason);
  }

  // Zeroes the definition's accounts and fields on every date of the file's range that holds data. The end is not
  // levelled.
  void ZeroRange() {
    BeginReportProgress(kBeginZeroing, "Zeroing out data");
    at_(kBeginZeroing, [&] { report_.SetProgressFraction(0); });
    FiscalCalendar& calendar = *at_(kBeginZeroing, [&] { return &masterfile_.FiscalCalendar(); });
    const Date start =
        at_(kBeginZeroing, [&] { return calendar.LevelDate(header_.StartDate(), masterfile_.DataLevel()); });
    const Date end = header_.LastDate();
    const Double day_count = end - start + 1;
    for (Date cursor = start; cursor <= end;) {
      if (day_count > 0) {
        at_(kZeroProgress, [&] { report_.SetProgressFraction(static_cast<Single>((cursor - start + 1) / day_count)); });
      }
      ZeroDate(cursor);
      cursor = at_(kZeroNextDate, [&] { return calendar.LevelDate(cursor + 1, kOwnLevel); });
      if (at_(kZeroCancel, [&] { return report_.ProgressCancelled(); })) {
        PrintLine(kZeroCancel, "Import Aborted by User");
        Leave("cancelled while the range was zeroed, at " + DateText(cursor));
      }
    }
    at_(kEndZeroing, [&] { report_.EndProgress(); });
  }

  void ZeroDate(Date date) {
    for (int i = 1; i <= definition_.NumAccounts; ++i) {
      ReadRecord(kZeroRead, definition_.accounts(i).AccountTo, date);
      for (int j = 1; j <= definition_.NumFields; ++j) {
        at_(kZeroValue, [&] { masterfile_.SetFieldValue(definition_.fields(j).FieldTo, 0.0); });
      }
      record_.files.back().zeroed += definition_.NumFields;
      at_(kZeroWrite, [&] { masterfile_.WriteRecord(); });
    }
  }

  // Reads the body (docs/exchange-file.md, "Reading the body").
  void ReadData(const Text& file) {
    BeginReportProgress(kBeginData, "Importing data in QDX file:\n" + file);
    FileStream& stream = *at_(kBeginData, [&] { return &FileOf(means_.file_number); });
    const auto file_length = static_cast<Double>(at_(kBeginData, [&] { return stream.Size(); }));
    block_ = {};
    values_ahead_ = 0;
    in_body_ = true;
    QDXFileImport& told = record_.files.back();
    told.body_end = ReadBlocks(stream, file_length);
    told.body_end_at = stream.Position();
  }

  BodyEnd ReadBlocks(FileStream& stream, Double file_length) {
    while (!at_(kReadBlock, [&] { return stream.AtEnd(); })) {
      BodyBlockStart block;
      const bool whole = at_(kReadBlock, [&] { return GetItem(stream, block); });
      const bool at_end = !whole || at_(kReadBlock, [&] { return stream.AtEnd(); });
      const bool in_table = block.account.account_index >= 1 && block.account.account_index <= header_.NumAccounts;
      if (at_end || !in_table) return EndOfBody(block, whole, in_table);
      block_ = block;
      const Integer target = at_(kReadBlock, [&] { return accounts_(block.account.account_index); });
      if (!ReadDates(stream, file_length, target, block.date)) return BodyEnd::kCut;
    }
    return BodyEnd::kCut;
  }

  // What a block start means that is no account's. The writer's mark is four zeros; at the end of the file any that is
  // whole and no account's will do, as a reader looks at no more of it.
  static BodyEnd EndOfBody(const BodyBlockStart& block, bool whole, bool in_table) {
    if (!whole || in_table) return BodyEnd::kCut;
    const BodyDate& date = block.date;
    const bool zeros = block.account.account_index == 0 && date.month == 0 && date.day == 0 && date.year == 0;
    return zeros ? BodyEnd::kMarked : BodyEnd::kStray;
  }

  // A date that is not whole in the file ends the list; what was read before it stands. False: the file ended here.
  bool ReadDates(FileStream& stream, Double file_length, Integer target, BodyDate date) {
    while (at_(kReadDate, [&] { return SumOf(date.month, date.day, date.year); }) > 0) {
      at_(kDataProgress, [&] {
        report_.SetProgressFraction(static_cast<Single>(static_cast<Double>(stream.Position()) / file_length));
      });
      const Date level_date = at_(kDataLevelDate, [&] {
        return masterfile_.FiscalCalendar().LevelDate(DateFromParts(date.year, date.month, date.day),
                                                      masterfile_.DataLevel());
      });
      if (target > 0) OpenRecord(target, level_date);
      const bool whole = ReadValues(stream, target);
      const bool applied = target > 0 && dirty_;
      if (applied) {
        accounts_.Use(block_.account.account_index);
        dates_.Mark(level_date);
      }
      if (!whole || !at_(kReadDate, [&] { return GetItem(stream, date); })) return false;
    }
    return true;
  }

  // False: the file ended within the values of the date.
  bool ReadValues(FileStream& stream, Integer target) {
    BodyCount count;
    if (!at_(kReadCount, [&] { return GetItem(stream, count); })) return false;
    // One loop and one call for both ways in: what a figure costs is what an import costs.
    const std::byte* taken = TakeValues(stream, count);
    if (taken != nullptr) read_ += count.values;
    for (int left = count.values; left > 0; --left) {
      BodyValue item;
      if (taken != nullptr) {
        taken = Scan(taken, item);
        values_ahead_ = left - 1;
      } else {
        if (!at_(kReadValue, [&] { return GetItem(stream, item); })) return false;
        ++read_;
      }
      ApplyValue(target, item);
    }
    return true;
  }

  // All values of a date at once; null where there are none, or the stream does not hold them whole at the moment.
  static const std::byte* TakeValues(FileStream& stream, const BodyCount& count) {
    return count.values > 0 ? stream.Take(BytesOf<BodyValue>() * static_cast<std::size_t>(count.values)) : nullptr;
  }

  // The record before is stored where it was changed.
  void OpenRecord(Integer target, Date date) {
    if (last_opened_ > 0 && dirty_) at_(kDataWrite, [&] { masterfile_.WriteRecord(); });
    dirty_ = false;
    ReadRecord(kDataRead, target, date);
    last_opened_ = target;
  }

  void ApplyValue(Integer target_account, const BodyValue& item) {
    const Integer field = at_(kMapValue, [&] { return fields_(item.field_index); });
    if (field <= 0 || target_account <= 0) return PassOver(item);
    const Double stored = at_(kGetValue, [&] { return masterfile_.FieldValue(field); });
    at_(kSetValue, [&] { masterfile_.SetFieldValue(field, Combine(math_, stored, item.value)); });
    Sum& sum = applied_sums_[static_cast<std::size_t>(item.field_index)];
    ++sum.figures;
    sum.total += item.value;
    dirty_ = true;
  }

  void PassOver(const BodyValue& item) {
    Sum& sum = not_mapped_sums_[static_cast<std::size_t>(item.field_index)];
    ++sum.figures;
    sum.total += item.value;
  }

  // --- The end of a file ---------------------------------------------------------------------------------------------

  // A file that cannot be deleted stays, and the report does not say it: meant. One that cannot be renamed would be
  // imported again by the next run, so the report says it.
  void Dispose(const Text& file) {
    if (definition_.Disp == kDispDelete && !KillFile(file)) NoteThatItStays();
    if (definition_.Disp != kDispRename) return;
    const Text new_name = XDQName(file);
    if (RenameFile(file, new_name)) return;
    NoteThatItStays();
    report_.PrintLine("The file could not be renamed to: " + new_name);
  }

  void NoteThatItStays() {
    if (const auto& failure = LastChangeFailure()) record_.files.back().stays = ReasonOf(*failure);
  }

  // The way out of a run that stops: its own failures are logged and change nothing.
  void CloseQuietly() {
    Statements closing(Policy::kGoOn, [&](const Failure& failure) {
      LogExchangeFailure(app_, failure, "ImportQDXFile");
      return false;
    });
    closing(kEndData, [&] { report_.EndProgress(); });
    closing(kCloseFile, [&] { CloseFileEx(means_.file_number); });
  }

  QDXDefinitionImport& record_;
  QDXImportMeans& means_;
  Masterfile& masterfile_;
  HostApp& app_;
  DefinitionRecord& definition_;
  HeaderRecord& header_;
  Printer& report_;
  const Integer math_;  // how figures meet those that stand
  Statements at_;
  ImportMap accounts_;
  ImportMap fields_;
  bool header_failed_ = false;
  Integer last_opened_ = 0;  // the database account of the last record read, over all files
  bool dirty_ = false;       // the current record has changes that are not stored

  // Of the file under way, for the record.
  bool in_body_ = false;
  BodyBlockStart block_;  // the account under way
  int values_ahead_ = 0;  // taken from the stream and not applied yet
  DateMarks dates_;
  struct Sum {
    long long figures = 0;
    Double total = 0;
  };
  long long read_ = 0;
  std::array<Sum, ImportMap::kColumns> applied_sums_{};  // by the field's position in the file
  std::array<Sum, ImportMap::kColumns> not_mapped_sums_{};
  Text refusal_;  // what its checks found
};

}  // namespace

Integer MatchFiles(const Text& pattern, std::vector<Text>& file_list) {
  std::vector<FoundFile> found = ThePlatform().files->Find(pattern);
  std::stable_sort(found.begin(), found.end(),
                   [](const FoundFile& a, const FoundFile& b) { return a.modified < b.modified; });
  const Text folder = AddBackslash(FilePath(pattern));
  file_list.clear();
  for (const FoundFile& file : found) file_list.push_back(folder + file.name);
  return ToInteger(static_cast<long long>(file_list.size()));
}

bool ImportQDX(QDXImportMeans& means, Printer& report, QDXDefinitionImport& record) {
  Statements at(Policy::kAsk, [&](const Failure& failure) {
    record.stop = ReasonOf(failure);
    // Where there is no log the question tells it.
    (void)TryLogFailure(means.masterfile, failure, " - CDataExchange:ImportQDXFile");
    return AskMessage("Error reading QDX file", kQuestionIcon | kRetryCancel, "") == kRetry;
  });
  bool done = false;
  return at.Run([&] {
    const auto run = at(kMatchFiles, [&] { return std::make_unique<ImportRun>(means, report, record); });
    record.stop.reset();
    done = run->Run();
  }) && done;
}

}  // namespace tallybook
