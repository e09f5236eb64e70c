#include "tallybook/inspect/DelimitedLook.h"

#include <algorithm>
#include <array>
#include <fmt/format.h>
#include <limits>
#include <optional>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "base/Dates.h"
#include "base/ModParse.h"
#include "base/Narrow.h"
#include "base/Texts.h"
#include "host/FiscalCalendar.h"
#include "host/Masterfile.h"
#include "import/LineReader.h"
#include "import/TextImport.h"
#include "platform/FileSystem.h"
#include "platform/Platform.h"
#include "support/EncodedText.h"
#include "support/WinAPI.h"
#include "tallybook/application/LineEnds.h"
#include "tallybook/inspect/BookTables.h"
#include "tallybook/inspect/FigurePlaces.h"
#include "tallybook/inspect/RawText.h"
#include "tallybook/inspect/Troubles.h"

namespace tallybook::inspect {

namespace {

constexpr std::size_t kMostFields = 256;
constexpr std::string_view kFieldSeparators = ",\t";
constexpr std::string_view kDateSeparators = "/. ";
constexpr Integer kPeriodMark = -1;

using Fields = std::vector<std::string>;  // from the first to the last that has text

// The fields of a line up to a stopper outside quotes.
Fields Split(std::string_view line, std::string_view separators, std::string_view stoppers, std::size_t most) {
  SplitQuoted split(separators, stoppers);
  std::vector<std::string_view> views(most);
  split(line, views);
  while (!views.empty() && views.back().empty()) views.pop_back();
  return {views.begin(), views.end()};
}

struct Pair {
  Integer column = 0;  // of the field's number; the value stands behind it
  Text field;
  Text value;
  bool operator==(const Pair&) const = default;
};

// The pairs of a line, from a field on, as far as they go.
std::vector<Pair> PairsFrom(const Fields& fields, std::size_t first) {
  std::vector<Pair> pairs;
  for (std::size_t i = first; i < fields.size(); i += 2) {
    pairs.push_back({static_cast<Integer>(i + 1), fields[i], i + 1 < fields.size() ? fields[i + 1] : Text()});
  }
  return pairs;
}

bool IsBlank(std::string_view text) {
  return text.find_first_not_of(" \t\n") == std::string_view::npos;
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
        first_pair_(request.date_in_one_field ? 2 : 4),
        raw_(request.file) {}

  LookTally Run() {
    masterfile_.BeginProgress("Looking at the Import File");
    masterfile_.SetProgressCancelEnabled(true);
    const auto bad_ends = request_.any_line_end ? std::nullopt : application::BadLineEnds(request_.file);
    if (bad_ends) {
      Found(0, "", "", {Effect::kStop, *bad_ends, "have any line end read, or write CR LF"});
    } else {
      ReadLines();
    }
    masterfile_.EndProgress();
    return tally_;
  }

 private:
  void ReadLines() {
    std::optional<application::AnyLineEnd> any_line_end;
    if (request_.any_line_end) any_line_end.emplace();
    FileStream source(ThePlatform().files->Open(request_.file, Access::kRead, Sharing::kShared, Creation::kMustExist));
    encoding_.emplace(source, request_.encoding);
    found_out_ = request_.encoding == TextEncoding::kDetect && encoding_->Start() == 0;
    LineReader lines(source, encoding_->Start());
    std::string_view line;
    while (!tally_.cancelled && lines.Next(line)) {
      const std::string raw = RawOf(line);
      LookAtLine(line);
      listener_.Passed(Piece::kRecord, raw, std::exchange(line_has_findings_, false));
      masterfile_.SetProgressFraction(
          static_cast<Single>(static_cast<Double>(lines.Position()) / static_cast<Double>(lines.Size())));
      tally_.cancelled = masterfile_.ProgressCancelled();
    }
  }

  // The line as it stands in the file, with its end; the reader has passed over the empty lines before it.
  std::string RawOf(std::string_view line) {
    for (;;) {
      line_ = raw_.Line();
      const std::string_view raw = raw_.TakeLine();
      std::string_view text = raw.substr(0, raw.find_last_not_of("\r\n") + 1);
      if (text.starts_with("\xEF\xBB\xBF") && encoding_->Start() > 0) text.remove_prefix(3);
      if (raw.empty() || text == line || "\n" + std::string(text) == line) return std::string(raw);
    }
  }

  // --- Findings ------------------------------------------------------------------------------------------------------

  void Found(Integer column, const Text& name, const Text& text, const Trouble& trouble) {
    ++tally_.findings[static_cast<std::size_t>(trouble.effect)];
    line_has_findings_ = true;
    listener_.Found({line_, record_, column, name, Cut(text), trouble.effect, trouble.reason, trouble.help});
  }
  // True where there was one.
  bool Look(Integer column, const Text& name, const Text& text, const std::optional<Trouble>& trouble) {
    if (trouble) Found(column, name, text, *trouble);
    return trouble.has_value();
  }
  [[nodiscard]] Text TextOf(std::string_view bytes) { return encoding_->Decode(bytes); }

  // --- A line --------------------------------------------------------------------------------------------------------

  void LookAtLine(std::string_view line) {
    const Fields audited = Split(line, kFieldSeparators, ";", kMostFields);
    const bool audit_passes = std::ranges::none_of(audited, [](const std::string& field) { return HasText(field); });
    if (!audit_passes) {
      ++record_;
      ++tally_.records;
    }
    if (std::ranges::all_of(audited, IsBlank)) return LookAtBlankLine(line, audit_passes);
    LookAtWholeLine(line);
    LookAtDate(audited);
    LookAtAccount(audited);
    LookAtPairs(line, PairsFrom(audited, first_pair_));
  }

  // The audit passes over such a line, but for one that begins with the line feed of the line before; to the import each
  // is a record of the date that no parts make.
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
    std::vector<std::string_view> fields(kMostFields + 1);
    SplitQuoted split(kFieldSeparators, ";");
    split(line, fields);
    if (!fields.back().empty()) {
      Found(0, "", TextOf(line),
            {Effect::kSilent, fmt::format("has more than {} fields; the rest is dropped", kMostFields),
             "make two lines of it"});
    }
  }

