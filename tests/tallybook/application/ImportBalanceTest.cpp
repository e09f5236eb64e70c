// That all an import read is accounted for, over files of every kind.
#include <gmock/gmock.h>
#include <nlohmann/json.hpp>
#include <rapidcheck.h>

#include "tallybook/application/ImportBalance.h"
#include "tests/tallybook/application/Office.h"

namespace tallybook::application {
namespace {

using testing::Day;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using testing::kAdded;
using testing::kReplaced;
using testing::kSubtracted;
using testing::Office;
using ::testing::SizeIs;
using testing::Values;

TEST(ImportBalance, AccountsForEveryFigureThatAFileHas) {
  Office office;
  const bool more = true;
  office.Write("a.QDX",
               {{101, Day(2003, 1, 5), 1, 10},
                {101, Day(2003, 1, 6), 12, 7},
                {205, Day(2003, 2, 1), 4, 3},
                {900, Day(2003, 1, 6), 1, 4}},
               Day(2003, 1, 5), Day(2003, 3, 15), more);
  const auto balances = BalancesOf(office.Import("a.QDX", kReplaced), *office.book);
  ASSERT_THAT(balances, SizeIs(1));
  EXPECT_THAT(BalanceLines(balances),
              ElementsAre("Balance: 4 figures read = 2 applied + 2 not mapped + 0 refused",
                          "  field 1 to field 1: 1 of 2 figures, 14 in the file, 10 in the book",
                          "  field 4 to field 4: 1 figure, 3 in the file, 3 in the book",
                          "  field 12, not mapped: 1 figure, 7 in the file",
                          "  " + office.folder.Path("a.QDX") + " begins at 2003-01-05, within 2003-01-01 to 2003-01-31",
                          "  " + office.folder.Path("a.QDX") + " ends at 2003-03-15, within 2003-03-01 to 2003-03-31"));
}

TEST(ImportBalance, HasNoPartialUnitWhereAFileFillsThem) {
  Office office;
  office.Write("a.QDX", {{101, Day(2003, 1, 5), 1, 10}}, Day(2003, 1, 1), Day(2003, 2, 28));
  EXPECT_THAT(BalancesOf(office.Import("a.QDX", kAdded), *office.book)[0].partial_units, IsEmpty());
  Office daily(kDayLevel);
  daily.Write("a.QDX", {{101, Day(2003, 1, 5), 1, 10}}, Day(2003, 1, 5), Day(2003, 1, 5));
  EXPECT_THAT(BalancesOf(daily.Import("a.QDX", kAdded), *daily.book)[0].partial_units, IsEmpty());
}

TEST(ImportBalance, AddsSeveralFilesUpByTheirFields) {
  FileBalance one;
  one.file = "a.QDX";
  one.imported = true;
  one.read = 3;
  one.applied = 2;
  one.not_mapped = 1;
  one.fields = {
      {.in_file = 1, .in_database = 4, .applied = 2, .applied_total = 5, .not_mapped = 1, .not_mapped_total = 1}};
  FileBalance other = one;
  other.read = 2;
  other.applied = 1;
  other.not_mapped = 0;
  other.refused = 1;
  other.fields = {{.in_file = 1, .in_database = 4, .applied = 1, .applied_total = 0.5}};
  const FileBalance sum = SumOf({one, other});
  EXPECT_TRUE(sum.Holds());
  EXPECT_TRUE(sum.imported);
  EXPECT_EQ(sum.read, 5);
  ASSERT_THAT(sum.fields, SizeIs(1));
  EXPECT_EQ(sum.fields[0].applied, 3);
  EXPECT_EQ(sum.fields[0].applied_total, 5.5);
  EXPECT_EQ(BalanceLines({one, other})[1], "  field 1 to field 4: 3 of 4 figures, 6.5 in the file, 5.5 in the book");
  EXPECT_THAT(BalanceLines({}), IsEmpty());
}

TEST(ImportBalance, RefusesWhatWasAppliedWhereNothingIsKept) {
  FileBalance balance;
  balance.imported = true;
  balance.read = 5;
  balance.applied = 3;
  balance.not_mapped = 2;
  balance.fields = {{.in_file = 1, .in_database = 1, .applied = 3, .applied_total = 6}};
  std::vector<FileBalance> balances = {balance};
  KeepNone(balances);
  EXPECT_FALSE(balances[0].imported);
  EXPECT_TRUE(balances[0].Holds());
  EXPECT_THAT(BalanceLines(balances), ElementsAre("Balance: 5 figures read = 0 applied + 2 not mapped + 3 refused"));
}

TEST(ImportBalance, EndsAReportBehindTheLineThatNothingIsKept) {
  FileBalance balance;
  balance.read = 1;
  balance.refused = 1;
  const Text line = "Balance: 1 figure read = 0 applied + 0 not mapped + 1 refused";
  const bool kept = true;
  EXPECT_THAT(ClosingLines({balance}, kept), ElementsAre(line));
  EXPECT_THAT(ClosingLines({balance}, !kept),
              ElementsAre("Nothing of the import is kept: figures and files are as they were.", line));
  EXPECT_THAT(ClosingLines({}, kept), IsEmpty());
}

TEST(ImportBalance, NamesThe53rdWeekThatFiguresCameInto) {
  testing::ScriptedPlatform platform;
  testing::TempFolder folder;
  testing::CallRecord record;
  testing::MemoryApp app{record};
  for (const Integer level : {kWeekLevel, kPeriodLevel}) {
    auto description = testing::ShopDescription();
    description.data_level = level;
    description.calendar.kind = engine::CalendarKind::k445;
    description.calendar.years = 6;
    description.calendar.years_in_use = 6;
    const Text path = folder.Path("Weeks" + std::to_string(level) + ".tbk");
    engine::Book::Create(path, description);
    const auto book = engine::Book::Open(path, app);
    TextImportTally tally;
    for (Date date = book->FirstDate(); date <= book->LastDate(); date += 7) tally.dates.insert(date);
    // Of the six years the first and the last have 53 weeks.
    const FileBalance balance = BalanceOf("a.csv", tally, *book);
    ASSERT_THAT(balance.weeks_53, SizeIs(2)) << level;
    for (const LongYearWeek& week : balance.weeks_53) {
      EXPECT_EQ(week.last - week.first, 6);
      const int year = std::stoi(week.year);
      const Date next_year = book->YearStart(static_cast<Integer>(year + 1));
      EXPECT_EQ(next_year - book->YearStart(static_cast<Integer>(year)), 371);
      EXPECT_EQ(week.last + 1, next_year);
    }
  }
}

// The audit reads a text file first, and the import reads it again.
TEST(ImportBalance, HoldsOfATextFileThatHasGrownBeforeItWasApplied) {
  testing::ScriptedPlatform platform;
  testing::TempFolder folder;
  testing::CallRecord record;
  testing::MemoryApp app{record};
  engine::Book::Create(folder.Path("Shop.tbk"), testing::ShopDescription());
  const auto book = engine::Book::Open(folder.Path("Shop.tbk"), app);
  TextImportTally tally;
  tally.read = 5;
  tally.applied = 7;
  const FileBalance balance = BalanceOf("a.csv", tally, *book);
  EXPECT_TRUE(balance.Holds());
  EXPECT_EQ(balance.read, 7);
  EXPECT_EQ(balance.refused, 0);
  EXPECT_EQ(GrownText(tally),
            "the file has grown while it was imported: 2 figures that the audit has not seen came in as well");
  tally.read = 7;
  EXPECT_EQ(GrownText(tally), "");
}

TEST(ImportBalance, IsJsonForOtherPrograms) {
  Office office;
  office.Write("a.QDX", {{101, Day(2003, 1, 5), 1, 10}}, Day(2003, 1, 5), Day(2003, 1, 31));
  const bool done = true;
  const auto json =
      nlohmann::json::parse(BalanceJson(BalancesOf(office.Import("a.QDX", kReplaced), *office.book), done));
  EXPECT_EQ(json["done"], true);
  EXPECT_EQ(json["read"], 1);
  EXPECT_EQ(json["field_balances"][0]["file_field"], 1);
  EXPECT_EQ(json["field_balances"][0]["total_in_book"], 10);
  EXPECT_EQ(json["balanced_files"][0]["partial"][0]["begins"], "2003-01-05");
}

// --- Over random books and files -----------------------------------------------------------------------------------

TEST(ImportBalanceProperties, HoldForExchangeFilesOfRandomShops) {
  const auto ok = rc::check("exchange files", [] {
    Office office(*rc::gen::elementOf(std::vector<Integer>{kDayLevel, kWeekLevel, kPeriodLevel}));
    const bool more = *rc::gen::arbitrary<bool>();
    // By field: what the file has, and what of it the office takes.
    std::map<Long, std::pair<Double, Double>> model;
    std::map<std::tuple<Long, Date, Long>, Double> figures;
    const int count = *rc::gen::inRange(0, 60);
    for (int index = 0; index < count; ++index) {
      const auto account = *rc::gen::element<Long>(101, 205, 7, 900);
      const auto field = *rc::gen::element<Integer>(1, 4, 9, 12);
      if (!more && (account == 900 || field == 12)) continue;
      figures[{account, Day(2003, 1, 1) + *rc::gen::inRange(0, 150), field}] = *rc::gen::inRange(1, 1000) / 4.0;
    }
    Values values;
    long long mapped = 0;
    for (const auto& [key, value] : figures) {
      const auto& [account, date, field] = key;
      values.push_back({account, date, static_cast<Integer>(field), value});
      const bool is_mapped = account != 900 && field != 12;
      mapped += is_mapped ? 1 : 0;
      model[field].first += value;
      if (is_mapped) model[field].second += value;
    }
    office.Write("a.QDX", values, Day(2003, 1, 1), Day(2003, 1, 1) + 149, more);
    const auto math = *rc::gen::elementOf(std::vector<Integer>{kAdded, kSubtracted, kReplaced});
    const auto balances = BalancesOf(office.Import("a.QDX", math), *office.book);
    RC_ASSERT(balances.size() == 1U);
    const FileBalance& balance = balances.front();
    RC_ASSERT(balance.Holds());
    RC_ASSERT(balance.read == static_cast<long long>(figures.size()));
    RC_ASSERT(balance.applied == mapped);
    RC_ASSERT(balance.refused == 0);
    RC_ASSERT(balance.fields.size() == model.size());
    long long of_fields = 0;
    for (const FieldTally& field : balance.fields) {
      RC_ASSERT(field.applied_total + field.not_mapped_total == model[field.in_file].first);
      RC_ASSERT(field.applied_total == model[field.in_file].second);
      RC_ASSERT(field.in_database == (field.in_file == 12 ? 0 : field.in_file));
      of_fields += field.applied + field.not_mapped;
    }
    RC_ASSERT(of_fields == balance.read);
  });
  EXPECT_TRUE(ok);
}

TEST(ImportBalanceProperties, HoldForCsvFiles) {
  const auto ok = rc::check("comma-separated files", [] {
    Office office;
    Text text = "1,5,2003,1,1\r\n";
    std::map<Long, std::pair<long long, Double>> model;
    const int count = *rc::gen::inRange(1, 40);
    const int bad_one = *rc::gen::inRange(0, 80);  // beyond the last: none
    for (int index = 0; index < count; ++index) {
      const Long field = index == bad_one ? 77 : *rc::gen::element<Long>(1, 4, 9);
      const int value = *rc::gen::inRange(1, 1000);
      text += *rc::gen::element<Text>("100", "200", "A") + "," + std::to_string(field) + "," + std::to_string(value) +
              "\r\n";
      ++model[field].first;
      model[field].second += value;
    }
    office.folder.Write("a.csv", text);
    const bool is_bad = bad_one < count;
    if (is_bad) office.platform.boxes.Answer({kYes});
    CDataExchange exchange(office.factory);
    exchange.SetOwner(office.book.get());
    const bool no_prompts = true;
    RC_ASSERT(exchange.ImportCSVFile(office.folder.Path("a.csv"), no_prompts, {0}, eMath::mAdd) == !is_bad);
    const FileBalance balance = BalanceOf("a.csv", exchange.LastTextImport(), *office.book);
    RC_ASSERT(balance.Holds());
    RC_ASSERT(balance.read == count);
    RC_ASSERT(balance.applied == (is_bad ? 0 : count));
    RC_ASSERT(balance.fields.size() == (is_bad ? 0 : model.size()));
    for (const FieldTally& field : balance.fields) {
      RC_ASSERT(field.applied == model[field.in_database].first);
      RC_ASSERT(field.applied_total == model[field.in_database].second);
    }
  });
  EXPECT_TRUE(ok);
}

TEST(ImportBalanceProperties, CountPairsThatTheSecondPassOfADelimitedFileDropsAsRefused) {
  const auto ok = rc::check("delimited files", [] {
    Office office;
    // A long line first: the fields of later ones have room then, whatever is empty in them.
    Text text = "01/05/2003,100,1,1,4,1,9,1,1,1,4,1\r\n";
    long long read = 5;
    long long applied = 5;
    const int lines = *rc::gen::inRange(1, 15);
    for (int line = 0; line < lines; ++line) {
      text += "01/05/2003," + *rc::gen::element<Text>("100", "200", "A");
      bool dropped = false;
      const int pairs = *rc::gen::inRange(1, 4);
      for (int pair = 0; pair < pairs; ++pair) {
        const bool empty = *rc::gen::inRange(0, 6) == 0;
        dropped = dropped || empty;
        text += "," + *rc::gen::element<Text>("1", "4", "9") + "," + (empty ? "" : "2.5");
        ++read;
        if (!dropped) ++applied;
      }
      text += "\r\n";
    }
    office.folder.Write("a.txt", text);
    office.platform.boxes.Answer({kOk});
    CDataExchange exchange(office.factory);
    exchange.SetOwner(office.book.get());
    const Integer month_day_year = 1;
    const Integer in_one_field = -1;
    const bool system_fields = true;
    RC_ASSERT(exchange.ImportDelimitedFile(office.folder.Path("a.txt"), eMath::mAdd, month_day_year, in_one_field,
                                           system_fields));
    const FileBalance balance = BalanceOf("a.txt", exchange.LastTextImport(), *office.book);
    RC_ASSERT(balance.Holds());
    RC_ASSERT(balance.read == read);
    RC_ASSERT(balance.applied == applied);
    RC_ASSERT(balance.refused == read - applied);
  });
  EXPECT_TRUE(ok);
}

}  // namespace
}  // namespace tallybook::application
