#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <limits>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "tallybook/engine/BookDescription.h"
#include "tests/support/FailsWith.h"
#include "tests/tallybook/engine/BookFixture.h"

namespace tallybook::testing {
namespace {

using engine::BookDescription;
using engine::CalendarKind;
using engine::ParseBookDescription;
using engine::PrintBookDescription;

constexpr const char* kShop = R"({ "system_name": "North Shop", "type_name": "Sales", "data_level": "week",
  "calendar": { "kind": "custom", "first_date": "2003-01-01", "first_year": 2003, "years": 3,
                "years_in_use": 2, "week_ends_on": "monday",
                "periods": [ { "name": "Spring", "length": 180 }, { "name": "Autumn", "length": 185 } ] },
  "max_accounts": 500, "max_fields": 50,
  "accounts": [ { "number": 101, "code": "100", "description": "Front of shop" }, { "number": 7, "code": "A" } ],
  "fields": [ { "number": 1, "description": "Sales", "system": false },
              { "number": 2, "description": "Balance", "system": true } ],
  "values": [ { "account": 101, "date": "2003-01-01", "field": 1, "value": 12.5 } ] })";

constexpr const char* kLeast =
    R"({ "system_name": "", "calendar": { "kind": "months", "first_date": "2003-07-01", "years": 3 } })";

BookDescription Parse(const Text& text) {
  return ParseBookDescription(text, "shop.json");
}

// `kShop` with one piece of it put differently.
Text ShopWith(const Text& piece, const Text& other) {
  Text text = kShop;
  const std::size_t at = text.find(piece);
  EXPECT_NE(at, Text::npos) << piece;
  return text.replace(at, piece.size(), other);
}

TEST(BookDescription, ReadsEveryItem) {
  const BookDescription book = Parse(kShop);
  EXPECT_EQ(book.system_name, "North Shop");
  EXPECT_EQ(book.type_name, "Sales");
  EXPECT_EQ(book.data_level, kWeekLevel);
  EXPECT_EQ(book.calendar.kind, CalendarKind::kCustom);
  EXPECT_EQ(book.calendar.first_date, Day(2003, 1, 1));
  EXPECT_EQ(book.calendar.first_year, 2003);
  EXPECT_EQ(book.calendar.years, 3);
  EXPECT_EQ(book.calendar.years_in_use, 2);
  EXPECT_EQ(book.calendar.week_ends_on, 2);
  ASSERT_EQ(book.calendar.periods.size(), 2U);
  EXPECT_EQ(book.calendar.periods[1], (engine::PeriodDescription{"Autumn", 185}));
  EXPECT_EQ(book.max_accounts, 500);
  EXPECT_EQ(book.max_fields, 50);
  ASSERT_EQ(book.accounts.size(), 2U);
  EXPECT_EQ(book.accounts[0], (engine::AccountDescription{101, "100", "Front of shop"}));
  EXPECT_EQ(book.accounts[1], (engine::AccountDescription{7, "A", ""}));
  ASSERT_EQ(book.fields.size(), 2U);
  EXPECT_EQ(book.fields[1], (engine::FieldDescription{2, "Balance", true}));
  ASSERT_EQ(book.values.size(), 1U);
  EXPECT_EQ(book.values[0], (engine::ValueDescription{101, Day(2003, 1, 1), 1, 12.5}));
}

TEST(BookDescription, FillsInWhatMayBeLeftOut) {
  const BookDescription book = Parse(kLeast);
  EXPECT_EQ(book.type_name, "Tallybook");
  EXPECT_EQ(book.data_level, kDayLevel);
  EXPECT_EQ(book.calendar.first_year, 2003);
  EXPECT_EQ(book.calendar.years_in_use, 3);
  EXPECT_EQ(book.calendar.week_ends_on, 7);
  EXPECT_TRUE(book.calendar.periods.empty());
  EXPECT_EQ(book.max_accounts, 9999);
  EXPECT_EQ(book.max_fields, 999);
}

TEST(BookDescription, RaisesTheUsualMaximaToTheNumbersInUse) {
  Text text = kLeast;
  text.insert(2, R"("accounts": [ { "number": 12345, "code": "X" } ], "fields": [ { "number": 1000 } ], )");
  const BookDescription book = Parse(text);
  EXPECT_EQ(book.max_accounts, 12345);
  EXPECT_EQ(book.max_fields, 1000);
}

