#include "support/Platform.h"

#include "support/Failure.h"

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

Integer RefusingButton(Long style) {
  switch (style & kButtonsMask) {
    case kOkOnly:
      return kOk;
    case kYesNo:
      return kNo;
    default:
      return kCancel;
  }
}

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

void ScreenWithoutWindows::SetPointer(Pointer /*pointer*/) {}
Long ScreenWithoutWindows::CreateWindow(Form& /*form*/) {
  return ++last_window_;
}
void ScreenWithoutWindows::DestroyWindow(Long /*window*/) {}
void ScreenWithoutWindows::ShowWindow(Long /*window*/) {}
void ScreenWithoutWindows::HideWindow(Long /*window*/) {}
bool ScreenWithoutWindows::IsVisible(Long /*window*/) {
  return false;
}
void ScreenWithoutWindows::FreezeWindow(Long /*window*/, bool /*frozen*/) {}
void ScreenWithoutWindows::EnableWindow(Long /*window*/, bool /*enabled*/) {}
Long ScreenWithoutWindows::ActiveWindow() {
  return 0;
}
void ScreenWithoutWindows::ActivateWindow(Long /*window*/) {}
Text ScreenWithoutWindows::ClassName(Long /*window*/) {
  return {};
}
Long ScreenWithoutWindows::SetParent(Long /*window*/, Long /*owner*/) {
  return 0;
}
Place ScreenWithoutWindows::WindowPlace(Long /*window*/) {
  return {};
}
void ScreenWithoutWindows::SetWindowPlace(Long /*window*/, const Place& /*place*/) {}
Integer ScreenWithoutWindows::WindowState(Long /*window*/) {
  return 0;
}
void ScreenWithoutWindows::SetWindowState(Long /*window*/, Integer /*state*/) {}
Place ScreenWithoutWindows::WorkArea() {
  return {};
}
Long ScreenWithoutWindows::ScrollBarWidth() {
  return 0;
}

}  // namespace tallybook
