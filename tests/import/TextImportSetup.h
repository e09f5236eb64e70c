// What the tests of the two text imports stand on: a small book, files in memory and the boxes that were shown. The
// fixtures add their own verbs.
#pragma once

#include <gtest/gtest.h>
#include <initializer_list>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "base/Dates.h"
#include "import/CSVImport.h"
#include "import/DelimitedImport.h"
#include "tests/support/MemoryHost.h"
#include "tests/support/ScriptedPlatform.h"

namespace tallybook::testing {

inline constexpr Long kRefusalBox = kExclamationIcon | kOkOnly;
inline constexpr Long kRetryBox = kQuestionIcon | kRetryCancel;
inline constexpr Long kConfirmBox = kQuestionIcon | kOkCancel;
inline constexpr Long kAuditBox = kQuestionIcon | kYesNo | kSecondButtonDefault;
inline constexpr Long kTellBox = kInformationIcon | kOkOnly;

// The caption of the boxes: that of the application in memory, not the platform's own.
inline const Text kCaption = "Tallybook";

// A refusal, and a question of the audit, as they are shown. A question's text is without its last line.
inline ShownBox Refusal(const Text& text) {
  return {text, kRefusalBox, kCaption, kOk};
}
inline ShownBox AuditQuestion(const Text& text, Integer answer) {
  return {text + "\r\n\r\nOk to continue auditing file?", kAuditBox, kCaption, answer};
}
inline ShownBox ErrorBox(int number, int statement) {
  return Refusal("Error:" + std::to_string(number) + ":" + std::to_string(statement) + "\r\nInformation not imported.");
}

// The days that most tests import.
inline const Date kThird = DateFromParts(2004, 2, 3);
inline const Date kFourth = DateFromParts(2004, 2, 4);

// A failure of the host, and its number in the "Error:" box.
inline constexpr int kFailed = 57;
inline Failure Fault() {
  return Failure(FailureNumber::kDeviceError, "The database gave up", "Engine");
}

inline BookShape ShapeOfLevel(Integer level) {
  BookShape shape;
  shape.data_level = level;
  return shape;
}

// Account 101 "100", 102 "200" and 205 "300" with the fields 1, 2 and 7 (kept by the system): SmallBook.
class TextImportSetup {
 public:
  explicit TextImportSetup(const BookShape& shape = {}) : host(SmallBook(shape)) { before = book().Figures(); }

  MemoryMasterfile& book() const { return host->book; }
  [[nodiscard]] Double Figure(Long account, Date date, Integer field) const { return book().Get(account, date, field); }
  // The figures that differ from those at the start.
  [[nodiscard]] MemoryMasterfile::FigureMap Changed() const {
    MemoryMasterfile::FigureMap changed;
    const MemoryMasterfile::FigureMap now = book().Figures();
    for (const auto& [key, value] : now) {
      const auto old = before.find(key);
      if (old == before.end() || old->second != value) changed[key] = value;
    }
    for (const auto& [key, value] : before) {
      if (!now.contains(key)) changed[key] = 0;
    }
    return changed;
  }

  [[nodiscard]] const std::vector<ShownBox>& Boxes() const { return platform.boxes.Shown(); }
  [[nodiscard]] std::vector<Text> Calls(std::initializer_list<Text> operations) const {
    std::vector<Text> found;
    for (const Text& call : host->record.calls) {
      for (const Text& operation : operations) {
        if (call == operation || call.starts_with(operation + " ")) found.push_back(call);
      }
    }
    return found;
  }
  // Records what an import does to records.
  void RecordWork() const {
    for (const char* operation : {"ReadRecord", "WriteRecord", "SetFieldValue"}) host->record.Record(operation, true);
  }
  [[nodiscard]] bool LeftNothingOpen() const {
    return platform.memory.OpenHandles() == 0 && !book().progress.open && !host->record.calls.empty() &&
           host->record.calls.back() == "EndProgress";
  }

  ScriptedPlatform platform{FilesIn::kMemory};
  std::unique_ptr<MemoryHost> host;
  MemoryMasterfile::FigureMap before;
  TextImportTally tally;
};

class TextImportFixture : public ::testing::Test {
 protected:
  explicit TextImportFixture(const BookShape& shape = {}) : setup_(shape) {}

  void Answer(std::initializer_list<Integer> answers) { setup_.platform.boxes.Answer(answers); }
  [[nodiscard]] Double Figure(Long account, Date date, Integer field) const {
    return setup_.Figure(account, date, field);
  }
  [[nodiscard]] CallRecord& Record() const { return setup_.host->record; }
  // Everything that an import asks the host from here on.
  void RecordAll() const {
    for (const char* operation : {"App",
                                  "App.Title",
                                  "DataLevel",
                                  "NumPeriods",
                                  "DateValid",
                                  "FiscalCalendar",
                                  "Calendar.SetCurrentDate",
                                  "Calendar.CurrentDate",
                                  "Calendar.LevelDate",
                                  "NewAccountRecord",
                                  "NumAccounts",
                                  "MaxAccounts",
                                  "AccountNumber",
                                  "NumFields",
                                  "MaxFields",
                                  "FieldNumber",
                                  "MasterFileTypeName",
                                  "ReadRecord",
                                  "WriteRecord",
                                  "FieldValue",
                                  "SetFieldValue",
                                  "AccountRecord.SetSelect",
                                  "AccountRecord.Code",
                                  "AccountRecord.Number",
                                  "NewFieldRecord",
                                  "FieldRecord.SetSelect",
                                  "FieldRecord.SystemMaintained"}) {
      Record().Record(operation, true);
    }
  }

  TextImportSetup setup_;
};

}  // namespace tallybook::testing
