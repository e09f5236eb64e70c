#include <iostream>

#include "tallybook/cli/BookLookUp.h"
#include "tallybook/cli/Commands.h"
#include "tallybook/cli/FigurePrinter.h"
#include "tallybook/cli/Session.h"
#include "tallybook/cli/Terminal.h"
#include "tallybook/engine/WorkWatch.h"

namespace tallybook::cli {

namespace {

struct ValuesOptions {
  Text book;
  Date from = kNoDate;
  Date to = kNoDate;
  std::vector<Text> accounts;
  std::vector<Integer> fields;
  PrintForm form = PrintForm::kTable;
};

engine::FigureQuery QueryOf(const ValuesOptions& options, const engine::Book& book) {
  engine::FigureQuery query{.first = options.from, .last = options.to, .accounts = {}, .fields = options.fields};
  for (const Text& code : options.accounts) query.accounts.push_back(AccountNumberOf(book, code));
  for (const Integer field : options.fields) NeedField(book, field);
  return query;
}

ExitStatus RunValues(const ValuesOptions& options) {
  NeedOrder(options.from, options.to);
  Session session;
  const auto book = session.OpenToRead(options.book);
  const engine::FigureQuery query = QueryOf(options, *book);
  const CancelKey key;
  FigurePrinter printer(options.form, *book, std::cout);
  printer.Begin();
  book->VisitFigures(query, [&](const engine::Figure& figure) {
    printer.Print(figure);
    return !CancelKey::Pressed() && std::cout.good();
  });
  printer.Finish();
  if (CancelKey::Pressed()) throw engine::WorkCancelled();
  return ExitStatus::kDone;
}

}  // namespace

CommandTable ValuesCommand() {
  const auto options = std::make_shared<ValuesOptions>();
  CommandTable command = MakeCommand("values", "Print the figures that are not zero",
                                     {"tallybook values north --from 2003-01-01 --to 2003-01-31 --account 100",
                                      "tallybook values north --format csv > figures.csv"},
                                     options, RunValues);
  AddBook(command, options->book);
  AddDate(command, "--from", options->from, "Leave out records before this date");
  AddDate(command, "--to", options->to, "Leave out records behind this date");
  AddText(command, "--account", options->accounts, "CODE", "Only the account of this code; may be given again")
      .As(ArgumentKind::kAccountCode);
  AddNumber(command, "--field", options->fields, "N", "Only the field of this number; may be given again")
      .As(ArgumentKind::kFieldNumber);
  AddForm(command, options->form);
  return command;
}

}  // namespace tallybook::cli
