#include "tallybook/cli/ConsoleFileDialogs.h"

#include <algorithm>
#include <fmt/format.h>
#include <iomanip>
#include <sstream>
#include <utility>
#include <vector>

#include "base/CodePage.h"
#include "base/Failure.h"
#include "base/ModParse.h"
#include "base/Texts.h"
#include "forms/CCommonDialog.h"
#include "forms/modAllUI.h"
#include "platform/Platform.h"
#include "support/Utility.h"
#include "tallybook/cli/Lines.h"
#include "tallybook/cli/Terminal.h"

namespace tallybook::cli {

namespace {

constexpr const char* kTheProposal = "=";
constexpr const char* kSeparators = "/\\";
constexpr const char* kWildcards = "*?";
constexpr std::size_t kMostListed = 20;

[[noreturn]] void RefuseDialog(const char* name) {
  throw Failure(FailureNumber::kFeatureUnavailable, Text("A terminal has no dialog for ") + name);
}

// Lines end in "\r\n", as those of a box do.
void Tell(const Text& text) {
  if (text.empty()) return;
  for (const Text& line : SplitText(text, "\r\n")) TellLine("  " + line);
}

Text InFolder(const Text& folder, const Text& name) {
  const bool whole = !name.empty() && Text(kSeparators).find(name.front()) != Text::npos;
  return whole ? name : AddBackslash(folder) + name;
}

bool IsFolder(const Text& path) {
  return ThePlatform().files->Attributes(path).directory;
}

bool EndsInSeparator(const Text& path) {
  return Text(kSeparators).find(path.back()) != Text::npos;
}

// "CSV Files (*.csv); All Files (*.*)": texts that name their pattern stand as they are, others get it behind them.
Text FilterWords(const Text& filter) {
  Text words;
  std::size_t start = 0;
  while (start < filter.size() && filter[start] != '\0') {
    const Text text = filter.c_str() + start;
    start += text.size() + 1;
    const Text pattern = start < filter.size() ? Text(filter.c_str() + start) : Text();
    start += pattern.size() + 1;
    words += (words.empty() ? "" : "; ") + text;
    if (!pattern.empty() && text.find(pattern) == Text::npos) words += " (" + pattern + ")";
  }
  return words;
}

// Without the "*." or "." that a caller may write in front; empty for one that names no extension.
Text BareExtension(const Text& extension) {
  Text bare = extension;
  for (const char sign : {'*', '.'}) {
    if (!bare.empty() && bare.front() == sign) bare.erase(0, 1);
  }
  return bare.find_first_of(kWildcards) == Text::npos ? bare : Text();
}

std::vector<Text> QuotedNames(const Text& line) {
  std::istringstream words(line);
  std::vector<Text> names;
  for (Text name; words >> std::quoted(name);) {
    if (!name.empty()) names.push_back(name);
  }
  return names;
}

// One showing of a file dialog: takes the typed names into the request, or says why not.
class FileTaker {
 public:
  FileTaker(FileDialogRequest& request, ConsoleMessageBoxes& boxes, Text folder)
      : request_(request), boxes_(boxes), folder_(std::move(folder)) {}

  std::optional<Text> Take(const Text& line) {
    request_.extended_error = 0;
    if (line.find_first_of(kWildcards) != Text::npos) return Listing(line);
    const std::vector<Text> names = Has(kSeveralFiles) ? QuotedNames(line) : std::vector<Text>{line};
    if (names.empty()) return "There is no name in this: " + line;
    if (names.size() == 1 && IsFolder(InFolder(folder_, names.front()))) return Enter(names.front());
    std::vector<Text> paths;
    for (const Text& name : names) {
      paths.push_back(WithExtension(InFolder(folder_, name)));
      if (const Text trouble = Trouble(paths.back()); !trouble.empty()) return trouble;
      if (names.size() > 1 && FilePath(paths.back()) != AddBackslash(folder_))
        return "Several files must lie in " + folder_ + ", and this one does not: " + name;
    }
    if (!std::ranges::all_of(paths, [this](const Text& path) { return IsConfirmed(path); })) return Text();
    return Keep(paths);
  }

 private:
  [[nodiscard]] bool Has(Long flag) const { return (request_.flags & flag) != 0; }

  [[nodiscard]] Text Listing(const Text& pattern) const {
    const std::vector<FoundFile> found = ThePlatform().files->Find(InFolder(folder_, pattern));
    if (found.empty()) return "No file matches " + InFolder(folder_, pattern);
    Text lines;
    for (std::size_t i = 0; i < std::min(found.size(), kMostListed); ++i)
      lines += (i == 0 ? "" : "\r\n") + found[i].name;
    if (found.size() > kMostListed) lines += fmt::format("\r\nand {} more", found.size() - kMostListed);
    return lines;
  }

  [[nodiscard]] Text Enter(const Text& name) {
    folder_ = InFolder(folder_, name);
    return "Folder: " + folder_;
  }

  [[nodiscard]] Text WithExtension(const Text& path) const {
    const Text extension = BareExtension(request_.default_extension);
    const bool has_one = FileBaseName(path).find('.') != Text::npos;
    if (extension.empty() || has_one || EndsInSeparator(path)) return path;
    return !request_.save && FileExists(path) ? path : path + "." + extension;
  }

  // Why a path will not do; empty where it will.
  [[nodiscard]] Text Trouble(const Text& path) const {
    if (IsFolder(path)) return "This is a folder, and no file: " + path;
    const Text folder = FilePath(path);
    if (EndsInSeparator(path) || (Has(kPathMustExist | kFileMustExist) && !IsFolder(folder)))
      return "There is no such folder: " + folder;
    return Has(kFileMustExist) && !FileExists(path) ? "There is no such file: " + path : Text();
  }

