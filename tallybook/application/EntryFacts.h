// What the application tells of a run in its journal entry: what ran and how, what it came to, and its warnings. The
// engine keeps them as a text; this unit prints and reads it.
#pragma once

#include <optional>
#include <utility>
#include <vector>

#include "base/Types.h"

namespace tallybook::application {

struct EntryFacts {
  // How the file was read: the same file imported the same way is the same import.
  Text kind;               // "qdx", "csv", "delimited"; empty where nothing is known
  Integer definition = 0;  // its number; 0 where none was used
  Text title;              // of the definition
  Text math;               // "add", "subtract", "replace", "zero"; "as told" for that of the file's header
  Text told_math;          // of "as told": what the header told, once it was read
  Text options;            // others that change what is imported, as the user gave them; may be empty

  // Figures read are those applied, not mapped and refused together.
  struct Counts {
    std::optional<long long> read, applied, not_mapped, refused, zeroed;  // figures
    std::optional<long long> records, accounts, fields, dates;
    bool operator==(const Counts&) const = default;
  };
  Counts counts;
  Text result;  // "imported", "imported; ..." where something failed behind the last figure, or why it ended before;
                // empty where the run did not come to tell it
  std::vector<Text> warnings;

  bool operator==(const EntryFacts&) const = default;
};

// A count with its name in JSON ("not_mapped"), in the order of the members.
using NamedCount = std::pair<const char*, std::optional<long long> EntryFacts::Counts::*>;
[[nodiscard]] const std::vector<NamedCount>& NamedCounts();

// The text that the engine keeps, a JSON object in which members without a value are left out, and back. What is no
// such object gives facts of which nothing is known; a member of another kind than it should be is passed over.
[[nodiscard]] Text TextOfFacts(const EntryFacts& facts);
[[nodiscard]] EntryFacts FactsOf(const Text& text);

// Whether two runs would do the same with the same file. What only zeroes is like no other.
[[nodiscard]] bool IsSameImport(const EntryFacts& one, const EntryFacts& other);

}  // namespace tallybook::application
