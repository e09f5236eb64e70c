// How long does it take to write a book's figures to an exchange file, and to read them into another book? Both run
// through the exchange object against the host in memory, beside the least that such work can cost: the same bytes
// copied through a buffer to a file, and from one. The result of each is checked before anything is timed.
#include <algorithm>
#include <benchmark/benchmark.h>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string>

#include "bench/BenchHost.h"
#include "exchange/CDataExchange.h"
#include "qdx/Body.h"

namespace tallybook::bench {
namespace {

constexpr Single kVersion = 1.0F;

BookSize SizeOf(const benchmark::State& state) {
  switch (state.range(0)) {
    case 0:
      return kTiny;
    case 1:
      return kLargeBook;
    default:
      return kWideBook;
  }
}

bool WriteFile(BenchHost& bench, CDataExchange& exchange, const Text& path) {
  exchange.SetOwner(&bench.Book());
  const bool as_table = false;
  return exchange.WriteQDXFile(path, bench.First(), bench.Last(), as_table, kVersion);
}

std::string ReadBytes(const Text& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

// The size of an export's body: 8 bytes for the end and for each account, for each date 8 and for each value 10.
long long BodySize(const BookSize& size) {
  return 8 + 8LL * size.accounts + 8LL * size.accounts * size.days + 10 * size.Figures();
}

void Report(benchmark::State& state, const BookSize& size, long long bytes) {
  state.SetBytesProcessed(bytes * state.iterations());
  state.counters["figures/s"] =
      benchmark::Counter(static_cast<double>(size.Figures()), benchmark::Counter::kIsIterationInvariantRate);
}

void Export(benchmark::State& state) {
  const BookSize size = SizeOf(state);
  BenchHost bench(size);
  bench.Fill();
  CDataExchange exchange(bench.Host().factory);
  const Text path = bench.PathOf("BENCH.QDX");
  if (!WriteFile(bench, exchange, path)) return state.SkipWithError("the export failed");
  const auto bytes = static_cast<long long>(ReadBytes(path).size());
  if (bytes <= BodySize(size)) return state.SkipWithError("the file is too short for the figures");
  for ([[maybe_unused]] auto pass : state) {
    benchmark::DoNotOptimize(WriteFile(bench, exchange, path));
    bench.ForgetProgress();
  }
  Report(state, size, bytes);
}

// The same bytes copied from the file to another, item by item through the same buffers: what moving them costs when
// nothing is looked at.
void Copy(benchmark::State& state) {
  const BookSize size = SizeOf(state);
  BenchHost bench(size);
  bench.Fill();
  CDataExchange exchange(bench.Host().factory);
  Text path = bench.PathOf("BENCH.QDX");
  Text copy = bench.PathOf("COPY.QDX");
  if (!WriteFile(bench, exchange, path)) return state.SkipWithError("the export failed");
  const std::string bytes = ReadBytes(path);
  const auto run = [&] {
    KillFile(copy);
    Integer from = 0;
    Integer to = 0;
    if (!OpenFileEx("BR", from, path) || !OpenFileEx("BL", to, copy)) return false;
    FileStream& source = FileOf(from);
    FileStream& target = FileOf(to);
    std::array<std::byte, BytesOf<BodyValue>()> item{};
    while (source.ReadWhole(item)) target.Write(item);
    target.Flush();
    CloseFileEx(from);
    CloseFileEx(to);
    return true;
  };
  if (!run()) return state.SkipWithError("the files cannot be opened");
  for ([[maybe_unused]] auto pass : state) benchmark::DoNotOptimize(run());
  Report(state, size, static_cast<long long>(bytes.size()));
}

// A definition that takes every account and field as it is, and keeps the file.
void Define(CDataExchange& exchange, BenchHost& bench, const Text& pattern) {
  exchange.OpenDefinitions(bench.Book(), 1);
  exchange.InitFile();
  const Integer position = exchange.FirstAvailRec();
  exchange.SetDesc(position, "Bench");
  exchange.SetQdxFileName(position, pattern);
  exchange.SetAcctMatch(kOneForOne);
  exchange.SetFldMatch(kOneForOne);
  exchange.SetDisp(kDispKeep);
  if (exchange.Add(position) == 0) std::abort();
  exchange.SetFile(position);
}

void Import(benchmark::State& state) {
  const BookSize size = SizeOf(state);
  BenchHost sender(size);
  sender.Fill();
  CDataExchange writer(sender.Host().factory);
  const Text path = sender.PathOf("BENCH.QDX");
  if (!WriteFile(sender, writer, path)) return state.SkipWithError("the export failed");
  const auto bytes = static_cast<long long>(ReadBytes(path).size());

  testing::BookShape shape;
  shape.data_path = sender.PathOf("");
  BenchHost receiver(size, shape);
  CDataExchange reader(receiver.Host().factory);
  Define(reader, receiver, path);
  const auto import = [&](eMath math) {
    reader.SetMath(static_cast<Integer>(math));
    const bool imported = reader.ImportQDXFile(receiver.Host().printer);
    receiver.ForgetProgress();
    return imported;
  };
  if (!import(eMath::mReplace) || !receiver.IsFilled())
    return state.SkipWithError("the import is not what was written");
  // Adding is the plain case: every value is read, combined and stored once.
  for ([[maybe_unused]] auto pass : state) benchmark::DoNotOptimize(import(eMath::mAdd));
  Report(state, size, bytes);
}

BENCHMARK(Export)->Name("Export/Tiny")->Arg(0);
BENCHMARK(Import)->Name("Import/Tiny")->Arg(0);
BENCHMARK(Copy)->Name("Copy/Tiny")->Arg(0);
BENCHMARK(Export)->Name("Export/1000x730x20")->Arg(1)->Unit(benchmark::kMillisecond);
BENCHMARK(Import)->Name("Import/1000x730x20")->Arg(1)->Unit(benchmark::kMillisecond);
BENCHMARK(Copy)->Name("Copy/1000x730x20")->Arg(1)->Unit(benchmark::kMillisecond);
BENCHMARK(Export)->Name("Export/9999x30x5")->Arg(2)->Unit(benchmark::kMillisecond);
BENCHMARK(Import)->Name("Import/9999x30x5")->Arg(2)->Unit(benchmark::kMillisecond);
BENCHMARK(Copy)->Name("Copy/9999x30x5")->Arg(2)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace tallybook::bench

BENCHMARK_MAIN();
