#include <algorithm>
#include <cmath>
#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <limits>
#include <memory>
#include <optional>
#include <set>
#include <sstream>
#include <string>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

#include "tallybook/engine/Book.h"
#include "tallybook/engine/BookFormat.h"
#include "tallybook/engine/Journal.h"
#include "tests/support/FileSizeLimit.h"
#include "tests/support/MemoryPrinter.h"
#include "tests/tallybook/engine/BookFixture.h"
#include "tests/tallybook/engine/OtherProcesses.h"

namespace tallybook::testing {
namespace {

using engine::Book;
using engine::BookDescription;
using engine::BookOptions;
using engine::Figure;
using engine::FigureQuery;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Pair;

constexpr Long kShop = 101;
constexpr Long kCafe = 205;
constexpr Long kStore = 7;
constexpr Integer kSales = 1;
constexpr Integer kGuests = 4;
constexpr Integer kBalance = 9;

using BookTest = BookFixture;

TEST_F(BookTest, TellsWhatItWasMadeFrom) {
  const auto book = CreateAndOpen();
  EXPECT_EQ(book->Description(), ShopDescription());
  EXPECT_EQ(book->SystemName(), "North Shop");
  EXPECT_EQ(book->MasterFileTypeName(0), "Sales");
  EXPECT_EQ(book->TitleSource().TitleFor(book->TitleContext()), "North Shop");
  EXPECT_EQ(book->FileVersion(), engine::kFileVersion);
  EXPECT_EQ(book->DataLevel(), kDayLevel);
  EXPECT_EQ(book->CalendarType(), 0);
  EXPECT_EQ(book->MaxAccounts(), 9999);
  EXPECT_EQ(book->MaxFields(), 999);
  EXPECT_EQ(book->NumYears(), 2);
  EXPECT_EQ(book->YearsInUse(), 2);
  EXPECT_EQ(book->FirstYear(), 2003);
  EXPECT_EQ(book->YearCode(2), 2004);
  EXPECT_EQ(book->YearStart(2005), Day(2005, 1, 1));
  EXPECT_EQ(book->NumPeriods(), 12);
  EXPECT_EQ(book->PeriodName(2), "February");
  EXPECT_EQ(book->PeriodLength(2), 28);
  EXPECT_EQ(book->FirstDate(), Day(2003, 1, 1));
  EXPECT_EQ(book->FirstSystemDate(), Day(2003, 1, 1));
  EXPECT_EQ(book->LastDate(), Day(2004, 12, 31));
  EXPECT_EQ(&book->App(), &app);
  EXPECT_THAT([&] { static_cast<void>(book->YearCode(3)); }, FailsWith(FailureNumber::kRange));
}

TEST_F(BookTest, KeepsItsCompanionFilesBesideIt) {
  const auto book = CreateAndOpen();
  EXPECT_EQ(book->DataPath(), folder.Path());
  EXPECT_EQ(book->FileExtension(), "North");
  EXPECT_EQ(book->SettingsFileName(), folder.Path("North.ini"));
}

TEST_F(BookTest, ListsAccountsAndFieldsInPositionOrder) {
  const auto book = CreateAndOpen();
  EXPECT_EQ(book->NumAccounts(), 3);
  EXPECT_EQ(book->AccountNumber(1), kShop);
  EXPECT_EQ(book->AccountNumber(3), kStore);
  EXPECT_EQ(book->AccountPosition(kCafe), 2);
  EXPECT_EQ(book->AccountPosition(6), 0);
  EXPECT_EQ(book->AccountPosition(-1), 0);
  EXPECT_EQ(book->AccountPositionOfCode("200"), 2);
  EXPECT_EQ(book->AccountPositionOfCode("201"), 0);
  EXPECT_EQ(book->NumFields(), 3);
  EXPECT_EQ(book->FieldNumber(2), kGuests);
  EXPECT_EQ(book->FieldName(3), "Balance");
  EXPECT_EQ(book->FieldPosition(kBalance), 3);
  EXPECT_EQ(book->FieldPosition(2), 0);
  for (const Integer position : {Integer{0}, Integer{4}, Integer{-1}}) {
    EXPECT_THAT([&] { static_cast<void>(book->AccountNumber(position)); }, FailsWith(FailureNumber::kRange));
    EXPECT_THAT([&] { static_cast<void>(book->FieldNumber(position)); }, FailsWith(FailureNumber::kRange));
    EXPECT_THAT([&] { static_cast<void>(book->FieldName(position)); }, FailsWith(FailureNumber::kRange));
  }
}

TEST_F(BookTest, PadsCodesToTenCharactersAndBlanksThoseOfUnknownAccounts) {
  const auto book = CreateAndOpen();
  const auto account = book->NewAccountRecord();
  account->SetSelect(kCafe);
  EXPECT_EQ(account->Code(), "200       ");
  EXPECT_EQ(account->Description(), "Café" + Text(26, ' '));
  EXPECT_EQ(account->Number(), kCafe);
  EXPECT_EQ(account->MaxNumber(), 205);
  account->SetSelect(8);
  EXPECT_EQ(account->Code(), Text(10, ' '));
  EXPECT_EQ(account->Description(), Text(30, ' '));
  EXPECT_EQ(account->Number(), 8);
}

TEST_F(BookTest, TellsWhichFieldsItKeepsItself) {
  const auto book = CreateAndOpen();
  const auto field = book->NewFieldRecord();
  field->SetSelect(kBalance);
  EXPECT_EQ(field->Description(), "Balance");
  EXPECT_TRUE(field->SystemMaintained());
  EXPECT_EQ(field->MaxNumber(), 9);
  field->SetSelect(kSales);
  EXPECT_FALSE(field->SystemMaintained());
  field->SetSelect(2);
  EXPECT_EQ(field->Description(), "");
  EXPECT_FALSE(field->SystemMaintained());
}

TEST_F(BookTest, KeepsFiguresFromOneOpeningToTheNext) {
  auto book = CreateAndOpen();
  Put(*book, kShop, Day(2003, 5, 5), kSales, 12.5);
  Put(*book, kShop, Day(2003, 5, 6), kSales, 0.1 + 0.2);
  Put(*book, kStore, Day(2004, 12, 31), kBalance, -1e300);
  book->Close();
  book = Open();
  EXPECT_EQ(Get(*book, kShop, Day(2003, 5, 5), kSales), 12.5);
  EXPECT_EQ(Get(*book, kShop, Day(2003, 5, 6), kSales), 0.1 + 0.2);
  EXPECT_EQ(Get(*book, kStore, Day(2004, 12, 31), kBalance), -1e300);
  EXPECT_EQ(Get(*book, kStore, Day(2004, 12, 30), kBalance), 0);
}

TEST_F(BookTest, CommitsWhenItIsDroppedWithoutAClose) {
  {
    const auto book = CreateAndOpen();
    Put(*book, kShop, Day(2003, 5, 5), kSales, 12.5);
  }
  EXPECT_EQ(Get(*Open(), kShop, Day(2003, 5, 5), kSales), 12.5);
}

TEST_F(BookTest, DropsWhatWasSetAndNotWritten) {
  const auto book = CreateAndOpen();
  Put(*book, kShop, Day(2003, 5, 5), kSales, 1);
  ASSERT_TRUE(book->ReadRecord(kShop, Day(2003, 5, 5)));
  book->SetFieldValue(kSales, 2);
  EXPECT_EQ(book->FieldValue(kSales), 2);
  EXPECT_EQ(Get(*book, kShop, Day(2003, 5, 5), kSales), 1);
}

TEST_F(BookTest, KeepsARecordCurrentWhenItIsWritten) {
  const auto book = CreateAndOpen();
  Put(*book, kShop, Day(2003, 5, 5), kSales, 1);
  EXPECT_EQ(book->FieldValue(kSales), 1);
  book->SetFieldValue(kGuests, 3);
  EXPECT_TRUE(book->WriteRecord());
  ASSERT_TRUE(book->ReadRecord(kShop, Day(2003, 5, 5)));
  EXPECT_EQ(book->FieldValue(kSales), 1);
  EXPECT_EQ(book->FieldValue(kGuests), 3);
}

TEST_F(BookTest, WritesNothingWhereNoRecordWasRead) {
  const auto book = CreateAndOpen();
  EXPECT_FALSE(book->WriteRecord());
  EXPECT_THAT(FiguresOf(*book), IsEmpty());
}

TEST_F(BookTest, FailsOnAFigureOfNoRecordOrNoField) {
  const auto book = CreateAndOpen();
  EXPECT_THAT([&] { static_cast<void>(book->FieldValue(kSales)); },
              FailsWith(FailureNumber::kInvalidArgument, "no record is current"));
  EXPECT_THAT([&] { book->SetFieldValue(kSales, 1); },
              FailsWith(FailureNumber::kInvalidArgument, "no record is current"));
  ASSERT_TRUE(book->ReadRecord(kShop, Day(2003, 5, 5)));
  for (const Integer number : {Integer{0}, Integer{2}, Integer{10}, Integer{-1}, Integer{32767}}) {
    const Text words = "no field of number " + std::to_string(number);
    EXPECT_THAT([&] { static_cast<void>(book->FieldValue(number)); },
                FailsWith(FailureNumber::kInvalidArgument, words));
    EXPECT_THAT([&] { book->SetFieldValue(number, 1); }, FailsWith(FailureNumber::kInvalidArgument, words));
  }
}

TEST_F(BookTest, ReadsRecordsOfListedAccountsAndValidDatesOnly) {
  const auto book = CreateAndOpen();
  EXPECT_TRUE(book->DateValid(Day(2003, 1, 1)));
  EXPECT_TRUE(book->DateValid(Day(2004, 12, 31) + 0.99));
  EXPECT_FALSE(book->DateValid(Day(2002, 12, 31)));
  EXPECT_FALSE(book->DateValid(Day(2005, 1, 1)));
  EXPECT_FALSE(book->DateValid(std::numeric_limits<Date>::quiet_NaN()));
  EXPECT_TRUE(book->ReadRecord(kShop, Day(2003, 1, 1)));
  EXPECT_TRUE(book->ReadRecord(kShop, Day(2004, 12, 31) + 0.5));
  EXPECT_FALSE(book->ReadRecord(kShop, Day(2002, 12, 31)));
  EXPECT_FALSE(book->ReadRecord(kShop, Day(2005, 1, 1)));
  EXPECT_FALSE(book->ReadRecord(kShop, std::numeric_limits<Date>::quiet_NaN()));
  EXPECT_FALSE(book->ReadRecord(102, Day(2003, 1, 1)));
  EXPECT_FALSE(book->ReadRecord(-101, Day(2003, 1, 1)));
  EXPECT_THAT([&] { static_cast<void>(book->FieldValue(kSales)); }, FailsWith(FailureNumber::kInvalidArgument));
}

TEST_F(BookTest, LevelsTheDatesOfRecords) {
  BookDescription description = ShopDescription();
  description.data_level = kWeekLevel;
  description.calendar.years = 1;
  description.calendar.years_in_use = 1;
  const auto book = CreateAndOpen(description);
  Put(*book, kShop, Day(2003, 5, 5), kSales, 3);  // a Monday; its week ends on Saturday
  EXPECT_EQ(Get(*book, kShop, Day(2003, 5, 10), kSales), 3);
  EXPECT_EQ(Get(*book, kShop, Day(2003, 5, 4), kSales), 3);
  EXPECT_EQ(Get(*book, kShop, Day(2003, 5, 11), kSales), 0);
  // The last week ends behind the last date. A walk over level dates reads it by that date.
  EXPECT_EQ(book->LastDate(), Day(2003, 12, 31));
  const Date last_week = book->FiscalCalendar().LevelDate(Day(2003, 12, 30), kOwnLevel);
  EXPECT_EQ(last_week, Day(2004, 1, 3));
  Put(*book, kShop, last_week, kSales, 5);
  EXPECT_EQ(Get(*book, kShop, Day(2003, 12, 28), kSales), 5);
  EXPECT_FALSE(book->ReadRecord(kShop, Day(2004, 1, 4)));
  EXPECT_THAT(FiguresOf(*book), ElementsAre(Pair(std::tuple(kShop, Day(2003, 5, 10), kSales), 3),
                                            Pair(std::tuple(kShop, Day(2004, 1, 3), kSales), 5)));
}

TEST_F(BookTest, KeepsOneRecordAPeriod) {
  BookDescription description = ShopDescription();
  description.data_level = kPeriodLevel;
  const auto book = CreateAndOpen(description);
  Put(*book, kShop, Day(2004, 2, 1), kSales, 3);
  EXPECT_EQ(Get(*book, kShop, Day(2004, 2, 29), kSales), 3);
  EXPECT_EQ(Get(*book, kShop, Day(2004, 3, 1), kSales), 0);
  EXPECT_THAT(FiguresOf(*book), ElementsAre(Pair(std::tuple(kShop, Day(2004, 2, 29), kSales), 3)));
}

TEST_F(BookTest, TakesAFigureOfNegativeZeroForZero) {
  const auto book = CreateAndOpen();
  Put(*book, kShop, Day(2003, 5, 5), kSales, -0.0);
  EXPECT_FALSE(std::signbit(book->FieldValue(kSales)));
  EXPECT_THAT(FiguresOf(*book), IsEmpty());
}

TEST_F(BookTest, StoresNoFigureThatIsNotFinite) {
  const auto book = CreateAndOpen();
  Put(*book, kShop, Day(2003, 5, 5), kSales, 7);
  for (const Double value : {std::numeric_limits<Double>::infinity(), -std::numeric_limits<Double>::infinity(),
                             std::numeric_limits<Double>::quiet_NaN()}) {
    EXPECT_THAT([&] { Put(*book, kShop, Day(2003, 5, 5), kSales, value); }, FailsWith(FailureNumber::kOverflow));
  }
  EXPECT_EQ(Get(*book, kShop, Day(2003, 5, 5), kSales), 7);
}

TEST_F(BookTest, GivesFiguresByAccountPositionDateAndFieldPosition) {
  const auto book = CreateAndOpen();
  Put(*book, kStore, Day(2003, 5, 5), kSales, 1);
  Put(*book, kCafe, Day(2004, 5, 5), kBalance, 2);
  Put(*book, kCafe, Day(2003, 5, 5), kBalance, 3);
  Put(*book, kCafe, Day(2003, 5, 5), kSales, 4);
  Put(*book, kShop, Day(2003, 1, 1), kGuests, 5);
  std::vector<Double> values;
  book->VisitFigures({}, [&](const Figure& figure) {
    values.push_back(figure.value);
    EXPECT_EQ(book->AccountNumber(figure.account_position), figure.account_number);
    EXPECT_EQ(book->FieldNumber(figure.field_position), figure.field_number);
    return true;
  });
  EXPECT_THAT(values, ElementsAre(5, 4, 3, 2, 1));
}

TEST_F(BookTest, GivesTheFiguresThatAreAskedFor) {
  const auto book = CreateAndOpen();
  Double value = 0;
  for (const Long account : {kShop, kCafe, kStore}) {
    for (const Date date : {Day(2003, 1, 1), Day(2003, 5, 5), Day(2004, 12, 31)}) {
      for (const Integer field : {kSales, kGuests, kBalance}) Put(*book, account, date, field, ++value);
    }
  }
  FigureQuery query;
  query.accounts = {kStore, kShop, kStore};
  query.fields = {kBalance};
  query.first = Day(2003, 1, 2);
  query.last = Day(2004, 12, 31);
  EXPECT_THAT(FiguresOf(*book, query), ElementsAre(Pair(std::tuple(kStore, Day(2003, 5, 5), kBalance), 24),
                                                   Pair(std::tuple(kStore, Day(2004, 12, 31), kBalance), 27),
                                                   Pair(std::tuple(kShop, Day(2003, 5, 5), kBalance), 6),
                                                   Pair(std::tuple(kShop, Day(2004, 12, 31), kBalance), 9)));
  query.first = Day(2003, 5, 5);
  query.last = Day(2003, 5, 5);
  EXPECT_EQ(FiguresOf(*book, query).size(), 2U);
  query.first = Day(2003, 5, 6);
  EXPECT_THAT(FiguresOf(*book, query), IsEmpty());
  query.first = Day(1990, 1, 1);
  query.last = Day(2090, 1, 1);
  EXPECT_EQ(FiguresOf(*book, query).size(), 6U);
  query.accounts = {102};
  EXPECT_THAT([&] { FiguresOf(*book, query); }, FailsWith(FailureNumber::kInvalidArgument, "no account of number 102"));
  query.accounts = {};
  query.fields = {2};
  EXPECT_THAT([&] { FiguresOf(*book, query); }, FailsWith(FailureNumber::kInvalidArgument, "no field of number 2"));
}

TEST_F(BookTest, EndsAWalkOverFiguresWhenItIsTold) {
  const auto book = CreateAndOpen();
  for (int day = 0; day < 10; ++day) Put(*book, kShop, Day(2003, 5, 5) + day, kSales, day + 1);
  int count = 0;
  book->VisitFigures({}, [&](const Figure&) { return ++count < 4; });
  EXPECT_EQ(count, 4);
  EXPECT_THAT(
      [&] { book->VisitFigures({}, [](const Figure&) -> bool { throw Failure(FailureNumber::kDiskFull, "full"); }); },
      FailsWith(FailureNumber::kDiskFull));
  EXPECT_EQ(FiguresOf(*book).size(), 10U);
}

TEST_F(BookTest, PrintsItselfAndIsMadeAgainFromThat) {
  auto book = CreateAndOpen();
  Put(*book, kShop, Day(2003, 5, 5), kSales, 12.5);
  Put(*book, kStore, Day(2004, 2, 29), kBalance, 0.1 + 0.2);
  std::ostringstream out;
  PrintBookDescription(book->Description(), out, book->Values());
  const FigureMap figures = FiguresOf(*book);
  const Text second = folder.Path("Second.tbk");
  Book::Create(second, engine::ParseBookDescription(out.str(), "printed"));
  const auto copy = Book::Open(second, app);
  EXPECT_EQ(copy->Description(), book->Description());
  EXPECT_EQ(FiguresOf(*copy), figures);
}

TEST_F(BookTest, MakesNoBookOfADescriptionThatIsNotSound) {
  BookDescription description = ShopDescription();
  description.values = {{102, Day(2003, 5, 5), kSales, 1}};
  EXPECT_THAT([&] { Create(description); }, FailsWith(FailureNumber::kInvalidArgument, "values[0].account is 102"));
  EXPECT_FALSE(folder.Has("North.tbk"));
}

TEST_F(BookTest, MakesNoBookWhereAFileIs) {
  folder.Write("North.tbk", "a letter");
  EXPECT_THAT([&] { Create(ShopDescription()); },
              FailsWith(FailureNumber::kPathOrAccess, BookPath() + ": the file exists"));
  EXPECT_EQ(folder.Read("North.tbk"), "a letter");
}

TEST_F(BookTest, LeavesNothingBesideANewBook) {
  Create(ShopDescription());
  EXPECT_TRUE(folder.Has("North.tbk"));
  for (const char* name : {"North.tbk-new", "North.tbk-new-wal", "North.tbk-new-shm", "North.tbk-new-lock"}) {
    EXPECT_FALSE(folder.Has(name)) << name;
  }
}

TEST_F(BookTest, TakesBothSeparatorsInAPath) {
  Create(ShopDescription());
  Text path = BookPath();
  path[path.find_last_of('/')] = '\\';
  EXPECT_EQ(Book::Open(path, app)->FileExtension(), "North");
}

TEST_F(BookTest, SaysWhyAFileCannotBeOpened) {
  const auto open = [&](const Text& path) { static_cast<void>(Book::Open(path, app)); };
  EXPECT_THAT([&] { open(folder.Path("None.tbk")); },
              FailsWith(FailureNumber::kFileNotFound, folder.Path("None.tbk") + ": there is no such file"));
  EXPECT_THAT([&] { open(folder.Path("none/None.tbk")); }, FailsWith(FailureNumber::kPathNotFound, "none/None.tbk"));
  EXPECT_THAT([&] { open(folder.Path()); }, FailsWith(FailureNumber::kPathOrAccess, folder.Path()));
  folder.Write("letter.tbk",
               "Dear reader, this is a text that is longer than the head of a book's file would be. " + Text(500, '.'));
  EXPECT_THAT([&] { open(folder.Path("letter.tbk")); },
              FailsWith(FailureNumber::kPathOrAccess, "letter.tbk: this file is not a book"));
  folder.Write("empty.tbk", "");
  EXPECT_THAT([&] { open(folder.Path("empty.tbk")); },
              FailsWith(FailureNumber::kPathOrAccess, "empty.tbk: this file is not a book"));
  EXPECT_EQ(folder.Read("empty.tbk"), "");
  BookOptions options;
  options.read_only = true;
  EXPECT_THAT([&] { static_cast<void>(Book::Open(folder.Path("letter.tbk"), app, options)); },
              FailsWith(FailureNumber::kPathOrAccess, "this file is not a book"));
}

TEST_F(BookTest, LeavesNothingBesideTheBookWhenItIsClosed) {
  Put(*CreateAndOpen(), kShop, Day(2003, 5, 5), kSales, 1);
  const auto beside = [&] {
    std::set<Text> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder.Path())) names.insert(entry.path().filename());
    names.erase("North.tbk");
    names.erase("North.tbk-lock");
    return names;
  };
  EXPECT_THAT(beside(), ::testing::IsEmpty());
  EXPECT_EQ(FiguresOf(*OpenToRead()).size(), 1U);
  EXPECT_THAT(beside(), ::testing::IsEmpty());
}

