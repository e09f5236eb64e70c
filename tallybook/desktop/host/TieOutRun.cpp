#include "tallybook/desktop/host/TieOutRun.h"

#include "tallybook/application/ImportSummary.h"
#include "tallybook/application/OutputRules.h"
#include "tallybook/application/StopText.h"
#include "tallybook/desktop/host/DesktopApp.h"
#include "tallybook/desktop/host/QtPlatform.h"
#include "tallybook/desktop/host/QuietHost.h"

namespace tallybook::desktop {

namespace {

constexpr const char* kHolding = "Holding figures against the book";

// What goes on behind the last import shows that it does, and can be cancelled as the imports can.
class HoldingShown {
 public:
  explicit HoldingShown(ProgressWindow& progress) : progress_(progress) {}
  ~HoldingShown() { progress_.End(); }
  HoldingShown(const HoldingShown&) = delete;
  HoldingShown& operator=(const HoldingShown&) = delete;

  [[nodiscard]] bool Cancelled() {
    if (!progress_.IsOpen()) progress_.Begin(kHolding);
    progress_.Busy();
    progress_.CancelEnabled(true);
    progress_.Text(kHolding);
    return progress_.Cancelled();
  }

 private:
  ProgressWindow& progress_;
};

// An import names a file that is not there among its notes, and everything else that ended it by itself.
std::vector<Text> WhyNotHeld(const QDXImportRecord& record) {
  std::vector<Text> why_not;
  for (const application::ImportNote& note : application::NotesOf(record)) {
    if (note.no_file) why_not.push_back(note.text);
  }
  for (const StopReason& stop : application::StopsOf(record)) why_not.push_back(application::StopText(stop));
  return why_not;
}

// None of them may be a device or the like, nor the book, whose locks would go with a look into it.
void NeedFilesThatCanBeRead(const Text& pattern, const Text& book) {
  application::NeedRegularExchangeFiles(pattern);
  application::OutputRules rules;
  rules.ProtectBook(book);
  for (const Text& file : application::ExchangeFilesOf(pattern)) rules.CheckInput(file);
}

}  // namespace

TieOutResult RunTieOut(QtPlatform& platform, const DesktopApp& app, engine::Book& book, const TieOutWish& wish) {
  application::NeedReadableDefinitions({wish.definition});
  const Text& pattern = wish.file.empty() ? wish.definition.exchange_files : wish.file;
  NeedFilesThatCanBeRead(pattern, book.Path());
  QuietHost quiet(platform, app);
  const auto report = quiet.Factory().NewPrinter();
  HoldingShown shown(platform.Progress());
  application::TieOut tie_out(
      {.book = book,
       .factory = quiet.Factory(),
       .app = quiet.App(),
       .report = *report,
       .place_of = [&platform](const Text& path) { return platform.Files().PlaceOf(path).value_or(path); },
       .cancelled = [&shown] { return shown.Cancelled(); }});
  TieOutResult result;
  result.held = tie_out.Hold({.definition = wish.definition, .pattern = pattern, .unknown_math = wish.unknown_math});
  if (!result.held) {
    result.why_not = WhyNotHeld(tie_out.Record());
    return result;
  }
  result.agrees = tie_out.Agrees();
  result.words = application::TieOutWords(tie_out);
  result.files = tie_out.Files();
  result.field_totals = tie_out.FieldTotals();
  result.account_totals = tie_out.AccountTotals();
  result.lists = std::make_unique<const engine::BookDescription>(book.Description());
  result.figures = application::ListOf(tie_out, *result.lists);
  return result;
}

}  // namespace tallybook::desktop
