#include "tests/support/MemoryMasterfile.h"

#include <algorithm>
#include <array>
#include <numeric>
#include <utility>

#include "base/Dates.h"
#include "base/Failure.h"
#include "host/Printer.h"

namespace tallybook::testing {

namespace {

constexpr Integer kQuarterLevel = 4;
constexpr Integer kHalfYearLevel = 5;
constexpr Integer kYearLevel = 6;
constexpr Integer kCustomRangeLevel = 7;
constexpr Integer kAllLevel = 8;
constexpr int kDaysInWeek = 7;
constexpr int kMonthsInYear = 12;
constexpr std::size_t kCodeWidth = 10;
constexpr std::size_t kDescriptionWidth = 30;
// Numbers below this are looked up in a table, others in a map.
constexpr Long kTableNumbers = 1 << 20;

constexpr std::array<const char*, kMonthsInYear> kMonthNames = {"January",   "February", "March",    "April",
                                                                "May",       "June",     "July",     "August",
                                                                "September", "October",  "November", "December"};

[[noreturn]] void FailArgument(const Text& description) {
  throw Failure(FailureNumber::kInvalidArgument, description, "MemoryMasterfile");
}

[[noreturn]] void FailNoField(Integer number) {
  FailArgument("The book has no field " + std::to_string(number));
}

[[noreturn]] void FailNoRecord(Integer field_number) {
  FailArgument("No record is current, so it has no field " + std::to_string(field_number));
}

[[noreturn]] void FailRange(const Text& what, long long position) {
  throw Failure(FailureNumber::kRange, what + " " + std::to_string(position) + " is not held", "MemoryMasterfile");
}

int FloorDivide(int dividend, int divisor) {
  const int quotient = dividend / divisor;
  return dividend % divisor < 0 ? quotient - 1 : quotient;
}

// The day without its time. Rounded by hand: the library's way is a call, and this stands in every record read.
Date WholeDay(Date date) {
  const auto day = static_cast<Date>(static_cast<long long>(date));
  return day > date ? day - 1 : day;
}

int FloorRest(int dividend, int divisor) {
  return dividend - FloorDivide(dividend, divisor) * divisor;
}

// Blanks are added up to a width in characters; a text that is as long already stays.
Text Padded(const Text& text, std::size_t width) {
  const auto characters = static_cast<std::size_t>(std::count_if(
      text.begin(), text.end(), [](char byte) { return (static_cast<unsigned char>(byte) & 0xC0) != 0x80; }));
  return characters >= width ? text : text + Text(width - characters, ' ');
}

void CheckShape(const BookShape& shape) {
  if (shape.data_level < kDayLevel || shape.data_level > kPeriodLevel)
    FailArgument("A book has no data level " + std::to_string(shape.data_level));
  if (shape.week_ends_on < 1 || shape.week_ends_on > kDaysInWeek)
    FailArgument("A week cannot end on day " + std::to_string(shape.week_ends_on));
  if (shape.first_date != std::floor(shape.first_date)) FailArgument("A book begins with a whole day");
  if (shape.calendar == CalendarKind::kMonths && PartsOf(shape.first_date).day != 1)
    FailArgument("A calendar of months begins with the first day of a month, not on " + DateText(shape.first_date));
  if (shape.calendar != CalendarKind::kCustom) return;
  if (shape.period_lengths.empty()) FailArgument("A custom calendar needs its period lengths");
  for (const Integer length : shape.period_lengths)
    if (length < 1) FailArgument("A period of a calendar cannot be " + std::to_string(length) + " days long");
}

}  // namespace

// --- FiscalRules -----------------------------------------------------------------------------------------------------

FiscalRules::FiscalRules(BookShape shape) : shape_(std::move(shape)) {
  CheckShape(shape_);
  custom_year_length_ = std::accumulate(shape_.period_lengths.begin(), shape_.period_lengths.end(), 0);
  last_date_ = YearStart(shape_.first_year + shape_.years) - 1;
  last_period_ = shape_.calendar == CalendarKind::kMonths ? MonthHolding(shape_.first_date)
                                                          : CustomPeriodHolding(shape_.first_date);
}

int FiscalRules::NumPeriods() const {
  return shape_.calendar == CalendarKind::kMonths ? kMonthsInYear : static_cast<int>(shape_.period_lengths.size());
}

Date FiscalRules::PeriodStart(int year, int period) const {
  const int years = year - shape_.first_year;
  if (shape_.calendar == CalendarKind::kMonths) {
    const DateParts first = PartsOf(shape_.first_date);
    return DateFromParts(first.year + years, first.month + period - 1, 1);
  }
  const int days_before = std::accumulate(shape_.period_lengths.begin(), shape_.period_lengths.begin() + period - 1, 0);
  return shape_.first_date + static_cast<Date>(years) * custom_year_length_ + days_before;
}

FiscalRules::Period FiscalRules::PeriodHolding(Date day) const {
  if (day >= last_period_.days.first && day <= last_period_.days.last) return last_period_;
  last_period_ = shape_.calendar == CalendarKind::kMonths ? MonthHolding(day) : CustomPeriodHolding(day);
  return last_period_;
}

FiscalRules::Period FiscalRules::MonthHolding(Date day) const {
  const DateParts first = PartsOf(shape_.first_date);
  const DateParts parts = PartsOf(day);
  const int months = (parts.year - first.year) * kMonthsInYear + parts.month - first.month;
  Period period;
  period.year = shape_.first_year + FloorDivide(months, kMonthsInYear);
  period.number = FloorRest(months, kMonthsInYear) + 1;
  period.days = {DateFromParts(parts.year, parts.month, 1), DateFromParts(parts.year, parts.month + 1, 1) - 1};
  return period;
}

FiscalRules::Period FiscalRules::CustomPeriodHolding(Date day) const {
  const int days = static_cast<int>(day - shape_.first_date);
  int left = FloorRest(days, custom_year_length_);
  Period period;
  period.year = shape_.first_year + FloorDivide(days, custom_year_length_);
  period.days.first = day - left;
  for (const Integer length : shape_.period_lengths) {
    ++period.number;
    period.days.last = period.days.first + length - 1;
    if (left < length) break;
    left -= length;
    period.days.first += length;
  }
  return period;
}

// Twelve periods make quarters of three, thirteen give the last quarter four; any other count is split as evenly as
// can be, the earlier quarters taking what is over.
int FiscalRules::QuarterOf(int period) const {
  const int periods = NumPeriods();
  if (periods == 13) return std::min((period - 1) / 3 + 1, 4);
  int end = 0;
  for (int quarter = 1; quarter <= 4; ++quarter) {
    end += periods / 4 + (quarter <= periods % 4 ? 1 : 0);
    if (period <= end) return quarter;
  }
  return 4;
}

DateSpan FiscalRules::LargerUnitHolding(Date day, Integer level) const {
  switch (level) {
    case kCustomRangeLevel:
      return {day, day};
    case kWeekLevel:
      return WeekHolding(day);
    case kPeriodLevel:
      return PeriodHolding(day).days;
    case kAllLevel:
      return {std::min(day, FirstDate()), std::max(day, LastDate())};
    default:
      break;
  }
  const Period period = PeriodHolding(day);
  const int quarter = QuarterOf(period.number);
  if (level == kQuarterLevel) return Quarters(period.year, quarter, quarter);
  if (level == kHalfYearLevel) return quarter <= 2 ? Quarters(period.year, 1, 2) : Quarters(period.year, 3, 4);
  if (level == kYearLevel) return {YearStart(period.year), YearStart(period.year + 1) - 1};
  FailArgument("A calendar has no level " + std::to_string(level));
}

DateSpan FiscalRules::WeekHolding(Date day) const {
  // Day 0 of the count of days is a Saturday, day 7 of a week that begins with Sunday.
  const int day_of_week = FloorRest(static_cast<int>(day) + 6, kDaysInWeek) + 1;
  const Date last = day + FloorRest(shape_.week_ends_on - day_of_week, kDaysInWeek);
  return {last - (kDaysInWeek - 1), last};
}

DateSpan FiscalRules::Quarters(int year, int first_quarter, int last_quarter) const {
  int first_period = 1;
  while (QuarterOf(first_period) < first_quarter) ++first_period;
  int next_period = first_period;
  while (next_period <= NumPeriods() && QuarterOf(next_period) <= last_quarter) ++next_period;
  return {PeriodStart(year, first_period), PeriodStart(year, next_period) - 1};
}

// --- MemoryCalendar --------------------------------------------------------------------------------------------------

void MemoryCalendar::Attach(Masterfile& masterfile) {
  record_.TellBulk("Calendar.Attach");
  const auto* const book = dynamic_cast<MemoryMasterfile*>(&masterfile);
  if (book == nullptr) FailArgument("A calendar in memory takes a book in memory only");
  rules_ = &book->rules_;
  LevelDate(rules_->FirstDate(), kDayLevel);
}

const FiscalRules& MemoryCalendar::Rules() const {
  if (rules_ == nullptr) throw Failure(FailureNumber::kObjectNotSet, "The calendar has no database", "MemoryCalendar");
  return *rules_;
}

Date MemoryCalendar::CurrentDate() const {
  record_.TellBulk("Calendar.CurrentDate");
  static_cast<void>(Rules());
  return current_date_;
}

void MemoryCalendar::SetCurrentDate(Date date) {
  record_.TellBulk("Calendar.SetCurrentDate", AsDate{date});
  static_cast<void>(Rules());
  current_date_ = date;
}

Date MemoryCalendar::LevelDate(Date date, Integer level) {
  record_.TellBulk("Calendar.LevelDate", AsDate{date}, level);
  const FiscalRules& rules = Rules();
  unit_ = rules.UnitHolding(WholeDay(date), level == kOwnLevel ? rules.Shape().data_level : level);
  return unit_.last;
}

Integer MemoryCalendar::PeriodNumber() const {
  record_.TellBulk("Calendar.PeriodNumber");
  return static_cast<Integer>(Rules().PeriodHolding(unit_.last).number);
}

Integer MemoryCalendar::QuarterNumber() const {
  record_.TellBulk("Calendar.QuarterNumber");
  return static_cast<Integer>(Rules().QuarterOf(Rules().PeriodHolding(unit_.last).number));
}

Integer MemoryCalendar::HalfNumber() const {
  record_.TellBulk("Calendar.HalfNumber");
  return Rules().QuarterOf(Rules().PeriodHolding(unit_.last).number) <= 2 ? 1 : 2;
}

Integer MemoryCalendar::FiscalYear() const {
  record_.TellBulk("Calendar.FiscalYear");
  return static_cast<Integer>(Rules().PeriodHolding(unit_.last).year);
}

Date MemoryCalendar::PriorPeriodEnd() const {
  record_.TellBulk("Calendar.PriorPeriodEnd");
  static_cast<void>(Rules());
  return unit_.first - 1;
}

// --- ProgressDisplay -------------------------------------------------------------------------------------------------

void ProgressDisplay::Begin(const Text& title) {
  open = true;
  text = title;
  titles.push_back(title);
}

void ProgressDisplay::End() {
  open = false;
  cancelled_ = false;
}

void ProgressDisplay::SetText(const Text& new_text) {
  text = new_text;
  texts.push_back(new_text);
}

bool ProgressDisplay::Poll() {
  if (polls_left_ > 0 && --polls_left_ == 0) cancelled_ = true;
  return cancelled_;
}

// --- NumberIndex -----------------------------------------------------------------------------------------------------

void NumberIndex::Add(Long number, std::size_t index) {
  if (number < 0 || number >= kTableNumbers) {
    large_[number] = static_cast<std::int32_t>(index);
    return;
  }
  const auto place = static_cast<std::size_t>(number);
  if (place >= small_.size()) small_.resize(place + 1, -1);
  small_[place] = static_cast<std::int32_t>(index);
}

std::int32_t NumberIndex::FindLarge(Long number) const {
  const auto found = large_.find(number);
  return found == large_.end() ? -1 : found->second;
}

// --- Cursors and the title -------------------------------------------------------------------------------------------

class MemoryMasterfile::AccountCursor : public AccountRecord {
 public:
  explicit AccountCursor(MemoryMasterfile& book) : book_(book) {}

