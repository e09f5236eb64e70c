#include "tallybook/cli/CompletionScripts.h"

#include <algorithm>
#include <fmt/format.h>
#include <functional>

#include "tallybook/cli/Help.h"

namespace tallybook::cli {

namespace {

// --- What all of them need

// A command or group below the program, and the words that lead to it: "import qdx".
struct Place {
  Text words;
  const CommandTable* table;
};

void Gather(const Text& words, const CommandTable& table, std::vector<Place>& places) {
  places.push_back({words, &table});
  for (const CommandTable& command : table.commands) {
    if (!command.hidden) Gather(words.empty() ? command.name : words + " " + command.name, command, places);
  }
}

std::vector<Place> Places(const CommandTable& program) {
  std::vector<Place> places;
  Gather("", program, places);
  return places;
}

Text Replaced(const Text& text, char character, const Text& by) {
  Text replaced;
  for (const char one : text) replaced += one == character ? by : Text(1, one);
  return replaced;
}

Text Joined(const std::vector<Text>& words) {
  Text joined;
  for (const Text& word : words) joined += (joined.empty() ? "" : " ") + word;
  return joined;
}

// The shells read these words.
Text KindWord(const Argument& argument) {
  const Text asked = AskedKind(argument.kind);
  if (!asked.empty()) return "ask " + asked;
  switch (argument.kind) {
    case ArgumentKind::kBook:
      return "files .tbk";
    case ArgumentKind::kExchangeFile:
      return "files .qdx";
    case ArgumentKind::kFile:
      return "files";
    case ArgumentKind::kFolder:
      return "folders";
    default:
      return argument.words.empty() ? "nothing" : "words " + Joined(argument.words);
  }
}

bool TakesValue(const Argument& argument) {
  return argument.kind != ArgumentKind::kFlag;
}

std::vector<Text> CommandNames(const CommandTable& table) {
  std::vector<Text> names;
  for (const CommandTable& command : table.commands) {
    if (!command.hidden) names.push_back(command.name);
  }
  return names;
}

std::vector<Text> OptionNames(const CommandTable& table) {
  std::vector<Text> names;
  for (const Argument& argument : table.arguments) {
    if (!argument.IsOption()) continue;
    if (!argument.short_name.empty()) names.push_back(argument.short_name);
    names.push_back(argument.name);
  }
  return names;
}

// Calls `visit` with each positional argument and its place among them, from 1: "*" for one that may be given again.
void VisitPositionals(const CommandTable& table, const std::function<void(const Text&, const Argument&)>& visit) {
  int position = 0;
  for (const Argument& argument : table.arguments) {
    if (argument.IsOption()) continue;
    ++position;
    visit(argument.repeatable ? "*" : std::to_string(position), argument);
  }
}

Text SingleQuoted(const Text& text) {
  return "'" + Replaced(text, '\'', "'\\''") + "'";
}

// --- bash

constexpr const char* kBashHead =
    R"sh(# Completes the command line of `tallybook` in bash. Made from the tables of the command; do not edit.

# Sets `commands` and `options` to those of a command.
_tallybook_table() {
  commands='' options=''
  case $1 in
)sh";

constexpr const char* kBashBetween = R"sh(  esac
}

# Sets `kind` to what an option's value or a positional argument is.
_tallybook_kind() {
  kind=''
  case "$1|$2" in
)sh";

constexpr const char* kBashBody = R"sh(  esac
}

# Files whose names end in the suffix, in any case, and folders; with no suffix all files.
_tallybook_files() {
  local name
  compopt -o filenames 2>/dev/null
  while IFS= read -r name; do
    if [[ -d $name || ${name,,} == *"$2" ]]; then COMPREPLY+=("$name"); fi
  done < <(compgen -f -- "$1")
}

# What the book of this command line holds: values, with what they mean behind them where there are several. The line
# editor parts a word at its sign, and takes what belongs behind it.
_tallybook_ask() {
  local line value about
  local -a values=() lines=()
  if [[ $2 == *-pair ]]; then typed+=("$whole"); fi
  while IFS=$'\t' read -r value about; do
    [[ $value == "$whole"* ]] || continue
    value=${value:${#whole} - ${#1}}
    values+=("$value")
    lines+=("$value${about:+  ($about)}")
  done < <("$program" complete "$2" -- "${typed[@]}" 2>/dev/null)
  if [[ ${values[0]} == *= ]]; then compopt -o nospace 2>/dev/null; fi
  if ((${#values[@]} == 1)); then
    printf -v line %q "${values[0]}"
    COMPREPLY=("$line")
  else
    COMPREPLY=("${lines[@]}")
  fi
}

_tallybook_complete_as() {
  case $2 in
    'words '*) mapfile -t COMPREPLY < <(compgen -W "${2#words }" -- "$1") ;;
    'ask '*) _tallybook_ask "$1" "${2#ask }" ;;
    files) _tallybook_files "$1" '' ;;
    'files '*) _tallybook_files "$1" "${2#files }" ;;
    folders)
      compopt -o filenames 2>/dev/null
      mapfile -t COMPREPLY < <(compgen -d -- "$1")
      ;;
  esac
}

