#include "tallybook/application/HostSettings.h"

#include "base/Failure.h"
#include "base/Narrow.h"
#include "tallybook/settings/SettingsFile.h"

namespace tallybook::application {

namespace {

Text FilesSetting(const Text& settings_file, const Text& key, const Text& usual) {
  settings::SettingsFile settings(settings_file);
  settings.SetSection("Files");
  return settings.ReadValue(key, usual);
}

}  // namespace

std::size_t CacheBytes(const Text& settings_file) {
  constexpr Double kMostMiB = 1 << 20;
  const Text text = FilesSetting(settings_file, "CacheMiB", "256");
  const Double mebibytes = LeadingNumber(text);
  if (mebibytes < 1 || mebibytes > kMostMiB) {
    throw Failure(FailureNumber::kInvalidArgument, settings_file + ": [Files] CacheMiB is \"" + text +
                                                       "\"; a number of mebibytes from 1 to 1,048,576 is wanted");
  }
  return static_cast<std::size_t>(mebibytes) << 20U;
}

void NeedSoundRollbackSetting(const Text& settings_file) {
  const Text text = FilesSetting(settings_file, "WriteRollback", "-1");
  try {
    static_cast<void>(ToBoolean(text));
  } catch (const Failure& failure) {
    throw Failure(FailureNumber::kInvalidArgument,
                  settings_file + ": [Files] WriteRollback is \"" + text + "\"; 0 or 1 is wanted", failure.Source());
  }
}

}  // namespace tallybook::application
