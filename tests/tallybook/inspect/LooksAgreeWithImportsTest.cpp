// What a look finds, held against what the import does with the same file, over random files.

#include <algorithm>
#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include "tallybook/inspect/CsvLook.h"
#include "tallybook/inspect/DelimitedLook.h"
#include "tests/import/TextImportSetup.h"
#include "tests/tallybook/inspect/CsvFieldsIn.h"
#include "tests/tallybook/inspect/Findings.h"

namespace tallybook::inspect {
namespace {

const Text kPath = "/in/figures.txt";

// A text of some of these, one behind the other.
rc::Gen<std::string> Some(std::vector<std::string> parts) {
  return rc::gen::map(rc::gen::container<std::vector<std::string>>(rc::gen::elementOf(std::move(parts))),
                      [](const std::vector<std::string>& taken) {
                        std::string text;
                        for (const std::string& part : taken) text += part;
                        return text;
                      });
}

class Trial {
 public:
  explicit Trial(const std::string& bytes) { setup.platform.memory.Put(kPath, bytes); }

  // The user refuses the first question of an audit.
  bool ImportsCsv() {
    setup.platform.boxes.Answer({kNo});
    const CSVImportRequest request{.file_name = kPath, .no_prompts = true};
    return ImportCSV(setup.book(), request, setup.tally);
  }
  bool ImportsDelimited() {
    setup.platform.boxes.Answer({kOk, kNo});
    const DelimitedImportRequest request{
        .file_name = kPath, .math = eMath::mAdd, .date_order = kMonthDayYear, .date_fields = -1};
    return ImportDelimited(setup.book(), request, setup.tally);
  }

  testing::TextImportSetup setup;
  testing::FindingList list;
};

// Only where no line is passed over do both read the same records.
bool MovesNothing(const std::vector<Finding>& findings) {
  return std::ranges::none_of(findings, [](const Finding& finding) {
    return finding.column_name.empty() &&
           (finding.reason.find("moves") != Text::npos || finding.reason.find("never closed") != Text::npos);
  });
}

RC_GTEST_PROP(LooksAgreeWithImportsProperties, ACsvFileIsImportedWhereNothingWasFoundThatStopsIt, ()) {
  const std::string bytes = "2,3,2004,1," + *rc::gen::element<std::string>("0", "1") +
                            *rc::gen::element<std::string>("\r\n", ",") +
                            *Some({"100,1,5\r\n", "101,2,7\r\n", "999,1,5\r\n", "100,77,5\r\n", "200,2,1e999\r\n",
                                   ",0,0,2,4,2004\r\n", "0,0,0\r\n2,5,2004\r\n", ",,,1,1,2010\r\n", "100,1,\"5\"\r\n",
                                   "100,1,5,", "\r\n", "300,1,x\r\n", "12345678901,1,5\r\n", "\"100\r\n"});
  Trial trial(bytes);
  const LookTally tally = LookAtCsv(trial.setup.book(), {.file = kPath}, trial.list);
  RC_ASSERT(testing::FieldsIn(trial.setup, trial.list.whole) == testing::FieldsIn(trial.setup, bytes));
  RC_ASSERT(trial.setup.Changed().empty());
  if (!MovesNothing(trial.list.findings)) return;
  const bool stops = tally.Of(Effect::kAudit) + tally.Of(Effect::kStop) > 0;
  RC_ASSERT(trial.ImportsCsv() == !stops);
}

RC_GTEST_PROP(LooksAgreeWithImportsProperties, TheSoundPartOfACsvFileIsImported, ()) {
  const std::string bytes =
      "2,3,2004,1,1" + *rc::gen::element<std::string>("\r\n", "\r\n", ",") +
      *Some({"100,1,5\r\n", "200,1,5\r\n", "999,1,5\r\n", "100,77,5\r\n", "300,2,\"1,5\"\r\n", ",0,0,2,4,2004\r\n",
             ",0,0,2,5,2004\r\n", ",,,1,1,2010\r\n", "100,1,5,9\r\n", "\r\n", "200,2,5,", "100\r\n2\r\n5\r\n",
             "999,1,5,", ",0,0\r\n2,6,2004\r\n", "300,1,7,200,1"});
  Trial trial(bytes);
  LookAtCsv(trial.setup.book(), {.file = kPath}, trial.list);
  Trial sound(trial.list.sound);
  const LookTally tally = LookAtCsv(sound.setup.book(), {.file = kPath}, sound.list);
  RC_ASSERT(tally.All() == 0);
  RC_ASSERT(sound.ImportsCsv());
}

// A line that the import would stop the whole process at is not tried.
RC_GTEST_PROP(LooksAgreeWithImportsProperties, ADelimitedFileIsImportedWhereNothingWasFoundThatStopsIt, ()) {
  const std::string end = *rc::gen::element<std::string>("\r", "\r\n");
  std::string bytes;
  for (const std::string& line : *rc::gen::container<std::vector<std::string>>(rc::gen::element<std::string>(
           "02/03/2004,100,1,5", "02/04/2004,200,1,5,2,6", "02/03/2004\t300\t1\t5", "02/03/2004,999,1,5",
           "02/03/2010,100,1,5", "02/03/2004,100,77,5", "02/03/2004,100,7,5", "02/03/2004,100,1,,2,5",
           "02/03/2004,100,1,5,;note", "02/31/2004,100,1,5", "02/03/2004,100,1,5,,,2,x", "02/03/2004,100,1,\"5\"",
           "\"02/03/2004,100,1,5"))) {
    bytes += line + end;
  }
  Trial trial(bytes);
  const LookTally tally = LookAtDelimited(trial.setup.book(), {.file = kPath}, trial.list);
  RC_ASSERT(trial.setup.Changed().empty());
  if (tally.Of(Effect::kStop) > 0) return;
  RC_ASSERT(trial.ImportsDelimited() == (tally.Of(Effect::kAudit) == 0));
}

RC_GTEST_PROP(LooksAgreeWithImportsProperties, ADelimitedFileIsPartedLineByLine, ()) {
  const auto bytes = *Some({"02/03/2004,100,1,5", "999", ",", ";", "\"", "\r\n", "\r", "\n", "x"});
  Trial trial(bytes);
  LookAtDelimited(trial.setup.book(), {.file = kPath, .form = {.any_line_end = true}}, trial.list);
  RC_ASSERT(trial.list.rejects.size() + trial.list.sound.size() <= bytes.size());
  RC_ASSERT(trial.list.rejects.size() + trial.list.sound.size() == trial.list.whole.size());
}

}  // namespace
}  // namespace tallybook::inspect
