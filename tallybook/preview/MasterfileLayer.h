// A database that hands on to another what is asked of names, lists, dates, rights and the progress display. Figures,
// the calendar and the journal are the business of whoever begins with this. Owns nothing; the database below and the
// application must outlive it. One thread.
#pragma once

#include <memory>

#include "base/Types.h"
#include "host/AccountRecord.h"
#include "host/FieldRecord.h"
#include "host/Masterfile.h"

namespace tallybook::preview {

class MasterfileLayer : public Masterfile {
 public:
  // `app` is the application as those who work on this see it: it may be another than that of the database below.
  MasterfileLayer(Masterfile& below, HostApp& app) : below_(below), app_(app) {}

  HostApp& App() override { return app_; }
  std::unique_ptr<AccountRecord> NewAccountRecord() override { return below_.NewAccountRecord(); }
  std::unique_ptr<FieldRecord> NewFieldRecord() override { return below_.NewFieldRecord(); }
  SequenceList& PrintSequences() override { return below_.PrintSequences(); }

  [[nodiscard]] Text SystemName() const override { return below_.SystemName(); }
  [[nodiscard]] Text DataPath() const override { return below_.DataPath(); }
  [[nodiscard]] Text FileExtension() const override { return below_.FileExtension(); }
  [[nodiscard]] Text SettingsFileName() const override { return below_.SettingsFileName(); }
  [[nodiscard]] Text MasterFileTypeName(Integer type) const override { return below_.MasterFileTypeName(type); }
  const TitleLookup& TitleSource() const override { return below_.TitleSource(); }
  [[nodiscard]] Text TitleContext() const override { return below_.TitleContext(); }

  [[nodiscard]] Long FileVersion() const override { return below_.FileVersion(); }
  [[nodiscard]] Integer DataLevel() const override { return below_.DataLevel(); }
  [[nodiscard]] Integer CalendarType() const override { return below_.CalendarType(); }
  [[nodiscard]] Integer YearField() const override { return below_.YearField(); }
  [[nodiscard]] Long FieldSlots() const override { return below_.FieldSlots(); }
  [[nodiscard]] Long AccountSlots() const override { return below_.AccountSlots(); }

  [[nodiscard]] Long MaxAccounts() const override { return below_.MaxAccounts(); }
  [[nodiscard]] Long NumAccounts() const override { return below_.NumAccounts(); }
  [[nodiscard]] Long AccountNumber(Integer position) const override { return below_.AccountNumber(position); }
  [[nodiscard]] Long MaxFields() const override { return below_.MaxFields(); }
  [[nodiscard]] Long NumFields() const override { return below_.NumFields(); }
  [[nodiscard]] Integer FieldNumber(Integer position) const override { return below_.FieldNumber(position); }
  [[nodiscard]] Text FieldName(Integer position) const override { return below_.FieldName(position); }

  [[nodiscard]] bool DateValid(Date date) const override { return below_.DateValid(date); }
  [[nodiscard]] Date FirstDate() const override { return below_.FirstDate(); }
  [[nodiscard]] Date LastDate() const override { return below_.LastDate(); }
  [[nodiscard]] Date FirstSystemDate() const override { return below_.FirstSystemDate(); }
  [[nodiscard]] Integer FirstYear() const override { return below_.FirstYear(); }
  [[nodiscard]] Long NumYears() const override { return below_.NumYears(); }
  [[nodiscard]] Long YearsInUse() const override { return below_.YearsInUse(); }
  [[nodiscard]] Integer YearCode(Integer position) const override { return below_.YearCode(position); }
  [[nodiscard]] Date YearStart(Integer year) const override { return below_.YearStart(year); }
  [[nodiscard]] Integer NumPeriods() const override { return below_.NumPeriods(); }
  [[nodiscard]] Text PeriodName(Integer period) const override { return below_.PeriodName(period); }
  [[nodiscard]] Integer PeriodLength(Integer period) const override { return below_.PeriodLength(period); }

  void BeginProgress(const Text& title) override { below_.BeginProgress(title); }
  void BeginProgressText(const Text& title) override { below_.BeginProgressText(title); }
  void SetProgressFraction(Single fraction) override { below_.SetProgressFraction(fraction); }
  void SetProgressText(const Text& text) override { below_.SetProgressText(text); }
  void SetProgressCancelEnabled(bool enabled) override { below_.SetProgressCancelEnabled(enabled); }
  [[nodiscard]] bool ProgressCancelled() const override { return below_.ProgressCancelled(); }
  void EndProgress() override { below_.EndProgress(); }

  [[nodiscard]] bool AccessRight(const Text& right) const override { return below_.AccessRight(right); }
  void InitReportPrinter(Printer& printer) override { below_.InitReportPrinter(printer); }
  void PrintReportHeader(Printer& printer, const Text& name) override { below_.PrintReportHeader(printer, name); }

 protected:
  [[nodiscard]] Masterfile& Below() const { return below_; }

 private:
  Masterfile& below_;
  HostApp& app_;
};

}  // namespace tallybook::preview
