#include "forms/OptionGroup.h"

#include "base/FixedTable.h"

namespace tallybook {

bool OptionButton::UserClick() {
  if (!UserFocus()) return false;
  if (value_) {
    group_.ClickAgain.Raise(Index());
  } else {
    group_.Choose(Index());
  }
  return true;
}

OptionGroup::OptionGroup(Form& form, const Text& name, Integer first, Integer last) : first_(first) {
  for (int index = first; index <= last; ++index) {
    options_.push_back(std::make_unique<OptionButton>(form, name, static_cast<Integer>(index), *this));
  }
}

OptionButton& OptionGroup::operator()(Integer index) const {
  if (index < first_ || index > Last()) FailOutsideTable(index, Last());
  return *options_[static_cast<std::size_t>(index - first_)];
}

void OptionGroup::SetValue(Integer index, bool on) {
  if (on) {
    Choose(index);
    return;
  }
  OptionButton& option = (*this)(index);
  option.Set(option.value_, false);
}

Integer OptionGroup::Selected(Integer otherwise) const {
  for (const auto& option : options_) {
    if (option->Value()) return option->Index();
  }
  return otherwise;
}

void OptionGroup::Choose(Integer index) {
  OptionButton& chosen = (*this)(index);
  if (chosen.value_) return;
  for (const auto& option : options_) option->Set(option->value_, false);
  chosen.Set(chosen.value_, true);
  Click.Raise(index);
}

}  // namespace tallybook
