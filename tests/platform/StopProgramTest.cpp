#include <cstdio>
#include <gmock/gmock.h>

#include "platform/Platform.h"
#include "platform/StopProgram.h"
#include "tests/support/ScriptedPlatform.h"

namespace tallybook::testing {
namespace {

TEST(StopProgramDeathTest, EndsTheProcessWithoutUnwinding) {
  struct SpeaksAtItsEnd {
    ~SpeaksAtItsEnd() { std::fputs("unwound", stderr); }
  };
  EXPECT_EXIT(
      {
        const SpeaksAtItsEnd speaker;
        StopProgram();
      },
      ::testing::ExitedWithCode(1), ::testing::Not(::testing::HasSubstr("unwound")));
}

TEST(StopProgramDeathTest, TheStopWitnessIsToldBeforeTheProcessEndsAndCannotKeepIt) {
  class Witness : public StopWitness {
   public:
    void ProgramStops(const StopReason& reason) override {
      std::fputs(("witness: " + reason.words).c_str(), stderr);
      throw Failure(FailureNumber::kInternal, "odd");
    }
  };
  ScriptedPlatform platform;
  Witness witness;
  ThePlatform().stop_witness = &witness;
  EXPECT_EXIT(StopProgram({.words = "no record"}), ::testing::ExitedWithCode(1), "^witness: no record$");
}

}  // namespace
}  // namespace tallybook::testing
