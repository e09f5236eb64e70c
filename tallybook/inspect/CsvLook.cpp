#include "tallybook/inspect/CsvLook.h"

#include <algorithm>
#include <fmt/format.h>
#include <iterator>
#include <limits>
#include <optional>
#include <utility>
#include <vector>

#include "base/Dates.h"
#include "base/Narrow.h"
#include "base/Texts.h"
#include "host/Masterfile.h"
#include "tallybook/application/Counts.h"
#include "tallybook/inspect/BookTables.h"
#include "tallybook/inspect/CsvFile.h"
#include "tallybook/inspect/CsvFindings.h"
#include "tallybook/inspect/CsvHead.h"
#include "tallybook/inspect/FigurePlaces.h"
#include "tallybook/inspect/Troubles.h"

namespace tallybook::inspect {

namespace {

constexpr std::size_t kRecordFields = 3;
constexpr std::size_t kDateFields = 3;

class CsvLookRun {
 public:
  CsvLookRun(Masterfile& masterfile, const CsvLookRequest& request, FindingListener& listener)
      : masterfile_(masterfile),
        request_(request),
        tables_(masterfile),
        places_(tables_.Accounts(), tables_.Fields()),
        file_(request.file, request.encoding),
        findings_(masterfile, file_, listener) {}

  LookTally Run() {
    masterfile_.BeginProgress("Looking at the Import File");
    masterfile_.SetProgressCancelEnabled(true);
    head_ = LookAtCsvHead(masterfile_, file_, findings_, request_.math);
    date_ = head_.date;
    is_of_lines_ = head_.ends_its_line;
    if (head_.is_sound) ReadRecords();
    masterfile_.EndProgress();
    return findings_.Tally();
  }

 private:
  [[nodiscard]] bool AtEnd() { return findings_.AtEnd(); }
  [[nodiscard]] Text TextOf(const CsvField& field) { return file_.TextOf(field); }
  void Pass(Piece piece, const CsvFields& fields) { findings_.Pass(piece, fields, is_of_lines_); }

  void ReadRecords() {
    if (is_of_lines_) LookWhetherOfLines();
    while (!AtEnd()) {
      if (is_of_lines_) {
        ReadLineOfRecord();
      } else {
        ReadRunOfRecord();
      }
    }
  }

  // Whether its first field makes a record a change of the date.
  [[nodiscard]] bool ChangesDate(const CsvField& field) {
    const Text text = TextOf(field);
    return head_.by_code ? TrimBoth(text).empty() : LeadingLong(text) < 1;
  }

  // Most of the first lines decide, but where one holds several whole records.
  void LookWhetherOfLines() {
    constexpr int kLines = 20;
    constexpr std::size_t kMostFields = 100;  // a file of one line need not be read whole
    int of_records = 0;
    int others = 0;
    bool has_run = false;
    CsvFields looked_at;
    for (int i = 0; i < kLines && !AtEnd(); ++i) {
      CsvFields line = file_.TakeLine(kMostFields);
      const bool of_record = line.size() == kRecordFields || line.size() == kRecordFields + kDateFields;
      if (!IsEmptyLine(line)) ++(of_record ? of_records : others);
      has_run =
          has_run || (line.size() > kRecordFields && line.size() % kRecordFields == 0 && !ChangesDate(line.front()));
      std::ranges::move(line, std::back_inserter(looked_at));
    }
    is_of_lines_ = of_records >= others && !has_run;
    file_.PutBack(std::move(looked_at));
  }

  void ReadRunOfRecord() {
    CsvFields record;
    file_.TakeInto(record, kRecordFields);
    findings_.NextRecord();
    if (record.size() < kRecordFields) return Dropped(record);
    findings_.LookAtQuotes(record);
    if (!LookAtRecord(record)) return;
    file_.TakeInto(record, kDateFields);
    LookAtDateChange(record);
  }

  // The import reads a field's number and a value of every record, whether it has a use for them or not.
  void LookWhetherNumbersFit(const CsvFields& record) {
    using Limits = std::numeric_limits<Long>;
    const auto stop_of = [](std::optional<Trouble> trouble) {
      return trouble && trouble->effect == Effect::kStop ? trouble : std::nullopt;
    };
    if (record.size() > 1) {
      findings_.Look(record[1], 2, "field",
                     stop_of(LooseWholeTrouble(TextOf(record[1]), Limits::min(), Limits::max())));
    }
    if (record.size() > 2) findings_.Look(record[2], 3, "value", stop_of(LooseNumberTrouble(TextOf(record[2]))));
  }

