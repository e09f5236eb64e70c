// A database in memory: accounts, fields, figures, a true fiscal calendar and a journal that can be taken back. It
// holds to everything that host/Masterfile.h and host/FiscalCalendar.h say, and is fast enough to stand under
// benchmarks. One thread. It must not outlive the application object and the call record that it was given.
#pragma once

#include <cmath>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <tuple>
#include <unordered_map>
#include <vector>

#include "base/Types.h"
#include "host/AccountRecord.h"
#include "host/FieldRecord.h"
#include "host/FiscalCalendar.h"
#include "host/Masterfile.h"
#include "host/Sequence.h"
#include "tests/support/CallRecord.h"

namespace tallybook::testing {

// --- The shape of a book ---------------------------------------------------------------------------------------------

// How a fiscal year is divided: into the twelve calendar months, or into periods of given lengths, every year alike.
enum class CalendarKind { kMonths, kCustom };

struct BookShape {
  Text system_name = "North Shop";
  Text type_name = "Sales";
  Text data_path = "/book/";
  Text file_extension = "NORTH";
  Text settings_file = "/book/NORTH.ini";

  Integer data_level = kDayLevel;
  CalendarKind calendar = CalendarKind::kMonths;
  Date first_date = 37622.0;  // 2003-01-01; with kMonths the first day of a month
  Integer first_year = 2003;
  Long years = 3;
  Long years_in_use = 3;
  Integer week_ends_on = 7;             // 1 Sunday to 7 Saturday
  std::vector<Integer> period_lengths;  // in days; kCustom only, where they must be given, each above 0
  std::vector<Text> period_names;       // where missing: the months' names, or "Period 1" and so on

  Long max_accounts = 9999;
  Long max_fields = 999;
};

// Answers that differ from the truth of the book, for headers that no sound book would give. What is not set is
// answered truly. They change nothing else: the calendar and the records go on as the shape says.
struct BookAnswers {
  std::optional<Long> num_accounts;
  std::optional<Long> num_fields;
  std::optional<Long> num_years;
  std::optional<Integer> num_periods;  // periods beyond the true ones are called "Period 13" and are 0 days long
  std::optional<Integer> data_level;
  std::optional<Integer> calendar_type;
  std::optional<Date> first_system_date;
  std::map<Integer, Text> period_names;       // by period
  std::map<Integer, Integer> period_lengths;  // by period
  std::map<Integer, Integer> year_codes;      // by position
  std::map<Integer, Long> account_numbers;    // by position
  std::map<Integer, Integer> field_numbers;   // by position
  Long file_version = 1;
  Integer year_field = 0;
  Long field_slots = 0;
  Long account_slots = 0;
};

// --- The calendar ----------------------------------------------------------------------------------------------------

// A span of dates, both ends included.
struct DateSpan {
  Date first = 0;
  Date last = 0;
  bool operator==(const DateSpan&) const = default;
};

// The fiscal year of a shape, by pure reckoning. Years before the first and after the last held go on as those held do.
class FiscalRules {
 public:
  struct Period {
    int year = 0;
    int number = 0;  // from 1
    DateSpan days;
  };

  explicit FiscalRules(BookShape shape);

  [[nodiscard]] const BookShape& Shape() const { return shape_; }
  [[nodiscard]] int NumPeriods() const;
  [[nodiscard]] Date YearStart(int year) const { return PeriodStart(year, 1); }
  [[nodiscard]] Date FirstDate() const { return shape_.first_date; }
  [[nodiscard]] Date LastDate() const { return last_date_; }
  [[nodiscard]] Period PeriodHolding(Date day) const;
  [[nodiscard]] DateSpan DaysOfPeriod(int year, int period) const {
    return {PeriodStart(year, period), PeriodStart(year, period + 1) - 1};
  }
  [[nodiscard]] int QuarterOf(int period) const;

  // The unit of a level (1 to 8, host/FiscalCalendar.h) that holds a whole day. Failure 5 for any other level.
  [[nodiscard]] DateSpan UnitHolding(Date day, Integer level) const {
    return level == kDayLevel ? DateSpan{day, day} : LargerUnitHolding(day, level);
  }

