// The keys of the main window in one list, and the about box.
#pragma once

class QWidget;

namespace tallybook::desktop {

void ShowKeys(QWidget* parent);
void ShowAbout(QWidget* parent);

}  // namespace tallybook::desktop
