#include "tallybook/cli/Arguments.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <fmt/format.h>
#include <string_view>

#include "base/Dates.h"
#include "base/Texts.h"
#include "tallybook/cli/ConsoleMessageBoxes.h"
#include "tallybook/cli/Wording.h"

namespace tallybook::cli {

namespace {

Argument& Add(CommandTable& command, const Text& name, ArgumentKind kind, const Text& value, const Text& what,
              std::function<void(const Text&)> take) {
  Argument argument;
  argument.name = name;
  argument.kind = kind;
  argument.value = argument.IsOption() ? value : "";
  argument.what = what;
  argument.take = std::move(take);
  return command.arguments.emplace_back(std::move(argument));
}

Argument& AddRepeatable(CommandTable& command, const Text& name, ArgumentKind kind, const Text& value, const Text& what,
                        std::function<void(const Text&)> take) {
  Argument& argument = Add(command, name, kind, value, what, std::move(take));
  argument.repeatable = true;
  return argument;
}

template <typename Number>
Number NumberOf(const Text& text) {
  Number number = 0;
  const char* end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, number);
  if (error == std::errc() && stop == end) return number;
  if (error == std::errc::result_out_of_range) throw WrongUse(fmt::format("{} is too large a number", text));
  throw WrongUse(fmt::format("'{}' is no whole number", text));
}

Date DateOf(const Text& text) {
  Date date = kNoDate;
  if (ReadDateText(text, date)) return date;
  throw WrongUse(fmt::format("'{}' is no date; wanted is one like 2004-02-03", text));
}

Double AmountOf(const Text& text) {
  Double amount = 0;
  const char* end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, amount);
  if (error == std::errc() && stop == end && std::isfinite(amount)) return amount;
  throw WrongUse(fmt::format("'{}' is no amount; wanted is a number like 12.5", text));
}

std::size_t IndexOf(const Text& text, const std::vector<Text>& words) {
  for (std::size_t i = 0; i < words.size(); ++i) {
    if (LowerCase(text) == words[i]) return i;
  }
  const Text near = DidYouMean(text, words);
  throw WrongUse(fmt::format("'{}' is none of {}{}", text, Listed(words), near.empty() ? "" : "; " + near));
}

template <typename Number>
Argument& AddOneNumber(CommandTable& command, const Text& name, Number& target, const Text& value, const Text& what) {
  return Add(command, name, ArgumentKind::kNumber, value, what,
             [&target](const Text& text) { target = NumberOf<Number>(text); });
}

template <typename Number>
Argument& AddNumbers(CommandTable& command, const Text& name, std::vector<Number>& target, const Text& value,
                     const Text& what) {
  return AddRepeatable(command, name, ArgumentKind::kNumber, value, what,
                       [&target](const Text& text) { target.push_back(NumberOf<Number>(text)); });
}

}  // namespace

Argument& Argument::Required() {
  required = true;
  return *this;
}

Argument& Argument::Short(const Text& letter) {
  short_name = letter;
  return *this;
}

Argument& Argument::Heading(const Text& text) {
  heading = text;
  return *this;
}

Argument& Argument::As(ArgumentKind what_it_is) {
  kind = what_it_is;
  return *this;
}

Text PathText(const CommandPath& path) {
  Text text;
  for (const CommandTable* table : path) text += (text.empty() ? "" : " ") + table->name;
  return text;
}

const Argument* OptionNamed(const CommandTable& command, const Text& name) {
  const auto found = std::find_if(command.arguments.begin(), command.arguments.end(), [&](const Argument& argument) {
    return argument.IsOption() && (argument.name == name || argument.short_name == name);
  });
  return found == command.arguments.end() ? nullptr : &*found;
}

CommandTable MakeGroup(const Text& name, const Text& what, std::vector<CommandTable> commands) {
  CommandTable group;
  group.name = name;
  group.what = what;
  group.commands = std::move(commands);
  return group;
}

void NeedOneOf(CommandTable& command, std::vector<Text> options) {
  command.alternatives.push_back(std::move(options));
}

void Exclude(CommandTable& command, const Text& option, const Text& other) {
  command.exclusions.emplace_back(option, other);
}

Argument& AddFlag(CommandTable& command, const Text& name, bool& target, const Text& what) {
  return Add(command, name, ArgumentKind::kFlag, "", what, [&target](const Text& /*text*/) { target = true; });
}

Argument& AddFlag(CommandTable& command, const Text& name, std::function<void()> take, const Text& what) {
  return Add(command, name, ArgumentKind::kFlag, "", what, [take = std::move(take)](const Text& /*text*/) { take(); });
}

