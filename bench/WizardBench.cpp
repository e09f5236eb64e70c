// How long does the print dialog take to answer the choice of a date, a length or a year, and to be filled?
#include <benchmark/benchmark.h>
#include <cstdlib>
#include <memory>

#include "bench/BenchHost.h"
#include "exchange/CDataExchange.h"
#include "reportdialog/ExchangeReport.h"
#include "reportdialog/dlgRepPrint.h"

namespace tallybook::bench {
namespace {

// An export's dialog over a book of so many years from 2003, open on its second year.
class Wizard {
 public:
  explicit Wizard(Long years) : bench_({1, 0, 1}, ShapeOf(years)) {
    exchange_.SetOwner(&bench_.Book());
    Fill();
  }

  void Fill() {
    dialog_ = std::make_unique<dlgRepPrint>(bench_.Host().factory);
    dialog_->SetCurrentDate(FirstOfYear());
    dialog_->SetInitialLength(kPeriodLength);
    dialog_->SetFields(report_, "Export", "Export", 0);
    dialog_->Show();
  }
  [[nodiscard]] dlgRepPrint& Dialog() { return *dialog_; }
  [[nodiscard]] static Date FirstOfYear() { return DateFromParts(2004, 1, 1); }

 private:
  static testing::BookShape ShapeOf(Long years) {
    testing::BookShape shape;
    shape.years = years;
    shape.years_in_use = years;
    return shape;
  }

  BenchHost bench_;
  CDataExchange exchange_{bench_.Host().factory};
  ExchangeReport report_{exchange_};
  std::unique_ptr<dlgRepPrint> dialog_;
};

void Require(bool holds) {
  if (!holds) std::abort();
}

void ChooseDate(benchmark::State& state) {
  Wizard wizard(static_cast<Long>(state.range(0)));
  CalendarBox& calendar = wizard.Dialog().Calendar[1];
  Require(calendar.UserChoose(DateFromParts(2004, 2, 3)));
  Require(wizard.Dialog().DateLabel[1].Caption() == "February - Ending: " + LongDateText(DateFromParts(2004, 2, 29)));
  int day = 0;
  for ([[maybe_unused]] auto pass : state) {
    Require(calendar.UserChoose(Wizard::FirstOfYear() + day));
    day = (day + 1) % 366;
  }
  state.SetItemsProcessed(state.iterations());
}

void ChooseLength(benchmark::State& state) {
  Wizard wizard(static_cast<Long>(state.range(0)));
  Integer length = kDayLength;
  for ([[maybe_unused]] auto pass : state) {
    Require(wizard.Dialog().optLength(length).UserClick());
    length = length == kAllLength ? kDayLength : static_cast<Integer>(length + 1);
  }
  Require(wizard.Dialog().SelectedLength() == wizard.Dialog().optLength.Selected());
  state.SetItemsProcessed(state.iterations());
}

void ChooseYear(benchmark::State& state) {
  Wizard wizard(static_cast<Long>(state.range(0)));
  Integer year = 0;
  for ([[maybe_unused]] auto pass : state) {
    Require(wizard.Dialog().cmbYear[0].UserChoose(year));
    year = static_cast<Integer>(1 - year);
  }
  state.SetItemsProcessed(state.iterations());
}

void Open(benchmark::State& state) {
  Wizard wizard(static_cast<Long>(state.range(0)));
  Require(wizard.Dialog().optLength.Selected() == kPeriodLength);
  for ([[maybe_unused]] auto pass : state) wizard.Fill();
  state.SetItemsProcessed(state.iterations());
}

BENCHMARK(ChooseDate)->Name("ChooseDate/Tiny")->Arg(2);
BENCHMARK(ChooseLength)->Name("ChooseLength/Tiny")->Arg(2);
BENCHMARK(ChooseYear)->Name("ChooseYear/Tiny")->Arg(2);
BENCHMARK(Open)->Name("Open/Tiny")->Arg(2);
BENCHMARK(ChooseDate)->Name("ChooseDate/9Years")->Arg(9)->Unit(benchmark::kMicrosecond);
BENCHMARK(ChooseLength)->Name("ChooseLength/9Years")->Arg(9)->Unit(benchmark::kMicrosecond);
BENCHMARK(ChooseYear)->Name("ChooseYear/9Years")->Arg(9)->Unit(benchmark::kMicrosecond);
BENCHMARK(Open)->Name("Open/9Years")->Arg(9)->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace tallybook::bench

BENCHMARK_MAIN();
