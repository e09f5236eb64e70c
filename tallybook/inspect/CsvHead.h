// A look at the header of a comma-separated file: month, day, year, math, and whether accounts are told by code.
#pragma once

#include <optional>

#include "base/Types.h"
#include "import/QDXImport.h"
#include "tallybook/inspect/CsvFile.h"
#include "tallybook/inspect/CsvFindings.h"

namespace tallybook::inspect {

// In the place of a month it makes a period's number of the day.
inline constexpr Integer kCsvPeriodMark = -1;

// The parts of a date as the file has them.
struct CsvDate {
  Integer month = 0;
  Integer day = 0;
  Integer year = 0;
};

// The date of the book that holds the figures of a file's date, which may be in no calendar.
[[nodiscard]] Date LevelOf(Masterfile& masterfile, const CsvDate& date);

struct CsvHead {
  bool is_sound = false;  // records can be read behind it
  bool by_code = false;
  Integer math = 0;               // as the import takes it
  std::optional<Date> date = {};  // of the first records; none where the file's is none of the book
  bool ends_its_line = false;     // it stands on a line of its own: the file may be one of lines
};

// Reads the header and tells what is found in it, and its piece.
//   math  other than mDefault: what the header says of it does not count
[[nodiscard]] CsvHead LookAtCsvHead(Masterfile& masterfile, CsvFile& file, CsvFindings& findings, eMath math);

}  // namespace tallybook::inspect
