#include "tallybook/application/ReportHeads.h"

#include "tallybook/application/Shown.h"

namespace tallybook::application {

void ReportHeads::InitReportPrinter(Masterfile& /*book*/, Printer& printer) {
  printer.Columns().Clear();
}

void ReportHeads::PrintReportHeader(Masterfile& book, Printer& printer, const Text& name) {
  printer.PrintLine(Shown(book.SystemName()) + " - " + name);  // a line break in it would make a line of its own
}

SequenceList& ReportHeads::PrintSequences(Masterfile& /*book*/) {
  return no_sequences_;
}

}  // namespace tallybook::application
