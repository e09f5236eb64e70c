// What writes the table of one format. OpenTable drives it: columns first, then rows, then Close. Every operation fails
// with a Failure that names the value or the system's reason; OpenTable adds file and row. One thread.
#pragma once

#include <memory>
#include <vector>

#include "tallybook/tables/Cell.h"

namespace tallybook {
class FileStream;
}

namespace tallybook::tables {

// The widest field for a number in a dBASE table. dBASE III stops at 19; 20 is what later ones and all readers take.
inline constexpr int kWidestDbfNumber = 20;

// The file exists, empty, from the making of the writer on. A writer that ends without Close leaves the file as far as
// it got.
class TableWriter {
 public:
  virtual ~TableWriter() = default;

  // Takes the columns, once, before the first row or Close. Fails where the format cannot have such a column.
  virtual void Begin(const std::vector<Column>& columns) = 0;
  // One row: a cell for each column.
  virtual void WriteRow(const std::vector<Cell>& cells) = 0;
  // Writes what is still held back and closes. Fails where the file is not whole; it is closed all the same.
  virtual void Close() = 0;
};

// One for each format. All fail with the platform's failures where the file cannot be made (70, 75, 76, 61, 57).
std::unique_ptr<TableWriter> NewCsvWriter(const Text& path, const Text& table_name);
std::unique_ptr<TableWriter> NewXlsxWriter(const Text& path, const Text& table_name);
std::unique_ptr<TableWriter> NewDbfWriter(const Text& path, const Text& table_name);
std::unique_ptr<TableWriter> NewTextWriter(const Text& path, const Text& table_name);
std::unique_ptr<TableWriter> NewSqliteWriter(const Text& path, const Text& table_name);

// A new, empty file at `path`, locked; a file of that name is replaced.
[[nodiscard]] std::unique_ptr<FileStream> NewFile(const Text& path);
// The same, closed at once: for libraries that open files by name.
void MakeEmptyFile(const Text& path);

}  // namespace tallybook::tables