 private:
  [[nodiscard]] DateSpan LargerUnitHolding(Date day, Integer level) const;
  [[nodiscard]] Date PeriodStart(int year, int period) const;
  [[nodiscard]] Period MonthHolding(Date day) const;
  [[nodiscard]] Period CustomPeriodHolding(Date day) const;
  [[nodiscard]] DateSpan WeekHolding(Date day) const;
  // The span of the quarters `first_quarter` to `last_quarter` of a year.
  [[nodiscard]] DateSpan Quarters(int year, int first_quarter, int last_quarter) const;

  BookShape shape_;
  int custom_year_length_ = 0;
  Date last_date_ = 0;
  mutable Period last_period_;  // the answer before: walks ask for the same period many times over
};

// A calendar of a MemoryMasterfile; no other database can be attached (failure 5). A time of day is dropped: every
// answer is a whole day. Before Attach everything is failure 91.
class MemoryCalendar : public FiscalCalendar {
 public:
  explicit MemoryCalendar(CallRecord& record) : record_(record) {}

  void Attach(Masterfile& masterfile) override;
  [[nodiscard]] Date CurrentDate() const override;
  void SetCurrentDate(Date date) override;
  Date LevelDate(Date date, Integer level) override;
  [[nodiscard]] Integer PeriodNumber() const override;
  [[nodiscard]] Integer QuarterNumber() const override;
  [[nodiscard]] Integer HalfNumber() const override;
  [[nodiscard]] Integer FiscalYear() const override;
  [[nodiscard]] Date PriorPeriodEnd() const override;

 private:
  friend class MemoryMasterfile;
  [[nodiscard]] const FiscalRules& Rules() const;

  CallRecord& record_;
  const FiscalRules* rules_ = nullptr;
  Date current_date_ = 0;
  DateSpan unit_;  // of the last LevelDate call; its last date is what the numbers tell of
};

// --- The progress display --------------------------------------------------------------------------------------------

// What a progress display shows and has shown. Used by the database and by the printer.
class ProgressDisplay {
 public:
  bool open = false;
  bool cancel_enabled = false;
  Text text;                      // the title, until a text replaces it
  std::vector<Text> titles;       // of every opening
  std::vector<Text> texts;        // every text set
  std::vector<Single> fractions;  // every fraction set; openings do not count

  // The user presses cancel just before the `poll`th question from now on; the press stays until the display ends.
  void CancelAtPoll(long long poll) { polls_left_ = poll; }

  // For the host objects.
  void Begin(const Text& title);
  void End();
  void SetText(const Text& new_text);
  [[nodiscard]] bool Poll();

 private:
  long long polls_left_ = 0;  // 0: nobody will press cancel
  bool cancelled_ = false;
};

// --- The database ----------------------------------------------------------------------------------------------------

// Where a number stands in a list; fast for the numbers that real books have, right for all.
class NumberIndex {
 public:
  void Add(Long number, std::size_t index);
  // The index, or -1.
  [[nodiscard]] std::int32_t Find(Long number) const {
    if (number >= 0 && static_cast<std::size_t>(number) < small_.size())
      return small_[static_cast<std::size_t>(number)];
    return FindLarge(number);
  }

 private:
  [[nodiscard]] std::int32_t FindLarge(Long number) const;
  std::vector<std::int32_t> small_;
  std::unordered_map<Long, std::int32_t> large_;
};

class MemorySequenceList : public SequenceList {};

class MemoryMasterfile : public Masterfile {
 public:
  // A figure's place: account number, level date, field number.
  using FigureKey = std::tuple<Long, Date, Integer>;
  using FigureMap = std::map<FigureKey, Double>;

  // One BeginRollback and what was changed under it.
  struct JournalEntry {
    Date first = 0;
    Date last = 0;
    bool closed = false;
  };

