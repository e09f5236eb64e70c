// A delimited file as looks go through it: cut into lines by the import's own reader, each with what stood in the file,
// its number there, and its fields and date as the import takes them.
#pragma once

#include <array>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "base/ModParse.h"
#include "base/TextEncoding.h"
#include "base/Types.h"
#include "import/LineReader.h"
#include "support/EncodedText.h"
#include "support/FileStream.h"
#include "tallybook/application/LineEnds.h"
#include "tallybook/inspect/RawText.h"

namespace tallybook::inspect {

// How a delimited file is written.
struct DelimitedForm {
  bool date_in_one_field = true;
  bool any_line_end = false;  // LF ends a line, too (AnyLineEnd)
  TextEncoding encoding = TextEncoding::kDetect;
};

// The fields of a line, from the first to the last that is not empty.
using LineFields = std::span<const std::string_view>;

// At most so many fields of a line are read.
inline constexpr std::size_t kMostFields = 256;

// Cuts lines into fields at commas and tabs, as the import does; a character of `stoppers` outside quotes ends a line.
class LineSplitter {
 public:
  explicit LineSplitter(std::string_view stoppers) : LineSplitter(",\t", stoppers) {}
  LineSplitter(std::string_view separators, std::string_view stoppers);

  // The fields stand until the next call, and no longer than the line.
  [[nodiscard]] LineFields operator()(std::string_view line);
  // Whether the last line has a field behind those that are read.
  [[nodiscard]] bool HasMore() const { return !fields_.back().empty(); }

 private:
  SplitQuoted split_;
  std::vector<std::string_view> fields_;
};
// True where all of a line is white space.
[[nodiscard]] bool IsBlank(std::string_view text);

// The date of a line as it stands.
struct LineDate {
  Text text;                  // all of it
  std::array<Text, 3> parts;  // in the file's order
  bool has_more = false;      // more than three parts stand in its field
};

// The parts of a date as a calendar has them.
struct OrderedDate {
  int year = 0;
  int month = 0;
  int day = 0;
};
// Puts a date's parts in order: kMonthDayYear, kDayMonthYear or kYearMonthDay. Years of two digits are completed, and a
// month of -1 makes a month of the day, which is a period's number.
[[nodiscard]] OrderedDate InOrder(const std::array<Integer, 3>& parts, Integer date_order);

class DelimitedFile {
 public:
  // Fails with the path: 53, 70, 75, 76. One at a time, as AnyLineEnd.
  DelimitedFile(const Text& path, const DelimitedForm& form);

  // Goes on to the next line that is not empty. False at the end of the file.
  [[nodiscard]] bool Next();

  // The line under way: its bytes, valid until the next one; with its end as it stands in the file; its number from 1.
  [[nodiscard]] std::string_view Line() const { return line_; }
  [[nodiscard]] std::string_view Raw() const { return raw_; }
  [[nodiscard]] long long Number() const { return number_; }
  [[nodiscard]] LineDate DateOf(LineFields fields);

  [[nodiscard]] EncodedText& Encoding() { return encoding_; }
  [[nodiscard]] Text TextOf(std::string_view bytes) { return encoding_.Decode(bytes); }
  // Whether the encoding is found out from the file's bytes, and not told by a byte-order mark or by the form.
  [[nodiscard]] bool IsEncodingFoundOut() const { return found_out_; }
  // How much of the file has been read, from 0 to 1.
  [[nodiscard]] Single Share() const;

 private:
  void FindRaw();

  DelimitedForm form_;
  RawText raw_text_;  // opened first: it shows the line ends as they are
  std::optional<application::AnyLineEnd> any_line_end_;
  FileStream source_;
  EncodedText encoding_;
  bool found_out_;
  LineReader lines_;
  LineSplitter date_parts_;
  std::string_view line_;
  std::string raw_;
  long long number_ = 0;
};

}  // namespace tallybook::inspect