TEST_F(BookTest, ReadingChangesNoByteOfTheBook) {
  Put(*CreateAndOpen(), kShop, Day(2003, 5, 5), kSales, 1);
  const Text before = folder.Read("North.tbk");
  EXPECT_EQ(FiguresOf(*OpenToRead()).size(), 1U);
  EXPECT_EQ(folder.Read("North.tbk"), before);
}

TEST_F(BookTest, LeavesABookOfANewerVersionAlone) {
  Create(ShopDescription());
  Meddle("PRAGMA user_version = " + std::to_string(engine::kBookFormat + 1));
  EXPECT_THAT([&] { Open(); },
              FailsWith(FailureNumber::kFeatureUnavailable, BookPath() + ": this book was made by a newer version"));
}

TEST_F(BookTest, NamesTheChunkThatIsDamaged) {
  auto book = CreateAndOpen();
  Put(*book, kCafe, Day(2003, 5, 5), kSales, 1);
  Put(*book, kShop, Day(2003, 5, 5), kSales, 2);
  book->Close();
  Meddle("UPDATE chunk SET figures = x'0900000000' WHERE key = 205 << 24");
  book = Open();
  const Text words =
      BookPath() +
      ": the book is damaged: a chunk does not agree with its checksum (account number 205, from 2003-01-01)";
  EXPECT_THAT([&] { static_cast<void>(book->ReadRecord(kCafe, Day(2003, 5, 5))); },
              FailsWith(FailureNumber::kDeviceError, words));
  EXPECT_THAT([&] { static_cast<void>(book->FieldValue(kSales)); },
              FailsWith(FailureNumber::kInvalidArgument, "no record"));
  EXPECT_THAT([&] { FiguresOf(*book); }, FailsWith(FailureNumber::kDeviceError, words));
  EXPECT_EQ(Get(*book, kShop, Day(2003, 5, 5), kSales), 2);
}