  // What stands behind the last whole record. An empty line or two do no harm there, and go into no part.
  void Dropped(const CsvFields& record) {
    const bool empty = std::ranges::all_of(record, [](const CsvField& field) { return field.bytes.empty(); });
    if (!empty) {
      findings_.Found(record.front(), 0, "",
                      {Effect::kSilent, "begins a record that the file ends in, and that is dropped",
                       "write account, field and value"});
    }
    LookWhetherNumbersFit(record);
    Pass(Piece::kRecord, empty ? CsvFields() : record);
  }

  void ReadLineOfRecord() {
    CsvFields line = file_.TakeLine();
    if (IsEmptyLine(line)) return ReadEmptyLines(std::move(line));
    findings_.NextRecord();
    findings_.LookAtQuotes(line);
    if (line.size() != kRecordFields && line.size() != kRecordFields + kDateFields) {
      return WrongCount(line, kRecordFields);
    }
    if (!LookAtRecord(line)) return;
    if (line.size() == kRecordFields && !AtEnd()) {
      for (CsvField& field : file_.TakeLine()) line.push_back(std::move(field));
    }
    LookAtDateChange(line);
  }

  // Three fields at most may be missing at the end of the file.
  void ReadEmptyLines(CsvFields lines) {
    constexpr std::size_t kHarmless = 3;
    while (!AtEnd()) {
      CsvFields next = file_.TakeLine();
      if (!IsEmptyLine(next)) {
        file_.PutBack(std::move(next));
        break;
      }
      lines.push_back(std::move(next.front()));
    }
    if (!AtEnd() || lines.size() > kHarmless) {
      findings_.Found(lines.front(), 0, "",
                      {Effect::kSilent, "is an empty line, which counts as an empty field and moves all that follows",
                       "take it away"});
    }
    Pass(Piece::kRecord, lines);
  }

  void WrongCount(const CsvFields& line, std::size_t wanted) {
    // The quote says it all.
    if (line.back().HasOpenQuote()) return Pass(Piece::kRecord, line);
    Text text;
    for (const CsvField& field : line) text += file_.RawTextOf(field);
    const bool more = line.size() > wanted;
    while (!text.empty() && (text.back() == '\r' || text.back() == '\n')) text.pop_back();
    findings_.Found(line.front().line, 0, "", text,
                    {Effect::kSilent,
                     fmt::format("has {} where a record has {}: to the import, all that follows moves",
                                 application::Counted(static_cast<long long>(line.size()), "field"), wanted),
                     more ? "put a value that holds commas into quotes, or better, write it without them"
                          : "write account, field and value"});
    Pass(Piece::kRecord, line);
  }

  // True where it changes the date, and the date's fields are wanted.
  bool LookAtRecord(CsvFields& record) {
    const auto account = LookAtAccount(record[0]);
    if (account == kChangesDate) return true;
    if (is_of_lines_ && record.size() != kRecordFields) {
      WrongCount(record, kRecordFields);
      return false;
    }
    const auto field = findings_.Whole<Long>(record[1], 2, "field");
    if (field) findings_.Look(record[1], 2, "field", FieldTrouble(tables_, *field, true));
    findings_.Look(record[2], 3, "value", LooseNumberTrouble(TextOf(record[2])));
    if (static_cast<eMath>(head_.math) != eMath::mReplace)
      findings_.Look(record[2], 3, "value", SumTrouble(LeadingNumber(TextOf(record[2]))));
    if (account > 0 && field) LookWhetherNamed(record, account, *field);
    findings_.CountRecord();
    Pass(Piece::kRecord, record);
    return false;
  }

  void LookWhetherNamed(const CsvFields& record, Long account, Long field) {
    const Long account_position = tables_.AccountPosition(account);
    const Long field_position = tables_.FieldPosition(field);
    if (!date_ || account_position == 0 || field_position == 0) return;
    if (places_.Add(account_position, *date_, field_position)) return;
    findings_.Found(
        record[0].line, 0, "", fmt::format("{}, {}, {}", TextOf(record[0]), DateText(*date_), field),
        {Effect::kSilent, NamedBefore(static_cast<eMath>(head_.math)), "leave one of them out, unless both are meant"});
  }

