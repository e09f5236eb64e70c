#include "tallybook/application/ReportHeads.h"

namespace tallybook::application {

void ReportHeads::InitReportPrinter(Masterfile& /*book*/, Printer& printer) {
  printer.Columns().Clear();
}

void ReportHeads::PrintReportHeader(Masterfile& book, Printer& printer, const Text& name) {
  printer.PrintLine(book.SystemName() + " - " + name);
}

SequenceList& ReportHeads::PrintSequences(Masterfile& /*book*/) {
  return no_sequences_;
}

}  // namespace tallybook::application
