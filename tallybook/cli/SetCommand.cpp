#include <fmt/format.h>

#include "base/Dates.h"
#include "host/FiscalCalendar.h"
#include "tallybook/application/FigureChanges.h"
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

Text WhatRan(const SetOptions& options) {
  return fmt::format("set {} {} {} {}", options.code, DateText(options.date), options.field,
                     ShortestText(options.value));
}

ExitStatus RunSet(const SetOptions& options) {
  Session session;
  const auto book = session.OpenToChange(options.book, options.wait);
  const Long account = AccountNumberOf(*book, options.code);
  NeedField(*book, options.field);
  NeedDate(*book, options.date);
  const Date record_date = book->FiscalCalendar().LevelDate(options.date, kOwnLevel);
  const Double before =
      application::ChangeFigures(*book, WhatRan(options), {{account, options.date, options.field, options.value}})
          .front();
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
