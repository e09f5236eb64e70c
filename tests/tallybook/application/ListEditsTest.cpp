#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tallybook/application/ListEdits.h"
#include "tests/support/FailsWith.h"

namespace tallybook::testing {
namespace {

using application::BeyondExchangeFiles;
using application::WithAccount;
using application::WithAccountMoved;
using application::WithAccounts;
using application::WithMoreYears;
using application::WithYearsInUse;
using engine::BookDescription;
using engine::StoredDescription;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

BookDescription Office() {
  BookDescription book;
  book.calendar.first_date = 37622;  // 2003-01-01
  book.calendar.first_year = 2003;
  book.calendar.years = book.calendar.years_in_use = 2;
  book.accounts = {{10, "A", ""}, {20, "B", ""}, {30, "C", ""}};
  book.fields = {{1, "Sales", false}};
  return book;
}

StoredDescription Stored() {
  constexpr std::size_t kRows = 100;
  return engine::WithFirstSlots(Office(), kRows);
}

std::vector<Long> Numbers(const BookDescription& book) {
  std::vector<Long> numbers;
  for (const auto& account : book.accounts) numbers.push_back(account.number);
  return numbers;
}

TEST(ListEdits, AddAtTheEndWithAFreeNumberUnlessToldOtherwise) {
  EXPECT_THAT(Numbers(WithAccount(Stored(), {0, "D", ""}, std::nullopt)), ElementsAre(10, 20, 30, 31));
  EXPECT_THAT(Numbers(WithAccount(Stored(), {7, "D", ""}, 2)), ElementsAre(10, 7, 20, 30));
}

TEST(ListEdits, AddSeveralAccountsOneBehindTheOther) {
  EXPECT_THAT(Numbers(WithAccounts(Stored(), {{0, "D", ""}, {7, "E", ""}, {0, "F", ""}}, 2)),
              ElementsAre(10, 31, 7, 32, 20, 30));
  StoredDescription full = Stored();
  full.description.max_accounts = 31;
  EXPECT_THAT(Numbers(WithAccounts(full, {{0, "D", ""}, {0, "E", ""}, {0, "F", ""}}, std::nullopt)),
              ElementsAre(10, 20, 30, 31, 1, 2));
  full.description.max_accounts = 3;
  full.description.accounts = {{1, "A", ""}, {2, "B", ""}};
  EXPECT_THAT(
      [&] {
        (void)WithAccounts(full, {{0, "D", ""}, {0, "E", ""}}, std::nullopt);
      },
      FailsWith(FailureNumber::kInvalidArgument, "no number is free for another account"));
}

TEST(ListEdits, MoveARowToThePositionThatItIsToHave) {
  EXPECT_THAT(Numbers(WithAccountMoved(Office(), 10, 3)), ElementsAre(20, 30, 10));
  EXPECT_THAT(Numbers(WithAccountMoved(Office(), 30, 1)), ElementsAre(30, 10, 20));
  EXPECT_THAT(Numbers(WithAccountMoved(Office(), 20, 2)), ElementsAre(10, 20, 30));
}

TEST(ListEdits, RefuseAPositionThatTheListDoesNotReach) {
  for (const Long position : {-1, 0, 4}) {
    EXPECT_THAT([&] { (void)WithAccountMoved(Office(), 10, position); },
                FailsWith(FailureNumber::kInvalidArgument, "there are positions 1 to 3"));
  }
  EXPECT_THAT(
      [] {
        (void)WithAccount(Stored(), {0, "D", ""}, 5);
      },
      FailsWith(FailureNumber::kInvalidArgument, "there are positions 1 to 4"));
}

TEST(ListEdits, RefuseAnAccountWhereNoNumberIsFree) {
  StoredDescription stored = Stored();
  stored.description.max_accounts = 3;
  stored.description.accounts = {{1, "A", ""}, {3, "C", ""}};
  stored.retired_accounts = {2};
  EXPECT_THAT(
      [&] {
        (void)WithAccount(stored, {0, "D", ""}, std::nullopt);
      },
      FailsWith(FailureNumber::kInvalidArgument, "no number is free for another account"));
}

TEST(ListEdits, KeepYearsWithinWhatABookCanHave) {
  EXPECT_EQ(WithMoreYears(Office(), 3).calendar.years, 5);
  EXPECT_EQ(WithMoreYears(Office(), 3).calendar.years_in_use, 2);
  EXPECT_THAT([] { (void)WithMoreYears(Office(), 0); }, FailsWith(FailureNumber::kInvalidArgument, "by 1 to 198"));
  EXPECT_THAT([] { (void)WithMoreYears(Office(), 199); }, FailsWith(FailureNumber::kInvalidArgument, "not by 199"));
  EXPECT_THAT([] { (void)WithYearsInUse(Office(), 3); },
              FailsWith(FailureNumber::kInvalidArgument, "3 cannot be in use"));
}

TEST(ListEdits, TellWhatHasNoRoomInAnExchangeFile) {
  BookDescription book = Office();
  book.calendar.years = 9;
  EXPECT_THAT(BeyondExchangeFiles(book), IsEmpty());
  book.calendar.years = 10;
  book.calendar.kind = engine::CalendarKind::kCustom;
  book.calendar.periods.assign(27, {"", 10});
  EXPECT_THAT(BeyondExchangeFiles(book), ElementsAre("10 years; an exchange file holds 9 at most",
                                                     "27 periods a year; an exchange file holds 26 at most"));
  book = Office();
  book.accounts.assign(9999, {1, "A", ""});
  book.fields.assign(9999, {1, "", false});
  EXPECT_THAT(BeyondExchangeFiles(book), IsEmpty());
  book.accounts.push_back({2, "B", ""});
  book.fields.push_back({2, "", false});
  EXPECT_THAT(BeyondExchangeFiles(book), ElementsAre("10,000 accounts; an exchange file holds 9,999 at most",
                                                     "10,000 fields; an exchange file holds 9,999 at most"));
}

}  // namespace
}  // namespace tallybook::testing
