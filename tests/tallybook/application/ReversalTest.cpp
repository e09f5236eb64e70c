#include <gmock/gmock.h>

#include "tallybook/application/ImportRecorder.h"
#include "tallybook/application/ImportWays.h"
#include "tallybook/application/Reversal.h"
#include "tallybook/engine/JournalNotes.h"
#include "tests/tallybook/engine/BookFixture.h"

namespace tallybook::application {
namespace {

using engine::JournalKind;
using testing::Day;
using ::testing::ElementsAre;
using testing::FailsWith;
using ::testing::HasSubstr;

constexpr auto kAdds = static_cast<Integer>(eMath::mAdd);
constexpr auto kSubtracts = static_cast<Integer>(eMath::mSubtract);
constexpr auto kReplaces = static_cast<Integer>(eMath::mReplace);

engine::JournalEntry EntryOf(JournalKind kind) {
  engine::JournalEntry entry;
  entry.id = 3;
  entry.kind = kind;
  return entry;
}

Text WhyNot(const EntryFacts& facts) {
  return WhyNotReversed(EntryOf(JournalKind::kImport), facts);
}

EntryFacts CsvThatTold(Integer math) {
  EntryFacts facts = WayOfCsv(eMath::mDefault, {});
  TextImportTally tally;
  tally.math = math;
  AddOutcome(facts, tally, true);
  return facts;
}

TEST(Reversal, IsOfExchangeFilesThatWereAddedOrSubtracted) {
  EXPECT_EQ(WhyNot(WayOfDefinition(1, "North", kAdds)), "");
  EXPECT_EQ(WhyNot(WayOfDefinition(1, "North", kSubtracts)), "");
  EXPECT_EQ(WhyNot(WayOfDefinition(1, "North", static_cast<Integer>(eMath::mDefault))), "");
  EXPECT_EQ(WhyNot(WayOfDefinition(1, "North", kReplaces)),
            "journal entry 3 replaced figures, so there are no amounts to take out");
  EXPECT_EQ(WhyNot(WayOfDefinition(1, "North", kZeroOnly)),
            "journal entry 3 zeroed figures, so there are no amounts to take out");
}

TEST(Reversal, GoesByTheHeaderOfAFileThatToldItsOwnMath) {
  EXPECT_EQ(WhyNot(CsvThatTold(kAdds)), "");
  EXPECT_EQ(WhyNot(CsvThatTold(kSubtracts)), "");
  EXPECT_THAT(WhyNot(CsvThatTold(kReplaces)), HasSubstr("replaced figures"));
  EXPECT_EQ(WhyNot(CsvThatTold(0)), "") << "it ended before its header was read";
}

TEST(Reversal, IsNotOfTextFilesThatReplacedOrClearedBefore) {
  EXPECT_EQ(WhyNot(WayOfCsv(eMath::mAdd, {})), "");
  EXPECT_THAT(WhyNot(WayOfCsv(eMath::mReplace, {})), HasSubstr("replaced figures"));
  EXPECT_THAT(WhyNot(WayOfCsv(eMath::mAdd, {5})), HasSubstr("cleared fields before it added"));
  EXPECT_EQ(WhyNot(WayOfDelimited({.math = eMath::mSubtract})), "");
  EXPECT_THAT(WhyNot(WayOfDelimited({.math = eMath::mReplace})), HasSubstr("replaced figures"));
}

TEST(Reversal, IsOfImportsAlone) {
  EXPECT_EQ(WhyNot({}), "") << "an import of which nothing is told";
  EXPECT_EQ(WhyNotReversed(EntryOf(JournalKind::kSet), {}),
            "journal entry 3 is no import, so there are no amounts that it added");
}

class ReversalOfBook : public testing::BookFixture {
 protected:
  void Import(const EntryFacts& facts) {
    book->BeginRollback(Day(2003, 5, 5), Day(2003, 5, 5));
    testing::Put(*book, 101, Day(2003, 5, 5), 1, next_++);
    book->EndRollback();
    if (facts.kind.empty()) return;
    engine::JournalNotes(*book).Save(book->LastEntry(), {.files = {}, .facts = TextOfFacts(facts)});
  }
  [[nodiscard]] bool MayBe(std::size_t index) {
    return MayBeReversed(*book, {engine::Journal(*book).Entries()[index]});
  }

  std::unique_ptr<engine::Book> book = CreateAndOpen();

 private:
  Double next_ = 1;
};

TEST_F(ReversalOfBook, ReadsWhatEachEntryTells) {
  Import(WayOfDefinition(1, "North", kAdds));
  Import(WayOfDefinition(1, "North", kReplaces));
  Import({});
  EXPECT_TRUE(MayBe(0));
  EXPECT_FALSE(MayBe(1));
  EXPECT_TRUE(MayBe(2));
  NeedReversible(*book, {.id = 1});
  EXPECT_THAT([&] { NeedReversible(*book, {.id = 2}); },
              FailsWith(FailureNumber::kInvalidArgument, "journal entry 2 replaced figures"));
  EXPECT_THAT([&] { NeedReversible(*book, {.id = 9}); }, FailsWith(FailureNumber::kInvalidArgument, "no entry 9"));
  NeedReversible(*book, {.id = 3});
}

TEST_F(ReversalOfBook, SaysOfWhichEntriesNobodyKnowsWhetherTheyAdded) {
  Import(WayOfDefinition(1, "North", kSubtracts));
  Import({});
  EXPECT_THAT(ReversedUntold(*book, engine::Journal(*book).Entries()),
              ElementsAre(HasSubstr("journal entry 2 does not tell whether it added or replaced")));
}

}  // namespace
}  // namespace tallybook::application
