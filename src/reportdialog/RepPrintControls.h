// What the print dialog shows: its controls under their design names, on three pages of which one is shown at a time.
// They hold what they show and tell what happens to them; the rules are those of dlgRepPrint and the units behind it.
// Arrays are indexed by the control's index; the pages count from 1.
#pragma once

#include <array>

#include "forms/Form.h"
#include "forms/HostControls.h"
#include "forms/ListControls.h"
#include "forms/OptionGroup.h"
#include "forms/PlainControls.h"

namespace tallybook {

inline constexpr Integer kStylePage = 1;
inline constexpr Integer kSequencePage = 2;
inline constexpr Integer kDatePage = 3;

// The styles of a report: how many lines each account has. The first three are also levels of dates.
inline constexpr Integer kByPeriodStyle = 3;
inline constexpr Integer kOneLineStyle = 4;

inline constexpr Integer kHelpButton = 0;
inline constexpr Integer kCancelButton = 1;
inline constexpr Integer kNextButton = 2;
inline constexpr Integer kBackButton = 3;

class RepPrintControls : public Form {
 public:
  RepPrintControls();

  // The frame that a page stands in. Failure 9 (range) for a page that the dialog has not.
  [[nodiscard]] Frame& PageFrame(Integer page);
  // The highest page.
  [[nodiscard]] Integer PageCount() const { return static_cast<Integer>(FrmPage.size()); }

  std::array<Frame, 3> FrmPage{{{*this, "FrmPage", 1}, {*this, "FrmPage", 2}, {*this, "FrmPage", 3}}};

  // Page 1: the style.
  std::array<Label, 2> lblStyle{{{*this, "lblStyle", 0}, {*this, "lblStyle", 1}}};
  OptionGroup OptStyle{*this, "OptStyle", 1, kOneLineStyle};
  Frame FrmTranspose{*this, "FrmTranspose"};
  OptionGroup btnTranspose{*this, "btnTranspose", 0, 1};

  // Page 2: the print sequence, beside the host's own control.
  CheckBox chkNoData{*this, "chkNoData"};
  CheckBox chkNewPage{*this, "chkNewPage"};

  // Page 3: the dates. List 0 of the years is this year, list 1 last year. Calendar 1 is the main one; calendar 0 is
  // that of a custom range's first date. Label 2 repeats label 0.
  std::array<Label, 2> lblYear{{{*this, "lblYear", 0}, {*this, "lblYear", 1}}};
  std::array<ComboBox, 2> cmbYear{{{*this, "cmbYear", 0}, {*this, "cmbYear", 1}}};
  OptionGroup optLength{*this, "optLength", 1, 8};
  Frame frmCompare{*this, "frmCompare"};
  ComboBox cmbCompareRange{*this, "cmbCompareRange"};
  ComboBox cmbCompareType{*this, "cmbCompareType"};
  std::array<Frame, 2> frmDate{{{*this, "frmDate", 0}, {*this, "frmDate", 1}}};
  std::array<CalendarBox, 2> Calendar{{{*this, "Calendar", 0}, {*this, "Calendar", 1}}};
  std::array<Label, 3> DateLabel{{{*this, "DateLabel", 0}, {*this, "DateLabel", 1}, {*this, "DateLabel", 2}}};

  // The dialog's foot: Help, Cancel, Next and Back.
  std::array<CommandButton, 4> Command1{
      {{*this, "Command1", 0}, {*this, "Command1", 1}, {*this, "Command1", 2}, {*this, "Command1", 3}}};
  Timer Timer1{*this, "Timer1"};

 private:
  void PlaceOnPages();
  void WriteCaptions();
};

// A caption without its accelerator mark: an ampersand in front goes, one in any other place stays.
[[nodiscard]] Text WithoutMark(const Text& caption);

}  // namespace tallybook
