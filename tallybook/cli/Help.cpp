#include "tallybook/cli/Help.h"

#include <algorithm>
#include <sstream>

#include "base/CodePage.h"
#include "base/Texts.h"

namespace tallybook::cli {

namespace {

constexpr Long kLineWidth = 80;
constexpr Long kIndent = 2;
constexpr Long kGap = 2;
// A left column that is wider than this stands on a line of its own.
constexpr Long kWidestLeft = 24;

constexpr const char* kArguments = "Arguments";
constexpr const char* kOptions = "Options";

Text Blanks(Long count) {
  return Text(static_cast<std::size_t>(std::max<Long>(count, 0)), ' ');
}

// Breaks a text at its blanks into lines of at most `width` characters.
std::vector<Text> Wrapped(const Text& text, Long width) {
  std::vector<Text> lines;
  std::istringstream words(text);
  Text line;
  for (Text word; words >> word;) {
    if (!line.empty() && CharacterCount(line) + 1 + CharacterCount(word) > width) {
      lines.push_back(line);
      line.clear();
    }
    line += (line.empty() ? "" : " ") + word;
  }
  if (!line.empty()) lines.push_back(line);
  return lines;
}

using Rows = std::vector<std::pair<Text, Text>>;

Long LeftWidth(const Rows& rows) {
  Long width = 0;
  for (const auto& [left, right] : rows) {
    if (CharacterCount(left) <= kWidestLeft) width = std::max(width, CharacterCount(left));
  }
  return width;
}

Text RowText(const Text& left, const Text& right, Long width) {
  const Text margin = Blanks(kIndent + width + kGap);
  Text text = Blanks(kIndent) + left;
  bool at_start = CharacterCount(left) <= width;
  if (at_start) text += Blanks(width + kGap - CharacterCount(left));
  for (const Text& line : Wrapped(right, kLineWidth - CharacterCount(margin))) {
    if (!at_start) text += "\n" + margin;
    text += line;
    at_start = false;
  }
  return TrimRight(text) + "\n";
}

Rows CommandRows(const CommandTable& group) {
  Rows rows;
  for (const CommandTable& command : group.commands) {
    if (!command.hidden) rows.emplace_back(command.name, command.what);
  }
  return rows;
}

Rows ArgumentRows(const CommandTable& command, const HelpSection& section) {
  Rows rows;
  for (const Argument* argument : section.arguments) {
    rows.emplace_back(ArgumentText(*argument), AboutText(command, *argument));
  }
  return rows;
}

bool IsHelpOrVersion(const Argument& argument) {
  return argument.name == kHelpOption || argument.name == kVersionOption;
}

const std::vector<Text>* AlternativesOf(const CommandTable& command, const Text& name) {
  for (const std::vector<Text>& names : command.alternatives) {
    if (std::find(names.begin(), names.end(), name) != names.end()) return &names;
  }
  return nullptr;
}

Text OptionUsage(const CommandTable& command, const Text& name) {
  const Argument* option = OptionNamed(command, name);
  return option == nullptr ? name : ArgumentText(*option);
}

Text AlternativesUsage(const CommandTable& command, const std::vector<Text>& names) {
  Text usage;
  for (const Text& name : names) usage += (usage.empty() ? " (" : " | ") + OptionUsage(command, name);
  return usage + ")";
}

Text PositionalUsage(const Argument& argument) {
  const Text name = argument.name + (argument.repeatable ? "..." : "");
  return argument.required ? " " + name : " [" + name + "]";
}

Text SectionText(const Text& heading, const Rows& rows, Long width) {
  if (rows.empty()) return "";
  Text text = "\n" + heading + "\n";
  for (const auto& [left, right] : rows) text += RowText(left, right, width);
  return text;
}

Text ExamplesText(const CommandTable& command, const Text& heading) {
  if (command.examples.empty()) return "";
  Text text = "\n" + heading + "\n";
  for (const Text& example : command.examples) text += Blanks(kIndent) + example + "\n";
  return text;
}

Text NotesText(const CommandTable& command) {
  Text text;
  for (const Text& note : command.notes) {
    text += "\n";
    for (const Text& line : Wrapped(note, kLineWidth)) text += line + "\n";
  }
  return text;
}

}  // namespace

std::vector<HelpSection> HelpSections(const CommandTable& command) {
  std::vector<HelpSection> sections = {{kArguments, {}}, {kOptions, {}}};
  const auto add = [&](const Text& heading, const Argument& argument) {
    auto section =
        std::find_if(sections.begin(), sections.end(), [&](const HelpSection& one) { return one.heading == heading; });
    if (section == sections.end()) section = sections.insert(section, {heading, {}});
    section->arguments.push_back(&argument);
  };
  for (const Argument& argument : command.arguments) {
    const Text usual = argument.IsOption() ? kOptions : kArguments;
    add(argument.heading.empty() ? usual : argument.heading, argument);
  }
  std::erase_if(sections, [](const HelpSection& section) { return section.arguments.empty(); });
  return sections;
}

Text UsageText(const CommandPath& path) {
  const CommandTable& command = *path.back();
  Text usage = PathText(path);
  if (command.IsGroup()) return usage + " COMMAND";
  bool has_others = false;
  const std::vector<Text>* shown = nullptr;
  for (const Argument& argument : command.arguments) {
    const std::vector<Text>* alternatives = AlternativesOf(command, argument.name);
    if (!argument.IsOption()) {
      usage += PositionalUsage(argument);
    } else if (alternatives != nullptr) {
      if (alternatives != shown) usage += AlternativesUsage(command, *alternatives);
      shown = alternatives;
    } else if (argument.required) {
      usage += " " + ArgumentText(argument);
    } else {
      has_others = has_others || !IsHelpOrVersion(argument);
    }
  }
  return usage + (has_others ? " [OPTIONS]" : "");
}

Text ArgumentText(const Argument& argument) {
  Text text = argument.short_name.empty() ? argument.name : argument.short_name + ", " + argument.name;
  if (!argument.value.empty()) text += " " + argument.value;
  return text;
}

Text AboutText(const CommandTable& command, const Argument& argument) {
  Text about = argument.what;
  for (const auto& [option, other] : command.exclusions) {
    if (argument.name == option) about += "; not with " + other;
    if (argument.name == other) about += "; not with " + option;
  }
  return about;
}

Text HelpText(const CommandPath& path, Text (*heading)(const Text&)) {
  const CommandTable& command = *path.back();
  std::vector<std::pair<Text, Rows>> sections;
  if (command.IsGroup()) sections.emplace_back("Commands", CommandRows(command));
  for (const HelpSection& section : HelpSections(command)) {
    sections.emplace_back(section.heading, ArgumentRows(command, section));
  }
  Long width = 0;
  for (const auto& [name, rows] : sections) width = std::max(width, LeftWidth(rows));

  Text text = command.what + "\n\n" + heading("Usage:") + " " + UsageText(path) + "\n";
  for (const auto& [name, rows] : sections) text += SectionText(heading(name + ":"), rows, width);
  return text + ExamplesText(command, heading("Examples:")) + NotesText(command);
}

}  // namespace tallybook::cli
