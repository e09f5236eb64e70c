// Prints figures in one of three forms, fast enough for tens of millions. The forms are told in docs/command-line.md.
#pragma once

#include <iosfwd>
#include <memory>
#include <string>
#include <vector>

#include "base/Types.h"
#include "tallybook/cli/PrintForm.h"
#include "tallybook/engine/Book.h"

namespace tallybook::cli {

// A table shows 15 digits of a value; CSV and JSON hold the shortest text that reads back to the same number.
class FigurePrinter {
 public:
  // Prints to `out`; both must outlive the printer. Begin is first, Finish last, and what stands between is the
  // figures, in the order in which they are to be printed.
  FigurePrinter(PrintForm form, const engine::Book& book, std::ostream& out);

  void Begin();
  // Failure 5, in JSON alone, for a value that JSON has no form for: not-a-number and the infinities.
  void Print(const engine::Figure& figure);
  void Finish();

 private:
  void PrepareAccount(const engine::Figure& figure);
  void PrintTableRow(const engine::Figure& figure);
  void PrintCsvRow(const engine::Figure& figure);
  void PrintJsonRow(const engine::Figure& figure);
  void AppendValue(Double value);
  void AppendNumber(Long number);
  void WriteOut();

  PrintForm form_;
  const engine::Book& book_;
  std::ostream& out_;
  std::string buffer_;
  bool any_ = false;

  // What changes seldom is made once.
  Integer account_position_ = 0;
  std::string account_text_;
  Date date_ = kNoDate;
  std::string date_text_;
  std::vector<std::string> field_texts_;  // of the table, by field position
};

// A figure as the shortest decimal text that reads back to the same number.
[[nodiscard]] Text ShortestText(Double value);
// The same for a field of CSV; empty for a sum that is too large for a number.
[[nodiscard]] Text CsvNumber(Double value);
// A further member of a JSON object: `, "name": 1.5`. Empty for what JSON has no number for: a sum that is too large.
[[nodiscard]] Text JsonMember(const char* name, Double value);

}  // namespace tallybook::cli
