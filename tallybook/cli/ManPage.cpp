#include "tallybook/cli/ManPage.h"

#include <algorithm>
#include <array>
#include <fmt/format.h>

#include "base/Texts.h"
#include "tallybook/cli/Help.h"

namespace tallybook::cli {

namespace {

constexpr const char* kManual = "Tallybook Data Exchange";

struct Fact {
  const char* name;
  const char* meaning;
};

constexpr std::array kStatuses = {Fact{"0", "Done."},
                                  Fact{"1", "The operation failed; the reason stands on standard error."},
                                  Fact{"2", "Wrong use: the command line cannot be right, whatever the book holds."},
                                  Fact{"3", "The user cancelled."}};

constexpr std::array kVariables = {
    Fact{"NO_COLOR", "Where it is set and not empty, nothing is coloured on a terminal."},
    Fact{"SOURCE_DATE_EPOCH", "The clock for what is written into files, in seconds since 1970-01-01 in UTC."}};

// A character as man(7) shows it: hyphens and quotes as they are typed in a command.
Text Escaped(char character) {
  switch (character) {
    case '\\':
      return "\\e";
    case '-':
      return "\\-";
    case '`':
      return "\\(ga";
    case '\'':
      return "\\(aq";
    default:
      return Text(1, character);
  }
}

// No line of it is taken for a request.
Text Escaped(const Text& text) {
  Text escaped = text.starts_with('.') ? "\\&" : "";
  for (const char character : text) escaped += Escaped(character);
  return escaped;
}

Text Section(const Text& name) {
  return ".SH " + name + "\n";
}

// A term with what it means indented below it.
Text Term(const Text& term, const Text& meaning) {
  return ".TP\n.B " + Escaped(term) + "\n" + Escaped(meaning) + "\n";
}

Text Sentence(const Text& text) {
  return text.empty() || text.ends_with('.') ? text : text + ".";
}

template <std::size_t kCount>
Text Facts(const Text& name, const std::array<Fact, kCount>& facts) {
  Text text = Section(name);
  for (const Fact& fact : facts) text += Term(fact.name, fact.meaning);
  return text;
}

// The first letter of what a table says is large for a line of its own; within one it is small.
Text WithSmallStart(const Text& text) {
  return LowerCase(text.substr(0, 1)) + text.substr(1);
}

Text Commands(const CommandPath& path) {
  if (!path.back()->IsGroup()) return "";
  Text text = Section("COMMANDS");
  for (const CommandTable& command : path.back()->commands) {
    if (command.hidden) continue;
    CommandPath longer = path;
    longer.push_back(&command);
    text += ".TP\n.BR " + Escaped(ManPageName(longer)) + " (1)\n" + Escaped(Sentence(command.what)) + "\n";
  }
  return text;
}

Text Arguments(const CommandTable& command) {
  Text text;
  for (const HelpSection& section : HelpSections(command)) {
    text += Section(UpperCase(section.heading));
    for (const Argument* argument : section.arguments) {
      text += Term(ArgumentText(*argument), Sentence(AboutText(command, *argument)));
    }
  }
  return text;
}

Text Examples(const CommandTable& command) {
  if (command.examples.empty()) return "";
  Text text = Section("EXAMPLES") + ".nf\n";
  for (const Text& example : command.examples) text += Escaped(example) + "\n";
  return text + ".fi\n";
}

Text Notes(const CommandTable& command) {
  Text text;
  for (const Text& note : command.notes) text += ".PP\n" + Escaped(note) + "\n";
  return text;
}

// The pages above this one.
Text SeeAlso(const CommandPath& path) {
  if (path.size() == 1) return "";
  Text text = Section("SEE ALSO");
  for (std::size_t depth = 1; depth < path.size(); ++depth) {
    const CommandPath above(path.begin(), path.begin() + static_cast<std::ptrdiff_t>(depth));
    text += ".BR " + Escaped(ManPageName(above)) + " (1)" + (depth + 1 < path.size() ? ",\n" : "\n");
  }
  return text;
}

}  // namespace

Text ManPageName(const CommandPath& path) {
  Text name = PathText(path);
  std::replace(name.begin(), name.end(), ' ', '-');
  return name;
}

Text ManPage(const CommandPath& path, const ManEdition& edition) {
  const CommandTable& command = *path.back();
  const Text name = ManPageName(path);
  Text page = fmt::format(".TH {} 1 {} \"tallybook {}\" \"{}\"\n", Escaped(UpperCase(name)), edition.date,
                          Escaped(edition.version), kManual);
  page += Section("NAME") + Escaped(name) + " \\- " + Escaped(WithSmallStart(command.what)) + "\n";
  page += Section("SYNOPSIS") + ".B " + Escaped(UsageText(path)) + "\n";
  page += Section("DESCRIPTION") + Escaped(Sentence(command.what)) + "\n" + Notes(command);
  page += Commands(path) + Arguments(command);
  page += Facts("EXIT STATUS", kStatuses) + Facts("ENVIRONMENT", kVariables);
  return page + Examples(command) + SeeAlso(path);
}

}  // namespace tallybook::cli
