#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <stdexcept>

#include "base/Dates.h"
#include "base/Failure.h"
#include "tests/support/MemoryHost.h"

namespace tallybook::testing {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

const Date kDay = DateFromParts(2004, 2, 3);

Failure DiskFull() {
  return Failure(FailureNumber::kDiskFull, "The disk is full", "Disk");
}

class MemoryHostTest : public ::testing::Test {
 protected:
  std::unique_ptr<MemoryHost> host_ = SmallBook();
  CallRecord& record_ = host_->record;
  MemoryMasterfile& book_ = host_->book;
};

// --- Call record -----------------------------------------------------------------------------------------------------

TEST_F(MemoryHostTest, CallsOfAllObjectsStandInOneList) {
  book_.BeginProgress("Reading QDX File Header");
  book_.SetProgressFraction(0.5F);
  host_->app.BeginImport();
  book_.BeginRollback(kDay, kDay + 2);
  host_->printer.PrintLine("Hello");
  host_->app.Log().LogError("Disk - Thing:Do", 12, -1);
  EXPECT_THAT(record_.calls, ElementsAre("BeginProgress Reading QDX File Header", "ProgressFraction 0.5",
                                         "App.BeginImport", "BeginRollback 2004-02-03 2004-02-05",
                                         "Printer.PrintLine Hello", "Log.LogError Disk - Thing:Do 12 -1"));
}

TEST_F(MemoryHostTest, BulkOperationsAreRecordedOnRequestOnly) {
  ASSERT_TRUE(book_.ReadRecord(101, kDay));
  book_.SetFieldValue(1, 2.5);
  EXPECT_THAT(record_.calls, IsEmpty());
  record_.Record("ReadRecord", true);
  record_.Record("SetFieldValue", true);
  record_.Record("WriteRecord", true);
  ASSERT_TRUE(book_.ReadRecord(101, kDay));
  book_.SetFieldValue(1, 2.5);
  EXPECT_EQ(book_.FieldValue(1), 2.5);
  ASSERT_TRUE(book_.WriteRecord());
  EXPECT_THAT(record_.calls, ElementsAre("ReadRecord 101 2004-02-03", "SetFieldValue 1 2.5", "WriteRecord"));
}

TEST_F(MemoryHostTest, AnOperationCanBeKeptOutOfTheRecord) {
  record_.Record("ProgressFraction", false);
  book_.SetProgressFraction(0.25F);
  book_.EndProgress();
  EXPECT_THAT(record_.calls, ElementsAre("EndProgress"));
  record_.SetRecording(false);
  book_.EndProgress();
  EXPECT_THAT(record_.calls, ElementsAre("EndProgress"));
}

TEST_F(MemoryHostTest, ArgumentsOfTellsOneOperationFromAnotherWithALongerName) {
  book_.BeginProgress("One");
  book_.BeginProgressText("Two");
  book_.EndProgress();
  EXPECT_THAT(record_.ArgumentsOf("BeginProgress"), ElementsAre("One"));
  EXPECT_THAT(record_.ArgumentsOf("EndProgress"), ElementsAre(""));
}

// --- Faults ----------------------------------------------------------------------------------------------------------

TEST_F(MemoryHostTest, TheNthCallFailsOnceAndBeforeItHasAnyEffect) {
  record_.FailOn("WriteRecord", 2, DiskFull());
  ASSERT_TRUE(book_.ReadRecord(101, kDay));
  book_.SetFieldValue(1, 1);
  ASSERT_TRUE(book_.WriteRecord());
  book_.SetFieldValue(1, 2);
  EXPECT_FALSE(record_.AllFaultsStruck());
  try {
    book_.WriteRecord();
    FAIL() << "the second write did not fail";
  } catch (const Failure& failure) {
    EXPECT_EQ(failure.Number(), FailureNumber::kDiskFull);
    EXPECT_EQ(failure.Source(), "Disk");
  }
  EXPECT_TRUE(record_.AllFaultsStruck());
  EXPECT_EQ(book_.Get(101, kDay, 1), 1);
  EXPECT_TRUE(book_.WriteRecord()) << "the change waits still, so that the write can be repeated";
  EXPECT_EQ(book_.Get(101, kDay, 1), 2);
}

TEST_F(MemoryHostTest, ARecordCanBeMadeUnreadable) {
  record_.GiveFalseOn("ReadRecord", 2);
  EXPECT_TRUE(book_.ReadRecord(101, kDay));
  EXPECT_FALSE(book_.ReadRecord(101, kDay + 1));
  EXPECT_TRUE(book_.ReadRecord(101, kDay + 2));
}

TEST_F(MemoryHostTest, EveryCallOfARunCanBeFailedInTurn) {
  const auto run = [&] {
    book_.BeginProgress("Walk");
    static_cast<void>(book_.NumAccounts());
    static_cast<void>(book_.FiscalCalendar().LevelDate(kDay, kDayLevel));
    book_.EndProgress();
  };
  long long failed = 0;
  for (long long nth = 1;; ++nth) {
    record_.FailOn(kAnyOperation, nth, DiskFull());
    try {
      run();
      break;
    } catch (const Failure&) {
      ++failed;
    }
  }
  EXPECT_EQ(failed, 5);  // the calendar itself is a call
  EXPECT_FALSE(record_.AllFaultsStruck());
  record_.DisarmFaults();
  EXPECT_TRUE(record_.AllFaultsStruck());
}

TEST_F(MemoryHostTest, FaultsThatCannotBeArePlainlyRefused) {
  EXPECT_THROW(record_.FailOn("WriteRecord", 0, DiskFull()), std::logic_error);
  EXPECT_THROW(record_.GiveFalseOn("WriteRecord", 0), std::logic_error);
  record_.GiveFalseOn("EndProgress", 1);
  EXPECT_THROW(book_.EndProgress(), std::logic_error);
}

TEST_F(MemoryHostTest, TwoFaultsOfOneOperationStrikeEachAtItsTime) {
  record_.FailOn("EndProgress", 1, DiskFull());
  record_.FailOn("EndProgress", 3, DiskFull());
  EXPECT_THROW(book_.EndProgress(), Failure);
  EXPECT_NO_THROW(book_.EndProgress());
  EXPECT_THROW(book_.EndProgress(), Failure);
  EXPECT_NO_THROW(book_.EndProgress());
}

// --- Settings and log ------------------------------------------------------------------------------------------------

TEST_F(MemoryHostTest, SettingsAreSharedAndKeptApartByFileSectionAndKey) {
  host_->SetInstallationSetting("Files", "WriteRollback", "1");
  const auto one = host_->factory.NewIniFile();
  one->SetFileName(book_.SettingsFileName());
  one->SetSection("CSV");
  EXPECT_EQ(one->ReadValue("ImportFile", "none"), "none");
  one->WriteValue("ImportFile", "a.csv");
  const auto other = host_->factory.NewIniFile();
  other->SetFileName(book_.SettingsFileName());
  other->SetSection("CSV");
  EXPECT_EQ(other->ReadValue("ImportFile", "none"), "a.csv");
  other->SetSection("QDX");
  EXPECT_EQ(other->ReadValue("ImportFile", "none"), "none");
  EXPECT_EQ(host_->BookSetting("CSV", "ImportFile"), "a.csv");
  other->SetFileName(host_->app.SettingsFileName());
  other->SetSection("Files");
  EXPECT_EQ(other->ReadValue("WriteRollback", "0"), "1");
}

TEST_F(MemoryHostTest, ASettingThatCannotBeWrittenStaysAsItWas) {
  record_.FailOn("Ini.WriteValue", 1, DiskFull());
  const auto file = host_->factory.NewIniFile();
  file->SetFileName("x.ini");
  file->SetSection("S");
  EXPECT_THROW(file->WriteValue("K", "V"), Failure);
  EXPECT_EQ(file->ReadValue("K", "old"), "old");
}

TEST_F(MemoryHostTest, TheLogKeepsErrorsAndAudits) {
  host_->app.Log().LogError("E", 3, -1);
  host_->app.Log().AuditEntry("Sales", "Import", "System Fields", {"a.txt"});
  EXPECT_THAT(host_->app.log.errors, ElementsAre(MemoryLog::Error{"E", 3, -1}));
  EXPECT_THAT(host_->app.log.audits, ElementsAre(MemoryLog::Audit{"Sales", "Import", "System Fields", {"a.txt"}}));
}

// --- Printer ---------------------------------------------------------------------------------------------------------

class ImportReport : public PrinterEvents {
 public:
  explicit ImportReport(MemoryMasterfile& book) : book_(book) {}
  void PrintInit(Printer& printer) override {
    book_.InitReportPrinter(printer);
    printer.SetColumnMode(1);
    printer.Columns().Clear();
    printer.Columns().Add(1);
    printer.Columns().Add(3);
    printer.ApplyColumns();
  }
  void PrintHeader(Printer& printer) override { book_.PrintReportHeader(printer, "QDX Import"); }

