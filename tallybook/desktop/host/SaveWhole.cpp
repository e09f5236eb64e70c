#include "tallybook/desktop/host/SaveWhole.h"

#include <span>

#include "platform/FileSystem.h"
#include "platform/Platform.h"
#include "support/FileStream.h"
#include "tallybook/application/OutputRules.h"
#include "tallybook/application/WholeFile.h"

namespace tallybook::desktop {

void SaveWhole(const Text& path, const std::string& bytes) {
  SaveWhole(path, application::OutputRules(), [&](FileStream& into) { into.Write(std::as_bytes(std::span(bytes))); });
}

void SaveWhole(const Text& path, const application::OutputRules& rules,
               const std::function<void(FileStream& into)>& write) {
  rules.Check(path);
  FileSystem& files = *ThePlatform().files;
  application::WholeFile whole(files, path);
  FileStream stream(files.Open(whole.Begin(), Access::kWrite, Sharing::kLockReadWrite, Creation::kReplace));
  write(stream);
  stream.Close();
  whole.Keep();
}

}  // namespace tallybook::desktop
