#include "tallybook/desktop/forms/Shading.h"

#include <QWidget>

namespace tallybook::desktop {

// By role and not by colour, so that it follows a change of the system's palette.
void ShowShaded(QWidget& widget, bool shaded) {
  const QPalette usual = widget.parentWidget() == nullptr ? QPalette() : widget.parentWidget()->palette();
  QPalette palette = usual;
  if (shaded) {
    for (const auto group : {QPalette::Active, QPalette::Inactive, QPalette::Disabled})
      palette.setBrush(group, QPalette::Base, usual.brush(group, QPalette::Window));
  }
  widget.setPalette(palette);
}

}  // namespace tallybook::desktop
