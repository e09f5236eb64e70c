#include "tallybook/preview/OverlayMasterfile.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <string>
#include <utility>

#include "base/Failure.h"
#include "base/Narrow.h"

namespace tallybook::preview {

namespace {

constexpr const char* kSource = "Tallybook.Overlay";

}  // namespace

// --- The calendar ----------------------------------------------------------------------------------------------------

// A calendar of the database below that tells the overlay which dates were levelled.
class OverlayMasterfile::Calendar : public tallybook::FiscalCalendar {
 public:
  Calendar(OverlayMasterfile& overlay, std::unique_ptr<tallybook::FiscalCalendar> own)
      : overlay_(overlay), own_(std::move(own)) {}

  void Attach(Masterfile& masterfile) override { own_->Attach(masterfile); }
  [[nodiscard]] Date CurrentDate() const override { return own_->CurrentDate(); }
  void SetCurrentDate(Date date) override { own_->SetCurrentDate(date); }
  Date LevelDate(Date date, Integer level) override {
    const Date level_date = own_->LevelDate(date, level);
    overlay_.NoteLevelDate(date, level, level_date);
    return level_date;
  }
  [[nodiscard]] Integer PeriodNumber() const override { return own_->PeriodNumber(); }
  [[nodiscard]] Integer QuarterNumber() const override { return own_->QuarterNumber(); }
  [[nodiscard]] Integer HalfNumber() const override { return own_->HalfNumber(); }
  [[nodiscard]] Integer FiscalYear() const override { return own_->FiscalYear(); }
  [[nodiscard]] Date PriorPeriodEnd() const override { return own_->PriorPeriodEnd(); }

  [[nodiscard]] tallybook::FiscalCalendar& Own() { return *own_; }