  void SetSelect(Long number) override {
    book_.record_.TellBulk("AccountRecord.SetSelect", number);
    number_ = number;
    index_ = book_.account_index_.Find(number);
  }
  [[nodiscard]] Text Code() const override {
    book_.record_.TellBulk("AccountRecord.Code");
    return Padded(index_ < 0 ? Text() : Selected().code, kCodeWidth);
  }
  [[nodiscard]] Text Description() const override {
    book_.record_.TellBulk("AccountRecord.Description");
    return Padded(index_ < 0 ? Text() : Selected().description, kDescriptionWidth);
  }
  [[nodiscard]] Long Number() const override {
    book_.record_.TellBulk("AccountRecord.Number");
    return number_;
  }
  [[nodiscard]] Long MaxNumber() const override {
    book_.record_.TellBulk("AccountRecord.MaxNumber");
    Long highest = 0;
    for (const Account& account : book_.accounts_) highest = std::max(highest, account.number);
    return highest;
  }

 private:
  [[nodiscard]] const Account& Selected() const { return book_.accounts_[static_cast<std::size_t>(index_)]; }

  MemoryMasterfile& book_;
  Long number_ = 0;
  std::int32_t index_ = -1;
};

class MemoryMasterfile::FieldCursor : public FieldRecord {
 public:
  explicit FieldCursor(MemoryMasterfile& book) : book_(book) {}

