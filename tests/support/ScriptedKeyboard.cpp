#include "tests/support/ScriptedKeyboard.h"

#include <cctype>
#include <cstdio>
#include <string>
#include <string_view>

namespace tallybook::testing {

namespace {

constexpr Integer kNoKey = -1;
constexpr Integer kWithShift = 0x100;

struct KeyOfSign {
  char plain;
  char shifted;
  Integer key;
};
constexpr KeyOfSign kSigns[] = {{';', ':', 0xBA},  {'=', '+', 0xBB}, {',', '<', 0xBC},  {'-', '_', 0xBD},
                                {'.', '>', 0xBE},  {'/', '?', 0xBF}, {'`', '~', 0xC0},  {'[', '{', 0xDB},
                                {'\\', '|', 0xDC}, {']', '}', 0xDD}, {'\'', '"', 0xDE}, {' ', ' ', 0x20}};

Text Word(const KeyEvent& event) {
  std::array<char, 16> code{};
  if ((event.flags & kCharacterKey) != 0)
    std::snprintf(code.data(), code.size(), "U+%04X", unsigned{event.scan});
  else if (event.key < 0x80 && std::isalnum(event.key) != 0 && std::islower(event.key) == 0)
    std::snprintf(code.data(), code.size(), "%c", std::tolower(event.key));
  else
    std::snprintf(code.data(), code.size(), "[%02X]", unsigned{event.key});
  const Text extended = (event.flags & kExtendedKey) != 0 ? "e" : "";
  return ((event.flags & kReleasedKey) != 0 ? "/" : "") + extended + code.data();
}

}  // namespace

Text ScriptedKeyboard::Events() const {
  Text events;
  for (const auto& batch : batches_)
    for (const KeyRecord& record : batch) events += (events.empty() ? "" : " ") + Word(FromKeyRecord(record));
  return events;
}

Integer ScriptedKeyboard::LayoutKey(std::uint8_t character) {
  static constexpr std::string_view kAboveFigures = ")!@#$%^&*(";
  const char sign = static_cast<char>(character);
  if (character >= 0x80) return kNoKey;
  if (std::islower(character) != 0) return static_cast<Integer>(std::toupper(character));
  if (std::isupper(character) != 0) return static_cast<Integer>(character | kWithShift);
  if (std::isdigit(character) != 0) return character;
  if (const std::size_t figure = kAboveFigures.find(sign); sign != '\0' && figure != std::string_view::npos)
    return static_cast<Integer>((static_cast<std::size_t>('0') + figure) | kWithShift);
  for (const KeyOfSign& key : kSigns) {
    if (key.plain == sign) return key.key;
    if (key.shifted == sign) return static_cast<Integer>(key.key | kWithShift);
  }
  return kNoKey;
}

void ScriptedKeyboard::Deliver(std::span<const KeyRecord> records) {
  batches_.emplace_back(records.begin(), records.end());
}

}  // namespace tallybook::testing
