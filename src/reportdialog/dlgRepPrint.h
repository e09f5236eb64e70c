// The wizard that asks how a report is to run: its style, its print sequence and its dates, on up to three pages. An
// export uses it for its dates alone.
//
//   dlgRepPrint dialog(factory);
//   dialog.SetAllowSameLevel(true);
//   dialog.SetCurrentDate(today);
//   dialog.SetInitialLength(masterfile.DataLevel());
//   dialog.SetFields(report, "Export Data to File", "Export Data", 11000);
//   if (!report.CommandLinePrinting()) ShowLikeModal(dialog, owner);
//   if (!dialog.Cancelled()) ... StartDate, EndDate, SelectedLength ...
//   dialog.Unload();
//
// One object serves one conversation. It keeps nothing in any file. The factory, the report and its database belong to
// the caller and must outlive the conversation; Unload lets go of them and keeps the results. One thread.
//
// A failure in SetFields, in a change of page, in BuildDateList or in the idle check is logged, and the next statement
// runs. One in the answer to any other act of the user is logged with "-dlgRepPrint-" and the event and ends that
// answer; the dialog stays open.
#pragma once

#include <memory>

#include "base/Statements.h"
#include "base/Types.h"
#include "host/FiscalCalendar.h"
#include "host/Sequence.h"
#include "reportdialog/CompareRanges.h"
#include "reportdialog/DateRanges.h"
#include "reportdialog/RepPrintControls.h"
#include "reportdialog/ReportLength.h"
#include "reportdialog/ReportObject.h"

namespace tallybook {

class HostApp;
class HostFactory;
class Masterfile;

// How often the dialog looks whether the user has left, in milliseconds.
inline constexpr Long kIdleCheckInterval = 15'000;

class dlgRepPrint : public RepPrintControls {
 public:
  explicit dlgRepPrint(HostFactory& factory);
  ~dlgRepPrint() override;

  // --- Before SetFields ---

  // Whether a styled report may cover a single unit of its own style: a day by day report one day.
  [[nodiscard]] bool AllowSameLevel() const { return allow_same_level_; }
  void SetAllowSameLevel(bool allowed) { allow_same_level_ = allowed; }
  // Today until it is set; loads the form.
  [[nodiscard]] Date CurrentDate() const { return dates_.CurrentDate(); }
  void SetCurrentDate(Date date);
  // Each choice of a length or a style overwrites these two; 0 for none.
  [[nodiscard]] Integer InitialLength() const { return dates_.InitialLength(); }
  void SetInitialLength(Integer length) { dates_.SetInitialLength(length); }
  [[nodiscard]] Integer InitialStyle() const { return initial_style_; }
  void SetInitialStyle(Integer style) { initial_style_ = style; }
  // Go before them; 0 for none.
  [[nodiscard]] Integer ForcedLength() const { return forced_length_; }
  void SetForcedLength(Integer length) { forced_length_ = length; }
  [[nodiscard]] Integer ForcedStyle() const { return forced_style_; }
  void SetForcedStyle(Integer style) { forced_style_ = style; }
  [[nodiscard]] bool InitialTranspose() const { return initial_transpose_; }
  void SetInitialTranspose(bool transposed) { initial_transpose_ = transposed; }
  // 2 turns chkNoData off for the styles by day, week and period.
  [[nodiscard]] Long LineKind() const { return line_kind_; }
  void SetLineKind(Long kind) { line_kind_ = kind; }
  [[nodiscard]] Date CustomStartDate() const { return dates_.CustomStartDate(); }
  void SetCustomStartDate(Date date) { dates_.SetCustomStartDate(date); }

  // --- Filling ---

  // Fills the dialog for `report` and opens its first page, ready to be shown. An empty `short_title` takes the title's
  // value; it becomes the caption of the last page's button. `help_context` 0 leaves the topic as it is.
  //   leaves  Cancelled true; for a report that prints from the command line the dialog is finished, with Cancelled
  //           false, and is not to be shown
  //   fails   failure 91 where the report has no database, with nothing done: there is no log to tell it to. Any later
  //           failure is logged with " - dlgRepPrint:SetFields"
  void SetFields(ReportObject& report, const Text& title, const Text& short_title, Long help_context);

  // --- Afterwards ---

  // True unless the user finished.
  [[nodiscard]] bool Cancelled() const { return cancelled_; }
  [[nodiscard]] Integer SelectedLength() const { return dates_.SelectedLength(); }
  // For a custom range both are ends of units at CustomRangeLevel, for any other length first and last day.
  [[nodiscard]] Date StartDate() const { return dates_.StartDate(); }
  [[nodiscard]] Date EndDate() const { return dates_.EndDate(); }
  [[nodiscard]] eCompRange CompareRange() const { return compare_.CompareRange(); }
  [[nodiscard]] eCompType CompareType() const { return compare_.CompareType(); }
  [[nodiscard]] Date CompareStart() const { return compare_.CompareStart(); }
  [[nodiscard]] Date CompareEnd() const { return compare_.CompareEnd(); }

