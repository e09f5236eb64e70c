// A FILE of the command line that may be standard input.
#pragma once

#include <optional>

#include "tallybook/application/StandardStreams.h"
#include "tallybook/application/WholeFiles.h"

namespace tallybook::cli {

// While it lives, "-" stands for standard input, which was read to its end into a private file. Does nothing for a file
// that the user named.
class SpooledInput {
 public:
  // `files` must outlive this. Fails as SpoolStandardInput does.
  SpooledInput(application::WholeFiles& files, const Text& name);

 private:
  std::optional<application::PrivateFolder> folder_;
};

}  // namespace tallybook::cli
