#include "tallybook/desktop/host/PreviewRun.h"

#include "tallybook/application/FileKind.h"
#include "tallybook/application/FileRemoval.h"
#include "tallybook/application/ImportSummary.h"
#include "tallybook/application/StopText.h"
#include "tallybook/desktop/host/QtPlatform.h"

namespace tallybook::desktop {

namespace {

constexpr Integer kDataTypeOfImports = 1;
constexpr Integer kDateInThree = 0;  // fields, as the import counts them
constexpr Integer kDateInOne = -1;

}  // namespace

PreviewRun::PreviewRun(const Means& means, engine::Book& book)
    : means_(means),
      book_(book),
      quiet_(means.platform, means.app),
      overlay_({.book = book,
                .factory = quiet_.Factory(),
                .app = quiet_.App(),
                .need_removable =
                    [means](const Text& path) {
                      application::NeedRegularFile(path);
                      means.rules.NeedNoBook(path);
                      application::NeedRemovable(means.platform.Files(), path);
                    }}),
      exchange_(quiet_.Factory()) {
  quiet_.App().SetImportListener([this] { overlay_.BeginFile(exchange_.TrueFilename()); });
}

PreviewRun::~PreviewRun() = default;

void PreviewRun::End() {
  overlay_.End();
  outcome_.report = application::LinesOf(quiet_.Report());
}

// What the import's report would end in.
void PreviewRun::CloseReport(std::vector<application::FileBalance> balances) {
  const bool kept = outcome_.done || !means_.is_whole;
  if (!kept) application::KeepNone(balances);
  const std::vector<Text> closing = application::ClosingLines(balances, kept);
  if (!outcome_.report.empty()) outcome_.report.emplace_back();
  outcome_.report.insert(outcome_.report.end(), closing.begin(), closing.end());
}

void PreviewRun::RunDefinition(Integer number, Integer math) {
  (void)exchange_.OpenDefinitions(overlay_.Book(), kDataTypeOfImports);
  exchange_.SetMath(math);
  for (Integer position = 1; position <= exchange_.NumRecs(); ++position) {
    if (exchange_.FileNum(position) == number) return RunBatch(std::to_string(position), 1);
  }
  End();
}

void PreviewRun::RunAllDefinitions() {
  (void)exchange_.OpenDefinitions(overlay_.Book(), kDataTypeOfImports);
  RunBatch("ALL", static_cast<std::size_t>(exchange_.NumRecs()));
}

void PreviewRun::RunBatch(const Text& type, std::size_t definitions) {
  const Long no_window = 0;
  const bool imported = exchange_.ImportQDXFileEX(no_window, overlay_.Book(), type);
  const QDXImportRecord& record = exchange_.LastQDXImport();
  outcome_.done = imported || (!means_.is_whole && application::IsStored(record, definitions));
  End();
  CloseReport(application::BalancesOf(record, book_));
  outcome_.imports = application::ImportsOf(record, overlay_);
  for (const application::ImportNote& note : application::NotesOf(record)) notes_.push_back(note.text);
  for (const StopReason& stop : application::StopsOf(record)) notes_.push_back(application::StopText(stop));
}

Integer PreviewRun::DefinitionAtWork() const {
  return exchange_.NumRecs() > 0 && exchange_.File() > 0 ? exchange_.FileNum() : Integer{0};
}

void PreviewRun::RunCsv(const Text& file) {
  exchange_.SetOwner(&overlay_.Book());
  overlay_.BeginFile(file);
  const bool no_prompts = true;
  EndText(file, exchange_.ImportCSVFile(file, !no_prompts, {0}, eMath::mDefault));
}

void PreviewRun::RunDelimited(const Text& file, const application::DelimitedWay& way) {
  exchange_.SetOwner(&overlay_.Book());
  overlay_.BeginFile(file);
  const Integer date_fields = way.date_parts ? kDateInThree : kDateInOne;
  EndText(file, exchange_.ImportDelimitedFile(file, way.math, way.date_order, date_fields, way.system_fields));
}

void PreviewRun::EndText(const Text& file, bool imported) {
  const TextImportTally& tally = exchange_.LastTextImport();
  outcome_.done = imported || (!means_.is_whole && tally.stored);
  End();
  if (tally.read > 0) CloseReport({application::BalanceOf(file, tally, book_)});
  outcome_.imports = {application::ImportOf(file, tally, overlay_)};
  if (tally.stop) notes_.push_back(application::StopText(*tally.stop));
  if (tally.stays) notes_.push_back(application::StaysText(file, *tally.stays));
}

}  // namespace tallybook::desktop
