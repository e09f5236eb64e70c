#include "tallybook/desktop/window/StartPage.h"

#include <QtWidgets/QCommandLinkButton>
#include <QtWidgets/QGridLayout>
#include <QtWidgets/QLabel>
#include <QtWidgets/QStyleOptionFocusRect>
#include <QtWidgets/QStylePainter>

namespace tallybook::desktop {

namespace {

// Styles draw nothing around such a button where the keys are at it.
class LinkButton final : public QCommandLinkButton {
 public:
  using QCommandLinkButton::QCommandLinkButton;

 protected:
  void paintEvent(QPaintEvent* event) override {
    QCommandLinkButton::paintEvent(event);
    if (!hasFocus()) return;
    QStyleOptionFocusRect option;
    option.initFrom(this);
    option.state |= QStyle::State_KeyboardFocusChange;
    option.rect = rect().adjusted(1, 1, -1, -1);
    option.backgroundColor = palette().color(QPalette::Window);
    QStylePainter(this).drawPrimitive(QStyle::PE_FrameFocusRect, option);
  }
};

}  // namespace

StartPage::StartPage(QWidget* parent, const Acts& acts) : QWidget(parent) {
  const int unit = fontMetrics().height();
  auto* title = new QLabel("Tallybook");
  QFont large = font();
  large.setPointSizeF(large.pointSizeF() * 1.8);
  title->setFont(large);
  auto* column = new QVBoxLayout;
  column->setSpacing(unit);
  column->addStretch(2);
  column->addWidget(title);
  const auto add = [&](const QString& text, const QString& description, const std::function<void()>& act) {
    auto* button = new LinkButton(text, description);
    button->setAccessibleDescription(description);
    button->setMinimumWidth(unit * 26);
    button->setMinimumHeight(unit * 4);
    button->setAutoDefault(true);  // Enter presses it
    connect(button, &QCommandLinkButton::clicked, this, act);
    column->addWidget(button);
  };
  add("&Open a book", "A file that ends in .tbk, from a folder or a colleague", acts.open);
  add("&Make a book", "Four short pages: its name, its year, its accounts and fields", acts.make);
  add("&Look at the example", "A shop and its head office, with two years of figures to try things on", acts.example);
  column->addStretch(3);
  auto* row = new QHBoxLayout(this);
  row->addStretch(1);
  row->addLayout(column);
  row->addStretch(1);
}

}  // namespace tallybook::desktop
