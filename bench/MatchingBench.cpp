// How long does it take to resolve a definition's codes for the largest account table, 9,999 rows against 9,999
// accounts, when everything matches and when nothing does?
#include <benchmark/benchmark.h>

#include "bench/BenchHost.h"
#include "import/Matching.h"

namespace tallybook::bench {
namespace {

void Match(benchmark::State& state) {
  const auto accounts = static_cast<Long>(state.range(0));
  const bool matches = state.range(1) != 0;
  BenchHost bench({accounts, 0, 1});
  DefinitionRecord definition;
  definition.AcctMatch = kOneForOne;
  definition.accounts.Reset(accounts);
  definition.fields.Reset(1);
  HeaderRecord header;
  header.NumAccounts = static_cast<Integer>(accounts);
  for (Long i = 1; i <= accounts; ++i)
    header.AccountCodes(i) = (matches ? "" : "X") + BenchHost::Code(accounts + 1 - i);
  FillTables(definition, header, bench.Book());
  const auto match = [&] {
    MatchAccountCodes(definition, header, bench.Book());
    bench.ForgetProgress();
  };
  match();
  for (Long i = 1; i <= accounts; ++i) {
    const AccountRow& row = definition.accounts(i);
    if (row.AccountFrom != i || row.AccountTo != (matches ? accounts + 1 - i : 0)) {
      return state.SkipWithError("a row is matched wrongly");
    }
  }
  for ([[maybe_unused]] auto pass : state) match();
  state.SetItemsProcessed(state.iterations() * accounts);
}

BENCHMARK(Match)->Name("Match/Tiny")->Args({20, 1});
BENCHMARK(Match)->Name("Match/9999/AllMatch")->Args({9999, 1})->Unit(benchmark::kMillisecond);
BENCHMARK(Match)->Name("Match/9999/NoneMatches")->Args({9999, 0})->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace tallybook::bench

BENCHMARK_MAIN();
