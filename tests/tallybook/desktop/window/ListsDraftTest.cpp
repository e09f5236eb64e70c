#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <random>

#include "base/Dates.h"
#include "tallybook/desktop/window/ListsDraft.h"
#include "tests/support/FailsWith.h"
#include "tests/tallybook/engine/BookFixture.h"

namespace tallybook::desktop {
namespace {

using engine::AccountDescription;
using engine::StoredDescription;
using tallybook::testing::FailsWith;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

StoredDescription Shop() {
  constexpr std::size_t kRows = 100;
  return engine::WithFirstSlots(tallybook::testing::ShopDescription(), kRows);
}

std::vector<Text> Codes(const ListsDraft& draft) {
  std::vector<Text> codes;
  for (const AccountDescription& account : draft.Now().accounts) codes.push_back(account.code);
  return codes;
}

class ListsDraftTest : public ::testing::Test {
 protected:
  ListsDraft draft_{Shop(), "North.tbk"};
};

TEST_F(ListsDraftTest, TakesEachStepBackToTheBeginning) {
  draft_.Add(std::vector<AccountDescription>{{0, "300", "Kiosk"}, {0, "310", ""}}, 2);
  EXPECT_THAT(Codes(draft_), ElementsAre("100", "300", "310", "200", "A"));
  EXPECT_EQ(draft_.NextUndo(), "adding 2 accounts");
  draft_.Edit(101, "110", "Shop");
  draft_.Move(7, 1);
  draft_.Remove({205});
  draft_.AddFields({{0, "Covers", false}});
  draft_.EditField(4, "Heads", true);
  draft_.MoveField(9, 1);
  draft_.RemoveFields({1});
  draft_.SetYears(4, 3);
  EXPECT_THAT(Codes(draft_), ElementsAre("A", "110", "300", "310"));
  EXPECT_TRUE(draft_.IsChanged());
  int steps = 0;
  for (; draft_.CanUndo(); ++steps) draft_.Undo();
  EXPECT_EQ(steps, 9);
  EXPECT_EQ(draft_.Now(), Shop().description);
  EXPECT_FALSE(draft_.IsChanged());
}

TEST_F(ListsDraftTest, ARowThatIsMovedAgainAndAgainIsOneStepBack) {
  draft_.Move(101, 2);
  draft_.Move(101, 3);
  EXPECT_THAT(Codes(draft_), ElementsAre("200", "A", "100"));
  draft_.Undo();
  EXPECT_THAT(Codes(draft_), ElementsAre("100", "200", "A"));
  EXPECT_FALSE(draft_.CanUndo());
}

TEST_F(ListsDraftTest, RefusesInTheWordsOfTheCheckAndStaysAsItWas) {
  EXPECT_THAT(
      [&] {
        draft_.Add(std::vector<AccountDescription>{{0, "200", ""}}, 1);
      },
      FailsWith(FailureNumber::kInvalidArgument,
                "North.tbk: accounts[2].code is \"200\"; an account above has this code"));
  EXPECT_THAT([&] { draft_.Edit(101, "a code that is too long", ""); },
              FailsWith(FailureNumber::kInvalidArgument, "accounts[0].code"));
  EXPECT_THAT([&] { draft_.SetYears(201, 1); },
              FailsWith(FailureNumber::kInvalidArgument, "can be extended by 1 to 198"));
  EXPECT_FALSE(draft_.IsChanged());
  EXPECT_FALSE(draft_.CanUndo());
}

TEST_F(ListsDraftTest, GivesNoNumberOfARowThatTheBookHas) {
  draft_.Remove({205});
  draft_.Add(std::vector<AccountDescription>{{0, "200", "New"}}, 1);
  EXPECT_EQ(draft_.Now().accounts[0].number, 206) << "205 stays that of the account which is removed";
}

TEST_F(ListsDraftTest, TellsWhatIsNewChangedAndMoved) {
  draft_.Move(7, 1);
  draft_.Edit(205, "210", "");
  draft_.Add(std::vector<AccountDescription>{{0, "300", ""}}, 4);
  EXPECT_THAT(draft_.AccountStates(),
              ElementsAre(RowState::kMoved, RowState::kAsItIs, RowState::kChanged, RowState::kAdded));
  EXPECT_THAT(draft_.FieldStates(), ::testing::Each(RowState::kAsItIs));
}

TEST_F(ListsDraftTest, YearsCanBeTakenBackDownToThoseOfTheBook) {
  draft_.SetYears(5, 5);
  draft_.SetYears(3, 2);
  EXPECT_EQ(draft_.Now().calendar.years, 3);
  EXPECT_EQ(draft_.Now().calendar.years_in_use, 2);
  draft_.SetYears(2, 2);
  EXPECT_FALSE(draft_.IsChanged());
}

TEST_F(ListsDraftTest, LimitsGrowAndAreTakenBackAndStandOnTopOfTheOthersLists) {
  const Long accounts = draft_.Now().max_accounts;
  const Long fields = draft_.Now().max_fields;
  draft_.SetLimits(accounts + 1, fields + 2);
  EXPECT_TRUE(draft_.IsChanged());
  EXPECT_EQ(draft_.NextUndo(), "changing the limits");
  draft_.Undo();
  EXPECT_FALSE(draft_.IsChanged());
  EXPECT_THAT([&] { draft_.SetLimits(accounts - 1, fields); },
              FailsWith(FailureNumber::kInvalidArgument, "a limit can grow, and not shrink"));
  draft_.SetLimits(accounts + 1, fields + 2);
  StoredDescription theirs = Shop();
  theirs.description.max_fields = fields + 9;
  EXPECT_EQ(draft_.Rebase(theirs), "");
  EXPECT_EQ(draft_.Now().max_accounts, accounts + 1);
  EXPECT_EQ(draft_.Now().max_fields, fields + 9);
}

TEST_F(ListsDraftTest, WhatWasEditedStandsOnTopOfWhatOthersHaveChanged) {
  draft_.Edit(101, "110", "Front of shop");
  draft_.Add(std::vector<AccountDescription>{{0, "300", "Kiosk"}}, 1);
  draft_.Remove({7});
  StoredDescription theirs = Shop();
  theirs.description.accounts[0].description = "Shop";
  theirs.description.accounts.push_back({206, "400", "Theirs"});
  EXPECT_EQ(draft_.Rebase(theirs), "");
  EXPECT_THAT(draft_.Now().accounts,
              ElementsAre(AccountDescription{207, "300", "Kiosk"}, AccountDescription{101, "110", "Shop"},
                          AccountDescription{205, "200", "Café"}, AccountDescription{206, "400", "Theirs"}));
  EXPECT_EQ(draft_.Stored(), theirs);
}

TEST_F(ListsDraftTest, WhatDoesNotFitOntoWhatOthersHaveChangedIsGivenUpWithTheReason) {
  draft_.Add(std::vector<AccountDescription>{{0, "300", "Kiosk"}}, 1);
  StoredDescription theirs = Shop();
  theirs.description.accounts.push_back({500, "300", "Theirs"});
  EXPECT_THAT(draft_.Rebase(theirs), HasSubstr("an account above has this code"));
  EXPECT_EQ(draft_.Now(), theirs.description);
}

// Steps at random, and all of them back.
TEST(ListsDraft, ComesBackFromAnySteps) {
  std::mt19937 random(20261122);
  const auto below = [&](std::size_t most) { return static_cast<Long>(random() % most); };
  for (int round = 0; round < 200; ++round) {
    ListsDraft draft(Shop(), "North.tbk");
    for (int step = 0; step < 20; ++step) {
      const auto& accounts = draft.Now().accounts;
      const auto count = accounts.size();
      const Long number = count == 0 ? 0 : accounts[static_cast<std::size_t>(below(count))].number;
      switch (random() % 4) {
        case 0:
          draft.Add(std::vector<AccountDescription>{{0, "N" + std::to_string(round * 100 + step), ""}},
                    below(count + 1) + 1);
          break;
        case 1:
          if (number != 0) draft.Move(number, below(count) + 1);
          break;
        case 2:
          if (number != 0) draft.Edit(number, "E" + std::to_string(round * 100 + step), "");
          break;
        default:
          if (count > 1) draft.Remove({number});
      }
    }
    while (draft.CanUndo()) draft.Undo();
    ASSERT_EQ(draft.Now(), Shop().description) << "round " << round;
  }
}

}  // namespace
}  // namespace tallybook::desktop
