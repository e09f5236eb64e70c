// An export library that keeps its tables in memory. What it wrote outlives it. One thread.
#pragma once

#include <map>
#include <memory>
#include <vector>

#include "base/Types.h"
#include "host/DataExportObject.h"
#include "tests/support/CallRecord.h"

namespace tallybook::testing {

// One table as it was written.
struct ExportedTable {
  struct Column {
    Text name;
    ColumnType type = ColumnType::kText;
    Integer width = 0;
    Integer decimals = 0;
    bool operator==(const Column&) const = default;
  };

  Text path;
  Text format_code;
  Text table_name;
  std::vector<Column> columns;
  // Committed rows as texts: dates 2004-02-03, numbers in the shortest text that reads back to the same number, "" for
  // a cell that was never set.
  std::vector<std::vector<Text>> rows;
  std::vector<Text> cells;  // of the row under way; they stay from row to row
  bool closed = false;
};

// Its operations are "Export.CreateTable", "Export.AddColumn", "Export.SetDouble", "Export.CommitRow" and so on. All
// may be made to fail or, where they answer yes or no, to answer no; CommitRow's no is 0. A cell outside the table and
// a number in a column of another type answer no. Text goes into columns of every type, as title rows need it. A column
// of small numbers takes years too.
class MemoryExportObject : public DataExportObject {
 public:
  explicit MemoryExportObject(CallRecord& record) : record_(record) {}

  // The formats offered. They start as CSV and XLSX (date column, title row), DBF and SQLT (date column), TXT
  // (neither).
  std::vector<FormatDescription> formats = StandardFormats();
  [[nodiscard]] static std::vector<FormatDescription> StandardFormats();
  // Gives the format of a code another capability; false where there is none of that code.
  bool SetCapability(const Text& format_code, Long capability);

  // The tables in the order of their creation, shared with whoever wants to look later. Handle n is table n, from 1.
  using Tables = std::vector<std::shared_ptr<ExportedTable>>;
  [[nodiscard]] std::shared_ptr<const Tables> Written() const { return tables_; }

  [[nodiscard]] Long NumFormats() const override;
  [[nodiscard]] bool FormatInfo(Integer position, FormatDescription& format) const override;
  [[nodiscard]] Long FormatFlags(const Text& format_code) const override;
  [[nodiscard]] bool CreateTable(const Text& path, const Text& format_code, const Text& table_name, Integer columns,
                                 Long& handle) override;
  [[nodiscard]] bool AddColumn(Long handle, Integer position, ColumnType type, Integer width, Integer decimals,
                               const Text& name) override;
  [[nodiscard]] bool SetByte(Long handle, Integer column, Integer value) override;
  [[nodiscard]] bool SetInteger(Long handle, Integer column, Integer value) override;
  [[nodiscard]] bool SetDouble(Long handle, Integer column, Double value, Integer decimals) override;
  [[nodiscard]] bool SetDate(Long handle, Integer column, Date value) override;
  [[nodiscard]] bool SetText(Long handle, Integer column, const Text& value) override;
  [[nodiscard]] Long CommitRow(Long handle) override;
  // A handle that is not open is failure 5.
  void CloseTable(Long handle) override;

 private:
  [[nodiscard]] const FormatDescription* FindFormat(const Text& format_code) const;
  // The open table of a handle; null for any other number.
  [[nodiscard]] ExportedTable* OpenTable(Long handle);
  // The cell of a column; null where there is none.
  [[nodiscard]] Text* Cell(Long handle, Integer column);
  [[nodiscard]] Text* CellOfType(Long handle, Integer column, ColumnType type);

  CallRecord& record_;
  std::shared_ptr<Tables> tables_ = std::make_shared<Tables>();
};

}  // namespace tallybook::testing
