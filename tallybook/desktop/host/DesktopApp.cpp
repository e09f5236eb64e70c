#include "tallybook/desktop/host/DesktopApp.h"

#include <QApplication>
#include <QFont>
#include <QFontInfo>
#include <exception>
#include <string>
#include <utility>

#include "base/Failure.h"
#include "tallybook/application/HostSettings.h"
#include "tallybook/desktop/host/QtTexts.h"

namespace tallybook::desktop {

namespace {

// The print dialog logs what its lists have no entry for on its way, and goes on as it is meant to.
bool IsUsual(const Text& message) {
  return message.find("dlgRepPrint") != Text::npos;
}

}  // namespace

Integer TellingLog::LogError(const Text& message, Long line_number, Integer detail) {
  const Integer written = log_.LogError(message, line_number, detail);
  if (IsUsual(message)) return written;
  ++count_;
  Reason reason;
  reason.place = message + (line_number == 0 ? "" : " (statement " + std::to_string(line_number) + ")");
  // Whoever logs is handling the failure, so it is still there to be asked.
  if (std::current_exception()) reason.words = CurrentFailure().Description();
  if (reason.words.empty()) std::swap(reason.words, reason.place);
  waiting_.push_back(std::move(reason));
  if (listener_) listener_();
  return written;
}

std::vector<TellingLog::Reason> TellingLog::Take() {
  return std::exchange(waiting_, {});
}

DesktopApp::DesktopApp(const application::ReferenceAppOptions& options)
    : ReferenceApp(options), log_(ReferenceApp::Log()) {
  FollowFont();
}

void DesktopApp::FollowFont() {
  const QFont font = QApplication::font();
  SetFont(FromQt(font.family()), static_cast<Single>(QFontInfo(font).pointSizeF()));
}

std::size_t DesktopApp::CacheBytes() const {
  return application::CacheBytes(SettingsFileName());
}

}  // namespace tallybook::desktop
