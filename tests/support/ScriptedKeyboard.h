// A keyboard in memory. Its layout is the American one for ASCII; what programs hand to the system is kept, and waits
// until the input runs. Then the form in front gets it key by key, as from a user. What windows do by themselves with a
// key is done as well: Alt with the marked letter of a caption reaches its control, and presses what is a button; Enter
// and a blank press the button with the focus; a box that is reached by key has all its text selected.
#pragma once

#include <functional>
#include <set>
#include <vector>

#include "platform/Keyboard.h"

namespace tallybook {
class Form;
}

namespace tallybook::testing {

class ScriptedKeyboard : public Keyboard {
 public:
  struct Pressed {
    Integer key = 0;
    Long flags = 0;
    bool operator==(const Pressed&) const = default;
  };

  // The user holds a key or a mouse button down, or lets it go.
  void Hold(Integer key) { held_.insert(key); }
  void Release(Integer key) { held_.erase(key); }

  // What was delivered, batch by batch, and what came by the older call.
  [[nodiscard]] const std::vector<std::vector<KeyRecord>>& Batches() const { return batches_; }
  [[nodiscard]] const std::vector<Pressed>& Presses() const { return presses_; }
  // The events of all batches as words: "a" and "/a" for a press and a release of the key that carries that capital
  // letter or figure, "[10]" for others by their code in hexadecimal, "e" in front of an extended one, "U+20AC" for
  // characters.
  [[nodiscard]] Text Events() const;

  // For the input. Whether keys wait; hand them on, all that wait now. Without a form in front they are lost.
  [[nodiscard]] bool HasWaiting() const { return !waiting_.empty(); }
  void TypeWaiting();

  [[nodiscard]] Integer LayoutKey(std::uint8_t character) override;
  void Deliver(std::span<const KeyRecord> records) override;
  void Press(Integer key, Long flags) override;
  [[nodiscard]] bool IsDown(Integer key) override { return held_.contains(key); }

 private:
  void Type(const KeyEvent& event);
  void PressIn(Form& form, Integer key);
  // The character that a key gives; 0 for none.
  [[nodiscard]] Integer CharacterOf(Integer key);

  std::set<Integer> held_;
  std::vector<KeyEvent> waiting_;
  Integer shift_state_ = 0;  // by the keys that were handed on
  std::vector<std::vector<KeyRecord>> batches_;
  std::vector<Pressed> presses_;
};

}  // namespace tallybook::testing
