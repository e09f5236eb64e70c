// A workbook of one sheet (Office Open XML, ECMA-376). Dates and numbers are typed cells with a number format, texts
// are text cells. The rows pass through a temporary file in the folder of the workbook, so that memory stays small; the
// workbook itself is put together at Close.
#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <ctime>
#include <locale.h>
#include <map>
#include <memory>
#include <minizip/unzip.h>
#include <string>
#include <string_view>
#include <utility>
#include <xlsxwriter.h>

#include "base/Dates.h"
#include "base/Failure.h"
#include "platform/posix/SystemError.h"
#include "support/Utility.h"
#include "tallybook/tables/XlsxModule.h"

namespace tallybook::tables {

namespace {

// ECMA-376 leaves the size of a sheet open; these are the sizes that every program for such files can read.
constexpr lxw_row_t kMostRows = 1'048'576;
constexpr std::size_t kMostColumns = 16'384;
// The serial numbers before count a 29 February 1900 that never was (ECMA-376 part 1, 18.17.4.1).
constexpr Date kFirstDate = 61;  // 1900-03-01
constexpr Date kUnixEpoch = 25'569;
constexpr Double kSecondsPerDay = 86'400;

[[noreturn]] void Fail(lxw_error error) {
  const bool memory = error == LXW_ERROR_MEMORY_MALLOC_FAILED;
  const bool file = error >= LXW_ERROR_CREATING_XLSX_FILE && error <= LXW_ERROR_ZIP_CLOSE;
  const FailureNumber number = memory ? FailureNumber::kOutOfMemory
                               : file ? FailureNumberOf(errno)
                                      : FailureNumber::kInvalidArgument;
  throw Failure(number, lxw_strerror(error), "ExportLibrary");
}

void Check(lxw_error error) {
  if (error != LXW_NO_ERROR) Fail(error);
}

// The library prints numbers by the locale of the thread; a window toolkit may have set one that has a decimal comma.
class PlainNumbers {
 public:
  PlainNumbers() : before_(::uselocale(Plain())) {}
  ~PlainNumbers() { ::uselocale(before_); }
  PlainNumbers(const PlainNumbers&) = delete;
  PlainNumbers& operator=(const PlainNumbers&) = delete;