  [[nodiscard]] bool IsConfirmed(const Text& path) {
    const bool there = FileExists(path);
    Text question;
    if (there && request_.save && Has(kPromptToOverwrite)) question = " already exists.\r\nDo you want to replace it?";
    if (!there && Has(kPromptToCreate)) question = " does not exist.\r\nDo you want to create it?";
    return question.empty() || boxes_.Show(path + question, kYesNo | kExclamationIcon, request_.title) == kYes;
  }

  [[nodiscard]] std::optional<Text> Keep(const std::vector<Text>& paths) {
    Text chosen = paths.front();
    if (paths.size() > 1) {
      const char between = Has(kExplorerStyle) ? '\0' : ' ';
      chosen = folder_;
      for (const Text& path : paths) chosen += between + FileBaseName(path);
    }
    if (CharacterCount(chosen) > request_.max_file_size) {
      request_.extended_error = kBufferTooSmall;
      return fmt::format("This has {} characters, {} at most can be taken: {}", CharacterCount(chosen),
                         request_.max_file_size, paths.front());
    }
    request_.file_name = chosen;
    request_.file_title = paths.size() > 1 ? Text() : FileBaseName(chosen);
    return std::nullopt;
  }

  FileDialogRequest& request_;
  ConsoleMessageBoxes& boxes_;
  Text folder_;
};

Text StartFolder(const Text& wanted) {
  const Text in_force = CurrentFolder();
  return wanted.empty() ? in_force : InFolder(in_force, wanted);
}

}  // namespace

Long ConsoleFileDialogs::ShowFile(FileDialogRequest& request) {
  const Text folder = StartFolder(request.initial_folder);
  const Text filters = FilterWords(request.filter);
  Question question;
  question.title = request.title.empty() ? Text(request.save ? "Save As" : "Open") : request.title;
  question.about = (filters.empty() ? "" : "Files:  " + filters + "\r\n") + "Folder: " + folder;
  question.wanted = (request.flags & kSeveralFiles) == 0 ? "File name" : "File names";
  question.proposal = request.file_name;
  FileTaker taker(request, boxes_, folder);
  const Outcome outcome = Ask(question, [&](const Text& name) { return taker.Take(name); });
  // What the last refused name had wrong is no matter of a dialog that the user left.
  if (outcome == Outcome::kCancelled) request.extended_error = 0;
  const bool taken = outcome == Outcome::kTaken;
  Note(question, outcome, taken ? request.file_name : Text());
  return taken ? 1 : 0;
}

Text ConsoleFileDialogs::ShowFolder(FolderDialogRequest& request) {
  const Text in_force = CurrentFolder();
  Question question;
  question.title = request.title.empty() ? "Browse for Folder" : request.title;
  question.about = "Folder: " + in_force;
  question.wanted = "Folder";
  question.proposal = StartFolder(request.initial_folder);
  Text chosen;
  const Outcome outcome = Ask(question, [&](const Text& name) -> std::optional<Text> {
    const Text path = InFolder(in_force, name);
    if (!IsFolder(path)) return "There is no such folder: " + path;
    chosen = path;
    return std::nullopt;
  });
  Note(question, outcome, chosen);
  return chosen;
}

void ConsoleFileDialogs::Note(const Question& question, Outcome outcome, const Text& path) {
  boxes_.NoteDialog(question.title, outcome == Outcome::kCancelled ? kCancel : kOk, path);
}

ConsoleFileDialogs::Outcome ConsoleFileDialogs::Ask(const Question& question, const Taker& take) {
  progress_.Hide();
  TellLine(question.title);
  Tell(question.about);
  const std::optional<Integer> given = boxes_.GivenAnswer(kOkCancel);
  if (!given) return AskOnTerminal(question, take);
  const bool ok = *given == kOk;
  TellLine(fmt::format("  {}: {}", question.wanted, ok ? question.proposal : "Cancel"));
  if (!ok) return Outcome::kCancelled;
  const std::optional<Text> trouble = question.proposal.empty() ? "No name is proposed here" : take(question.proposal);
  if (!trouble) return Outcome::kTaken;
  Tell(*trouble);
  return Outcome::kNotTaken;
}

ConsoleFileDialogs::Outcome ConsoleFileDialogs::AskOnTerminal(const Question& question, const Taker& take) {
  // Ctrl-C cancels here, also at a message box that asks about a name.
  const CancelKey key;
  const Text offer = question.proposal.empty() ? Text() : fmt::format(", {} for {}", kTheProposal, question.proposal);
  for (;;) {
    Prompt(fmt::format("  {}{} [Cancel]? ", question.wanted, offer));
    const std::optional<Text> typed = ReadTypedLine();
    if (!typed) TellLine("");
    const Text name = TrimBoth(typed.value_or(""));
    if (name.empty()) return Outcome::kCancelled;
    const bool proposed = name == kTheProposal && !question.proposal.empty();
    const std::optional<Text> trouble = take(proposed ? question.proposal : name);
    if (!trouble) return Outcome::kTaken;
    Tell(*trouble);
  }
}

Long ConsoleFileDialogs::ShowColor(ColorDialogRequest& /*request*/) {
  RefuseDialog("colours");
}

Long ConsoleFileDialogs::ShowFont(FontDialogRequest& /*request*/) {
  RefuseDialog("fonts");
}

Long ConsoleFileDialogs::ShowPrinter(PrinterDialogRequest& /*request*/) {
  RefuseDialog("printers");
}

void ConsoleFileDialogs::ShowHelp(Long /*window*/, const Text& help_file, Long /*command*/, Long /*topic*/) {
  RefuseDialog(("the help file " + help_file).c_str());
}

}  // namespace tallybook::cli
