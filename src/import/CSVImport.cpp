#include "import/CSVImport.h"

#include <cmath>
#include <memory>
#include <optional>
#include <string>

#include "base/Dates.h"
#include "base/Narrow.h"
#include "base/Statements.h"
#include "base/Texts.h"
#include "host/AccountRecord.h"
#include "host/FiscalCalendar.h"
#include "host/HostApp.h"
#include "host/Masterfile.h"
#include "import/CSVFieldStream.h"
#include "import/Combine.h"
#include "platform/Clock.h"
#include "platform/Platform.h"
#include "platform/Screen.h"
#include "support/FileNumber.h"
#include "support/HostMessages.h"
#include "support/Utility.h"

namespace tallybook {

namespace {

// The statements of an import, as its "Error:" box numbers them.
enum Statement : Long {
  kBeginAudit = 90,
  kReadTables = 91,
  kAuditRecord = 100,
  kAuditAccount = 103,
  kAuditDate = 104,
  kAuditField = 106,
  kEndAudit = 110,
  kBeginRollback = 120,
  kRewind = 130,
  kBlockStart = 140,
  kClear = 150,
  kApplyRecord = 160,
  kApplyAccount = 163,
  kApplyDate = 164,
  kReadRecord = 165,
  kApplyValue = 166,
  kFinish = 170,
};

// A period file's month.
constexpr Integer kPeriodMark = -1;
// An account number that marks a date change and turns clearing off.
constexpr Long kClearingOff = -1;
// Sums that cancel leave no residue smaller than this.
constexpr Double kResidue = 0.000001;

struct Header {
  Integer month = 0;
  Integer day = 0;
  Integer year = 0;
  Integer math = 0;
  bool by_code = false;
};

class CSVImportRun {
 public:
  CSVImportRun(Masterfile& masterfile, const CSVImportRequest& request, TextImportTally& tally)
      : masterfile_(masterfile), app_(masterfile.App()), request_(request), tally_(tally) {}

  bool Run() {
    const bool done = Open() && ReadFirstHeader() && Prepare() && RunPasses();
    Leave();
    if (!done && tally_.stop) tally_.stop->file = request_.file_name;
    return done;
  }

 private:
  // --- Opening and header: a step that fails is passed over, and the next one runs -----------------------------------

  template <typename Body>
  auto PassOver(Body&& body) {
    return pass_over_(0, body);
  }

  bool Refused(const Text& text) {
    if (!tally_.stop) tally_.stop = StopReason{.place = Place(), .words = TrimBoth(text)};
    PassOver([&] { Refuse(app_, text); });
    return false;
  }

  bool Open() {
    Text name = request_.file_name;
    while (!OpenFileEx("I", file_.Value(), name)) {
      const Text question = "Error opening import file: " + request_.file_name;
      if (PassOver([&] { return AskRetry(app_, question); })) continue;
      if (const auto& failure = LastOpenFailure()) tally_.stop = ReasonOf(*failure);
      return false;
    }
    return true;
  }

  bool ReadFirstHeader() {
    Statements at(Policy::kGoOn, [this](const Failure& failure) {
      tally_.stop = ReasonOf(failure);
      tally_.stop->words = "no valid header: " + failure.Description();
      tally_.stop->place = Place();
      return false;
    });
    at(0, [&] {
      fields_.emplace(file_.Stream(), ThePlatform().text_encoding);
      header_ = ReadHeader();
      header_read_ = true;
    });
    if (header_read_) return true;
    file_.Close();
    return Refused("Import file: " + request_.file_name + " does not contain a valid header");
  }

  Header ReadHeader() {
    Header header;
    header.month = fields_->NextInteger();
    header.day = fields_->NextInteger();
    header.year = fields_->NextInteger();
    header.math = fields_->NextInteger();
    header.by_code = fields_->NextInteger() != 0;
    if (request_.math != eMath::mDefault) header.math = static_cast<Integer>(request_.math);
    return header;
  }

