#include "tallybook/preview/ExpectedMasterfile.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <string>
#include <utility>

#include "base/Failure.h"

namespace tallybook::preview {

namespace {

constexpr const char* kExpectedSource = "Tallybook.Expected";

// How a figure is kept of which nobody can tell what it should be: no database holds such a one.
constexpr Double kUntold = std::numeric_limits<Double>::infinity();

std::unique_ptr<tallybook::FiscalCalendar> NewCalendarOf(Masterfile& database, HostFactory& factory) {
  auto calendar = factory.NewFiscalCalendar();
  calendar->Attach(database);
  calendar->SetCurrentDate(database.FiscalCalendar().CurrentDate());
  return calendar;
}

}  // namespace

ExpectedMasterfile::ExpectedMasterfile(Masterfile& below, HostFactory& factory, HostApp& app, std::size_t cache_bytes)
    : MasterfileLayer(below, app),
      calendar_(NewCalendarOf(below, factory)),
      places_(below, *calendar_),
      figures_(places_.Accounts(), places_.Records(), cache_bytes, OverlayFigures::Kept::kNow) {}

void ExpectedMasterfile::BeginFile(FigureBaseline* before) {
  DropCurrent();
  ++files_;
  before_ = before;
  for (Column& column : columns_) column.before = PlaceBefore(column.field_number);
}

std::optional<std::size_t> ExpectedMasterfile::PlaceBefore(Integer field_number) const {
  return before_ == nullptr ? std::nullopt : before_->PlaceOf(field_number);
}

// --- Records ---------------------------------------------------------------------------------------------------------

void ExpectedMasterfile::DropCurrent() {
  for (std::size_t index = 0; index < touched_; ++index) {
    Column& column = columns_[touched_columns_[index]];
    column.unwritten = kUnwritten;
    column.untold = false;
    column.touched = false;
  }
  touched_ = 0;
  current_ = false;
}

bool ExpectedMasterfile::ReadRecord(Long account_number, Date date) {
  DropCurrent();
  const auto place = places_.Find(account_number, date);
  if (!place || !place->is_certain) {
    if (!Below().ReadRecord(account_number, date)) return false;
  }
  if (!place) {
    throw Failure(FailureNumber::kInternal, "The database has a record that its lists have no place for",
                  kExpectedSource);
  }
  figures_.Select(place->account, place->record);
  account_number_ = account_number;
  date_ = places_.DateOf(place->record);
  asked_before_ = false;
  current_ = true;
  return true;
}

std::size_t ExpectedMasterfile::NewColumn(Integer field_number) const {
  if (!current_) throw Failure(FailureNumber::kInvalidArgument, "No record is current", kExpectedSource);
  const Integer position = places_.FieldPosition(field_number);
  if (position == 0) {
    throw Failure(FailureNumber::kInvalidArgument,
                  "The database has no field of number " + std::to_string(field_number), kExpectedSource);
  }
  columns_.push_back({.field_position = position, .field_number = field_number, .before = PlaceBefore(field_number)});
  touched_columns_.resize(columns_.size());
  const auto number = static_cast<std::size_t>(field_number);
  if (number >= column_of_field_.size()) column_of_field_.resize(number + 1);
  column_of_field_[number] = static_cast<std::uint16_t>(columns_.size());
  return columns_.size() - 1;
}

// A figure without what was set and not written.
Double ExpectedMasterfile::Stands(std::size_t column) const {
  const Double now = figures_.Now(column);
  if (!IsUnwritten(now) && IsOfThisFile(column)) return now;
  return before_ == nullptr ? 0 : StoodBefore(columns_[column]);
}

bool ExpectedMasterfile::IsOfThisFile(std::size_t column) const {
  const std::size_t files = columns_[column].files;
  return files_ < 2 || (files != 0 && figures_.Now(files) == static_cast<Double>(files_ - 1));
}

Double ExpectedMasterfile::StoodBefore(const Column& column) const {
  if (!std::exchange(asked_before_, true)) figures_before_ = before_->Select(account_number_, date_);
  return figures_before_ != nullptr && column.before ? figures_before_[*column.before] : kUntold;
}

Double ExpectedMasterfile::FieldValue(Integer field_number) const {
  const std::size_t column = ColumnOf(field_number);
  Column& asked = columns_[column];
  if (!IsUnwritten(asked.unwritten)) return asked.unwritten == kUntold ? 0 : asked.unwritten;
  const Double stands = Stands(column);
  asked.untold = stands == kUntold;
  if (!asked.untold) return stands;
  NoteTouched(column);
  return 0;
}

void ExpectedMasterfile::SetFieldValue(Integer field_number, Double value) {
  const std::size_t column = ColumnOf(field_number);
  if (!std::isfinite(value)) RefuseFigure(field_number, value);
  Column& set = columns_[column];
  NoteTouched(column);
  // Adding zero takes the sign from a negative zero, which is no figure of its own.
  set.unwritten = set.untold ? kUntold : value + 0.0;
}

void ExpectedMasterfile::RefuseFigure(Integer field_number, Double value) {
  throw Failure(FailureNumber::kOverflow,
                std::to_string(value) + " is no figure for field " + std::to_string(field_number), kExpectedSource);
}

bool ExpectedMasterfile::WriteRecord() {
  if (!current_) return false;
  bool any_is_set = false;
  std::size_t untold = 0;
  for (std::size_t index = 0; index < touched_; ++index) {
    const std::uint16_t column = touched_columns_[index];
    const Double figure = std::exchange(columns_[column].unwritten, kUnwritten);
    columns_[column].touched = columns_[column].untold;
    if (columns_[column].untold) touched_columns_[untold++] = column;
    if (IsUnwritten(figure)) continue;
    if (!std::exchange(any_is_set, true)) figures_.Touch();
    figures_.Put(column, figure);
    if (files_ > 1) figures_.Put(FilesOf(column), static_cast<Double>(files_ - 1));
  }
  touched_ = untold;
  return true;
}

std::size_t ExpectedMasterfile::FilesOf(std::size_t column) {
  if (columns_[column].files == 0) {
    columns_[column].files = columns_.size();
    columns_.push_back({});
  }
  return columns_[column].files;
}

// --- What was written ------------------------------------------------------------------------------------------------

void ExpectedMasterfile::Visit(const FiguresVisitor& visit) {
  DropCurrent();
  std::vector<ToldColumn> told;
  for (std::size_t place = 0; place < columns_.size(); ++place) {
    const Column& column = columns_[place];
    if (column.field_position != 0) told.push_back({place, column.files, column.field_position, column.field_number});
  }
  std::ranges::sort(told, {}, &ToldColumn::field_position);
  told_.resize(told.size());
  figures_.VisitAll([&](const OverlayFigures::Row& row) { return TellRow(row, told, visit); });
}

// Each figure is put together where it is told from: to copy one that has just been written would wait for all its
// parts.
bool ExpectedMasterfile::TellRow(const OverlayFigures::Row& row, std::span<const ToldColumn> columns,
                                 const FiguresVisitor& visit) {
  Masterfile& below = Below();
  const Long account_number = places_.NumberOf(row.account);
  const Date date = places_.DateOf(row.record);
  if (!below.ReadRecord(account_number, date)) {
    throw Failure(FailureNumber::kInternal, "A record that was written cannot be read", kExpectedSource);
  }
  std::size_t count = 0;
  for (const ToldColumn& column : columns) {
    const Double expected = column.place < row.now.size() ? row.now[column.place] : kUnwritten;
    if (IsUnwritten(expected)) continue;
    ExpectedFigure& figure = told_[count++];
    figure.account_position = static_cast<Integer>(row.account + 1);
    figure.account_number = account_number;
    figure.date = date;
    figure.field_position = column.field_position;
    figure.field_number = column.field_number;
    figure.expected = expected == kUntold ? std::nullopt : std::optional(expected);
    figure.stands = below.FieldValue(column.field_number);
    figure.file = column.files == 0 ? 0 : FileOf(row, column.files);
  }
  return count == 0 || visit(std::span(told_).first(count));
}

// The first where no other is told.
std::size_t ExpectedMasterfile::FileOf(const OverlayFigures::Row& row, std::size_t files) {
  if (files >= row.now.size() || IsUnwritten(row.now[files])) return 0;
  return static_cast<std::size_t>(row.now[files]);
}

}  // namespace tallybook::preview
