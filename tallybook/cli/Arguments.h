// The tables of the command line: which commands there are, what arguments each takes, and what each argument is.
// Parsing and help read these tables, and nothing else knows an argument.
//
// A command is a unit that gives its table, and a line in Program.cpp. Each argument is bound to a member of the
// record of options that the command runs with, and is one line; where several commands have it, a function of its own
// adds it to them:
//
//   CommandTable ValuesCommand() {
//     const auto options = std::make_shared<ValuesOptions>();
//     CommandTable command = MakeCommand("values", "Print the figures that are not zero",
//                                        {"tallybook values north --from 2003-01-01"}, options, RunValues);
//     AddBook(command, options->book);
//     AddDate(command, "--from", options->from, "Leave out records before this date");
//     AddFlag(command, "--totals", options->totals, "Add them up");
//     return command;
//   }
//
// A name that begins with "-" is an option, any other is a positional argument; these are taken in the order in which
// they are added. A member that is an std::optional stays empty where the user says nothing, a std::vector takes an
// argument that may be given again, any other member keeps its value.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include "base/Types.h"
#include "tallybook/cli/ExitStatus.h"

namespace tallybook::cli {

struct AskOptions;

// What an argument is: what its value names, or how it is written.
enum class ArgumentKind {
  kFlag,          // has no value
  kText,          // any text
  kNumber,        // a whole number
  kDate,          // 2004-02-03
  kAmount,        // a finite number with a point
  kWord,          // one of Argument::words, in any case
  kWordList,      // some of them, joined by commas
  kBook,          // a book
  kFile,          // any file
  kFolder,        // a folder
  kExchangeFile,  // an exchange file
  kAccountCode,   // an account of the book that the line names
  kFieldNumber,   // a datafield of that book
  kDefinition,    // an exchange definition of that book
  kCommand,       // words of the command line
  kJournalEntry,  // an entry of that book's journal
  kAccountPair,   // an account of an exchange file and one of that book: FROM=TO
  kFieldPair,     // a datafield of an exchange file and one of that book: N=M
};

// One argument of a command.
struct Argument {
  Text name;        // "--from" or "BOOK"
  Text short_name;  // "-y"; empty where it has none
  ArgumentKind kind = ArgumentKind::kText;
  Text value;  // the word that stands for the value in help: "DATE"; empty for flags and positional arguments
  Text what;   // what it is for, on one line
  std::vector<Text> words;  // of kWord and kWordList; of any other kind some that fit
  Text heading;             // the heading that it stands under in help; empty: that of all options
  bool required = false;
  bool repeatable = false;

  // Reads a value into the record of options. WrongUse, without the argument's name, for a text that cannot be right. A
  // flag is handed an empty text.
  std::function<void(const Text& text)> take;

  [[nodiscard]] bool IsOption() const { return name.starts_with('-'); }

  // For the line that adds it.
  Argument& Required();
  Argument& Short(const Text& letter);
  Argument& Heading(const Text& text);
  Argument& As(ArgumentKind what_it_is);
};

// A command, or a group of commands.
struct CommandTable {
  Text name;
  Text what;                                      // on one line
  std::vector<Text> examples;                     // whole command lines; empty for a group
  std::vector<Argument> arguments;                // empty for a group
  std::vector<std::vector<Text>> alternatives;    // options of which exactly one is wanted
  std::vector<std::pair<Text, Text>> exclusions;  // options that do not go together
  std::vector<CommandTable> commands;             // of a group
  std::vector<Text> notes;                        // paragraphs for the end of its help
  bool hidden = false;                            // left out wherever commands are listed
  std::function<ExitStatus()> run;                // called after all arguments were taken; empty for a group