  bool Prepare() {
    const Integer year = FixYear(header_.year);
    Integer month = header_.month;
    Integer day = header_.day;
    if (month == kPeriodMark) {
      if (PassOver([&] { return masterfile_.DataLevel(); }) != kPeriodLevel) {
        return Refused(
            "The information in the import file is for a period.  It cannot be imported into this database.");
      }
      month = header_.day;
      day = 1;
      if (month > PassOver([&] { return masterfile_.NumPeriods(); }) || month < 1) {
        return Refused("Invalid period number in import file");
      }
    }
    const Date date = DateFromParts(year, month, day);
    if (!PassOver([&] { return masterfile_.DateValid(date); })) {
      return Refused("Invalid date: " + PlainDate(year, month, day) + " in import file");
    }
    smallest_date_ = date;
    PassOver([&] { masterfile_.FiscalCalendar().SetCurrentDate(date); });
    PassOver([&] {
      FiscalCalendar& calendar = masterfile_.FiscalCalendar();
      calendar.SetCurrentDate(calendar.LevelDate(date, masterfile_.DataLevel()));
    });
    return ConfirmRun();
  }

  bool ConfirmRun() {
    const std::optional<Text> word = WordOfMath(header_.math);
    if (!word) return Refused("Add, subtract or replace not indicated in import file. ");
    tally_.math = header_.math;
    if (request_.no_prompts) return true;
    const Date start = PassOver([&] { return masterfile_.FiscalCalendar().CurrentDate(); });
    const Text question = "OK to " + *word + " data from the import file to the database, starting at " +
                          ThePlatform().clock->LongDate(start);
    if (PassOver([&] { return Confirm(app_, question); })) return true;
    tally_.stop = StopReason{.words = "cancelled before anything was imported"};
    return false;
  }

  static Text PlainDate(Integer year, Integer month, Integer day) {
    return std::to_string(year) + "-" + std::to_string(month) + "-" + std::to_string(day);
  }

  void ReadTables() {
    PassOver([&] { masterfile_.BeginProgress("Auditing Import File"); });
    valid_accounts_ = NumberTable(PassOver([&] { return masterfile_.MaxAccounts(); }));
    valid_fields_ = NumberTable(PassOver([&] { return masterfile_.MaxFields(); }));
    const auto record = PassOver([&] { return masterfile_.NewAccountRecord(); });
    const auto account = [&]() -> AccountRecord& {
      if (record) return *record;
      throw Failure(FailureNumber::kObjectNotSet, "There is no account record to look accounts up with");
    };
    PassOver([&] { masterfile_.BeginProgress("Reading Account Codes"); });
    const Long accounts = PassOver([&] { return masterfile_.NumAccounts(); });
    for (Long i = 1; i <= accounts; ++i) {
      ShowProgress(i, accounts);
      PassOver([&] { account().SetSelect(masterfile_.AccountNumber(ToInteger(i))); });
      codes_.Add(PassOver([&] { return account().Code(); }));
      PassOver([&] { valid_accounts_.Mark(account().Number()); });
    }
    PassOver([&] { masterfile_.BeginProgress("Reading DataField Info"); });
    const Long fields = PassOver([&] { return masterfile_.NumFields(); });
    for (Long i = 1; i <= fields; ++i) {
      ShowProgress(i, fields);
      PassOver([&] { valid_fields_.Mark(masterfile_.FieldNumber(ToInteger(i))); });
    }
  }

  void ShowProgress(Long row, Long rows) {
    PassOver([&] { masterfile_.SetProgressFraction(static_cast<Single>(static_cast<Double>(row) / rows)); });
  }

  // --- The passes: a failure ends the run ----------------------------------------------------------------------------

