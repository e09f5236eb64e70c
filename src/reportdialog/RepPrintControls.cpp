#include "reportdialog/RepPrintControls.h"

#include "base/FixedTable.h"
#include "reportdialog/ReportLength.h"

namespace tallybook {

namespace {

template <typename Controls>
void PutInto(Frame& frame, Controls& controls) {
  for (auto& control : controls) control.SetContainer(&frame);
}

void PutInto(Frame& frame, OptionGroup& options) {
  for (Integer i = options.First(); i <= options.Last(); ++i) options(i).SetContainer(&frame);
}

}  // namespace

RepPrintControls::RepPrintControls() : Form("dlgRepPrint") {
  PlaceOnPages();
  WriteCaptions();
  for (Frame& page : FrmPage) page.SetVisible(false);
  frmCompare.SetVisible(false);
  cmbCompareType.SetVisible(false);
}

Frame& RepPrintControls::PageFrame(Integer page) {
  if (page < 1 || page > PageCount()) FailOutsideTable(page, PageCount());
  return FrmPage[static_cast<std::size_t>(page - 1)];
}

void RepPrintControls::PlaceOnPages() {
  Frame& style = PageFrame(kStylePage);
  PutInto(style, lblStyle);
  PutInto(style, OptStyle);
  FrmTranspose.SetContainer(&style);
  PutInto(FrmTranspose, btnTranspose);

  Frame& sequence = PageFrame(kSequencePage);
  chkNoData.SetContainer(&sequence);
  chkNewPage.SetContainer(&sequence);

  Frame& dates = PageFrame(kDatePage);
  PutInto(dates, lblYear);
  PutInto(dates, cmbYear);
  PutInto(dates, optLength);
  frmCompare.SetContainer(&dates);
  cmbCompareRange.SetContainer(&frmCompare);
  cmbCompareType.SetContainer(&frmCompare);
  PutInto(dates, frmDate);
  for (std::size_t i = 0; i < frmDate.size(); ++i) {
    Calendar[i].SetContainer(&frmDate[i]);
    DateLabel[i].SetContainer(&frmDate[i]);
  }
  DateLabel[2].SetContainer(&dates);
}

void RepPrintControls::WriteCaptions() {
  SetCaption("Print a Report");
  PageFrame(kStylePage).SetCaption("Style of Report:");
  PageFrame(kSequencePage).SetCaption("Print Sequence:");
  PageFrame(kDatePage).SetCaption("Dates:");

  lblStyle[0].SetCaption("Time Series:");
  lblStyle[1].SetCaption("Account Summary:");
  OptStyle(1).SetCaption("&Day-by-Day");
  OptStyle(2).SetCaption("&Week-by-Week");
  OptStyle(kByPeriodStyle).SetCaption("&Month-by-Month (Period-by-Period)");
  OptStyle(kOneLineStyle).SetCaption("&One Line per Account/Grouping/Total for one period of time");
  btnTranspose(0).SetCaption("Dates are in Rows (Normal)");
  btnTranspose(1).SetCaption("Dates are in Columns (Transposed)");

  chkNoData.SetCaption("&Print Lines with No Data");
  chkNewPage.SetCaption("Print each &Account in a group on a separate page");

  lblYear[0].SetCaption("&This Year:");
  lblYear[1].SetCaption("&Last Year:");
  optLength(kDayLength).SetCaption("&Day");
  optLength(kWeekLength).SetCaption("&Week");
  optLength(kPeriodLength).SetCaption("&Month or Period");
  optLength(kQuarterLength).SetCaption("&Quarter");
  optLength(kHalfYearLength).SetCaption("&Half Year");
  optLength(kYearLength).SetCaption("&Year");
  optLength(kCustomLength).SetCaption("&Custom Range");
  optLength(kAllLength).SetCaption("&All Years in System");

  Command1[kHelpButton].SetCaption("&Help");
  Command1[kCancelButton].SetCaption("&Cancel");
  Command1[kNextButton].SetCaption("Next >");
  Command1[kBackButton].SetCaption("< Back");
}

Text WithoutMark(const Text& caption) {
  return caption.starts_with('&') ? caption.substr(1) : caption;
}

}  // namespace tallybook
