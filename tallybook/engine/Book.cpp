#include "tallybook/engine/Book.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <string>
#include <utility>

#include "base/Dates.h"
#include "base/Failure.h"
#include "base/FixedTable.h"
#include "base/Narrow.h"
#include "host/Printer.h"
#include "platform/Clock.h"
#include "tallybook/engine/BookCompanions.h"
#include "tallybook/engine/BookFile.h"
#include "tallybook/engine/BookGrowth.h"
#include "tallybook/engine/BookPlace.h"
#include "tallybook/engine/FigureStore.h"
#include "tallybook/engine/SqliteStorage.h"
#include "tallybook/engine/Workpiece.h"

namespace tallybook::engine {

namespace {

constexpr const char* kSource = "Tallybook.Book";
// As much is written before it is committed, whatever the time. What is written over and over, as by a walk over all
// accounts of each date, is better kept for longer.
constexpr std::size_t kCommitBytes = std::size_t{16} << 20;
constexpr std::size_t kCommitBytesComingBack = std::size_t{64} << 20;
// Outside a running operation a change is committed at once when none was committed within this time.
constexpr double kIdleSeconds = 1;
// A running operation looks at the clock once in so many records.
constexpr unsigned kRecordsOfAClockLook = 64;
// From this format on NAME is the whole name of a file that does not end in ".tbk".
constexpr Long kFirstFormatOfWholeNames = 2;

Text Padded(const Text& text, Integer width) {
  const auto characters = std::count_if(text.begin(), text.end(),
                                        [](char unit) { return (static_cast<unsigned char>(unit) & 0xC0) != 0x80; });
  Text padded = text;
  if (characters < width) padded.append(static_cast<std::size_t>(width - characters), ' ');
  return padded;
}

// Positions from 1 by number; 0 for the numbers between.
template <typename Row>
std::vector<Integer> PositionsByNumber(const std::vector<Row>& rows) {
  std::vector<Integer> positions;
  for (std::size_t index = 0; index < rows.size(); ++index) {
    const auto number = static_cast<std::size_t>(rows[index].number);
    if (number >= positions.size()) positions.resize(number + 1, 0);
    positions[number] = ToInteger(static_cast<long long>(index) + 1);
  }
  return positions;
}

Integer PositionIn(const std::vector<Integer>& positions, Long number) {
  return number < 1 || static_cast<std::size_t>(number) >= positions.size()
             ? Integer{0}
             : positions[static_cast<std::size_t>(number)];
}

template <typename Row>
const Row& RowAt(const std::vector<Row>& rows, Integer position) {
  if (position < 1 || static_cast<std::size_t>(position) > rows.size())
    FailOutsideTable(position, ToLong(static_cast<long long>(rows.size())));
  return rows[static_cast<std::size_t>(position - 1)];
}

// Adding zero takes the sign from a negative zero, which is no figure of its own.
void Put(Double& figure, Double value) {
  figure = value + 0.0;
}

// The first figure that is put into a record. Apart, so that those that follow, of which an import puts millions, need
// no registers for it.
[[gnu::noinline]] void CopyThenPut(const Double* row, std::vector<Double>& changed_row, Double& figure, Double value) {
  std::copy_n(row, changed_row.size(), changed_row.begin());
  Put(figure, value);
}

template <typename Row>
Long HighestNumber(const std::vector<Row>& rows) {
  Long highest = 0;
  for (const Row& row : rows) highest = std::max<Long>(highest, row.number);
  return highest;
}

class BookAccount final : public AccountRecord {
 public:
  explicit BookAccount(const Book& book) : book_(book) {}

  void SetSelect(Long number) override { number_ = number; }
  [[nodiscard]] Text Code() const override {
    const AccountDescription* account = Current();
    return Padded(account == nullptr ? Text() : account->code, kCodeWidth);
  }
  [[nodiscard]] Text Description() const override {
    const AccountDescription* account = Current();
    return Padded(account == nullptr ? Text() : account->description, kDescriptionWidth);
  }
  [[nodiscard]] Long Number() const override { return number_; }
  [[nodiscard]] Long MaxNumber() const override { return HighestNumber(book_.Description().accounts); }

 private:
  [[nodiscard]] const AccountDescription* Current() const {
    const Integer position = book_.AccountPosition(number_);
    return position == 0 ? nullptr : &RowAt(book_.Description().accounts, position);
  }

