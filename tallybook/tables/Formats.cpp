#include "tallybook/tables/Formats.h"

#include <algorithm>
#include <array>
#include <limits>

#include "platform/Platform.h"
#include "support/FileStream.h"

namespace tallybook::tables {

namespace {

constexpr int kAnyWidth = std::numeric_limits<Integer>::max();

}  // namespace

std::span<const Format> Formats() {
  static const std::array<Format, 5> formats = {{
      {{"Comma-separated values", "csv", "CSV", kWantsTitleRow, 0}, true, kAnyWidth, &NewCsvWriter},
      {{"Spreadsheet (Office Open XML)", "xlsx", "XLSX", kWantsTitleRow, 0}, true, kAnyWidth, &NewXlsxWriter},
      {{"dBASE table", "dbf", "DBF", kHasDateColumn, 0}, false, kWidestDbfNumber, &NewDbfWriter},
      {{"Text in columns of fixed width", "txt", "TXT", 0, 0}, false, kAnyWidth, &NewTextWriter},
      {{"SQLite table", "db", "SQLT", kHasDateColumn, 0}, true, kAnyWidth, &NewSqliteWriter},
  }};
  return formats;
}

const Format* FormatOf(const Text& code) {
  const auto formats = Formats();
  const auto found =
      std::ranges::find_if(formats, [&](const Format& format) { return format.description.code == code; });
  return found == formats.end() ? nullptr : &*found;
}

std::unique_ptr<FileStream> NewFile(const Text& path) {
  return std::make_unique<FileStream>(
      ThePlatform().files->Open(path, Access::kReadWrite, Sharing::kLockReadWrite, Creation::kReplace));
}

void MakeEmptyFile(const Text& path) {
  NewFile(path)->Close();
}

}  // namespace tallybook::tables
