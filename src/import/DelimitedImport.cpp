#include "import/DelimitedImport.h"

#include <algorithm>
#include <array>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "base/Dates.h"
#include "base/ModParse.h"
#include "base/Narrow.h"
#include "base/Statements.h"
#include "base/Texts.h"
#include "host/AccountRecord.h"
#include "host/FieldRecord.h"
#include "host/HostApp.h"
#include "host/Masterfile.h"
#include "import/Combine.h"
#include "import/LineReader.h"
#include "platform/MessageBoxes.h"
#include "platform/Platform.h"
#include "platform/Screen.h"
#include "platform/StopProgram.h"
#include "support/FileNumber.h"
#include "support/HostMessages.h"
#include "support/LastFailures.h"
#include "support/WinAPI.h"

namespace tallybook {

namespace {

// The statements of an import, as its "Error:" box numbers them.
enum Statement : Long {
  kAuditLine = 60,
  kAuditDate = 65,
  kAuditAccount = 66,
  kAuditPairs = 67,
  kEndAudit = 70,
  kBeginRollback = 80,
  kRewind = 90,
  kApplyLine = 100,
  kApplyAccount = 103,
  kOpenRecord = 105,
  kApplyPairs = 107,
  kLastWrite = 110,
  kTellEnd = 120,
};

constexpr std::string_view kFieldSeparators = ",\t";
constexpr std::string_view kDateSeparators = "/. ";
constexpr std::size_t kFirstFields = 6;
constexpr std::size_t kFieldsStep = 10;
constexpr std::size_t kGrowsBelow = 255;
constexpr std::size_t kAccountField = 4;  // once the date stands in three fields
constexpr std::size_t kFirstPair = 5;
constexpr Integer kPeriodMark = -1;

// Where the two passes differ over the same lines. The differences are meant, and each is one choice here.
struct PassRules {
  std::string_view stoppers;       // a semicolon outside quotes ends the line
  bool skips_lines_without_text;   // such a line takes no record number
  bool pairs_end_at_either_empty;  // otherwise at the first pair with both fields empty
  bool cuts_long_codes;            // otherwise a code of more than 10 characters is a failure
  bool asks_about_unknown_codes;   // otherwise the account before stays
  bool grows_fields;               // the field array grows with the lines
  bool counts_lines;               // the record number counts all lines and the end, not lines with text
};
constexpr PassRules kAuditPass = {.stoppers = ";",
                                  .skips_lines_without_text = true,
                                  .pairs_end_at_either_empty = false,
                                  .cuts_long_codes = true,
                                  .asks_about_unknown_codes = true,
                                  .grows_fields = true,
                                  .counts_lines = false};
constexpr PassRules kApplyPass = {.stoppers = "",
                                  .skips_lines_without_text = false,
                                  .pairs_end_at_either_empty = true,
                                  .cuts_long_codes = false,
                                  .asks_about_unknown_codes = false,
                                  .grows_fields = false,
                                  .counts_lines = true};

// The fields of the line under way, at positions from 1. The array lives over both passes.
class FieldArray {
 public:
  void StartPass(const PassRules& rules) { split_line_ = SplitQuoted(kFieldSeparators, rules.stoppers); }

  [[nodiscard]] std::size_t Top() const { return fields_.size(); }
  [[nodiscard]] std::string_view operator()(std::size_t position) const { return fields_[position - 1]; }

  // The fields stand as long as the line does.
  void Split(std::string_view line, const PassRules& rules) {
    for (;;) {
      const auto count = static_cast<std::size_t>(split_line_(line, fields_));
      if (!rules.grows_fields || count != Top() || Top() >= kGrowsBelow) return;
      fields_.resize(Top() + kFieldsStep);
    }
  }

  [[nodiscard]] bool HasAnyText() const {
    return std::any_of(fields_.begin(), fields_.end(), [](std::string_view field) { return HasText(field); });
  }

  // Puts the parts of a date that stands in one field into three; all behind it moves by two, and the last two drop
  // out.
  void SpreadDate() {
    const std::string_view date = fields_.front();
    std::move_backward(fields_.begin() + 1, fields_.end() - 2, fields_.end());
    split_date_(date, std::span(fields_).first(3));
  }

 private:
  std::vector<std::string_view> fields_ = std::vector<std::string_view>(kFirstFields);
  SplitQuoted split_line_{kFieldSeparators, ""};
  SplitQuoted split_date_{kDateSeparators, ""};
};

class DelimitedImportRun {
 public:
  DelimitedImportRun(Masterfile& masterfile, const DelimitedImportRequest& request, TextImportTally& tally)
      : masterfile_(masterfile),
        app_(masterfile.App()),
        request_(request),
        math_(static_cast<Integer>(request.math)),
        tally_(tally) {}

