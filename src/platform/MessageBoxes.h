// Message boxes, and what their styles and buttons are. One thread.
#pragma once

#include "base/Types.h"

namespace tallybook {

// Message boxes. `style` is a sum of the bits below; the button pressed is the result.
inline constexpr Long kOkOnly = 0x0;
inline constexpr Long kOkCancel = 0x1;
inline constexpr Long kYesNo = 0x4;
inline constexpr Long kRetryCancel = 0x5;
inline constexpr Long kButtonsMask = 0xF;
inline constexpr Long kStopIcon = 0x10;
inline constexpr Long kQuestionIcon = 0x20;
inline constexpr Long kExclamationIcon = 0x30;
inline constexpr Long kInformationIcon = 0x40;
inline constexpr Long kIconMask = 0xF0;
inline constexpr Long kSecondButtonDefault = 0x100;

inline constexpr Integer kOk = 1;
inline constexpr Integer kCancel = 2;
inline constexpr Integer kRetry = 4;
inline constexpr Integer kYes = 6;
inline constexpr Integer kNo = 7;

// The button that refuses what a box asks: Cancel, No, or OK where there is no other. The answer wherever nobody can be
// asked.
[[nodiscard]] Integer RefusingButton(Long style);

class MessageBoxes {
 public:
  virtual ~MessageBoxes() = default;
  [[nodiscard]] virtual Integer Show(const Text& text, Long style, const Text& caption) = 0;
  // Plays a system sound by its name, without waiting for its end.
  virtual void PlaySound(const Text& name) = 0;
};

}  // namespace tallybook
