#include "tallybook/inspect/DelimitedFile.h"

#include <algorithm>
#include <utility>

#include "base/Texts.h"
#include "import/DelimitedImport.h"
#include "platform/FileSystem.h"
#include "platform/Platform.h"

namespace tallybook::inspect {

namespace {

constexpr std::string_view kDateSeparators = "/. ";
constexpr Integer kPeriodMark = -1;

}  // namespace

LineSplitter::LineSplitter(std::string_view separators, std::string_view stoppers)
    : split_(separators, stoppers), fields_(kMostFields + 1) {}

LineFields LineSplitter::operator()(std::string_view line) {
  std::ranges::fill(fields_, std::string_view());
  split_(line, fields_);
  std::size_t count = kMostFields;
  while (count > 0 && fields_[count - 1].empty()) --count;
  return LineFields(fields_).first(count);
}

bool IsBlank(std::string_view text) {
  return text.find_first_not_of(" \t\n") == std::string_view::npos;
}

OrderedDate InOrder(const std::array<Integer, 3>& parts, Integer date_order) {
  OrderedDate date{.year = parts[0], .month = parts[1], .day = parts[2]};
  if (date_order == kMonthDayYear) date = {.year = parts[2], .month = parts[0], .day = parts[1]};
  if (date_order == kDayMonthYear) date = {.year = parts[2], .month = parts[1], .day = parts[0]};
  date.year = FixYear(static_cast<Integer>(date.year));
  if (date.month == kPeriodMark) date.month = std::exchange(date.day, 1);
  return date;
}

DelimitedFile::DelimitedFile(const Text& path, const DelimitedForm& form)
    : form_(form),
      raw_text_(path),
      any_line_end_(form.any_line_end ? std::optional<application::AnyLineEnd>(std::in_place) : std::nullopt),
      source_(ThePlatform().files->Open(path, Access::kRead, Sharing::kShared, Creation::kMustExist)),
      encoding_(source_, form.encoding),
      found_out_(form.encoding == TextEncoding::kDetect && encoding_.Start() == 0),
      lines_(source_, encoding_.Start()),
      date_parts_(kDateSeparators, "") {}

bool DelimitedFile::Next() {
  if (!lines_.Next(line_)) return false;
  FindRaw();
  return true;
}

// The reader has passed over the empty lines before its line, and may have dropped a line feed in front of it.
void DelimitedFile::FindRaw() {
  for (;;) {
    number_ = raw_text_.Line();
    const std::string_view raw = raw_text_.TakeLine();
    std::string_view text = raw.substr(0, raw.find_last_not_of("\r\n") + 1);
    if (text.starts_with("\xEF\xBB\xBF") && encoding_.Start() > 0) text.remove_prefix(3);
    raw_ = raw;
    if (raw.empty() || text == line_ || "\n" + std::string(text) == line_) return;
  }
}

LineDate DelimitedFile::DateOf(LineFields fields) {
  LineDate date;
  LineFields parts = fields;
  if (form_.date_in_one_field) {
    const std::string_view whole = fields.empty() ? std::string_view() : fields.front();
    date.text = TextOf(whole);
    parts = date_parts_(whole);
    date.has_more = parts.size() > date.parts.size();
  }
  for (std::size_t i = 0; i < std::min(parts.size(), date.parts.size()); ++i) date.parts[i] = TextOf(parts[i]);
  if (!form_.date_in_one_field) date.text = date.parts[0] + "," + date.parts[1] + "," + date.parts[2];
  // The first field may begin with the line feed of the line before.
  if (date.text.starts_with('\n')) date.text.erase(0, 1);
  return date;
}

Single DelimitedFile::Share() const {
  return static_cast<Single>(static_cast<Double>(lines_.Position()) / static_cast<Double>(lines_.Size()));
}

}  // namespace tallybook::inspect
