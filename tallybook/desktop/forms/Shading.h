// The look of what only shows: text on the colour of a button's face. One thread.
#pragma once

class QWidget;

namespace tallybook::desktop {

void ShowShaded(QWidget& widget, bool shaded);

}  // namespace tallybook::desktop
