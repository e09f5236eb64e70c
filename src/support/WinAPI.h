// Message boxes with their sounds, and texts that end at a zero character.
#pragma once

#include <string_view>

#include "base/Types.h"

namespace tallybook {

// Plays the sound of the style, shows the box and gives the button pressed. `style` is a sum of the bits in
// platform/MessageBoxes.h; an empty caption takes the application's title.
[[nodiscard]] Integer AskMessage(const Text& text, Long style, const Text& caption);
// The same with the result dropped.
void ShowMessage(const Text& text, Long style, const Text& caption);

// The sound of a style's icon: stop "SystemHand", question "SystemQuestion", exclamation "SystemExclamation",
// information "SystemAsterisk", anything else "SystemDefault".
void PlayStyleSound(Long style);

// The text before its first zero character; whether anything but blanks is left of it.
[[nodiscard]] Text CutAtNull(const Text& text);
[[nodiscard]] bool HasText(std::string_view text);

// The zero-terminated text at an address, at most 512 characters of it; empty for a null address. The bytes are taken
// as they stand.
[[nodiscard]] Text StringFromPointer(const char* address);

}  // namespace tallybook