TEST_F(BookTest, ABookThatLacksATableIsDamaged) {
  for (const char* table : {"property", "account", "account_sum"}) {
    Create(ShopDescription());
    Meddle(Text("DROP TABLE ") + table);
    EXPECT_THAT([&] { FiguresOf(*Open()); },
                FailsWith(FailureNumber::kDeviceError, BookPath() + ": the book is damaged: no such table: " + table));
    std::filesystem::remove(BookPath());
  }
}

TEST_F(BookTest, FailsOnABookThatDoesNotTellWhatItIs) {
  Create(ShopDescription());
  Meddle("DELETE FROM property WHERE name = 'first_year'");
  EXPECT_THAT([&] { Open(); }, FailsWith(FailureNumber::kDeviceError, "does not tell its first_year"));
}

TEST_F(BookTest, RefusesASecondWriterInThisProcess) {
  const auto book = CreateAndOpen();
  EXPECT_THAT([&] { Open(); },
              FailsWith(FailureNumber::kPermissionDenied, BookPath() + ": the book is open for writing elsewhere"));
  Put(*book, kShop, Day(2003, 5, 5), kSales, 1);
  book->Commit();
  EXPECT_EQ(Get(*OpenToRead(), kShop, Day(2003, 5, 5), kSales), 1);
  EXPECT_THAT([&] { Open(); }, FailsWith(FailureNumber::kPermissionDenied));
}

