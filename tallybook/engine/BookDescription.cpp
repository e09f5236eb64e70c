#include "tallybook/engine/BookDescription.h"

#include <algorithm>
#include <cmath>
#include <initializer_list>
#include <limits>
#include <map>
#include <nlohmann/json.hpp>
#include <ostream>
#include <sstream>
#include <string>
#include <string_view>
#include <tuple>
#include <unordered_map>
#include <unordered_set>
#include <utility>

#include "base/Dates.h"
#include "base/Failure.h"
#include "tallybook/engine/Calendar.h"

namespace tallybook::engine {

namespace {

using nlohmann::json;

constexpr const char* kSource = "Tallybook.BookDescription";
constexpr const char* kUsualTypeName = "Tallybook";
constexpr Long kUsualMaxAccounts = 9999;
constexpr Long kUsualMaxFields = 999;
constexpr Integer kMonthsOfYear = 12;
constexpr Integer kFourWeekPeriods = 13;

constexpr std::pair<std::string_view, Integer> kDataLevels[] = {
    {"day", kDayLevel}, {"week", kWeekLevel}, {"period", kPeriodLevel}};
constexpr std::pair<std::string_view, CalendarKind> kCalendarKinds[] = {{"months", CalendarKind::kMonths},
                                                                        {"weeks", CalendarKind::kWeeks},
                                                                        {"4-4-5", CalendarKind::k445},
                                                                        {"13x4", CalendarKind::k13x4},
                                                                        {"custom", CalendarKind::kCustom}};
constexpr std::pair<std::string_view, Integer> kWeekdays[] = {
    {"sunday", Integer{1}},   {"monday", Integer{2}}, {"tuesday", Integer{3}}, {"wednesday", Integer{4}},
    {"thursday", Integer{5}}, {"friday", Integer{6}}, {"saturday", Integer{7}}};

[[noreturn]] void Refuse(const Text& source_name, const Text& path, const Text& found, const Text& wanted) {
  Text message = source_name + ": " + path;
  if (!found.empty()) message += " is " + found;
  throw Failure(FailureNumber::kInvalidArgument, message + "; " + wanted, kSource);
}

Text Quoted(const Text& text) {
  return "\"" + text + "\"";
}

Text RangeText(long long lowest, long long highest) {
  return "it must be a whole number from " + std::to_string(lowest) + " to " + std::to_string(highest);
}

// The number of characters of a text in UTF-8.
std::size_t CharacterCount(const Text& text) {
  return static_cast<std::size_t>(std::count_if(
      text.begin(), text.end(), [](char unit) { return (static_cast<unsigned char>(unit) & 0xC0) != 0x80; }));
}

// One place of the JSON text: a value, and the path that leads to it.
class Place {
 public:
  Place(const json& value, Text path, const Text& source_name)
      : value_(value), path_(std::move(path)), source_(source_name) {}

  [[noreturn]] void Fail(const Text& wanted) const {
    constexpr std::size_t kLongestShown = 60;
    Text found = value_.dump(-1, ' ', false, json::error_handler_t::replace);
    if (found.size() > kLongestShown) found = found.substr(0, kLongestShown) + "...";
    Refuse(source_, path_.empty() ? Text("the whole") : path_, found, wanted);
  }

  // Refuses anything but an object, and keys that are not among `known`.
  void RequireObject(std::initializer_list<const char*> known) const {
    if (!value_.is_object()) Fail("it must be an object");
    for (const auto& item : value_.items()) {
      const bool is_known = std::any_of(known.begin(), known.end(), [&](const char* key) { return item.key() == key; });
      if (!is_known) At(item.key()).Fail("no such key is known here");
    }
  }

  [[nodiscard]] bool Has(const char* key) const { return value_.contains(key); }

  [[nodiscard]] Place At(const Text& key) const {
    const Text path = path_.empty() ? key : path_ + "." + key;
    if (!value_.contains(key)) Refuse(source_, path, "missing", "it has to be given");
    return {value_.at(key), path, source_};
  }

