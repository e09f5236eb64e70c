#include "tallybook/cli/Arguments.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <fmt/format.h>
#include <limits>

#include "support/Dates.h"
#include "support/Failure.h"

namespace tallybook::cli {

void AddBook(CLI::App& command, Text& path) {
  command.add_option("BOOK", path, "The book's file; .tbk may be left out")->required()->type_name("");
}

CLI::Option& AddDate(CLI::App& command, const Text& name, Date& date, const Text& what) {
  const auto read = [name, &date](const std::string& text) {
    if (!ReadDateText(text, date)) {
      throw CLI::ValidationError(name, fmt::format("'{}' is no date; wanted is one like 2004-02-03", text));
    }
  };
  return *command.add_option_function<std::string>(name, read, what)->type_name("DATE");
}

CLI::Option& AddAmount(CLI::App& command, const Text& name, Double& amount, const Text& what) {
  const auto read = [name, &amount](const std::string& text) {
    const char* end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, amount);
    if (error != std::errc() || stop != end || !std::isfinite(amount)) {
      throw CLI::ValidationError(name, fmt::format("'{}' is no amount; wanted is a number like 12.5", text));
    }
  };
  return *command.add_option_function<std::string>(name, read, what)->type_name("AMOUNT");
}

void AddAsking(CLI::App& command, AskOptions& options) {
  command.add_flag("--yes,-y", options.yes, "Answer OK and Yes to every question; never Retry")->group("Questions");
  command
      .add_option("--answer", options.answers,
                  "Answers in turn, joined by commas: ok, cancel, yes, no, retry; then as without it")
      ->delimiter(',')
      ->allow_extra_args(false)
      ->transform(CLI::IsMember(AnswerWords(), CLI::ignore_case).description(""))
      ->type_name("LIST")
      ->group("Questions");
  command.add_option("--messages", options.messages_file, "Write each message to FILE, one JSON object a line")
      ->type_name("FILE")
      ->group("Questions");
}

CLI::App& AddGroup(CLI::App& parent, const Text& name, const Text& what) {
  CLI::App& group = *parent.add_subcommand(name, what);
  group.require_subcommand(1);
  return group;
}

Long AccountNumberOf(const engine::Book& book, const Text& code) {
  const Integer position = book.AccountPositionOfCode(code);
  if (position > 0) return book.AccountNumber(position);
  throw Failure(FailureNumber::kInvalidArgument, fmt::format("{}: no account has the code '{}'", book.Path(), code));
}

void NeedField(const engine::Book& book, Long field_number) {
  const bool fits = field_number > 0 && field_number <= std::numeric_limits<Integer>::max();
  if (fits && book.FieldPosition(static_cast<Integer>(field_number)) > 0) return;
  throw Failure(FailureNumber::kInvalidArgument,
                fmt::format("{}: no field has the number {}", book.Path(), field_number));
}

void NeedDate(const engine::Book& book, Date date) {
  if (book.DateValid(date)) return;
  throw Failure(FailureNumber::kInvalidArgument,
                fmt::format("{}: the date {} is outside the book, which holds {} to {}", book.Path(), DateText(date),
                            DateText(book.FirstDate()), DateText(book.LastDate())));
}

}  // namespace tallybook::cli
