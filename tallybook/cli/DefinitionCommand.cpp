#include <fmt/format.h>
#include <functional>
#include <nlohmann/json.hpp>

#include "base/Failure.h"
#include "tallybook/cli/Commands.h"
#include "tallybook/cli/DefinitionEdit.h"
#include "tallybook/cli/DefinitionList.h"
#include "tallybook/cli/Lines.h"
#include "tallybook/cli/PrintForm.h"
#include "tallybook/cli/Session.h"
#include "tallybook/cli/TextTable.h"

namespace tallybook::cli {

namespace {

struct DefinitionOptions {
  Text book;
  Long wait = 0;
  Integer number = 0;
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
                   {ListCommand(), ShowCommand(), AddingCommand(), EditCommand(), DeleteCommand()});
}

}  // namespace tallybook::cli
