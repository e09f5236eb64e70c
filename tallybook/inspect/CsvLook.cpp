#include "tallybook/inspect/CsvLook.h"

#include <algorithm>
#include <fmt/format.h>
#include <iterator>
#include <limits>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "base/Dates.h"
#include "base/Failure.h"
#include "base/Narrow.h"
#include "base/Texts.h"
#include "host/FiscalCalendar.h"
#include "host/Masterfile.h"
#include "tallybook/application/Counts.h"
#include "tallybook/inspect/BookTables.h"
#include "tallybook/inspect/CsvFile.h"
#include "tallybook/inspect/FigurePlaces.h"
#include "tallybook/inspect/Troubles.h"

namespace tallybook::inspect {

namespace {

constexpr std::size_t kHeadFields = 5;
constexpr std::size_t kRecordFields = 3;
constexpr std::size_t kDateFields = 3;
constexpr Integer kPeriodMark = -1;

// The parts of a date as the file has them.
struct FileDate {
  Integer month = 0;
  Integer day = 0;
  Integer year = 0;
};

class CsvLookRun {
 public:
  CsvLookRun(Masterfile& masterfile, const CsvLookRequest& request, FindingListener& listener)
      : masterfile_(masterfile),
        request_(request),
        listener_(listener),
        tables_(masterfile),
        places_(tables_.Accounts(), tables_.Fields()),
        file_(request.file, request.encoding) {}

  LookTally Run() {
    masterfile_.BeginProgress("Looking at the Import File");
    masterfile_.SetProgressCancelEnabled(true);
    if (ReadHead()) ReadRecords();
    masterfile_.EndProgress();
    return tally_;
  }

 private:
  // Of the file, or of the user's patience.
  [[nodiscard]] bool AtEnd() { return tally_.cancelled || file_.AtEnd(); }
  [[nodiscard]] Text TextOf(const CsvField& field) { return file_.TextOf(field); }

  // --- Findings ------------------------------------------------------------------------------------------------------

  void Found(long long line, Integer column, const Text& name, const Text& text, const Trouble& trouble) {
    ++tally_.findings[static_cast<std::size_t>(trouble.effect)];
    piece_has_findings_ = true;
    listener_.Found({line, record_, column, name, Cut(text), trouble.effect, trouble.reason, trouble.help});
  }
  void Found(const CsvField& field, Integer column, const Text& name, const Trouble& trouble) {
    Found(field.line, column, name, TextOf(field), trouble);
  }
  // True where there was one.
  bool Look(const CsvField& field, Integer column, const Text& name, const std::optional<Trouble>& trouble) {
    if (trouble) Found(field, column, name, *trouble);
    return trouble.has_value();
  }

  void Pass(Piece piece, const CsvFields& fields) {
    listener_.Passed(piece, BytesOf(fields), std::exchange(piece_has_findings_, false));
    masterfile_.SetProgressFraction(file_.Share());
    tally_.cancelled = masterfile_.ProgressCancelled();
  }

  // In a run of fields a line means nothing, but the parts of the file are looked at, too, and may read like lines.
  [[nodiscard]] std::string BytesOf(const CsvFields& fields) const {
    if (!is_of_lines_) return AsOneLine(fields);
    std::string bytes;
    for (const CsvField& field : fields) bytes += field.raw;
    return bytes;
  }

  void LookAtQuotes(const CsvFields& fields) {
    for (const CsvField& field : fields) {
      if (field.HasOpenQuote()) {
        Found(field, 0, "",
              {Effect::kSilent, "begins with a quote that is never closed: all behind it is one text",
               "close the quote"});
      } else if (field.EndsInQuote() && !AtEnd()) {
        Found(field, 0, "",
              {Effect::kSilent, "is followed by more than a separator, which counts as a field of its own",
               "put all of the text into the quotes"});
      }
    }
  }

  // A whole number of so many bits; nothing where it does not fit, which has been told.
  template <typename Number>
  std::optional<Number> Whole(const CsvField& field, Integer column, const Text& name) {
    using Limits = std::numeric_limits<Number>;
    const Text text = TextOf(field);
    const auto trouble = LooseWholeTrouble(text, Limits::min(), Limits::max());
    if (Look(field, column, name, trouble) && trouble->effect == Effect::kStop) return std::nullopt;
    return static_cast<Number>(LeadingLong(text));
  }

