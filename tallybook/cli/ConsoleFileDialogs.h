// The system's file dialogs on a terminal: they ask for a name to be typed. One thread.
//
//   Export Data to File
//     Files:  CSV (*.csv); All Files (*.*)
//     Folder: /home/ann/books
//     File name, = for north.csv [Cancel]?
//
// Relative names count from the folder that is shown. An empty line, the end of the input and Ctrl-C cancel, as they
// take the refusing button of a message box. "=" takes the proposed name. A name with `*` or `?` lists the files that
// match; the name of a folder makes that the folder that names count from; then, and where a name will not do, the
// dialog asks again.
//
// A dialog counts as a question with OK and Cancel: before anybody is asked the next of the given answers is taken, or
// OK with `yes`, or Cancel where there is no terminal (tallybook/cli/ConsoleMessageBoxes.h). OK takes the proposed
// name, and where there is none or it will not do, that is told and the dialog is cancelled.
#pragma once

#include <functional>
#include <optional>

#include "platform/FileDialogs.h"
#include "tallybook/cli/ConsoleMessageBoxes.h"
#include "tallybook/cli/ConsoleProgress.h"

namespace tallybook::cli {

class ConsoleFileDialogs : public FileDialogs {
 public:
  // Both must outlive the object. The progress line is taken off the screen before a dialog asks.
  ConsoleFileDialogs(ConsoleMessageBoxes& boxes, ConsoleProgress& progress) : boxes_(boxes), progress_(progress) {}

  // Gives 1 with the whole path in `file_name` and its last part in `file_title`, otherwise 0 with both untouched.
  //   flags    honoured: kPathMustExist, kFileMustExist, kPromptToOverwrite (when saving) and kPromptToCreate, which
  //            ask in a message box, and kSeveralFiles
  //   several  names in one folder, separated by blanks, in double quotes where they hold some themselves; the answer
  //            is the folder and the names, ended by zero characters, in the old style separated by blanks
  //   extension  `default_extension` goes onto a name without one, when opening only where there is no file of the bare
  //            name. A leading "*." or "." is taken off it; "*.*" and the like are none
  //   filter_index stays: every file may be named, whatever the filters
  [[nodiscard]] Long ShowFile(FileDialogRequest& request) override;
  // The folder must exist; the one proposed is `initial_folder`, or the one in force.
  [[nodiscard]] Text ShowFolder(FolderDialogRequest& request) override;

  // Failure 73: a terminal has none of these.
  [[nodiscard]] Long ShowColor(ColorDialogRequest& request) override;
  [[nodiscard]] Long ShowFont(FontDialogRequest& request) override;
  [[nodiscard]] Long ShowPrinter(PrinterDialogRequest& request) override;
  void ShowHelp(Long window, const Text& help_file, Long command, Long topic) override;

 private:
  struct Question {
    Text title;
    Text about;   // below the title, lines that end in "\r\n"
    Text wanted;  // what is to be typed: "File name"
    Text proposal;
  };
  enum class Outcome { kTaken, kCancelled, kNotTaken };
  // Takes a name (nothing), or says why not; an empty text where that was told already.
  using Taker = std::function<std::optional<Text>(const Text& name)>;

  [[nodiscard]] Outcome Ask(const Question& question, const Taker& take);
  [[nodiscard]] static Outcome AskOnTerminal(const Question& question, const Taker& take);

  void Note(const Question& question, Outcome outcome, const Text& path);

  ConsoleMessageBoxes& boxes_;
  ConsoleProgress& progress_;
};

}  // namespace tallybook::cli
