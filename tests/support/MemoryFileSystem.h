// Files in memory, for exact bytes and for readers that are run many thousand times. Sharing, wildcards and the numbers
// of failures are those of the real thing. Folders need not be made: every folder exists; one that holds a file, or was
// named by AddFolder, answers as a directory.
#pragma once

#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "platform/Clock.h"
#include "platform/FileSystem.h"

namespace tallybook::testing {

class MemoryFileSystem : public FileSystem {
 public:
  // Where `clock` is given, files take their times, universal ones, from it; it is not owned. Otherwise the time is 0
  // until SetModified.
  explicit MemoryFileSystem(Clock* clock = nullptr) : clock_(clock) {}

  // Makes or replaces a file, whoever has it open.
  void Put(const Text& path, const std::string& bytes);
  // What a file holds. Failure 53 where there is none.
  [[nodiscard]] std::string Bytes(const Text& path) const;
  [[nodiscard]] bool Has(const Text& path) const;
  void SetModified(const Text& path, Date modified);
  void AddFolder(const Text& path);
  // How many handles are open now.
  [[nodiscard]] int OpenHandles() const;

  [[nodiscard]] std::unique_ptr<OpenFile> Open(const Text& path, Access access, Sharing sharing,
                                               Creation creation) override;
  [[nodiscard]] FileAttributes Attributes(const Text& path) override;
  void Delete(const Text& path) override;
  void Rename(const Text& old_path, const Text& new_path) override;
  void Copy(const Text& from_path, const Text& to_path) override;
  [[nodiscard]] std::vector<FoundFile> Find(const Text& pattern) override;
  [[nodiscard]] char Separator() const override { return '/'; }

  struct Holder {
    Access access;
    Sharing sharing;
  };
  struct File {
    std::vector<std::byte> bytes;
    Date modified = 0;
    std::vector<const Holder*> holders;
  };

 private:
  [[nodiscard]] Date Time() const { return clock_ == nullptr ? 0 : clock_->UniversalNow(); }
  // The file at a path. Failure 53 where there is none.
  [[nodiscard]] std::shared_ptr<File> At(const Text& path) const;
  [[nodiscard]] bool IsFolder(const Text& normal) const;

  Clock* clock_;
  std::map<Text, std::shared_ptr<File>> files_;  // by path with `/` only
  std::set<Text> folders_;
};

}  // namespace tallybook::testing
