#include "tallybook/inspect/DelimitedLook.h"

#include <algorithm>
#include <array>
#include <fmt/format.h>
#include <limits>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "base/Dates.h"
#include "base/ModParse.h"
#include "base/Narrow.h"
#include "host/FiscalCalendar.h"
#include "host/Masterfile.h"
#include "import/TextImport.h"
#include "support/WinAPI.h"
#include "tallybook/application/LineEnds.h"
#include "tallybook/inspect/BookTables.h"
#include "tallybook/inspect/FigurePlaces.h"
#include "tallybook/inspect/Troubles.h"

namespace tallybook::inspect {

namespace {

struct Pair {
  Integer column = 0;  // of the field's number; the value stands behind it
  std::string_view field;
  std::string_view value;
  bool operator==(const Pair&) const = default;
};

// The pairs of a line, from a field on, as far as they go.
void FindPairs(LineFields fields, std::size_t first, std::vector<Pair>& pairs) {
  pairs.clear();
  for (std::size_t i = first; i < fields.size(); i += 2) {
    pairs.push_back(
        {static_cast<Integer>(i + 1), fields[i], i + 1 < fields.size() ? fields[i + 1] : std::string_view()});
  }
}

bool IsComment(std::string_view line) {
  const std::size_t first = line.find_first_not_of(" \t\n");
  return first != std::string_view::npos && line[first] == ';';
}

class DelimitedLookRun {
 public:
  DelimitedLookRun(Masterfile& masterfile, const DelimitedLookRequest& request, FindingListener& listener)
      : masterfile_(masterfile),
        request_(request),
        listener_(listener),
        tables_(masterfile),
        places_(tables_.Accounts(), tables_.Fields()),
        first_pair_(request.form.date_in_one_field ? 2 : 4),
        file_(request.file, request.form) {}

  LookTally Run() {
    masterfile_.BeginProgress("Looking at the Import File");
    masterfile_.SetProgressCancelEnabled(true);
    while (!tally_.cancelled && file_.Next()) {
      LookAtLine(file_.Line());
      listener_.Passed(Piece::kRecord, file_.Raw(), std::exchange(line_has_findings_, false));
      masterfile_.SetProgressFraction(file_.Share());
      tally_.cancelled = masterfile_.ProgressCancelled();
    }
    masterfile_.EndProgress();
    return tally_;
  }

 private:
  // --- Findings ------------------------------------------------------------------------------------------------------

  void Found(Integer column, const Text& name, const Text& text, const Trouble& trouble) {
    ++tally_.findings[static_cast<std::size_t>(trouble.effect)];
    line_has_findings_ = true;
    listener_.Found({file_.Number(), record_, column, name, Cut(text), trouble.effect, trouble.reason, trouble.help});
  }
  // True where there was one.
  bool Look(Integer column, const Text& name, const Text& text, const std::optional<Trouble>& trouble) {
    if (trouble) Found(column, name, text, *trouble);
    return trouble.has_value();
  }
  [[nodiscard]] Text TextOf(std::string_view bytes) { return file_.TextOf(bytes); }

  // --- A line --------------------------------------------------------------------------------------------------------

  void LookAtLine(std::string_view line) {
    const LineFields audited = audited_(line);
    const bool audit_passes = std::ranges::none_of(audited, HasText);
    if (!audit_passes) {
      ++record_;
      ++tally_.records;
    }
    if (std::ranges::all_of(audited, IsBlank)) return LookAtBlankLine(line, audit_passes);
    LookAtWholeLine(line);
    LookAtDate(audited);
    LookAtAccount(audited, line);
    FindPairs(audited, first_pair_, pairs_);
    LookAtPairs(line);
  }

  // The audit passes over such a line, but for one that begins with the line feed of the line before; to the import
  // each is a record of the date that no parts make.
  void LookAtBlankLine(std::string_view line, bool audit_passes) {
    const Text what = IsComment(line) ? "is a comment, which " : "has no text, which ";
    const Text text = TextOf(line.substr(std::min(line.find_first_not_of('\n'), line.size())));
    const Text help = "take the line away";
    if (audit_passes) {
      Found(0, "", text,
            {Effect::kStop, what + "the audit passes over and the import takes for a record without a date", help});
    } else {
      Found(0, "", text, {Effect::kAudit, what + "counts as a record without a date", help});
    }
  }

