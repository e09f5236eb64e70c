#include "tallybook/engine/BookSalvage.h"

#include <system_error>
#include <utility>

#include "base/Failure.h"
#include "platform/posix/SystemError.h"
#include "tallybook/engine/BackupTables.h"
#include "tallybook/engine/BookBackup.h"
#include "tallybook/engine/BookCompanions.h"
#include "tallybook/engine/BookFile.h"
#include "tallybook/engine/BookPlace.h"
#include "tallybook/engine/ChunkPlaces.h"
#include "tallybook/engine/DamagedBook.h"
#include "tallybook/engine/FigureSalvage.h"
#include "tallybook/engine/JournalSalvage.h"
#include "tallybook/engine/SalvageLosses.h"
#include "tallybook/engine/SalvagedChunks.h"
#include "tallybook/engine/Workpiece.h"
#include "tallybook/files/FileModes.h"

namespace tallybook::engine {

namespace {

constexpr const char* kSource = "Tallybook.Book";

class Salvager {
 public:
  // The description has been loaded; `trouble` is what is wrong with it.
  Salvager(DamagedBook& damaged, const Text& trouble)
      : damaged_(damaged), places_(damaged.Stored()), losses_(damaged.Path(), places_) {
    if (!trouble.empty()) losses_.Add(FindingKind::kDescription, trouble);
    if (!damaged_.LogTrouble().empty()) losses_.Add(FindingKind::kFile, damaged_.LogTrouble());
    if (!damaged_.HasChecksums()) {
      losses_.Add(FindingKind::kFile,
                  "a book of format 1 has no checksums: whether its figures are as they were cannot be told");
    }
    result_.format = damaged_.Format();
  }

  void Write(const Text& path, WorkWatch& watch) {
    constexpr Single kFiguresWritten = 0.6F;
    BookFile file = BookFile::Create(path, damaged_.Stored());
    for (Database* database : {&file.Db(), &damaged_.Db()}) database->SetWatch(watch);
    WriteFigures(file.Db());
    watch.Step(kFiguresWritten);
    Transaction transaction(file.Db());
    result_.entries = JournalSalvage(damaged_, losses_).CopyTo(file.Db());
    CopyCompanions(file.Db());
    transaction.Commit();
    watch.Step(1);
  }

  void TellCompanionsWait(const Text& why) {
    losses_.Add(FindingKind::kCompanions,
                "they are in the new book and will stand beside it when it is opened next: " + why);
  }

  [[nodiscard]] SalvageResult TakeResult() {
    result_.lost = losses_.Take();
    return std::move(result_);
  }

 private:
  void WriteFigures(Database& database) {
    Transaction transaction(database);
    SalvagedChunks chunks(database);
    FigureSalvage(damaged_, places_, losses_, chunks).Run();
    result_.chunks = static_cast<long long>(chunks.All().size());
    transaction.Commit();
  }

  void CopyCompanions(Database& database) {
    const Text& path = damaged_.Path();
    std::vector<Companion> companions;
    const bool read = Tries([&] {
      // A backup has them within, and no others even where they cannot be found there.
      const bool within = HasBackupTables(damaged_.Db()) || LooksLikeBackup(path);
      companions = within ? LoadCompanions(damaged_.Db()) : ReadCompanions(BookFolder(path), BookName(path));
    });
    if (!read) losses_.Add(FindingKind::kCompanions, "the companion files cannot be read");
    if (companions.empty()) return;
    SaveBackupTables(database, {BookName(path), 0}, companions);
    result_.companions = static_cast<long long>(companions.size());
  }

  DamagedBook& damaged_;
  ChunkPlaces places_;
  SalvageLosses losses_;
  SalvageResult result_;
};

// Companion files that a book has within stand beside it when it has been opened. Gives why that could not be done now.
Text PutCompanionsInPlace(const Text& path) {
  try {
    const bool read_only = false;
    const BookFile opened(path, read_only);
    return "";
  } catch (const Failure& failure) {
    return failure.Description();
  }
}

}  // namespace

SalvageResult SalvageBook(const Text& damaged, const Text& new_book, bool as_it_reads, WorkWatch& watch) {
  constexpr Single kCopied = 0.2F;
  constexpr Single kWritten = 0.7F;
  const Text place = NativeBookPath(new_book);
  Workpiece workpiece(place);
  WorkPart copying(watch, 0, kCopied);
  WorkPart writing(watch, kCopied, kWritten);
  WorkPart checking(watch, kWritten, 1);
  DamagedBook book(ResolvedBookPath(damaged), copying);
  const Text trouble = book.LoadDescription(as_it_reads);
  Salvager salvager(book, trouble);
  if (const std::error_code error = files::MakeNoMoreReadable(workpiece.Path(), book.Path())) {
    throw Failure(FailureNumberOf(error.value()),
                  place + ": it cannot be kept from those who may not read the damaged book: " + error.message(),
                  kSource);
  }
  workpiece.Do([&] { salvager.Write(workpiece.Path(), writing); });
  RequireSound(workpiece.Path(), place, checking);
  workpiece.MoveToPlace();
  const Text trouble_beside = PutCompanionsInPlace(place);
  if (!trouble_beside.empty()) salvager.TellCompanionsWait(trouble_beside);
  return salvager.TakeResult();
}

}  // namespace tallybook::engine
