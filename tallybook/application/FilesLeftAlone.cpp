#include "tallybook/application/FilesLeftAlone.h"

#include <algorithm>
#include <set>

#include "base/Failure.h"
#include "platform/Platform.h"
#include "support/Utility.h"
#include "tallybook/application/FileLayer.h"

namespace tallybook::application {

namespace {

Text WithSlashes(Text path) {
  std::replace(path.begin(), path.end(), '\\', '/');
  return path;
}

class HidingFiles : public FileLayer {
 public:
  HidingFiles(FileSystem& below, const std::vector<Text>& paths) : FileLayer(below) {
    for (const Text& path : paths) hidden_.insert(WithSlashes(path));
  }

  [[nodiscard]] std::unique_ptr<OpenFile> Open(const Text& path, Access access, Sharing sharing,
                                               Creation creation) override {
    if (IsHidden(path)) throw Failure(FailureNumber::kFileNotFound, "\"" + path + "\" is left alone", "FileSystem");
    return Below().Open(path, access, sharing, creation);
  }
  [[nodiscard]] FileAttributes Attributes(const Text& path) override {
    return IsHidden(path) ? FileAttributes() : Below().Attributes(path);
  }
  [[nodiscard]] std::vector<FoundFile> Find(const Text& pattern) override {
    std::vector<FoundFile> found = Below().Find(pattern);
    const Text folder = AddBackslash(FilePath(pattern));
    std::erase_if(found, [&](const FoundFile& file) { return IsHidden(folder + file.name); });
    return found;
  }

 private:
  [[nodiscard]] bool IsHidden(const Text& path) const { return hidden_.contains(WithSlashes(path)); }

  std::set<Text> hidden_;
};

}  // namespace

FilesLeftAlone::FilesLeftAlone(const std::vector<Text>& paths)
    : before_(ThePlatform().files), files_(std::make_unique<HidingFiles>(*ThePlatform().files, paths)) {
  ThePlatform().files = files_.get();
}

FilesLeftAlone::~FilesLeftAlone() {
  if (IsPlatformInstalled()) ThePlatform().files = before_;
}

}  // namespace tallybook::application
