#include "tallybook/cli/ArgumentParser.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <fmt/format.h>
#include <map>

#include "tallybook/cli/Wording.h"

namespace tallybook::cli {

namespace {

// What the user gave for each argument of a command, in the order in which it was given.
using GivenByName = std::map<Text, std::vector<Text>>;

// The words, sorted by the library: the command that they reached, and what was given to it.
struct SortedWords {
  CommandPath path;
  GivenByName given;
  std::vector<Text> unknown;  // what neither an option nor a positional argument of it takes
  Text cut_off;               // an option at the end without its value
};

[[noreturn]] void Refuse(const CommandPath& path, const Text& reason) {
  throw WrongUse(reason + "\n" + SeeText(path));
}

bool IsFlag(const Argument& argument) {
  return argument.kind == ArgumentKind::kFlag;
}

// The library splits words into commands, options and values; what is wrong with them is judged and worded here.
void AddArgument(CLI::App& app, const Argument& argument) {
  const std::string names = argument.short_name.empty() ? argument.name : argument.short_name + "," + argument.name;
  CLI::Option& option = IsFlag(argument) ? *app.add_flag(names) : *app.add_option(names);
  if (!argument.IsOption() && argument.repeatable) option.expected(-1)->allow_extra_args();
  option.take_all();
}

// The arguments of a command that no word names are left out: adding those of all takes a third of the program's start.
void AddTable(CLI::App& app, const CommandTable& table, const std::vector<Text>& words) {
  app.set_help_flag();
  app.allow_extras();
  app.require_subcommand(0, 1);
  for (const Argument& argument : table.arguments) AddArgument(app, argument);
  for (const CommandTable& command : table.commands) {
    CLI::App& of_command = *app.add_subcommand(command.name);
    if (std::ranges::find(words, command.name) != words.end()) AddTable(of_command, command, words);
  }
}

const CommandTable* CommandNamed(const CommandTable& table, const Text& name) {
  const auto found = std::find_if(table.commands.begin(), table.commands.end(),
                                  [&](const CommandTable& command) { return command.name == name; });
  return found == table.commands.end() ? nullptr : &*found;
}

// Options before the command's name and words that are none stand in the way, so the first table with any is the end.
SortedWords Collect(const CLI::App& root, const CommandTable& program) {
  SortedWords sorted;
  const CLI::App* app = &root;
  const CommandTable* table = &program;
  while (true) {
    sorted.path.push_back(table);
    const bool with_subcommands = true;
    sorted.unknown = app->remaining(!with_subcommands);
    std::erase(sorted.unknown, "--");
    for (const Argument& argument : table->arguments) {
      const CLI::Option& option = *app->get_option(argument.name);
      if (option.count() > 0) sorted.given[argument.name] = option.results();
    }
    const auto next = app->get_subcommands();
    if (next.empty() || !sorted.unknown.empty()) return sorted;
    app = next.front();
    table = CommandNamed(*table, app->get_name());
  }
}

// The library passes over the value of "--name=" and takes the next word for it.
std::vector<Text> WithEmptyValuesApart(const std::vector<Text>& words) {
  std::vector<Text> apart;
  bool options = true;
  for (const Text& word : words) {
    options = options && word != "--";
    const bool is_empty = options && word.size() > 3 && word.starts_with("--") && word.find('=') == word.size() - 1;
    apart.push_back(is_empty ? word.substr(0, word.size() - 1) : word);
    if (is_empty) apart.emplace_back();
  }
  return apart;
}

SortedWords Sort(const CommandTable& program, const std::vector<Text>& given_words) {
  CLI::App app;
  const std::vector<Text> words = WithEmptyValuesApart(given_words);
  AddTable(app, program, words);
  try {
    // The library takes the words from the last to the first.
    app.parse(std::vector<Text>(words.rbegin(), words.rend()));
  } catch (const CLI::ParseError&) {
    // All that is left to it to complain of is an option at the end without its value.
    SortedWords sorted = Collect(app, program);
    sorted.cut_off = words.back();
    return sorted;
  }
  return Collect(app, program);
}

std::vector<Text> NamesOfCommands(const CommandTable& table) {
  std::vector<Text> names;
  for (const CommandTable& command : table.commands) {
    if (!command.hidden) names.push_back(command.name);
  }
  return names;
}

std::vector<Text> NamesOfOptions(const CommandTable& table) {
  std::vector<Text> names;
  for (const Argument& argument : table.arguments) {
    if (argument.IsOption()) names.push_back(argument.name);
  }
  return names;
}

// The commands of groups that have this very name: "journal undo" for "undo".
std::vector<Text> CommandsWithin(const CommandTable& table, const Text& name) {
  std::vector<Text> within;
  for (const CommandTable& group : table.commands) {
    if (CommandNamed(group, name) != nullptr) within.push_back("'" + group.name + " " + name + "'");
  }
  return within;
}

Text UnknownCommand(const CommandPath& path, const Text& word) {
  const std::vector<Text> names = NamesOfCommands(*path.back());
  const std::vector<Text> within = CommandsWithin(*path.back(), word);
  const Text near = within.empty() ? DidYouMean(word, names) : "did you mean " + Listed(within, "or") + "?";
  const Text where = path.size() == 1 ? "" : " of `" + PathText(path) + "`";
  return fmt::format("'{}' is no command{}; {}", word, where,
                     near.empty() ? "there are " + Listed(names, "and") : near);
}

// A word with a name of an option is none behind "--", which makes a word of all that follows.
Text UnknownOption(const CommandPath& path, const Text& word) {
  if (OptionNamed(*path.back(), word) != nullptr)
    return fmt::format("{} stands behind --, where it is no option; put it before", word);
  if (word.starts_with("-."))
    return fmt::format("{} is no option; put -- before a value that begins with a point", word);
  const Text near = DidYouMean(word.substr(0, word.find('=')), NamesOfOptions(*path.back()));
  return fmt::format("{} is no option of `{}`{}", word, PathText(path), near.empty() ? "" : "; " + near);
}

void CheckUnknown(const SortedWords& sorted) {
  if (sorted.unknown.empty()) return;
  // What follows an unknown option may be its value.
  const auto is_option = [](const Text& word) { return word.size() > 1 && word.starts_with('-'); };
  const auto option = std::find_if(sorted.unknown.begin(), sorted.unknown.end(), is_option);
  if (option != sorted.unknown.end()) Refuse(sorted.path, UnknownOption(sorted.path, *option));
  const Text& word = sorted.unknown.front();
  if (sorted.path.back()->IsGroup()) Refuse(sorted.path, UnknownCommand(sorted.path, word));
  Refuse(sorted.path, fmt::format("'{}' is a word too many", word));
}

void CheckCutOff(const SortedWords& sorted) {
  if (sorted.cut_off.empty()) return;
  const Argument* option = OptionNamed(*sorted.path.back(), sorted.cut_off);
  const Text value = option == nullptr ? "value" : option->value;
  Refuse(sorted.path, fmt::format("{} wants a {} behind it", sorted.cut_off, value));
}

void CheckRepeated(const SortedWords& sorted) {
  for (const Argument& argument : sorted.path.back()->arguments) {
    const auto given = sorted.given.find(argument.name);
    if (given == sorted.given.end()) continue;
    if (IsFlag(argument) && given->second.front() != "true") {
      Refuse(sorted.path, fmt::format("{} takes no value", argument.name));
    }
    if (!IsFlag(argument) && !argument.repeatable && given->second.size() > 1) {
      Refuse(sorted.path, fmt::format("{} is given {} times", argument.name, given->second.size()));
    }
  }
}

void CheckRequired(const SortedWords& sorted) {
  std::vector<Text> missing;
  for (const Argument& argument : sorted.path.back()->arguments) {
    if (argument.required && !sorted.given.contains(argument.name)) missing.push_back(argument.name);
  }
  if (missing.empty()) return;
  Refuse(sorted.path, Listed(missing, "and") + (missing.size() == 1 ? " is required" : " are required"));
}

void CheckAlternatives(const SortedWords& sorted) {
  for (const std::vector<Text>& names : sorted.path.back()->alternatives) {
    const auto count =
        std::count_if(names.begin(), names.end(), [&](const Text& name) { return sorted.given.contains(name); });
    if (count == 0) Refuse(sorted.path, Listed(names, "or") + " is required");
    if (count > 1) Refuse(sorted.path, Listed(names, "and") + " do not go together");
  }
  for (const auto& [option, other] : sorted.path.back()->exclusions) {
    if (sorted.given.contains(option) && sorted.given.contains(other)) {
      Refuse(sorted.path, Listed({option, other}, "and") + " do not go together");
    }
  }
}

std::vector<Text> Split(const Text& list) {
  std::vector<Text> parts;
  std::size_t start = 0;
  for (std::size_t comma = list.find(','); comma != Text::npos; comma = list.find(',', start)) {
    parts.push_back(list.substr(start, comma - start));
    start = comma + 1;
  }
  parts.push_back(list.substr(start));
  return parts;
}

void Take(const CommandPath& path, const Argument& argument, const Text& text) {
  const bool is_list = argument.kind == ArgumentKind::kWordList;
  try {
    for (const Text& part : is_list ? Split(text) : std::vector<Text>{text}) argument.take(part);
  } catch (const WrongUse& error) {
    Refuse(path, argument.name + ": " + error.what());
  }
}

void TakeAll(const SortedWords& sorted) {
  for (const Argument& argument : sorted.path.back()->arguments) {
    const auto given = sorted.given.find(argument.name);
    if (given == sorted.given.end()) continue;
    for (const Text& text : given->second) Take(sorted.path, argument, text);
  }
}

}  // namespace

UnderstoodLine UnderstandLine(const CommandTable& program, const std::vector<Text>& words) {
  const SortedWords sorted = Sort(program, words);
  UnderstoodLine line{.path = sorted.path};
  line.wants_help = sorted.given.contains(kHelpOption);
  line.wants_version = sorted.given.contains(kVersionOption);
  if (line.wants_help || line.wants_version) return line;
  CheckUnknown(sorted);
  CheckCutOff(sorted);
  if (sorted.path.back()->IsGroup()) {
    Refuse(sorted.path, "a command is required: " + Listed(NamesOfCommands(*sorted.path.back()), "or"));
  }
  CheckRepeated(sorted);
  CheckRequired(sorted);
  CheckAlternatives(sorted);
  TakeAll(sorted);
  return line;
}

CommandPath FindCommand(const CommandTable& program, const std::vector<Text>& names) {
  CommandPath path = {&program};
  for (const Text& name : names) {
    const CommandTable* command = CommandNamed(*path.back(), name);
    if (command != nullptr) {
      path.push_back(command);
    } else if (path.back()->IsGroup()) {
      throw WrongUse(UnknownCommand(path, name));
    } else {
      throw WrongUse(fmt::format("`{}` has no commands of its own", PathText(path)));
    }
  }
  return path;
}

std::vector<Text> GivenTexts(const CommandTable& program, const std::vector<Text>& words, ArgumentKind kind) {
  const SortedWords sorted = Sort(program, words);
  for (const Argument& argument : sorted.path.back()->arguments) {
    const auto given = sorted.given.find(argument.name);
    if (argument.kind == kind && given != sorted.given.end()) return given->second;
  }
  return {};
}

Text SeeText(const CommandPath& path) {
  return "See: " + PathText(path) + " " + kHelpOption;
}

}  // namespace tallybook::cli
