#include "tallybook/inspect/Finding.h"

#include <fmt/format.h>

#include "base/Texts.h"
#include "tallybook/application/Counts.h"

namespace tallybook::inspect {

Text WordOf(Effect effect) {
  constexpr std::array<const char*, 4> kWords = {"audit", "stop", "silent", "note"};
  return kWords[static_cast<std::size_t>(effect)];
}

Text Cut(const Text& text) {
  constexpr int kMost = 80;
  std::size_t end = 0;
  for (int count = 0; count < kMost && end < text.size(); ++count) end += CharacterLength(text, end);
  return end < text.size() ? text.substr(0, end) + "..." : text;
}

Text FindingsText(const LookTally& tally, const Text& refuses) {
  if (tally.All() == 0) return application::Counted(0, "finding");
  return application::Counted(tally.All(), "finding") +
         fmt::format(": {} that {}, {} that the import ends at, {} that it takes in silence",
                     application::WithCommas(tally.Of(Effect::kAudit)), refuses,
                     application::WithCommas(tally.Of(Effect::kStop)),
                     application::WithCommas(tally.Of(Effect::kSilent)));
}

}  // namespace tallybook::inspect
