// The application's database of operating figures: accounts, datafields, and one record per account and date.
// This is the whole of what the component asks of it; nothing in the component depends on how it is done.
//
// One thread. The application owns the database and every object reached from it; they outlive each use by the
// component. Any operation may fail with a host failure (class Failure). Positions count from 1. The current record
// and the calendar's cursor are shared state: between ReadRecord and WriteRecord of one import nobody else moves them.
//
// Three keys of an account, never to be confused: its position in the list (1 to NumAccounts), its number (the stable
// key) and its code (the text that files and definitions match on). A datafield has a position and a number.
#pragma once

#include <memory>

#include "base/Types.h"

namespace tallybook {

class AccountRecord;
class FieldRecord;
class FiscalCalendar;
class HostApp;
class Printer;
class SequenceList;

// Yields the system's name for window titles from the value that the database keeps for it.
class TitleLookup {
 public:
  virtual ~TitleLookup() = default;
  [[nodiscard]] virtual Text TitleFor(const Text& context) const = 0;
};

class Masterfile {
 public:
  virtual ~Masterfile() = default;

  // The application object; the calendar and date cursor of this database (one object, shared); fresh cursors over
  // accounts and fields, owned by the caller; the saved print sequences.
  virtual HostApp& App() = 0;
  virtual tallybook::FiscalCalendar& FiscalCalendar() = 0;
  virtual std::unique_ptr<AccountRecord> NewAccountRecord() = 0;
  virtual std::unique_ptr<FieldRecord> NewFieldRecord() = 0;
  virtual SequenceList& PrintSequences() = 0;

  // Names and places.
  [[nodiscard]] virtual Text SystemName() const = 0;        // goes into exchange files
  [[nodiscard]] virtual Text DataPath() const = 0;          // folder of the companion files; ends in the separator
  [[nodiscard]] virtual Text FileExtension() const = 0;     // shared by the companion files, without the dot
  [[nodiscard]] virtual Text SettingsFileName() const = 0;  // path of the database's settings file
  // The name of a type of database in user texts; type 0 is this database's own.
  [[nodiscard]] virtual Text MasterFileTypeName(Integer type) const = 0;
  // The lookup object and the value to give it for the system's name in window titles.
  virtual const TitleLookup& TitleSource() const = 0;
  [[nodiscard]] virtual Text TitleContext() const = 0;

  // The shape of the database. FileVersion, YearField, FieldSlots, AccountSlots, YearCode and PeriodLength only travel
  // into exchange files; no reader decides anything on them.
  [[nodiscard]] virtual Long FileVersion() const = 0;
  [[nodiscard]] virtual Integer DataLevel() const = 0;     // 1 day, 2 week, 3 period: the grain of the records
  [[nodiscard]] virtual Integer CalendarType() const = 0;  // 1 has no choice of month or period in the print dialog
  [[nodiscard]] virtual Integer YearField() const = 0;
  [[nodiscard]] virtual Long FieldSlots() const = 0;
  [[nodiscard]] virtual Long AccountSlots() const = 0;

  // The account list and the field list.
  [[nodiscard]] virtual Long MaxAccounts() const = 0;  // upper bound of account numbers
  [[nodiscard]] virtual Long NumAccounts() const = 0;
  [[nodiscard]] virtual Long AccountNumber(Integer position) const = 0;
  [[nodiscard]] virtual Long MaxFields() const = 0;  // upper bound of field numbers
  [[nodiscard]] virtual Long NumFields() const = 0;
  [[nodiscard]] virtual Integer FieldNumber(Integer position) const = 0;
  [[nodiscard]] virtual Text FieldName(Integer position) const = 0;

  // Makes the record of an account number and a date current. True for an account of the list and a valid date; false
  // never happens in a sound database, and a caller that writes or exports must then stop the program.
  [[nodiscard]] virtual bool ReadRecord(Long account_number, Date date) = 0;
  // Stores the current record. The result is not acted on.
  virtual bool WriteRecord() = 0;
  // A value of the current record. Fails where the number is no field or no record is current.
  [[nodiscard]] virtual Double FieldValue(Integer field_number) const = 0;
  virtual void SetFieldValue(Integer field_number, Double value) = 0;

  // Dates and years. A date is valid from FirstDate to LastDate. FirstSystemDate is the earliest that a report offers.
  [[nodiscard]] virtual bool DateValid(Date date) const = 0;
  [[nodiscard]] virtual Date FirstDate() const = 0;
  [[nodiscard]] virtual Date LastDate() const = 0;
  [[nodiscard]] virtual Date FirstSystemDate() const = 0;
  [[nodiscard]] virtual Integer FirstYear() const = 0;
  [[nodiscard]] virtual Long NumYears() const = 0;
  [[nodiscard]] virtual Long YearsInUse() const = 0;  // FirstYear plus this is the year after the last in use
  [[nodiscard]] virtual Integer YearCode(Integer position) const = 0;
  [[nodiscard]] virtual Date YearStart(Integer year) const = 0;  // also of the year after the last held
  [[nodiscard]] virtual Integer NumPeriods() const = 0;          // fiscal periods a year; 12 are called months
  [[nodiscard]] virtual Text PeriodName(Integer period) const = 0;
  [[nodiscard]] virtual Integer PeriodLength(Integer period) const = 0;

  // The progress display. BeginProgress opens it with the fraction at 0; BeginProgressText does the same for the print
  // dialog's load. The fraction runs from 0 to 1; a defined rule of the header reader can drive it past 1. The text may
  // hold a line break. ProgressCancelled is polled. EndProgress must be harmless when none is open.
  virtual void BeginProgress(const Text& title) = 0;
  virtual void BeginProgressText(const Text& title) = 0;
  virtual void SetProgressFraction(Single fraction) = 0;
  virtual void SetProgressText(const Text& text) = 0;
  virtual void SetProgressCancelEnabled(bool enabled) = 0;
  [[nodiscard]] virtual bool ProgressCancelled() const = 0;
  virtual void EndProgress() = 0;

  // Starts a rollback journal for a date range before an import changes data, and finishes it afterwards. A run that
  // fails leaves it open: meant, so that what was written can be taken back. The result is not acted on.
  virtual Integer BeginRollback(Date first, Date last) = 0;
  virtual void EndRollback() = 0;

  // True where the user holds the right named `right`. "A": changes to definitions are allowed.
  [[nodiscard]] virtual bool AccessRight(const Text& right) const = 0;

  // Prepare a printer for a report in the application's standard way; print the standard head of the report `name`.
  // Called from the printer's events.
  virtual void InitReportPrinter(Printer& printer) = 0;
  virtual void PrintReportHeader(Printer& printer, const Text& name) = 0;
};

}  // namespace tallybook
