#include "tallybook/application/ImportRecorder.h"
#include "tallybook/engine/JournalNotes.h"
#include "tests/tallybook/engine/BookFixture.h"

namespace tallybook::application {
namespace {

using testing::Day;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

class ImportRecorderTest : public testing::BookFixture {
 protected:
  void SetUp() override {
    book = CreateAndOpen();
    folder.Write("north.QDX", "abc");
    folder.Write("south.QDX", "abcd");
  }

  void Begin(ImportRecorder& recorder, const Text& name) { recorder.BeginFile(name, folder.Path(name), Way()); }
  static EntryFacts Way() {
    EntryFacts way;
    way.kind = "qdx";
    return way;
  }
  void Write() {
    book->BeginRollback(Day(2003, 5, 5), Day(2003, 5, 5));
    testing::Put(*book, 101, Day(2003, 5, 5), 1, next_++);
    book->EndRollback();
  }
  std::vector<engine::NotedEntry> Entries() { return engine::JournalNotes(*book).Entries(); }

  std::unique_ptr<engine::Book> book;
  Double next_ = 1;
};

TEST_F(ImportRecorderTest, KeepsForEachFileItsOwnEntriesAndOutcome) {
  Write();
  book->SetOperationName("import");
  ImportRecorder recorder(*book);
  Begin(recorder, "north.QDX");
  Write();
  Begin(recorder, "south.QDX");
  Begin(recorder, "missing.QDX");
  Write();
  Write();
  ASSERT_THAT(recorder.Runs(), SizeIs(3));
  for (ImportRecorder::Run* run : recorder.Runs()) run->facts.result = "of " + run->path;
  recorder.Save();
  const auto entries = Entries();
  ASSERT_THAT(entries, SizeIs(4));
  EXPECT_TRUE(entries[0].notes.Empty());
  EXPECT_THAT(entries[1].notes.files, SizeIs(1));
  EXPECT_EQ(entries[1].notes.files[0].path, "north.QDX");
  EXPECT_EQ(entries[1].notes.files[0].size, 3);
  EXPECT_EQ(HexText(entries[1].notes.files[0].sha256),
            "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
  EXPECT_EQ(FactsOf(entries[1].notes.facts).result, "of north.QDX");
  for (const std::size_t index : {2U, 3U}) {
    EXPECT_EQ(entries[index].notes.files[0].path, "missing.QDX");
    EXPECT_FALSE(entries[index].notes.files[0].size);
    EXPECT_THAT(entries[index].notes.files[0].xxh3, IsEmpty());
    EXPECT_EQ(FactsOf(entries[index].notes.facts).result, "of missing.QDX");
  }
}

TEST_F(ImportRecorderTest, HasNameAndSizeInTheEntryFromItsFirstFigureOn) {
  book->SetOperationName("import");
  ImportRecorder recorder(*book);
  Begin(recorder, "north.QDX");
  Write();
  book->Abandon();
  book = Open();
  ASSERT_THAT(Entries(), SizeIs(1));
  EXPECT_EQ(Entries()[0].notes.files[0].path, "north.QDX");
  EXPECT_EQ(Entries()[0].notes.files[0].size, 3);
  EXPECT_EQ(FactsOf(Entries()[0].notes.facts), Way());
}

TEST_F(ImportRecorderTest, CountsFiguresReadAsThoseAppliedNotMappedAndRefused) {
  QDXFileImport file;
  file.file = "north.QDX";
  file.stored = true;
  file.done = true;
  file.read = 10;
  file.applied = 7;
  file.not_mapped = 2;
  file.refused = 1;
  file.zeroed = 12;
  file.accounts = {1, 2};
  file.body_end = BodyEnd::kMarked;
  EntryFacts facts = Way();
  AddOutcome(facts, file, std::nullopt);
  EXPECT_EQ(facts.counts.read, 10);
  EXPECT_EQ(facts.counts.applied, 7);
  EXPECT_EQ(facts.counts.not_mapped, 2);
  EXPECT_EQ(facts.counts.refused, 1);
  EXPECT_EQ(facts.counts.zeroed, 12);
  EXPECT_EQ(facts.counts.accounts, 2);
  EXPECT_EQ(facts.result, "imported");
  EXPECT_THAT(facts.warnings, IsEmpty());
}

TEST_F(ImportRecorderTest, TellsWhyAnImportEndedAndWhatItWarnedOf) {
  QDXFileImport file;
  file.file = "north.QDX";
  EntryFacts failed = Way();
  AddOutcome(failed, file, StopReason{.words = "the disk is full"});
  EXPECT_EQ(failed.result, "not imported: the disk is full");
  file.stored = true;
  file.done = true;
  file.stays = StopReason{.words = "it is in use"};
  EntryFacts stays = Way();
  AddOutcome(stays, file, std::nullopt);
  EXPECT_EQ(stays.result, "imported");
  EXPECT_THAT(stays.warnings, ::testing::Contains(::testing::HasSubstr("it is in use")));
}

TEST_F(ImportRecorderTest, CountsWhatATextImportReached) {
  TextImportTally tally;
  tally.records = 5;
  tally.read = 8;
  tally.applied = 6;
  tally.accounts = {1, 2};
  tally.fields = {4};
  tally.dates = {Day(2003, 5, 5)};
  tally.stays = StopReason{.words = "it is in use"};
  EntryFacts facts;
  AddOutcome(facts, tally, true);
  EXPECT_EQ(facts.counts.records, 5);
  EXPECT_EQ(facts.counts.accounts, 2);
  EXPECT_EQ(facts.counts.fields, 1);
  EXPECT_EQ(facts.counts.dates, 1);
  EXPECT_EQ(facts.counts.read, 8);
  EXPECT_EQ(facts.counts.applied, 6);
  EXPECT_EQ(facts.counts.refused, 2);
  EXPECT_EQ(facts.result, "imported");
  EXPECT_THAT(facts.warnings, ElementsAre("the file keeps its name: it is in use"));
}

TEST_F(ImportRecorderTest, NamesTheMathOfAnImport) {
  EXPECT_EQ(MathWord(1), "add");
  EXPECT_EQ(MathWord(2), "subtract");
  EXPECT_EQ(MathWord(3), "replace");
  EXPECT_EQ(MathWord(4), "zero");
  EXPECT_EQ(MathWord(9), "");
}

}  // namespace
}  // namespace tallybook::application
