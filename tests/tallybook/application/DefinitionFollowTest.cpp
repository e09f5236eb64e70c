// Definitions that name what a change of a book's lists is about: told, and following it.
#include <algorithm>
#include <filesystem>
#include <gmock/gmock.h>
#include <sys/stat.h>

#include "tallybook/application/DefinitionFollow.h"
#include "tallybook/application/DefinitionLook.h"
#include "tests/support/InChild.h"
#include "tests/tallybook/engine/BookFixture.h"

namespace tallybook::application {
namespace {

using engine::BookDescription;
using ::testing::ElementsAre;
using testing::FailsWith;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using testing::ShopDescription;

class DefinitionFollowTest : public ::testing::Test {
 protected:
  DefinitionFollowTest() { ThePlatform().files = &files_; }

  // Rows of accounts made by hand, and of fields.
  void Define(const Text& name, const std::vector<Text>& codes, const std::vector<Integer>& fields = {}) {
    Text rows = std::to_string(fields.size()) + "," + std::to_string(codes.size()) + "\r\n";
    for (const Integer field : fields) rows += "5," + std::to_string(field) + "\r\n";
    for (const Text& code : codes) rows += "\"f\",\"" + code + "\"\r\n";
    folder_.Write(name, "\"" + name.substr(0, name.find('.')) + "\",\"in/*.QDX\",1,0,0\r\n" + rows + "0\r\n");
  }
  void DefineAllToOne(const Text& name, Long account) {
    folder_.Write(name, "\"All\",\"in/*.QDX\",1,-1,-2\r\n0,0\r\n" + std::to_string(account) + "\r\n");
  }

  std::vector<DefinitionUse> Uses() {
    return DefinitionsNaming(files_, folder_.Path(), "shop", engine::FindDifference(before_, after_));
  }
  // The sentences of the only definition.
  std::vector<Text> Names() {
    const auto uses = Uses();
    return uses.size() == 1 ? uses.front().names : std::vector<Text>{std::to_string(uses.size()) + " definitions"};
  }
  void Follow() {
    FollowedDefinitions followed(files_, Uses(), engine::FindDifference(before_, after_));
    EXPECT_TRUE(followed.Keep().empty());
  }
  // The codes here of a definition's rows.
  [[nodiscard]] std::vector<Text> Codes(const Text& name) const {
    const DefinitionRecord record = ReadDefinitionAt(folder_.Path(name));
    std::vector<Text> codes;
    for (int i = 1; i <= record.NumAccounts; ++i) codes.push_back(record.accounts(i).to_code);
    return codes;
  }

