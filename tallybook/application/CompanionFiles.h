// The files as the component sees them where it looks for a book's definitions: it searches for TBQDX*.NAME, and a
// search goes without regard to case and takes * and ? in NAME for other characters. Here such a search finds exactly
// the companions of that one book: TBQDX, a number, a point, NAME as it stands. Every other search, and every other
// operation, is that of the file system below. One thread.
#pragma once

#include <string_view>

#include "base/Types.h"
#include "tallybook/application/FileLayer.h"

namespace tallybook::application {

// The number in a companion's name: from 1 to 32,767, as the store writes it. 0 for any other text: with "007" or
// "99999" two files would be one definition, or a file none.
[[nodiscard]] Integer CompanionNumber(std::string_view digits);

class CompanionFiles : public FileLayer {
 public:
  using FileLayer::FileLayer;

  [[nodiscard]] std::vector<FoundFile> Find(const Text& pattern) override;
};

}  // namespace tallybook::application