Argument& AddText(CommandTable& command, const Text& name, Text& target, const Text& value, const Text& what) {
  return Add(command, name, ArgumentKind::kText, value, what, [&target](const Text& text) { target = text; });
}

Argument& AddText(CommandTable& command, const Text& name, std::optional<Text>& target, const Text& value,
                  const Text& what) {
  return Add(command, name, ArgumentKind::kText, value, what, [&target](const Text& text) { target = text; });
}

Argument& AddText(CommandTable& command, const Text& name, std::vector<Text>& target, const Text& value,
                  const Text& what) {
  return AddRepeatable(command, name, ArgumentKind::kText, value, what,
                       [&target](const Text& text) { target.push_back(text); });
}

Argument& AddNumber(CommandTable& command, const Text& name, Integer& target, const Text& value, const Text& what) {
  return AddOneNumber(command, name, target, value, what);
}

Argument& AddNumber(CommandTable& command, const Text& name, Long& target, const Text& value, const Text& what) {
  return AddOneNumber(command, name, target, value, what);
}

Argument& AddNumber(CommandTable& command, const Text& name, std::optional<Long>& target, const Text& value,
                    const Text& what) {
  return Add(command, name, ArgumentKind::kNumber, value, what,
             [&target](const Text& text) { target = NumberOf<Long>(text); });
}

Argument& AddNumber(CommandTable& command, const Text& name, std::vector<Integer>& target, const Text& value,
                    const Text& what) {
  return AddNumbers(command, name, target, value, what);
}

Argument& AddNumber(CommandTable& command, const Text& name, std::vector<Long>& target, const Text& value,
                    const Text& what) {
  return AddNumbers(command, name, target, value, what);
}

Argument& AddDate(CommandTable& command, const Text& name, Date& target, const Text& what) {
  return Add(command, name, ArgumentKind::kDate, "DATE", what, [&target](const Text& text) { target = DateOf(text); });
}

Argument& AddAmount(CommandTable& command, const Text& name, Double& target, const Text& what) {
  return Add(command, name, ArgumentKind::kAmount, "AMOUNT", what,
             [&target](const Text& text) { target = AmountOf(text) + 0.0; });  // no zero keeps a sign
}

void NeedOrder(Date from, Date to) {
  if (from != kNoDate && to != kNoDate && from > to)
    throw WrongUse(fmt::format("--from {} lies behind --to {}", DateText(from), DateText(to)));
}

Argument& AddWords(CommandTable& command, const Text& name, std::vector<Text> words,
                   std::function<void(std::size_t index)> take, const Text& what) {
  const auto read = [words, take = std::move(take)](const Text& text) { take(IndexOf(text, words)); };
  Argument& argument = Add(command, name, ArgumentKind::kWord, "WORD", what, read);
  argument.words = std::move(words);
  return argument;
}

void AddHelpEverywhere(CommandTable& table) {
  Add(table, kHelpOption, ArgumentKind::kFlag, "", "Print this help", [](const Text& /*text*/) {}).Short("-h");
  for (CommandTable& command : table.commands) AddHelpEverywhere(command);
}

void AddVersion(CommandTable& program) {
  Add(program, kVersionOption, ArgumentKind::kFlag, "", "Print the version", [](const Text& /*text*/) {});
}

void AddBook(CommandTable& command, Text& path) {
  AddText(command, "BOOK", path, "", "The book's file; .tbk may be left out").Required().As(ArgumentKind::kBook);
}

void AddBookToChange(CommandTable& command, Text& path, Long& wait_seconds) {
  AddBook(command, path);
  Argument& wait = AddNumber(command, "--wait", wait_seconds, "SECONDS",
                             "Wait so long at most while the book is open for writing elsewhere");
  wait.take = [take = wait.take, &wait_seconds](const Text& text) {
    take(text);
    if (wait_seconds < 0) throw WrongUse(fmt::format("'{}' is no number of seconds; 0 or more is wanted", text));
  };
}

void AddAsking(CommandTable& command, AskOptions& options) {
  AddFlag(command, "--yes", options.yes, "Answer OK and Yes to every question; never Retry")
      .Short("-y")
      .Heading(kQuestions);
  Argument& answers = AddRepeatable(
      command, "--answer", ArgumentKind::kWordList, "LIST",
      "Answers in turn, joined by commas: ok, cancel, yes, no, retry; then as without it",
      [&options](const Text& word) { options.answers.push_back(AnswerWords()[IndexOf(word, AnswerWords())]); });
  answers.words = AnswerWords();
  answers.Heading(kQuestions);
  AddText(command, "--messages", options.messages_file, "FILE", "Write each message to FILE, one JSON object a line")
      .Heading(kQuestions)
      .As(ArgumentKind::kFile);
}

}  // namespace tallybook::cli
