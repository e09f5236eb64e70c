#include "dialogs/frmImport.h"

#include "base/CodePage.h"
#include "base/Narrow.h"
#include "base/Texts.h"
#include "dialogs/FilePrompt.h"
#include "forms/modAllUI.h"
#include "platform/MessageBoxes.h"
#include "support/Utility.h"
#include "support/WinAPI.h"

namespace tallybook {

namespace {

constexpr Long kComparedCharacters = 3;

Text WithExtension(const Text& name, const Text& extension) {
  const bool is_short = CharacterCount(name) <= kComparedCharacters;
  const Text end = is_short ? name : PadLeft(name, ' ', kComparedCharacters);
  return extension.empty() || UpperCase(end) == extension ? name : name + "." + extension;
}

}  // namespace

frmImport::frmImport() : Form("frmImport") {
  SetCaption("Import File");
  Label1[1].SetCaption("Import &Filename:");
  Command1.SetHint("Browse for File");
  NumberBox1[0].SetCaption("Rows to skip");
  NumberBox1[1].SetCaption("Fields to Skip");
  constexpr bool kWithSpinner = true;
  for (NumberBox& box : NumberBox1) box.Configure(0, 100, 1, 0, kWithSpinner);
  chkClear.SetCaption("Clear existing records before importing");
  SaveButtons1.SetCaption("&Import");
  ShowOptions();
  Listen();
}

void frmImport::Listen() {
  Command1.Click.Connect([this] { Command1_Click(); });
  SaveButtons1.Click.Connect([this](Integer button) { SaveButtons1_Click(button); });
  OnCloseBox([this] { SaveButtons1_Click(SaveButtons::kCancelButton); });
  Activate.Connect([this] {
    ShowOptions();
    FocusName();
  });
  OnF1([] {});
}

void frmImport::SetPromptforSkips(bool wanted) {
  prompt_for_skips_ = wanted;
  ShowOptions();
}

void frmImport::SetPromptforOverwrite(bool wanted) {
  prompt_for_overwrite_ = wanted;
  ShowOptions();
}

// Derives the options' looks from what is asked for.
void frmImport::ShowOptions() {
  const bool any = prompt_for_skips_ || prompt_for_overwrite_;
  for (NumberBox& box : NumberBox1) {
    box.SetEnabled(prompt_for_skips_);
    box.SetVisible(any);
  }
  chkClear.SetEnabled(prompt_for_overwrite_);
  chkClear.SetVisible(any);
}

Integer frmImport::RowstoSkip() const {
  return RoundToInteger(NumberBox1[0].Value());
}

Integer frmImport::FieldstoSkip() const {
  return RoundToInteger(NumberBox1[1].Value());
}

bool frmImport::ImportFileName(Long owner, Text& file_name, const Text& prompt, const Text& caption,
                               const Text& extension) {
  Text name = file_name;
  while (AskFileName(Mode::kImport, owner, name, prompt, caption, extension)) {
    if (FileExists(name)) {
      file_name = name;
      return true;
    }
    ShowMessage("File: " + name + " does not exist.", kInformationIcon, "");
  }
  return false;
}

bool frmImport::ExportFileName(Long owner, Text& file_name, const Text& prompt, const Text& caption,
                               const Text& extension) {
  return AskFileName(Mode::kExport, owner, file_name, prompt, caption, extension);
}

bool frmImport::AskFileName(Mode mode, Long owner, Text& file_name, const Text& prompt, const Text& caption,
                            const Text& extension) {
  mode_ = mode;
  Label1[0].SetCaption(prompt);
  SetCaption(caption);
  Text1.SetText(TrimRight(file_name));
  const Text word = caption.substr(0, caption.find(' '));
  SaveButtons1.SetCaption("&" + word);
  Label1[1].SetCaption(word + " &Filename:");
  extension_ = UpperCase(extension);
  SetCancelEnabled(true);
  for (;;) {
    cancelled_ = true;  // where the window cannot be shown, nobody presses a button
    ShowLikeModal(*this, owner);
    if (cancelled_) return false;
    const Text name = NamedFile();
    if (!name.empty()) {
      file_name = name;
      return true;
    }
    ShowMessage("Filename cannot be blank.", kExclamationIcon, "");
  }
}

Text frmImport::NamedFile() const {
  const Text name = TrimRight(Text1.Text());
  return name.empty() ? name : WithExtension(name, extension_);
}

void frmImport::Command1_Click() {
  const Text name = TrimRight(Text1.Text());
  FilePrompt prompt;
  prompt.save = mode_ == Mode::kExport;
  prompt.title = Caption();
  prompt.start_folder = FilePath(name);
  prompt.proposed_name = NameInFolder(name);
  prompt.filter =
      extension_.empty() ? kAllFilesFilter : "(" + extension_ + " Files) *." + extension_ + "|*." + extension_;
  prompt.default_extension = extension_.empty() ? kAllFilesExtension : "*." + extension_;
  prompt.full_browsing = full_browsing_;
  if (const auto chosen = AskForFile(*this, prompt)) Text1.SetText(*chosen);
}

void frmImport::SaveButtons1_Click(Integer button) {
  cancelled_ = button != SaveButtons::kMainButton;
  FocusName();
  HideLikeModal(*this);
}

// Where the box cannot take the focus it stays where it is: meant, nothing depends on it.
void frmImport::FocusName() {
  if (Text1.IsReachable()) Text1.SetFocus();
}

}  // namespace tallybook
