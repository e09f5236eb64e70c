// The binder for a control, by its kind. One thread.
#pragma once

#include <memory>

class QWidget;

namespace tallybook {
class Control;
}

namespace tallybook::desktop {

class ControlBinder;

// Makes the widget for `control` in `parent`, which owns it, and its binder. Failure 5 for a kind that there is no
// binder for, as entries of menus have none here.
[[nodiscard]] std::unique_ptr<ControlBinder> MakeBinder(Control& control, QWidget& parent);

}  // namespace tallybook::desktop
