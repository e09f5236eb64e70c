// What the commands share that change a book's lists and years: their options, the change itself, and telling it.
#pragma once

#include "base/Types.h"
#include "tallybook/cli/Arguments.h"
#include "tallybook/cli/ExitStatus.h"
#include "tallybook/cli/PrintForm.h"
#include "tallybook/cli/Session.h"
#include "tallybook/engine/Book.h"
#include "tallybook/engine/BookDescription.h"

namespace tallybook::cli {

struct GrowthOptions {
  Text book;
  Long wait = 0;
  bool with_figures = false;
  bool with_definitions = false;
  bool dry_run = false;
  PrintForm form = PrintForm::kTable;
};

// BOOK, --wait, and --json; and where they can matter --with-figures and --with-definitions.
void AddBookToGrow(CommandTable& command, GrowthOptions& options);
void AddWithFigures(CommandTable& command, GrowthOptions& options);
void AddWithDefinitions(CommandTable& command, GrowthOptions& options);

// Brings a book to what `after` says, and tells what that changed: checked whole before anything changes. `what_ran` is
// what the journal says. Definitions that name what is changed are told, and follow where the options say so. With
// `dry_run` nothing is changed.
//   fails  as Book::Grow; 5 where something that is removed has figures and the options do not say that they go
void GrowBook(Session& session, engine::Book& book, const engine::BookDescription& after, const Text& what_ran,
              const GrowthOptions& options);

}  // namespace tallybook::cli
