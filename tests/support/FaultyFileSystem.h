// A file system that passes calls on to another and fails the ones that a test has asked to fail.
//
// A read that fails spoils what it was given to fill, and a write that fails has written its first half: both are
// allowed by the contract of OpenFile, and code that leans on more is found out here.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <vector>

#include "base/Failure.h"
#include "platform/FileSystem.h"

namespace tallybook::testing {

// kAny counts the calls of all the others.
enum class FileCall { kOpen, kRead, kWrite, kSize, kClose, kDelete, kRename, kCopy, kAttributes, kFind, kAny };

class FaultyFileSystem : public FileSystem {
 public:
  // `below` is not owned and must outlive this.
  explicit FaultyFileSystem(FileSystem& below) : below_(&below) {}

  // Takes `below` for all calls from here on; files that are open stay with the one before.
  void UseBelow(FileSystem& below) { below_ = &below; }

  // The `nth` call of this kind from now on (1 is the next) fails, and so do the `times` - 1 calls behind it.
  void FailNth(FileCall call, int nth, FailureNumber number, int times = 1);
  // Every call of this kind on a path that contains `part` fails, until ClearFaults.
  void FailPath(FileCall call, const Text& part, FailureNumber number);
  // Every question for the attributes of a path that contains `part` is answered with a sharing violation.
  void HideAttributes(const Text& part) { hidden_part_ = part; }
  void ClearFaults();

  // How many calls of this kind there have been, those that failed among them.
  [[nodiscard]] int Calls(FileCall call) const { return calls_[static_cast<std::size_t>(call)]; }
  // How many of the faults asked for by FailNth and FailPath have happened.
  [[nodiscard]] int FaultsRaised() const { return faults_raised_; }

  [[nodiscard]] std::unique_ptr<OpenFile> Open(const Text& path, Access access, Sharing sharing,
                                               Creation creation) override;
  [[nodiscard]] FileAttributes Attributes(const Text& path) override;
  void Delete(const Text& path) override;
  void Rename(const Text& old_path, const Text& new_path) override;
  void Copy(const Text& from_path, const Text& to_path) override;
  [[nodiscard]] std::vector<FoundFile> Find(const Text& pattern) override;
  [[nodiscard]] char Separator() const override { return below_->Separator(); }

  // Counts a call and gives the failure that is due, if any: for the files that this has opened.
  [[nodiscard]] std::optional<Failure> Fault(FileCall call, const Text& path);

 private:
  struct NthFault {
    FileCall call;
    int first;
    int last;
    FailureNumber number;
  };
  struct PathFault {
    FileCall call;
    Text part;
    FailureNumber number;
  };

  [[nodiscard]] std::optional<FailureNumber> DueFault(FileCall call, const Text& path) const;
  void Pass(FileCall call, const Text& path);

  FileSystem* below_;
  std::array<int, static_cast<std::size_t>(FileCall::kAny) + 1> calls_{};
  int faults_raised_ = 0;
  std::vector<NthFault> nth_faults_;
  std::vector<PathFault> path_faults_;
  Text hidden_part_;
};

}  // namespace tallybook::testing
