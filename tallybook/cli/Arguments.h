// The arguments that several commands share, with their checks. A text that is no date, number or known word is told by
// the command line's own error, which ends in wrong use.
#pragma once

#include <CLI/CLI.hpp>
#include <functional>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include "support/Types.h"
#include "tallybook/cli/ConsolePlatform.h"
#include "tallybook/cli/ExitStatus.h"
#include "tallybook/engine/Book.h"

namespace tallybook::cli {

// What a command line asks to be done, once it is understood.
using Command = std::function<ExitStatus()>;

// Adds the subcommand `name` to `parent`. Its options live as long as the parsed command line does.
//   examples  lines for the end of its help
//   run       what it does; called after parsing
template <typename Options>
CLI::App& AddCommand(CLI::App& parent, const Text& name, const Text& what, const Text& examples,
                     std::shared_ptr<Options> options, Command& chosen, ExitStatus (*run)(const Options&)) {
  CLI::App& command = *parent.add_subcommand(name, what);
  command.footer("Examples:\n" + examples);
  command.callback([options, run, &chosen] { chosen = [options, run] { return run(*options); }; });
  return command;
}

// The positional BOOK.
void AddBook(CLI::App& command, Text& path);

// A date as 2004-02-03, and an amount as 12.5: a finite number with a point.
CLI::Option& AddDate(CLI::App& command, const Text& name, Date& date, const Text& what);
CLI::Option& AddAmount(CLI::App& command, const Text& name, Double& amount, const Text& what);

// An option whose value is one of a few words, in any case.
template <typename Value>
using Choices = std::vector<std::pair<Text, Value>>;

template <typename Value>
CLI::Option& AddChoice(CLI::App& command, const Text& name, Value& value, const Choices<Value>& choices,
                       const Text& what) {
  const auto read = [name, &value, choices](const std::string& text) {
    Text words;
    for (const auto& [word, meaning] : choices) {
      if (CLI::detail::to_lower(text) == word) {
        value = meaning;
        return;
      }
      words += (words.empty() ? "" : ", ") + word;
    }
    throw CLI::ValidationError(name, "'" + text + "' is none of " + words);
  };
  return *command.add_option_function<std::string>(name, read, what)->type_name("WORD");
}

// --yes, --answer and --messages.
void AddAsking(CLI::App& command, AskOptions& options);

// Commands that have subcommands of their own.
CLI::App& AddGroup(CLI::App& parent, const Text& name, const Text& what);

// Look-ups in a book. Failure 5 that names what was asked for where the book has none.
[[nodiscard]] Long AccountNumberOf(const engine::Book& book, const Text& code);
void NeedField(const engine::Book& book, Long field_number);
// Failure 5 for a date outside the book's range, which it names.
void NeedDate(const engine::Book& book, Date date);

}  // namespace tallybook::cli