  bool RunPasses() {
    ReadTables();
    finder_.emplace(codes_, fields_->Encoding(), CutCode);
    Statements at(Policy::kLeave, [&](const Failure& failure) {
      tally_.stop = ReasonOf(failure);
      tally_.stop->place = Place();
      TellNotImported(app_, failure.Code(), failure.Statement());
      return false;
    });
    return at.Run([&] {
      Audit(at);
      Apply(at);
    });
  }

  // The record under way, and how far the file has been read; the header has no record.
  [[nodiscard]] Text Place() const {
    const Text record = record_number_ > 0 ? "record " + std::to_string(record_number_) + ", " : Text();
    return fields_ ? record + "byte " + std::to_string(fields_->Position()) : Text();
  }

  // Ends the run, with the place, at a record that the database does not have.
  [[noreturn]] void LeaveAtRecord(Long account_number, Long statement) {
    tally_.stop = MissingRecord(masterfile_, account_number, current_date_, statement);
    tally_.stop->place = Place();
    Statements::Leave();
  }

  void ShowFileProgress(Double share_before) {
    const Double share = static_cast<Double>(fields_->Position()) / static_cast<Double>(fields_->Size());
    masterfile_.SetProgressFraction(static_cast<Single>(share / 2 + share_before));
  }

  // --- First pass: every error is asked about, and nothing is written ------------------------------------------------

  void Audit(Statements& at) {
    for (;;) {
      const bool more = at(kAuditRecord, [&] { return ReadAuditRecord(); });
      if (!more) break;
      const bool date_change = at(kAuditAccount, [&] { return AuditAccount(); });
      if (date_change) {
        if (!at(kAuditDate, [&] { return AuditDateChange(); })) break;
      } else {
        at(kAuditField, [&] { AuditField(); });
      }
    }
    at(kEndAudit, [&] { masterfile_.EndProgress(); });
    if (error_count_ == 0) return;
    tally_.stop = AuditFoundErrors();
    Statements::Leave();
  }

  // False at the end of the file; a record that is cut short there is dropped.
  bool ReadAuditRecord() {
    if (fields_->AtEnd()) return false;
    record_number_ = ToLong(static_cast<long long>(record_number_) + 1);
    if (!ReadAccountAndField()) return false;
    // What the value is counts in the second pass only; any text reads as some number, unless that is too large for
    // one.
    fields_->PassDouble();
    ShowFileProgress(0);
    return true;
  }

  // False where the file ends before the record's value.
  bool ReadAccountAndField() {
    account_.assign(fields_->Next());
    if (fields_->AtEnd()) return false;
    datafield_ = fields_->NextLong();
    return !fields_->AtEnd();
  }

  // True for a date change. A bad code is asked about and counted twice, the second time as the number 0: meant.
  bool AuditAccount() {
    Long number = 0;
    if (header_.by_code) {
      const AccountFinder::Account& account = finder_->Find(account_);
      if (account.blank) return true;
      if (account.position > 0) return false;
      CountError("Invalid Account Code " + account.code + InRecord(": "));
    } else {
      number = LeadingLong(account_);
      if (number < 1) return true;
      if (valid_accounts_.Holds(number)) return false;
    }
    CountError("Invalid Account Number " + std::to_string(number) + InRecord(": "));
    return false;
  }

  void AuditField() {
    ++tally_.read;
    if (valid_fields_.Holds(datafield_)) return;
    CountError("Invalid Datafield number " + std::to_string(datafield_) + InRecord(" "));
  }

  [[nodiscard]] Text InRecord(const Text& separator) const {
    return "\r\nIn record number" + separator + std::to_string(record_number_);
  }

  void AskOrLeave(const Text& text) {
    tally_.asked_record = record_number_;
    if (AskContinueAudit(app_, text)) return;
    tally_.stop = AuditStoppedAt(text);
    tally_.stop->place = Place();
    Statements::Leave();
  }

  // No leaves at once, before the error counts.
  void CountError(const Text& text) {
    AskOrLeave(text);
    error_count_ = ToInteger(error_count_ + 1);
  }

