#include "tests/support/ScriptedKeyboard.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <string>
#include <string_view>
#include <utility>

#include "base/CodePage.h"
#include "forms/Form.h"
#include "forms/Grid.h"
#include "forms/HostControls.h"
#include "forms/PlainControls.h"
#include "forms/TextBox.h"
#include "platform/Platform.h"
#include "platform/Screen.h"
#include "tests/support/Hands.h"

namespace tallybook::testing {

namespace {

// The form whose window is in front; null where that is none of ours.
Form* FormInFront() {
  const Long window = ThePlatform().screen->ActiveWindow();
  const auto& forms = OpenForms();
  const auto found = std::ranges::find(forms, window, &Form::Hwnd);
  return window == 0 || found == forms.end() ? nullptr : *found;
}

Integer ShiftBit(Integer key) {
  if (key == kShiftKey) return kShiftState;
  if (key == kControlKey) return kControlState;
  return key == kAltKey ? kAltState : Integer{0};
}

// Whether a caption marks the letter of this key.
bool Marks(const Text& caption, Integer key) {
  const std::size_t mark = caption.find('&');
  return mark + 1 < caption.size() && mark != Text::npos &&
         std::toupper(static_cast<unsigned char>(caption[mark + 1])) == key;
}

bool IsButton(const Control* control) {
  return dynamic_cast<const CommandButton*>(control) != nullptr || dynamic_cast<const SaveButtons*>(control) != nullptr;
}

bool PressButton(Control& control) {
  if (auto* const pair = dynamic_cast<SaveButtons*>(&control)) return pair->UserClick(SaveButtons::kMainButton);
  return dynamic_cast<CommandButton&>(control).UserClick();
}

bool ChooseMarkedTab(TabStrip& tabs, Integer key) {
  const auto found = std::ranges::find_if(tabs.Tabs(), [&](const Text& tab) { return Marks(tab, key); });
  return found != tabs.Tabs().end() && tabs.UserChoose(static_cast<Integer>(found - tabs.Tabs().begin() + 1));
}

void SelectAllOf(const Form& form) {
  if (auto* const box = dynamic_cast<TextBox*>(form.ActiveControl())) box->SetSelection(0, CharacterCount(box->Text()));
}

// The letters of a menu's entries work while it is open alone.
bool Reach(Form& form, Integer key) {
  for (Control* const control : form.Controls()) {
    if (!control->IsReachable() || dynamic_cast<MenuItem*>(control) != nullptr) continue;
    if (auto* const tabs = dynamic_cast<TabStrip*>(control); tabs != nullptr && ChooseMarkedTab(*tabs, key))
      return true;
    if (!Marks(control->Caption(), key)) continue;
    if (IsButton(control)) return PressButton(*control);
    if (!control->TakesFocus() || !control->UserFocus()) continue;
    SelectAllOf(form);
    return true;
  }
  return false;
}

constexpr Integer kBlankKey = 0x20;
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
  for (const KeyRecord& record : records) waiting_.push_back(FromKeyRecord(record));
}

void ScriptedKeyboard::Press(Integer key, Long flags) {
  presses_.push_back({key, flags});
  waiting_.push_back({static_cast<std::uint16_t>(key), 0, flags});
}

void ScriptedKeyboard::TypeWaiting() {
  for (const KeyEvent& event : std::exchange(waiting_, {})) Type(event);
}

void ScriptedKeyboard::Type(const KeyEvent& event) {
  const auto key = static_cast<Integer>(event.key);
  const bool released = (event.flags & kReleasedKey) != 0;
  const Integer bit = ShiftBit(key);
  shift_state_ = static_cast<Integer>(released ? shift_state_ & ~bit : shift_state_ | bit);
  Form* const form = FormInFront();
  if (released || bit != 0 || form == nullptr) return;
  if ((event.flags & kCharacterKey) == 0) {
    if (TheStage() != nullptr)
      TheStage()->Key(*form, key, shift_state_, CharacterOf(key));
    else
      PressIn(*form, key);
  } else if (form->ActiveControl() != nullptr && event.scan <= 0xFF) {
    form->ActiveControl()->UserKeyPress(static_cast<Integer>(event.scan));
  }
}

void ScriptedKeyboard::PressIn(Form& form, Integer key) {
  if (shift_state_ == kAltState && Reach(form, key)) return;
  Control* const focused = form.ActiveControl();
  const bool presses = shift_state_ == 0 && (key == kEnterKey || key == kBlankKey) && IsButton(focused);
  const bool taken = form.UserKey(key, shift_state_, CharacterOf(key));
  if (presses && taken) PressButton(*focused);
  if (key == kTabKey && taken) SelectAllOf(form);
}

Integer ScriptedKeyboard::CharacterOf(Integer key) {
  constexpr Integer kBackspace = 8;
  if (key == kBackspace || key == kEnterKey || key == kEscapeKey) return key;
  if ((shift_state_ & ~kShiftState) != 0) return 0;
  const int wanted = shift_state_ == 0 ? key : key | kWithShift;
  for (std::uint8_t character = 1; character < 0x80; ++character)
    if (LayoutKey(character) == wanted) return character;
  return 0;
}

}  // namespace tallybook::testing
