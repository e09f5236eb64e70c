#include "tallybook/desktop/forms/Binders.h"

#include "base/Failure.h"
#include "forms/Grid.h"
#include "forms/HostControls.h"
#include "forms/ListControls.h"
#include "forms/OptionGroup.h"
#include "forms/PlainControls.h"
#include "forms/TextBox.h"
#include "tallybook/desktop/forms/GridBinder.h"
#include "tallybook/desktop/forms/HostBinders.h"
#include "tallybook/desktop/forms/ListBinders.h"
#include "tallybook/desktop/forms/OptionBinder.h"
#include "tallybook/desktop/forms/PlainBinders.h"
#include "tallybook/desktop/forms/TabStripBinder.h"
#include "tallybook/desktop/forms/TextBoxBinder.h"

namespace tallybook::desktop {

namespace {

using Made = std::unique_ptr<ControlBinder>;

template <typename Kind, typename Binder>
Made Try(Control& control, QWidget& parent) {
  auto* const one = dynamic_cast<Kind*>(&control);
  return one == nullptr ? nullptr : std::make_unique<Binder>(*one, parent);
}

constexpr Made (*kKinds[])(Control&, QWidget&) = {
    Try<Label, LabelBinder>,
    Try<Frame, FrameBinder>,
    Try<Picture, PictureBinder>,
    Try<CommandButton, ButtonBinder>,
    Try<CheckBox, CheckBoxBinder>,
    Try<ScrollBar, ScrollBarBinder>,
    Try<TextBox, TextBoxBinder>,
    Try<ComboBox, ComboBoxBinder>,
    Try<ListBox, ListBoxBinder>,
    Try<OptionButton, OptionBinder>,
    Try<Grid, GridBinder>,
    Try<TabStrip, TabStripBinder>,
    Try<NumberBox, NumberBoxBinder>,
    Try<SaveButtons, SaveButtonsBinder>,
    Try<CalendarBox, CalendarBinder>,
};

}  // namespace

Made MakeBinder(Control& control, QWidget& parent) {
  for (const auto& try_kind : kKinds)
    if (Made made = try_kind(control, parent)) return made;
  throw Failure(FailureNumber::kInvalidArgument, control.Name() + " is of a kind that cannot be shown");
}

}  // namespace tallybook::desktop
