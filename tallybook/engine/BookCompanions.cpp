#include "tallybook/engine/BookCompanions.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <filesystem>
#include <fstream>
#include <string_view>
#include <system_error>

#include "base/Failure.h"
#include "tallybook/engine/BookPlace.h"

namespace tallybook::engine {

namespace {

namespace fs = std::filesystem;

constexpr const char* kSource = "Tallybook.Book";
constexpr std::array<std::string_view, 3> kPrefixes{"TBQDX", "TBQDBU", "KVQDX"};

bool IsNumber(std::string_view text) {
  return !text.empty() && text.find_first_not_of("0123456789") == std::string_view::npos;
}

Text CompanionOf(const Text& stem, const Text& name) {
  return stem + "." + name;
}

// The part of a companion's name before the point and NAME; empty where the file is no companion of that name.
Text StemOf(const Text& file, const Text& name) {
  const Text ending = "." + name;
  if (!file.ends_with(ending)) return "";
  const Text stem = file.substr(0, file.size() - ending.size());
  const bool is_companion = std::ranges::any_of(kPrefixes, [&](std::string_view prefix) {
    return stem.starts_with(prefix) && IsNumber(std::string_view(stem).substr(prefix.size()));
  });
  return is_companion ? stem : "";
}

std::vector<Text> StemsOf(const Text& folder, const Text& name) {
  std::vector<Text> stems;
  std::error_code error;  // a folder that cannot be listed shows no companions
  for (fs::directory_iterator entry(folder, error), end; !error && entry != end; entry.increment(error)) {
    const Text stem = StemOf(entry->path().filename().string(), name);
    if (!stem.empty()) stems.push_back(stem);
  }
  std::sort(stems.begin(), stems.end());
  return stems;
}

Text SettingsOf(const Text& folder, const Text& name) {
  return folder + name + ".ini";
}

bool Exists(const Text& path) {
  std::error_code ignored;  // what cannot be asked is met when it is copied
  return fs::exists(fs::symlink_status(path, ignored));
}

FailureNumber NumberOf(const std::error_code& error) {
  if (error == std::errc::no_space_on_device || error == std::errc::file_too_large) return FailureNumber::kDiskFull;
  if (error == std::errc::permission_denied || error == std::errc::operation_not_permitted)
    return FailureNumber::kPermissionDenied;
  return FailureNumber::kDeviceError;
}

// A file that is made whole under a name of its own, and moved to its place.
template <typename Make>
void MakeWhole(const Text& book, const Text& path, Make make) {
  const Text work_path = path + "-new";
  std::error_code error;
  fs::remove(work_path, error);
  make(work_path, error);
  if (!error) fs::rename(work_path, path, error);
  if (!error) return;
  std::error_code ignored;  // the first trouble is the one to tell
  fs::remove(work_path, ignored);
  throw Failure(
      NumberOf(error),
      book + ": its companion files have another name now, and " + path + " cannot be made: " + error.message(),
      kSource);
}

void CopyFile(const Text& book, const Text& from, const Text& to) {
  MakeWhole(book, to, [&](const Text& path, std::error_code& error) { fs::copy_file(from, path, error); });
}

void MakeSettings(const Text& book, const Text& older, const Text& to) {
  MakeWhole(book, to, [&](const Text& path, std::error_code& error) {
    std::ofstream file(path, std::ios::binary);
    file << "; This book's companion files end in its whole name. Those of \"" << older << "\" have been copied.\n";
    file.close();
    if (!file) error.assign(errno, std::generic_category());
  });
}

}  // namespace

bool HasTakenItsName(const Text& path) {
  return BookName(path) == OlderBookName(path) || Exists(SettingsOf(BookFolder(path), BookName(path)));
}

bool HasOlderCompanions(const Text& path) {
  const Text folder = BookFolder(path);
  const Text older = OlderBookName(path);
  return Exists(SettingsOf(folder, older)) || !StemsOf(folder, older).empty();
}

std::vector<Text> CopyOlderCompanions(const Text& path) {
  const Text folder = BookFolder(path);
  const Text name = BookName(path);
  const Text older = OlderBookName(path);
  std::vector<Text> copied;
  for (const Text& stem : StemsOf(folder, older)) {
    const Text to = folder + CompanionOf(stem, name);
    if (Exists(to)) continue;
    const Text from = CompanionOf(stem, older);
    CopyFile(path, folder + from, to);
    copied.push_back(from);
  }
  const Text settings = SettingsOf(folder, name);
  if (!Exists(SettingsOf(folder, older))) {
    MakeSettings(path, older, settings);
    return copied;
  }
  CopyFile(path, SettingsOf(folder, older), settings);
  copied.push_back(older + ".ini");
  return copied;
}

}  // namespace tallybook::engine
