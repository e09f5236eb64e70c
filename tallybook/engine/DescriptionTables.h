// The description of a book in its file's tables: single items by name, and the lists (docs/book-file.md, "The
// description").
#pragma once

#include "base/Types.h"
#include "tallybook/engine/Database.h"
#include "tallybook/engine/StoredDescription.h"

namespace tallybook::engine {

// Writes into the tables of a new book of this format. Takes the description as sound; its values are not looked at.
void SaveDescription(Database& database, const StoredDescription& stored, Long format);
// Brings tables of this format from one description to another. Within a transaction, and as SaveDescription.
void ReplaceDescription(Database& database, const StoredDescription& before, const StoredDescription& after,
                        Long format);
// Writes single items and the checksum of what is stored already.
void SealDescription(Database& database, const StoredDescription& stored, Long format);

// Whether a description has to agree with its checksum. One that need not is still sound in itself.
enum class Trust { kChecksum, kAsItReads };

// Reads it. What it gives is sound: failure 57 for what does not agree with its checksum (from format 2 on), 5 or 57
// for a file that was changed by something else.
[[nodiscard]] StoredDescription LoadDescription(Database& database, Long format, Trust trust = Trust::kChecksum);

}  // namespace tallybook::engine
