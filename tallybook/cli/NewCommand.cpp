#include <fmt/format.h>
#include <optional>

#include "base/Narrow.h"
#include "tallybook/cli/Commands.h"
#include "tallybook/cli/DescriptionText.h"
#include "tallybook/cli/Lines.h"
#include "tallybook/cli/Session.h"
#include "tallybook/cli/TextTable.h"
#include "tallybook/engine/BookDescription.h"
#include "tallybook/engine/BookRegroup.h"

namespace tallybook::cli {

namespace {

struct NewOptions {
  Text book;
  Text description;
  Text old_book;
  engine::RegroupRequest request;
  std::optional<Long> first_year;
};

void TellMade(const Text& path, const engine::BookDescription& description, long long figures) {
  PrintLine(fmt::format(
      "Made {} with {}, {} and {}.", path, Counted(static_cast<long long>(description.accounts.size()), "account"),
      Counted(static_cast<long long>(description.fields.size()), "field"), Counted(figures, "figure")));
}

ExitStatus RunFromDescription(const NewOptions& options) {
  const Session session({}, {.input = options.description});
  const DescriptionText text = ReadDescriptionText(options.description);
  const engine::BookDescription description = engine::ParseBookDescription(text.json, text.source);
  const Text path = BookPath(options.book);
  engine::Book::Create(path, description);
  TellMade(path, description, static_cast<long long>(description.values.size()));
  return ExitStatus::kDone;
}

void TellLeftBehind(const engine::BookDescription& description, const std::vector<engine::FigureTotal>& totals) {
  if (totals.empty()) return;
  PrintLine("");
  PrintLine(fmt::format("Left behind, before {}:", description.calendar.first_year));
  TextTable table({{"Account"}, {"Field"}, {"Figures", Align::kRight}, {"Total", Align::kRight}});
  for (const engine::FigureTotal& total : totals) {
    table.AddRow({description.accounts[static_cast<std::size_t>(total.account_position - 1)].code,
                  description.fields[static_cast<std::size_t>(total.field_position - 1)].description,
                  WithCommas(total.figures), fmt::format("{:.15g}", total.total)});
  }
  table.Print();
}

ExitStatus RunFromBook(const NewOptions& options) {
  Session session;
  const auto old_book = session.OpenToRead(options.old_book);
  engine::RegroupRequest request = options.request;
  if (options.first_year) request.first_year = ToInteger(*options.first_year);
  const engine::BookDescription description = engine::RegroupedDescription(old_book->Description(), request);
  const Text path = BookPath(options.book);
  const engine::Regrouped regrouped = engine::MakeRegroupedBook(*old_book, path, description);
  TellMade(path, description, regrouped.figures);
  PrintLine(fmt::format("The totals of every account and field are those of {}, of {}.", old_book->Path(),
                        Counted(regrouped.figures_read, "figure")));
  TellLeftBehind(description, regrouped.left_behind);
  return ExitStatus::kDone;
}

ExitStatus RunNew(const NewOptions& options) {
  if (!options.old_book.empty()) return RunFromBook(options);
  if (options.request.data_level || options.request.calendar || options.first_year) {
    throw WrongUse("--level, --calendar and --first-year go with --from-book");
  }
  return RunFromDescription(options);
}

const Choices<Integer>& LevelChoices() {
  static const Choices<Integer> choices = {{"day", kDayLevel}, {"week", kWeekLevel}, {"period", kPeriodLevel}};
  return choices;
}

const Choices<engine::CalendarKind>& CalendarChoices() {
  using engine::CalendarKind;
  static const Choices<CalendarKind> choices = {{"months", CalendarKind::kMonths},
                                                {"weeks", CalendarKind::kWeeks},
                                                {"4-4-5", CalendarKind::k445},
                                                {"13x4", CalendarKind::k13x4}};
  return choices;
}

}  // namespace

CommandTable NewCommand() {
  const auto options = std::make_shared<NewOptions>();
  CommandTable command =
      MakeCommand("new", "Make a book from its description, or from another book",
                  {"tallybook new north --from north.json", "tallybook info north --json | tallybook new copy --from -",
                   "tallybook new months --from-book north --level period --first-year 2004"},
                  options, RunNew);
  AddBook(command, options->book);
  AddText(command, "--from", options->description, "FILE",
          "The description, in the form that `info --json` writes; - for standard input")
      .As(ArgumentKind::kFile);
  AddText(command, "--from-book", options->old_book, "OLD", "The book whose lists and figures it is to have")
      .As(ArgumentKind::kBook);
  NeedOneOf(command, {"--from", "--from-book"});
  AddChoice(command, "--level", options->request.data_level, LevelChoices(),
            "With --from-book: one record for each day, week or period");
  AddChoice(command, "--calendar", options->request.calendar, CalendarChoices(),
            "With --from-book: the kind of calendar: months, weeks, 4-4-5 or 13x4");
  AddNumber(command, "--first-year", options->first_year, "YEAR",
            "With --from-book: leave the years before this one behind");
  command.notes = {
      "From a book, figures come to the records that hold their dates, and are added up there. The totals of every "
      "account and "
      "field are compared before the new book stands at its place; what is left behind is told with its totals."};
  return command;
}

}  // namespace tallybook::cli