_tallybook() {
  local IFS=$' \t\n' program=$1 current=${COMP_WORDS[COMP_CWORD]} whole='' joins='' place='' kind='' awaited=''
  local commands options word words_only=''
  local -i position=0 i
  local -a typed=()
  COMPREPLY=()
  # The line editor parts "--name=value" and "this=that" at their signs.
  for ((i = 1; i <= COMP_CWORD; i++)); do
    word=${COMP_WORDS[i]}
    if [[ $word == '=' && ${COMP_WORDS[i - 1]} == --* ]]; then
      if ((i == COMP_CWORD)); then typed+=(''); fi
    elif [[ $word == '=' && ${#typed[@]} != 0 ]]; then
      typed[-1]+='='
      joins=1
    elif [[ $joins ]]; then
      typed[-1]+=$word
      joins=''
    else
      typed+=("$word")
    fi
  done
  whole=${typed[-1]}
  unset 'typed[-1]'
  if [[ $current == '=' ]]; then current=''; fi
  _tallybook_table "$place"
  for word in "${typed[@]}"; do
    if [[ $awaited ]]; then
      awaited=''
    elif [[ ! $words_only && $word == -- ]]; then
      words_only=1
    elif [[ ! $words_only && $word == -* ]]; then
      _tallybook_kind "$place" "$word"
      awaited=$kind
    elif [[ " $commands " == *" $word "* ]]; then
      place=${place:+$place }$word
      _tallybook_table "$place"
    else
      position+=1
    fi
  done
  if [[ $awaited ]]; then
    _tallybook_complete_as "$current" "$awaited"
  elif [[ ! $words_only && $current == -* ]]; then
    mapfile -t COMPREPLY < <(compgen -W "$options" -- "$current")
  elif [[ $commands ]]; then
    mapfile -t COMPREPLY < <(compgen -W "$commands" -- "$current")
  else
    _tallybook_kind "$place" "$((position + 1))"
    _tallybook_complete_as "$current" "$kind"
  fi
}

complete -F _tallybook tallybook
)sh";

Text BashTable(const Place& place) {
  return fmt::format("    {})\n      commands={}\n      options={}\n      ;;\n", SingleQuoted(place.words),
                     SingleQuoted(Joined(CommandNames(*place.table))), SingleQuoted(Joined(OptionNames(*place.table))));
}

Text BashKinds(const Place& place) {
  Text lines;
  const auto add = [&](const Text& argument, const Text& kind) {
    lines += fmt::format("    {}{}) kind={} ;;\n", SingleQuoted(place.words + "|"), argument, SingleQuoted(kind));
  };
  for (const Argument& argument : place.table->arguments) {
    if (!argument.IsOption() || !TakesValue(argument)) continue;
    add(argument.name, KindWord(argument));
    if (!argument.short_name.empty()) add(argument.short_name, KindWord(argument));
  }
  VisitPositionals(*place.table, [&](const Text& position, const Argument& argument) {
    add(position == "*" ? "[0-9]*" : position, KindWord(argument));
  });
  return lines;
}

// --- zsh

constexpr const char* kZshHead = R"sh(#compdef tallybook
# Completes the command line of `tallybook` in zsh. Made from the tables of the command; do not edit.

# What the book of this command line holds: values, with what they mean.
_tallybook_ask() {
  local line
  local -a values suffix asked=("${(@)tallybook_typed}")
  if [[ $1 == *-pair ]]; then asked+=("${(Q)PREFIX}"); fi
  for line in "${(@f)$("$tallybook_program" complete "$1" -- "${(@)asked}" 2>/dev/null)}"; do
    [[ -n $line ]] || continue
    values+=("${${line%%$'\t'*}//:/\\:}:${line#*$'\t'}")
    if [[ ${line%%$'\t'*} == *= ]]; then suffix=(-S ''); fi
  done
  _describe -t values "$1" values "${suffix[@]}"
}

)sh";

constexpr const char* kZshFoot = R"sh(
_tallybook() {
  local curcontext=$curcontext state line
  local tallybook_program=${(Q)words[1]}
  local -a tallybook_typed=("${(@Q)words[2,CURRENT-1]}")
  _tallybook_
}

_tallybook "$@"
)sh";

Text ZshFunction(const Text& words) {
  return "_tallybook_" + Replaced(Replaced(words, ' ', "_"), '-', "_");
}