  MemoryMasterfile(HostApp& app, CallRecord& record, BookShape shape = {});
  ~MemoryMasterfile() override;
  MemoryMasterfile(const MemoryMasterfile&) = delete;
  MemoryMasterfile& operator=(const MemoryMasterfile&) = delete;

  // --- What a test says and asks; nothing of it is recorded, journalled or failed ---

  // Appends to the lists. A number that is taken is failure 5. Existing figures stay.
  void AddAccount(Long number, const Text& code, const Text& description = "");
  void AddField(Integer number, const Text& description, bool system_maintained = false);
  // Stores and gives the figure at a date's record. Both drop nothing of the current record but its unwritten changes.
  // An account, field or date that the book has not is failure 5.
  void Set(Long account_number, Date date, Integer field_number, Double value);
  [[nodiscard]] Double Get(Long account_number, Date date, Integer field_number) const;
  // All stored figures that are not zero.
  [[nodiscard]] FigureMap Figures() const;

  // The journal, oldest entry first. A run that failed leaves its entry unclosed.
  [[nodiscard]] std::vector<JournalEntry> Journal() const;
  // Takes the last entry back, closed or not, and drops it: the figures are exactly those before it. False without one.
  bool UndoLastRollback();

  [[nodiscard]] const BookShape& Shape() const { return rules_.Shape(); }
  BookAnswers answers;
  // What the progress display shows; a question whether it was cancelled moves it on.
  mutable ProgressDisplay progress;
  std::set<Text> rights = {"A"};  // what AccessRight is true for

  // --- Masterfile ---

  HostApp& App() override;
  tallybook::FiscalCalendar& FiscalCalendar() override;
  std::unique_ptr<AccountRecord> NewAccountRecord() override;
  std::unique_ptr<FieldRecord> NewFieldRecord() override;
  SequenceList& PrintSequences() override;

  [[nodiscard]] Text SystemName() const override;
  [[nodiscard]] Text DataPath() const override;
  [[nodiscard]] Text FileExtension() const override;
  [[nodiscard]] Text SettingsFileName() const override;
  [[nodiscard]] Text MasterFileTypeName(Integer type) const override;  // "" but for type 0
  const TitleLookup& TitleSource() const override;                     // gives SystemName for TitleContext, else ""
  [[nodiscard]] Text TitleContext() const override;

  [[nodiscard]] Long FileVersion() const override;
  [[nodiscard]] Integer DataLevel() const override;
  [[nodiscard]] Integer CalendarType() const override;  // 0 months, 4 custom
  [[nodiscard]] Integer YearField() const override;
  [[nodiscard]] Long FieldSlots() const override;
  [[nodiscard]] Long AccountSlots() const override;

  // Positions outside a list, and periods and years outside those held, are failure 9.
  [[nodiscard]] Long MaxAccounts() const override;
  [[nodiscard]] Long NumAccounts() const override;
  [[nodiscard]] Long AccountNumber(Integer position) const override;
  [[nodiscard]] Long MaxFields() const override;
  [[nodiscard]] Long NumFields() const override;
  [[nodiscard]] Integer FieldNumber(Integer position) const override;
  [[nodiscard]] Text FieldName(Integer position) const override;

  // A record exists for a listed account and every week or period that holds a valid date, so also for one that ends
  // behind LastDate. After a false no record is current. What was set and not written is lost by the next read: meant,
  // so that a missing write shows in tests.
  [[nodiscard]] bool ReadRecord(Long account_number, Date date) override;
  // Stores the current record and keeps it current. False, with no effect, where none was read.
  bool WriteRecord() override;
  [[nodiscard]] Double FieldValue(Integer field_number) const override;
  void SetFieldValue(Integer field_number, Double value) override;

  [[nodiscard]] bool DateValid(Date date) const override;
  [[nodiscard]] Date FirstDate() const override;
  [[nodiscard]] Date LastDate() const override;
  [[nodiscard]] Date FirstSystemDate() const override;
  [[nodiscard]] Integer FirstYear() const override;
  [[nodiscard]] Long NumYears() const override;
  [[nodiscard]] Long YearsInUse() const override;
  [[nodiscard]] Integer YearCode(Integer position) const override;  // the year's name, where no answer is set
  [[nodiscard]] Date YearStart(Integer year) const override;
  [[nodiscard]] Integer NumPeriods() const override;
  [[nodiscard]] Text PeriodName(Integer period) const override;
  [[nodiscard]] Integer PeriodLength(Integer period) const override;  // of the first year