 private:
  MemoryMasterfile& book_;
};

TEST_F(MemoryHostTest, AReportOutlivesItsPrinter) {
  ImportReport events(book_);
  auto printer = host_->factory.NewPrinter();
  printer->SetEvents(&events);
  printer->SetOutputOption(4);
  ASSERT_TRUE(printer->BeginReport(17, "QDX Import Report"));
  printer->PrintLine("Free text");
  printer->Columns().Item(1).SetText("From");
  printer->Columns().Item(2).SetText("To");
  printer->PrintHeadingRow();
  printer->Columns().ClearText();
  printer->Columns().Item(2).SetText("x");
  printer->PrintRow();
  printer->EndReport();
  printer.reset();

  const PrintedReport& report = *host_->factory.reports.at(0);
  EXPECT_EQ(report.title, "QDX Import Report");
  EXPECT_EQ(report.owner, 17);
  EXPECT_EQ(report.output_option, 4);
  EXPECT_EQ(report.column_mode, 1);
  EXPECT_TRUE(report.columns_applied);
  EXPECT_THAT(report.widths, ElementsAre(1.0F, 3.0F));
  EXPECT_THAT(report.Everything(), ElementsAre("QDX Import - North Shop", "Free text", "# From | To", " | x"));
  EXPECT_THAT(report.Lines(), ElementsAre("QDX Import - North Shop", "Free text"));
  EXPECT_TRUE(report.ended);
  EXPECT_FALSE(report.open);
}

TEST_F(MemoryHostTest, EveryPageHasItsHead) {
  ImportReport events(book_);
  host_->printer.SetEvents(&events);
  ASSERT_TRUE(host_->printer.BeginReport(0, "R"));
  host_->printer.BeginPage();
  EXPECT_THAT(record_.ArgumentsOf("PrintReportHeader"), ElementsAre("QDX Import", "QDX Import"));
  EXPECT_THAT(record_.ArgumentsOf("InitReportPrinter"), ElementsAre(""));
}

TEST_F(MemoryHostTest, AReportThatTheUserDeclinesPrintsNothing) {
  ImportReport events(book_);
  host_->printer.SetEvents(&events);
  record_.GiveFalseOn("Printer.BeginReport", 1);
  EXPECT_FALSE(host_->printer.BeginReport(0, "R"));
  host_->printer.PrintLine("lost");
  host_->printer.EndReport();
  EXPECT_TRUE(host_->printer->declined);
  EXPECT_THAT(host_->printer->entries, IsEmpty());
  EXPECT_THAT(record_.ArgumentsOf("PrintReportHeader"), IsEmpty());
}

TEST_F(MemoryHostTest, ThePrintersProgressCanBeCancelled) {
  host_->printer->progress.CancelAtPoll(2);
  host_->printer.BeginProgress("Zeroing out data");
  host_->printer.SetProgressFraction(0.25F);
  EXPECT_FALSE(host_->printer.ProgressCancelled());
  EXPECT_TRUE(host_->printer.ProgressCancelled());
  host_->printer.EndProgress();
  EXPECT_FALSE(host_->printer.ProgressCancelled());
  EXPECT_THAT(host_->printer->progress.titles, ElementsAre("Zeroing out data"));
  EXPECT_THAT(host_->printer->progress.fractions, ElementsAre(0.25F));
}

TEST_F(MemoryHostTest, AColumnOutsideTheSetIsARangeFailure) {
  host_->printer.Columns().Add(1);
  for (const Integer position : {Integer{0}, Integer{2}, Integer{-1}}) {
    try {
      host_->printer.Columns().Item(position);
      FAIL() << "there is a column " << position;
    } catch (const Failure& failure) {
      EXPECT_EQ(failure.Number(), FailureNumber::kRange);
    }
  }
}

// --- Export library --------------------------------------------------------------------------------------------------

class MemoryExportObjectTest : public MemoryHostTest {
 protected:
  std::shared_ptr<DataExportObject> tables_ = host_->factory.NewDataExportObject();

