#include <fmt/format.h>
#include <iostream>

#include "support/Failure.h"
#include "tallybook/cli/Commands.h"
#include "tallybook/cli/DefinitionEdit.h"
#include "tallybook/cli/DefinitionList.h"
#include "tallybook/cli/Session.h"
#include "tallybook/cli/TextTable.h"

namespace tallybook::cli {

namespace {

struct DefinitionOptions {
  Text book;
  Integer number = 0;
  DefinitionChanges changes;
  AskOptions asking;
};

ExitStatus RunList(const DefinitionOptions& options) {
  Session session;
  const auto book = session.OpenToRead(options.book);
  CDataExchange exchange(session.Factory());
  exchange.OpenDefinitions(*book, kDefinitionDataType);
  if (exchange.NumRecs() == 0) {
    std::cout << "There are no exchange definitions.\n";
    return ExitStatus::kDone;
  }
  TextTable table({{"#", Align::kRight}, {"Title"}, {"File"}, {"Accounts"}, {"Fields"}, {"After"}});
  for (int i = 1; i <= exchange.NumRecs(); ++i) {
    exchange.SetFile(static_cast<Integer>(i));
    const DefinitionRecord& definition = exchange.CurrentDefinition();
    table.AddRow({std::to_string(exchange.FileNum()), definition.Desc, definition.QdxFileName,
                  AccountMatchText(definition, *book), FieldMatchText(definition), AfterText(definition.Disp)});
  }
  table.Print(std::cout);
  return ExitStatus::kDone;
}

void PrintRows(const DefinitionRecord& definition) {
  if (definition.NumAccounts > 0) {
    TextTable accounts({{"Account in the file"}, {"Account here"}});
    for (int i = 1; i <= definition.NumAccounts; ++i) {
      accounts.AddRow({definition.accounts(i).from_code, definition.accounts(i).to_code});
    }
    std::cout << '\n';
    accounts.Print(std::cout);
  }
  if (definition.NumFields > 0) {
    TextTable fields({{"Field in the file", Align::kRight}, {"Field here", Align::kRight}});
    for (int i = 1; i <= definition.NumFields; ++i) {
      fields.AddRow({std::to_string(definition.fields(i).FieldFrom), std::to_string(definition.fields(i).FieldTo)});
    }
    std::cout << '\n';
    fields.Print(std::cout);
  }
}

void PrintDefinition(CDataExchange& exchange, engine::Book& book) {
  const DefinitionRecord& definition = exchange.CurrentDefinition();
  std::cout << fmt::format("Exchange definition {}: {}\n", exchange.FileNum(), definition.Desc);
  std::cout << fmt::format("  File      {}\n", definition.QdxFileName);
  std::cout << fmt::format("  Accounts  {}\n", AccountMatchText(definition, book));
  std::cout << fmt::format("  Fields    {}\n", FieldMatchText(definition));
  std::cout << fmt::format("  After     {}\n", AfterText(definition.Disp));
  PrintRows(definition);
}

ExitStatus RunShow(const DefinitionOptions& options) {
  Session session;
  const auto book = session.OpenToRead(options.book);
  CDataExchange exchange(session.Factory());
  exchange.OpenDefinitions(*book, kDefinitionDataType);
  exchange.SetFile(PositionOfDefinition(exchange, *book, options.number));
  PrintDefinition(exchange, *book);
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

ExitStatus RunAdd(const DefinitionOptions& options) {
  DefinitionChanges changes = options.changes;
  // Without a word on how accounts and fields are matched, all of them are, one for one.
  if (!changes.accounts && changes.map_account.empty()) changes.accounts = "one-for-one";
  if (!changes.fields && changes.map_field.empty()) changes.fields = kOneForOne;
  CheckChanges(changes);
  Session session(options.asking);
  const auto book = session.OpenToChange(options.book);
  CDataExchange exchange(session.Factory());
  exchange.OpenDefinitions(*book, kDefinitionDataType);
  const Integer position = SelectNew(exchange, *book);
  ApplyChanges(changes, exchange, *book);
  if (exchange.Add(position) == 0) return session.StatusOf(false);
  BackupQdxFile(exchange);
  std::cout << fmt::format("Added exchange definition {}: {}\n", exchange.FileNum(), exchange.Desc());
  return session.StatusOf(true);
}

ExitStatus RunEdit(const DefinitionOptions& options) {
  CheckChanges(options.changes);
  Session session(options.asking);
  const auto book = session.OpenToChange(options.book);
  CDataExchange exchange(session.Factory());
  exchange.OpenDefinitions(*book, kDefinitionDataType);
  const Integer position = PositionOfDefinition(exchange, *book, options.number);
  exchange.SetFile(position);
  ApplyChanges(options.changes, exchange, *book);
  if (!exchange.Update(position)) return session.StatusOf(false);
  BackupQdxFile(exchange);
  std::cout << fmt::format("Changed exchange definition {}: {}\n", exchange.FileNum(), exchange.Desc());
  return session.StatusOf(true);
}

ExitStatus RunDelete(const DefinitionOptions& options) {
  Session session(options.asking);
  const auto book = session.OpenToChange(options.book);
  CDataExchange exchange(session.Factory());
  exchange.OpenDefinitions(*book, kDefinitionDataType);
  const Integer position = PositionOfDefinition(exchange, *book, options.number);
  const Text title = exchange.Desc(position);
  const Text file = exchange.Filename(position);
  if (!exchange.Delete(position)) {
    throw Failure(FailureNumber::kPathOrAccess, file + ": the definition's file cannot be deleted");
  }
  std::cout << fmt::format("Deleted exchange definition {}: {}\n", options.number, title);
  return ExitStatus::kDone;
}

void AddNumber(CLI::App& command, Integer& number) {
  command.add_option("N", number, "The definition's number, as `definition list` shows it")->required()->type_name("");
}

// Optional values by way of their plain types.
void AddText(CLI::App& command, const Text& name, std::optional<Text>& text, const Text& type, const Text& what) {
  command
      .add_option_function<std::string>(
          name, [&text](const std::string& given) { text = given; }, what)
      ->type_name(type);
}

void AddChanges(CLI::App& command, DefinitionChanges& changes) {
  static const Choices<std::optional<Integer>> afters = {
      {"delete", kDispDelete}, {"rename", kDispRename}, {"keep", kDispKeep}};
  static const Choices<std::optional<Integer>> field_modes = {{"one-for-one", kOneForOne}, {"manual", kManually}};
  AddText(command, "--title", changes.title, "TEXT", "The definition's title");
  AddText(command, "--file", changes.file, "PATTERN",
          "The exchange file: a path as the import is to see it; its name may hold * and ?");
  AddChoice(command, "--after", changes.after, afters,
            "What becomes of an imported file: delete, rename (*.XDQ), keep");
  AddText(command, "--accounts", changes.accounts, "MODE", "one-for-one, all-to-one:CODE or manual");
  AddChoice(command, "--fields", changes.fields, field_modes, "one-for-one or manual");
  command
      .add_option("--map-account", changes.map_account,
                  "A row of manual matches: code in the file, code in the book; may be given again. The rows given "
                  "replace those that are there")
      ->allow_extra_args(false)
      ->type_name("FROM=TO");
  command
      .add_option("--map-field", changes.map_field,
                  "A row of manual matches: field number in the file, field number in the book; may be given again")
      ->allow_extra_args(false)
      ->type_name("N=M");
}

void AddReaders(CLI::App& group, Command& chosen) {
  const auto list = std::make_shared<DefinitionOptions>();
  AddBook(
      AddCommand(group, "list", "List the definitions", "  tallybook definition list office", list, chosen, RunList),
      list->book);
  const auto show = std::make_shared<DefinitionOptions>();
  CLI::App& command = AddCommand(group, "show", "Show a definition with its rows",
                                 "  tallybook definition show office 1", show, chosen, RunShow);
  AddBook(command, show->book);
  AddNumber(command, show->number);
}

void AddWriters(CLI::App& group, Command& chosen) {
  const auto add = std::make_shared<DefinitionOptions>();
  CLI::App& add_command = AddCommand(
      group, "add", "Add a definition; accounts and fields match one for one unless told otherwise",
      "  tallybook definition add office --title 'North Shop' --file 'in/*.QDX' --after keep\n"
      "  tallybook definition add office --title North --file north.QDX --map-account 100=4100 --map-field 1=7",
      add, chosen, RunAdd);
  AddBook(add_command, add->book);
  AddChanges(add_command, add->changes);
  add_command.get_option("--title")->required();
  add_command.get_option("--file")->required();
  AddAsking(add_command, add->asking);

  const auto edit = std::make_shared<DefinitionOptions>();
  CLI::App& edit_command = AddCommand(group, "edit", "Change a definition; what is not given stays",
                                      "  tallybook definition edit office 1 --after delete", edit, chosen, RunEdit);
  AddBook(edit_command, edit->book);
  AddNumber(edit_command, edit->number);
  AddChanges(edit_command, edit->changes);
  AddAsking(edit_command, edit->asking);

  const auto remove = std::make_shared<DefinitionOptions>();
  CLI::App& delete_command = AddCommand(group, "delete", "Delete a definition",
                                        "  tallybook definition delete office 1", remove, chosen, RunDelete);
  AddBook(delete_command, remove->book);
  AddNumber(delete_command, remove->number);
  AddAsking(delete_command, remove->asking);
}

}  // namespace

void AddDefinitionCommand(CLI::App& app, Command& chosen) {
  CLI::App& group = AddGroup(app, "definition", "Say how exchange files go into a book");
  AddReaders(group, chosen);
  AddWriters(group, chosen);
}

}  // namespace tallybook::cli
