#include "tallybook/desktop/host/QuietHost.h"

#include "tallybook/desktop/host/DesktopApp.h"
#include "tallybook/desktop/host/QtPlatform.h"

namespace tallybook::desktop {

namespace {

application::ReferenceAppOptions QuietOptionsOf(const DesktopApp& app) {
  return {.title = app.Title(),
          .settings_file = app.SettingsFileName(),
          .log_file = app.LogFileName(),
          .import_folder = app.DefaultFolder(),
          .data_folder = app.DefaultDataFolder()};
}

}  // namespace

QuietHost::QuietHost(QtPlatform& platform, const DesktopApp& app) : app_(QuietOptionsOf(app)) {
  app_.OwnLog().KeepNothing();
  report::Destination destination;
  destination.stream = &report_;
  factory_.SetReportDestination(destination);
  factory_.SetProgressDisplay(&platform.Progress());
}

}  // namespace tallybook::desktop
