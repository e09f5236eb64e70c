// Writes the figures of a database for a date range to a file, in one of two shapes: an exchange file
// (docs/exchange-file.md), or a table in a foreign format through the export library. Both walk the same accounts,
// dates and fields. It changes no data; it leaves the calendar's cursor and the current record where its walk ended.
#pragma once

#include <memory>

#include "base/Types.h"

namespace tallybook {

class DataExportObject;
class HostFactory;
class Masterfile;

struct ExportRequest {
  Text file_name;
  Date start_date = kNoDate;
  Date last_date = kNoDate;
  bool as_table = false;  // false: an exchange file
  Single version = 0;     // exchange file: written as given; a reader accepts 1.0 alone
  Text format_code;       // table: the export library's code of the format
  Integer report_length = 0;
  bool with_zeros = true;  // table: a row for a zero value too
  bool may_ask = true;     // false: an old file that cannot be deleted is passed over without a question
};

// What an export works with. `library` is made by the factory on first need and stays with the caller.
struct ExportMeans {
  Masterfile& masterfile;
  HostFactory& factory;
  std::shared_ptr<DataExportObject>& library;
};

// Runs an export. True when the file stands, also after the user's cancel; an exchange file is well-formed then. False
// when the user gave up on a file that could not be deleted or created, or on a failure; the file stays on the disk as
// far as it got. Every failure is logged with " - CDataExchange:WriteQDXFile", also one that keeps the file from being
// created, about which the user is asked.
//
// A record that the database cannot read stops the program at once.
[[nodiscard]] bool Export(const ExportMeans& means, const ExportRequest& request);

}  // namespace tallybook
