#include "platform/Screen.h"

namespace tallybook {

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
bool ScreenWithoutWindows::IsWindow(Long /*window*/) {
  return false;
}
Long ScreenWithoutWindows::WindowAt(Long /*left*/, Long /*top*/) {
  return 0;
}
void ScreenWithoutWindows::FreezeWindow(Long /*window*/, bool /*frozen*/) {}
void ScreenWithoutWindows::RefreshWindow(Long /*window*/) {}
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
