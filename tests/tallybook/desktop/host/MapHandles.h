// Window handles for tests without a screen of the component: numbers from 1.
#pragma once

#include <QPointer>
#include <QWidget>
#include <vector>

#include "tallybook/desktop/host/WindowHandles.h"

namespace tallybook::desktop::testing {

class MapHandles : public WindowHandles {
 public:
  Long HandleOf(QWidget& window) override {
    for (std::size_t i = 0; i < windows_.size(); ++i) {
      if (windows_[i] == &window) return static_cast<Long>(i + 1);
    }
    windows_.emplace_back(&window);
    return static_cast<Long>(windows_.size());
  }
  QWidget* WidgetOf(Long handle) override {
    const auto index = static_cast<std::size_t>(handle - 1);
    return index < windows_.size() ? windows_[index].data() : nullptr;
  }

 private:
  std::vector<QPointer<QWidget>> windows_;
};

}  // namespace tallybook::desktop::testing
