#include <filesystem>
#include <vector>

#include "tallybook/engine/BookCheck.h"
#include "tallybook/engine/BookSalvage.h"
#include "tallybook/engine/Journal.h"
#include "tallybook/engine/JournalNotes.h"
#include "tallybook/engine/LoginName.h"
#include "tests/tallybook/engine/BookFixture.h"
#include "tests/tallybook/engine/SampleBook.h"

namespace tallybook::testing {
namespace {

using engine::Book;
using engine::EntryFile;
using engine::EntryNotes;
using engine::Journal;
using engine::JournalEntry;
using engine::JournalNotes;
using engine::JournalState;
using ::testing::Contains;
using ::testing::Field;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::SizeIs;

EntryNotes Notes() {
  const std::vector<std::byte> xxh3(16, std::byte{0xAB});
  const std::vector<std::byte> sha256(32, std::byte{0xCD});
  return {.files = {{.path = "in/north.QDX", .size = 1234, .xxh3 = xxh3, .sha256 = sha256},
                    {.path = "in/café.csv", .size = {}, .xxh3 = {}, .sha256 = {}}},
          .facts = R"({"math":"add"})"};
}

class JournalNotesTest : public BookFixture {
 protected:
  void SetUp() override { book = CreateAndOpen(); }

  void Import(const EntryNotes& notes) {
    book->SetOperationName("import");
    book->SetNotes(notes);
    book->BeginRollback(Day(2003, 5, 5), Day(2003, 5, 5));
    Put(*book, 101, Day(2003, 5, 5), 1, next_++);
    book->EndRollback();
  }

  EntryNotes Kept(Long id) {
    for (const JournalEntry& entry : Journal(*book).Entries()) {
      if (entry.id == id) return JournalNotes(*book).Of(entry);
    }
    ADD_FAILURE() << "no entry " << id;
    return {};
  }

  void Reopen() {
    book.reset();
    book = Open();
  }

