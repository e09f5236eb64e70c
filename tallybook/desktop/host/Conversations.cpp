#include "tallybook/desktop/host/Conversations.h"

#include <QApplication>
#include <QTimer>
#include <QWidget>
#include <algorithm>
#include <filesystem>
#include <fmt/format.h>
#include <optional>
#include <system_error>
#include <utility>

#include "base/Failure.h"
#include "base/Narrow.h"
#include "dialogs/CDataExchangeGUI.h"
#include "dialogs/FormInstances.h"
#include "forms/Form.h"
#include "forms/modAllUI.h"
#include "platform/MessageBoxes.h"
#include "platform/Platform.h"
#include "support/Utility.h"
#include "support/WinAPI.h"
#include "tallybook/application/Counts.h"
#include "tallybook/application/DefinitionLook.h"
#include "tallybook/application/EntryDates.h"
#include "tallybook/application/FiguresFirst.h"
#include "tallybook/application/ImportWays.h"
#include "tallybook/application/JournalMark.h"
#include "tallybook/application/OutputRules.h"
#include "tallybook/application/ReportHeads.h"
#include "tallybook/application/UndoWords.h"
#include "tallybook/desktop/forms/QtScreen.h"
#include "tallybook/desktop/host/AllOrNothing.h"
#include "tallybook/desktop/host/DesktopApp.h"
#include "tallybook/desktop/host/DesktopFactory.h"
#include "tallybook/desktop/host/ExportOutputs.h"
#include "tallybook/desktop/host/FilesLeftOpen.h"
#include "tallybook/desktop/host/ImportWatch.h"
#include "tallybook/desktop/host/LineEndQuestion.h"
#include "tallybook/desktop/host/OpenBook.h"
#include "tallybook/desktop/host/PreviewRun.h"
#include "tallybook/desktop/host/PreviewWindow.h"
#include "tallybook/desktop/host/PromptFiller.h"
#include "tallybook/desktop/host/QtPlatform.h"
#include "tallybook/desktop/host/ReportWindow.h"
#include "tallybook/desktop/host/RunBeside.h"
#include "tallybook/desktop/host/UndoDialog.h"
#include "tallybook/desktop/host/WindowPrinter.h"

namespace tallybook::desktop {

namespace {

constexpr Integer kDefinitionDataType = 1;
constexpr const char* kFilePrompt = "frmImport";
constexpr const char* kDelimitedPrompt = "frmDelimited";
constexpr const char* kImportCsv = "import csv";
constexpr const char* kImportReport = "QDX Import Report";
constexpr const char* kWordsOfCancel = "What was stored so far stays; the journal can take it back.";
constexpr const char* kWordsOfCancelWhole = "Nothing of the import stays.";
constexpr Integer kImportOne = 1;  // of the list's action buttons
constexpr Integer kImportAll = 2;
constexpr int kLookEvery = 100;  // at what is to be closed, in milliseconds

Text DatesOf(const engine::JournalEntry& entry) {
  const application::EntryDates dates = application::EntryDatesOf(entry);
  if (entry.first == kNoDate) return "";
  return dates.first == dates.last ? " of " + dates.first : " of " + dates.first + " to " + dates.last;
}

// "Changed: figures of 2004-01-01 to 2004-12-31 (journal entry 5, import qdx #1)."
Text ChangeOf(const engine::JournalEntry& entry) {
  const Text what = entry.what_ran.empty() ? "" : ", " + entry.what_ran;
  const Text half_way =
      entry.state == engine::JournalState::kOpen ? " It ended half way, and what it wrote by then stands." : "";
  const Text final = entry.keeps_images ? "" : " It cannot be taken back.";
  return fmt::format("Changed: figures{} (journal entry {}{}).{}{}", DatesOf(entry), entry.id, what, half_way, final);
}

bool IsSameFile(const Text& one, const Text& other) {
  std::error_code trouble;
  return std::filesystem::equivalent(one, other, trouble) && !trouble;
}

bool LeadsTo(const application::SeenDefinition& definition, const Text& file) {
  return std::ranges::any_of(application::ExchangeFilesOf(definition.exchange_files),
                             [&](const Text& match) { return IsSameFile(match, file); });
}

Text KeyOf(const application::SeenDefinition& definition) {
  return "K" + std::to_string(definition.number);
}

// The definitions that a file belongs to, or where there are none a new one with its name.
void PointAt(ListWindow& list, const std::vector<application::SeenDefinition>& definitions, const Text& file,
             std::optional<PromptFiller>& filler) {
  std::vector<Text> keys;
  for (const application::SeenDefinition& definition : definitions) {
    if (LeadsTo(definition, file)) keys.push_back(KeyOf(definition));
  }
  const Text name = FileBaseName(file);
  if (!keys.empty()) {
    return list.Point(keys, keys.size() == 1 ? "This definition imports " + name + "."
                                             : application::Counted(static_cast<long long>(keys.size()), "definition") +
                                                   " import " + name + ": those in bold.");
  }
  filler.emplace(kFilePrompt, file);
  list.UserAdd();
}

bool CanBeUndone(const engine::JournalEntry& entry) {
  return entry.keeps_images && entry.undoes == 0 && entry.state != engine::JournalState::kUndone;
}

}  // namespace

struct Conversations::State {
  State(const ConversationMeans& its_means, const Text& path, QWidget& window)
      : means(its_means), book_path(path), owner(window), opener(means.app, means.platform.Progress()) {}

