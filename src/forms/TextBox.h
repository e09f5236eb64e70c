// A box to type in.
#pragma once

#include "forms/Control.h"

namespace tallybook {

class TextBox : public Control {
 public:
  using Control::Control;

  [[nodiscard]] const tallybook::Text& Text() const { return text_; }
  // Raises Change where the text changes; the selection moves to the text's start.
  void SetText(const tallybook::Text& text);

  // Shown, but not to be typed into.
  [[nodiscard]] bool Locked() const { return locked_; }
  void SetLocked(bool locked) { Set(locked_, locked); }
  // Drawn as something that only shows.
  [[nodiscard]] bool Shaded() const { return shaded_; }
  void SetShaded(bool shaded) { Set(shaded_, shaded); }
  // The most characters; 0 for any number.
  [[nodiscard]] Long MaxLength() const { return max_length_; }
  void SetMaxLength(Long characters) { Set(max_length_, characters); }

  // In characters; a length beyond the text's end is kept as it was given.
  [[nodiscard]] Long SelStart() const { return sel_start_; }
  [[nodiscard]] Long SelLength() const { return sel_length_; }
  void SetSelection(Long start, Long length);

  Event<> Change;

  // The user replaces the whole text, as by pasting. False where the box is locked too.
  bool UserSetText(const tallybook::Text& text);
  // The user types one character of the files' code page: KeyDown is not raised, KeyPress is, and what it leaves of the
  // character replaces the selection. Codes below 32 are keys without a character. True where the text changed.
  bool UserType(Integer character_code);
  // The same, for whoever presses keys in any control.
  bool UserKeyPress(Integer character_code) override { return UserType(character_code); }

 private:
  void ReplaceSelection(const tallybook::Text& text);

  tallybook::Text text_;
  bool locked_ = false;
  bool shaded_ = false;
  Long max_length_ = 0;
  Long sel_start_ = 0;
  Long sel_length_ = 0;
};

}  // namespace tallybook
