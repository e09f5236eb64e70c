// An import that is done wholly or not at all: its figures and its entries in the journal are one transaction, and the
// files that it deletes and renames are still there until that is stored. Meanwhile searches see them as gone, so that
// no file is read twice. What is due then stands in the book (FileDisposals.h), for the case that the process ends
// before it is done.
//
//   AtomicImport atomic(book, files, need_removable);
//   ... the engine runs on the book ...
//   if (done) outcomes = atomic.Keep();   // else nothing of it stays
//
// One at a time, and one thread; the platform stays installed longer.
#pragma once

#include <memory>
#include <optional>
#include <vector>

#include "base/Failure.h"
#include "base/Types.h"
#include "tallybook/application/FileDisposals.h"
#include "tallybook/application/ImportRecorder.h"
#include "tallybook/application/WholeFiles.h"
#include "tallybook/engine/Book.h"
#include "tallybook/preview/OverlayFileSystem.h"

namespace tallybook::application {

class AtomicImport {
 public:
  // `files` are those of the installed platform, or lie under its own, which have a layer over them from here to Keep,
  // Drop or the end of this. All of it outlives this. `need_removable` as OverlayFileSystem takes it.
  AtomicImport(engine::Book& book, WholeFiles& files, preview::OverlayFileSystem::Refusal need_removable);
  // Drops what was not kept.
  ~AtomicImport();
  AtomicImport(const AtomicImport&) = delete;
  AtomicImport& operator=(const AtomicImport&) = delete;

  // Where the bytes of a file are that the import knows by this path: elsewhere where it was renamed.
  [[nodiscard]] Text PlaceOf(const Text& path) const;

  // Whether it has come to a figure, or to a file that is to be deleted or renamed.
  [[nodiscard]] bool HasWork() const;

  // Stores it, then deletes and renames; gives what became of each file. What stays due is done when the book is opened
  // to be changed next.
  //   fails  as Book::KeepWhole; nothing of it is there then
  [[nodiscard]] std::vector<DisposalOutcome> Keep();
  // Leaves figures, journal and files as they were.
  void Drop();

 private:
  class Files;

  void GiveFilesBack();
  void SaveDue();

  engine::Book& book_;
  WholeFiles& below_;
  FileSystem* before_;  // the platform's files, which are or lie over those below
  std::unique_ptr<Files> files_;
  bool open_ = true;
};

// What became of an import that is to be done wholly or not at all.
struct AtomicEnd {
  bool kept = false;
  std::optional<StopReason> lost;  // why what was done could not be kept
  std::vector<DisposalOutcome> outcomes;
};

// Keeps figures and record of one that is done, then deletes and renames; of any other, and where they cannot be kept,
// nothing stays.
[[nodiscard]] AtomicEnd EndAtomic(AtomicImport& atomic, engine::Book& book, ImportRecorder& recorder, bool done);

// "nothing of the import is kept: figures and files are as they were"; and the same as a line by itself.
[[nodiscard]] Text NothingKeptText();
[[nodiscard]] Text NothingKeptLine();
// What is to be told of the files: those that are not deleted or renamed as they were to be, a line each.
[[nodiscard]] std::vector<Text> NotDisposedTexts(const std::vector<DisposalOutcome>& outcomes);

}  // namespace tallybook::application