  ConversationMeans means;
  Text book_path;
  QWidget& owner;
  BookOpener opener;
  Run* run = nullptr;  // the conversation that runs now
  std::function<void()> changed;
  std::function<void(bool)> running;
  QTimer tell;

  [[nodiscard]] Text Title() const { return means.app.Title(); }

  void Tell(const Text& text, Long icon, const Text& details = "") const {
    means.platform.Boxes().Tell(text, kOkOnly | icon, Title(), details);
  }
  [[nodiscard]] Integer Ask(const Text& question, Long style) const {
    return means.platform.Boxes().Tell(question, style, Title(), "");
  }

  // What the component has logged and nobody has told.
  void TellWaiting() const {
    for (const TellingLog::Reason& reason : means.app.Log().Take()) Tell(reason.words, kExclamationIcon, reason.place);
  }
};

// One conversation, from the opening of the book to its closing.
class Conversations::Run {
 public:
  enum class Kind { kExport, kImport };

  Run(const std::shared_ptr<State>& state, Kind kind) : shared_(state), state_(*state), kind_(kind) {
    state_.run = this;
    QObject::connect(&ending_, &QTimer::timeout, &ending_, [this] { EndNext(); });
    if (state_.running) state_.running(true);
  }
  ~Run() {
    state_.run = nullptr;
    if (state_.running) state_.running(false);
  }
  Run(const Run&) = delete;
  Run& operator=(const Run&) = delete;

  // Runs `converse` on the open book; a failure before or behind it is told.
  template <typename Converse>
  ConversationResult Do(Converse converse) {
    ConversationResult result;
    const FilesLeftOpen files;
    try {
      if (!OpenBook()) return result;
      Prepare();
      const application::JournalMark mark(*book_);
      mark_ = &mark;
      result.ran = converse(*book_);
      SettleOutputs();
      state_.TellWaiting();
      Commit();
      result.entries = mark.Since();
      mark_ = nullptr;
      ShowTextReports();
      book_->Close();
    } catch (const engine::WorkCancelled&) {
      mark_ = nullptr;
    } catch (...) {
      state_.Tell(CurrentFailure().Description(), kStopIcon);
    }
    if (outputs_) result.output = outputs_->LastKept();
    result.check = check_;
    Restore();
    if (result.ChangedFigures() && state_.changed) state_.changed();
    return result;
  }

  [[nodiscard]] engine::Book* Book() const { return book_.get(); }
  [[nodiscard]] ListWindow* List() const { return list_; }
  [[nodiscard]] application::OutputRules& Rules() { return rules_; }
  void SetList(ListWindow* list) { list_ = list; }
  // What the conversation is about; empty for nothing.
  void SetFile(const Text& file) { file_ = file; }
  [[nodiscard]] Long Owner() const { return state_.means.platform.Handles().HandleOf(state_.owner); }

  // A report begins: what is written under it is a command of its own, whose files are recorded.
  void BeginReport() {
    if (book_ == nullptr || book_->ReadOnly()) return;
    report_mark_.emplace(*book_);
    const Integer action = list_ == nullptr ? Integer{0} : list_->ActionUnderWay();
    if (action != kImportOne && action != kImportAll) return;
    const bool all = action == kImportAll;
    book_->SetOperationName(all ? Text("import qdx all") : "import qdx #" + NumberOfKey(list_->SelectedKey()));
    if (all) watch_->LeaveKnownAlone();
    watch_->BeginRun();
  }
  void ShowReport(report::Report report, report::Blocks head) {
    ReportSetting setting;
    const ImportWatch::RunEnd end = watch_ ? watch_->EndRun() : ImportWatch::RunEnd();
    if (report.title == kImportReport && report_mark_) AddChanges(setting, end.told);
    for (const Text& line : end.closing) report.blocks.emplace_back(report::Line{.text = line});
    ShowInWindow(std::move(report), std::move(head), std::move(setting));
    if (state_.changed) state_.changed();
  }
  // Of the import of a delimited file: who is asked about its line ends, and whether fields that the system keeps by
  // itself are imported, too.
  void SetDelimited(LineEndQuestion& line_ends, bool system_fields) {
    line_ends_ = &line_ends;
    system_fields_ = system_fields;
  }

