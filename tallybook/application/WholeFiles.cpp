#include "tallybook/application/WholeFiles.h"

#include <algorithm>
#include <utility>

#include "base/Failure.h"
#include "support/Utility.h"

namespace tallybook::application {

namespace {

Text KeyOf(Text path) {
  std::ranges::replace(path, '\\', '/');
  return path;
}

Text Replaced(Text words, const Text& from, const Text& to) {
  for (std::size_t at = words.find(from); at != Text::npos; at = words.find(from, at + to.size()))
    words.replace(at, from.size(), to);
  return words;
}

// The contents of a file that was read before.
class ShownFile : public OpenFile {
 public:
  explicit ShownFile(Text contents) : contents_(std::move(contents)) {}

  std::size_t ReadAt(long long offset, std::span<std::byte> into) override {
    if (offset >= Size()) return 0;
    const auto rest = std::as_bytes(std::span(contents_)).subspan(static_cast<std::size_t>(offset));
    const auto part = rest.first(std::min(rest.size(), into.size()));
    std::ranges::copy(part, into.begin());
    return part.size();
  }
  void WriteAt(long long /*offset*/, std::span<const std::byte> /*from*/) override {
    throw Failure(FailureNumber::kPermissionDenied, "The file is open for reading only", "WholeFiles");
  }
  long long Size() override { return static_cast<long long>(contents_.size()); }
  void Close() override {}

 private:
  Text contents_;
};

}  // namespace

// An output that is open. It is whole when all was written and it was closed; an end without a close, or with a write
// that failed and was not repeated, breaks it.
class WholeFiles::Stream : public OpenFile {
  template <typename Operation>
  auto WithUsersName(const Operation& operation) {
    try {
      return operation();
    } catch (const Failure& failure) {
      throw Failure(failure.Number(), files_.WithUsersNames(failure.Description()), failure.Source());
    }
  }

 public:
  Stream(std::unique_ptr<OpenFile> below, WholeFiles& files, Text key)
      : below_(std::move(below)), files_(files), key_(std::move(key)) {
    SetBroken(true);
  }

  std::size_t ReadAt(long long offset, std::span<std::byte> into) override {
    return WithUsersName([&] { return below_->ReadAt(offset, into); });
  }

  void WriteAt(long long offset, std::span<const std::byte> from) override {
    if (!failed_at_) failed_at_ = offset;
    WithUsersName([&] { below_->WriteAt(offset, from); });
    if (failed_at_ == offset) failed_at_.reset();
    if (Output* const output = files_.OutputOf(key_)) output->file->NoteWritten(from.size());
  }

  long long Size() override {
    return WithUsersName([&] { return below_->Size(); });
  }

  void Close() override {
    WithUsersName([&] { below_->Close(); });
    if (!failed_at_) SetBroken(false);
  }

 private:
  void SetBroken(bool broken) {
    if (Output* const output = files_.OutputOf(key_)) output->file->SetBroken(broken);
  }

