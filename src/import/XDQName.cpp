#include "import/XDQName.h"

namespace tallybook {

namespace {

void DropLastCharacter(Text& text) {
  const auto is_continuation = [](char byte) { return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U; };
  while (text.size() > 1 && is_continuation(text.back())) text.pop_back();
  if (!text.empty()) text.pop_back();
}

}  // namespace

Text XDQName(const Text& file) {
  constexpr int kReplaced = 3;
  Text name = file;
  for (int i = 0; i < kReplaced; ++i) DropLastCharacter(name);
  return name + "XDQ";
}

}  // namespace tallybook
