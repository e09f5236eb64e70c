#include "tallybook/desktop/forms/KeyCodes.h"

#include <QKeyEvent>
#include <algorithm>
#include <iterator>
#include <string_view>

#include "base/CodePage.h"
#include "base/Failure.h"
#include "forms/Keys.h"
#include "platform/Keyboard.h"
#include "tallybook/desktop/forms/Words.h"

namespace tallybook::desktop {

namespace {

constexpr Integer kBackspaceKey = 8;
constexpr Integer kSpaceKey = 32;
constexpr Integer kInsertKey = 45;
constexpr Integer kFirstFunctionKey = 112;
constexpr Integer kLastFunctionKey = 135;
constexpr Integer kWithShift = 0x100;
constexpr Integer kNoKey = -1;

struct NamedKey {
  Integer code;
  int qt;
};
// Where two of Qt's stand for one code, the first is the one that is sent.
constexpr NamedKey kNamedKeys[] = {{kBackspaceKey, Qt::Key_Backspace},
                                   {kTabKey, Qt::Key_Tab},
                                   {kTabKey, Qt::Key_Backtab},
                                   {kEnterKey, Qt::Key_Return},
                                   {kEnterKey, Qt::Key_Enter},
                                   {kEscapeKey, Qt::Key_Escape},
                                   {kSpaceKey, Qt::Key_Space},
                                   {kPageUpKey, Qt::Key_PageUp},
                                   {kPageDownKey, Qt::Key_PageDown},
                                   {kEndKey, Qt::Key_End},
                                   {kHomeKey, Qt::Key_Home},
                                   {kLeftKey, Qt::Key_Left},
                                   {kUpKey, Qt::Key_Up},
                                   {kRightKey, Qt::Key_Right},
                                   {kDownKey, Qt::Key_Down},
                                   {kInsertKey, Qt::Key_Insert},
                                   {kDeleteKey, Qt::Key_Delete}};

struct KeyOfSign {
  char plain;
  char shifted;
  Integer key;
};
constexpr KeyOfSign kSigns[] = {{';', ':', 0xBA},  {'=', '+', 0xBB}, {',', '<', 0xBC},  {'-', '_', 0xBD},
                                {'.', '>', 0xBE},  {'/', '?', 0xBF}, {'`', '~', 0xC0},  {'[', '{', 0xDB},
                                {'\\', '|', 0xDC}, {']', '}', 0xDD}, {'\'', '"', 0xDE}, {' ', ' ', kSpaceKey}};
constexpr std::string_view kAboveFigures = ")!@#$%^&*(";

bool IsShiftKey(int qt) {
  return qt == Qt::Key_Shift || qt == Qt::Key_Control || qt == Qt::Key_Alt || qt == Qt::Key_Meta ||
         qt == Qt::Key_AltGr || qt == Qt::Key_CapsLock || qt == Qt::Key_NumLock || qt == Qt::Key_ScrollLock;
}

Integer ShiftOf(const QKeyEvent& event) {
  Integer shift = 0;
  const auto add = [&](Qt::KeyboardModifier modifier, Integer state) {
    if (event.modifiers().testFlag(modifier)) shift = static_cast<Integer>(shift | state);
  };
  add(Qt::ShiftModifier, kShiftState);
  add(Qt::ControlModifier, kControlState);
  add(Qt::AltModifier, kAltState);
  if (event.key() == Qt::Key_Backtab) shift = static_cast<Integer>(shift | kShiftState);
  return shift;
}

Integer CodeOf(const QKeyEvent& event) {
  const int qt = event.key();
  const auto* const named = std::ranges::find(kNamedKeys, qt, &NamedKey::qt);
  if (named != std::end(kNamedKeys)) return named->code;
  if (qt >= Qt::Key_F1 && qt <= Qt::Key_F24) return static_cast<Integer>(kFirstFunctionKey + qt - Qt::Key_F1);
  // Qt's codes of printable keys are those of the characters, which are other keys' codes here.
  const Integer key = qt > 0 && qt <= 0xFF ? LayoutKeyOf(static_cast<std::uint8_t>(qt)) : kNoKey;
  return key == kNoKey ? kOtherKey : static_cast<Integer>(key & 0xFF);
}

// The character that a key gives by itself.
Integer ControlCharacter(Integer key) {
  return key == kBackspaceKey || key == kEnterKey || key == kEscapeKey ? key : Integer{0};
}

void AddCharacter(const QKeyEvent& event, KeyPress& press) {
  constexpr Integer kFirstLetter = 'A';
  constexpr Integer kLastLetter = 'Z';
  press.character = press.shift == 0 || press.shift == kShiftState ? ControlCharacter(press.key) : Integer{0};
  if (press.character != 0 || press.key == kTabKey || press.key == kDeleteKey) return;
  if (press.shift == kControlState && press.key >= kFirstLetter && press.key <= kLastLetter) {
    press.character = static_cast<Integer>(press.key - kFirstLetter + 1);
    return;
  }
  if ((press.shift & (kControlState | kAltState)) != 0 || event.text().isEmpty() || event.text()[0] < u' ') return;
  try {
    const std::string code = ToCodePage(FromQt(event.text()));
    press.is_foreign = code.size() != 1;
    if (!press.is_foreign) press.character = static_cast<unsigned char>(code.front());
  } catch (const Failure&) {
    press.is_foreign = true;  // the code page lacks it
  }
}

// The character that a key gives with these shift states, for keys that a program presses.
QString TextOf(Integer key, Integer shift) {
  if ((shift & ~kShiftState) != 0) return {};
  const Integer wanted = shift == 0 ? key : static_cast<Integer>(key | kWithShift);
  for (std::uint8_t character = kSpaceKey; character < 0x7F; ++character)
    if (LayoutKeyOf(character) == wanted) return {QChar(character)};
  return key == kSpaceKey ? QStringLiteral(" ") : QString();
}

int QtKeyOf(Integer key, const QString& text) {
  const auto* const named = std::ranges::find(kNamedKeys, key, &NamedKey::code);
  if (named != std::end(kNamedKeys)) return named->qt;
  if (key >= kFirstFunctionKey && key <= kLastFunctionKey) return Qt::Key_F1 + key - kFirstFunctionKey;
  if (!text.isEmpty()) return text[0].toUpper().unicode();
  return key < 0x80 ? key : int{Qt::Key_unknown};
}

}  // namespace

KeyPress ToKeyPress(const QKeyEvent& event) {
  KeyPress press;
  if (IsShiftKey(event.key())) return press;
  press.key = CodeOf(event);
  press.shift = ShiftOf(event);
  AddCharacter(event, press);
  return press;
}

Integer LayoutKeyOf(std::uint8_t character) {
  const char sign = static_cast<char>(character);
  if (sign >= 'a' && sign <= 'z') return static_cast<Integer>(sign - 'a' + 'A');
  if (sign >= 'A' && sign <= 'Z') return static_cast<Integer>(sign | kWithShift);
  if (sign >= '0' && sign <= '9') return sign;
  if (const std::size_t figure = kAboveFigures.find(sign); sign != '\0' && figure != std::string_view::npos)
    return static_cast<Integer>((static_cast<std::size_t>('0') + figure) | kWithShift);
  for (const KeyOfSign& key : kSigns) {
    if (key.plain == sign) return key.key;
    if (key.shifted == sign) return static_cast<Integer>(key.key | kWithShift);
  }
  return kNoKey;
}

std::unique_ptr<QKeyEvent> ToQtEvent(const KeyEvent& event, Integer shift) {
  Qt::KeyboardModifiers modifiers = Qt::NoModifier;
  modifiers.setFlag(Qt::ShiftModifier, (shift & kShiftState) != 0);
  modifiers.setFlag(Qt::ControlModifier, (shift & kControlState) != 0);
  modifiers.setFlag(Qt::AltModifier, (shift & kAltState) != 0);
  const auto type = (event.flags & kReleasedKey) != 0 ? QEvent::KeyRelease : QEvent::KeyPress;
  if ((event.flags & kCharacterKey) != 0)
    return std::make_unique<QKeyEvent>(type, Qt::Key_unknown, modifiers, QString(QChar(event.scan)));
  const QString text = TextOf(static_cast<Integer>(event.key), shift);
  int key = QtKeyOf(static_cast<Integer>(event.key), text);
  if (key == Qt::Key_Tab && (shift & kShiftState) != 0) key = Qt::Key_Backtab;
  return std::make_unique<QKeyEvent>(type, key, modifiers, text);
}

}  // namespace tallybook::desktop
