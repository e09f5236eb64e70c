#include "reportdialog/DateRanges.h"

#include <algorithm>
#include <array>
#include <string>

#include "base/Dates.h"
#include "base/FixedTable.h"
#include "base/Narrow.h"
#include "base/Statements.h"
#include "host/Masterfile.h"
#include "platform/Clock.h"
#include "platform/Platform.h"
#include "reportdialog/ReportObject.h"
#include "support/HostMessages.h"

namespace tallybook {

namespace {

constexpr const char* kEnding = " - Ending: ";

// The words for a quarter or a half.
const Text& QuarterWord(Integer number) {
  static const std::array<Text, 4> words{"First", "Second", "Third", "Fourth"};
  if (number < 1 || number > static_cast<Integer>(words.size())) {
    FailOutsideTable(number, static_cast<Long>(words.size()));
  }
  return words[static_cast<std::size_t>(number - 1)];
}

Text LongDate(Date date) {
  return ThePlatform().clock->LongDate(date);
}

Integer YearOf(const ComboBox& years) {
  return RoundToInteger(LeadingNumber(years.SelectedText()));
}

// A calendar does not draw itself while its limits and date change together.
class RedrawOff {
 public:
  explicit RedrawOff(std::array<CalendarBox, 2>& calendars) : calendars_(calendars) { Set(false); }
  ~RedrawOff() { Set(true); }
  RedrawOff(const RedrawOff&) = delete;
  RedrawOff& operator=(const RedrawOff&) = delete;

