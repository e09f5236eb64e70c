#include "tests/support/TempFolder.h"

#include <cerrno>
#include <cstdlib>
#include <system_error>

namespace tallybook::testing {

TempFolder::TempFolder() : path_((std::filesystem::temp_directory_path() / "tallybook-test-XXXXXX").string()) {
  if (::mkdtemp(path_.data()) == nullptr)
    throw std::system_error(errno, std::generic_category(), "Cannot make the folder " + path_);
}

TempFolder::~TempFolder() {
  std::error_code ignored;  // what is left of a temporary folder is the system's to clear away
  std::filesystem::remove_all(path_, ignored);
}

}  // namespace tallybook::testing
