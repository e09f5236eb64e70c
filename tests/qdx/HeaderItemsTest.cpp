#include "base/Dates.h"
#include "host/AccountRecord.h"
#include "qdx/HeaderItems.h"
#include "tests/qdx/ExchangeBytes.h"
#include "tests/qdx/TwentyDays.h"
#include "tests/support/FailsWith.h"
#include "tests/support/ScriptedPlatform.h"

namespace tallybook::testing {
namespace {

using ::testing::ElementsAre;

constexpr const char* kPath = "/q/HEADER.QDX";

class HeaderItemsTest : public ::testing::Test {
 protected:
  HeaderItemsTest() { BindAccounts(); }

  void UseBook(std::unique_ptr<MemoryHost> book) {
    accounts.reset();
    host = std::move(book);
    BindAccounts();
  }
  void BindAccounts() { accounts = host->book.NewAccountRecord(); }

  // Writes the whole header; where that fails, what was written so far stands in the file all the same.
  void Write() {
    HeaderSender sender{.masterfile = host->book,
                        .account = *accounts,
                        .version = version,
                        .report_length = 7,
                        .created = platform.clock.Now(),
                        .start_date = DateFromParts(2004, 2, 1),
                        .last_date = DateFromParts(2004, 2, 20),
                        .account_count = std::nullopt};
    platform.memory.Put(kPath, "");
    FileStream stream(Open());
    try {
      for (const auto items : {SignatureItems(), HeadItems(), TableItems()})
        WriteHeaderItems(stream, items, sender, NoteRow());
    } catch (const Failure&) {
      stream.Close();
      throw;
    }
    stream.Close();
  }
  [[nodiscard]] std::string Written() const { return platform.memory.Bytes(kPath); }

  // Reads the bytes as a header into `record` and gives the position afterwards.
  long long Read(const std::string& bytes) {
    platform.memory.Put(kPath, bytes);
    FileStream stream(Open());
    for (const auto items : {SignatureItems(), HeadItems(), TableItems()})
      ReadHeaderItems(stream, items, record, NoteRow());
    return stream.Position();
  }

  std::unique_ptr<OpenFile> Open() {
    return platform.memory.Open(kPath, Access::kReadWrite, Sharing::kShared, Creation::kCreateIfMissing);
  }
  RowProgress NoteRow() {
    return [this](HeaderTable table, Integer row) { rows.emplace_back(table, row); };
  }

