// Prints a preview in one of three forms, fast enough for millions of figures. The forms are told in
// docs/command-line.md.
#pragma once

#include <iosfwd>
#include <string>
#include <vector>

#include "tallybook/application/PreviewOutcome.h"
#include "tallybook/cli/PrintForm.h"
#include "tallybook/engine/Book.h"
#include "tallybook/preview/ImportPreview.h"

namespace tallybook::cli {

// A table shows 15 digits of a value; CSV and JSON hold the shortest text that reads back to the same number. CSV has
// the figures alone.
class PreviewPrinter {
 public:
  // All of it must outlive the printer.
  PreviewPrinter(const engine::Book& book, preview::ImportPreview& preview, const application::PreviewOutcome& outcome,
                 std::ostream& out)
      : book_(book), preview_(preview), outcome_(outcome), out_(out) {}

  void Print(PrintForm form);

 private:
  void PrintTable();
  void PrintCsv();
  void PrintJson();
  void PrintTableOfFigures();
  void PrintTableOfTotals();
  void PrintTableOfDays();
  void PrintTableOfFiles();
  void PrintJsonOfFigures();
  void PrintJsonOfTotals();
  void PrintJsonOfDays();
  void PrintJsonOfFiles();

  // What a line of figures begins with, made anew only where it changes.
  void PrepareFigure(PrintForm form, const preview::FigureChange& change);
  void PrepareFiles(PrintForm form);
  void AppendValue(Double value);
  void AppendPadded(Double value);
  [[nodiscard]] const Text& CodeOf(Integer account_position) const;
  [[nodiscard]] Text FieldText(Integer number, Integer position) const;
  [[nodiscard]] Text TotalCells(const preview::ChangeTotal& total) const;
  void Line(const Text& line);
  void Heading(const Text& line);
  void BeginList(const Text& name);
  void AddRow(const Text& row);
  void EndList();
  bool GoesOn();
  void WriteOut();

  const engine::Book& book_;
  preview::ImportPreview& preview_;
  const application::PreviewOutcome& outcome_;
  std::ostream& out_;
  std::string buffer_;
  bool first_row_ = true;

  Integer account_position_ = 0;
  Text account_text_;
  Date date_ = kNoDate;
  Text date_text_;
  std::vector<Text> field_texts_;  // by position from 0
  std::vector<Text> file_texts_;
};

}  // namespace tallybook::cli
