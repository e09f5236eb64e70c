// The system's registry: a tree of keys with values, below a few predefined keys that are always open. A platform
// without one has none of this. One thread.
#pragma once

#include <cstddef>
#include <span>

#include "base/Types.h"

namespace tallybook {

// A key is known by its handle, a number that is never 0 while it is open.
inline constexpr Long kCurrentUserKey = static_cast<Long>(0x80000001);
inline constexpr Long kLocalMachineKey = static_cast<Long>(0x80000002);

// What an open key may be used for.
inline constexpr Long kReadKey = 0x20019;
inline constexpr Long kWriteKey = 0x20006;

// Kinds of values.
inline constexpr Long kTextValue = 1;  // bytes of the code page, with a zero character at the end as a rule
inline constexpr Long kBinaryValue = 3;
inline constexpr Long kNumberValue = 4;  // 4 bytes, little-endian

// Each operation gives the system's status, 0 for success. Paths are those below `key`, their parts separated by "\".
class RegistryOperations {
 public:
  virtual ~RegistryOperations() = default;
  // `opened` is the key's handle, which CloseKey takes back. Creating opens a key that is there.
  [[nodiscard]] virtual Long OpenKey(Long key, const Text& path, Long access, Long& opened) = 0;
  [[nodiscard]] virtual Long CreateKey(Long key, const Text& path, Long access, Long& opened) = 0;
  // The kind and the size of a value, and as much of it as `into` holds: an empty one asks for kind and size alone. A
  // value that is larger than an `into` that is not empty is a status other than 0.
  [[nodiscard]] virtual Long QueryValue(Long key, const Text& name, Long& kind, std::span<std::byte> into,
                                        Long& size) = 0;
  [[nodiscard]] virtual Long SetValue(Long key, const Text& name, Long kind, std::span<const std::byte> value) = 0;
  // The name of the subkey at `index`, from 0; another status than 0 behind the last.
  [[nodiscard]] virtual Long EnumerateKey(Long key, Long index, Text& name) = 0;
  // Deletes a key that has no subkeys; a key with all below it.
  [[nodiscard]] virtual Long DeleteKey(Long key, const Text& path) = 0;
  [[nodiscard]] virtual Long DeleteTree(Long key, const Text& path) = 0;
  virtual Long CloseKey(Long key) = 0;
  // Lets an open key stand for a predefined one, for this process only; 0 ends that.
  [[nodiscard]] virtual Long OverridePredefinedKey(Long predefined, Long key) = 0;
};

}  // namespace tallybook
