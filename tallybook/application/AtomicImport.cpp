#include "tallybook/application/AtomicImport.h"

#include <algorithm>
#include <filesystem>
#include <map>
#include <optional>
#include <utility>

#include "base/Failure.h"
#include "platform/Platform.h"
#include "tallybook/application/FileLayer.h"
#include "tallybook/engine/JournalNotes.h"

namespace tallybook::application {

namespace {

Text Absolute(Text path) {
  std::ranges::replace(path, '\\', '/');
  return std::filesystem::absolute(path).string();
}

}  // namespace

// Deletes and renames are noted, and reads and searches see them as done. What is written goes to the files below at
// once: the outputs of an import are none of its figures. A file is held by what it was when it was opened, so that
// another that takes its name before the end of the import is left alone.
class AtomicImport::Files : public FileLayer {
 public:
  struct Noted {
    Long entry = 0;  // under which the file was read; 0 where that is not known
    FileDisposal disposal;
  };

  Files(engine::Book& book, WholeFiles& whole, FileSystem& below, preview::OverlayFileSystem::Refusal need_removable)
      : FileLayer(below),
        book_(book),
        whole_(whole),
        entry_before_(book.LastEntry()),
        overlay_(below, std::move(need_removable)) {}

  [[nodiscard]] std::vector<Noted>& All() { return noted_; }

  // The entry of the import that was opened last; 0 where there is none yet.
  [[nodiscard]] Long EntryNow() const {
    const Long entry = book_.LastEntry();
    return entry == entry_before_ ? 0 : entry;
  }

  [[nodiscard]] std::optional<Text> PlaceOf(const Text& path) const {
    const auto found = places_.find(Absolute(path));
    return found == places_.end() ? std::nullopt : std::optional(found->second);
  }

  [[nodiscard]] std::unique_ptr<OpenFile> Open(const Text& path, Access access, Sharing sharing,
                                               Creation creation) override {
    const bool is_look = access == Access::kRead && creation == Creation::kMustExist;
    if (!is_look) return Below().Open(path, access, sharing, creation);
    opened_[Absolute(path)] = StampNow(path);
    return overlay_.Open(path, access, sharing, creation);
  }
  [[nodiscard]] FileAttributes Attributes(const Text& path) override { return overlay_.Attributes(path); }
  [[nodiscard]] std::vector<FoundFile> Find(const Text& pattern) override { return overlay_.Find(pattern); }

  void Delete(const Text& path) override {
    if (whole_.PlaceOf(path)) return Below().Delete(path);
    const auto stamp = StampOfRead(path);
    overlay_.Delete(path);
    places_.erase(Absolute(path));
    opened_.erase(Absolute(path));
    if (stamp) Note({.path = Absolute(path), .new_path = {}, .stamp = *stamp});
  }

  void Rename(const Text& old_path, const Text& new_path) override {
    if (whole_.PlaceOf(old_path)) return Below().Rename(old_path, new_path);
    const auto stamp = StampOfRead(old_path);
    const Text place = PlaceOf(old_path).value_or(Absolute(old_path));
    overlay_.Rename(old_path, new_path);
    places_.erase(Absolute(old_path));
    places_[Absolute(new_path)] = place;
    opened_.erase(Absolute(old_path));
    opened_[Absolute(new_path)] = stamp;
    if (stamp) Note({.path = Absolute(old_path), .new_path = Absolute(new_path), .stamp = *stamp});
  }

 private:
  [[nodiscard]] std::optional<FileStamp> StampNow(const Text& path) const {
    return StampOf(PlaceOf(path).value_or(path));
  }

  // What was read is what is disposed of, whatever has come to its name since.
  [[nodiscard]] std::optional<FileStamp> StampOfRead(const Text& path) const {
    const auto opened = opened_.find(Absolute(path));
    return opened == opened_.end() ? StampNow(path) : opened->second;
  }

  void Note(FileDisposal disposal) { noted_.push_back({EntryNow(), std::move(disposal)}); }

