// Exchange files held against a book from a window (application/TieOut): what it came to as plain data, which stays
// when the book has been closed. One thread, that of the windows: the engine asks and tells by windows, as it does in
// an import, and its progress lets events in.
#pragma once

#include <memory>
#include <optional>
#include <vector>

#include "base/Types.h"
#include "tallybook/application/DefinitionLook.h"
#include "tallybook/application/FigureList.h"
#include "tallybook/application/TieOut.h"
#include "tallybook/engine/Book.h"

namespace tallybook::desktop {

class DesktopApp;
class QtPlatform;

struct TieOutWish {
  application::SeenDefinition definition;
  Text file;                 // or a pattern; empty: as the definition has it
  Integer unknown_math = 0;  // as TieOut::Request has it
};

struct TieOutResult {
  bool held = false;  // else what stands in `why_not`
  bool agrees = false;
  Text words;
  std::vector<Text> why_not;
  std::vector<application::TieOutFile> files;
  std::vector<application::TieOutTotal> field_totals;
  std::vector<application::TieOutTotal> account_totals;
  // What its accounts and fields were called.
  std::unique_ptr<const engine::BookDescription> lists;
  std::optional<application::FigureList> figures;  // in it, those that differ or cannot be told
};

// `book` is open to be read, and is not changed.
//   fails  75 for a definition or a file that cannot be read, and as TieOut::Hold
[[nodiscard]] TieOutResult RunTieOut(QtPlatform& platform, const DesktopApp& app, engine::Book& book,
                                     const TieOutWish& wish);

}  // namespace tallybook::desktop