  void LookAtWholeLine(std::string_view line) {
    if (std::ranges::count(line, '"') % 2 != 0) {
      Found(0, "", TextOf(line),
            {Effect::kSilent, "has a quote that is never closed: separators behind it are text", "close the quote"});
    }
    if (audited_.HasMore()) {
      Found(0, "", TextOf(line),
            {Effect::kSilent, fmt::format("has more than {} fields; the rest is dropped", kMostFields),
             "make two lines of it"});
    }
  }

  // --- The date ------------------------------------------------------------------------------------------------------

  void LookAtDate(LineFields fields) {
    date_.reset();
    const LineDate date = file_.DateOf(fields);
    if (date.has_more) {
      Found(1, "date", date.text,
            {Effect::kSilent, "has more than three parts; the rest is passed over", "write the date alone"});
    }
    std::array<Integer, 3> numbers{};
    for (std::size_t i = 0; i < date.parts.size(); ++i) {
      using Limits = std::numeric_limits<Integer>;
      const bool in_one_field = request_.form.date_in_one_field;
      auto trouble = LooseWholeTrouble(date.parts[i], Limits::min(), Limits::max());
      if (trouble && in_one_field) trouble->help = "put a slash, a point or a blank between the parts";
      const auto column = static_cast<Integer>(in_one_field ? 1 : i + 1);
      if (Look(column, "date", date.text, trouble) && trouble->effect == Effect::kStop) return;
      numbers[i] = static_cast<Integer>(LeadingLong(date.parts[i]));
    }
    LookAtDateOf(InOrder(numbers, request_.date_order), date.text);
  }

  void LookAtDateOf(const OrderedDate& date, const Text& text) {
    const auto trouble = DateTrouble(masterfile_, date.year, date.month, date.day);
    if (Look(1, "date", text, trouble) && trouble->effect == Effect::kAudit) return;
    const Date day = DateFromParts(date.year, date.month, date.day);
    date_ = masterfile_.FiscalCalendar().LevelDate(day, masterfile_.DataLevel());
  }

  // --- The account ---------------------------------------------------------------------------------------------------

  void LookAtAccount(LineFields fields, std::string_view line) {
    const std::size_t place = first_pair_ - 1;
    const std::string_view bytes = place < fields.size() ? fields[place] : std::string_view();
    const auto column = static_cast<Integer>(place + 1);
    auto trouble = CodeTrouble(tables_, file_.Encoding(), file_.IsEncodingFoundOut(), bytes);
    if (trouble && place >= fields.size() && line.find(';') != std::string_view::npos)
      trouble->help = "write commas between the fields: a semicolon begins a comment, which ends the line";
    Look(column, "account", TextOf(bytes), trouble);
    account_ = tables_.AccountOfCode(CutCode(TextOf(bytes)));
  }

  // --- The pairs -----------------------------------------------------------------------------------------------------

  void LookAtPairs(std::string_view line) {
    for (std::size_t i = 0; i < pairs_.size(); ++i) {
      const Pair& pair = pairs_[i];
      if (pair.field.empty() && pair.value.empty()) {
        TellDropped(pair, pairs_.size() - i - 1, "an empty pair ends the line's pairs");
        break;
      }
      LookAtPair(pair, pairs_.size() - i - 1);
    }
    if (line.find(';') != std::string_view::npos) LookAtComment(line);
  }

  void LookAtPair(const Pair& pair, std::size_t behind) {
    const auto value_column = static_cast<Integer>(pair.column + 1);
    const Text field(pair.field);
    if (!Look(pair.column, "field", field, StrictWholeTrouble(field))) LookAtFieldNumber(pair);
    if (pair.value.empty()) {
      Found(value_column, "value", field,
            {Effect::kSilent,
             behind == 0 ? Text("has no value, and is passed over")
                         : "has no value, and ends the line's pairs: " + Behind(behind),
             "write a value, or take the field away"});
    } else {
      const Text value(pair.value);
      const bool is_number = !Look(value_column, "value", TextOf(pair.value), StrictNumberTrouble(value));
      if (is_number && request_.math != eMath::mReplace)
        Look(value_column, "value", TextOf(pair.value), SumTrouble(LeadingNumber(value)));
    }
  }

