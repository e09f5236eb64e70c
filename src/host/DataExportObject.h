// The export library: it writes tables in foreign formats, such as spreadsheets. It may be shared between the host and
// the component, hence handed around by shared pointer.
#pragma once

#include "base/Types.h"

namespace tallybook {

// The kinds of a table's columns, as AddColumn takes them.
enum class ColumnType : Integer {
  kSmallNumber = 3,  // SetByte
  kInteger = 4,      // SetInteger
  kDouble = 7,       // SetDouble
  kDate = 8,         // SetDate
  kText = 9,         // SetText
};

// Bits of a format's capability.
inline constexpr Long kHasDateColumn = 1;      // one date column; a capability of 0 means month, day, year columns
inline constexpr Long kWantsTitleRow = 1 | 2;  // both bits: a first row of column titles is wanted

// The answer of DataExportObject::CommitRow that means success.
inline constexpr Long kRowCommitted = -1;

// What a format is called and can do. The lengths are the most that a format may use.
struct FormatDescription {
  Text name;            // up to 40 characters, for people
  Text extension;       // up to 4 characters, without the dot
  Text code;            // up to 5 characters: what callers name the format by
  Long capability = 0;  // as FormatFlags gives it
  Long kind = 0;        // 1 and 2 are not offered by the export dialog; all others are, 0 being the usual one
};

class DataExportObject {
 public:
  virtual ~DataExportObject() = default;

  [[nodiscard]] virtual Long NumFormats() const = 0;
  // Describes the format at a position from 1 to NumFormats; false, with `format` untouched, at any other.
  [[nodiscard]] virtual bool FormatInfo(Integer position, FormatDescription& format) const = 0;
  // The capability of the format of that code; 0 for a code that no format has.
  [[nodiscard]] virtual Long FormatFlags(const Text& format_code) const = 0;

  // Creates a table file and gives its handle. False where the file cannot be made or no format has the code; there is
  // nothing to close then.
  [[nodiscard]] virtual bool CreateTable(const Text& path, const Text& format_code, const Text& table_name,
                                         Integer columns, Long& handle) = 0;
  // Defines the column at a position from 1. `width` counts characters. All columns are defined before the first row.
  [[nodiscard]] virtual bool AddColumn(Long handle, Integer position, ColumnType type, Integer width, Integer decimals,
                                       const Text& name) = 0;

  // One cell of the row under way. Cells keep their content from row to row until they are set again: that is relied
  // upon for dates and account codes.
  [[nodiscard]] virtual bool SetByte(Long handle, Integer column, Integer value) = 0;
  [[nodiscard]] virtual bool SetInteger(Long handle, Integer column, Integer value) = 0;
  [[nodiscard]] virtual bool SetDouble(Long handle, Integer column, Double value, Integer decimals) = 0;
  [[nodiscard]] virtual bool SetDate(Long handle, Integer column, Date value) = 0;
  [[nodiscard]] virtual bool SetText(Long handle, Integer column, const Text& value) = 0;

  // Finishes the row: kRowCommitted, or any other number for a failure.
  [[nodiscard]] virtual Long CommitRow(Long handle) = 0;
  // Closes the file. A file that could not be written whole is a host failure (61 disk full, 57 device error): what was
  // not written is never passed over in silence.
  virtual void CloseTable(Long handle) = 0;
};

}  // namespace tallybook