 private:
  void Set(bool redraw) {
    for (CalendarBox& calendar : calendars_) calendar.SetRedraw(redraw);
  }
  std::array<CalendarBox, 2>& calendars_;
};

}  // namespace

void DateRanges::Attach(Masterfile& masterfile, FiscalCalendar* calendar, const ReportObject& report) {
  app_ = &masterfile.App();
  masterfile_ = &masterfile;
  calendar_ = calendar;
  report_ = &report;
}

void DateRanges::Release() {
  masterfile_ = nullptr;
  calendar_ = nullptr;
  report_ = nullptr;
}

Masterfile& DateRanges::Database() const {
  if (masterfile_ != nullptr) return *masterfile_;
  throw Failure(FailureNumber::kObjectNotSet, "The print dialog has no database");
}

FiscalCalendar& DateRanges::TheCalendar() const {
  if (calendar_ != nullptr) return *calendar_;
  throw Failure(FailureNumber::kObjectNotSet, "The print dialog has no calendar");
}

const ReportObject& DateRanges::Report() const {
  if (report_ != nullptr) return *report_;
  throw Failure(FailureNumber::kObjectNotSet, "The print dialog has no report");
}

void DateRanges::SetCurrentDate(Date date) {
  current_date_ = date;
  for (CalendarBox& calendar : controls_.Calendar) calendar.SetDate(date);
}

// --- Years and limits ------------------------------------------------------------------------------------------------

Integer DateRanges::ThisYear() const {
  return YearOf(controls_.cmbYear[0]);
}

Date DateRanges::YearStart(long long year) const {
  return Database().YearStart(ToInteger(year));
}

DateRanges::Limits DateRanges::YearsFrom(long long year, long long end_year) const {
  return {YearStart(year), YearStart(end_year) - 1};
}

void DateRanges::Limit(CalendarBox& calendar, const Limits& limits) const {
  calendar.SetMinDate(limits.first);
  calendar.SetMaxDate(limits.last);
}

void DateRanges::FillYearLists(Statements& at) {
  for (ComboBox& list : controls_.cmbYear) {
    list.Clear();
    const Long years = at(200, [&] { return Database().NumYears(); });
    for (Long i = 0; i < years; ++i) {
      at(202, [&] { list.AddItem(std::to_string(Database().FirstYear() + i)); });
    }
  }
  // The last year that qualifies wins.
  ComboBox& this_year = controls_.cmbYear[0];
  for (Integer i = 0; i < this_year.ListCount(); ++i) {
    const auto year = static_cast<long long>(LeadingNumber(this_year.List(i)));
    const bool begun = at(204, [&] { return current_date_ >= YearStart(year); });
    if (begun) at(206, [&] { this_year.SetListIndex(i); });
  }
}

void DateRanges::AllowLastYear(bool allowed) {
  last_year_allowed_ = allowed;
  controls_.cmbYear[1].SetVisible(allowed);
  controls_.lblYear[1].SetVisible(allowed);
}

void DateRanges::ShowYearLists(bool shown) {
  for (std::size_t i = 0; i < controls_.cmbYear.size(); ++i) {
    const bool list_shown = shown && (i == 0 || last_year_allowed_);
    controls_.cmbYear[i].SetVisible(list_shown);
    controls_.lblYear[i].SetVisible(list_shown);
  }
}

void DateRanges::LimitFirstCalendar(Statements& at) {
  const RedrawOff redraw_off(controls_.Calendar);
  CalendarBox& first = controls_.Calendar[0];
  at(240, [&] { first.SetMinDate(Database().FirstSystemDate()); });
  at(242, [&] { first.SetMaxDate(YearStart(Database().FirstYear() + Database().YearsInUse()) - 1); });
}

// The limits that choosing the custom length sets. Choosing a year then sets others (LimitsOfChosenYear): all years
// held against those in use, and no end at the last year held. Both are meant, each with its test.
DateRanges::Limits DateRanges::LimitsOfCustomLength() const {
  const long long end_year = Database().FirstYear() + Database().NumYears();
  if (!Report().UsesLastYear()) return {Database().FirstSystemDate(), YearStart(end_year) - 1};
  // The smaller of two starts is that of the earlier year; a host need not know the years behind `end_year`.
  const long long year = ThisYear();
  return YearsFrom(year, std::min(year + 2, end_year));
}

DateRanges::Limits DateRanges::LimitsOfChosenYear(Integer year) const {
  if (selected_length_ != kCustomLength) return YearsFrom(year, year + 1);
  if (Report().UsesLastYear()) return YearsFrom(year, year + 2);
  return {Database().FirstSystemDate(), YearStart(Database().FirstYear() + Database().YearsInUse()) - 1};
}

// --- Reactions -------------------------------------------------------------------------------------------------------

void DateRanges::ShowDateFrames(bool first, bool main) {
  controls_.frmDate[0].SetVisible(first);
  controls_.frmDate[1].SetVisible(main);
}

void DateRanges::ChooseLength(Integer length) {
  auto& calendars = controls_.Calendar;
  calendars[1].SetVisible(true);
  selected_length_ = length;
  initial_length_ = length;
  if (length == kYearLength || length == kAllLength) {
    ShowYearLists(length == kYearLength);
    ShowDateFrames(false, false);
  } else if (length == kCustomLength) {
    // Before the limits, so that the calendars match the length even where the host cannot tell the year.
    ShowDateFrames(true, true);
    ShowYearLists(Report().UsesLastYear());
    const RedrawOff redraw_off(calendars);
    const Limits limits = LimitsOfCustomLength();
    for (CalendarBox& calendar : calendars) Limit(calendar, limits);
    calendars[0].SetDate(custom_start_date_ != kNoDate ? custom_start_date_ : calendars[1].Date());
  } else {
    ShowYearLists(true);
    ShowDateFrames(false, true);
    const RedrawOff redraw_off(calendars);
    const long long year = ThisYear();
    Limit(calendars[1], YearsFrom(year, year + 1));
  }
  BuildDateList();
}

void DateRanges::KeepListsApart(Integer list) {
  ComboBox& chosen = controls_.cmbYear[static_cast<std::size_t>(list)];
  ComboBox& other = controls_.cmbYear[static_cast<std::size_t>(1 - list)];
  // On the first entry the other list goes to none and stays there: meant, only the chosen list is mended.
  if (chosen.ListIndex() == other.ListIndex()) other.SetListIndex(static_cast<Integer>(chosen.ListIndex() - 1));
  if (chosen.ListIndex() == kNoEntry) chosen.SetListIndex(static_cast<Integer>(other.ListIndex() + 1));
}

void DateRanges::MoveMainCalendarInto(Integer year) {
  const bool within = current_date_ >= YearStart(year) && current_date_ <= YearStart(year + 1) - 1;
  const DateParts day = PartsOf(current_date_);
  controls_.Calendar[1].SetDate(within ? current_date_ : DateFromParts(year, day.month, day.day));
}

void DateRanges::ChooseYear(Integer list) {
  if (Report().UsesLastYear()) KeepListsApart(list);
  if (list == 0) {
    const RedrawOff redraw_off(controls_.Calendar);
    const Integer year = ThisYear();
    const Limits limits = LimitsOfChosenYear(year);
    if (selected_length_ == kCustomLength) Limit(controls_.Calendar[0], limits);
    Limit(controls_.Calendar[1], limits);
    MoveMainCalendarInto(year);
  }
  BuildDateList();
}

void DateRanges::ChooseDate(Integer calendar) {
  auto& calendars = controls_.Calendar;
  if (calendar != 0) {
    current_date_ = calendars[static_cast<std::size_t>(calendar)].Date();
  } else if (calendars[1].Date() < calendars[0].Date()) {
    calendars[1].SetDate(calendars[0].Date());
  }
  BuildDateList();
}

// --- The range -------------------------------------------------------------------------------------------------------

Integer DateRanges::CustomRangeLevel() const {
  const Integer style = Report().ReportType() == kStyledReport ? controls_.OptStyle.Selected() : Integer{0};
  const Integer data_level = Database().DataLevel();
  Integer level = style;
  if (style == 0 || style == kOneLineStyle) {
    level = selected_length_ >= kCustomLength ? data_level : selected_length_;
  }
  return std::max(level, data_level);
}

Text DateRanges::FrameCaption() const {
  switch (selected_length_) {
    case kDayLength:
      return "Day:";
    case kWeekLength:
      return "Week Ending:";
    case kPeriodLength:
      return "Fiscal Month:";
    case kQuarterLength:
      return "Quarter Number:";
    case kHalfYearLength:
      return "Half:";
    case kYearLength:
      return "Year: ";
    case kCustomLength:
      return "Range &Ending:";
    default:
      return "All Years ";
  }
}

Text DateRanges::LabelText(const Text& date) const {
  const Text year = controls_.cmbYear[0].SelectedText();
  switch (selected_length_) {
    case kPeriodLength:
      return Database().PeriodName(TheCalendar().PeriodNumber()) + kEnding + date;
    case kQuarterLength:
      return std::to_string(TheCalendar().QuarterNumber()) + kEnding + date;
    case kHalfYearLength:
      return std::to_string(TheCalendar().HalfNumber()) + " of " + year + kEnding + date;
    case kYearLength:
      return "Year: " + year + kEnding + date;
    case kAllLength:
      return "All Years Ending: " + date;
    default:
      return date;
  }
}

Date DateRanges::BuildDateList() {
  if (calendar_ == nullptr) return end_date_;
  Statements at(Policy::kGoOn, [&](const Failure& failure) {
    LogFailure(*app_, failure, "-dlgRepPrint-BuildDateList");
    return false;
  });
  selected_length_ = controls_.optLength.Selected(kDayLength);
  CalendarBox& main = controls_.Calendar[1];
  at(10, [&] { end_date_ = calendar_->LevelDate(main.Date(), selected_length_); });
  Text text;
  at(20, [&] { text = LongDate(end_date_); });
  controls_.frmDate[1].SetCaption(FrameCaption());
  at(30, [&] { text = LabelText(text); });
  unit_ = at(35, [&] { return NumbersOfUnit(); });
  for (std::size_t i = 0; i < controls_.Calendar.size(); ++i) {
    if (selected_length_ == kCustomLength) {
      at(40, [&] { end_date_ = calendar_->LevelDate(controls_.Calendar[i].Date(), CustomRangeLevel()); });
      at(50, [&] { start_date_ = calendar_->PriorPeriodEnd(); });
      at(60, [&] { text = LongDate(end_date_); });
    }
    controls_.DateLabel[i].SetCaption(text);
    controls_.DateLabel[i].Repaint();
  }
  controls_.DateLabel[2].SetCaption(controls_.DateLabel[0].Caption());
  return end_date_;
}

void DateRanges::CollectDates() {
  FiscalCalendar& calendar = TheCalendar();
  const Date first = controls_.Calendar[0].Date();
  const Date main = controls_.Calendar[1].Date();
  calendar.SetCurrentDate(end_date_);
  end_date_ = calendar.LevelDate(main, selected_length_);
  if (selected_length_ == kCustomLength) {
    // Both become ends of units; the start is not moved to its unit's first day: meant.
    const Integer level = CustomRangeLevel();
    end_date_ = calendar.LevelDate(std::max(first, main), level);
    start_date_ = calendar.LevelDate(std::min(first, main), level);
  } else if (selected_length_ == kAllLength) {
    start_date_ = calendar.LevelDate(Database().FirstSystemDate(), CustomRangeLevel());
    end_date_ = YearStart(Database().FirstYear() + Database().NumYears()) - 1;
  } else {
    start_date_ = calendar.PriorPeriodEnd() + 1;
  }
}

// --- The words -------------------------------------------------------------------------------------------------------

DateRanges::UnitNumbers DateRanges::NumbersOfUnit() const {
  const FiscalCalendar& calendar = TheCalendar();
  switch (selected_length_) {
    case kPeriodLength:
      return {.period = calendar.PeriodNumber()};
    case kQuarterLength:
      return {.quarter = calendar.QuarterNumber(), .fiscal_year = calendar.FiscalYear()};
    case kHalfYearLength:
      return {.half = calendar.HalfNumber(), .fiscal_year = calendar.FiscalYear()};
    case kYearLength:
      return {.fiscal_year = calendar.FiscalYear()};
    default:
      return {};
  }
}

Text DateRanges::CustomPrefix() const {
  switch (CustomRangeLevel()) {
    case kDayLevel:
      return "Days:";
    case kWeekLevel:
      return "Weeks Ending:";
    case kPeriodLevel:
      return "Fiscal Months Ending:";
    default:
      return "";
  }
}

Text DateRanges::DateRangeText() const {
  (void)TheCalendar();  // without one there are no words
  const Text end = " " + LongDate(end_date_);
  const auto year = [&] { return std::to_string(unit_.fiscal_year) + " - Ending:"; };
  switch (selected_length_) {
    case kDayLength:
      return "Day:" + end;
    case kWeekLength:
      return "Week Ending:" + end;
    case kPeriodLength:
      return "Fiscal Month: " + Database().PeriodName(unit_.period) + " - Ending:" + end;
    case kQuarterLength:
      return QuarterWord(unit_.quarter) + " Quarter of " + year() + end;
    case kHalfYearLength:
      return QuarterWord(unit_.half) + " Half of " + year() + end;
    case kYearLength:
      return "Year " + year() + end;
    case kCustomLength:
      return CustomPrefix() + " " + controls_.DateLabel[0].Caption() + " to " + controls_.DateLabel[1].Caption();
    default:
      return "All Years:" + LongDate(start_date_) + " to" + end;
  }
}

Text DateRanges::DateRangeShortText() const {
  (void)TheCalendar();  // without one there are no words
  const auto year = [&] { return std::to_string(unit_.fiscal_year) + " Ending"; };
  switch (selected_length_) {
    case kDayLength:
      return "Day";
    case kWeekLength:
      return "Week Ending";
    case kPeriodLength:
      return "Fiscal Month Ending: ";
    case kQuarterLength:
      return QuarterWord(unit_.quarter) + " Quarter " + year();
    case kHalfYearLength:
      return QuarterWord(unit_.half) + " Half " + year();
    case kYearLength:
      return "Year " + year();
    case kCustomLength:
      return "Range Ending";
    default:
      return "All Years Ending";
  }
}

}  // namespace tallybook
