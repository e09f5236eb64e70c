#include "tallybook/preview/OverlayFileSystem.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <system_error>
#include <utility>

#include "base/Failure.h"
#include "base/Wildcard.h"
#include "platform/Clock.h"
#include "platform/Platform.h"
#include "tallybook/preview/TemporaryFile.h"

namespace tallybook::preview {

namespace {

constexpr const char* kSource = "FileSystem";

[[noreturn]] void Fail(FailureNumber number, const Text& deed, const Text& path, const Text& why) {
  throw Failure(number, "Cannot " + deed + " \"" + path + "\": " + why, kSource);
}

struct PathParts {
  Text folder;  // with its separator; empty for the folder at hand
  Text name;
};

PathParts PartsOf(const Text& path) {
  const std::size_t name_at = path.find_last_of("\\/") + 1;
  return {path.substr(0, name_at), path.substr(name_at)};
}

// The folder as the system has it, with links followed as far as it is there.
Text FolderKey(Text folder) {
  std::ranges::replace(folder, '\\', '/');
  std::error_code error;
  const std::filesystem::path known = std::filesystem::weakly_canonical(folder.empty() ? "." : folder, error);
  Text key = error ? folder : known.lexically_normal().string();
  if (!key.ends_with('/')) key += '/';
  return key;
}

Text KeyOf(const Text& path) {
  const PathParts parts = PartsOf(path);
  return FolderKey(parts.folder) + parts.name;
}

}  // namespace

// What was written, for as long as somebody has it.
class OverlayFileSystem::Contents {
 public:
  void Clear() { size_ = 0; }
  [[nodiscard]] long long Size() const { return size_; }
  std::size_t ReadAt(long long offset, std::span<std::byte> into) {
    if (offset >= size_) return 0;
    const auto count = static_cast<std::size_t>(std::min(static_cast<long long>(into.size()), size_ - offset));
    file_.ReadAt(offset, into.first(count));
    return count;
  }
  void WriteAt(long long offset, std::span<const std::byte> from) {
    FillTo(offset);
    file_.WriteAt(offset, from);
    size_ = std::max(size_, offset + static_cast<long long>(from.size()));
  }

 private:
  // What is left out holds zeros, also where there was something before it was cleared.
  void FillTo(long long offset) {
    const std::array<std::byte, 4096> zeros{};
    while (size_ < offset) {
      const auto count = std::min(static_cast<long long>(zeros.size()), offset - size_);
      file_.WriteAt(size_, std::span(zeros).first(static_cast<std::size_t>(count)));
      size_ += count;
    }
  }

  TemporaryFile file_;
  long long size_ = 0;
};

class OverlayFileSystem::Written : public OpenFile {
 public:
  Written(std::shared_ptr<Contents> contents, Access access, Text path)
      : contents_(std::move(contents)), access_(access), path_(std::move(path)) {}
  std::size_t ReadAt(long long offset, std::span<std::byte> into) override {
    if (access_ == Access::kWrite) Fail(FailureNumber::kPermissionDenied, "read", path_, "it is open for writing only");
    return contents_->ReadAt(offset, into);
  }
  void WriteAt(long long offset, std::span<const std::byte> from) override {
    if (access_ == Access::kRead) Fail(FailureNumber::kPermissionDenied, "write", path_, "it is open for reading only");
    contents_->WriteAt(offset, from);
  }
  long long Size() override { return contents_->Size(); }
  void Close() override {}

