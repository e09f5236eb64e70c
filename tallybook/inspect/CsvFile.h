// A comma-separated file as a look goes through it: cut into fields by the import's own reader, each with what stood in
// the file and on which line. A field may be put back, for whoever has to look ahead.
#pragma once

#include <cstddef>
#include <deque>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

#include "base/TextEncoding.h"
#include "base/Types.h"
#include "import/CSVFieldStream.h"
#include "support/FileStream.h"
#include "tallybook/inspect/RawText.h"

namespace tallybook::inspect {

struct CsvField {
  std::string bytes;  // without quotes and blanks around it
  std::string raw;    // as it stands, with what separates it from the next
  long long line = 0;

  [[nodiscard]] bool EndsLine() const;
  // Whether it begins with a quote that no other follows.
  [[nodiscard]] bool HasOpenQuote() const;
  // Whether something stands between a closing quote and the separator: the import takes it for a field of its own.
  [[nodiscard]] bool EndsInQuote() const;
  // As it stands, but with another separator in the place of its own. A text that has none stays as it is.
  [[nodiscard]] std::string With(std::string_view separator) const;

 private:
  [[nodiscard]] std::size_t SeparatorLength() const;
};
using CsvFields = std::vector<CsvField>;

// The fields on a line of their own, whatever lines they stand on; nothing where there are none.
[[nodiscard]] std::string AsOneLine(const CsvFields& fields);
// Whether nothing but a line end, and blanks, stand there.
[[nodiscard]] bool IsEmptyLine(const CsvFields& fields);

class CsvFile {
 public:
  // Fails with the path: 53, 70, 75, 76.
  CsvFile(const Text& path, TextEncoding encoding);

  [[nodiscard]] bool AtEnd() { return waiting_.empty() && stream_.AtEnd(); }
  // The line that the file ends on, at its end.
  [[nodiscard]] long long Line() const { return raw_.Line(); }

  [[nodiscard]] CsvField Take();
  // Up to `count` more fields; fewer at the end of the file.
  void TakeInto(CsvFields& fields, std::size_t count);
  // The fields up to the end of the line, and no more than so many.
  [[nodiscard]] CsvFields TakeLine(std::size_t most = std::numeric_limits<std::size_t>::max());
  void PutBack(CsvFields fields);

  [[nodiscard]] EncodedText& Encoding() { return stream_.Encoding(); }
  [[nodiscard]] Text TextOf(const CsvField& field) { return stream_.Encoding().Decode(field.bytes); }
  [[nodiscard]] Text RawTextOf(const CsvField& field) { return stream_.Encoding().Decode(field.raw); }
  // Whether the encoding is found out from the file's bytes, and not told by a byte-order mark or by the caller.
  [[nodiscard]] bool IsEncodingFoundOut() const { return found_out_; }
  // How much of the file has been read, from 0 to 1.
  [[nodiscard]] Single Share();

 private:
  RawText raw_;
  FileStream source_;
  CSVFieldStream stream_;
  bool found_out_;
  std::deque<CsvField> waiting_;
};

}  // namespace tallybook::inspect
