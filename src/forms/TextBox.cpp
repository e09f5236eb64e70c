#include "forms/TextBox.h"

#include <algorithm>

#include "base/CodePage.h"

namespace tallybook {

namespace {

constexpr Integer kFirstPrintable = 32;
constexpr Integer kBackspace = 8;

// Where the character at a position begins; the end of the text where it has fewer.
std::size_t ByteOf(const Text& text, Long character) {
  std::size_t offset = 0;
  const auto continues = [&] { return (static_cast<unsigned char>(text[offset]) & 0xC0U) == 0x80U; };
  for (Long i = 0; i < character && offset < text.size(); ++i) {
    ++offset;
    while (offset < text.size() && continues()) ++offset;
  }
  return offset;
}

}  // namespace

void TextBox::SetText(const tallybook::Text& text) {
  if (text == text_) return;
  sel_start_ = 0;
  sel_length_ = 0;
  Set(text_, text);
  Change.Raise();
}

void TextBox::SetSelection(Long start, Long length) {
  sel_start_ = std::max(start, Long{0});
  sel_length_ = std::max(length, Long{0});
  Changed.Raise({});
}

bool TextBox::UserSetText(const tallybook::Text& text) {
  if (locked_ || !UserFocus()) return false;
  SetText(max_length_ > 0 ? text.substr(0, ByteOf(text, max_length_)) : text);
  return true;
}

bool TextBox::UserType(Integer character_code) {
  if (!UserFocus()) return false;
  KeyPress.Raise(character_code);
  if (locked_ || character_code == 0) return false;
  const tallybook::Text before = text_;
  if (character_code == kBackspace) {
    if (sel_length_ == 0 && sel_start_ > 0) {
      // The character before; a caret beyond the text stands at its end.
      sel_start_ = std::min(sel_start_, CharacterCount(text_)) - 1;
      sel_length_ = 1;
    }
    ReplaceSelection("");
  } else if (character_code >= kFirstPrintable) {
    ReplaceSelection(FromCodePage(std::string(1, static_cast<char>(character_code))));
  }
  return text_ != before;
}

void TextBox::ReplaceSelection(const tallybook::Text& text) {
  const std::size_t start = ByteOf(text_, sel_start_);
  const std::size_t end = ByteOf(text_, sel_start_ + sel_length_);
  tallybook::Text changed = text_.substr(0, start) + text + text_.substr(end);
  // A text that a program has made too long may be shortened.
  const bool longer = CharacterCount(changed) > CharacterCount(text_);
  if (longer && max_length_ > 0 && CharacterCount(changed) > max_length_) return;
  sel_start_ += CharacterCount(text);
  sel_length_ = 0;
  if (Set(text_, changed)) Change.Raise();
}

}  // namespace tallybook