  std::unique_ptr<OpenFile> below_;
  WholeFiles& files_;
  Text key_;
  std::optional<long long> failed_at_;  // of the first write that failed and was not repeated
};

WholeFiles::Output* WholeFiles::OutputOf(const Text& path) {
  const auto found = outputs_.find(KeyOf(path));
  return found == outputs_.end() ? nullptr : &found->second;
}

std::optional<Text> WholeFiles::PlaceOf(const Text& path) const {
  for (const auto& [name, place] : places_) {
    if (path == name || path.starts_with(name + ".")) return place + path.substr(name.size());
  }
  return std::nullopt;
}

// Runs an operation on an announced output and keeps the reason where it is refused.
template <typename Operation>
auto WholeFiles::Noted(const Operation& operation) {
  try {
    last_refusal_.clear();
    return operation();
  } catch (const Failure& failure) {
    last_refusal_ = WithUsersNames(failure.Description());
    throw Failure(failure.Number(), last_refusal_, failure.Source());
  }
}

std::unique_ptr<OpenFile> WholeFiles::Open(const Text& path, Access access, Sharing sharing, Creation creation) {
  if (const auto place = PlaceOf(path)) return Below().Open(*place, access, sharing, creation);
  const auto shown = shown_.find(path);
  if (shown != shown_.end() && access == Access::kRead) return std::make_unique<ShownFile>(shown->second);
  if (shown != shown_.end()) shown_.erase(shown);
  Output* const output = OutputOf(path);
  if (output == nullptr || creation == Creation::kMustExist) {
    NeedRegularFile(path);
    return Below().Open(path, access, sharing, creation);
  }
  return Noted([&] {
    const Text& work = output->file->Begin();
    return std::make_unique<Stream>(Below().Open(work, access, sharing, creation), *this, KeyOf(path));
  });
}

FileAttributes WholeFiles::Attributes(const Text& path) {
  if (const auto place = PlaceOf(path)) return Below().Attributes(*place);
  if (const Output* const output = OutputOf(path)) {
    if (!output->file->WorkPath().empty()) return Below().Attributes(output->file->WorkPath());
    return output->deleted ? FileAttributes{} : Below().Attributes(output->file->Path());
  }
  return Below().Attributes(path);
}

void WholeFiles::Delete(const Text& path) {
  if (PlaceOf(path)) return;
  shown_.erase(path);
  Output* const output = OutputOf(path);
  if (output == nullptr) {
    NeedRegularFile(path);
    if (rules_ != nullptr) rules_->NeedNoBook(path);
    if (settle_) settle_();
    return Below().Delete(path);
  }
  Noted([&] { output->file->NeedReplaceable(); });
  output->file->Drop();
  output->deleted = true;
}

void WholeFiles::Rename(const Text& old_path, const Text& new_path) {
  if (PlaceOf(old_path)) return;
  NeedRegularFile(old_path);
  shown_.erase(old_path);
  if (settle_) settle_();
  Below().Rename(old_path, new_path);
}

void WholeFiles::Copy(const Text& from_path, const Text& to_path) {
  NeedRegularFile(from_path);
  Output* const output = OutputOf(to_path);
  if (output == nullptr) {
    NeedRegularFile(to_path);
    if (rules_ != nullptr) rules_->NeedNoBook(to_path);
    return Below().Copy(from_path, to_path);
  }
  Noted([&] {
    const Text& work = output->file->Begin();
    output->file->SetBroken(true);
    const auto from = Below().Open(from_path, Access::kRead, Sharing::kLockWrite, Creation::kMustExist);
    const auto to = Below().Open(work, Access::kWrite, Sharing::kLockReadWrite, Creation::kMustExist);
    std::vector<std::byte> buffer(std::size_t{64} * 1024);
    for (long long offset = 0;;) {
      const std::size_t count = from->ReadAt(offset, buffer);
      if (count == 0) break;
      to->WriteAt(offset, std::span(buffer).first(count));
      offset += static_cast<long long>(count);
    }
    to->Close();
    output->file->SetBroken(false);
  });
}

std::vector<FoundFile> WholeFiles::Find(const Text& pattern) {
  std::vector<FoundFile> found = Below().Find(pattern);
  if (!found.empty()) return found;
  const Text folder = FilePath(pattern);
  NeedListable(folder.empty() ? "." : folder);
  // The first look may have met a folder that could not be listed just then.
  return Below().Find(pattern);
}

void WholeFiles::Announce(const Text& path, const Text& place) {
  last_refusal_.clear();
  const Text& where = place.empty() ? path : place;
  outputs_[KeyOf(path)] = Output{.name = path, .file = std::make_unique<WholeFile>(Below(), where)};
}

bool WholeFiles::Keep(const Text& path) {
  const auto output = outputs_.extract(KeyOf(path));
  return !output.empty() && output.mapped().file->Keep();
}

bool WholeFiles::Drop(const Text& path) noexcept {
  const auto found = outputs_.find(KeyOf(path));
  if (found == outputs_.end()) return false;
  const bool dropped = found->second.file->Drop();
  outputs_.erase(found);
  return dropped;
}

std::optional<Text> WholeFiles::BeginOf(const Text& path) {
  Output* const output = OutputOf(path);
  if (output == nullptr) return std::nullopt;
  return Noted([&] { return output->file->Begin(); });
}

Text WholeFiles::WithUsersNames(Text words) const {
  for (const auto& [key, output] : outputs_) {
    if (output.file->WorkPath().empty()) continue;
    words = Replaced(std::move(words), output.file->WorkPath(), output.name);
  }
  return words;
}

void WholeFiles::SetBroken(const Text& path) {
  if (Output* const output = OutputOf(path)) output->file->SetBroken(true);
}

void WholeFiles::StandFor(const Text& name, const Text& place) {
  places_[name] = place;
}

}  // namespace tallybook::application
