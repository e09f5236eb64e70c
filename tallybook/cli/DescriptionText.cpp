#include "tallybook/cli/DescriptionText.h"

#include <span>

#include "platform/FileSystem.h"
#include "platform/Platform.h"
#include "tallybook/application/StandardStreams.h"

namespace tallybook::cli {

namespace {

Text ReadWhole(const Text& path) {
  const auto file = ThePlatform().files->Open(path, Access::kRead, Sharing::kShared, Creation::kMustExist);
  Text content(static_cast<std::size_t>(file->Size()), '\0');
  content.resize(file->ReadAt(0, std::as_writable_bytes(std::span(content))));
  return content;
}

Text ReadStandardInput() {
  const application::PrivateFolder folder;
  const Text spooled = folder.Path("input");
  application::SpoolStandardInput(spooled);
  return ReadWhole(spooled);
}

}  // namespace

DescriptionText ReadDescriptionText(const Text& path) {
  if (path == application::kStandardStream) return {ReadStandardInput(), "standard input"};
  return {ReadWhole(path), path};
}

}  // namespace tallybook::cli