  [[nodiscard]] std::vector<Place> Items() const {
    if (!value_.is_array()) Fail("it must be a list");
    std::vector<Place> items;
    items.reserve(value_.size());
    for (std::size_t index = 0; index < value_.size(); ++index) {
      items.emplace_back(value_[index], path_ + "[" + std::to_string(index) + "]", source_);
    }
    return items;
  }

  [[nodiscard]] Text String() const {
    if (!value_.is_string()) Fail("it must be a text");
    return value_.get<Text>();
  }

  template <typename Number>
  [[nodiscard]] Number Whole(Long lowest, Long highest) const {
    if (!value_.is_number_integer()) Fail(RangeText(lowest, highest));
    // A number above the signed range is unsigned here, and is told apart before it is taken for a signed one.
    const bool too_high =
        value_.is_number_unsigned() &&
        value_.get<std::uint64_t>() > static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max());
    const std::int64_t number = too_high ? 0 : value_.get<std::int64_t>();
    if (too_high || number < lowest || number > highest) Fail(RangeText(lowest, highest));
    return static_cast<Number>(number);
  }

  [[nodiscard]] Double Real() const {
    if (!value_.is_number()) Fail("it must be a number");
    const auto number = value_.get<Double>();
    if (!std::isfinite(number)) Fail("it must be a number that a figure can hold");
    return number;
  }

  [[nodiscard]] bool Truth() const {
    if (!value_.is_boolean()) Fail("it must be true or false");
    return value_.get<bool>();
  }

  [[nodiscard]] Date Day() const {
    Date date = kNoDate;
    if (!value_.is_string() || !ReadDateText(value_.get<Text>(), date)) Fail("it must be a date like \"2004-02-03\"");
    return date;
  }

  template <typename Code, std::size_t count>
  [[nodiscard]] Code Choice(const std::pair<std::string_view, Code> (&choices)[count]) const {
    Text wanted;
    for (const auto& [name, code] : choices) {
      if (value_.is_string() && value_.get<Text>() == name) return code;
      wanted += wanted.empty() ? "it must be " : &name == &choices[count - 1].first ? " or " : ", ";
      wanted += Quoted(Text(name));
    }
    Fail(wanted);
  }

