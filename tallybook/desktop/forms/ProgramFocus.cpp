#include "tallybook/desktop/forms/ProgramFocus.h"

#include <QGuiApplication>
#include <QWindow>
#include <utility>

namespace tallybook::desktop {

namespace {

struct Watch {
  const QGuiApplication* application = nullptr;
  bool had_focus = false;
  bool came_from_outside = false;
};

Watch& TheWatch() {
  static Watch watch;
  return watch;
}

}  // namespace

void WatchProgramFocus() {
  auto* const application = qobject_cast<QGuiApplication*>(QCoreApplication::instance());
  if (application == nullptr || std::exchange(TheWatch().application, application) == application) return;
  QObject::connect(application, &QGuiApplication::focusWindowChanged, application, [](const QWindow* window) {
    Watch& watch = TheWatch();
    if (window != nullptr) watch.came_from_outside = !watch.had_focus;
    watch.had_focus = window != nullptr;
  });
}

bool CameFromOtherProgram() {
  return TheWatch().came_from_outside;
}

}  // namespace tallybook::desktop
