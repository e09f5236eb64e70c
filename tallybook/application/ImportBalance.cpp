#include "tallybook/application/ImportBalance.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <nlohmann/json.hpp>
#include <set>
#include <string>
#include <utility>

#include "base/Dates.h"
#include "exchange/CDataExchange.h"
#include "host/FiscalCalendar.h"
#include "tallybook/application/AtomicImport.h"
#include "tallybook/application/Counts.h"
#include "tallybook/application/PreviewReport.h"
#include "tallybook/application/ReferenceFactory.h"
#include "tallybook/application/Shown.h"

namespace tallybook::application {

namespace {

using BalanceJsonObject = nlohmann::ordered_json;

constexpr Date kWeek53 = 53;
constexpr Date kDaysOfWeek = 7;

struct Unit {
  Date first = 0;
  Date last = 0;
};

// The book's own week or period that holds a date.
Unit UnitOf(Masterfile& masterfile, Date date) {
  FiscalCalendar& calendar = masterfile.FiscalCalendar();
  const Date last = calendar.LevelDate(date, masterfile.DataLevel());
  return {.first = calendar.PriorPeriodEnd() + 1, .last = last};
}

// One for each pair of fields, by number.
FieldTallies ByNumber(const FieldTallies& tallies) {
  std::map<std::pair<Long, Long>, FieldTally> sums;
  for (const FieldTally& tally : tallies) {
    FieldTally& sum = sums[{tally.in_file, tally.in_database}];
    sum.in_file = tally.in_file;
    sum.in_database = tally.in_database;
    sum.applied += tally.applied;
    sum.applied_total += tally.applied_total;
    sum.not_mapped += tally.not_mapped;
    sum.not_mapped_total += tally.not_mapped_total;
  }
  FieldTallies told;
  for (const auto& [numbers, sum] : sums) told.push_back(sum);
  return told;
}

FileBalance BalanceOfFile(const QDXFileImport& file, engine::Book& book) {
  return {.file = file.file,
          .imported = file.stored,
          .read = file.read,
          .applied = file.applied,
          .not_mapped = file.not_mapped,
          .refused = file.refused,
          .fields = ByNumber(file.field_tallies),
          .partial_units = PartialUnitsOf(book, file.first_date, file.last_date),
          .weeks_53 = Weeks53Of(book, file.dates)};
}

Text FieldLine(const FieldTally& field) {
  const long long in_file = field.applied + field.not_mapped;
  const Text total = FigureText(field.applied_total + field.not_mapped_total) + " in the file";
  if (field.in_database == 0) {
    return "  field " + std::to_string(field.in_file) + ", not mapped: " + Counted(in_file, "figure") + ", " + total;
  }
  const Text of = field.not_mapped == 0 ? Counted(in_file, "figure")
                                        : WithCommas(field.applied) + " of " + Counted(in_file, "figure");
  return "  field " + std::to_string(field.in_file) + " to field " + std::to_string(field.in_database) + ": " + of +
         ", " + total + ", " + FigureText(field.applied_total) + " in the book";
}

Text RangeText(Date first, Date last) {
  return DateText(first) + " to " + DateText(last);
}

void AddDateLines(const FileBalance& balance, std::vector<Text>& lines) {
  for (const PartialUnit& unit : balance.partial_units) {
    lines.push_back("  " + OnOneLine(balance.file) + (unit.at_start ? " begins at " : " ends at ") +
                    DateText(unit.edge) + ", within " + RangeText(unit.first, unit.last));
  }
  for (const LongYearWeek& week : balance.weeks_53) {
    lines.push_back("  " + OnOneLine(balance.file) + " has figures of " + RangeText(week.first, week.last) +
                    ", the 53rd week of " + week.year);
  }
}

// JSON has no form for what is no number.
void PutTotal(BalanceJsonObject& json, const char* name, Double total) {
  if (std::isfinite(total)) json[name] = total;
}

BalanceJsonObject JsonOfCounts(const FileBalance& balance) {
  BalanceJsonObject json = {{"read", balance.read},
                            {"applied", balance.applied},
                            {"not_mapped", balance.not_mapped},
                            {"refused", balance.refused}};
  json["field_balances"] = BalanceJsonObject::array();
  for (const FieldTally& field : balance.fields) {
    BalanceJsonObject& row = json["field_balances"].emplace_back();
    row["file_field"] = field.in_file;
    if (field.in_database != 0) row["field"] = field.in_database;
    row["applied"] = field.applied;
    row["not_mapped"] = field.not_mapped;
    PutTotal(row, "total_in_file", field.applied_total + field.not_mapped_total);
    PutTotal(row, "total_in_book", field.applied_total);
  }
  return json;
}

BalanceJsonObject JsonOfFile(const FileBalance& balance) {
  BalanceJsonObject json = {{"file", balance.file}, {"imported", balance.imported}};
  json.update(JsonOfCounts(balance));
  json["partial"] = BalanceJsonObject::array();
  for (const PartialUnit& unit : balance.partial_units) {
    json["partial"].push_back({{"first", DateText(unit.first)},
                               {"last", DateText(unit.last)},
                               {unit.at_start ? "begins" : "ends", DateText(unit.edge)}});
  }
  json["weeks_53"] = BalanceJsonObject::array();
  for (const LongYearWeek& week : balance.weeks_53) {
    json["weeks_53"].push_back({{"year", week.year}, {"first", DateText(week.first)}, {"last", DateText(week.last)}});
  }
  return json;
}

}  // namespace

std::vector<PartialUnit> PartialUnitsOf(Masterfile& masterfile, Date first, Date last) {
  std::vector<PartialUnit> partial;
  if (masterfile.DataLevel() == kDayLevel || first == kNoDate) return partial;
  const Unit begin = UnitOf(masterfile, first);
  if (begin.first < first) {
    partial.push_back({.first = begin.first, .last = begin.last, .at_start = true, .edge = first});
  }
  const Unit end = UnitOf(masterfile, last);
  if (last < end.last) partial.push_back({.first = end.first, .last = end.last, .at_start = false, .edge = last});
  return partial;
}

// Of a year that has one week more than others, that week: a record of its own, or the end of the last period.
std::vector<LongYearWeek> Weeks53Of(Masterfile& masterfile, const std::set<Date>& dates) {
  std::vector<LongYearWeek> weeks;
  const Integer level = masterfile.DataLevel();
  if (level == kDayLevel) return weeks;
  std::set<Date> seen;
  for (const Date date : dates) {
    const Unit unit = UnitOf(masterfile, date);
    const Integer year = masterfile.FiscalCalendar().FiscalYear();
    const Date days = unit.last - masterfile.YearStart(year) + 1;
    const bool is_week_53 =
        level == kWeekLevel ? std::ceil(days / kDaysOfWeek) >= kWeek53 : days >= kWeek53 * kDaysOfWeek;
    if (!is_week_53 || !seen.insert(unit.last).second) continue;
    weeks.push_back({.year = std::to_string(year), .first = unit.last - kDaysOfWeek + 1, .last = unit.last});
  }
  return weeks;
}

std::vector<FileBalance> BalancesOf(const QDXImportRecord& record, engine::Book& book) {
  std::vector<FileBalance> balances;
  for (const QDXDefinitionImport& definition : record.definitions) {
    for (const QDXFileImport& file : definition.files) {
      if (file.begun) balances.push_back(BalanceOfFile(file, book));
    }
  }
  return balances;
}

long long FiguresRead(const TextImportTally& tally) {
  return std::max(tally.read, tally.applied);
}

Text GrownText(const TextImportTally& tally) {
  if (tally.applied <= tally.read) return "";
  return "the file has grown while it was imported: " + Counted(tally.applied - tally.read, "figure") +
         " that the audit has not seen came in as well";
}

FileBalance BalanceOf(const Text& file, const TextImportTally& tally, engine::Book& book) {
  return {.file = file,
          .imported = tally.stored,
          .read = FiguresRead(tally),
          .applied = tally.applied,
          .not_mapped = 0,
          .refused = FiguresRead(tally) - tally.applied,
          .fields = tally.field_tallies,
          .partial_units = {},
          .weeks_53 = Weeks53Of(book, tally.dates)};
}

void KeepNone(std::vector<FileBalance>& balances) {
  for (FileBalance& balance : balances) {
    balance.imported = false;
    balance.refused += std::exchange(balance.applied, 0);
    balance.fields.clear();
  }
}

FileBalance SumOf(const std::vector<FileBalance>& balances) {
  FileBalance sum;
  sum.imported = !balances.empty();
  for (const FileBalance& balance : balances) {
    sum.imported = sum.imported && balance.imported;
    sum.read += balance.read;
    sum.applied += balance.applied;
    sum.not_mapped += balance.not_mapped;
    sum.refused += balance.refused;
    sum.fields.insert(sum.fields.end(), balance.fields.begin(), balance.fields.end());
  }
  sum.fields = ByNumber(sum.fields);
  if (balances.size() == 1) sum.file = balances.front().file;
  return sum;
}

std::vector<Text> BalanceLines(const std::vector<FileBalance>& balances) {
  if (balances.empty()) return {};
  const FileBalance sum = SumOf(balances);
  std::vector<Text> lines = {"Balance: " + Counted(sum.read, "figure") + " read = " + WithCommas(sum.applied) +
                             " applied + " + WithCommas(sum.not_mapped) + " not mapped + " + WithCommas(sum.refused) +
                             " refused"};
  for (const FieldTally& field : sum.fields) lines.push_back(FieldLine(field));
  for (const FileBalance& balance : balances) AddDateLines(balance, lines);
  return lines;
}

std::vector<Text> ClosingLines(const std::vector<FileBalance>& balances, bool kept) {
  std::vector<Text> lines = BalanceLines(balances);
  if (!kept) lines.insert(lines.begin(), NothingKeptLine());
  return lines;
}

BalancedReports::BalancedReports(ReferenceFactory& factory, const CDataExchange& exchange, engine::Book& book)
    : factory_(factory) {
  factory_.SetReportClosing([&exchange, &book] { return BalanceLines(BalancesOf(exchange.LastQDXImport(), book)); });
}

BalancedReports::~BalancedReports() {
  factory_.SetReportClosing({});
}

Text BalanceJson(const std::vector<FileBalance>& balances, bool done) {
  BalanceJsonObject json = {{"done", done}};
  json.update(JsonOfCounts(SumOf(balances)));
  json["balanced_files"] = BalanceJsonObject::array();
  for (const FileBalance& balance : balances) json["balanced_files"].push_back(JsonOfFile(balance));
  constexpr int kIndent = 2;
  return json.dump(kIndent, ' ', false, BalanceJsonObject::error_handler_t::replace) + "\n";
}

}  // namespace tallybook::application