  // A look at what the import of all definitions would do; whether the user wants it done. Files that would be left
  // alone are so here, too.
  bool PreviewAll() {
    watch_->LeaveKnownAlone();
    const PreviewRun* running = nullptr;
    const application::FilesLeftAlone hidden(
        watch_->Known(), [&running] { return running == nullptr ? Integer{0} : running->DefinitionAtWork(); });
    return Preview([&running](PreviewRun& run) {
      running = &run;
      run.RunAllDefinitions();
    });
  }

  // What the application adds to the list of definitions.
  void AddTo(ListWindow& list) {
    list.SetAddition(
        "Preview ALL", [this] { return PreviewAll(); }, kImportAll);
    list.SetAddition(
        "Check", [this] { return CheckSelected(); }, kImportOne);
    list.SetSwitch({.caption = QString(AllOrNothing::kCaption).remove('&'),
                    .help = AllOrNothing::kHelp,
                    .is_on = [this] { return all_or_nothing_->IsWanted(); },
                    .turned = [this](bool on) { WantAllOrNothing(on); }});
  }

  // The list waits for the user, and nothing stands over it.
  [[nodiscard]] bool IsIdle() const {
    return list_ != nullptr && !list_->IsBusy() && ModalDepth() == 0 && book_ != nullptr;
  }

  // Ends the dialogs as their close boxes do, from the top, and the list by what the application wants. Work that can
  // be cancelled is; questions are left to the user. One who stays in a dialog stays in all of them.
  void AskToEnd() {
    state_.means.app.SetFinished(true);
    asked_to_close_.clear();
    ending_.start(kLookEvery);
  }

 private:
  struct TextReport {
    Text title = {};
    std::vector<Text> lines = {};
    ReportSetting setting = {};
  };

  // A row's key is "K" and the definition's number.
  static Text NumberOfKey(const Text& key) { return key.empty() ? key : key.substr(1); }

  void EndNext() {
    state_.means.platform.Progress().AskToCancel();
    if (QApplication::activeModalWidget() != nullptr) return;
    Form* const top = TopModalDialog();
    if (top == nullptr) return;
    if (std::ranges::find(asked_to_close_, top) == asked_to_close_.end()) {
      asked_to_close_.push_back(top);
      top->UserClose();
    } else if (top->Visible()) {
      ending_.stop();
      state_.means.app.SetFinished(false);
    }
  }

  bool OpenBook() {
    OpenedBook opened = kind_ == Kind::kExport ? state_.opener.OpenToRead(state_.book_path)
                                               : state_.opener.OpenToChange(state_.book_path, &state_.owner);
    book_ = std::move(opened.book);
    for (const Text& notice : opened.notices) state_.Tell(notice, kInformationIcon);
    return book_ != nullptr;
  }

  // --- What the application adds to the prompts of imports -----------------------------------------------------------

  [[nodiscard]] FormAddition AdditionTo(const Form& form) {
    FormAddition addition;
    const FormInstances& forms = TheForms();
    const auto offer = [&](std::function<bool()> preview, std::function<FileCheckWish()> wish) {
      addition.buttons.push_back({.caption = "&Preview", .act = std::move(preview)});
      addition.buttons.push_back(
          {.caption = "Chec&k", .act = [this, wish = std::move(wish)] { return LeaveToCheck(wish()); }});
    };
    if (&form == forms.QDXImp.IfThere()) {
      addition.may_press = [this] { return watch_->MayImport(TheForms().QDXImp.IfThere()->Math()); };
      offer([this] { return PreviewDefinition(TheForms().QDXImp.IfThere()->Math()); },
            [this] { return WishFor(*TheForms().QDXImp.IfThere()); });
    } else if (&form == forms.Import.IfThere() &&
               list_ == nullptr) {  // the list asks with it for a new definition's file
      addition.may_press = [this] { return MayImportCsv(*TheForms().Import.IfThere()); };
      offer([this] { return PreviewCsv(TheForms().Import.IfThere()->NamedFile()); },
            [] { return FileCheckWish{.file = TheForms().Import.IfThere()->NamedFile()}; });
    } else if (&form == forms.Delimited.IfThere()) {
      addition.may_press = [this] { return MayImportDelimited(*TheForms().Delimited.IfThere()); };
      offer([this] { return PreviewDelimited(*TheForms().Delimited.IfThere()); },
            [this] { return WishFor(*TheForms().Delimited.IfThere()); });
    }
    if (addition.buttons.empty()) return addition;
    addition.choice = {.caption = AllOrNothing::kCaption,
                       .help = AllOrNothing::kHelp,
                       .is_on = all_or_nothing_->IsWanted(),
                       .turned = [this](bool on) { WantAllOrNothing(on); }};
    addition.before_shown = [this] { watch_->EndRunAndTell(); };
    return addition;
  }

