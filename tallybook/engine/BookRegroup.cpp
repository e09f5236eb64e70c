#include "tallybook/engine/BookRegroup.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>
#include <span>
#include <string>

#include "base/Dates.h"
#include "base/Failure.h"
#include "base/Narrow.h"
#include "tallybook/engine/BookFile.h"
#include "tallybook/engine/BookPlace.h"
#include "tallybook/engine/Calendar.h"
#include "tallybook/engine/FigureStore.h"
#include "tallybook/engine/SqliteStorage.h"
#include "tallybook/engine/Workpiece.h"

namespace tallybook::engine {

namespace {

constexpr const char* kSource = "Tallybook.BookRegroup";

[[noreturn]] void Refuse(const Text& why) {
  throw Failure(FailureNumber::kInvalidArgument, why, kSource);
}

// Whether all years of `later` begin as they do in `calendar`, the one behind the last as well.
bool HasSameYears(const Calendar& calendar, const CalendarDescription& later, Integer data_level) {
  const Calendar other(later, data_level);
  for (int year = later.first_year; year <= later.first_year + later.years; ++year) {
    if (other.YearStart(year) != calendar.YearStart(year)) return false;
  }
  return other.FirstDate() == calendar.YearStart(later.first_year);
}

// A first year can be told by its first day, or by the anniversary of the first date that all years are counted from.
CalendarDescription Later(const CalendarDescription& now, Integer first_year, Integer data_level) {
  const int gone = first_year - now.first_year;
  if (gone < 0 || gone >= now.years) {
    Refuse("there is no year " + std::to_string(first_year) + "; the book has " + std::to_string(now.first_year) +
           " to " + std::to_string(now.first_year + now.years - 1));
  }
  CalendarDescription later = now;
  if (gone == 0) return later;
  later.first_year = first_year;
  later.years = static_cast<Integer>(now.years - gone);
  later.years_in_use = static_cast<Integer>(std::max(1, now.years_in_use - gone));
  const Calendar calendar(now, data_level);
  const DateParts first = PartsOf(now.first_date);
  for (const Date date : {DateFromParts(first.year + gone, first.month, first.day), calendar.YearStart(first_year)}) {
    later.first_date = date;
    if (HasSameYears(calendar, later, data_level)) return later;
  }
  Refuse("the years from " + std::to_string(first_year) +
         " on cannot be had without those before: they would begin on "
         "other days");
}

// Years enough for the last date of another calendar.
void Reach(Date last, Integer data_level, CalendarDescription& calendar) {
  while (calendar.years < kMaxYears && Calendar(calendar, data_level).LastDate() < last) ++calendar.years;
}

// Totals by the positions of account and field, with what is needed to say how far rounding may have led them astray.
class Totals {
 public:
  Totals(std::size_t accounts, std::size_t fields) : fields_(fields), rows_(accounts * fields) {}

  void Add(std::size_t account, std::size_t field, Double value) {
    Row& row = rows_[account * fields_ + field];
    row.total += value;
    row.magnitude += std::abs(value);
    ++row.figures;
  }
  // Each addition is off by half a unit in the last place of what has been gathered at most.
  [[nodiscard]] bool Agree(const Totals& other, std::size_t account, std::size_t field) const {
    const Row& one = rows_[account * fields_ + field];
    const Row& two = other.rows_[account * fields_ + field];
    const auto additions = static_cast<Double>(one.figures + two.figures);
    return std::abs(one.total - two.total) <=
           additions * std::numeric_limits<Double>::epsilon() * std::max(one.magnitude, two.magnitude);
  }
  [[nodiscard]] long long Figures() const {
    long long figures = 0;
    for (const Row& row : rows_) figures += row.figures;
    return figures;
  }
  [[nodiscard]] std::vector<FigureTotal> Listed() const {
    std::vector<FigureTotal> listed;
    for (std::size_t index = 0; index < rows_.size(); ++index) {
      if (rows_[index].figures == 0) continue;
      listed.push_back({ToInteger(static_cast<long long>(index / fields_) + 1),
                        ToInteger(static_cast<long long>(index % fields_) + 1), rows_[index].figures,
                        rows_[index].total});
    }
    return listed;
  }

 private:
  struct Row {
    Double total = 0;
    Double magnitude = 0;
    long long figures = 0;
  };
  std::size_t fields_;
  std::vector<Row> rows_;
};

class Regrouping {
 public:
  Regrouping(Book& book, FigureStore& store)
      : book_(book),
        store_(store),
        fields_(std::max<std::size_t>(book.Description().fields.size(), 1)),
        row_(fields_),
        read_(book.Description().accounts.size(), fields_),
        left_behind_(book.Description().accounts.size(), fields_) {}

