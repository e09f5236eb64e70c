// The settings file of the reference host: a text of sections and keys in UTF-8 (IniText tells its rules).
//
// Nothing is held between calls: each read and each write goes to the file as it stands, so that several objects and
// several processes see each other's values. Two processes that write at the same moment: the later one wins with its
// key, and the earlier key may be lost; the file is whole in every case.
#pragma once

#include <utility>

#include "host/IniFile.h"

namespace tallybook::settings {

class SettingsFile : public IniFile {
 public:
  SettingsFile() = default;
  explicit SettingsFile(Text path) : path_(std::move(path)) {}

  void SetFileName(const Text& path) override { path_ = path; }
  void SetSection(const Text& section) override { section_ = section; }

  // A file that is missing, or no file name at all, reads as empty. A file that exists and cannot be read is a Failure
  // (70 not permitted, 75 a folder or a bad path) and never the default.
  [[nodiscard]] Text ReadValue(const Text& key, const Text& default_value) const override;

  // Writes the whole new text beside the file and renames it into place: whoever reads sees the old text or the new
  // one. The file's permissions stay; a symbolic link stays and the file it names is replaced.
  //   fails  Failure 5 for a text that a line cannot hold (IniText::Set); 61 disk full, 70 not permitted, 75 or 76 a
  //          bad path or missing folder, each with the path; the old file is untouched then
  void WriteValue(const Text& key, const Text& value) override;

 private:
  Text path_;
  Text section_;
};

}  // namespace tallybook::settings