  // Settings that cannot be read keep nobody from an import.
  void RecallAllOrNothing() {
    try {
      all_or_nothing_->Recall();
    } catch (...) {
      state_.Tell(
          "Whether imports are to be done wholly or not at all is not known, so they are done as far as they go: " +
              CurrentFailure().Description(),
          kExclamationIcon);
    }
  }

  void WantAllOrNothing(bool wanted) {
    try {
      all_or_nothing_->Want(wanted);
    } catch (...) {
      state_.Tell("The choice is not remembered: " + CurrentFailure().Description(), kExclamationIcon);
    }
    ShowWordsOfCancel();
  }

  void ShowWordsOfCancel() {
    const bool is_whole = all_or_nothing_ && all_or_nothing_->IsWanted();
    state_.means.platform.Progress().SetCancelWords(is_whole ? kWordsOfCancelWhole : kWordsOfCancel);
  }

  // --- Looks at a file, which end the conversation -------------------------------------------------------------------

  // The prompt ends as its close box does. Gives that its main button is not to be pressed.
  bool LeaveToCheck(const FileCheckWish& wish) {
    const bool presses = true;
    if (!IsThere(wish.file)) return !presses;
    check_ = wish;
    AskToEnd();
    return !presses;
  }

  [[nodiscard]] FileCheckWish WishFor(const frmDelimited& prompt) const {
    const application::DelimitedWay way = WayOf(prompt);
    return {.file = prompt.Text1.Text(),
            .kind = ImportKind::kDelimited,
            .math = static_cast<Integer>(way.math),
            .date_order = way.date_order,
            .any_line_end = way.any_line_end,
            .date_parts = way.date_parts,
            .system_fields = way.system_fields};
  }

  [[nodiscard]] FileCheckWish WishFor(const dlgQDXImp& prompt) const {
    const CDataExchange* const exchange = state_.means.factory.Exchange();
    if (exchange == nullptr) return {};
    return WishFor(exchange->FileNum(), exchange->QdxFileName(), prompt.Math());
  }
  // Of the definition's files the one that the conversation is about, or else the first.
  [[nodiscard]] FileCheckWish WishFor(Integer definition, const Text& pattern, Integer math) const {
    const std::vector<Text> files = application::ExchangeFilesOf(pattern);
    const auto named = std::ranges::find_if(files, [this](const Text& file) { return IsSameFile(file, file_); });
    FileCheckWish wish{.file = {}, .kind = ImportKind::kExchange, .math = math, .definition = definition};
    if (!files.empty()) wish.file = named == files.end() ? files.front() : *named;
    return wish;
  }

  // Of the list's selected definition, as its import begins.
  bool CheckSelected() {
    const bool presses = true;
    const Text number = NumberOfKey(list_->SelectedKey());
    if (number.empty()) {
      state_.Tell("Select the definition first whose file is to be looked at.", kInformationIcon);
      return !presses;
    }
    try {
      const auto definition =
          application::NeedDefinition(state_.means.platform.Files(), *book_, ToInteger(WholeLongText(number)));
      const FileCheckWish wish =
          WishFor(definition.number, definition.exchange_files, static_cast<Integer>(eMath::mReplace));
      if (!wish.file.empty()) return LeaveToCheck(wish);
      state_.Tell("No file matches " + definition.exchange_files + ".", kInformationIcon);
    } catch (...) {
      state_.Tell(CurrentFailure().Description(), kStopIcon);
    }
    return !presses;
  }

  // --- Previews: each gives whether the user wants the import done
  // ----------------------------------------------------

  bool PreviewDefinition(Integer math) {
    const CDataExchange* const exchange = state_.means.factory.Exchange();
    const Integer number = exchange == nullptr ? Integer{0} : exchange->FileNum();
    return Preview([&](PreviewRun& run) { run.RunDefinition(number, math); });
  }
  bool PreviewCsv(const Text& file) {
    return IsThere(file) && Preview([&](PreviewRun& run) { run.RunCsv(file); });
  }
  bool PreviewDelimited(const frmDelimited& prompt) {
    const Text file = prompt.Text1.Text();
    const application::DelimitedWay way = WayOf(prompt);
    return IsThere(file) && Preview([&](PreviewRun& run) { run.RunDelimited(file, way); });
  }

  bool IsThere(const Text& file) const {
    if (!file.empty() && FileExists(file)) return true;
    state_.Tell(
        file.empty() ? Text("Name the file first that is to be looked at.") : "File: " + file + " does not exist.",
        kInformationIcon);
    return false;
  }

