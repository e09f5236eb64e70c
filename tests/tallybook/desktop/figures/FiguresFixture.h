// What the tests of figures share: a shop's book of two years of days, a reader of it and a table over it.
#pragma once

#include <optional>

#include "platform/posix/PosixPlatform.h"
#include "tallybook/application/ReferenceApp.h"
#include "tallybook/desktop/figures/BookReader.h"
#include "tallybook/desktop/figures/FigureTable.h"
#include "tallybook/engine/Book.h"
#include "tests/tallybook/engine/BookFixture.h"

namespace tallybook::testing {

class FiguresFixture : public BookFixture {
 protected:
  FiguresFixture() { Create(Shop()); }

  // That of the engine's tests with some figures in it: account 101 sold 10 on January 1, 20 on January 2, and so on.
  static engine::BookDescription Shop() {
    engine::BookDescription shop = ShopDescription();
    for (int day = 1; day <= 31; ++day) shop.values.push_back({101, Day(2003, 1, day), 1, 10.0 * day});
    shop.values.push_back({205, Day(2003, 1, 5), 4, 7});
    shop.values.push_back({101, Day(2004, 12, 31), 9, 0.5});
    return shop;
  }

  desktop::BookReader& Reader() {
    if (!reader_) reader_.emplace(BookPath(), app);
    return *reader_;
  }
  desktop::FigureTable& Table() {
    if (!table_) table_.emplace(Reader());
    return *table_;
  }
  void Choose(desktop::FigureView view, Integer level, Integer stretch, Date date = Day(2003, 1, 1)) {
    desktop::FigureChoice choice = Table().Choice();
    choice.view = view;
    choice.level = level;
    choice.stretch = stretch;
    choice.date = date;
    Table().Choose(choice);
  }
  // Another program's change, committed.
  void Write(Long account, Date date, Integer field, Double value) {
    const auto book = Open();
    Put(*book, account, date, field, value);
    book->Close();
  }
  // Another program's: account 101 is taken away, and a field that has a figure comes first.
  void ChangeLists() {
    const auto book = Open();
    engine::BookDescription lists = book->Description();
    lists.accounts.erase(lists.accounts.begin());
    lists.fields.insert(lists.fields.begin(), {12, "Tips", false});
    book->Grow(lists, "lists");
    Put(*book, 205, Day(2003, 1, 5), 12, 77);
    book->Close();
  }
  Double Stored(Long account, Date date, Integer field) {
    const auto book = OpenToRead();
    return Get(*book, account, date, field);
  }

 private:
  std::optional<desktop::BookReader> reader_;
  std::optional<desktop::FigureTable> table_;
};

}  // namespace tallybook::testing
