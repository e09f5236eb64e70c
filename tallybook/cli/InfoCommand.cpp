#include <fmt/format.h>
#include <iostream>

#include "base/Dates.h"
#include "tallybook/cli/Commands.h"
#include "tallybook/cli/Lines.h"
#include "tallybook/cli/PrintForm.h"
#include "tallybook/cli/Session.h"
#include "tallybook/cli/Terminal.h"
#include "tallybook/cli/TextTable.h"
#include "tallybook/engine/WorkWatch.h"

namespace tallybook::cli {

namespace {

struct InfoOptions {
  Text book;
  PrintForm form = PrintForm::kTable;
};

// A line of the summary: its name in the first column.
void PrintFact(const Text& name, const Text& value) {
  PrintLine(fmt::format("{:<10}{}", name, value));
}

long long CountFigures(engine::Book& book) {
  long long count = 0;
  book.VisitFigures({}, [&](const engine::Figure&) {
    ++count;
    return !CancelKey::Pressed();
  });
  return count;
}

void PrintSummary(engine::Book& book) {
  const engine::BookDescription& description = book.Description();
  const engine::CalendarDescription& calendar = description.calendar;
  PrintLine(fmt::format("{} ({})", description.system_name, description.type_name));
  PrintLine("");
  PrintFact("File", book.Path());
  PrintFact("Records", "one for each account and " + engine::DataLevelName(description.data_level));
  PrintFact("Calendar", fmt::format("{}, {} periods a year, weeks end on {}", engine::CalendarKindName(calendar.kind),
                                    book.NumPeriods(), engine::WeekdayName(calendar.week_ends_on)));
  PrintFact("Dates",
            fmt::format("{} to {}: {} from {}, {} in use", DateText(book.FirstDate()), DateText(book.LastDate()),
                        Counted(calendar.years, "year"), calendar.first_year, calendar.years_in_use));
  PrintFact("Figures", WithCommas(CountFigures(book)));
}

void PrintLists(const engine::BookDescription& description) {
  PrintLine("");
  PrintHeading(fmt::format("Accounts ({})", description.accounts.size()));
  TextTable accounts({{"Number", Align::kRight}, {"Code"}, {"Description"}});
  for (const auto& account : description.accounts) {
    accounts.AddRow({std::to_string(account.number), account.code, account.description});
  }
  accounts.Print(2);
  PrintLine("");
  PrintHeading(fmt::format("Fields ({})", description.fields.size()));
  TextTable fields({{"Number", Align::kRight}, {"Description"}});
  for (const auto& field : description.fields) {
    fields.AddRow({std::to_string(field.number), field.description + (field.system ? " (kept by the book)" : "")});
  }
  fields.Print(2);
}

ExitStatus RunInfo(const InfoOptions& options) {
  Session session;
  const auto book = session.OpenToRead(options.book);
  if (options.form == PrintForm::kJson) {
    engine::PrintBookDescription(book->Description(), std::cout, book->Values());
    return ExitStatus::kDone;
  }
  const CancelKey key;
  PrintSummary(*book);
  if (CancelKey::Pressed()) throw engine::WorkCancelled();
  PrintLists(book->Description());
  return ExitStatus::kDone;
}

}  // namespace

CommandTable InfoCommand() {
  const auto options = std::make_shared<InfoOptions>();
  CommandTable command =
      MakeCommand("info", "Tell what a book is made of",
                  {"tallybook info north", "tallybook info north --json > north.json"}, options, RunInfo);
  AddBook(command, options->book);
  AddFormWithoutCsv(command, options->form);
  command.notes = {"As JSON it is the whole book, figures too, in the form that `new` reads."};
  return command;
}

}  // namespace tallybook::cli