 private:
  const json& value_;
  Text path_;
  const Text& source_;
};

PeriodDescription ReadPeriod(const Place& place) {
  place.RequireObject({"name", "length"});
  PeriodDescription period;
  period.name = place.At("name").String();
  if (place.Has("length")) period.length = place.At("length").Whole<Integer>(0, std::numeric_limits<Integer>::max());
  return period;
}

std::vector<PeriodDescription> ReadPeriods(const Place& place) {
  std::vector<PeriodDescription> periods;
  for (const Place& item : place.Items()) periods.push_back(ReadPeriod(item));
  return periods;
}

// Of a calendar that is there already, what is left out stays.
CalendarDescription ReadCalendar(const Place& place, const CalendarDescription* now) {
  place.RequireObject({"kind", "first_date", "first_year", "years", "years_in_use", "week_ends_on", "periods"});
  CalendarDescription calendar = now != nullptr ? *now : CalendarDescription();
  const auto is_given = [&](const char* key) { return now == nullptr || place.Has(key); };
  if (is_given("kind")) calendar.kind = place.At("kind").Choice(kCalendarKinds);
  if (is_given("first_date")) calendar.first_date = place.At("first_date").Day();
  if (is_given("years")) calendar.years = place.At("years").Whole<Integer>(1, kMaxYears);
  if (now == nullptr) calendar.first_year = PartsOf(calendar.first_date).year;
  if (now == nullptr) calendar.years_in_use = calendar.years;
  if (place.Has("first_year")) calendar.first_year = place.At("first_year").Whole<Integer>(1, 9999);
  if (place.Has("years_in_use")) calendar.years_in_use = place.At("years_in_use").Whole<Integer>(1, kMaxYears);
  if (place.Has("week_ends_on")) calendar.week_ends_on = place.At("week_ends_on").Choice(kWeekdays);
  if (place.Has("periods")) calendar.periods = ReadPeriods(place.At("periods"));
  return calendar;
}

// The row of that number as it is now; one of nothing but the number where there is none.
template <typename Row>
using RowFinder = std::function<Row(Long number)>;

template <typename Row>
RowFinder<Row> FinderIn(const std::vector<Row>* now) {
  std::unordered_map<Long, const Row*> rows;
  if (now != nullptr) {
    for (const Row& row : *now) rows.emplace(row.number, &row);
  }
  return [rows = std::move(rows)](Long number) {
    const auto found = rows.find(number);
    if (found != rows.end()) return *found->second;
    Row row;
    row.number = static_cast<decltype(row.number)>(number);
    return row;
  };
}

AccountDescription ReadAccount(const Place& place, const RowFinder<AccountDescription>& find) {
  place.RequireObject({"number", "code", "description"});
  AccountDescription account = find(place.At("number").Whole<Long>(1, kMaxAccountNumber));
  if (account.code.empty() || place.Has("code")) account.code = place.At("code").String();
  if (place.Has("description")) account.description = place.At("description").String();
  return account;
}

FieldDescription ReadField(const Place& place, const RowFinder<FieldDescription>& find) {
  place.RequireObject({"number", "description", "system"});
  FieldDescription field = find(place.At("number").Whole<Integer>(1, kMaxListLength));
  if (place.Has("description")) field.description = place.At("description").String();
  if (place.Has("system")) field.system = place.At("system").Truth();
  return field;
}

ValueDescription ReadValue(const Place& place) {
  place.RequireObject({"account", "date", "field", "value"});
  ValueDescription value;
  value.account = place.At("account").Whole<Long>(1, kMaxAccountNumber);
  value.date = place.At("date").Day();
  value.field = place.At("field").Whole<Integer>(1, kMaxListLength);
  value.value = place.At("value").Real();
  return value;
}

// The rows of a list; `rows` where it is left out.
template <typename Row, typename Reader>
std::vector<Row> ReadRows(const Place& place, const char* key, std::vector<Row> rows, Reader reader) {
  if (!place.Has(key)) return rows;
  rows.clear();
  for (const Place& item : place.At(key).Items()) rows.push_back(reader(item));
  return rows;
}

// The highest number of a list, where it is more than `usual`.
template <typename Row>
Long HighestNumber(const std::vector<Row>& rows, Long usual) {
  for (const Row& row : rows) usual = std::max<Long>(usual, row.number);
  return usual;
}

// A place in a description in the words of the JSON form: Indexed{"accounts", 3, "code"}. The words are put together
// only where something is refused: a book checks thousands of places whenever it is opened.
struct Indexed {
  const char* list;
  std::size_t index;
  const char* key;
  operator Text() const { return Text(list) + "[" + std::to_string(index) + "]." + key; }
};

// Values of which each is to come once. Lists rise for the most part, and of what rises nothing but the value is kept.
template <typename Value>
class Distinct {
 public:
  // False for a value that has come before.
  bool Add(Value value) {
    if (Has(value)) return false;
    if (rising_.empty() || rising_.back() < value) {
      rising_.push_back(value);
    } else {
      others_.insert(value);
    }
    return true;
  }
  [[nodiscard]] bool Has(Value value) const {
    const bool among_rising =
        !rising_.empty() && !(rising_.back() < value) && std::binary_search(rising_.begin(), rising_.end(), value);
    return among_rising || (!others_.empty() && others_.count(value) != 0);
  }

