// The stretch of time that a report covers: year lists, calendars, and from them the first and last date and the words
// for the range. All arithmetic of weeks and periods is the host's calendar's; the rules here add only the first day of
// the next year less one, a unit's eve plus one, and the same day of another year.
//
// Works on the dialog's controls, which must outlive it. One thread. A failure leaves an operation with what it has
// done so far, save BuildDateList, which logs it and goes on.
#pragma once

#include "base/Types.h"
#include "host/FiscalCalendar.h"
#include "reportdialog/RepPrintControls.h"
#include "reportdialog/ReportLength.h"

namespace tallybook {

class HostApp;
class Masterfile;
class ReportObject;
class Statements;

class DateRanges {
 public:
  explicit DateRanges(RepPrintControls& controls) : controls_(controls) {}
  DateRanges(const DateRanges&) = delete;
  DateRanges& operator=(const DateRanges&) = delete;

  // Whose dates these are, until Release. `calendar` is the dialog's own, attached to `masterfile`; null where there is
  // none.
  void Attach(Masterfile& masterfile, FiscalCalendar* calendar, const ReportObject& report);
  void Release();

  // The date that the dialog centres on. Setting it sets both calendars to it.
  [[nodiscard]] Date CurrentDate() const { return current_date_; }
  void SetCurrentDate(Date date);

  // The length that is chosen now (a copy of what the options say), the one to preselect, and the highest on offer.
  [[nodiscard]] Integer SelectedLength() const { return selected_length_; }
  [[nodiscard]] Integer InitialLength() const { return initial_length_; }
  void SetInitialLength(Integer length) { initial_length_ = length; }
  [[nodiscard]] Integer MaxLength() const { return max_length_; }
  void SetMaxLength(Integer length) { max_length_ = length; }
  // Where a custom range's first calendar opens; kNoDate where the main one stands.
  [[nodiscard]] Date CustomStartDate() const { return custom_start_date_; }
  void SetCustomStartDate(Date date) { custom_start_date_ = date; }

  // The result; its final values come from CollectDates.
  [[nodiscard]] Date StartDate() const { return start_date_; }
  [[nodiscard]] Date EndDate() const { return end_date_; }

  // Fills both year lists, oldest first, and selects in list 0 the last year that has begun by CurrentDate; none where
  // none has. The year reaction runs for each year that is selected on the way. Each question to the host is a
  // statement of `at`, from 200 on, so that what one of them cannot tell is missing alone.
  void FillYearLists(Statements& at);
  // Shows or hides list 1 with its label wherever the year lists are shown.
  void AllowLastYear(bool allowed);
  // The limits that the first calendar starts with: from the first date on offer to the end of the years in use; each a
  // statement of `at`, from 240 on.
  void LimitFirstCalendar(Statements& at);

  // The reactions. A length chosen shows what belongs to it and limits the calendars; a year chosen keeps the lists
  // apart and moves the main calendar into the year; a date chosen moves CurrentDate or pulls the range's end along.
  void ChooseLength(Integer length);
  void ChooseYear(Integer list);
  void ChooseDate(Integer calendar);

  // Words the labels anew and gives the end date. A failure is logged with "-dlgRepPrint-BuildDateList" and the next
  // statement runs. Does nothing while there is no calendar.
  Date BuildDateList();
  // The level at which a custom range is rounded: never finer than the system's own.
  [[nodiscard]] Integer CustomRangeLevel() const;
  // Computes the final start and end.
  void CollectDates();

  // The words for the range, long and short, for a report's heading. They tell of the calendar's position at the last
  // BuildDateList, wherever the calendar has gone since. Failure 9 (range) for a quarter or half that is not 1 to 4,
  // failure 91 without a calendar.
  [[nodiscard]] Text DateRangeText() const;
  [[nodiscard]] Text DateRangeShortText() const;

 private:
  struct Limits {
    Date first = kNoDate;
    Date last = kNoDate;
  };
  // What the calendar counts the chosen unit as; 0 where the words for its length do not name it.
  struct UnitNumbers {
    Integer period = 0;
    Integer quarter = 0;
    Integer half = 0;
    Integer fiscal_year = 0;
  };

  [[nodiscard]] Masterfile& Database() const;
  [[nodiscard]] FiscalCalendar& TheCalendar() const;
  [[nodiscard]] const ReportObject& Report() const;
  // The year of list 0; 0 where none is selected.
  [[nodiscard]] Integer ThisYear() const;
  [[nodiscard]] Date YearStart(long long year) const;
  // From the first day of a year to the last of the year before `end_year`.
  [[nodiscard]] Limits YearsFrom(long long year, long long end_year) const;
  [[nodiscard]] Limits LimitsOfCustomLength() const;
  [[nodiscard]] Limits LimitsOfChosenYear(Integer year) const;
  void Limit(CalendarBox& calendar, const Limits& limits) const;
  void ShowYearLists(bool shown);
  void ShowDateFrames(bool first, bool main);
  void KeepListsApart(Integer list);
  void MoveMainCalendarInto(Integer year);
  void LabelRange(const Text& text);
  [[nodiscard]] Text FrameCaption() const;
  [[nodiscard]] Text LabelText(const Text& date) const;
  [[nodiscard]] UnitNumbers NumbersOfUnit() const;
  [[nodiscard]] Text CustomPrefix() const;

  RepPrintControls& controls_;
  HostApp* app_ = nullptr;
  Masterfile* masterfile_ = nullptr;
  FiscalCalendar* calendar_ = nullptr;
  const ReportObject* report_ = nullptr;
  Date current_date_ = kNoDate;
  Date custom_start_date_ = kNoDate;
  Date start_date_ = kNoDate;
  Date end_date_ = kNoDate;
  UnitNumbers unit_;  // at the last BuildDateList
  Integer selected_length_ = kDayLength;
  Integer initial_length_ = 0;
  Integer max_length_ = kAllLength;
  bool last_year_allowed_ = false;
};

}  // namespace tallybook
