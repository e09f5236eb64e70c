#include "reportdialog/dlgRepPrint.h"

#include <algorithm>
#include <cmath>
#include <string>
#include <utility>

#include "base/Dates.h"
#include "forms/modAllUI.h"
#include "host/HostApp.h"
#include "host/HostFactory.h"
#include "host/Masterfile.h"
#include "platform/Clock.h"
#include "platform/Platform.h"
#include "platform/Screen.h"
#include "support/HostMessages.h"
#include "support/Utility.h"

namespace tallybook {

namespace {

constexpr Double kMinutesPerDay = 24 * 60;
// The kind of lines that leaves no choice about lines without data.
constexpr Long kLinesWithDataOnly = 2;
constexpr Integer kCalendarWithoutPeriods = 1;
constexpr Integer kMonthsPerYear = 12;

// Counts an operation that handles its failures itself, for as long as it runs.
class Counted {
 public:
  explicit Counted(int& count) : count_(count) { ++count_; }
  ~Counted() { --count_; }
  Counted(const Counted&) = delete;
  Counted& operator=(const Counted&) = delete;

 private:
  int& count_;
};

// The window keeps its looks for as long as this lives, so that a change of page is seen as one.
class FrozenDisplay {
 public:
  explicit FrozenDisplay(Long window) : window_(window) { ThePlatform().screen->FreezeWindow(window_, true); }
  ~FrozenDisplay() { ThePlatform().screen->FreezeWindow(window_, false); }
  FrozenDisplay(const FrozenDisplay&) = delete;
  FrozenDisplay& operator=(const FrozenDisplay&) = delete;