// What a book is to become, where this is what it is.
BookDescription Now() {
  BookDescription now = Parse(R"({ "system_name": "Shop", "type_name": "Sales", "data_level": "week",
      "calendar": { "kind": "custom", "first_date": "2003-01-01", "first_year": 7, "years": 3, "years_in_use": 2,
                    "week_ends_on": "monday", "periods": [ { "name": "One", "length": 50 } ] },
      "max_accounts": 500, "max_fields": 20,
      "accounts": [ { "number": 9, "code": "A", "description": "Till" }, { "number": 4, "code": "B" } ],
      "fields": [ { "number": 2, "description": "Sales", "system": true } ] })");
  now.values = {{9, Day(2003, 1, 1), 2, 5}};
  return now;
}

BookDescription Becomes(const Text& text) {
  return ParseBookDescription(text, "shop.json", Now());
}

TEST(BookDescription, LeavesAllButValuesAsItIsWhereNothingIsSaid) {
  BookDescription now = Now();
  now.values.clear();
  EXPECT_EQ(Becomes("{}"), now);
  EXPECT_EQ(Becomes(R"({ "calendar": {} })"), now);
  EXPECT_EQ(Becomes(R"({ "fields": [ { "number": 2 } ], "accounts": [ { "number": 9 }, { "number": 4 } ] })"), now);
}

TEST(BookDescription, TakesFromAListJustTheRowsThatAreSaid) {
  const BookDescription after = Becomes(
      R"({ "accounts": [ { "number": 4, "description": "Safe" }, { "number": 5, "code": "C" } ], "fields": [] })");
  EXPECT_EQ(after.accounts, (std::vector<engine::AccountDescription>{{4, "B", "Safe"}, {5, "C", ""}}));
  EXPECT_TRUE(after.fields.empty());
  EXPECT_EQ(after.calendar, Now().calendar);
}

TEST(BookDescription, LetsLimitsGrowToTheNumbersThatAreSaid) {
  EXPECT_EQ(Becomes(R"({ "accounts": [ { "number": 700, "code": "C" } ] })").max_accounts, 700);
  EXPECT_EQ(Becomes(R"({ "accounts": [ { "number": 7, "code": "C" } ] })").max_accounts, 500);
}

TEST(BookDescription, RefusesWhatABookCannotBecomeByItself) {
  EXPECT_THAT([] { Becomes(R"({ "accounts": [ { "number": 5 } ] })"); },
              FailsWith(FailureNumber::kInvalidArgument, "accounts[0].code is missing"));
  EXPECT_THAT([] { Becomes(R"({ "colour": 1 })"); }, FailsWith(FailureNumber::kInvalidArgument, "no such key"));
}

TEST(BookDescription, ComesBackFromWhatItPrints) {
  for (const char* text : {kShop, kLeast}) {
    const BookDescription book = Parse(text);
    EXPECT_EQ(Parse(PrintBookDescription(book)), book);
  }
  BookDescription odd = ShopDescription();
  odd.system_name = "A \"quoted\"\\ name\nof two lines, Grüße";
  odd.calendar.kind = CalendarKind::k445;
  odd.values = {{7, Day(2003, 5, 5), 4, 0.1 + 0.2}, {7, Day(2003, 5, 6), 4, -1e-300}, {101, Day(2004, 2, 29), 9, 5}};
  EXPECT_EQ(Parse(PrintBookDescription(odd)), odd);
}

TEST(BookDescription, PrintsValuesThatAreHandedOver) {
  std::ostringstream out;
  PrintBookDescription(Parse(kShop), out, [](const engine::ValueTaker& take) {
    take({101, Day(2003, 5, 5), 2, 1.5});
    take({7, Day(2003, 5, 5), 1, 2});
  });
  const BookDescription book = Parse(out.str());
  ASSERT_EQ(book.values.size(), 2U);
  EXPECT_EQ(book.values[0].value, 1.5);
  EXPECT_EQ(book.values[1].account, 7);
}

