#include "tallybook/inspect/DefinedLook.h"

#include <algorithm>
#include <filesystem>
#include <fmt/format.h>
#include <system_error>

#include "base/Failure.h"
#include "tallybook/application/DefinitionLook.h"
#include "tallybook/application/FileRemoval.h"
#include "tallybook/application/ImportHistory.h"
#include "tallybook/application/ImportWays.h"
#include "tallybook/application/Shown.h"

namespace tallybook::inspect {

namespace {

class DefinedLookRun {
 public:
  DefinedLookRun(application::WholeFiles& files, engine::Book& book, const DefinedLookRequest& request,
                 FindingListener& listener)
      : files_(files),
        book_(book),
        request_(request),
        listener_(listener),
        seen_(application::NeedDefinition(files, book, request.definition)),
        definition_(application::ReadDefinitionAt(seen_.path)) {}

  QdxLookTally Run() {
    QdxLookTally tally = LookAtQdx(
        book_,
        {.file = request_.file,
         .definition = definition_,
         .math = request_.math,
         .archive_copy = application::ArchiveCopyName(book_.DataPath(), book_.FileExtension(), request_.definition)},
        listener_);
    if (tally.cancelled) return tally;
    LookAtHistory();
    LookAtPattern();
    LookAtRemoval();
    for (std::size_t i = 0; i < tally.findings.size(); ++i) tally.findings[i] += own_[i];
    return tally;
  }

 private:
  void Tell(Effect effect, const Text& reason, const Text& help) {
    Finding finding;
    finding.effect = effect;
    finding.reason = reason;
    finding.help = help;
    ++own_[static_cast<std::size_t>(effect)];
    listener_.Found(finding);
  }

  void LookAtHistory() {
    const auto way = application::WayOfDefinition(request_.definition, seen_.title, request_.math);
    const Text place = files_.PlaceOf(request_.file).value_or(request_.file);
    const auto earlier = application::ImportHistory(book_).Find(request_.file, place, way);
    if (!earlier) return;
    Tell(Effect::kAudit, application::EarlierImportReason(request_.file, *earlier),
         "import it again only where that is meant");
  }

  // A file may be looked at before it lies where the import finds it.
  void LookAtPattern() {
    const auto found = application::ExchangeFilesOf(seen_.exchange_files);
    const bool is_found = std::ranges::any_of(found, [&](const Text& file) {
      std::error_code error;
      return file == request_.file || std::filesystem::equivalent(file, request_.file, error);
    });
    if (is_found) return;
    Tell(Effect::kNote,
         fmt::format("the definition does not find the file: it imports {}",
                     application::OnOneLine(seen_.exchange_files)),
         "");
  }

  void LookAtRemoval() {
    if (definition_.Disp != kDispDelete && definition_.Disp != kDispRename) return;
    try {
      application::NeedRemovable(files_, request_.file);
    } catch (const Failure& failure) {
      Tell(Effect::kSilent,
           fmt::format("it cannot be {} after the import, and the next run imports it again: {}",
                       definition_.Disp == kDispDelete ? "deleted" : "renamed", failure.Description()),
           "have the definition keep it, or let its folder be written");
    }
  }

  application::WholeFiles& files_;
  engine::Book& book_;
  const DefinedLookRequest& request_;
  FindingListener& listener_;
  application::SeenDefinition seen_;
  DefinitionRecord definition_;
  decltype(LookTally::findings) own_ = {};
};

}  // namespace

QdxLookTally LookByDefinition(application::WholeFiles& files, engine::Book& book, const DefinedLookRequest& request,
                              FindingListener& listener) {
  return DefinedLookRun(files, book, request, listener).Run();
}

}  // namespace tallybook::inspect