 private:
  std::shared_ptr<Contents> contents_;
  Access access_;
  Text path_;
};

OverlayFileSystem::Entry* OverlayFileSystem::Find(const Text& path, Text& key) {
  key = KeyOf(path);
  const auto found = entries_.find(key);
  return found == entries_.end() ? nullptr : &found->second;
}

std::shared_ptr<OverlayFileSystem::Contents> OverlayFileSystem::ReadBelow(const Text& path) {
  auto contents = std::make_shared<Contents>();
  const auto from = below_.Open(path, Access::kRead, Sharing::kLockWrite, Creation::kMustExist);
  std::vector<std::byte> buffer(std::size_t{64} * 1024);
  for (long long offset = 0;;) {
    const std::size_t count = from->ReadAt(offset, buffer);
    if (count == 0) return contents;
    contents->WriteAt(offset, std::span(buffer).first(count));
    offset += static_cast<long long>(count);
  }
}

std::unique_ptr<OpenFile> OverlayFileSystem::Open(const Text& path, Access access, Sharing sharing, Creation creation) {
  Text key;
  Entry* entry = Find(path, key);
  const bool there = entry != nullptr ? entry->IsThere() : below_.Attributes(path).found;
  if (!there && creation == Creation::kMustExist) Fail(FailureNumber::kFileNotFound, "open", path, "there is no file");
  const Text source = entry == nullptr ? path : entry->below;
  if (there && access == Access::kRead && creation != Creation::kReplace && !source.empty()) {
    return below_.Open(source, access, sharing, Creation::kMustExist);
  }
  if (!there && !below_.Attributes(FolderKey(PartsOf(path).folder)).directory) {
    Fail(FailureNumber::kPathNotFound, "open", path, "its folder does not exist");
  }
  if (there && below_.Attributes(source).directory) Fail(FailureNumber::kPathOrAccess, "open", path, "it is a folder");
  if (entry == nullptr) entry = &(entries_[key] = Entry{.name = PartsOf(path).name});
  if (entry->own == nullptr) {
    const bool keeps = there && creation != Creation::kReplace;
    entry->own = keeps ? ReadBelow(source) : std::make_shared<Contents>();
    entry->below.clear();
  } else if (creation == Creation::kReplace) {
    entry->own->Clear();
  }
  if (access != Access::kRead || !there) {
    entry->modified = ThePlatform().clock->UniversalNow();
    deeds_.push_back({.kind = FileDeedKind::kWritten, .path = path});
  }
  return std::make_unique<Written>(entry->own, access, path);
}

FileAttributes OverlayFileSystem::Attributes(const Text& path) {
  Text key;
  const Entry* entry = Find(path, key);
  if (entry == nullptr) return below_.Attributes(path);
  if (!entry->below.empty()) return below_.Attributes(entry->below);
  return {.found = entry->IsThere()};
}

// What stands at a path, which goes away from there.
OverlayFileSystem::Entry OverlayFileSystem::Take(const Text& path) {
  Text key;
  Entry* entry = Find(path, key);
  if (entry == nullptr) {
    if (need_removable_) need_removable_(path);
    const Date modified = ModifiedOf(path);
    entry = &(entries_[key] = Entry{.name = PartsOf(path).name, .below = path, .modified = modified});
  }
  Entry taken = *entry;
  entry->below.clear();
  entry->own.reset();
  return taken;
}

Date OverlayFileSystem::ModifiedOf(const Text& path) {
  const Text name = PartsOf(path).name;
  for (const FoundFile& file : below_.Find(path)) {
    if (file.name == name) return file.modified;
  }
  return kNoDate;
}

namespace {

void NeedFile(const FileAttributes& attributes, const Text& deed, const Text& path) {
  if (!attributes.found) Fail(FailureNumber::kFileNotFound, deed, path, "there is no file");
  if (attributes.directory) Fail(FailureNumber::kPathOrAccess, deed, path, "it is a folder");
}

}  // namespace

void OverlayFileSystem::Delete(const Text& path) {
  NeedFile(Attributes(path), "delete", path);
  (void)Take(path);
  deeds_.push_back({.kind = FileDeedKind::kDeleted, .path = path});
}

void OverlayFileSystem::Rename(const Text& old_path, const Text& new_path) {
  NeedFile(Attributes(old_path), "rename", old_path);
  if (Attributes(new_path).found) Fail(FailureNumber::kPathOrAccess, "rename to", new_path, "there is a file");
  Entry taken = Take(old_path);
  taken.name = PartsOf(new_path).name;
  entries_[KeyOf(new_path)] = std::move(taken);
  deeds_.push_back({.kind = FileDeedKind::kRenamed, .path = old_path, .new_path = new_path});
}

void OverlayFileSystem::Copy(const Text& from_path, const Text& to_path) {
  NeedFile(Attributes(from_path), "copy", from_path);
  const auto from = Open(from_path, Access::kRead, Sharing::kLockWrite, Creation::kMustExist);
  const auto to = Open(to_path, Access::kWrite, Sharing::kLockReadWrite, Creation::kReplace);
  std::vector<std::byte> buffer(std::size_t{64} * 1024);
  for (long long offset = 0;;) {
    const std::size_t count = from->ReadAt(offset, buffer);
    if (count == 0) return;
    to->WriteAt(offset, std::span(buffer).first(count));
    offset += static_cast<long long>(count);
  }
}

std::vector<FoundFile> OverlayFileSystem::Find(const Text& pattern) {
  std::vector<FoundFile> found = below_.Find(pattern);
  const PathParts parts = PartsOf(pattern);
  const Text folder = FolderKey(parts.folder);
  std::erase_if(found, [&](const FoundFile& file) { return entries_.contains(folder + file.name); });
  for (auto entry = entries_.lower_bound(folder); entry != entries_.end() && entry->first.starts_with(folder);
       ++entry) {
    const bool here = entry->first.size() == folder.size() + entry->second.name.size();
    if (!here || !entry->second.IsThere() || !MatchesWildcard(entry->second.name, parts.name)) continue;
    found.push_back({entry->second.name, entry->second.modified});
  }
  std::ranges::sort(found, [](const FoundFile& a, const FoundFile& b) { return ComesBefore(a.name, b.name); });
  return found;
}

}  // namespace tallybook::preview
