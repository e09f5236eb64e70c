#include "tallybook/cli/FindingPrinter.h"

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include "base/Dates.h"
#include "tallybook/cli/Lines.h"

namespace tallybook::cli {

namespace {

using inspect::Effect;
using inspect::Finding;

void AddPart(Text& line, const Text& part) {
  line += (line.empty() ? "" : ", ") + part;
}

// Where a finding is: "line 2, record 1, value", "byte 278, record 1, account 100, 2003-01-01, field 5".
Text PlaceText(const Finding& finding) {
  Text place;
  if (finding.line > 0) AddPart(place, fmt::format("line {}", finding.line));
  if (finding.offset) AddPart(place, fmt::format("byte {}", *finding.offset));
  if (finding.record > 0) AddPart(place, fmt::format("record {}", finding.record));
  if (finding.account) AddPart(place, "account " + *finding.account);
  if (finding.date) AddPart(place, DateText(*finding.date));
  if (finding.field) AddPart(place, fmt::format("field {}", *finding.field));
  if (!finding.column_name.empty()) AddPart(place, finding.column_name);
  return place;
}

Text LineOf(const Text& file, const Finding& finding) {
  Text place = PlaceText(finding);
  if (!finding.text.empty()) place += fmt::format(" \"{}\"", finding.text);
  Text line = file + ": " + (place.empty() ? "" : place + ": ") + finding.reason;
  if (finding.effect == Effect::kNote) line += " (as it is told to)";
  return finding.help.empty() ? line : line + "; " + finding.help;
}

nlohmann::ordered_json JsonOf(const Finding& finding) {
  nlohmann::ordered_json json;
  if (finding.line > 0) {
    json = {{"line", finding.line},
            {"record", finding.record},
            {"column", finding.column},
            {"column_name", finding.column_name}};
  } else {
    if (finding.offset) json["offset"] = *finding.offset;
    if (finding.record > 0) json["record"] = finding.record;
    if (finding.account) json["code"] = *finding.account;
    if (finding.date) json["date"] = DateText(*finding.date);
    if (finding.field) json["field"] = *finding.field;
  }
  json["text"] = finding.text;
  json["kind"] = inspect::WordOf(finding.effect);
  json["what"] = finding.reason;
  json["help"] = finding.help;
  return json;
}

}  // namespace

void FindingPrinter::Print(const Finding& finding) {
  if (form_ == PrintForm::kJson) {
    PrintAsItStands((any_ ? ",\n    " : JsonHead() + "\n    ") + JsonLine(JsonOf(finding)));
  } else {
    PrintLine(LineOf(file_, finding));
  }
  any_ = true;
}

void FindingPrinter::Finish(const Text& line, const nlohmann::ordered_json& members) {
  if (form_ != PrintForm::kJson) {
    PrintLine(file_ + ": " + line);
    return;
  }
  Text end = (any_ ? Text("\n  ]") : JsonHead() + "]");
  for (const auto& [name, value] : members.items()) end += fmt::format(",\n  \"{}\": {}", name, JsonLine(value));
  PrintAsItStands(end + "\n}\n");
}

Text FindingPrinter::JsonHead() const {
  return "{\n  \"file\": " + JsonLine(file_) + ",\n  \"findings\": [";
}

}  // namespace tallybook::cli
