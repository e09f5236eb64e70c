// A book: the embedded host's database of operating figures in one file, NAME.tbk (docs/book-file.md).
//
//   companion files  lie in the book's folder and bear the extension NAME; its settings file is NAME.ini there. NAME is
//   the
//                    file's name without ".tbk", and the whole name of a file that ends otherwise (BookCompanions.h)
//   records          one per account and level date. ReadRecord levels the date that it is given
//   storage          figures of an account are grouped into chunks of consecutive records, read through a bounded cache
//   durability       what WriteRecord took is committed at EndProgress, EndRollback and Close, after `commit_seconds`,
//                    and when much has gathered; a commit holds chunks and their journal images together, so a process
//                    that is killed leaves a book that is consistent and can be undone
//   one writer       a book that is open for writing cannot be opened for writing again, here or in another process,
//                    whatever path leads to it; it can be opened to read, and a reader sees what had been committed
//                    then
//   a look           a book that is open to read leaves nothing behind. One that may not be written is read as it is,
//   and
//                    reading fails with 70 when a writer changes it meanwhile
//   its place        links are followed before anything is named; a book that was moved, deleted or replaced while it
//   is
//                    open for writing fails to commit, with 70
//
// One thread. The HostApp, the progress display and the report services belong to the application and outlive the book.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

#include "base/Types.h"
#include "host/AccountRecord.h"
#include "host/FieldRecord.h"
#include "host/HostApp.h"
#include "host/Masterfile.h"
#include "host/Sequence.h"
#include "tallybook/engine/BookDescription.h"
#include "tallybook/engine/Calendar.h"
#include "tallybook/engine/EntryNotes.h"
#include "tallybook/engine/Journal.h"
#include "tallybook/engine/Notice.h"
#include "tallybook/engine/ProgressDisplay.h"
#include "tallybook/engine/ReportServices.h"
#include "tallybook/engine/StoredDescription.h"

namespace tallybook::engine {

class FigureStore;

// Masterfile::FileVersion, which exchange files carry. The format of the book's file has a number of its own
// (BookFormat.h).
inline constexpr Long kFileVersion = 1;

struct BookOptions {
  std::size_t cache_bytes = std::size_t{256} << 20;  // the cache's bound; at least two chunks are kept
  bool read_only = false;
  double commit_seconds = 5;  // the longest that a running operation keeps what it wrote uncommitted
  double wait_seconds = 0;    // the longest that a book to be written is waited for while it is open elsewhere
  ProgressDisplay* progress = nullptr;
  ReportServices* reports = nullptr;
  // What the user should see: a book was brought up to date, or its companion files were, or nothing can be taken back.
  Notice notice;
};

// Which figures a walk visits. A record is in the range when it holds one of the dates.
struct FigureQuery {
  Date first = kNoDate;         // kNoDate: from the first date held
  Date last = kNoDate;          // kNoDate: to the last record, which can end behind the last date held
  std::vector<Long> accounts;   // account numbers; empty: all
  std::vector<Integer> fields;  // field numbers; empty: all
};

struct Figure {
  Integer account_position = 0;
  Long account_number = 0;
  Date date = 0;  // the record's level date
  Integer field_position = 0;
  Integer field_number = 0;
  Double value = 0;
};

// An account or field that is to be removed, by what a user calls it.
struct FiguresLost {
  bool is_field = false;
  Long number = 0;
  Text name;  // of an account its code, of a field its description
  long long figures = 0;
};

class Book final : public Masterfile, public CalendarSource {
 public:
  // Makes a new book of a sound description, with its values, and closes it.
  //   fails   Failure 5 for a description that is not sound, 75 where the path exists, else as Open; no file is left
  //           then
  static void Create(const Text& path, const BookDescription& description);

  // Opens a book.
  //   fails   each with the path: 53 no such file, 76 no such folder, 70 not permitted or open elsewhere for writing,
  //           75 a file that is no book, or one with more than one name, 73 a book of a newer version, 61 no room,
  //           57 a damaged or unreadable book
  [[nodiscard]] static std::unique_ptr<Book> Open(const Text& path, HostApp& app, const BookOptions& options = {});

