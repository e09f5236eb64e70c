// A file system laid over another: deletes, renames, copies and what is written are noted and not done below, while
// searches, attributes and opens see them as done. So an operation that runs on it leaves every file as it was, and
// says afterwards what would have become of them.
//
// A file that is written stands in a temporary file (TemporaryFile.h) that holds what it held below; nobody else sees
// it, so it is not shared with other processes. Two paths are one file where their folders are, links followed; links
// to files are files of their own, as for a delete. The file system below outlives this. One thread.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <vector>

#include "platform/FileSystem.h"

namespace tallybook::preview {

enum class FileDeedKind { kDeleted, kRenamed, kWritten };

// What was noted. A copy is a file that was written.
struct FileDeed {
  FileDeedKind kind = FileDeedKind::kDeleted;
  Text path;
  Text new_path = {};  // of a renamed file
};

class OverlayFileSystem : public FileSystem {
 public:
  // `need_removable` fails where the system would refuse to take the name of a file below away: it is asked before each
  // delete and rename of one.
  using Refusal = std::function<void(const Text& path)>;
  explicit OverlayFileSystem(FileSystem& below, Refusal need_removable = {})
      : below_(below), need_removable_(std::move(need_removable)) {}

  // In the order in which they came.
  [[nodiscard]] const std::vector<FileDeed>& Deeds() const { return deeds_; }

  // FileSystem. Delete and Rename of a file that is open for reading here are refused, with 70, only where `below` or
  // `need_removable` does.
  [[nodiscard]] std::unique_ptr<OpenFile> Open(const Text& path, Access access, Sharing sharing,
                                               Creation creation) override;
  [[nodiscard]] FileAttributes Attributes(const Text& path) override;
  void Delete(const Text& path) override;
  void Rename(const Text& old_path, const Text& new_path) override;
  void Copy(const Text& from_path, const Text& to_path) override;
  [[nodiscard]] std::vector<FoundFile> Find(const Text& pattern) override;
  [[nodiscard]] char Separator() const override { return below_.Separator(); }

 private:
  class Contents;
  class Written;

  // What stands at a path otherwise than below.
  struct Entry {
    Text name;                           // the last part of the path
    Text below = {};                     // the path of the file below that stands here
    std::shared_ptr<Contents> own = {};  // or what was written; neither of them: there is no file here
    Date modified = kNoDate;
    [[nodiscard]] bool IsThere() const { return own != nullptr || !below.empty(); }
  };

  [[nodiscard]] Entry* Find(const Text& path, Text& key);
  [[nodiscard]] Entry Take(const Text& path);
  [[nodiscard]] std::shared_ptr<Contents> ReadBelow(const Text& path);
  [[nodiscard]] Date ModifiedOf(const Text& path);

  FileSystem& below_;
  Refusal need_removable_;
  std::map<Text, Entry> entries_;  // by the folder as the system has it, a slash and the name
  std::vector<FileDeed> deeds_;
};

}  // namespace tallybook::preview
