#include "tallybook/settings/IniText.h"

#include <algorithm>
#include <string_view>

#include "base/CodePage.h"
#include "base/Failure.h"

namespace tallybook::settings {

namespace {

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
constexpr std::string_view kBlanks = " \t";
constexpr std::string_view kUnwritable{"\r\n\0", 3};

std::string_view Trimmed(std::string_view text) {
  const auto first = text.find_first_not_of(kBlanks);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

char LowerAscii(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

bool SameName(std::string_view left, std::string_view right) {
  return std::ranges::equal(left, right, {}, LowerAscii, LowerAscii);
}

bool IsComment(std::string_view line) {
  return !line.empty() && (line.front() == ';' || line.front() == '#');
}

bool IsQuoted(std::string_view text) {
  return text.size() >= 2 && text.front() == '"' && text.back() == '"';
}

// The name of the section that a line begins, if it begins one. What follows the bracket is a comment.
std::optional<std::string_view> SectionOf(std::string_view line) {
  line = Trimmed(line);
  if (line.empty() || line.front() != '[') return {};
  const auto end = line.find(']');
  if (end == std::string_view::npos) return {};
  return Trimmed(line.substr(1, end - 1));
}

struct Setting {
  std::string_view key;
  std::string_view value;
};

std::optional<Setting> SettingOf(std::string_view line) {
  line = Trimmed(line);
  const auto equals = line.find('=');
  if (IsComment(line) || equals == std::string_view::npos) return {};
  auto value = Trimmed(line.substr(equals + 1));
  if (IsQuoted(value)) value = value.substr(1, value.size() - 2);
  return Setting{Trimmed(line.substr(0, equals)), value};
}

// A value as it stands in a line: in quotes where it would lose its blanks, or its own quotes, without.
Text AsWritten(const Text& value) {
  if (Trimmed(value).size() == value.size() && !IsQuoted(value)) return value;
  return '"' + value + '"';
}

[[noreturn]] void Refuse(const char* what, const Text& text) {
  throw Failure(FailureNumber::kInvalidArgument,
                Text("A settings file cannot hold this ") + what + ": \"" + text + "\"", "SettingsFile");
}

void CheckNames(const Text& section, const Text& key) {
  if (section.find_first_of(kUnwritable) != Text::npos || section.find(']') != Text::npos ||
      Trimmed(section).size() != section.size())
    Refuse("section", section);
  if (key.empty() || key.find_first_of(kUnwritable) != Text::npos || key.find('=') != Text::npos ||
      Trimmed(key).size() != key.size() || IsComment(key) || key.front() == '[')
    Refuse("key", key);
}

}  // namespace

IniText::IniText(const Text& bytes) {
  Text text = IsUtf8(bytes) ? bytes : FromCodePage(bytes);
  if (text.starts_with(kByteOrderMark)) text.erase(0, kByteOrderMark.size());
  const auto first_end = text.find('\n');
  if (first_end != Text::npos && first_end > 0 && text[first_end - 1] == '\r') line_end_ = "\r\n";
  for (std::size_t at = 0; at < text.size();) {
    auto end = std::min(text.find('\n', at), text.size());
    const auto next = end + 1;
    if (end > at && text[end - 1] == '\r') --end;
    lines_.push_back(text.substr(at, end - at));
    at = next;
  }
}

IniText::Place IniText::Find(const Text& section, const Text& key) const {
  Place place{.line = 0, .key_found = false, .section_found = section.empty()};
  bool inside = section.empty();
  bool first_of_name = inside;  // a new key goes into the first section of that name
  for (std::size_t i = 0; i < lines_.size(); ++i) {
    if (const auto name = SectionOf(lines_[i])) {
      first_of_name = !place.section_found && SameName(*name, section);
      inside = SameName(*name, section);
      place.section_found = place.section_found || inside;
      if (first_of_name) place.line = i + 1;
      continue;
    }
    if (!inside) continue;
    const auto setting = SettingOf(lines_[i]);
    if (setting && SameName(setting->key, key)) return {.line = i, .key_found = true, .section_found = true};
    if (first_of_name && !Trimmed(lines_[i]).empty()) place.line = i + 1;
  }
  return place;
}

std::optional<Text> IniText::Get(const Text& section, const Text& key) const {
  const Place place = Find(section, key);
  if (!place.key_found) return {};
  return Text(SettingOf(lines_[place.line])->value);
}

void IniText::Set(const Text& section, const Text& key, const Text& value) {
  CheckNames(section, key);
  if (value.find_first_of(kUnwritable) != Text::npos || !IsUtf8(value)) Refuse("value", value);
  const Place place = Find(section, key);
  if (place.key_found) {
    // The key stays as the user spelled it.
    Text& line = lines_[place.line];
    line = Text(SettingOf(line)->key) + "=" + AsWritten(value);
    return;
  }
  const Text line = key + "=" + AsWritten(value);
  if (place.section_found) {
    lines_.insert(lines_.begin() + static_cast<std::ptrdiff_t>(place.line), line);
    return;
  }
  if (!lines_.empty() && !Trimmed(lines_.back()).empty()) lines_.emplace_back();
  lines_.push_back("[" + section + "]");
  lines_.push_back(line);
}

Text IniText::ToText() const {
  Text text;
  for (const Text& line : lines_) text += line + line_end_;
  return text;
}

}  // namespace tallybook::settings
