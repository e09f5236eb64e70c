// A user who presses whatever can be reached, in any order, over reports and books of every kind.
#include <algorithm>
#include <gtest/gtest.h>
#include <rapidcheck.h>
#include <rapidcheck/gtest.h>
#include <sstream>

#include "tests/reportdialog/RepPrintFixture.h"

namespace tallybook::testing {
namespace {

struct Setting {
  Integer type = 9, data_level = 1, calendar_type = 0, sub_column_type = 0, sort_column = 0, initial_length = 0;
  bool uses_last_year = false, in_print_job = false, same_level = false, custom = false;
};

// An act, and a number that picks what it is done to.
struct Act {
  int kind = 0;
  int pick = 0;
};

void showValue(const Act& act, std::ostream& out) {
  out << act.kind << ":" << act.pick;
}

void showValue(const Setting& setting, std::ostream& out) {
  out << "type " << setting.type << " level " << setting.data_level << " calendar " << setting.calendar_type
      << " columns " << setting.sub_column_type << " sort " << setting.sort_column << " initial "
      << setting.initial_length << " last year " << setting.uses_last_year << " job " << setting.in_print_job
      << " same level " << setting.same_level << " custom " << setting.custom;
}

Integer Among(std::initializer_list<int> values) {
  return static_cast<Integer>(*rc::gen::elementOf(std::vector<int>(values)));
}

Setting AnySetting() {
  Setting setting;
  setting.type = Among({1, 1, 2, 5, 9});
  setting.data_level = Among({1, 2, 3});
  setting.calendar_type = Among({0, 0, 1});
  // Columns that leave no length above the data level are told in dlgRepPrintTest.
  setting.sub_column_type = Among({0, 0, 1});
  setting.sort_column = Among({0, 0, 2});
  // A caller asks for no length below its data level: that one would be chosen although it is not on offer.
  setting.initial_length = Among({0, setting.data_level, 5, 7});
  setting.uses_last_year = *rc::gen::arbitrary<bool>();
  setting.in_print_job = *rc::gen::arbitrary<bool>();
  setting.same_level = *rc::gen::arbitrary<bool>();
  setting.custom = *rc::gen::arbitrary<bool>();
  return setting;
}

class Walk {
 public:
  explicit Walk(const Setting& setting) : setting_(setting), host_(ShapeOf(setting)), report_(&host_.book) {
    host_.book.answers.calendar_type = setting.calendar_type;
    report_.type = setting.type;
    report_.uses_last_year = setting.uses_last_year;
    report_.in_print_job = setting.in_print_job;
    report_.sub_column_type = setting.sub_column_type;
    report_.sort_column = setting.sort_column;
    dialog_ = std::make_unique<dlgRepPrint>(host_.factory);
    dialog_->SetAllowSameLevel(setting.same_level);
    dialog_->SetInitialLength(setting.initial_length);
    dialog_->SetFields(report_, "Walk", "Walk", 0);
    dialog_->Show();
  }

  void Do(const Act& act) {
    const auto among = [&](int count) { return static_cast<Integer>(act.pick % count); };
    const auto side = static_cast<std::size_t>(act.pick % 2);
    switch (act.kind) {
      case 0:
        (void)dialog_->OptStyle(static_cast<Integer>(1 + among(4))).UserClick();
        break;
      case 1:
        (void)dialog_->btnTranspose(among(2)).UserClick();
        break;
      case 2:
        (void)dialog_->optLength(static_cast<Integer>(1 + among(8))).UserClick();
        break;
      case 3:
        (void)dialog_->cmbYear[side].UserChoose(static_cast<Integer>(act.pick / 2 % 3));
        break;
      case 4:
        ChooseDate(dialog_->Calendar[side], act.pick / 2);
        break;
      case 5:
        (void)dialog_->cmbCompareRange.UserChoose(among(dialog_->cmbCompareRange.ListCount()));
        break;
      case 6:
        (void)dialog_->cmbCompareType.UserChoose(among(3));
        break;
      case 7:
        (void)dialog_->Command1[kBackButton].UserClick();
        break;
      case 8:
        (void)dialog_->chkNoData.UserClick();
        break;
      default:
        // The last page's button would end the walk; it is pressed at the end.
        if (dialog_->Page() < 3) (void)dialog_->Command1[kNextButton].UserClick();
    }
  }

