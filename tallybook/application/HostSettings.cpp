#include "tallybook/application/HostSettings.h"

#include "base/Failure.h"
#include "base/Narrow.h"
#include "tallybook/settings/SettingsFile.h"

namespace tallybook::application {

std::size_t CacheBytes(const Text& settings_file) {
  constexpr Double kMostMiB = 1 << 20;
  settings::SettingsFile settings(settings_file);
  settings.SetSection("Files");
  const Text text = settings.ReadValue("CacheMiB", "256");
  const Double mebibytes = LeadingNumber(text);
  if (mebibytes < 1 || mebibytes > kMostMiB) {
    throw Failure(FailureNumber::kInvalidArgument, settings_file + ": [Files] CacheMiB is \"" + text +
                                                       "\"; a number of mebibytes from 1 to 1,048,576 is wanted");
  }
  return static_cast<std::size_t>(mebibytes) << 20U;
}

}  // namespace tallybook::application
