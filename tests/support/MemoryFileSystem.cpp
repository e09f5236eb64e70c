#include "tests/support/MemoryFileSystem.h"

#include <algorithm>
#include <cstring>
#include <functional>
#include <span>
#include <utility>

#include "base/Failure.h"
#include "base/Wildcard.h"

namespace tallybook::testing {

namespace {

Text Normal(Text path) {
  std::replace(path.begin(), path.end(), '\\', '/');
  return path;
}

[[noreturn]] void Fail(FailureNumber number, const Text& path, const Text& reason) {
  throw Failure(number, "\"" + path + "\": " + reason, "MemoryFileSystem");
}

// True where a holder forbids what the other one would do.
bool Forbids(const MemoryFileSystem::Holder& holder, Access access) {
  if (holder.sharing == Sharing::kShared) return false;
  return access != Access::kRead || holder.sharing == Sharing::kLockReadWrite;
}

bool Contradict(const MemoryFileSystem::Holder& one, const MemoryFileSystem::Holder& other) {
  return Forbids(one, other.access) || Forbids(other, one.access);
}

class MemoryFile : public OpenFile {
 public:
  MemoryFile(std::shared_ptr<MemoryFileSystem::File> file, MemoryFileSystem::Holder holder, Text path,
             std::function<Date()> time)
      : file_(std::move(file)), holder_(holder), path_(std::move(path)), time_(std::move(time)) {
    file_->holders.push_back(&holder_);
  }
  ~MemoryFile() override { LetGo(); }
  MemoryFile(const MemoryFile&) = delete;
  MemoryFile& operator=(const MemoryFile&) = delete;

  std::size_t ReadAt(long long offset, std::span<std::byte> into) override {
    if (holder_.access == Access::kWrite) Fail(FailureNumber::kPermissionDenied, path_, "open for writing only");
    const auto size = static_cast<long long>(file_->bytes.size());
    if (offset >= size) return 0;
    const std::size_t count = std::min(into.size(), static_cast<std::size_t>(size - offset));
    std::memcpy(into.data(), file_->bytes.data() + offset, count);
    return count;
  }
  void WriteAt(long long offset, std::span<const std::byte> from) override {
    if (holder_.access == Access::kRead) Fail(FailureNumber::kPermissionDenied, path_, "open for reading only");
    if (from.empty()) return;
    const std::size_t start = static_cast<std::size_t>(offset);
    if (file_->bytes.size() < start + from.size()) file_->bytes.resize(start + from.size());
    std::copy(from.begin(), from.end(), file_->bytes.begin() + offset);
    file_->modified = time_();
  }
  long long Size() override { return static_cast<long long>(file_->bytes.size()); }
  void Close() override { LetGo(); }

 private:
  void LetGo() { std::erase(file_->holders, &holder_); }

