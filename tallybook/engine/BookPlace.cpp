#include "tallybook/engine/BookPlace.h"

#include <algorithm>
#include <filesystem>
#include <string>
#include <system_error>

#include "support/Failure.h"

namespace tallybook::engine {

namespace {

namespace fs = std::filesystem;

constexpr const char* kSource = "Tallybook.Book";
// As many links in a row as the system itself follows.
constexpr int kMostLinks = 40;

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
  std::error_code ignored;  // what cannot be asked is not there, or is refused when it is opened
  if (!fs::is_directory(BookFolder(path), ignored)) {
    throw Failure(FailureNumber::kPathNotFound, path + ": the folder does not exist", kSource);
  }
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
  const std::size_t separator = path.find_last_of("/\\");
  Text name = separator == Text::npos ? path : path.substr(separator + 1);
  const std::size_t dot = name.rfind('.');
  if (dot != Text::npos && dot != 0) name.erase(dot);
  return name;
}

}  // namespace tallybook::engine
