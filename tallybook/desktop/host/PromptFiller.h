// Puts a file's name into the box of a dialog as soon as that is shown, as if the user had typed it: for a file that was
// dropped on the application or opened from the file manager. One thread.
#pragma once

#include <QTimer>

#include "base/Types.h"

namespace tallybook::desktop {

class PromptFiller {
 public:
  // Waits for the first showing of the form of this name, and fills its box "Text1". An empty file fills nothing.
  PromptFiller(const Text& form, const Text& file);
  PromptFiller(const PromptFiller&) = delete;
  PromptFiller& operator=(const PromptFiller&) = delete;

  [[nodiscard]] bool IsDone() const { return !timer_.isActive(); }

 private:
  void Look();

  Text form_;
  Text file_;
  QTimer timer_;
};

}  // namespace tallybook::desktop
