#include "forms/KeyStrings.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "base/CodePage.h"
#include "base/ModParse.h"
#include "base/Narrow.h"
#include "base/Texts.h"
#include "platform/Platform.h"
#include "support/Utility.h"

namespace tallybook {

namespace {

// --- The names of keys -----------------------------------------------------------------------------------------------

struct NamedKey {
  std::uint16_t code = 0;
  bool extended = false;
};

struct NameRow {
  std::uint16_t code = 0;
  const char* name = "";
  bool extended = false;
};

constexpr std::uint16_t kTabCode = 0x09;
constexpr std::uint16_t kFirstFunctionKey = 0x70;
constexpr int kFunctionKeys = 16;

constexpr NameRow kNames[] = {
    {0x08, "BACKSPACE"},
    {0x08, "BS"},
    {0x08, "BKSP"},
    {0x13, "BREAK", true},
    {0x14, "CAPSLOCK"},
    {0x2E, "DELETE", true},
    {0x2E, "DEL", true},
    {0x28, "DOWN", true},
    {0x23, "END", true},
    {0x0D, "ENTER"},
    {0x0D, "~"},
    {0x1B, "ESC"},
    {0x2F, "HELP"},
    {0x24, "HOME", true},
    {0x2D, "INS", true},
    {0x2D, "INSERT", true},
    {0x25, "LEFT", true},
    {0x90, "NUMLOCK", true},
    {0x22, "PGDN", true},
    {0x21, "PGUP", true},
    {0x13, "PAUSE"},
    {0x2A, "PRINT", true},
    {0x2C, "PRTSC", true},
    {0x2C, "PRTSCN", true},
    {0x2C, "PRINTSCRN", true},
    {0x2C, "PRINTSCREEN", true},
    {0x27, "RIGHT", true},
    {0x91, "SCROLLLOCK"},
    {0x29, "SELECT"},
    {kTabCode, "TAB"},
    {0x26, "UP", true},
};

// The one table of the process, by upper-case names.
struct KeyNames {
  std::map<Text, NamedKey> keys;
  bool made = false;
};

KeyNames& TheKeyNames() {
  static KeyNames names;
  return names;
}

void MakeKeyNames() {
  if (std::exchange(TheKeyNames().made, true)) return;
  for (const NameRow& row : kNames) AddKeyName(row.code, row.name, row.extended);
  for (int i = 0; i < kFunctionKeys; ++i)
    AddKeyName(static_cast<std::uint16_t>(kFirstFunctionKey + i), "F" + std::to_string(i + 1), false);
}

// --- The interpreter -------------------------------------------------------------------------------------------------

// Goes through a string once and collects what is to be sent.
class KeyParser {
 public:
  KeyParser(std::u16string text, Keyboard& keyboard) : text_(std::move(text)), keyboard_(keyboard) {}

  std::vector<KeyEvent> Parse() {
    while (passed_ < text_.size()) ParseItem();
    return std::move(events_);
  }

 private:
  struct Modifier {
    char16_t sign;
    std::uint16_t key;
    int bit;
  };
  static constexpr int kShiftBit = 1;
  static constexpr Modifier kModifiers[] = {{u'+', kShiftKey, kShiftBit}, {u'^', kControlKey, 2}, {u'%', kAltKey, 4}};

  static const Modifier* FindModifier(char16_t sign) {
    const auto* const found = std::ranges::find(kModifiers, sign, &Modifier::sign);
    return found == std::end(kModifiers) ? nullptr : found;
  }

  // An item with what is held over it. The holds end in the opposite order, each with its own bit.
  void ParseItem() {
    std::vector<const Modifier*> held;
    while (passed_ < text_.size()) {
      const Modifier* const modifier = FindModifier(text_[passed_]);
      if (modifier == nullptr) break;
      ++passed_;
      Push({.key = modifier->key});
      modifiers_ |= modifier->bit;
      held.push_back(modifier);
    }
    if (passed_ < text_.size()) ParseBareItem();
    for (auto modifier = held.rbegin(); modifier != held.rend(); ++modifier) {
      Push({.key = (*modifier)->key, .flags = kReleasedKey});
      modifiers_ &= ~(*modifier)->bit;
    }
  }

  void ParseBareItem() {
    const char16_t character = text_[passed_++];
    if (character == u'(')
      ParseGroup();
    else if (character == u'{')
      ParseNamedKey();
    else
      PushCharacter(character, 1);
  }

