// The mouse wheel on Qt: what the user has set for it, and hooks that hear it before a window does. A turn is told with
// its amount in the upper half of the first parameter and the place of the pointer in the second, as the component
// reads it. One thread; needs an application object.
#pragma once

#include <memory>

#include "platform/Wheel.h"

namespace tallybook::desktop {

class QtScreen;

class QtWheel : public Wheel {
 public:
  // The screen tells windows by their handles and outlives the wheel.
  explicit QtWheel(QtScreen& screen);
  ~QtWheel() override;
  QtWheel(const QtWheel&) = delete;
  QtWheel& operator=(const QtWheel&) = delete;

  [[nodiscard]] bool IsPresent() override { return true; }
  [[nodiscard]] Long ScrollLines() override;
  [[nodiscard]] std::optional<Long> ScrollCharacters() override;
  [[nodiscard]] bool AddHook(Long window, const void* owner, WindowHook hook) override;
  bool RemoveHook(Long window, const void* owner) override;
  Long CallNextHook(Long window, Long message, Long first, Long second) override;

 private:
  class Filter;
  std::unique_ptr<Filter> filter_;
};

}  // namespace tallybook::desktop
