// Takes the journal of a damaged book into a new one. What ran before an entry that is damaged cannot be taken back any
// more; an entry that is lost keeps its number. One thread.
#pragma once

#include <map>

#include "base/Types.h"
#include "tallybook/engine/DamagedBook.h"
#include "tallybook/engine/JournalTables.h"
#include "tallybook/engine/SalvageLosses.h"

namespace tallybook::engine {

class JournalSalvage {
 public:
  // Both must outlive this.
  JournalSalvage(DamagedBook& book, SalvageLosses& losses) : book_(book), losses_(losses), old_(book.Db()) {}

  // Writes commands and entries into a new book, within a transaction. Gives how many entries are as they were.
  long long CopyTo(Database& database);

 private:
  void ReadEntries();
  void FindLastEntry();
  bool ReadEntry(const JournalRow& row);
  void LoseEntry(Long entry, const Text& what);

  struct Command {
    Date time = 0;
    Text what;
    Text who;
  };
  [[nodiscard]] std::map<Long, Command> ReadCommands();
  void CopyCommands(JournalTables& fresh);
  void CopyMarks(JournalRow& row, const JournalRow& old, JournalTables& fresh, Database& database);
  void TellWayBack();

  DamagedBook& book_;
  SalvageLosses& losses_;
  JournalTables old_;
  std::map<Long, JournalRow> entries_;
  std::map<Long, Text> texts_;  // what changes of lists changed
  std::map<Long, Text> was_;    // in which state the entries were that undos took back, where they tell it
  std::map<Long, EntryNotes> notes_;
  Long last_entry_ = 0;
  Long damaged_entry_ = 0;  // the last one
};

}  // namespace tallybook::engine
