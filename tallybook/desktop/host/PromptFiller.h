// Puts a file's name into the box of a dialog when that is shown, before the user can press a key in it, as if the user
// had typed it: for a file that was dropped on the application or opened from the file manager. One thread.
#pragma once

#include <QObject>

#include "base/Types.h"

namespace tallybook::desktop {

class PromptFiller final : public QObject {
 public:
  // Waits for the first showing of the form of this name, and fills its box "Text1". An empty file fills nothing.
  PromptFiller(const Text& form, const Text& file);
  ~PromptFiller() override = default;
  PromptFiller(const PromptFiller&) = delete;
  PromptFiller& operator=(const PromptFiller&) = delete;

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  Text form_;
  Text file_;
};

}  // namespace tallybook::desktop