  template <typename Import>
  bool Preview(Import import) {
    ProgressWindow& progress = state_.means.platform.Progress();
    progress.SetCancelWords("Nothing has been changed.");
    bool wants_import = false;
    try {
      const bool is_whole = all_or_nothing_->IsWanted();
      PreviewRun run(
          {.platform = state_.means.platform, .app = state_.means.app, .rules = rules_, .is_whole = is_whole}, *book_);
      import(run);
      progress.Hide();
      QWidget* const modal = QApplication::activeModalWidget();
      QWidget* const over = modal == nullptr ? QApplication::activeWindow() : modal;
      wants_import = PreviewWindow(run, *book_, over == nullptr ? &state_.owner : over).WantsImport();
    } catch (...) {
      state_.Tell(CurrentFailure().Description(), kStopIcon);
    }
    ShowWordsOfCancel();
    return wants_import;
  }

  bool MayImportCsv(const frmImport& prompt) {
    return MayImportText(kImportCsv, prompt.NamedFile(), application::WayOfCsv(eMath::mDefault, {}));
  }

  // Line ends that the import does not take are asked about when it opens the file; there is no other way to read it.
  bool MayImportDelimited(const frmDelimited& prompt) {
    const Text file = prompt.Text1.Text();
    return MayImportText("import delimited", file, application::WayOfDelimited(WayOf(prompt)));
  }

  [[nodiscard]] application::DelimitedWay WayOf(const frmDelimited& prompt) const {
    return {.math = static_cast<eMath>(ComboItemTag(prompt.cmbMath)),
            .date_order = ToInteger(ComboItemTag(prompt.cmbDate)),
            .date_parts = !prompt.chkDate.Checked(),
            .system_fields = system_fields_,
            .any_line_end = line_ends_ != nullptr && line_ends_->IsAskedAbout(prompt.Text1.Text())};
  }

  // A file that is not there is for the import to tell of. The one that may be imported is a command of its own.
  bool MayImportText(const Text& what, const Text& file, const application::EntryFacts& way) {
    if (file.empty() || !FileExists(file)) return true;
    if (!watch_->MayImport(file, way)) return false;
    book_->SetOperationName(what + " " + file);
    report_mark_.emplace(*book_);
    text_title_ = what == kImportCsv ? "CSV Import" : "Delimited Import";
    watch_->BeginRun(file, way);
    return true;
  }

  void WatchImports() {
    QtPlatform& platform = state_.means.platform;
    all_or_nothing_.emplace(AllOrNothing::Means{
        .book = *book_, .files = platform.Files(), .rules = rules_, .factory = state_.means.factory});
    RecallAllOrNothing();
    watch_.emplace(
        *book_, ImportWatch::Means{
                    .exchange = [this] { return state_.means.factory.Exchange(); },
                    .ask =
                        [this](const Text& question) {
                          const Long style = kYesNo | kQuestionIcon | kSecondButtonDefault;
                          return state_.Ask(question, style) == kYes;
                        },
                    .place_of = [&platform](const Text& path) { return platform.Files().PlaceOf(path).value_or(path); },
                    .warn = [this](const Text& words) { state_.Tell(words, kExclamationIcon); },
                    .begin_whole = [this] { return all_or_nothing_->Begin(); },
                    .text_ended = [this](const ImportWatch::RunEnd& end) { KeepTextReport(end); }});
    figures_first_.emplace(platform.Files(), *book_);
    state_.means.app.SetImportListener([this] { watch_->BeginFile(); });
    state_.means.factory.SetExchangeListener([this] { watch_->EndRunAndTell(); });
    state_.means.factory.SetPrinterListener([this] { watch_->EndRunAndTell(); });
    platform.Screen().SetAdditions([this](const Form& form) { return AdditionTo(form); });
  }

  void Prepare() {
    QtPlatform& platform = state_.means.platform;
    DesktopFactory& factory = state_.means.factory;
    rules_.ProtectBook(state_.book_path);
    platform.Files().UseRules(rules_);
    (void)state_.means.app.Log().Take();
    platform.Boxes().Forget();
    platform.Progress().Forget();
    if (kind_ == Kind::kExport) {
      platform.Progress().SetCancelWords("The file then holds only what was written so far, and you are told so.");
      PrepareOutputs();
    } else {
      WatchImports();
      ShowWordsOfCancel();
    }
    // What waits to be told goes into the next box of the component, which has no room for it, or is told by itself.
    platform.Boxes().SetDetails([this] { return DetailsOfBox(); });
    platform.Boxes().SetBeforeBox([this] { BeforeBox(); });
    platform.Shell().SetBeforeOpen([this] { SettleOutputs(); });
    state_.means.app.Log().SetListener([this] { state_.tell.start(0); });
    factory.SetReportListener([this] { BeginReport(); });
    factory.SetReportDisplay(
        [this](report::Report report, report::Blocks head) { ShowReport(std::move(report), std::move(head)); });
  }

