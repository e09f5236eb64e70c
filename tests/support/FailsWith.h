// The matcher for a callable that raises a Failure of a number:
//   EXPECT_THAT([&] { Read(); }, FailsWith(FailureNumber::kRange));
#pragma once

#include <gmock/gmock.h>

#include "base/Failure.h"

namespace tallybook::testing {

inline auto FailsWith(FailureNumber number) {
  return ::testing::Throws<Failure>(::testing::Property(&Failure::Number, number));
}

// The same, with a part of the description's words.
inline auto FailsWith(FailureNumber number, const Text& words) {
  return ::testing::Throws<Failure>(
      ::testing::AllOf(::testing::Property(&Failure::Number, number),
                       ::testing::Property(&Failure::Description, ::testing::HasSubstr(words))));
}

}  // namespace tallybook::testing
