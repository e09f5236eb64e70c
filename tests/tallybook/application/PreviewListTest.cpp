#include <gmock/gmock.h>

#include "tallybook/application/PreviewList.h"
#include "tallybook/application/ReferenceFactory.h"
#include "tests/tallybook/engine/BookFixture.h"

namespace tallybook::application {
namespace {

using preview::ImportPreview;
using testing::Day;
using ::testing::ElementsAre;

// Two files over a shop's book: accounts 100 and 200, fields 1 and 4.
class PreviewListTest : public testing::BookFixture {
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
  PreviewList List(std::size_t most = PreviewList::kMostKept) { return {*preview_, book_->Description(), most}; }
  static std::vector<Double> AfterOf(const PreviewList& list) {
    std::vector<Double> after;
    for (std::size_t row = 0; row < list.Size(); ++row) after.push_back(list.At(row).after);
    return after;
  }

  const Date day_ = Day(2003, 5, 5);
  ReferenceFactory factory_;
  std::unique_ptr<engine::Book> book_;
  std::optional<ImportPreview> preview_;
};

TEST_F(PreviewListTest, HasEveryChangeInTheOrderOfThePreview) {
  const PreviewList list = List();
  EXPECT_EQ(list.Figures(), 3);
  EXPECT_EQ(list.NotKept(), 0);
  EXPECT_THAT(AfterOf(list), ElementsAre(5, -3, 1));
  EXPECT_EQ(list.NetChange(), 3);
}

TEST_F(PreviewListTest, ChoosesByAccountFieldAndFile) {
  PreviewList list = List();
  const auto& account = book_->Description().accounts.front();
  list.Choose({.account = account.code});
  EXPECT_THAT(AfterOf(list), ElementsAre(5, 1));
  list.Choose({.account = account.code, .file = 1});
  EXPECT_THAT(AfterOf(list), ElementsAre(1));
  list.Choose({.field_position = book_->FieldPosition(4)});
  EXPECT_THAT(AfterOf(list), ElementsAre(-3));
  EXPECT_EQ(list.NetChange(), -3);
  list.Choose({.account = "no such account"});
  EXPECT_EQ(list.Size(), 0U);
}

TEST_F(PreviewListTest, SortsWhatIsChosenAndKeepsTheOrderOfWhatIsAlike) {
  PreviewList list = List();
  list.Sort(PreviewList::Column::kChange, false);
  EXPECT_THAT(AfterOf(list), ElementsAre(-3, 1, 5));
  list.Sort(PreviewList::Column::kAccount, true);
  EXPECT_THAT(AfterOf(list), ElementsAre(-3, 5, 1));
  list.Choose({.file = 0});
  EXPECT_THAT(AfterOf(list), ElementsAre(-3, 5));
}

TEST_F(PreviewListTest, CountsWhatItHasNoRoomFor) {
  const PreviewList list = List(2);
  EXPECT_EQ(list.Figures(), 3);
  EXPECT_EQ(list.NotKept(), 1);
  EXPECT_EQ(list.Size(), 2U);
}

}  // namespace
}  // namespace tallybook::application