  // Where the bracket that closes stands, if there is something between it and the one that was passed last.
  [[nodiscard]] std::size_t EndBehind(char16_t bracket) const {
    const std::size_t end = text_.find(bracket, passed_);
    return end == passed_ ? std::u16string::npos : end;
  }

  void ParseGroup() {
    const std::size_t end = EndBehind(u')');
    if (end == std::u16string::npos) return;
    while (passed_ < end) PushCharacter(text_[passed_++], 1);
    ++passed_;
  }

  void ParseNamedKey() {
    const std::size_t end = EndBehind(u'}');
    if (end == std::u16string::npos) return;
    const std::u16string_view inside = std::u16string_view(text_).substr(passed_, end - passed_);
    passed_ = end + 1;
    const std::vector<Text> words = SplitText(FromUtf16(inside), " ");
    const Integer count = words.size() < 2 ? Integer{1} : std::max(RoundToInteger(LeadingNumber(words[1])), Integer{1});
    const auto named = TheKeyNames().keys.find(UpperCase(words[0]));
    if (named == TheKeyNames().keys.end()) return PushCharacter(inside.front(), count);
    for (Integer i = 0; i < count; ++i) PushKey(named->second.code, false, named->second.extended);
  }

  void PushCharacter(char16_t character, Integer count) {
    constexpr char16_t kLastOfLayouts = 0xFF;
    if (character > kLastOfLayouts) {
      for (Integer i = 0; i < count; ++i) {
        Push({.scan = character, .flags = kCharacterKey});
        Push({.scan = character, .flags = kCharacterKey | kReleasedKey});
      }
      return;
    }
    // As a positive number: the -1 of an unknown character has both bytes full.
    const auto key = static_cast<std::uint16_t>(keyboard_.LayoutKey(static_cast<std::uint8_t>(character)));
    for (Integer i = 0; i < count; ++i) PushKey(key & 0xFFU, ((key >> 8U) & 1U) != 0, false);
  }

  void PushKey(std::uint16_t code, bool needs_shift, bool extended) {
    const bool shifts = needs_shift && (modifiers_ & kShiftBit) == 0;
    const Long flags = extended ? kExtendedKey : 0;
    if (shifts) Push({.key = kShiftKey});
    Push({.key = code, .flags = flags});
    Push({.key = code, .flags = flags | kReleasedKey});
    if (shifts) Push({.key = kShiftKey, .flags = kReleasedKey});
  }

  void Push(const KeyEvent& event) { events_.push_back(event); }

  std::u16string text_;
  Keyboard& keyboard_;
  std::size_t passed_ = 0;  // units of the text
  int modifiers_ = 0;
  std::vector<KeyEvent> events_;
};

void PressAndRelease(Keyboard& keyboard, Integer key) {
  keyboard.Press(key, 0);
  keyboard.Press(key, kReleasedKey);
}

}  // namespace

void SendKeyString(const Text& keys) {
  HandlePendingInput();
  Keyboard* const keyboard = ThePlatform().keyboard;
  if (keyboard == nullptr) return;
  if (keys == "{tab}") {
    keyboard->Press(kControlKey, kReleasedKey);
    PressAndRelease(*keyboard, kTabCode);
  } else if (keys == "+{tab}") {
    keyboard->Press(kShiftKey, 0);
    PressAndRelease(*keyboard, kTabCode);
    keyboard->Press(kShiftKey, kReleasedKey);
  } else {
    SendKeysEx(keys, false);
  }
}

void SendKeysEx(const Text& keys, bool /*wait*/) {
  Keyboard* const keyboard = ThePlatform().keyboard;
  if (keyboard == nullptr) return;
  MakeKeyNames();
  const std::vector<KeyEvent> events = KeyParser(ToUtf16(keys), *keyboard).Parse();
  if (events.empty()) return;
  std::vector<KeyRecord> records;
  records.reserve(events.size());
  std::ranges::transform(events, std::back_inserter(records), ToKeyRecord);
  DeliverKeyEvents(ToLong(static_cast<long long>(records.size())), records);
}

void AddKeyName(std::uint16_t code, const Text& name, bool extended) {
  MakeKeyNames();
  TheKeyNames().keys[UpperCase(name)] = {code, extended};
}

void ResetKeyNames() {
  TheKeyNames() = {};
}

void DeliverKeyEvents(Long count, std::span<const KeyRecord> records) {
  Keyboard* const keyboard = ThePlatform().keyboard;
  if (keyboard != nullptr) keyboard->Deliver(records.first(static_cast<std::size_t>(count)));
}

}  // namespace tallybook
