#include "tallybook/desktop/host/RunBeside.h"

#include <QEventLoop>
#include <QTimer>
#include <atomic>
#include <exception>
#include <thread>

#include "tallybook/desktop/host/ProgressWindow.h"

namespace tallybook::desktop {

namespace {

// The progress is open as long as this is.
class Shown {
 public:
  Shown(ProgressWindow& progress, const Text& title) : progress_(progress) {
    progress_.Begin(title);
    progress_.Busy();
  }
  ~Shown() { progress_.End(); }
  Shown(const Shown&) = delete;
  Shown& operator=(const Shown&) = delete;

 private:
  ProgressWindow& progress_;
};

}  // namespace

void RunBeside(ProgressWindow& progress, const Text& title, const std::function<void()>& work) {
  std::exception_ptr failure;
  std::atomic<bool> is_done = false;
  {
    const Shown shown(progress, title);
    QEventLoop loop;
    std::thread worker([&] {
      try {
        work();
      } catch (...) {
        failure = std::current_exception();
      }
      is_done = true;
      QMetaObject::invokeMethod(&loop, &QEventLoop::quit, Qt::QueuedConnection);
    });
    QTimer moves;
    QObject::connect(&moves, &QTimer::timeout, &loop, [&] { progress.Text(title); });
    moves.start(ProgressWindow::kEventsEvery);
    while (!is_done) loop.exec();
    worker.join();
  }
  if (failure) std::rethrow_exception(failure);
}

}  // namespace tallybook::desktop
