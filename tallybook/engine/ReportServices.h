// What a book asks of its application when a report of the book is printed. The application owns it, and it outlives
// the book.
#pragma once

#include "base/Types.h"
#include "host/Masterfile.h"
#include "host/Printer.h"
#include "host/Sequence.h"

namespace tallybook::engine {

class ReportServices {
 public:
  virtual ~ReportServices() = default;

  // Prepares a printer for a report of `book`; called from the printer's print-start event.
  virtual void InitReportPrinter(Masterfile& book, Printer& printer) = 0;
  // Prints the head of the report `name`; called from the printer's header event.
  virtual void PrintReportHeader(Masterfile& book, Printer& printer, const Text& name) = 0;
  // The print sequences that are saved for `book`.
  virtual SequenceList& PrintSequences(Masterfile& book) = 0;
};

}  // namespace tallybook::engine