  testing::ScriptedPlatform platform_;
  testing::TempFolder folder_;
  WholeFiles files_{platform_.files};
  BookDescription before_ = ShopDescription();
  BookDescription after_ = ShopDescription();
};

TEST_F(DefinitionFollowTest, ARenamedAccountIsToldWhereARowNamesIt) {
  Define("TBQDX1.shop", {"100", "A"});
  Define("TBQDX2.shop", {"A"});
  after_.accounts[0].code = "110";
  const auto uses = Uses();
  ASSERT_EQ(uses.size(), 1U);
  EXPECT_EQ(uses[0].number, 1);
  EXPECT_EQ(uses[0].title, "TBQDX1");
  EXPECT_TRUE(uses[0].can_follow);
  EXPECT_THAT(uses[0].names, ElementsAre("account 100 is 110 now"));
}

TEST_F(DefinitionFollowTest, SeveralDefinitionsFollowAndTheRestOfThemStays) {
  Define("TBQDX1.shop", {"100", "A", "gone", "100"}, {1, 4});
  Define("TBQDX2.shop", {"A"});
  Define("TBQDX3.shop", {"100"});
  const std::string first = folder_.Read("TBQDX1.shop");
  const std::string second = folder_.Read("TBQDX2.shop");
  after_.accounts[0].code = "110";
  Follow();
  EXPECT_THAT(Codes("TBQDX1.shop"), ElementsAre("110", "A", "gone", "110"));
  EXPECT_THAT(Codes("TBQDX3.shop"), ElementsAre("110"));
  EXPECT_EQ(folder_.Read("TBQDX2.shop"), second);
  std::swap(before_, after_);
  Follow();
  EXPECT_EQ(folder_.Read("TBQDX1.shop"), first);
}

TEST_F(DefinitionFollowTest, CodesThatAreExchangedAreExchangedInTheRows) {
  Define("TBQDX1.shop", {"100", "200"});
  std::swap(after_.accounts[0].code, after_.accounts[1].code);
  EXPECT_THAT(Names(), ElementsAre("account 100 is 200 now", "account 200 is 100 now"));
  Follow();
  EXPECT_THAT(Codes("TBQDX1.shop"), ElementsAre("200", "100"));
}

TEST_F(DefinitionFollowTest, WhatIsRemovedIsToldAndNothingFollows) {
  Define("TBQDX1.shop", {"100"}, {4});
  const std::string bytes = folder_.Read("TBQDX1.shop");
  after_.accounts.erase(after_.accounts.begin());
  after_.fields.erase(after_.fields.begin() + 1);
  EXPECT_THAT(Names(), ElementsAre("account 100 is removed", "field 4 is removed"));
  EXPECT_FALSE(Uses().front().can_follow);
  Follow();
  EXPECT_EQ(folder_.Read("TBQDX1.shop"), bytes);
}

TEST_F(DefinitionFollowTest, ACodeThatAnotherAccountTakesOverIsTold) {
  Define("TBQDX1.shop", {"100"});
  after_.accounts.erase(after_.accounts.begin());
  after_.accounts[0].code = "100";
  EXPECT_THAT(Names(), ElementsAre("account 100 is another account now"));
  after_.accounts[0].code = "200";
  after_.accounts.push_back({9, "100", ""});
  EXPECT_THAT(Names(), ElementsAre("account 100 is another account now"));
}

TEST_F(DefinitionFollowTest, WhatComesBackIsNoNewsToADefinitionThatStillNamesIt) {
  Define("TBQDX1.shop", {"100"}, {4});
  before_.accounts.erase(before_.accounts.begin());
  before_.fields.erase(before_.fields.begin() + 1);
  EXPECT_THAT(Uses(), IsEmpty());
}

TEST_F(DefinitionFollowTest, MovesAreNoNews) {
  Define("TBQDX1.shop", {"100", "200", "A"}, {1, 4, 9});
  DefineAllToOne("TBQDX2.shop", 101);
  std::ranges::reverse(after_.accounts);
  std::ranges::reverse(after_.fields);
  after_.calendar.years = 5;
  EXPECT_THAT(Uses(), IsEmpty());
}

TEST_F(DefinitionFollowTest, TheAccountThatTakesAllIsKnownByItsNumber) {
  DefineAllToOne("TBQDX1.shop", 101);
  const std::string bytes = folder_.Read("TBQDX1.shop");
  after_.accounts[0].code = "110";
  EXPECT_THAT(Names(), ElementsAre("account 100 is 110 now"));
  EXPECT_FALSE(Uses().front().can_follow);
  Follow();
  EXPECT_EQ(folder_.Read("TBQDX1.shop"), bytes);
  after_.accounts.erase(after_.accounts.begin());
  EXPECT_THAT(Names(), ElementsAre("account 100 is removed"));
}

TEST_F(DefinitionFollowTest, OtherDescriptionsAreToldOnce) {
  Define("TBQDX1.shop", {"200", "200"}, {4, 4});
  after_.accounts[1].description = "Kiosk";
  after_.fields[1].description = "Covers";
  EXPECT_THAT(Names(), ElementsAre("account 200 has another description now", "field 4 is changed"));
}

TEST_F(DefinitionFollowTest, NothingIsWrittenBeforeItIsKept) {
  Define("TBQDX1.shop", {"100"});
  const std::string bytes = folder_.Read("TBQDX1.shop");
  after_.accounts[0].code = "110";
  { const FollowedDefinitions dropped(files_, Uses(), engine::FindDifference(before_, after_)); }
  EXPECT_EQ(folder_.Read("TBQDX1.shop"), bytes);
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder_.Path()), {}), 1);
}

