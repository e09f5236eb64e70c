#include "tallybook/inspect/CsvFile.h"

#include <iterator>
#include <string_view>
#include <utility>

#include "platform/FileSystem.h"
#include "platform/Platform.h"

namespace tallybook::inspect {

bool CsvField::EndsLine() const {
  return !raw.empty() && (raw.back() == '\n' || raw.back() == '\r');
}

bool CsvField::HasOpenQuote() const {
  std::string_view text = raw;
  if (text.starts_with("\xEF\xBB\xBF")) text.remove_prefix(3);
  const std::size_t quote = text.find_first_not_of(' ');
  return quote != std::string_view::npos && text[quote] == '"' && text.find('"', quote + 1) == std::string_view::npos;
}

bool CsvField::EndsInQuote() const {
  const std::size_t last = raw.find_last_not_of(' ');
  return last != std::string::npos && raw[last] == '"';
}

std::size_t CsvField::SeparatorLength() const {
  if (raw.empty() || HasOpenQuote()) return 0;
  if (raw.ends_with("\r\n")) return 2;
  return raw.back() == ',' || EndsLine() ? 1 : 0;
}

std::string CsvField::With(std::string_view separator) const {
  const std::size_t length = SeparatorLength();
  return length == 0 ? raw : raw.substr(0, raw.size() - length).append(separator);
}

std::string AsOneLine(const CsvFields& fields) {
  constexpr std::string_view kLineEnd = "\r\n";
  if (fields.empty()) return {};
  std::string line;
  for (std::size_t i = 0; i + 1 < fields.size(); ++i) line += fields[i].With(",");
  line += fields.back().With(kLineEnd);
  if (!line.ends_with('\n') && !fields.back().HasOpenQuote()) line += kLineEnd;
  return line;
}

bool IsEmptyLine(const CsvFields& fields) {
  return fields.size() == 1 && fields.front().bytes.empty() &&
         fields.front().raw.find_first_of(",\"") == std::string::npos;
}

CsvFile::CsvFile(const Text& path, TextEncoding encoding)
    : raw_(path),
      source_(ThePlatform().files->Open(path, Access::kRead, Sharing::kShared, Creation::kMustExist)),
      stream_(source_, encoding),
      found_out_(encoding == TextEncoding::kDetect && stream_.Encoding().Start() == 0) {}

CsvField CsvFile::Take() {
  if (!waiting_.empty()) {
    CsvField field = std::move(waiting_.front());
    waiting_.pop_front();
    return field;
  }
  CsvField field;
  field.line = raw_.Line();
  field.bytes = stream_.Next();
  field.raw = raw_.TakeTo(stream_.Position());
  return field;
}

void CsvFile::TakeInto(CsvFields& fields, std::size_t count) {
  for (std::size_t i = 0; i < count && !AtEnd(); ++i) fields.push_back(Take());
}

CsvFields CsvFile::TakeLine(std::size_t most) {
  CsvFields fields;
  while (!AtEnd() && fields.size() < most && (fields.empty() || !fields.back().EndsLine())) fields.push_back(Take());
  return fields;
}

void CsvFile::PutBack(CsvFields fields) {
  waiting_.insert(waiting_.begin(), std::make_move_iterator(fields.begin()), std::make_move_iterator(fields.end()));
}

Single CsvFile::Share() {
  return static_cast<Single>(static_cast<Double>(stream_.Position()) / static_cast<Double>(stream_.Size()));
}

}  // namespace tallybook::inspect
