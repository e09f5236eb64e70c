#include "dialogs/DefinitionBrowser.h"

#include <exception>
#include <string>

#include "base/Failure.h"
#include "dialogs/DefinitionReports.h"
#include "dialogs/FormInstances.h"
#include "dialogs/QdxFiles.h"
#include "forms/BusyPointer.h"
#include "forms/modAllUI.h"
#include "host/HostApp.h"
#include "host/HostFactory.h"
#include "host/Masterfile.h"
#include "host/Printer.h"
#include "platform/Platform.h"
#include "platform/Screen.h"
#include "support/HostMessages.h"
#include "support/Utility.h"

namespace tallybook {

namespace {

constexpr Integer kImportButton = 1;
constexpr Integer kImportAllButton = 2;
constexpr Integer kRefreshButton = 3;

// The database's progress display, from its opening to the end of its life.
class Progress {
 public:
  Progress(Masterfile& masterfile, const Text& title) : masterfile_(masterfile) { masterfile_.BeginProgress(title); }
  ~Progress() {
    try {
      masterfile_.EndProgress();
    } catch (...) {
      return;  // meant: what failed before is what is told
    }
  }
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

 private:
  Masterfile& masterfile_;
};

}  // namespace

DefinitionBrowser::DefinitionBrowser(HostFactory& factory, Masterfile& masterfile)
    : factory_(factory), masterfile_(masterfile), exchange_(factory) {}

// The forms go first: the editor and the import's confirmation hold what ends here.
DefinitionBrowser::~DefinitionBrowser() {
  TheForms().Editor.Release();
  TheForms().QDXImp.Release();
  if (window_) window_->SetEvents(nullptr);
}

DefinitionEditor& DefinitionBrowser::Editor() const {
  return *TheForms().Editor.IfThere();
}

void DefinitionBrowser::Refuse(const Text& text) const {
  tallybook::Refuse(masterfile_.App(), text);
}

// --- The window ------------------------------------------------------------------------------------------------------

void DefinitionBrowser::ShowLayoutBrowser(Long hwnd_owner, Integer data_type) {
  data_type_ = data_type;
  {
    const Progress loading(masterfile_, "Loading Import Module");
    window_ = factory_.NewEdtForm();
    accounts_ = masterfile_.NewAccountRecord();
    fields_ = masterfile_.NewFieldRecord();
    if (!exchange_.OpenDefinitions(masterfile_, data_type)) return;
    rows_ = std::make_unique<DefinitionRows>(*window_, exchange_);
    SetUpWindow();
  }
  ThePlatform().screen->SetPointer(Pointer::kDefault);
  window_->Show(hwnd_owner);
  exchange_.CloseDefinitions();
}

void DefinitionBrowser::SetUpWindow() {
  HostApp& app = masterfile_.App();
  DefinitionMeans means{.factory = factory_,
                        .masterfile = masterfile_,
                        .exchange = exchange_,
                        .accounts = *accounts_,
                        .fields = *fields_,
                        .rows = *rows_,
                        .list_window = window_->Hwnd()};
  DefinitionEditor& editor = TheForms().Editor.Get(means);
  editor.FillLists();
  window_->SetEvents(this);
  window_->SetTypeAheadDelay(app.TypeAheadDelay());
  window_->SetTitle(TitleWithSystem("QDX Import Layouts", masterfile_));
  rows_->AddColumns();
  window_->SetAllowChanges(masterfile_.AccessRight("A"));
  window_->SetActionButton(kImportButton, "Import QDX File");
  window_->SetActionButton(kImportAllButton, "Import ALL");
  window_->SetActionButton(kRefreshButton, "Refresh");
  window_->SetFontName(app.FontName());
  window_->SetFontSize(app.FontSize());
  window_->SetHelpFile(app.HelpFile());
  window_->SetHelpContext(editor.HelpContext());
  rows_->FillDefinitionList();
  ApplyHostFont(editor, app.FontName(), app.FontSize());
}

void DefinitionBrowser::ShowTotals(Text& text) {
  text = std::to_string(exchange_.NumRecs()) + " active of " + std::to_string(exchange_.MaxRecords()) + " maximum";
  window_->RefreshTotals();
}

void DefinitionBrowser::ShowHelp(Long topic) {
  ShowHelpTopic(masterfile_.App(), topic);
}

void DefinitionBrowser::NeedtoShutdown(bool& flag) {
  if (masterfile_.App().Finished()) flag = true;
}

// --- Imports ---------------------------------------------------------------------------------------------------------

void DefinitionBrowser::ActionButton(Integer button, Integer record) {
  if (record <= 0) {
    Refuse("You must Select or Add an QDX Layout before the File can be Imported.");
    return;
  }
  if (button == kRefreshButton) rows_->FillDefinitionList();
  if (button == kImportAllButton) ImportAll();
  if (button == kImportButton) ImportOne(record);
}

// The exchange object makes the report of a batch, and answers its events.
void DefinitionBrowser::ImportAll() {
  const BusyPointer busy;
  if (exchange_.ImportQDXFileEX(window_->Hwnd(), masterfile_, "ALL")) rows_->FillDefinitionList();
}

void DefinitionBrowser::ImportOne(Integer record) {
  if (CountMatchingFiles(exchange_.QdxFileName(record)) < 1) {
    Refuse("QDX File cannot be imported because it does not exist");
    return;
  }
  const BusyPointer busy;
  HandlePendingInput();
  exchange_.SetFile(record);
  HostApp& app = masterfile_.App();
  dlgQDXImp& dialog = TheForms().QDXImp.Get();
  ApplyHostFont(dialog, app.FontName(), app.FontSize());
  // That it says "Edit" is meant: the confirmation is titled as the editor is.
  dialog.SetCaption("Edit QDX Import Layout Number: " + std::to_string(exchange_.FileNum(record)));
  dialog.SetFields(exchange_);
  ShowLikeModal(dialog, window_->Hwnd());
  std::exception_ptr failed;
  try {
    if (!dialog.Cancelled()) RunImport(dialog);
  } catch (...) {
    failed = std::current_exception();
  }
  TheForms().QDXImp.Release();
  rows_->FillDefinitionList();
  if (failed) std::rethrow_exception(failed);
}

// The printer is gone when this returns.
void DefinitionBrowser::RunImport(const dlgQDXImp& dialog) {
  exchange_.SetMath(dialog.Math());
  DefinitionReports events(masterfile_, DefinitionReports::Kind::kImport);
  const auto printer = factory_.NewPrinter();
  printer->SetEvents(&events);
  if (!printer->BeginReport(window_->Hwnd(), "QDX Import Report")) return;
  const BusyPointer busy;
  // The report tells how it went.
  [[maybe_unused]] const bool imported = exchange_.ImportQDXFile(*printer);
  printer->EndReport();
}

// --- Changes ---------------------------------------------------------------------------------------------------------

void DefinitionBrowser::AddRec(Integer& record) {
  DefinitionEditor& editor = Editor();
  Text name;
  if (!editor.BrowseForQdxFile(name)) return;
  const BusyPointer busy;
  HandlePendingInput();
  // The number of the record that the window names, before a free one is chosen: meant.
  editor.SetCaption("Add QDX Import Layout Number: " + std::to_string(exchange_.FileNum(record)));
  record = exchange_.FirstAvailRec();
  if (record == 0)
    throw Failure(FailureNumber::kInvalidArgument, "There are " + std::to_string(exchange_.MaxRecords()) +
                                                       " exchange definitions already, and there can be no more");
  // Selected first, so that the title goes to the new definition and to no other.
  exchange_.SetFile(record);
  exchange_.InitFile();
  exchange_.SetDesc(record, "DataExchange #" + std::to_string(exchange_.FileNum(record)));
  rows_->AddDefinitionRow(record);
  exchange_.SetQdxFileName(record, name);
  if (!editor.LoadDefinitionIntoForm(record, true)) return;
  ShowLikeModal(editor, window_->Hwnd());
  if (editor.EditCancelled()) {
    rows_->RemoveDefinitionRow(record);
    ShowWhatWasSaved(record);
    return;
  }
  // The record of this session, also where the editor has gone on with a copy meanwhile: meant.
  editor.SaveDefinitionFromForm(record);
  if (exchange_.Add(record) == 0) return;
  rows_->ReplaceDefinitionRow(record);
  BackupQdxFile(exchange_, masterfile_);
}

void DefinitionBrowser::EditRec(Integer record) {
  constexpr const char* kNoFile = "Cannot edit the QDX Import Layout because the QDX File does not exist";
  constexpr bool kBackupOk = true;
  if (!exchange_.QDXFileExists(record, kBackupOk) && CountMatchingFiles(exchange_.QdxFileName(record)) == 0) {
    Refuse(kNoFile);
    return;
  }
  DefinitionEditor& editor = Editor();
  const BusyPointer busy;
  editor.SetCaption("Edit QDX Import Layout Number: " + std::to_string(exchange_.FileNum(record)));
  HandlePendingInput();
  if (!editor.LoadDefinitionIntoForm(record, false)) {
    Refuse(kNoFile);
    return;
  }
  HandlePendingInput();
  ShowLikeModal(editor, window_->Hwnd());
  if (editor.EditCancelled()) return;
  const Integer edited = exchange_.File();
  editor.SaveDefinitionFromForm(edited);
  if (!exchange_.Update(edited)) return;
  rows_->ReplaceDefinitionRow(edited);
  BackupQdxFile(exchange_, masterfile_);
}

// The menu may have written the definition, which nobody has counted: it is there, and so it is listed.
void DefinitionBrowser::ShowWhatWasSaved(Integer record) {
  if (record > exchange_.NumRecs() && FileExists(exchange_.Filename(record))) ReloadDefinitions();
}

void DefinitionBrowser::DeleteRec(Integer record) {
  const Integer number = exchange_.FileNum(record);
  if (!Confirm(masterfile_.App(), "Ok to Delete Exchange Definition # " + std::to_string(number))) return;
  if (!exchange_.Delete(record)) return;
  window_->RemoveRow(DefinitionRows::KeyOf(number));
  ReloadDefinitions();
}

void DefinitionBrowser::ReloadDefinitions() {
  const Text selected = exchange_.Filename();
  if (!exchange_.OpenDefinitions(masterfile_, data_type_)) return;
  exchange_.SetFile(PositionOf(selected));
  rows_->FillDefinitionList();
}

// The position of a definition's file, 0 where it is not listed.
Integer DefinitionBrowser::PositionOf(const Text& filename) const {
  for (Integer record = exchange_.NumRecs(); record > 0; --record) {
    if (exchange_.Filename(record) == filename) return record;
  }
  return 0;
}

void DefinitionBrowser::EditSave(bool& result) {
  const BusyPointer busy;
  HandlePendingInput();
  result = exchange_.Save();
  BackupQdxFile(exchange_, masterfile_);
}

}  // namespace tallybook
