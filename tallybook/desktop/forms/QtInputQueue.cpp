#include "tallybook/desktop/forms/QtInputQueue.h"

#include <QCoreApplication>

#include "tallybook/desktop/forms/UserActs.h"

namespace tallybook::desktop {

bool QtInputQueue::HasPending(Long /*mask*/) {
  constexpr qint64 kPause = 5;
  return !since_.isValid() || since_.elapsed() >= kPause;
}

void QtInputQueue::RunOnce() {
  QCoreApplication::processEvents();
  since_.start();
  RaiseKeptFailure();
}

}  // namespace tallybook::desktop
