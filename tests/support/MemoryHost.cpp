#include "tests/support/MemoryHost.h"

#include <algorithm>
#include <exception>
#include <stdexcept>

#include "base/Dates.h"
#include "base/Failure.h"
#include "support/GuardedEdtFormEvents.h"

namespace tallybook::testing {

// --- MemoryLog -------------------------------------------------------------------------------------------------------

Integer MemoryLog::LogError(const Text& message, Long line_number, Integer detail) {
  record_.Tell("Log.LogError", message, line_number, detail);
  errors.push_back({message, line_number, detail});
  handled.push_back(std::current_exception() ? CurrentFailure().Description() : Text());
  return 0;
}

Integer MemoryLog::AuditEntry(const Text& who, const Text& what, const Text& subject, const std::vector<Text>& items) {
  record_.Tell("Log.AuditEntry", who, what, subject);
  audits.push_back({who, what, subject, items});
  return 0;
}

// --- MemoryApp -------------------------------------------------------------------------------------------------------

Text MemoryApp::Title() const {
  record_.TellBulk("App.Title");
  return title;
}

HostLog& MemoryApp::Log() {
  record_.TellBulk("App.Log");
  return log;
}

Text MemoryApp::SettingsFileName() const {
  record_.TellBulk("App.SettingsFileName");
  return settings_file;
}

void MemoryApp::BeginImport() {
  record_.Tell("App.BeginImport");
}

Text MemoryApp::DefaultFolder() const {
  record_.TellBulk("App.DefaultFolder");
  return default_folder;
}

Text MemoryApp::DefaultDataFolder() const {
  record_.TellBulk("App.DefaultDataFolder");
  return default_data_folder;
}

Integer MemoryApp::UnrestrictedFiles() const {
  record_.TellBulk("App.UnrestrictedFiles");
  return unrestricted_files;
}

Text MemoryApp::HelpFile() const {
  record_.TellBulk("App.HelpFile");
  return help_file;
}

void MemoryApp::HelpTopic(Long topic) {
  record_.Tell("App.HelpTopic", topic);
}

Text MemoryApp::FontName() const {
  record_.TellBulk("App.FontName");
  return font_name;
}

Single MemoryApp::FontSize() const {
  record_.TellBulk("App.FontSize");
  return font_size;
}

Long MemoryApp::TypeAheadDelay() const {
  record_.TellBulk("App.TypeAheadDelay");
  return type_ahead_delay;
}

Integer MemoryApp::UserOption() const {
  record_.TellBulk("App.UserOption");
  return user_option;
}

Long MemoryApp::IdleMinutes() const {
  record_.TellBulk("App.IdleMinutes");
  return idle_minutes;
}

bool MemoryApp::IdleExpired() const {
  record_.TellBulk("App.IdleExpired");
  return idle_expired;
}

void MemoryApp::SetIdleExpired(bool expired) {
  record_.Tell("App.SetIdleExpired", expired);
  idle_expired = expired;
}

bool MemoryApp::Finished() const {
  record_.TellBulk("App.Finished");
  return finished;
}

// --- MemoryIniFile ---------------------------------------------------------------------------------------------------

void MemoryIniFile::SetFileName(const Text& path) {
  record_.TellBulk("Ini.SetFileName", path);
  file_ = path;
}

void MemoryIniFile::SetSection(const Text& section) {
  record_.TellBulk("Ini.SetSection", section);
  section_ = section;
}

Text MemoryIniFile::ReadValue(const Text& key, const Text& default_value) const {
  record_.TellBulk("Ini.ReadValue", file_, section_, key);
  const auto value = settings_.find({file_, section_, key});
  return value == settings_.end() ? default_value : value->second;
}

void MemoryIniFile::WriteValue(const Text& key, const Text& value) {
  record_.Tell("Ini.WriteValue", file_, section_, key, value);
  settings_[{file_, section_, key}] = value;
}

// --- MemoryEdtForm ---------------------------------------------------------------------------------------------------

const ListWindow::Row* MemoryEdtForm::FindRow(const Text& key) const {
  const auto row = std::find_if(window_->rows.begin(), window_->rows.end(),
                                [&](const ListWindow::Row& candidate) { return candidate.key == key; });
  return row == window_->rows.end() ? nullptr : &*row;
}

void MemoryEdtForm::SetTitle(const Text& title) {
  record_.Tell("EdtForm.Title", title);
  window_->title = title;
}

void MemoryEdtForm::AddColumn(const Text& caption, bool numeric) {
  record_.Tell("EdtForm.AddColumn", caption, numeric);
  window_->columns.emplace_back(caption, numeric);
}

void MemoryEdtForm::SetActionButton(Integer button, const Text& caption) {
  record_.Tell("EdtForm.ActionButton", button, caption);
  window_->action_buttons[button] = caption;
}

void MemoryEdtForm::SetAllowChanges(bool allowed) {
  record_.Tell("EdtForm.AllowChanges", allowed);
  window_->changes_allowed = allowed;
}

void MemoryEdtForm::SetTypeAheadDelay(Long milliseconds) {
  record_.Tell("EdtForm.TypeAheadDelay", milliseconds);
  window_->type_ahead_delay = milliseconds;
}

void MemoryEdtForm::SetHelpFile(const Text& path) {
  record_.Tell("EdtForm.HelpFile", path);
  window_->help_file = path;
}

void MemoryEdtForm::SetHelpContext(Long topic) {
  record_.Tell("EdtForm.HelpContext", topic);
  window_->help_context = topic;
}

void MemoryEdtForm::SetFontName(const Text& name) {
  record_.Tell("EdtForm.FontName", name);
  window_->font_name = name;
}

void MemoryEdtForm::SetFontSize(Single points) {
  record_.Tell("EdtForm.FontSize", points);
  window_->font_size = points;
}

void MemoryEdtForm::ClearList() {
  record_.Tell("EdtForm.ClearList");
  *rows_changed_ = true;
  window_->rows.clear();
}

void MemoryEdtForm::AddRow(const Text& key, Integer record, const Text& title) {
  record_.Tell("EdtForm.AddRow", key, record, title);
  *rows_changed_ = true;
  window_->rows.push_back({key, record, {title}});
}

void MemoryEdtForm::AddCell(const Text& text) {
  record_.Tell("EdtForm.AddCell", text);
  if (window_->rows.empty())
    throw Failure(FailureNumber::kInvalidArgument, "There is no row for the cell \"" + text + "\"", "MemoryEdtForm");
  window_->rows.back().cells.push_back(text);
}

void MemoryEdtForm::RemoveRow(const Text& key) {
  record_.Tell("EdtForm.RemoveRow", key);
  const auto row = std::ranges::find(window_->rows, key, &ListWindow::Row::key);
  if (row == window_->rows.end()) return;
  window_->rows.erase(row);
  *rows_changed_ = true;
}

void MemoryEdtForm::RefreshTotals() {
  record_.Tell("EdtForm.RefreshTotals");
  ++window_->totals_drawn;
}

Long MemoryEdtForm::Hwnd() const {
  record_.TellBulk("EdtForm.Hwnd");
  return window;
}

void MemoryEdtForm::Show(Long owner) {
  record_.Tell("EdtForm.Show", owner);
  if (!acts.empty() && listener_ == nullptr) throw std::logic_error("A list window with acts has no listener");
  // The listener may drop this window within an act, so what the walk needs is held by hand.
  const std::shared_ptr<ListWindow> shown = window_;
  const std::shared_ptr<bool> rows_changed = rows_changed_;
  const std::vector<Act> todo = acts;
  GuardedEdtFormEvents events(listener_);
  const auto ask_for_totals = [&] {
    *rows_changed = false;
    ++shown->totals_asked;
    events.ShowTotals(shown->totals);
  };
  shown->owner = owner;
  ++shown->shown;
  shown->open = true;
  ask_for_totals();
  for (const Act& act : todo) {
    act(*this, events);
    if (*rows_changed) ask_for_totals();
  }
  shown->open = false;
}

// --- MemoryPrintSequence ---------------------------------------------------------------------------------------------

void MemoryPrintSequence::LoadSequences(SequenceReport& report) {
  record_.Tell("PrintSequence.LoadSequences");
  report_ = &report;
}

bool MemoryPrintSequence::SequenceFixed() const {
  record_.TellBulk("PrintSequence.SequenceFixed");
  return fixed_;
}

void MemoryPrintSequence::SetSequenceFixed(bool fixed) {
  record_.Tell("PrintSequence.SetSequenceFixed", fixed);
  fixed_ = fixed;
}

void MemoryPrintSequence::RefreshSequences() {
  record_.Tell("PrintSequence.RefreshSequences");
}

void MemoryPrintSequence::ApplySequences() {
  record_.Tell("PrintSequence.ApplySequences");
}

// --- MemoryFactory ---------------------------------------------------------------------------------------------------

std::unique_ptr<IniFile> MemoryFactory::NewIniFile() {
  record_.TellBulk("NewIniFile");
  return std::make_unique<MemoryIniFile>(record_, settings_);
}

std::unique_ptr<Printer> MemoryFactory::NewPrinter() {
  record_.TellBulk("NewPrinter");
  auto made = std::make_unique<MemoryPrinter>(record_);
  last_printer_ = made.get();
  reports.push_back(made->Printed());
  if (prepare_printer) prepare_printer(*made);
  return made;
}

std::unique_ptr<EdtForm> MemoryFactory::NewEdtForm() {
  record_.TellBulk("NewEdtForm");
  auto made = std::make_unique<MemoryEdtForm>(record_);
  last_form_ = made.get();
  windows.push_back(made->Window());
  if (prepare_form) prepare_form(*made);
  return made;
}

std::shared_ptr<DataExportObject> MemoryFactory::NewDataExportObject() {
  record_.TellBulk("NewDataExportObject");
  auto made = std::make_shared<MemoryExportObject>(record_);
  last_export_ = made.get();
  exports.push_back(made->Written());
  if (prepare_export) prepare_export(*made);
  return made;
}

std::unique_ptr<FiscalCalendar> MemoryFactory::NewFiscalCalendar() {
  record_.TellBulk("NewFiscalCalendar");
  auto made = std::make_unique<MemoryCalendar>(record_);
  last_calendar_ = made.get();
  return made;
}

std::unique_ptr<PrintSequence> MemoryFactory::NewPrintSequence() {
  record_.TellBulk("NewPrintSequence");
  auto made = std::make_unique<MemoryPrintSequence>(record_);
  last_sequence_ = made.get();
  if (prepare_sequence) prepare_sequence(*made);
  return made;
}

// --- MemoryHost ------------------------------------------------------------------------------------------------------

MemoryHost::MemoryHost(BookShape shape)
    : app(record), book(app, record, std::move(shape)), factory(record, settings), printer(record) {}

void MemoryHost::SetInstallationSetting(const Text& section, const Text& key, const Text& value) {
  settings[{app.settings_file, section, key}] = value;
}

void MemoryHost::SetBookSetting(const Text& section, const Text& key, const Text& value) {
  settings[{book.Shape().settings_file, section, key}] = value;
}

Text MemoryHost::BookSetting(const Text& section, const Text& key) const {
  const auto value = settings.find({book.Shape().settings_file, section, key});
  return value == settings.end() ? Text() : value->second;
}

std::unique_ptr<MemoryHost> SmallBook(BookShape shape) {
  auto host = std::make_unique<MemoryHost>(std::move(shape));
  MemoryMasterfile& book = host->book;
  book.AddAccount(101, "100", "Front of shop");
  book.AddAccount(102, "200", "Back of shop");
  book.AddAccount(205, "300", "Yard");
  book.AddField(1, "Sales");
  book.AddField(2, "Customers");
  book.AddField(7, "Weather", true);
  book.Set(101, DateFromParts(2003, 1, 1), 1, 12.5);
  book.Set(101, DateFromParts(2003, 1, 1), 2, 3);
  book.Set(102, DateFromParts(2004, 2, 29), 1, -0.125);
  book.Set(205, DateFromParts(2005, 12, 31), 1, 1e6);
  return host;
}

}  // namespace tallybook::testing
