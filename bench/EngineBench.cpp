// How fast does a book take and give figures through the Masterfile operations, as an import or an export of a year of
// accounts does? The journal is on. Before anything is timed, a pass of each shape is checked figure by figure.
//
//   engine_bench                                  all shapes
//   engine_bench --benchmark_filter=Tiny          the size that runs with the tests
//
// "figures/s" counts FieldValue or SetFieldValue calls that carried a figure. Writing is timed from BeginRollback to
// the end of EndProgress, when all is committed; "close_ms" is what Close took afterwards to bring the log into the
// file.
#include <benchmark/benchmark.h>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <memory>
#include <random>
#include <string>
#include <unistd.h>
#include <vector>

#include "base/Dates.h"
#include "base/Failure.h"
#include "platform/StopProgram.h"
#include "platform/posix/PosixPlatform.h"
#include "tallybook/engine/Book.h"
#include "tallybook/engine/Journal.h"
#include "tests/support/CallRecord.h"
#include "tests/support/MemoryHost.h"

namespace tallybook::bench {
namespace {

using engine::Book;
using engine::BookDescription;

enum Order : std::int64_t { kDateMajor = 0, kAccountMajor = 1 };
enum Content : std::int64_t { kMoney = 0, kAnyDoubles = 1 };

struct Shape {
  std::int64_t accounts;
  std::int64_t days;
  std::int64_t fields;
  [[nodiscard]] std::int64_t Figures() const { return accounts * days * fields; }
};

// Figures that repeat after a while, so that making them costs next to nothing.
class FigureSource {
 public:
  FigureSource(Content content, unsigned seed) : values_(kCount) {
    std::mt19937_64 random(seed);
    std::uniform_int_distribution<int> cents(1, 99'999'99);
    std::uniform_real_distribution<double> any(1, 1e6);
    for (double& value : values_) value = content == kMoney ? cents(random) / 100.0 : any(random);
  }
  [[nodiscard]] double At(std::int64_t account, std::int64_t day, std::int64_t field) const {
    return values_[static_cast<std::size_t>(account * 7919 + day * 104729 + field) % kCount];
  }

 private:
  static constexpr std::size_t kCount = 1 << 15;
  std::vector<double> values_;
};

BookDescription Describe(const Shape& shape) {
  BookDescription description;
  description.system_name = "Bench";
  description.calendar.first_date = DateFromParts(2003, 1, 1);
  description.calendar.first_year = 2003;
  description.calendar.years = static_cast<Integer>(shape.days / 365 + 1);
  description.calendar.years_in_use = description.calendar.years;
  for (std::int64_t number = 1; number <= shape.accounts; ++number) {
    description.accounts.push_back({static_cast<Long>(number), "A" + std::to_string(number), ""});
  }
  for (std::int64_t number = 1; number <= shape.fields; ++number) {
    description.fields.push_back({static_cast<Integer>(number), "Field " + std::to_string(number), false});
  }
  return description;
}

// Calls `visit(account number, day from 0)` for every record, in the order asked.
template <typename Visit>
void Walk(const Shape& shape, Order order, Visit visit) {
  const std::int64_t outer_count = order == kDateMajor ? shape.days : shape.accounts;
  const std::int64_t inner_count = order == kDateMajor ? shape.accounts : shape.days;
  for (std::int64_t outer = 0; outer < outer_count; ++outer) {
    for (std::int64_t inner = 0; inner < inner_count; ++inner) {
      const std::int64_t account = order == kDateMajor ? inner : outer;
      const std::int64_t day = order == kDateMajor ? outer : inner;
      visit(static_cast<Long>(account + 1), day);
    }
  }
}

class Workbench {
 public:
  explicit Workbench(const Shape& shape) : shape_(shape), first_(DateFromParts(2003, 1, 1)) {
    const char* folder = std::getenv("TMPDIR");
    path_ = (folder == nullptr ? "/tmp" : folder) + std::string("/engine_bench_") + std::to_string(getpid()) + ".tbk";
    Remove();
    Book::Create(path_, Describe(shape));
  }
  ~Workbench() { Remove(); }
  Workbench(const Workbench&) = delete;
  Workbench& operator=(const Workbench&) = delete;

