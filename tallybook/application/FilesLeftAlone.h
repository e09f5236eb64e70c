// Files that an import is not to see. The component finds the files of a definition by itself; what the host does not let
// it import is hidden from it, from all definitions or from one.
#pragma once

#include <functional>
#include <memory>
#include <vector>

#include "base/Types.h"
#include "platform/FileSystem.h"

namespace tallybook::application {

// While it lives, these files are neither found nor opened by way of the installed platform's file system; everything else
// of that is as it was, and so are the files. One at a time; the platform stays installed longer.
class FilesLeftAlone {
 public:
  explicit FilesLeftAlone(const std::vector<Text>& paths);
  // Files that one definition is not to see. `definition_at_work` gives the number of the one that looks for files; it is
  // asked at each look.
  struct OfDefinition {
    Integer definition = 0;
    Text path = {};
  };
  FilesLeftAlone(const std::vector<OfDefinition>& files, std::function<Integer()> definition_at_work);
  ~FilesLeftAlone();
  FilesLeftAlone(const FilesLeftAlone&) = delete;
  FilesLeftAlone& operator=(const FilesLeftAlone&) = delete;

 private:
  explicit FilesLeftAlone(std::unique_ptr<FileSystem> files);

  FileSystem* before_;
  std::unique_ptr<FileSystem> files_;
};

}  // namespace tallybook::application