  void Restore() {
    QtPlatform& platform = state_.means.platform;
    DesktopFactory& factory = state_.means.factory;
    state_.tell.stop();
    state_.means.app.SetImportListener({});
    factory.SetExchangeListener({});
    factory.SetPrinterListener({});
    platform.Screen().SetAdditions({});
    watch_.reset();
    all_or_nothing_.reset();
    figures_first_.reset();
    state_.means.app.Log().SetListener({});
    platform.Boxes().SetDetails({});
    platform.Boxes().SetBeforeBox([&platform] { platform.Progress().Hide(); });
    platform.Shell().SetBeforeOpen({});
    factory.SetReportListener({});
    factory.SetReportDisplay({});
    factory.SetListListener({});
    factory.SetTableWrapper({});
    outputs_.reset();
    static const application::OutputRules no_rules;
    platform.Files().UseRules(no_rules);
    book_.reset();
  }

  void PrepareOutputs() {
    const auto failures = [this] { return state_.means.app.Log().Count(); };
    outputs_.emplace(state_.means.platform.Files(), rules_, failures, [this](const Text& path) { TellPart(path); });
    state_.means.factory.SetTableWrapper(
        [this](std::shared_ptr<DataExportObject> library) { return outputs_->Tables(std::move(library)); });
  }

  void SettleOutputs() {
    const bool at_end = true;
    if (outputs_) outputs_->Settle(!at_end);
  }

  void BeforeBox() {
    state_.means.platform.Progress().Hide();
    SettleOutputs();
  }

  // A cancelled export is kept as the part that it is.
  void TellPart(const Text& path) {
    ProgressWindow& progress = state_.means.platform.Progress();
    if (!progress.WasCancelled()) return;
    progress.Forget();
    state_.Tell("The export was cancelled. The file holds only a part of what was wanted:\r\n" + path,
                kExclamationIcon);
  }

  [[nodiscard]] Text DetailsOfBox() {
    Text details;
    const auto add = [&](const Text& line) {
      if (!line.empty()) details += (details.empty() ? "" : "\r\n") + line;
    };
    for (const TellingLog::Reason& reason : state_.means.app.Log().Take()) {
      add(reason.words);
      add(reason.place);
    }
    if (outputs_ && details.find(outputs_->Refusal()) == Text::npos) add(outputs_->Refusal());
    return details;
  }

  // Where it fails nothing of what was not stored yet is kept for a later commit.
  void Commit() {
    if (book_->ReadOnly()) return;
    TellHalfWay();
    try {
      book_->EndProgress();
    } catch (...) {
      book_->Abandon();
      throw;
    }
  }

  void TellHalfWay() const {
    switch (mark_->LeftHalfWay()) {
      case application::JournalMark::Left::kNothing:
        return;
      case application::JournalMark::Left::kForGood:
        return state_.Tell("An import ended half way, and what it wrote stays: this installation keeps no way back.",
                           kExclamationIcon);
      case application::JournalMark::Left::kUndoable:
        state_.Tell("An import ended half way, and what it wrote by then stands. The journal can take it back.",
                    kExclamationIcon);
    }
  }

  void ShowInWindow(report::Report report, report::Blocks head, ReportSetting setting) {
    auto* const window = new ReportWindow(std::move(report), std::move(head), std::move(setting), &state_.owner);
    window->show();
    window->raise();
    window->activateWindow();
  }

  // The report of a text file waits until its figures are stored, and no prompt stands over it.
  void KeepTextReport(const ImportWatch::RunEnd& end) {
    TextReport& kept = text_reports_.emplace_back();
    kept.title = text_title_;
    kept.lines = end.came;
    kept.lines.emplace_back();
    kept.lines.insert(kept.lines.end(), end.closing.begin(), end.closing.end());
    AddChanges(kept.setting, end.told);
  }

  void ShowTextReports() {
    for (TextReport& kept : std::exchange(text_reports_, {})) {
      const auto show = [&](report::Report report, report::Blocks head) {
        ShowInWindow(std::move(report), std::move(head), std::move(kept.setting));
      };
      engine::ProgressDisplay* const no_progress = nullptr;
      WindowPrinter printer(show, no_progress);
      const Long no_window = 0;
      if (!printer.BeginReport(no_window, kept.title + " Report")) continue;
      application::ReportHeads().PrintReportHeader(*book_, printer, kept.title);
      printer.PrintLine("");
      for (const Text& line : kept.lines) printer.PrintLine(line);
      printer.EndReport();
    }
  }

