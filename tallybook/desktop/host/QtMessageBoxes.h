// Message boxes as windows, over the window that is in front. What the component says stands word for word; what the
// application knows besides stands behind a fold. One thread; a box lets events in while it waits.
#pragma once

#include <functional>
#include <vector>

#include "platform/MessageBoxes.h"

class QWidget;

namespace tallybook::desktop {

class QtMessageBoxes : public MessageBoxes {
 public:
  // The window that a box belongs to where no window of the application is in front; may give null.
  using Owner = std::function<QWidget*()>;
  explicit QtMessageBoxes(Owner owner = {}) : owner_(std::move(owner)) {}

  [[nodiscard]] Integer Show(const Text& text, Long style, const Text& caption) override;
  // The desktop's own sound: it has one.
  void PlaySound(const Text& name) override;

  // A message of the application: what happened, to what, why, and what helps; `details` to copy, behind the fold.
  Integer Tell(const Text& text, Long style, const Text& caption, const Text& details);

  // Done before each box is shown: what must be settled or out of the way by then. Empty for nothing.
  void SetBeforeBox(std::function<void()> act) { before_box_ = std::move(act); }
  // Asked at each box of the component: what the application knows besides; empty for nothing.
  void SetDetails(std::function<Text()> details) { details_ = std::move(details); }

  // The boxes on the screen now.
  [[nodiscard]] int Depth() const { return depth_; }
  // The texts of the boxes since Forget, the newest last: whether something has been told already.
  [[nodiscard]] const std::vector<Text>& Told() const { return told_; }
  void Forget() { told_.clear(); }

 private:
  Owner owner_;
  std::function<void()> before_box_;
  std::function<Text()> details_;
  std::vector<Text> told_;
  int depth_ = 0;
};

}  // namespace tallybook::desktop
