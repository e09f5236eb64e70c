// Files that an import is not to see. The component finds the files of a definition by itself; what the host does not
// let it import is hidden from the definition that is not to.
#pragma once

#include <functional>
#include <memory>
#include <vector>

#include "base/Types.h"
#include "platform/FileSystem.h"

namespace tallybook::application {

// While it lives, these files are neither found nor opened by way of the installed platform's file system where their
// definition is at work; everything else of that is as it was, and so are the files. One at a time; the platform stays
// installed longer.
class FilesLeftAlone {
 public:
  struct OfDefinition {
    Integer definition = 0;  // its number
    Text path = {};
  };
  // `definition_at_work` gives the number of the definition that looks for files; it is asked at each look.
  FilesLeftAlone(const std::vector<OfDefinition>& files, std::function<Integer()> definition_at_work);
  ~FilesLeftAlone();
  FilesLeftAlone(const FilesLeftAlone&) = delete;
  FilesLeftAlone& operator=(const FilesLeftAlone&) = delete;

 private:
  FileSystem* before_;
  std::unique_ptr<FileSystem> files_;
};

}  // namespace tallybook::application
