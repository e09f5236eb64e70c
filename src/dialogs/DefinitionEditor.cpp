#include "dialogs/DefinitionEditor.h"

#include <cstdlib>
#include <limits>
#include <string>
#include <utility>

#include "base/Narrow.h"
#include "base/Texts.h"
#include "dialogs/DefinitionControls.h"
#include "dialogs/DefinitionReports.h"
#include "dialogs/DefinitionRows.h"
#include "dialogs/FilePrompt.h"
#include "dialogs/FormInstances.h"
#include "dialogs/LayoutListing.h"
#include "dialogs/QdxFiles.h"
#include "exchange/CDataExchange.h"
#include "forms/BusyPointer.h"
#include "forms/WheelScroll.h"
#include "forms/modAllUI.h"
#include "host/AccountRecord.h"
#include "host/FieldRecord.h"
#include "host/HostApp.h"
#include "host/HostFactory.h"
#include "host/HostLog.h"
#include "host/Masterfile.h"
#include "host/Printer.h"
#include "platform/MessageBoxes.h"
#include "platform/Platform.h"
#include "platform/Screen.h"
#include "qdx/HeaderRecord.h"
#include "support/HostMessages.h"
#include "support/Utility.h"
#include "support/WinAPI.h"

namespace tallybook {

namespace {

constexpr Integer kManuallyPosition = 0;
constexpr Integer kAllToOnePosition = 2;

// The form takes no acts of the user while this lives: files that are closed let input come in, and what it brings
// would find the work half done.
class Occupied {
 public:
  explicit Occupied(Form& form) : form_(form), enabled_(form.Enabled()) { form_.SetEnabled(false); }
  ~Occupied() { form_.SetEnabled(enabled_); }
  Occupied(const Occupied&) = delete;
  Occupied& operator=(const Occupied&) = delete;

