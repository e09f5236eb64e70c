// A file system that hands every call on to another: what a layer over the platform's files begins with, so that it
// tells only what it does otherwise. Owns nothing; the file system below must outlive it. One thread.
#pragma once

#include <concepts>

#include "platform/FileSystem.h"

namespace tallybook::application {

class FileLayer : public FileSystem {
 public:
  // Over any file system, another layer among them: that one is laid under this, and never copied.
  template <std::derived_from<FileSystem> Files>
  explicit FileLayer(Files& below) : below_(below) {}
  FileLayer(const FileLayer&) = delete;
  FileLayer& operator=(const FileLayer&) = delete;

  [[nodiscard]] std::unique_ptr<OpenFile> Open(const Text& path, Access access, Sharing sharing,
                                               Creation creation) override {
    return below_.Open(path, access, sharing, creation);
  }
  [[nodiscard]] FileAttributes Attributes(const Text& path) override { return below_.Attributes(path); }
  void Delete(const Text& path) override { below_.Delete(path); }
  void Rename(const Text& old_path, const Text& new_path) override { below_.Rename(old_path, new_path); }
  void Copy(const Text& from_path, const Text& to_path) override { below_.Copy(from_path, to_path); }
  [[nodiscard]] std::vector<FoundFile> Find(const Text& pattern) override { return below_.Find(pattern); }
  [[nodiscard]] char Separator() const override { return below_.Separator(); }

 protected:
  [[nodiscard]] FileSystem& Below() const { return below_; }

 private:
  FileSystem& below_;
};

}  // namespace tallybook::application
