// A folder of its own for a test, removed with all it holds at the end.
#pragma once

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "base/Types.h"

namespace tallybook::testing {

class TempFolder {
 public:
  TempFolder();
  ~TempFolder();
  TempFolder(const TempFolder&) = delete;
  TempFolder& operator=(const TempFolder&) = delete;

  // The path of a name in the folder; Path() is the folder with a separator at its end.
  [[nodiscard]] Text Path(const Text& name = "") const { return path_ + "/" + name; }
  // Makes or replaces a file past the component's own file operations, and reads one.
  void Write(const Text& name, const std::string& bytes) const {
    std::ofstream(Path(name), std::ios::binary | std::ios::trunc) << bytes;
  }
  [[nodiscard]] std::string Read(const Text& name) const {
    std::ifstream file(Path(name), std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
  }
  [[nodiscard]] bool Has(const Text& name) const { return std::filesystem::exists(Path(name)); }

 private:
  Text path_;
};

}  // namespace tallybook::testing
