// Brings a book to the lists and years that a user has edited: looked at first, asked about where figures go with what
// is removed or exchange definitions name what changes, and done with the right to write taken for the change alone;
// and takes such a change back in the same way. Figures are counted on a thread of their own, while windows live. One
// thread otherwise.
#pragma once

#include <functional>
#include <optional>
#include <vector>

#include "tallybook/application/GrowthPlan.h"
#include "tallybook/desktop/host/Conversations.h"
#include "tallybook/engine/StoredDescription.h"

class QWidget;

namespace tallybook::application {
class WholeFiles;
}

namespace tallybook::desktop {

enum class ListsOutcome {
  kDone,
  kNotDone,  // the user did not want to, or it failed, which has been told
  kOthers,   // others have changed the lists since `before`; nothing is done, and nothing told
};

struct ListsChanged {
  ListsOutcome outcome = ListsOutcome::kNotDone;
  std::vector<engine::JournalEntry> entries;  // what it left in the journal
};

// What the user is asked before anything is changed.
struct ListsQuestion {
  application::GrowthPlan plan;
  std::vector<application::DefinitionUse> uses;
  bool is_undo = false;  // the lists go back to what they were
  // Nothing goes and nobody else is concerned.
  [[nodiscard]] bool IsNone() const { return plan.lost.empty() && uses.empty() && plan.beyond_exchange_files.empty(); }
  [[nodiscard]] bool CanFollow() const;
};

// Nothing where the user does not want it; else whether definitions get the new codes.
using ListsAnswer = std::optional<bool>;
using AskLists = std::function<ListsAnswer(const ListsQuestion& question)>;

// `files` are those of the installed platform. Where what was asked about has changed by the time that the book may be
// written, it is asked anew.
[[nodiscard]] ListsChanged ChangeLists(Conversations& conversations, application::WholeFiles& files,
                                       const engine::StoredDescription& before, const engine::BookDescription& after,
                                       const AskLists& ask);

// Whoever takes back the last change by its key is asked only what becomes of definitions.
enum class ListsAsking { kWhereDefinitionsFollow, kAlways };

// Takes back a change of lists, told by its entry of the journal; definitions get the codes from before where the user
// wants that.
[[nodiscard]] ListsChanged UndoLists(Conversations& conversations, application::WholeFiles& files, Long entry,
                                     ListsAsking asking, const AskLists& ask);

// Asks in a window over `owner`.
[[nodiscard]] ListsAnswer AskAboutLists(QWidget* owner, const ListsQuestion& question);

}  // namespace tallybook::desktop
