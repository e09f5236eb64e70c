// The files as the component sees them where it looks for a book's definitions: it searches for TBQDX*.NAME, and a
// search goes without regard to case and takes * and ? in NAME for other characters. Here such a search finds exactly
// the companions of that one book: TBQDX, a number, a point, NAME as it stands. Every other search, and every other
// operation, is that of the file system below. One thread.
#pragma once

#include "tallybook/application/FileLayer.h"

namespace tallybook::application {

class CompanionFiles : public FileLayer {
 public:
  using FileLayer::FileLayer;

  [[nodiscard]] std::vector<FoundFile> Find(const Text& pattern) override;
};

}  // namespace tallybook::application
