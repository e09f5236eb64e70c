// How fast do text files come in, both passes together? A comma-separated file by code, and a delimited file of lines
// with twenty pairs each, through the host in memory. The book is checked after a first run, before anything is timed.
#include <benchmark/benchmark.h>
#include <cstdio>
#include <memory>
#include <string>

#include "bench/BenchHost.h"
#include "exchange/CDataExchange.h"
#include "import/DelimitedImport.h"

namespace tallybook::bench {
namespace {

BookSize SizeOf(const benchmark::State& state) {
  return state.range(0) == 0 ? kTiny : kLargeBook;
}

using TextFile = std::unique_ptr<std::FILE, int (*)(std::FILE*)>;

TextFile Create(const Text& path) {
  TextFile file(std::fopen(path.c_str(), "wb"), std::fclose);
  if (!file) std::abort();
  return file;
}

// A date change before each day's records, which come account by account.
void WriteCSV(BenchHost& bench, const BookSize& size, const Text& path) {
  const TextFile file = Create(path);
  for (Long day = 0; day < size.days; ++day) {
    const DateParts date = PartsOf(bench.First() + day);
    if (day == 0) {
      std::fprintf(file.get(), "%d,%d,%d,3,1\r\n", date.month, date.day, date.year);
    } else {
      std::fprintf(file.get(), ",0,0,%d,%d,%d\r\n", date.month, date.day, date.year);
    }
    for (Long account = 1; account <= size.accounts; ++account) {
      for (int field = 1; field <= size.fields; ++field) {
        std::fprintf(file.get(), "%s,%d,%.2f\r\n", BenchHost::Code(account).c_str(), field,
                     BenchHost::Figure(account, day, field));
      }
    }
  }
}

void WriteDelimited(BenchHost& bench, const BookSize& size, const Text& path) {
  const TextFile file = Create(path);
  for (Long day = 0; day < size.days; ++day) {
    const DateParts date = PartsOf(bench.First() + day);
    for (Long account = 1; account <= size.accounts; ++account) {
      std::fprintf(file.get(), "%d,%d,%d,%s", date.month, date.day, date.year, BenchHost::Code(account).c_str());
      for (int field = 1; field <= size.fields; ++field) {
        std::fprintf(file.get(), ",%d,%.2f", field, BenchHost::Figure(account, day, field));
      }
      std::fputs("\r\n", file.get());
    }
  }
}

void Run(benchmark::State& state, void (*write)(BenchHost&, const BookSize&, const Text&),
         bool (*import)(CDataExchange&, const Text&)) {
  const BookSize size = SizeOf(state);
  BenchHost bench(size);
  const Text path = bench.PathOf("BENCH.TXT");
  write(bench, size, path);
  CDataExchange exchange(bench.Host().factory);
  exchange.SetOwner(&bench.Book());
  const auto run = [&] {
    // The delimited import renames its file.
    const bool imported = import(exchange, path);
    RenameFile(path + ".bak", path);
    bench.ForgetProgress();
    return imported;
  };
  if (!run() || !bench.IsFilled()) return state.SkipWithError("the import is not what was written");
  Integer number = 0;
  Text name = path;
  if (!OpenFileEx("BR", number, name)) return state.SkipWithError("the file is gone");
  const long long bytes = FileOf(number).Size();
  CloseFileEx(number);
  for ([[maybe_unused]] auto pass : state) benchmark::DoNotOptimize(run());
  state.SetBytesProcessed(bytes * state.iterations());
  state.counters["figures/s"] =
      benchmark::Counter(static_cast<double>(size.Figures()), benchmark::Counter::kIsIterationInvariantRate);
}

void CommaSeparated(benchmark::State& state) {
  Run(state, WriteCSV, [](CDataExchange& exchange, const Text& path) {
    const bool no_prompts = true;
    return exchange.ImportCSVFile(path, no_prompts, {0});
  });
}

void Delimited(benchmark::State& state) {
  Run(state, WriteDelimited, [](CDataExchange& exchange, const Text& path) {
    const bool system_fields = false;
    return exchange.ImportDelimitedFile(path, eMath::mReplace, kMonthDayYear, 0, system_fields);
  });
}

BENCHMARK(CommaSeparated)->Name("CommaSeparated/Tiny")->Arg(0);
BENCHMARK(Delimited)->Name("Delimited/Tiny")->Arg(0);
BENCHMARK(CommaSeparated)->Name("CommaSeparated/14.6M")->Arg(1)->Unit(benchmark::kMillisecond);
BENCHMARK(Delimited)->Name("Delimited/14.6M")->Arg(1)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace tallybook::bench

BENCHMARK_MAIN();