 private:
  static locale_t Plain() {
    static const locale_t plain = ::newlocale(LC_ALL_MASK, "C", nullptr);
    return plain;
  }
  locale_t before_;
};

// The library writes numbers with 16 digits. Failure 6 for one that does not read back from them.
void NeedSixteenDigits(const Cell& cell, const Column& column) {
  std::array<char, 32> buffer{};
  const char* const end =
      std::to_chars(buffer.data(), buffer.data() + buffer.size(), cell.figure, std::chars_format::scientific, 15).ptr;
  Double read = 0;
  if (std::from_chars(buffer.data(), end, read).ec == std::errc() && read == cell.figure) return;
  Text every_digit;
  AppendFigure(cell, column, every_digit);
  throw Failure(FailureNumber::kOverflow,
                "A workbook keeps 16 digits of a figure, and " + every_digit +
                    " has more: export with fewer decimals, or to CSV or SQLT",
                "ExportLibrary");
}

// --- The check of the finished file
// ------------------------------------------------------------------------------------ Putting the workbook together
// takes each part through a temporary file, and the library does not notice when one of them was cut short. So the
// finished file is read once: every part must be an XML document that ends with its root element.

[[noreturn]] void FailCutShort(const Text& part) {
  throw Failure(FailureNumber::kDiskFull, "The workbook was cut short while it was put together (" + part + ")",
                "ExportLibrary");
}

// True for a whole document, whose text begins with `head` and ends with `tail`.
bool EndsWithItsRoot(std::string_view head, std::string_view tail) {
  tail = tail.substr(0, tail.find_last_not_of(" \r\n") + 1);
  std::size_t start = head.find('<');
  if (start != std::string_view::npos && head.substr(start).starts_with("<?")) start = head.find('<', start + 1);
  if (start == std::string_view::npos) return false;
  const std::string_view name = head.substr(start + 1, head.find_first_of(" >", start) - start - 1);
  return tail.ends_with("</" + std::string(name) + ">");
}

// Reads the part of a workbook at which `file` stands; its check sum is looked at as well.
void CheckPart(unzFile file) {
  constexpr std::size_t kEdge = 512;
  std::array<char, 256> name{};
  std::string head;
  std::string tail;
  std::vector<char> piece(1 << 16);
  if (unzGetCurrentFileInfo64(file, nullptr, name.data(), name.size() - 1, nullptr, 0, nullptr, 0) != UNZ_OK ||
      unzOpenCurrentFile(file) != UNZ_OK)
    FailCutShort("its directory");
  for (;;) {
    const int count = unzReadCurrentFile(file, piece.data(), static_cast<unsigned>(piece.size()));
    if (count < 0) FailCutShort(name.data());
    if (count == 0) break;
    if (head.size() < kEdge) head.append(piece.data(), std::min<std::size_t>(kEdge, static_cast<std::size_t>(count)));
    tail.append(piece.data(), static_cast<std::size_t>(count));
    if (tail.size() > kEdge) tail.erase(0, tail.size() - kEdge);
  }
  if (unzCloseCurrentFile(file) != UNZ_OK || !EndsWithItsRoot(head, tail)) FailCutShort(name.data());
}

void CheckWorkbook(const Text& path) {
  const std::unique_ptr<void, int (*)(unzFile)> file(unzOpen64(path.c_str()), &unzClose);
  if (file == nullptr) FailCutShort("its directory");
  int next = unzGoToFirstFile(file.get());
  for (; next == UNZ_OK; next = unzGoToNextFile(file.get())) CheckPart(file.get());
  if (next != UNZ_END_OF_LIST_OF_FILE) FailCutShort("its directory");
}

struct FreeWorkbook {
  // Only for a workbook that was never closed: closing would put it together.
  void operator()(lxw_workbook* workbook) const { lxw_workbook_free(workbook); }
};

class XlsxWriter : public TableWriter {
 public:
  XlsxWriter(const Text& path, const Text& table_name, Date created) : path_(path), folder_(FilePath(path)) {
    if (folder_.empty()) folder_ = ".";
    lxw_workbook_options options = {};
    options.constant_memory = LXW_TRUE;
    options.tmpdir = folder_.data();
    workbook_.reset(workbook_new_opt(path.c_str(), &options));
    if (workbook_ == nullptr) Fail(LXW_ERROR_MEMORY_MALLOC_FAILED);
    Check(workbook_validate_sheet_name(workbook_.get(), table_name.c_str()));
    sheet_ = workbook_add_worksheet(workbook_.get(), table_name.c_str());
    if (sheet_ == nullptr || sheet_->optimize_tmpfile == nullptr) Fail(LXW_ERROR_CREATING_TMPFILE);
    SetCreated(created);
  }

  void Begin(const std::vector<Column>& columns) override {
    const PlainNumbers plain;
    if (columns.size() > kMostColumns)
      throw Failure(FailureNumber::kOverflow, "A sheet has no more than 16,384 columns", "ExportLibrary");
    columns_ = columns;
    for (std::size_t i = 0; i < columns.size(); ++i) {
      const auto position = static_cast<lxw_col_t>(i);
      // A date is shown with ten characters; two more leave air at the sides.
      const double shown = std::max(columns[i].type == ColumnType::kDate ? 10 : 0, columns[i].width) + 2;
      Check(worksheet_set_column(sheet_, position, position, std::min(shown, 80.0), nullptr));
      formats_.push_back(FormatFor(columns[i]));
    }
  }