  // `told` of an import that was to be whole.
  void AddChanges(ReportSetting& setting, const std::vector<Text>& told) {
    const std::vector<engine::JournalEntry> entries = report_mark_->Since();
    for (const engine::JournalEntry& entry : entries) setting.changes.push_back(ChangeOf(entry));
    if (entries.empty() && told.empty()) setting.changes.emplace_back("No figure was changed.");
    setting.changes.insert(setting.changes.end(), told.begin(), told.end());
    for (const Text& left : watch_->LeftAlone()) setting.changes.push_back(left);
    const auto undoable = std::ranges::find_if(entries, CanBeUndone);
    if (undoable == entries.end()) return;
    // The report stays when the book has been closed, and with it what could take anything back.
    setting.undo = [state = std::weak_ptr(shared_), command = undoable->command] {
      if (const auto alive = state.lock()) return TakeBack(alive, {.id = {}, .command = command}).ran;
      ShowMessage("The book that this report tells of has been closed. Its journal can take the import back.",
                  kExclamationIcon, kImportReport);
      return false;
    };
  }

  std::shared_ptr<State> shared_;
  State& state_;
  Kind kind_;
  std::unique_ptr<engine::Book> book_;
  application::OutputRules rules_;
  std::optional<ExportOutputs> outputs_;
  const application::JournalMark* mark_ = nullptr;
  std::optional<application::JournalMark> report_mark_;
  Text text_title_;  // of the report of the text file that is imported
  std::vector<TextReport> text_reports_;
  std::optional<application::FiguresFirst> figures_first_;  // of a conversation that imports
  std::optional<AllOrNothing> all_or_nothing_;              // of a conversation that imports
  std::optional<ImportWatch> watch_;                        // of a conversation that imports
  ListWindow* list_ = nullptr;
  LineEndQuestion* line_ends_ = nullptr;
  bool system_fields_ = false;
  Text file_;
  std::optional<FileCheckWish> check_;
  QTimer ending_;
  std::vector<const Form*> asked_to_close_;
};

// --- The conversations -----------------------------------------------------------------------------------------------

Conversations::Conversations(const ConversationMeans& means, const Text& book, QWidget& owner)
    : state_(std::make_shared<State>(means, book, owner)) {}

Conversations::~Conversations() = default;

template <typename Converse>
ConversationResult Conversations::Start(bool imports, Converse converse) {
  if (state_->run != nullptr) return {};
  state_->means.app.SetFinished(false);  // whoever was asked to end has ended, or the user wanted to stay
  Run run(state_, imports ? Run::Kind::kImport : Run::Kind::kExport);
  return run.Do([&](engine::Book& book) {
    CDataExchangeGUI gui(state_->means.factory);
    return converse(run, gui, book);
  });
}

template <typename Converse>
ConversationResult Conversations::StartPlain(bool imports, Converse converse) {
  if (state_->run != nullptr) return {};
  state_->means.app.SetFinished(false);
  Run run(state_, imports ? Run::Kind::kImport : Run::Kind::kExport);
  return converse(run);
}

ConversationResult Conversations::Look(const Act& act) {
  const bool imports = false;
  return StartPlain(imports, [&](Run& run) { return run.Do(act); });
}

ConversationResult Conversations::Change(const Act& act) {
  const bool imports = true;
  return StartPlain(imports, [&](Run& run) { return run.Do(act); });
}

bool Conversations::Beside(const Text& title, const Work& work) {
  const bool imports = false;
  return StartPlain(imports,
                    [&](Run& /*run*/) {
                      ConversationResult result;
                      try {
                        WithinBeside(title, work);
                        result.ran = true;
                      } catch (const engine::WorkCancelled&) {
                        return result;
                      } catch (...) {
                        state_->Tell(CurrentFailure().Description(), kStopIcon);
                      }
                      return result;
                    })
      .ran;
}

void Conversations::WithinBeside(const Text& title, const Work& work) {
  ProgressWindow& progress = state_->means.platform.Progress();
  progress.SetCancelWords("All stays as it was.");
  RunBeside(progress, title, work);
}

ConversationResult Conversations::ExportTable(Date& current_date) {
  const bool imports = false;
  return Start(imports, [&](Run& run, CDataExchangeGUI& gui, engine::Book& book) {
    const bool as_table = true;
    return gui.ExportQDX(run.Owner(), book, as_table, current_date);
  });
}

ConversationResult Conversations::ExportQdx(Date& current_date) {
  const bool imports = false;
  return Start(imports, [&](Run& run, CDataExchangeGUI& gui, engine::Book& book) {
    const bool as_table = false;
    return gui.ExportQDX(run.Owner(), book, as_table, current_date);
  });
}

ConversationResult Conversations::ImportCsv(const Text& file) {
  const bool imports = true;
  return Start(imports, [&](Run& run, CDataExchangeGUI& gui, engine::Book& book) {
    const PromptFiller filler(kFilePrompt, file);
    const bool ignored = true;
    return gui.ImportCSV(run.Owner(), book, ignored);
  });
}

ConversationResult Conversations::ImportDelimited(const Text& file, bool allow_system_fields) {
  const bool imports = true;
  return Start(imports, [&](Run& run, CDataExchangeGUI& gui, engine::Book& book) {
    const PromptFiller filler(kDelimitedPrompt, file);
    LineEndQuestion line_ends;
    run.SetDelimited(line_ends, allow_system_fields);
    return gui.ImportDelimited(run.Owner(), book, allow_system_fields);
  });
}

// The list of definitions; `on_shown` acts in it as soon as it stands there.
template <typename Shown>
ConversationResult Conversations::ShowDefinitions(const Text& file, Shown on_shown) {
  const bool imports = true;
  return Start(imports, [&](Run& run, CDataExchangeGUI& gui, engine::Book& book) {
    run.SetFile(file);
    const auto definitions =
        application::LookAtDefinitions(state_->means.platform.Files(), book.DataPath(), book.FileExtension());
    application::NeedReadableDefinitions(definitions);
    state_->means.factory.SetListListener([&](ListWindow& list) {
      run.SetList(&list);
      run.AddTo(list);
      list.SetOnShown([&](ListWindow& shown) { on_shown(shown, definitions); });
    });
    const Integer ignored = 0;
    const bool ended = gui.ImportQDX(run.Owner(), book, kDefinitionDataType, ignored);
    run.SetList(nullptr);
    return ended;
  });
}

ConversationResult Conversations::Definitions(const Text& file) {
  std::optional<PromptFiller> filler;
  return ShowDefinitions(file, [&](ListWindow& list, const std::vector<application::SeenDefinition>& definitions) {
    if (!file.empty()) PointAt(list, definitions, file, filler);
  });
}

ConversationResult Conversations::ImportByDefinition(Integer number, const Text& file) {
  return ShowDefinitions(file, [&](ListWindow& list, const std::vector<application::SeenDefinition>& definitions) {
    const auto definition = std::ranges::find(definitions, number, &application::SeenDefinition::number);
    if (definition == definitions.end()) return;
    const bool finds = LeadsTo(*definition, file);
    list.Point({KeyOf(*definition)}, finds ? "This definition imports " + FileBaseName(file) + "."
                                           : "This definition does not find " + FileBaseName(file) + ": it imports " +
                                                 definition->exchange_files + ".");
    if (finds) list.UserAct(kImportOne);
  });
}

ConversationResult Conversations::Undo(Long id) {
  return TakeBack(state_, {.id = id});
}

ConversationResult Conversations::UndoCommand(Long command) {
  return TakeBack(state_, {.id = {}, .command = command});
}

// On the book that a conversation has open, while its list waits for the user; else on one that is opened for it.
ConversationResult Conversations::TakeBack(const std::shared_ptr<State>& state, engine::UndoRequest request) {
  ConversationResult result;
  Run* const run = state->run;
  const bool idle = run == nullptr || run->IsIdle();
  if (!idle) {
    state->Tell("Something else is being done with the book now. Undo is possible when that has ended.",
                kExclamationIcon);
    return result;
  }
  try {
    OpenedBook opened;
    if (run == nullptr) opened = state->opener.OpenToChange(state->book_path, &state->owner);
    engine::Book* const book = run == nullptr ? opened.book.get() : run->Book();
    if (book == nullptr) return result;
    const application::JournalMark mark(*book);
    book->SetOperation(engine::JournalKind::kUndo, "journal undo");
    result.ran = AskAndTakeBack(*state, *book, request);
    result.entries = mark.Since();
    if (run == nullptr) opened.book->Close();
  } catch (...) {
    state->Tell(CurrentFailure().Description(), kStopIcon);
  }
  if (result.ChangedFigures() && state->changed) state->changed();
  return result;
}

// The book is open to be changed from the look to the act, so that what was asked is what happens.
bool Conversations::AskAndTakeBack(const State& state, engine::Book& book, engine::UndoRequest request) {
  engine::Journal journal(book);
  request.only_look = true;
  request.most_listed = UndoDialog::kMostListed;
  const engine::UndoOutcome look = journal.TakeBack(request);
  if (look.changed_since == 0) {
    if (state.Ask(application::UndoQuestion(look), kOkCancel | kQuestionIcon) != kOk) return false;
  } else {
    QWidget* const modal = QApplication::activeModalWidget();
    const auto way = UndoDialog(book, journal.Entries(), look, modal == nullptr ? &state.owner : modal).Ask();
    if (!way) return false;
    request.way = *way;
  }
  request.only_look = false;
  return journal.TakeBack(request).done;
}

bool Conversations::IsRunning() const {
  return state_->run != nullptr;
}

void Conversations::AskToEnd() {
  if (state_->run != nullptr) state_->run->AskToEnd();
}

void Conversations::SetChangeListener(std::function<void()> listener) {
  state_->changed = std::move(listener);
}

void Conversations::SetRunningListener(std::function<void(bool running)> listener) {
  state_->running = std::move(listener);
}

}  // namespace tallybook::desktop
