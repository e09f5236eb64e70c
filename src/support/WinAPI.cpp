#include "support/WinAPI.h"

#include "platform/MessageBoxes.h"
#include "platform/Platform.h"

namespace tallybook {

namespace {

constexpr std::size_t kLongestPointerText = 512;

}  // namespace

Integer AskMessage(const Text& text, Long style, const Text& caption) {
  PlayStyleSound(style);
  const Platform& platform = ThePlatform();
  return platform.message_boxes->Show(text, style, caption.empty() ? platform.application_title : caption);
}

void ShowMessage(const Text& text, Long style, const Text& caption) {
  [[maybe_unused]] const Integer button = AskMessage(text, style, caption);
}

void PlayStyleSound(Long style) {
  const auto name = [style] {
    switch (style & kIconMask) {
      case kStopIcon:
        return "SystemHand";
      case kQuestionIcon:
        return "SystemQuestion";
      case kExclamationIcon:
        return "SystemExclamation";
      case kInformationIcon:
        return "SystemAsterisk";
      default:
        return "SystemDefault";
    }
  }();
  ThePlatform().message_boxes->PlaySound(name);
}

Text CutAtNull(const Text& text) {
  return text.substr(0, text.find('\0'));
}

bool HasText(std::string_view text) {
  return text.substr(0, text.find('\0')).find_first_not_of(' ') != std::string_view::npos;
}

Text StringFromPointer(const char* address) {
  if (address == nullptr) return {};
  // Looked for byte by byte: what lies behind the zero need not be readable.
  std::size_t length = 0;
  while (length < kLongestPointerText && address[length] != '\0') ++length;
  return {address, length};
}

}  // namespace tallybook
