// What an installation has set for all its applications, in its settings file (HostApp::SettingsFileName).
#pragma once

#include <cstddef>

#include "base/Types.h"

namespace tallybook::application {

// How much of a book is kept in memory: section "Files", key "CacheMiB", 256 where it is not set. Fails with 5 for a
// value that is no number of mebibytes from 1 to 1,048,576, and as SettingsFile::ReadValue.
[[nodiscard]] std::size_t CacheBytes(const Text& settings_file);

// Section "Files", key "WriteRollback", is read by the component, which fails at a value that is none with no word of
// where it stands. Fails here with 5, the file, the key and the value.
void NeedSoundRollbackSetting(const Text& settings_file);

}  // namespace tallybook::application
