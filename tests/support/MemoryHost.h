// An embedding application in memory, for tests and benchmarks: every object that src/host asks for, one call record
// that they share, and ready-made books.
//
//   auto host = SmallBook();
//   host->record.FailOn("WriteRecord", 2, Failure(FailureNumber::kDiskFull, "full"));
//   ... run ...
//   EXPECT_EQ(host->book.Get(101, FebruaryThird(), 1), 12.5);
//   EXPECT_THAT(host->record.calls, Contains("EndProgress"));
//
// One thread. Everything of it lives as long as the MemoryHost. Objects that the factory makes belong to the component
// and may be gone when a test looks; what they recorded is kept by the factory.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <tuple>
#include <utility>
#include <vector>

#include "base/Types.h"
#include "host/EdtForm.h"
#include "host/HostApp.h"
#include "host/HostFactory.h"
#include "host/HostLog.h"
#include "host/IniFile.h"
#include "host/Sequence.h"
#include "tests/support/CallRecord.h"
#include "tests/support/MemoryExportObject.h"
#include "tests/support/MemoryMasterfile.h"
#include "tests/support/MemoryPrinter.h"

namespace tallybook::testing {

// --- Log and application ---------------------------------------------------------------------------------------------

// Its operations are "Log.LogError" and "Log.AuditEntry".
class MemoryLog : public HostLog {
 public:
  struct Error {
    Text message;
    Long line_number = 0;
    Integer detail = 0;
    bool operator==(const Error&) const = default;
  };
  struct Audit {
    Text who;
    Text what;
    Text subject;
    std::vector<Text> items;
    bool operator==(const Audit&) const = default;
  };

  explicit MemoryLog(CallRecord& record) : record_(record) {}
  std::vector<Error> errors;
  std::vector<Text> handled;  // for each error the description of the failure being handled then, "" for none
  std::vector<Audit> audits;

  Integer LogError(const Text& message, Long line_number, Integer detail) override;
  Integer AuditEntry(const Text& who, const Text& what, const Text& subject, const std::vector<Text>& items) override;

 private:
  CallRecord& record_;
};

// What the application answers is set through the members. Its operations are "App.BeginImport", "App.HelpTopic",
// "App.SetIdleExpired" and, as queries, "App." with the name.
class MemoryApp : public HostApp {
 public:
  explicit MemoryApp(CallRecord& record) : log(record), record_(record) {}

  MemoryLog log;
  Text title = "Tallybook";
  Text settings_file = "/installation/tallybook.ini";
  Text default_folder = "/import/";
  Text default_data_folder = "/data/";
  Integer unrestricted_files = 0;
  Text help_file = "/installation/tallybook.hlp";
  Text font_name = "Sans";
  Single font_size = 8.25F;
  Long type_ahead_delay = 1000;
  Integer user_option = 0;
  Long idle_minutes = 0;
  bool idle_expired = false;
  bool finished = false;

  [[nodiscard]] Text Title() const override;
  HostLog& Log() override;
  [[nodiscard]] Text SettingsFileName() const override;
  void BeginImport() override;
  [[nodiscard]] Text DefaultFolder() const override;
  [[nodiscard]] Text DefaultDataFolder() const override;
  [[nodiscard]] Integer UnrestrictedFiles() const override;
  [[nodiscard]] Text HelpFile() const override;
  void HelpTopic(Long topic) override;
  [[nodiscard]] Text FontName() const override;
  [[nodiscard]] Single FontSize() const override;
  [[nodiscard]] Long TypeAheadDelay() const override;
  [[nodiscard]] Integer UserOption() const override;
  [[nodiscard]] Long IdleMinutes() const override;
  [[nodiscard]] bool IdleExpired() const override;
  void SetIdleExpired(bool expired) override;
  [[nodiscard]] bool Finished() const override;

