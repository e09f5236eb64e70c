#include "tallybook/engine/JournalSalvage.h"

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <span>
#include <string>
#include <utility>

#include "base/Failure.h"
#include "base/Narrow.h"
#include "tallybook/engine/BookFormat.h"
#include "tallybook/engine/ChunkCodec.h"

namespace tallybook::engine {

namespace {

// Stands in the place of one that is lost, so that the others keep their numbers.
JournalRow LostEntry() {
  JournalRow row;
  row.entry.what_ran = "(what ran is lost)";
  row.entry.state = JournalState::kClosed;
  row.entry.command = 1;
  return row;
}

}  // namespace

long long JournalSalvage::CopyTo(Database& database) {
  JournalTables fresh(database);
  ReadEntries();
  CopyCommands(fresh);
  long long whole_entries = 0;
  for (Long id = 1; id <= last_entry_; ++id) {
    const auto found = entries_.find(id);
    JournalRow row = found != entries_.end() ? found->second : LostEntry();
    const bool whole = found != entries_.end() && id > damaged_entry_;
    if (!whole) row.entry.keeps_images = false;
    row.entry.id = 0;
    row.marks = 0;
    row.marks_sum = 0;
    row.notes = 0;
    row.notes_sum = 0;
    fresh.Save(row);
    if (const auto text = texts_.find(id); text != texts_.end()) fresh.SaveText(row, kChangeText, text->second);
    if (const auto was = was_.find(id); was != was_.end()) fresh.SaveText(row, kWasText, was->second);
    if (const auto notes = notes_.find(id); notes != notes_.end()) fresh.SaveNotes(row, notes->second);
    fresh.Save(row);
    if (!whole) continue;
    CopyMarks(row, found->second, fresh, database);
    ++whole_entries;
  }
  if (damaged_entry_ > 0 && last_entry_ > 0) TellWayBack();
  return whole_entries;
}

void JournalSalvage::CopyMarks(JournalRow& row, const JournalRow& old, JournalTables& fresh, Database& database) {
  DbStatement put_image(database, "INSERT INTO image (figures) VALUES (?1)");
  old_.VisitMarks(old, [&](std::int64_t key, const ChunkMark& mark, std::span<const std::byte> image) {
    std::int64_t new_image = 0;
    if (mark.image != 0) {
      put_image.Bind(1, image).Run();
      new_image = database.LastRow();
    }
    row.marks_sum += fresh.InsertMark(old.entry.id, key, mark.rows, new_image);
    ++row.marks;
  });
  fresh.Save(row);
}

void JournalSalvage::TellWayBack() {
  const Long last = std::min(damaged_entry_, last_entry_);
  const bool any = std::ranges::any_of(entries_, [&](const auto& entry) {
    return entry.first <= last && entry.second.entry.keeps_images &&
           entry.second.entry.state != JournalState::kUndone && entry.second.entry.kind != JournalKind::kUndo;
  });
  if (any) losses_.AddEntry(last, "what ran up to this entry cannot be taken back any more");
}

void JournalSalvage::LoseEntry(Long entry, const Text& what) {
  damaged_entry_ = std::max(damaged_entry_, entry);
  losses_.AddEntry(entry, what);
}

void JournalSalvage::ReadEntries() {
  const bool read = Tries([&] {
    for (JournalRow& row : old_.Rows(book_.Format(), [](Long, const Text&) {})) {
      last_entry_ = std::max(last_entry_, row.entry.id);
      if (row.entry.id > 0) entries_[row.entry.id] = std::move(row);
    }
  });
  FindLastEntry();
  if (!read) {
    entries_.clear();
    LoseEntry(last_entry_, "the journal cannot be read");
  }
  if (!book_.HasChecksums()) {
    damaged_entry_ = last_entry_;
    return;
  }
  for (Long id = 1; read && id <= last_entry_; ++id) {
    if (!entries_.contains(id)) LoseEntry(id, "this entry is damaged or missing");
  }
  for (auto entry = entries_.begin(); entry != entries_.end();) {
    entry = ReadEntry(entry->second) ? std::next(entry) : entries_.erase(entry);
  }
}

// Entries may be missing behind those that can be read.
void JournalSalvage::FindLastEntry() {
  constexpr std::int64_t kMostEntries = 10'000'000;
  for (const char* sql : {"SELECT max(id) FROM journal", "SELECT seq FROM sqlite_sequence WHERE name = 'journal'"}) {
    Tries([&] {
      const std::int64_t number = book_.Db().Number(sql);
      if (number > last_entry_ && number < last_entry_ + kMostEntries) last_entry_ = ToLong(number);
    });
  }
}

// False where nothing but the entry's number can be kept.
bool JournalSalvage::ReadEntry(const JournalRow& row) {
  const Long id = row.entry.id;
  if (row.entry.kind == JournalKind::kLists && !Tries([&] { texts_[id] = old_.TextOf(id, kChangeText); })) {
    texts_.erase(id);
    LoseEntry(id, "what this entry changed is damaged or missing");
    return false;
  }
  // One that is damaged is told with the notes.
  Tries([&] {
    if (const auto was = old_.FindText(id, kWasText)) was_[id] = *was;
  });
  if (book_.Format() >= kFirstFormatOfNotes && !Tries([&] { notes_[id] = old_.NotesOf(row); })) {
    notes_.erase(id);
    losses_.AddEntry(id, "which files this entry read, and what it told of them, is damaged or missing");
  }
  // Whether their figures are all saved is not known here.
  Tries([&] {
    if (old_.FindText(id, kDueText))
      losses_.AddEntry(id, "files that were still to be deleted or renamed behind it stay");
  });
  const bool whole = Tries([&] {
    old_.VisitMarks(row, [&](std::int64_t key, const ChunkMark& mark, std::span<const std::byte> image) {
      if (mark.image == 0) return;
      const auto taken = TakeChecked(image, key);
      ChunkRows rows;
      if (!taken) throw Failure(FailureNumber::kDeviceError, "", "Tallybook.Book");
      DecodeChunk(ShapeOf(book_.Stored(), id), taken->bytes, rows);
    });
  });
  if (!whole) LoseEntry(id, "figures from before this entry, or what it changed, are damaged or missing");
  return true;
}

std::map<Long, JournalSalvage::Command> JournalSalvage::ReadCommands() {
  std::map<Long, Command> commands;
  if (!book_.HasChecksums()) {
    for (const auto& [id, row] : entries_) commands[row.entry.command] = {row.entry.time, row.entry.what_ran, ""};
    return commands;
  }
  Tries([&] {
    DbStatement select(book_.Db(), "SELECT id, time, what, who, checksum FROM command ORDER BY id");
    while (select.Step()) {
      const Long id = ToLong(select.Int(0));
      const Checksum checksum = CommandChecksum(id, select.Real(1), select.String(2), select.String(3));
      if (checksum == FromColumn(select.Int(4))) commands[id] = {select.Real(1), select.String(2), select.String(3)};
    }
  });
  return commands;
}

void JournalSalvage::CopyCommands(JournalTables& fresh) {
  const std::map<Long, Command> commands = ReadCommands();
  Long last = last_entry_ > 0 ? 1 : 0;
  for (const auto& [id, row] : entries_) last = std::max(last, row.entry.command);
  if (book_.HasChecksums() && !commands.empty()) last = std::max(last, commands.rbegin()->first);
  for (Long id = 1; id <= last; ++id) {
    const auto found = commands.find(id);
    const bool lost = found == commands.end();
    if (lost) losses_.Add(FindingKind::kJournal, "command " + std::to_string(id) + " is damaged or missing");
    const Command command = lost ? Command() : found->second;
    static_cast<void>(fresh.AddCommand(command.time, command.what, command.who));
  }
}

}  // namespace tallybook::engine