  void BeginProgress(const Text& title) override;
  void BeginProgressText(const Text& title) override;
  void SetProgressFraction(Single fraction) override;
  void SetProgressText(const Text& text) override;
  void SetProgressCancelEnabled(bool enabled) override;
  [[nodiscard]] bool ProgressCancelled() const override;
  void EndProgress() override;

  // Gives the entry's number, from 1. An entry that is still open is left unclosed for good. EndRollback without an
  // open entry does nothing.
  Integer BeginRollback(Date first, Date last) override;
  void EndRollback() override;

  [[nodiscard]] bool AccessRight(const Text& right) const override;

  void InitReportPrinter(Printer& printer) override;
  // Prints one line: the report's name, " - ", the system's name.
  void PrintReportHeader(Printer& printer, const Text& name) override;

 private:
  class AccountCursor;
  class FieldCursor;
  class SystemTitle;
  friend class MemoryCalendar;

  struct Account {
    Long number = 0;
    Text code;
    Text description;
    std::vector<std::int32_t> record_of_day;  // by days since the first date; -1 where nothing was ever stored
    std::vector<Double> values;               // record after record, one value for each field
  };
  struct Field {
    Integer number = 0;
    Text description;
    bool system_maintained = false;
  };
  // A value of the current record as it was before a change that nobody has written yet.
  struct UnwrittenChange {
    std::size_t field = 0;
    Double value_before = 0;
  };
  // A stored value as it was before a write.
  struct OldValue {
    std::int32_t account = 0;
    std::int32_t record = 0;
    std::size_t field = 0;
    Double value = 0;
  };
  struct JournalImage {
    JournalEntry entry;
    std::vector<OldValue> before;
  };
  struct Place {
    std::int32_t account = -1;
    std::int32_t day = -1;
    std::int32_t record = -1;  // -1: nothing stored there
  };

  // Where an account's record for a date lies. False, with `place` empty, where there can be none.
  bool FindPlace(Long account_number, Date date, Place& place) const;
  [[nodiscard]] Place ExpectPlace(Long account_number, Date date) const;
  [[nodiscard]] std::size_t ExpectField(Integer field_number) const;
  // Gives a place its record in storage.
  void Settle(Place& place);
  [[nodiscard]] Double* ValuesAt(std::int32_t account, std::int32_t record);
  [[nodiscard]] const Double* ValuesAt(std::int32_t account, std::int32_t record) const;
  // What is stored: the value without the changes that nobody has written yet.
  [[nodiscard]] Double StoredValue(std::int32_t account, std::int32_t record, std::size_t field) const;
  [[nodiscard]] std::size_t CurrentField(Integer field_number) const;
  void LoseUnwrittenChanges();
  [[nodiscard]] bool IsPeriod(Integer period) const { return period >= 1 && period <= rules_.NumPeriods(); }
  void CheckPeriod(Integer period) const;

  HostApp& app_;
  CallRecord& record_;
  FiscalRules rules_;
  MemoryCalendar calendar_;
  MemorySequenceList sequences_;
  std::unique_ptr<TitleLookup> title_;

  std::vector<Account> accounts_;
  NumberIndex account_index_;
  std::vector<Field> fields_;
  NumberIndex field_index_;

  // Changes are made in place and their old values kept until WriteRecord, so that neither reading nor writing a record
  // copies it.
  Place current_;
  Double* current_values_ = nullptr;  // of the current record; of no use while current_ has no account
  std::vector<Double> zeros_;         // what a record shows that was never stored; nobody changes them
  std::vector<UnwrittenChange> unwritten_;
  std::vector<JournalImage> journal_;
};

}  // namespace tallybook::testing