TEST_F(BookTest, RefusesASecondWriterInAnotherProcess) {
  auto book = CreateAndOpen();
  Put(*book, kShop, Day(2003, 5, 5), kSales, 1);
  book->Commit();
  const auto open = [&] {
    static_cast<void>(Open());
    return 0;
  };
  EXPECT_EQ(InAnotherProcess(open), 70);
  const auto read = [&] { return static_cast<int>(Get(*OpenToRead(), kShop, Day(2003, 5, 5), kSales)); };
  EXPECT_EQ(InAnotherProcess(read), 1);
  book->Close();
  EXPECT_EQ(InAnotherProcess(open), 0);
}

TEST_F(BookTest, ShowsAReaderOneStateOfTheBook) {
  const auto book = CreateAndOpen();
  Put(*book, kShop, Day(2003, 5, 5), kSales, 1);
  Put(*book, kCafe, Day(2003, 5, 5), kSales, 1);
  book->Commit();
  const auto reader = OpenToRead();
  EXPECT_EQ(Get(*reader, kShop, Day(2003, 5, 5), kSales), 1);
  Put(*book, kCafe, Day(2003, 5, 5), kSales, 2);
  book->Commit();
  EXPECT_EQ(Get(*reader, kCafe, Day(2003, 5, 5), kSales), 1);
  EXPECT_EQ(Get(*OpenToRead(), kCafe, Day(2003, 5, 5), kSales), 2);
}

