#include "tests/support/ScriptedDialogs.h"

#include <gtest/gtest.h>
#include <utility>

#include "support/Utility.h"

namespace tallybook::testing {

namespace {

template <typename Request>
Long AnswerBy(const std::function<Long(Request&)>& answer, Request& request, const char* dialog) {
  if (answer) return answer(request);
  ADD_FAILURE() << "No answer is given for the " << dialog << " dialog";
  return 0;
}

}  // namespace

Long ScriptedShell::Open(const Text& file_name, Integer state) {
  opened_.push_back(file_name);
  opened_states_.push_back(state);
  if (answers_.empty()) return kOpened;
  const Long answer = answers_.front();
  answers_.pop_front();
  return answer;
}

void ScriptedShell::Run(const Text& program, const Text& arguments, const Text& folder) {
  runs_.push_back({program, arguments, folder});
}

void ScriptedShell::SetCurrentFolder(const Text& path) {
  if (before_set_folder) before_set_folder(path);
  current_folder = path;
}

void ScriptedFileDialogs::Choose(const Text& path, Long filter_index) {
  Answer([=](FileDialogRequest& request) {
    request.file_name = path;
    request.file_title = FileBaseName(path);
    if (filter_index != 0) request.filter_index = filter_index;
    return 1;
  });
}

void ScriptedFileDialogs::Cancel(Long extended_error) {
  Answer([=](FileDialogRequest& request) {
    request.extended_error = extended_error;
    return 0;
  });
}

void ScriptedFileDialogs::Fail(FailureNumber number, const Text& description) {
  Answer([=](FileDialogRequest& /*request*/) -> Long { throw Failure(number, description); });
}

Long ScriptedFileDialogs::TakeAnswer(FileDialogRequest& request) {
  shell_.current_folder = kMovedFolder;
  if (answers_.empty()) {
    ADD_FAILURE() << "No answer is left for the dialog \"" << request.title << "\" (proposed: \"" << request.file_name
                  << "\")";
    return 0;
  }
  const auto answer = std::move(answers_.front());
  answers_.pop_front();
  return answer(request);
}

Long ScriptedFileDialogs::ShowFile(FileDialogRequest& request) {
  requests_.push_back(request);
  return TakeAnswer(request);
}

Text ScriptedFileDialogs::ShowFolder(FolderDialogRequest& request) {
  folder_requests_.push_back(request);
  FileDialogRequest asked;
  asked.title = request.title;
  return TakeAnswer(asked) == 0 ? Text() : asked.file_name;
}

Long ScriptedFileDialogs::ShowColor(ColorDialogRequest& request) {
  return AnswerBy(on_color, request, "colour");
}

Long ScriptedFileDialogs::ShowFont(FontDialogRequest& request) {
  return AnswerBy(on_font, request, "font");
}

Long ScriptedFileDialogs::ShowPrinter(PrinterDialogRequest& request) {
  return AnswerBy(on_printer, request, "printer");
}

void ScriptedFileDialogs::ShowHelp(Long window, const Text& help_file, Long command, Long topic) {
  help_shown_.push_back({window, help_file, command, topic});
}

}  // namespace tallybook::testing