 private:
  std::vector<Value> rising_;
  std::unordered_set<Value> others_;
};

// A day as text; as the number that it is where it has none.
Text DayText(Date day) {
  const bool has_text = day >= DateFromParts(1, 1, 1) && day < DateFromParts(10'000, 1, 1) && day == std::floor(day);
  return has_text ? DateText(day) : std::to_string(day);
}

// Checks of a description as a whole.
class Checker {
 public:
  Checker(const BookDescription& description, const Text& source_name) : book_(description), source_(source_name) {}

  void CheckNew() {
    CheckLevelAndMaxima();
    CheckCalendar();
    CheckDatesHaveText();
    CheckDatesAreCounted();
    CheckLists();
  }

  void Check() {
    CheckLevelAndMaxima();
    CheckCalendar();
    CheckLists();
  }

 private:
  void CheckLevelAndMaxima() const {
    if (book_.data_level < kDayLevel || book_.data_level > kPeriodLevel) {
      Refuse(source_, "data_level", std::to_string(book_.data_level), "it must be day, week or period");
    }
    InRange("max_accounts", book_.max_accounts, 1, kMaxAccountNumber);
    InRange("max_fields", book_.max_fields, 1, kMaxListLength);
  }

  void CheckLists() {
    CheckAccounts();
    CheckFields();
    CheckValues();
  }

  // The place is a text, or what can become one.
  void InRange(const auto& path, long long value, long long lowest, long long highest) const {
    if (value < lowest || value > highest) Refuse(source_, path, std::to_string(value), RangeText(lowest, highest));
  }

  void InLength(const char* list, std::size_t length) const {
    if (length > static_cast<std::size_t>(kMaxListLength)) {
      Refuse(source_, list, "a list of " + std::to_string(length),
             "it may have " + std::to_string(kMaxListLength) + " rows at the most");
    }
  }

  void CheckCalendar() const {
    const CalendarDescription& calendar = book_.calendar;
    if (calendar.kind < CalendarKind::kMonths || calendar.kind > CalendarKind::kCustom) {
      Refuse(source_, "calendar.kind", std::to_string(static_cast<int>(calendar.kind)), "there is no such calendar");
    }
    const Date first_possible = DateFromParts(100, 1, 1);
    const Date last_possible = DateFromParts(9000, 12, 31);
    if (!(calendar.first_date >= first_possible && calendar.first_date <= last_possible) ||
        calendar.first_date != std::floor(calendar.first_date)) {
      Refuse(source_, "calendar.first_date", DayText(calendar.first_date),
             "it must be a whole day of the years 100 to 9000");
    }
    InRange("calendar.first_year", calendar.first_year, 1, 9999);
    InRange("calendar.years", calendar.years, 1, kMaxYears);
    InRange("calendar.years_in_use", calendar.years_in_use, 1, calendar.years);
    InRange("calendar.week_ends_on", calendar.week_ends_on, 1, 7);
    CheckPeriods();
  }

  // Dates are counted from 1899-12-30. Exports end at a date that counts 0 or less, and a delimited import keeps no
  // record of one.
  void CheckDatesAreCounted() const {
    const Date first_possible = DateFromParts(1900, 1, 1);
    const Date first = Calendar(book_.calendar, book_.data_level).FirstDate();
    if (first < first_possible)
      Refuse(source_, "calendar.first_date", DayText(book_.calendar.first_date),
             "the first date would be " + DateText(first) + ", and a new book begins on " + DateText(first_possible) +
                 " or later");
  }

  // A date behind the year 9999 has no text that could be read back.
  void CheckDatesHaveText() const {
    const Date last_possible = DateFromParts(9999, 12, 31);
    const Calendar calendar(book_.calendar, book_.data_level);
    if (calendar.LastDate() > last_possible || calendar.LastRecordDate() > last_possible)
      Refuse(source_, "calendar.years", std::to_string(book_.calendar.years),
             "the last record would end behind " + DateText(last_possible));
  }

  void CheckPeriods() const {
    const CalendarDescription& calendar = book_.calendar;
    const auto count = static_cast<long long>(calendar.periods.size());
    const bool custom = calendar.kind == CalendarKind::kCustom;
    if (custom) {
      if (count < 1 || count > kMaxCustomPeriods) {
        Refuse(source_, "calendar.periods", "a list of " + std::to_string(count),
               "a custom calendar has 1 to " + std::to_string(kMaxCustomPeriods) + " periods");
      }
    } else if (count != 0) {
      const bool four_weeks = calendar.kind == CalendarKind::kWeeks || calendar.kind == CalendarKind::k13x4;
      const Integer wanted = four_weeks ? kFourWeekPeriods : kMonthsOfYear;
      if (count != wanted) {
        Refuse(source_, "calendar.periods", "a list of " + std::to_string(count),
               "this calendar has " + std::to_string(wanted) + " periods");
      }
    }
    constexpr Integer kLongestCustomPeriod = 3660;
    for (std::size_t index = 0; index < calendar.periods.size(); ++index) {
      InRange(Indexed{"calendar.periods", index, "length"}, calendar.periods[index].length, custom ? 1 : 0,
              custom ? kLongestCustomPeriod : std::numeric_limits<Integer>::max());
    }
  }

  void CheckAccounts() {
    InLength("accounts", book_.accounts.size());
    Distinct<std::string_view> codes;
    for (std::size_t index = 0; index < book_.accounts.size(); ++index) {
      const AccountDescription& account = book_.accounts[index];
      InRange(Indexed{"accounts", index, "number"}, account.number, 1, book_.max_accounts);
      if (!accounts_.Add(account.number)) {
        Refuse(source_, Indexed{"accounts", index, "number"}, std::to_string(account.number),
               "an account above has this number");
      }
      const Indexed path{"accounts", index, "code"};
      if (account.code.empty() || account.code.back() == ' ' || CharacterCount(account.code) > kCodeWidth) {
        Refuse(source_, path, Quoted(account.code),
               "a code has 1 to " + std::to_string(kCodeWidth) + " characters and does not end in a blank");
      }
      if (!codes.Add(account.code)) Refuse(source_, path, Quoted(account.code), "an account above has this code");
    }
  }

  void CheckFields() {
    InLength("fields", book_.fields.size());
    for (std::size_t index = 0; index < book_.fields.size(); ++index) {
      const Integer number = book_.fields[index].number;
      InRange(Indexed{"fields", index, "number"}, number, 1, book_.max_fields);
      if (!fields_.Add(number)) {
        Refuse(source_, Indexed{"fields", index, "number"}, std::to_string(number), "a field above has this number");
      }
    }
  }

  void CheckValues() {
    if (book_.values.empty()) return;
    const Calendar calendar(book_.calendar, book_.data_level);
    std::map<std::tuple<Long, Date, Integer>, std::size_t> seen;
    for (std::size_t index = 0; index < book_.values.size(); ++index) {
      const ValueDescription& value = book_.values[index];
      if (!accounts_.Has(value.account)) {
        Refuse(source_, Indexed{"values", index, "account"}, std::to_string(value.account),
               "no account has this number");
      }
      if (!fields_.Has(value.field)) {
        Refuse(source_, Indexed{"values", index, "field"}, std::to_string(value.field), "no field has this number");
      }
      if (!std::isfinite(value.value)) {
        Refuse(source_, Indexed{"values", index, "value"}, std::to_string(value.value), "it must be a finite number");
      }
      if (!(value.date >= calendar.FirstDate() && value.date < calendar.LastRecordDate() + 1)) {
        Refuse(source_, Indexed{"values", index, "date"}, DateText(value.date),
               "the book holds " + DateText(calendar.FirstDate()) + " to " + DateText(calendar.LastRecordDate()));
      }
      const Date record = calendar.UnitOf(value.date, kOwnLevel).last;
      const auto [place, is_new] = seen.try_emplace({value.account, record, value.field}, index);
      if (!is_new) {
        Refuse(source_, "values[" + std::to_string(index) + "]",
               "account " + std::to_string(value.account) + ", field " + std::to_string(value.field) +
                   " of the record of " + DateText(record),
               "values[" + std::to_string(place->second) + "] is the same figure");
      }
    }
  }

  const BookDescription& book_;
  const Text& source_;
  Distinct<Long> accounts_;
  Distinct<Integer> fields_;
};

json ParseJson(const Text& text, const Text& source_name) {
  try {
    return json::parse(text);
  } catch (const json::exception& error) {
    throw Failure(FailureNumber::kInvalidArgument, source_name + ": this is no JSON: " + error.what(), kSource);
  }
}

Text JsonText(const Text& text) {
  return json(text).dump(-1, ' ', false, json::error_handler_t::replace);
}

// Writes a list, one row a line: [, rows, ]. `comma` tells of the rows before.
class RowList {
 public:
  RowList(std::ostream& out, const char* indent) : out_(out), indent_(indent) { out_ << "["; }
  std::ostream& Next() {
    out_ << (empty_ ? "\n" : ",\n") << indent_;
    empty_ = false;
    return out_;
  }
  void End() { out_ << (empty_ ? "]" : " ]"); }

 private:
  std::ostream& out_;
  const char* indent_;
  bool empty_ = true;
};

void PrintCalendar(const CalendarDescription& calendar, std::ostream& out) {
  out << "{ \"kind\": " << JsonText(CalendarKindName(calendar.kind))
      << ", \"first_date\": " << JsonText(DateText(calendar.first_date)) << ", \"first_year\": " << calendar.first_year
      << ", \"years\": " << calendar.years << ",\n                \"years_in_use\": " << calendar.years_in_use
      << ", \"week_ends_on\": " << JsonText(WeekdayName(calendar.week_ends_on));
  if (!calendar.periods.empty()) {
    out << ",\n                \"periods\": ";
    RowList list(out, "                  ");
    for (const PeriodDescription& period : calendar.periods) {
      list.Next() << "{ \"name\": " << JsonText(period.name) << ", \"length\": " << period.length << " }";
    }
    list.End();
  }
  out << " }";
}

void PrintValue(const ValueDescription& value, std::ostream& out) {
  if (!std::isfinite(value.value)) {
    throw Failure(FailureNumber::kInvalidArgument,
                  "Account " + std::to_string(value.account) + ", field " + std::to_string(value.field) + " of " +
                      DateText(value.date) + " is " + std::to_string(value.value) + ", which JSON cannot hold",
                  kSource);
  }
  out << "{ \"account\": " << value.account << ", \"date\": \"" << DateText(value.date)
      << "\", \"field\": " << value.field << ", \"value\": " << json(value.value).dump() << " }";
}

template <typename Code, std::size_t count>
Text NameOf(const std::pair<std::string_view, Code> (&choices)[count], Code wanted) {
  for (const auto& [name, code] : choices) {
    if (code == wanted) return Text(name);
  }
  throw Failure(FailureNumber::kInvalidArgument,
                "The code " + std::to_string(static_cast<int>(wanted)) + " has no name", kSource);
}

// `now` is what stands for all that is left out; null where a new book is described.
BookDescription ReadDescription(const Text& json_text, const Text& source_name, const BookDescription* now) {
  const json value = ParseJson(json_text, source_name);
  const Place root(value, "", source_name);
  root.RequireObject({"system_name", "type_name", "data_level", "calendar", "max_accounts", "max_fields", "accounts",
                      "fields", "values"});
  const bool is_new = now == nullptr;
  BookDescription book;
  if (!is_new) book = *now;
  if (is_new) book.type_name = kUsualTypeName;
  if (is_new || root.Has("system_name")) book.system_name = root.At("system_name").String();
  if (root.Has("type_name")) book.type_name = root.At("type_name").String();
  if (root.Has("data_level")) book.data_level = root.At("data_level").Choice(kDataLevels);
  if (is_new || root.Has("calendar"))
    book.calendar = ReadCalendar(root.At("calendar"), is_new ? nullptr : &now->calendar);
  const auto account_of = FinderIn<AccountDescription>(is_new ? nullptr : &now->accounts);
  const auto field_of = FinderIn<FieldDescription>(is_new ? nullptr : &now->fields);
  book.accounts = ReadRows(root, "accounts", std::move(book.accounts),
                           [&](const Place& place) { return ReadAccount(place, account_of); });
  book.fields =
      ReadRows(root, "fields", std::move(book.fields), [&](const Place& place) { return ReadField(place, field_of); });
  book.values = ReadRows(root, "values", std::vector<ValueDescription>(), ReadValue);
  book.max_accounts = root.Has("max_accounts")
                          ? root.At("max_accounts").Whole<Long>(1, kMaxAccountNumber)
                          : HighestNumber(book.accounts, is_new ? kUsualMaxAccounts : now->max_accounts);
  book.max_fields = root.Has("max_fields") ? root.At("max_fields").Whole<Long>(1, kMaxListLength)
                                           : HighestNumber(book.fields, is_new ? kUsualMaxFields : now->max_fields);
  return book;
}

}  // namespace

BookDescription ParseBookDescription(const Text& json_text, const Text& source_name) {
  BookDescription book = ReadDescription(json_text, source_name, nullptr);
  CheckNewBookDescription(book, source_name);
  return book;
}

BookDescription ParseBookDescription(const Text& json_text, const Text& source_name, const BookDescription& now) {
  BookDescription book = ReadDescription(json_text, source_name, &now);
  CheckNewBookDescription(book, source_name);
  return book;
}

void CheckNewBookDescription(const BookDescription& description, const Text& source_name) {
  Checker(description, source_name).CheckNew();
}

void CheckBookDescription(const BookDescription& description, const Text& source_name) {
  Checker(description, source_name).Check();
}

void PrintBookDescription(const BookDescription& description, std::ostream& out, const ValueGiver& values) {
  out << "{ \"system_name\": " << JsonText(description.system_name)
      << ", \"type_name\": " << JsonText(description.type_name)
      << ", \"data_level\": " << JsonText(DataLevelName(description.data_level)) << ",\n  \"calendar\": ";
  PrintCalendar(description.calendar, out);
  out << ",\n  \"max_accounts\": " << description.max_accounts << ", \"max_fields\": " << description.max_fields
      << ",\n  \"accounts\": ";
  RowList accounts(out, "    ");
  for (const AccountDescription& account : description.accounts) {
    accounts.Next() << "{ \"number\": " << account.number << ", \"code\": " << JsonText(account.code)
                    << ", \"description\": " << JsonText(account.description) << " }";
  }
  accounts.End();
  out << ",\n  \"fields\": ";
  RowList fields(out, "    ");
  for (const FieldDescription& field : description.fields) {
    fields.Next() << "{ \"number\": " << field.number << ", \"description\": " << JsonText(field.description)
                  << ", \"system\": " << (field.system ? "true" : "false") << " }";
  }
  fields.End();
  out << ",\n  \"values\": ";
  RowList rows(out, "    ");
  const auto take = [&](const ValueDescription& value) { PrintValue(value, rows.Next()); };
  if (values) {
    values(take);
  } else {
    std::for_each(description.values.begin(), description.values.end(), take);
  }
  rows.End();
  out << " }\n";
}

Text PrintBookDescription(const BookDescription& description) {
  std::ostringstream out;
  PrintBookDescription(description, out);
  return out.str();
}

Text DataLevelName(Integer data_level) {
  return NameOf(kDataLevels, data_level);
}

Text CalendarKindName(CalendarKind kind) {
  return NameOf(kCalendarKinds, kind);
}

Text WeekdayName(Integer weekday) {
  return NameOf(kWeekdays, weekday);
}

}  // namespace tallybook::engine
