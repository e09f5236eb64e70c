#include "tallybook/desktop/window/Preferences.h"

#include <QtGui/QFont>
#include <QtWidgets/QApplication>
#include <algorithm>
#include <filesystem>
#include <fmt/format.h>
#include <string_view>
#include <system_error>

#include "base/Dates.h"
#include "base/Failure.h"
#include "base/Narrow.h"
#include "tallybook/settings/SettingsFile.h"

namespace tallybook::desktop {

namespace {

constexpr const char* kDesktop = "Desktop";
constexpr const char* kFiles = "Files";
constexpr const char* kFontName = "FontName";
constexpr const char* kFontSize = "FontSize";
constexpr const char* kNumbers = "Numbers";
constexpr const char* kDates = "Dates";
constexpr const char* kFolder = "Folder";
constexpr const char* kOpenLastBook = "OpenLastBook";
constexpr const char* kSystem = "system";
constexpr int kSystemSize = 5;  // stands for the system's
constexpr int kLargestSize = 48;
constexpr int kMostCache = 1 << 20;  // mebibytes

std::vector<PreferenceGroup> MakeAll() {
  return {
      {"Looks",
       {
           {kDesktop, kFontName, PreferenceKind::kFont, "&Font", ""},
           {.section = kDesktop,
            .key = kFontSize,
            .kind = PreferenceKind::kNumber,
            .caption = "Size of the f&ont",
            .usual = "5",
            .least = kSystemSize,
            .most = kLargestSize,
            .unit = " pt",
            .words_of_least = "That of the system"},
           {kDesktop,
            kNumbers,
            PreferenceKind::kChoice,
            "&Numbers",
            kSystem,
            "",
            {{kSystem, "As the system writes them"},
             {"point", "1,234.56"},
             {"comma", "1.234,56"},
             {"space", "1\u00A0234,56"}}},
           {kDesktop,
            kDates,
            PreferenceKind::kChoice,
            "&Dates",
            kSystem,
            "Numbers and dates are shown, and read where you type them, in this way from the next start of the "
            "program.",
            {{kSystem, "As the system writes them"},
             {"iso", "2024-12-31"},
             {"dots", "31.12.2024"},
             {"day-first", "31/12/2024"},
             {"month-first", "12/31/2024"}}},
       }},
      {"Books and files",
       {
           {kDesktop, kFolder, PreferenceKind::kFolder, "Fo&lder", "",
            "Where new books go, and where files to open, import and export are looked for first; from the next start "
            "of "
            "the program."},
           {kDesktop, kOpenLastBook, PreferenceKind::kSwitch, "Open the &book of the last time when the program starts",
            "0"},
       }},
      {"Imports",
       {
           {kFiles, "WriteRollback", PreferenceKind::kSwitch,
            "&Keep what imports change, so that they can be taken back", "-1",
            "Without this an import is done for good. What is typed and pasted can be taken back in any case."},
           {.section = kFiles,
            .key = "CacheMiB",
            .kind = PreferenceKind::kNumber,
            .caption = "&Memory for a book that is worked on",
            .usual = "256",
            .hint = "Both hold for every book of this user, and for the command \u201ctallybook\u201d as well.",
            .least = 1,
            .most = kMostCache,
            .unit = " MiB"},
       }},
  };
}

bool IsFolder(const Text& path) {
  std::error_code trouble;
  return std::filesystem::is_directory(path, trouble) && !trouble;
}

bool IsTruthValue(const Text& value) {
  try {
    (void)ToBoolean(value);
    return true;
  } catch (const Failure&) {
    return false;
  }
}

bool Fits(const Preference& preference, const Text& value) {
  switch (preference.kind) {
    case PreferenceKind::kNumber: {
      const Double number = LeadingNumber(value);
      return number >= preference.least && number <= preference.most;
    }
    case PreferenceKind::kChoice:
      return std::ranges::any_of(preference.choices, [&](const PreferenceChoice& each) { return value == each.code; });
    case PreferenceKind::kFolder:
      return value.empty() || IsFolder(value);
    case PreferenceKind::kSwitch:
      return IsTruthValue(value);
    case PreferenceKind::kFont:
      return true;
  }
  return false;
}

const Preference& Find(std::string_view key) {
  for (const PreferenceGroup& group : AllPreferences()) {
    for (const Preference& preference : group.preferences)
      if (key == preference.key) return preference;
  }
  throw Failure(FailureNumber::kInternal, "There is no setting " + Text(key));
}

Text DayMonthYear(Date date, char between) {
  const DateParts parts = PartsOf(date);
  return fmt::format("{:02}{}{:02}{}{:04}", parts.day, between, parts.month, between, parts.year);
}

Text MonthDayYear(Date date) {
  const DateParts parts = PartsOf(date);
  return fmt::format("{:02}/{:02}/{:04}", parts.month, parts.day, parts.year);
}

}  // namespace

std::span<const PreferenceGroup> AllPreferences() {
  static const std::vector<PreferenceGroup> all = MakeAll();
  return all;
}

Text ValueOf(const Preference& preference, const Text& settings_file) {
  settings::SettingsFile file(settings_file);
  file.SetSection(preference.section);
  const Text value = file.ReadValue(preference.key, preference.usual);
  return Fits(preference, value) ? value : preference.usual;
}

Preferences ReadPreferences(const Text& settings_file) {
  const auto value = [&](const char* key) { return ValueOf(Find(key), settings_file); };
  Preferences read;
  read.font_name = value(kFontName);
  const auto size = static_cast<Single>(LeadingNumber(value(kFontSize)));
  read.font_size = size <= kSystemSize ? 0 : size;
  read.numbers = value(kNumbers);
  read.dates = value(kDates);
  read.folder = value(kFolder);
  read.opens_last_book = ToBoolean(value(kOpenLastBook));
  return read;
}

LocaleStyle StyleFor(const Preferences& preferences, const LocaleStyle& system) {
  LocaleStyle style = system;
  if (preferences.numbers == "point") style.numbers = {".", ","};
  if (preferences.numbers == "comma") style.numbers = {",", "."};
  if (preferences.numbers == "space") style.numbers = {",", "\u202F"};
  if (preferences.dates == "iso") style.dates = DateText;
  if (preferences.dates == "dots") style.dates = [](Date date) { return DayMonthYear(date, '.'); };
  if (preferences.dates == "day-first") style.dates = [](Date date) { return DayMonthYear(date, '/'); };
  if (preferences.dates == "month-first") style.dates = MonthDayYear;
  if (preferences.dates == "month-first") style.habits.order = DateOrder::kMonthFirst;
  if (preferences.dates == "dots" || preferences.dates == "day-first") style.habits.order = DateOrder::kDayFirst;
  return style;
}

// The system's is that with which the program began.
void ApplyFont(const Preferences& preferences) {
  static const QFont system = QApplication::font();
  QFont font = system;
  if (!preferences.font_name.empty()) font.setFamily(ToQt(preferences.font_name));
  if (preferences.font_size > 0) font.setPointSizeF(preferences.font_size);
  QApplication::setFont(font);
}

}  // namespace tallybook::desktop