  // --- The header ----------------------------------------------------------------------------------------------------

  bool ReadHead() {
    CsvFields head;
    file_.TakeInto(head, kHeadFields);
    LookAtQuotes(head);
    const bool sound = LookAtHead(head);
    // The first line of records shows whether the file is one of lines.
    is_of_lines_ = !head.empty() && head.front().line == head.back().line && head.back().EndsLine();
    Pass(Piece::kHead, head);
    return sound;
  }

  bool LookAtHead(const CsvFields& head) {
    if (head.size() < kHeadFields) {
      Found(file_.Line(), 0, "", "",
            {Effect::kStop, "the file ends within its header", "write month, day, year, math and 0 or 1"});
      return false;
    }
    const auto month = Whole<Integer>(head[0], 1, "month");
    const auto day = Whole<Integer>(head[1], 2, "day");
    const auto year = Whole<Integer>(head[2], 3, "year");
    const auto math = Whole<Integer>(head[3], 4, "math");
    const auto by_code = Whole<Integer>(head[4], 5, "by_code");
    if (!month || !day || !year || !math || !by_code) return false;
    by_code_ = *by_code != 0;
    math_ = request_.math == eMath::mDefault ? *math : static_cast<Integer>(request_.math);
    if (!WordOfMath(math_)) {
      Found(head[3], 4, "math",
            {Effect::kStop, "is none of 1 (add), 2 (subtract) and 3 (replace)",
             "write one of them, or say it for the import"});
    }
    return LookAtHeadDate(head, {*month, *day, *year});
  }

  bool LookAtHeadDate(const CsvFields& head, FileDate date) {
    if (date.month == kPeriodMark) {
      if (masterfile_.DataLevel() != kPeriodLevel) {
        Found(head[0], 1, "month", {Effect::kStop, "says that the file is of periods, and the book is not", ""});
        return true;
      }
      if (date.day < 1 || date.day > masterfile_.NumPeriods()) {
        Found(head[1], 2, "day",
              {Effect::kStop, fmt::format("is none of the {} periods of a year", masterfile_.NumPeriods()), ""});
        return true;
      }
      date = {date.day, 1, date.year};
    }
    auto trouble = DateTrouble(masterfile_, FixYear(date.year), date.month, date.day);
    // The import does not ask about this one.
    if (trouble && trouble->effect == Effect::kAudit) trouble->effect = Effect::kStop;
    if (Look(head[2], 3, "year", trouble) && trouble->effect == Effect::kStop) return true;
    SetDate(date);
    return true;
  }

  void SetDate(const FileDate& date) {
    const Date day = DateFromParts(FixYear(date.year), date.month, date.day);
    date_ = masterfile_.FiscalCalendar().LevelDate(day, masterfile_.DataLevel());
  }

  // --- Records -------------------------------------------------------------------------------------------------------

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
    return by_code_ ? TrimBoth(text).empty() : LeadingLong(text) < 1;
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
    ++record_;
    if (record.size() < kRecordFields) return Dropped(record);
    LookAtQuotes(record);
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
      Look(record[1], 2, "field", stop_of(LooseWholeTrouble(TextOf(record[1]), Limits::min(), Limits::max())));
    }
    if (record.size() > 2) Look(record[2], 3, "value", stop_of(LooseNumberTrouble(TextOf(record[2]))));
  }

  // What stands behind the last whole record. An empty line or two do no harm there, and go into no part.
  void Dropped(const CsvFields& record) {
    const bool empty = std::ranges::all_of(record, [](const CsvField& field) { return field.bytes.empty(); });
    if (!empty) {
      Found(record.front(), 0, "",
            {Effect::kSilent, "begins a record that the file ends in, and that is dropped",
             "write account, field and value"});
    }
    LookWhetherNumbersFit(record);
    Pass(Piece::kRecord, empty ? CsvFields() : record);
  }

