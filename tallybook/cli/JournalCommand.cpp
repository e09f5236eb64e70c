#include "tallybook/cli/Commands.h"

namespace tallybook::cli {

CommandTable JournalCommand() {
  return MakeGroup("journal", "List what has changed figures, and take it back",
                   {JournalListCommand(), JournalShowCommand(), JournalUndoCommand(), JournalTrimCommand()});
}

}  // namespace tallybook::cli
