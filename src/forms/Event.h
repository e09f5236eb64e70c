// Something that can happen to a control or a form, and who wants to hear of it. Listeners are called in the order in
// which they connected. One thread; a listener may connect others, and they hear the next one. A listener that has no
// use for what an event tells may take nothing.
#pragma once

#include <functional>
#include <memory>
#include <type_traits>
#include <utility>
#include <vector>

namespace tallybook {

template <typename... Arguments>
class Event {
 public:
  using Listener = std::function<void(Arguments...)>;

  template <typename Heard>
  void Connect(Heard listener) {
    if constexpr (std::is_invocable_v<Heard&, Arguments...>) {
      listeners_.emplace_back(std::move(listener));
    } else {
      listeners_.emplace_back([listener = std::move(listener)](Arguments... /*told*/) mutable { listener(); });
    }
  }

  // The same, for a listener that may be gone before the event is: heard as long as something else holds `life`.
  template <typename Heard>
  void ConnectWhile(const std::shared_ptr<const void>& life, Heard listener) {
    Connect([alive = std::weak_ptr<const void>(life), listener = std::move(listener)](Arguments... told) mutable {
      if (alive.expired()) return;
      if constexpr (std::is_invocable_v<Heard&, Arguments...>)
        listener(std::forward<Arguments>(told)...);
      else
        listener();
    });
  }

  void Raise(Arguments... arguments) const {
    const std::vector<Listener> listeners = listeners_;
    for (const Listener& listener : listeners) listener(arguments...);
  }

 private:
  std::vector<Listener> listeners_;
};

}  // namespace tallybook
