#include "dialogs/dlgExport.h"

#include <algorithm>
#include <utility>

#include "base/CodePage.h"
#include "base/Narrow.h"
#include "base/Texts.h"
#include "dialogs/FilePrompt.h"
#include "forms/modAllUI.h"
#include "forms/modBrowse.h"
#include "platform/Platform.h"
#include "support/Utility.h"
#include "support/WinAPI.h"

namespace tallybook {

namespace {

constexpr const char* kUsualType = "XLSX";
// A folder of up to so many characters is a drive's root, whose separator belongs to it.
constexpr Long kDriveRootWidth = 3;

// Kinds 1 and 2 are not offered.
bool IsOffered(const FormatDescription& format) {
  return format.kind <= 0 || format.kind > 2;
}

Text WithoutLastCharacter(const Text& text) {
  return PadRight(text, ' ', CharacterCount(text) - 1);
}

// The folder that the file picker starts in.
Text StartFolder(const Text& path) {
  Text folder = FilePath(path);
  if (CharacterCount(folder) > kDriveRootWidth) folder = WithoutLastCharacter(folder);
  if (folder.empty() && ThePlatform().shell != nullptr) folder = CurrentFolder();
  return AddBackslash(folder);
}

}  // namespace

dlgExport::dlgExport() : Form("dlgExport") {
  SetCaption("Export Options");
  Combo1.SetCaption("&Type of Export:");
  Text1.SetCaption("&File Name:");
  Command2.SetHint("Browse for File");
  chkNonZero.SetCaption("Do not output records with zero values. ");
  chkNonZero.SetVisible(false);
  SaveButtons1.SetCaption("&Export");
  Listen();
}

void dlgExport::Listen() {
  Combo1.Click.Connect([this] { Combo1_Click(); });
  Command2.Click.Connect([this] { mode_ == Mode::kFile ? BrowseForFile() : BrowseForFolder(); });
  SaveButtons1.Click.Connect([this](Integer button) { SaveButtons1_Click(button); });
  OnCloseBox([this] { SaveButtons1_Click(SaveButtons::kCancelButton); });
  OnF1([] {});
}

bool dlgExport::GetFileName(Long owner, std::shared_ptr<DataExportObject> library, Text& export_type, Text& file_name,
                            Long& kind) {
  Open(Mode::kFile, owner, std::move(library), export_type);
  Text1.SetCaption("&File Name:");
  Text1.SetLocked(false);
  // The point in front of the old extension stays.
  const Text stem = file_name.substr(0, file_name.size() - FileExtension(file_name).size());
  Text1.SetText(stem + SelectedExtension());
  if (!Show()) return false;
  file_name = Text1.Text();
  if (Combo1.ListIndex() == kNoEntry) return true;
  export_type = SelectedType().code;
  kind = SelectedType().kind;
  return true;
}

bool dlgExport::GetFolder(Long owner, std::shared_ptr<DataExportObject> library, Text& export_type, Text& extension,
                          Text& folder, const Text& label_text, const Text& caption, bool& flag) {
  Open(Mode::kFolder, owner, std::move(library), export_type);
  SetCaption(caption);
  Text1.SetCaption("&Folder:");
  Label2.SetCaption(label_text);
  Text1.SetText(folder);
  Text1.SetLocked(true);
  if (!Show()) return false;
  folder = Text1.Text();
  if (Combo1.ListIndex() == kNoEntry) return true;
  export_type = SelectedType().code;
  extension = SelectedExtension();
  flag = SelectedType().flag;
  return true;
}

void dlgExport::Open(Mode mode, Long owner, std::shared_ptr<DataExportObject> library, Text& export_type) {
  owner_ = owner;
  library_ = std::move(library);
  mode_ = mode;
  LoadExportTypes(export_type);
}

void dlgExport::ReadTypes() {
  types_.clear();
  Combo1.Clear();
  const Long formats = library_->NumFormats();
  for (Long position = 1; position <= formats; ++position) {
    FormatDescription format;
    if (!library_->FormatInfo(ToInteger(position), format) || !IsOffered(format)) continue;
    types_.push_back({.description = CutAtNull(format.name),
                      .extension = CutAtNull(format.extension),
                      .code = CutAtNull(format.code),
                      .kind = format.kind,
                      .flag = format.capability != 0});
    Combo1.AddItem(types_.back().description + " (" + types_.back().extension + ")", static_cast<Long>(types_.size()));
  }
}

void dlgExport::LoadExportTypes(Text& export_type) {
  ReadTypes();
  if (export_type.empty()) export_type = kUsualType;
  SelectType(export_type);
  if (Combo1.ListIndex() == kNoEntry && Combo1.ListCount() > 0) Combo1.SetListIndex(0);
}

void dlgExport::SelectType(const Text& code) {
  const auto found = std::ranges::find(types_, code, &Type::code);
  if (found == types_.end()) return;
  // The list's own search, meant: an earlier entry that begins with the same words is selected instead.
  Combo1.SetListIndex(FindInList(Combo1, found->description + " (" + found->extension + ")"));
}

bool dlgExport::Show() {
  cancelled_ = true;  // where the window cannot be shown, nobody presses a button
  ShowLikeModal(*this, owner_);
  library_.reset();
  return !cancelled_;
}

const dlgExport::Type& dlgExport::SelectedType() const {
  static const Type no_type;
  const Long place = ComboItemTag(Combo1);
  return place == 0 ? no_type : types_.at(static_cast<std::size_t>(place - 1));
}

Text dlgExport::SelectedExtension() const {
  return LowerCase(SelectedType().extension);
}

void dlgExport::Combo1_Click() {
  const Text& name = Text1.Text();
  if (mode_ != Mode::kFile || name.empty()) return;
  // One character more than the extension goes, which is its point. A name without a point loses its last character:
  // meant.
  const Long kept = CharacterCount(name) - CharacterCount(FileExtension(name)) - 1;
  Text1.SetText(PadRight(name, ' ', kept) + "." + SelectedExtension());
}

void dlgExport::BrowseForFile() {
  cancelled_ = false;
  const Text extension = SelectedExtension();
  FilePrompt prompt;
  prompt.save = true;
  prompt.title = "Name an Output File";
  prompt.start_folder = StartFolder(Text1.Text());
  prompt.proposed_name = NameInFolder(Text1.Text());
  prompt.filter = SelectedType().description + " (*." + extension + ")|*." + extension + "|All Files (*.*)|*.*";
  prompt.default_extension = extension;
  prompt.flags |= kPromptToCreate;
  prompt.full_browsing = full_browsing_;
  const auto chosen = AskForFile(*this, prompt);
  cancelled_ = !chosen.has_value();
  if (chosen && !chosen->empty()) Text1.SetText(*chosen);
}

void dlgExport::BrowseForFolder() {
  constexpr bool kWithEdit = true;
  const Text folder = tallybook::BrowseForFolder(owner_, "Folder for Export File", "", !kWithEdit);
  if (!folder.empty()) Text1.SetText(folder);
}

void dlgExport::SaveButtons1_Click(Integer button) {
  cancelled_ = button == SaveButtons::kCancelButton;
  HideLikeModal(*this);
}

}  // namespace tallybook
