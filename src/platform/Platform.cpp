#include "platform/Platform.h"

#include "base/Failure.h"

namespace tallybook {

namespace {

// The one record of the process.
Platform& Installed() {
  static Platform platform;
  return platform;
}

bool IsWhole(const Platform& platform) {
  return platform.clock != nullptr && platform.files != nullptr && platform.message_boxes != nullptr &&
         platform.input != nullptr && platform.screen != nullptr;
}

}  // namespace

void InstallPlatform(const Platform& platform) {
  if (!IsWhole(platform))
    throw Failure(FailureNumber::kObjectNotSet,
                  "A platform needs a clock, files, message boxes, an input queue and a screen");
  Installed() = platform;
}

Platform& ThePlatform() {
  Platform& platform = Installed();
  if (platform.clock == nullptr) throw Failure(FailureNumber::kObjectNotSet, "No platform is installed");
  return platform;
}

bool IsPlatformInstalled() {
  return Installed().clock != nullptr;
}

void RemovePlatform() {
  Installed() = Platform{};
}

}  // namespace tallybook
