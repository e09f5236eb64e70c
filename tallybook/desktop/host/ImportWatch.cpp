#include "tallybook/desktop/host/ImportWatch.h"

#include <optional>
#include <utility>

#include "base/Failure.h"
#include "exchange/CDataExchange.h"
#include "tallybook/application/DefinitionLook.h"
#include "tallybook/application/ImportHistory.h"
#include "tallybook/application/ImportSummary.h"
#include "tallybook/application/ImportWays.h"
#include "tallybook/application/StopText.h"

namespace tallybook::desktop {

namespace {

constexpr const char* kAskAgain = ".\r\n\r\nImport it again?";

application::EntryFacts WayOf(const CDataExchange& exchange, Integer definition, Integer math) {
  return application::WayOfDefinition(exchange.FileNum(definition), exchange.Desc(definition), math);
}

}  // namespace

ImportWatch::ImportWatch(engine::Book& book, Means means) : book_(book), means_(std::move(means)) {}

// Each goes with what lies over it: files that are hidden, files that are noted.
ImportWatch::~ImportWatch() {
  hidden_.reset();
}

// Of the book and of the import alike: a file that this has renamed already has its bytes where they were.
Text ImportWatch::PlaceOf(const Text& path) const {
  const Text known = atomic_ == nullptr ? path : atomic_->PlaceOf(path);
  return means_.place_of ? means_.place_of(known) : known;
}

void ImportWatch::Forget() {
  EndRunAndTell();
  left_.clear();
  told_.clear();
}

void ImportWatch::Leave(Integer definition, const Text& file, const Text& told) {
  left_.push_back({definition, file});
  told_.push_back("Left alone: " + told + ".");
}

bool ImportWatch::MayImport(Integer math) {
  Forget();
  const CDataExchange* const exchange = means_.exchange();
  if (exchange == nullptr) return true;
  application::ImportHistory history(book_);
  const application::EntryFacts way = WayOf(*exchange, kSelected, math);
  const std::vector<Text> files = application::ExchangeFilesOf(exchange->QdxFileName());
  for (const Text& file : files) {
    const auto earlier = history.Find(file, PlaceOf(file), way);
    if (!earlier) history.Expect(file, PlaceOf(file), way);
    if (!earlier) continue;
    const Text told = application::EarlierImportText(file, *earlier);
    if (!means_.ask(told + kAskAgain)) Leave(exchange->FileNum(), file, told);
  }
  return left_.empty() || left_.size() < files.size();
}

void ImportWatch::LeaveKnownAlone() {
  Forget();
  const CDataExchange* const exchange = means_.exchange();
  if (exchange == nullptr) return;
  application::ImportHistory history(book_);
  for (Integer definition = 1; definition <= exchange->NumRecs(); ++definition) {
    const application::EntryFacts way = WayOf(*exchange, definition, static_cast<Integer>(eMath::mReplace));
    for (const Text& file : application::ExchangeFilesOf(exchange->QdxFileName(definition))) {
      const auto earlier = history.Find(file, PlaceOf(file), way);
      if (!earlier) history.Expect(file, PlaceOf(file), way);
      if (earlier) Leave(exchange->FileNum(definition), file, application::EarlierImportText(file, *earlier));
    }
  }
}

void ImportWatch::BeginRecord() {
  EndRunAndTell();
  if (means_.begin_whole) atomic_ = means_.begin_whole();
  recorder_ = std::make_unique<application::ImportRecorder>(book_);
}

void ImportWatch::BeginRun() {
  BeginRecord();
  is_text_ = false;
  const auto definition_at_work = [this] {
    const CDataExchange* const exchange = means_.exchange();
    return exchange == nullptr ? Integer{0} : exchange->FileNum();
  };
  if (!left_.empty()) hidden_ = std::make_unique<application::FilesLeftAlone>(left_, definition_at_work);
  left_.clear();
}

void ImportWatch::BeginFile() {
  const CDataExchange* const exchange = means_.exchange();
  if (recorder_ == nullptr || is_text_ || exchange == nullptr) return;
  const Text& file = exchange->TrueFilename();
  recorder_->BeginFile(file, PlaceOf(file), WayOf(*exchange, kSelected, exchange->Math()));
}

bool ImportWatch::MayImport(const Text& file, const application::EntryFacts& way) {
  Forget();
  const auto earlier = application::ImportHistory(book_).Find(file, PlaceOf(file), way);
  return !earlier || means_.ask(application::EarlierImportText(file, *earlier) + kAskAgain);
}

void ImportWatch::BeginRun(const Text& file, const application::EntryFacts& way) {
  BeginRecord();
  is_text_ = true;
  text_file_ = file;
  recorder_->BeginFile(file, PlaceOf(file), way);
}

void ImportWatch::AddOutcomes(application::ImportRecorder& recorder) const {
  const CDataExchange* const exchange = means_.exchange();
  if (exchange == nullptr) return;
  if (!is_text_) return application::AddOutcomes(recorder, exchange->LastQDXImport());
  const TextImportTally& tally = exchange->LastTextImport();
  for (application::ImportRecorder::Run* const run : recorder.Runs()) {
    application::AddOutcome(run->facts, tally, tally.stored);
  }
}

// A run that has done all that it was to do has no reason why it ended.
bool ImportWatch::IsWhole() const {
  const CDataExchange* const exchange = means_.exchange();
  if (exchange == nullptr) return false;
  if (!is_text_) return application::StopsOf(exchange->LastQDXImport()).empty();
  const TextImportTally& tally = exchange->LastTextImport();
  return tally.stored && !tally.stop;
}

std::vector<application::FileBalance> ImportWatch::Balances() const {
  const CDataExchange* const exchange = means_.exchange();
  if (exchange == nullptr) return {};
  if (!is_text_) return application::BalancesOf(exchange->LastQDXImport(), book_);
  const TextImportTally& tally = exchange->LastTextImport();
  if (tally.read == 0 && !tally.stored) return {};
  return {application::BalanceOf(text_file_, tally, book_)};
}

// The import is done as soon as its figures are stored, whatever it answered: what failed came behind them.
std::vector<Text> ImportWatch::WhatCame(const TextImportTally& tally, bool kept) const {
  std::vector<Text> came;
  if (kept) came.push_back(application::AppliedText(text_file_, tally, book_));
  const Text but = kept ? "It is done, but " : "";
  if (tally.stop) came.push_back(but + application::StopText(*tally.stop) + ".");
  if (kept && tally.stays) came.push_back(but + application::StaysText(text_file_, *tally.stays) + ".");
  return came;
}

ImportWatch::RunEnd ImportWatch::Told(bool kept) const {
  std::vector<application::FileBalance> balances = Balances();
  if (is_text_ && balances.empty()) return {};
  if (!kept) application::KeepNone(balances);
  RunEnd end = {.closing = application::ClosingLines(balances, kept)};
  if (!is_text_) return end;
  const TextImportTally& tally = means_.exchange()->LastTextImport();
  end.came = WhatCame(tally, kept && tally.stored);
  return end;
}

ImportWatch::RunEnd ImportWatch::EndRun() {
  hidden_.reset();
  if (recorder_ == nullptr) return {};
  const auto recorder = std::move(recorder_);
  const auto atomic = std::move(atomic_);
  if (atomic != nullptr) return EndWhole(*atomic, *recorder);
  try {
    AddOutcomes(*recorder);
    recorder->Save();
  } catch (...) {
    means_.warn("The journal does not keep which files were read: " + CurrentFailure().Description());
  }
  const bool kept = true;
  return Told(kept);
}

ImportWatch::RunEnd ImportWatch::EndWhole(application::AtomicImport& atomic, application::ImportRecorder& recorder) {
  const bool had_work = atomic.HasWork();
  AddOutcomes(recorder);
  const application::AtomicEnd end = application::EndAtomic(atomic, book_, recorder, IsWhole());
  RunEnd told = Told(end.kept);
  for (const Text& text : application::NotDisposedTexts(end.outcomes)) {
    told.told.push_back("It is done, but " + text + ".");
  }
  if (end.lost) told.told.push_back(end.lost->words + ".");
  if (!end.kept && (had_work || !is_text_)) told.told.push_back(application::NothingKeptLine());
  return told;
}

void ImportWatch::EndRunAndTell() {
  const RunEnd end = EndRun();
  Text words;
  for (const Text& line : end.told) words += (words.empty() ? "" : "\r\n") + line;
  if (!words.empty()) means_.warn(words);
  if (is_text_ && !end.closing.empty()) means_.text_ended(end);
}

}  // namespace tallybook::desktop
