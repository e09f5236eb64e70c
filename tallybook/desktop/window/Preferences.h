// What users set for themselves: one description of every setting, from which the settings page is laid out, and what
// the program makes of them at its start. They stand in the installation's settings file (HostApp::SettingsFileName),
// where the command "tallybook" finds those that concern it as well. One thread.
#pragma once

#include <span>
#include <vector>

#include "base/Types.h"
#include "tallybook/desktop/forms/LocaleStyle.h"

namespace tallybook::desktop {

enum class PreferenceKind {
  kSwitch,  // "-1" or "0"
  kNumber,  // a whole number from `least` to `most`
  kFont,    // the name of a family; empty for the system's
  kChoice,  // the code of one of `choices`
  kFolder,  // the path of one that is there; empty for the documents
};

struct PreferenceChoice {
  const char* code;
  const char* words;
};

struct Preference {
  const char* section;
  const char* key;
  PreferenceKind kind;
  const char* caption;  // with its mnemonic
  const char* usual;    // where nothing, or nothing that fits, is set
  const char* hint = "";
  std::vector<PreferenceChoice> choices = {};
  int least = 0;
  int most = 0;
  const char* unit = "";            // behind a number
  const char* words_of_least = "";  // instead of the least number
};

struct PreferenceGroup {
  const char* title;
  std::vector<Preference> preferences;
};

// Every setting, in the order of the page.
[[nodiscard]] std::span<const PreferenceGroup> AllPreferences();

// A setting as it stands in the file, or as usual where it is not set there or does not fit. Fails as
// SettingsFile::ReadValue.
[[nodiscard]] Text ValueOf(const Preference& preference, const Text& settings_file);

// What the desktop begins with.
struct Preferences {
  Text font_name = {};   // empty: the system's
  Single font_size = 0;  // in points; 0: the system's
  Text numbers = "system";
  Text dates = "system";
  Text folder = {};  // empty: the documents
  bool opens_last_book = false;
};

// Fails as SettingsFile::ReadValue.
[[nodiscard]] Preferences ReadPreferences(const Text& settings_file);

// How numbers and dates are written: as the locale has them, but for what the user has set otherwise.
[[nodiscard]] LocaleStyle StyleFor(const Preferences& preferences, const LocaleStyle& system);

// Gives all windows the font that is set, or the system's.
void ApplyFont(const Preferences& preferences);

}  // namespace tallybook::desktop
