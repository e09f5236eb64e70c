#include "tallybook/application/UndoWords.h"
#include "tests/tallybook/engine/BookFixture.h"

namespace tallybook::application {
namespace {

using engine::JournalEntry;
using engine::JournalKind;
using engine::UndoOutcome;
using engine::UndoWay;
using testing::Day;
using ::testing::ElementsAre;

JournalEntry Entry(Long id, JournalKind kind, const Text& what_ran) {
  JournalEntry entry;
  entry.id = id;
  entry.kind = kind;
  entry.what_ran = what_ran;
  return entry;
}

UndoOutcome Outcome(bool done, std::vector<JournalEntry> undone, long long changed_since) {
  UndoOutcome outcome;
  outcome.done = done;
  outcome.undone = std::move(undone);
  outcome.changed_since = changed_since;
  return outcome;
}

const JournalEntry kImport = Entry(3, JournalKind::kImport, "import qdx #1");
const JournalEntry kSet = Entry(2, JournalKind::kSet, "set 100 2004-02-03 1 8");

class UndoWordsTest : public testing::BookFixture {};

TEST(UndoWords, NameTheEntryAndWhatRan) {
  EXPECT_EQ(UndoneWords(kSet), "Undone: journal entry 2, set 100 2004-02-03 1 8.");
  EXPECT_EQ(UndoneWords(Entry(4, JournalKind::kImport, "")), "Undone: journal entry 4.");
}

TEST(UndoWords, OfFiguresChangedSinceAreNoneWhereThereAreNone) {
  EXPECT_EQ(ChangedSinceWords(Outcome(true, {kSet}, 0), UndoWay::kSkip), "");
}

TEST(UndoWords, OfAnUndoThatIsNotDoneCountEntriesAndFigures) {
  EXPECT_EQ(ChangedSinceWords(Outcome(false, {kSet}, 1), UndoWay::kExact),
            "journal entry 2 is not undone: 1 figure that it changed has been changed since");
  EXPECT_EQ(ChangedSinceWords(Outcome(false, {kImport, kSet}, 2), UndoWay::kExact),
            "journal entries 3, 2 are not undone: 2 figures that they changed have been changed since");
}

TEST(UndoWords, OfAnUndoThatIsDoneSayWhatBecameOfTheFigures) {
  EXPECT_EQ(ChangedSinceWords(Outcome(true, {kSet}, 1), UndoWay::kSkip),
            "1 figure that it changed has been changed since, and stays as it is");
  EXPECT_EQ(ChangedSinceWords(Outcome(true, {kImport, kSet}, 2), UndoWay::kSkip),
            "2 figures that they changed have been changed since, and stay as they are");
  EXPECT_EQ(ChangedSinceWords(Outcome(true, {kSet}, 1), UndoWay::kForce),
            "1 figure that it changed has been changed since, and was put back as well");
  EXPECT_EQ(ChangedSinceWords(Outcome(true, {kSet}, 7), UndoWay::kForce),
            "7 figures that it changed have been changed since, and were put back as well");
}

TEST(UndoWords, SayWhyAnEntryCannotBeUndone) {
  std::vector<JournalEntry> entries = {
      Entry(1, JournalKind::kImport, "import csv day.csv"), Entry(2, JournalKind::kUndo, "journal undo"),
      Entry(3, JournalKind::kLists, "account add"), Entry(4, JournalKind::kUndo, "journal undo")};
  entries[0].state = engine::JournalState::kUndone;
  entries[1].undoes = 1;
  entries[3].undoes = 3;
  EXPECT_EQ(WhyNotUndone(entries, entries[0]), "This entry has been undone already.");
  EXPECT_EQ(WhyNotUndone(entries, entries[1]), "");
  EXPECT_EQ(WhyNotUndone(entries, entries[2]), "");
  EXPECT_EQ(WhyNotUndone(entries, entries[3]), "This entry took a change of lists back; it cannot be undone itself.");
  entries[2].keeps_images = false;
  EXPECT_EQ(WhyNotUndone(entries, entries[2]), "This entry kept nothing from before, so it cannot be undone.");
}

TEST(UndoWords, AskWithTheEntriesAndWhatGoesBack) {
  UndoOutcome outcome = Outcome(false, {kImport}, 0);
  outcome.figures = 1200;
  EXPECT_EQ(UndoQuestion(outcome),
            "Undo journal entry 3, import qdx #1?\r\n\r\n1,200 figures go back to what they were before. What was "
            "changed elsewhere since then stays.");
  outcome.undone.push_back(Entry(2, JournalKind::kLists, ""));
  outcome.figures = 1;
  EXPECT_EQ(UndoQuestion(outcome),
            "Undo journal entries 3, import qdx #1; 2?\r\n\r\nThe lists go back to what they were before. 1 figure "
            "goes back to what it was before. What was changed elsewhere since then stays.");
}

TEST_F(UndoWordsTest, TellAFigureInCells) {
  const auto book = CreateAndOpen();
  const engine::ChangedSince figure = {.entry = 2,
                                       .account_number = 205,
                                       .date = Day(2003, 5, 6),
                                       .field_number = 4,
                                       .before = 0.1,
                                       .left = 8,
                                       .now = -3.25,
                                       .later = 3};
  EXPECT_THAT(CellsOf(*book, {kSet, kImport}, figure),
              ElementsAre("200", "2003-05-06", "4", "0.1", "8", "-3.25", "entry 3, import qdx #1"));
}

TEST_F(UndoWordsTest, LeaveTheCellsEmptyOfWhatIsNotKnown) {
  const auto book = CreateAndOpen();
  engine::ChangedSince figure;
  figure.account_number = 999;
  figure.date = Day(2003, 5, 6);
  figure.field_number = 4;
  figure.later = 9;
  EXPECT_THAT(CellsOf(*book, {kSet, Entry(9, JournalKind::kImport, "")}, figure),
              ElementsAre("999", "2003-05-06", "4", "0", "", "0", "entry 9"));
  EXPECT_EQ(CellsOf(*book, {kSet}, figure).back(), "");
}

}  // namespace
}  // namespace tallybook::application
