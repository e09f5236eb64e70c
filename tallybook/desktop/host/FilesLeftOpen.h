// Closes the files by number (support/Utility) that were opened while it lives and are open at its end. The component
// leaves an exchange file open that it refuses, until the same exchange object reads another; where the object goes
// before that, the file would be in use for this process, which could then neither delete nor rename it. One thread.
#pragma once

#include <set>

#include "base/Types.h"

namespace tallybook::desktop {

class FilesLeftOpen {
 public:
  FilesLeftOpen();
  ~FilesLeftOpen();
  FilesLeftOpen(const FilesLeftOpen&) = delete;
  FilesLeftOpen& operator=(const FilesLeftOpen&) = delete;

 private:
  std::set<Integer> open_before_;
};

}  // namespace tallybook::desktop
