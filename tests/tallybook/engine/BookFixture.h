// What the tests of the engine share: a temporary folder, a platform, an application, and books in it.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <map>
#include <memory>
#include <sqlite3.h>
#include <tuple>

#include "base/Dates.h"
#include "tallybook/engine/Book.h"
#include "tests/support/CallRecord.h"
#include "tests/support/FailsWith.h"
#include "tests/support/MemoryHost.h"
#include "tests/support/ScriptedPlatform.h"
#include "tests/support/TempFolder.h"

namespace tallybook::testing {

// Non-zero figures by account number, level date and field number.
using FigureMap = std::map<std::tuple<Long, Date, Integer>, Double>;

inline Date Day(int year, int month, int day) {
  return DateFromParts(year, month, day);
}

// Two years of days from 2003-01-01; accounts 101, 205 and 7 in this order; fields 1, 4 and 9, the last kept by the
// book.
inline engine::BookDescription ShopDescription() {
  engine::BookDescription description;
  description.system_name = "North Shop";
  description.type_name = "Sales";
  description.calendar.first_date = Day(2003, 1, 1);
  description.calendar.first_year = 2003;
  description.calendar.years = 2;
  description.calendar.years_in_use = 2;
  description.accounts = {{101, "100", "Front of shop"}, {205, "200", "Café"}, {7, "A", "Store"}};
  description.fields = {{1, "Sales", false}, {4, "Guests", false}, {9, "Balance", true}};
  return description;
}

inline FigureMap FiguresOf(engine::Book& book, const engine::FigureQuery& query = {}) {
  FigureMap figures;
  book.VisitFigures(query, [&](const engine::Figure& figure) {
    figures[{figure.account_number, figure.date, figure.field_number}] = figure.value;
    return true;
  });
  return figures;
}

inline void Put(engine::Book& book, Long account, Date date, Integer field, Double value) {
  ASSERT_TRUE(book.ReadRecord(account, date));
  book.SetFieldValue(field, value);
  ASSERT_TRUE(book.WriteRecord());
}

inline Double Get(engine::Book& book, Long account, Date date, Integer field) {
  EXPECT_TRUE(book.ReadRecord(account, date));
  return book.FieldValue(field);
}

// Runs it on a book's file, past the engine.
inline void MeddleWith(const Text& path, const Text& sql) {
  sqlite3* handle = nullptr;
  ASSERT_EQ(sqlite3_open(path.c_str(), &handle), SQLITE_OK);
  ASSERT_EQ(sqlite3_exec(handle, sql.c_str(), nullptr, nullptr, nullptr), SQLITE_OK) << sqlite3_errmsg(handle);
  sqlite3_close(handle);
}

class BookFixture : public ::testing::Test {
 protected:
  [[nodiscard]] Text BookPath() const { return folder.Path("North.tbk"); }

  void Create(const engine::BookDescription& description) { engine::Book::Create(BookPath(), description); }
  std::unique_ptr<engine::Book> Open(const engine::BookOptions& options = {}) {
    return engine::Book::Open(BookPath(), app, options);
  }
  std::unique_ptr<engine::Book> CreateAndOpen(const engine::BookDescription& description = ShopDescription()) {
    Create(description);
    return Open();
  }
  std::unique_ptr<engine::Book> OpenToRead() {
    engine::BookOptions options;
    options.read_only = true;
    return Open(options);
  }

  // Runs SQL on the book's file past the engine; the book must not be open.
  void Meddle(const Text& sql) { MeddleWith(BookPath(), sql); }

  ScriptedPlatform platform;
  TempFolder folder;
  CallRecord record;
  MemoryApp app{record};
};

}  // namespace tallybook::testing
