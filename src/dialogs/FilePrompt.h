// What the dialogs that ask for a file name have in common: the rule that limits browsing, and one showing of the
// system's file dialog. One thread.
#pragma once

#include <optional>

#include "base/Types.h"
#include "forms/CCommonDialog.h"

namespace tallybook {

class Form;
class Masterfile;

// The filter and extension of a dialog that offers every file.
inline constexpr const char* kAllFilesFilter = "(All Files) *.*|*.*";
inline constexpr const char* kAllFilesExtension = "*.*";

// True where the user may not browse freely: the application limits file browsing and the user lacks the right "A".
[[nodiscard]] bool IsBrowsingLimited(Masterfile& masterfile);

struct FilePrompt {
  bool save = false;  // a file to be written, otherwise one to be opened
  Text title;
  Text start_folder;
  Text proposed_name;  // without its folder
  Text filter;         // pairs of text and pattern, separated by "|"
  Text default_extension;
  Long flags = kHideReadOnly | kPathMustExist | kLongNames;  // beside the modern browser's
  bool full_browsing = true;                                 // asks for the modern browser
};

// Shows the file dialog over a loaded form, with the normal pointer, and gives the path chosen; nothing where the user
// cancelled or the dialog failed. CCommonDialog has told of a failure then.
[[nodiscard]] std::optional<Text> AskForFile(const Form& owner, const FilePrompt& prompt);

// A name without its folder part, as FilePath tells it.
[[nodiscard]] Text NameInFolder(const Text& path);

}  // namespace tallybook
