#include "tallybook/desktop/forms/TabStripBinder.h"

#include <QTabBar>

#include "forms/Form.h"
#include "forms/Grid.h"
#include "tallybook/desktop/forms/Words.h"

namespace tallybook::desktop {

TabStripBinder::TabStripBinder(TabStrip& strip, QWidget& parent)
    : ControlBinder(strip, *new QTabBar(&parent)), strip_(strip), bar_(static_cast<QTabBar&>(Widget())) {
  bar_.setExpanding(false);
  bar_.setUsesScrollButtons(true);
  bar_.setFocusPolicy(Qt::StrongFocus);
  // The form may refuse the page; then the bar goes back.
  QObject::connect(&bar_, &QTabBar::currentChanged, &Receiver(), [this](int index) {
    if (IsFollowing()) return;
    User([&] { Choose(index + 1); });
    Follow({});
  });
}

bool TabStripBinder::TakeKey(const KeyPress& /*press*/) {
  return true;
}

void TabStripBinder::Turn(bool backwards) {
  const auto count = static_cast<int>(strip_.Tabs().size());
  if (count == 0) return;
  const int next = (strip_.Selected() - 1 + (backwards ? count - 1 : 1)) % count + 1;
  CarryOut([&] { Choose(next); });
}

// Whoever turns to a page has the tabs in hand, however he does it, and goes on from there; a form counts on that.
// Where the page is refused he stays where he was.
void TabStripBinder::Choose(int tab) {
  Control* const before = strip_.Parent().ActiveControl();
  const Integer shown = strip_.Selected();
  strip_.UserFocus();
  strip_.UserChoose(static_cast<Integer>(tab));
  if (strip_.Selected() == shown && before != nullptr) before->UserFocus();
}

void TabStripBinder::Follow(const Change& /*change*/) {
  const Following following(*this);
  const auto count = static_cast<int>(strip_.Tabs().size());
  while (bar_.count() > count) bar_.removeTab(bar_.count() - 1);
  for (int index = 0; index < count; ++index) {
    const QString caption = DrawnCaption(strip_.Tabs()[static_cast<std::size_t>(index)]);
    if (index == bar_.count())
      bar_.addTab(caption);
    else if (bar_.tabText(index) != caption)
      bar_.setTabText(index, caption);
  }
  bar_.setCurrentIndex(strip_.Selected() - 1);
}

QString TabStripBinder::AccessibleName() const {
  const QString name = ControlBinder::AccessibleName();
  return name.isEmpty() ? QStringLiteral("Pages") : name;
}

}  // namespace tallybook::desktop
