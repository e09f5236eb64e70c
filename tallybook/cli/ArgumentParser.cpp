#include "tallybook/cli/ArgumentParser.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <iostream>

namespace tallybook::cli {

namespace {

constexpr const char* kSee = "See: tallybook --help, tallybook COMMAND --help";

// What a table reads a text with, as the library wants it: its error bears the argument's name.
auto Reader(const Argument& argument) {
  return [&argument](const std::string& text) {
    try {
      argument.take(text);
    } catch (const WrongUse& error) {
      throw CLI::ValidationError(argument.name, error.what());
    }
  };
}

CLI::Option& AddFlagOption(CLI::App& app, const Argument& argument, const std::string& names) {
  const auto set = [&argument](std::int64_t /*count*/) { argument.take(""); };
  return *app.add_flag_function(names, set, argument.what);
}

CLI::Option& AddValued(CLI::App& app, const Argument& argument, const std::string& names) {
  const auto read = Reader(argument);
  if (!argument.repeatable) {
    return *app.add_option_function<std::string>(names, read, argument.what)->type_name(argument.value);
  }
  const auto read_all = [read](const std::vector<std::string>& texts) {
    std::for_each(texts.begin(), texts.end(), read);
  };
  CLI::Option& option = *app.add_option_function<std::vector<std::string>>(names, read_all, argument.what);
  option.allow_extra_args(false)->type_name(argument.value);
  if (argument.kind == ArgumentKind::kWordList) option.delimiter(',');
  return option;
}

void AddArgument(CLI::App& app, const Argument& argument) {
  const std::string names = argument.short_name.empty() ? argument.name : argument.short_name + "," + argument.name;
  const bool is_flag = argument.kind == ArgumentKind::kFlag;
  CLI::Option& option = is_flag ? AddFlagOption(app, argument, names) : AddValued(app, argument, names);
  option.required(argument.required);
  if (!argument.heading.empty()) option.group(argument.heading);
}

bool Holds(const std::vector<Text>& names, const Text& name) {
  return std::find(names.begin(), names.end(), name) != names.end();
}

bool IsAlternative(const CommandTable& command, const Text& name) {
  return std::any_of(command.alternatives.begin(), command.alternatives.end(),
                     [&](const std::vector<Text>& names) { return Holds(names, name); });
}

void AddTable(CLI::App& app, const CommandTable& table, const CommandTable*& chosen);

void AddCommand(CLI::App& app, const CommandTable& command, const CommandTable*& chosen) {
  for (const Argument& argument : command.arguments) {
    if (!IsAlternative(command, argument.name)) AddArgument(app, argument);
  }
  for (const std::vector<Text>& names : command.alternatives) {
    CLI::Option_group& group = *app.add_option_group("Which");
    for (const Argument& argument : command.arguments) {
      if (Holds(names, argument.name)) AddArgument(group, argument);
    }
    group.require_option(1);
  }
  for (const auto& [option, other] : command.exclusions) app.get_option(option)->excludes(app.get_option(other));
  std::string footer = "Examples:";
  for (const Text& example : command.examples) footer += "\n  " + example;
  app.footer(footer);
  app.callback([&command, &chosen] { chosen = &command; });
}

void AddTable(CLI::App& app, const CommandTable& table, const CommandTable*& chosen) {
  if (!table.IsGroup()) {
    AddCommand(app, table, chosen);
    return;
  }
  app.require_subcommand(1);
  for (const CommandTable& command : table.commands) {
    AddTable(*app.add_subcommand(command.name, command.what), command, chosen);
  }
}

// Help and version are printed; everything else that the words are wrong with is wrong use.
void TellParsing(const CLI::App& app, const CLI::ParseError& error) {
  if (error.get_exit_code() == static_cast<int>(CLI::ExitCodes::Success)) {
    app.exit(error, std::cout, std::cerr);
    return;
  }
  // Words that no option and no command took, from the innermost command that was reached.
  const bool with_subcommands = true;
  const std::vector<Text> unknown = app.remaining(with_subcommands);
  if (!unknown.empty() && error.get_exit_code() == static_cast<int>(CLI::ExitCodes::RequiredError)) {
    throw WrongUse("'" + unknown.front() + "' is no command here\n" + kSee);
  }
  throw WrongUse(Text(error.what()) + "\n" + kSee);
}

}  // namespace

const CommandTable* ParseArguments(const CommandTable& program, const Text& version, const Text& footer,
                                   const std::vector<Text>& words) {
  CLI::App app(program.what, program.name);
  app.fallthrough(false);
  app.set_version_flag("--version", version);
  app.footer(footer);
  const CommandTable* chosen = nullptr;
  AddTable(app, program, chosen);
  try {
    // The library takes the words from the last to the first.
    app.parse(std::vector<Text>(words.rbegin(), words.rend()));
  } catch (const CLI::ParseError& error) {
    TellParsing(app, error);
  }
  return chosen;
}

}  // namespace tallybook::cli
