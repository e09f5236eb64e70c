// A database's lists as places counted from 0: accounts in the order of their list, and records as the level dates that
// follow one another. What keeps figures of its own goes by these. Reads the lists once; the database must not change
// them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "base/Types.h"
#include "host/FiscalCalendar.h"
#include "host/Masterfile.h"

namespace tallybook::preview {

// The value of a number in a table by number; 0 for one that the table does not reach.
template <typename Table>
[[nodiscard]] typename Table::value_type AtNumber(const Table& table, Long number) {
  // A negative number wraps to one that no table reaches.
  const auto place = static_cast<std::size_t>(static_cast<std::uint32_t>(number));
  return place < table.size() ? table[place] : typename Table::value_type{0};
}

class RecordPlaces {
 public:
  // `calendar` goes by the database's rules; its cursor is moved.
  RecordPlaces(Masterfile& database, FiscalCalendar& calendar);

  [[nodiscard]] std::size_t Accounts() const { return number_of_account_.size(); }
  [[nodiscard]] std::size_t Records() const { return date_of_record_.size(); }
  [[nodiscard]] Long NumberOf(std::size_t account) const { return number_of_account_[account]; }
  [[nodiscard]] Date DateOf(std::size_t record) const { return date_of_record_[record]; }
  // The position of a field from 1; 0 for a number that no field has.
  [[nodiscard]] Integer FieldPosition(Integer number) const { return AtNumber(position_of_field_, number); }

  // The days from the first of the first record to the last of the last one, counted from 0.
  [[nodiscard]] std::size_t Days() const { return record_of_day_.size(); }
  [[nodiscard]] Date FirstDay() const { return first_day_; }
  [[nodiscard]] std::size_t RecordOf(std::size_t day) const { return record_of_day_[day]; }

  struct Place {
    std::size_t account = 0;
    std::size_t record = 0;
    // The first record may begin before the database's first date: whether it has one of that day it alone knows.
    bool is_certain = true;
  };
  [[nodiscard]] std::optional<Place> Find(Long account_number, Date date) const {
    const std::uint32_t account = AtNumber(place_of_account_, account_number);
    const Date day = date - first_day_;
    if (account == 0 || !(day >= 0 && day < static_cast<Date>(record_of_day_.size()))) return std::nullopt;
    return Place{.account = account - 1,
                 .record = record_of_day_[static_cast<std::size_t>(day)],
                 .is_certain = date >= first_date_};
  }

 private:
  void ListDates(Masterfile& database, FiscalCalendar& calendar);
  void ListAccounts(Masterfile& database);
  void ListFields(Masterfile& database);

  Date first_date_ = 0;  // of the database
  Date first_day_ = 0;
  std::vector<std::uint32_t> record_of_day_;
  std::vector<Date> date_of_record_;
  std::vector<Long> number_of_account_;
  std::vector<std::uint32_t> place_of_account_;  // by number, from 1; 0: no such account
  std::vector<Integer> position_of_field_;       // by number; 0: no such field
};

}  // namespace tallybook::preview
