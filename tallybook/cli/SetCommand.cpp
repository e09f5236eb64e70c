#include <fmt/format.h>

#include "base/Dates.h"
#include "base/Failure.h"
#include "host/FiscalCalendar.h"
#include "tallybook/cli/AfterCommit.h"
#include "tallybook/cli/BookLookUp.h"
#include "tallybook/cli/Commands.h"
#include "tallybook/cli/FigurePrinter.h"
#include "tallybook/cli/Lines.h"
#include "tallybook/cli/Session.h"

namespace tallybook::cli {

namespace {

struct SetOptions {
  Text book;
  Long wait = 0;
  Text code;
  Date date = kNoDate;
  Integer field = 0;
  Double value = 0;
};

// Gives the figure from before. One transaction takes the figure and its journal entry; where it fails nothing of both
// is kept for a later commit.
Double SetFigure(engine::Book& book, const SetOptions& options, Long account) {
  try {
    book.SetOperation(engine::JournalKind::kSet, fmt::format("set {} {} {} {}", options.code, DateText(options.date),
                                                             options.field, ShortestText(options.value)));
    const Date record_date = book.FiscalCalendar().LevelDate(options.date, kOwnLevel);
    book.BeginRollback(record_date, record_date);
    if (!book.ReadRecord(account, options.date)) {
      throw Failure(FailureNumber::kInternal, fmt::format("{}: the record of account '{}' and {} cannot be read",
                                                          book.Path(), options.code, DateText(options.date)));
    }
    const Double before = book.FieldValue(options.field);
    book.SetFieldValue(options.field, options.value);
    book.WriteRecord();
    book.EndRollback();
    return before;
  } catch (...) {
    book.Abandon();
    throw;
  }
}

ExitStatus RunSet(const SetOptions& options) {
  Session session;
  const auto book = session.OpenToChange(options.book, options.wait);
  const Long account = AccountNumberOf(*book, options.code);
  NeedField(*book, options.field);
  NeedDate(*book, options.date);
  const Date record_date = book->FiscalCalendar().LevelDate(options.date, kOwnLevel);
  const Double before = SetFigure(*book, options, account);
  DoAfterCommit([&] {
    PrintLine(fmt::format("{} {} field {}: {} becomes {}", options.code, DateText(record_date), options.field,
                          ShortestText(before), ShortestText(options.value)));
  });
  DoAfterCommit([&] { book->Close(); });
  return ExitStatus::kDone;
}

}  // namespace

CommandTable SetCommand() {
  const auto options = std::make_shared<SetOptions>();
  CommandTable command = MakeCommand(
      "set", "Set one figure",
      {"tallybook set north 100 2003-01-05 1 12.5", "tallybook set north 100 2003-01-05 1 -- -.5"}, options, RunSet);
  AddBookToChange(command, options->book, options->wait);
  AddText(command, "CODE", options->code, "", "The account's code").Required().As(ArgumentKind::kAccountCode);
  AddDate(command, "DATE", options->date, "A date of the record").Required();
  AddNumber(command, "FIELD", options->field, "", "The field's number").Required().As(ArgumentKind::kFieldNumber);
  AddAmount(command, "VALUE", options->value, "The new value").Required();
  return command;
}

}  // namespace tallybook::cli
