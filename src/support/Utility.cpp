#include "support/Utility.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "base/CodePage.h"
#include "base/Failure.h"
#include "base/Narrow.h"
#include "base/Texts.h"
#include "platform/Clock.h"
#include "platform/FileSystem.h"
#include "platform/InputQueue.h"
#include "platform/MessageBoxes.h"
#include "platform/Platform.h"
#include "support/LastFailures.h"
#include "support/StreamItems.h"
#include "support/WinAPI.h"

namespace tallybook {

namespace {

// --- The open-files table --------------------------------------------------------------------------------------------

constexpr std::size_t kTableStep = 10;
constexpr std::size_t kTableLimit = std::numeric_limits<Integer>::max();

struct OpenEntry {
  std::unique_ptr<FileStream> stream;
  Text name;
};

// The state of the process's numbered files; ResetOpenFiles makes it new.
struct OpenFilesTable {
  std::vector<OpenEntry> entries;  // file number N stands at N - 1
  bool no_file_sharing = false;
  std::optional<Failure> last_failure;         // of an open that gave false
  std::optional<Failure> last_change_failure;  // of a deletion or renaming that gave false

  void Create() {
    if (entries.empty()) entries.resize(kTableStep);
  }
  OpenEntry* Find(Integer file_number) {
    const auto number = static_cast<std::size_t>(std::max<Integer>(file_number, 0));
    return number == 0 || number > entries.size() ? nullptr : &entries[number - 1];
  }
  // The lowest number that is not open: it may lie above the top.
  [[nodiscard]] Integer FreeNumber() const {
    const auto free =
        std::find_if(entries.begin(), entries.end(), [](const OpenEntry& entry) { return entry.stream == nullptr; });
    return ToInteger(free - entries.begin() + 1);
  }
  void Put(Integer file_number, OpenEntry entry) {
    const auto number = static_cast<std::size_t>(file_number);
    while (entries.size() < number) entries.resize(std::min(entries.size() + kTableStep, kTableLimit));
    entries[number - 1] = std::move(entry);
  }
};

OpenFilesTable& OpenFiles() {
  static OpenFilesTable table;
  return table;
}

// --- Opening ---------------------------------------------------------------------------------------------------------

struct OpenMode {
  std::string_view name;
  Access access;
  Sharing sharing;
  Creation creation;
  bool at_end = false;
};

// The mode table. It stands in Utility.h in words.
constexpr OpenMode kModes[] = {
    {"BS", Access::kReadWrite, Sharing::kShared, Creation::kCreateIfMissing},
    {"BR", Access::kRead, Sharing::kShared, Creation::kMustExist},
    {"BL", Access::kReadWrite, Sharing::kLockReadWrite, Creation::kCreateIfMissing},
    {"RS", Access::kReadWrite, Sharing::kShared, Creation::kCreateIfMissing},
    {"RR", Access::kRead, Sharing::kShared, Creation::kMustExist},
    {"RL", Access::kReadWrite, Sharing::kLockReadWrite, Creation::kCreateIfMissing},
    {"O", Access::kWrite, Sharing::kLockReadWrite, Creation::kReplace},
    {"A", Access::kWrite, Sharing::kLockReadWrite, Creation::kCreateIfMissing, true},
    {"I", Access::kRead, Sharing::kLockWrite, Creation::kMustExist},
};

const OpenMode* FindMode(const Text& name) {
  const auto* const found =
      std::find_if(std::begin(kModes), std::end(kModes), [&](const OpenMode& mode) { return mode.name == name; });
  return found == std::end(kModes) ? nullptr : found;
}

bool IsTextMode(const OpenMode& mode) {
  return mode.name.size() == 1;
}

// An open without access and sharing clause: binary files and records are then read and written where that is
// permitted, and only read otherwise. Meant: it makes a missing file for the reading modes too.
std::unique_ptr<OpenFile> OpenPlainly(const OpenMode& mode, const Text& name) {
  FileSystem& files = *ThePlatform().files;
  if (IsTextMode(mode)) return files.Open(name, mode.access, Sharing::kShared, mode.creation);
  try {
    return files.Open(name, Access::kReadWrite, Sharing::kShared, Creation::kCreateIfMissing);
  } catch (const Failure& failure) {
    if (failure.Number() != FailureNumber::kPermissionDenied) throw;
    return files.Open(name, Access::kRead, Sharing::kShared, Creation::kMustExist);
  }
}

std::unique_ptr<FileStream> OpenOnce(const OpenMode& mode, const Text& name) {
  const bool plain = OpenFiles().no_file_sharing;
  auto stream = std::make_unique<FileStream>(
      plain ? OpenPlainly(mode, name) : ThePlatform().files->Open(name, mode.access, mode.sharing, mode.creation));
  if (mode.at_end) stream->Seek(stream->Size());
  if (plain) OpenFiles().no_file_sharing = true;
  return stream;
}

// What an attempt to open met; nothing where it succeeded.
std::optional<Failure> TryOpen(const OpenMode& mode, const Text& name, std::unique_ptr<FileStream>& stream) {
  try {
    stream = OpenOnce(mode, name);
    return std::nullopt;
  } catch (...) {
    return CurrentFailure();
  }
}

// Decides after each failed attempt whether there is to be another.
class Retries {
 public:
  // True: try again, with `name` as it stands now.
  bool Allow(FailureNumber failure, Text& name) {
    if (failure == FailureNumber::kPermissionDenied && !OpenFiles().no_file_sharing) {
      if (count_ == kMost) return false;
      ++count_;
      WaitSeconds(1);
      return true;
    }
    if (failure == FailureNumber::kFeatureUnavailable && count_ == 0) {
      ++count_;
      return true;
    }
    return MapRemoteDrive(name);
  }

