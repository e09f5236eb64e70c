// Writes the same seeded figures in every form that scripts/bench needs:
//
//   make_figures FOLDER ACCOUNTS DAYS FIELDS
//
//   book.json      the description of a book for them, without figures
//   figures.QDX    an exchange file
//   figures.csv    account code, date, field, value: what a database's own loader reads
//   records.csv    the comma-separated import's form, by code, a date change before each day but the first
//   lines.txt      the delimited import's form, a line for each account and day
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>

#include "bench/BenchHost.h"
#include "exchange/CDataExchange.h"

namespace tallybook::bench {
namespace {

using File = std::unique_ptr<std::FILE, int (*)(std::FILE*)>;

File Create(const std::string& path) {
  File file(std::fopen(path.c_str(), "wb"), std::fclose);
  if (file) return file;
  std::fprintf(stderr, "make_figures: cannot write %s\n", path.c_str());
  std::exit(1);
}

void WriteDescription(const std::string& path, const BookSize& size) {
  const File file = Create(path);
  std::fputs(
      "{\"system_name\": \"Bench\", \"data_level\": \"day\", \"calendar\": {\"kind\": \"months\", \"first_date\": "
      "\"2003-01-01\", \"first_year\": 2003, \"years\": 3, \"years_in_use\": 3}, \"accounts\": [",
      file.get());
  for (Long number = 1; number <= size.accounts; ++number) {
    std::fprintf(file.get(), "%s{\"number\": %d, \"code\": \"%s\", \"description\": \"Account\"}",
                 number == 1 ? "" : ", ", number, BenchHost::Code(number).c_str());
  }
  std::fputs("], \"fields\": [", file.get());
  for (int number = 1; number <= size.fields; ++number) {
    std::fprintf(file.get(), "%s{\"number\": %d, \"description\": \"Field %d\"}", number == 1 ? "" : ", ", number,
                 number);
  }
  std::fputs("]}\n", file.get());
}

// Calls `visit(account, day, date)` for every account of every day.
template <typename Visit>
void ForEachDate(BenchHost& bench, const BookSize& size, Visit visit) {
  for (Long day = 0; day < size.days; ++day) {
    const DateParts date = PartsOf(bench.First() + day);
    for (Long account = 1; account <= size.accounts; ++account) visit(account, day, date);
  }
}

void WriteRows(const std::string& path, BenchHost& bench, const BookSize& size) {
  const File file = Create(path);
  ForEachDate(bench, size, [&](Long account, Long day, const DateParts& date) {
    for (int field = 1; field <= size.fields; ++field) {
      std::fprintf(file.get(), "%s,%04d-%02d-%02d,%d,%.2f\n", BenchHost::Code(account).c_str(), date.year, date.month,
                   date.day, field, BenchHost::Figure(account, day, field));
    }
  });
}

void WriteRecords(const std::string& path, BenchHost& bench, const BookSize& size) {
  const File file = Create(path);
  ForEachDate(bench, size, [&](Long account, Long day, const DateParts& date) {
    if (account == 1 && day == 0) std::fprintf(file.get(), "%d,%d,%d,3,1\r\n", date.month, date.day, date.year);
    if (account == 1 && day > 0) std::fprintf(file.get(), ",0,0,%d,%d,%d\r\n", date.month, date.day, date.year);
    for (int field = 1; field <= size.fields; ++field) {
      std::fprintf(file.get(), "%s,%d,%.2f\r\n", BenchHost::Code(account).c_str(), field,
                   BenchHost::Figure(account, day, field));
    }
  });
}

void WriteLines(const std::string& path, BenchHost& bench, const BookSize& size) {
  const File file = Create(path);
  ForEachDate(bench, size, [&](Long account, Long day, const DateParts& date) {
    std::fprintf(file.get(), "%d,%d,%d,%s", date.month, date.day, date.year, BenchHost::Code(account).c_str());
    for (int field = 1; field <= size.fields; ++field) {
      std::fprintf(file.get(), ",%d,%.2f", field, BenchHost::Figure(account, day, field));
    }
    std::fputs("\r\n", file.get());
  });
}

bool WriteExchangeFile(const std::string& path, BenchHost& bench) {
  bench.Fill();
  CDataExchange exchange(bench.Host().factory);
  exchange.SetOwner(&bench.Book());
  const bool as_table = false;
  return exchange.WriteQDXFile(path, bench.First(), bench.Last(), as_table, 1.0F);
}

int Run(const std::string& folder, const BookSize& size) {
  BenchHost bench(size);
  WriteDescription(folder + "/book.json", size);
  WriteRows(folder + "/figures.csv", bench, size);
  WriteRecords(folder + "/records.csv", bench, size);
  WriteLines(folder + "/lines.txt", bench, size);
  if (WriteExchangeFile(folder + "/figures.QDX", bench)) return 0;
  std::fprintf(stderr, "make_figures: the exchange file could not be written\n");
  return 1;
}

}  // namespace
}  // namespace tallybook::bench

int main(int argc, char** argv) {
  if (argc != 5) {
    std::fprintf(stderr, "usage: make_figures FOLDER ACCOUNTS DAYS FIELDS\n");
    return 2;
  }
  return tallybook::bench::Run(
      argv[1], {static_cast<tallybook::Long>(std::atol(argv[2])), static_cast<tallybook::Long>(std::atol(argv[3])),
                static_cast<tallybook::Integer>(std::atol(argv[4]))});
}
