#include "tests/support/MemoryExportObject.h"

#include <algorithm>

#include "base/Dates.h"
#include "base/Failure.h"

namespace tallybook::testing {

std::vector<FormatDescription> MemoryExportObject::StandardFormats() {
  return {{"Comma-separated text", "csv", "CSV", kWantsTitleRow, 0},
          {"Workbook", "xlsx", "XLSX", kWantsTitleRow, 0},
          {"Database table", "dbf", "DBF", kHasDateColumn, 0},
          {"Fixed-width text", "txt", "TXT", 0, 0},
          {"SQL database", "db", "SQLT", kHasDateColumn, 0}};
}

bool MemoryExportObject::SetCapability(const Text& format_code, Long capability) {
  const auto format = std::find_if(formats.begin(), formats.end(),
                                   [&](const FormatDescription& candidate) { return candidate.code == format_code; });
  if (format == formats.end()) return false;
  format->capability = capability;
  return true;
}

Long MemoryExportObject::NumFormats() const {
  record_.TellBulk("Export.NumFormats");
  return static_cast<Long>(formats.size());
}

bool MemoryExportObject::FormatInfo(Integer position, FormatDescription& format) const {
  if (!record_.AskBulk("Export.FormatInfo", position)) return false;
  if (position < 1 || static_cast<std::size_t>(position) > formats.size()) return false;
  format = formats[static_cast<std::size_t>(position) - 1];
  return true;
}

Long MemoryExportObject::FormatFlags(const Text& format_code) const {
  record_.TellBulk("Export.FormatFlags", format_code);
  const FormatDescription* const format = FindFormat(format_code);
  return format == nullptr ? 0 : format->capability;
}

bool MemoryExportObject::CreateTable(const Text& path, const Text& format_code, const Text& table_name, Integer columns,
                                     Long& handle) {
  if (!record_.Ask("Export.CreateTable", path, format_code, table_name, columns)) return false;
  if (FindFormat(format_code) == nullptr || columns < 1) return false;
  auto table = std::make_shared<ExportedTable>();
  table->path = path;
  table->format_code = format_code;
  table->table_name = table_name;
  table->columns.resize(static_cast<std::size_t>(columns));
  table->cells.resize(table->columns.size());
  tables_->push_back(std::move(table));
  handle = static_cast<Long>(tables_->size());
  return true;
}

bool MemoryExportObject::AddColumn(Long handle, Integer position, ColumnType type, Integer width, Integer decimals,
                                   const Text& name) {
  if (!record_.Ask("Export.AddColumn", handle, position, static_cast<Integer>(type), width, decimals, name))
    return false;
  if (Cell(handle, position) == nullptr || !OpenTable(handle)->rows.empty()) return false;
  OpenTable(handle)->columns[static_cast<std::size_t>(position) - 1] = {name, type, width, decimals};
  return true;
}

bool MemoryExportObject::SetByte(Long handle, Integer column, Integer value) {
  if (!record_.AskBulk("Export.SetByte", handle, column, value)) return false;
  Text* const cell = CellOfType(handle, column, ColumnType::kSmallNumber);
  if (cell == nullptr) return false;
  *cell = ArgumentText(value);
  return true;
}

bool MemoryExportObject::SetInteger(Long handle, Integer column, Integer value) {
  if (!record_.AskBulk("Export.SetInteger", handle, column, value)) return false;
  Text* const cell = CellOfType(handle, column, ColumnType::kInteger);
  if (cell == nullptr) return false;
  *cell = ArgumentText(value);
  return true;
}

bool MemoryExportObject::SetDouble(Long handle, Integer column, Double value, Integer decimals) {
  if (!record_.AskBulk("Export.SetDouble", handle, column, value, decimals)) return false;
  Text* const cell = CellOfType(handle, column, ColumnType::kDouble);
  if (cell == nullptr) return false;
  *cell = ArgumentText(value);
  return true;
}

bool MemoryExportObject::SetDate(Long handle, Integer column, Date value) {
  if (!record_.AskBulk("Export.SetDate", handle, column, AsDate{value})) return false;
  Text* const cell = CellOfType(handle, column, ColumnType::kDate);
  if (cell == nullptr) return false;
  *cell = DateText(value);
  return true;
}

bool MemoryExportObject::SetText(Long handle, Integer column, const Text& value) {
  if (!record_.AskBulk("Export.SetText", handle, column, value)) return false;
  Text* const cell = Cell(handle, column);
  if (cell == nullptr) return false;
  *cell = value;
  return true;
}

Long MemoryExportObject::CommitRow(Long handle) {
  if (!record_.AskBulk("Export.CommitRow", handle)) return 0;
  ExportedTable* const table = OpenTable(handle);
  if (table == nullptr) return 0;
  table->rows.push_back(table->cells);
  return kRowCommitted;
}

void MemoryExportObject::CloseTable(Long handle) {
  record_.Tell("Export.CloseTable", handle);
  ExportedTable* const table = OpenTable(handle);
  if (table == nullptr)
    throw Failure(FailureNumber::kInvalidArgument, "No table is open under " + std::to_string(handle),
                  "MemoryExportObject");
  table->closed = true;
}

const FormatDescription* MemoryExportObject::FindFormat(const Text& format_code) const {
  const auto format = std::find_if(formats.begin(), formats.end(),
                                   [&](const FormatDescription& candidate) { return candidate.code == format_code; });
  return format == formats.end() ? nullptr : &*format;
}

ExportedTable* MemoryExportObject::OpenTable(Long handle) {
  if (handle < 1 || static_cast<std::size_t>(handle) > tables_->size()) return nullptr;
  ExportedTable* const table = (*tables_)[static_cast<std::size_t>(handle) - 1].get();
  return table->closed ? nullptr : table;
}

Text* MemoryExportObject::Cell(Long handle, Integer column) {
  ExportedTable* const table = OpenTable(handle);
  if (table == nullptr || column < 1 || static_cast<std::size_t>(column) > table->cells.size()) return nullptr;
  return &table->cells[static_cast<std::size_t>(column) - 1];
}

Text* MemoryExportObject::CellOfType(Long handle, Integer column, ColumnType type) {
  Text* const cell = Cell(handle, column);
  if (cell == nullptr || OpenTable(handle)->columns[static_cast<std::size_t>(column) - 1].type != type) return nullptr;
  return cell;
}

}  // namespace tallybook::testing