  void SetSelect(Integer number) override {
    book_.record_.TellBulk("FieldRecord.SetSelect", number);
    index_ = book_.field_index_.Find(number);
  }
  [[nodiscard]] Text Description() const override {
    book_.record_.TellBulk("FieldRecord.Description");
    return index_ < 0 ? Text() : Selected().description;
  }
  [[nodiscard]] bool SystemMaintained() const override {
    book_.record_.TellBulk("FieldRecord.SystemMaintained");
    return index_ >= 0 && Selected().system_maintained;
  }
  [[nodiscard]] Long MaxNumber() const override {
    book_.record_.TellBulk("FieldRecord.MaxNumber");
    Integer highest = 0;
    for (const Field& field : book_.fields_) highest = std::max(highest, field.number);
    return highest;
  }

 private:
  [[nodiscard]] const Field& Selected() const { return book_.fields_[static_cast<std::size_t>(index_)]; }

  MemoryMasterfile& book_;
  std::int32_t index_ = -1;
};

class MemoryMasterfile::SystemTitle : public TitleLookup {
 public:
  explicit SystemTitle(const MemoryMasterfile& book) : book_(book) {}
  [[nodiscard]] Text TitleFor(const Text& context) const override {
    book_.record_.TellBulk("TitleFor", context);
    return context == book_.TitleContext() ? book_.Shape().system_name : Text();
  }