TEST(BookDescription, RefusesToPrintWhatJsonCannotHold) {
  BookDescription book = ShopDescription();
  book.values = {{101, Day(2003, 5, 5), 1, std::numeric_limits<Double>::infinity()}};
  EXPECT_THAT([&] { static_cast<void>(PrintBookDescription(book)); },
              FailsWith(FailureNumber::kInvalidArgument, "2003-05-05"));
}

TEST(BookDescription, SaysWhereATextIsNoJson) {
  EXPECT_THAT([] { static_cast<void>(Parse("{ \"system_name\": \n oops }")); },
              FailsWith(FailureNumber::kInvalidArgument, "line 2"));
}

struct Fault {
  const char* name;
  const char* piece;
  const char* instead;
  const char* place;  // the place and the value, as the message says them
};

class BookDescriptionFault : public ::testing::TestWithParam<Fault> {};

TEST_P(BookDescriptionFault, NamesSourcePlaceAndValue) {
  const Fault& fault = GetParam();
  const Text text = ShopWith(fault.piece, fault.instead);
  EXPECT_THAT([&] { static_cast<void>(Parse(text)); },
              FailsWith(FailureNumber::kInvalidArgument, Text("shop.json: ") + fault.place));
}

INSTANTIATE_TEST_SUITE_P(
    Faults, BookDescriptionFault,
    ::testing::Values(
        Fault{"MissingName", "\"system_name\": \"North Shop\",", "", "system_name is missing"},
        Fault{"NameIsNoText", "\"North Shop\"", "5", "system_name is 5; it must be a text"},
        Fault{"UnknownKey", "\"type_name\"", "\"typename\"", "typename is \"Sales\"; no such key"},
        Fault{"UnknownKeyInside", "\"system\": true", "\"sytem\": true", "fields[1].sytem is true; no such key"},
        Fault{"Level", "\"week\"", "\"month\"", "data_level is \"month\"; it must be \"day\", \"week\" or \"period\""},
        Fault{"LevelIsANumber", "\"week\"", "2", "data_level is 2;"},
        Fault{"CalendarIsMissing", "\"calendar\":", "\"calender\":", "calender is {"},
        Fault{"Kind", "\"custom\"", "\"lunar\"", "calendar.kind is \"lunar\";"},
        Fault{"FirstDate", "\"first_date\": \"2003-01-01\"", "\"first_date\": \"2003-02-30\"",
              "calendar.first_date is \"2003-02-30\"; it must be a date"},
        Fault{"Years", "\"years\": 3", "\"years\": 0", "calendar.years is 0; it must be a whole number from 1 to 200"},
        Fault{"YearsIsAFraction", "\"years\": 3", "\"years\": 2.5", "calendar.years is 2.5;"},
        Fault{"YearsInUse", "\"years_in_use\": 2", "\"years_in_use\": 4", "calendar.years_in_use is 4;"},
        Fault{"Weekday", "\"monday\"", "\"Monday\"", "calendar.week_ends_on is \"Monday\";"},
        Fault{"PeriodLength", "\"length\": 180", "\"length\": 0", "calendar.periods[0].length is 0;"},
        Fault{"PeriodCount", "\"custom\"", "\"months\"",
              "calendar.periods is a list of 2; this calendar has 12 periods"},
        Fault{"NoPeriods", "[ { \"name\": \"Spring\", \"length\": 180 }, { \"name\": \"Autumn\", \"length\": 185 } ]",
              "[]", "calendar.periods is a list of 0; a custom calendar has 1 to 366"},
        Fault{"AccountsAreNoList",
              "\"accounts\": [ { \"number\": 101, \"code\": \"100\", \"description\": \"Front of "
              "shop\" }, { \"number\": 7, \"code\": \"A\" } ]",
              "\"accounts\": {}", "accounts is {}; it must be a list"},
        Fault{"AccountIsNoObject", "{ \"number\": 7, \"code\": \"A\" }", "7", "accounts[1] is 7; it must be an object"},
        Fault{"AccountNumberAboveTheMaximum", "\"number\": 7", "\"number\": 501", "accounts[1].number is 501;"},
        Fault{"AccountNumberTooLarge", "\"number\": 7", "\"number\": 18446744073709551615",
              "accounts[1].number is 18446744073709551615;"},
        Fault{"AccountNumberTwice", "\"number\": 7", "\"number\": 101",
              "accounts[1].number is 101; an account above has this number"},
        Fault{"CodeTwice", "\"A\"", "\"100\"", "accounts[1].code is \"100\"; an account above has this code"},
        Fault{"CodeIsBlank", "\"A\"", "\"\"", "accounts[1].code is \"\";"},
        Fault{"CodeEndsInABlank", "\"A\"", "\"A \"", "accounts[1].code is \"A \";"},
        Fault{"CodeTooLong", "\"A\"", "\"ABCDEFGHIJK\"", "accounts[1].code is \"ABCDEFGHIJK\";"},
        Fault{"FieldNumberTwice", "\"number\": 2", "\"number\": 1", "fields[1].number is 1; a field above"},
        Fault{"FieldNumberAboveTheMaximum", "\"number\": 2", "\"number\": 51", "fields[1].number is 51;"},
        Fault{"SystemIsNoTruth", "\"system\": true", "\"system\": 1",
              "fields[1].system is 1; it must be true or false"},
        Fault{"ValueOfNoAccount", "\"account\": 101", "\"account\": 102", "values[0].account is 102; no account"},
        Fault{"ValueOfNoField", "\"field\": 1", "\"field\": 3", "values[0].field is 3; no field"},
        Fault{"ValueBeforeTheBook", "\"date\": \"2003-01-01\"", "\"date\": \"2002-12-31\"",
              "values[0].date is 2002-12-31;"},
        Fault{"ValueBehindTheBook", "\"date\": \"2003-01-01\"", "\"date\": \"2006-01-03\"",
              "values[0].date is 2006-01-03; the book holds 2003-01-01 to 2006-01-02"},
        Fault{"ValueIsAText", "\"value\": 12.5", "\"value\": \"12.5\"",
              "values[0].value is \"12.5\"; it must be a number"},
        Fault{"ValueTwiceOnARecord", "\"value\": 12.5 }",
              "\"value\": 12.5 }, { \"account\": 101, \"date\": \"2003-01-05\", \"field\": 1, \"value\": 3 }",
              "values[1] is account 101, field 1 of the record of 2003-01-06; values[0] is the same figure"}),
    [](const auto& fault) { return Text(fault.param.name); });

