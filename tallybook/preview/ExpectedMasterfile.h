// A database laid over another, on which imports run so that what their files say can be held against what stands: it
// keeps what is written to itself and reads no figure through. A figure that the file under way has not written is what
// was known of it before that file, or zero; and every figure that is written counts, whether the one below is the same
// or not.
//
//   figures   in memory up to a bound, the rest in a temporary file (OverlayFigures.h)
//   calendar  one of its own, which begins where that of the database below stands
//   journal   none: BeginRollback and EndRollback do nothing
//   all else  as MasterfileLayer
//
// The database below must not be written while this lives, and outlives it with the factory and the application. Any
// operation on figures may fail as TemporaryFile does. One thread.
#pragma once

#include <cstddef>
#include <functional>
#include <limits>
#include <memory>
#include <optional>
#include <span>
#include <utility>
#include <vector>

#include "base/Types.h"
#include "host/FiscalCalendar.h"
#include "host/HostFactory.h"
#include "tallybook/preview/MasterfileLayer.h"
#include "tallybook/preview/OverlayFigures.h"
#include "tallybook/preview/RecordPlaces.h"

namespace tallybook::preview {

// What figures were before a file was imported.
class FigureBaseline {
 public:
  virtual ~FigureBaseline() = default;
  // Where among a record's figures that of a field is, counted from 0, of all records alike; nothing where nobody can
  // tell a figure of it.
  [[nodiscard]] virtual std::optional<std::size_t> PlaceOf(Integer field_number) const = 0;
  // The figures of a record, by its level date, until the next call; null where nobody can tell any of them.
  [[nodiscard]] virtual const Double* Select(Long account_number, Date date) = 0;
};

// A figure that files wrote.
struct ExpectedFigure {
  Integer account_position = 0;
  Long account_number = 0;
  Date date = 0;  // the record's level date
  Integer field_position = 0;
  Integer field_number = 0;
  std::optional<Double> expected;  // nothing where it goes back to a figure of which nobody can tell what it was
  Double stands = 0;               // in the database below
  std::size_t file = 0;            // that wrote it last, from 0
};

// What a record is told with where nobody can tell what a figure should be: no database holds such a one.
inline constexpr Double kUntold = std::numeric_limits<Double>::infinity();

// The figures that files wrote into one record, a place for each field that any record has one of.
struct ExpectedRecord {
  struct Field {
    Integer position = 0;
    Integer number = 0;
  };

  Integer account_position = 0;
  Long account_number = 0;
  Date date = 0;                            // the record's level date
  std::span<const Field> fields = {};       // by their positions, of all records the same
  std::span<const Double> expected = {};    // kUnwritten for a field of another record, kUntold
  std::span<const Double> stands = {};      // in the database below, where a figure was written
  std::span<const std::size_t> files = {};  // as ExpectedFigure has it

  // One that was written, by its place.
  [[nodiscard]] ExpectedFigure Figure(std::size_t place) const;
};

class ExpectedMasterfile final : public MasterfileLayer {
 public:
  ExpectedMasterfile(Masterfile& below, HostFactory& factory, HostApp& app, std::size_t cache_bytes);

  // The import comes to another file, the first among them. `before` tells what its figures were and lives as long as
  // the file is under way; null: they were all zero.
  void BeginFile(FigureBaseline* before);

  // Every record that was written, in the order of account positions and dates. False from `visit` ends the walk. There
  // is no current record afterwards. Reads the database below, and fails as that does.
  using RecordVisitor = std::function<bool(const ExpectedRecord& record)>;
  void Visit(const RecordVisitor& visit);

  // Masterfile.
  tallybook::FiscalCalendar& FiscalCalendar() override { return *calendar_; }
  // The record need not be read below, but where the lists do not say whether there is one.
  [[nodiscard]] bool ReadRecord(Long account_number, Date date) override;
  // Keeps the record, and keeps it current; false where none is.
  bool WriteRecord() override;
  // Zero for a figure of which nobody can tell what it was: what is set behind that question is untold, too.
  [[nodiscard]] Double FieldValue(Integer field_number) const override;
  // Failure 6 for an infinity and for what is no number.
  void SetFieldValue(Integer field_number, Double value) override;

  Integer BeginRollback(Date /*first*/, Date /*last*/) override { return 1; }
  void EndRollback() override {}

 private:
  // A field that was written: its place among the columns is the order in which that happened. From the second file on
  // the number of the file stands beside each figure, in a column of its own.
  struct Column {
    Integer field_position = 0;  // 0: of files
    Integer field_number = 0;
    std::size_t files = 0;                   // their column; 0: none yet, as no such column is the first
    std::optional<std::size_t> before = {};  // the place of its figure before the file under way
    // Of the current record.
    Double unwritten = kUnwritten;  // what was set and not written
    bool untold = false;            // it was asked for, and nobody can tell
    bool touched = false;           // to be cleared behind the record
  };

  [[nodiscard]] std::size_t ColumnOf(Integer field_number) const {
    const std::size_t column = current_ ? AtNumber(column_of_field_, field_number) : 0;
    return column != 0 ? column - 1 : NewColumn(field_number);
  }
  void NoteTouched(std::size_t column) const {
    if (!std::exchange(columns_[column].touched, true))
      touched_columns_[touched_++] = static_cast<std::uint16_t>(column);
  }
  [[nodiscard]] std::size_t NewColumn(Integer field_number) const;
  // A figure without what was set and not written.
  [[nodiscard]] Double Stands(std::size_t place) const {
    const Column& column = columns_[place];
    const Double now = figures_.Now(place);
    if (!IsUnwritten(now) && IsOfThisFile(column)) return now;
    return before_ == nullptr ? 0 : StoodBefore(column);
  }
  [[nodiscard]] bool IsOfThisFile(const Column& column) const {
    return files_ < 2 || (column.files != 0 && figures_.Now(column.files) == static_cast<Double>(files_ - 1));
  }
  [[nodiscard]] std::optional<std::size_t> PlaceBefore(Integer field_number) const;
  [[nodiscard]] Double StoodBefore(const Column& column) const {
    if (!asked_before_) AskBefore();
    return figures_before_ != nullptr && column.before ? figures_before_[*column.before] : kUntold;
  }
  void AskBefore() const;
  [[noreturn]] static void RefuseFigure(Integer field_number, Double value);
  [[nodiscard]] std::size_t FilesOf(std::size_t column);
  void DropCurrent();
  class Telling;

  std::unique_ptr<tallybook::FiscalCalendar> calendar_;
  RecordPlaces places_;
  OverlayFigures figures_;
  FigureBaseline* before_ = nullptr;
  std::size_t files_ = 0;

  // A question may be the first that is heard of a field, or of a figure's history.
  mutable std::vector<Column> columns_;
  mutable std::vector<std::uint16_t> column_of_field_;  // by number, from 1; 0: nobody asked for it
  mutable std::vector<std::uint16_t> touched_columns_;  // the first `touched_`, of the current record
  mutable std::size_t touched_ = 0;

  bool current_ = false;
  mutable bool asked_before_ = false;               // `before_` stands at the current record
  mutable const Double* figures_before_ = nullptr;  // and tells these of it; null: none
  Long account_number_ = 0;
  Date date_ = 0;  // the record's level date
};

}  // namespace tallybook::preview
