// A mouse wheel in memory: what the user has set, hooks on windows, and messages that a test sends to them. What nobody
// keeps from a window is told as having reached it.
#pragma once

#include <vector>

#include "platform/Wheel.h"

namespace tallybook::testing {

class ScriptedWheel : public Wheel {
 public:
  struct Sent {
    Long window = 0;
    Long message = 0;
    Long first = 0;
    Long second = 0;
    bool operator==(const Sent&) const = default;
  };
  // What a window answers to a message that reaches it.
  static constexpr Long kWindowsAnswer = 77;

  void SetPresent(bool present) { present_ = present; }
  void SetScrollLines(Long lines) { lines_ = lines; }
  void SetScrollCharacters(std::optional<Long> characters) { characters_ = characters; }
  // No hook can be added while set.
  void RefuseHooks(bool refuse) { refuse_ = refuse; }

  // Sends a message to a window, through its hooks, the newest first, and gives the answer.
  Long Send(Long window, Long message, Long first, Long second);
  // The same for a turn of the wheel (or a tilt) by `delta` with the pointer at a place.
  Long Turn(Long window, Integer delta, Integer x, Integer y, Long message = kWheelTurned);

  // What reached the windows, in order; how many hooks a window has.
  [[nodiscard]] const std::vector<Sent>& Reached() const { return reached_; }
  [[nodiscard]] std::size_t HooksOf(Long window) const;

  [[nodiscard]] bool IsPresent() override { return present_; }
  [[nodiscard]] Long ScrollLines() override { return lines_; }
  [[nodiscard]] std::optional<Long> ScrollCharacters() override { return characters_; }
  [[nodiscard]] bool AddHook(Long window, const void* owner, WindowHook hook) override;
  bool RemoveHook(Long window, const void* owner) override;
  Long CallNextHook(Long window, Long message, Long first, Long second) override;

 private:
  struct Hook {
    Long window = 0;
    const void* owner = nullptr;
    WindowHook call;
  };

  bool present_ = true;
  Long lines_ = 3;
  std::optional<Long> characters_ = 3;
  bool refuse_ = false;
  std::vector<Hook> hooks_;
  std::vector<WindowHook> to_call_;  // of the message under way, the next one last
  std::vector<Sent> reached_;
};

}  // namespace tallybook::testing
