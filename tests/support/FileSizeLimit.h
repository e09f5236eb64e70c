// Files of this process may not grow beyond so many bytes while it lives: a full disk, for tests of real files.
#pragma once

#include <csignal>
#include <sys/resource.h>

#include "base/Failure.h"

namespace tallybook::testing {

class FileSizeLimit {
 public:
  explicit FileSizeLimit(rlim_t bytes) {
    const bool asked = ::getrlimit(RLIMIT_FSIZE, &before_) == 0;
    const rlimit limit{bytes, before_.rlim_max};
    if (!asked || ::setrlimit(RLIMIT_FSIZE, &limit) != 0) {
      throw Failure(FailureNumber::kInternal, "Cannot limit the size of files");
    }
    // Without this the limit is told by a signal that ends the process.
    signal_ = std::signal(SIGXFSZ, SIG_IGN);
  }
  ~FileSizeLimit() {
    ::setrlimit(RLIMIT_FSIZE, &before_);
    std::signal(SIGXFSZ, signal_);
  }
  FileSizeLimit(const FileSizeLimit&) = delete;
  FileSizeLimit& operator=(const FileSizeLimit&) = delete;

 private:
  rlimit before_{};
  void (*signal_)(int) = nullptr;
};

}  // namespace tallybook::testing
