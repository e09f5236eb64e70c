#include "forms/modBrowse.h"

#include <string>

#include "base/CodePage.h"
#include "base/Failure.h"
#include "platform/FileDialogs.h"
#include "platform/Platform.h"
#include "platform/Shell.h"
#include "support/WinAPI.h"

namespace tallybook {

namespace {

Text AskForFolder(FolderDialogRequest& request) {
  FileDialogs* const dialogs = ThePlatform().file_dialogs;
  if (dialogs == nullptr) throw Failure(FailureNumber::kFeatureUnavailable, "This platform has no standard dialogs");
  Text folder = CutAtNull(dialogs->ShowFolder(request));
  if (CharacterCount(folder) <= kLongestFolder) return folder;
  throw Failure(FailureNumber::kPathOrAccess, "The chosen folder has " + std::to_string(CharacterCount(folder)) +
                                                  " characters, " + std::to_string(kLongestFolder) +
                                                  " at most can be taken: " + folder);
}

}  // namespace

Text BrowseForFolder(Long owner, const Text& title, const Text& initial, bool show_edit) {
  FolderDialogRequest request;
  request.owner = owner;
  request.title = title;
  request.initial_folder = initial;
  request.flags = show_edit ? kBrowseFlagsWithEdit : kBrowseFlags;
  Shell* const shell = ThePlatform().shell;
  if (shell == nullptr) return AskForFolder(request);
  const Text in_force = shell->CurrentFolder();
  try {
    Text folder = AskForFolder(request);
    shell->SetCurrentFolder(in_force);
    return folder;
  } catch (...) {
    shell->SetCurrentFolder(in_force);
    throw;
  }
}

}  // namespace tallybook
