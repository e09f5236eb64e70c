// A dBASE table (level III) in Windows-1252, language driver byte 3. Dates are fields of kind D, numbers of kind N,
// texts of kind C. Field names are written in capitals, as dBASE does.
#include <algorithm>
#include <cstdio>
#include <memory>
#include <optional>
#include <shapefil.h>
#include <span>
#include <utility>

#include "base/CodePage.h"
#include "base/Dates.h"
#include "base/Failure.h"
#include "base/Texts.h"
#include "platform/Clock.h"
#include "support/FileStream.h"
#include "support/Utility.h"
#include "tallybook/tables/TableWriter.h"

namespace tallybook::tables {

namespace {

constexpr const char* kWindows1252 = "LDID/3";  // the language driver byte, as the library takes it
constexpr std::size_t kLongestName = 10;
constexpr int kWidestText = 254;
constexpr int kDateWidth = 8;
// Readers keep offsets in signed 32 bits.
constexpr long long kMostBytes = 2'147'483'647;

[[noreturn]] void Fail(FailureNumber number, const Text& reason) {
  throw Failure(number, reason, "ExportLibrary");
}

// --- The library's file operations, on a file of ours
// ----------------------------------------------------------------- The library passes over what fails when it closes a
// file, and picks the name's extension itself. With these it does neither: the file is open already, and the first
// failure is kept. Nothing may be thrown through the library.

struct DbfFile {
  std::unique_ptr<FileStream> stream;
  std::optional<Failure> failure;  // the first
};

DbfFile& FileOf(SAFile file) {
  return *reinterpret_cast<DbfFile*>(file);
}

template <typename Operation>
auto Kept(SAFile file, Operation&& operation) -> decltype(operation(*FileOf(file).stream)) {
  try {
    return operation(*FileOf(file).stream);
  } catch (...) {
    if (!FileOf(file).failure) FileOf(file).failure = CurrentFailure();
    return {};
  }
}

SAOffset ReadFile(void* into, SAOffset size, SAOffset count, SAFile file) {
  return Kept(file, [&](FileStream& stream) -> SAOffset {
    return stream.ReadWhole(std::span(static_cast<std::byte*>(into), size * count)) ? count : 0;
  });
}

SAOffset WriteFile(void* from, SAOffset size, SAOffset count, SAFile file) {
  // The library writes the fields of a table that has none as no bytes from nowhere, when creating the table failed.
  if (size * count == 0) return count;
  return Kept(file, [&](FileStream& stream) -> SAOffset {
    stream.Write(std::span(static_cast<const std::byte*>(from), size * count));
    return count;
  });
}

SAOffset SeekFile(SAFile file, SAOffset offset, int whence) {
  return Kept(file, [&](FileStream& stream) -> SAOffset {
    long long target = static_cast<long long>(offset);
    if (whence == SEEK_CUR) target += stream.Position();
    if (whence == SEEK_END) target += stream.Size();
    // Records come one after the other: most seeks lead to where the file stands, and must not empty its buffer.
    if (target != stream.Position()) stream.Seek(target);
    return 0;
  });
}

SAOffset TellFile(SAFile file) {
  return static_cast<SAOffset>(FileOf(file).stream->Position());
}

int FlushFile(SAFile file) {
  return Kept(file, [](FileStream& stream) {
    stream.Flush();
    return 0;
  });
}

// The file that OpenFile hands to the library: set while the library begins a table. It makes the file, closes it and
// opens it again then; here that is one file that stays open.
DbfFile* file_to_open = nullptr;

SAFile OpenFile(const char* /*name*/, const char* /*access*/) {
  const auto file = reinterpret_cast<SAFile>(file_to_open);
  SeekFile(file, 0, SEEK_SET);
  return file;
}

int CloseFile(SAFile file) {
  if (file_to_open != nullptr) return 0;
  return Kept(file, [](FileStream& stream) {
    stream.Close();
    return 0;
  });
}

// The library would remove a code page file that lies beside; that one is the user's.
int RemoveNothing(const char* /*name*/) {
  return 0;
}

void IgnoreWords(const char* /*message*/) {
  // The words say less than the kept failure; every result is looked at.
}

SAHooks Hooks() {
  SAHooks hooks = {};
  SASetupDefaultHooks(&hooks);
  hooks.FOpen = &OpenFile;
  hooks.FRead = &ReadFile;
  hooks.FWrite = &WriteFile;
  hooks.FSeek = &SeekFile;
  hooks.FTell = &TellFile;
  hooks.FFlush = &FlushFile;
  hooks.FClose = &CloseFile;
  hooks.Remove = &RemoveNothing;
  hooks.Error = &IgnoreWords;
  return hooks;
}

// --- The writer ------------------------------------------------------------------------------------------------------

struct CloseTableFile {
  void operator()(DBFInfo* table) const { DBFClose(table); }
};

struct Field {
  Text name;
  char kind;
  int width;
  int decimals;
};

Text FieldName(const Column& column) {
  Text name = UpperCase(column.name);
  const bool sound =
      std::ranges::all_of(name, [](char c) { return (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_'; });
  if (name.empty() || name.size() > kLongestName || !sound)
    Fail(FailureNumber::kInvalidArgument,
         "A dBASE field cannot be called \"" + column.name + "\": names have up to 10 letters, digits and underscores");
  return name;
}

Field FieldFor(const Column& column) {
  const Text name = FieldName(column);
  if (column.type == ColumnType::kDate) return {name, 'D', kDateWidth, 0};
  const bool text = column.type == ColumnType::kText;
  if (column.width > (text ? kWidestText : kWidestDbfNumber))
    Fail(FailureNumber::kInvalidArgument, "A dBASE field cannot be " + std::to_string(column.width) +
                                              " characters wide, as \"" + column.name + "\" asks");
  if (text) return {name, 'C', column.width, 0};
  const int decimals = column.type == ColumnType::kDouble ? column.decimals : 0;
  if (decimals > 0 && decimals > column.width - 2)
    Fail(FailureNumber::kInvalidArgument, "The " + std::to_string(decimals) + " decimals of \"" + column.name +
                                              "\" do not fit its width of " + std::to_string(column.width));
  return {name, 'N', column.width, decimals};
}

class DbfWriter : public TableWriter {
 public:
  explicit DbfWriter(std::unique_ptr<FileStream> stream) : file_{std::move(stream), {}} {}

  // The library's table is made when its columns are known to be sound: it cannot end one that has none.
  void Begin(const std::vector<Column>& columns) override {
    std::vector<Field> fields;
    fields.reserve(columns.size());
    for (const Column& column : columns) fields.push_back(FieldFor(column));
    OpenTable();
    for (const Field& field : fields) {
      if (DBFAddNativeFieldType(table_.get(), field.name.c_str(), field.kind, field.width, field.decimals) < 0)
        Fail(FailureNumber::kInvalidArgument, "The dBASE library refused the field \"" + field.name + "\"");
    }
    columns_ = columns;
    spelled_.resize(columns.size());
  }

  void WriteRow(const std::vector<Cell>& cells) override {
    const long long end = table_->nHeaderLength + (static_cast<long long>(row_) + 1) * table_->nRecordLength + 1;
    if (end > kMostBytes)
      Fail(FailureNumber::kOverflow, "A dBASE table has no more than 2 GiB: export fewer dates or accounts");
    for (std::size_t i = 0; i < cells.size(); ++i) {
      if (cells[i].changed) spelled_[i] = Spelled(cells[i], columns_[i]);
    }
    for (std::size_t i = 0; i < cells.size(); ++i) {
      if (DBFWriteAttributeDirectly(table_.get(), row_, static_cast<int>(i), spelled_[i].data()) == 0) {
        CheckFile();
        Fail(FailureNumber::kInternal, "The dBASE library refused \"" + spelled_[i] + "\"");
      }
    }
    CheckFile();
    ++row_;
  }

  void Close() override {
    DBFSetWriteEndOfFileChar(table_.get(), 1);
    table_.reset();
    CheckFile();
  }

 private:
  void OpenTable() {
    SAHooks hooks = Hooks();
    file_to_open = &file_;
    table_.reset(DBFCreateLL("table.dbf", kWindows1252, &hooks));
    file_to_open = nullptr;
    CheckFile();
    if (table_ == nullptr) Fail(FailureNumber::kOutOfMemory, "The dBASE library could not begin the table");
    const DateParts today = PartsOf(Now());
    DBFSetLastModifiedDate(table_.get(), today.year - 1900, today.month, today.day);
    // The mark at the file's end is written behind the last row, and not behind every row.
    DBFSetWriteEndOfFileChar(table_.get(), 0);
  }

  void CheckFile() const {
    if (file_.failure) throw Failure(*file_.failure);
  }

  // The bytes of a cell. The library fills up to the right with blanks; numbers stand to the right.
  static std::string Spelled(const Cell& cell, const Column& column) {
    if (cell.kind == CellKind::kDate) {
      Text day = DateText(cell.date);
      std::erase(day, '-');
      return day;
    }
    if (cell.kind == CellKind::kEmpty) return {};
    std::string bytes;
    if (cell.kind == CellKind::kWhole) AppendWhole(cell.whole, bytes);
    if (cell.kind == CellKind::kFigure) AppendFigure(cell, column, bytes);
    if (cell.kind == CellKind::kText) bytes = ToCodePage(cell.text);
    const auto width = static_cast<std::size_t>(column.width);
    if (bytes.size() > width) FailTooWide(column, cell.kind == CellKind::kText ? cell.text : bytes);
    if (cell.kind != CellKind::kText) bytes.insert(0, width - bytes.size(), ' ');
    return bytes;
  }

  DbfFile file_;  // before the table, which writes to it when it ends
  std::unique_ptr<DBFInfo, CloseTableFile> table_;
  std::vector<Column> columns_;
  std::vector<std::string> spelled_;
  int row_ = 0;
};

}  // namespace

std::unique_ptr<TableWriter> NewDbfWriter(const Text& path, const Text& /*table_name*/) {
  return std::make_unique<DbfWriter>(NewFile(path));
}

}  // namespace tallybook::tables