  // Commits and closes, and says nothing of what fails: call Close first where that matters.
  ~Book() override;
  Book(const Book&) = delete;
  Book& operator=(const Book&) = delete;

  // Commits what was written. A failure (61 no room, 57) leaves the file as the last commit left it and keeps what was
  // not stored, so that the call can be repeated.
  void Commit();
  // As Commit, and waits until the disk has it: a commit by itself outlives the process and not the machine. For
  // whoever is about to take away what the figures were read from. Nothing for a book that is open to read, or is
  // closed.
  void Settle();
  // Commits and closes the file. Nothing but the destructor may follow. A journal entry that is open stays unclosed.
  void Close();
  // Closes the file and drops what has not been committed. As Close otherwise.
  void Abandon();

  // All or nothing: what is written from here on, figures and journal, is one transaction, however often it is
  // committed in between. KeepWhole stores it; DropWhole, a close without either, and the end of the process leave
  // nothing of it. A look at the book sees the state before until then. KeepWhole fails as Commit, and nothing is
  // stored then, but DropWhole is still due. Where something of it cannot be written everything after that fails, too
  // (57). Lists cannot be changed meanwhile. The book has no current record behind any of them.
  void BeginWhole();
  void KeepWhole();
  void DropWhole();

  [[nodiscard]] const Text& Path() const { return path_; }
  [[nodiscard]] bool ReadOnly() const { return options_.read_only; }

  // What the book is made of, without its values, and with what only its storage knows. A reference lasts until the
  // book grows or a change of its lists is undone.
  [[nodiscard]] const BookDescription& Description() const { return stored_->description; }
  [[nodiscard]] const StoredDescription& Stored() const { return *stored_; }

  // What the book would lose by becoming `after`: accounts and fields that have figures and are not in it any more,
  // with the number of figures; in the order of the lists, accounts first. CheckGrowth has found that the book may
  // become it.
  [[nodiscard]] std::vector<FiguresLost> LostBy(const BookDescription& after);
  // The values of `after` that are not what the book has, in their order: those of zero where it has none are left out.
  // CheckGrowth has found that the book may become `after`. The book has no current record afterwards.
  [[nodiscard]] std::vector<ValueDescription> ChangedValues(const BookDescription& after);
  // Changes the book's names, lists and years to those of `after`, in one entry of the journal that `what_ran` names,
  // and sets the values that it has, in another of the same command; all of it in one transaction. Figures that `after`
  // does not name stay. Where there is no difference nothing is done. Figures of what is removed stay in the file for
  // the way back; whoever calls has asked LostBy. The book has no current record afterwards.
  //   fails   5 for what CheckGrowth refuses, before anything is changed; 70 for a book open to read; else as Commit
  void Grow(const BookDescription& after, const Text& what_ran);

  // Gives every non-zero figure of the query, ordered by account position, date and field position. What was written
  // so far is committed first. The visitor must not change the book. False from the visitor ends the walk.
  //   fails   5 for an account or field number that the book has not, 57 for a damaged book
  using FigureVisitor = std::function<bool(const Figure&)>;
  void VisitFigures(const FigureQuery& query, const FigureVisitor& visit);
  // How many figures that are not zero the query visits.
  [[nodiscard]] long long CountFigures(const FigureQuery& query);
  // A giver for PrintBookDescription that streams the book's figures.
  [[nodiscard]] ValueGiver Values();

  // The position and the number of an account by its code without trailing blanks; 0 where no account has it.
  [[nodiscard]] Integer AccountPositionOfCode(const Text& code) const;
  // The position of an account or field by its number; 0 where there is none.
  [[nodiscard]] Integer AccountPosition(Long account_number) const;
  [[nodiscard]] Integer FieldPosition(Integer field_number) const;

  // Begins a command: what the journal entries from here on say that ran, and of what kind it is. They belong together
  // until the next call; without one each entry is a command of its own. Where the name is empty they bear the title of
  // the progress display.
  void SetOperation(JournalKind kind, const Text& name);
  void SetOperationName(const Text& name) { SetOperation(JournalKind::kImport, name); }
  // What the entries keep that are opened from here to the next SetOperation; each has them from its first moment on.
  void SetNotes(const EntryNotes& notes) { notes_ = notes; }
  // The number of the entry that was opened last since the book was; 0 where none has reached the file.
  [[nodiscard]] Long LastEntry() const;