  static constexpr Long kChangesDate = -1;
  static constexpr Long kUnknown = 0;

  // The number of the account, kUnknown or kChangesDate.
  Long LookAtAccount(const CsvField& field) {
    if (head_.by_code) {
      if (TrimBoth(TextOf(field)).empty()) return kChangesDate;
      findings_.Look(field, 1, "account",
                     CodeTrouble(tables_, file_.Encoding(), file_.IsEncodingFoundOut(), field.bytes));
      return tables_.AccountOfCode(CutCode(TextOf(field)));
    }
    const auto number = findings_.Whole<Long>(field, 1, "account");
    if (!number) return kUnknown;
    if (*number < 1) return LookAtNoAccount(field, *number);
    if (tables_.AccountPosition(*number) > 0) return *number;
    findings_.Found(field, 1, "account", {Effect::kAudit, "is no account number of the book", ""});
    return kUnknown;
  }

  // A text that is no number counts as 0 to the import, and so as a change of the date. In a file of lines it is looked
  // at as what it was meant for.
  Long LookAtNoAccount(const CsvField& field, Long number) {
    if (number != 0 || !is_of_lines_ || !LooseNumberTrouble(TextOf(field))) return kChangesDate;
    findings_.Found(field, 1, "account",
                    {Effect::kSilent, "is read as a change of the date: the file tells of accounts by number", ""});
    return kUnknown;
  }

  void LookAtDateChange(const CsvFields& record) {
    LookWhetherNumbersFit(record);
    const std::size_t parts = record.size() - kRecordFields;
    if (parts != kDateFields) {
      date_.reset();
      if (parts == 0) return Pass(Piece::kDate, record);
      if (is_of_lines_ && !AtEnd()) return WrongCount(record, kRecordFields + kDateFields);
      findings_.Found(
          record.front(), 0, "",
          {Effect::kStop, "changes the date, and the file ends before the date does", "write month, day and year"});
      return Pass(Piece::kDate, record);
    }
    findings_.NextRecord();  // as the import counts
    const auto month = findings_.Whole<Integer>(record[3], 4, "month");
    const auto day = findings_.Whole<Integer>(record[4], 5, "day");
    const auto year = findings_.Whole<Integer>(record[5], 6, "year");
    date_.reset();
    if (month && day && year) LookAtDate(record, {*month, *day, *year});
    Pass(Piece::kDate, record);
  }

  void LookAtDate(const CsvFields& record, const CsvDate& date) {
    if (date.month == kCsvPeriodMark) return LookAtPeriod(record, date);
    const auto trouble = DateTrouble(masterfile_, FixYear(date.year), date.month, date.day);
    if (findings_.Look(record[5], 6, "year", trouble) && trouble->effect == Effect::kAudit) return;
    date_ = LevelOf(masterfile_, date);
  }

  // The audit takes a period's number for a day of the month before the year's first; the import takes it for a month,
  // and looks no further.
  void LookAtPeriod(const CsvFields& record, const CsvDate& date) {
    const Integer year = FixYear(date.year);
    if (!masterfile_.DateValid(DateFromParts(year, date.month, date.day))) {
      findings_.Found(record[5], 6, "year",
                      {Effect::kAudit, "is the year of a period, which the audit asks about", ""});
    }
    if (masterfile_.DateValid(DateFromParts(year, date.day, 1))) {
      date_ = LevelOf(masterfile_, {date.day, 1, date.year});
    } else {
      findings_.Found(
          record[4], 5, "day",
          {Effect::kStop, "is a period's number that makes no date of the book: the import ends at its first record",
           "write a period of the book's years"});
    }
  }

  Masterfile& masterfile_;
  const CsvLookRequest& request_;
  BookTables tables_;
  FigurePlaces places_;
  CsvFile file_;
  CsvFindings findings_;
  CsvHead head_;
  bool is_of_lines_ = false;
  std::optional<Date> date_;  // of the records under way; none where the file's is none of the book
};

}  // namespace

LookTally LookAtCsv(Masterfile& masterfile, const CsvLookRequest& request, FindingListener& listener) {
  return CsvLookRun(masterfile, request, listener).Run();
}

}  // namespace tallybook::inspect
