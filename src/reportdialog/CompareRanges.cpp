#include "reportdialog/CompareRanges.h"

#include "base/Failure.h"
#include "base/Narrow.h"
#include "forms/modAllUI.h"
#include "host/FiscalCalendar.h"
#include "reportdialog/ReportObject.h"

namespace tallybook {

void CompareRanges::Attach(FiscalCalendar* calendar, const ReportObject& report) {
  calendar_ = calendar;
  report_ = &report;
}

void CompareRanges::Release() {
  calendar_ = nullptr;
  report_ = nullptr;
}

void CompareRanges::FillTypes() {
  ComboBox& types = controls_.cmbCompareType;
  types.Clear();
  types.AddItem("Up to the Date Range", static_cast<Long>(eCompType::CompUpTo));
  types.AddItem("Through the Date Range", static_cast<Long>(eCompType::CompInclude));
  types.AddItem("Entire Compare Range", static_cast<Long>(eCompType::CompWhole));
  SelectComboItem(types, static_cast<Long>(eCompType::CompInclude));
}

bool CompareRanges::CanCompare() const {
  if (report_ == nullptr) throw Failure(FailureNumber::kObjectNotSet, "The print dialog has no report");
  const Integer type = report_->ReportType();
  if (type != kStyledReport && type != kSequenceReport) return false;
  if (report_->SubColumnType() != 0) return false;
  return type == kSequenceReport || controls_.OptStyle.Value(kOneLineStyle);
}

void CompareRanges::BuildCompareList() {
  const OptionGroup& lengths = controls_.optLength;
  // With no length on, nothing is longer.
  const int first = lengths.Selected(lengths.Last()) + 1;
  ComboBox& list = controls_.cmbCompareRange;
  list.Clear();
  list.AddItem("None", static_cast<Long>(eCompRange::CompNone));
  const bool shown = CanCompare();
  if (shown) {
    for (int i = first; i <= kYearLength; ++i) {
      list.AddItem(WithoutMark(lengths(static_cast<Integer>(i)).Caption()), i);
    }
    SelectComboItem(list, static_cast<Long>(range_));
  }
  controls_.frmCompare.SetVisible(shown);
}

void CompareRanges::FollowLength(Integer length) {
  ComboBox& list = controls_.cmbCompareRange;
  const bool can_be_longer = length < kYearLength;
  list.SetEnabled(can_be_longer);
  if (can_be_longer) {
    BuildCompareList();
  } else if (list.ListCount() > 0) {
    list.SetListIndex(0);
  }
}

void CompareRanges::ChooseRange() {
  const ComboBox& list = controls_.cmbCompareRange;
  controls_.cmbCompareType.SetVisible(list.ListIndex() != 0);
  range_ = static_cast<eCompRange>(ToInteger(ComboItemTag(list)));
}

void CompareRanges::ChooseType() {
  type_ = static_cast<eCompType>(ToInteger(ComboItemTag(controls_.cmbCompareType)));
}

void CompareRanges::CollectDates() {
  start_ = dates_.StartDate();
  end_ = dates_.EndDate();
  if (range_ == eCompRange::CompNone) return;
  if (calendar_ == nullptr) throw Failure(FailureNumber::kObjectNotSet, "The print dialog has no calendar");
  const Date unit_end = calendar_->LevelDate(controls_.Calendar[1].Date(), static_cast<Integer>(range_));
  start_ = calendar_->PriorPeriodEnd() + 1;
  switch (type_) {
    case eCompType::CompUpTo:
      end_ = dates_.StartDate() - 1;
      break;
    case eCompType::CompInclude:
      end_ = dates_.EndDate();
      break;
    default:
      end_ = unit_end;
  }
}

Text CompareRanges::CompareRangeText(Integer which) const {
  Text length = WithoutMark(controls_.optLength(dates_.SelectedLength()).Caption());
  if (which == 1) return length;
  Text range = WithoutMark(controls_.cmbCompareRange.SelectedText());
  switch (type_) {
    case eCompType::CompUpTo:
      return range + " up to this " + length;
    case eCompType::CompInclude:
      return range + " through this " + length;
    default:
      return range;
  }
}

}  // namespace tallybook
