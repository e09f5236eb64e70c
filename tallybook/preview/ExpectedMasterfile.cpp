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
}

// --- Records ---------------------------------------------------------------------------------------------------------

void ExpectedMasterfile::DropCurrent() {
  for (const std::uint16_t column : touched_columns_) {
    columns_[column].unwritten = kUnwritten;
    columns_[column].untold = false;
  }
  touched_columns_.clear();
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
  columns_.push_back({.field_position = position, .field_number = field_number});
  const auto number = static_cast<std::size_t>(field_number);
  if (number >= column_of_field_.size()) column_of_field_.resize(number + 1);
  column_of_field_[number] = static_cast<std::uint16_t>(columns_.size());
  return columns_.size() - 1;
}

// A figure without what was set and not written.
Double ExpectedMasterfile::Stands(std::size_t column) const {
  const Double now = figures_.Now(column);
  if (!IsUnwritten(now) && IsOfThisFile(column)) return now;
  return before_ == nullptr ? 0 : StoodBefore(columns_[column].field_number);
}

bool ExpectedMasterfile::IsOfThisFile(std::size_t column) const {
  const std::size_t files = columns_[column].files;
  return files_ < 2 || (files != 0 && figures_.Now(files) == static_cast<Double>(files_ - 1));
}

Double ExpectedMasterfile::StoodBefore(Integer field_number) const {
  if (!std::exchange(asked_before_, true)) before_tells_ = before_->Select(account_number_, date_);
  const Double before = before_tells_ ? before_->Before(field_number) : kUnwritten;
  return IsUnwritten(before) ? kUntold : before;
}

Double ExpectedMasterfile::FieldValue(Integer field_number) const {
  const std::size_t column = ColumnOf(field_number);
  Column& asked = columns_[column];
  if (!IsUnwritten(asked.unwritten)) return asked.unwritten == kUntold ? 0 : asked.unwritten;
  const Double stands = Stands(column);
  asked.untold = stands == kUntold;
  if (!asked.untold) return stands;
  touched_columns_.push_back(static_cast<std::uint16_t>(column));
  return 0;
}

void ExpectedMasterfile::SetFieldValue(Integer field_number, Double value) {
  const std::size_t column = ColumnOf(field_number);
  if (!std::isfinite(value)) {
    throw Failure(FailureNumber::kOverflow,
                  std::to_string(value) + " is no figure for field " + std::to_string(field_number), kExpectedSource);
  }
  Column& set = columns_[column];
  if (IsUnwritten(set.unwritten)) touched_columns_.push_back(static_cast<std::uint16_t>(column));
  // Adding zero takes the sign from a negative zero, which is no figure of its own.
  set.unwritten = set.untold ? kUntold : value + 0.0;
}

bool ExpectedMasterfile::WriteRecord() {
  if (!current_) return false;
  const auto is_set = [&](std::uint16_t column) { return !IsUnwritten(columns_[column].unwritten); };
  if (std::ranges::any_of(touched_columns_, is_set)) figures_.Touch();
  std::size_t untold = 0;
  for (const std::uint16_t column : touched_columns_) {
    const Double figure = std::exchange(columns_[column].unwritten, kUnwritten);
    if (columns_[column].untold) touched_columns_[untold++] = column;
    if (IsUnwritten(figure)) continue;
    figures_.Put(column, figure);
    if (files_ > 1) figures_.Put(FilesOf(column), static_cast<Double>(files_ - 1));
  }
  touched_columns_.resize(untold);
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
  std::vector<std::size_t> order;
  for (std::size_t column = 0; column < columns_.size(); ++column) {
    if (columns_[column].field_position != 0) order.push_back(column);
  }
  std::ranges::sort(order, {}, [&](std::size_t column) { return columns_[column].field_position; });
  figures_.VisitAll([&](const OverlayFigures::Row& row) { return TellRow(row, order, visit); });
}

// Each figure is put together where it is told from: to copy one that has just been written would wait for all its
// parts.
bool ExpectedMasterfile::TellRow(const OverlayFigures::Row& row, const std::vector<std::size_t>& order,
                                 const FiguresVisitor& visit) {
  const Long account_number = places_.NumberOf(row.account);
  const Date date = places_.DateOf(row.record);
  if (!Below().ReadRecord(account_number, date)) {
    throw Failure(FailureNumber::kInternal, "A record that was written cannot be read", kExpectedSource);
  }
  told_.resize(order.size());
  std::size_t count = 0;
  for (const std::size_t place : order) {
    if (place >= row.now.size() || IsUnwritten(row.now[place])) continue;
    const Column& column = columns_[place];
    ExpectedFigure& figure = told_[count++];
    figure.account_position = static_cast<Integer>(row.account + 1);
    figure.account_number = account_number;
    figure.date = date;
    figure.field_position = column.field_position;
    figure.field_number = column.field_number;
    figure.expected = row.now[place];
    if (row.now[place] == kUntold) figure.expected.reset();
    figure.stands = Below().FieldValue(column.field_number);
    figure.file = FileOf(row, column);
  }
  return count == 0 || visit(std::span(told_).first(count));
}

std::size_t ExpectedMasterfile::FileOf(const OverlayFigures::Row& row, const Column& column) {
  if (column.files == 0 || column.files >= row.now.size() || IsUnwritten(row.now[column.files])) return 0;
  return static_cast<std::size_t>(row.now[column.files]);
}

}  // namespace tallybook::preview
