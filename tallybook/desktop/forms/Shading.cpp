#include "tallybook/desktop/forms/Shading.h"

#include <QEvent>
#include <QWidget>

namespace tallybook::desktop {

namespace {

// By role and not by colour: it comes again with a change of the system's palette.
void Shade(QWidget& widget) {
  const QWidget* const around = widget.parentWidget();
  const QPalette usual = around == nullptr ? QPalette() : around->palette();
  QPalette palette = usual;
  for (const auto group : {QPalette::Active, QPalette::Inactive, QPalette::Disabled})
    palette.setBrush(group, QPalette::Base, usual.brush(group, QPalette::Window));
  widget.setPalette(palette);
}

// Belongs to the widget that is shaded, and hears of what stands around it.
class Shader : public QObject {
 public:
  explicit Shader(QWidget& widget) : QObject(&widget), widget_(widget) {
    if (widget.parentWidget() != nullptr) widget.parentWidget()->installEventFilter(this);
    Shade(widget_);
  }

 protected:
  bool eventFilter(QObject* /*around*/, QEvent* event) override {
    if (event->type() == QEvent::PaletteChange) Shade(widget_);
    return false;
  }

 private:
  QWidget& widget_;
};

Shader* ShaderOf(const QWidget& widget) {
  for (QObject* const child : widget.children())
    if (auto* const shader = dynamic_cast<Shader*>(child)) return shader;
  return nullptr;
}

}  // namespace

void ShowShaded(QWidget& widget, bool shaded) {
  Shader* const shader = ShaderOf(widget);
  if (shaded == (shader != nullptr)) return;
  if (shaded) {
    new Shader(widget);  // the widget's own
  } else {
    delete shader;
    widget.setPalette(QPalette());
  }
}

}  // namespace tallybook::desktop
