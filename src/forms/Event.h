// Something that can happen to a control or a form, and who wants to hear of it. Listeners are called in the order in
// which they connected. One thread; a listener may connect others, and they hear the next one.
#pragma once

#include <functional>
#include <utility>
#include <vector>

namespace tallybook {

template <typename... Arguments>
class Event {
 public:
  using Listener = std::function<void(Arguments...)>;

  void Connect(Listener listener) { listeners_.push_back(std::move(listener)); }

  void Raise(Arguments... arguments) const {
    const std::vector<Listener> listeners = listeners_;
    for (const Listener& listener : listeners) listener(arguments...);
  }

 private:
  std::vector<Listener> listeners_;
};

}  // namespace tallybook
