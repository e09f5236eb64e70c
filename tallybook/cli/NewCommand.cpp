#include <array>
#include <fmt/format.h>

#include "platform/FileSystem.h"
#include "platform/Platform.h"
#include "tallybook/application/StandardStreams.h"
#include "tallybook/cli/Commands.h"
#include "tallybook/cli/Lines.h"
#include "tallybook/cli/Session.h"
#include "tallybook/cli/TextTable.h"
#include "tallybook/engine/BookDescription.h"

namespace tallybook::cli {

namespace {

struct NewOptions {
  Text book;
  Text description;
};

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

ExitStatus RunNew(const NewOptions& options) {
  const bool from_stream = options.description == application::kStandardStream;
  const Session session({}, {.input = options.description});
  const engine::BookDescription description =
      engine::ParseBookDescription(from_stream ? ReadStandardInput() : ReadWhole(options.description),
                                   from_stream ? "standard input" : options.description);
  const Text path = BookPath(options.book);
  engine::Book::Create(path, description);
  PrintLine(fmt::format("Made {} with {}, {} and {}.", path,
                        Counted(static_cast<long long>(description.accounts.size()), "account"),
                        Counted(static_cast<long long>(description.fields.size()), "field"),
                        Counted(static_cast<long long>(description.values.size()), "figure")));
  return ExitStatus::kDone;
}

}  // namespace

CommandTable NewCommand() {
  const auto options = std::make_shared<NewOptions>();
  CommandTable command = MakeCommand(
      "new", "Make a book from its description",
      {"tallybook new north --from north.json", "tallybook info north --json | tallybook new copy --from -"}, options,
      RunNew);
  AddBook(command, options->book);
  AddText(command, "--from", options->description, "FILE",
          "The description, in the form that `info --json` writes; - for standard input")
      .Required()
      .As(ArgumentKind::kFile);
  return command;
}

}  // namespace tallybook::cli
