// What the commands share that change a book's lists and years: their options, the change itself, and telling it.
#pragma once

#include <optional>
#include <set>
#include <vector>

#include "base/Types.h"
#include "tallybook/application/DefinitionFollow.h"
#include "tallybook/cli/Arguments.h"
#include "tallybook/cli/ExitStatus.h"
#include "tallybook/cli/PrintForm.h"
#include "tallybook/cli/Session.h"
#include "tallybook/engine/Book.h"
#include "tallybook/engine/BookDescription.h"
#include "tallybook/engine/BookGrowth.h"

namespace tallybook::cli {

struct GrowthOptions {
  Text book;
  Long wait = 0;
  bool with_figures = false;
  bool with_definitions = false;
  bool show_first = false;  // what differs is printed before anything is changed
  bool dry_run = false;     // and nothing is
  Text source;              // what the change is read from, for refusals; empty: the book
  PrintForm form = PrintForm::kTable;
};

// BOOK, --wait, and --json; and where they can matter --with-figures and --with-definitions.
void AddBookToGrow(CommandTable& command, GrowthOptions& options);
void AddWithFigures(CommandTable& command, GrowthOptions& options);
void AddWithDefinitions(CommandTable& command, GrowthOptions& options);

// Exchange definitions of a book that name what a change of its lists is about, looked at before the change: told, and
// written anew where that is asked for.
class NamedDefinitions {
 public:
  // Unless it is a dry run, those that follow are written beside their places. Fails as DefinitionsNaming and
  // FollowedDefinitions.
  NamedDefinitions(Session& session, const engine::Book& book, const engine::BookDifference& difference, bool follow,
                   bool dry_run = false);

  [[nodiscard]] const std::vector<application::DefinitionUse>& Uses() const { return uses_; }
  [[nodiscard]] bool Follows(const application::DefinitionUse& use) const;
  // The change has been made: what was written takes its name. A definition that could not does not follow, which is
  // told.
  void Keep();
  // On standard error.
  void Tell(bool is_done) const;

 private:
  std::vector<application::DefinitionUse> uses_;
  bool follow_ = false;
  std::optional<application::FollowedDefinitions> followed_;
  std::set<Integer> not_kept_;
};

// Brings a book to what `after` says, its values among it, and tells what that changed: checked whole before anything
// changes. `what_ran` is what the journal says. Definitions that name what is changed are told, and follow where the
// options say so. With `dry_run` nothing is changed.
//   fails  as Book::Grow; 5 where something that is removed has figures and the options do not say that they go
void GrowBook(Session& session, engine::Book& book, const engine::BookDescription& after, const Text& what_ran,
              const GrowthOptions& options);

}  // namespace tallybook::cli
