#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include "base/Dates.h"
#include "tallybook/cli/Commands.h"
#include "tallybook/cli/Findings.h"
#include "tallybook/cli/Lines.h"
#include "tallybook/cli/PrintForm.h"
#include "tallybook/cli/Session.h"
#include "tallybook/cli/Terminal.h"
#include "tallybook/cli/TextTable.h"
#include "tallybook/engine/BookCheck.h"

namespace tallybook::cli {

namespace {

using engine::BookCheckResult;
using engine::BookFinding;

struct CheckOptions {
  Text book;
  bool deep = false;
  PrintForm form = PrintForm::kTable;
};

Text DateOrNothing(Date date) {
  return date == kNoDate ? Text() : DateText(date);
}

Text NumberOrNothing(Long number) {
  return number == 0 ? Text() : std::to_string(number);
}

void PrintTable(const Text& path, const BookCheckResult& result) {
  if (!result.findings.empty()) {
    TextTable table({{"Kind"}, {"Account"}, {"From"}, {"To"}, {"Entry", Align::kRight}, {"Finding"}});
    for (const BookFinding& finding : result.findings) {
      table.AddRow({engine::FindingKindName(finding.kind),
                    finding.code.empty() ? NumberOrNothing(finding.account) : finding.code,
                    DateOrNothing(finding.first), DateOrNothing(finding.last), NumberOrNothing(finding.entry),
                    finding.what});
    }
    table.Print();
  }
  const auto found = static_cast<long long>(result.findings.size());
  PrintLine(fmt::format("{}: format {}{}, {}, {} with {}; {}", path, result.format,
                        result.format == 1 ? " (without checksums)" : "", Counted(result.chunks, "chunk"),
                        result.entries == 1 ? "1 journal entry" : WithCommas(result.entries) + " journal entries",
                        Counted(result.images, "image"),
                        found == 0 ? "nothing is damaged" : Counted(found, "finding")));
}

nlohmann::ordered_json JsonOf(const BookFinding& finding) {
  nlohmann::ordered_json json;
  json["kind"] = engine::FindingKindName(finding.kind);
  if (finding.account != 0) json["account"] = finding.account;
  if (!finding.code.empty()) json["code"] = finding.code;
  if (finding.first != kNoDate) json["first"] = DateText(finding.first);
  if (finding.last != kNoDate) json["last"] = DateText(finding.last);
  if (finding.entry != 0) json["entry"] = finding.entry;
  json["what"] = finding.what;
  return json;
}

void PrintJson(const Text& path, const BookCheckResult& result) {
  nlohmann::ordered_json json;
  json["file"] = path;
  json["format"] = result.format;
  json["chunks"] = result.chunks;
  json["entries"] = result.entries;
  json["images"] = result.images;
  json["findings"] = nlohmann::ordered_json::array();
  for (const BookFinding& finding : result.findings) json["findings"].push_back(JsonOf(finding));
  PrintAsItStands(JsonText(json));
}

ExitStatus RunCheck(const CheckOptions& options) {
  const Session session;
  const Text path = BookPath(options.book);
  const BookCheckResult result = engine::CheckBook(path, options.deep);
  if (options.form == PrintForm::kJson) {
    PrintJson(path, result);
  } else {
    PrintTable(path, result);
  }
  return StatusOfFindings(path, static_cast<long long>(result.findings.size()), "finding");
}

CommandTable CheckCommand() {
  const auto options = std::make_shared<CheckOptions>();
  CommandTable command =
      MakeCommand("check", "Look for damage in a book, by account and dates; status 1 where there is any",
                  {"tallybook book check north", "tallybook book check north --deep --json"}, options, RunCheck);
  AddBook(command, options->book);
  AddFlag(command, "--deep", options->deep, "Check the whole file's structure as well, and read every image");
  AddFormWithoutCsv(command, options->form);
  return command;
}

}  // namespace

CommandTable BookCommand() {
  return MakeGroup("book", "Look after a book", {CheckCommand()});
}

}  // namespace tallybook::cli
