#include "tallybook/preview/RecordPlaces.h"

#include "base/Narrow.h"

namespace tallybook::preview {

namespace {

template <typename Table>
auto& Reach(Table& table, Long number) {
  const auto place = static_cast<std::size_t>(number);
  if (place >= table.size()) table.resize(place + 1, 0);
  return table[place];
}

}  // namespace

RecordPlaces::RecordPlaces(Masterfile& database, FiscalCalendar& calendar) {
  ListDates(database, calendar);
  ListAccounts(database);
  ListFields(database);
}

void RecordPlaces::ListDates(Masterfile& database, FiscalCalendar& calendar) {
  const Date last_date = database.LastDate();
  const Integer level = database.DataLevel();
  first_date_ = database.FirstDate();
  // The first record can begin before it.
  (void)calendar.LevelDate(first_date_, level);
  first_day_ = calendar.PriorPeriodEnd() + 1;
  for (Date day = first_day_; day <= last_date;) {
    const Date last = calendar.LevelDate(day, level);
    record_of_day_.insert(record_of_day_.end(), static_cast<std::size_t>(last - day) + 1,
                          static_cast<std::uint32_t>(date_of_record_.size()));
    date_of_record_.push_back(last);
    day = last + 1;
  }
}

// Of two accounts of one number, and of two such fields, the first counts.
void RecordPlaces::ListAccounts(Masterfile& database) {
  const Long accounts = database.NumAccounts();
  for (Long position = 1; position <= accounts; ++position) {
    number_of_account_.push_back(database.AccountNumber(ToInteger(position)));
    std::uint32_t& place = Reach(place_of_account_, number_of_account_.back());
    if (place == 0) place = static_cast<std::uint32_t>(position);
  }
}

void RecordPlaces::ListFields(Masterfile& database) {
  const Long fields = database.NumFields();
  for (Long position = 1; position <= fields; ++position) {
    Integer& place = Reach(position_of_field_, database.FieldNumber(ToInteger(position)));
    if (place == 0) place = ToInteger(position);
  }
}

}  // namespace tallybook::preview