  // The words for both ranges: see DateRanges and CompareRanges.
  [[nodiscard]] Text DateRangeText() const { return dates_.DateRangeText(); }
  [[nodiscard]] Text DateRangeShortText() const { return dates_.DateRangeShortText(); }
  [[nodiscard]] Text CompareRangeText(Integer which) const { return compare_.CompareRangeText(which); }

  // --- The steps, for reports that drive the dialog themselves ---

  Date BuildDateList() { return dates_.BuildDateList(); }
  void BuildCompareList() { compare_.BuildCompareList(); }
  [[nodiscard]] Integer CustomRangeLevel() const { return dates_.CustomRangeLevel(); }
  // Computes both ranges as they stand now.
  void CollectDates();

  [[nodiscard]] Integer Page() const { return page_; }
  [[nodiscard]] Integer FirstPage() const { return first_page_; }
  [[nodiscard]] Integer LastPage() const { return last_page_; }
  [[nodiscard]] Integer MaxLength() const { return dates_.MaxLength(); }
  [[nodiscard]] const Text& ShortTitle() const { return short_title_; }
  [[nodiscard]] bool SequenceReady() const { return sequence_ready_; }
  // The time of the user's last act here.
  [[nodiscard]] Date LastActivity() const { return last_activity_; }

  // For who draws the sequence page: the host's control and the saved sequences; null until a report needs them.
  [[nodiscard]] PrintSequence* SequenceControl() const { return sequence_.get(); }
  [[nodiscard]] SequenceList* Sequences() const { return sequences_; }

 private:
  void OnLoad();
  void OnUnload();

  // The parts of SetFields, in order; each runs numbered statements of it.
  void BindReport(Statements& at, ReportObject& report);
  void ShowTitle(Statements& at, const Text& title, const Text& short_title, Long help_context);
  void OfferTransposition(Statements& at);
  void ChooseFirstPage(Statements& at);
  void OpenStylePage(Statements& at);
  void LoadSequences(Statements& at);
  void LimitByColumns(Statements& at);
  void PrepareCalendars(Statements& at);
  void ReadSwitches(Statements& at);
  // Walks through the pages and collects what they hold, without a user.
  void FinishUnseen(Statements& at);

  // A change of page, and what each page does on entry. A page that is passed over hands on to the next one.
  void SetFrameContents(Integer new_page);
  void EnterStylePage(Statements& at, Integer old_page);
  void EnterSequencePage(Statements& at);
  void EnterDatePage(Statements& at);
  void OfferLengthsOfStyle(Statements& at, Integer style);
  void OfferLengthsOfDataLevel(Statements& at);
  void LimitByTransposition(Statements& at, Integer style);
  void EnableLengths(Integer first, Integer last, bool enabled);
  void SetButtons();

  // The answers to what the user does.
  void ListenToChoices();
  void ListenToForm();
  void OptStyle_Click(Integer style);
  void Command1_Click(Integer button);
  void PressNext();
  void Cancel();
  void ShowHelp();
  void Timer1_Timer();
  void CollectResults();
  // Runs the answer to an event: the boundary of a user's act. Within SetFields and SetFrameContents a failure goes on
  // to their own handlers.
  template <typename Body>
  void Answer(const char* event, Body&& body);

  [[nodiscard]] Masterfile& Database() const;
  [[nodiscard]] ReportObject& Report() const;
  [[nodiscard]] PrintSequence& Sequence();
  [[nodiscard]] Statements::Teller LogWith(Text suffix);
  void Touch();

  HostFactory& factory_;
  HostApp* app_ = nullptr;
  Masterfile* masterfile_ = nullptr;
  ReportObject* report_ = nullptr;
  SequenceList* sequences_ = nullptr;
  std::unique_ptr<FiscalCalendar> calendar_;
  std::unique_ptr<PrintSequence> sequence_;
  DateRanges dates_{*this};
  CompareRanges compare_{*this, dates_};
  Text short_title_;
  Date last_activity_ = kNoDate;
  Long idle_minutes_ = 0;
  Long line_kind_ = 0;
  Integer page_ = 0;
  Integer first_page_ = kDatePage;
  Integer last_page_ = kDatePage;
  Integer initial_style_ = 0;
  Integer forced_style_ = 0;
  Integer forced_length_ = 0;
  int own_handlers_ = 0;  // how many of SetFields and SetFrameContents run now
  bool initial_transpose_ = false;
  bool allow_same_level_ = false;
  bool sequence_ready_ = false;
  bool cancelled_ = true;
};

}  // namespace tallybook
