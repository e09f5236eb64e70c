#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "base/Dates.h"
#include "tallybook/desktop/window/BookDraft.h"
#include "tests/support/TempFolder.h"

namespace tallybook::desktop {
namespace {

using engine::AccountDescription;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

std::vector<Text> Names(const ReadFields& read) {
  std::vector<Text> names;
  for (const auto& field : read.fields) names.push_back(field.description);
  return names;
}

class BookDraftTest : public ::testing::Test {
 protected:
  BookDraftTest() {
    draft.name = "North Shop";
    draft.path = folder.Path("north-shop.tbk");
    draft.calendar.first_date = DateFromParts(2024, 1, 1);
    draft.calendar.years = 2;
    draft.account_lines = "100 Groceries\n110 Bakery\n";
    draft.field_lines = "Sales\nCost of goods\n";
  }

  testing::TempFolder folder;
  BookDraft draft;
};

TEST_F(BookDraftTest, ABooksFileEndsInItsOwnWayUnlessItIsThere) {
  folder.Write("shop.2024", "a book from before");
  EXPECT_EQ(BookFileFor(folder.Path("shop.tbk")), folder.Path("shop.tbk"));
  EXPECT_EQ(BookFileFor(folder.Path("shop.2024")), folder.Path("shop.2024"));
  EXPECT_EQ(BookFileFor(folder.Path("shop.2025")), folder.Path("shop.2025.tbk"));
  EXPECT_EQ(BookFileFor("/home/me/my.books/shop"), "/home/me/my.books/shop.tbk");
}

TEST_F(BookDraftTest, ReadsAccountsAsTheyAreTypedOrPasted) {
  const std::vector<AccountDescription> expected = {{1, "100", "Groceries"}, {2, "110", "Bakery and cafe"}};
  for (const char* text :
       {"100 Groceries\n110 Bakery and cafe", "100\tGroceries\r\n\r\n110\tBakery and cafe\r\n",
        "Code,Description\n100,Groceries\n110,\"Bakery and cafe\"\n", "100;Groceries\n110;Bakery and cafe"}) {
    const ReadAccounts read = ReadAccountLines(text);
    EXPECT_EQ(read.accounts, expected) << text;
    EXPECT_THAT(read.troubles, IsEmpty());
  }
}

TEST_F(BookDraftTest, KeepsSeparatorsThatStandInQuotes) {
  EXPECT_THAT(ReadAccountLines("100,\"Tea, coffee and \"\"more\"\"\"").accounts,
              ElementsAre(AccountDescription{1, "100", "Tea, coffee and \"more\""}));
}

TEST_F(BookDraftTest, TellsTheLinesThatAreNoAccounts) {
  EXPECT_THAT(ReadAccountLines("100 A\n,B\n100 C\n12345678901 D").troubles,
              ElementsAre("Line 2: the account has no code.", "Line 3: the code \"100\" stands in the list already.",
                          "Line 4: the code \"12345678901\" is longer than 10 characters."));
}

TEST_F(BookDraftTest, ReadsFieldsByTheirNames) {
  EXPECT_THAT(Names(ReadFieldLines("Sales\nCost of goods\n\n")), ElementsAre("Sales", "Cost of goods"));
  EXPECT_THAT(Names(ReadFieldLines("1,Sales\n2,Guests,\n")), ElementsAre("Sales", "Guests"));
  EXPECT_THAT(ReadFieldLines("Sales\nSales").troubles, ElementsAre("Line 2: \"Sales\" stands in the list already."));
}

TEST_F(BookDraftTest, NamesTheFileAfterTheBook) {
  EXPECT_EQ(PathFor("/home/me", "North Shop & Sons "), "/home/me/north-shop-sons.tbk");
  EXPECT_EQ(PathFor("/home/me", "Café"), "/home/me/café.tbk");
  EXPECT_EQ(PathFor("/home/me", "  "), "/home/me/book.tbk");
}

TEST_F(BookDraftTest, HasNoTroubleWhenItIsWhole) {
  EXPECT_EQ(TroubleWithName(draft), "");
  EXPECT_EQ(TroubleWithCalendar(draft), "");
  EXPECT_EQ(TroubleWithLists(draft), "");
  const engine::BookDescription book = DescriptionOf(draft);
  EXPECT_NO_THROW(engine::CheckNewBookDescription(book, "draft"));
  EXPECT_EQ(book.calendar.first_year, 2024);
  EXPECT_EQ(book.calendar.years_in_use, 2);
}

TEST_F(BookDraftTest, AsksForANameAndAFileThatIsNotThereYet) {
  draft.name = " ";
  EXPECT_EQ(TroubleWithName(draft), "Give the book a name.");
  draft.name = "North";
  draft.path = "";
  EXPECT_EQ(TroubleWithName(draft), "Choose a file for the book.");
  folder.Write("there.tbk", "");
  draft.path = folder.Path("there.tbk");
  EXPECT_EQ(TroubleWithName(draft), "There is a file of that name already; choose another one.");
  draft.path = folder.Path("none") + "/there.tbk";
  EXPECT_EQ(TroubleWithName(draft), "There is no such folder.");
  folder.Write("TBQDX1.gone", "of a book that is gone");
  draft.path = folder.Path("gone.tbk");
  EXPECT_NE(TroubleWithName(draft).find("TBQDX1.gone, which would belong to it"), Text::npos);
}

TEST_F(BookDraftTest, CutsACustomYearByTheLengthsGiven) {
  draft.calendar.kind = engine::CalendarKind::kCustom;
  EXPECT_EQ(TroubleWithCalendar(draft), "Give the length of each period in days: 28, 28, 35 ...");
  draft.custom_lengths = "100, 200; 65";
  EXPECT_EQ(TroubleWithCalendar(draft), "");
  ASSERT_EQ(CalendarOf(draft).periods.size(), 3U);
  EXPECT_EQ(CalendarOf(draft).periods[1].length, 200);
  draft.custom_lengths = "0, 99999";
  EXPECT_NE(TroubleWithCalendar(draft), "");
}

TEST_F(BookDraftTest, NeedsAnAccountAndAField) {
  draft.account_lines = "";
  EXPECT_THAT(TroubleWithLists(draft), HasSubstr("A book needs an account at least"));
  draft.account_lines = "100 A";
  draft.field_lines = "\n";
  EXPECT_THAT(TroubleWithLists(draft), HasSubstr("A book needs a field at least"));
}

TEST(BookDraft, ReadsFurtherAccountsWithAndWithoutNumbers) {
  const std::vector<engine::AccountDescription> there = {{101, "100", "Front"}};
  const ReadAccounts read = ReadFurtherAccounts("Number;Code;Description\n42;4200;Kiosk\n4210;Car park\n4220\n", there);
  EXPECT_TRUE(read.troubles.empty());
  ASSERT_EQ(read.accounts.size(), 3U);
  EXPECT_EQ(read.accounts[0], (engine::AccountDescription{42, "4200", "Kiosk"}));
  EXPECT_EQ(read.accounts[1], (engine::AccountDescription{0, "4210", "Car park"}));
  EXPECT_EQ(read.accounts[2], (engine::AccountDescription{0, "4220", ""}));
}

TEST(BookDraft, NamesTheLineOfAFurtherAccountThatCannotBe) {
  const std::vector<engine::AccountDescription> there = {{101, "100", "Front"}};
  const ReadAccounts read = ReadFurtherAccounts("100;Again\n101;4200;Kiosk\nx;4210;Car park\n4220\n4220\n", there);
  EXPECT_THAT(read.troubles, ::testing::ElementsAre("Line 1: the code \"100\" stands in the list already.",
                                                    "Line 2: the number 101 stands in the list already.",
                                                    "Line 3: \"x\" is no number of an account.",
                                                    "Line 5: the code \"4220\" stands in the list already."));
}

}  // namespace
}  // namespace tallybook::desktop