  void WriteRow(const std::vector<Cell>& cells) override {
    if (row_ == kMostRows)
      throw Failure(FailureNumber::kOverflow,
                    "A sheet has no more than 1,048,576 rows: export fewer dates or accounts, or to another format",
                    "ExportLibrary");
    const PlainNumbers plain;
    for (std::size_t i = 0; i < cells.size(); ++i) Check(Write(cells[i], i));
    // A full disk shows on the temporary file first; the library does not look.
    if (std::ferror(sheet_->optimize_tmpfile) != 0) FailTemporaryFile();
    ++row_;
  }

  void Close() override {
    const PlainNumbers plain;
    if (std::fflush(sheet_->optimize_tmpfile) != 0 || std::ferror(sheet_->optimize_tmpfile) != 0) FailTemporaryFile();
    errno = 0;
    Check(workbook_close(workbook_.release()));
    CheckWorkbook(path_);
  }

 private:
  void SetCreated(Date created) {
    lxw_doc_properties properties = {};
    properties.created = static_cast<time_t>(std::llround((created - kUnixEpoch) * kSecondsPerDay));
    Check(workbook_set_properties(workbook_.get(), &properties));
  }

  // The number format of a column's cells; null for the general one. Columns that look alike share it.
  lxw_format* FormatFor(const Column& column) {
    Text pattern;
    if (column.type == ColumnType::kDate) pattern = "yyyy-mm-dd";
    if (column.type == ColumnType::kDouble && column.decimals != kEveryDecimal)
      pattern = column.decimals > 0 ? "0." + Text(static_cast<std::size_t>(column.decimals), '0') : "0";
    if (pattern.empty()) return nullptr;
    lxw_format*& format = patterns_[pattern];
    if (format == nullptr) {
      format = workbook_add_format(workbook_.get());
      format_set_num_format(format, pattern.c_str());
    }
    return format;
  }

  lxw_error Write(const Cell& cell, std::size_t index) {
    const auto column = static_cast<lxw_col_t>(index);
    switch (cell.kind) {
      case CellKind::kEmpty:
        break;
      case CellKind::kWhole:
        return worksheet_write_number(sheet_, row_, column, cell.whole, formats_[index]);
      case CellKind::kFigure:
        if (columns_[index].decimals == kEveryDecimal) NeedSixteenDigits(cell, columns_[index]);
        return worksheet_write_number(sheet_, row_, column, RoundedFigure(cell, columns_[index]), formats_[index]);
      case CellKind::kDate:
        if (cell.date < kFirstDate)
          throw Failure(FailureNumber::kOverflow,
                        "A sheet holds no date before 1900-03-01, as " + DateText(cell.date) + " is", "ExportLibrary");
        return worksheet_write_number(sheet_, row_, column, cell.date, formats_[index]);
      case CellKind::kText:
        if (!cell.text.empty()) return worksheet_write_string(sheet_, row_, column, cell.text.c_str(), nullptr);
        break;
    }
    return LXW_NO_ERROR;
  }

  [[noreturn]] void FailTemporaryFile() const {
    throw Failure(FailureNumber::kDiskFull, "The rows do not fit into the temporary file in " + folder_,
                  "ExportLibrary");
  }

  Text path_;
  Text folder_;  // the library keeps a pointer to it
  std::unique_ptr<lxw_workbook, FreeWorkbook> workbook_;
  lxw_worksheet* sheet_ = nullptr;
  std::vector<Column> columns_;
  std::vector<lxw_format*> formats_;  // by column
  std::map<Text, lxw_format*> patterns_;
  lxw_row_t row_ = 0;
};

}  // namespace

}  // namespace tallybook::tables

// The module's only way in (XlsxModule.h).
extern "C" __attribute__((visibility("default"))) tallybook::tables::TableWriter* tallybook_make_xlsx_writer(
    const tallybook::Text& path, const tallybook::Text& table_name, tallybook::Date created) {
  return new tallybook::tables::XlsxWriter(path, table_name, created);
}