  std::unique_ptr<Book> book;
  Double next_ = 1;
};

TEST_F(JournalNotesTest, FindsOneEntryWhateverBecameOfTheNotesOfOthers) {
  Import(Notes());
  Import(Notes());
  JournalNotes(*book).SaveDue(1, "due");
  book->Close();
  Meddle("UPDATE journal_text SET value = 'other' WHERE entry = 2 AND name = 'facts'");
  book = Open();
  const auto found = JournalNotes(*book).Find(1);
  ASSERT_TRUE(found);
  EXPECT_EQ(found->entry.what_ran, "import");
  EXPECT_EQ(found->who, engine::LoginName());
  EXPECT_EQ(found->notes, Notes());
  EXPECT_EQ(found->due, "due");
  EXPECT_THAT([&] { (void)JournalNotes(*book).Find(2); }, FailsWith(FailureNumber::kDeviceError, "entry 2"));
  EXPECT_FALSE(JournalNotes(*book).Find(9));
}

TEST_F(JournalNotesTest, GoWithTheEntriesOfTheirCommandAndNoOther) {
  Import(Notes());
  Import({});
  Reopen();
  EXPECT_EQ(Kept(1), Notes());
  EXPECT_TRUE(Kept(2).Empty());
}

TEST_F(JournalNotesTest, AreThereFromTheFirstFigureOn) {
  book->SetOperationName("import");
  book->SetNotes(Notes());
  book->BeginRollback(Day(2003, 5, 5), Day(2003, 5, 5));
  Put(*book, 101, Day(2003, 5, 5), 1, 7);
  book->Commit();
  EXPECT_EQ(book->LastEntry(), 1);
  book->Abandon();
  Reopen();
  ASSERT_THAT(Journal(*book).Entries(), SizeIs(1));
  EXPECT_EQ(Journal(*book).Entries()[0].state, JournalState::kOpen);
  EXPECT_EQ(Kept(1), Notes());
}

TEST_F(JournalNotesTest, TakeThePlaceOfThoseBefore) {
  Import(Notes());
  EntryNotes later = Notes();
  later.files.pop_back();
  later.facts = R"({"result":"done"})";
  JournalNotes(*book).Save(1, later);
  Reopen();
  EXPECT_EQ(Kept(1), later);
  JournalNotes(*book).Save(1, {});
  EXPECT_TRUE(Kept(1).Empty());
  EXPECT_THAT(engine::CheckBook(BookPath(), false).findings, IsEmpty());
}

TEST_F(JournalNotesTest, OfAnEntryThatIsOpenAreKeptWhenItIsClosed) {
  book->SetOperationName("import");
  book->BeginRollback(Day(2003, 5, 5), Day(2003, 5, 5));
  Put(*book, 101, Day(2003, 5, 5), 1, 7);
  book->Commit();
  JournalNotes(*book).Save(1, Notes());
  Put(*book, 205, Day(2003, 5, 5), 1, 7);
  book->EndRollback();
  Reopen();
  EXPECT_EQ(Kept(1), Notes());
}

TEST_F(JournalNotesTest, OfAChangeOfListsLeaveWhatItChanged) {
  engine::BookDescription after = book->Description();
  after.fields.push_back({30, "Waste", false});
  book->Grow(after, "field add");
  JournalNotes(*book).Save(1, Notes());
  EXPECT_EQ(Kept(1), Notes());
  Reopen();
  Journal(*book).Undo(1);
  EXPECT_EQ(book->FieldPosition(30), 0);
}

TEST_F(JournalNotesTest, CannotBeSavedForAnEntryThatIsNone) {
  EXPECT_THAT([&] { JournalNotes(*book).Save(1, Notes()); }, FailsWith(FailureNumber::kInvalidArgument, "no entry 1"));
  Import({});
  book->Close();
  const auto look = OpenToRead();
  EXPECT_THAT([&] { JournalNotes(*look).Save(1, Notes()); }, FailsWith(FailureNumber::kPermissionDenied, "to read"));
}

TEST_F(JournalNotesTest, OfSeveralEntriesAreSavedTogetherOrNotAtAll) {
  Import({});
  Import({});
  EXPECT_THAT(
      [&] {
        JournalNotes(*book).Save({{1, Notes()}, {9, Notes()}});
      },
      FailsWith(FailureNumber::kInvalidArgument, "no entry 9"));
  EXPECT_TRUE(Kept(1).Empty());
  EntryNotes other = Notes();
  other.facts = R"({"result":"other"})";
  JournalNotes(*book).Save({{1, Notes()}, {2, other}});
  Reopen();
  EXPECT_EQ(Kept(1), Notes());
  EXPECT_EQ(Kept(2), other);
}

TEST_F(JournalNotesTest, TellWhoRanEachCommand) {
  Import({});
  Journal(*book).UndoNewest();
  EXPECT_THAT(JournalNotes(*book).Users(),
              ::testing::ElementsAre(std::pair{1, engine::LoginName()}, std::pair{2, engine::LoginName()}));
  EXPECT_FALSE(engine::LoginName().empty());
}

TEST_F(JournalNotesTest, TellWhatIsStillDueUntilThatIsTakenAway) {
  Import(Notes());
  Import({});
  Import({});
  EXPECT_THAT(JournalNotes(*book).Due(), IsEmpty());
  JournalNotes(*book).SaveDue(3, "three");
  JournalNotes(*book).SaveDue(1, "other");
  JournalNotes(*book).SaveDue(1, "one");
  Reopen();
  EXPECT_THAT(JournalNotes(*book).Due(), ::testing::ElementsAre(std::pair{1, "one"}, std::pair{3, "three"}));
  EXPECT_EQ(Kept(1), Notes());
  JournalNotes(*book).SaveDue(1, "");
  JournalNotes(*book).Save(3, Notes());
  Reopen();
  EXPECT_THAT(JournalNotes(*book).Due(), ::testing::ElementsAre(std::pair{3, "three"}));
  JournalNotes(*book).SaveDue(3, "");
  EXPECT_EQ(Kept(3), Notes());
  EXPECT_THAT(engine::CheckBook(BookPath(), true).findings, IsEmpty());
}

TEST_F(JournalNotesTest, OfWhatIsDueAreNotTakenWhereTheyAreDamaged) {
  Import({});
  JournalNotes(*book).SaveDue(1, "one");
  book->Close();
  Meddle("UPDATE journal_text SET value = 'two'");
  EXPECT_THAT(engine::CheckBook(BookPath(), false).findings, SizeIs(1));
  book = Open();
  EXPECT_THAT([&] { (void)JournalNotes(*book).Due(); },
              FailsWith(FailureNumber::kDeviceError, "due of journal entry 1"));
}

// Each item of the notes is changed, and each row taken away.
TEST_F(JournalNotesTest, AreNotTakenWhereTheyAreDamaged) {
  Import(Notes());
  book->Close();
  const std::string bytes = folder.Read("North.tbk");
  for (const char* damage :
       {"UPDATE journal_file SET path = 'in/south.QDX' WHERE position = 1", "UPDATE journal_file SET size = size + 1",
        "UPDATE journal_file SET size = 0 WHERE position = 2",
        "UPDATE journal_file SET xxh3 = sha256 WHERE position = 1",
        "UPDATE journal_file SET sha256 = NULL WHERE position = 1", "DELETE FROM journal_file WHERE position = 2",
        "DELETE FROM journal_file", "UPDATE journal_text SET value = '{}'", "UPDATE journal_text SET name = 'fact'",
        "DELETE FROM journal_text", "UPDATE journal SET notes = 2", "UPDATE journal SET notes_sum = 0"}) {
    SCOPED_TRACE(damage);
    folder.Write("North.tbk", bytes);
    Meddle(damage);
    EXPECT_THAT(engine::CheckBook(BookPath(), false).findings, Contains(Field(&engine::BookFinding::entry, 1)));
    EXPECT_THAT(
        [&] {
          const auto look = OpenToRead();
          (void)JournalNotes(*look).Of(Journal(*look).Entries().at(0));
        },
        FailsWith(FailureNumber::kDeviceError, "journal entry 1"));
  }
  folder.Write("North.tbk", bytes);
  Meddle("UPDATE command SET who = 'nobody'");
  EXPECT_THAT([&] { (void)JournalNotes(*OpenToRead()).Users(); }, FailsWith(FailureNumber::kDeviceError, "command 1"));
}

TEST_F(JournalNotesTest, AreSalvagedWithTheirEntriesWhereTheyAreWhole) {
  Import(Notes());
  Import(Notes());
  book->Close();
  Meddle("UPDATE journal_file SET size = 5 WHERE entry = 1 AND position = 1");
  const bool as_it_reads = false;
  const engine::SalvageResult result = engine::SalvageBook(BookPath(), folder.Path("New.tbk"), as_it_reads);
  EXPECT_THAT(result.lost, Contains(Field(&engine::BookFinding::what, HasSubstr("which files this entry read"))));
  EXPECT_EQ(result.entries, 2);
  book = Book::Open(folder.Path("New.tbk"), app);
  EXPECT_TRUE(Kept(1).Empty());
  EXPECT_EQ(Kept(2), Notes());
  EXPECT_EQ(JournalNotes(*book).Users().at(1), engine::LoginName());
  EXPECT_EQ(Journal(*book).Undo(2).size(), 1U);
}

TEST_F(JournalNotesTest, OfOlderBooksAreEmptyAndCanBeAddedOnceTheyAreBroughtUpToDate) {
  book.reset();
  for (const char* sample : {"book-v1.tbk", "book-v2.tbk", "book-v3.tbk"}) {
    SCOPED_TRACE(sample);
    std::filesystem::copy_file(tallybook::testing::SampleBook(sample), BookPath(),
                               std::filesystem::copy_options::overwrite_existing);
    {
      const auto look = OpenToRead();
      for (const JournalEntry& entry : Journal(*look).Entries()) EXPECT_TRUE(JournalNotes(*look).Of(entry).Empty());
      for (const auto& [command, user] : JournalNotes(*look).Users()) EXPECT_EQ(user, "");
    }
    book = Open();
    const auto entries = Journal(*book).Entries();
    JournalNotes(*book).Save(entries.back().id, Notes());
    EXPECT_EQ(Kept(entries.back().id), Notes());
    EXPECT_EQ(Journal(*book).Entries().size(), entries.size());
    book->Close();
    EXPECT_THAT(engine::CheckBook(BookPath(), true).findings, IsEmpty());
    book.reset();
  }
}

}  // namespace
}  // namespace tallybook::testing
