// Prints what differs between exchange files and a book in one of three forms, fast enough for millions of figures. The
// forms are told in docs/command-line.md.
#pragma once

#include <functional>
#include <iosfwd>
#include <string>
#include <vector>

#include "tallybook/application/TieOut.h"
#include "tallybook/cli/PrintForm.h"
#include "tallybook/engine/Book.h"

namespace tallybook::cli {

// A table shows 15 digits of a value; CSV and JSON hold the shortest text that reads back to the same number. CSV has
// the figures alone.
class TieOutPrinter {
 public:
  // All of it must outlive the printer. `tie_out` has held its files.
  TieOutPrinter(const engine::Book& book, application::TieOut& tie_out, std::ostream& out)
      : book_(book), tie_out_(tie_out), out_(out) {}

  void Print(PrintForm form);

 private:
  void PrintTable();
  void PrintTableOfTotals();
  void PrintCsv();
  void PrintJson();
  void PrintJsonTotals(const Text& name, const std::vector<application::TieOutTotal>& totals);
  void PrintJsonFiles();
  void PrintFigures(const std::function<Text(const application::TieOutFigure& figure)>& line_of);
  [[nodiscard]] const Text& CodeOf(Integer account_position) const;
  [[nodiscard]] Text FieldText(Integer number, Integer position) const;
  [[nodiscard]] const Text& FileOf(const application::TieOutFigure& figure) const;
  void Line(const Text& line);
  bool GoesOn();
  void WriteOut();

  const engine::Book& book_;
  application::TieOut& tie_out_;
  std::ostream& out_;
  std::string buffer_;
};

}  // namespace tallybook::cli
