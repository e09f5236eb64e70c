#include "dialogs/QdxFiles.h"

#include <vector>

#include "base/Failure.h"
#include "base/Statements.h"
#include "base/Texts.h"
#include "exchange/CDataExchange.h"
#include "host/Masterfile.h"
#include "platform/FileSystem.h"
#include "platform/Platform.h"
#include "support/HostMessages.h"
#include "support/Utility.h"

namespace tallybook {

namespace {

// Nothing is found where the search fails: meant, a bad path has no files.
std::vector<FoundFile> FindFiles(const Text& pattern) {
  try {
    return ThePlatform().files->Find(pattern);
  } catch (const Failure&) {
    return {};
  }
}

}  // namespace

Long CountMatchingFiles(const Text& pattern) {
  return FileExists(pattern) ? 1 : static_cast<Long>(FindFiles(pattern).size());
}

Text ResolveQdxFileName(const Text& name) {
  if (FileExists(name)) return name;
  const std::vector<FoundFile> found = FindFiles(name);
  return found.empty() ? name : AddBackslash(FilePath(name)) + found.front().name;
}

void BackupQdxFile(const CDataExchange& exchange, Masterfile& masterfile) {
  Statements at(Policy::kLeave, [&](const Failure& failure) {
    LogFailure(masterfile, failure, " - BackupQdxFile");
    return false;
  });
  [[maybe_unused]] const bool copied = at.Run([&] {
    const Text source = at(10, [&] { return exchange.QdxFileName(); });
    if (!at(20, [&] { return FileExists(source); })) return;
    const Text copy = at(30, [&] { return exchange.QDXBackupName(); });
    if (UpperCase(copy) == UpperCase(source)) return;
    at(40, [&] { KillFile(copy); });
    at(50, [&] { ThePlatform().files->Copy(source, copy); });
  });
}

}  // namespace tallybook