 private:
  Form& form_;
  bool enabled_;
};

void Tell(const Failure& failure) {
  ShowMessage(failure.Description(), kExclamationIcon, "");
}

}  // namespace

// --- Building --------------------------------------------------------------------------------------------------------

DefinitionEditor::DefinitionEditor(const DefinitionMeans& means)
    : Form("frmDataExc"),
      grids_({.form = *this,
              .tabs = TabStrip1,
              .general_page = GeneralPage,
              .account_mode = Combo2,
              .field_mode = Combo3,
              .buttons = SaveButtons1,
              .tell = Tell}),
      means_(means) {
  WriteCaptions();
  FillModes();
  grids_.SetRecords(means_.accounts, means_.fields);
  grids_.SetTypeAheadDelay(means_.masterfile.App().TypeAheadDelay());
  for (Control* const control :
       std::initializer_list<Control*>{&Text2, &Command2, &QDXGrid, &Combo1, &Combo2, &Combo5, &Combo3})
    control->SetContainer(&GeneralPage);
  Listen();
}

void DefinitionEditor::WriteCaptions() {
  Text1.SetCaption("&Title:");
  TabStrip1.SetTabs({"&General", "&Accounts", "&Fields"});
  Text2.SetCaption("QDX Filename: ");
  Command2.SetHint("Browse for File ...");
  Combo1.SetCaption("When imported, the QDX file will be: ");
  Combo2.SetCaption("Match Accounts: ");
  Combo3.SetCaption("Match Datafields: ");
  Combo5.SetCaption(" Which Account:");
  Command1.SetCaption("&Print");
  SaveButtons1.SetCaption("&Save");
  const std::array captions = {"&Save changes", "Save &As New", "Print DataExchange &Layout", "&Close"};
  for (std::size_t i = 0; i < captions.size(); ++i) mnuFile.at(i).SetCaption(captions.at(i));
}

void DefinitionEditor::FillModes() {
  BuildHeaderGrid(QDXGrid);
  FillDispositions(Combo1);
  FillAccountModes(Combo2);
  FillFieldModes(Combo3);
  EnableReceivingAccount();
}

void DefinitionEditor::Listen() {
  for (TextBox* const box : {&Text1, &Text2}) box->Change.Connect([this] { Changes(); });
  for (ComboBox* const list : {&Combo1, &Combo2, &Combo3, &Combo5}) list->Click.Connect([this] { Changes(); });
  Combo2.Click.Connect([this] { EnableReceivingAccount(); });
  Command2.Click.Connect([this] { Guarded([this] { Command2_Click(); }); });
  Command1.Click.Connect([this] { Guarded([this] { PrintLayoutListing(); }); });
  for (MenuItem& entry : mnuFile)
    entry.Click.Connect([this, index = entry.Index()] { Guarded([this, index] { mnuFile_Click(index); }); });
  SaveButtons1.Click.Connect([this](Integer button) { Guarded([this, button] { SaveButtons1_Click(button); }); });
  OnCloseBox([this] { Guarded([this] { Leave(); }); });
  Loading.Connect([this] { wheel_.SetHwnd(Hwnd()); });
  Unloading.Connect([this] { wheel_.SetHwnd(0); });
  wheel_.MouseWheel.Connect([](Long window, Long delta, Long shift, Long /*buttons*/, Long /*x*/, Long /*y*/,
                               bool& /*cancel*/) { WheelMove(window, delta, shift); });
  OnF1([this] { Guarded([this] { ShowHelpTopic(means_.masterfile.App(), HelpContext()); }); });
}

template <typename Act>
void DefinitionEditor::Guarded(Act act) {
  try {
    act();
  } catch (...) {
    Tell(CurrentFailure());
  }
}

// --- The lists of the database ---------------------------------------------------------------------------------------

void DefinitionEditor::FillLists() {
  grids_.ClearEntries();
  Combo5.Clear();
  Combo5.AddItem(" (not defined)", 0);
  FillAccountLists();
  Combo5.SetListIndex(0);
  FillFieldList();
}

void DefinitionEditor::FillAccountLists() {
  Masterfile& masterfile = means_.masterfile;
  const Long count = masterfile.NumAccounts();
  Long left_out = 0;
  for (Long position = 1; position <= count; ++position) {
    masterfile.SetProgressFraction(static_cast<Single>(position) / static_cast<Single>(count) / 2);
    const Long number = masterfile.AccountNumber(ToInteger(position));
    if (number > std::numeric_limits<Integer>::max()) {
      ++left_out;
      continue;
    }
    means_.accounts.SetSelect(number);
    const Text code = TrimRight(means_.accounts.Code());
    grids_.AddAccountEntry(code, static_cast<Integer>(number));
    Combo5.AddItem(code + " - " + TrimRight(means_.accounts.Description()), number);
  }
  if (left_out == 0) return;
  masterfile.App().Log().LogError("Accounts left out of exchange definitions, as their numbers are above " +
                                      std::to_string(std::numeric_limits<Integer>::max()) + ": " +
                                      std::to_string(left_out) + " - frmDataExc",
                                  0, -1);
}

void DefinitionEditor::FillFieldList() {
  Masterfile& masterfile = means_.masterfile;
  const Long count = masterfile.NumFields();
  for (Long position = 1; position <= count; ++position) {
    masterfile.SetProgressFraction(0.5F + static_cast<Single>(position) / static_cast<Single>(count) / 2);
    const Integer place = ToInteger(position);
    grids_.AddFieldEntry(TrimRight(masterfile.FieldName(place)), masterfile.FieldNumber(place));
  }
}

// --- Loading ---------------------------------------------------------------------------------------------------------

bool DefinitionEditor::LoadDefinitionIntoForm(Integer record, bool is_new) {
  CDataExchange& exchange = means_.exchange;
  grids_.BeginLoad();
  exchange.SetFile(record);
  ShowSettings();
  const Text file = ResolveQdxFileName(exchange.QdxFileName());
  const Text header = exchange.QDXHeaderText(file);
  if (header.empty()) return false;
  ShowHeader(header);
  exchange.MatchAccountCodes();
  TakeStoredMatches();
  if (FileExists(exchange.QDXBackupName()) || FileExists(file)) grids_.Fill(SharedHeader());
  grids_.ShowFirstPage();
  grids_.SelectFirstEntries();
  grids_.EndLoad();
  edit_cancelled_ = true;
  SetCancelEnabled(is_new);
  means_.masterfile.EndProgress();
  return true;
}

// What the lists are set to counts as a change while it is set; the load takes that back at its end.
void DefinitionEditor::ShowSettings() {
  const CDataExchange& exchange = means_.exchange;
  Text1.SetText(exchange.Desc());
  SelectPosition(Combo1, exchange.Disp() - 1);
  SelectPosition(Combo2, std::abs(exchange.AcctMatch()));
  SelectPosition(Combo3, -exchange.FldMatch());
  SelectComboItem(Combo5, exchange.AcctAll());
  EnableReceivingAccount();
  Text2.SetText(exchange.QdxFileName());
}

void DefinitionEditor::TakeStoredMatches() {
  const CDataExchange& exchange = means_.exchange;
  for (Integer row = 1; row <= exchange.NumAccounts(); ++row)
    grids_.SetMatch(MatchPage::kAccounts, exchange.AccountFrom(row), exchange.AccountTo(row));
  for (Integer row = 1; row <= exchange.NumFields(); ++row)
    grids_.SetMatch(MatchPage::kFields, exchange.FieldFrom(row), exchange.FieldTo(row));
}

// Nothing of a file that was shown before stays.
void DefinitionEditor::ShowHeader(const Text& header) {
  BuildHeaderGrid(QDXGrid);
  ShowHeaderLines(QDXGrid, header);
}

// --- Saving ----------------------------------------------------------------------------------------------------------

void DefinitionEditor::SaveDefinitionFromForm(Integer record) {
  grids_.CommitOpenCells();
  SaveSettings(record);
  SaveAccountPairs();
  SaveFieldPairs();
}

// A list without a selection stands for a code that it does not know, which stays what it is.
void DefinitionEditor::SaveSettings(Integer record) {
  CDataExchange& exchange = means_.exchange;
  const auto position = [](const ComboBox& list) { return list.ListIndex(); };
  exchange.SetDesc(record, TrimRight(Text1.Text()));
  exchange.SetQdxFileName(record, Text2.Text());
  if (position(Combo1) != kNoEntry) exchange.SetDisp(static_cast<Integer>(position(Combo1) + 1));
  exchange.SetQdxFileName(kSelected, Text2.Text());
  if (position(Combo2) != kNoEntry) exchange.SetAcctMatch(static_cast<Integer>(-position(Combo2)));
  if (position(Combo3) != kNoEntry) exchange.SetFldMatch(static_cast<Integer>(-position(Combo3)));
  exchange.SetAcctAll(ToInteger(ComboItemTag(Combo5)));
}

void DefinitionEditor::SaveAccountPairs() {
  CDataExchange& exchange = means_.exchange;
  Integer count = 0;
  for (Integer position = 1; position <= SharedHeader().NumAccounts; ++position) {
    const Integer match = grids_.Match(MatchPage::kAccounts, position);
    if (match <= 0) continue;
    ++count;
    exchange.SetAccountFrom(count, position);
    exchange.SetAccountTo(count, match);
  }
  exchange.SetNumAccounts(count);
}

void DefinitionEditor::SaveFieldPairs() {
  CDataExchange& exchange = means_.exchange;
  Integer count = 0;
  for (Integer position = 1; position <= SharedHeader().NumFields; ++position) {
    const Integer number = SharedHeader().FieldNumbers(position);
    const Integer match = grids_.Match(MatchPage::kFields, number);
    if (match <= 0) continue;
    ++count;
    exchange.SetFieldFrom(count, number);
    exchange.SetFieldTo(count, match);
  }
  exchange.SetNumFields(count);
}

bool DefinitionEditor::TitleIsUnique(Text title, Integer record) const {
  const Integer found = means_.exchange.Find(title);
  if (found == record || found <= 0) return true;
  Refuse(means_.masterfile.App(), "QDX Title is not unique");
  return false;
}

// --- What the user does ----------------------------------------------------------------------------------------------

void DefinitionEditor::Changes() {
  SetCancelEnabled(true);
}

void DefinitionEditor::EnableReceivingAccount() {
  Combo5.SetEnabled(Combo2.ListIndex() == kAllToOnePosition);
}

bool DefinitionEditor::BrowseForQdxFile(Text& name) {
  name = means_.exchange.QdxFileName();
  HostApp& app = means_.masterfile.App();
  frmImport& prompt = TheForms().Import.Get();
  ApplyHostFont(prompt, app.FontName(), app.FontSize());
  if (IsBrowsingLimited(means_.masterfile)) prompt.SetFullBrowsing(false);
  Text extension = "QDX";
  return prompt.ImportFileName(means_.list_window, name, "Enter the name of the QDX File", "Open QDX File", extension);
}

// The grids stay as they were loaded, until the next load: meant.
void DefinitionEditor::Command2_Click() {
  Text name = Text2.Text();
  if (!BrowseForQdxFile(name)) return;
  const Occupied occupied(*this);
  Text2.SetText(name);
  ShowHeaderLines(QDXGrid, means_.exchange.QDXHeaderText(name));
  SetCancelEnabled(true);
}

void DefinitionEditor::mnuFile_Click(Integer index) {
  if (index == kMenuSave) SaveChanges();
  if (index == kMenuSaveAsNew) SaveAsNewDefinition();
  if (index == kMenuPrint) PrintLayoutListing();
  if (index == kMenuClose) Leave();
}

void DefinitionEditor::SaveChanges() {
  const Integer record = means_.exchange.File();
  const Occupied occupied(*this);
  const BusyPointer busy;
  ThePlatform().screen->RefreshWindow(Hwnd());
  SaveDefinitionFromForm(record);
  if (!means_.exchange.Update(record)) return;
  means_.rows.ReplaceDefinitionRow(record);
  SetCancelEnabled(false);
  BackupQdxFile(means_.exchange, means_.masterfile);
}

void DefinitionEditor::SaveAsNewDefinition() {
  CDataExchange& exchange = means_.exchange;
  const Integer target = exchange.FirstAvailRec();
  dlgRepSaveAs& question = TheForms().RepSaveAs.Get();
  question.Text1.SetText("Exchange Definition #" + std::to_string(exchange.FileNum(target)));
  PlayStyleSound(kQuestionIcon);
  ShowLikeModal(question, Hwnd());
  if (question.Cancelled()) return;
  const Occupied occupied(*this);
  const BusyPointer busy;
  SaveDefinitionFromForm(target);
  if (exchange.Add(target) != 0) {
    SetCancelEnabled(false);
    means_.rows.AddDefinitionRow(target);
  }
  SetCaption("Edit QDX Import Layout Number: " + std::to_string(exchange.FileNum(target)));
  if (LoadDefinitionIntoForm(target, false)) return;
  Refuse(means_.masterfile.App(), "Cannot edit the QDX Import Layout because the QDX File does not exist");
  HideLikeModal(*this);
}

void DefinitionEditor::PrintLayoutListing() {
  const Occupied occupied(*this);
  DefinitionReports events(means_.masterfile, DefinitionReports::Kind::kListing);
  const auto printer = means_.factory.NewPrinter();
  printer->SetEvents(&events);
  PrepareForListing(*printer);
  if (!printer->BeginReport(Hwnd(), means_.masterfile.App().Title() + " QDX Import Layout")) return;
  PrintListing(*printer, {.settings = {{Text2.Caption(), means_.exchange.QdxFileName()},
                                       {Combo1.Caption(), Combo1.SelectedText()},
                                       {Combo2.Caption(), Combo2.SelectedText()},
                                       {Combo3.Caption(), Combo3.SelectedText()}},
                          .lists_accounts = Combo2.ListIndex() == kManuallyPosition,
                          .lists_fields = Combo3.ListIndex() == kManuallyPosition,
                          .account_count = means_.exchange.NumAccounts(),
                          .header = SharedHeader(),
                          .file_fields = grids_.FileFields(),
                          .match = [this](MatchPage page, Long index) { return grids_.Match(page, index); },
                          .accounts = means_.accounts,
                          .fields = means_.fields});
  printer->EndReport();
}

void DefinitionEditor::SaveButtons1_Click(Integer button) {
  if (button != SaveButtons::kMainButton) {
    Leave();
    return;
  }
  edit_cancelled_ = false;
  HideLikeModal(*this);
}

void DefinitionEditor::Leave() {
  if (CancelEnabled() && !Confirm(means_.masterfile.App(), "Ok to exit without saving changes?")) return;
  HideLikeModal(*this);
}

}  // namespace tallybook