  [[nodiscard]] bool IsGroup() const { return !commands.empty(); }
};

// The tables from the program down to a command or a group of it.
using CommandPath = std::vector<const CommandTable*>;

// "tallybook import qdx".
[[nodiscard]] Text PathText(const CommandPath& path);

// The option of that name, long or short; nothing where the command has none.
[[nodiscard]] const Argument* OptionNamed(const CommandTable& command, const Text& name);

// A command that runs `run` on the options that its arguments are bound to; the table keeps them alive.
template <typename Options>
[[nodiscard]] CommandTable MakeCommand(const Text& name, const Text& what, std::vector<Text> examples,
                                       std::shared_ptr<Options> options, ExitStatus (*run)(const Options&)) {
  CommandTable command;
  command.name = name;
  command.what = what;
  command.examples = std::move(examples);
  command.run = [options = std::move(options), run] { return run(*options); };
  return command;
}

[[nodiscard]] CommandTable MakeGroup(const Text& name, const Text& what, std::vector<CommandTable> commands);

// Exactly one of these options is wanted.
void NeedOneOf(CommandTable& command, std::vector<Text> options);
// These two do not go together.
void Exclude(CommandTable& command, const Text& option, const Text& other);

// Each of the following adds one argument and gives it, to be told more of in the same statement: the next one may move
// it. `target` is the member that it is bound to and lives as long as the table; `value` stands for the value in help.

Argument& AddFlag(CommandTable& command, const Text& name, bool& target, const Text& what);
// One that does something else than to set a member.
Argument& AddFlag(CommandTable& command, const Text& name, std::function<void()> take, const Text& what);

Argument& AddText(CommandTable& command, const Text& name, Text& target, const Text& value, const Text& what);
Argument& AddText(CommandTable& command, const Text& name, std::optional<Text>& target, const Text& value,
                  const Text& what);
Argument& AddText(CommandTable& command, const Text& name, std::vector<Text>& target, const Text& value,
                  const Text& what);

Argument& AddNumber(CommandTable& command, const Text& name, Integer& target, const Text& value, const Text& what);
Argument& AddNumber(CommandTable& command, const Text& name, Long& target, const Text& value, const Text& what);
Argument& AddNumber(CommandTable& command, const Text& name, std::optional<Long>& target, const Text& value,
                    const Text& what);
Argument& AddNumber(CommandTable& command, const Text& name, std::vector<Integer>& target, const Text& value,
                    const Text& what);
Argument& AddNumber(CommandTable& command, const Text& name, std::vector<Long>& target, const Text& value,
                    const Text& what);

// A date as 2004-02-03, and an amount as 12.5: a finite number with a point.
Argument& AddDate(CommandTable& command, const Text& name, Date& target, const Text& what);
Argument& AddAmount(CommandTable& command, const Text& name, Double& target, const Text& what);
// For commands that have --from and --to, before they open anything: WrongUse where both are given and the first date
// lies behind the last.
void NeedOrder(Date from, Date to);

// An option whose value is one of a few words, in any case, and what each of them means.
template <typename Value>
using Choices = std::vector<std::pair<Text, Value>>;

// `take` is told the index of the word.
Argument& AddWords(CommandTable& command, const Text& name, std::vector<Text> words,
                   std::function<void(std::size_t index)> take, const Text& what);

template <typename Value, typename Target>
Argument& AddChoice(CommandTable& command, const Text& name, Target& target, const Choices<Value>& choices,
                    const Text& what) {
  std::vector<Text> words;
  for (const auto& [word, meaning] : choices) words.push_back(word);
  return AddWords(
      command, name, std::move(words), [&target, choices](std::size_t index) { target = choices[index].second; }, what);
}

// The heading in help of the options about questions.
inline constexpr const char* kQuestions = "Questions";

// Help, which every command and group has, and the program's version. They are bound to nothing.
inline constexpr const char* kHelpOption = "--help";
inline constexpr const char* kVersionOption = "--version";
void AddHelpEverywhere(CommandTable& table);
void AddVersion(CommandTable& program);

// The arguments that several commands share.

// The positional BOOK.
void AddBook(CommandTable& command, Text& path);
// The positional BOOK, and --wait, for a command that changes the book: Session::OpenToChange takes both.
void AddBookToChange(CommandTable& command, Text& path, Long& wait_seconds);
// --yes, --answer and --messages.
void AddAsking(CommandTable& command, AskOptions& options);

}  // namespace tallybook::cli
