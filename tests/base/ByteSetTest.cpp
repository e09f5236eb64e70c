#include <algorithm>
#include <gtest/gtest.h>
#include <rapidcheck.h>
#include <rapidcheck/gtest.h>
#include <string>

#include "base/ByteSet.h"

namespace tallybook {
namespace {

TEST(ByteSetTest, FindsTheFirstOfItsBytes) {
  const ByteSet stops(",\r\n");
  EXPECT_EQ(stops.FindIn("100,1", 0), 3U);
  EXPECT_EQ(stops.FindIn("100,1", 4), 5U);
  EXPECT_EQ(stops.FindIn("a field of many letters\nand another", 2), 23U);
  EXPECT_EQ(stops.FindIn("", 0), 0U);
  EXPECT_TRUE(stops.Has('\r'));
  EXPECT_FALSE(stops.Has(' '));
}

TEST(ByteSetTest, HasNothingWhereItIsMadeOfNothing) {
  EXPECT_EQ(ByteSet("").FindIn("any text of some length, with what is often looked for\r\n", 0), 56U);
}

// Bytes that differ in one bit from those that are looked for, and texts of every length beside eight.
RC_GTEST_PROP(ByteSetProperties, FindWhatALookAtEachByteFinds, ()) {
  const auto near = rc::gen::element<char>(',', '-', '+', '\r', '\n', '\0', '\x80', '\xAC', '"', 'a');
  const auto bytes = *rc::gen::container<std::string>(near);
  const auto text = *rc::gen::container<std::string>(near);
  const auto from = *rc::gen::inRange<std::size_t>(0, text.size() + 1);
  const std::size_t wanted = std::min(text.find_first_of(bytes, from), text.size());
  RC_ASSERT(ByteSet(bytes).FindIn(text, from) == wanted);
}

RC_GTEST_PROP(ByteSetProperties, WalkFromEachByteToTheNext, ()) {
  const auto near = rc::gen::element<char>(',', '-', '+', '\r', '\n', '\0', '\x80', '\xAC', '"', 'a');
  const auto bytes = *rc::gen::container<std::string>(near);
  const auto text = *rc::gen::container<std::string>(near);
  const ByteSet set(bytes);
  ByteSet::Walk walk(set, text);
  std::size_t from = 0;
  for (bool more = true; more;) {
    const std::size_t wanted = set.FindIn(text, from);
    RC_ASSERT(walk.Next() == wanted);
    more = wanted < text.size();
    from = wanted + 1;
    if (!more || !*rc::gen::weightedElement<bool>({{3, false}, {1, true}})) continue;
    from = *rc::gen::inRange(from, text.size() + 1);
    walk.GoOnAt(from);
  }
  RC_ASSERT(walk.Next() == text.size());
}

}  // namespace
}  // namespace tallybook
