#include "tallybook/inspect/QdxDates.h"

#include <fmt/format.h>

#include "base/Dates.h"
#include "base/Failure.h"
#include "host/FiscalCalendar.h"
#include "host/Masterfile.h"
#include "tallybook/application/Counts.h"
#include "tallybook/application/ImportBalance.h"
#include "tallybook/inspect/Troubles.h"

namespace tallybook::inspect {

namespace {

constexpr Date kWeek = 7;

Finding OfDate(Date date, Effect effect, const Text& reason, const Text& help) {
  Finding finding;
  finding.date = date;
  finding.effect = effect;
  finding.reason = reason;
  finding.help = help;
  return finding;
}

const char* UnitOfLevel(Integer level) {
  if (level == kPeriodLevel) return "period";
  return level == kWeekLevel ? "week" : "day";
}

Text Range(Date first, Date last) {
  return DateText(first) + " to " + DateText(last);
}

}  // namespace

QdxDates::Place& QdxDates::Of(const BodyDate& date) {
  const auto [found, is_new] = places_.try_emplace({date.year, date.month, date.day});
  Place& place = found->second;
  if (!is_new) return place;
  place.date = DateFromParts(date.year, date.month, date.day);
  place.can_be_written = CanBeWritten(place.date);
  try {
    place.level = masterfile_.FiscalCalendar().LevelDate(place.date, masterfile_.DataLevel());
  } catch (const Failure& failure) {
    place.failure = failure.Description();
  }
  return place;
}

// Reading the record is how the import finds out.
bool QdxDates::IsInBook(Place& place, Integer account_number) {
  if (!place.is_in_book) place.is_in_book = place.level && masterfile_.ReadRecord(account_number, *place.level);
  return *place.is_in_book;
}

void QdxDates::Take(const Place& place) {
  if (place.is_in_book.value_or(false) && place.can_be_written) units_[*place.level].insert(place.date);
}

bool QdxDates::HoldsRange(const HeaderRecord& header) const {
  return masterfile_.FirstDate() <= header.StartDate() && masterfile_.LastDate() >= header.LastDate();
}

void QdxDates::Tell(const HeaderRecord& header, bool replaces, const TellFinding& tell) {
  const Integer own_level = masterfile_.DataLevel();
  if (units_.empty()) return;
  if (header.DataLevel > own_level && header.DataLevel <= kPeriodLevel) {
    Finding finding;
    finding.effect = Effect::kSilent;
    finding.reason = fmt::format(
        "the file has a record for each {}, and the book one for each {}: the figures of a whole "
        "{} go to its last {}",
        UnitOfLevel(header.DataLevel), UnitOfLevel(own_level), UnitOfLevel(header.DataLevel), UnitOfLevel(own_level));
    tell(finding);
  }
  for (const auto& [level, dates] : units_) TellUnit(level, dates, header.DataLevel, tell);
  if (HoldsRange(header)) TellPartialUnits(header, replaces, tell);
  TellLongYears(tell);
}

void QdxDates::TellUnit(Date level, const std::set<Date>& dates, Integer file_level, const TellFinding& tell) {
  const Integer own_level = masterfile_.DataLevel();
  if (dates.size() == 1 && *dates.begin() == level && file_level >= own_level) return;
  const Date last = masterfile_.FiscalCalendar().LevelDate(level, own_level);
  const Date first = masterfile_.FiscalCalendar().PriorPeriodEnd() + 1;
  for (const Date date : dates) {
    if (file_level == own_level && date != level) {
      tell(OfDate(date, Effect::kSilent,
                  fmt::format("ends a {} of the file within the book's {}: all of it goes there",
                              UnitOfLevel(file_level), Range(first, last)),
                  "import from a book of the same calendar"));
    } else if (file_level == kWeekLevel && own_level == kPeriodLevel && date - kWeek + 1 < first) {
      tell(OfDate(date, Effect::kSilent,
                  fmt::format("ends a week of the file that begins before the book's {}: all of it goes there",
                              Range(first, last)),
                  "import figures of days"));
    }
  }
  if (dates.size() == 1 && *dates.begin() == level) return;
  const Date first_taken = *dates.begin();
  const Date last_taken = *dates.rbegin();
  tell(OfDate(level, Effect::kNote,
              dates.size() == 1 ? fmt::format("takes the figures of {}", DateText(first_taken))
                                : fmt::format("takes the figures of {}, {}",
                                              application::Counted(static_cast<long long>(dates.size()), "date"),
                                              Range(first_taken, last_taken)),
              ""));
}

// A range is set to 0 from the unit that it begins in up to the last one that it holds to the end.
void QdxDates::TellPartialUnits(const HeaderRecord& header, bool replaces, const TellFinding& tell) {
  for (const application::PartialUnit& unit :
       application::PartialUnitsOf(masterfile_, header.StartDate(), header.LastDate())) {
    const char* where = unit.at_start ? "begins" : "ends";
    Text reason = fmt::format("the file {} within the book's {}", where, Range(unit.first, unit.last));
    if (replaces && unit.at_start && unit.last <= header.LastDate()) {
      reason += ": all that the book has there is set to 0 first";
    } else if (replaces) {
      reason += ", which is not set to 0 first: its figures are added to those that stand";
    }
    tell(OfDate(unit.edge, replaces ? Effect::kSilent : Effect::kNote, reason,
                replaces ? "have the file made for whole weeks or periods of the book" : ""));
  }
}

void QdxDates::TellLongYears(const TellFinding& tell) {
  std::set<Date> levels;
  for (const auto& [level, dates] : units_) levels.insert(level);
  for (const application::LongYearWeek& week : application::Weeks53Of(masterfile_, levels)) {
    tell(OfDate(week.last, Effect::kNote,
                fmt::format("has figures of {}, the 53rd week of {}", Range(week.first, week.last), week.year), ""));
  }
}

}  // namespace tallybook::inspect
