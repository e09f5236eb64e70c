// A registry in memory: a tree of keys whose names are told apart without regard to case, its operations as the
// system's are, and each call kept. Any kind of operation can be made to fail.
#pragma once

#include <map>
#include <set>
#include <string>
#include <vector>

#include "platform/RegistryOperations.h"

namespace tallybook::testing {

class ScriptedRegistry : public RegistryOperations {
 public:
  // Statuses of the system.
  static constexpr Long kNotFound = 2;
  static constexpr Long kDenied = 5;
  static constexpr Long kBadHandle = 6;
  static constexpr Long kMoreData = 234;
  static constexpr Long kNoMoreItems = 259;

  struct Value {
    Long kind = 0;
    std::vector<std::byte> bytes;
  };

  // What there is, below a predefined key, by a path; whatever stands for that key. Adding a value adds the key.
  void Add(Long root, const Text& path);
  void AddValue(Long root, const Text& path, const Text& name, Long kind, const std::string& bytes);
  [[nodiscard]] bool Has(Long root, const Text& path) const;
  // Null where there is none.
  [[nodiscard]] const Value* Find(Long root, const Text& path, const Text& name) const;
  // How many handles are open, and which key stands for a predefined one (0: itself).
  [[nodiscard]] std::size_t OpenHandles() const { return open_.size(); }
  [[nodiscard]] Long Override(Long predefined) const;

  // The calls so far, each as its operation's name and what was asked, in order: "OpenKey 80000002 Software 20019".
  [[nodiscard]] const std::vector<Text>& Calls() const { return calls_; }
  void ForgetCalls() { calls_.clear(); }
  // From now on every operation of this name gives kDenied; no operation does.
  void Deny(const Text& operation) { denied_.insert(operation); }
  void DenyNothing() { denied_.clear(); }

  [[nodiscard]] Long OpenKey(Long key, const Text& path, Long access, Long& opened) override;
  [[nodiscard]] Long CreateKey(Long key, const Text& path, Long access, Long& opened) override;
  [[nodiscard]] Long QueryValue(Long key, const Text& name, Long& kind, std::span<std::byte> into, Long& size) override;
  [[nodiscard]] Long SetValue(Long key, const Text& name, Long kind, std::span<const std::byte> value) override;
  [[nodiscard]] Long EnumerateKey(Long key, Long index, Text& name) override;
  [[nodiscard]] Long DeleteKey(Long key, const Text& path) override;
  [[nodiscard]] Long DeleteTree(Long key, const Text& path) override;
  Long CloseKey(Long key) override;
  [[nodiscard]] Long OverridePredefinedKey(Long predefined, Long key) override;

 private:
  // Keys stand under their whole path in upper-case letters, the predefined key's handle in front: "80000002\SOFTWARE".
  struct Key {
    Text name;  // as it was made
    std::map<Text, Value> values;
  };
  struct Handle {
    Text place;
    Long access = 0;
  };

  [[nodiscard]] static Text PlaceOf(Long root, const Text& path);
  [[nodiscard]] static Text Below(const Text& place, const Text& path);
  // The place of a key by handle; empty for a handle that is none.
  [[nodiscard]] Text PlaceBy(Long key) const;
  void AddAt(const Text& base, const Text& path);
  [[nodiscard]] std::vector<Text> SubkeysOf(const Text& place) const;
  [[nodiscard]] Long Open(const Text& place, Long access, Long& opened);
  bool Record(const Text& operation, const Text& asked);

  std::map<Text, Key> keys_;
  std::map<Long, Handle> open_;
  std::map<Long, Text> overrides_;
  std::map<Long, Long> overriding_;
  Long last_handle_ = 100;
  std::set<Text> denied_;
  std::vector<Text> calls_;
};

}  // namespace tallybook::testing