 private:
  const MemoryMasterfile& book_;
};

// --- MemoryMasterfile: what a test says and asks ---------------------------------------------------------------------

MemoryMasterfile::MemoryMasterfile(HostApp& app, CallRecord& record, BookShape shape)
    : app_(app), record_(record), rules_(std::move(shape)), calendar_(record), title_(new SystemTitle(*this)) {
  calendar_.Attach(*this);
}

MemoryMasterfile::~MemoryMasterfile() = default;

void MemoryMasterfile::AddAccount(Long number, const Text& code, const Text& description) {
  if (account_index_.Find(number) >= 0) FailArgument("The account number " + std::to_string(number) + " is taken");
  if (number > Shape().max_accounts)
    FailArgument("The account number " + std::to_string(number) + " is above the limit");
  account_index_.Add(number, accounts_.size());
  Account account;
  account.number = number;
  account.code = code;
  account.description = description;
  accounts_.push_back(std::move(account));
}

void MemoryMasterfile::AddField(Integer number, const Text& description, bool system_maintained) {
  if (field_index_.Find(number) >= 0) FailArgument("The field number " + std::to_string(number) + " is taken");
  if (number > Shape().max_fields) FailArgument("The field number " + std::to_string(number) + " is above the limit");
  LoseUnwrittenChanges();
  current_ = Place{};
  const std::size_t width = fields_.size();
  for (Account& account : accounts_) {
    std::vector<Double> wider;
    for (std::size_t start = 0; start < account.values.size(); start += width) {
      wider.insert(wider.end(), account.values.begin() + static_cast<std::ptrdiff_t>(start),
                   account.values.begin() + static_cast<std::ptrdiff_t>(start + width));
      wider.push_back(0);
    }
    account.values = std::move(wider);
  }
  field_index_.Add(number, fields_.size());
  fields_.push_back({number, description, system_maintained});
  zeros_.assign(fields_.size(), 0);
}

void MemoryMasterfile::Set(Long account_number, Date date, Integer field_number, Double value) {
  Place place = ExpectPlace(account_number, date);
  const std::size_t field = ExpectField(field_number);
  LoseUnwrittenChanges();
  Settle(place);
  ValuesAt(place.account, place.record)[field] = value;
  if (current_.account < 0) return;
  // Storage may have moved, and the current record may just have come into being.
  if (current_.account == place.account && current_.day == place.day) current_ = place;
  if (current_.record >= 0) current_values_ = ValuesAt(current_.account, current_.record);
}

Double MemoryMasterfile::Get(Long account_number, Date date, Integer field_number) const {
  const Place place = ExpectPlace(account_number, date);
  const std::size_t field = ExpectField(field_number);
  if (place.record < 0) return 0;
  return StoredValue(place.account, place.record, field);
}

MemoryMasterfile::FigureMap MemoryMasterfile::Figures() const {
  FigureMap figures;
  for (std::size_t index = 0; index < accounts_.size(); ++index) {
    const Account& account = accounts_[index];
    for (std::size_t day = 0; day < account.record_of_day.size(); ++day) {
      if (account.record_of_day[day] < 0) continue;
      for (std::size_t field = 0; field < fields_.size(); ++field) {
        const Double value = StoredValue(static_cast<std::int32_t>(index), account.record_of_day[day], field);
        if (value != 0)
          figures[{account.number, rules_.FirstDate() + static_cast<Date>(day), fields_[field].number}] = value;
      }
    }
  }
  return figures;
}

std::vector<MemoryMasterfile::JournalEntry> MemoryMasterfile::Journal() const {
  std::vector<JournalEntry> entries;
  for (const JournalImage& image : journal_) entries.push_back(image.entry);
  return entries;
}

bool MemoryMasterfile::UndoLastRollback() {
  LoseUnwrittenChanges();
  if (journal_.empty()) return false;
  const std::vector<OldValue>& before = journal_.back().before;
  for (auto old = before.rbegin(); old != before.rend(); ++old)
    ValuesAt(old->account, old->record)[old->field] = old->value;
  journal_.pop_back();
  return true;
}

// --- MemoryMasterfile: records ---------------------------------------------------------------------------------------

// Filled in place: a small structure given back is put together in memory, and reading it at once waits for that.
bool MemoryMasterfile::FindPlace(Long account_number, Date date, Place& place) const {
  place = {};
  const std::int32_t account = account_index_.Find(account_number);
  const DateSpan unit = rules_.UnitHolding(WholeDay(date), Shape().data_level);
  if (account < 0 || unit.last < rules_.FirstDate() || unit.first > rules_.LastDate()) return false;
  place.account = account;
  place.day = static_cast<std::int32_t>(unit.last - rules_.FirstDate());
  const std::vector<std::int32_t>& records = accounts_[static_cast<std::size_t>(account)].record_of_day;
  const auto slot = static_cast<std::size_t>(place.day);
  if (slot < records.size()) place.record = records[slot];
  return true;
}

MemoryMasterfile::Place MemoryMasterfile::ExpectPlace(Long account_number, Date date) const {
  Place place;
  if (!FindPlace(account_number, date, place))
    FailArgument("The book has no record of account " + std::to_string(account_number) + " for " + DateText(date));
  return place;
}

std::size_t MemoryMasterfile::ExpectField(Integer field_number) const {
  const std::int32_t field = field_index_.Find(field_number);
  if (field < 0) FailNoField(field_number);
  return static_cast<std::size_t>(field);
}

void MemoryMasterfile::Settle(Place& place) {
  if (place.record >= 0) return;
  Account& account = accounts_[static_cast<std::size_t>(place.account)];
  const auto slot = static_cast<std::size_t>(place.day);
  if (slot >= account.record_of_day.size()) account.record_of_day.resize(slot + 1, -1);
  place.record = static_cast<std::int32_t>(account.values.size() / fields_.size());
  account.record_of_day[slot] = place.record;
  account.values.resize(account.values.size() + fields_.size());
}

Double* MemoryMasterfile::ValuesAt(std::int32_t account, std::int32_t record) {
  return accounts_[static_cast<std::size_t>(account)].values.data() + static_cast<std::size_t>(record) * fields_.size();
}

const Double* MemoryMasterfile::ValuesAt(std::int32_t account, std::int32_t record) const {
  return accounts_[static_cast<std::size_t>(account)].values.data() + static_cast<std::size_t>(record) * fields_.size();
}

Double MemoryMasterfile::StoredValue(std::int32_t account, std::int32_t record, std::size_t field) const {
  if (account == current_.account && record == current_.record) {
    // The first value before of a field is the one that was stored; later ones were themselves never written.
    for (const UnwrittenChange& change : unwritten_)
      if (change.field == field) return change.value_before;
  }
  return ValuesAt(account, record)[field];
}

void MemoryMasterfile::LoseUnwrittenChanges() {
  for (auto change = unwritten_.rbegin(); change != unwritten_.rend(); ++change)
    current_values_[change->field] = change->value_before;
  unwritten_.clear();
}

bool MemoryMasterfile::ReadRecord(Long account_number, Date date) {
  if (!record_.AskBulk("ReadRecord", account_number, AsDate{date})) return false;
  if (!unwritten_.empty()) LoseUnwrittenChanges();
  if (!FindPlace(account_number, date, current_)) return false;
  current_values_ = current_.record < 0 ? zeros_.data() : ValuesAt(current_.account, current_.record);
  return true;
}

bool MemoryMasterfile::WriteRecord() {
  if (!record_.AskBulk("WriteRecord")) return false;
  if (current_.account < 0) return false;
  if (!journal_.empty() && !journal_.back().entry.closed)
    for (const UnwrittenChange& change : unwritten_)
      journal_.back().before.push_back({current_.account, current_.record, change.field, change.value_before});
  unwritten_.clear();
  return true;
}

std::size_t MemoryMasterfile::CurrentField(Integer field_number) const {
  if (current_.account < 0) FailNoRecord(field_number);
  return ExpectField(field_number);
}

Double MemoryMasterfile::FieldValue(Integer field_number) const {
  record_.TellBulk("FieldValue", field_number);
  return current_values_[CurrentField(field_number)];
}

void MemoryMasterfile::SetFieldValue(Integer field_number, Double value) {
  record_.TellBulk("SetFieldValue", field_number, value);
  const std::size_t field = CurrentField(field_number);
  if (current_.record < 0) {
    Settle(current_);
    current_values_ = ValuesAt(current_.account, current_.record);
  }
  unwritten_.push_back({field, current_values_[field]});
  current_values_[field] = value;
}

// --- MemoryMasterfile: objects, names and shape ----------------------------------------------------------------------

HostApp& MemoryMasterfile::App() {
  record_.TellBulk("App");
  return app_;
}

tallybook::FiscalCalendar& MemoryMasterfile::FiscalCalendar() {
  record_.TellBulk("FiscalCalendar");
  return calendar_;
}

std::unique_ptr<AccountRecord> MemoryMasterfile::NewAccountRecord() {
  record_.TellBulk("NewAccountRecord");
  return std::make_unique<AccountCursor>(*this);
}

std::unique_ptr<FieldRecord> MemoryMasterfile::NewFieldRecord() {
  record_.TellBulk("NewFieldRecord");
  return std::make_unique<FieldCursor>(*this);
}

SequenceList& MemoryMasterfile::PrintSequences() {
  record_.TellBulk("PrintSequences");
  return sequences_;
}

Text MemoryMasterfile::SystemName() const {
  record_.TellBulk("SystemName");
  return Shape().system_name;
}

Text MemoryMasterfile::DataPath() const {
  record_.TellBulk("DataPath");
  return Shape().data_path;
}

Text MemoryMasterfile::FileExtension() const {
  record_.TellBulk("FileExtension");
  return Shape().file_extension;
}

Text MemoryMasterfile::SettingsFileName() const {
  record_.TellBulk("SettingsFileName");
  return Shape().settings_file;
}

Text MemoryMasterfile::MasterFileTypeName(Integer type) const {
  record_.TellBulk("MasterFileTypeName", type);
  return type == 0 ? Shape().type_name : Text();
}

const TitleLookup& MemoryMasterfile::TitleSource() const {
  record_.TellBulk("TitleSource");
  return *title_;
}

Text MemoryMasterfile::TitleContext() const {
  record_.TellBulk("TitleContext");
  return "system";
}

Long MemoryMasterfile::FileVersion() const {
  record_.TellBulk("FileVersion");
  return answers.file_version;
}

Integer MemoryMasterfile::DataLevel() const {
  record_.TellBulk("DataLevel");
  return answers.data_level.value_or(Shape().data_level);
}

Integer MemoryMasterfile::CalendarType() const {
  record_.TellBulk("CalendarType");
  const Integer own = Shape().calendar == CalendarKind::kMonths ? 0 : 4;
  return answers.calendar_type.value_or(own);
}

Integer MemoryMasterfile::YearField() const {
  record_.TellBulk("YearField");
  return answers.year_field;
}

Long MemoryMasterfile::FieldSlots() const {
  record_.TellBulk("FieldSlots");
  return answers.field_slots;
}

Long MemoryMasterfile::AccountSlots() const {
  record_.TellBulk("AccountSlots");
  return answers.account_slots;
}

Long MemoryMasterfile::MaxAccounts() const {
  record_.TellBulk("MaxAccounts");
  return Shape().max_accounts;
}

Long MemoryMasterfile::NumAccounts() const {
  record_.TellBulk("NumAccounts");
  return answers.num_accounts.value_or(static_cast<Long>(accounts_.size()));
}

Long MemoryMasterfile::AccountNumber(Integer position) const {
  record_.TellBulk("AccountNumber", position);
  if (answers.account_numbers.contains(position)) return answers.account_numbers.at(position);
  if (position < 1 || static_cast<std::size_t>(position) > accounts_.size()) FailRange("Account position", position);
  return accounts_[static_cast<std::size_t>(position) - 1].number;
}

Long MemoryMasterfile::MaxFields() const {
  record_.TellBulk("MaxFields");
  return Shape().max_fields;
}

Long MemoryMasterfile::NumFields() const {
  record_.TellBulk("NumFields");
  return answers.num_fields.value_or(static_cast<Long>(fields_.size()));
}

Integer MemoryMasterfile::FieldNumber(Integer position) const {
  record_.TellBulk("FieldNumber", position);
  if (!answers.field_numbers.empty() && answers.field_numbers.contains(position))
    return answers.field_numbers.at(position);
  if (position < 1 || static_cast<std::size_t>(position) > fields_.size()) FailRange("Field position", position);
  return fields_[static_cast<std::size_t>(position) - 1].number;
}

Text MemoryMasterfile::FieldName(Integer position) const {
  record_.TellBulk("FieldName", position);
  if (position < 1 || static_cast<std::size_t>(position) > fields_.size()) FailRange("Field position", position);
  return fields_[static_cast<std::size_t>(position) - 1].description;
}

// --- MemoryMasterfile: dates and years -------------------------------------------------------------------------------

bool MemoryMasterfile::DateValid(Date date) const {
  if (!record_.AskBulk("DateValid", AsDate{date})) return false;
  const Date day = WholeDay(date);
  return day >= rules_.FirstDate() && day <= rules_.LastDate();
}

Date MemoryMasterfile::FirstDate() const {
  record_.TellBulk("FirstDate");
  return rules_.FirstDate();
}

Date MemoryMasterfile::LastDate() const {
  record_.TellBulk("LastDate");
  return rules_.LastDate();
}

Date MemoryMasterfile::FirstSystemDate() const {
  record_.TellBulk("FirstSystemDate");
  return answers.first_system_date.value_or(rules_.FirstDate());
}

Integer MemoryMasterfile::FirstYear() const {
  record_.TellBulk("FirstYear");
  return Shape().first_year;
}

Long MemoryMasterfile::NumYears() const {
  record_.TellBulk("NumYears");
  return answers.num_years.value_or(Shape().years);
}

Long MemoryMasterfile::YearsInUse() const {
  record_.TellBulk("YearsInUse");
  return Shape().years_in_use;
}

Integer MemoryMasterfile::YearCode(Integer position) const {
  record_.TellBulk("YearCode", position);
  const auto answer = answers.year_codes.find(position);
  if (answer != answers.year_codes.end()) return answer->second;
  if (position < 1 || position > answers.num_years.value_or(Shape().years)) FailRange("Year position", position);
  return static_cast<Integer>(Shape().first_year + position - 1);
}

Date MemoryMasterfile::YearStart(Integer year) const {
  record_.TellBulk("YearStart", year);
  if (year < Shape().first_year || year > Shape().first_year + answers.num_years.value_or(Shape().years))
    FailRange("Year", year);
  return rules_.YearStart(year);
}

Integer MemoryMasterfile::NumPeriods() const {
  record_.TellBulk("NumPeriods");
  return answers.num_periods.value_or(static_cast<Integer>(rules_.NumPeriods()));
}

void MemoryMasterfile::CheckPeriod(Integer period) const {
  if (period < 1 || period > answers.num_periods.value_or(static_cast<Integer>(rules_.NumPeriods())))
    FailRange("Period", period);
}

Text MemoryMasterfile::PeriodName(Integer period) const {
  record_.TellBulk("PeriodName", period);
  const auto answer = answers.period_names.find(period);
  if (answer != answers.period_names.end()) return answer->second;
  CheckPeriod(period);
  const auto index = static_cast<std::size_t>(period) - 1;
  if (index < Shape().period_names.size()) return Shape().period_names[index];
  if (Shape().calendar == CalendarKind::kMonths && IsPeriod(period)) {
    const std::size_t first_month = static_cast<std::size_t>(PartsOf(rules_.FirstDate()).month) - 1;
    return kMonthNames[(first_month + index) % kMonthNames.size()];
  }
  return "Period " + std::to_string(period);
}

Integer MemoryMasterfile::PeriodLength(Integer period) const {
  record_.TellBulk("PeriodLength", period);
  const auto answer = answers.period_lengths.find(period);
  if (answer != answers.period_lengths.end()) return answer->second;
  CheckPeriod(period);
  if (!IsPeriod(period)) return 0;
  const DateSpan days = rules_.DaysOfPeriod(Shape().first_year, period);
  return static_cast<Integer>(days.last - days.first + 1);
}

// --- MemoryMasterfile: progress, journal, rights, reports ------------------------------------------------------------

void MemoryMasterfile::BeginProgress(const Text& title) {
  record_.Tell("BeginProgress", title);
  progress.Begin(title);
}

void MemoryMasterfile::BeginProgressText(const Text& title) {
  record_.Tell("BeginProgressText", title);
  progress.Begin(title);
}

void MemoryMasterfile::SetProgressFraction(Single fraction) {
  record_.Tell("ProgressFraction", fraction);
  progress.fractions.push_back(fraction);
}

void MemoryMasterfile::SetProgressText(const Text& text) {
  record_.Tell("ProgressText", text);
  progress.SetText(text);
}

void MemoryMasterfile::SetProgressCancelEnabled(bool enabled) {
  record_.Tell("ProgressCancelEnabled", enabled);
  progress.cancel_enabled = enabled;
}

bool MemoryMasterfile::ProgressCancelled() const {
  record_.TellBulk("ProgressCancelled");
  return progress.Poll();
}

void MemoryMasterfile::EndProgress() {
  record_.Tell("EndProgress");
  progress.End();
}

Integer MemoryMasterfile::BeginRollback(Date first, Date last) {
  record_.Tell("BeginRollback", AsDate{first}, AsDate{last});
  JournalImage image;
  image.entry.first = first;
  image.entry.last = last;
  journal_.push_back(std::move(image));
  return static_cast<Integer>(journal_.size());
}

void MemoryMasterfile::EndRollback() {
  record_.Tell("EndRollback");
  if (!journal_.empty()) journal_.back().entry.closed = true;
}

bool MemoryMasterfile::AccessRight(const Text& right) const {
  return record_.AskBulk("AccessRight", right) && rights.contains(right);
}

void MemoryMasterfile::InitReportPrinter(Printer&) {
  record_.Tell("InitReportPrinter");
}

void MemoryMasterfile::PrintReportHeader(Printer& printer, const Text& name) {
  record_.Tell("PrintReportHeader", name);
  printer.PrintLine(name + " - " + Shape().system_name);
}

}  // namespace tallybook::testing
