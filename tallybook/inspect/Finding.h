// What a look at a file finds before it is imported: everything that the import would ask about or end at, and what its
// rules let pass though nobody is likely to mean it (docs/formats.md, docs/exchange-file.md).
#pragma once

#include <array>
#include <optional>
#include <string_view>

#include "base/Types.h"

namespace tallybook::inspect {

// What an import does with it.
enum class Effect {
  kAudit,   // it asks about it, or refuses the file for it, before anything is written: nothing is imported
  kStop,    // it ends there, and may leave what stands before it in the book
  kSilent,  // it takes it without a word
  kNote,    // it does what it was told to: nothing is wrong, and a file with nothing else is sound
};

// "audit", "stop", "silent" or "note".
[[nodiscard]] Text WordOf(Effect effect);

struct Finding {
  long long line = 0;    // of a text file, from 1; 0 in an exchange file, which has none
  long long record = 0;  // as the import counts where nothing is wrong; 0 in the header. Of an exchange file, its dates
  Integer column = 0;    // the field's place in its record or line, from 1; 0 where the whole of it is meant
  Text column_name;      // "value"; empty where the whole of it is meant
  Text text;             // as the file has it; what is longer than 80 characters is cut, and ends in "..."
  Effect effect = Effect::kSilent;
  Text reason;  // "is read as 1.5: what stands behind it is passed over"
  Text help;    // what would mend it: "write 1500.25"; may be empty
  // Of an exchange file, where there is such a thing: the byte that it stands at, counted from the file's start, and
  // what figure or figures it is about, as the file tells of them: an account's code, a date, a field's number.
  std::optional<long long> offset = {};
  std::optional<Text> account = {};
  std::optional<Date> date = {};
  std::optional<Integer> field = {};
};

// At most 80 characters of a text.
[[nodiscard]] Text Cut(const Text& text);

// What a piece of a text file is. The pieces make up the file: byte for byte, but where it is one run of fields, whose
// pieces are lines, so that some of them make up a file that reads in no other way.
enum class Piece {
  kHead,    // stands once, in front
  kDate,    // a change of the date: all records behind it depend on it
  kRecord,  // stands for itself
};

class FindingListener {
 public:
  virtual ~FindingListener() = default;
  virtual void Found(const Finding& finding) = 0;
  // The next piece of the file, after all that was found in it. `bytes` stand until the call returns.
  virtual void Passed(Piece /*piece*/, std::string_view /*bytes*/, bool /*has_findings*/) {}
};

// What a look came to.
struct LookTally {
  long long records = 0;
  std::array<long long, 4> findings = {};  // by effect
  bool cancelled = false;                  // the user ended it before the file's end

  [[nodiscard]] long long Of(Effect effect) const { return findings[static_cast<std::size_t>(effect)]; }
  // Notes are none of them.
  [[nodiscard]] long long All() const { return Of(Effect::kAudit) + Of(Effect::kStop) + Of(Effect::kSilent); }
};

// "3 findings: 1 that REFUSES, 0 that the import ends at, 2 that it takes in silence".
[[nodiscard]] Text FindingsText(const LookTally& tally, const Text& refuses);

}  // namespace tallybook::inspect