  bool Run() {
    const bool done = OpenAndRun();
    if (!done && tally_.stop) tally_.stop->file = request_.file_name;
    return done;
  }

 private:
  bool OpenAndRun() {
    bool done = false;
    switch (Open()) {
      case Opening::kGivenUp:
        return false;
      case Opening::kRefused:
        break;
      case Opening::kOpen:
        done = RunPasses();
    }
    End();
    return done;
  }

  enum class Opening { kOpen, kRefused, kGivenUp };

  // --- Before the first line: a step that fails is passed over, and the next one runs --------------------------------

  template <typename Body>
  auto PassOver(Body&& body) {
    return pass_over_(0, body);
  }

  Opening Refused(const Text& text) {
    tally_.stop = StopReason{.words = TrimBoth(text)};
    PassOver([&] { Refuse(app_, text); });
    return Opening::kRefused;
  }

  // Giving up on a file that cannot be opened leaves without the end step.
  Opening Open() {
    const std::optional<Text> word = WordOfMath(math_);
    if (!word) return Refused("Add, Subtract or Replace not indicated in settings. ");
    for (;;) {
      if (!FileExists(request_.file_name)) return Refused("File: " + request_.file_name + " does not exist.");
      Text name = request_.file_name;
      if (OpenFileEx("BR", file_.Value(), name)) break;
      const Text question = "Error opening import file: " + request_.file_name;
      if (PassOver([&] { return AskRetry(app_, question); })) continue;
      if (const auto& failure = LastOpenFailure()) tally_.stop = ReasonOf(*failure);
      return Opening::kGivenUp;
    }
    const Text question = "OK to " + *word + " data from the import file to the database?";
    if (!PassOver([&] { return Confirm(app_, question); })) {
      tally_.stop = StopReason{.words = "cancelled before anything was imported"};
      return Opening::kRefused;
    }
    ReadTables();
    return Opening::kOpen;
  }

  void ReadTables() {
    PassOver([&] { masterfile_.BeginProgress("Auditing Import File"); });
    ReadAccounts();
    ReadFields();
  }

  // The object that was made; failure 91 where making it failed.
  template <typename Object>
  static Object& Made(const std::unique_ptr<Object>& object) {
    if (object) return *object;
    throw Failure(FailureNumber::kObjectNotSet, "There is no record to look accounts or datafields up with");
  }

  void ReadAccounts() {
    const auto account = PassOver([&] { return masterfile_.NewAccountRecord(); });
    const Long accounts = PassOver([&] { return masterfile_.NumAccounts(); });
    for (Long i = 1; i <= accounts; ++i) {
      PassOver([&] { Made(account).SetSelect(masterfile_.AccountNumber(ToInteger(i))); });
      codes_.Add(PassOver([&] { return Made(account).Code(); }));
    }
  }

  void ReadFields() {
    valid_fields_ = NumberTable(PassOver([&] { return masterfile_.MaxFields(); }));
    system_fields_ = NumberTable(valid_fields_.Highest());
    applied_ = AppliedByField(valid_fields_.Highest());
    const auto field = PassOver([&] { return masterfile_.NewFieldRecord(); });
    const Long fields = PassOver([&] { return masterfile_.NumFields(); });
    for (Long i = 1; i <= fields; ++i) {
      const Integer number = PassOver([&] { return masterfile_.FieldNumber(ToInteger(i)); });
      PassOver([&] { valid_fields_.Mark(number); });
      PassOver([&] { Made(field).SetSelect(number); });
      PassOver([&] {
        if (Made(field).SystemMaintained()) system_fields_.Mark(number);
      });
    }
  }

  // --- The passes: a failure ends the run ----------------------------------------------------------------------------

  bool RunPasses() {
    tally_.math = math_;
    Statements at(Policy::kLeave, [&](const Failure& failure) {
      tally_.stop = ReasonOf(failure);
      tally_.stop->place = Place();
      TellNotImported(app_, failure.Code(), failure.Statement());
      return false;
    });
    return at.Run([&] {
      at(kAuditLine, [&] {
        encoding_.emplace(file_.Stream(), ThePlatform().text_encoding);
        lines_.emplace(file_.Stream(), encoding_->Start());
        StartPass(kAuditPass);
      });
      Audit(at);
      Apply(at);
    });
  }

  // The record under way, as the pass counts them.
  [[nodiscard]] Text Place() const { return "record " + std::to_string(record_number_); }

  void StartPass(const PassRules& rules) {
    fields_.StartPass(rules);
    finder_.emplace(codes_, *encoding_, rules.cuts_long_codes ? CutCode : FittingCode);
  }