 private:
  CallRecord& record_;
};

// --- Settings --------------------------------------------------------------------------------------------------------

// The settings files of a host: values by file, section and key. All of one host's MemoryIniFiles share it.
using MemorySettings = std::map<std::tuple<Text, Text, Text>, Text>;

// Its operations are "Ini.ReadValue", a query, and "Ini.WriteValue", recorded with file, section, key and value.
// Keys and sections are taken letter by letter.
class MemoryIniFile : public IniFile {
 public:
  MemoryIniFile(CallRecord& record, MemorySettings& settings) : record_(record), settings_(settings) {}

  void SetFileName(const Text& path) override;
  void SetSection(const Text& section) override;
  [[nodiscard]] Text ReadValue(const Text& key, const Text& default_value) const override;
  void WriteValue(const Text& key, const Text& value) override;

 private:
  CallRecord& record_;
  MemorySettings& settings_;
  Text file_;
  Text section_;
};

// --- List window and print sequence ----------------------------------------------------------------------------------

// What a list window shows and was told.
struct ListWindow {
  struct Row {
    Text key;
    Integer record = 0;
    std::vector<Text> cells;  // the title first
    bool operator==(const Row&) const = default;
  };
  Text title;
  std::vector<std::pair<Text, bool>> columns;  // caption, numeric
  std::map<Integer, Text> action_buttons;
  bool changes_allowed = false;
  Long type_ahead_delay = 0;
  Text help_file;
  Long help_context = 0;
  Text font_name;
  Single font_size = 0;
  std::vector<Row> rows;
  Long owner = 0;        // of the last Show
  Text totals;           // what the listener answered last; starts empty
  int totals_asked = 0;  // how many times
  int totals_drawn = 0;  // by RefreshTotals
  int shown = 0;
  bool open = false;  // within Show
};

// Its operations are "EdtForm.AddRow", "EdtForm.Show" and so on. Show asks for the totals, runs the acts that the test
// gave, in order, and returns. What an act reaches the listener with goes through the guard that every list window has.
class MemoryEdtForm : public EdtForm {
 public:
  // What the user does while the window is open: calls the events of the listener, looks at the rows.
  using Act = std::function<void(MemoryEdtForm& form, EdtFormEvents& events)>;

  explicit MemoryEdtForm(CallRecord& record) : record_(record) {}

  std::vector<Act> acts;
  Long window = 7001;  // the handle

  // What it shows, shared with whoever wants to look later.
  [[nodiscard]] std::shared_ptr<ListWindow> Window() const { return window_; }
  ListWindow* operator->() const { return window_.get(); }
  // The row of a key; null where there is none.
  [[nodiscard]] const ListWindow::Row* FindRow(const Text& key) const;

  void SetEvents(EdtFormEvents* listener) override { listener_ = listener; }
  void SetTitle(const Text& title) override;
  void AddColumn(const Text& caption, bool numeric) override;
  void SetActionButton(Integer button, const Text& caption) override;
  void SetAllowChanges(bool allowed) override;
  void SetTypeAheadDelay(Long milliseconds) override;
  void SetHelpFile(const Text& path) override;
  void SetHelpContext(Long topic) override;
  void SetFontName(const Text& name) override;
  void SetFontSize(Single points) override;
  void ClearList() override;
  void AddRow(const Text& key, Integer record, const Text& title) override;
  // Without a row it is failure 5.
  void AddCell(const Text& text) override;
  void RemoveRow(const Text& key) override;
  void RefreshTotals() override;
  [[nodiscard]] Long Hwnd() const override;
  // Acts without a listener are std::logic_error: nobody would hear them.
  void Show(Long owner) override;

 private:
  CallRecord& record_;
  EdtFormEvents* listener_ = nullptr;
  std::shared_ptr<ListWindow> window_ = std::make_shared<ListWindow>();
  std::shared_ptr<bool> rows_changed_ = std::make_shared<bool>(false);  // since the totals were asked for
};

// Its operations are "PrintSequence.LoadSequences", "PrintSequence.SetSequenceFixed" and so on.
class MemoryPrintSequence : public PrintSequence {
 public:
  explicit MemoryPrintSequence(CallRecord& record) : record_(record) {}
  // The report that was loaded; null before.
  [[nodiscard]] SequenceReport* Report() const { return report_; }

