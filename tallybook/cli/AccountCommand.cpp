#include <fmt/format.h>
#include <nlohmann/json.hpp>
#include <optional>

#include "tallybook/application/ListEdits.h"
#include "tallybook/cli/AfterCommit.h"
#include "tallybook/cli/BookLookUp.h"
#include "tallybook/cli/Commands.h"
#include "tallybook/cli/Growth.h"
#include "tallybook/cli/Lines.h"
#include "tallybook/cli/TextTable.h"

namespace tallybook::cli {

namespace {

struct AccountOptions {
  GrowthOptions growth;
  Text code;
  Long number = 0;
  std::optional<Text> new_code;
  std::optional<Text> description;
  std::optional<Long> position;
  Long new_position = 0;
};

void PrintTable(const std::vector<engine::AccountDescription>& accounts) {
  if (accounts.empty()) {
    PrintLine("There are no accounts.");
    return;
  }
  TextTable table({{"Position", Align::kRight}, {"Number", Align::kRight}, {"Code"}, {"Description"}});
  for (std::size_t index = 0; index < accounts.size(); ++index) {
    table.AddRow({std::to_string(index + 1), std::to_string(accounts[index].number), accounts[index].code,
                  accounts[index].description});
  }
  table.Print();
}

ExitStatus RunList(const AccountOptions& options) {
  Session session;
  const auto book = session.OpenToRead(options.growth.book);
  const auto& accounts = book->Description().accounts;
  if (options.growth.form == PrintForm::kTable) {
    PrintTable(accounts);
    return ExitStatus::kDone;
  }
  nlohmann::ordered_json json = nlohmann::ordered_json::array();
  Text csv = "position,account_number,account_code,description\n";
  for (std::size_t index = 0; index < accounts.size(); ++index) {
    const auto& account = accounts[index];
    json.push_back({{"position", index + 1},
                    {"account", account.number},
                    {"code", account.code},
                    {"description", account.description}});
    csv +=
        fmt::format("{},{},{},{}\n", index + 1, account.number, CsvField(account.code), CsvField(account.description));
  }
  PrintAsItStands(options.growth.form == PrintForm::kJson ? JsonText(json) : csv);
  return ExitStatus::kDone;
}

// Opens the book, lets `edit` say what it is to become, and brings that about.
template <typename Edit>
ExitStatus Change(const AccountOptions& options, const Text& what_ran, Edit edit) {
  Session session({}, {.book = options.growth.book});
  const auto book = session.OpenToChange(options.growth.book, options.growth.wait);
  GrowBook(session, *book, edit(*book), what_ran, options.growth);
  DoAfterCommit([&] { book->Close(); });
  return ExitStatus::kDone;
}

ExitStatus RunAdd(const AccountOptions& options) {
  return Change(options, "account add " + options.code, [&](const engine::Book& book) {
    NeedFreeCode(book, options.code);
    return application::WithAccount(book.Stored(), {options.number, options.code, options.description.value_or("")},
                                    options.position);
  });
}

ExitStatus RunEdit(const AccountOptions& options) {
  if (!options.new_code && !options.description) throw WrongUse("one of --code and --description is wanted");
  return Change(options, "account edit " + options.code, [&](const engine::Book& book) {
    const Long number = AccountNumberOf(book, options.code);
    if (options.new_code) NeedFreeCode(book, *options.new_code, number);
    return application::WithAccountEdited(book.Description(), number, options.new_code, options.description);
  });
}

ExitStatus RunMove(const AccountOptions& options) {
  return Change(options, fmt::format("account move {} {}", options.code, options.new_position),
                [&](const engine::Book& book) {
                  return application::WithAccountMoved(book.Description(), AccountNumberOf(book, options.code),
                                                       options.new_position);
                });
}

ExitStatus RunRemove(const AccountOptions& options) {
  return Change(options, "account remove " + options.code, [&](const engine::Book& book) {
    return application::WithoutAccount(book.Description(), AccountNumberOf(book, options.code));
  });
}

void AddCode(CommandTable& command, AccountOptions& options) {
  AddText(command, "CODE", options.code, "", "The account's code").Required().As(ArgumentKind::kAccountCode);
}

CommandTable ListCommand() {
  const auto options = std::make_shared<AccountOptions>();
  CommandTable command =
      MakeCommand("list", "List the accounts in their order", {"tallybook account list office"}, options, RunList);
  AddBook(command, options->growth.book);
  AddForm(command, options->growth.form);
  return command;
}

CommandTable AddingCommand() {
  const auto options = std::make_shared<AccountOptions>();
  CommandTable command = MakeCommand("add", "Add an account",
                                     {"tallybook account add office 4200 --description Kiosk",
                                      "tallybook account add office 4200 --number 42 --position 1"},
                                     options, RunAdd);
  AddBookToGrow(command, options->growth);
  AddText(command, "CODE", options->code, "", "The new account's code").Required();
  AddText(command, "--description", options->description, "TEXT", "Its description");
  AddNumber(command, "--number", options->number, "N",
            "Its number, by which figures are kept; one that was never given where it is left out");
  AddNumber(command, "--position", options->position, "P",
            "Its position in the list; the last one where it is left out");
  AddFormWithoutCsv(command, options->growth.form);
  return command;
}

CommandTable EditCommand() {
  const auto options = std::make_shared<AccountOptions>();
  CommandTable command = MakeCommand("edit", "Give an account another code or description",
                                     {"tallybook account edit office 4100 --code 4110 --with-definitions",
                                      "tallybook account edit office 4100 --description 'Front of shop'"},
                                     options, RunEdit);
  AddBookToGrow(command, options->growth);
  AddCode(command, *options);
  AddText(command, "--code", options->new_code, "CODE", "The new code");
  AddText(command, "--description", options->description, "TEXT", "The new description");
  AddWithDefinitions(command, options->growth);
  AddFormWithoutCsv(command, options->growth.form);
  return command;
}

CommandTable MoveCommand() {
  const auto options = std::make_shared<AccountOptions>();
  CommandTable command = MakeCommand("move", "Put an account at another position of the list",
                                     {"tallybook account move office 4100 1"}, options, RunMove);
  AddBookToGrow(command, options->growth);
  AddCode(command, *options);
  AddNumber(command, "POSITION", options->new_position, "", "The position that it is to have, from 1").Required();
  AddFormWithoutCsv(command, options->growth.form);
  return command;
}

CommandTable RemoveCommand() {
  const auto options = std::make_shared<AccountOptions>();
  CommandTable command =
      MakeCommand("remove", "Remove an account",
                  {"tallybook account remove office 4100", "tallybook account remove office 4100 --with-figures"},
                  options, RunRemove);
  AddBookToGrow(command, options->growth);
  AddCode(command, *options);
  AddWithFigures(command, options->growth);
  AddFormWithoutCsv(command, options->growth.form);
  command.notes = {"Its number is not given again; `journal undo` brings account and figures back."};
  return command;
}

}  // namespace

CommandTable AccountCommand() {
  return MakeGroup("account", "List and change the accounts of a book",
                   {ListCommand(), AddingCommand(), EditCommand(), MoveCommand(), RemoveCommand()});
}

}  // namespace tallybook::cli