 private:
  Long window_;
};

bool IsTimeSeries(Integer style) {
  return style >= 1 && style <= kByPeriodStyle;
}

}  // namespace

dlgRepPrint::dlgRepPrint(HostFactory& factory) : factory_(factory), last_page_(PageCount()) {
  ListenToForm();
  ListenToChoices();
}

dlgRepPrint::~dlgRepPrint() = default;

void dlgRepPrint::ListenToForm() {
  Loading.Connect([this] { OnLoad(); });
  Unloading.Connect([this] { OnUnload(); });
  // Closing the window is pressing Cancel, so that the caller finds it hidden and not gone.
  OnCloseBox([this] { Command1_Click(kCancelButton); });
  OnF1([this] { Answer("Form_KeyDown", [&] { ShowHelp(); }); });
  for (Integer i = 0; i < static_cast<Integer>(Command1.size()); ++i) {
    Command1[static_cast<std::size_t>(i)].Click.Connect([this, i] { Command1_Click(i); });
  }
  Timer1.SetInterval(kIdleCheckInterval);
  Timer1.Tick.Connect([this] { Timer1_Timer(); });
}

void dlgRepPrint::ListenToChoices() {
  OptStyle.Click.Connect([this](Integer style) { OptStyle_Click(style); });
  optLength.Click.Connect([this](Integer length) {
    Answer("optLength_Click", [&] {
      Touch();
      compare_.FollowLength(length);
      dates_.ChooseLength(length);
    });
  });
  for (OptionGroup* const options : {&OptStyle, &optLength}) {
    options->ClickAgain.Connect([this](Integer /*index*/) { Touch(); });
  }
  for (Integer i = 0; i < static_cast<Integer>(cmbYear.size()); ++i) {
    const auto index = static_cast<std::size_t>(i);
    cmbYear[index].Click.Connect([this, i] {
      Answer("cmbYear_Click", [&] {
        Touch();
        dates_.ChooseYear(i);
      });
    });
    Calendar[index].DateChanged.Connect([this, i] {
      Answer("Calendar_DateChanged", [&] {
        Touch();
        dates_.ChooseDate(i);
      });
    });
  }
  cmbCompareRange.Click.Connect([this] {
    Touch();
    compare_.ChooseRange();
  });
  cmbCompareType.Click.Connect([this] {
    Touch();
    compare_.ChooseType();
  });
}

void dlgRepPrint::OnLoad() {
  SetCurrentDate(std::floor(Now()));
  CenterInWorkArea(*this);
  frmDate[0].SetCaption("Range &Beginning:");
  compare_.FillTypes();
}

void dlgRepPrint::OnUnload() {
  Timer1.SetEnabled(false);
  dates_.Release();
  compare_.Release();
  sequence_.reset();
  sequences_ = nullptr;
  calendar_.reset();
  report_ = nullptr;
  masterfile_ = nullptr;
}

void dlgRepPrint::SetCurrentDate(Date date) {
  Load();
  dates_.SetCurrentDate(date);
}

Masterfile& dlgRepPrint::Database() const {
  if (masterfile_ != nullptr) return *masterfile_;
  throw Failure(FailureNumber::kObjectNotSet, "The print dialog has no database");
}

ReportObject& dlgRepPrint::Report() const {
  if (report_ != nullptr) return *report_;
  throw Failure(FailureNumber::kObjectNotSet, "The print dialog has no report");
}

PrintSequence& dlgRepPrint::Sequence() {
  if (!sequence_) sequence_ = factory_.NewPrintSequence();
  return *sequence_;
}

Statements::Teller dlgRepPrint::LogWith(Text suffix) {
  return [this, suffix = std::move(suffix)](const Failure& failure) {
    LogFailure(*app_, failure, suffix);
    return false;
  };
}

void dlgRepPrint::Touch() {
  last_activity_ = Now();
}

template <typename Body>
void dlgRepPrint::Answer(const char* event, Body&& body) {
  if (own_handlers_ > 0 || masterfile_ == nullptr) return body();
  Statements at(Policy::kLeave, LogWith(Text("-dlgRepPrint-") + event));
  [[maybe_unused]] const bool answered = at.Run(std::forward<Body>(body));
}

// --- Filling ---------------------------------------------------------------------------------------------------------

void dlgRepPrint::SetFields(ReportObject& report, const Text& title, const Text& short_title, Long help_context) {
  Load();
  Masterfile& masterfile = report.Owner();
  app_ = &masterfile.App();
  masterfile_ = &masterfile;
  const Counted inside(own_handlers_);
  Statements at(Policy::kGoOn, LogWith(" - dlgRepPrint:SetFields"));
  BindReport(at, report);
  ShowTitle(at, title, short_title, help_context);
  OfferTransposition(at);
  ChooseFirstPage(at);
  page_ = first_page_;
  if (page_ < kDatePage) LoadSequences(at);
  dates_.FillYearLists(at);
  LimitByColumns(at);
  PrepareCalendars(at);
  ReadSwitches(at);
  SetFrameContents(page_);
  if (at(290, [&] { return Report().CommandLinePrinting(); })) return FinishUnseen(at);
  sequence_ready_ = false;
  cancelled_ = true;
}

void dlgRepPrint::BindReport(Statements& at, ReportObject& report) {
  report_ = &report;
  at(10, [&] { calendar_ = factory_.NewFiscalCalendar(); });
  dates_.Attach(Database(), calendar_.get(), report);
  compare_.Attach(calendar_.get(), report);
  if (calendar_) at(20, [&] { calendar_->Attach(Database()); });
  Touch();
  at(30, [&] { idle_minutes_ = app_->IdleMinutes(); });
  Timer1.SetEnabled(true);
}

void dlgRepPrint::ShowTitle(Statements& at, const Text& title, const Text& short_title, Long help_context) {
  short_title_ = short_title.empty() ? title : short_title;
  if (help_context != 0) SetHelpContext(help_context);
  SetCaption(title);
  at(40, [&] {
    if (Report().ReportType() >= kExportReport) return;
    SetCaption(title + " " + Report().ReportClass() + " Report Number: " + std::to_string(Report().FileNum()));
  });
  at(50, [&] {
    const bool months = Database().NumPeriods() == kMonthsPerYear;
    optLength(kPeriodLength).SetCaption(months ? "Month" : "Period");
  });
}

void dlgRepPrint::OfferTransposition(Statements& at) {
  const bool offered = at(60, [&] { return Report().ReportType() == kStyledReport && Report().PrintMode() == 0; });
  FrmTranspose.SetVisible(offered);
  const bool transposed = offered && at(70, [&] { return Report().Transpose(); });
  btnTranspose.SetValue(transposed ? 1 : 0, true);
}

void dlgRepPrint::ChooseFirstPage(Statements& at) {
  switch (at(80, [&] { return Report().ReportType(); })) {
    case kStyledReport:
      first_page_ = kStylePage;
      OpenStylePage(at);
      break;
    case kSequenceReport:
      first_page_ = kSequencePage;
      for (Integer i = OptStyle.First(); i <= OptStyle.Last(); ++i) OptStyle.SetValue(i, false);
      break;
    default:
      first_page_ = kDatePage;
  }
}

void dlgRepPrint::OpenStylePage(Statements& at) {
  const Integer data_level = at(90, [&] { return Database().DataLevel(); });
  for (Integer style = 1; style < std::min(data_level, kByPeriodStyle); ++style) OptStyle(style).SetEnabled(false);
  at(100, [&] {
    if (Database().CalendarType() == kCalendarWithoutPeriods) OptStyle(kByPeriodStyle).SetEnabled(false);
  });
  Integer style = forced_style_;
  if (style == 0) style = initial_style_;
  if (style == 0) style = data_level;
  at(110, [&] { OptStyle.SetValue(style, true); });
  if (initial_transpose_) btnTranspose.SetValue(1, true);
}

void dlgRepPrint::LoadSequences(Statements& at) {
  at(120, [&] { sequences_ = &Database().PrintSequences(); });
  at(130, [&] { Database().BeginProgressText("Loading Print Sequences"); });
  at(140, [&] { Sequence().LoadSequences(Report()); });
  at(150, [&] { Database().EndProgress(); });
}

// Columns that divide a period leave no room for longer lengths, and none for a second year.
void dlgRepPrint::LimitByColumns(Statements& at) {
  dates_.SetMaxLength(kAllLength);
  OptionButton& all_years = optLength(kAllLength);
  const bool two_years = at(210, [&] { return Report().UsesLastYear() || Report().inPrintJob(); });
  if (!two_years) {
    dates_.AllowLastYear(false);
    all_years.SetEnabled(true);
    return;
  }
  const Integer columns = at(220, [&] { return Report().SubColumnType(); });
  const bool divided = columns >= 1 && columns <= 5;
  dates_.AllowLastYear(!divided);
  if (divided) {
    dates_.SetMaxLength(columns <= 2 ? kCustomLength : columns == 3 ? kPeriodLength : kWeekLength);
    return;
  }
  all_years.SetEnabled(false);
  // With no year selected this is two before the first entry: a failure for the log, and the list stays without one.
  at(230, [&] { cmbYear[1].SetListIndex(static_cast<Integer>(cmbYear[0].ListIndex() - 1)); });
}

void dlgRepPrint::PrepareCalendars(Statements& at) {
  for (CalendarBox& calendar : Calendar) calendar.SetFurtherFlag(true);
  dates_.LimitFirstCalendar(at);
}

void dlgRepPrint::ReadSwitches(Statements& at) {
  const Integer type = at(250, [&] { return Report().ReportType(); });
  if (type >= kExportReport) return;
  at(260, [&] { chkNoData.SetChecked(Report().PrintNoData()); });
  at(270, [&] { chkNewPage.SetChecked(Report().NewPagePerAccount()); });
  if (type == kStyledReport) chkNoData.SetEnabled(OptStyle.Value(kOneLineStyle) || line_kind_ != kLinesWithDataOnly);
}

void dlgRepPrint::FinishUnseen(Statements& at) {
  while (page_ < last_page_) SetFrameContents(static_cast<Integer>(page_ + 1));
  at(300, [&] { CollectResults(); });
  cancelled_ = false;
}

// --- Pages -----------------------------------------------------------------------------------------------------------

void dlgRepPrint::SetFrameContents(Integer new_page) {
  const Counted inside(own_handlers_);
  const FrozenDisplay frozen(Hwnd());
  Statements at(Policy::kGoOn, LogWith("-dlgRepPrint-SetFrameContents"));
  const Integer old_page = std::exchange(page_, new_page);
  if (page_ == kStylePage) EnterStylePage(at, old_page);
  if (page_ == kSequencePage) EnterSequencePage(at);
  if (page_ == kDatePage) EnterDatePage(at);
  at(210, [&] { compare_.BuildCompareList(); });
  for (Frame& page : FrmPage) page.SetVisible(page.Index() == page_);
  at(220, [&] { dates_.BuildDateList(); });
  at(230, [&] { SetButtons(); });
}

void dlgRepPrint::EnterStylePage(Statements& at, Integer old_page) {
  if (old_page == kSequencePage) at(10, [&] { Sequence().ApplySequences(); });
  if (at(20, [&] { return Report().SortColumn(); }) <= 1) return;
  ++page_;
  at(30, [&] { OptStyle.SetValue(kOneLineStyle, true); });
}

void dlgRepPrint::EnterSequencePage(Statements& at) {
  if (sequence_ready_) return;
  const bool in_job = at(40, [&] { return Report().inPrintJob(); });
  const bool one_line =
      at(50, [&] { return Report().ReportType() != kSequenceReport; }) && OptStyle.Value(kOneLineStyle);
  if (in_job) {
    at(60, [&] { Report().RestoreOrigSequence(); });
    at(70, [&] { Sequence().SetSequenceFixed(true); });
    at(80, [&] { Sequence().RefreshSequences(); });
    ++page_;
    return;
  }
  at(90, [&] { Sequence().SetSequenceFixed(one_line); });
  if (one_line) at(100, [&] { Report().RestoreOrigSequence(); });
  at(110, [&] { Sequence().RefreshSequences(); });
  sequence_ready_ = true;
}

void dlgRepPrint::EnterDatePage(Statements& at) {
  at(120, [&] {
    if (Report().ReportType() < kExportReport) Sequence().ApplySequences();
  });
  EnableLengths(1, MaxLength(), true);
  EnableLengths(static_cast<Integer>(MaxLength() + 1), optLength.Last(), false);
  const Integer style = OptStyle.Selected();
  if (IsTimeSeries(style)) {
    OfferLengthsOfStyle(at, style);
  } else {
    OfferLengthsOfDataLevel(at);
  }
  if (btnTranspose.Value(1)) LimitByTransposition(at, style);
}

void dlgRepPrint::EnableLengths(Integer first, Integer last, bool enabled) {
  for (Integer length = first; length <= std::min(last, optLength.Last()); ++length)
    optLength(length).SetEnabled(enabled);
}

// A line for each unit of the style: the range holds several of them, or one where the same level is allowed.
void dlgRepPrint::OfferLengthsOfStyle(Statements& at, Integer style) {
  const auto shortest = static_cast<Integer>(allow_same_level_ ? style : style + 1);
  EnableLengths(1, static_cast<Integer>(shortest - 1), false);
  Integer length = shortest;
  if (InitialLength() >= shortest) length = InitialLength();
  if (forced_length_ > style + 1) length = forced_length_;
  at(140, [&] { optLength.SetValue(length, true); });
}

// The choice of the quarter becomes the initial length, so that a calendar without periods opens on it: meant.
void dlgRepPrint::OfferLengthsOfDataLevel(Statements& at) {
  if (at(150, [&] { return Database().CalendarType(); }) == kCalendarWithoutPeriods) {
    optLength(kPeriodLength).SetEnabled(false);
    at(160, [&] { optLength.SetValue(kQuarterLength, true); });
  }
  const Integer data_level = at(170, [&] { return Database().DataLevel(); });
  EnableLengths(1, static_cast<Integer>(data_level - 1), false);
  Integer length = data_level;
  if (InitialLength() > 0) length = InitialLength();
  if (forced_length_ != 0) length = forced_length_;
  at(180, [&] { optLength.SetValue(length, true); });
}

// Dates in columns must fit on the page; a custom range is the user's own business.
void dlgRepPrint::LimitByTransposition(Statements& at, Integer style) {
  if (IsTimeSeries(style)) EnableLengths(static_cast<Integer>(2 * style + 1), optLength.Last(), false);
  optLength(kCustomLength).SetEnabled(true);
  const auto length = InitialLength() == kCustomLength ? kCustomLength : static_cast<Integer>(style + 1);
  at(200, [&] { optLength.SetValue(length, true); });
}

void dlgRepPrint::SetButtons() {
  const bool more = page_ < last_page_;
  Command1[kNextButton].SetCaption(more ? "&Next >" : "&" + short_title_);
  const bool sorted = Report().SortColumn() > 1;
  Command1[kBackButton].SetEnabled(page_ > first_page_ && (!sorted || page_ > kDatePage));
}

// --- What the user does ----------------------------------------------------------------------------------------------

void dlgRepPrint::OptStyle_Click(Integer style) {
  sequence_ready_ = false;
  initial_style_ = style;
  const bool series = IsTimeSeries(style);
  for (const Integer i : {Integer{0}, Integer{1}}) btnTranspose(i).SetEnabled(series);
  chkNoData.SetEnabled(!series || line_kind_ != kLinesWithDataOnly);
  Touch();
}

void dlgRepPrint::Command1_Click(Integer button) {
  Answer("Command1_Click", [&] {
    switch (button) {
      case kHelpButton:
        return ShowHelp();
      case kCancelButton:
        return Cancel();
      case kNextButton:
        return PressNext();
      default:
        return SetFrameContents(static_cast<Integer>(page_ - 1));
    }
  });
  HandlePendingInput();
  Touch();
}

void dlgRepPrint::PressNext() {
  if (page_ < last_page_) return SetFrameContents(static_cast<Integer>(page_ + 1));
  CollectResults();
  if (Report().ReportType() < kExportReport && Report().NumSequences() == 0) {
    // The words are the system's, "not" and all; the report is printed all the same.
    Refuse(*app_, "No Print Sequences are defined, not data will be output.");
  }
  cancelled_ = false;
  HideLikeModal(*this);
}

void dlgRepPrint::Cancel() {
  cancelled_ = true;
  HideLikeModal(*this);
}

void dlgRepPrint::ShowHelp() {
  if (app_ != nullptr) app_->HelpTopic(HelpContext());
}

void dlgRepPrint::CollectDates() {
  dates_.CollectDates();
  compare_.CollectDates();
}

void dlgRepPrint::CollectResults() {
  const Integer type = Report().ReportType();
  if (first_page_ < kDatePage) {
    Sequence().ApplySequences();
    Report().SetLineStyle(type == kStyledReport ? OptStyle.Selected() : Integer{0});
  }
  CollectDates();
  if (type >= kExportReport) return;
  Report().SetNewPagePerAccount(chkNewPage.Checked());
  Report().SetPrintNoData(chkNoData.Checked());
  Report().SetTranspose(btnTranspose.Value(1));
}

void dlgRepPrint::Timer1_Timer() {
  if (masterfile_ == nullptr) return;
  Statements at(Policy::kGoOn, LogWith("-dlgRepPrint-Timer1_Timer"));
  at(10, [&] {
    const bool left = idle_minutes_ != 0 && Now() > last_activity_ + idle_minutes_ / kMinutesPerDay;
    if (left && Visible()) app_->SetIdleExpired(true);
  });
  at(20, [&] {
    if (!app_->IdleExpired() || !Visible()) return;
    HandlePendingInput();
    HideLikeModal(*this);
  });
}

}  // namespace tallybook