 private:
  static constexpr int kMost = 3;
  int count_ = 0;
};

void CloseQuietly(OpenEntry& entry) {
  const OpenEntry closing = std::exchange(entry, OpenEntry{});
  if (closing.stream == nullptr) return;
  try {
    closing.stream->Close();
  } catch (const Failure&) {
    // Meant: closing a number never fails. Who must know flushes first.
    return;
  }
}

// --- Paths and input -------------------------------------------------------------------------------------------------

constexpr std::string_view kSeparators = "\\/";

bool IsSeparator(char c) {
  return kSeparators.find(c) != std::string_view::npos;
}

// Keyboard, mouse button, paint and hot-key work.
constexpr Long kWorthRunning = 0xA5;

constexpr Single kWaitStep = 0.05F;  // seconds between two looks at the clock

}  // namespace

// --- Files -----------------------------------------------------------------------------------------------------------

bool OpenFileEx(const Text& mode, Integer& file_number, Text& file_name, [[maybe_unused]] Integer record_length) {
  OpenFilesTable& table = OpenFiles();
  table.Create();
  HandlePendingInput();
  const Integer number = file_number == 0 ? table.FreeNumber() : file_number;
  file_number = 0;

  const OpenMode* const how = FindMode(mode);
  if (how == nullptr) {
    ShowMessage("ERROR WITH FILE TYPE: " + mode, kStopIcon, "");
    return false;
  }
  if (number < 0) return false;
  if (OpenEntry* const open = table.Find(number)) CloseQuietly(*open);

  std::unique_ptr<FileStream> stream;
  Retries retries;
  while (const auto failure = TryOpen(*how, file_name, stream)) {
    table.last_failure = failure;
    if (!retries.Allow(failure->Number(), file_name)) return false;
  }

  table.Put(number, {std::move(stream), file_name});
  file_number = number;
  return true;
}

const std::optional<Failure>& LastOpenFailure() {
  return OpenFiles().last_failure;
}

bool CloseFileEx(Integer& file_number) {
  OpenEntry* const entry = OpenFiles().Find(file_number);
  if (entry == nullptr) return false;
  CloseQuietly(*entry);
  file_number = 0;
  HandlePendingInput();
  return true;
}

FileStream& FileOf(Integer file_number) {
  const OpenEntry* const entry = OpenFiles().Find(file_number);
  if (entry == nullptr || entry->stream == nullptr)
    throw Failure(FailureNumber::kBadFileNumber, "No file is open under the number " + std::to_string(file_number));
  return *entry->stream;
}

Text OpenFileName(Integer file_number) {
  const OpenEntry* const entry = OpenFiles().Find(file_number);
  return entry == nullptr ? Text() : entry->name;
}

Integer OpenFilesTop() {
  return ToInteger(static_cast<long long>(OpenFiles().entries.size()));
}

void ResetOpenFiles() {
  for (OpenEntry& entry : OpenFiles().entries) CloseQuietly(entry);
  OpenFiles() = OpenFilesTable{};
}

bool NoFileSharing() {
  return OpenFiles().no_file_sharing;
}
void SetNoFileSharing(bool plain) {
  OpenFiles().no_file_sharing = plain;
}

bool FileExists(const Text& name) {
  try {
    const FileAttributes attributes = ThePlatform().files->Attributes(name);
    return (attributes.found && !attributes.directory) || attributes.sharing_violation;
  } catch (const Failure&) {
    // A file that cannot be asked about is as good as none; this operation reports nothing.
    return false;
  }
}

bool KillFile(const Text& name) {
  if (!FileExists(name)) return true;
  try {
    ThePlatform().files->Delete(name);
    return true;
  } catch (const Failure& failure) {
    OpenFiles().last_change_failure = failure;
    return false;
  }
}

bool RenameFile(const Text& old_name, const Text& new_name) {
  if (!FileExists(old_name)) return true;
  // A file that bears the name already is kept: deleting "the new name" would delete it.
  if (old_name == new_name) return true;
  if (!KillFile(new_name)) return false;
  try {
    ThePlatform().files->Rename(old_name, new_name);
    return true;
  } catch (const Failure& failure) {
    OpenFiles().last_change_failure = failure;
    return false;
  }
}

const std::optional<Failure>& LastChangeFailure() {
  return OpenFiles().last_change_failure;
}

bool MapRemoteDrive(Text& name) {
  static constexpr std::string_view kClient = "\\\\tsclient\\";
  if (LowerCase(name.substr(0, kClient.size())) != kClient) return false;
  const std::size_t drive = name.size() == kClient.size() ? 0 : CharacterLength(name, kClient.size());
  name = name.substr(kClient.size(), drive) + ":" + name.substr(kClient.size() + drive);
  return true;
}

void PutInt16(Integer file_number, Integer value) {
  Put(FileOf(file_number), value);
}
void PutInt32(Integer file_number, Long value) {
  Put(FileOf(file_number), value);
}
void GetInt16(Integer file_number, Integer& value) {
  Get(FileOf(file_number), value);
}
void GetInt32(Integer file_number, Long& value) {
  Get(FileOf(file_number), value);
}

void WriteShortString(Integer file_number, const Text& text) {
  PutCounted(FileOf(file_number), text);
}
void ReadShortString(Integer file_number, Text& text) {
  GetCounted(FileOf(file_number), text);
}

// --- Waiting and input -----------------------------------------------------------------------------------------------

void HandlePendingInput() {
  InputQueue& input = *ThePlatform().input;
  if (input.HasPending(kWorthRunning)) input.RunOnce();
}

void WaitSeconds(Single seconds) {
  constexpr Double kSecondsPerDay = 86400;
  constexpr Double kClockGrain = 1e-4;  // a date as a fraction of days is no finer than some microseconds
  Clock& clock = *ThePlatform().clock;
  const Date start = clock.Now();
  Double slept = 0;
  // The sum of the sleeps ends the wait under a clock that is set back or stands still.
  while (std::floor((clock.Now() - start) * kSecondsPerDay + kClockGrain) < seconds && slept < seconds + 1) {
    HandlePendingInput();
    clock.Sleep(kWaitStep);
    slept += kWaitStep;
  }
}

// --- Paths -----------------------------------------------------------------------------------------------------------

Text FileExtension(const Text& name) {
  const std::size_t point = name.rfind('.');
  return point == Text::npos ? Text() : name.substr(point + 1);
}

Text FileBaseName(const Text& name) {
  return name.substr(name.find_last_of(kSeparators) + 1);
}

Text FilePath(const Text& name) {
  const std::size_t separator = name.substr(0, name.find('\r')).find_last_of(kSeparators);
  if (separator != Text::npos) return name.substr(0, separator + 1);
  const std::size_t second = name.empty() ? 0 : CharacterLength(name, 0);
  return second < name.size() && name[second] == ':' ? name.substr(0, second + 1) : Text();
}

Text AddBackslash(const Text& path) {
  if (path.empty() || path.back() == ':' || IsSeparator(path.back())) return path;
  const std::size_t last = path.find_last_of(kSeparators);
  return path + (last == Text::npos ? ThePlatform().files->Separator() : path[last]);
}

}  // namespace tallybook
