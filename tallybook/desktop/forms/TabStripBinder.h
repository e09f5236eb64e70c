// The binder of a strip of tabs. Which page is shown is the form's to say.
#pragma once

#include "tallybook/desktop/forms/ControlBinder.h"

class QTabBar;

namespace tallybook {
class TabStrip;
}

namespace tallybook::desktop {

class TabStripBinder : public ControlBinder {
 public:
  TabStripBinder(TabStrip& strip, QWidget& parent);
  bool TakeKey(const KeyPress& press) override;
  // Goes on to the next tab, or back, round its ends.
  void Turn(bool backwards);

 protected:
  void Follow(const Change& change) override;
  [[nodiscard]] QString AccessibleName() const override;

 private:
  void Choose(int tab);

  TabStrip& strip_;
  QTabBar& bar_;
};

}  // namespace tallybook::desktop
