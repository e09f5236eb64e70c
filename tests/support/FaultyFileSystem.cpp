#include "tests/support/FaultyFileSystem.h"

#include <algorithm>
#include <utility>

namespace tallybook::testing {

namespace {

constexpr std::array kCallNames{"open",   "read",   "write", "size",       "close",
                                "delete", "rename", "copy",  "attributes", "find"};

bool Covers(FileCall asked, FileCall call) {
  return asked == FileCall::kAny || asked == call;
}

class FaultyFile : public OpenFile {
 public:
  FaultyFile(std::unique_ptr<OpenFile> below, FaultyFileSystem& faults, Text path)
      : below_(std::move(below)), faults_(faults), path_(std::move(path)) {}

  std::size_t ReadAt(long long offset, std::span<std::byte> into) override {
    if (const auto failure = faults_.Fault(FileCall::kRead, path_)) {
      std::fill(into.begin(), into.end(), std::byte{0xEE});
      throw Failure(*failure);
    }
    return below_->ReadAt(offset, into);
  }
  void WriteAt(long long offset, std::span<const std::byte> from) override {
    if (const auto failure = faults_.Fault(FileCall::kWrite, path_)) {
      below_->WriteAt(offset, from.first(from.size() / 2));
      throw Failure(*failure);
    }
    below_->WriteAt(offset, from);
  }
  long long Size() override {
    if (const auto failure = faults_.Fault(FileCall::kSize, path_)) throw Failure(*failure);
    return below_->Size();
  }
  void Close() override {
    const auto failure = faults_.Fault(FileCall::kClose, path_);
    below_->Close();  // the file is closed all the same, as a real one is
    if (failure) throw Failure(*failure);
  }

 private:
  std::unique_ptr<OpenFile> below_;
  FaultyFileSystem& faults_;
  Text path_;
};

}  // namespace

void FaultyFileSystem::FailNth(FileCall call, int nth, FailureNumber number, int times) {
  const int first = Calls(call) + nth;
  nth_faults_.push_back({call, first, first + times - 1, number});
}

void FaultyFileSystem::FailPath(FileCall call, const Text& part, FailureNumber number) {
  path_faults_.push_back({call, part, number});
}

void FaultyFileSystem::ClearFaults() {
  nth_faults_.clear();
  path_faults_.clear();
  hidden_part_.clear();
}

std::optional<FailureNumber> FaultyFileSystem::DueFault(FileCall call, const Text& path) const {
  for (const NthFault& fault : nth_faults_)
    if (Covers(fault.call, call) && Calls(fault.call) >= fault.first && Calls(fault.call) <= fault.last)
      return fault.number;
  for (const PathFault& fault : path_faults_)
    if (Covers(fault.call, call) && path.find(fault.part) != Text::npos) return fault.number;
  return std::nullopt;
}

std::optional<Failure> FaultyFileSystem::Fault(FileCall call, const Text& path) {
  const auto index = static_cast<std::size_t>(call);
  ++calls_[index];
  ++calls_[static_cast<std::size_t>(FileCall::kAny)];
  const auto number = DueFault(call, path);
  if (!number) return std::nullopt;
  ++faults_raised_;
  return Failure(*number, "Asked to fail: " + Text(kCallNames[index]) + " of \"" + path + "\"", "FaultyFileSystem");
}

void FaultyFileSystem::Pass(FileCall call, const Text& path) {
  if (const auto failure = Fault(call, path)) throw Failure(*failure);
}

std::unique_ptr<OpenFile> FaultyFileSystem::Open(const Text& path, Access access, Sharing sharing, Creation creation) {
  Pass(FileCall::kOpen, path);
  return std::make_unique<FaultyFile>(below_->Open(path, access, sharing, creation), *this, path);
}

FileAttributes FaultyFileSystem::Attributes(const Text& path) {
  Pass(FileCall::kAttributes, path);
  if (!hidden_part_.empty() && path.find(hidden_part_) != Text::npos) {
    FileAttributes unknown;
    unknown.sharing_violation = true;
    return unknown;
  }
  return below_->Attributes(path);
}

void FaultyFileSystem::Delete(const Text& path) {
  Pass(FileCall::kDelete, path);
  below_->Delete(path);
}

void FaultyFileSystem::Rename(const Text& old_path, const Text& new_path) {
  Pass(FileCall::kRename, old_path);
  below_->Rename(old_path, new_path);
}

void FaultyFileSystem::Copy(const Text& from_path, const Text& to_path) {
  Pass(FileCall::kCopy, from_path);
  below_->Copy(from_path, to_path);
}

std::vector<FoundFile> FaultyFileSystem::Find(const Text& pattern) {
  Pass(FileCall::kFind, pattern);
  return below_->Find(pattern);
}

}  // namespace tallybook::testing
