#include "dialogs/FilePrompt.h"

#include "base/Failure.h"
#include "forms/Form.h"
#include "host/HostApp.h"
#include "host/Masterfile.h"
#include "platform/Platform.h"
#include "platform/Screen.h"
#include "support/Utility.h"

namespace tallybook {

bool IsBrowsingLimited(Masterfile& masterfile) {
  return masterfile.App().UnrestrictedFiles() == 0 && !masterfile.AccessRight("A");
}

std::optional<Text> AskForFile(const Form& owner, const FilePrompt& prompt) {
  CCommonDialog dialog;
  dialog.SetHWnd(owner.Hwnd());
  dialog.SetInitDir(prompt.start_folder);
  dialog.SetFilename(prompt.proposed_name);
  dialog.SetCancelError(true);
  dialog.SetFlags(prompt.flags | (prompt.full_browsing ? kExplorerStyle : 0));
  dialog.SetFilter(prompt.filter);
  dialog.SetDefaultExt(prompt.default_extension);
  dialog.SetDialogTitle(prompt.title);
  ThePlatform().screen->SetPointer(Pointer::kDefault);
  try {
    prompt.save ? dialog.ShowSave() : dialog.ShowOpen();
  } catch (const Failure& failure) {
    if (failure.Number() != FailureNumber::kDialogCancelled) throw;
    return std::nullopt;
  }
  return dialog.Filename();
}

Text NameInFolder(const Text& path) {
  return path.substr(FilePath(path).size());
}

}  // namespace tallybook