  // Takes the next line apart. False at the end of the file.
  bool ReadLine(const PassRules& rules) {
    for (;;) {
      std::string_view line;
      const bool more = lines_->Next(line);
      if (more) fields_.Split(line, rules);
      if (more && rules.skips_lines_without_text && !fields_.HasAnyText()) continue;
      if (more || rules.counts_lines) record_number_ = ToLong(static_cast<long long>(record_number_) + 1);
      return more;
    }
  }

  void ReadDate() {
    if (request_.date_fields != 0) fields_.SpreadDate();
    const std::array<Integer, 3> parts = {DatePart(1), DatePart(2), DatePart(3)};
    Integer year = parts[0];
    Integer month = parts[1];
    Integer day = parts[2];
    if (request_.date_order == kMonthDayYear) {
      month = parts[0];
      day = parts[1];
      year = parts[2];
    } else if (request_.date_order == kDayMonthYear) {
      day = parts[0];
      month = parts[1];
      year = parts[2];
    }
    year = FixYear(year);
    date_ = month == kPeriodMark ? DateFromParts(year, day, 1) : DateFromParts(year, month, day);
    first_date_ = std::min(first_date_, date_);
    last_date_ = std::max(last_date_, date_);
  }

  [[nodiscard]] Integer DatePart(std::size_t position) const { return ToInteger(LeadingLong(fields_(position))); }

  void ShowFileProgress(Double share_before) {
    const Double share = static_cast<Double>(lines_->Position()) / static_cast<Double>(lines_->Size());
    masterfile_.SetProgressFraction(static_cast<Single>(share / 2 + share_before));
  }

  // Calls `take(field, value)` for each pair of the line, as far as the pass reads them.
  template <typename Take>
  void ForEachPair(const PassRules& rules, Take take) const {
    for (std::size_t i = kFirstPair; i + 1 <= fields_.Top(); i += 2) {
      const bool no_field = fields_(i).empty();
      const bool no_value = fields_(i + 1).empty();
      if (rules.pairs_end_at_either_empty ? no_field || no_value : no_field && no_value) return;
      take(fields_(i), fields_(i + 1));
    }
  }

  // --- First pass: every error is asked about, and nothing is written ------------------------------------------------

  void Audit(Statements& at) {
    while (at(kAuditLine, [&] { return ReadLine(kAuditPass); })) {
      at(kAuditDate, [&] {
        ReadDate();
        ShowFileProgress(0);
        AuditDate();
      });
      at(kAuditAccount, [&] { AuditAccount(); });
      at(kAuditPairs, [&] {
        ForEachPair(kAuditPass, [&](std::string_view field, std::string_view) {
          ++tally_.read;
          AuditField(WholeLongText(field));
        });
      });
    }
    at(kEndAudit, [&] { masterfile_.EndProgress(); });
    if (error_count_ == 0) return;
    tally_.stop = AuditFoundErrors();
    Statements::Leave();
  }

  enum class Count { kBeforeAsking, kAfterAsking };

  // No leaves at once; whether the error has been counted then decides about the file's new name.
  void TellError(const Text& text, Count count) {
    if (count == Count::kBeforeAsking) error_count_ = ToInteger(error_count_ + 1);
    tally_.asked_record = record_number_;
    if (!AskContinueAudit(app_, text)) {
      tally_.stop = AuditStoppedAt(text);
      tally_.stop->place = Place();
      Statements::Leave();
    }
    if (count == Count::kAfterAsking) error_count_ = ToInteger(error_count_ + 1);
  }

  [[nodiscard]] Text InRecord(const Text& separator) const {
    return "\r\nIn record number" + separator + std::to_string(record_number_);
  }

  // Lines that repeat a date are not tested again.
  void AuditDate() {
    if (date_ == previous_date_) return;
    if (!masterfile_.DateValid(date_)) {
      TellError("Invalid date: " + DateText(date_) + " in import file", Count::kBeforeAsking);
    }
    previous_date_ = date_;
  }

  void AuditAccount() {
    const AccountFinder::Account& account = finder_->Find(fields_(kAccountField));
    if (account.position == 0 && kAuditPass.asks_about_unknown_codes) {
      TellError("Invalid Account Code " + account.code + InRecord(": "), Count::kAfterAsking);
    }
  }

  void AuditField(Long number) {
    if (number < 1) FailOutsideTable(number, masterfile_.MaxFields());
    if (!valid_fields_.Holds(number)) {
      TellError("Invalid Datafield number " + std::to_string(number) + InRecord(" "), Count::kAfterAsking);
    } else if (system_fields_.Holds(number) && !request_.can_import_system_fields) {
      TellError("Cannot import System Maintained Datafields with this option. System Maintained Datafield number " +
                    std::to_string(number) + InRecord(" "),
                Count::kBeforeAsking);
    }
  }

