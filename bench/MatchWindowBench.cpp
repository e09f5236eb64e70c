// How long does the window of a long file take to open at its page of matches, and does it keep up with a key that is
// held? Needs a display: tests/tallybook/desktop/with_display match_window_bench
#include <QApplication>
#include <QKeyEvent>
#include <benchmark/benchmark.h>
#include <cstdlib>
#include <memory>
#include <string>

#include "forms/modAllUI.h"
#include "tallybook/desktop/forms/FormWindow.h"
#include "tallybook/desktop/forms/QtInputQueue.h"
#include "tallybook/desktop/forms/QtKeyboard.h"
#include "tallybook/desktop/forms/QtScreen.h"
#include "tests/dialogs/MatchEditor.h"
#include "tests/support/ScriptedPlatform.h"
#include "views/View.h"

namespace tallybook::bench {
namespace {

using testing::MatchEditor;

void Require(bool holds) {
  if (!holds) std::abort();
}

// The pages of matches as the editor has them.
views::FormView EditorView() {
  using views::As, views::AtLeast, views::Buttons, views::Fields, views::Floating, views::Framed, views::Pages,
      views::Role, views::Rows, views::Shown, views::Stretched;
  const auto page = [](Integer index) {
    return Framed({"Page", index}, {Floating({"cboGridList", index}),
                                    Stretched(AtLeast(Shown({"Grid", index}), 112, 14)), Shown({"lblNote", index})});
  };
  return {.form = "frmTest",
          .content = Rows(
              {Stretched(Pages({"TabStrip1"}, {Framed({"Page", 0}, {Fields({Shown({"Combo2"}), Shown({"Combo3"})})}),
                                               page(1), page(2)})),
               Buttons({As(Role::kMain, {"SaveButtons1"})})}),
          .menus = {},
          .unseen = {{"lstFields"}}};
}

class LongWindow {
 public:
  explicit LongWindow(int count) : count_(count) {
    ThePlatform().screen = &screen_;
    ThePlatform().input = &input_;
    ThePlatform().keyboard = &keyboard_;
    host_->record.SetRecording(false);
    for (int i = 1; i <= count; ++i) host_->book.AddAccount(i, Code(i), "Account number " + std::to_string(i));
    editor_ = std::make_unique<MatchEditor>(host_->book);
    for (int i = 1; i <= count; ++i) {
      editor_->AddFileAccount(Code(count + 1 - i), "An account of the file");
      editor_->AddFileField(static_cast<Integer>(i), "Datafield " + Code(i));
    }
  }
  ~LongWindow() { editor_->Unload(); }
  LongWindow(const LongWindow&) = delete;
  LongWindow& operator=(const LongWindow&) = delete;

  // From a form that is filled to a page of matches that is drawn.
  void Open() {
    editor_->Show();
    editor_->LoadMatches();
    editor_->GoTo(MatchPage::kAccounts);
    QCoreApplication::processEvents();
    screen_.RefreshWindow(editor_->Hwnd());
  }
  void Close() { editor_->Unload(); }
  // Each press is a turn of the input, drawn before the next one.
  void Hold(int presses) {
    QWidget& list = *screen_.WindowOf(*editor_)->WidgetOf(editor_->grids.ListOf(MatchPage::kAccounts));
    for (int press = 0; press < presses; ++press) {
      QKeyEvent key(QEvent::KeyPress, Qt::Key_Asterisk, Qt::ShiftModifier, "*");
      QApplication::sendEvent(&list, &key);
      QCoreApplication::processEvents();
    }
  }
  [[nodiscard]] MatchGrids& Grids() { return editor_->grids; }
  [[nodiscard]] Text Code(int i) const {
    return std::to_string(100'000 + static_cast<long long>(i) * 7'919 % (count_ + 1));
  }

 private:
  int count_;
  views::FormView view_ = EditorView();
  testing::ScriptedPlatform platform_{testing::FilesIn::kMemory};
  desktop::QtScreen screen_{[this](const Text& /*form*/) -> const views::FormView& { return view_; }};
  desktop::QtInputQueue input_;
  desktop::QtKeyboard keyboard_;
  std::unique_ptr<testing::MemoryHost> host_ = std::make_unique<testing::MemoryHost>(testing::BookShape());
  std::unique_ptr<MatchEditor> editor_;
};

void OpenMatchWindow(benchmark::State& state) {
  LongWindow window(static_cast<int>(state.range(0)));
  for ([[maybe_unused]] auto pass : state) {
    window.Open();
    state.PauseTiming();
    Require(window.Grids().CurrentPage() == 1);
    window.Close();
    state.ResumeTiming();
  }
}

void HoldTheMatchingKey(benchmark::State& state) {
  const int count = static_cast<int>(state.range(0));
  LongWindow window(count);
  window.Open();
  const int presses = std::min(count, 500);
  for ([[maybe_unused]] auto pass : state) {
    window.Hold(presses);
    state.PauseTiming();
    Require(window.Grids().Match(MatchPage::kAccounts, 1) == count);
    state.ResumeTiming();
  }
  state.SetItemsProcessed(state.iterations() * presses);  // keys
}

BENCHMARK(OpenMatchWindow)->Name("OpenMatchWindow/Tiny")->Arg(40);
BENCHMARK(HoldTheMatchingKey)->Name("HoldTheMatchingKey/Tiny")->Arg(40);
BENCHMARK(OpenMatchWindow)->Name("OpenMatchWindow/9999Rows")->Arg(9999)->Unit(benchmark::kMillisecond);
BENCHMARK(HoldTheMatchingKey)->Name("HoldTheMatchingKey/9999Rows")->Arg(9999)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace tallybook::bench

int main(int argc, char** argv) {
  QApplication application(argc, argv);
  QApplication::setQuitOnLastWindowClosed(false);
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  return 0;
}
