#include "tallybook/cli/Session.h"

#include <algorithm>
#include <exception>
#include <fmt/format.h>

#include "base/Failure.h"
#include "support/Utility.h"
#include "tallybook/application/FileKind.h"
#include "tallybook/application/FileRemoval.h"
#include "tallybook/application/HostSettings.h"
#include "tallybook/application/OpenToChange.h"
#include "tallybook/application/Shown.h"
#include "tallybook/application/StandardStreams.h"
#include "tallybook/application/StopText.h"
#include "tallybook/cli/Lines.h"
#include "tallybook/cli/Reasons.h"

namespace tallybook::cli {

Integer ConsoleLog::LogError(const Text& message, Long line_number, Integer detail) {
  progress_.Hide();
  // Whoever logs is handling the failure, so it is still there to be asked.
  last_failure_ = message;
  if (std::current_exception()) {
    last_failure_ = CurrentFailure().Description();
    Warn(fmt::format("{} ({}, statement {})", last_failure_, message, line_number));
  } else {
    Warn(fmt::format("{} (statement {})", message, line_number));
  }
  return log_.LogError(message, line_number, detail);
}

Session::Session(const AskOptions& asking, const NamedFiles& files)
    : messages_file_(asking.messages_file), report_file_(files.report), platform_(asking), app_(platform_.Progress()) {
  factory_.SetProgressDisplay(&platform_.Progress());
  ThePlatform().stop_witness = this;
  SetReasonPlaces({.messages_file = {}, .log_file = app_.LogFileName()});
  Files().UseRules(rules_);
  if (!files.book.empty()) rules_.ProtectBook(BookPath(files.book));
  AddInput(files.input);
  AddOutput(files.output);
  CheckInPlace(files.report, "the report");
  CheckInPlace(asking.messages_file, "the messages file");
  // Whatever wrote there before this line would have written onto somebody's file.
  if (!files.more_inputs) AllInputsKnown();
}

void Session::AllInputsKnown() {
  platform_.Boxes().StartMessages();
  SetReasonPlaces({.messages_file = messages_file_, .log_file = app_.LogFileName()});
}

void Session::AddInput(const Text& path) {
  if (path.empty() || path == application::kStandardStream) return;
  application::NeedRegularFile(path);
  rules_.CheckInput(path);
  rules_.ProtectInput(path);
}

void Session::AddOutput(const Text& path) {
  if (path.empty() || path == application::kStandardStream) return;
  rules_.Check(path);
  rules_.ProtectOutput(path, "the output of this command");
}

void Session::NeedReplaceable(const Text& path) const {
  application::NeedRegularFile(path);
  rules_.NeedNoBook(path);
}

void Session::NeedRemovable(const Text& path) {
  NeedReplaceable(path);
  application::NeedRemovable(Files(), path);
}

void Session::CheckInPlace(const Text& path, const Text& what) {
  if (path.empty()) return;
  rules_.CheckInPlace(path);
  rules_.ProtectOutput(path, what);
}

Session::~Session() {
  ThePlatform().stop_witness = nullptr;
}

void Session::TellStop(const StopReason& reason) {
  stop_told_ = true;
  const Text text = application::StopText(reason);
  app_.OwnLog().StopEntry(text);
  if (platform_.Boxes().HasTold({reason.file, reason.place, reason.words})) return;
  const bool logged = reason.file.empty() && reason.place.empty() && app_.Log().LastFailure() == reason.words;
  if (!logged) Note(text, true);
  platform_.Boxes().NoteReason(text);
}

void Session::Note(const Text& line, bool warning) {
  platform_.Progress().Hide();
  warning ? Warn(line) : TellLine(line);
}

void Session::ProgramStops(const StopReason& reason) {
  TellStop(reason);
  factory_.EndReports("Stopped: " + application::StopText(reason));
  if (!report_file_.empty()) Files().Keep(report_file_);
}

std::unique_ptr<engine::Book> Session::OpenToRead(const Text& path) {
  return Open(path, OptionsToRead());
}

std::unique_ptr<engine::Book> Session::OpenToPreview(const Text& path) {
  constexpr std::size_t kMostCacheBytes = std::size_t{16} << 20;
  engine::BookOptions options = OptionsToRead();
  options.cache_bytes = std::min(options.cache_bytes, kMostCacheBytes);
  return Open(path, options);
}

std::unique_ptr<engine::Book> Session::OpenToChange(const Text& path, Long wait_seconds) {
  engine::BookOptions options = Options();
  options.wait_seconds = wait_seconds;
  return application::OpenToChange(BookPath(path), app_, options, Files());
}

engine::BookOptions Session::Options() {
  engine::BookOptions options;
  application::NeedSoundRollbackSetting(app_.SettingsFileName());
  options.cache_bytes = application::CacheBytes(app_.SettingsFileName());
  options.progress = &platform_.Progress();
  options.reports = &report_heads_;
  const bool warning = true;
  options.notice = [this](const Text& line) { Note(line, warning); };
  return options;
}

engine::BookOptions Session::OptionsToRead() {
  engine::BookOptions options = Options();
  options.read_only = true;
  return options;
}

std::unique_ptr<engine::Book> Session::Open(const Text& path, const engine::BookOptions& options) {
  return engine::Book::Open(BookPath(path), app_, options);
}

ExitStatus Session::StatusOf(bool done) {
  const ExitStatus status = StatusFor(done);
  if (status != ExitStatus::kDone && !stop_told_) KeepLastTold(status);
  return status;
}

void Session::KeepLastTold(ExitStatus status) {
  Text text = platform_.Boxes().LastText();
  if (text.empty()) text = app_.Log().LastFailure();
  if (text.empty()) {
    TellStop(status == ExitStatus::kCancelled ? StopReason{.words = "cancelled"} : StopReason{});
  } else {
    app_.OwnLog().StopEntry(application::OnOneLine(text));
  }
}

ExitStatus Session::StatusFor(bool done) {
  if (platform_.Progress().WasCancelled()) return ExitStatus::kCancelled;
  if (platform_.Boxes().WasMisanswered()) return ExitStatus::kWrongUse;
  if (done) return ExitStatus::kDone;
  return platform_.Boxes().WasRefused() ? ExitStatus::kCancelled : ExitStatus::kFailed;
}

Text BookPath(const Text& named) {
  if (named.empty()) throw WrongUse("BOOK: a name is wanted");
  if (FileBaseName(named).empty()) return named;  // a folder
  const Text with_ending = named + ".tbk";
  if (FileExists(named)) return named;
  const bool has_point = FileBaseName(named).find('.') != Text::npos;
  return has_point && !FileExists(with_ending) ? named : with_ending;
}

}  // namespace tallybook::cli
