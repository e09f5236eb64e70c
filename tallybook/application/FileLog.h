// The log of the reference host: a text file to which entries are appended, one a line.
//
//   2004-02-03 14:05:09 error Tallybook - CDataExchange:WriteQDXFile (statement 40)
//   2004-02-03 14:05:10 audit Sales: Import: System Fields: /books/Import.txt
//
// A line break within an entry is written as a blank, so that an entry stays one line. The file is opened, written and
// closed at each entry: several processes may append to one log. Folders that are missing are made.
#pragma once

#include <utility>

#include "host/HostLog.h"

namespace tallybook::application {

class FileLog : public HostLog {
 public:
  explicit FileLog(Text path) : path_(std::move(path)) {}
  [[nodiscard]] const Text& Path() const { return path_; }

  // Entries from here on are dropped, as if they stood in the file: for a look that must leave nothing behind.
  void KeepNothing() { keeps_nothing_ = true; }

  // Both give 1 where the entry stands in the file and 0 where it could not be written. They never fail: whoever logs
  // is handling a failure already. `LostEntries` tells how many were lost.
  Integer LogError(const Text& message, Long line_number, Integer detail) override;
  Integer AuditEntry(const Text& who, const Text& what, const Text& subject, const std::vector<Text>& items) override;

  // Why an operation ended before its end, in one text:
  //   2004-02-03 14:05:11 stop january.txt: record 3: "x" is not a number
  Integer StopEntry(const Text& reason) { return Append("stop " + reason); }

  [[nodiscard]] Long LostEntries() const { return lost_entries_; }

 private:
  Integer Append(const Text& entry) noexcept;

  Text path_;
  bool keeps_nothing_ = false;
  Long lost_entries_ = 0;
};

}  // namespace tallybook::application
