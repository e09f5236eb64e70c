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

// Whether a path is hidden, with "/" for every separator.
using IsHiddenPath = std::function<bool(const Text& path)>;

class HidingFiles : public FileLayer {
 public:
  HidingFiles(FileSystem& below, IsHiddenPath is_hidden) : FileLayer(below), is_hidden_(std::move(is_hidden)) {}

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
  [[nodiscard]] bool IsHidden(const Text& path) const { return is_hidden_(WithSlashes(path)); }

  IsHiddenPath is_hidden_;
};

IsHiddenPath HiddenFromAll(const std::vector<Text>& paths) {
  std::set<Text> hidden;
  for (const Text& path : paths) hidden.insert(WithSlashes(path));
  return [hidden](const Text& path) { return hidden.contains(path); };
}

IsHiddenPath HiddenFromOne(const std::vector<FilesLeftAlone::OfDefinition>& files,
                           std::function<Integer()> definition_at_work) {
  std::set<std::pair<Integer, Text>> hidden;
  for (const auto& file : files) hidden.emplace(file.definition, WithSlashes(file.path));
  return [hidden, at_work = std::move(definition_at_work)](const Text& path) {
    return hidden.contains({at_work(), path});
  };
}

}  // namespace

FilesLeftAlone::FilesLeftAlone(std::unique_ptr<FileSystem> files)
    : before_(ThePlatform().files), files_(std::move(files)) {
  ThePlatform().files = files_.get();
}

FilesLeftAlone::FilesLeftAlone(const std::vector<Text>& paths)
    : FilesLeftAlone(std::make_unique<HidingFiles>(*ThePlatform().files, HiddenFromAll(paths))) {}

FilesLeftAlone::FilesLeftAlone(const std::vector<OfDefinition>& files, std::function<Integer()> definition_at_work)
    : FilesLeftAlone(
          std::make_unique<HidingFiles>(*ThePlatform().files, HiddenFromOne(files, std::move(definition_at_work)))) {}

FilesLeftAlone::~FilesLeftAlone() {
  if (IsPlatformInstalled()) ThePlatform().files = before_;
}

}  // namespace tallybook::application
