// How long does it take to match a whole file with one key held down, to fill both lists, and to open a long file?
#include <benchmark/benchmark.h>
#include <cstdlib>
#include <memory>
#include <string>

#include "tests/dialogs/MatchEditor.h"
#include "tests/support/ScriptedPlatform.h"

namespace tallybook::bench {
namespace {

using testing::MatchEditor;

void Require(bool holds) {
  if (!holds) std::abort();
}

// A book of so many accounts and datafields and a file with the same, whose orders have nothing to do with each other.
class LongFile {
 public:
  explicit LongFile(int count) : count_(count) {
    host_->record.SetRecording(false);
    for (int i = 1; i <= count; ++i) {
      host_->book.AddAccount(i, Code(i), "Account number " + std::to_string(i));
      editor_.AddFileAccount(Code(count + 1 - i), "An account of the file");
      editor_.AddFileField(static_cast<Integer>(i), Description(i));
    }
    FillLists();
  }
  void FillLists() {
    editor_.grids.ClearEntries();
    for (int i = 1; i <= count_; ++i) {
      editor_.grids.AddAccountEntry(Code(i), static_cast<Integer>(i));
      editor_.grids.AddFieldEntry(Description(i), static_cast<Integer>(i));
    }
  }
  void Open() {
    editor_.LoadMatches();
    editor_.GoTo(MatchPage::kAccounts);
  }
  void Hold(Integer character) {
    for (int i = 0; i < count_; ++i) editor_.UserKey('8', kShiftState, character);
  }
  [[nodiscard]] MatchEditor& Editor() { return editor_; }
  // Numbers all over the range, each once: 7,919 is prime and no factor of any count used here.
  [[nodiscard]] Text Code(int i) const {
    return std::to_string(100'000 + static_cast<long long>(i) * 7'919 % (count_ + 1));
  }
  [[nodiscard]] Text Description(int i) const { return "Datafield " + Code(i) + " with a usual description"; }

 private:
  int count_;
  testing::ScriptedPlatform platform_{testing::FilesIn::kMemory};
  std::unique_ptr<testing::MemoryHost> host_ = std::make_unique<testing::MemoryHost>(testing::BookShape());
  MatchEditor editor_{host_->book};
};

void MatchByHolding(benchmark::State& state) {
  const int count = static_cast<int>(state.range(0));
  LongFile file(count);
  for ([[maybe_unused]] auto pass : state) {
    state.PauseTiming();
    file.Open();
    state.ResumeTiming();
    file.Hold('*');
  }
  const MatchGrids& grids = file.Editor().grids;
  for (int i = 1; i <= count; ++i) Require(grids.Match(MatchPage::kAccounts, i) == count + 1 - i);
  state.SetItemsProcessed(state.iterations() * count);
}

void FillLists(benchmark::State& state) {
  LongFile file(static_cast<int>(state.range(0)));
  for ([[maybe_unused]] auto pass : state) file.FillLists();
  const ListControl& list = file.Editor().grids.ListOf(MatchPage::kFields);
  for (Integer i = 2; i < list.ListCount(); ++i) Require(list.List(static_cast<Integer>(i - 1)) < list.List(i));
  Require(list.ListCount() == state.range(0) + 1);
  state.SetItemsProcessed(state.iterations() * state.range(0) * 2);
}

void OpenFile(benchmark::State& state) {
  LongFile file(static_cast<int>(state.range(0)));
  for ([[maybe_unused]] auto pass : state) file.Open();
  state.SetItemsProcessed(state.iterations() * state.range(0) * 2);
}

BENCHMARK(MatchByHolding)->Name("MatchByHolding/Tiny")->Arg(40);
BENCHMARK(FillLists)->Name("FillLists/Tiny")->Arg(40);
BENCHMARK(OpenFile)->Name("OpenFile/Tiny")->Arg(40);
BENCHMARK(MatchByHolding)->Name("MatchByHolding/9999Rows")->Arg(9999)->Unit(benchmark::kMillisecond);
BENCHMARK(FillLists)->Name("FillLists/9999Entries")->Arg(9999)->Unit(benchmark::kMillisecond);
BENCHMARK(OpenFile)->Name("OpenFile/9999Rows")->Arg(9999)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace tallybook::bench

BENCHMARK_MAIN();
