// The system's dialogs and its shell for tests: answers come from lists, and what was asked is kept. A dialog that no
// answer is left for fails the test with its title and counts as cancelled. As the system's own do, every file and
// folder dialog leaves another folder in force than it found: who shows one has to put it back.
//
//   platform.file_dialogs.Choose("/out/a.txt", 2);
//   platform.file_dialogs.Cancel();
//   platform.shell.AnswerOpen({kNoAssociation});
#pragma once

#include <deque>
#include <functional>
#include <initializer_list>
#include <vector>

#include "base/Failure.h"
#include "platform/FileDialogs.h"
#include "platform/Shell.h"

namespace tallybook::testing {

class ScriptedShell : public Shell {
 public:
  struct Started {
    Text program;
    Text arguments;
    Text folder;
    bool operator==(const Started&) const = default;
  };
  static constexpr Long kOpened = 42;

  Text system_folder = "C:\\WINDOWS\\system32";
  Text windows_folder = "C:\\WINDOWS";
  Text current_folder = "/here/";
  Long platform_id = 2;
  // Called before the folder in force changes; may raise a failure.
  std::function<void(const Text& path)> before_set_folder;

  // Appends to the answers to Open, used in turn; then kOpened.
  void AnswerOpen(std::initializer_list<Long> answers) { answers_.insert(answers_.end(), answers); }
  [[nodiscard]] const std::vector<Text>& Opened() const { return opened_; }
  // The state of the application's window that each of them was opened with.
  [[nodiscard]] const std::vector<Integer>& OpenedStates() const { return opened_states_; }
  [[nodiscard]] const std::vector<Started>& Runs() const { return runs_; }

  [[nodiscard]] Long Open(const Text& file_name, Integer state) override;
  void Run(const Text& program, const Text& arguments, const Text& folder) override;
  [[nodiscard]] Text SystemFolder() override { return system_folder; }
  [[nodiscard]] Text WindowsFolder() override { return windows_folder; }
  [[nodiscard]] Text CurrentFolder() override { return current_folder; }
  void SetCurrentFolder(const Text& path) override;
  [[nodiscard]] Long PlatformId() override { return platform_id; }

 private:
  std::deque<Long> answers_;
  std::vector<Text> opened_;
  std::vector<Integer> opened_states_;
  std::vector<Started> runs_;
};

class ScriptedFileDialogs : public FileDialogs {
 public:
  struct Help {
    Long window = 0;
    Text file;
    Long command = 0;
    Long topic = 0;
    bool operator==(const Help&) const = default;
  };
  static constexpr const char* kMovedFolder = "/moved/by/the/dialog/";

  explicit ScriptedFileDialogs(ScriptedShell& shell) : shell_(shell) {}

  // Append an answer for the next file or folder dialog: a path, with the filter that it was chosen under (0 leaves it
  // as it is); a cancel, or with an extended error a failure of the system's; a failure that is raised; or whatever the
  // test makes of the request.
  void Choose(const Text& path, Long filter_index = 0);
  void Cancel(Long extended_error = 0);
  void Fail(FailureNumber number, const Text& description);
  void Answer(std::function<Long(FileDialogRequest&)> answer) { answers_.push_back(std::move(answer)); }
  // Likewise for the others. A test that gives none gets the failure of a dialog without an answer.
  std::function<Long(ColorDialogRequest&)> on_color;
  std::function<Long(FontDialogRequest&)> on_font;
  std::function<Long(PrinterDialogRequest&)> on_printer;

  // What was asked, before it was answered.
  [[nodiscard]] const std::vector<FileDialogRequest>& Requests() const { return requests_; }
  [[nodiscard]] const std::vector<FolderDialogRequest>& FolderRequests() const { return folder_requests_; }
  [[nodiscard]] const std::vector<Help>& HelpShown() const { return help_shown_; }
  [[nodiscard]] std::size_t AnswersLeft() const { return answers_.size(); }

  [[nodiscard]] Long ShowFile(FileDialogRequest& request) override;
  [[nodiscard]] Long ShowColor(ColorDialogRequest& request) override;
  [[nodiscard]] Long ShowFont(FontDialogRequest& request) override;
  [[nodiscard]] Long ShowPrinter(PrinterDialogRequest& request) override;
  [[nodiscard]] Text ShowFolder(FolderDialogRequest& request) override;
  void ShowHelp(Long window, const Text& help_file, Long command, Long topic) override;

 private:
  ScriptedShell& shell_;
  std::deque<std::function<Long(FileDialogRequest&)>> answers_;
  std::vector<FileDialogRequest> requests_;
  std::vector<FolderDialogRequest> folder_requests_;
  std::vector<Help> help_shown_;

  [[nodiscard]] Long TakeAnswer(FileDialogRequest& request);
};

}  // namespace tallybook::testing
