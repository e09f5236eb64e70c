#include <vector>

#include "tallybook/application/ProgramHeap.h"
#include "tallybook/application/StandardStreams.h"
#include "tallybook/cli/CommandLine.h"

int main(int argc, char** argv) {
  tallybook::application::HoldClosedStandardStreams();
  tallybook::application::KeepHeapInLargePages();
  const std::vector<tallybook::Text> arguments(argv + (argc > 0 ? 1 : 0), argv + argc);
  return static_cast<int>(tallybook::cli::RunCommandLine(arguments));
}
