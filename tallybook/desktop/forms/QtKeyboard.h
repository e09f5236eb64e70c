// The keyboard on Qt. Keys that the component presses go to the widget that has the focus when they are carried out, in
// the order in which they were handed in, and never before the input runs. The layout is taken to be the American one,
// as is that by which the keys are turned back into characters. One thread; needs an application object.
#pragma once

#include <deque>
#include <memory>

#include "platform/Keyboard.h"

namespace tallybook::desktop {

class QtKeyboard : public Keyboard {
 public:
  QtKeyboard();
  ~QtKeyboard() override;
  QtKeyboard(const QtKeyboard&) = delete;
  QtKeyboard& operator=(const QtKeyboard&) = delete;

  [[nodiscard]] Integer LayoutKey(std::uint8_t character) override;
  void Deliver(std::span<const KeyRecord> records) override;
  void Press(Integer key, Long flags) override;
  [[nodiscard]] bool IsDown(Integer key) override;

 private:
  void Queue(const KeyEvent& event);
  void CarryOutNext();

  struct Runner;
  std::unique_ptr<Runner> runner_;
  std::deque<KeyEvent> waiting_;
  Integer shift_ = 0;  // by the keys that were carried out
};

}  // namespace tallybook::desktop