// Text within the brackets that explain an argument.
Text ZshText(const Text& text) {
  Text escaped;
  for (const char character : text) {
    if (character == '[' || character == ']' || character == ':' || character == '\\') escaped += '\\';
    escaped += character;
  }
  return escaped;
}

Text ZshAction(const Argument& argument) {
  const Text asked = AskedKind(argument.kind);
  // The blank before it keeps the arguments for adding matches away from it.
  if (!asked.empty()) return " _tallybook_ask " + asked;
  switch (argument.kind) {
    case ArgumentKind::kBook:
      return "_files -g \"(#i)*.tbk\"";
    case ArgumentKind::kExchangeFile:
      return "_files -g \"(#i)*.qdx\"";
    case ArgumentKind::kFile:
      return "_files";
    case ArgumentKind::kFolder:
      return "_files -/";
    default:
      return argument.words.empty() ? " " : "(" + Replaced(Joined(argument.words), ':', "\\:") + ")";
  }
}

Text ZshOption(const Argument& argument) {
  const Text value = TakesValue(argument) ? fmt::format(":{}:{}", ZshText(argument.value), ZshAction(argument)) : "";
  const Text name = argument.name + (TakesValue(argument) ? "=" : "");
  const Text about = "[" + ZshText(argument.what) + "]";
  if (argument.repeatable) return SingleQuoted("*" + name + about + value);
  if (argument.short_name.empty()) return SingleQuoted(name + about + value);
  const Text both = SingleQuoted(fmt::format("({} {})", argument.short_name, argument.name));
  return fmt::format("{}{{{},{}}}{}", both, argument.short_name, name, SingleQuoted(about + value));
}

Text ZshSpecifications(const CommandTable& table) {
  Text lines;
  for (const Argument& argument : table.arguments) {
    if (argument.IsOption()) lines += " \\\n    " + ZshOption(argument);
  }
  VisitPositionals(table, [&](const Text& position, const Argument& argument) {
    lines += " \\\n    " + SingleQuoted(fmt::format("{}:{}:{}", position, argument.name, ZshAction(argument)));
  });
  return lines;
}

Text ZshGroup(const Place& place) {
  Text described;
  Text branches;
  for (const CommandTable& command : place.table->commands) {
    if (command.hidden) continue;
    described += "    " + SingleQuoted(command.name + ":" + ZshText(command.what)) + "\n";
    const Text words = place.words.empty() ? command.name : place.words + " " + command.name;
    branches += fmt::format("        {}) {} ;;\n", command.name, ZshFunction(words));
  }
  return fmt::format(R"sh({}() {{
  local -a commands=(
{}  )
  _arguments -C{} \
    '1: :->command' \
    '*:: :->rest'
  case $state in
    command) _describe -t commands command commands ;;
    rest)
      case $line[1] in
{}      esac
      ;;
  esac
}}

)sh",
                     ZshFunction(place.words), described, ZshSpecifications(*place.table), branches);
}

Text ZshCommand(const Place& place) {
  return fmt::format("{}() {{\n  _arguments -s{}\n}}\n\n", ZshFunction(place.words), ZshSpecifications(*place.table));
}

// --- fish

constexpr const char* kFishHead =
    R"sh(# Completes the command line of `tallybook` in fish. Made from the tables of the command; do not edit.

# What the book of this command line holds: values, with what they mean.
function __tallybook_ask
    set -l typed (commandline -opc)
    if string match -q -- '*-pair' $argv[1]
        set -l current (commandline -ct)
        set typed $typed (string replace -r -- '^--[a-z-]+=' '' "$current")
    end
    $typed[1] complete $argv[1] -- $typed[2..-1] 2>/dev/null
end

# Files whose names end in the suffix, in any case, and folders.
function __tallybook_files
    __fish_complete_path (commandline -ct) | string match -ri '^[^\t]*(?:/|'(string escape --style=regex -- $argv[1])')(?:\t.*)?$'
end

# Where the line stands: the words of the command, and how many positional arguments it has.
function __tallybook_place
    set -l place
    set -l count 0
    set -l awaited 0
    set -l words_only 0
    for word in (commandline -opc)[2..-1]
        if test $awaited = 1
            set awaited 0
        else if test $words_only = 0; and test "$word" = --
            set words_only 1
        else if test $words_only = 0; and string match -q -- '-*' $word
            contains -- "$place|$word" $__tallybook_valued; and set awaited 1
        else if contains -- (string trim "$place $word") $__tallybook_places
            set place (string trim "$place $word")
        else
            set count (math $count + 1)
        end
    end
    echo "$place"
    echo $count
end

# True where the line stands at the command; with a number, where that positional argument is the next, or one behind it.
function __tallybook_at
    set -l place (__tallybook_place)
    test "$place[1]" = "$argv[1]"; or return 1
    test (count $argv) = 1; and return 0
    if test "$argv[3]" = again
        test $place[2] -ge (math $argv[2] - 1)
    else
        test $place[2] = (math $argv[2] - 1)
    end
