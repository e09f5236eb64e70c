#include "tallybook/application/FilesLeftAlone.h"

#include <algorithm>
#include <set>
#include <utility>

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
  HidingFiles(FileSystem& below, const std::vector<FilesLeftAlone::OfDefinition>& files,
              std::function<Integer()> definition_at_work)
      : FileLayer(below), definition_at_work_(std::move(definition_at_work)) {
    for (const auto& file : files) hidden_.emplace(file.definition, WithSlashes(file.path));
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
  [[nodiscard]] bool IsHidden(const Text& path) const {
    return hidden_.contains({definition_at_work_(), WithSlashes(path)});
  }

  std::set<std::pair<Integer, Text>> hidden_;
  std::function<Integer()> definition_at_work_;
};

}  // namespace

FilesLeftAlone::FilesLeftAlone(const std::vector<OfDefinition>& files, std::function<Integer()> definition_at_work)
    : before_(ThePlatform().files),
      files_(std::make_unique<HidingFiles>(*ThePlatform().files, files, std::move(definition_at_work))) {
  ThePlatform().files = files_.get();
}

FilesLeftAlone::~FilesLeftAlone() {
  if (IsPlatformInstalled()) ThePlatform().files = before_;
}

}  // namespace tallybook::application
