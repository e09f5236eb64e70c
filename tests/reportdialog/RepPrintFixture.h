// What the tests of the print dialog share: a report that answers whatever a test wants, and a dialog over the small
// book of months from 2003 to 2005 (today is Tuesday, 2004-02-03; weeks end on Saturday).
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <memory>
#include <vector>

#include "base/Dates.h"
#include "base/Failure.h"
#include "reportdialog/dlgRepPrint.h"
#include "tests/support/FailsWith.h"
#include "tests/support/MemoryHost.h"
#include "tests/support/ScriptedPlatform.h"

namespace tallybook::testing {

inline Date Day(int year, int month, int day) {
  return DateFromParts(year, month, day);
}

class TestReport : public ReportObject {
 public:
  explicit TestReport(Masterfile* masterfile) : owner(masterfile) {}

  Masterfile* owner;
  Integer type = kExportReport;
  Text report_class;
  Integer file_number = 0;
  Integer print_mode = 0;
  bool uses_last_year = false;
  bool in_print_job = false;
  Integer sub_column_type = 0;
  Integer sort_column = 0;
  bool command_line = false;
  bool transpose = false;
  bool print_no_data = false;
  bool new_page = false;
  Integer sequences = 1;
  // What the dialog did, in order: "LineStyle 3", "Transpose 1", "RestoreOrigSequence" ...
  std::vector<Text> done;
  // Queries of this name fail.
  Text failing_query;

  [[nodiscard]] Masterfile& Owner() const override {
    if (owner == nullptr) throw Failure(FailureNumber::kObjectNotSet, "no owner");
    return *owner;
  }
  [[nodiscard]] Integer ReportType() const override { return Asked("ReportType", type); }
  [[nodiscard]] Text ReportClass() const override { return Asked("ReportClass", report_class); }
  [[nodiscard]] Integer FileNum() const override { return Asked("FileNum", file_number); }
  [[nodiscard]] Integer PrintMode() const override { return Asked("PrintMode", print_mode); }
  [[nodiscard]] bool UsesLastYear() const override { return Asked("UsesLastYear", uses_last_year); }
  [[nodiscard]] bool inPrintJob() const override { return Asked("inPrintJob", in_print_job); }
  [[nodiscard]] Integer SubColumnType() const override { return Asked("SubColumnType", sub_column_type); }
  [[nodiscard]] Integer SortColumn() const override { return Asked("SortColumn", sort_column); }
  [[nodiscard]] bool CommandLinePrinting() const override { return command_line; }
  [[nodiscard]] bool Transpose() const override { return Asked("Transpose", transpose); }
  void SetTranspose(bool transposed) override { Note("Transpose", transposed); }
  void SetLineStyle(Integer style) override { Note("LineStyle", style); }
  [[nodiscard]] Integer NumSequences() const override { return Asked("NumSequences", sequences); }
  void RestoreOrigSequence() override { done.emplace_back("RestoreOrigSequence"); }
  [[nodiscard]] bool PrintNoData() const override { return Asked("PrintNoData", print_no_data); }
  void SetPrintNoData(bool printed) override { Note("PrintNoData", printed); }
  [[nodiscard]] bool NewPagePerAccount() const override { return Asked("NewPagePerAccount", new_page); }
  void SetNewPagePerAccount(bool separate) override { Note("NewPagePerAccount", separate); }

 private:
  template <typename Value>
  [[nodiscard]] Value Asked(const char* query, const Value& value) const {
    if (failing_query == query) throw Failure(FailureNumber::kDeviceError, "no answer", "TestReport");
    return value;
  }
  void Note(const char* what, int value) { done.push_back(Text(what) + " " + std::to_string(value)); }
};

class RepPrintTest : public ::testing::Test {
 protected:
  // Another book; before anything else.
  void UseBook(const BookShape& shape) {
    dialog_.reset();
    host_ = std::make_unique<MemoryHost>(shape);
    report_.owner = &host_->book;
  }
  static BookShape AtLevel(Integer data_level) {
    BookShape shape;
    shape.data_level = data_level;
    return shape;
  }

  // The dialog, not filled yet.
  dlgRepPrint& dialog() {
    if (!dialog_) dialog_ = std::make_unique<dlgRepPrint>(host_->factory);
    return *dialog_;
  }
  // Fills and shows it.
  dlgRepPrint& Open() {
    dialog().SetFields(report_, "Sales by Account", "Print", 11000);
    dialog().Show();
    return dialog();
  }
  dlgRepPrint& OpenOn(Date current_date) {
    dialog().SetCurrentDate(current_date);
    return Open();
  }

  // The user's acts. Each expects to be possible.
  void Press(Integer button) {
    EXPECT_TRUE(dialog().Command1[static_cast<std::size_t>(button)].UserClick()) << "button " << button;
  }
  void Next() { Press(kNextButton); }
  void Back() { Press(kBackButton); }
  void ChooseLength(Integer length) { EXPECT_TRUE(dialog().optLength(length).UserClick()) << "length " << length; }
  void ChooseStyle(Integer style) { EXPECT_TRUE(dialog().OptStyle(style).UserClick()) << "style " << style; }
  void ChooseYear(std::size_t list, Integer entry) { EXPECT_TRUE(dialog().cmbYear[list].UserChoose(entry)); }
  void ChooseDate(std::size_t calendar, Date date) {
    EXPECT_TRUE(dialog().Calendar[calendar].UserChoose(date)) << DateText(date);
  }

  // What is seen.
  [[nodiscard]] Integer Length() { return dialog().optLength.Selected(); }
  [[nodiscard]] Text LabelText(std::size_t index) { return dialog().DateLabel[index].Caption(); }
  [[nodiscard]] std::vector<Integer> EnabledLengths() {
    std::vector<Integer> enabled;
    for (Integer i = 1; i <= 8; ++i) {
      if (dialog().optLength(i).Enabled()) enabled.push_back(i);
    }
    return enabled;
  }
  [[nodiscard]] std::vector<Integer> VisiblePages() {
    std::vector<Integer> visible;
    for (Integer page = 1; page <= 3; ++page) {
      if (dialog().PageFrame(page).Visible()) visible.push_back(page);
    }
    return visible;
  }
  [[nodiscard]] static std::vector<Text> Entries(const ListControl& list) {
    std::vector<Text> texts;
    for (Integer i = 0; i < list.ListCount(); ++i) texts.push_back(list.List(i));
    return texts;
  }
  [[nodiscard]] std::vector<Text> CompareEntries() { return Entries(dialog().cmbCompareRange); }
  [[nodiscard]] std::vector<MemoryLog::Error>& LogErrors() { return host_->app.log.errors; }
  // First and last day of what the calendar offers.
  [[nodiscard]] std::vector<Text> LimitsOf(std::size_t calendar) {
    const CalendarBox& box = dialog().Calendar[calendar];
    return {DateText(box.MinDate()), DateText(box.MaxDate())};
  }
  // The range as texts, after the last step.
  [[nodiscard]] std::vector<Text> Range() { return {DateText(dialog().StartDate()), DateText(dialog().EndDate())}; }
  [[nodiscard]] std::vector<Text> Compared() {
    return {DateText(dialog().CompareStart()), DateText(dialog().CompareEnd())};
  }

  ScriptedPlatform platform_{FilesIn::kMemory};
  std::unique_ptr<MemoryHost> host_ = SmallBook();
  TestReport report_{&host_->book};
  std::unique_ptr<dlgRepPrint> dialog_;
};

}  // namespace tallybook::testing