  static Text Behind(std::size_t count) {
    return count == 1 ? "1 pair behind it is dropped" : fmt::format("{} pairs behind it are dropped", count);
  }

  void TellDropped(const Pair& pair, std::size_t behind, const Text& why) {
    if (behind > 0)
      Found(pair.column, "field", "", {Effect::kSilent, why + ": " + Behind(behind), "take the empty fields away"});
  }

  void LookAtFieldNumber(const Pair& pair) {
    const Text field(pair.field);
    const Long number = WholeLongText(field);
    if (number < 1) {
      Found(pair.column, "field", field, {Effect::kStop, "is no field number: they count from 1", ""});
      return;
    }
    Look(pair.column, "field", field, FieldTrouble(tables_, number, request_.system_fields));
    LookWhetherNamed(pair, number);
  }

  void LookWhetherNamed(const Pair& pair, Long number) {
    const Long account = tables_.AccountPosition(account_);
    const Long field = tables_.FieldPosition(number);
    if (!date_ || account == 0 || field == 0 || pair.value.empty() || places_.Add(account, *date_, field)) return;
    Found(pair.column, "field", fmt::format("{}, {}", DateText(*date_), number),
          {Effect::kSilent, NamedBefore(request_.math), "leave one of them out, unless both are meant"});
  }

  // A semicolon ends the line in the audit only: the import reads on, and a comment then counts as fields.
  void LookAtComment(std::string_view line) {
    FindPairs(read_(line), first_pair_, read_pairs_);
    for (std::size_t i = 0; i < read_pairs_.size(); ++i) {
      const Pair& pair = read_pairs_[i];
      if (pair.field.empty() || pair.value.empty()) return;
      if (i < pairs_.size() && pair == pairs_[i]) continue;
      const Text both = TextOf(Text(pair.field).append(",").append(pair.value));
      if (StrictWholeTrouble(Text(pair.field)) || StrictNumberTrouble(Text(pair.value))) {
        Found(pair.column, "field", both,
              {Effect::kStop, "is broken by a comment: the audit ends at a semicolon, and the import reads on",
               "take the comment away"});
        return;
      }
      Found(pair.column, "field", both,
            {Effect::kSilent, "stands in a comment, which the audit passes over and the import reads",
             "take the comment away"});
    }
  }

  Masterfile& masterfile_;
  const DelimitedLookRequest& request_;
  FindingListener& listener_;
  BookTables tables_;
  FigurePlaces places_;
  std::size_t first_pair_;  // the fields in front of the pairs
  DelimitedFile file_;
  LineSplitter audited_{";"};  // as the audit reads a line
  LineSplitter read_{""};      // as the import does
  std::vector<Pair> pairs_;    // of the line, as the audit reads it
  std::vector<Pair> read_pairs_;

  long long record_ = 0;
  std::optional<Date> date_;  // of the line; none where the file's is none of the book
  Long account_ = 0;          // of the line; 0 where the file's is none of the book
  bool line_has_findings_ = false;
  LookTally tally_;
};

}  // namespace

LookTally LookAtDelimited(Masterfile& masterfile, const DelimitedLookRequest& request, FindingListener& listener) {
  if (!request.form.any_line_end) {
    if (const auto bad_ends = application::BadLineEnds(request.file)) {
      listener.Found({1, 0, 0, "", "", Effect::kStop, *bad_ends, "have any line end read, or write CR LF"});
      LookTally tally;
      tally.findings[static_cast<std::size_t>(Effect::kStop)] = 1;
      return tally;
    }
  }
  return DelimitedLookRun(masterfile, request, listener).Run();
}

}  // namespace tallybook::inspect
