// An exchange object in the role of the report whose dates the print dialog asks for. Holds a plain reference: the
// exchange object must outlive it. One thread.
#pragma once

#include "reportdialog/ReportObject.h"

namespace tallybook {

class CDataExchange;

class ExchangeReport : public ReportObject {
 public:
  explicit ExchangeReport(CDataExchange& exchange) : exchange_(exchange) {}

  [[nodiscard]] Masterfile& Owner() const override;
  [[nodiscard]] Integer ReportType() const override;
  [[nodiscard]] Text ReportClass() const override;
  // The number of the selected definition's file; 0 where none is selected.
  [[nodiscard]] Integer FileNum() const override;
  [[nodiscard]] Integer PrintMode() const override;
  [[nodiscard]] bool UsesLastYear() const override;
  [[nodiscard]] bool inPrintJob() const override;
  [[nodiscard]] Integer SubColumnType() const override;
  [[nodiscard]] Integer SortColumn() const override;
  [[nodiscard]] bool CommandLinePrinting() const override;
  [[nodiscard]] bool Transpose() const override;
  void SetTranspose(bool transposed) override;
  void SetLineStyle(Integer style) override;
  [[nodiscard]] Integer NumSequences() const override;
  void RestoreOrigSequence() override;

  // An exchange object offers none of these: failure 73 (feature unavailable).
  [[nodiscard]] bool PrintNoData() const override;
  void SetPrintNoData(bool printed) override;
  [[nodiscard]] bool NewPagePerAccount() const override;
  void SetNewPagePerAccount(bool separate) override;

 private:
  CDataExchange& exchange_;
};

}  // namespace tallybook
