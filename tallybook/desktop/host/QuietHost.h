// What an engine is given that is to be looked at and not kept: an application that logs nothing, and a factory whose
// reports go into a text and whose progress is the application's own. One thread.
#pragma once

#include <sstream>

#include "base/Types.h"
#include "tallybook/application/ReferenceApp.h"
#include "tallybook/application/ReferenceFactory.h"
#include "tallybook/desktop/host/FilesLeftOpen.h"

namespace tallybook::desktop {

class DesktopApp;
class QtPlatform;

class QuietHost {
 public:
  // Takes titles, folders and settings from `app`. Both outlive this.
  QuietHost(QtPlatform& platform, const DesktopApp& app);

  [[nodiscard]] application::ReferenceApp& App() { return app_; }
  [[nodiscard]] application::ReferenceFactory& Factory() { return factory_; }
  // What has been reported.
  [[nodiscard]] Text Report() const { return report_.str(); }

 private:
  FilesLeftOpen files_;
  application::ReferenceApp app_;
  std::ostringstream report_;
  application::ReferenceFactory factory_;
};

}  // namespace tallybook::desktop
