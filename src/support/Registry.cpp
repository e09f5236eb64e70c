#include "support/Registry.h"

#include <array>
#include <span>
#include <string>
#include <utility>

#include "base/Bytes.h"
#include "base/CodePage.h"
#include "base/Failure.h"
#include "platform/Platform.h"
#include "support/WinAPI.h"

namespace tallybook {

namespace {

constexpr Long kDone = 0;
constexpr const char* kScratchBranch = "BrennockSoftware_Vedrix";
constexpr const char* kPolicyKey = "Software\\Microsoft\\Windows\\CurrentVersion\\Policies\\ComDlg32";
constexpr const char* kPolicyValue = "NoPlacesBar";

RegistryOperations* Operations() {
  return ThePlatform().registry;
}

Long Write(RegistryOperations& operations, Long root, const Text& path, const Text& name, Long kind,
           std::span<const std::byte> value) {
  Long key = 0;
  const Long made = operations.CreateKey(root, path, kWriteKey, key);
  if (made != kDone) return made;
  const Long written = operations.SetValue(key, name, kind, value);
  operations.CloseKey(key);
  return written;
}

Long ReadText(RegistryOperations& operations, Long key, const Text& name, Long size, Registry::Value& value) {
  std::string bytes(static_cast<std::size_t>(size), '\0');
  Long kind = 0;
  const Long status = operations.QueryValue(key, name, kind, std::as_writable_bytes(std::span(bytes)), size);
  value = FromCodePage(bytes);
  return status;
}

Long ReadNumber(RegistryOperations& operations, Long key, const Text& name, Registry::Value& value) {
  std::array<std::byte, sizeof(Long)> bytes{};
  Long kind = 0;
  Long size = 0;
  const Long status = operations.QueryValue(key, name, kind, bytes, size);
  value = FromBytes<Long>(bytes.data());
  return status;
}

}  // namespace

Registry::~Registry() {
  CloseKey();
}

void Registry::SetRoot(Long root) {
  if (root_ == root) return;
  CloseKey();
  root_ = root;
}

void Registry::SetKeyName(const Text& path) {
  if (key_name_ == path) return;
  CloseKey();
  key_name_ = path;
}

Long Registry::OpenKey(Long& access) {
  if (access == 0) access = kReadKey;
  CloseKey();
  RegistryOperations* const operations = Operations();
  if (operations == nullptr) return kNoRegistry;
  Long opened = 0;
  const Long status = operations->OpenKey(root_, key_name_, access, opened);
  if (status == kDone) open_key_ = opened;
  return status;
}

void Registry::CloseKey() {
  ResetEnumeration();
  const Long closing = std::exchange(open_key_, 0);
  // An object may outlive the platform; what it had open is closed with the process then.
  if (closing == 0 || !IsPlatformInstalled() || Operations() == nullptr) return;
  Operations()->CloseKey(closing);
}

bool Registry::EnsureOpen() {
  Long access = kReadKey;
  return open_key_ != 0 || OpenKey(access) == kDone;
}

Text Registry::EnumKey() {
  Text name;
  if (open_key_ == 0 || Operations()->EnumerateKey(open_key_, next_subkey_, name) != kDone) return {};
  ++next_subkey_;
  return name;
}

Long Registry::QueryValueEx(Long key, const Text& name, Value& value) {
  RegistryOperations* const operations = Operations();
  Long kind = 0;
  Long size = 0;
  if (operations == nullptr || operations->QueryValue(key, name, kind, {}, size) != kDone) {
    ResetEnumeration();
    return kNoSuchValue;
  }
  switch (kind) {
    case kTextValue:
      return ReadText(*operations, key, name, size, value);
    case kBinaryValue:
    case kNumberValue:
      return ReadNumber(*operations, key, name, value);
    default:
      return kNoSuchValue;
  }
}

Text Registry::StringValue(const Text& name) {
  Value value;
  if (!EnsureOpen() || QueryValueEx(open_key_, name, value) != kDone) return {};
  if (const Long* const number = std::get_if<Long>(&value)) return std::to_string(*number);
  return CutAtNull(std::get<Text>(value));
}

Long Registry::LongValue(const Text& name) {
  Value value;
  if (!EnsureOpen() || QueryValueEx(open_key_, name, value) != kDone) return 0;
  const Long* const number = std::get_if<Long>(&value);
  return number == nullptr ? 0 : *number;
}

Long Registry::Store(const Text& name, Long kind, std::span<const std::byte> value) {
  ResetEnumeration();
  RegistryOperations* const operations = Operations();
  return operations == nullptr ? kNoRegistry : Write(*operations, root_, key_name_, name, kind, value);
}

Long Registry::SetStringValue(const Text& name, Text& value) {
  if (value.empty()) value = " ";
  ResetEnumeration();
  try {
    const std::string bytes = ToCodePage(value) + '\0';
    return Store(name, kTextValue, std::as_bytes(std::span(bytes)));
  } catch (const Failure& failure) {
    return failure.Code();  // a character that the registry's code page lacks
  }
}

Long Registry::SetLongValue(const Text& name, Long value) {
  return Store(name, kNumberValue, ToBytes(value));
}

bool Registry::DeleteKey(const Text& key_name, const Text& sub_key) {
  CloseKey();
  RegistryOperations* const operations = Operations();
  if (operations == nullptr) return false;
  Long opened = 0;
  if (operations->OpenKey(root_, key_name, kReadKey, opened) != kDone) return false;
  open_key_ = opened;
  // Meant: the call stands in this form, and its usual failure leads to the key that was named.
  return operations->DeleteKey(root_, "0") == kDone || operations->DeleteKey(open_key_, sub_key) == kDone;
}

Long Registry::OverrideCurrentUser() {
  RegistryOperations* const operations = Operations();
  Long branch = 0;
  if (operations == nullptr || operations->CreateKey(kCurrentUserKey, kScratchBranch, kWriteKey, branch) != kDone)
    return 0;
  if (operations->OverridePredefinedKey(kCurrentUserKey, branch) == kDone) return branch;
  operations->CloseKey(branch);
  return 0;
}

Long Registry::SettingsforCommonDialog() {
  const Long branch = OverrideCurrentUser();
  if (branch != 0) (void)Write(*Operations(), branch, kPolicyKey, kPolicyValue, kNumberValue, ToBytes(Long{1}));
  return branch;
}

void Registry::RedeemRegistry(Long handle) {
  RegistryOperations* const operations = Operations();
  if (operations == nullptr) return;
  if (operations->OverridePredefinedKey(kCurrentUserKey, 0) != kDone || handle == 0) return;
  if (operations->CloseKey(handle) == kDone) (void)operations->DeleteTree(kCurrentUserKey, kScratchBranch);
}

}  // namespace tallybook
