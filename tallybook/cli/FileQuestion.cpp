#include "tallybook/cli/FileQuestion.h"

#include "base/Failure.h"
#include "forms/CCommonDialog.h"
#include "tallybook/cli/ExitStatus.h"
#include "tallybook/cli/Terminal.h"

namespace tallybook::cli {

namespace {

// The longest path that Linux takes (limits.h, PATH_MAX, without the byte that ends it).
constexpr Long kLongestPath = 4095;

}  // namespace

void AddFile(CommandTable& command, Text& file, const Text& what) {
  AddText(command, "FILE", file, "", what + "; asked for on a terminal where it is left out").As(ArgumentKind::kFile);
}

void NeedFileOrTerminal(const Text& given) {
  if (given.empty() && !CanAsk()) throw WrongUse("FILE is required where there is no terminal to ask for it");
}

std::optional<Text> FileOrAnswer(const Text& given, const FileQuestion& question) {
  if (!given.empty()) return given;
  CCommonDialog dialog;
  dialog.SetDialogTitle(question.title);
  dialog.SetFilter(question.filter + "|All Files|*.*");
  dialog.SetDefaultExt(question.extension);
  dialog.SetFilename(question.proposed_name);
  dialog.SetMaxFileSize(kLongestPath);
  dialog.SetFlags(kExplorerStyle | kPathMustExist | (question.save ? kPromptToOverwrite : kFileMustExist));
  question.save ? dialog.ShowSave() : dialog.ShowOpen();
  return dialog.APIReturn() == 0 ? std::nullopt : std::optional(dialog.Filename());
}

}  // namespace tallybook::cli