  // --- Second pass ---------------------------------------------------------------------------------------------------

  void Apply(Statements& at) {
    if (request_.write_rollback) at(kBeginRollback, [&] { masterfile_.BeginRollback(first_date_, last_date_); });
    at(kRewind, [&] {
      masterfile_.BeginProgress("Reading Import File");
      lines_->Rewind();
      StartPass(kApplyPass);
    });
    previous_date_ = kNoDate;
    previous_account_ = 0;
    record_number_ = 0;
    while (at(kApplyLine, [&] { return ReadLine(kApplyPass); })) {
      at(kApplyAccount, [&] {
        ReadDate();
        const Long position = finder_->Find(fields_(kAccountField)).position;
        ShowFileProgress(0.5);
        // An unknown code leaves the account as it was.
        if (position > 0) account_ = masterfile_.AccountNumber(ToInteger(position));
      });
      at(kOpenRecord, [&] { OpenRecord(); });
      at(kApplyPairs, [&] { ApplyPairs(); });
    }
    at(kLastWrite, [&] {
      masterfile_.WriteRecord();
      if (request_.write_rollback) masterfile_.EndRollback();
    });
    tally_.stored = true;
    tally_.accounts = touched_accounts_.Marked();
    tally_.fields = applied_.Numbers();
    at(kTellEnd, [&] {
      ShowMessage(std::to_string(record_number_) + " records read from Delimited file: " + request_.file_name,
                  kInformationIcon | kOkOnly, app_.Title());
    });
  }

  // Stops the program where the record cannot be read: no figure is written into a record that cannot be trusted.
  void OpenRecord() {
    const bool other_date = date_ != previous_date_;
    if (!other_date && account_ == previous_account_) return;
    if (other_date ? previous_date_ > kNoDate : previous_account_ > 0) masterfile_.WriteRecord();
    if (!masterfile_.ReadRecord(account_, date_)) StopAtRecord();
    if (other_date) tally_.dates.insert(date_);
    touched_accounts_.Touch(account_);
    previous_date_ = date_;
    previous_account_ = account_;
  }

  [[noreturn]] void StopAtRecord() const {
    StopReason reason = MissingRecord(masterfile_, account_, date_, kOpenRecord);
    reason.file = request_.file_name;
    reason.place = Place();
    StopProgram(reason);
  }

  void ApplyPairs() {
    ForEachPair(kApplyPass, [&](std::string_view field_text, std::string_view value_text) {
      const Integer field = ToInteger(WholeLongText(field_text));
      const Double value = WholeNumberText(value_text);
      const Double stored = request_.math == eMath::mReplace ? 0 : masterfile_.FieldValue(field);
      masterfile_.SetFieldValue(field, Combine(math_, stored, value));
      applied_.Add(field, value);
      ++tally_.applied;
    });
    ++tally_.records;
  }

  // The end step: looks at the error count alone.
  void End() {
    tally_.field_tallies = applied_.Tallies();
    lines_.reset();
    encoding_.reset();
    file_.Close();
    if (error_count_ == 0 && !RenameFile(request_.file_name, request_.file_name + ".bak")) {
      if (const auto& failure = LastChangeFailure()) tally_.stays = ReasonOf(*failure);
    }
    PassOver([&] { masterfile_.EndProgress(); });
  }

  Masterfile& masterfile_;
  HostApp& app_;
  const DelimitedImportRequest& request_;
  const Integer math_;
  TextImportTally& tally_;
  Statements pass_over_{Policy::kGoOn, [](const Failure&) { return false; }};

  FileNumber file_;
  std::optional<EncodedText> encoding_;
  std::optional<LineReader> lines_;
  FieldArray fields_;
  AccountCodeTable codes_;
  std::optional<AccountFinder> finder_;  // of the pass under way
  NumberTable valid_fields_;
  NumberTable system_fields_;
  AppliedByField applied_;
  NumberTable touched_accounts_;

  Long record_number_ = 0;
  Integer error_count_ = 0;
  Date first_date_ = DateFromParts(9999, 12, 31);
  Date last_date_ = kNoDate;
  Date date_ = kNoDate;  // of the line under way

  Date previous_date_ = kNoDate;
  Long previous_account_ = 0;
  Long account_ = 0;
};

}  // namespace

bool ImportDelimited(Masterfile& masterfile, const DelimitedImportRequest& request, TextImportTally& tally) {
  return RunOrTell([&] { return DelimitedImportRun(masterfile, request, tally).Run(); });
}

}  // namespace tallybook
