// The export library of the reference host. It writes tables in five formats:
//
// clang-format off
//   code  extension  capability  what it is                         limits of the format
//   CSV   csv        3           RFC 4180, UTF-8, titles in row 1   none
//   XLSX  xlsx       3           a workbook with one sheet          1,048,576 rows, 16,384 columns, dates from
//         1900-03-01
//   DBF   dbf        1           a dBASE table in Windows-1252      2 GiB, column names of 10 characters, widths
//   TXT   txt        0           columns of fixed width, UTF-8      widths, no line breaks
//   SQLT  db         1           a SQLite file with one table       none
// clang-format on
//
// Kind is 0 for all. Figures are rounded to the decimals that the cell and its column ask for; a half goes by the exact
// binary value. A FigureStyle sets decimals in their place, and can leave out the rows of zeros. Dates are whole days.
// A text is never cut: what does not fit its column fails the row.
//
// Failures. Set... and CommitRow give false or the failure's number and keep the reason (LastError). A cell that was
// refused makes the next CommitRow fail. After a CommitRow that failed, no row of that table is taken any more. Every
// operation on a handle that is not open is Failure 52. One thread.
#pragma once

#include <map>
#include <memory>

#include "host/DataExportObject.h"
#include "tallybook/tables/Cell.h"

namespace tallybook::tables {

class OpenTable;

class ExportLibrary : public DataExportObject {
 public:
  // `style` is for every table of this library; its decimals are 0 to 15, or kEveryDecimal.
  explicit ExportLibrary(FigureStyle style = {});
  // Tables that are still open are closed without a word; call CloseTable.
  ~ExportLibrary() override;
  ExportLibrary(const ExportLibrary&) = delete;
  ExportLibrary& operator=(const ExportLibrary&) = delete;

  [[nodiscard]] Long NumFormats() const override;
  [[nodiscard]] bool FormatInfo(Integer position, FormatDescription& format) const override;
  [[nodiscard]] Long FormatFlags(const Text& format_code) const override;

  // True where the tables of that format can have figures of kEveryDecimal. CreateTable refuses others, before a file
  // is touched.
  [[nodiscard]] static bool HoldsEveryDecimal(const Text& format_code);

  // A file of that name is replaced. The handle is the lowest free number from 1. `handle` is untouched on false.
  [[nodiscard]] bool CreateTable(const Text& path, const Text& format_code, const Text& table_name, Integer columns,
                                 Long& handle) override;
  [[nodiscard]] bool AddColumn(Long handle, Integer position, ColumnType type, Integer width, Integer decimals,
                               const Text& name) override;

  // A cell takes what its column's type says; in formats of capability 3 every cell takes a text besides, for the
  // titles. A figure that is not finite, a date before year 1 or after 9999, and a text that is no UTF-8 are refused.
  [[nodiscard]] bool SetByte(Long handle, Integer column, Integer value) override;
  [[nodiscard]] bool SetInteger(Long handle, Integer column, Integer value) override;
  [[nodiscard]] bool SetDouble(Long handle, Integer column, Double value, Integer decimals) override;
  [[nodiscard]] bool SetDate(Long handle, Integer column, Date value) override;
  [[nodiscard]] bool SetText(Long handle, Integer column, const Text& value) override;

  // kRowCommitted, or the number of the failure (61 disk full, 57 device error, 6 a value or the format's limit, 5 a
  // refused cell).
  [[nodiscard]] Long CommitRow(Long handle) override;
  // Closes the table; the handle is free afterwards, also when this fails.
  //   fails  61, 57 or the like, with the path, where the file is not whole. A table whose CommitRow failed has
  //          told that already and closes, as far as it got, without another failure.
  void CloseTable(Long handle) override;

  // Why the last operation that failed did so; empty before any has. Names file, row, column and value.
  [[nodiscard]] const Text& LastError() const { return last_error_; }

 private:
  OpenTable& TableOf(Long handle);
  template <typename Operation>
  bool Try(Operation&& operation);

  FigureStyle style_;
  std::map<Long, std::unique_ptr<OpenTable>> open_;
  Text last_error_;
};

}  // namespace tallybook::tables
