#include "platform/StopProgram.h"

#include <cstdlib>

#include "platform/Platform.h"

namespace tallybook {

void StopProgram(const StopReason& reason) {
  try {
    StopWitness* const witness = IsPlatformInstalled() ? ThePlatform().stop_witness : nullptr;
    if (witness != nullptr) witness->ProgramStops(reason);
  } catch (...) {
    // Meant: a witness that fails must not keep the process going.
  }
  std::_Exit(EXIT_FAILURE);
}

}  // namespace tallybook
