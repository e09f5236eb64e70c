#include "tallybook/engine/BookCompanions.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>
#include <string_view>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>
#include <utility>

#include "base/Failure.h"
#include "base/Texts.h"
#include "platform/posix/Descriptor.h"
#include "platform/posix/SystemError.h"
#include "platform/posix/WriteAll.h"
#include "tallybook/engine/BookPlace.h"
#include "tallybook/files/FileNames.h"

namespace tallybook::engine {

namespace {

namespace fs = std::filesystem;

constexpr const char* kSource = "Tallybook.Book";
constexpr std::array<std::string_view, 3> kPrefixes{"TBQDX", "TBQDBU", "KVQDX"};
constexpr std::array<std::string_view, 4> kLogEndings{"-wal", "-shm", "-lock", "-journal"};
constexpr std::string_view kSettingsEnding = ".ini";

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

Text LastPartOf(const Text& path) {
  return path.substr(path.find_last_of("/\\") + 1);
}

// A log that holds something, beside where its book would stand.
Text LogBeside(const Text& path) {
  for (const char* ending : {"-wal", "-journal"}) {
    std::error_code ignored;  // what cannot be asked is not there
    if (const auto size = fs::file_size(path + ending, ignored); !ignored && size > 0) return path + ending;
  }
  return "";
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

Text ReadWhole(const Text& path) {
  std::error_code ignored;  // what cannot be asked cannot be read either
  const fs::file_status status = fs::status(path, ignored);
  if (fs::exists(status) && !fs::is_regular_file(status)) {
    throw Failure(FailureNumber::kPathOrAccess, path + ": this companion file of the book is no file to be read",
                  kSource);
  }
  std::ifstream file(path, std::ios::binary);
  std::ostringstream content;
  if (file && file.peek() != std::ifstream::traits_type::eof()) content << file.rdbuf();
  if (file.is_open() && !file.bad() && content) return std::move(content).str();
  throw Failure(FailureNumber::kPermissionDenied, path + ": this companion file of the book cannot be read", kSource);
}

[[noreturn]] void FailPut(int error, const Text& path) {
  throw Failure(FailureNumberOf(error),
                path + ": this companion file of the book cannot be put in place: " + WordsOfError(error), kSource);
}

// Writes all of a new file, and hands it to the disk.
void WriteNew(const Text& path, const Text& content, const struct stat& book) {
  Descriptor file(::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC | O_NOFOLLOW, S_IRUSR | S_IWUSR));
  if (!file.IsOpen()) FailPut(errno, path);
  int error = WriteAll(file.Number(), content.data(), content.size());
  // By root alone: others' files belong to them already.
  if (::geteuid() == 0) (void)!::fchown(file.Number(), book.st_uid, book.st_gid);
  if (error == 0 && (::fchmod(file.Number(), book.st_mode & 0666U) != 0 || ::fsync(file.Number()) != 0)) error = errno;
  if (file.Close() != 0 && error == 0) error = errno;
  if (error != 0) FailPut(error, path);
}

void PutOne(const Text& path, const Text& content, const struct stat& book) {
  const Text place = ResolvedBookPath(path);
  if (Exists(place) && ReadWhole(place) == content) return;
  const Text work_path = place + "-new";
  try {
    WriteNew(work_path, content, book);
    if (::rename(work_path.c_str(), place.c_str()) != 0) FailPut(errno, place);
  } catch (...) {
    ::unlink(work_path.c_str());
    throw;
  }
}

}  // namespace

bool IsDefinitionName(const Text& file) {
  const Text capitals = UpperCase(file);
  return std::ranges::any_of(kPrefixes, [&](std::string_view prefix) {
    if (!capitals.starts_with(prefix)) return false;
    const std::size_t end = capitals.find_first_not_of("0123456789", prefix.size());
    return end != Text::npos && end > prefix.size() && capitals[end] == '.';
  });
}

std::vector<Text> PossibleOwners(const Text& path) {
  const Text file = LastPartOf(path);
  std::vector<Text> owners;
  for (const std::string_view ending : kLogEndings) {
    if (file.ends_with(ending) && file.size() > ending.size())
      owners.push_back(path.substr(0, path.size() - ending.size()));
  }
  Text name;
  if (file.ends_with(kSettingsEnding)) name = file.substr(0, file.size() - kSettingsEnding.size());
  if (IsDefinitionName(file)) name = file.substr(file.find('.') + 1);
  if (!name.empty()) {
    for (const char* ending : {".tbk", ""}) owners.push_back(BookFolder(path) + name + ending);
  }
  return owners;
}

Text CompanionPath(const Text& folder, const Text& stem, const Text& name) {
  return stem.empty() ? SettingsOf(folder, name) : folder + CompanionOf(stem, name);
}

std::vector<Text> CompanionPaths(const Text& folder, const Text& name) {
  std::vector<Text> paths;
  for (const Text& stem : StemsOf(folder, name)) paths.push_back(folder + CompanionOf(stem, name));
  if (Exists(SettingsOf(folder, name))) paths.push_back(SettingsOf(folder, name));
  return paths;
}

std::vector<Companion> ReadCompanions(const Text& folder, const Text& name) {
  std::vector<Companion> companions;
  for (const Text& stem : StemsOf(folder, name)) {
    companions.push_back({stem, ReadWhole(folder + CompanionOf(stem, name))});
  }
  if (Exists(SettingsOf(folder, name))) companions.push_back({"", ReadWhole(SettingsOf(folder, name))});
  return companions;
}

Text StrayCompanionTrouble(const Text& path) {
  const std::vector<Text> companions = CompanionPaths(BookFolder(path), BookName(path));
  const Text stray = companions.empty() ? LogBeside(path) : companions.front();
  if (stray.empty()) return "";
  return "there is no book, but " + stray + ", which would belong to it; move that away first";
}

void RefuseStrayCompanions(const Text& path) {
  const Text trouble = StrayCompanionTrouble(path);
  if (!trouble.empty()) throw Failure(FailureNumber::kPathOrAccess, path + ": " + trouble, kSource);
}

void PutCompanions(const Text& path, const std::vector<Companion>& companions) {
  const Text folder = BookFolder(path);
  const Text name = BookName(path);
  struct stat book {};
  if (::stat(path.c_str(), &book) != 0) FailPut(errno, path);
  std::set<Text> kept;
  for (const Companion& companion : companions) {
    const Text place = CompanionPath(folder, companion.stem, name);
    PutOne(place, companion.content, book);
    kept.insert(place);
  }
  for (const Text& there : CompanionPaths(folder, name)) {
    if (!kept.contains(there) && ::unlink(there.c_str()) != 0) FailPut(errno, there);
  }
  files::StoreFolder(folder);
}

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
