#include "tallybook/inspect/Finding.h"

#include "base/Texts.h"

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

}  // namespace tallybook::inspect