  const Book& book_;
  Long number_ = 0;
};

class BookField final : public FieldRecord {
 public:
  explicit BookField(const Book& book) : book_(book) {}

  void SetSelect(Integer number) override { number_ = number; }
  [[nodiscard]] Text Description() const override {
    const FieldDescription* field = Current();
    return field == nullptr ? Text() : field->description;
  }
  [[nodiscard]] bool SystemMaintained() const override {
    const FieldDescription* field = Current();
    return field != nullptr && field->system;
  }
  [[nodiscard]] Long MaxNumber() const override { return HighestNumber(book_.Description().fields); }

 private:
  [[nodiscard]] const FieldDescription* Current() const {
    const Integer position = book_.FieldPosition(number_);
    return position == 0 ? nullptr : &RowAt(book_.Description().fields, position);
  }

  const Book& book_;
  Integer number_ = 0;
};

// The positions that a query's numbers stand for, in order and each once; all of them where the query names none.
template <typename Number>
std::vector<Integer> PositionsAsked(const std::vector<Number>& numbers, const std::vector<Integer>& positions_by_number,
                                    Long count, const Text& what) {
  std::vector<Integer> positions;
  if (numbers.empty()) {
    for (Long position = 1; position <= count; ++position) positions.push_back(ToInteger(position));
  }
  for (const Number number : numbers) {
    const Integer position = PositionIn(positions_by_number, number);
    if (position == 0) {
      throw Failure(FailureNumber::kInvalidArgument, "The book has no " + what + " of number " + std::to_string(number),
                    kSource);
    }
    positions.push_back(position);
  }
  std::sort(positions.begin(), positions.end());
  positions.erase(std::unique(positions.begin(), positions.end()), positions.end());
  return positions;
}

void StoreValues(FigureStore& store, const BookDescription& description) {
  const std::vector<Integer> accounts = PositionsByNumber(description.accounts);
  const std::vector<Integer> fields = PositionsByNumber(description.fields);
  // In a new book every field has the slot of its position.
  std::vector<Double> row(std::max<std::size_t>(description.fields.size(), 1));
  for (const ValueDescription& value : description.values) {
    const auto account = static_cast<std::size_t>(PositionIn(accounts, value.account) - 1);
    const Double* stored = store.Row(account, store.RecordOf(value.date));
    std::copy_n(stored, row.size(), row.begin());
    row[static_cast<std::size_t>(PositionIn(fields, value.field) - 1)] = value.value + 0.0;
    store.WriteRow(row.data());
  }
  store.Commit();
}

// Under which name a book's companions stand. One that is open to be changed gets copies of those of before.
Text NameOf(const Text& path, const BookStorage& storage, const Notice& notice) {
  if (storage.Format() >= kFirstFormatOfWholeNames || HasTakenItsName(path)) return BookName(path);
  if (storage.ReadOnly()) return HasOlderCompanions(path) ? OlderBookName(path) : BookName(path);
  const std::vector<Text> copied = CopyOlderCompanions(path);
  if (notice && !copied.empty()) {
    Text names;
    for (const Text& name : copied) names += (names.empty() ? "" : ", ") + name;
    notice(path + ": the companion files of this book end in its whole name now, \"" + BookName(path) +
           "\"; copied for it: " + names);
  }
  return BookName(path);
}

}  // namespace

void Book::Create(const Text& path, const BookDescription& description) {
  CheckNewBookDescription(description, path);
  const Text place = NativeBookPath(path);
  Workpiece workpiece(place);
  workpiece.Do([&] {
    FigureStore store(std::make_unique<SqliteStorage>(BookFile::Create(workpiece.Path(), description)),
                      BookOptions().cache_bytes);
    StoreValues(store, description);
  });
  workpiece.MoveToPlace();
}

std::unique_ptr<Book> Book::Open(const Text& path, HostApp& app, const BookOptions& options) {
  const Text place = ResolvedBookPath(path);
  auto storage = std::make_unique<SqliteStorage>(BookFile(place, options.read_only, options.wait_seconds));
  storage->SetNotice(options.notice);
  auto store = std::make_unique<FigureStore>(std::move(storage), options.cache_bytes);
  return std::unique_ptr<Book>(new Book(place, app, options, std::move(store)));
}

Book::Book(const Text& path, HostApp& app, const BookOptions& options, std::unique_ptr<FigureStore> store)
    : path_(path),
      folder_(BookFolder(path_)),
      name_(NameOf(path_, store->Storage(), options.notice)),
      app_(app),
      options_(options),
      store_(std::move(store)),
      cursor_(store_->Rules()) {
  TakeStored();
}

Book::~Book() {
  try {
    Close();
  } catch (const Failure&) {
    // Said quietly: whoever needs to know calls Close.
  }
}

void Book::TakeStored() {
  stored_ = store_->Description();
  position_of_account_ = PositionsByNumber(Description().accounts);
  position_of_field_ = PositionsByNumber(Description().fields);
  place_of_field_.assign(position_of_field_.size(), 0);
  for (std::size_t index = 0; index < stored_->slot_of_field.size(); ++index) {
    const auto number = static_cast<std::size_t>(Description().fields[index].number);
    place_of_field_[number] = static_cast<std::uint16_t>(stored_->slot_of_field[index] + 1);
  }
  changed_row_.assign(ShapeOf(*stored_).fields, 0);
}

void Book::Commit() {
  if (store_ != nullptr && !ReadOnly()) store_->Commit();
}

void Book::Settle() {
  if (store_ != nullptr && !ReadOnly()) store_->Settle();
}

void Book::BeginWhole() {
  RequireWritable();
  EndOwnEntry();
  DropCurrentRecord();
  command_has_entry_ = false;
  Store().BeginWhole();
}

void Book::KeepWhole() {
  EndOwnEntry();
  DropCurrentRecord();
  Store().KeepWhole();
}

void Book::DropWhole() {
  own_entry_ = false;
  command_has_entry_ = false;
  DropCurrentRecord();
  Store().DropWhole();
  TakeStored();
}

void Book::Close() {
  if (store_ != nullptr) EndOwnEntry();
  Commit();
  Abandon();
}

void Book::Abandon() {
  DropCurrentRecord();
  store_.reset();
}

FigureStore& Book::Store() const {
  if (store_ == nullptr) throw Failure(FailureNumber::kObjectNotSet, path_ + ": the book has been closed", kSource);
  return *store_;
}

void Book::RequireWritable() const {
  if (ReadOnly()) {
    throw Failure(FailureNumber::kPermissionDenied, path_ + ": the book is open to read only", kSource);
  }
}

const Calendar& Book::CalendarRules() const {
  return Store().Rules();
}

void Book::VisitFigures(const FigureQuery& query, const FigureVisitor& visit) {
  FigureStore& store = Store();
  const std::vector<Integer> accounts = PositionsAsked(query.accounts, position_of_account_, NumAccounts(), "account");
  const std::vector<Integer> fields = PositionsAsked(query.fields, position_of_field_, NumFields(), "field");
  const Date first = query.first == kNoDate ? FirstDate() : std::max(query.first, FirstDate());
  const Date end = CalendarRules().LastRecordDate();
  const Date last = query.last == kNoDate ? end : std::min(query.last, end);
  if (!(first <= last)) return;
  Figure figure;
  const auto visit_row = [&](std::int32_t record, std::span<const Double> figures) {
    figure.date = store.DateOfRecord(record);
    for (const Integer position : fields) {
      const auto index = static_cast<std::size_t>(position - 1);
      figure.value = figures[stored_->slot_of_field[index]];
      if (figure.value == 0) continue;
      figure.field_position = position;
      figure.field_number = Description().fields[index].number;
      if (!visit(figure)) return false;
    }
    return true;
  };
  for (const Integer position : accounts) {
    const auto index = static_cast<std::size_t>(position - 1);
    figure.account_position = position;
    figure.account_number = Description().accounts[index].number;
    if (!store.VisitRows(index, store.RecordOf(first), store.RecordOf(last), visit_row)) return;
  }
}

long long Book::CountFigures(const FigureQuery& query) {
  long long count = 0;
  VisitFigures(query, [&](const Figure&) {
    ++count;
    return true;
  });
  return count;
}

std::vector<FiguresLost> Book::LostBy(const BookDescription& after) {
  const BookDifference difference = FindDifference(Description(), after);
  std::vector<FiguresLost> lost;
  for (const auto& account : difference.accounts.removed) {
    FigureQuery query;
    query.accounts = {account.row.number};
    lost.push_back({false, account.row.number, account.row.code, CountFigures(query)});
  }
  for (const auto& field : difference.fields.removed) {
    FigureQuery query;
    query.fields = {field.row.number};
    lost.push_back({true, field.row.number, field.row.description, CountFigures(query)});
  }
  std::erase_if(lost, [](const FiguresLost& row) { return row.figures == 0; });
  return lost;
}

std::vector<ValueDescription> Book::ChangedValues(const BookDescription& after) {
  std::vector<ValueDescription> changed;
  for (const ValueDescription& value : after.values) {
    const bool stands = FieldPosition(value.field) != 0 && ReadRecord(value.account, value.date);
    if (value.value != (stands ? FieldValue(value.field) : 0)) changed.push_back(value);
  }
  DropCurrentRecord();
  return changed;
}

void Book::Grow(const BookDescription& after, const Text& what_ran) {
  RequireWritable();
  FigureStore& store = Store();
  CheckGrowth(*stored_, after, path_);
  const auto grown = std::make_shared<StoredDescription>(Grown(*stored_, after));
  const std::vector<ValueDescription> values = ChangedValues(after);
  const bool lists_change = *grown != *stored_;
  if (!lists_change && values.empty()) return;
  EndOwnEntry();
  JournalEntry entry;
  entry.kind = JournalKind::kLists;
  entry.time = Now();
  entry.what_ran = what_ran;
  entry.state = JournalState::kClosed;
  command_has_entry_ = false;
  try {
    store.AsOne([&] {
      const Long command = lists_change ? store.ChangeDescription(grown, entry, ChangeText(*stored_, *grown)) : Long{0};
      TakeStored();
      if (!values.empty()) SetValues(values, what_ran, command);
    });
  } catch (...) {
    DropCurrentRecord();
    TakeStored();
    throw;
  }
}

void Book::SetValues(const std::vector<ValueDescription>& values, const Text& what_ran, Long command) {
  const auto [first, last] = std::ranges::minmax(values, {}, &ValueDescription::date);
  JournalEntry entry;
  entry.command = command;
  entry.kind = JournalKind::kSet;
  entry.time = Now();
  entry.first = CalendarRules().UnitOf(first.date, kOwnLevel).last;
  entry.last = CalendarRules().UnitOf(last.date, kOwnLevel).last;
  entry.what_ran = what_ran;
  store_->BeginEntry(entry);
  for (const ValueDescription& value : values) {
    if (!ReadRecord(value.account, value.date)) {
      throw Failure(FailureNumber::kInternal, path_ + ": the record of a value cannot be read", kSource);
    }
    SetFieldValue(value.field, value.value);
    WriteRecord();
  }
  store_->EndEntry();
  DropCurrentRecord();
}

ValueGiver Book::Values() {
  return [this](const ValueTaker& take) {
    VisitFigures({}, [&](const Figure& figure) {
      take({figure.account_number, figure.date, figure.field_number, figure.value});
      return true;
    });
  };
}

Integer Book::AccountPositionOfCode(const Text& code) const {
  const auto& accounts = Description().accounts;
  const auto found = std::ranges::find(accounts, code, &AccountDescription::code);
  return found == accounts.end() ? Integer{0} : ToInteger(found - accounts.begin() + 1);
}

Integer Book::AccountPosition(Long account_number) const {
  return PositionIn(position_of_account_, account_number);
}

Integer Book::FieldPosition(Integer field_number) const {
  return PositionIn(position_of_field_, field_number);
}

void Book::SetOperation(JournalKind kind, const Text& name) {
  EndOwnEntry();
  operation_kind_ = kind;
  operation_name_ = name;
  notes_ = {};
  in_command_ = true;
  command_has_entry_ = false;
}

Long Book::LastEntry() const {
  return Store().LastEntry();
}

std::unique_ptr<AccountRecord> Book::NewAccountRecord() {
  return std::make_unique<BookAccount>(*this);
}

std::unique_ptr<FieldRecord> Book::NewFieldRecord() {
  return std::make_unique<BookField>(*this);
}

SequenceList& Book::PrintSequences() {
  return options_.reports == nullptr ? no_sequences_ : options_.reports->PrintSequences(*this);
}

Text Book::MasterFileTypeName(Integer type) const {
  return type == 0 ? Description().type_name : Text();
}

Long Book::AccountNumber(Integer position) const {
  return RowAt(Description().accounts, position).number;
}

Integer Book::FieldNumber(Integer position) const {
  return RowAt(Description().fields, position).number;
}

Text Book::FieldName(Integer position) const {
  return RowAt(Description().fields, position).description;
}

void Book::DropCurrentRecord() {
  row_ = nullptr;
  changed_ = false;
}

bool Book::ReadRecord(Long account_number, Date date) {
  DropCurrentRecord();
  FigureStore& store = Store();
  const Integer position = PositionIn(position_of_account_, account_number);
  const std::int32_t record = store.RecordOf(date);
  if (position == 0 || record < 0) return false;
  row_ = store.Row(static_cast<std::size_t>(position - 1), record);
  return true;
}

bool Book::WriteRecord() {
  if (row_ == nullptr) return false;
  RequireWritable();
  if (changed_) {
    if (!store_->EntryIsOpen() && store_->Differs(changed_row_.data())) OpenOwnEntry();
    store_->WriteRow(changed_row_.data());
  }
  KeepWritten();
  return true;
}

void Book::KeepWritten() {
  const bool running = progress_open_ || (store_->EntryIsOpen() && !own_entry_);
  ++written_records_;
  if (store_->ChangedBytes() < (store_->ComesBack() ? kCommitBytesComingBack : kCommitBytes)) {
    if (store_->ChangedBytes() == 0 || (running && written_records_ % kRecordsOfAClockLook != 0)) return;
    const double wait = running ? options_.commit_seconds : std::min(options_.commit_seconds, kIdleSeconds);
    if (store_->SecondsSinceCommit() < wait) return;
    store_->Commit();
  } else if (store_->ComesBack()) {
    store_->Commit();
  } else {
    store_->CommitAndMoveOn();
  }
}

void Book::FailField(Integer field_number) const {
  if (row_ == nullptr) throw Failure(FailureNumber::kInvalidArgument, path_ + ": no record is current", kSource);
  throw Failure(FailureNumber::kInvalidArgument,
                path_ + ": the book has no field of number " + std::to_string(field_number), kSource);
}

void Book::FailFigure(Integer field_number, Double value) const {
  throw Failure(FailureNumber::kOverflow,
                path_ + ": " + std::to_string(value) + " is no figure for field " + std::to_string(field_number),
                kSource);
}

Double Book::FieldValue(Integer field_number) const {
  // A negative number wraps to one that no table reaches.
  const auto number = static_cast<std::uint16_t>(field_number);
  if (row_ == nullptr || number >= place_of_field_.size() || place_of_field_[number] == 0) FailField(field_number);
  return row_[place_of_field_[number] - 1];
}

void Book::SetFieldValue(Integer field_number, Double value) {
  const auto number = static_cast<std::uint16_t>(field_number);
  if (row_ == nullptr || number >= place_of_field_.size() || place_of_field_[number] == 0) FailField(field_number);
  if (!std::isfinite(value)) FailFigure(field_number, value);
  Double& figure = changed_row_.data()[place_of_field_[number] - 1];
  if (!changed_) {
    changed_ = true;
    return CopyThenPut(std::exchange(row_, changed_row_.data()), changed_row_, figure, value);
  }
  Put(figure, value);
}

bool Book::DateValid(Date date) const {
  return date >= FirstDate() && date < LastDate() + 1;
}

Integer Book::YearCode(Integer position) const {
  if (position < 1 || position > NumYears()) FailOutsideTable(position, NumYears());
  return ToInteger(FirstYear() + position - 1);
}

void Book::BeginProgress(const Text& title) {
  progress_open_ = true;
  progress_title_ = title;
  if (options_.progress != nullptr) {
    options_.progress->Begin(title);
    options_.progress->Fraction(0);
  }
}

void Book::SetProgressFraction(Single fraction) {
  if (options_.progress != nullptr) options_.progress->Fraction(fraction);
}

void Book::SetProgressText(const Text& text) {
  if (options_.progress != nullptr) options_.progress->Text(text);
}

void Book::SetProgressCancelEnabled(bool enabled) {
  if (options_.progress != nullptr) options_.progress->CancelEnabled(enabled);
}

bool Book::ProgressCancelled() const {
  return options_.progress != nullptr && options_.progress->Cancelled();
}

void Book::EndProgress() {
  progress_open_ = false;
  // The display ends even where the commit fails, so it goes first.
  if (options_.progress != nullptr) options_.progress->End();
  if (store_ != nullptr) EndOwnEntry();
  Commit();
}

void Book::BeginEntry(Date first, Date last, bool keeps_images) {
  EndOwnEntry();
  FigureStore& store = Store();
  store.Commit();  // so that the entry before has its command
  JournalEntry entry;
  entry.command = command_has_entry_ ? store.Command() : 0;
  entry.kind = operation_kind_;
  entry.time = Now();
  entry.first = first;
  entry.last = last;
  entry.what_ran = operation_name_.empty() && progress_open_ ? progress_title_ : operation_name_;
  entry.keeps_images = keeps_images;
  store.BeginEntry(entry, notes_);
  command_has_entry_ = in_command_;
}

void Book::OpenOwnEntry() {
  const bool keeps_images = false;
  BeginEntry(kNoDate, kNoDate, keeps_images);
  own_entry_ = true;
  if (progress_open_ && options_.notice) {
    options_.notice(path_ +
                    ": what is written now cannot be taken back, since no figures from before are kept "
                    "(WriteRollback)");
  }
}

void Book::EndOwnEntry() {
  if (!own_entry_) return;
  store_->EndEntry();
  own_entry_ = false;
}

JournalEntry Book::EntryOfUndo() const {
  JournalEntry undo;
  undo.kind = JournalKind::kUndo;
  undo.time = Now();
  undo.what_ran = operation_kind_ == JournalKind::kUndo ? operation_name_ : Text("undo");
  undo.state = JournalState::kClosed;
  return undo;
}

void Book::TakeBack(const std::vector<JournalEntry>& figures, const std::vector<JournalEntry>& lists,
                    const UndoRequest& request, UndoOutcome& outcome) {
  EndOwnEntry();
  DropCurrentRecord();
  FigureStore& store = Store();
  JournalEntry undo = EntryOfUndo();
  if (lists.empty()) {
    (void)store.Undo(figures, undo, request, outcome);
    return;
  }
  try {
    store.AsOne([&] {
      if (!figures.empty()) undo.command = store.Undo(figures, undo, request, outcome);
      for (const JournalEntry& entry : lists) TakeListsBack(entry, undo);
      if (request.only_look) throw UndoDropped();
    });
  } catch (...) {
    TakeStored();
    throw;
  }
}

StoredDescription Book::DescriptionBefore(const StoredDescription& now, const JournalEntry& entry) const {
  return TakenBack(now, Store().ChangeOf(entry.id), path_);
}

void Book::RefuseToTakeBack(const JournalEntry& entry, const Text& why) const {
  throw Failure(FailureNumber::kInvalidArgument,
                path_ + ": journal entry " + std::to_string(entry.id) + " cannot be undone: " + why, kSource);
}

// What goes away again must have no figures: they came after it.
void Book::TakeListsBack(const JournalEntry& entry, JournalEntry undo) {
  FigureStore& store = Store();
  const auto before = std::make_shared<StoredDescription>(DescriptionBefore(*stored_, entry));
  for (const FiguresLost& lost : LostBy(before->description)) {
    RefuseToTakeBack(entry, (lost.is_field ? "field " + std::to_string(lost.number) : "account " + lost.name) +
                                ", which it added, has " + std::to_string(lost.figures) +
                                (lost.figures == 1 ? " figure" : " figures") + " since");
  }
  const Calendar calendar(before->description.calendar, before->description.data_level);
  FigureQuery later;
  later.first = calendar.LastRecordDate() + 1;
  if (const long long figures = CountFigures(later); figures != 0) {
    RefuseToTakeBack(entry, "the years that it added have " + std::to_string(figures) +
                                (figures == 1 ? " figure" : " figures") + " since");
  }
  undo.undoes = entry.id;
  (void)store.ChangeDescription(before, undo, "");
  TakeStored();
}

Integer Book::BeginRollback(Date first, Date last) {
  RequireWritable();
  const bool keeps_images = true;
  BeginEntry(first, last, keeps_images);
  return 1;
}

void Book::EndRollback() {
  if (ReadOnly()) return;
  Store().EndEntry();
  own_entry_ = false;
}

bool Book::AccessRight(const Text& right) const {
  return right == "A" && !ReadOnly();
}

void Book::InitReportPrinter(Printer& printer) {
  if (options_.reports != nullptr) options_.reports->InitReportPrinter(*this, printer);
}

void Book::PrintReportHeader(Printer& printer, const Text& name) {
  if (options_.reports != nullptr) {
    options_.reports->PrintReportHeader(*this, printer, name);
    return;
  }
  printer.PrintLine(SystemName() + " - " + name);
  printer.PrintLine("");
}

}  // namespace tallybook::engine
