#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <memory>
#include <vector>

#include "forms/Event.h"

namespace tallybook::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

TEST(EventTest, AListenerIsHeardAsLongAsItsLifeLasts) {
  Event<int> event;
  std::vector<int> heard;
  auto life = std::make_shared<const int>(0);
  event.ConnectWhile(life, [&](int value) { heard.push_back(value); });
  event.Raise(1);
  life.reset();
  event.Raise(2);
  EXPECT_THAT(heard, ElementsAre(1));
}

TEST(EventTest, AListenerWithALifeMayTakeNothingAndMayAnswer) {
  Event<bool&> event;
  const auto life = std::make_shared<const int>(0);
  int heard = 0;
  event.ConnectWhile(life, [&] { ++heard; });
  event.ConnectWhile(life, [](bool& refused) { refused = true; });
  bool refused = false;
  event.Raise(refused);
  EXPECT_EQ(heard, 1);
  EXPECT_TRUE(refused);
}

TEST(EventTest, AListenerMayEndALifeThatComesAfterIt) {
  Event<> event;
  auto life = std::make_shared<const int>(0);
  std::vector<int> heard;
  event.Connect([&] { life.reset(); });
  event.ConnectWhile(life, [&] { heard.push_back(1); });
  event.Raise();
  EXPECT_THAT(heard, IsEmpty());
}

}  // namespace
}  // namespace tallybook::testing
