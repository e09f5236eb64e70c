#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include "base/Dates.h"
#include "base/Narrow.h"
#include "tallybook/application/ListEdits.h"
#include "tallybook/cli/AfterCommit.h"
#include "tallybook/cli/Commands.h"
#include "tallybook/cli/Growth.h"
#include "tallybook/cli/Lines.h"
#include "tallybook/cli/TextTable.h"

namespace tallybook::cli {

namespace {

struct CalendarOptions {
  GrowthOptions growth;
  Long years = 0;
};

// The years of a book: the n-th from 1, its name, its dates.
struct FiscalYear {
  Integer name = 0;
  Date first = kNoDate;
  Date last = kNoDate;
  bool in_use = false;
};

std::vector<FiscalYear> YearsOf(const engine::Book& book) {
  std::vector<FiscalYear> years;
  for (Long position = 1; position <= book.NumYears(); ++position) {
    const Integer name = book.YearCode(ToInteger(position));
    years.push_back(
        {name, book.YearStart(name), book.CalendarRules().YearStart(name + 1) - 1, position <= book.YearsInUse()});
  }
  return years;
}

void PrintTable(const engine::Book& book) {
  const engine::CalendarDescription& calendar = book.Description().calendar;
  PrintLine(fmt::format("{}, {} periods a year, weeks end on {}", engine::CalendarKindName(calendar.kind),
                        book.NumPeriods(), engine::WeekdayName(calendar.week_ends_on)));
  TextTable table({{"Year", Align::kRight}, {"From"}, {"To"}, {"In use"}});
  for (const FiscalYear& year : YearsOf(book)) {
    table.AddRow({std::to_string(year.name), DateText(year.first), DateText(year.last), year.in_use ? "yes" : "no"});
  }
  table.Print();
}

void PrintJson(const engine::Book& book) {
  const engine::CalendarDescription& calendar = book.Description().calendar;
  nlohmann::ordered_json json = {{"calendar", engine::CalendarKindName(calendar.kind)},
                                 {"week_ends_on", engine::WeekdayName(calendar.week_ends_on)},
                                 {"periods", book.NumPeriods()},
                                 {"years", nlohmann::ordered_json::array()}};
  for (const FiscalYear& year : YearsOf(book)) {
    json["years"].push_back(
        {{"year", year.name}, {"first", DateText(year.first)}, {"last", DateText(year.last)}, {"in_use", year.in_use}});
  }
  PrintAsItStands(JsonText(json));
}

ExitStatus RunShow(const CalendarOptions& options) {
  Session session;
  const auto book = session.OpenToRead(options.growth.book);
  options.growth.form == PrintForm::kJson ? PrintJson(*book) : PrintTable(*book);
  return ExitStatus::kDone;
}

template <typename Edit>
ExitStatus Change(const CalendarOptions& options, const Text& what, Edit edit) {
  Session session({}, {.book = options.growth.book});
  const auto book = session.OpenToChange(options.growth.book, options.growth.wait);
  GrowBook(session, *book, edit(book->Description(), options.years), fmt::format("{} --years {}", what, options.years),
           options.growth);
  DoAfterCommit([&] { book->Close(); });
  return ExitStatus::kDone;
}

ExitStatus RunExtend(const CalendarOptions& options) {
  return Change(options, "calendar extend", application::WithMoreYears);
}

ExitStatus RunUse(const CalendarOptions& options) {
  return Change(options, "calendar use", application::WithYearsInUse);
}

CommandTable ShowCommand() {
  const auto options = std::make_shared<CalendarOptions>();
  CommandTable command = MakeCommand("show", "Show the fiscal years of a book with their dates",
                                     {"tallybook calendar show office"}, options, RunShow);
  AddBook(command, options->growth.book);
  AddFormWithoutCsv(command, options->growth.form);
  return command;
}

CommandTable ExtendCommand() {
  const auto options = std::make_shared<CalendarOptions>();
  CommandTable command = MakeCommand("extend", "Add years behind the last one",
                                     {"tallybook calendar extend office --years 1"}, options, RunExtend);
  AddBookToGrow(command, options->growth);
  AddNumber(command, "--years", options->years, "N", "How many years more").Required();
  AddFormWithoutCsv(command, options->growth.form);
  command.notes = {"How many years are in use stays: `calendar use` says that."};
  return command;
}

CommandTable UseCommand() {
  const auto options = std::make_shared<CalendarOptions>();
  CommandTable command = MakeCommand("use", "Say how many years are in use, from the first one on",
                                     {"tallybook calendar use office --years 3"}, options, RunUse);
  AddBookToGrow(command, options->growth);
  AddNumber(command, "--years", options->years, "N", "How many years are in use").Required();
  AddFormWithoutCsv(command, options->growth.form);
  return command;
}

}  // namespace

CommandTable CalendarCommand() {
  return MakeGroup("calendar", "Show the fiscal years of a book, and begin new ones",
                   {ShowCommand(), ExtendCommand(), UseCommand()});
}

}  // namespace tallybook::cli
