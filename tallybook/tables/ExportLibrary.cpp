#include "tallybook/tables/ExportLibrary.h"

#include <utility>

#include "base/Failure.h"
#include "tallybook/tables/Formats.h"
#include "tallybook/tables/OpenTable.h"

namespace tallybook::tables {

ExportLibrary::ExportLibrary(FigureStyle style) : style_(style) {}
ExportLibrary::~ExportLibrary() = default;

Long ExportLibrary::NumFormats() const {
  return static_cast<Long>(Formats().size());
}

bool ExportLibrary::FormatInfo(Integer position, FormatDescription& format) const {
  if (position < 1 || position > NumFormats()) return false;
  format = Formats()[static_cast<std::size_t>(position - 1)].description;
  return true;
}

Long ExportLibrary::FormatFlags(const Text& format_code) const {
  const Format* format = FormatOf(format_code);
  return format == nullptr ? 0 : format->description.capability;
}

bool ExportLibrary::HoldsEveryDecimal(const Text& format_code) {
  const Format* format = FormatOf(format_code);
  return format != nullptr && format->holds_every_decimal;
}

OpenTable& ExportLibrary::TableOf(Long handle) {
  const auto found = open_.find(handle);
  if (found == open_.end())
    throw Failure(FailureNumber::kBadFileNumber, "No table is open under the handle " + std::to_string(handle),
                  "ExportLibrary");
  return *found->second;
}

// Runs an operation; a failure gives false and leaves its reason behind.
template <typename Operation>
bool ExportLibrary::Try(Operation&& operation) {
  try {
    operation();
    return true;
  } catch (...) {
    last_error_ = CurrentFailure().Description();
    return false;
  }
}

bool ExportLibrary::CreateTable(const Text& path, const Text& format_code, const Text& table_name, Integer columns,
                                Long& handle) {
  return Try([&] {
    const Format* format = FormatOf(format_code);
    if (format == nullptr)
      throw Failure(FailureNumber::kInvalidArgument, path + ": no table format has the code \"" + format_code + "\"",
                    "ExportLibrary");
    auto table = std::make_unique<OpenTable>(path, *format, table_name, columns, style_);
    Long free = 1;
    while (open_.contains(free)) ++free;
    open_.emplace(free, std::move(table));
    handle = free;
  });
}

bool ExportLibrary::AddColumn(Long handle, Integer position, ColumnType type, Integer width, Integer decimals,
                              const Text& name) {
  OpenTable& table = TableOf(handle);
  return Try([&] { table.AddColumn(position, {.name = name, .type = type, .width = width, .decimals = decimals}); });
}

bool ExportLibrary::SetByte(Long handle, Integer column, Integer value) {
  OpenTable& table = TableOf(handle);
  return Try([&] { table.SetWhole(column, ColumnType::kSmallNumber, value); });
}

bool ExportLibrary::SetInteger(Long handle, Integer column, Integer value) {
  OpenTable& table = TableOf(handle);
  return Try([&] { table.SetWhole(column, ColumnType::kInteger, value); });
}

bool ExportLibrary::SetDouble(Long handle, Integer column, Double value, Integer decimals) {
  OpenTable& table = TableOf(handle);
  return Try([&] { table.SetFigure(column, value, decimals); });
}

bool ExportLibrary::SetDate(Long handle, Integer column, Date value) {
  OpenTable& table = TableOf(handle);
  return Try([&] { table.SetDate(column, value); });
}

bool ExportLibrary::SetText(Long handle, Integer column, const Text& value) {
  OpenTable& table = TableOf(handle);
  return Try([&] { table.SetText(column, value); });
}

Long ExportLibrary::CommitRow(Long handle) {
  OpenTable& table = TableOf(handle);
  try {
    table.Commit();
    return kRowCommitted;
  } catch (const Failure& failure) {
    last_error_ = failure.Description();
    return failure.Code();
  }
}

void ExportLibrary::CloseTable(Long handle) {
  TableOf(handle);
  const std::unique_ptr<OpenTable> table = std::move(open_.extract(handle).mapped());
  try {
    table->Close();
  } catch (const Failure& failure) {
    last_error_ = failure.Description();
    throw;
  }
}

}  // namespace tallybook::tables
