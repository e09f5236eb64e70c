// The file of a book: its description, and the right to write it. docs/book-file.md tells the tables.
// One thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "base/Types.h"
#include "tallybook/engine/BookCompanions.h"
#include "tallybook/engine/BookDescription.h"
#include "tallybook/engine/BookFormat.h"
#include "tallybook/engine/BookHold.h"
#include "tallybook/engine/Database.h"
#include "tallybook/engine/Notice.h"
#include "tallybook/engine/StoredDescription.h"

namespace tallybook::engine {

class BookFile {
 public:
  // Makes a book with empty figures in a file that is new and empty. Takes the description as sound.
  static BookFile Create(const Text& path, const BookDescription& description);
  // The same with what the description of another book's file has besides.
  static BookFile Create(const Text& path, const StoredDescription& stored);

  // Opens a file; fails as Book::Open. A file that is open to read shows what was committed when it was opened. One to
  // be written that is in use elsewhere is waited for so many seconds at most, as long as `watch` wants it.
  BookFile(const Text& path, bool read_only, double wait_seconds = 0, WorkWatch& watch = Unwatched());

  // Opens a file to look for damage: a description that is damaged is no failure then, but told by DescriptionTrouble,
  // and empty.
  // A backup is taken as well.
  static BookFile OpenToCheck(const Text& path);
  [[nodiscard]] const Text& DescriptionTrouble() const { return description_trouble_; }

  [[nodiscard]] const Text& Path() const { return database_->Path(); }
  [[nodiscard]] Database& Db() { return *database_; }
  [[nodiscard]] bool ReadOnly() const { return read_only_; }

  // The description; who keeps the shared one has it when the file is gone.
  [[nodiscard]] const BookDescription& Description() const { return stored_->description; }
  [[nodiscard]] std::shared_ptr<const StoredDescription> Stored() const { return stored_; }
  // The format that the file has.
  [[nodiscard]] Long Format() const { return format_; }
  // Due before the first write: brings a file of an older format to the present one (BookUpgrade.h) and says so by
  // `notice`. No statement may stand on a row. Gives whether that had to be done.
  bool BringUpToDate();
  // As BookStorage::Settle.
  void Settle() const;
  // As BookStorage::Compact, of a file that is open to be changed.
  void Compact(WorkWatch& watch);
  // Tells at once what there is to tell of the opening: companion files that a restore has left within the book, and
  // that are damaged there. They keep nobody from the figures, and stay as they are.
  void SetNotice(Notice notice);
  // How many records a chunk has; fixed when the book was made.
  [[nodiscard]] std::size_t RowsOfChunk() const { return stored_->rows_of_chunk; }

 private:
  BookFile(const Text& path, std::shared_ptr<const StoredDescription> stored);
  explicit BookFile(const Text& path);

  void LoadDescription();
  void OpenToChange(double wait_seconds, WorkWatch& watch);
  void OpenToLook();
  [[nodiscard]] bool OpenShared();
  void OpenUnchanging();
  void OpenCopy();
  void CheckInPlace() const;
  void CheckIsBook();
  [[nodiscard]] bool LacksCompanions();
  [[nodiscard]] std::optional<std::vector<Companion>> CompanionsWithin();
  void FinishRestoring();
  void LetRestoringFinish();

  Text path_;
  bool read_only_;
  std::unique_ptr<BookHold> hold_;  // declared first, so given up last
  std::unique_ptr<Database> database_;
  std::shared_ptr<const StoredDescription> stored_ = std::make_shared<StoredDescription>();
  Long format_ = kBookFormat;
  bool also_backups_ = false;
  Notice notice_;
  Text description_trouble_;
  Text companions_trouble_;
};

}  // namespace tallybook::engine