TEST_F(BookTest, WritesNothingIntoABookThatIsOpenToRead) {
  Create(ShopDescription());
  const auto book = OpenToRead();
  ASSERT_TRUE(book->ReadRecord(kShop, Day(2003, 5, 5)));
  book->SetFieldValue(kSales, 1);
  const Text words = BookPath() + ": the book is open to read only";
  EXPECT_THAT([&] { book->WriteRecord(); }, FailsWith(FailureNumber::kPermissionDenied, words));
  EXPECT_THAT([&] { book->BeginRollback(Day(2003, 5, 5), Day(2003, 5, 5)); },
              FailsWith(FailureNumber::kPermissionDenied, words));
  book->EndRollback();
  book->BeginProgress("Reading");
  book->EndProgress();
  EXPECT_FALSE(book->AccessRight("A"));
  EXPECT_FALSE(folder.Has("North.tbk-lock"));
}

TEST_F(BookTest, NeedsNoRightToWriteTheFolderToBeRead) {
  auto book = CreateAndOpen();
  Put(*book, kShop, Day(2003, 5, 5), kSales, 7);
  book->Close();
  ASSERT_EQ(chmod(BookPath().c_str(), 0444), 0);
  ASSERT_EQ(chmod(folder.Path().c_str(), 0555), 0);
  // The rights of files do not bind root, so the child gives that up.
  const auto as_nobody = [&](auto act) {
    return InAnotherProcess([&] {
      if (geteuid() == 0 && setuid(65534) != 0) return 97;
      return act();
    });
  };
  EXPECT_EQ(as_nobody([&] { return static_cast<int>(Get(*OpenToRead(), kShop, Day(2003, 5, 5), kSales)); }), 7);
  EXPECT_EQ(as_nobody([&] {
              static_cast<void>(Open());
              return 0;
            }),
            70);
  EXPECT_EQ(as_nobody([&] {
              Book::Create(folder.Path("Other.tbk"), ShopDescription());
              return 0;
            }),
            75);
  ASSERT_EQ(chmod(folder.Path().c_str(), 0755), 0);
}

