// A look at an import before it happens. The engine that would run in earnest runs on an overlay of the book, with the
// files of the installed platform laid over likewise; afterwards this tells what it did, file by file and all together.
//
//   ImportPreview preview(means);
//   preview.BeginFile("north.QDX");   // as the engine comes to a file
//   ... the engine runs on preview.Book() ...
//   preview.End();
//   preview.VisitChanges(...);
//
// One thread, one at a time, as there is one platform. What does not fit into memory goes to temporary files.
#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <span>
#include <vector>

#include "base/Types.h"
#include "tallybook/preview/KeptRows.h"
#include "tallybook/preview/OverlayFileSystem.h"
#include "tallybook/preview/OverlayMasterfile.h"

namespace tallybook::preview {

// What a file would do.
struct PreviewedFile {
  Text name;
  long long figures = 0;  // changed
  RecordCounts records = {};
};

// Figures that end otherwise than they stand in the book, added up.
struct ChangeTotal {
  Integer account_position = 0;  // 0: of all accounts
  Long account_number = 0;
  Integer field_position = 0;
  Integer field_number = 0;
  long long figures = 0;
  Double before = 0;
  Double after = 0;
};

// What would become of a file.
struct FileFate {
  enum class Kind { kKept, kDeleted, kRenamed };
  Kind kind = Kind::kKept;
  Text new_path = {};     // of a renamed file
  bool replaces = false;  // where there is an older file of that name
};

class ImportPreview {
 public:
  // All of it belongs to the caller and outlives the preview.
  struct Means {
    Masterfile& book;
    HostFactory& factory;
    HostApp& app;                                      // as OverlayMasterfile takes it
    OverlayFileSystem::Refusal need_removable = {};    // as OverlayFileSystem takes it
    std::size_t cache_bytes = std::size_t{128} << 20;  // of figures written
  };

  // The installed platform has the overlay's files until End or the end of this.
  explicit ImportPreview(const Means& means);
  ~ImportPreview();
  ImportPreview(const ImportPreview&) = delete;
  ImportPreview& operator=(const ImportPreview&) = delete;

  // What the engine is to work on, instead of the book.
  [[nodiscard]] OverlayMasterfile& Book() { return book_; }

  // The engine comes to a file. Once at least, before it writes.
  void BeginFile(const Text& name);
  // The engine has ended, however it did. Gives the platform its own files back and adds up. What follows is asked
  // behind it; all of it reads the book.
  void End();

  [[nodiscard]] const std::vector<PreviewedFile>& Files() const { return files_; }
  // Records that any file wrote, against the book: one that a later file put back ends as it was.
  [[nodiscard]] const RecordCounts& Records() const { return records_; }
  // Totals of the fields that end otherwise, in the order of the book's list.
  [[nodiscard]] std::vector<ChangeTotal> FieldTotals() const;
  [[nodiscard]] std::vector<RegroupedDays> Regrouped() const { return book_.Regrouped(); }
  [[nodiscard]] FileFate FateOf(const Text& path) const;

  // Each figure that a file changed, against what it was before that file; `file` is its place in Files, from 0. In the
  // order of files, account positions, dates and field positions. False ends the visit.
  using ChangeVisitor = std::function<bool(std::size_t file, const FigureChange& change)>;
  void VisitChanges(const ChangeVisitor& visit);
  // The totals of each account's fields, in the order of the lists.
  using TotalVisitor = std::function<bool(const ChangeTotal& total)>;
  void VisitAccountTotals(const TotalVisitor& visit) const;

 private:
  void EndFile();
  void Add(std::span<const FigureChange> of_record);
  void EndAccount();
  bool VisitKept(const ChangeVisitor& visit);
  void GiveFilesBack();

  OverlayMasterfile book_;
  FileSystem* files_before_;
  OverlayFileSystem overlay_files_;
  std::vector<PreviewedFile> files_;
  RecordCounts records_;
  std::vector<ChangeTotal> totals_of_field_;  // by position from 1
  Integer account_position_ = 0;              // of the account under way
  std::vector<ChangeTotal> of_account_;       // its totals, by field position from 1
  KeptRows<ChangeTotal> account_totals_;

  // The changes of all files but the last, whose changes the overlay tells.
  KeptRows<FigureChange> kept_;
};

}  // namespace tallybook::preview
