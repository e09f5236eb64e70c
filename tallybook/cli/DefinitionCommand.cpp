#include <algorithm>
#include <fmt/format.h>
#include <functional>
#include <nlohmann/json.hpp>
#include <optional>

#include "base/Failure.h"
#include "base/Narrow.h"
#include "tallybook/application/DefinitionCheck.h"
#include "tallybook/cli/Commands.h"
#include "tallybook/cli/DefinitionEdit.h"
#include "tallybook/cli/DefinitionList.h"
#include "tallybook/cli/Findings.h"
#include "tallybook/cli/Lines.h"
#include "tallybook/cli/PrintForm.h"
#include "tallybook/cli/Session.h"
#include "tallybook/cli/TextTable.h"

namespace tallybook::cli {

namespace {

using application::CheckedDefinition;
using application::CheckedRow;

struct DefinitionOptions {
  Text book;
  Long wait = 0;
  Integer number = 0;
  std::optional<Long> checked_number;
  DefinitionChanges changes;
  PrintForm form = PrintForm::kTable;
  AskOptions asking;
};

// The members bear the names of the options that set them.
nlohmann::ordered_json JsonOf(const CDataExchange& exchange, engine::Book& book) {
  const DefinitionRecord& definition = exchange.CurrentDefinition();
  nlohmann::ordered_json json = {{"number", exchange.FileNum()},
                                 {"title", definition.Desc},
                                 {"file", definition.QdxFileName},
                                 {"accounts", AccountMatchWord(definition, book)},
                                 {"fields", FieldMatchWord(definition)},
                                 {"after", AfterWord(definition.Disp)},
                                 {"map_account", nlohmann::ordered_json::array()},
                                 {"map_field", nlohmann::ordered_json::array()}};
  for (int i = 1; i <= definition.NumAccounts; ++i) {
    const AccountRow& row = definition.accounts(i);
    json["map_account"].push_back({{"from", row.from_code}, {"to", row.to_code}});
  }
  for (int i = 1; i <= definition.NumFields; ++i) {
    const FieldRow& row = definition.fields(i);
    json["map_field"].push_back({{"from", row.FieldFrom}, {"to", row.FieldTo}});
  }
  return json;
}

void PrintCsv(const nlohmann::ordered_json& definitions) {
  PrintAsItStands("number,title,file,accounts,fields,after\n");
  for (const auto& definition : definitions) {
    Text row = std::to_string(definition.at("number").get<Integer>());
    for (const char* name : {"title", "file", "accounts", "fields", "after"}) {
      row += "," + CsvField(definition.at(name).get<Text>());
    }
    PrintAsItStands(row + "\n");
  }
}

void PrintTable(CDataExchange& exchange, engine::Book& book) {
  if (exchange.NumRecs() == 0) {
    PrintLine("There are no exchange definitions.");
    return;
  }
  TextTable table({{"#", Align::kRight}, {"Title"}, {"File"}, {"Accounts"}, {"Fields"}, {"After"}});
  for (int i = 1; i <= exchange.NumRecs(); ++i) {
    exchange.SetFile(static_cast<Integer>(i));
    const DefinitionRecord& definition = exchange.CurrentDefinition();
    table.AddRow({std::to_string(exchange.FileNum()), definition.Desc, definition.QdxFileName,
                  AccountMatchText(definition, book), FieldMatchText(definition), AfterWord(definition.Disp)});
  }
  table.Print();
}

ExitStatus RunList(const DefinitionOptions& options) {
  Session session;
  const auto book = session.OpenToRead(options.book);
  CDataExchange exchange(session.Factory());
  OpenDefinitions(session.Files(), exchange, *book);
  if (options.form == PrintForm::kTable) {
    PrintTable(exchange, *book);
    return ExitStatus::kDone;
  }
  nlohmann::ordered_json definitions = nlohmann::ordered_json::array();
  for (int i = 1; i <= exchange.NumRecs(); ++i) {
    exchange.SetFile(static_cast<Integer>(i));
    definitions.push_back(JsonOf(exchange, *book));
  }
  if (options.form == PrintForm::kJson) PrintAsItStands(JsonText(definitions));
  if (options.form == PrintForm::kCsv) PrintCsv(definitions);
  return ExitStatus::kDone;
}

void PrintRows(const DefinitionRecord& definition) {
  if (definition.NumAccounts > 0) {
    TextTable accounts({{"Account in the file"}, {"Account here"}});
    for (int i = 1; i <= definition.NumAccounts; ++i) {
      accounts.AddRow({definition.accounts(i).from_code, definition.accounts(i).to_code});
    }
    PrintLine("");
    accounts.Print();
  }
  if (definition.NumFields > 0) {
    TextTable fields({{"Field in the file", Align::kRight}, {"Field here", Align::kRight}});
    for (int i = 1; i <= definition.NumFields; ++i) {
      fields.AddRow({std::to_string(definition.fields(i).FieldFrom), std::to_string(definition.fields(i).FieldTo)});
    }
    PrintLine("");
    fields.Print();
  }
}

void PrintDefinition(CDataExchange& exchange, engine::Book& book) {
  const DefinitionRecord& definition = exchange.CurrentDefinition();
  PrintLine(fmt::format("Exchange definition {}: {}", exchange.FileNum(), definition.Desc));
  PrintLine(fmt::format("  File      {}", definition.QdxFileName));
  PrintLine(fmt::format("  Accounts  {}", AccountMatchText(definition, book)));
  PrintLine(fmt::format("  Fields    {}", FieldMatchText(definition)));
  PrintLine(fmt::format("  After     {}", AfterWord(definition.Disp)));
  PrintRows(definition);
}

ExitStatus RunShow(const DefinitionOptions& options) {
  Session session;
  const auto book = session.OpenToRead(options.book);
  CDataExchange exchange(session.Factory());
  OpenDefinitions(session.Files(), exchange, *book);
  exchange.SetFile(PositionOfDefinition(exchange, *book, options.number));
  if (options.form == PrintForm::kJson) {
    PrintAsItStands(JsonText(JsonOf(exchange, *book)));
  } else {
    PrintDefinition(exchange, *book);
  }
  return ExitStatus::kDone;
}

// --- check -----------------------------------------------------------------------------------------------------------

Text FilesText(const CheckedDefinition& definition) {
  if (definition.files.empty()) return "none matches, and there is no archive copy";
  Text files;
  for (const Text& file : definition.files) files += (files.empty() ? "" : ", ") + file;
  return definition.is_archive_copy ? "none matches; the archive copy " + files : files;
}

Text InFileText(const CheckedDefinition& definition, const CheckedRow& row) {
  if (!definition.HasFile()) return "?";
  if (row.missing_in.empty()) return "yes";
  if (definition.files.size() == 1) return "no";
  const std::size_t others = row.missing_in.size() - 1;
  return "not in " + row.missing_in.front() + (others == 0 ? "" : fmt::format(" and {} more", others));
}

void PrintCheckedRows(const CheckedDefinition& definition, const std::vector<CheckedRow>& rows, const Text& what,
                      Align align) {
  if (rows.empty()) return;
  TextTable table({{what + " in the file", align}, {what + " here", align}, {"In the file"}, {"Here"}});
  for (const CheckedRow& row : rows) {
    table.AddRow(
        {row.from.empty() ? "(all)" : row.from, row.to, InFileText(definition, row), row.in_book ? "yes" : "no"});
  }
  PrintLine("");
  table.Print();
}

void PrintChecked(const std::vector<CheckedDefinition>& definitions) {
  if (definitions.empty()) PrintLine("There are no exchange definitions.");
  for (const CheckedDefinition& definition : definitions) {
    if (&definition != &definitions.front()) PrintLine("");
    PrintLine(fmt::format("Exchange definition {}: {}", definition.number, definition.title));
    PrintLine("  File   " + definition.pattern);
    PrintLine("  Found  " + FilesText(definition));
    PrintCheckedRows(definition, definition.accounts, "Account", Align::kLeft);
    PrintCheckedRows(definition, definition.fields, "Field", Align::kRight);
  }
}

// What the files have is left out where there is none to look at.
template <typename Code>
nlohmann::ordered_json CheckedRowsJson(const CheckedDefinition& definition, const std::vector<CheckedRow>& rows,
                                       Code code) {
  auto json = nlohmann::ordered_json::array();
  for (const CheckedRow& row : rows) {
    nlohmann::ordered_json& item = json.emplace_back();
    item = {{"from", code(row.from)}, {"to", code(row.to)}};
    if (definition.HasFile()) item["missing_in"] = row.missing_in;
    item.update({{"in_book", row.in_book}, {"holds", row.Holds()}});
  }
  return json;
}

void PrintCheckedJson(const std::vector<CheckedDefinition>& definitions) {
  auto json = nlohmann::ordered_json::array();
  for (const CheckedDefinition& definition : definitions) {
    nlohmann::ordered_json& item = json.emplace_back();
    item = {{"number", definition.number},
            {"title", definition.title},
            {"file", definition.pattern},
            {"files", definition.files},
            {"archive_copy", definition.is_archive_copy},
            {"unreadable", nlohmann::ordered_json::array()},
            {"holds", definition.Holds()}};
    for (const auto& file : definition.unreadable) {
      item["unreadable"].push_back({{"file", file.path}, {"what", file.reason}});
    }
    item["map_account"] = CheckedRowsJson(definition, definition.accounts, [](const Text& text) { return text; });
    item["map_field"] =
        CheckedRowsJson(definition, definition.fields, [](const Text& text) { return std::stoi(text); });
  }
  PrintAsItStands(JsonText(json));
}

// Files that the rows do not show, and how much does not hold.
long long TellWhatDoesNotHold(const CheckedDefinition& definition) {
  long long count = 0;
  const Text title = fmt::format("exchange definition {} ({}): ", definition.number, definition.title);
  for (const auto& file : definition.unreadable) {
    Warn(fmt::format("{}{} cannot be read: {}", title, file.path, file.reason));
    ++count;
  }
  for (const auto* rows : {&definition.accounts, &definition.fields}) {
    count += std::ranges::count_if(*rows, [](const CheckedRow& row) { return !row.Holds(); });
  }
  if (definition.files.empty()) {
    Warn(title + "no file was there to be looked at, nor an archive copy; only the book's side has been checked");
  }
  return count;
}

ExitStatus RunCheck(const DefinitionOptions& options) {
  Session session;
  const auto book = session.OpenToRead(options.book);
  std::optional<Integer> number;
  if (options.checked_number) number = ToInteger(*options.checked_number);
  const auto definitions = application::CheckDefinitions(session.Files(), *book, number);
  options.form == PrintForm::kJson ? PrintCheckedJson(definitions) : PrintChecked(definitions);
  long long count = 0;
  for (const CheckedDefinition& definition : definitions) count += TellWhatDoesNotHold(definition);
  return StatusOfFindings(book->Path(), count, "finding");
}

// Selects a free place for a new definition and gives it.
Integer SelectNew(CDataExchange& exchange, const engine::Book& book) {
  const Integer position = exchange.FirstAvailRec();
  if (position == 0) {
    throw Failure(FailureNumber::kInvalidArgument,
                  fmt::format("{}: all {} exchange definitions are taken", book.Path(), exchange.MaxRecords()));
  }
  exchange.SetFile(position);
  return position;
}

// Writes the selected definition and the copy of its exchange file, each whole or not at all. False where the user gave
// up on a definition that could not be written: every file is as it was then, and also where this fails.
bool WriteDefinition(Session& session, const CDataExchange& exchange, const std::function<bool()>& write) {
  application::WholeFiles& files = session.Files();
  application::WholeOutput definition(files, exchange.Filename());
  if (!write()) {
    if (!files.LastRefusal().empty()) Warn(files.LastRefusal());
    return false;
  }
  application::WholeOutput copy(files, exchange.QDXBackupName());
  BackupQdxFile(exchange);
  if (!definition.Keep()) {
    throw Failure(FailureNumber::kDeviceError, exchange.Filename() + ": the definition could not be written whole");
  }
  copy.Keep();
  return true;
}

ExitStatus RunAdd(const DefinitionOptions& options) {
  DefinitionChanges changes = options.changes;
  // Without a word on how accounts and fields are matched, all of them are, one for one.
  if (!changes.accounts && changes.map_account.empty()) changes.accounts = kOneForOneWord;
  if (!changes.fields && changes.map_field.empty()) changes.fields = kOneForOne;
  CheckChanges(changes);
  Session session(options.asking, {.book = options.book});
  const auto book = session.OpenToChange(options.book, options.wait);
  CDataExchange exchange(session.Factory());
  OpenDefinitions(session.Files(), exchange, *book);
  const Integer position = SelectNew(exchange, *book);
  ApplyChanges(changes, exchange, *book);
  const auto write = [&] { return exchange.Add(position) != 0; };
  if (!WriteDefinition(session, exchange, write)) return session.StatusOf(false);
  PrintLine(fmt::format("Added exchange definition {}: {}", exchange.FileNum(), exchange.Desc()));
  return session.StatusOf(true);
}

ExitStatus RunEdit(const DefinitionOptions& options) {
  CheckChanges(options.changes);
  Session session(options.asking, {.book = options.book});
  const auto book = session.OpenToChange(options.book, options.wait);
  CDataExchange exchange(session.Factory());
  OpenDefinitions(session.Files(), exchange, *book);
  const Integer position = PositionOfDefinition(exchange, *book, options.number);
  exchange.SetFile(position);
  ApplyChanges(options.changes, exchange, *book);
  const auto write = [&] { return exchange.Update(position); };
  if (!WriteDefinition(session, exchange, write)) return session.StatusOf(false);
  PrintLine(fmt::format("Changed exchange definition {}: {}", exchange.FileNum(), exchange.Desc()));
  return session.StatusOf(true);
}

ExitStatus RunDelete(const DefinitionOptions& options) {
  Session session(options.asking, {.book = options.book});
  const auto book = session.OpenToChange(options.book, options.wait);
  CDataExchange exchange(session.Factory());
  OpenDefinitions(session.Files(), exchange, *book);
  const Integer position = PositionOfDefinition(exchange, *book, options.number);
  const Text title = exchange.Desc(position);
  const Text file = exchange.Filename(position);
  if (!exchange.Delete(position)) {
    throw Failure(FailureNumber::kPathOrAccess, file + ": the definition's file cannot be deleted");
  }
  PrintLine(fmt::format("Deleted exchange definition {}: {}", options.number, title));
  return ExitStatus::kDone;
}

void AddDefinition(CommandTable& command, Integer& number) {
  AddNumber(command, "N", number, "", "The definition's number, as `definition list` shows it")
      .Required()
      .As(ArgumentKind::kDefinition);
}

// A new definition needs its title and its file.
void AddChanges(CommandTable& command, DefinitionChanges& changes, bool is_new) {
  AddText(command, "--title", changes.title, "TEXT", "The definition's title").required = is_new;
  AddText(command, "--file", changes.file, "PATTERN",
          "The exchange file: a path as the import is to see it; its name may hold * and ?")
      .As(ArgumentKind::kExchangeFile)
      .required = is_new;
  AddChoice(command, "--after", changes.after, AfterChoices(),
            "What becomes of an imported file: delete, rename (*.XDQ), keep");
  AddText(command, "--accounts", changes.accounts, "MODE", "one-for-one, all-to-one:CODE or manual").words = {
      kOneForOneWord, kAllToOnePrefix, kManualWord};
  AddChoice(command, "--fields", changes.fields, FieldMatchChoices(), "one-for-one or manual");
  AddText(command, "--map-account", changes.map_account, "FROM=TO",
          "A row of manual matches: code in the file, code in the book; may be given again. The rows given replace "
          "those that are there")
      .As(ArgumentKind::kAccountPair);
  AddText(command, "--map-field", changes.map_field, "N=M",
          "A row of manual matches: field number in the file, field number in the book; may be given again")
      .As(ArgumentKind::kFieldPair);
}

CommandTable ListCommand() {
  const auto options = std::make_shared<DefinitionOptions>();
  CommandTable command =
      MakeCommand("list", "List the definitions", {"tallybook definition list office"}, options, RunList);
  AddBook(command, options->book);
  AddForm(command, options->form);
  return command;
}

CommandTable ShowCommand() {
  const auto options = std::make_shared<DefinitionOptions>();
  CommandTable command =
      MakeCommand("show", "Show a definition with its rows", {"tallybook definition show office 1"}, options, RunShow);
  AddBook(command, options->book);
  AddDefinition(command, options->number);
  AddFormWithoutCsv(command, options->form);
  return command;
}

CommandTable CheckCommand() {
  const auto options = std::make_shared<DefinitionOptions>();
  CommandTable command = MakeCommand(
      "check", "Look whether book and files still hold what the definitions name; status 1 where one does not",
      {"tallybook definition check office", "tallybook definition check office 1 --json"}, options, RunCheck);
  AddBook(command, options->book);
  AddNumber(command, "N", options->checked_number, "", "This definition alone").As(ArgumentKind::kDefinition);
  AddFormWithoutCsv(command, options->form);
  command.notes = {
      "Looked at are the files that an import would take now; where there is none, the copy of the file that was "
      "imported "
      "last."};
  return command;
}

CommandTable AddingCommand() {
  const auto options = std::make_shared<DefinitionOptions>();
  CommandTable command = MakeCommand(
      "add", "Add a definition; accounts and fields match one for one unless told otherwise",
      {"tallybook definition add office --title 'North Shop' --file 'in/*.QDX' --after keep",
       "tallybook definition add office --title North --file north.QDX --map-account 100=4100 --map-field 1=7"},
      options, RunAdd);
  AddBookToChange(command, options->book, options->wait);
  const bool is_new = true;
  AddChanges(command, options->changes, is_new);
  AddAsking(command, options->asking);
  return command;
}

CommandTable EditCommand() {
  const auto options = std::make_shared<DefinitionOptions>();
  CommandTable command = MakeCommand("edit", "Change a definition; what is not given stays",
                                     {"tallybook definition edit office 1 --after delete"}, options, RunEdit);
  AddBookToChange(command, options->book, options->wait);
  AddDefinition(command, options->number);
  const bool is_new = false;
  AddChanges(command, options->changes, is_new);
  AddAsking(command, options->asking);
  return command;
}

CommandTable DeleteCommand() {
  const auto options = std::make_shared<DefinitionOptions>();
  CommandTable command =
      MakeCommand("delete", "Delete a definition", {"tallybook definition delete office 1"}, options, RunDelete);
  AddBookToChange(command, options->book, options->wait);
  AddDefinition(command, options->number);
  AddAsking(command, options->asking);
  return command;
}

}  // namespace

CommandTable DefinitionCommand() {
  return MakeGroup("definition", "Say how exchange files go into a book",
                   {ListCommand(), ShowCommand(), CheckCommand(), AddingCommand(), EditCommand(), DeleteCommand()});
}

}  // namespace tallybook::cli