  void LoadSequences(SequenceReport& report) override;
  [[nodiscard]] bool SequenceFixed() const override;
  void SetSequenceFixed(bool fixed) override;
  void RefreshSequences() override;
  void ApplySequences() override;

 private:
  CallRecord& record_;
  SequenceReport* report_ = nullptr;
  bool fixed_ = false;
};

// --- Factory and host ------------------------------------------------------------------------------------------------

// Its operations are "NewIniFile", "NewPrinter" and so on, as queries: not recorded unless asked for.
class MemoryFactory : public HostFactory {
 public:
  MemoryFactory(CallRecord& record, MemorySettings& settings) : record_(record), settings_(settings) {}

  // Called with each new object before it is handed out, so that a test can prepare it. May be left empty.
  std::function<void(MemoryPrinter&)> prepare_printer;
  std::function<void(MemoryEdtForm&)> prepare_form;
  std::function<void(MemoryExportObject&)> prepare_export;
  std::function<void(MemoryPrintSequence&)> prepare_sequence;

  // What the objects made so far recorded, oldest first; each stays when its object is gone.
  std::vector<std::shared_ptr<PrintedReport>> reports;
  std::vector<std::shared_ptr<ListWindow>> windows;
  std::vector<std::shared_ptr<const MemoryExportObject::Tables>> exports;

  // The last object made of a kind, null before the first. Only of use while its owner keeps it.
  [[nodiscard]] MemoryPrinter* LastPrinter() const { return last_printer_; }
  [[nodiscard]] MemoryEdtForm* LastForm() const { return last_form_; }
  [[nodiscard]] MemoryExportObject* LastExport() const { return last_export_; }
  [[nodiscard]] MemoryCalendar* LastCalendar() const { return last_calendar_; }
  [[nodiscard]] MemoryPrintSequence* LastSequence() const { return last_sequence_; }

  std::unique_ptr<IniFile> NewIniFile() override;
  std::unique_ptr<Printer> NewPrinter() override;
  std::unique_ptr<EdtForm> NewEdtForm() override;
  std::shared_ptr<DataExportObject> NewDataExportObject() override;
  std::unique_ptr<FiscalCalendar> NewFiscalCalendar() override;
  std::unique_ptr<PrintSequence> NewPrintSequence() override;

 private:
  CallRecord& record_;
  MemorySettings& settings_;
  MemoryPrinter* last_printer_ = nullptr;
  MemoryEdtForm* last_form_ = nullptr;
  MemoryExportObject* last_export_ = nullptr;
  MemoryCalendar* last_calendar_ = nullptr;
  MemoryPrintSequence* last_sequence_ = nullptr;
};

// All of it together. The book is empty of accounts and fields.
class MemoryHost {
 public:
  explicit MemoryHost(BookShape shape = {});
  MemoryHost(const MemoryHost&) = delete;
  MemoryHost& operator=(const MemoryHost&) = delete;

  // A setting of the installation's and of the book's file.
  void SetInstallationSetting(const Text& section, const Text& key, const Text& value);
  void SetBookSetting(const Text& section, const Text& key, const Text& value);
  // The value, or "" where it was never set.
  [[nodiscard]] Text BookSetting(const Text& section, const Text& key) const;

  CallRecord record;
  MemorySettings settings;
  MemoryApp app;
  MemoryMasterfile book;
  MemoryFactory factory;
  MemoryPrinter printer;  // a printer of the application's own, for operations that are handed one
};

// A small book of months from 2003 to 2005 with figures: accounts 101 "100" Front of shop, 102 "200" Back of shop and
// 205 "300" Yard; fields 1 Sales, 2 Customers and 7 Weather (kept by the system). Its figures: 2003-01-01 account 101
// has 12.5 and 3 in fields 1 and 2, 2004-02-29 account 102 has -0.125 in field 1, 2005-12-31 account 205 has 1e6 in
// field 1. The dates are levelled where the shape says so.
[[nodiscard]] std::unique_ptr<MemoryHost> SmallBook(BookShape shape = {});

}  // namespace tallybook::testing
