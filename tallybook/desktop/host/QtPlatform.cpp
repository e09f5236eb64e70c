#include "tallybook/desktop/host/QtPlatform.h"

#include <QPointer>
#include <QWidget>
#include <charconv>
#include <cstdlib>
#include <optional>
#include <string_view>

#include "base/Dates.h"
#include "platform/Platform.h"
#include "platform/posix/PosixFileSystem.h"
#include "platform/posix/PosixPlatform.h"
#include "tallybook/application/CompanionFiles.h"
#include "tallybook/application/StopText.h"
#include "tallybook/desktop/forms/QtInputQueue.h"
#include "tallybook/desktop/forms/QtKeyboard.h"
#include "tallybook/desktop/forms/QtScreen.h"
#include "tallybook/desktop/forms/QtWheel.h"
#include "tallybook/desktop/host/DesktopApp.h"
#include "tallybook/desktop/host/DesktopNotice.h"

namespace tallybook::desktop {

namespace {

// The system's clock; the value of the variable SOURCE_DATE_EPOCH, seconds since 1970-01-01 in UTC, where that is set,
// so that what is written into files can be repeated to the byte (reproducible-builds.org, "SOURCE_DATE_EPOCH"). A
// value that is no number is passed over.
class DesktopClock : public PosixClock {
 public:
  DesktopClock() {
    constexpr Double kSecondsPerDay = 86400;
    const char* const epoch = std::getenv("SOURCE_DATE_EPOCH");
    if (epoch == nullptr) return;
    const std::string_view digits(epoch);
    long long seconds = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), seconds);
    if (error == std::errc() && end == digits.data() + digits.size() && seconds > 0)
      fixed_ = DateFromParts(1970, 1, 1) + static_cast<Double>(seconds) / kSecondsPerDay;
  }
  [[nodiscard]] Date Now() override { return fixed_ ? *fixed_ : PosixClock::Now(); }

 private:
  std::optional<Date> fixed_;
};

class ScreenHandles : public WindowHandles {
 public:
  explicit ScreenHandles(QtScreen& screen) : screen_(screen) {}
  Long HandleOf(QWidget& window) override { return screen_.HandleOf(window); }
  QWidget* WidgetOf(Long handle) override { return screen_.WidgetOf(handle); }

 private:
  QtScreen& screen_;
};

}  // namespace

struct QtPlatform::Seams {
  QPointer<QWidget> main_window;
  DesktopClock clock;
  PosixFileSystem disk;
  application::CompanionFiles companions{disk};
  application::WholeFiles files{companions};
  ProgressWindow progress{[this] { return main_window.data(); }, TellDesktop};
  QtMessageBoxes boxes{[this] { return main_window.data(); }};
  QtScreen screen;
  ScreenHandles handles{screen};
  QtFileDialogs dialogs{handles};
  QtShell shell;
  QtInputQueue input;
  QtKeyboard keyboard;
  QtWheel wheel{screen};
};

QtPlatform::QtPlatform(const Text& application_title) : seams_(std::make_unique<Seams>()) {
  seams_->boxes.SetBeforeBox([this] { seams_->progress.Hide(); });
  InstallPlatform({.clock = &seams_->clock,
                   .files = &seams_->files,
                   .message_boxes = &seams_->boxes,
                   .input = &seams_->input,
                   .screen = &seams_->screen,
                   .file_dialogs = &seams_->dialogs,
                   .shell = &seams_->shell,
                   .keyboard = &seams_->keyboard,
                   .wheel = &seams_->wheel,
                   .application_title = application_title,
                   .stop_witness = this});
}

QtPlatform::~QtPlatform() {
  RemovePlatform();
}

void QtPlatform::SetMainWindow(QWidget* window) {
  seams_->main_window = window;
}

application::WholeFiles& QtPlatform::Files() {
  return seams_->files;
}

QtMessageBoxes& QtPlatform::Boxes() {
  return seams_->boxes;
}

QtFileDialogs& QtPlatform::Dialogs() {
  return seams_->dialogs;
}

QtShell& QtPlatform::Shell() {
  return seams_->shell;
}

QtScreen& QtPlatform::Screen() {
  return seams_->screen;
}

ProgressWindow& QtPlatform::Progress() {
  return seams_->progress;
}

WindowHandles& QtPlatform::Handles() {
  return seams_->handles;
}

// The process ends when this returns, and the user would see no more than a window that is gone.
void QtPlatform::ProgramStops(const StopReason& reason) {
  const Text text = application::StopText(reason);
  if (app_ != nullptr) app_->OwnLog().StopEntry(text);
  seams_->boxes.Tell(
      "The program has to end: a record of the book could not be read, and going on would do harm.\r\n\r\n"
      "What was stored before is sound, and the journal can take it back.",
      kStopIcon, ThePlatform().application_title, text);
}

}  // namespace tallybook::desktop
