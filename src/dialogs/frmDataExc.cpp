#include "dialogs/frmDataExc.h"

#include "base/Narrow.h"
#include "dialogs/DefinitionBrowser.h"
#include "dialogs/FilePrompt.h"
#include "dialogs/FormInstances.h"
#include "exchange/CDataExchange.h"
#include "forms/modAllUI.h"
#include "host/DataExportObject.h"
#include "host/HostApp.h"
#include "host/HostFactory.h"
#include "host/IniFile.h"
#include "host/Masterfile.h"
#include "platform/MessageBoxes.h"
#include "platform/Platform.h"
#include "platform/Screen.h"
#include "reportdialog/ExchangeReport.h"
#include "support/HostMessages.h"
#include "support/Utility.h"
#include "support/WinAPI.h"

namespace tallybook {

namespace {

constexpr const char* kTableSection = "CSV";
constexpr const char* kExchangeSection = "QDX";
constexpr Long kExportHelp = 11'000;
constexpr Single kFileVersion = 1.0F;
// What an export writes.
constexpr bool kAsTable = true;
constexpr bool kAsExchangeFile = false;

void ApplyHostFont(Form& form, HostApp& app) {
  ApplyHostFont(form, app.FontName(), app.FontSize());
}

Text TruthText(bool value) {
  return value ? "True" : "False";
}

}  // namespace

// What an export remembers from one time to the next, and which dates it is for.
struct frmDataExc::ExportChoice {
  Text file;
  Text type_code;
  bool zeros = true;
  std::shared_ptr<DataExportObject> library;  // for a table
  Text caption;
  Date start_date = kNoDate;
  Date end_date = kNoDate;
};

// The time between Begin and End, on every way out.
class frmDataExc::Conversation {
 public:
  Conversation(frmDataExc& form, Masterfile& masterfile, const Text& section) : form_(form) {
    form_.Begin(masterfile, section);
  }
  ~Conversation() { form_.End(); }
  Conversation(const Conversation&) = delete;
  Conversation& operator=(const Conversation&) = delete;