  // False at the end of the file. A bad date that the user lets pass does not count: meant.
  bool AuditDateChange() {
    if (fields_->AtEnd()) return false;
    record_number_ = ToLong(static_cast<long long>(record_number_) + 1);
    const Integer month = fields_->NextInteger();
    const Integer day = fields_->NextInteger();
    const Integer year = FixYear(fields_->NextInteger());
    const Date date = DateFromParts(year, month, day);
    if (!masterfile_.DateValid(date)) {
      const Text behind = header_.by_code ? " in import file" : "  in import file";
      AskOrLeave("Invalid date: " + PlainDate(year, month, day) + behind + InRecord(": "));
    }
    smallest_date_ = std::min(smallest_date_, date);
    largest_date_ = std::max(largest_date_, date);
    return true;
  }

  // --- Second pass ---------------------------------------------------------------------------------------------------

  void Apply(Statements& at) {
    if (request_.write_rollback) {
      at(kBeginRollback, [&] { masterfile_.BeginRollback(smallest_date_, largest_date_); });
    }
    at(kRewind, [&] {
      masterfile_.BeginProgress("Reading Import File");
      fields_->Rewind();
      header_ = ReadHeader();
    });
    record_number_ = 0;
    applied_ = AppliedByField(valid_fields_.Highest());
    finder_.emplace(codes_, fields_->Encoding(), FittingCode);
    do {
      at(kBlockStart, [&] { StartBlock(); });
      ClearBlock(at);
    } while (ApplyBlock(at));
    at(kFinish, [&] {
      if (dirty_) masterfile_.WriteRecord();
      if (request_.write_rollback) masterfile_.EndRollback();
    });
    tally_.stored = true;
    tally_.accounts = touched_accounts_.Marked();
    tally_.fields = applied_.Numbers();
  }

  void StartBlock() {
    const Integer year = FixYear(header_.year);
    const bool period = header_.month == kPeriodMark;
    const Date date = period ? DateFromParts(year, header_.day, 1) : DateFromParts(year, header_.month, header_.day);
    current_date_ = masterfile_.FiscalCalendar().LevelDate(date, masterfile_.DataLevel());
    tally_.dates.insert(current_date_);
  }

  [[nodiscard]] Integer ClearFieldsBound() const {
    if (request_.clear_fields.empty()) FailOutsideTable(0, 0);
    return ToInteger(static_cast<long long>(request_.clear_fields.size()) - 1);
  }

  // A record that cannot be read or written here ends the run with false and no message: meant.
  void ClearBlock(Statements& at) {
    if (!clearing_) return;
    const Integer bound = at(kClear, [&] { return ClearFieldsBound(); });
    if (bound <= 0) return;
    at(kClear, [&] {
      masterfile_.BeginProgress("Clearing Data in " + masterfile_.MasterFileTypeName(0) + " Master File");
      const Long accounts = masterfile_.NumAccounts();
      for (Long i = 1; i <= accounts; ++i) {
        masterfile_.SetProgressFraction(static_cast<Single>(static_cast<Double>(i) / accounts));
        const Long account = masterfile_.AccountNumber(ToInteger(i));
        if (!ClearAccount(account, bound)) LeaveAtRecord(account, kClear);
      }
    });
  }

  bool ClearAccount(Long account, Integer bound) {
    if (!masterfile_.ReadRecord(account, current_date_)) return false;
    for (int j = 1; j <= bound; ++j) {
      if (request_.clear_fields[static_cast<std::size_t>(j)] != 0) {
        masterfile_.SetFieldValue(static_cast<Integer>(j), 0.0);
      }
    }
    return masterfile_.WriteRecord();
  }

  // True: a date change has been read, and another block begins. False: the file has ended.
  bool ApplyBlock(Statements& at) {
    for (;;) {
      const bool more = at(kApplyRecord, [&] { return ReadApplyRecord(); });
      if (!more) return false;
      at(kApplyAccount, [&] { FindAccount(); });
      if (number_ < 1) return at(kApplyDate, [&] { return ApplyDateChange(); });
      if (number_ != open_account_) OpenAccount(at);
      at(kApplyValue, [&] { ApplyValue(); });
    }
  }

