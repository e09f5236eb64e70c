// The second range of dates that a report can be set against: a longer unit that holds the report's own, up to it,
// through it, or whole. Works on the dialog's controls and on its date range; both must outlive it. One thread.
#pragma once

#include "base/Types.h"
#include "reportdialog/DateRanges.h"
#include "reportdialog/RepPrintControls.h"
#include "reportdialog/ReportLength.h"

namespace tallybook {

class FiscalCalendar;
class ReportObject;

class CompareRanges {
 public:
  CompareRanges(RepPrintControls& controls, const DateRanges& dates) : controls_(controls), dates_(dates) {}
  CompareRanges(const CompareRanges&) = delete;
  CompareRanges& operator=(const CompareRanges&) = delete;

  void Attach(FiscalCalendar* calendar, const ReportObject& report);
  void Release();

  // What is chosen now: none, and through the date range, from the start.
  [[nodiscard]] eCompRange CompareRange() const { return range_; }
  [[nodiscard]] eCompType CompareType() const { return type_; }
  // The result of CollectDates; the end lies before the start where the report's range begins its unit and the compare
  // range goes up to it: meant, nothing corrects it.
  [[nodiscard]] Date CompareStart() const { return start_; }
  [[nodiscard]] Date CompareEnd() const { return end_; }

  // Fills the list of types and chooses "Through the Date Range".
  void FillTypes();
  // Offers the lengths above the chosen one, up to the year, to the reports that can compare; "None" alone to others.
  // A range that is no longer offered becomes none. Where the list is hidden CompareRange stays as it was: meant.
  void BuildCompareList();
  // What a chosen length means for the list: enabled and rebuilt up to the half year, disabled and at its first entry
  // above it.
  void FollowLength(Integer length);

  // The reactions to a choice in either list.
  void ChooseRange();
  void ChooseType();

  // Computes the compare range after the report's own stands in `dates`; the same range where nothing is compared.
  void CollectDates();

  // The words for the report's length (`which` 1), or for the compare range (any other).
  [[nodiscard]] Text CompareRangeText(Integer which) const;

 private:
  [[nodiscard]] bool CanCompare() const;

  RepPrintControls& controls_;
  const DateRanges& dates_;
  FiscalCalendar* calendar_ = nullptr;
  const ReportObject* report_ = nullptr;
  eCompRange range_ = eCompRange::CompNone;
  eCompType type_ = eCompType::CompInclude;
  Date start_ = kNoDate;
  Date end_ = kNoDate;
};

}  // namespace tallybook
