#include <gmock/gmock.h>
#include <limits>

#include "tallybook/application/FigureList.h"
#include "tallybook/application/ReferenceFactory.h"
#include "tests/tallybook/engine/BookFixture.h"

namespace tallybook::application {
namespace {

using preview::ImportPreview;
using testing::Day;
using ::testing::ElementsAre;

// Two files over a shop's book: accounts 100 and 200, fields 1 and 4.
class FigureListTest : public testing::BookFixture {
 protected:
  void SetUp() override {
    book_ = CreateAndOpen();
    preview_.emplace(ImportPreview::Means{.book = *book_, .factory = factory_, .app = book_->App()});
    preview_->BeginFile("one.QDX");
    Write(101, day_, 1, 5);
    Write(205, day_, 4, -3);
    preview_->BeginFile("two.QDX");
    Write(101, day_ + 1, 1, 1);
    preview_->End();
  }

  void Write(Long account, Date date, Integer field, Double value) {
    ASSERT_TRUE(preview_->Book().ReadRecord(account, date));
    preview_->Book().SetFieldValue(field, value);
    ASSERT_TRUE(preview_->Book().WriteRecord());
  }
  FigureList List(std::size_t most = FigureList::kMostKept) { return ListOf(*preview_, book_->Description(), most); }
  static std::vector<Double> AfterOf(const FigureList& list) {
    std::vector<Double> after;
    for (std::size_t row = 0; row < list.Size(); ++row) after.push_back(list.At(row).second);
    return after;
  }

  const Date day_ = Day(2003, 5, 5);
  ReferenceFactory factory_;
  std::unique_ptr<engine::Book> book_;
  std::optional<ImportPreview> preview_;
};

TEST_F(FigureListTest, HasEveryChangeInTheOrderOfThePreview) {
  const FigureList list = List();
  EXPECT_EQ(list.Figures(), 3);
  EXPECT_EQ(list.NotKept(), 0);
  EXPECT_THAT(AfterOf(list), ElementsAre(5, -3, 1));
  EXPECT_EQ(list.NetDifference(), 3);
}

TEST_F(FigureListTest, ChoosesByAccountFieldAndFile) {
  FigureList list = List();
  const auto& account = book_->Description().accounts.front();
  list.Choose({.account = account.code});
  EXPECT_THAT(AfterOf(list), ElementsAre(5, 1));
  list.Choose({.account = account.code, .file = 1});
  EXPECT_THAT(AfterOf(list), ElementsAre(1));
  list.Choose({.field_position = book_->FieldPosition(4)});
  EXPECT_THAT(AfterOf(list), ElementsAre(-3));
  EXPECT_EQ(list.NetDifference(), -3);
  list.Choose({.account = "no such account"});
  EXPECT_EQ(list.Size(), 0U);
}

TEST_F(FigureListTest, SortsWhatIsChosenAndKeepsTheOrderOfWhatIsAlike) {
  FigureList list = List();
  list.Sort(FigureList::Column::kDifference, false);
  EXPECT_THAT(AfterOf(list), ElementsAre(-3, 1, 5));
  list.Sort(FigureList::Column::kAccount, true);
  EXPECT_THAT(AfterOf(list), ElementsAre(-3, 5, 1));
  list.Choose({.file = 0});
  EXPECT_THAT(AfterOf(list), ElementsAre(-3, 5));
}

TEST_F(FigureListTest, WhatNobodyCanTellCountsAsMoreThanAnyNumberAndIsInNoSum) {
  FigureList list(book_->Description());
  const Double unknown = std::numeric_limits<Double>::quiet_NaN();
  for (const auto& [first, second] : std::vector<std::pair<Double, Double>>{{unknown, 5}, {2, 7}, {unknown, 6}, {9, 8}})
    list.Add({.account_position = 1, .field_position = 1, .date = day_, .first = first, .second = second});
  list.Choose({});
  EXPECT_EQ(list.NetDifference(), 4);
  list.Sort(FigureList::Column::kDifference, false);
  EXPECT_THAT(AfterOf(list), ElementsAre(8, 7, 5, 6));
  list.Sort(FigureList::Column::kDifference, true);
  EXPECT_THAT(AfterOf(list), ElementsAre(5, 6, 7, 8));
}

TEST_F(FigureListTest, CountsWhatItHasNoRoomFor) {
  const FigureList list = List(2);
  EXPECT_EQ(list.Figures(), 3);
  EXPECT_EQ(list.NotKept(), 1);
  EXPECT_EQ(list.Size(), 2U);
}

}  // namespace
}  // namespace tallybook::application
