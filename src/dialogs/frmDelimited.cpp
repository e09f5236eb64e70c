#include "dialogs/frmDelimited.h"

#include "base/Narrow.h"
#include "dialogs/FilePrompt.h"
#include "exchange/CDataExchange.h"
#include "forms/modAllUI.h"
#include "host/HostApp.h"
#include "host/HostFactory.h"
#include "host/HostLog.h"
#include "host/IniFile.h"
#include "host/Masterfile.h"
#include "platform/Platform.h"
#include "platform/Screen.h"
#include "support/HostMessages.h"
#include "support/Utility.h"

namespace tallybook {

namespace {

constexpr Integer kOneField = -1;

template <typename Object>
Object& Made(const std::unique_ptr<Object>& object, const char* name) {
  if (!object) throw Failure(FailureNumber::kObjectNotSet, Text(name) + " could not be made");
  return *object;
}

}  // namespace

frmDelimited::frmDelimited(HostFactory& factory) : Form("frmDelimited"), factory_(factory) {
  SetCaption("Import Delimited File");
  Text1.SetCaption("Filename:");
  Command1.SetHint("Browse for File ...");
  cmbMath.SetCaption("Operation when data is imported:");
  cmbMath.AddItem("Replace", static_cast<Long>(eMath::mReplace));
  cmbMath.AddItem("Add", static_cast<Long>(eMath::mAdd));
  cmbMath.AddItem("Subtract", static_cast<Long>(eMath::mSubtract));
  chkDate.SetCaption("Date is one field");
  cmbDate.SetCaption("Order of Day, Month and Year");
  cmbDate.AddItem("MDY", 1);
  cmbDate.AddItem("DMY", 2);
  cmbDate.AddItem("YMD", 3);
  SaveButtons1.SetCaption("&Import");
  Listen();
}

frmDelimited::~frmDelimited() = default;

void frmDelimited::Listen() {
  Text1.Change.Connect([this] { file_name_ = Text1.Text(); });
  Command1.Click.Connect([this] { Command1_Click(); });
  SaveButtons1.Click.Connect([this](Integer button) { SaveButtons1_Click(button); });
  OnCloseBox([this] { SaveButtons1_Click(SaveButtons::kCancelButton); });
  OnF1([this] { ShowHelp(); });
}

void frmDelimited::ImportDelimited(Long hwnd_owner, Masterfile& masterfile, bool allow_system_fields) {
  Statements at(Policy::kGoOn, [&](const Failure& failure) {
    LogFailure(masterfile, failure, " - ImportDelimited");
    return false;
  });
  [[maybe_unused]] const bool ran = at.Run([&] {
    masterfile_ = &masterfile;
    at(10, [&] { settings_ = factory_.NewIniFile(); });
    at(12, [&] { Settings().SetFileName(masterfile.SettingsFileName()); });
    at(14, [&] { Settings().SetSection("Delimited"); });
    ReadSettings(at);
    at(20, [&] { LoadControls(); });
    at(30, [&] { ApplyHostFont(*this, masterfile.App().FontName(), masterfile.App().FontSize()); });
    at(35, [&] { ThePlatform().screen->SetPointer(Pointer::kDefault); });
    at(40, [&] {
      if (IsBrowsingLimited(masterfile)) full_browsing_ = false;
    });
    cancelled_ = true;
    at(50, [&] { ShowLikeModal(*this, hwnd_owner); });
    if (!cancelled_) {
      at(70, [&] { ReadControls(); });
      WriteSettings(at);
      RunImport(at, allow_system_fields);
    }
    at(110, [&] { Unload(); });
  });
  exchange_.reset();
  settings_.reset();
  masterfile_ = nullptr;
}

void frmDelimited::ReadSettings(Statements& at) {
  at(15, [&] { file_name_ = Settings().ReadValue("FileName", masterfile_->App().DefaultFolder() + "Import.csv"); });
  at(16, [&] { date_order_ = ToInteger(WholeLongText(Settings().ReadValue("DateOrder", "1"))); });
  at(17, [&] { date_fields_ = ToBoolean(Settings().ReadValue("DateFields", "True")) ? kOneField : Integer{0}; });
  at(18, [&] { math_ = ToInteger(WholeLongText(Settings().ReadValue("Math", "3"))); });
}

void frmDelimited::LoadControls() {
  SetCancelEnabled(true);
  chkDate.SetChecked(date_fields_ != 0);
  SelectComboItem(cmbDate, date_order_);
  SelectComboItem(cmbMath, math_);
  Text1.SetText(file_name_);
}

void frmDelimited::ReadControls() {
  date_fields_ = chkDate.Checked() ? kOneField : Integer{0};
  date_order_ = ToInteger(ComboItemTag(cmbDate));
  math_ = ToInteger(ComboItemTag(cmbMath));
}

void frmDelimited::WriteSettings(Statements& at) {
  at(80, [&] { Settings().WriteValue("FileName", file_name_); });
  at(81, [&] { Settings().WriteValue("DateOrder", std::to_string(date_order_)); });
  at(82, [&] { Settings().WriteValue("DateFields", date_fields_ != 0 ? "True" : "False"); });
  at(83, [&] { Settings().WriteValue("Math", std::to_string(math_)); });
}

void frmDelimited::RunImport(Statements& at, bool allow_system_fields) {
  at(90, [&] { exchange_ = std::make_unique<CDataExchange>(factory_); });
  at(92, [&] { Exchange().SetOwner(masterfile_); });
  at(94, [&] {
    // The import has told what there was to tell, and nothing here depends on how it ended.
    [[maybe_unused]] const bool imported = Exchange().ImportDelimitedFile(
        file_name_, static_cast<eMath>(math_), date_order_, date_fields_, allow_system_fields);
  });
  if (!allow_system_fields) return;
  at(100, [&] {
    masterfile_->App().Log().AuditEntry(masterfile_->MasterFileTypeName(0), "Import", "System Fields", {file_name_});
  });
}

void frmDelimited::Command1_Click() {
  FilePrompt prompt;
  prompt.title = "Production Import File";
  prompt.start_folder = FilePath(file_name_);
  if (prompt.start_folder.empty() && masterfile_ != nullptr)
    prompt.start_folder = masterfile_->App().DefaultDataFolder();
  prompt.proposed_name = NameInFolder(file_name_);
  prompt.filter = kAllFilesFilter;
  prompt.default_extension = kAllFilesExtension;
  prompt.full_browsing = full_browsing_;
  const auto chosen = AskForFile(*this, prompt);
  if (!chosen) return;
  file_name_ = *chosen;
  Text1.SetText(*chosen);
}

void frmDelimited::SaveButtons1_Click(Integer button) {
  cancelled_ = button != SaveButtons::kMainButton;
  HideLikeModal(*this);
}

void frmDelimited::ShowHelp() const {
  if (masterfile_ != nullptr) ShowHelpTopic(masterfile_->App(), HelpContext());
}

IniFile& frmDelimited::Settings() const {
  return Made(settings_, "The settings");
}

CDataExchange& frmDelimited::Exchange() const {
  return Made(exchange_, "The exchange object");
}

}  // namespace tallybook
