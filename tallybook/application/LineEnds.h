// The ends of a text file's lines. The delimited import takes a carriage return for the end of a line, alone or with a
// line feed behind it; a file of line feeds alone would be one long line to it. The host looks first and refuses such a
// file with the reason, or reads every line end as one that is wanted.
#pragma once

#include <memory>
#include <optional>

#include "base/Types.h"
#include "platform/FileSystem.h"

namespace tallybook::application {

// What is wrong with the line ends of a file; nothing where the import reads its lines as they are. "lines end in LF;
// wanted are CR or CR LF" where no line ends otherwise; "line 3 ends in LF; wanted are CR or CR LF" for the first of a
// file where some do. A line feed behind a carriage return or at the start of a line does no harm. Reads the file up to
// the first such line. Nothing, too, for a file that cannot be opened: the import tells of that.
[[nodiscard]] std::optional<Text> BadLineEnds(const Text& file);

// While it lives, files that are opened to be read show each line feed as a carriage return, so that lines end however
// they are written. The bytes keep their number and their places; empty lines are passed over. What is on disk stays,
// and everything else of the installed platform's file system is as it was. One at a time; the platform stays installed
// longer.
class AnyLineEnd {
 public:
  AnyLineEnd();
  ~AnyLineEnd();
  AnyLineEnd(const AnyLineEnd&) = delete;
  AnyLineEnd& operator=(const AnyLineEnd&) = delete;

 private:
  FileSystem* before_;
  std::unique_ptr<FileSystem> files_;
};

}  // namespace tallybook::application
