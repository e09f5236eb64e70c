// A database laid over another: it reads through and keeps what is written to itself. Whoever works on it finds every
// figure as if all had been stored, and the database below is only read. So an import that runs on it shows what it
// would do, and its figures can be told, stored or dropped afterwards.
//
//   figures   in memory up to a bound, the rest in a temporary file (OverlayFigures.h)
//   calendar  one of its own, which begins where that of the database below stands
//   journal   none: BeginRollback and EndRollback do nothing
//   all else  names, lists, dates, rights and the progress display are those of the database below
//
// The database below must not be written while this lives, and outlives it with the factory and the application. What
// the one below fails with when it reads comes through as it is; besides, any operation on figures may fail as
// TemporaryFile does. One thread.
#pragma once

#include <cstddef>
#include <functional>
#include <memory>
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

// A figure that was changed: where it stands, and what it was and is.
struct FigureChange {
  Integer account_position = 0;
  Long account_number = 0;
  Date date = 0;  // the record's level date
  Integer field_position = 0;
  Integer field_number = 0;
  Double before = 0;
  Double after = 0;
};

// Records that were written, by what became of their figures.
struct RecordCounts {
  long long changed = 0;
  long long same = 0;  // end as they were
};

// Days whose figures went into one record.
struct RegroupedDays {
  Date record = 0;  // its level date
  Date first = 0;   // of the days
  Date last = 0;
  Long days = 0;
};

class OverlayMasterfile final : public MasterfileLayer {
 public:
  // `factory` makes the calendar. `app` is the application as those who work on this see it: it may be another than
  // that of the database below, for one with a log that keeps nothing.
  OverlayMasterfile(Masterfile& below, HostFactory& factory, HostApp& app, std::size_t cache_bytes);
  ~OverlayMasterfile() override;
  OverlayMasterfile(const OverlayMasterfile&) = delete;
  OverlayMasterfile& operator=(const OverlayMasterfile&) = delete;

  // What is written from here on counts as another file's: VisitFile tells of it alone.
  void BeginFile();

  // Each figure that the file under way has changed, against what it was before that file; or that all of them together
  // have, against the database below. Those of one record at a time, one at least, in the order of field positions; the
  // records in the order of account positions and dates. False from `visit` ends the walk. There is no current record
  // afterwards. Both give the records written, as far as the walk went.
  using ChangesVisitor = std::function<bool(std::span<const FigureChange> of_record)>;
  RecordCounts VisitFile(const ChangesVisitor& visit);
  RecordCounts VisitAll(const ChangesVisitor& visit);

  // The days that figures came from, by the records that took them; empty where the records are days.
  [[nodiscard]] std::vector<RegroupedDays> Regrouped() const;

  // Masterfile.
  tallybook::FiscalCalendar& FiscalCalendar() override;
  // As the database below does: false, and what fails, are its own. A record that was written here is not read there
  // until a figure is asked for that was not.
  [[nodiscard]] bool ReadRecord(Long account_number, Date date) override;
  // Keeps the record, and keeps it current; false where none is.
  bool WriteRecord() override;
  [[nodiscard]] Double FieldValue(Integer field_number) const override;
  // Failure 6 for an infinity and for what is no number, in the words of the database below where it has any.
  void SetFieldValue(Integer field_number, Double value) override;

  Integer BeginRollback(Date first, Date last) override;
  void EndRollback() override {}

 private:
  class Calendar;

  // A field that was written: its place among the columns is the order in which that happened.
  struct Column {
    Integer field_position = 0;
    Integer field_number = 0;
    // Of the current record.
    Double unwritten = kUnwritten;  // what was set and not written
    Double stood = kUnwritten;      // what stood there when it was asked for
    bool touched = false;           // to be cleared behind the record
  };

  [[nodiscard]] std::unique_ptr<Calendar> NewCalendar(Masterfile& below, HostFactory& factory);
  [[nodiscard]] std::size_t ColumnOf(Integer field_number) {
    const std::size_t column = AtNumber(column_of_field_, field_number);
    return column != 0 ? column - 1 : NewColumn(field_number);
  }
  [[nodiscard]] std::size_t NewColumn(Integer field_number);
  [[nodiscard]] Column& Touched(std::size_t place) const {
    Column& column = columns_[place];
    if (!std::exchange(column.touched, true)) touched_columns_[touched_++] = static_cast<std::uint16_t>(place);
    return column;
  }
  [[nodiscard]] Double FigureBelow(Integer field_number) const;
  [[nodiscard]] Double Stands(Integer field_number, std::size_t column) const;
  [[noreturn]] void RefuseFigure(Integer field_number, Double value);
  void DropCurrent();
  void ClearColumns();
  void NoteLevelDate(Date date, Integer level, Date level_date);
  void NoteArrival() const;
  bool TellRow(const OverlayFigures::Row& row, const ChangesVisitor& visit, RecordCounts& counts);
  [[nodiscard]] std::vector<std::size_t> ColumnsInOrder() const;

  std::unique_ptr<Calendar> calendar_;
  RecordPlaces places_;
  std::vector<std::uint16_t> column_of_field_;  // by number, from 1; 0: nothing was written to it
  mutable std::vector<Column> columns_;
  std::vector<std::size_t> order_;     // columns by their fields' positions, during a visit
  std::vector<FigureChange> changes_;  // of the record that is told

  mutable OverlayFigures figures_;

  // The current record. The one below is made current there when a figure of it is asked for.
  bool current_ = false;
  Long account_number_ = 0;
  Date date_ = 0;
  mutable bool current_below_ = false;
  mutable std::vector<std::uint16_t> touched_columns_;  // the first `touched_`
  mutable std::size_t touched_ = 0;

  // Days that figures came from. A record's day is known when it is read, and noted when a figure of it moves.
  bool regroups_ = false;
  Date asked_date_ = 0;
  Date asked_level_date_ = 0;
  Date day_ = 0;
  mutable bool day_is_due_ = false;
  mutable std::vector<bool> days_;
};

}  // namespace tallybook::preview
