#include "tallybook/application/OpenToChange.h"

#include "base/Failure.h"
#include "tallybook/application/FileDisposals.h"

namespace tallybook::application {

namespace {

void TellDue(engine::Book& book, FileSystem& files, const engine::Notice& tell) {
  try {
    for (const DisposalOutcome& outcome : CarryOutDue(book, files)) tell(DisposalText(outcome));
  } catch (...) {
    tell("files that are still to be deleted or renamed cannot be told: " + CurrentFailure().Description());
  }
}

}  // namespace

std::unique_ptr<engine::Book> OpenToChange(const Text& path, HostApp& app, const engine::BookOptions& options,
                                           FileSystem& files) {
  auto book = engine::Book::Open(path, app, options);
  TellDue(
      *book, files, options.notice ? options.notice : [](const Text& /*line*/) {});
  return book;
}

}  // namespace tallybook::application