  void ReadLineOfRecord() {
    CsvFields line = file_.TakeLine();
    if (IsEmptyLine(line)) return ReadEmptyLines(std::move(line));
    ++record_;
    LookAtQuotes(line);
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
      Found(lines.front(), 0, "",
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
    Found(line.front().line, 0, "", text,
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
    const auto field = Whole<Long>(record[1], 2, "field");
    if (field) Look(record[1], 2, "field", FieldTrouble(tables_, *field, true));
    Look(record[2], 3, "value", LooseNumberTrouble(TextOf(record[2])));
    if (account > 0 && field) LookWhetherNamed(record, account, *field);
    ++tally_.records;
    Pass(Piece::kRecord, record);
    return false;
  }

  void LookWhetherNamed(const CsvFields& record, Long account, Long field) {
    const Long account_position = tables_.AccountPosition(account);
    const Long field_position = tables_.FieldPosition(field);
    if (!date_ || account_position == 0 || field_position == 0) return;
    if (places_.Add(account_position, *date_, field_position)) return;
    Found(record[0].line, 0, "", fmt::format("{}, {}, {}", TextOf(record[0]), DateText(*date_), field),
          {Effect::kSilent, NamedBefore(static_cast<eMath>(math_)), "leave one of them out, unless both are meant"});
  }

  static constexpr Long kChangesDate = -1;
  static constexpr Long kUnknown = 0;

  // The number of the account, kUnknown or kChangesDate.
  Long LookAtAccount(const CsvField& field) {
    if (by_code_) {
      if (TrimBoth(TextOf(field)).empty()) return kChangesDate;
      Look(field, 1, "account", CodeTrouble(tables_, file_.Encoding(), file_.IsEncodingFoundOut(), field.bytes));
      return tables_.AccountOfCode(CutCode(TextOf(field)));
    }
    const auto number = Whole<Long>(field, 1, "account");
    if (!number) return kUnknown;
    if (*number < 1) return LookAtNoAccount(field, *number);
    if (tables_.AccountPosition(*number) > 0) return *number;
    Found(field, 1, "account", {Effect::kAudit, "is no account number of the book", ""});
    return kUnknown;
  }

  // A text that is no number counts as 0 to the import, and so as a change of the date. In a file of lines it is looked
  // at as what it was meant for.
  Long LookAtNoAccount(const CsvField& field, Long number) {
    if (number != 0 || !is_of_lines_ || !LooseNumberTrouble(TextOf(field))) return kChangesDate;
    Found(field, 1, "account",
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
      Found(record.front(), 0, "",
            {Effect::kStop, "changes the date, and the file ends before the date does", "write month, day and year"});
      return Pass(Piece::kDate, record);
    }
    ++record_;  // as the import counts
    const auto month = Whole<Integer>(record[3], 4, "month");
    const auto day = Whole<Integer>(record[4], 5, "day");
    const auto year = Whole<Integer>(record[5], 6, "year");
    date_.reset();
    if (month && day && year) LookAtDate(record[5], {*month, *day, *year});
    Pass(Piece::kDate, record);
  }

  // The audit takes a period's number for a day of the month before the year's first; the import takes it as it is meant.
  void LookAtDate(const CsvField& field, const FileDate& date) {
    const bool of_period = date.month == kPeriodMark;
    if (of_period) {
      if (!masterfile_.DateValid(DateFromParts(FixYear(date.year), date.month, date.day))) {
        Found(field, 6, "year", {Effect::kAudit, "is the year of a period, which the audit asks about", ""});
      }
      return SetDate({date.day, 1, date.year});
    }
    const auto trouble = DateTrouble(masterfile_, FixYear(date.year), date.month, date.day);
    if (Look(field, 6, "year", trouble) && trouble->effect == Effect::kAudit) return;
    SetDate(date);
  }

  Masterfile& masterfile_;
  const CsvLookRequest& request_;
  FindingListener& listener_;
  BookTables tables_;
  FigurePlaces places_;
  CsvFile file_;
  bool is_of_lines_ = false;

  bool by_code_ = false;
  Integer math_ = 0;
  std::optional<Date> date_;  // of the records under way; none where the file's is none of the book
  long long record_ = 0;
  bool piece_has_findings_ = false;
  LookTally tally_;
};

}  // namespace

LookTally LookAtCsv(Masterfile& masterfile, const CsvLookRequest& request, FindingListener& listener) {
  return CsvLookRun(masterfile, request, listener).Run();
}

}  // namespace tallybook::inspect
