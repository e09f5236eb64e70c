#include <gmock/gmock.h>
#include <stdexcept>
#include <vector>

#include "base/Statements.h"

namespace tallybook::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

// An operation of three statements that keeps what ran and what was told.
class StatementsTest : public ::testing::Test {
 protected:
  bool Operate(Policy policy) {
    Statements at(policy, [this](const Failure& failure) {
      told_.push_back(failure.Statement());
      return retries_-- > 0;
    });
    return at.Run([&] {
      at(10, [this] { Statement(10); });
      result_ = at(20, [this] {
        Statement(20);
        return 7;
      });
      at(30, [this] { Statement(30); });
    });
  }

  // Runs; fails while `failures_` are left for this statement.
  void Statement(Long number) {
    ran_.push_back(number);
    if (number == failing_ && failures_-- > 0) throw Failure(FailureNumber::kDeviceError, "asked to fail");
  }

  Long failing_ = 0;
  int failures_ = 1;
  int retries_ = 0;
  int result_ = -1;
  std::vector<Long> ran_;
  std::vector<Long> told_;
};

TEST_F(StatementsTest, RunToTheirEndAreTrueAndTellNothing) {
  for (const Policy policy : {Policy::kLeave, Policy::kGoOn, Policy::kAsk}) {
    ran_.clear();
    EXPECT_TRUE(Operate(policy));
    EXPECT_THAT(ran_, ElementsAre(10, 20, 30));
    EXPECT_THAT(told_, IsEmpty());
    EXPECT_EQ(result_, 7);
  }
}

TEST_F(StatementsTest, LeavingTellsOnceAndRunsNoFurtherStatement) {
  failing_ = 20;
  EXPECT_FALSE(Operate(Policy::kLeave));
  EXPECT_THAT(ran_, ElementsAre(10, 20));
  EXPECT_THAT(told_, ElementsAre(20));
  EXPECT_EQ(result_, -1);
}

TEST_F(StatementsTest, LeavingDoesNotRetryWhateverTheTellerAnswers) {
  failing_ = 20;
  retries_ = 5;
  EXPECT_FALSE(Operate(Policy::kLeave));
  EXPECT_THAT(ran_, ElementsAre(10, 20));
}

TEST_F(StatementsTest, GoingOnRunsTheNextStatementAndGivesADefaultValue) {
  failing_ = 20;
  EXPECT_TRUE(Operate(Policy::kGoOn));
  EXPECT_THAT(ran_, ElementsAre(10, 20, 30));
  EXPECT_THAT(told_, ElementsAre(20));
  EXPECT_EQ(result_, 0);
}

TEST_F(StatementsTest, GoingOnDoesNotRetryWhateverTheTellerAnswers) {
  failing_ = 10;
  retries_ = 5;
  EXPECT_TRUE(Operate(Policy::kGoOn));
  EXPECT_THAT(ran_, ElementsAre(10, 20, 30));
}

TEST_F(StatementsTest, RetryRepeatsExactlyTheStatementThatFailed) {
  failing_ = 20;
  failures_ = 2;
  retries_ = 2;
  EXPECT_TRUE(Operate(Policy::kAsk));
  EXPECT_THAT(ran_, ElementsAre(10, 20, 20, 20, 30));
  EXPECT_THAT(told_, ElementsAre(20, 20));
  EXPECT_EQ(result_, 7);
}

TEST_F(StatementsTest, CancelLeavesTheOperation) {
  failing_ = 20;
  failures_ = 3;
  retries_ = 1;
  EXPECT_FALSE(Operate(Policy::kAsk));
  EXPECT_THAT(ran_, ElementsAre(10, 20, 20));
  EXPECT_THAT(told_, ElementsAre(20, 20));
}

TEST_F(StatementsTest, AFailureOutsideEveryStatementIsToldWithStatementZero) {
  for (const Policy policy : {Policy::kLeave, Policy::kGoOn, Policy::kAsk}) {
    told_.clear();
    Statements at(policy, [this](const Failure& failure) {
      told_.push_back(failure.Statement());
      return true;
    });
    EXPECT_FALSE(at.Run([] { throw std::runtime_error("between"); }));
    EXPECT_THAT(told_, ElementsAre(0));
  }
}

TEST_F(StatementsTest, ExceptionsOfTheStandardLibraryAreFailuresToo) {
  Failure told(FailureNumber::kRange, "none");
  Statements at(Policy::kGoOn, [&](const Failure& failure) {
    told = failure;
    return false;
  });
  EXPECT_TRUE(at.Run([&] { at(40, [] { throw std::runtime_error("odd"); }); }));
  EXPECT_EQ(told.Number(), FailureNumber::kInternal);
  EXPECT_EQ(told.Description(), "odd");
  EXPECT_EQ(told.Statement(), 40);
}

TEST_F(StatementsTest, LeaveEndsTheOperationWithoutAWord) {
  for (const Policy policy : {Policy::kLeave, Policy::kGoOn, Policy::kAsk}) {
    ran_.clear();
    Statements at(policy, [this](const Failure& failure) {
      told_.push_back(failure.Statement());
      return true;
    });
    EXPECT_FALSE(at.Run([&] {
      at(10, [this] {
        Statement(10);
        Statements::Leave();
      });
      at(20, [this] { Statement(20); });
    }));
    EXPECT_THAT(ran_, ElementsAre(10));
    EXPECT_THAT(told_, IsEmpty());
  }
}

}  // namespace
}  // namespace tallybook::testing