  // --- The date ------------------------------------------------------------------------------------------------------

  void LookAtDate(const Fields& fields) {
    date_.reset();
    Fields parts = fields;
    if (request_.date_in_one_field) {
      parts = Split(fields.empty() ? std::string() : fields.front(), kDateSeparators, "", kMostFields);
      if (parts.size() > 3) {
        Found(1, "date", DateTextOf(fields),
              {Effect::kSilent, "has more than three parts; the rest is passed over", "write the date alone"});
      }
    }
    parts.resize(3);
    LookAtDateParts({TextOf(parts[0]), TextOf(parts[1]), TextOf(parts[2])}, DateTextOf(fields));
  }

  // The date as it stands; the first field may begin with the line feed of the line before.
  [[nodiscard]] Text DateTextOf(const Fields& fields) {
    Text text;
    for (std::size_t i = 0; i < fields.size() && i < (request_.date_in_one_field ? 1U : 3U); ++i) {
      text += (i == 0 ? "" : ",") + TextOf(fields[i]);
    }
    return text.starts_with('\n') ? text.substr(1) : text;
  }

  void LookAtDateParts(const std::array<Text, 3>& parts, const Text& text) {
    std::array<Integer, 3> numbers{};
    for (std::size_t i = 0; i < parts.size(); ++i) {
      using Limits = std::numeric_limits<Integer>;
      auto trouble = LooseWholeTrouble(parts[i], Limits::min(), Limits::max());
      if (trouble && request_.date_in_one_field) trouble->help = "put a slash, a point or a blank between the parts";
      const auto column = static_cast<Integer>(request_.date_in_one_field ? 1 : i + 1);
      if (Look(column, "date", text, trouble) && trouble->effect == Effect::kStop) return;
      numbers[i] = static_cast<Integer>(LeadingLong(parts[i]));
    }
    LookAtDateOf(numbers, text);
  }