  Long Create(Integer columns) {
    Long handle = 0;
    EXPECT_TRUE(tables_->CreateTable("a.csv", "CSV", "a", columns, handle));
    return handle;
  }
};

TEST_F(MemoryExportObjectTest, CellsStayFromRowToRow) {
  const Long table = Create(3);
  ASSERT_TRUE(tables_->AddColumn(table, 1, ColumnType::kDate, 10, 0, "Date"));
  ASSERT_TRUE(tables_->AddColumn(table, 2, ColumnType::kInteger, 5, 0, "Field"));
  ASSERT_TRUE(tables_->AddColumn(table, 3, ColumnType::kDouble, 12, 3, "Value"));
  ASSERT_TRUE(tables_->SetDate(table, 1, kDay));
  ASSERT_TRUE(tables_->SetInteger(table, 2, 1));
  ASSERT_TRUE(tables_->SetDouble(table, 3, 0.1, 3));
  EXPECT_EQ(tables_->CommitRow(table), kRowCommitted);
  ASSERT_TRUE(tables_->SetInteger(table, 2, 2));
  EXPECT_EQ(tables_->CommitRow(table), kRowCommitted);
  tables_->CloseTable(table);
  tables_.reset();
  const ExportedTable& written = *host_->factory.exports.at(0)->at(0);
  EXPECT_THAT(written.rows, ElementsAre(ElementsAre("2004-02-03", "1", "0.1"), ElementsAre("2004-02-03", "2", "0.1")));
  EXPECT_EQ(written.columns.at(2), (ExportedTable::Column{"Value", ColumnType::kDouble, 12, 3}));
  EXPECT_TRUE(written.closed);
}

TEST_F(MemoryExportObjectTest, CellsThatDoNotFitTheTableAreRefused) {
  const Long table = Create(2);
  ASSERT_TRUE(tables_->AddColumn(table, 1, ColumnType::kSmallNumber, 2, 0, "Month"));
  ASSERT_TRUE(tables_->AddColumn(table, 2, ColumnType::kInteger, 5, 0, "Field"));
  EXPECT_FALSE(tables_->AddColumn(table, 3, ColumnType::kText, 5, 0, "Third"));
  EXPECT_TRUE(tables_->SetByte(table, 1, 2004)) << "a year is a small number";
  EXPECT_FALSE(tables_->SetByte(table, 2, 1));
  EXPECT_FALSE(tables_->SetInteger(table, 0, 1));
  EXPECT_FALSE(tables_->SetDouble(table, 2, 1, 3));
  EXPECT_FALSE(tables_->SetDate(table, 1, kDay));
  EXPECT_TRUE(tables_->SetText(table, 1, "Month")) << "titles go into any column";
  EXPECT_FALSE(tables_->SetText(table + 1, 1, "Month"));
  EXPECT_EQ(tables_->CommitRow(table), kRowCommitted);
  EXPECT_FALSE(tables_->AddColumn(table, 1, ColumnType::kText, 5, 0, "Late"));
  tables_->CloseTable(table);
  EXPECT_NE(tables_->CommitRow(table), kRowCommitted);
  EXPECT_THROW(tables_->CloseTable(table), Failure);
}

TEST_F(MemoryExportObjectTest, FiveFormatsAreOfferedAndTheirCapabilitiesCanBeSet) {
  FormatDescription format;
  ASSERT_EQ(tables_->NumFormats(), 5);
  ASSERT_TRUE(tables_->FormatInfo(1, format));
  EXPECT_EQ(format.code, "CSV");
  EXPECT_EQ(format.extension, "csv");
  EXPECT_EQ(format.capability, kWantsTitleRow);
  EXPECT_FALSE(tables_->FormatInfo(0, format));
  EXPECT_FALSE(tables_->FormatInfo(6, format));
  EXPECT_EQ(format.code, "CSV") << "untouched";
  EXPECT_EQ(tables_->FormatFlags("TXT"), 0);
  EXPECT_EQ(tables_->FormatFlags("DBF"), kHasDateColumn);
  EXPECT_EQ(tables_->FormatFlags("NONE"), 0);
  ASSERT_TRUE(host_->factory.LastExport()->SetCapability("TXT", kWantsTitleRow));
  EXPECT_EQ(tables_->FormatFlags("TXT"), kWantsTitleRow);
  EXPECT_FALSE(host_->factory.LastExport()->SetCapability("NONE", 1));
}

TEST_F(MemoryExportObjectTest, AnyCallCanBeRefusedOrFail) {
  record_.GiveFalseOn("Export.CreateTable", 1);
  Long handle = 55;
  EXPECT_FALSE(tables_->CreateTable("a.csv", "CSV", "a", 1, handle));
  EXPECT_EQ(handle, 55);
  EXPECT_FALSE(tables_->CreateTable("a.csv", "NONE", "a", 1, handle));
  const Long table = Create(1);
  record_.GiveFalseOn("Export.CommitRow", 2);
  EXPECT_EQ(tables_->CommitRow(table), kRowCommitted);
  EXPECT_NE(tables_->CommitRow(table), kRowCommitted);
  EXPECT_EQ(host_->factory.exports.at(0)->at(0)->rows.size(), 1U);
  record_.FailOn("Export.CloseTable", 1, DiskFull());
  EXPECT_THROW(tables_->CloseTable(table), Failure);
}

// --- List window and print sequence ----------------------------------------------------------------------------------

class NotedEvents : public EdtFormEvents {
 public:
  std::vector<Text> noted;
  int totals = 0;
  void ShowTotals(Text& text) override { text = std::to_string(++totals) + ". totals"; }
  void ActionButton(Integer button, Integer record) override {
    noted.push_back("Action " + std::to_string(button) + " " + std::to_string(record));
  }
  void AddRec(Integer& record) override { record = 9; }
  void EditRec(Integer record) override { noted.push_back("Edit " + std::to_string(record)); }
  void DeleteRec(Integer record) override { noted.push_back("Delete " + std::to_string(record)); }
  void EditSave(bool& result) override { result = true; }
  void ShowHelp(Long topic) override { noted.push_back("Help " + std::to_string(topic)); }
  void NeedtoShutdown(bool& flag) override { flag = false; }
};

TEST_F(MemoryHostTest, AListWindowRunsTheUsersActsWhileItIsOpen) {
  NotedEvents events;
  host_->factory.prepare_form = [](MemoryEdtForm& form) {
    form.acts.push_back([](MemoryEdtForm& window, EdtFormEvents& listener) {
      EXPECT_TRUE(window->open);
      listener.ActionButton(2, window.FindRow("B")->record);
    });
  };
  auto form = host_->factory.NewEdtForm();
  form->SetEvents(&events);
  form->SetTitle("Layouts");
  form->AddColumn("Name", false);
  form->AddColumn("Count", true);
  form->SetActionButton(2, "Import");
  form->AddRow("A", 1, "First");
  form->AddRow("B", 2, "Second");
  form->AddCell("12");
  form->RemoveRow("A");
  form->RemoveRow("C");
  form->RefreshTotals();
  form->Show(8);
  form.reset();

  const ListWindow& window = *host_->factory.windows.at(0);
  EXPECT_THAT(events.noted, ElementsAre("Action 2 2"));
  EXPECT_THAT(window.rows, ElementsAre(ListWindow::Row{"B", 2, {"Second", "12"}}));
  EXPECT_EQ(window.totals, "1. totals");
  EXPECT_EQ(window.title, "Layouts");
  EXPECT_EQ(window.action_buttons.at(2), "Import");
  EXPECT_EQ(window.owner, 8);
  EXPECT_EQ(window.shown, 1);
  EXPECT_FALSE(window.open);
  EXPECT_THAT(record_.calls, Contains("EdtForm.AddRow B 2 Second"));
}

TEST_F(MemoryHostTest, AListWindowAsksForItsTotalsWhenItIsShownAndAfterItsRowsHaveChanged) {
  NotedEvents events;
  MemoryEdtForm form(record_);
  form.SetEvents(&events);
  std::vector<int> asked;
  form.acts = {[&](MemoryEdtForm& window, EdtFormEvents&) {
                 asked.push_back(window->totals_asked);
                 window.RefreshTotals();
               },
               [&](MemoryEdtForm& window, EdtFormEvents&) {
                 asked.push_back(window->totals_asked);
                 window.AddRow("A", 1, "First");
                 window.AddRow("B", 2, "Second");
               },
               [&](MemoryEdtForm& window, EdtFormEvents&) {
                 asked.push_back(window->totals_asked);
                 window.RemoveRow("none");
               },
               [&](MemoryEdtForm& window, EdtFormEvents&) { window.RemoveRow("A"); },
               [&](MemoryEdtForm& window, EdtFormEvents&) { window.ClearList(); }};
  form.Show(0);
  EXPECT_THAT(asked, ElementsAre(1, 1, 2)) << "once for all that one event changes";
  EXPECT_EQ(form->totals_asked, 4);
  EXPECT_EQ(form->totals, "4. totals");
  EXPECT_EQ(form->totals_drawn, 1) << "drawing asks for nothing";
}

TEST_F(MemoryHostTest, AListWindowRemovesTheFirstOfRowsWithOneKey) {
  MemoryEdtForm form(record_);
  for (const Integer record : {Integer{1}, Integer{2}, Integer{3}}) form.AddRow(record == 2 ? "B" : "A", record, "");
  form.RemoveRow("A");
  EXPECT_THAT(form->rows, ElementsAre(ListWindow::Row{"B", 2, {""}}, ListWindow::Row{"A", 3, {""}}));
}

TEST_F(MemoryHostTest, AListWindowRefusesACellWithoutARowAndActsThatNobodyHears) {
  MemoryEdtForm form(record_);
  EXPECT_THROW(form.AddCell("x"), Failure);
  form.Show(0);
  form.acts.push_back([](MemoryEdtForm&, EdtFormEvents&) {});
  EXPECT_THROW(form.Show(0), std::logic_error);
  EXPECT_FALSE(form->open);
}

class TwoSequences : public SequenceReport {
 public:
  [[nodiscard]] Integer NumSequences() const override { return 2; }
  void RestoreOrigSequence() override {}
};

TEST_F(MemoryHostTest, APrintSequenceRemembersItsReport) {
  TwoSequences report;
  const auto sequence = host_->factory.NewPrintSequence();
  sequence->LoadSequences(report);
  sequence->SetSequenceFixed(true);
  sequence->RefreshSequences();
  sequence->ApplySequences();
  EXPECT_TRUE(sequence->SequenceFixed());
  EXPECT_EQ(host_->factory.LastSequence()->Report(), &report);
  EXPECT_THAT(record_.calls, ElementsAre("PrintSequence.LoadSequences", "PrintSequence.SetSequenceFixed true",
                                         "PrintSequence.RefreshSequences", "PrintSequence.ApplySequences"));
}

// --- Factory ---------------------------------------------------------------------------------------------------------

TEST_F(MemoryHostTest, TheFactorysCalendarCanBeAttachedToTheBook) {
  const auto calendar = host_->factory.NewFiscalCalendar();
  calendar->Attach(book_);
  EXPECT_EQ(calendar->LevelDate(kDay, kPeriodLevel), DateFromParts(2004, 2, 29));
  EXPECT_EQ(host_->factory.LastCalendar(), calendar.get());
}

TEST_F(MemoryHostTest, TheApplicationAnswersWhatItWasTold) {
  host_->app.title = "Other";
  host_->app.idle_minutes = 5;
  HostApp& app = book_.App();
  EXPECT_EQ(app.Title(), "Other");
  EXPECT_EQ(app.IdleMinutes(), 5);
  app.SetIdleExpired(true);
  EXPECT_TRUE(app.IdleExpired());
  app.HelpTopic(31);
  EXPECT_THAT(record_.ArgumentsOf("App.HelpTopic"), ElementsAre("31"));
}

}  // namespace
}  // namespace tallybook::testing