TEST_F(BookTest, KeepsWhatItCouldNotStoreSoThatTheCommitCanBeRepeated) {
  Create(ShopDescription());
  const auto act = [&] {
    const auto book = Open();
    Put(*book, kShop, Day(2003, 1, 1), kSales, 1);
    book->Commit();
    std::optional<FileSizeLimit> full_disk(std::in_place, 4096);
    for (int day = 0; day < 700; ++day) {
      if (!book->ReadRecord(kCafe, Day(2003, 1, 1) + day)) return 1;
      book->SetFieldValue(kSales, day + 0.123456789);
      try {
        book->WriteRecord();
      } catch (const Failure&) {
        // A commit that came due fails; the record is kept.
      }
    }
    Text told;
    try {
      book->Commit();
    } catch (const Failure& failure) {
      told = failure.Description();
    }
    if (told.find(BookPath()) == Text::npos) return 2;
    full_disk.reset();
    book->Commit();
    book->Close();
    return 0;
  };
  ASSERT_EQ(InAnotherProcess(act), 0);
  const FigureMap figures = FiguresOf(*Open());
  EXPECT_EQ(figures.size(), 701U);
  EXPECT_EQ(figures.at({kCafe, Day(2003, 1, 1) + 699, kSales}), 699.123456789);
}

