// Which exchange definitions of a book name an account or field that a change of its lists is about, and following it:
// a definition keeps the codes of the accounts of its rows, and the numbers of fields and of the account that takes
// all. One thread.
#pragma once

#include <memory>
#include <vector>

#include "base/Types.h"
#include "tallybook/application/WholeFiles.h"
#include "tallybook/engine/BookGrowth.h"

namespace tallybook::application {

struct DefinitionUse {
  Integer number = 0;
  Text title;
  Text path;
  std::vector<Text> names;  // a sentence for each account and field: "account 100 is 4100 now"
  bool can_follow = false;  // some row has a code that is another now
};

// The definitions that the change is about, by number. Failure 75 that names each definition that cannot be read.
//   folder, extension  as of LookAtDefinitions
[[nodiscard]] std::vector<DefinitionUse> DefinitionsNaming(WholeFiles& files, const Text& folder, const Text& extension,
                                                           const engine::BookDifference& difference);

// Definitions with the new codes, written beside their places until Keep gives them their names. Dropped by its end.
class FollowedDefinitions {
 public:
  // Writes those of `uses` that can follow. Fails as WholeFile::Begin, and with 5 for a code that a definition cannot
  // keep.
  FollowedDefinitions(WholeFiles& files, const std::vector<DefinitionUse>& uses,
                      const engine::BookDifference& difference);

  // Each definition takes its name; gives those that could not.
  struct NotKept {
    Integer number = 0;
    Text why;  // with its path
  };
  [[nodiscard]] std::vector<NotKept> Keep();

 private:
  struct Written {
    Integer number = 0;
    Text path;
    std::unique_ptr<WholeOutput> output;
  };
  std::vector<Written> written_;
};

}  // namespace tallybook::application
