// Options of which one at most is on: round buttons under one design name, told apart by their index.
#pragma once

#include <memory>
#include <vector>

#include "forms/Control.h"

namespace tallybook {

class OptionGroup;

class OptionButton : public Control {
 public:
  OptionButton(Form& form, const Text& name, Integer index, OptionGroup& group)
      : Control(form, name, index), group_(group) {}
  [[nodiscard]] bool Value() const { return value_; }
  bool UserClick();

 private:
  friend class OptionGroup;
  OptionGroup& group_;
  bool value_ = false;
};

class OptionGroup {
 public:
  // Makes the options of indexes `first` to `last`, all off.
  OptionGroup(Form& form, const Text& name, Integer first, Integer last);

  // The option of an index; failure 9 for an index that has none.
  [[nodiscard]] OptionButton& operator()(Integer index) const;
  [[nodiscard]] Integer First() const { return first_; }
  [[nodiscard]] Integer Last() const {
    return static_cast<Integer>(first_ + static_cast<Integer>(options_.size()) - 1);
  }

  [[nodiscard]] bool Value(Integer index) const { return (*this)(index).Value(); }
  // On: the others go off, and Click is raised where it was off. Off: raises nothing.
  void SetValue(Integer index, bool on);
  // The index of the option that is on, the lowest first; `otherwise` where none is.
  [[nodiscard]] Integer Selected(Integer otherwise = 0) const;

  Event<Integer> Click;       // the option of this index was chosen, and was off before
  Event<Integer> ClickAgain;  // the user clicked the option that is on: no choice

 private:
  friend class OptionButton;
  void Choose(Integer index);

  Integer first_;
  std::vector<std::unique_ptr<OptionButton>> options_;
};

}  // namespace tallybook