TEST_F(BookTest, CommitsAtTheEndOfAnOperation) {
  const auto book = CreateAndOpen();
  BookOptions to_read;
  to_read.read_only = true;
  const auto seen = [&] { return FiguresOf(*Open(to_read)).size(); };
  book->BeginProgress("Import");
  Put(*book, kShop, Day(2003, 5, 5), kSales, 1);
  EXPECT_EQ(seen(), 0U);
  book->EndProgress();
  EXPECT_EQ(seen(), 1U);
  book->BeginRollback(Day(2003, 5, 5), Day(2003, 5, 5));
  Put(*book, kShop, Day(2003, 5, 6), kSales, 1);
  EXPECT_EQ(seen(), 1U);
  book->EndRollback();
  EXPECT_EQ(seen(), 2U);
}

TEST_F(BookTest, CommitsWithinTheTimeThatItIsGiven) {
  Create(ShopDescription());
  BookOptions options;
  options.commit_seconds = 0;
  const auto book = Open(options);
  book->BeginProgress("Import");
  for (int day = 0; day < 64; ++day) Put(*book, kShop, Day(2003, 1, 1) + day, kSales, 1);
  EXPECT_EQ(FiguresOf(*OpenToRead()).size(), 64U);
}

// 17.5 MB in rows of 200 figures: an account after the other, or a date after the other.
class BookOfLongRows : public BookTest {
 protected:
  static constexpr Integer kFirst = 101;
  static constexpr Integer kFields = 200;
  static constexpr int kDays = 365;

  void SetUp() override {
    auto description = ShopDescription();
    for (Long number = 1001; number <= 1030; ++number) {
      description.accounts.push_back({number, std::to_string(number), "Long"});
      accounts.push_back(number);
    }
    for (Integer number = kFirst; number < kFirst + kFields; ++number)
      description.fields.push_back({number, "More", false});
    Create(description);
    BookOptions options;
    options.commit_seconds = 1e9;  // what has gathered decides
    book = Open(options);
    book->BeginRollback(Day(2003, 1, 1), Day(2003, 12, 31));
  }
  void Write(Long account, int day, Double value) {
    ASSERT_TRUE(book->ReadRecord(account, Day(2003, 1, 1) + day));
    for (Integer field = kFirst; field < kFirst + kFields; ++field) book->SetFieldValue(field, value + field);
    ASSERT_TRUE(book->WriteRecord());
  }
  [[nodiscard]] bool IsSeen(Long account) { return Get(*OpenToRead(), account, Day(2003, 1, 1), kFirst) != 0; }

  std::vector<Long> accounts;
  std::unique_ptr<engine::Book> book;
};

