// The file of a book: its description, and the right to write it. docs/book-file.md tells the tables.
// One thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "support/Platform.h"
#include "support/Types.h"
#include "tallybook/engine/BookDescription.h"
#include "tallybook/engine/BookFormat.h"
#include "tallybook/engine/Database.h"

namespace tallybook::engine {

class BookFile {
 public:
  // Makes a new file with empty figures. Takes the description as sound. Failure 75 where the path exists.
  static BookFile Create(const Text& path, const BookDescription& description);

  // Opens a file; fails as Book::Open. A file that is open to read shows what was committed when it was opened.
  BookFile(const Text& path, bool read_only);

  [[nodiscard]] const Text& Path() const { return database_->Path(); }
  [[nodiscard]] Database& Db() { return *database_; }
  [[nodiscard]] bool ReadOnly() const { return read_only_; }

  // The description without its values; who keeps the shared one has it when the file is gone.
  [[nodiscard]] const BookDescription& Description() const { return *description_; }
  [[nodiscard]] std::shared_ptr<const BookDescription> SharedDescription() const { return description_; }
  // The format that the file has.
  [[nodiscard]] Long Format() const { return format_; }
  // How many records a chunk has; fixed when the book was made.
  [[nodiscard]] std::size_t RowsOfChunk() const { return rows_of_chunk_; }

 private:
  BookFile(const Text& path, const BookDescription& description);

  void TakeRightToWrite();

  Text path_;
  bool read_only_;
  // Held from open to close: who has it may write. Its name is the book's with "-lock" behind it. It is never deleted,
  // because a file that is gone cannot keep a second writer from making a new one. Declared first, so given up last.
  std::unique_ptr<OpenFile> right_to_write_;
  std::unique_ptr<Database> database_;
  std::shared_ptr<BookDescription> description_ = std::make_shared<BookDescription>();
  Long format_ = kBookFormat;
  std::size_t rows_of_chunk_ = 1;
};

}  // namespace tallybook::engine