 private:
  OverlayMasterfile& overlay_;
  std::unique_ptr<tallybook::FiscalCalendar> own_;
};

// --- The database below ----------------------------------------------------------------------------------------------

std::unique_ptr<OverlayMasterfile::Calendar> OverlayMasterfile::NewCalendar(Masterfile& below, HostFactory& factory) {
  auto calendar = std::make_unique<Calendar>(*this, factory.NewFiscalCalendar());
  calendar->Attach(below);
  calendar->SetCurrentDate(below.FiscalCalendar().CurrentDate());
  return calendar;
}

OverlayMasterfile::OverlayMasterfile(Masterfile& below, HostFactory& factory, HostApp& app, std::size_t cache_bytes)
    : MasterfileLayer(below, app),
      calendar_(NewCalendar(below, factory)),
      places_(below, calendar_->Own()),
      figures_(places_.Accounts(), places_.Records(), cache_bytes),
      regroups_(below.DataLevel() != kDayLevel) {
  if (regroups_) days_.resize(places_.Days());
}

OverlayMasterfile::~OverlayMasterfile() = default;

tallybook::FiscalCalendar& OverlayMasterfile::FiscalCalendar() {
  return *calendar_;
}

// --- Records ---------------------------------------------------------------------------------------------------------

void OverlayMasterfile::DropCurrent() {
  ClearColumns();
  current_ = false;
  current_below_ = false;
  day_is_due_ = false;
}

void OverlayMasterfile::ClearColumns() {
  for (std::size_t index = 0; index < touched_; ++index) {
    Column& column = columns_[touched_columns_[index]];
    column.unwritten = kUnwritten;
    column.stood = kUnwritten;
    column.touched = false;
  }
  touched_ = 0;
}

bool OverlayMasterfile::ReadRecord(Long account_number, Date date) {
  DropCurrent();
  const auto place = places_.Find(account_number, date);
  if (!place) {
    if (!Below().ReadRecord(account_number, date)) return false;
    throw Failure(FailureNumber::kInternal, "The database has a record that its lists have no place for", kSource);
  }
  figures_.Select(place->account, place->record);
  account_number_ = account_number;
  date_ = date;
  if (!figures_.IsTouched() || !place->is_certain) {
    if (!Below().ReadRecord(account_number, date)) return false;
    current_below_ = true;
  }
  current_ = true;
  if (regroups_) {
    day_ = date == asked_level_date_ ? asked_date_ : date;
    day_is_due_ = true;
  }
  return true;
}

Double OverlayMasterfile::FigureBelow(Integer field_number) const {
  if (!current_below_) {
    if (!Below().ReadRecord(account_number_, date_)) {
      throw Failure(FailureNumber::kInternal, "A record that was read before cannot be read", kSource);
    }
    current_below_ = true;
  }
  return Below().FieldValue(field_number);
}

// A figure without what was set and not written.
Double OverlayMasterfile::Stands(Integer field_number, std::size_t column) const {
  const Double now = figures_.Now(column);
  return IsUnwritten(now) ? FigureBelow(field_number) : now;
}

Double OverlayMasterfile::FieldValue(Integer field_number) const {
  if (day_is_due_) NoteArrival();
  if (!current_) return Below().FieldValue(field_number);  // which says what is wrong
  const std::size_t column = AtNumber(column_of_field_, field_number);
  if (column == 0) return FigureBelow(field_number);
  Column& asked = Touched(column - 1);
  if (!IsUnwritten(asked.unwritten)) return asked.unwritten;
  if (IsUnwritten(asked.stood)) asked.stood = Stands(field_number, column - 1);
  return asked.stood;
}

void OverlayMasterfile::SetFieldValue(Integer field_number, Double value) {
  if (day_is_due_ && value != 0) NoteArrival();
  if (!current_) return Below().SetFieldValue(field_number, value);  // which says what is wrong
  if (!std::isfinite(value)) RefuseFigure(field_number, value);
  // Adding zero takes the sign from a negative zero, which is no figure of its own.
  Touched(ColumnOf(field_number)).unwritten = value + 0.0;
}

// A database may set such a figure as long as it is not written, and here it never is.
void OverlayMasterfile::RefuseFigure(Integer field_number, Double value) {
  (void)FigureBelow(field_number);
  Below().SetFieldValue(field_number, value);
  current_below_ = false;
  throw Failure(FailureNumber::kOverflow,
                std::to_string(value) + " is no figure for field " + std::to_string(field_number), kSource);
}

std::size_t OverlayMasterfile::NewColumn(Integer field_number) {
  const Integer position = places_.FieldPosition(field_number);
  if (position == 0) {
    (void)FigureBelow(field_number);  // which says that there is no such field
    throw Failure(FailureNumber::kInvalidArgument,
                  "The database has no field of number " + std::to_string(field_number), kSource);
  }
  columns_.push_back({.field_position = position, .field_number = field_number});
  touched_columns_.resize(columns_.size());
  const auto number = static_cast<std::size_t>(field_number);
  if (number >= column_of_field_.size()) column_of_field_.resize(number + 1);
  column_of_field_[number] = static_cast<std::uint16_t>(columns_.size());
  return columns_.size() - 1;
}

// Only figures that differ take room.
bool OverlayMasterfile::WriteRecord() {
  if (!current_) return false;
  bool any_is_set = false;
  for (std::size_t index = 0; index < touched_; ++index) {
    const std::size_t place = touched_columns_[index];
    const Column& column = columns_[place];
    if (IsUnwritten(column.unwritten)) continue;
    if (!std::exchange(any_is_set, true)) figures_.Touch();
    const Double stood = IsUnwritten(column.stood) ? Stands(column.field_number, place) : column.stood;
    if (stood != column.unwritten) figures_.Put(place, stood, column.unwritten);
  }
  ClearColumns();
  return true;
}

Integer OverlayMasterfile::BeginRollback(Date /*first*/, Date /*last*/) {
  return 1;
}

void OverlayMasterfile::BeginFile() {
  figures_.BeginRound();
}

// --- Days ------------------------------------------------------------------------------------------------------------

// Meant: a walk over the records of a range asks for kOwnLevel, and no figure comes with it.
void OverlayMasterfile::NoteLevelDate(Date date, Integer level, Date level_date) {
  if (!regroups_ || level == kOwnLevel) return;
  asked_date_ = date;
  asked_level_date_ = level_date;
}

void OverlayMasterfile::NoteArrival() const {
  day_is_due_ = false;
  const Date offset = day_ - places_.FirstDay();
  if (offset >= 0 && offset < static_cast<Date>(days_.size())) days_[static_cast<std::size_t>(offset)] = true;
}

std::vector<RegroupedDays> OverlayMasterfile::Regrouped() const {
  std::vector<RegroupedDays> regrouped;
  for (std::size_t index = 0; index < days_.size(); ++index) {
    if (!days_[index]) continue;
    const Date day = places_.FirstDay() + static_cast<Date>(index);
    const Date record = places_.DateOf(places_.RecordOf(index));
    if (regrouped.empty() || regrouped.back().record != record) regrouped.push_back({.record = record, .first = day});
    regrouped.back().last = day;
    ++regrouped.back().days;
  }
  return regrouped;
}

// --- What was changed ------------------------------------------------------------------------------------------------

std::vector<std::size_t> OverlayMasterfile::ColumnsInOrder() const {
  std::vector<std::size_t> order(columns_.size());
  std::iota(order.begin(), order.end(), std::size_t{0});
  std::ranges::sort(order, {}, [&](std::size_t column) { return columns_[column].field_position; });
  return order;
}

RecordCounts OverlayMasterfile::VisitFile(const ChangesVisitor& visit) {
  DropCurrent();
  order_ = ColumnsInOrder();
  RecordCounts counts;
  figures_.VisitRound([&](OverlayFigures::Row row) {
    row.net = true;  // before this file is what is asked for
    return TellRow(row, visit, counts);
  });
  return counts;
}

RecordCounts OverlayMasterfile::VisitAll(const ChangesVisitor& visit) {
  DropCurrent();
  order_ = ColumnsInOrder();
  RecordCounts counts;
  figures_.VisitAll([&](const OverlayFigures::Row& row) { return TellRow(row, visit, counts); });
  return counts;
}

// Each change is put together where it is told from: to copy one that has just been written would wait for all its
// parts.
bool OverlayMasterfile::TellRow(const OverlayFigures::Row& row, const ChangesVisitor& visit, RecordCounts& counts) {
  account_number_ = places_.NumberOf(row.account);
  date_ = places_.DateOf(row.record);
  current_below_ = false;
  changes_.resize(order_.size());
  std::size_t count = 0;
  for (const std::size_t column : order_) {
    if (column >= row.now.size() || IsUnwritten(row.now[column])) continue;
    if (row.net && IsUnwritten(row.before[column])) continue;
    const Double before = row.net ? row.before[column] : FigureBelow(columns_[column].field_number);
    if (before == row.now[column]) continue;
    FigureChange& change = changes_[count++];
    change.account_position = static_cast<Integer>(row.account + 1);
    change.account_number = account_number_;
    change.date = date_;
    change.field_position = columns_[column].field_position;
    change.field_number = columns_[column].field_number;
    change.before = before;
    change.after = row.now[column];
  }
  current_below_ = false;
  ++(count == 0 ? counts.same : counts.changed);
  return count == 0 || visit(std::span(changes_).first(count));
}

}  // namespace tallybook::preview
