// The text of a settings file: sections in brackets, keys with values, comments that begin with ";" or "#".
//
// The text is kept line by line and a change touches one line alone. Comments, blank lines, lines that are no setting,
// the order and the line ends stay as the user left them. (A parser that writes the whole file anew was tried and lost
// the comments behind the last key and every line that it could not read.)
//
// Rules. Section and key names are compared without regard to the case of ASCII letters. Of equal names the first
// counts. A value has no blanks at its ends unless it stands in double quotes; Set writes the quotes where they are
// needed. Keys above the first section belong to the section of the empty name. One thread; plain data.
#pragma once

#include <cstddef>
#include <optional>
#include <vector>

#include "base/Types.h"

namespace tallybook::settings {

class IniText {
 public:
  IniText() = default;
  // Takes the bytes of a file: UTF-8, a byte-order mark is dropped; bytes that are no UTF-8 are taken for Windows-1252.
  explicit IniText(const Text& bytes);

  // The value of a key, or nothing where section or key is missing.
  [[nodiscard]] std::optional<Text> Get(const Text& section, const Text& key) const;

  // Gives the key that value: in its own line, or else in a new line at the end of its section, or else in a new
  // section at the end of the text.
  //   fails  Failure 5 for a section, key or value that a line cannot hold: one with a line break or a zero character,
  //          a section with "]", a key that is empty, holds "=", or begins like a comment or a section
  void Set(const Text& section, const Text& key, const Text& value);

  // The whole text in UTF-8.
  [[nodiscard]] Text ToText() const;

 private:
  struct Place {
    std::size_t line = 0;  // index of the key's line, or of the line before which a new one belongs
    bool key_found = false;
    bool section_found = false;
  };
  [[nodiscard]] Place Find(const Text& section, const Text& key) const;

  std::vector<Text> lines_;  // without their line ends
  Text line_end_ = "\n";     // the first that the file uses; kept for all lines
};

}  // namespace tallybook::settings
