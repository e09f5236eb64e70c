// How the lists and years of a book change: what is refused, what a change was, and how it is taken back.

#include <filesystem>
#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <vector>

#include "tallybook/engine/BookCheck.h"
#include "tallybook/engine/BookFormat.h"
#include "tallybook/engine/BookGrowth.h"
#include "tallybook/engine/Database.h"
#include "tallybook/engine/Journal.h"
#include "tests/tallybook/engine/BookFixture.h"
#include "tests/tallybook/engine/SampleBook.h"

namespace tallybook::testing {
namespace {

using engine::AccountDescription;
using engine::Book;
using engine::BookDescription;
using engine::BookDifference;
using engine::CheckGrowth;
using engine::FieldDescription;
using engine::FindDifference;
using engine::FreeAccountNumber;
using engine::Grown;
using engine::Journal;
using engine::JournalKind;
using engine::StoredDescription;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

StoredDescription Shop() {
  return engine::WithFirstSlots(ShopDescription(), 100);
}

// The shop with a change.
BookDescription With(const std::function<void(BookDescription&)>& change) {
  BookDescription description = ShopDescription();
  change(description);
  return description;
}

TEST(BookDifference, IsEmptyBetweenTheSame) {
  EXPECT_TRUE(FindDifference(ShopDescription(), ShopDescription()).IsEmpty());
}

TEST(BookDifference, TellsWhatCameAndWentAndChangedByNumber) {
  const BookDescription after = With([](BookDescription& book) {
    book.accounts.erase(book.accounts.begin());
    book.accounts[0].code = "210";
    book.accounts.push_back({300, "300", "New"});
    book.fields[1].description = "Covers";
    book.calendar.years = 3;
  });
  const BookDifference difference = FindDifference(ShopDescription(), after);
  ASSERT_EQ(difference.accounts.removed.size(), 1U);
  EXPECT_EQ(difference.accounts.removed[0].row.number, 101);
  ASSERT_EQ(difference.accounts.added.size(), 1U);
  EXPECT_EQ(difference.accounts.added[0].position, 3);
  ASSERT_EQ(difference.accounts.changed.size(), 1U);
  EXPECT_EQ(difference.accounts.changed[0].before.code, "200");
  EXPECT_EQ(difference.accounts.changed[0].after.code, "210");
  EXPECT_THAT(difference.accounts.moved, IsEmpty());
  ASSERT_EQ(difference.fields.changed.size(), 1U);
  EXPECT_THAT(difference.items, ElementsAre(engine::ItemDifference{"calendar.years", "2", "3"}));
}

TEST(BookDifference, CallsTheOneRowMovedThatWasMoved) {
  const BookDescription after = With([](BookDescription& book) {
    for (Long number = 1; number <= 6; ++number) book.accounts.push_back({number, "C" + std::to_string(number), ""});
  });
  BookDescription moved = after;
  const AccountDescription row = moved.accounts[7];
  moved.accounts.erase(moved.accounts.begin() + 7);
  moved.accounts.insert(moved.accounts.begin() + 1, row);
  const BookDifference difference = FindDifference(after, moved);
  ASSERT_EQ(difference.accounts.moved.size(), 1U);
  EXPECT_EQ(difference.accounts.moved[0].row, row);
  EXPECT_EQ(difference.accounts.moved[0].from, 8);
  EXPECT_EQ(difference.accounts.moved[0].to, 2);
}

struct Refusal {
  const char* name;
  std::function<void(BookDescription&)> change;
  const char* words;
};

void PrintTo(const Refusal& refusal, std::ostream* out) {
  *out << refusal.name;
}

class GrowthRefusals : public ::testing::TestWithParam<Refusal> {};

TEST_P(GrowthRefusals, NameThePlaceAndWhatIsWanted) {
  StoredDescription before = Shop();
  before.retired_accounts = {500};
  before.retired_fields = {8};
  EXPECT_THAT([&] { CheckGrowth(before, With(GetParam().change), "North.tbk"); },
              FailsWith(FailureNumber::kInvalidArgument, GetParam().words));
}

INSTANTIATE_TEST_SUITE_P(
    OfEachKind, GrowthRefusals,
    ::testing::Values(
        Refusal{"DataLevel", [](BookDescription& book) { book.data_level = kPeriodLevel; },
                "North.tbk: data_level is \"period\"; it cannot change"},
        Refusal{"CalendarKind", [](BookDescription& book) { book.calendar.kind = engine::CalendarKind::k445; },
                "calendar.kind is \"4-4-5\"; it cannot change"},
        Refusal{"FirstDate", [](BookDescription& book) { book.calendar.first_date = Day(2004, 1, 1); },
                "calendar.first_date is \"2004-01-01\"; it cannot change"},
        Refusal{"FirstYear", [](BookDescription& book) { book.calendar.first_year = 2004; },
                "calendar.first_year is 2004"},
        Refusal{"FewerYears", [](BookDescription& book) { book.calendar.years = book.calendar.years_in_use = 1; },
                "calendar.years is 1; it has been 2; years can be added"},
        Refusal{"LowerLimit", [](BookDescription& book) { book.max_accounts = 5000; },
                "max_accounts is 5000; it has been 9999; a limit can grow"},
        Refusal{"RetiredAccount",
                [](BookDescription& book) {
                  book.accounts.push_back({500, "500", ""});
                },
                "accounts[3].number is 500; it was the number of one that has been removed"},
        Refusal{"RetiredField",
                [](BookDescription& book) {
                  book.fields.push_back({8, "", false});
                },
                "fields[3].number is 8; it was the number"},
        Refusal{"NoUtf8", [](BookDescription& book) { book.accounts[0].description = "caf\xE9"; }, "no text in UTF-8"},
        Refusal{"CodeTwice", [](BookDescription& book) { book.accounts[0].code = "200"; },
                "an account above has this code"}),
    [](const auto& parameter) { return Text(parameter.param.name); });

TEST(BookGrowth, GivesFreeNumbersThatWereNeverGiven) {
  StoredDescription stored = Shop();
  EXPECT_EQ(FreeAccountNumber(stored), 206);
  stored.retired_accounts = {300};
  EXPECT_EQ(FreeAccountNumber(stored), 301);
  stored.description.max_accounts = 300;
  EXPECT_EQ(FreeAccountNumber(stored), 1);
  EXPECT_THAT(engine::FreeAccountNumbers(stored, 3), ::testing::ElementsAre(1, 2, 3));
  stored.description.max_fields = 9;
  stored.description.fields = {{1, "", false}, {2, "", false}, {9, "", false}};
  stored.retired_fields = {3};
  EXPECT_EQ(engine::FreeFieldNumber(stored), 4);
  stored.retired_fields = {3, 4, 5, 6, 7, 8};
  EXPECT_EQ(engine::FreeFieldNumber(stored), 0);
}

TEST(BookGrowth, GivesAFieldTheNextSlotAndLeavesThatOfOneThatGoes) {
  const StoredDescription grown = Grown(Shop(), With([](BookDescription& book) {
                                          book.fields.erase(book.fields.begin() + 1);
                                          book.fields.insert(book.fields.begin(), FieldDescription{20, "", false});
                                        }));
  EXPECT_THAT(grown.slot_of_field, ElementsAre(3U, 0U, 2U));
  EXPECT_EQ(grown.slots, 4U);
  EXPECT_EQ(grown.first_slots, 3U);
  EXPECT_THAT(grown.retired_fields, ElementsAre(4));
}

TEST(BookGrowth, TakesAChangeBackButForTheNumbersThatItGave) {
  const BookDescription after = With([](BookDescription& book) {
    book.accounts.erase(book.accounts.begin() + 1);
    book.accounts.push_back({300, "300", "\"quoted\"\n"});
    book.fields.erase(book.fields.begin());
    book.fields.push_back({20, "New", true});
    book.calendar.years = 4;
    book.system_name = "Other";
  });
  const StoredDescription grown = Grown(Shop(), after);
  const StoredDescription back = engine::TakenBack(grown, engine::ChangeText(Shop(), grown), "North.tbk");
  EXPECT_EQ(back.description, ShopDescription());
  EXPECT_EQ(back.slot_of_field, Shop().slot_of_field);
  EXPECT_EQ(back.slots, 4U);
  EXPECT_THAT(back.retired_accounts, ElementsAre(300));
  EXPECT_THAT(back.retired_fields, ElementsAre(20));
}

TEST(BookGrowth, RefusesAChangeThatIsNotOneOfTheLists) {
  const StoredDescription grown = Grown(Shop(), With([](BookDescription& book) { book.accounts.pop_back(); }));
  const Text change = engine::ChangeText(grown, Shop());
  for (const Text& text : {change, Text("{"), Text("{\"accounts\":{\"at\":99,\"before\":[],\"after\":[]}}")}) {
    EXPECT_THAT([&] { static_cast<void>(engine::TakenBack(grown, text, "North.tbk")); },
                FailsWith(FailureNumber::kDeviceError, "North.tbk: the book is damaged"));
  }
}

class GrowingBookTest : public BookFixture {
 protected:
  void SetUp() override {
    book = CreateAndOpen();
    Import(205, 4, 7.5);
    Import(101, 1, 12.5);
  }