  // CalendarSource.
  [[nodiscard]] const Calendar& CalendarRules() const override;

  // Masterfile.
  HostApp& App() override { return app_; }
  tallybook::FiscalCalendar& FiscalCalendar() override { return cursor_; }
  std::unique_ptr<AccountRecord> NewAccountRecord() override;
  std::unique_ptr<FieldRecord> NewFieldRecord() override;
  SequenceList& PrintSequences() override;

  [[nodiscard]] Text SystemName() const override { return Description().system_name; }
  [[nodiscard]] Text DataPath() const override { return folder_; }
  [[nodiscard]] Text FileExtension() const override { return name_; }
  [[nodiscard]] Text SettingsFileName() const override { return folder_ + name_ + ".ini"; }
  [[nodiscard]] Text MasterFileTypeName(Integer type) const override;
  const TitleLookup& TitleSource() const override { return title_lookup_; }
  [[nodiscard]] Text TitleContext() const override { return Description().system_name; }

  [[nodiscard]] Long FileVersion() const override { return kFileVersion; }
  [[nodiscard]] Integer DataLevel() const override { return Description().data_level; }
  [[nodiscard]] Integer CalendarType() const override { return static_cast<Integer>(Description().calendar.kind); }
  [[nodiscard]] Integer YearField() const override { return 0; }
  [[nodiscard]] Long FieldSlots() const override { return NumFields(); }
  [[nodiscard]] Long AccountSlots() const override { return NumAccounts(); }

  [[nodiscard]] Long MaxAccounts() const override { return Description().max_accounts; }
  [[nodiscard]] Long NumAccounts() const override { return static_cast<Long>(Description().accounts.size()); }
  [[nodiscard]] Long AccountNumber(Integer position) const override;
  [[nodiscard]] Long MaxFields() const override { return Description().max_fields; }
  [[nodiscard]] Long NumFields() const override { return static_cast<Long>(Description().fields.size()); }
  [[nodiscard]] Integer FieldNumber(Integer position) const override;
  [[nodiscard]] Text FieldName(Integer position) const override;

  // False for a number that no account has and for a date that no record holds; no record is current then. The level
  // date of the last record is taken even where it lies behind LastDate. What was set and not written is dropped. Fails
  // with 57 for a damaged book, and with 61 or 57 where the cache had to make room.
  [[nodiscard]] bool ReadRecord(Long account_number, Date date) override;
  // Keeps the record current; does nothing and gives false where none is. Failure 70 for a book open to read, 61 and 57
  // as Commit: the record is kept in memory then, and the call can be repeated.
  bool WriteRecord() override;
  [[nodiscard]] Double FieldValue(Integer field_number) const override;
  // Fails with failure 6 for an infinity and for what is no number, with the record as it was.
  void SetFieldValue(Integer field_number, Double value) override;

  [[nodiscard]] bool DateValid(Date date) const override;
  [[nodiscard]] Date FirstDate() const override { return CalendarRules().FirstDate(); }
  [[nodiscard]] Date LastDate() const override { return CalendarRules().LastDate(); }
  [[nodiscard]] Date FirstSystemDate() const override { return CalendarRules().FirstDate(); }
  [[nodiscard]] Integer FirstYear() const override { return Description().calendar.first_year; }
  [[nodiscard]] Long NumYears() const override { return Description().calendar.years; }
  [[nodiscard]] Long YearsInUse() const override { return Description().calendar.years_in_use; }
  [[nodiscard]] Integer YearCode(Integer position) const override;  // the year's name
  [[nodiscard]] Date YearStart(Integer year) const override { return CalendarRules().YearStart(year); }
  [[nodiscard]] Integer NumPeriods() const override { return CalendarRules().NumPeriods(); }
  [[nodiscard]] Text PeriodName(Integer period) const override { return CalendarRules().PeriodName(period); }
  [[nodiscard]] Integer PeriodLength(Integer period) const override { return CalendarRules().PeriodLength(period); }

