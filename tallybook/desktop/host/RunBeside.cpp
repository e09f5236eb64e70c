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

// What the thread that works and that of the windows tell each other.
class SharedWatch final : public engine::WorkWatch {
 public:
  void Done(Single fraction) override { done_ = fraction; }
  [[nodiscard]] bool IsCancelled() override {
    is_asked_ = true;
    return is_cancelled_;
  }

  void Show(ProgressWindow& progress, const Text& title) {
    progress.CancelEnabled(is_asked_);
    progress.Busy(done_ < 0);
    if (done_ >= 0) progress.Fraction(done_);
    progress.Text(title);
    if (progress.Cancelled()) is_cancelled_ = true;
  }

 private:
  std::atomic<Single> done_ = -1;  // not told
  std::atomic<bool> is_asked_ = false;
  std::atomic<bool> is_cancelled_ = false;
};

}  // namespace

void RunBeside(ProgressWindow& progress, const Text& title, const BesideWork& work) {
  std::exception_ptr failure;
  std::atomic<bool> is_done = false;
  SharedWatch watch;
  {
    const Shown shown(progress, title);
    QEventLoop loop;
    std::thread worker([&] {
      try {
        work(watch);
      } catch (...) {
        failure = std::current_exception();
      }
      is_done = true;
      QMetaObject::invokeMethod(&loop, &QEventLoop::quit, Qt::QueuedConnection);
    });
    QTimer moves;
    QObject::connect(&moves, &QTimer::timeout, &loop, [&] { watch.Show(progress, title); });
    moves.start(ProgressWindow::kEventsEvery);
    while (!is_done) loop.exec();
    worker.join();
  }
  if (failure) std::rethrow_exception(failure);
}

}  // namespace tallybook::desktop