 private:
  frmDataExc& form_;
};

frmDataExc::frmDataExc(HostFactory& factory) : factory_(factory), settings_(factory.NewIniFile()) {}

frmDataExc::~frmDataExc() = default;

void frmDataExc::Begin(Masterfile& masterfile, const Text& section) {
  masterfile_ = &masterfile;
  exchange_ = std::make_unique<CDataExchange>(factory_);
  exchange_->SetOwner(&masterfile);
  settings_->SetFileName(masterfile.SettingsFileName());
  settings_->SetSection(section);
}

// The dialogs go first: the print dialog holds the report, and the report the exchange object.
void frmDataExc::End() noexcept {
  TheForms().Import.Release();
  TheForms().RepPrint.Release();
  TheForms().Export.Release();
  report_.reset();
  exchange_.reset();
  masterfile_ = nullptr;
}

void frmDataExc::ShowLayoutBrowser(Long hwnd_owner, Masterfile& masterfile, Integer data_type) {
  DefinitionBrowser(factory_, masterfile).ShowLayoutBrowser(hwnd_owner, data_type);
}

void frmDataExc::ImportCSVFile(Long hwnd_owner, Masterfile& masterfile) {
  const Conversation conversation(*this, masterfile, kTableSection);
  const Text first = masterfile.App().DefaultFolder() + "Import." + kTableSection;
  Text file = settings_->ReadValue("ImportFile", first);
  frmImport& prompt = TheForms().Import.Get();
  constexpr bool kNoPrompts = true;
  do {
    ApplyHostFont(prompt, masterfile.App());
    if (IsBrowsingLimited(masterfile)) prompt.SetFullBrowsing(false);
    const Text caption = TitleWithSystem("Import CSV Data File", masterfile);
    if (!prompt.ImportFileName(hwnd_owner, file, "Enter the name of the CSV Data File to import", caption,
                               kTableSection))
      return;
  } while (!exchange_->ImportCSVFile(file, !kNoPrompts, {0}, eMath::mDefault));
  settings_->WriteValue("ImportFile", file);
}

void frmDataExc::OutputQDXFile(Long hwnd_owner, Masterfile& masterfile, bool csv_style, Date& current_date) {
  const Text section = csv_style ? kTableSection : kExchangeSection;
  const Conversation conversation(*this, masterfile, section);
  ExportChoice choice = RememberedChoice(section, csv_style);
  choice.caption = csv_style ? "Export Data to File" : "Export Data to QDX File";
  if (csv_style) {
    choice.library = factory_.NewDataExportObject();
    exchange_->SetDataExportObject(choice.library);
  }
  if (!AskForDates(hwnd_owner, choice, current_date)) return;
  if (!csv_style) {
    if (WriteExchangeFile(hwnd_owner, choice)) settings_->WriteValue("ExportFile", choice.file);
  } else if (WriteTable(hwnd_owner, choice)) {
    OfferToOpen(choice.file);
    RememberTable(choice);
  }
}

bool frmDataExc::AskForDates(Long hwnd_owner, ExportChoice& choice, Date& current_date) {
  report_ = std::make_unique<ExchangeReport>(*exchange_);
  dlgRepPrint& dialog = TheForms().RepPrint.Get(factory_);
  ApplyHostFont(dialog, masterfile_->App());
  dialog.SetAllowSameLevel(true);
  dialog.SetCurrentDate(current_date);
  dialog.SetInitialLength(masterfile_->DataLevel());
  dialog.SetFields(*report_, TitleWithSystem(choice.caption, *masterfile_), "Export Data", kExportHelp);
  HandlePendingInput();
  ThePlatform().screen->SetPointer(Pointer::kDefault);
  ShowLikeModal(dialog, hwnd_owner);
  if (dialog.Cancelled()) return false;
  current_date = dialog.CurrentDate();
  exchange_->SetReportLength(dialog.SelectedLength());
  choice.start_date = dialog.StartDate();
  choice.end_date = dialog.EndDate();
  return true;
}

frmDataExc::ExportChoice frmDataExc::RememberedChoice(const Text& section, bool csv_style) const {
  ExportChoice choice;
  choice.file = settings_->ReadValue("ExportFile", masterfile_->App().DefaultFolder() + "Export." + section);
  if (!csv_style) return choice;
  choice.type_code = settings_->ReadValue("Ext", "CSV");
  choice.zeros = ReadZeros();
  return choice;
}

// A text that is no truth value is logged and counts as false.
bool frmDataExc::ReadZeros() const {
  const Text setting = settings_->ReadValue("Zeros", "1");
  try {
    return ToBoolean(setting);
  } catch (const Failure& failure) {
    LogFailure(*masterfile_, failure, " - OutputQDXFile");
    return false;
  }
}

bool frmDataExc::WriteTable(Long hwnd_owner, ExportChoice& choice) {
  dlgExport& dialog = TheForms().Export.Get();
  Long kind = 0;
  do {
    if (IsBrowsingLimited(*masterfile_)) dialog.SetFullBrowsing(false);
    dialog.chkNonZero.SetVisible(true);
    dialog.chkNonZero.SetChecked(!choice.zeros);
    if (!dialog.GetFileName(hwnd_owner, choice.library, choice.type_code, choice.file, kind)) return false;
    choice.zeros = !dialog.chkNonZero.Checked();
    exchange_->SetTransZeros(choice.zeros);
  } while (!exchange_->WriteQDXFile(choice.file, choice.start_date, choice.end_date, kAsTable, kFileVersion,
                                    choice.type_code));
  return true;
}

bool frmDataExc::WriteExchangeFile(Long hwnd_owner, ExportChoice& choice) {
  frmImport& prompt = TheForms().Import.Get();
  do {
    prompt.SetFullBrowsing(!IsBrowsingLimited(*masterfile_));
    if (!prompt.ExportFileName(hwnd_owner, choice.file, "Enter the name of the file for the exported data.",
                               choice.caption, kExchangeSection))
      return false;
  } while (!exchange_->WriteQDXFile(choice.file, choice.start_date, choice.end_date, kAsExchangeFile, kFileVersion));
  return true;
}

void frmDataExc::OfferToOpen(const Text& file) {
  const Text question = "Export file created at:\r\n" + file + "\r\n\r\nWould you like to open the file?";
  if (AskMessage(question, kQuestionIcon | kOkCancel, "") != kOk) return;
  try {
    OpenWithAssociated(masterfile_->App(), file);
  } catch (...) {
    LogFailure(*masterfile_, CurrentFailure(), " - OutputQDXFile");
  }
}

void frmDataExc::RememberTable(const ExportChoice& choice) {
  settings_->WriteValue("ExportFile", choice.file);
  settings_->WriteValue("Ext", choice.type_code);
  settings_->WriteValue("Zeros", TruthText(choice.zeros));
}

}  // namespace tallybook
