#include "tallybook/cli/KnownFiles.h"

#include "base/Failure.h"
#include "platform/MessageBoxes.h"
#include "tallybook/cli/Lines.h"

namespace tallybook::cli {

void AddAgain(CommandTable& command, bool& again) {
  AddFlag(command, "--again", again, "Import files that stand in the book's history, which --yes does not")
      .Heading(kQuestions);
}

KnownFiles::KnownFiles(Session& session, engine::Book& book, bool again) : session_(session) {
  if (!again) history_.emplace(book);
}

bool KnownFiles::MayImport(const Text& path, const application::EntryFacts& way, bool may_ask) {
  if (!history_) return true;
  const auto earlier = history_->Find(path, PlaceOf(session_, path), way);
  if (!earlier) {
    history_->Expect(path, PlaceOf(session_, path), way);
    return true;
  }
  const Text told = application::EarlierImportText(path, *earlier);
  if (may_ask &&
      session_.AskUser(told + ".\r\n\r\nImport it again?", kYesNo + kQuestionIcon + kSecondButtonDefault) == kYes) {
    return true;
  }
  session_.TellStop({.words = told + "; it is left alone, --again imports it"});
  return false;
}

Text PlaceOf(Session& session, const Text& path) {
  return session.Files().PlaceOf(path).value_or(path);
}

void SaveRecord(application::ImportRecorder& recorder) {
  try {
    recorder.Save();
  } catch (...) {
    Warn("the journal does not keep which files were read: " + CurrentFailure().Description());
  }
}

}  // namespace tallybook::cli
