// Makes a sample book and the list of its figures: make_sample_book BOOK.tbk FIGURES.txt. README.md tells which of the
// books here it made, and what they hold. The list has a line for each figure: account, date, field, value.

#include <charconv>
#include <exception>
#include <fstream>
#include <iostream>
#include <memory>
#include <vector>

#include "base/Dates.h"
#include "tallybook/engine/Book.h"
#include "tallybook/engine/Journal.h"
#include "tests/support/CallRecord.h"
#include "tests/support/MemoryHost.h"
#include "tests/support/ScriptedPlatform.h"

namespace tallybook::testing {
namespace {

using engine::Book;
using engine::Journal;

constexpr Integer kFields = 20;  // a chunk holds about a hundred days
constexpr Long kMoney = 101;     // two decimals, of two bytes
constexpr Long kLarge = 205;     // two decimals, of four bytes
constexpr Long kDense = 7;       // quotients that no decimals hold
constexpr Long kSparse = 340;    // a figure a week
constexpr Long kLate = 512;      // has figures by imports only

Date Day(int year, int month, int day) {
  return DateFromParts(year, month, day);
}

engine::BookDescription Description() {
  engine::BookDescription description;
  description.system_name = "Sample Shop";
  description.type_name = "Sales";
  description.calendar.first_date = Day(2003, 1, 1);
  description.calendar.first_year = 2003;
  description.calendar.years = 2;
  description.calendar.years_in_use = 2;
  description.accounts = {{kMoney, "100", "Front of shop"}, {kLarge, "200", "Café"}, {kDense, "A", "Store"},
                          {kSparse, "340", "Kiosk"},        {kLate, "512", ""},      {900, "900", "Empty"}};
  for (Integer number = 1; number <= kFields; ++number) {
    description.fields.push_back({number, "Field " + std::to_string(number), number == kFields});
  }
  return description;
}

// Some whole number that goes by the place and by the pass; the same wherever it is asked.
int Mixed(int pass, Long account, int day, Integer field) {
  const unsigned mixed = static_cast<unsigned>(pass) * 2654435761U + static_cast<unsigned>(account) * 40503U +
                         static_cast<unsigned>(day) * 9973U + static_cast<unsigned>(field) * 31U;
  return static_cast<int>(mixed / 7 % 1'000'000);
}

Double FigureOf(int pass, Long account, int day, Integer field) {
  const int mixed = Mixed(pass, account, day, field);
  if (account == kMoney) return mixed % 30'000 / 100.0;
  if (account == kLarge) return (mixed - 200'000) / 100.0;
  if (account == kDense) return mixed / 7.0;
  return field == 1 && day % 7 == 0 ? mixed / 3.0 : 0;
}

void WriteDays(Book& book, int pass, Long account, int first_day, int end_day) {
  for (int day = first_day; day < end_day; ++day) {
    if (!book.ReadRecord(account, Day(2003, 1, 1) + day)) throw std::runtime_error("no such record");
    for (Integer field = 1; field <= kFields; ++field) book.SetFieldValue(field, FigureOf(pass, account, day, field));
    book.WriteRecord();
  }
}

class SampleMaker {
 public:
  explicit SampleMaker(const Text& path) : path_(path) {
    platform_.clock.Set(Day(2004, 2, 3) + 0.5);
    Book::Create(path_, Description());
  }

  void Fill() {
    const auto book = Open();
    WriteDays(*book, 0, kMoney, 0, 230);
    WriteDays(*book, 0, kLarge, 20, 130);
    WriteDays(*book, 0, kDense, 30, 110);
    WriteDays(*book, 0, kSparse, 0, 400);
    book->Close();
  }

  void AddEntries() {
    const auto book = Open();
    Import(*book, "import qdx #1", 1, kMoney, 90, 120);
    Import(*book, "import csv", 2, kDense, 50, 60);
    Journal(*book).UndoNewest();
    book->SetOperationName("");
    Grow(*book);
    Import(*book, "import qdx #2", 3, kSparse, 395, 500);
    book->BeginRollback(Day(2003, 1, 1) + 110, Day(2003, 1, 1) + 130);
    WriteDays(*book, 4, kLate, 110, 130);
    WriteDays(*book, 4, kMoney, 110, 130);
    book->Close();  // the last entry stays unclosed
  }

  void List(const Text& path) {
    std::ofstream out(path, std::ios::binary);
    Open()->VisitFigures({}, [&](const engine::Figure& figure) {
      char digits[32];
      const auto end = std::to_chars(digits, digits + sizeof digits, figure.value).ptr;
      out << figure.account_number << ' ' << DateText(figure.date) << ' ' << figure.field_number << ' '
          << Text(digits, end) << '\n';
      return true;
    });
  }

 private:
  std::unique_ptr<Book> Open() { return Book::Open(path_, app_); }

  static void Import(Book& book, const Text& name, int pass, Long account, int first_day, int end_day) {
    book.SetOperationName(name);
    book.SetNotes(NotesOf(name, pass));
    book.BeginRollback(Day(2003, 1, 1) + first_day, Day(2003, 1, 1) + end_day - 1);
    WriteDays(book, pass, account, first_day, end_day);
    book.EndRollback();
  }

  // Of what is imported by name: a file, and a word of the application.
  static engine::EntryNotes NotesOf(const Text& name, int pass) {
    if (name.empty()) return {};
    const auto byte = static_cast<std::byte>(pass);
    return {.files = {{.path = "in/" + std::to_string(pass) + ".QDX",
                       .size = 1000 + pass,
                       .xxh3 = std::vector<std::byte>(16, byte),
                       .sha256 = std::vector<std::byte>(32, byte)}},
            .facts = R"({"math":"add"})"};
  }

  // Lists change between imports: a field and an account come before the others, one more of each comes and goes with
  // the figure that it had, and the last field becomes the second.
  static void Grow(Book& book) {
    engine::BookDescription after = book.Description();
    after.fields.insert(after.fields.begin(), {50, "New field", false});
    after.fields.push_back({60, "Short-lived field", false});
    after.accounts.insert(after.accounts.begin(), {950, "950", "New account"});
    after.accounts.push_back({960, "960", "Short-lived account"});
    after.calendar.years_in_use = 1;
    book.Grow(after, "");
    for (const Long account : {kMoney, Long{960}}) {
      if (!book.ReadRecord(account, Day(2003, 1, 1))) throw std::runtime_error("no such record");
      book.SetFieldValue(60, 1.5);
      book.WriteRecord();
    }
    after.fields.pop_back();
    after.accounts.pop_back();
    const engine::FieldDescription last = after.fields.back();
    after.fields.pop_back();
    after.fields.insert(after.fields.begin() + 1, last);
    book.Grow(after, "");
  }

  Text path_;
  ScriptedPlatform platform_;
  CallRecord record_;
  MemoryApp app_{record_};
};

}  // namespace
}  // namespace tallybook::testing

int main(int argc, char** argv) {
  if (argc != 3) {
    std::cerr << "make_sample_book BOOK.tbk FIGURES.txt\n";
    return 2;
  }
  try {
    tallybook::testing::SampleMaker maker(argv[1]);
    maker.Fill();
    maker.AddEntries();
    maker.List(argv[2]);
    return 0;
  } catch (const std::exception& error) {
    std::cerr << error.what() << '\n';
    return 1;
  }
}