  engine::Book& book_;
  WholeFiles& whole_;
  Long entry_before_;
  preview::OverlayFileSystem overlay_;
  std::vector<Noted> noted_;
  std::map<Text, std::optional<FileStamp>> opened_;  // what was opened to be read, by its path, the last time
  std::map<Text, Text> places_;  // where the bytes are of files that were renamed, by the name of now
};

AtomicImport::AtomicImport(engine::Book& book, WholeFiles& files, preview::OverlayFileSystem::Refusal need_removable)
    : book_(book),
      below_(files),
      before_(ThePlatform().files),
      files_(std::make_unique<Files>(book, files, *before_, std::move(need_removable))) {
  book_.BeginWhole();
  ThePlatform().files = files_.get();
}

AtomicImport::~AtomicImport() {
  try {
    Drop();
  } catch (...) {
    return;  // meant: the book has been closed, which drops it as well
  }
}

void AtomicImport::GiveFilesBack() {
  if (IsPlatformInstalled() && ThePlatform().files == files_.get()) ThePlatform().files = before_;
}

Text AtomicImport::PlaceOf(const Text& path) const {
  return files_->PlaceOf(path).value_or(path);
}

bool AtomicImport::HasWork() const {
  return files_->EntryNow() != 0 || !files_->All().empty();
}

void AtomicImport::Drop() {
  GiveFilesBack();
  if (std::exchange(open_, false)) book_.DropWhole();
}

// A file that has no entry of its own goes with the one before, or with the first.
void AtomicImport::SaveDue() {
  std::vector<Files::Noted>& noted = files_->All();
  const auto first = std::ranges::find_if(noted, [](const Files::Noted& one) { return one.entry != 0; });
  Long entry = first == noted.end() ? files_->EntryNow() : first->entry;
  std::map<Long, std::vector<FileDisposal>> due;
  for (Files::Noted& one : noted) {
    if (one.entry != 0) entry = one.entry;
    one.entry = entry;
    if (entry != 0) due[entry].push_back(one.disposal);
  }
  std::map<Long, Text> texts;
  for (const auto& [id, disposals] : due) texts[id] = TextOfDisposals(disposals);
  engine::JournalNotes(book_).SaveDue(texts);
}

std::vector<DisposalOutcome> AtomicImport::Keep() {
  GiveFilesBack();
  SaveDue();
  book_.KeepWhole();
  open_ = false;
  std::vector<DisposalOutcome> outcomes;
  // Where the import has no entry nothing was written, and nothing has to agree with the files.
  for (const Files::Noted& one : files_->All()) {
    if (one.entry == 0) outcomes.push_back(CarryOut(one.disposal, below_));
  }
  if (files_->All().empty() || !outcomes.empty()) return outcomes;
  try {
    return CarryOutDue(book_, below_);
  } catch (...) {
    const Text why = CurrentFailure().Description();
    for (const Files::Noted& one : files_->All()) {
      outcomes.push_back({one.disposal, one.entry, DisposalOutcome::Result::kStays, why});
    }
    return outcomes;
  }
}

AtomicEnd EndAtomic(AtomicImport& atomic, engine::Book& book, ImportRecorder& recorder, bool done) {
  AtomicEnd end;
  if (done) {
    try {
      book.EndProgress();
      recorder.Save();
      end.outcomes = atomic.Keep();
      end.kept = true;
      return end;
    } catch (...) {
      end.lost = ReasonOf(CurrentFailure());
    }
  }
  atomic.Drop();
  return end;
}

Text NothingKeptText() {
  return "nothing of the import is kept: figures and files are as they were";
}

Text NothingKeptLine() {
  return "N" + NothingKeptText().substr(1) + ".";
}

std::vector<Text> NotDisposedTexts(const std::vector<DisposalOutcome>& outcomes) {
  std::vector<Text> texts;
  for (const DisposalOutcome& outcome : outcomes) {
    const bool as_meant = outcome.result == DisposalOutcome::Result::kDone && outcome.why.empty();
    if (!as_meant) texts.push_back(DisposalText(outcome));
  }
  return texts;
}

}  // namespace tallybook::application
