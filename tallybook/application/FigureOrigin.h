// Where a figure came from, with all that is told of each entry that changed it: for the command and for windows alike.
// The history itself is the engine's (engine/Lineage.h). One thread.
#pragma once

#include <map>
#include <vector>

#include "base/Types.h"
#include "tallybook/engine/Book.h"
#include "tallybook/engine/JournalNotes.h"
#include "tallybook/engine/Lineage.h"

namespace tallybook::application {

struct FigureOrigin {
  Long account = 0;  // its number
  Text code;
  Date date = kNoDate;  // the record's level date
  Integer field = 0;    // its number
  engine::FigureHistory history;
  std::map<Long, Text> users;                         // by command
  std::vector<std::vector<engine::EntryFile>> files;  // of each change

  // Who ran a change; empty where it is not known.
  [[nodiscard]] Text WhoRan(const engine::FigureChange& change) const;
};

// The origin of one figure; `date` is any of its record. The book has no current record afterwards. Fails as
// Lineage::Of and JournalNotes.
[[nodiscard]] FigureOrigin OriginOf(engine::Book& book, Long account_number, Date date, Integer field_number);

// "Nothing is known of what stood before entry 3, which keeps no figures from before.", or why else; empty where all of
// it is told.
[[nodiscard]] Text UnknownBeforeWords(const engine::FigureHistory& history);

}  // namespace tallybook::application