  [[nodiscard]] std::unique_ptr<Book> Open() { return Book::Open(path_, app_); }
  [[nodiscard]] std::uintmax_t FileSize() const { return std::filesystem::file_size(path_); }

  // One field more, as `field add` does it.
  static void AddField(Book& book) {
    BookDescription after = book.Description();
    after.fields.push_back({static_cast<Integer>(after.fields.size() + 1), "New", false});
    book.Grow(after, "field add");
  }

  // As an import does it: everything is reached through the abstract class.
  void Write(Masterfile& book, Order order, const FigureSource& source) const {
    book.BeginProgress("Bench");
    book.BeginRollback(first_, first_ + static_cast<Date>(shape_.days - 1));
    Walk(shape_, order, [&](Long account, std::int64_t day) {
      if (!book.ReadRecord(account, first_ + static_cast<Date>(day))) StopProgram();
      for (std::int64_t field = 1; field <= shape_.fields; ++field) {
        book.SetFieldValue(static_cast<Integer>(field), source.At(account, day, field));
      }
      book.WriteRecord();
    });
    book.EndRollback();
    book.EndProgress();
  }

  double Read(Masterfile& book, Order order) const {
    double sum = 0;
    Walk(shape_, order, [&](Long account, std::int64_t day) {
      if (!book.ReadRecord(account, first_ + static_cast<Date>(day))) StopProgram();
      for (std::int64_t field = 1; field <= shape_.fields; ++field) sum += book.FieldValue(static_cast<Integer>(field));
    });
    return sum;
  }

  // Whether every figure of the book is what `source` says, by reading records and by walking figures.
  [[nodiscard]] bool Holds(Book& book, const FigureSource& source) const {
    bool right = true;
    Walk(shape_, kAccountMajor, [&](Long account, std::int64_t day) {
      right = right && book.ReadRecord(account, first_ + static_cast<Date>(day));
      for (std::int64_t field = 1; right && field <= shape_.fields; ++field) {
        right = book.FieldValue(static_cast<Integer>(field)) == source.At(account, day, field);
      }
    });
    std::int64_t count = 0;
    book.VisitFigures({}, [&](const engine::Figure& figure) {
      ++count;
      right = right && figure.value == source.At(figure.account_number, static_cast<std::int64_t>(figure.date - first_),
                                                 figure.field_number);
      return right;
    });
    return right && count == shape_.Figures();
  }

 private:
  void Remove() const {
    for (const char* ending : {"", "-wal", "-shm", "-lock"}) std::filesystem::remove(path_ + ending);
  }