  ScriptedPlatform platform{FilesIn::kMemory};
  std::unique_ptr<MemoryHost> host = TwentyDays();
  std::unique_ptr<AccountRecord> accounts;
  Single version = 1;
  HeaderRecord record;
  std::vector<std::pair<HeaderTable, Integer>> rows;
};

// --- The list --------------------------------------------------------------------------------------------------------

std::vector<std::string_view> NamesOf(std::span<const HeaderItem> items) {
  std::vector<std::string_view> names;
  for (const HeaderItem& item : items) names.push_back(item.name);
  return names;
}

TEST_F(HeaderItemsTest, ListsTheItemsInFileOrder) {
  EXPECT_THAT(NamesOf(SignatureItems()), ElementsAre("magic", "version"));
  EXPECT_THAT(NamesOf(HeadItems()),
              ElementsAre("creation date", "creation time", "report length", "start month", "start day", "start year",
                          "last month", "last day", "last year", "system name", "database version", "data level",
                          "calendar type", "year field", "field slots", "account slots", "period count", "period table",
                          "field count", "year count", "account count", "first year", "first date month",
                          "first date day", "first date year", "year table"));
  EXPECT_THAT(NamesOf(TableItems()), ElementsAre("account table", "field table"));
}

// --- Writing ---------------------------------------------------------------------------------------------------------

// Written out byte by byte, from the documented offsets.
TEST_F(HeaderItemsTest, WritesTheDocumentedBytes) {
  Write();
  const std::string fixed(
      "Kelvo QDX"
      "\x00\x00\x80\x3F"
      "02-03-2004"
      "14:05:09"
      "\x07\x00"
      "\x02\x00\x01\x00\xD4\x07"
      "\x02\x00\x14\x00\xD4\x07"
      "\x0A\x00North Shop"
      "\x00\x00\x40\x41"
      "\x01\x00\x04\x00\x03\x00\x28\x00\x64\x00"
      "\x02\x00"
      "\x05\x00"
      "Alpha\x0A\x00"
      "\x04\x00"
      "Beta\x0A\x00"
      "\x02\x00\x01\x00\x02\x00"
      "\xD4\x07\x02\x00\x01\x00\xD4\x07"
      "\xD4\x07"
      "\x03\x00"
      "100\x0D\x00"
      "Front of shop"
      "\x03\x00"
      "200\x04\x00"
      "Yard"
      "\x01\x00\x05\x00Sales"
      "\x07\x00\x07\x00Weather",
      57 + 14 + 2 + 9 + 8 + 6 + 8 + 2 + 20 + 11 + 9 + 11);
  EXPECT_EQ(Written(), fixed);
  EXPECT_EQ(Written(), FileHeader().All());
  EXPECT_EQ(Written().substr(13, 10), "02-03-2004");
  EXPECT_EQ(Written().substr(23, 8), "14:05:09");
  EXPECT_EQ(Written().substr(47, 10), "North Shop");
}

TEST_F(HeaderItemsTest, PadsCreationDateAndTimeWithZeros) {
  platform.clock.Set(DateFromParts(987, 1, 2) + TimeFromParts(0, 7, 8));
  Write();
  EXPECT_EQ(Written().substr(13, 18), "01-02-098700:07:08");
}

TEST_F(HeaderItemsTest, WritesAnEmptySystemNameAsALengthOfZero) {
  BookShape shape = host->book.Shape();
  shape.system_name = "";
  UseBook(std::make_unique<MemoryHost>(shape));
  Write();
  EXPECT_EQ(Written().substr(45, 6), std::string("\x00\x00\x00\x00\x80\x3F", 6));  // the database version, 1, at once
}

TEST_F(HeaderItemsTest, WritesTextsWithoutTrailingBlanksAndKeepsLeadingAndInnerOnes) {
  BookShape shape = host->book.Shape();
  shape.system_name = "North  ";
  shape.period_names = {" First half ", "Beta"};
  UseBook(std::make_unique<MemoryHost>(shape));
  host->book.AddAccount(1, " 1 00  ", "  Front  of shop   ");
  host->book.AddField(1, " Net  sales ");
  Write();
  FileHeader expected;
  expected.system_name = "North";
  expected.database_version = 1;
  expected.year_field = 0;
  expected.field_slots = 0;
  expected.account_slots = 1;
  expected.periods = {{" First half", 10}, {"Beta", 10}};
  expected.accounts = {{" 1 00", "  Front  of shop"}};
  expected.fields = {{1, " Net  sales"}};
  EXPECT_EQ(Written(), expected.All());
}

TEST_F(HeaderItemsTest, WritesOneByteForEachCharacter) {
  host->book.AddAccount(300, "C\xC3\xA9", "\xE2\x82\xAC account");  // an e with acute accent, a euro sign
  Write();
  FileHeader expected;
  expected.accounts.emplace_back("C\xE9", "\x80 account");
  EXPECT_EQ(Written(), expected.All());
}

TEST_F(HeaderItemsTest, FailsForACharacterThatTheCodePageLacks) {
  host->book.AddField(9, "\xE6\x97\xA5");
  EXPECT_THAT([&] { Write(); }, FailsWith(FailureNumber::kInvalidArgument, "\xE6\x97\xA5"));
}

TEST_F(HeaderItemsTest, WritesWhateverVersionItIsGiven) {
  version = 2.5F;
  Write();
  EXPECT_EQ(Written().substr(9, 4), std::string("\x00\x00\x20\x40", 4));
}

// Meant: a reader has limits, a writer has none.
TEST_F(HeaderItemsTest, WritesMoreRowsThanAReaderHolds) {
  host->book.answers.num_periods = 27;
  host->book.answers.num_years = 10;
  Write();
  FileHeader expected;
  for (int period = 3; period <= 27; ++period) expected.periods.emplace_back("Period " + std::to_string(period), 0);
  for (int year = 2005; year <= 2013; ++year) expected.years.push_back(year);
  EXPECT_EQ(Written(), expected.All());
}

// The count is taken when the items reach the last date, so the file ends before it.
TEST_F(HeaderItemsTest, EndsBeforeTheLastDateWhereTheAccountsDoNotFit) {
  host->book.answers.num_accounts = 32768;
  EXPECT_THAT([&] { Write(); }, FailsWith(FailureNumber::kOverflow, "32768"));
  EXPECT_EQ(Written(), FileHeader().All().substr(0, 39));
}

TEST_F(HeaderItemsTest, EndsBeforeANumberThatDoesNotFit) {
  const std::size_t slots_at = 45 + 12 + 4 + 6;
  host->book.answers.field_slots = 32768;
  EXPECT_THAT([&] { Write(); }, FailsWith(FailureNumber::kOverflow));
  EXPECT_EQ(Written(), FileHeader().All().substr(0, slots_at));

  host->book.answers.field_slots = 40;
  host->book.answers.account_slots = 32767;  // one is added
  EXPECT_THAT([&] { Write(); }, FailsWith(FailureNumber::kOverflow, "32768"));
  EXPECT_EQ(Written(), FileHeader().All().substr(0, slots_at + 2));

  host->book.answers.account_slots = 99;
  host->book.answers.num_fields = 32768;
  EXPECT_THAT([&] { Write(); }, FailsWith(FailureNumber::kOverflow));
  EXPECT_EQ(Written(), FileHeader().All().substr(0, slots_at + 6 + 9 + 8));
}

TEST_F(HeaderItemsTest, ReadsTheNumberOfAccountsOnceForTheWholeHeader) {
  host->record.Record("NumAccounts", true);
  Write();
  EXPECT_EQ(host->record.ArgumentsOf("NumAccounts").size(), 1U);
}

TEST_F(HeaderItemsTest, TellsOfEachRowInFileOrder) {
  Write();
  const std::vector<std::pair<HeaderTable, Integer>> expected = {
      {HeaderTable::kPeriods, 1},  {HeaderTable::kPeriods, 2}, {HeaderTable::kYears, 1}, {HeaderTable::kAccounts, 1},
      {HeaderTable::kAccounts, 2}, {HeaderTable::kFields, 1},  {HeaderTable::kFields, 2}};
  EXPECT_EQ(rows, expected);
  rows.clear();
  Read(FileHeader().All());
  EXPECT_EQ(rows, expected);
}

// --- Reading ---------------------------------------------------------------------------------------------------------

// Every item as a reader shows it, with the offset of the byte behind it.
struct ShownItem {
  std::string name;
  std::size_t end;
  std::string value;
  std::string (*shown)(const HeaderRecord&);
};

// The items of FileHeader{}, by hand.
std::vector<ShownItem> ItemsOfTheHeader() {
  using Record = const HeaderRecord&;
  const auto text = [](auto number) { return std::to_string(number); };
  std::vector<ShownItem> items = {
      {"magic", 9, "Kelvo QDX", [](Record r) { return r.Magic; }},
      {"version", 13, text(1.0F), [](Record r) { return std::to_string(r.Version); }},
      {"creation date", 23, "02-03-2004", [](Record r) { return r.CreateDate; }},
      {"creation time", 31, "14:05:09", [](Record r) { return r.CreateTime; }},
      {"report length", 33, "7", [](Record r) { return std::to_string(r.ReportLength); }},
      {"start month", 35, "2", [](Record r) { return std::to_string(r.StartMonth); }},
      {"start day", 37, "1", [](Record r) { return std::to_string(r.StartDay); }},
      {"start year", 39, "2004", [](Record r) { return std::to_string(r.StartYear); }},
      {"last month", 41, "2", [](Record r) { return std::to_string(r.LastMonth); }},
      {"last day", 43, "20", [](Record r) { return std::to_string(r.LastDay); }},
      {"last year", 45, "2004", [](Record r) { return std::to_string(r.LastYear); }},
      {"system name", 57, "North Shop", [](Record r) { return r.SystemName; }},
      {"database version", 61, text(12.0F), [](Record r) { return std::to_string(r.DatabaseVersion); }},
      {"data level", 63, "1", [](Record r) { return std::to_string(r.DataLevel); }},
      {"calendar type", 65, "4", [](Record r) { return std::to_string(r.CalendarType); }},
      {"year field", 67, "3", [](Record r) { return std::to_string(r.YearField); }},
      {"field slots", 69, "40", [](Record r) { return std::to_string(r.FieldSlots); }},
      {"account slots", 71, "100", [](Record r) { return std::to_string(r.AccountSlots); }},
      {"period count", 73, "2", [](Record r) { return std::to_string(r.NumPeriods); }},
      {"period name 1", 80, "Alpha", [](Record r) { return r.PeriodNames(1); }},
      {"period length 1", 82, "10", [](Record r) { return std::to_string(r.PeriodLengths(1)); }},
      {"period name 2", 88, "Beta", [](Record r) { return r.PeriodNames(2); }},
      {"period length 2", 90, "10", [](Record r) { return std::to_string(r.PeriodLengths(2)); }},
      {"field count", 92, "2", [](Record r) { return std::to_string(r.NumFields); }},
      {"year count", 94, "1", [](Record r) { return std::to_string(r.NumYears); }},
      {"account count", 96, "2", [](Record r) { return std::to_string(r.NumAccounts); }},
      {"first year", 98, "2004", [](Record r) { return std::to_string(r.FirstYear); }},
      {"first date month", 100, "2", [](Record r) { return std::to_string(r.FirstDateMonth); }},
      {"first date day", 102, "1", [](Record r) { return std::to_string(r.FirstDateDay); }},
      {"first date year", 104, "2004", [](Record r) { return std::to_string(r.FirstDateYear); }},
      {"year code 1", 106, "2004", [](Record r) { return std::to_string(r.YearCodes(1)); }},
      {"account code 1", 111, "100", [](Record r) { return r.AccountCodes(1); }},
      {"account description 1", 126, "Front of shop", [](Record r) { return r.AccountDescs(1); }},
      {"account code 2", 131, "200", [](Record r) { return r.AccountCodes(2); }},
      {"account description 2", 137, "Yard", [](Record r) { return r.AccountDescs(2); }},
      {"field number 1", 139, "1", [](Record r) { return std::to_string(r.FieldNumbers(1)); }},
      {"field description 1", 146, "Sales", [](Record r) { return r.FieldDescs(1); }},
      {"field number 2", 148, "7", [](Record r) { return std::to_string(r.FieldNumbers(2)); }},
      {"field description 2", 157, "Weather", [](Record r) { return r.FieldDescs(2); }},
  };
  return items;
}

TEST_F(HeaderItemsTest, ReadsEveryItem) {
  EXPECT_EQ(Read(FileHeader().All()), 157);
  for (const ShownItem& item : ItemsOfTheHeader()) EXPECT_EQ(item.shown(record), item.value) << item.name;
}

// A header that differs from FileHeader{} in every item but has the same counts.
FileHeader AnotherHeader() {
  FileHeader other;
  other.magic = "Other QDX";
  other.version = std::string("\x00\x00\x00\x40", 4);
  other.create_date = "12-31-1999";
  other.create_time = "23:59:58";
  other.report_length = 5;
  other.start = {3, 5, 1998};
  other.last = {4, 6, 1999};
  other.system_name = "South";
  other.database_version = 3;
  other.data_level = 3;
  other.calendar_type = 1;
  other.year_field = 2;
  other.field_slots = 11;
  other.account_slots = 12;
  other.periods = {{"P", 13}, {"Q", 14}};
  other.first_year = 1998;
  other.first_date = {5, 7, 1998};
  other.years = {1998};
  other.accounts = {{"A", "a"}, {"B", "b"}};
  other.fields = {{3, "f"}, {4, "g"}};
  return other;
}

// What the file does not hold whole stays as the read before left it.
TEST_F(HeaderItemsTest, TakesWhatEveryPrefixHoldsAndKeepsTheRest) {
  const std::string whole = FileHeader().All();
  const auto items = ItemsOfTheHeader();
  Read(AnotherHeader().All());
  const HeaderRecord before = record;
  for (std::size_t length = 0; length <= whole.size(); ++length) {
    record = before;
    EXPECT_EQ(Read(whole.substr(0, length)), static_cast<long long>(length));
    for (const ShownItem& item : items)
      EXPECT_EQ(item.shown(record), item.end <= length ? item.value : item.shown(before))
          << item.name << " of " << length << " bytes";
  }
}

TEST_F(HeaderItemsTest, ReadsAsManyRowsAsATableHolds) {
  FileHeader full;
  full.periods.assign(26, {"Period", 14});
  full.periods.back() = {"Last", 15};
  full.years.assign(9, 2004);
  full.years.back() = 2012;
  Read(full.All());
  EXPECT_EQ(record.PeriodNames(26), "Last");
  EXPECT_EQ(record.PeriodLengths(26), 15);
  EXPECT_EQ(record.YearCodes(9), 2012);
}

TEST_F(HeaderItemsTest, KeepsTheRowsReadBeforeATableOverflows) {
  FileHeader header;
  header.periods.assign(27, {"Period", 14});
  EXPECT_THAT([&] { Read(header.All()); }, FailsWith(FailureNumber::kRange, "27"));
  EXPECT_EQ(record.PeriodNames(26), "Period");
  EXPECT_EQ(record.PeriodLengths(26), 14);
  EXPECT_EQ(record.NumPeriods, 27);

  header = FileHeader();
  header.years.assign(10, 2004);
  EXPECT_THAT([&] { Read(header.All()); }, FailsWith(FailureNumber::kRange, "10"));
  EXPECT_EQ(record.YearCodes(9), 2004);

  header = FileHeader();
  header.accounts.assign(10000, {"1", ""});
  EXPECT_THAT([&] { Read(header.All()); }, FailsWith(FailureNumber::kRange, "10000"));
  EXPECT_EQ(record.AccountCodes(9999), "1");

  header = FileHeader();
  header.fields.assign(10000, {5, ""});
  EXPECT_THAT([&] { Read(header.All()); }, FailsWith(FailureNumber::kRange, "10000"));
  EXPECT_EQ(record.FieldNumbers(9999), 5);
}

TEST_F(HeaderItemsTest, ReadsNoRowsForACountOfZeroOrLess) {
  for (const int count : {0, -1, -32768}) {
    FileHeader header;
    header.periods.clear();
    header.years.clear();
    header.accounts.clear();
    header.fields.clear();
    header.period_count = header.year_count = header.account_count = header.field_count = count;
    EXPECT_EQ(Read(header.All()), static_cast<long long>(header.All().size()));
    EXPECT_EQ(record.NumAccounts, count);
    EXPECT_TRUE(rows.empty());
  }
}

TEST_F(HeaderItemsTest, FailsForATextOfNegativeLength) {
  std::string bytes = FileHeader().All();
  bytes.replace(45, 2, Bytes().I2(-1).All());
  EXPECT_THAT([&] { Read(bytes); }, FailsWith(FailureNumber::kInvalidArgument, "-1 at byte 45"));
  EXPECT_EQ(record.LastYear, 2004);
  EXPECT_EQ(record.SystemName, "");
}

TEST_F(HeaderItemsTest, ReadsTheCharactersOfTheCodePage) {
  FileHeader header;
  header.system_name = "Caf\xE9 \x80\x81";
  Read(header.All());
  EXPECT_EQ(record.SystemName, "Caf\xC3\xA9 \xE2\x82\xAC\xC2\x81");
}

}  // namespace
}  // namespace tallybook::testing
