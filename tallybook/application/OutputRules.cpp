#include "tallybook/application/OutputRules.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <fcntl.h>
#include <filesystem>
#include <string_view>
#include <system_error>
#include <unistd.h>

#include "base/Failure.h"
#include "platform/posix/Descriptor.h"
#include "platform/posix/SystemError.h"
#include "qdx/HeaderItems.h"
#include "tallybook/engine/BookCompanions.h"
#include "tallybook/engine/BookFile.h"

namespace tallybook::application {

namespace {

namespace fs = std::filesystem;

// The head of a SQLite file (sqlite.org/fileformat2.html, "The Database Header"), and of a write-ahead log ("The WAL
// File Format"). The last byte of a log's mark tells the byte order of its checksums.
constexpr std::size_t kHeadSize = 100;
constexpr std::string_view kDatabaseMark("SQLite format 3\0", 16);
constexpr std::size_t kApplicationIdOffset = 68;
constexpr std::string_view kLogMark("\x37\x7f\x06", 3);

[[noreturn]] void Refuse(const Text& path, const Text& reason) {
  throw Failure(FailureNumber::kPathOrAccess, path + " " + reason, "FileSystem");
}

// The first bytes of a file; fewer where it is shorter.
std::string HeadOf(const Text& path) {
  const Descriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
  std::string head(kHeadSize, '\0');
  const ssize_t count = file.IsOpen() ? ::pread(file.Number(), head.data(), head.size(), 0) : -1;
  if (count < 0) {
    throw Failure(FailureNumber::kPermissionDenied,
                  path + " cannot be looked at before it is replaced: " + WordsOfError(errno), "FileSystem");
  }
  head.resize(static_cast<std::size_t>(count));
  return head;
}

std::uint32_t ApplicationIdIn(std::string_view head) {
  std::uint32_t number = 0;
  if (head.size() < kApplicationIdOffset + sizeof number) return 0;
  for (std::size_t i = 0; i < sizeof number; ++i)
    number = number << 8U | static_cast<unsigned char>(head[kApplicationIdOffset + i]);
  return number;
}

// Either mark alone will do: a book may be damaged just there.
bool IsBookHead(std::string_view head) {
  return ApplicationIdIn(head) == engine::kBookApplicationId;
}

// A table that we export as a SQLite file has no application's mark; any other database is somebody's.
bool IsForeignDatabase(std::string_view head) {
  return head.starts_with(kDatabaseMark) && ApplicationIdIn(head) != 0;
}

bool IsExchangeFile(std::string_view head) {
  return head.starts_with(kMagic);
}

}  // namespace

void OutputRules::Protect(const Text& path, const Text& what, Role role) {
  protected_.push_back({.resolved = ResolveLinks(path), .identity = LookAt(path).identity, .what = what, .role = role});
}

void OutputRules::ProtectOutput(const Text& path, const Text& what) {
  Protect(path, what, Role::kOutput);
}

void OutputRules::ProtectInput(const Text& path) {
  Protect(path, "the input of this command", Role::kInput);
}

void OutputRules::ProtectBook(const Text& path) {
  Protect(path, "the book of this command", Role::kBook);
}

const OutputRules::Protected* OutputRules::Find(const Text& resolved, const FileIdentity& identity) const {
  const bool there = identity != FileIdentity{};
  const auto found = std::ranges::find_if(protected_, [&](const Protected& other) {
    return other.resolved == resolved || (there && other.identity == identity);
  });
  return found == protected_.end() ? nullptr : &*found;
}

bool OutputRules::IsBook(const Text& path) const {
  const FileLook look = LookAt(path);
  if (look.kind != FileKind::kRegular) return false;
  if (const Protected* known = Find(path, look.identity)) return known->role == Role::kBook;
  return IsBookHead(HeadOf(path));
}

// The book beside which `resolved` is a companion file, by name; empty where there is none.
Text OutputRules::BookOfCompanion(const Text& resolved) const {
  const std::vector<Text> owners = engine::PossibleOwners(resolved);
  const auto book = std::ranges::find_if(owners, [&](const Text& owner) { return IsBook(owner); });
  return book == owners.end() ? Text() : *book;
}

void OutputRules::CheckContents(const Text& path, const Text& resolved, bool in_place) const {
  const std::string head = HeadOf(resolved);
  if (IsBookHead(head)) Refuse(path, "is a book; nothing is written over one");
  if (ApplicationIdIn(head) == engine::kBackupApplicationId)
    Refuse(path, "is the backup of a book; nothing is written over one");
  if (IsForeignDatabase(head)) Refuse(path, "is the database of a program; nothing is written over one");
  if (head.starts_with(kLogMark)) Refuse(path, "is the log of a database; nothing is written over one");
  if (in_place && IsExchangeFile(head))
    Refuse(path, "is an exchange file; messages and reports are not written over one");
}

void OutputRules::CheckAll(const Text& path, bool in_place) const {
  const FileLook look = LookAt(path);
  if (look.kind != FileKind::kRegular && look.kind != FileKind::kMissing)
    Refuse(path, "is " + WordsFor(look.kind) + "; an output needs a file");
  const Text resolved = ResolveLinks(path);
  if (const Protected* other = Find(resolved, look.identity))
    Refuse(path, "is " + other->what + "; nothing is written over it");
  if (const Text book = BookOfCompanion(resolved); !book.empty())
    Refuse(path, "belongs to the book " + book + "; nothing is written over it");
  if (look.kind == FileKind::kMissing) return;
  if (engine::IsDefinitionName(fs::path(resolved).filename().string()))
    Refuse(path, "is an exchange definition; nothing is written over one");
  CheckContents(path, resolved, in_place);
  if (in_place && look.names > 1)
    Refuse(path, "has more than one name (hard links); what is written there would show in all");
}

void OutputRules::CheckInput(const Text& path) const {
  const Protected* other = Find(ResolveLinks(path), LookAt(path).identity);
  if (other != nullptr && other->role != Role::kInput)
    Refuse(path, "is " + other->what + "; it cannot be read as well");
}

void OutputRules::NeedNoBook(const Text& path) const {
  if (IsBook(ResolveLinks(path))) Refuse(path, "is a book; nothing is written over one");
}

void OutputRules::Check(const Text& path) const {
  CheckAll(path, false);
}

void OutputRules::CheckInPlace(const Text& path) const {
  CheckAll(path, true);
}

}  // namespace tallybook::application
