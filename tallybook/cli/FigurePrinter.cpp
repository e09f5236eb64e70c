#include "tallybook/cli/FigurePrinter.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <fmt/format.h>
#include <iterator>
#include <nlohmann/json.hpp>
#include <ostream>

#include "base/Dates.h"
#include "base/Failure.h"
#include "base/Texts.h"
#include "tallybook/application/Shown.h"
#include "tallybook/cli/Colours.h"

namespace tallybook::cli {

namespace {

constexpr std::size_t kBufferSize = std::size_t{1} << 16;
constexpr Long kFieldNameWidth = 30;
constexpr std::size_t kValueWidth = 20;
constexpr int kTableDigits = 15;  // what a person reads; every amount of so many digits shows as it was entered
constexpr std::size_t kLongestNumber = 32;  // the shortest text of a double takes 24 characters at most

}  // namespace

FigurePrinter::FigurePrinter(PrintForm form, const engine::Book& book, std::ostream& out)
    : form_(form), book_(book), out_(out) {
  buffer_.reserve(kBufferSize + 1024);
}

void FigurePrinter::Begin() {
  if (form_ == PrintForm::kCsv) buffer_ += "account_number,account_code,date,field,value\n";
  if (form_ == PrintForm::kTable) {
    buffer_ +=
        HeadingText(fmt::format("{:<10}  {:<10}  {:<36}{:>{}}", "Account", "Date", "Field", "Value", kValueWidth));
    buffer_ += '\n';
    for (int position = 1; position <= book_.NumFields(); ++position) {
      const Text name = application::Shown(TrimRight(book_.FieldName(static_cast<Integer>(position))));
      field_texts_.push_back(fmt::format("  {:>5} {}", book_.FieldNumber(static_cast<Integer>(position)),
                                         PadRight(name, ' ', kFieldNameWidth)));
    }
  }
  if (form_ == PrintForm::kJson) buffer_ += '[';
}

void FigurePrinter::Print(const engine::Figure& figure) {
  if (figure.account_position != account_position_) PrepareAccount(figure);
  if (figure.date != date_) {
    date_ = figure.date;
    date_text_ = DateText(figure.date);
  }
  if (form_ == PrintForm::kCsv) PrintCsvRow(figure);
  if (form_ == PrintForm::kTable) PrintTableRow(figure);
  if (form_ == PrintForm::kJson) PrintJsonRow(figure);
  any_ = true;
  if (buffer_.size() >= kBufferSize) WriteOut();
}

void FigurePrinter::Finish() {
  if (form_ == PrintForm::kJson) buffer_ += any_ ? "\n]\n" : "]\n";
  WriteOut();
}

void FigurePrinter::PrepareAccount(const engine::Figure& figure) {
  account_position_ = figure.account_position;
  const Text& code = book_.Description().accounts[static_cast<std::size_t>(figure.account_position - 1)].code;
  const Long number = figure.account_number;
  if (form_ == PrintForm::kCsv) account_text_ = fmt::format("{},{}", number, CsvField(code));
  if (form_ == PrintForm::kTable) account_text_ = PadRight(application::Shown(code), ' ', engine::kCodeWidth);
  if (form_ == PrintForm::kJson) {
    account_text_ = fmt::format(R"({{ "account": {}, "code": {})", number, nlohmann::json(code).dump());
  }
}

void FigurePrinter::PrintCsvRow(const engine::Figure& figure) {
  buffer_ += account_text_;
  buffer_ += ',';
  buffer_ += date_text_;
  buffer_ += ',';
  AppendNumber(figure.field_number);
  buffer_ += ',';
  AppendValue(figure.value);
  buffer_ += '\n';
}

void FigurePrinter::PrintTableRow(const engine::Figure& figure) {
  std::array<char, kLongestNumber> value{};
  const auto result = std::to_chars(value.begin(), value.end(), figure.value, std::chars_format::general, kTableDigits);
  const auto width = static_cast<std::size_t>(result.ptr - value.begin());
  buffer_ += account_text_;
  buffer_ += "  ";
  buffer_ += date_text_;
  buffer_ += field_texts_[static_cast<std::size_t>(figure.field_position - 1)];
  buffer_.append(kValueWidth - std::min(width, kValueWidth), ' ');
  buffer_.append(value.begin(), result.ptr);
  buffer_ += '\n';
}

void FigurePrinter::PrintJsonRow(const engine::Figure& figure) {
  if (!std::isfinite(figure.value)) {
    throw Failure(FailureNumber::kInvalidArgument,
                  fmt::format("JSON has no form for the value {} of account number {} on {}, field {}", figure.value,
                              figure.account_number, date_text_, figure.field_number));
  }
  buffer_ += any_ ? ",\n  " : "\n  ";
  buffer_ += account_text_;
  buffer_ += R"(, "date": ")";
  buffer_ += date_text_;
  buffer_ += R"(", "field": )";
  AppendNumber(figure.field_number);
  buffer_ += R"(, "value": )";
  AppendValue(figure.value);
  buffer_ += " }";
}

void FigurePrinter::AppendValue(Double value) {
  std::array<char, kLongestNumber> text{};
  const auto result = std::to_chars(text.begin(), text.end(), value);
  buffer_.append(text.begin(), result.ptr);
}

void FigurePrinter::AppendNumber(Long number) {
  std::array<char, kLongestNumber> text{};
  const auto result = std::to_chars(text.begin(), text.end(), number);
  buffer_.append(text.begin(), result.ptr);
}

void FigurePrinter::WriteOut() {
  out_.write(buffer_.data(), static_cast<std::streamsize>(buffer_.size()));
  buffer_.clear();
}

Text CsvNumber(Double value) {
  return std::isfinite(value) ? ShortestText(value) : Text();
}

Text JsonMember(const char* name, Double value) {
  return std::isfinite(value) ? fmt::format(R"(, "{}": {})", name, ShortestText(value)) : Text();
}

Text ShortestText(Double value) {
  std::array<char, kLongestNumber> text{};
  const auto result = std::to_chars(text.begin(), text.end(), value);
  return {text.begin(), result.ptr};
}

}  // namespace tallybook::cli
