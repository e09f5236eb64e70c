// What the window shows with no book open: three things to begin with, and nothing else.
#pragma once

#include <QtWidgets/QWidget>
#include <functional>

namespace tallybook::desktop {

class StartPage final : public QWidget {
 public:
  struct Acts {
    std::function<void()> open;
    std::function<void()> make;
    std::function<void()> example;
  };
  StartPage(QWidget* parent, const Acts& acts);
};

}  // namespace tallybook::desktop
