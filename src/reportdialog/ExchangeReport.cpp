#include "reportdialog/ExchangeReport.h"

#include "base/Failure.h"
#include "exchange/CDataExchange.h"

namespace tallybook {

namespace {

[[noreturn]] void NotOffered(const char* member) {
  throw Failure(FailureNumber::kFeatureUnavailable, Text("An exchange object has no ") + member);
}

}  // namespace

Masterfile& ExchangeReport::Owner() const {
  if (Masterfile* const owner = exchange_.Owner()) return *owner;
  throw Failure(FailureNumber::kObjectNotSet, "The exchange object has no database");
}
Integer ExchangeReport::ReportType() const {
  return exchange_.ReportType();
}
Text ExchangeReport::ReportClass() const {
  return exchange_.ReportClass();
}
Integer ExchangeReport::FileNum() const {
  return exchange_.FileNum();
}
Integer ExchangeReport::PrintMode() const {
  return exchange_.PrintMode();
}
bool ExchangeReport::UsesLastYear() const {
  return exchange_.UsesLastYear();
}
bool ExchangeReport::inPrintJob() const {
  return exchange_.inPrintJob();
}
Integer ExchangeReport::SubColumnType() const {
  return exchange_.SubColumnType();
}
Integer ExchangeReport::SortColumn() const {
  return exchange_.SortColumn();
}
bool ExchangeReport::CommandLinePrinting() const {
  return exchange_.CommandLinePrinting();
}
bool ExchangeReport::Transpose() const {
  return exchange_.Transpose();
}
void ExchangeReport::SetTranspose(bool transposed) {
  exchange_.SetTranspose(transposed);
}
void ExchangeReport::SetLineStyle(Integer style) {
  exchange_.SetLineStyle(style);
}
Integer ExchangeReport::NumSequences() const {
  return exchange_.NumSequences();
}
void ExchangeReport::RestoreOrigSequence() {
  exchange_.RestoreOrigSequence();
}
bool ExchangeReport::PrintNoData() const {
  NotOffered("PrintNoData");
}
void ExchangeReport::SetPrintNoData(bool /*printed*/) {
  NotOffered("PrintNoData");
}
bool ExchangeReport::NewPagePerAccount() const {
  NotOffered("NewPagePerAccount");
}
void ExchangeReport::SetNewPagePerAccount(bool /*separate*/) {
  NotOffered("NewPagePerAccount");
}

}  // namespace tallybook