TEST_F(DefinitionFollowTest, OneThatCannotBeWrittenIsToldAndTheOthersFollow) {
  for (const char* name : {"TBQDX1.shop", "TBQDX2.shop", "TBQDX3.shop"}) Define(name, {"100"});
  after_.accounts[0].code = "110";
  FollowedDefinitions followed(files_, Uses(), engine::FindDifference(before_, after_));
  Define("TBQDX9.other", {"another's"});
  std::filesystem::rename(folder_.Path("TBQDX9.other"), folder_.Path("TBQDX2.shop"));
  const auto not_kept = followed.Keep();
  ASSERT_EQ(not_kept.size(), 1U);
  EXPECT_EQ(not_kept[0].number, 2);
  EXPECT_THAT(not_kept[0].why, HasSubstr("TBQDX2.shop: another program has put a file there meanwhile"));
  EXPECT_THAT(Codes("TBQDX1.shop"), ElementsAre("110"));
  EXPECT_THAT(Codes("TBQDX2.shop"), ElementsAre("another's"));
  EXPECT_THAT(Codes("TBQDX3.shop"), ElementsAre("110"));
}

TEST_F(DefinitionFollowTest, ACodeThatADefinitionCannotKeepIsRefusedBeforeAnythingIsWritten) {
  Define("TBQDX1.shop", {"100"});
  const std::string bytes = folder_.Read("TBQDX1.shop");
  after_.accounts[0].code = "1\"0";
  EXPECT_THAT([&] { Follow(); }, FailsWith(FailureNumber::kInvalidArgument, "holds a quote or a line break"));
  after_.accounts[0].code = "\xE2\x82\xAC\xE2\x98\x83";  // the code page has the first character alone
  EXPECT_THAT([&] { Follow(); }, FailsWith(FailureNumber::kInvalidArgument, ""));
  EXPECT_EQ(folder_.Read("TBQDX1.shop"), bytes);
}

TEST_F(DefinitionFollowTest, AQuoteInACodeIsNoTroubleWhereNoDefinitionIsToFollow) {
  Define("TBQDX1.shop", {"200"});
  after_.accounts[0].code = "1\"0";
  Follow();
  EXPECT_THAT(Codes("TBQDX1.shop"), ElementsAre("200"));
}

TEST_F(DefinitionFollowTest, ADefinitionThatCannotBeWrittenIsAFailureAndTheOthersStayAsTheyWere) {
  Define("TBQDX1.shop", {"100"});
  Define("TBQDX2.shop", {"100"});
  const std::string first = folder_.Read("TBQDX1.shop");
  const std::string second = folder_.Read("TBQDX2.shop");
  after_.accounts[0].code = "110";
  ::chmod(folder_.Path().c_str(), 0755);
  EXPECT_THAT(testing::InChild([&] {
                testing::BecomeNobody();
                Follow();
              }),
              HasSubstr("TBQDX1.shop"));
  EXPECT_EQ(folder_.Read("TBQDX1.shop"), first);
  EXPECT_EQ(folder_.Read("TBQDX2.shop"), second);
}

TEST_F(DefinitionFollowTest, ADefinitionThatCannotBeReadIsTold) {
  folder_.Write("TBQDX1.shop", "cut");
  after_.accounts[0].code = "110";
  EXPECT_THAT([&] { (void)Uses(); }, FailsWith(FailureNumber::kPathOrAccess, "exchange definition 1"));
}

}  // namespace
}  // namespace tallybook::application
