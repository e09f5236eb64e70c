#include <fmt/format.h>
#include <nlohmann/json.hpp>
#include <optional>

#include "base/Narrow.h"
#include "tallybook/application/ListEdits.h"
#include "tallybook/cli/AfterCommit.h"
#include "tallybook/cli/BookLookUp.h"
#include "tallybook/cli/Commands.h"
#include "tallybook/cli/Growth.h"
#include "tallybook/cli/Lines.h"
#include "tallybook/cli/TextTable.h"

namespace tallybook::cli {

namespace {

struct FieldOptions {
  GrowthOptions growth;
  Integer number = 0;
  Text name;
  std::optional<Text> description;
  std::optional<bool> system;
  bool is_system = false;
  std::optional<Long> position;
  Long new_position = 0;
};

void PrintTable(const std::vector<engine::FieldDescription>& fields) {
  if (fields.empty()) {
    PrintLine("There are no fields.");
    return;
  }
  TextTable table({{"Position", Align::kRight}, {"Number", Align::kRight}, {"Description"}});
  for (std::size_t index = 0; index < fields.size(); ++index) {
    table.AddRow({std::to_string(index + 1), std::to_string(fields[index].number),
                  fields[index].description + (fields[index].system ? " (kept by the book)" : "")});
  }
  table.Print();
}

ExitStatus RunList(const FieldOptions& options) {
  Session session;
  const auto book = session.OpenToRead(options.growth.book);
  const auto& fields = book->Description().fields;
  if (options.growth.form == PrintForm::kTable) {
    PrintTable(fields);
    return ExitStatus::kDone;
  }
  nlohmann::ordered_json json = nlohmann::ordered_json::array();
  Text csv = "position,field,description,system\n";
  for (std::size_t index = 0; index < fields.size(); ++index) {
    const auto& field = fields[index];
    json.push_back({{"position", index + 1},
                    {"field", field.number},
                    {"description", field.description},
                    {"system", field.system}});
    csv += fmt::format("{},{},{},{}\n", index + 1, field.number, CsvField(field.description), field.system);
  }
  PrintAsItStands(options.growth.form == PrintForm::kJson ? JsonText(json) : csv);
  return ExitStatus::kDone;
}

// Opens the book, lets `edit` say what it is to become, and brings that about.
template <typename Edit>
ExitStatus Change(const FieldOptions& options, const Text& what_ran, Edit edit) {
  Session session({}, {.book = options.growth.book});
  const auto book = session.OpenToChange(options.growth.book, options.growth.wait);
  GrowBook(session, *book, edit(*book), what_ran, options.growth);
  DoAfterCommit([&] { book->Close(); });
  return ExitStatus::kDone;
}

// The same for a field that the book must have.
template <typename Edit>
ExitStatus ChangeField(const FieldOptions& options, const Text& what_ran, Edit edit) {
  return Change(options, what_ran, [&](const engine::Book& book) {
    NeedField(book, options.number);
    return edit(book.Description());
  });
}

ExitStatus RunAdd(const FieldOptions& options) {
  return Change(options, "field add " + options.name, [&](const engine::Book& book) {
    NeedFreeField(book, options.number);
    return application::WithField(book.Stored(), {options.number, options.name, options.is_system}, options.position);
  });
}

ExitStatus RunEdit(const FieldOptions& options) {
  if (!options.description && !options.system) throw WrongUse("one of --description and --system is wanted");
  return ChangeField(options, fmt::format("field edit {}", options.number), [&](const engine::BookDescription& book) {
    return application::WithFieldEdited(book, options.number, options.description, options.system);
  });
}

ExitStatus RunMove(const FieldOptions& options) {
  return ChangeField(options, fmt::format("field move {} {}", options.number, options.new_position),
                     [&](const engine::BookDescription& book) {
                       return application::WithFieldMoved(book, options.number, options.new_position);
                     });
}

ExitStatus RunRemove(const FieldOptions& options) {
  return ChangeField(options, fmt::format("field remove {}", options.number), [&](const engine::BookDescription& book) {
    return application::WithoutField(book, options.number);
  });
}

void AddField(CommandTable& command, FieldOptions& options) {
  AddNumber(command, "FIELD", options.number, "", "The field's number").Required().As(ArgumentKind::kFieldNumber);
}

CommandTable ListCommand() {
  const auto options = std::make_shared<FieldOptions>();
  CommandTable command =
      MakeCommand("list", "List the datafields in their order", {"tallybook field list office"}, options, RunList);
  AddBook(command, options->growth.book);
  AddForm(command, options->growth.form);
  return command;
}

CommandTable AddingCommand() {
  const auto options = std::make_shared<FieldOptions>();
  CommandTable command =
      MakeCommand("add", "Add a datafield",
                  {"tallybook field add office Covers", "tallybook field add office Covers --number 7 --position 1"},
                  options, RunAdd);
  AddBookToGrow(command, options->growth);
  AddText(command, "DESCRIPTION", options->name, "", "What it is called").Required();
  AddNumber(command, "--number", options->number, "N",
            "Its number, by which figures are kept; one that was never given where it is left out");
  AddNumber(command, "--position", options->position, "P",
            "Its position in the list; the last one where it is left out");
  AddFlag(command, "--system", options->is_system, "It is kept by the book itself");
  AddFormWithoutCsv(command, options->growth.form);
  return command;
}

CommandTable EditCommand() {
  const auto options = std::make_shared<FieldOptions>();
  CommandTable command = MakeCommand("edit", "Give a datafield another description",
                                     {"tallybook field edit office 7 --description Guests"}, options, RunEdit);
  AddBookToGrow(command, options->growth);
  AddField(command, *options);
  AddText(command, "--description", options->description, "TEXT", "The new description");
  AddChoice(command, "--system", options->system, Choices<bool>{{"yes", true}, {"no", false}},
            "Whether it is kept by the book itself: yes or no");
  AddFormWithoutCsv(command, options->growth.form);
  return command;
}

CommandTable MoveCommand() {
  const auto options = std::make_shared<FieldOptions>();
  CommandTable command = MakeCommand("move", "Put a datafield at another position of the list",
                                     {"tallybook field move office 7 1"}, options, RunMove);
  AddBookToGrow(command, options->growth);
  AddField(command, *options);
  AddNumber(command, "POSITION", options->new_position, "", "The position that it is to have, from 1").Required();
  AddFormWithoutCsv(command, options->growth.form);
  return command;
}

CommandTable RemoveCommand() {
  const auto options = std::make_shared<FieldOptions>();
  CommandTable command = MakeCommand(
      "remove", "Remove a datafield",
      {"tallybook field remove office 7", "tallybook field remove office 7 --with-figures"}, options, RunRemove);
  AddBookToGrow(command, options->growth);
  AddField(command, *options);
  AddWithFigures(command, options->growth);
  AddFormWithoutCsv(command, options->growth.form);
  command.notes = {"Its number is not given again; `journal undo` brings field and figures back."};
  return command;
}

}  // namespace

CommandTable FieldCommand() {
  return MakeGroup("field", "List and change the datafields of a book",
                   {ListCommand(), AddingCommand(), EditCommand(), MoveCommand(), RemoveCommand()});
}

}  // namespace tallybook::cli
