#include "tallybook/engine/BookPlace.h"

#include <algorithm>
#include <filesystem>
#include <string>
#include <string_view>
#include <system_error>

#include "base/Failure.h"
#include "base/Texts.h"
#include "support/Utility.h"
#include "tallybook/engine/BookCompanions.h"
#include "tallybook/engine/BookHold.h"
#include "tallybook/engine/FileState.h"

namespace tallybook::engine {

namespace {

namespace fs = std::filesystem;

constexpr const char* kSource = "Tallybook.Book";
// As many links in a row as the system itself follows.
constexpr int kMostLinks = 40;
constexpr std::string_view kEnding = ".tbk";

Text FileOf(const Text& path) {
  return path.substr(path.find_last_of("/\\") + 1);
}

bool IsAnotherBook(const fs::path& entry, const Text& path) {
  std::error_code ignored;  // what cannot be asked is no book
  if (!fs::is_regular_file(fs::symlink_status(entry, ignored))) return false;
  return !StateAt(entry.string()).IsSameFile(StateAt(path)) && LooksLikeBook(entry.string());
}

const char* WordsOf(fs::file_type type) {
  switch (type) {
    case fs::file_type::directory:
      return "a folder";
    case fs::file_type::block:
    case fs::file_type::character:
      return "a device";
    case fs::file_type::fifo:
      return "a pipe";
    case fs::file_type::socket:
      return "a socket";
    default:
      return "something else";
  }
}

void CheckIsInFolder(const Text& path) {
  std::error_code error;
  const fs::file_status folder = fs::status(BookFolder(path), error);
  if (folder.type() == fs::file_type::none) {
    throw Failure(FailureNumber::kPathOrAccess, path + ": the folder cannot be looked at: " + error.message(), kSource);
  }
  if (fs::is_directory(folder)) return;
  throw Failure(FailureNumber::kPathNotFound, path + ": the folder does not exist", kSource);
}

}  // namespace

Text NativeBookPath(Text path) {
  constexpr char kSeparator = static_cast<char>(fs::path::preferred_separator);
  std::replace_if(
      path.begin(), path.end(), [](char unit) { return unit == '/' || unit == '\\'; }, kSeparator);
  return path;
}

Text ResolvedBookPath(const Text& path) {
  fs::path file(NativeBookPath(path));
  std::error_code error;
  for (int links = 0; fs::is_symlink(fs::symlink_status(file, error)); ++links) {
    if (links == kMostLinks) {
      throw Failure(FailureNumber::kPathOrAccess, path + ": this link leads in a circle", kSource);
    }
    const fs::path target = fs::read_symlink(file, error);
    if (error) {
      throw Failure(FailureNumber::kPathOrAccess, path + ": this link cannot be read: " + error.message(), kSource);
    }
    file = target.is_absolute() ? target : file.parent_path() / target;
  }
  return file.string();
}

void CheckIsBookFile(const Text& path) {
  CheckIsInFolder(path);
  std::error_code ignored;  // what cannot be asked is not there, or is refused when it is opened
  const fs::file_status status = fs::status(path, ignored);
  if (status.type() == fs::file_type::none) return;
  if (!fs::exists(status)) throw Failure(FailureNumber::kFileNotFound, path + ": there is no such file", kSource);
  if (!fs::is_regular_file(status)) {
    throw Failure(FailureNumber::kPathOrAccess, path + ": this is " + WordsOf(status.type()) + ", not a book", kSource);
  }
  const auto names = fs::hard_link_count(path, ignored);
  if (!ignored && names > 1) {
    throw Failure(FailureNumber::kPathOrAccess,
                  path + ": the file has " + std::to_string(names) +
                      " names (hard links); a book must have one only, because its log and its lock go by the name",
                  kSource);
  }
}

Text BookFolder(const Text& path) {
  const std::size_t separator = path.find_last_of("/\\");
  return separator == Text::npos ? Text("./") : path.substr(0, separator + 1);
}

Text BookName(const Text& path) {
  const Text file = FileOf(path);
  const bool has_ending = file.size() > kEnding.size() && file.ends_with(kEnding);
  return has_ending ? file.substr(0, file.size() - kEnding.size()) : file;
}

Text OlderBookName(const Text& path) {
  const Text file = FileOf(path);
  const std::size_t point = file.rfind('.');
  return point == Text::npos || point == 0 ? file : file.substr(0, point);
}

std::vector<Text> NameTroubles(const Text& path) {
  const Text name = BookName(path);
  std::vector<Text> troubles;
  if (name.find_first_of("*?") != Text::npos) {
    troubles.push_back("the name of the book, \"" + name + "\", holds * or ?, which stand for other names");
  }
  std::error_code error;  // a folder that cannot be listed shows no other book
  for (fs::directory_iterator entry(BookFolder(path), error), end; !error && entry != end; entry.increment(error)) {
    const Text other = entry->path().string();
    if (UpperCase(BookName(other)) != UpperCase(name) || !IsAnotherBook(entry->path(), path)) continue;
    troubles.push_back("the name of the book, \"" + name + "\", " +
                       (BookName(other) == name ? "is" : "differs only in case from") + " that of the book " +
                       FileOf(other) + " beside it");
  }
  for (const Text& owner : PossibleOwners(path)) {
    if (IsAnotherBook(owner, path))
      troubles.push_back("a file of this name would be taken for a file of the book " + FileOf(owner) + " beside it");
  }
  std::sort(troubles.begin(), troubles.end());
  return troubles;
}

}  // namespace tallybook::engine
