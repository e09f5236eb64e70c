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

void ExpectedMasterfile::AskBefore() const {
  figures_before_ = before_->Select(account_number_, date_);
  asked_before_ = true;
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

ExpectedFigure ExpectedRecord::Figure(std::size_t place) const {
  ExpectedFigure figure;
  figure.account_position = account_position;
  figure.account_number = account_number;
  figure.date = date;
  figure.field_position = fields[place].position;
  figure.field_number = fields[place].number;
  if (expected[place] != kUntold) figure.expected = expected[place];
  figure.stands = stands[place];
  figure.file = files[place];
  return figure;
}

// The columns in the order of their fields, and one record's figures in that order.
class ExpectedMasterfile::Telling {
 public:
  explicit Telling(const ExpectedMasterfile& overlay) : places_(overlay.places_), below_(overlay.Below()) {
    const std::vector<Column>& columns = overlay.columns_;
    for (std::size_t place = 0; place < columns.size(); ++place) {
      if (columns[place].field_position != 0) order_.push_back(place);
    }
    std::ranges::sort(order_, {}, [&](std::size_t place) { return columns[place].field_position; });
    for (const std::size_t place : order_) {
      fields_.push_back({columns[place].field_position, columns[place].field_number});
      columns_of_files_.push_back(columns[place].files);
    }
    has_files_ = std::ranges::any_of(columns_of_files_, [](std::size_t column) { return column != 0; });
    expected_.resize(order_.size());
    stands_.resize(order_.size());
    files_.resize(order_.size());
  }

  [[nodiscard]] ExpectedRecord Record(const OverlayFigures::Row& row) {
    const Long account_number = places_.NumberOf(row.account);
    const Date date = places_.DateOf(row.record);
    if (!below_.ReadRecord(account_number, date)) {
      throw Failure(FailureNumber::kInternal, "A record that was written cannot be read", kExpectedSource);
    }
    for (std::size_t index = 0; index < order_.size(); ++index) {
      const Double expected = order_[index] < row.now.size() ? row.now[order_[index]] : kUnwritten;
      expected_[index] = expected;
      if (!IsUnwritten(expected)) stands_[index] = below_.FieldValue(fields_[index].number);
    }
    if (has_files_) TakeFiles(row.now);
    return {.account_position = static_cast<Integer>(row.account + 1),
            .account_number = account_number,
            .date = date,
            .fields = fields_,
            .expected = expected_,
            .stands = stands_,
            .files = files_};
  }

 private:
  // The first where no other is told.
  void TakeFiles(std::span<const Double> row) {
    for (std::size_t index = 0; index < order_.size(); ++index) {
      const std::size_t column = columns_of_files_[index];
      const bool is_told = column != 0 && column < row.size() && !IsUnwritten(row[column]);
      files_[index] = is_told ? static_cast<std::size_t>(row[column]) : 0;
    }
  }

  const RecordPlaces& places_;
  Masterfile& below_;
  std::vector<std::size_t> order_;
  std::vector<std::size_t> columns_of_files_;
  bool has_files_ = false;
  std::vector<ExpectedRecord::Field> fields_;
  std::vector<Double> expected_;
  std::vector<Double> stands_;
  std::vector<std::size_t> files_;
};

void ExpectedMasterfile::Visit(const RecordVisitor& visit) {
  DropCurrent();
  Telling telling(*this);
  figures_.VisitAll([&](const OverlayFigures::Row& row) { return visit(telling.Record(row)); });
}

}  // namespace tallybook::preview
