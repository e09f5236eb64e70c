// The binder of one option of a group. The arrow keys go from option to option and choose; the Tab key stops at the one
// that is on.
#pragma once

#include "tallybook/desktop/forms/ControlBinder.h"

class QRadioButton;

namespace tallybook {
class OptionButton;
}

namespace tallybook::desktop {

class OptionBinder : public ControlBinder {
 public:
  OptionBinder(OptionButton& option, QWidget& parent);
  [[nodiscard]] bool DrawsCaption() const override { return true; }
  bool TakeKey(const KeyPress& press) override;

 protected:
  void Follow(const Change& change) override;
  void DrawCaption(const QString& caption) override;

 private:
  void Choose(OptionButton& option);
  void SetTabStops();

  OptionButton& option_;
  QRadioButton& radio_;
};

}  // namespace tallybook::desktop