  bool ReadApplyRecord() {
    if (fields_->AtEnd()) return false;
    ++record_number_;
    if (!ReadAccountAndField()) return false;
    value_ = fields_->NextDouble();
    ShowFileProgress(0.5);
    return true;
  }

  // An unknown code leaves the number as it was.
  void FindAccount() {
    if (!header_.by_code) {
      number_ = LeadingLong(account_);
      return;
    }
    const AccountFinder::Account& account = finder_->Find(account_);
    if (account.blank) number_ = 0;
    if (account.position > 0) number_ = masterfile_.AccountNumber(ToInteger(account.position));
  }

  // The changed record's flag stays set: meant, a file that ends here writes once more.
  bool ApplyDateChange() {
    if (open_account_ != 0) masterfile_.WriteRecord();
    open_account_ = 0;
    if (number_ == kClearingOff) clearing_ = false;
    if (fields_->AtEnd()) return false;
    ++record_number_;
    header_.month = fields_->NextInteger();
    header_.day = fields_->NextInteger();
    header_.year = fields_->NextInteger();
    return true;
  }

  void OpenAccount(Statements& at) {
    at(kReadRecord, [&] {
      if (open_account_ != 0) masterfile_.WriteRecord();
      dirty_ = false;
      if (masterfile_.ReadRecord(number_, current_date_)) return;
      TellNotImported(app_, 0, kReadRecord);
      LeaveAtRecord(number_, kReadRecord);
    });
    open_account_ = number_;
    touched_accounts_.Touch(number_);
  }

  void ApplyValue() {
    const Integer field = ToInteger(datafield_);
    const Double stored = header_.math == static_cast<Integer>(eMath::mReplace) ? 0 : masterfile_.FieldValue(field);
    masterfile_.SetFieldValue(field, Combine(header_.math, stored, value_));
    const Double sum = std::abs(masterfile_.FieldValue(field));
    if (sum > 0 && sum < kResidue) masterfile_.SetFieldValue(field, 0.0);
    dirty_ = true;
    applied_.Add(field, value_);
    ++tally_.records;
    ++tally_.applied;
  }

  // Every way out closes the file and the progress display.
  void Leave() {
    tally_.field_tallies = applied_.Tallies();
    fields_.reset();
    file_.Close();
    PassOver([&] { masterfile_.EndProgress(); });
  }

  Masterfile& masterfile_;
  HostApp& app_;
  const CSVImportRequest& request_;
  TextImportTally& tally_;
  Statements pass_over_{Policy::kGoOn, [](const Failure&) { return false; }};

  FileNumber file_;
  std::optional<CSVFieldStream> fields_;
  Header header_;
  bool header_read_ = false;
  AccountCodeTable codes_;
  std::optional<AccountFinder> finder_;  // of the pass under way
  NumberTable valid_accounts_;
  NumberTable valid_fields_;
  AppliedByField applied_;
  NumberTable touched_accounts_;

  // The record under way.
  std::string account_;  // the file's bytes
  Long datafield_ = 0;
  Double value_ = 0;  // in the second pass

  Long record_number_ = 0;
  Integer error_count_ = 0;
  Date smallest_date_ = kNoDate;
  Date largest_date_ = kNoDate;

  Long number_ = 0;        // the account number of the record under way, in the second pass
  Long open_account_ = 0;  // the account whose record is current; 0 when none
  Date current_date_ = kNoDate;
  bool clearing_ = true;
  bool dirty_ = false;
};

}  // namespace

bool ImportCSV(Masterfile& masterfile, const CSVImportRequest& request, TextImportTally& tally) {
  return RunOrTell([&] { return CSVImportRun(masterfile, request, tally).Run(); });
}

}  // namespace tallybook
