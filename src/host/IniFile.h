// A settings file of sections, keys and text values. The component makes one for each use through the factory, sets
// file and section, reads or writes, and drops it.
#pragma once

#include "base/Types.h"

namespace tallybook {

class IniFile {
 public:
  virtual ~IniFile() = default;

  // The file need not exist; a file that is missing reads as empty.
  virtual void SetFileName(const Text& path) = 0;
  virtual void SetSection(const Text& section) = 0;

  // The value under the section, or `default_value` where file, section or key is missing.
  [[nodiscard]] virtual Text ReadValue(const Text& key, const Text& default_value) const = 0;

  // Stores a value under the section at once; fails with a host failure where the file cannot be written.
  virtual void WriteValue(const Text& key, const Text& value) = 0;
};

}  // namespace tallybook
