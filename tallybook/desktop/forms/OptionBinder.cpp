#include "tallybook/desktop/forms/OptionBinder.h"

#include <QRadioButton>
#include <algorithm>

#include "forms/Form.h"
#include "forms/OptionGroup.h"

namespace tallybook::desktop {

namespace {

// The options of the same group, in their order.
std::vector<OptionButton*> GroupOf(const OptionButton& option) {
  std::vector<OptionButton*> group;
  for (Control* const control : option.Parent().Controls()) {
    if (control->Name() != option.Name()) continue;
    if (auto* const one = dynamic_cast<OptionButton*>(control)) group.push_back(one);
  }
  return group;
}

int StepOf(Integer key) {
  if (key == kDownKey || key == kRightKey) return 1;
  return key == kUpKey || key == kLeftKey ? -1 : 0;
}

}  // namespace

OptionBinder::OptionBinder(OptionButton& option, QWidget& parent)
    : ControlBinder(option, *new QRadioButton(&parent)), option_(option), radio_(static_cast<QRadioButton&>(Widget())) {
  // What is on is the control's to say.
  radio_.setAutoExclusive(false);
  QObject::connect(&radio_, &QRadioButton::clicked, &Receiver(), [this] {
    Choose(option_);
    Follow({});
  });
}

void OptionBinder::Choose(OptionButton& option) {
  User([&] { option.UserClick(); });
}

bool OptionBinder::TakeKey(const KeyPress& press) {
  const int step = press.shift == 0 ? StepOf(press.key) : 0;
  if (step == 0) return false;
  std::vector<OptionButton*> group = GroupOf(option_);
  std::erase_if(group, [this](const OptionButton* one) { return one != &option_ && !one->IsReachable(); });
  const auto own = std::ranges::find(group, &option_) - group.begin();
  const auto count = static_cast<std::ptrdiff_t>(group.size());
  Choose(*group[static_cast<std::size_t>((own + step + count) % count)]);
  return true;
}

void OptionBinder::Follow(const Change& /*change*/) {
  const Following following(*this);
  radio_.setChecked(option_.Value());
  SetTabStops();
}

// The option that is on, or where none is, all of them.
void OptionBinder::SetTabStops() {
  const std::vector<OptionButton*> group = GroupOf(option_);
  const bool any = std::ranges::any_of(group, [](const OptionButton* one) { return one->Value(); });
  for (OptionButton* const one : group) one->SetTabStop(!any || one->Value());
}

void OptionBinder::DrawCaption(const QString& caption) {
  radio_.setText(caption);
}

}  // namespace tallybook::desktop
