#include "tallybook/engine/JournalTrim.h"

#include "tallybook/engine/Book.h"
#include "tallybook/engine/FigureStore.h"

namespace tallybook::engine {

std::vector<JournalEntry> JournalTrim::Before(Date date) {
  book_.RequireWritable();
  book_.EndOwnEntry();
  return book_.Store().DropImagesBefore(date);
}

}  // namespace tallybook::engine