  void LookAtDateOf(const std::array<Integer, 3>& numbers, const Text& text) {
    auto [year, month, day] = numbers;
    if (request_.date_order == kMonthDayYear) {
      std::tie(month, day, year) = std::tie(numbers[0], numbers[1], numbers[2]);
    } else if (request_.date_order == kDayMonthYear) {
      std::tie(day, month, year) = std::tie(numbers[0], numbers[1], numbers[2]);
    }
    year = FixYear(year);
    if (month == kPeriodMark) month = std::exchange(day, Integer{1});
    const auto trouble = DateTrouble(masterfile_, year, month, day);
    if (Look(1, "date", text, trouble) && trouble->effect == Effect::kAudit) return;
    date_ = masterfile_.FiscalCalendar().LevelDate(DateFromParts(year, month, day), masterfile_.DataLevel());
  }

  // --- The account ---------------------------------------------------------------------------------------------------

  void LookAtAccount(const Fields& fields) {
    const std::size_t place = first_pair_ - 1;
    const Text bytes = place < fields.size() ? fields[place] : Text();
    const auto column = static_cast<Integer>(place + 1);
    Look(column, "account", TextOf(bytes), CodeTrouble(tables_, *encoding_, found_out_, bytes));
    account_ = tables_.AccountOfCode(CutCode(TextOf(bytes)));
  }

  // --- The pairs -----------------------------------------------------------------------------------------------------

  void LookAtPairs(std::string_view line, const std::vector<Pair>& pairs) {
    for (std::size_t i = 0; i < pairs.size(); ++i) {
      const Pair& pair = pairs[i];
      if (pair.field.empty() && pair.value.empty()) {
        TellDropped(pair, pairs.size() - i - 1, "an empty pair ends the line's pairs");
        break;
      }
      LookAtPair(pair, pairs.size() - i - 1);
    }
    LookAtComment(line, pairs);
  }

  void LookAtPair(const Pair& pair, std::size_t behind) {
    const auto value_column = static_cast<Integer>(pair.column + 1);
    const auto field_trouble = StrictWholeTrouble(pair.field);
    if (!Look(pair.column, "field", pair.field, field_trouble)) LookAtFieldNumber(pair);
    if (pair.value.empty()) {
      Found(value_column, "value", pair.field,
            {Effect::kSilent,
             behind == 0 ? Text("has no value, and is passed over")
                         : "has no value, and ends the line's pairs: " + Behind(behind),
             "write a value, or take the field away"});
    } else {
      Look(value_column, "value", TextOf(pair.value), StrictNumberTrouble(pair.value));
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
    const Long number = WholeLongText(pair.field);
    if (number < 1) {
      Found(pair.column, "field", pair.field, {Effect::kStop, "is no field number: they count from 1", ""});
      return;
    }
    Look(pair.column, "field", pair.field, FieldTrouble(tables_, number, request_.system_fields));
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
  void LookAtComment(std::string_view line, const std::vector<Pair>& audited) {
    const std::vector<Pair> read = PairsFrom(Split(line, kFieldSeparators, "", kMostFields), first_pair_);
    if (read == audited) return;
    for (std::size_t i = 0; i < read.size(); ++i) {
      const Pair& pair = read[i];
      if (pair.field.empty() || pair.value.empty()) return;
      if (i < audited.size() && pair == audited[i]) continue;
      if (StrictWholeTrouble(pair.field) || StrictNumberTrouble(pair.value)) {
        Found(pair.column, "field", TextOf(pair.field + "," + pair.value),
              {Effect::kStop, "is broken by a comment: the audit ends at a semicolon, and the import reads on",
               "take the comment away"});
        return;
      }
      Found(pair.column, "field", TextOf(pair.field + "," + pair.value),
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
  RawText raw_;
  std::optional<EncodedText> encoding_;
  bool found_out_ = false;  // the encoding, from the file's bytes

  long long line_ = 1;
  long long record_ = 0;
  std::optional<Date> date_;  // of the line; none where the file's is none of the book
  Long account_ = 0;          // of the line; 0 where the file's is none of the book
  bool line_has_findings_ = false;
  LookTally tally_;
};

}  // namespace

LookTally LookAtDelimited(Masterfile& masterfile, const DelimitedLookRequest& request, FindingListener& listener) {
  return DelimitedLookRun(masterfile, request, listener).Run();
}

}  // namespace tallybook::inspect
