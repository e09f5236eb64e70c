// What looking after a book came to, in words: for the command and for windows alike. One thread.
#pragma once

#include <vector>

#include "base/Types.h"
#include "tallybook/application/BookCare.h"
#include "tallybook/engine/BookCheck.h"
#include "tallybook/engine/BookCompact.h"
#include "tallybook/engine/BookSalvage.h"

namespace tallybook::application {

// A finding as cells: kind, account (its code, else its number), first and last date, journal entry, and what was
// found. What is not known is empty.
[[nodiscard]] std::vector<Text> CellsOf(const engine::BookFinding& finding);

// "1 journal entry", "2 journal entries".
[[nodiscard]] Text CountedEntries(long long count);

// "north.tbk: format 3, 12 chunks, 4 journal entries with 7 images; nothing is damaged".
[[nodiscard]] Text CheckWords(const Text& path, const engine::BookCheckResult& result);
// "Wrote north.backup: north.tbk with 2 companion files, 20,480 bytes."
[[nodiscard]] Text BackupWords(const Text& book, const Text& file, const BackupDone& done);
// "Made north.tbk as north was on 2024-03-01 12:00:00, with 2 companion files."
[[nodiscard]] Text RestoreWords(const RestoreDone& done);
// Where the book that was there is kept, and why companion files are not in place yet; empty where there is nothing of
// it.
[[nodiscard]] Text KeptWords(const RestoreDone& done);
[[nodiscard]] Text WaitingWords(const RestoreDone& done);
// "Made saved.tbk with 12 chunks, 4 journal entries and 2 companion files; nothing is lost."
[[nodiscard]] Text SalvageWords(const Text& path, const engine::SalvageResult& result);
// "north.tbk: 40,960 bytes before, 20,480 bytes after."
[[nodiscard]] Text CompactWords(const Text& path, const engine::CompactResult& result);

}  // namespace tallybook::application
