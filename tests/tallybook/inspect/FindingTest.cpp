#include <gtest/gtest.h>

#include "tallybook/inspect/Finding.h"

namespace tallybook::inspect {
namespace {

TEST(FindingTest, EachEffectHasItsWord) {
  EXPECT_EQ(WordOf(Effect::kAudit), "audit");
  EXPECT_EQ(WordOf(Effect::kStop), "stop");
  EXPECT_EQ(WordOf(Effect::kSilent), "silent");
}

TEST(FindingTest, ALongTextIsCutBetweenCharacters) {
  Text long_text;
  for (int i = 0; i < 80; ++i) long_text += "\xC3\xA9";
  EXPECT_EQ(Cut(long_text), long_text);
  EXPECT_EQ(Cut(long_text + "x"), long_text + "...");
  EXPECT_EQ(Cut(""), "");
}

}  // namespace
}  // namespace tallybook::inspect
