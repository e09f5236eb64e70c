#include "tallybook/application/CompanionFiles.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <string>
#include <string_view>

namespace tallybook::application {

namespace {

// Definitions of now and of before.
constexpr std::array<std::string_view, 2> kPrefixes{"TBQDX", "KVQDX"};

// True for the prefix, a number, and the ending.
bool IsCompanion(std::string_view name, std::string_view prefix, std::string_view ending) {
  if (name.size() < prefix.size() + ending.size() || !name.starts_with(prefix) || !name.ends_with(ending)) return false;
  return CompanionNumber(name.substr(prefix.size(), name.size() - prefix.size() - ending.size())) > 0;
}

}  // namespace

Integer CompanionNumber(std::string_view digits) {
  Integer number = 0;
  const char* const last = digits.data() + digits.size();
  const auto [end, error] = std::from_chars(digits.data(), last, number);
  const bool is_whole = error == std::errc() && end == last;
  return is_whole && number > 0 && digits == std::to_string(number) ? number : Integer{0};
}

std::vector<FoundFile> CompanionFiles::Find(const Text& pattern) {
  std::vector<FoundFile> found = Below().Find(pattern);
  const std::string_view wanted = std::string_view(pattern).substr(pattern.find_last_of("/\\") + 1);
  for (const std::string_view prefix : kPrefixes) {
    if (!wanted.starts_with(prefix) || !wanted.substr(prefix.size()).starts_with("*.")) continue;
    const std::string_view ending = wanted.substr(prefix.size() + 1);
    std::erase_if(found, [&](const FoundFile& file) { return !IsCompanion(file.name, prefix, ending); });
  }
  return found;
}

}  // namespace tallybook::application
