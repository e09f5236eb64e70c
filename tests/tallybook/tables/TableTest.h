// A fixture that writes tables as an export does: a date, an account code, a field number and a value in each row.
#pragma once

#include <array>
#include <cstdio>
#include <gtest/gtest.h>
#include <string>

#include "base/Dates.h"
#include "tallybook/tables/ExportLibrary.h"
#include "tests/support/Checkout.h"
#include "tests/support/FailsWith.h"
#include "tests/support/ScriptedPlatform.h"
#include "tests/support/TempFolder.h"

namespace tallybook::tables {

class TableTest : public ::testing::Test {
 protected:
  explicit TableTest(FigureStyle style = {}) : library_(style) {}

  // Opens a table of four columns, or of six where the format has no date column.
  void Create(const Text& code, const Text& path) {
    dated_ = library_.FormatFlags(code) != 0;
    ASSERT_TRUE(library_.CreateTable(path, code, "Table1", dated_ ? 4 : 6, table_)) << library_.LastError();
    AddColumns();
  }

  void AddColumns() {
    Integer position = 1;
    const auto add = [&](ColumnType type, Integer width, Integer decimals, const char* name) {
      ASSERT_TRUE(library_.AddColumn(table_, position++, type, width, decimals, name)) << library_.LastError();
    };
    if (dated_) {
      add(ColumnType::kDate, 8, 0, "Date");
    } else {
      add(ColumnType::kSmallNumber, 2, 0, "Month");
      add(ColumnType::kSmallNumber, 2, 0, "Day");
      add(ColumnType::kSmallNumber, 4, 0, "Year");
    }
    add(ColumnType::kText, 10, 0, "Account");
    add(ColumnType::kInteger, 5, 0, "Field");
    add(ColumnType::kDouble, 15, 3, "Value");
  }

  void CommitTitles() {
    Integer position = 1;
    for (const char* title : {"Date", "Account", "Field", "Value"})
      ASSERT_TRUE(library_.SetText(table_, position++, title)) << library_.LastError();
    Commit();
  }

  void SetDay(int year, int month, int day) {
    if (dated_) {
      ASSERT_TRUE(library_.SetDate(table_, 1, DateFromParts(year, month, day))) << library_.LastError();
      return;
    }
    ASSERT_TRUE(library_.SetByte(table_, 1, static_cast<Integer>(month)));
    ASSERT_TRUE(library_.SetByte(table_, 2, static_cast<Integer>(day)));
    ASSERT_TRUE(library_.SetByte(table_, 3, static_cast<Integer>(year)));
  }
  void SetAccount(const Text& code) {
    ASSERT_TRUE(library_.SetText(table_, dated_ ? 2 : 4, code)) << library_.LastError();
  }
  void SetValue(Integer field, Double value) {
    ASSERT_TRUE(library_.SetInteger(table_, dated_ ? 3 : 5, field)) << library_.LastError();
    ASSERT_TRUE(library_.SetDouble(table_, dated_ ? 4 : 6, value, 3)) << library_.LastError();
  }
  void Commit() { ASSERT_EQ(library_.CommitRow(table_), kRowCommitted) << library_.LastError(); }

  // Three rows: two of one date and account, whose cells are not set again, and one of another.
  void CommitThreeRows() {
    SetDay(2004, 2, 3);
    SetAccount("007");
    SetValue(1, 12.5);
    Commit();
    SetValue(12, -0.0004);
    Commit();
    SetDay(2005, 12, 31);
    SetAccount("Zür, \"X\"");
    SetValue(3, 1234567.8914);
    Commit();
  }

  void Close() { library_.CloseTable(table_); }

  // What an independent reader finds in a file of the folder.
  [[nodiscard]] std::string Read(const Text& kind, const Text& name) const {
    const std::string reader_script = testing::InCheckout("tests/tallybook/tables/read_table.py").string();
    const std::string command = SYSTEM_PYTHON " '" + reader_script + "' " + kind + " '" + folder_.Path(name) + "' 2>&1";
    std::FILE* const reader = ::popen(command.c_str(), "r");
    std::string found;
    std::array<char, 4096> part;
    for (std::size_t count = 0; (count = std::fread(part.data(), 1, part.size(), reader)) > 0;)
      found.append(part.data(), count);
    EXPECT_EQ(::pclose(reader), 0) << found;
    return found;
  }

  testing::ScriptedPlatform platform_;
  testing::TempFolder folder_;
  ExportLibrary library_;
  Long table_ = 0;
  bool dated_ = true;
};

}  // namespace tallybook::tables
