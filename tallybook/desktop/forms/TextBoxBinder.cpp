#include "tallybook/desktop/forms/TextBoxBinder.h"

#include <QLineEdit>
#include <algorithm>

#include "forms/TextBox.h"
#include "tallybook/desktop/forms/Shading.h"
#include "tallybook/desktop/forms/Words.h"

namespace tallybook::desktop {

namespace {

constexpr Integer kFirstPrintable = 32;
constexpr Integer kBackspace = 8;
constexpr int kAnyLength = 32'767;

// Positions count characters in a control and units of UTF-16 in a widget; they differ where a character takes two.
int UnitsBefore(const QString& text, Long characters) {
  qsizetype units = 0;
  for (Long i = 0; i < characters && units < text.size(); ++i) units += text[units].isHighSurrogate() ? 2 : 1;
  return static_cast<int>(std::min(units, text.size()));
}

Long CharactersBefore(const QString& text, int units) {
  return static_cast<Long>(text.left(units).toUcs4().size());
}

}  // namespace

TextBoxBinder::TextBoxBinder(TextBox& box, QWidget& parent)
    : ControlBinder(box, *new QLineEdit(&parent)), box_(box), edit_(static_cast<QLineEdit&>(Widget())) {
  QObject::connect(&edit_, &QLineEdit::textEdited, &Receiver(), [this] { TakeText(); });
  QObject::connect(&edit_, &QLineEdit::selectionChanged, &Receiver(), [this] { TakeSelection(); });
  QObject::connect(&edit_, &QLineEdit::cursorPositionChanged, &Receiver(), [this] { TakeSelection(); });
}

bool TextBoxBinder::TakeKey(const KeyPress& press) {
  // What the control has taken in is drawn already.
  if (press.character >= kFirstPrintable || press.character == kBackspace) return true;
  // A shortcut that the dialog has refused does nothing.
  return press.character != 0 && CharacterLeft() == 0;
}

void TextBoxBinder::Follow(const Change& /*change*/) {
  const Following following(*this);
  edit_.setReadOnly(box_.Locked());
  ShowShaded(edit_, box_.Shaded());
  edit_.setMaxLength(box_.MaxLength() > 0 ? box_.MaxLength() : kAnyLength);
  FollowText();
  FollowSelection();
}

// Only what differs is replaced, so that undo goes back over what was typed.
void TextBoxBinder::FollowText() {
  const QString before = edit_.text();
  const QString after = ToQt(box_.Text());
  if (before == after) return;
  if (!edit_.hasFocus()) {
    edit_.setText(after);
    return;
  }
  qsizetype same_start = 0;
  const qsizetype shorter = std::min(before.size(), after.size());
  while (same_start < shorter && before[same_start] == after[same_start]) ++same_start;
  qsizetype same_end = 0;
  while (same_end < shorter - same_start && before[before.size() - 1 - same_end] == after[after.size() - 1 - same_end])
    ++same_end;
  edit_.setSelection(static_cast<int>(same_start), static_cast<int>(before.size() - same_end - same_start));
  edit_.insert(after.mid(same_start, after.size() - same_end - same_start));
  if (edit_.text() != after) edit_.setText(after);
}

void TextBoxBinder::FollowSelection() {
  const QString text = edit_.text();
  const int start = UnitsBefore(text, box_.SelStart());
  const int end = UnitsBefore(text, box_.SelStart() + box_.SelLength());
  const int start_now = edit_.hasSelectedText() ? edit_.selectionStart() : edit_.cursorPosition();
  const int length_now = edit_.hasSelectedText() ? edit_.selectionLength() : 0;
  if (start_now == start && length_now == end - start) return;
  if (end > start)
    edit_.setSelection(start, end - start);
  else
    edit_.setCursorPosition(start);
}

// The widget has changed its text: pasted, cut, undone, or typed in a way that the code page has no character for.
void TextBoxBinder::TakeText() {
  if (IsFollowing()) return;
  User([this] {
    const Following following(*this);  // the selection that comes with the text is the widget's
    box_.UserSetText(FromQt(edit_.text()));
  });
  if (ToQt(box_.Text()) == edit_.text())
    TakeSelection();
  else
    Follow({});
}

void TextBoxBinder::TakeSelection() {
  const QString text = edit_.text();
  // An input method moves the caret before it tells the text, which the caret then comes with.
  if (IsFollowing() || text != ToQt(box_.Text())) return;
  const bool selected = edit_.hasSelectedText();
  const Long start = CharactersBefore(text, selected ? edit_.selectionStart() : edit_.cursorPosition());
  const Long end = selected ? CharactersBefore(text, edit_.selectionEnd()) : start;
  // What was set beyond the text's end is kept as it was given.
  const Long last = CharactersBefore(text, static_cast<int>(text.size()));
  const bool same =
      std::min(box_.SelStart(), last) == start && std::min(box_.SelStart() + box_.SelLength(), last) == end;
  if (same) return;
  const Following following(*this);
  CarryOut([&] { box_.SetSelection(start, end - start); });
}

}  // namespace tallybook::desktop