  std::shared_ptr<MemoryFileSystem::File> file_;
  MemoryFileSystem::Holder holder_;
  Text path_;
  std::function<Date()> time_;
};

}  // namespace

void MemoryFileSystem::Put(const Text& path, const std::string& bytes) {
  auto& file = files_[Normal(path)];
  if (file == nullptr) file = std::make_shared<File>();
  const auto content = std::as_bytes(std::span(bytes));
  file->bytes.assign(content.begin(), content.end());
  file->modified = Time();
}

std::string MemoryFileSystem::Bytes(const Text& path) const {
  const auto file = At(path);
  std::string bytes(file->bytes.size(), '\0');
  std::transform(file->bytes.begin(), file->bytes.end(), bytes.begin(),
                 [](std::byte b) { return static_cast<char>(b); });
  return bytes;
}

bool MemoryFileSystem::Has(const Text& path) const {
  return files_.contains(Normal(path));
}

void MemoryFileSystem::SetModified(const Text& path, Date modified) {
  At(path)->modified = modified;
}

void MemoryFileSystem::AddFolder(const Text& path) {
  Text normal = Normal(path);
  while (normal.size() > 1 && normal.back() == '/') normal.pop_back();
  folders_.insert(normal);
}

int MemoryFileSystem::OpenHandles() const {
  std::size_t handles = 0;
  for (const auto& [path, file] : files_) handles += file->holders.size();
  return static_cast<int>(handles);
}

std::shared_ptr<MemoryFileSystem::File> MemoryFileSystem::At(const Text& path) const {
  const auto found = files_.find(Normal(path));
  if (found == files_.end()) Fail(FailureNumber::kFileNotFound, path, "no such file");
  return found->second;
}

bool MemoryFileSystem::IsFolder(const Text& normal) const {
  if (normal.empty()) return false;
  if (folders_.contains(normal)) return true;
  const Text inside = normal.back() == '/' ? normal : normal + "/";
  const auto first = files_.lower_bound(inside);
  return first != files_.end() && first->first.starts_with(inside);
}

std::unique_ptr<OpenFile> MemoryFileSystem::Open(const Text& path, Access access, Sharing sharing, Creation creation) {
  const Text normal = Normal(path);
  if (normal.empty()) Fail(FailureNumber::kFileNotFound, path, "no name");
  if (IsFolder(normal)) Fail(FailureNumber::kPathOrAccess, path, "a directory");
  if (!Has(path)) {
    if (creation == Creation::kMustExist) Fail(FailureNumber::kFileNotFound, path, "no such file");
    Put(path, "");
  }
  const auto file = At(path);
  const Holder holder{access, sharing};
  for (const Holder* other : file->holders)
    if (Contradict(holder, *other)) Fail(FailureNumber::kPermissionDenied, path, "in use");
  if (creation == Creation::kReplace) Put(path, "");
  return std::make_unique<MemoryFile>(file, holder, path, [this] { return Time(); });
}

FileAttributes MemoryFileSystem::Attributes(const Text& path) {
  Text normal = Normal(path);
  FileAttributes attributes;
  attributes.directory = IsFolder(normal);
  attributes.found = attributes.directory || files_.contains(normal);
  return attributes;
}

void MemoryFileSystem::Delete(const Text& path) {
  if (IsFolder(Normal(path))) Fail(FailureNumber::kPathOrAccess, path, "a directory");
  if (!At(path)->holders.empty()) Fail(FailureNumber::kPermissionDenied, path, "in use");
  files_.erase(Normal(path));
}

void MemoryFileSystem::Rename(const Text& old_path, const Text& new_path) {
  const auto file = At(old_path);
  if (!file->holders.empty()) Fail(FailureNumber::kPermissionDenied, old_path, "in use");
  if (Attributes(new_path).found) Fail(FailureNumber::kPathOrAccess, new_path, "there already");
  files_.erase(Normal(old_path));
  files_[Normal(new_path)] = file;
}

void MemoryFileSystem::Copy(const Text& from_path, const Text& to_path) {
  const auto from = Open(from_path, Access::kRead, Sharing::kLockWrite, Creation::kMustExist);
  const auto to = Open(to_path, Access::kWrite, Sharing::kLockReadWrite, Creation::kReplace);
  to->WriteAt(0, At(from_path)->bytes);
}

std::vector<FoundFile> MemoryFileSystem::Find(const Text& pattern) {
  const Text normal = Normal(pattern);
  const std::size_t name_at = normal.find_last_of('/') + 1;
  std::vector<FoundFile> found;
  for (const auto& [path, file] : files_) {
    if (path.find_last_of('/') + 1 != name_at || path.compare(0, name_at, normal, 0, name_at) != 0) continue;
    const Text name = path.substr(name_at);
    if (MatchesWildcard(name, normal.substr(name_at))) found.push_back({name, file->modified});
  }
  std::sort(found.begin(), found.end(),
            [](const FoundFile& file, const FoundFile& other) { return ComesBefore(file.name, other.name); });
  return found;
}

}  // namespace tallybook::testing
