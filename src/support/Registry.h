// One key of the system's registry at a time; and a way to let this process see a scratch branch in place of the
// current user's, with a policy in it that takes the places bar out of the standard file dialogs, until that is taken
// back.
//
// Nothing here is shown or raised: operations give the status of the system (0 for success) or the empty value. On a
// platform without a registry every status is kNoRegistry, every value the empty one, and the pair around a dialog does
// nothing and gives 0. One thread; the override is the process's, so two dialogs must not overlap in it.
#pragma once

#include <cstddef>
#include <span>
#include <variant>

#include "base/Types.h"
#include "platform/RegistryOperations.h"

namespace tallybook {

// The status of every operation where there is no registry, and of a value that cannot be read.
inline constexpr Long kNoRegistry = -1;
inline constexpr Long kNoSuchValue = -1;

class Registry {
 public:
  Registry() = default;
  ~Registry();  // closes the open key
  Registry(const Registry&) = delete;
  Registry& operator=(const Registry&) = delete;

  // The key: its path below a root. Another value closes the open key, the present one does nothing.
  [[nodiscard]] Long Root() const { return root_; }
  void SetRoot(Long root);
  [[nodiscard]] const Text& KeyName() const { return key_name_; }
  void SetKeyName(const Text& path);

  // Opens the key, whatever is open being closed first. An access of 0 means reading, and is told so. Resets the
  // enumeration, as CloseKey does.
  [[nodiscard]] Long OpenKey(Long& access);
  void CloseKey();
  // The handle of the open key; 0 for none.
  [[nodiscard]] Long OpenHandle() const { return open_key_; }

  // The next subkey of the open key; empty where the list ends, and the place in it stays; empty without an open key.
  [[nodiscard]] Text EnumKey();

  // A value of an open key: a text in all its length, or a 32-bit number. A value that is not there, and one of any
  // other kind, give kNoSuchValue and leave `value`; the former resets the enumeration.
  using Value = std::variant<Text, Long>;
  [[nodiscard]] Long QueryValueEx(Long key, const Text& name, Value& value);

  // Values of the key, which is opened for reading where none is open. A text ends before its first zero character; a
  // number as text is its digits, and a text as number is 0.
  [[nodiscard]] Text StringValue(const Text& name);
  [[nodiscard]] Long LongValue(const Text& name);

  // Write a value, making the key where it is missing. Each resets the enumeration; the open key stays open.
  //   meant  an empty text is never stored: it becomes a blank, in the caller's variable as well
  [[nodiscard]] Long SetStringValue(const Text& name, Text& value);
  [[nodiscard]] Long SetLongValue(const Text& name, Long value);

  // Opens `key_name` for reading, in place of the open key, and deletes `sub_key` below it; true where that was done.
  // Resets the enumeration.
  //   meant  the key named "0" below the root is tried first, and where that can be deleted `sub_key` stays
  [[nodiscard]] bool DeleteKey(const Text& key_name, const Text& sub_key);

  // Lets a new scratch branch stand for the current user's, for this process. Gives its handle, which RedeemRegistry
  // takes back; 0 where it could not be done.
  [[nodiscard]] static Long OverrideCurrentUser();
  // The same with the policy in it; a policy that could not be written is passed over.
  [[nodiscard]] static Long SettingsforCommonDialog();
  // The user's own branch is in force again; the scratch branch that belongs to `handle` is deleted. With 0 nothing is
  // deleted.
  static void RedeemRegistry(Long handle);

 private:
  void ResetEnumeration() { next_subkey_ = 0; }
  bool EnsureOpen();
  [[nodiscard]] Long Store(const Text& name, Long kind, std::span<const std::byte> value);

  Long root_ = kLocalMachineKey;
  Text key_name_;
  Long open_key_ = 0;
  Long next_subkey_ = 0;
};

}  // namespace tallybook
