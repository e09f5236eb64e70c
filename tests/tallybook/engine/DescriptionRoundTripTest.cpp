// A book's description goes back in: whatever the calendar, the level and the texts, the book that is made from what a
// book tells of itself has the same description and the same figures.
#include <algorithm>
#include <cmath>
#include <filesystem>
#include <gtest/gtest.h>
#include <map>
#include <rapidcheck.h>
#include <set>
#include <sstream>
#include <vector>

#include "tallybook/engine/Calendar.h"
#include "tallybook/engine/Journal.h"
#include "tests/tallybook/engine/BookFixture.h"

namespace tallybook::testing {
namespace {

using engine::Book;
using engine::BookDescription;
using engine::Calendar;
using engine::CalendarDescription;
using engine::CalendarKind;
using engine::PeriodDescription;

const std::vector<CalendarKind> kKinds = {CalendarKind::kMonths, CalendarKind::kWeeks, CalendarKind::k445,
                                          CalendarKind::k13x4, CalendarKind::kCustom};

// --- What descriptions can hold --------------------------------------------------------------------------------------

void AppendUtf8(std::uint32_t character, Text& text) {
  const auto unit = [&](std::uint32_t bits) { text += static_cast<char>(bits); };
  if (character < 0x80) return unit(character);
  if (character < 0x800) {
    unit(0xC0 | character >> 6);
  } else if (character < 0x10000) {
    unit(0xE0 | character >> 12);
    unit(0x80 | (character >> 6 & 0x3F));
  } else {
    unit(0xF0 | character >> 18);
    unit(0x80 | (character >> 12 & 0x3F));
    unit(0x80 | (character >> 6 & 0x3F));
  }
  unit(0x80 | (character & 0x3F));
}

// Control characters, what has a meaning in JSON, and any character that UTF-8 can hold.
rc::Gen<Text> AnyText(std::size_t longest) {
  const auto character =
      rc::gen::oneOf(rc::gen::inRange<std::uint32_t>(0, 0x20),
                     rc::gen::element<std::uint32_t>('"', '\\', '/', 0x7F, 0x85, 0x2028, 0xFFFD),
                     rc::gen::inRange<std::uint32_t>(0x20, 0x7F), rc::gen::inRange<std::uint32_t>(0x80, 0xD800),
                     rc::gen::inRange<std::uint32_t>(0xE000, 0x110000));
  return rc::gen::map(rc::gen::container<std::vector<std::uint32_t>>(character),
                      [longest](const std::vector<std::uint32_t>& characters) {
                        Text text;
                        for (std::size_t i = 0; i < std::min(longest, characters.size()); ++i)
                          AppendUtf8(characters[i], text);
                        return text;
                      });
}

CalendarDescription AnyCalendar() {
  CalendarDescription calendar;
  calendar.kind = *rc::gen::elementOf(kKinds);
  calendar.first_date =
      *rc::gen::oneOf(rc::gen::inRange(static_cast<int>(Day(1990, 1, 1)), static_cast<int>(Day(2030, 1, 1))),
                      rc::gen::inRange(static_cast<int>(Day(1901, 1, 1)), static_cast<int>(Day(9001, 1, 1))));
  calendar.first_year = *rc::gen::inRange<Integer>(1, 10000);
  calendar.years = *rc::gen::inRange<Integer>(1, 4);
  calendar.years_in_use = *rc::gen::inRange<Integer>(1, static_cast<Integer>(calendar.years + 1));
  calendar.week_ends_on = *rc::gen::inRange<Integer>(1, 8);
  const bool custom = calendar.kind == CalendarKind::kCustom;
  if (!custom && *rc::gen::arbitrary<bool>()) return calendar;
  const bool four_weeks = calendar.kind == CalendarKind::kWeeks || calendar.kind == CalendarKind::k13x4;
  const int count = custom ? *rc::gen::inRange(1, 6) : four_weeks ? 13 : 12;
  for (int i = 0; i < count; ++i)
    calendar.periods.push_back({*AnyText(20), *rc::gen::inRange<Integer>(custom ? 1 : 0, 200)});
  return calendar;
}

// The date of a record: often the first or the last one.
Date AnyRecordDate(const Calendar& calendar) {
  const int first = static_cast<int>(calendar.FirstDate());
  const int last = static_cast<int>(calendar.LastDate());
  const int day = *rc::gen::oneOf(rc::gen::element(first, last), rc::gen::inRange(first, last + 1));
  return calendar.UnitOf(day, kOwnLevel).last;
}

Double AnyFigure() {
  return *rc::gen::suchThat(rc::gen::oneOf(rc::gen::arbitrary<Double>(),
                                           rc::gen::element(5e-324, -1.7976931348623157e308, 0.1 + 0.2, 1e22, -1e-7)),
                            [](Double value) { return std::isfinite(value) && value != 0; });
}

BookDescription AnyDescription() {
  BookDescription book;
  book.system_name = *AnyText(60);
  book.type_name = *AnyText(60);
  book.data_level = *rc::gen::element(kDayLevel, kWeekLevel, kPeriodLevel);
  book.calendar = AnyCalendar();
  std::set<Text> codes;
  for (const Long number :
       *rc::gen::unique<std::vector<Long>>(rc::gen::inRange<Long>(1, engine::kMaxAccountNumber + 1))) {
    const Text code = *rc::gen::suchThat(AnyText(engine::kCodeWidth), [&](const Text& text) {
      return !text.empty() && text.back() != ' ' && !codes.contains(text);
    });
    codes.insert(code);
    book.accounts.push_back({number, code, *AnyText(40)});
    book.max_accounts = std::max(book.max_accounts, number);
  }
  for (const Integer number :
       *rc::gen::unique<std::vector<Integer>>(rc::gen::inRange<Integer>(1, engine::kMaxListLength))) {
    book.fields.push_back({number, *AnyText(40), *rc::gen::arbitrary<bool>()});
    book.max_fields = std::max<Long>(book.max_fields, number);
  }
  return book;
}

// Figures for the book, by account number, record date and field number.
FigureMap AnyFigures(const BookDescription& book) {
  FigureMap figures;
  if (book.accounts.empty() || book.fields.empty()) return figures;
  const Calendar calendar(book.calendar, book.data_level);
  const int count = *rc::gen::inRange(1, 8);
  for (int i = 0; i < count; ++i) {
    const Long account = (*rc::gen::elementOf(book.accounts)).number;
    const Integer field = (*rc::gen::elementOf(book.fields)).number;
    figures[{account, AnyRecordDate(calendar), field}] = AnyFigure();
  }
  return figures;
}

std::vector<engine::ValueDescription> AsValues(const FigureMap& figures) {
  std::vector<engine::ValueDescription> values;
  for (const auto& [place, value] : figures)
    values.push_back({std::get<0>(place), std::get<1>(place), std::get<2>(place), value});
  return values;
}

// --- The tests -------------------------------------------------------------------------------------------------------

class DescriptionRoundTripTest : public BookFixture {
 protected:
  std::unique_ptr<Book> MakeBook(const BookDescription& description) {
    for (const char* ending : {"", "-wal", "-shm"}) std::filesystem::remove(BookPath() + ending);
    return CreateAndOpen(description);
  }
};

Text Told(Book& book) {
  std::ostringstream out;
  PrintBookDescription(book.Description(), out, book.Values());
  return out.str();
}

FigureMap OnDate(const FigureMap& figures, Date date) {
  FigureMap found;
  for (const auto& figure : figures) {
    if (std::get<1>(figure.first) == date) found.insert(figure);
  }
  return found;
}

TEST_F(DescriptionRoundTripTest, ABookMadeFromWhatABookTellsIsTheSameAndFindsEachRecordUnderItsDate) {
  const bool holds = rc::check("a description goes back in", [&] {
    BookDescription description = AnyDescription();
    const FigureMap figures = AnyFigures(description);
    description.values = AsValues(figures);
    const Text told = Told(*MakeBook(description));
    const auto again = MakeBook(engine::ParseBookDescription(told, "told"));
    description.values.clear();
    RC_ASSERT(again->Description() == description);
    RC_ASSERT(FiguresOf(*again) == figures);
    RC_ASSERT(Told(*again) == told);
    for (const auto& [place, value] : figures) {
      const Date date = std::get<1>(place);
      RC_ASSERT(FiguresOf(*again, {.first = date, .last = date, .accounts = {}, .fields = {}}) ==
                OnDate(figures, date));
    }
  });
  EXPECT_TRUE(holds);
}

// --- A book that becomes what a description says
// -----------------------------------------------------------------------

// What may follow `book`: rows of it in any order, some of them changed or gone, others besides, and more years.
BookDescription AnyGrowthOf(const BookDescription& book) {
  BookDescription other = AnyDescription();
  const auto mix = [](auto& rows, const auto& own, auto change) {
    std::set<Long> numbers;
    for (const auto& row : own) numbers.insert(row.number);
    std::erase_if(rows, [&](const auto& row) { return numbers.contains(row.number); });
    for (const auto& row : own) {
      if (*rc::gen::inRange(0, 4) == 0) continue;
      const auto place = *rc::gen::inRange<std::ptrdiff_t>(0, static_cast<std::ptrdiff_t>(rows.size()) + 1);
      const auto added = rows.insert(rows.begin() + place, row);
      if (*rc::gen::inRange(0, 3) == 0) change(*added);
    }
  };
  mix(other.fields, book.fields, [](engine::FieldDescription& row) { row.system = !row.system; });
  mix(other.accounts, book.accounts, [](engine::AccountDescription& row) { row.description += "x"; });
  std::set<Text> codes;
  std::erase_if(other.accounts, [&](const auto& row) { return !codes.insert(row.code).second; });
  other.data_level = book.data_level;
  other.calendar = book.calendar;
  other.calendar.years = static_cast<Integer>(book.calendar.years + *rc::gen::inRange<Integer>(0, 3));
  other.calendar.years_in_use = *rc::gen::inRange<Integer>(1, static_cast<Integer>(other.calendar.years + 1));
  other.max_accounts = std::max(other.max_accounts, book.max_accounts);
  other.max_fields = std::max(other.max_fields, book.max_fields);
  return other;
}

// Figures that stay where lists become those of `after`, with others that are set.
FigureMap Set(const FigureMap& figures, const BookDescription& after, const FigureMap& others) {
  const auto has = [](const auto& rows, Long number) {
    return std::any_of(rows.begin(), rows.end(), [&](const auto& row) { return row.number == number; });
  };
  FigureMap set = others;
  for (const auto& [place, value] : figures) {
    if (has(after.accounts, std::get<0>(place)) && has(after.fields, std::get<2>(place))) set.emplace(place, value);
  }
  return set;
}

BookDescription Read(const Text& told, const Book& now) {
  return engine::ParseBookDescription(told, "told", now.Description());
}

TEST_F(DescriptionRoundTripTest, ABookThatIsToBecomeWhatItTellsIsLeftAlone) {
  EXPECT_TRUE(rc::check([&] {
    BookDescription description = AnyDescription();
    description.values = AsValues(AnyFigures(description));
    const auto book = MakeBook(description);
    const std::string bytes = folder.Read("North.tbk");
    book->Grow(Read(Told(*book), *book), "apply");
    book->Close();
    RC_ASSERT(folder.Read("North.tbk") == bytes);
  }));
}

TEST_F(DescriptionRoundTripTest, ABookBecomesWhatAnotherTellsAndOneUndoTakesAllOfItBack) {
  EXPECT_TRUE(rc::check([&] {
    BookDescription before = AnyDescription();
    const FigureMap figures = AnyFigures(before);
    before.values = AsValues(figures);
    BookDescription after = AnyGrowthOf(before);
    const FigureMap others = AnyFigures(after);
    after.values = AsValues(others);
    const auto book = MakeBook(before);
    const BookDescription first = book->Description();
    book->Grow(Read(engine::PrintBookDescription(after), *book), "apply");
    after.values.clear();
    RC_ASSERT(book->Description() == after);
    RC_ASSERT(FiguresOf(*book) == Set(figures, after, others));
    if (engine::Journal(*book).Entries().empty()) return;
    engine::Journal(*book).UndoNewest();
    RC_ASSERT(book->Description() == first);
    RC_ASSERT(FiguresOf(*book) == figures);
    RC_ASSERT_THROWS_AS(engine::Journal(*book).UndoNewest(), Failure);
  }));
}

TEST_F(DescriptionRoundTripTest, WhatABookCannotBecomeLeavesItsFileAsItWas) {
  EXPECT_TRUE(rc::check([&] {
    BookDescription before = AnyDescription();
    before.calendar.first_date = Day(2003, 3, 5);
    before.calendar.years = 2;
    before.calendar.years_in_use = 1;
    before.values = AsValues(AnyFigures(before));
    const auto book = MakeBook(before);
    BookDescription after = AnyGrowthOf(before);
    switch (*rc::gen::inRange(0, 6)) {
      case 0:
        after.data_level = static_cast<Integer>(after.data_level % 3 + 1);
        break;
      case 1:
        after.calendar.first_date += 1;
        break;
      case 2:
        after.calendar.years = 1;
        after.calendar.years_in_use = 1;
        break;
      case 3:
        after.calendar.first_year = static_cast<Integer>(after.calendar.first_year % 9000 + 1);
        break;
      case 4:
        after.accounts.push_back({1, "a code of many characters", ""});
        break;
      default:
        after.values = {{engine::kMaxAccountNumber + 1, Day(2003, 3, 5), 1, 1}};
    }
    const std::string bytes = folder.Read("North.tbk");
    RC_ASSERT_THROWS_AS(book->Grow(after, "apply"), Failure);
    book->Close();
    RC_ASSERT(folder.Read("North.tbk") == bytes);
  }));
}

// Every kind of calendar, level and end of the week, and first dates over more than a leap year: the last record of
// each book, which can end behind the last date.
TEST_F(DescriptionRoundTripTest, EveryLastRecordIsTakenUnderItsDate) {
  for (const CalendarKind kind : kKinds) {
    for (const Integer level : {kDayLevel, kWeekLevel, kPeriodLevel}) {
      for (Integer week_ends_on = 1; week_ends_on <= 7; ++week_ends_on) {
        for (Date first_date = Day(2003, 12, 20); first_date < Day(2005, 1, 10); first_date += 1) {
          BookDescription book = ShopDescription();
          book.data_level = level;
          book.calendar = {.kind = kind,
                           .first_date = first_date,
                           .first_year = 2004,
                           .years = 1,
                           .years_in_use = 1,
                           .week_ends_on = week_ends_on,
                           .periods = {}};
          if (kind == CalendarKind::kCustom) book.calendar.periods = {{"A", 100}, {"B", 33}};
          const Calendar calendar(book.calendar, level);
          const Date last_record = calendar.UnitOf(calendar.LastDate(), kOwnLevel).last;
          book.values = {{101, calendar.FirstDate(), 1, 1}, {205, last_record, 1, 2}};
          ASSERT_NO_THROW(engine::CheckBookDescription(book, "here"))
              << engine::CalendarKindName(kind) << " level " << level << " week end " << week_ends_on << " from "
              << DateText(first_date);
          book.values = {{205, last_record + 1, 1, 2}};
          ASSERT_THROW(engine::CheckBookDescription(book, "here"), Failure);
        }
      }
    }
  }
}

}  // namespace
}  // namespace tallybook::testing
