#include "tallybook/cli/PrintForm.h"

#include <nlohmann/json.hpp>

namespace tallybook::cli {

namespace {

constexpr int kIndent = 2;

void AddForms(CommandTable& command, PrintForm& form, const Choices<PrintForm>& forms, const Text& what) {
  AddChoice(command, "--format", form, forms, what);
  AddFlag(
      command, "--json", [&form] { form = PrintForm::kJson; }, "The same as --format json");
  Exclude(command, "--format", "--json");
}

Text Dumped(const nlohmann::ordered_json& value, int indent) {
  const bool as_ascii = false;
  return value.dump(indent, ' ', as_ascii, nlohmann::ordered_json::error_handler_t::replace);
}

}  // namespace

void AddForm(CommandTable& command, PrintForm& form) {
  AddForms(command, form, {{"table", PrintForm::kTable}, {"csv", PrintForm::kCsv}, {"json", PrintForm::kJson}},
           "table (the default), csv or json");
}

void AddFormWithoutCsv(CommandTable& command, PrintForm& form) {
  AddForms(command, form, {{"table", PrintForm::kTable}, {"json", PrintForm::kJson}}, "table (the default) or json");
}

Text CsvField(const Text& text) {
  if (text.find_first_of(",\"\r\n") == Text::npos) return text;
  Text quoted = "\"";
  for (const char character : text) {
    if (character == '"') quoted += '"';
    quoted += character;
  }
  return quoted + '"';
}

Text JsonText(const nlohmann::ordered_json& value) {
  return Dumped(value, kIndent) + "\n";
}

Text JsonLine(const nlohmann::ordered_json& value) {
  const int on_one_line = -1;
  return Dumped(value, on_one_line);
}

}  // namespace tallybook::cli
