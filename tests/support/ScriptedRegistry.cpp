#include "tests/support/ScriptedRegistry.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <span>
#include <string>

#include "base/ModParse.h"
#include "base/Texts.h"

namespace tallybook::testing {

namespace {

Text Hex(Long number) {
  std::array<char, 16> text{};
  std::snprintf(text.data(), text.size(), "%X", static_cast<unsigned>(number));
  return text.data();
}

// Handles that programs open are small numbers here; they are told as "#101", the predefined ones in hexadecimal.
Text HandleText(Long key) {
  return key > 0 ? "#" + std::to_string(key) : Hex(key);
}

}  // namespace

Text ScriptedRegistry::Below(const Text& place, const Text& path) {
  return path.empty() ? place : place + "\\" + UpperCase(path);
}

Text ScriptedRegistry::PlaceOf(Long root, const Text& path) {
  return Below(Hex(root), path);
}

Text ScriptedRegistry::PlaceBy(Long key) const {
  if (const auto open = open_.find(key); open != open_.end()) return open->second.place;
  if (const auto stands = overrides_.find(key); stands != overrides_.end()) return stands->second;
  return key == kCurrentUserKey || key == kLocalMachineKey ? Hex(key) : Text();
}

void ScriptedRegistry::AddAt(const Text& base, const Text& path) {
  Text place = base;
  for (const Text& part : SplitText(path, "\\")) {
    place = Below(place, part);
    keys_.try_emplace(place, Key{part, {}});
  }
}

void ScriptedRegistry::Add(Long root, const Text& path) {
  AddAt(Hex(root), path);
}

void ScriptedRegistry::AddValue(Long root, const Text& path, const Text& name, Long kind, const std::string& bytes) {
  Add(root, path);
  const auto raw = std::as_bytes(std::span(bytes));
  keys_[PlaceOf(root, path)].values[UpperCase(name)] = {kind, {raw.begin(), raw.end()}};
}

bool ScriptedRegistry::Has(Long root, const Text& path) const {
  return keys_.contains(PlaceOf(root, path));
}

const ScriptedRegistry::Value* ScriptedRegistry::Find(Long root, const Text& path, const Text& name) const {
  const auto key = keys_.find(PlaceOf(root, path));
  if (key == keys_.end()) return nullptr;
  const auto value = key->second.values.find(UpperCase(name));
  return value == key->second.values.end() ? nullptr : &value->second;
}

Long ScriptedRegistry::Override(Long predefined) const {
  const auto found = overriding_.find(predefined);
  return found == overriding_.end() ? 0 : found->second;
}

bool ScriptedRegistry::Record(const Text& operation, const Text& asked) {
  calls_.push_back(operation + " " + asked);
  return !denied_.contains(operation);
}

Long ScriptedRegistry::Open(const Text& place, Long access, Long& opened) {
  opened = ++last_handle_;
  open_[opened] = {place, access};
  return 0;
}

Long ScriptedRegistry::OpenKey(Long key, const Text& path, Long access, Long& opened) {
  if (!Record("OpenKey", HandleText(key) + " " + path + " " + Hex(access))) return kDenied;
  const Text base = PlaceBy(key);
  if (base.empty()) return kBadHandle;
  const Text place = Below(base, path);
  return path.empty() || keys_.contains(place) ? Open(place, access, opened) : kNotFound;
}

Long ScriptedRegistry::CreateKey(Long key, const Text& path, Long access, Long& opened) {
  if (!Record("CreateKey", HandleText(key) + " " + path + " " + Hex(access))) return kDenied;
  const Text base = PlaceBy(key);
  if (base.empty()) return kBadHandle;
  AddAt(base, path);
  return Open(Below(base, path), access, opened);
}

Long ScriptedRegistry::QueryValue(Long key, const Text& name, Long& kind, std::span<std::byte> into, Long& size) {
  if (!Record(into.empty() ? "QueryKind" : "QueryValue", HandleText(key) + " " + name)) return kDenied;
  const auto open = open_.find(key);
  if (open == open_.end()) return kBadHandle;
  const auto& values = keys_[open->second.place].values;
  const auto found = values.find(UpperCase(name));
  if (found == values.end()) return kNotFound;
  const Value& value = found->second;
  kind = value.kind;
  size = static_cast<Long>(value.bytes.size());
  if (into.empty()) return 0;
  if (into.size() < value.bytes.size()) return kMoreData;
  std::ranges::copy(value.bytes, into.begin());
  return 0;
}

Long ScriptedRegistry::SetValue(Long key, const Text& name, Long kind, std::span<const std::byte> value) {
  if (!Record("SetValue", HandleText(key) + " " + name)) return kDenied;
  const auto open = open_.find(key);
  if (open == open_.end()) return kBadHandle;
  if (open->second.access != kWriteKey) return kDenied;
  keys_[open->second.place].values[UpperCase(name)] = {kind, {value.begin(), value.end()}};
  return 0;
}

std::vector<Text> ScriptedRegistry::SubkeysOf(const Text& place) const {
  std::vector<Text> names;
  for (const auto& [path, key] : keys_)
    if (path.starts_with(place + "\\") && path.find('\\', place.size() + 1) == Text::npos) names.push_back(key.name);
  return names;
}

Long ScriptedRegistry::EnumerateKey(Long key, Long index, Text& name) {
  if (!Record("EnumerateKey", HandleText(key) + " " + std::to_string(index))) return kDenied;
  const auto open = open_.find(key);
  if (open == open_.end()) return kBadHandle;
  const std::vector<Text> names = SubkeysOf(open->second.place);
  if (index < 0 || static_cast<std::size_t>(index) >= names.size()) return kNoMoreItems;
  name = names[static_cast<std::size_t>(index)];
  return 0;
}

Long ScriptedRegistry::DeleteKey(Long key, const Text& path) {
  if (!Record("DeleteKey", HandleText(key) + " " + path)) return kDenied;
  const Text base = PlaceBy(key);
  if (base.empty()) return kBadHandle;
  const Text place = Below(base, path);
  if (path.empty() || !keys_.contains(place)) return kNotFound;
  if (!SubkeysOf(place).empty()) return kDenied;
  keys_.erase(place);
  return 0;
}

Long ScriptedRegistry::DeleteTree(Long key, const Text& path) {
  if (!Record("DeleteTree", HandleText(key) + " " + path)) return kDenied;
  const Text base = PlaceBy(key);
  if (base.empty()) return kBadHandle;
  const Text place = Below(base, path);
  if (path.empty() || !keys_.contains(place)) return kNotFound;
  std::erase_if(keys_,
                [&](const auto& entry) { return entry.first == place || entry.first.starts_with(place + "\\"); });
  return 0;
}

Long ScriptedRegistry::CloseKey(Long key) {
  if (!Record("CloseKey", HandleText(key))) return kDenied;
  return open_.erase(key) == 0 ? kBadHandle : 0;
}

Long ScriptedRegistry::OverridePredefinedKey(Long predefined, Long key) {
  if (!Record("OverridePredefinedKey", HandleText(predefined) + " " + HandleText(key))) return kDenied;
  if (key == 0) {
    overrides_.erase(predefined);
    overriding_.erase(predefined);
    return 0;
  }
  const Text place = PlaceBy(key);
  if (place.empty()) return kBadHandle;
  overrides_[predefined] = place;
  overriding_[predefined] = key;
  return 0;
}

}  // namespace tallybook::testing
