#include <nlohmann/json.hpp>

#include "base/Dates.h"
#include "tallybook/application/BookCare.h"
#include "tallybook/application/CareWords.h"
#include "tallybook/cli/AfterCommit.h"
#include "tallybook/cli/CareWatch.h"
#include "tallybook/cli/Commands.h"
#include "tallybook/cli/Findings.h"
#include "tallybook/cli/Lines.h"
#include "tallybook/cli/PrintForm.h"
#include "tallybook/cli/Session.h"
#include "tallybook/cli/Terminal.h"
#include "tallybook/cli/TextTable.h"
#include "tallybook/engine/BookCheck.h"
#include "tallybook/engine/BookCompact.h"
#include "tallybook/engine/BookSalvage.h"

namespace tallybook::cli {

namespace {

using engine::BookCheckResult;
using engine::BookFinding;

struct CheckOptions {
  Text book;
  bool deep = false;
  PrintForm form = PrintForm::kTable;
};

// Nothing where there are none.
void PrintFindings(const std::vector<BookFinding>& findings, const Text& heading) {
  if (findings.empty()) return;
  TextTable table({{"Kind"}, {"Account"}, {"From"}, {"To"}, {"Entry", Align::kRight}, {heading}});
  for (const BookFinding& finding : findings) table.AddRow(application::CellsOf(finding));
  table.Print();
}

void PrintTable(const Text& path, const BookCheckResult& result) {
  PrintFindings(result.findings, "Finding");
  PrintLine(application::CheckWords(path, result));
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

// What the work gives, which is told how far it is; the line is gone by then.
template <typename Work>
auto Watched(Session& session, const Text& title, Work work) {
  CareWatch watch(session.Progress(), title);
  return work(watch);
}

ExitStatus RunCheck(const CheckOptions& options) {
  Session session;
  const Text path = BookPath(options.book);
  const BookCheckResult result =
      Watched(session, "Check " + path, [&](auto& watch) { return engine::CheckBook(path, options.deep, watch); });
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

// --- salvage ---------------------------------------------------------------------------------------------------------

struct SalvageOptions {
  Text damaged;
  Text book;
  bool as_it_reads = false;
  PrintForm form = PrintForm::kTable;
};

void PrintTable(const Text& path, const engine::SalvageResult& result) {
  PrintFindings(result.lost, "Lost");
  PrintLine(application::SalvageWords(path, result));
}

void PrintJson(const Text& damaged, const Text& path, const engine::SalvageResult& result) {
  nlohmann::ordered_json json;
  json["file"] = damaged;
  json["other"] = path;
  json["format"] = result.format;
  json["chunks"] = result.chunks;
  json["entries"] = result.entries;
  json["findings"] = nlohmann::ordered_json::array();
  for (const BookFinding& lost : result.lost) json["findings"].push_back(JsonOf(lost));
  PrintAsItStands(JsonText(json));
}

ExitStatus RunSalvage(const SalvageOptions& options) {
  Session session;
  const Text damaged = BookPath(options.damaged);
  const Text path = BookPath(options.book);
  const engine::SalvageResult result = Watched(session, "Salvage " + damaged, [&](auto& watch) {
    return engine::SalvageBook(damaged, path, options.as_it_reads, watch);
  });
  if (options.form == PrintForm::kJson) {
    PrintJson(damaged, path, result);
  } else {
    PrintTable(path, result);
  }
  return StatusOfFindings(damaged, static_cast<long long>(result.lost.size()), "finding");
}

CommandTable SalvageCommand() {
  const auto options = std::make_shared<SalvageOptions>();
  CommandTable command = MakeCommand(
      "salvage",
      "Make a new book of what can be read of a damaged one, and list what is lost; status 1 where anything is",
      {"tallybook book salvage north north-saved"}, options, RunSalvage);
  AddText(command, "DAMAGED", options->damaged, "", "The damaged book, which stays as it is")
      .Required()
      .As(ArgumentKind::kBook);
  AddText(command, "NEW", options->book, "", "The book to make").Required().As(ArgumentKind::kFile);
  AddFlag(command, "--as-it-reads", options->as_it_reads,
          "Take a description that does not agree with its checksum: figures may stand in another place than before");
  AddFormWithoutCsv(command, options->form);
  return command;
}

// --- backup, restore, compact ----------------------------------------------------------------------------------------

struct BackupOptions {
  Text book;
  Text file;
  bool replace = false;
};

ExitStatus RunBackup(const BackupOptions& options) {
  Session session;
  const Text path = BookPath(options.book);
  const application::BackupDone done = Watched(session, "Back up " + path, [&](auto& watch) {
    return application::BackUpBook(path, options.file, options.replace, watch);
  });
  PrintLine(application::BackupWords(path, options.file, done));
  return ExitStatus::kDone;
}

CommandTable BackupCommand() {
  const auto options = std::make_shared<BackupOptions>();
  CommandTable command =
      MakeCommand("backup", "Write a book and its companion files into one file, while others may work in it",
                  {"tallybook book backup north north.backup", "tallybook book backup north north.backup --replace"},
                  options, RunBackup);
  AddBook(command, options->book);
  AddText(command, "FILE", options->file, "", "The backup to write").Required().As(ArgumentKind::kFile);
  AddFlag(command, "--replace", options->replace, "Put it in the place of a backup that is there");
  return command;
}

struct RestoreOptions {
  Text file;
  Text book;
  application::RestoreOptions how;
  Long wait = 0;
};

ExitStatus RunRestore(const RestoreOptions& options) {
  Session session;
  application::RestoreOptions how = options.how;
  how.wait_seconds = options.wait;
  const application::RestoreDone done = Watched(session, "Restore " + options.file, [&](auto& watch) {
    return application::RestoreBook(options.file, BookPath(options.book), how, watch);
  });
  // The book stands there, whether that can be told or not.
  DoAfterCommit([&] {
    PrintLine(application::RestoreWords(done));
    if (!done.companions_wait.empty()) Warn(application::WaitingWords(done));
    if (!done.kept_as.empty()) PrintLine(application::KeptWords(done));
  });
  return ExitStatus::kDone;
}

CommandTable RestoreCommand() {
  const auto options = std::make_shared<RestoreOptions>();
  CommandTable command =
      MakeCommand("restore", "Make a book and its companion files out of a backup",
                  {"tallybook book restore north.backup north", "tallybook book restore north.backup north --replace"},
                  options, RunRestore);
  AddText(command, "FILE", options->file, "", "The backup").Required().As(ArgumentKind::kFile);
  AddBookToChange(command, options->book, options->wait);
  AddFlag(command, "--replace", options->how.replace, "Replace the book that is there, which is kept beside it");
  return command;
}

struct CompactOptions {
  Text book;
  Long wait = 0;
};

ExitStatus RunCompact(const CompactOptions& options) {
  Session session;
  const Text path = BookPath(options.book);
  const engine::CompactResult result =
      Watched(session, "Compact " + path, [&](auto& watch) { return engine::CompactBook(path, options.wait, watch); });
  PrintLine(application::CompactWords(path, result));
  return ExitStatus::kDone;
}

CommandTable CompactCommand() {
  const auto options = std::make_shared<CompactOptions>();
  CommandTable command = MakeCommand("compact", "Give back the room that a book does not use any more",
                                     {"tallybook book compact north"}, options, RunCompact);
  AddBookToChange(command, options->book, options->wait);
  return command;
}

}  // namespace

CommandTable BookCommand() {
  return MakeGroup("book", "Look after a book",
                   {CheckCommand(), BackupCommand(), RestoreCommand(), CompactCommand(), SalvageCommand()});
}

}  // namespace tallybook::cli