  void BeginProgress(const Text& title) override;
  void BeginProgressText(const Text& title) override { BeginProgress(title); }
  void SetProgressFraction(Single fraction) override;
  void SetProgressText(const Text& text) override;
  void SetProgressCancelEnabled(bool enabled) override;
  [[nodiscard]] bool ProgressCancelled() const override;
  void EndProgress() override;

  // Commits, ends an entry that is still open as unclosed, and opens a new one, which reaches the file with the first
  // commit under it. Gives 1. Failure 70 for a book open to read. What is written while no entry is open gets one from
  // the book itself that keeps no images (Journal.h); it ends with the operation, or when the book is closed.
  Integer BeginRollback(Date first, Date last) override;
  void EndRollback() override;

  // A book that may be written may have its definitions changed.
  [[nodiscard]] bool AccessRight(const Text& right) const override;

  void InitReportPrinter(Printer& printer) override;
  void PrintReportHeader(Printer& printer, const Text& name) override;

 private:
  friend class FiguresBefore;
  friend class Journal;
  friend class JournalNotes;
  friend class JournalTrim;
  friend class Lineage;

  class SystemTitle : public TitleLookup {
   public:
    [[nodiscard]] Text TitleFor(const Text& context) const override { return context; }
  };
  class NoSequences : public SequenceList {};

  Book(const Text& path, HostApp& app, const BookOptions& options, std::unique_ptr<FigureStore> store);

  [[nodiscard]] FigureStore& Store() const;  // Failure 91 behind Close
  void RequireWritable() const;
  [[noreturn]] void FailField(Integer field_number) const;
  [[noreturn]] void FailFigure(Integer field_number, Double value) const;
  void KeepWritten();
  void BeginEntry(Date first, Date last, bool keeps_images);
  void OpenOwnEntry();
  void EndOwnEntry();
  void SetValues(const std::vector<ValueDescription>& values, const Text& what_ran, Long command);
  [[nodiscard]] JournalEntry EntryOfUndo() const;
  // Entries of figures and such of lists, each newest first, all of one command.
  void TakeBack(const std::vector<JournalEntry>& figures, const std::vector<JournalEntry>& lists,
                const UndoRequest& request, UndoOutcome& outcome);
  void TakeListsBack(const JournalEntry& entry, JournalEntry undo);
  // What the description was before an entry of kind kLists, where `now` is that behind it.
  [[nodiscard]] StoredDescription DescriptionBefore(const StoredDescription& now, const JournalEntry& entry) const;
  void RefuseToTakeBack(const JournalEntry& entry, const Text& why) const;
  void TakeStored();
  void DropCurrentRecord();

  Text path_;
  Text folder_;  // ends in a separator
  Text name_;
  HostApp& app_;
  BookOptions options_;
  std::unique_ptr<FigureStore> store_;
  std::shared_ptr<const StoredDescription> stored_;  // known when the book is closed, too
  BookCalendar cursor_;
  SystemTitle title_lookup_;
  NoSequences no_sequences_;
  bool progress_open_ = false;

  // Tables for the walk over records: by account number, by field number.
  std::vector<Integer> position_of_account_;  // 0: no such account
  std::vector<Integer> position_of_field_;
  std::vector<std::uint16_t> place_of_field_;  // in a row, from 1; 0: no such field

  // The current record. `row_` points at its figures, each in its field's slot: into the cache until the first figure
  // is set, into `changed_row_` from then on; null where no record is current.
  const Double* row_ = nullptr;
  std::vector<Double> changed_row_;
  bool changed_ = false;
  unsigned written_records_ = 0;
  JournalKind operation_kind_ = JournalKind::kImport;
  Text operation_name_;
  EntryNotes notes_;
  bool in_command_ = false;         // SetOperation has begun one
  bool command_has_entry_ = false;  // and an entry of it was the last that was opened
  bool own_entry_ = false;          // the open entry is one that the book opened by itself
  Text progress_title_;
};

}  // namespace tallybook::engine