  void Import(Long account, Integer field, Double value) {
    book->SetOperationName("import");
    book->BeginRollback(kFirstDay, kFirstDay);
    Put(*book, account, kFirstDay, field, value);
    book->EndRollback();
  }
  void Change(const std::function<void(BookDescription&)>& change) {
    BookDescription after = book->Description();
    change(after);
    book->Grow(after, "change");
  }
  static void RemoveAccount(BookDescription& book) { book.accounts.erase(book.accounts.begin() + 1); }
  static void RemoveField(BookDescription& book) { book.fields.erase(book.fields.begin() + 1); }
  static void AddAccount(BookDescription& book) { book.accounts.push_back({300, "300", "New"}); }
  static void AddField(BookDescription& book) { book.fields.insert(book.fields.begin(), {20, "New", false}); }

  const Date kFirstDay = Day(2003, 1, 1);
  std::unique_ptr<Book> book;
};

TEST_F(GrowingBookTest, TakesFiguresInAFieldThatCame) {
  Change(AddField);
  EXPECT_EQ(book->FieldNumber(1), 20);
  EXPECT_EQ(Get(*book, 101, kFirstDay, 20), 0);
  EXPECT_EQ(Get(*book, 101, kFirstDay, 1), 12.5);
  Import(101, 20, 99);
  book = nullptr;
  book = Open();
  EXPECT_EQ(FiguresOf(*book),
            (FigureMap{{{101, kFirstDay, 1}, 12.5}, {{101, kFirstDay, 20}, 99}, {{205, kFirstDay, 4}, 7.5}}));
}

TEST_F(GrowingBookTest, DoesNotWriteChunksAnewWhenAFieldComes) {
  book->Close();
  const auto checksums = [this] {
    engine::Database database(BookPath(), engine::Database::Mode::kReadOnly);
    return database.Number("SELECT sum(length(figures)) * 1000 + count(*) FROM chunk");
  };
  const std::int64_t before = checksums();
  book = Open();
  Change(AddField);
  book->Close();
  EXPECT_EQ(checksums(), before);
}

TEST_F(GrowingBookTest, TellsWhatFiguresWouldGo) {
  BookDescription after = book->Description();
  RemoveAccount(after);
  RemoveField(after);
  after.accounts.pop_back();
  const auto lost = book->LostBy(after);
  ASSERT_EQ(lost.size(), 2U);
  EXPECT_EQ(lost[0].name, "200");
  EXPECT_EQ(lost[0].figures, 1);
  EXPECT_TRUE(lost[1].is_field);
  EXPECT_EQ(lost[1].number, 4);
}

TEST_F(GrowingBookTest, GivesFiguresBackWithTheUndoOfARemoval) {
  const FigureMap before = FiguresOf(*book);
  Change([](BookDescription& description) {
    RemoveAccount(description);
    RemoveField(description);
  });
  EXPECT_EQ(FiguresOf(*book).size(), 1U);
  EXPECT_FALSE(book->ReadRecord(205, kFirstDay));
  Journal(*book).UndoNewest();
  EXPECT_EQ(FiguresOf(*book), before);
  EXPECT_EQ(book->Description(), ShopDescription());
  EXPECT_THAT(book->Stored().retired_accounts, IsEmpty());
}

TEST_F(GrowingBookTest, LeavesAnEntryOfItsOwnKind) {
  Change(AddAccount);
  const auto entries = Journal(*book).Entries();
  EXPECT_EQ(entries.back().kind, JournalKind::kLists);
  EXPECT_EQ(entries.back().what_ran, "change");
  EXPECT_NE(entries.back().command, entries[1].command);
}

TEST_F(GrowingBookTest, LeavesNoEntryWhereNothingChanges) {
  Change([](BookDescription&) {});
  EXPECT_EQ(Journal(*book).Entries().size(), 2U);
}

TEST_F(GrowingBookTest, UndoesAnImportFromBeforeAChange) {
  Change(RemoveField);
  Change(AddField);
  EXPECT_EQ(Journal(*book).Undo(2).front().id, 2);
  EXPECT_EQ(Journal(*book).Undo(1).front().id, 1);
  Journal(*book).UndoNewest();
  Journal(*book).UndoNewest();
  EXPECT_THAT(FiguresOf(*book), IsEmpty());
}

TEST_F(GrowingBookTest, RefusesToUndoAnImportWhoseAccountIsGone) {
  Change(RemoveAccount);
  Journal(*book).Undo(2);
  EXPECT_THAT(
      [&] { Journal(*book).Undo(1); },
      FailsWith(FailureNumber::kInvalidArgument,
                "journal entry 1 cannot be undone: account number 205, whose figures it changed, has been removed"));
  Journal(*book).Undo(3);
  Journal(*book).Undo(1);
  EXPECT_THAT(FiguresOf(*book), IsEmpty());
}

TEST_F(GrowingBookTest, RefusesToUndoAnAccountThatHasFiguresSince) {
  Change(AddAccount);
  Import(300, 1, 5);
  EXPECT_THAT([&] { Journal(*book).Undo(3); },
              FailsWith(FailureNumber::kInvalidArgument,
                        "journal entry 3 cannot be undone: account 300, which it added, has 1 figure since"));
  Journal(*book).UndoNewest();
  Journal(*book).Undo(3);
  EXPECT_THAT([&] { Change(AddAccount); }, FailsWith(FailureNumber::kInvalidArgument, "is not used again"));
}

TEST_F(GrowingBookTest, RefusesToUndoYearsThatHaveFiguresSince) {
  Change([](BookDescription& description) { description.calendar.years = 3; });
  book->SetOperationName("import");
  book->BeginRollback(kNoDate, kNoDate);
  Put(*book, 101, Day(2005, 6, 1), 1, 3);
  book->EndRollback();
  EXPECT_THAT([&] { Journal(*book).Undo(3); },
              FailsWith(FailureNumber::kInvalidArgument, "the years that it added have 1 figure since"));
}

TEST_F(GrowingBookTest, UndoesChangesOfListsNewestFirst) {
  Change(AddAccount);
  Change(AddField);
  EXPECT_THAT(
      [&] { Journal(*book).Undo(3); },
      FailsWith(FailureNumber::kInvalidArgument, "journal entry 3 cannot be undone while entry 4 stands on it"));
}

TEST_F(GrowingBookTest, IsSoundByItsCheckWhateverWasRemoved) {
  Change([](BookDescription& description) {
    RemoveAccount(description);
    RemoveField(description);
    AddField(description);
  });
  Import(101, 20, 3);
  book->Close();
  const bool deep = true;
  EXPECT_THAT(engine::CheckBook(BookPath(), deep).findings, IsEmpty());
}

TEST_F(GrowingBookTest, TellsWhereTheTextOfAChangeIsDamaged) {
  Change(AddField);
  book->Close();
  Meddle("UPDATE journal_text SET value = '{}'");
  const auto findings = engine::CheckBook(BookPath(), false).findings;
  ASSERT_EQ(findings.size(), 1U);
  EXPECT_EQ(findings[0].entry, 3);
  book = Open();
  EXPECT_THAT([&] { Journal(*book).UndoNewest(); }, FailsWith(FailureNumber::kDeviceError, "does not agree"));
}

TEST_F(GrowingBookTest, LeavesTheFileAsItIsWhereAChangeIsRefused) {
  book->Close();
  for (const char* sample : {"book-v1.tbk", "book-v2.tbk", "book-v3.tbk"}) {
    std::filesystem::copy_file(tallybook::testing::SampleBook(sample), BookPath(),
                               std::filesystem::copy_options::overwrite_existing);
    const Text before = folder.Read("North.tbk");
    book = Open();
    EXPECT_THAT([&] { Change([](BookDescription& description) { description.calendar.years = 1; }); },
                FailsWith(FailureNumber::kInvalidArgument));
    book->Close();
    EXPECT_EQ(folder.Read("North.tbk"), before);
  }
}

TEST_F(GrowingBookTest, GrowsABookOfEachOlderFormat) {
  book->Close();
  for (const char* sample : {"book-v1.tbk", "book-v2.tbk", "book-v3.tbk"}) {
    std::filesystem::copy_file(tallybook::testing::SampleBook(sample), BookPath(),
                               std::filesystem::copy_options::overwrite_existing);
    book = Open();
    const FigureMap before = FiguresOf(*book);
    Change([](BookDescription& description) {
      description.fields.insert(description.fields.begin(), {70, "", false});
    });
    EXPECT_EQ(FiguresOf(*book), before);
    Put(*book, 512, kFirstDay, 70, 1.5);
    book->Close();
    book = Open();
    EXPECT_EQ(FiguresOf(*book).size(), before.size() + 1);
    EXPECT_EQ(Get(*book, 512, kFirstDay, 70), 1.5);
    book->Close();
  }
}

TEST_F(GrowingBookTest, SetsTheValuesOfADescriptionInTheSameCommand) {
  const FigureMap before = FiguresOf(*book);
  Change([this](BookDescription& description) {
    AddAccount(description);
    description.values = {{300, kFirstDay, 4, 7}, {101, kFirstDay, 1, 5}, {205, kFirstDay, 1, 0}};
  });
  FigureMap after = before;
  after[{300, kFirstDay, 4}] = 7;
  after[{101, kFirstDay, 1}] = 5;
  EXPECT_EQ(FiguresOf(*book), after);
  const auto entries = Journal(*book).Entries();
  ASSERT_EQ(entries.size(), 4U);
  EXPECT_EQ(entries[2].kind, JournalKind::kLists);
  EXPECT_EQ(entries[3].kind, JournalKind::kSet);
  EXPECT_EQ(entries[3].first, kFirstDay);
  EXPECT_EQ(entries[2].command, entries[3].command);
  EXPECT_EQ(Journal(*book).UndoNewest().size(), 2U);
  EXPECT_EQ(book->Description(), ShopDescription());
  EXPECT_EQ(FiguresOf(*book), before);
}

TEST_F(GrowingBookTest, LeavesNoEntryForValuesThatItHas) {
  Change([this](BookDescription& description) {
    description.values = {{101, kFirstDay, 1, 12.5}, {7, kFirstDay, 1, 0}};
  });
  EXPECT_EQ(Journal(*book).Entries().size(), 2U);
}

TEST_F(GrowingBookTest, TakesBackNothingOfACommandWhoseListsHaveFiguresSince) {
  Change([this](BookDescription& description) {
    AddAccount(description);
    description.values = {{101, kFirstDay, 1, 5}};
  });
  Put(*book, 300, kFirstDay + 1, 4, 8);
  book->Commit();
  const FigureMap figures = FiguresOf(*book);
  // What the book wrote by itself is the newest of all, and can never be taken back.
  EXPECT_THAT([&] { Journal(*book).UndoNewest(); }, FailsWith(FailureNumber::kInvalidArgument, "kept no figures"));
  EXPECT_THAT([&] { Journal(*book).Undo(3); }, FailsWith(FailureNumber::kInvalidArgument, "has 1 figure since"));
  EXPECT_EQ(FiguresOf(*book), figures);
  book->Close();
  book = Open();
  EXPECT_EQ(FiguresOf(*book), figures);
  EXPECT_EQ(book->AccountPosition(300), 4);
}

TEST_F(GrowingBookTest, TellsWhatItsListsWillBeAfterAnUndo) {
  Change([](BookDescription& description) { description.accounts[0].code = "110"; });
  Change([](BookDescription& description) { description.accounts[0].code = "120"; });
  EXPECT_EQ(Journal(*book).DescriptionAfterUndo({}).accounts[0].code, "110");
  EXPECT_EQ(Journal(*book).DescriptionAfterUndo(4).accounts[0].code, "110");
  EXPECT_THAT([&] { (void)Journal(*book).DescriptionAfterUndo(3); }, FailsWith(FailureNumber::kInvalidArgument));
  EXPECT_EQ(book->Description().accounts[0].code, "120");
}

TEST_F(GrowingBookTest, IsAsItWasWhereAChangeFailsHalfWay) {
  const FigureMap figures = FiguresOf(*book);
  book->Close();
  Meddle("CREATE TRIGGER no_marks BEFORE INSERT ON journal_chunk BEGIN SELECT RAISE(ABORT, 'no'); END");
  book = Open();
  EXPECT_THAT(
      [&] {
        Change([this](BookDescription& description) {
          AddField(description);
          description.values = {{101, kFirstDay, 20, 7}, {101, kFirstDay, 1, 8}};
        });
      },
      FailsWith(FailureNumber::kDeviceError));
  EXPECT_EQ(book->Description(), ShopDescription());
  EXPECT_EQ(Get(*book, 101, kFirstDay, 1), 12.5);
  EXPECT_EQ(FiguresOf(*book), figures);
  EXPECT_EQ(Journal(*book).Entries().size(), 2U);
}

TEST_F(GrowingBookTest, RefusesToChangeABookThatIsOpenToRead) {
  book->Close();
  book = OpenToRead();
  EXPECT_THAT([&] { Change(AddField); }, FailsWith(FailureNumber::kPermissionDenied));
}

}  // namespace
}  // namespace tallybook::testing
