// How reports of a book begin in the reference host, and where the book finds its print sequences: none are kept.
// One thread.
#pragma once

#include "tallybook/engine/ReportServices.h"

namespace tallybook::application {

class ReportHeads : public engine::ReportServices {
 public:
  // Takes away the columns that a printer still has from another report.
  void InitReportPrinter(Masterfile& book, Printer& printer) override;

  // Prints one free line, "North Shop - QDX Import": the system's name and the report's. The moment of printing is the
  // printer's to show.
  void PrintReportHeader(Masterfile& book, Printer& printer, const Text& name) override;

  // An empty list, the same for every book.
  SequenceList& PrintSequences(Masterfile& book) override;

 private:
  SequenceList no_sequences_;
};

}  // namespace tallybook::application
