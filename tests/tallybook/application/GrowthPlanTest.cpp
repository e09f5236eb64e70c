// What a change of a book's lists and years will do, and its words.
#include "tallybook/application/GrowthPlan.h"
#include "tallybook/application/ListEdits.h"
#include "tests/tallybook/engine/BookFixture.h"

namespace tallybook::application {
namespace {

using engine::BookDescription;
using testing::Day;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using testing::ShopDescription;

class GrowthPlanTest : public testing::BookFixture {
 protected:
  GrowthPlan Plan(const BookDescription& after) { return PlanGrowth(*book_, after); }
  [[nodiscard]] Text Ran(const BookDescription& after) const {
    return WhatRan(engine::FindDifference(book_->Description(), after));
  }
  std::vector<Text> Rows(const BookDescription& after) {
    std::vector<Text> lines;
    for (const GrowthRow& row : RowsOf(Plan(after))) {
      lines.push_back(row.change + "|" + row.what + "|" + row.number + "|" + row.name + "|" + row.words);
    }
    return lines;
  }
  static BookDescription Shop() {
    BookDescription shop = ShopDescription();
    shop.values = {{101, Day(2003, 1, 5), 1, 2.5}, {101, Day(2003, 1, 6), 4, 7}, {205, Day(2003, 1, 6), 4, 8}};
    return shop;
  }
  static BookDescription Lists() { return ShopDescription(); }

  std::unique_ptr<engine::Book> book_ = CreateAndOpen(Shop());
};

TEST_F(GrowthPlanTest, FiguresOfWhatIsRemovedAreCounted) {
  BookDescription after = WithoutField(WithoutAccount(Lists(), 101), 4);
  const GrowthPlan plan = Plan(after);
  EXPECT_EQ(LostWords(plan.lost), "account 100 has 2 figures, field 4 has 2 figures");
  EXPECT_EQ(plan.FiguresOf(true, 4), 2);
  EXPECT_EQ(plan.FiguresOf(false, 7), 0);
  EXPECT_THAT(Rows(after), ElementsAre("remove|account|101|100|2 figures", "remove|field|4|Guests|2 figures"));
}

TEST_F(GrowthPlanTest, AnAccountWithoutFiguresIsNoLoss) {
  EXPECT_THAT(Plan(WithoutAccount(Lists(), 7)).lost, IsEmpty());
  EXPECT_EQ(LostWords({}), "");
}

TEST_F(GrowthPlanTest, EachChangeIsARowInWords) {
  BookDescription after = WithAccountEdited(Lists(), 101, "110", "Shop");
  after = WithFieldMoved(WithFieldEdited(after, 9, std::nullopt, false), 9, 1);
  after = WithMoreYears(after, 1);
  EXPECT_THAT(Rows(after), ElementsAre("change|book||calendar.years|2 becomes 3",
                                       "change|account|101|100|code 100 becomes 110, description \"Front of shop\" "
                                       "becomes \"Shop\"",
                                       "change|field|9|Balance|no longer kept by the book",
                                       "move|field|9|Balance|position 3 becomes 1"));
}

TEST_F(GrowthPlanTest, ASingleChangeBearsTheNameOfItsCommand) {
  EXPECT_EQ(Ran(Lists()), "");
  EXPECT_EQ(Ran(WithAccount(book_->Stored(), {0, "300", ""}, 1)), "account add 300");
  EXPECT_EQ(Ran(WithAccountEdited(Lists(), 101, "110", std::nullopt)), "account edit 100");
  EXPECT_EQ(Ran(WithAccountMoved(Lists(), 7, 1)), "account move A 1");
  EXPECT_EQ(Ran(WithoutAccount(Lists(), 205)), "account remove 200");
  EXPECT_EQ(Ran(WithField(book_->Stored(), {0, "Covers", false}, std::nullopt)), "field add Covers");
  EXPECT_EQ(Ran(WithFieldEdited(Lists(), 4, "Heads", std::nullopt)), "field edit 4");
  EXPECT_EQ(Ran(WithFieldMoved(Lists(), 9, 1)), "field move 9 1");
  EXPECT_EQ(Ran(WithoutField(Lists(), 9)), "field remove 9");
  EXPECT_EQ(Ran(WithMoreYears(Lists(), 3)), "calendar extend --years 3");
  EXPECT_EQ(Ran(WithYearsInUse(Lists(), 1)), "calendar use --years 1");
}

TEST_F(GrowthPlanTest, SeveralChangesAreCounted) {
  BookDescription after = WithoutAccount(Lists(), 205);
  after.accounts.push_back({300, "300", ""});
  after.accounts.push_back({301, "301", ""});
  after = WithYearsInUse(WithMoreYears(WithFieldMoved(after, 9, 1), 1), 3);
  EXPECT_EQ(Ran(after), "lists: 2 accounts added, 1 account removed, 1 field moved, 3 years held, 3 years in use");
}

TEST_F(GrowthPlanTest, WhatGoesBeyondAnExchangeFileIsToldOnce) {
  const BookDescription ten = WithMoreYears(Lists(), 8);
  ASSERT_EQ(Plan(ten).beyond_exchange_files.size(), 1U);
  EXPECT_EQ(
      BeyondWords(Plan(ten).beyond_exchange_files.front()),
      "the book cannot be exported as an exchange file any more: it has 10 years; an exchange file holds 9 at most");
  book_->Grow(ten, "more");
  EXPECT_THAT(Plan(WithMoreYears(book_->Description(), 1)).beyond_exchange_files, IsEmpty()) << "it could not before";
}

TEST(GrowthPlan, TellsADefinitionInWords) {
  const DefinitionUse use = {1, "Shop", "", {"account 100 is 110 now", "field 4 is removed"}, true};
  EXPECT_EQ(TitleOf(use), "exchange definition 1 (Shop)");
  EXPECT_EQ(NamesOf(use), "account 100 is 110 now, field 4 is removed");
}

}  // namespace
}  // namespace tallybook::application