// Years of fifty years each: twenty of them end in 9999, and the dates of one more could not be written down.
TEST(BookDescription, RefusesACalendarThatGoesOnBehindTheYear9999) {
  BookDescription book = ShopDescription();
  book.calendar.kind = CalendarKind::kCustom;
  book.calendar.first_date = Day(9000, 1, 1);
  book.calendar.years = 21;
  book.calendar.periods.assign(5, {"Ten years", 3652});
  const Text printed = PrintBookDescription(book);
  EXPECT_THAT(
      [&] { static_cast<void>(Parse(printed)); },
      FailsWith(FailureNumber::kInvalidArgument, "calendar.years is 21; the last record would end behind 9999-12-31"));
  EXPECT_NO_THROW(engine::CheckBookDescription(book, "here")) << "a book that has it already is read";
  book.calendar.years = 20;
  EXPECT_NO_THROW(static_cast<void>(Parse(PrintBookDescription(book))));
}

TEST(BookDescription, CountsCharactersAndNotBytesInACode) {
  EXPECT_EQ(Parse(ShopWith("\"A\"", "\"ÄÖÜÄÖÜÄÖÜÄ\"")).accounts[1].code, "ÄÖÜÄÖÜÄÖÜÄ");
}

TEST(BookDescription, RefusesDescriptionsThatNoJsonCameFrom) {
  BookDescription book = ShopDescription();
  book.data_level = 4;
  EXPECT_THAT([&] { engine::CheckBookDescription(book, "here"); },
              FailsWith(FailureNumber::kInvalidArgument, "data_level is 4"));
  book = ShopDescription();
  book.calendar.first_date += 0.5;
  EXPECT_THAT([&] { engine::CheckBookDescription(book, "here"); },
              FailsWith(FailureNumber::kInvalidArgument, "first_date"));
  book = ShopDescription();
  book.values = {{101, Day(2003, 5, 5), 1, std::numeric_limits<Double>::quiet_NaN()}};
  EXPECT_THAT([&] { engine::CheckBookDescription(book, "here"); },
              FailsWith(FailureNumber::kInvalidArgument, "values[0].value"));
}

}  // namespace
}  // namespace tallybook::testing
