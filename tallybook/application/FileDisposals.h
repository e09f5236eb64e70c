// Files that are to be deleted or renamed once the figures that were read from them are stored for good. What is still
// to be done stands with the entries of the journal (JournalNotes::Due), so that it comes in one transaction with the
// figures; a process that ends in between leaves it to the next that opens the book to change it. One thread.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "base/Types.h"
#include "platform/FileSystem.h"
#include "tallybook/engine/Book.h"

namespace tallybook::application {

// What tells a file from another that came to its name, and from itself with other contents. Not the device: its number
// may be another after a restart.
struct FileStamp {
  std::uint64_t inode = 0;
  std::int64_t size = 0;      // in bytes
  std::int64_t modified = 0;  // in nanoseconds since 1970
  bool operator==(const FileStamp&) const = default;
};

// Nothing for what is neither a regular file nor a link, or is not there. A link is told by itself: to delete or rename
// it does nothing to the file that it leads to.
[[nodiscard]] std::optional<FileStamp> StampOf(const Text& path);

struct FileDisposal {
  Text path;      // absolute
  Text new_path;  // the same, of a file that is to be renamed; else it is to be deleted
  FileStamp stamp;
  bool operator==(const FileDisposal&) const = default;
};

// The words that the engine keeps, and back; paths keep every byte. What are no such words gives none.
[[nodiscard]] Text TextOfDisposals(const std::vector<FileDisposal>& disposals);
[[nodiscard]] std::vector<FileDisposal> DisposalsOf(const Text& text);

struct DisposalOutcome {
  enum class Result {
    kDone,
    kGone,       // the file is there no more
    kChanged,    // the file is another by now, so that it is left alone
    kTakenBack,  // the import has been undone, so that the file is left alone
    kStays,      // it could not be done now, and stays due
  };
  FileDisposal disposal;
  Long entry = 0;
  Result result = Result::kDone;
  Text why = {};  // of what stays; of all else why the book could not be told
};

// Does at once what is to be done, and gives what became of it. `files` deletes and renames.
[[nodiscard]] DisposalOutcome CarryOut(const FileDisposal& disposal, FileSystem& files);
// Does what is due in a book that is open to be changed, oldest first, and keeps in the book what is left to do. No
// file goes before the figures that were read from it are on the disk. Fails as Journal::Entries and Book::Settle.
[[nodiscard]] std::vector<DisposalOutcome> CarryOutDue(engine::Book& book, FileSystem& files);

// What is still to be done: "/in/a.QDX is to be renamed to /in/a.XDQ".
[[nodiscard]] Text DueText(const FileDisposal& disposal);
// What became of it, as a line: "/in/a.QDX is deleted now, as was due since its import (journal entry 3)".
[[nodiscard]] Text DisposalText(const DisposalOutcome& outcome);

}  // namespace tallybook::application