  Regrouped Run() {
    book_.VisitFigures({}, [this](const Figure& figure) {
      Take(figure);
      return true;
    });
    WriteGathered();
    store_.Commit();
    Regrouped regrouped;
    regrouped.figures_read = read_.Figures();
    regrouped.figures = CompareTotals();
    regrouped.left_behind = left_behind_.Listed();
    return regrouped;
  }

 private:
  void Take(const Figure& figure) {
    const auto account = static_cast<std::size_t>(figure.account_position - 1);
    const auto field = static_cast<std::size_t>(figure.field_position - 1);
    // The last week of a book can end behind its last date; it belongs to that date all the same.
    const Date date = std::min(figure.date, book_.LastDate());
    if (date < store_.Rules().FirstDate() && IsLeftBehind(date)) return left_behind_.Add(account, field, figure.value);
    const std::int32_t record = store_.RecordOf(date);
    if (record < 0) FailDate(figure);
    if (account != account_ || record != record_) {
      WriteGathered();
      account_ = account;
      record_ = record;
    }
    row_[field] += figure.value;
    read_.Add(account, field, figure.value);
  }

  // Of a year before the first one, not of a first year that begins some days later.
  [[nodiscard]] bool IsLeftBehind(Date date) const {
    return book_.CalendarRules().PlaceOf(date).year < store_.Rules().Description().first_year;
  }

  void WriteGathered() {
    if (record_ < 0) return;
    for (const Double value : row_) {
      if (!std::isfinite(value)) {
        throw Failure(FailureNumber::kOverflow,
                      "the sum of account " + CodeOf(account_) + " for " + DateText(store_.DateOfRecord(record_)) +
                          " is too large for a figure",
                      kSource);
      }
    }
    (void)store_.Row(account_, record_);
    store_.WriteRow(row_.data());
    std::fill(row_.begin(), row_.end(), 0);
    record_ = -1;
  }

  // Gives how many figures the new file has.
  long long CompareTotals() {
    Totals written(book_.Description().accounts.size(), fields_);
    const auto last = store_.RecordOf(store_.Rules().LastRecordDate());
    for (std::size_t account = 0; account < book_.Description().accounts.size(); ++account) {
      store_.VisitRows(account, 0, last, [&](std::int32_t /*record*/, std::span<const Double> figures) {
        for (std::size_t field = 0; field < fields_; ++field) {
          if (figures[field] != 0) written.Add(account, field, figures[field]);
        }
        return true;
      });
      for (std::size_t field = 0; field < fields_; ++field) {
        if (!read_.Agree(written, account, field)) FailTotal(account, field);
      }
    }
    return written.Figures();
  }

  [[nodiscard]] const Text& CodeOf(std::size_t account) const { return book_.Description().accounts[account].code; }

  [[noreturn]] void FailDate(const Figure& figure) const {
    const Calendar& rules = store_.Rules();
    Refuse("account " + CodeOf(static_cast<std::size_t>(figure.account_position - 1)) + " has a figure on " +
           DateText(figure.date) + ", and the new book would hold " + DateText(rules.FirstDate()) + " to " +
           DateText(rules.LastDate()));
  }
  [[noreturn]] void FailTotal(std::size_t account, std::size_t field) const {
    throw Failure(FailureNumber::kInternal,
                  "the totals of account " + CodeOf(account) + " and field " +
                      std::to_string(book_.Description().fields[field].number) + " differ between the two books",
                  kSource);
  }

  Book& book_;
  FigureStore& store_;
  std::size_t fields_;
  std::vector<Double> row_;  // what has been gathered for the record below, a figure a field
  std::size_t account_ = 0;
  std::int32_t record_ = -1;  // -1: none
  Totals read_;
  Totals left_behind_;
};

}  // namespace

BookDescription RegroupedDescription(const BookDescription& book, const RegroupRequest& request) {
  BookDescription regrouped = book;
  regrouped.values.clear();
  regrouped.calendar = Later(book.calendar, request.first_year.value_or(book.calendar.first_year), book.data_level);
  if (request.data_level) regrouped.data_level = *request.data_level;
  if (request.calendar && *request.calendar != book.calendar.kind) {
    regrouped.calendar.kind = *request.calendar;
    regrouped.calendar.periods.clear();
    Reach(Calendar(book.calendar, book.data_level).LastDate(), regrouped.data_level, regrouped.calendar);
  }
  return regrouped;
}

Regrouped MakeRegroupedBook(Book& book, const Text& path, const BookDescription& description) {
  CheckNewBookDescription(description, path);
  const Text place = NativeBookPath(path);
  Workpiece workpiece(place);
  Regrouped regrouped;
  workpiece.Do([&] {
    FigureStore store(std::make_unique<SqliteStorage>(BookFile::Create(workpiece.Path(), description)),
                      BookOptions().cache_bytes);
    regrouped = Regrouping(book, store).Run();
  });
  workpiece.MoveToPlace();
  return regrouped;
}

}  // namespace tallybook::engine