  void CheckWhileOpen() {
    RC_ASSERT(dialog_->Visible());
    RC_ASSERT(dialog_->Cancelled());
    const Integer page = dialog_->Page();
    RC_ASSERT(page >= dialog_->FirstPage() && page <= 3);
    for (Integer i = 1; i <= 3; ++i) RC_ASSERT(dialog_->PageFrame(i).Visible() == (i == page));
    RC_ASSERT(dialog_->Calendar[0].Redraw() && dialog_->Calendar[1].Redraw());
    const bool back = page > dialog_->FirstPage() && setting_.sort_column <= 1;
    RC_ASSERT(dialog_->Command1[kBackButton].Enabled() == back);
    if (page == 3) CheckDates();
    CheckLog();
  }

  // Finishes, and holds the result to what it may be.
  void Finish() {
    while (dialog_->Visible()) RC_ASSERT(dialog_->Command1[kNextButton].UserClick());
    RC_ASSERT(!dialog_->Cancelled());
    RC_ASSERT(dialog_->StartDate() <= dialog_->EndDate());
    // Up to a range's first day the compare range may be empty, by one day and no more.
    RC_ASSERT(dialog_->CompareStart() <= dialog_->CompareEnd() + 1 || dialog_->CompareType() != eCompType::CompWhole);
    if (dialog_->CompareRange() == eCompRange::CompNone) {
      RC_ASSERT(dialog_->CompareStart() == dialog_->StartDate());
      RC_ASSERT(dialog_->CompareEnd() == dialog_->EndDate());
    }
    CheckLog();
  }

 private:
  static BookShape ShapeOf(const Setting& setting) {
    BookShape shape;
    shape.data_level = setting.data_level;
    if (setting.custom) {
      shape.calendar = CalendarKind::kCustom;
      shape.period_lengths = {70, 80, 75, 70, 70};
    }
    return shape;
  }

  void ChooseDate(CalendarBox& calendar, int pick) {
    const int days = static_cast<int>(calendar.MaxDate() - calendar.MinDate()) + 1;
    if (days > 0) (void)calendar.UserChoose(calendar.MinDate() + pick % days);
  }

  void CheckDates() {
    const Integer length = dialog_->optLength.Selected();
    RC_ASSERT(length == dialog_->SelectedLength());
    RC_ASSERT(dialog_->optLength(length).Enabled());
    RC_ASSERT(length <= dialog_->MaxLength());
    RC_ASSERT(dialog_->EndDate() >= dialog_->Calendar[1].Date());
    RC_ASSERT(dialog_->frmDate[0].Visible() == (length == kCustomLength));
    RC_ASSERT(dialog_->DateLabel[2].Caption() == dialog_->DateLabel[0].Caption());
    if (dialog_->frmCompare.Visible()) {
      RC_ASSERT(dialog_->cmbCompareType.Visible() == (dialog_->CompareRange() != eCompRange::CompNone));
      const auto range = static_cast<Integer>(dialog_->CompareRange());
      RC_ASSERT(range == 0 || range > length);
    }
  }

  // The only failure on this way is that of a year which the host cannot tell: the one after next, or none.
  void CheckLog() {
    for (const MemoryLog::Error& error : host_.app.log.errors) {
      RC_ASSERT(setting_.uses_last_year);
      RC_ASSERT(error.message.starts_with("MemoryMasterfile-dlgRepPrint-"));
    }
  }

  Setting setting_;
  MemoryHost host_;
  TestReport report_;
  std::unique_ptr<dlgRepPrint> dialog_;
};

RC_GTEST_PROP(RandomWalkTest, BreaksNothingThatHoldsForTheDialog, ()) {
  ScriptedPlatform platform{FilesIn::kMemory};
  const Setting setting = AnySetting();
  std::ostringstream told;
  showValue(setting, told);
  RC_LOG() << told.str() << std::endl;
  const auto acts = *rc::gen::container<std::vector<Act>>(
      rc::gen::construct<Act>(rc::gen::inRange(0, 11), rc::gen::inRange(0, 4000)));
  Walk walk(setting);
  walk.CheckWhileOpen();
  for (const Act& act : acts) {
    walk.Do(act);
    walk.CheckWhileOpen();
  }
  walk.Finish();
}

}  // namespace
}  // namespace tallybook::testing
