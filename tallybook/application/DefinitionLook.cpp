#include "tallybook/application/DefinitionLook.h"

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <string_view>
#include <system_error>
#include <unistd.h>

#include "base/Failure.h"
#include "exchange/DefinitionFile.h"
#include "import/DefinitionRecord.h"
#include "platform/FileSystem.h"
#include "platform/Platform.h"
#include "support/Utility.h"
#include "tallybook/application/CompanionFiles.h"
#include "tallybook/application/FileKind.h"
#include "tallybook/application/WholeFiles.h"
#include "tallybook/engine/Book.h"

namespace tallybook::application {

namespace {

namespace fs = std::filesystem;

constexpr std::string_view kPrefix = "TBQDX";
constexpr int kMostAttempts = 4;  // of the store: the first, and three more a second apart

// The number in "TBQDX7.NAME"; 0 for any other name.
Integer NumberIn(const Text& name, const Text& extension) {
  const std::size_t around = kPrefix.size() + 1 + extension.size();
  if (!name.starts_with(kPrefix) || !name.ends_with("." + extension) || name.size() < around) return 0;
  return CompanionNumber(std::string_view(name).substr(kPrefix.size(), name.size() - around));
}

std::unique_ptr<OpenFile> OpenPatiently(WholeFiles& files, const Text& path) {
  for (int attempt = 1;; ++attempt) {
    try {
      return files.Open(path, Access::kRead, Sharing::kLockWrite, Creation::kMustExist);
    } catch (const Failure& failure) {
      const bool held = failure.Number() == FailureNumber::kPermissionDenied && ::access(path.c_str(), R_OK) == 0;
      if (!held || attempt == kMostAttempts) throw;
      WaitSeconds(1);
    }
  }
}

Text ContentsOf(WholeFiles& files, const Text& path) {
  const auto file = OpenPatiently(files, path);
  Text contents(static_cast<std::size_t>(file->Size()), '\0');
  contents.resize(file->ReadAt(0, std::as_writable_bytes(std::span(contents))));
  return contents;
}

// A definition is written with a line end behind each line.
bool IsCut(std::string_view contents) {
  return contents.empty() || (contents.back() != '\n' && contents.back() != '\r');
}

// Takes what the definition says, or the reason why it cannot be read.
void Read(WholeFiles& files, SeenDefinition& seen) {
  const FileKind kind = LookAt(seen.path).kind;
  if (kind != FileKind::kRegular) {
    seen.trouble = "it is " + (kind == FileKind::kMissing ? Text("a link that leads nowhere") : WordsFor(kind));
    return;
  }
  const Text contents = ContentsOf(files, seen.path);
  files.Show(seen.path, contents);
  if (IsCut(contents)) {
    seen.trouble = "it is cut short";
    return;
  }
  DefinitionRecord record;
  if (!ReadDefinition(seen.path, TablesWanted::kRead, record, [] {})) {
    seen.trouble = "it is cut short or damaged";
    return;
  }
  seen.title = record.Desc;
  seen.exchange_files = record.QdxFileName;
}

// The names in a folder.
std::vector<Text> NamesIn(const Text& folder) {
  std::vector<Text> names;
  std::error_code error;
  fs::directory_iterator entry(folder.empty() ? Text(".") : folder, error);
  for (; !error && entry != fs::directory_iterator(); entry.increment(error))
    names.push_back(entry->path().filename().string());
  if (!error) return names;
  const bool denied = error == std::errc::permission_denied;
  throw Failure(denied ? FailureNumber::kPermissionDenied : FailureNumber::kDeviceError,
                "the folder " + folder + " cannot be listed: " + error.message(), "DefinitionLook");
}

}  // namespace

std::vector<SeenDefinition> LookAtDefinitions(WholeFiles& files, const Text& folder, const Text& extension) {
  std::vector<SeenDefinition> definitions;
  for (const Text& name : NamesIn(folder)) {
    const Integer number = NumberIn(name, extension);
    if (number < 1) continue;
    SeenDefinition& seen = definitions.emplace_back();
    seen.number = number;
    seen.path = folder + name;
    try {
      Read(files, seen);
    } catch (const Failure& failure) {
      seen.trouble = failure.Description();
    }
  }
  std::ranges::sort(definitions, {}, &SeenDefinition::number);
  return definitions;
}

void NeedReadableDefinitions(const std::vector<SeenDefinition>& definitions) {
  Text troubles;
  for (const SeenDefinition& seen : definitions) {
    if (seen.trouble.empty()) continue;
    troubles += (troubles.empty() ? "" : "; ") + ("exchange definition " + std::to_string(seen.number)) + " (" +
                seen.path + ") cannot be read: " + seen.trouble;
  }
  if (!troubles.empty()) throw Failure(FailureNumber::kPathOrAccess, troubles, "DefinitionLook");
}

DefinitionRecord ReadDefinitionAt(const Text& path) {
  DefinitionRecord record;
  if (ReadDefinition(path, TablesWanted::kRead, record, [] {})) return record;
  throw Failure(FailureNumber::kPathOrAccess, path + ": the exchange definition cannot be read", "DefinitionLook");
}

void FailNoDefinition(const Text& book_path, Integer number, const std::vector<Integer>& numbers) {
  Text in_use;
  for (const Integer other : numbers) in_use += (in_use.empty() ? "" : ", ") + std::to_string(other);
  throw Failure(FailureNumber::kInvalidArgument,
                book_path + ": there is no exchange definition " + std::to_string(number) + "; " +
                    (in_use.empty() ? "there are none" : "the numbers in use are " + in_use),
                "DefinitionLook");
}

SeenDefinition NeedDefinition(WholeFiles& files, const engine::Book& book, Integer number) {
  const auto definitions = LookAtDefinitions(files, book.DataPath(), book.FileExtension());
  const auto found = std::ranges::find(definitions, number, &SeenDefinition::number);
  if (found == definitions.end()) {
    std::vector<Integer> numbers;
    std::ranges::transform(definitions, std::back_inserter(numbers), &SeenDefinition::number);
    FailNoDefinition(book.Path(), number, numbers);
  }
  NeedReadableDefinitions({*found});
  return *found;
}

Text ArchiveCopyName(const Text& folder, const Text& extension, Integer number) {
  return folder + "TBQDBU" + std::to_string(number) + "." + extension;
}

std::vector<Text> ExchangeFilesOf(const Text& pattern) {
  std::vector<Text> files;
  const Text folder = AddBackslash(FilePath(pattern));
  for (const FoundFile& found : ThePlatform().files->Find(pattern)) files.push_back(folder + found.name);
  return files;
}

void NeedRegularExchangeFiles(const Text& pattern) {
  if (pattern.find_first_of("*?") == Text::npos) NeedRegularFile(pattern);
  if (const Text folder = FilePath(pattern); LookAt(folder.empty() ? "." : folder).kind == FileKind::kFolder)
    (void)NamesIn(folder);
  for (const Text& file : ExchangeFilesOf(pattern)) NeedRegularFile(file);
}

}  // namespace tallybook::application