TEST_F(BookOfLongRows, CommitsAWalkOverAccountsWhenSixteenMebibytesHaveGathered) {
  for (const Long account : accounts) {
    for (int day = 0; day < kDays; ++day) Write(account, day, account);
    EXPECT_EQ(IsSeen(accounts.front()), account >= 1029) << account;
  }
}

TEST_F(BookOfLongRows, KeepsWhatAWalkOverDatesComesBackTo) {
  for (int day = 0; day < kDays; ++day) {
    for (const Long account : accounts) Write(account, day, account);
  }
  EXPECT_FALSE(IsSeen(accounts.front()));
}

TEST_F(BookOfLongRows, TakesBackWhatAWalkWroteThatCameBackBehindACommit) {
  for (const Long account : accounts) {
    for (int day = 0; day < kDays; ++day) Write(account, day, account);
  }
  ASSERT_TRUE(IsSeen(accounts.front()));
  Write(accounts.front(), 7, 1);
  book->EndRollback();
  EXPECT_EQ(Get(*book, accounts.front(), Day(2003, 1, 8), kFirst), 102);
  EXPECT_EQ(Get(*book, accounts.front(), Day(2003, 1, 9), kFirst), 1102);
  EXPECT_EQ(Get(*book, accounts.back(), Day(2003, 12, 31), 300), 1330);
  (void)engine::Journal(*book).UndoNewest();
  EXPECT_TRUE(FiguresOf(*book).empty());
}

TEST_F(BookTest, CommitsASingleChangeAtOnceWhereNothingRuns) {
  Create(ShopDescription());
  BookOptions options;
  options.commit_seconds = 0;
  const auto book = Open(options);
  Put(*book, kShop, Day(2003, 1, 1), kSales, 1);
  EXPECT_EQ(FiguresOf(*OpenToRead()).size(), 1U);
}

class RecordingDisplay : public engine::ProgressDisplay {
 public:
  std::vector<tallybook::Text> calls;
  bool cancelled = false;

  void Begin(const tallybook::Text& title) override { calls.push_back("Begin " + title); }
  void Fraction(Single fraction) override { calls.push_back("Fraction " + std::to_string(fraction)); }
  void Text(const tallybook::Text& text) override { calls.push_back("Text " + text); }
  void CancelEnabled(bool enabled) override { calls.push_back(enabled ? "CancelEnabled" : "CancelDisabled"); }
  [[nodiscard]] bool Cancelled() override { return cancelled; }
  void End() override { calls.push_back("End"); }
};

TEST_F(BookTest, HandsProgressToTheApplicationsDisplay) {
  Create(ShopDescription());
  RecordingDisplay display;
  BookOptions options;
  options.progress = &display;
  const auto book = Open(options);
  book->BeginProgress("Import");
  book->SetProgressFraction(0.5F);
  book->SetProgressText("one\ntwo");
  book->SetProgressCancelEnabled(true);
  EXPECT_FALSE(book->ProgressCancelled());
  display.cancelled = true;
  EXPECT_TRUE(book->ProgressCancelled());
  book->EndProgress();
  book->EndProgress();
  EXPECT_THAT(display.calls, ElementsAre("Begin Import", "Fraction 0.000000", "Fraction 0.500000", "Text one\ntwo",
                                         "CancelEnabled", "End", "End"));
}

TEST_F(BookTest, RunsWithoutADisplay) {
  const auto book = CreateAndOpen();
  book->EndProgress();
  book->BeginProgressText("Load");
  book->SetProgressFraction(2);
  book->SetProgressText("x");
  book->SetProgressCancelEnabled(true);
  EXPECT_FALSE(book->ProgressCancelled());
  book->EndProgress();
}

TEST_F(BookTest, LetsAnotherCalendarBeAttachedToIt) {
  const auto book = CreateAndOpen();
  engine::BookCalendar calendar;
  calendar.Attach(*book);
  EXPECT_EQ(calendar.LevelDate(Day(2004, 2, 3), kPeriodLevel), Day(2004, 2, 29));
  EXPECT_EQ(book->FiscalCalendar().LevelDate(Day(2004, 4, 3), kPeriodLevel), Day(2004, 4, 30));
  EXPECT_EQ(calendar.PeriodNumber(), 2);
}

TEST_F(BookTest, FailsBehindItsClose) {
  const auto book = CreateAndOpen();
  book->Close();
  EXPECT_THAT([&] { static_cast<void>(book->ReadRecord(kShop, Day(2003, 5, 5))); },
              FailsWith(FailureNumber::kObjectNotSet, "closed"));
  EXPECT_FALSE(book->WriteRecord());
  book->Close();
}

}  // namespace
}  // namespace tallybook::testing