end

complete -c tallybook -f
)sh";

// Within single quotes.
Text FishQuoted(const Text& text) {
  return "'" + Replaced(Replaced(text, '\\', "\\\\"), '\'', "\\'") + "'";
}

Text FishValues(const Argument& argument) {
  const Text asked = AskedKind(argument.kind);
  if (!asked.empty()) return "-x -a '(__tallybook_ask " + asked + ")'";
  switch (argument.kind) {
    case ArgumentKind::kBook:
      return "-x -a '(__tallybook_files .tbk)'";
    case ArgumentKind::kExchangeFile:
      return "-x -a '(__tallybook_files .qdx)'";
    case ArgumentKind::kFile:
      return "-r -F";
    case ArgumentKind::kFolder:
      return "-x -a '(__fish_complete_directories (commandline -ct))'";
    default:
      return argument.words.empty() ? "-x" : "-x -a " + FishQuoted(Joined(argument.words));
  }
}

Text FishOption(const Place& place, const Argument& argument) {
  const Text condition = "__tallybook_at " + FishQuoted(place.words);
  Text line = fmt::format("complete -c tallybook -n {} -l {}", FishQuoted(condition), argument.name.substr(2));
  if (!argument.short_name.empty()) line += " -s " + argument.short_name.substr(1);
  if (TakesValue(argument)) line += " " + FishValues(argument);
  return line + " -d " + FishQuoted(argument.what) + "\n";
}

Text FishPositional(const Place& place, int position, const Argument& argument) {
  const Text again = argument.repeatable ? " again" : "";
  const Text condition = fmt::format("__tallybook_at {} {}{}", FishQuoted(place.words), position, again);
  const bool any_file = argument.kind == ArgumentKind::kFile;
  const Text values = any_file ? "-F" : FishValues(argument).substr(Text("-x").size());
  if (values.empty()) return "";
  return fmt::format("complete -c tallybook -n {} {}\n", FishQuoted(condition), any_file ? values : values.substr(1));
}

Text FishPlace(const Place& place) {
  Text lines = "\n";
  const Text condition = "__tallybook_at " + FishQuoted(place.words);
  for (const CommandTable& command : place.table->commands) {
    if (command.hidden) continue;
    lines += fmt::format("complete -c tallybook -n {} -a {} -d {}\n", FishQuoted(condition), command.name,
                         FishQuoted(command.what));
  }
  int position = 0;
  for (const Argument& argument : place.table->arguments) {
    lines += argument.IsOption() ? FishOption(place, argument) : FishPositional(place, ++position, argument);
  }
  return lines;
}

// The lists that the walk along the line needs.
Text FishLists(const std::vector<Place>& places) {
  Text commands = "\nset -g __tallybook_places";
  Text valued = "set -g __tallybook_valued";
  for (const Place& place : places) {
    if (!place.words.empty()) commands += " " + FishQuoted(place.words);
    for (const Argument& argument : place.table->arguments) {
      if (!argument.IsOption() || !TakesValue(argument)) continue;
      valued += " " + FishQuoted(place.words + "|" + argument.name);
      if (!argument.short_name.empty()) valued += " " + FishQuoted(place.words + "|" + argument.short_name);
    }
  }
  return commands + "\n" + valued + "\n";
}

}  // namespace

Text BashCompletion(const CommandTable& program) {
  Text tables;
  Text kinds;
  for (const Place& place : Places(program)) {
    tables += BashTable(place);
    kinds += BashKinds(place);
  }
  return Text(kBashHead) + tables + kBashBetween + kinds + kBashBody;
}

Text ZshCompletion(const CommandTable& program) {
  Text functions;
  for (const Place& place : Places(program)) functions += place.table->IsGroup() ? ZshGroup(place) : ZshCommand(place);
  return kZshHead + functions + kZshFoot;
}

Text FishCompletion(const CommandTable& program) {
  const std::vector<Place> places = Places(program);
  Text script = kFishHead + FishLists(places);
  for (const Place& place : places) script += FishPlace(place);
  return script;
}

Text AskedKind(ArgumentKind kind) {
  switch (kind) {
    case ArgumentKind::kAccountCode:
      return "account";
    case ArgumentKind::kFieldNumber:
      return "field";
    case ArgumentKind::kDefinition:
      return "definition";
    case ArgumentKind::kJournalEntry:
      return "journal";
    case ArgumentKind::kCommand:
      return "command";
    case ArgumentKind::kAccountPair:
      return "account-pair";
    case ArgumentKind::kFieldPair:
      return "field-pair";
    default:
      return "";
  }
}

}  // namespace tallybook::cli