  Shape shape_;
  Date first_;
  std::string path_;
  testing::CallRecord record_;
  testing::MemoryApp app_{record_};
};

double Seconds(std::chrono::steady_clock::time_point begin) {
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
}

Shape ShapeOf(const benchmark::State& state) {
  return {state.range(0), state.range(1), state.range(2)};
}

void WriteFigures(benchmark::State& state, bool over_others, bool grown = false) {
  const Shape shape = ShapeOf(state);
  const auto order = static_cast<Order>(state.range(3));
  const FigureSource source(static_cast<Content>(state.range(4)), 1);
  const FigureSource before(static_cast<Content>(state.range(4)), 2);
  double closing = 0;
  double processor = 0;
  double bytes = 0;
  for (auto _ : state) {
    Workbench bench(shape);
    if (over_others) {
      const auto book = bench.Open();
      bench.Write(*book, kAccountMajor, before);
      if (grown) Workbench::AddField(*book);
      book->Close();
    }
    const auto book = bench.Open();
    const std::clock_t processor_begin = std::clock();
    const auto begin = std::chrono::steady_clock::now();
    bench.Write(*book, order, source);
    state.SetIterationTime(Seconds(begin));
    processor += static_cast<double>(std::clock() - processor_begin) / CLOCKS_PER_SEC;
    const auto close_begin = std::chrono::steady_clock::now();
    book->Close();
    closing += Seconds(close_begin);
    bytes = static_cast<double>(bench.FileSize());
  }
  state.counters["figures/s"] =
      benchmark::Counter(static_cast<double>(shape.Figures() * state.iterations()), benchmark::Counter::kIsRate);
  state.counters["close_ms"] = closing * 1000 / static_cast<double>(state.iterations());
  state.counters["cpu_ms"] = processor * 1000 / static_cast<double>(state.iterations());
  state.counters["bytes/figure"] = bytes / static_cast<double>(shape.Figures());
}

void WriteNewFigures(benchmark::State& state) {
  WriteFigures(state, false);
}
void WriteOverFigures(benchmark::State& state) {
  WriteFigures(state, true);
}

// Over figures that were written before a field came.
void WriteOverFiguresGrown(benchmark::State& state) {
  const bool over_others = true;
  const bool grown = true;
  WriteFigures(state, over_others, grown);
}

// What `field add` takes in a book with all its figures, from opening it to closing it.
void AddField(benchmark::State& state) {
  const Shape shape = ShapeOf(state);
  Workbench bench(shape);
  {
    const auto book = bench.Open();
    bench.Write(*book, kAccountMajor, FigureSource(static_cast<Content>(state.range(4)), 1));
    book->Close();
  }
  for (auto _ : state) {
    const auto begin = std::chrono::steady_clock::now();
    const auto book = bench.Open();
    Workbench::AddField(*book);
    book->Close();
    state.SetIterationTime(Seconds(begin));
  }
}

void ReadFigures(benchmark::State& state, bool grown) {
  const Shape shape = ShapeOf(state);
  const auto order = static_cast<Order>(state.range(3));
  Workbench bench(shape);
  {
    const auto book = bench.Open();
    bench.Write(*book, kAccountMajor, FigureSource(static_cast<Content>(state.range(4)), 1));
    if (grown) Workbench::AddField(*book);
    book->Close();
  }
  for (auto _ : state) {
    const auto book = bench.Open();
    const auto begin = std::chrono::steady_clock::now();
    benchmark::DoNotOptimize(bench.Read(*book, order));
    state.SetIterationTime(Seconds(begin));
  }
  state.counters["figures/s"] =
      benchmark::Counter(static_cast<double>(shape.Figures() * state.iterations()), benchmark::Counter::kIsRate);
}

void ReadFigures(benchmark::State& state) {
  const bool grown = false;
  ReadFigures(state, grown);
}
// Written before a field came.
void ReadFiguresGrown(benchmark::State& state) {
  const bool grown = true;
  ReadFigures(state, grown);
}

void WalkFigures(benchmark::State& state) {
  const Shape shape = ShapeOf(state);
  Workbench bench(shape);
  const auto book = bench.Open();
  bench.Write(*book, kAccountMajor, FigureSource(static_cast<Content>(state.range(4)), 1));
  for (auto _ : state) {
    const auto begin = std::chrono::steady_clock::now();
    double sum = 0;
    book->VisitFigures({}, [&](const engine::Figure& figure) {
      sum += figure.value;
      return true;
    });
    benchmark::DoNotOptimize(sum);
    state.SetIterationTime(Seconds(begin));
  }
  state.counters["figures/s"] =
      benchmark::Counter(static_cast<double>(shape.Figures() * state.iterations()), benchmark::Counter::kIsRate);
}

// An import that is taken back.
void UndoFigures(benchmark::State& state) {
  const Shape shape = ShapeOf(state);
  const auto content = static_cast<Content>(state.range(4));
  for (auto _ : state) {
    Workbench bench(shape);
    const auto book = bench.Open();
    bench.Write(*book, kAccountMajor, FigureSource(content, 2));
    bench.Write(*book, kAccountMajor, FigureSource(content, 1));
    const auto begin = std::chrono::steady_clock::now();
    engine::Journal(*book).UndoNewest();
    state.SetIterationTime(Seconds(begin));
  }
  state.counters["figures/s"] =
      benchmark::Counter(static_cast<double>(shape.Figures() * state.iterations()), benchmark::Counter::kIsRate);
}

constexpr std::int64_t kShapes[][3] = {{1000, 730, 20}, {9999, 30, 5}};
constexpr std::int64_t kTinyShape[3] = {20, 40, 5};

void AddSize(benchmark::internal::Benchmark* bench, const std::int64_t (&shape)[3]) {
  for (const Content content : {kMoney, kAnyDoubles}) {
    for (const Order order : {kDateMajor, kAccountMajor}) {
      bench->Args({shape[0], shape[1], shape[2], order, content});
    }
  }
}

void Large(benchmark::internal::Benchmark* bench) {
  bench->ArgNames({"accounts", "days", "fields", "by_account", "any_doubles"});
  bench->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(3);
  for (const auto& shape : kShapes) AddSize(bench, shape);
}

void Tiny(benchmark::internal::Benchmark* bench) {
  bench->ArgNames({"accounts", "days", "fields", "by_account", "any_doubles"});
  bench->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(1);
  AddSize(bench, kTinyShape);
}

BENCHMARK(WriteNewFigures)->Apply(Large);
BENCHMARK(WriteOverFigures)->Apply(Large);
BENCHMARK(ReadFigures)->Apply(Large);
BENCHMARK(WalkFigures)->Apply(Large);
BENCHMARK(AddField)->Apply(Large);
BENCHMARK(WriteOverFiguresGrown)->Apply(Large);
BENCHMARK(ReadFiguresGrown)->Apply(Large);
BENCHMARK(UndoFigures)->Apply(Large);
BENCHMARK(WriteNewFigures)->Name("WriteNewFiguresTiny")->Apply(Tiny);
BENCHMARK(AddField)->Name("AddFieldTiny")->Apply(Tiny);
BENCHMARK(WriteOverFiguresGrown)->Name("WriteOverFiguresGrownTiny")->Apply(Tiny);
BENCHMARK(ReadFiguresGrown)->Name("ReadFiguresGrownTiny")->Apply(Tiny);
BENCHMARK(WriteOverFigures)->Name("WriteOverFiguresTiny")->Apply(Tiny);
BENCHMARK(ReadFigures)->Name("ReadFiguresTiny")->Apply(Tiny);
BENCHMARK(WalkFigures)->Name("WalkFiguresTiny")->Apply(Tiny);
BENCHMARK(UndoFigures)->Name("UndoFiguresTiny")->Apply(Tiny);

// One pass of a shape, checked: written over other figures, read back, and taken back.
bool IsTrue(const Shape& shape, Order order, Content content) {
  Workbench bench(shape);
  const FigureSource first(content, 2);
  const FigureSource second(content, 1);
  auto book = bench.Open();
  bench.Write(*book, kAccountMajor, first);
  bench.Write(*book, order, second);
  book->Close();
  book = bench.Open();
  if (!bench.Holds(*book, second)) return false;
  engine::Journal(*book).UndoNewest();
  return bench.Holds(*book, first);
}

bool AllTrue() {
  for (const Content content : {kMoney, kAnyDoubles}) {
    for (const Order order : {kDateMajor, kAccountMajor}) {
      if (!IsTrue({50, 400, 20}, order, content) || !IsTrue({2000, 30, 5}, order, content)) return false;
    }
  }
  return true;
}

}  // namespace
}  // namespace tallybook::bench

int main(int argc, char** argv) {
  tallybook::InstallPlatform(tallybook::PosixPlatform("Tallybook"));
#ifndef NDEBUG
  std::fputs("Not optimised: these figures say nothing of speed.\n", stderr);
#endif
  if (!tallybook::bench::AllTrue()) {
    std::fputs("The book does not give back what was written into it; nothing is timed.\n", stderr);
    return EXIT_FAILURE;
  }
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return EXIT_FAILURE;
  benchmark::RunSpecifiedBenchmarks();
  return EXIT_SUCCESS;
}
