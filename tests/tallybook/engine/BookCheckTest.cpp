#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <vector>

#include "tallybook/engine/BookCheck.h"
#include "tallybook/engine/BookFormat.h"
#include "tests/tallybook/engine/FlipTrial.h"
#include "tests/tallybook/engine/SampleBook.h"

namespace tallybook::testing {
namespace {

using engine::BookCheckResult;
using engine::BookFinding;
using engine::CheckBook;
using engine::FindingKind;
using ::testing::AllOf;
using ::testing::ElementsAre;
using ::testing::Field;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

constexpr bool kDeep = true;
constexpr bool kNotDeep = false;

auto Finding(FindingKind kind, const Text& what) {
  return AllOf(Field(&BookFinding::kind, kind), Field(&BookFinding::what, HasSubstr(what)));
}

// Three chunks an account and more; images of the café's.
class BookCheckTest : public BookFixture {
 protected:
  void SetUp() override {
    auto description = ShopDescription();
    for (Integer number = 20; number < 60; ++number) description.fields.push_back({number, "", false});
    for (const Long account : {Long{101}, Long{205}}) {
      for (int month = 1; month <= 12; ++month) description.values.push_back({account, Day(2003, month, 5), 1, 1.5});
    }
    const auto book = CreateAndOpen(description);
    book->BeginRollback(Day(2003, 3, 5), Day(2003, 3, 5));
    Put(*book, 205, Day(2003, 3, 5), 1, 9);
    book->EndRollback();
  }

  std::vector<BookFinding> Findings(bool deep = kDeep) { return CheckBook(BookPath(), deep).findings; }
};

TEST_F(BookCheckTest, FindsNothingInABookThatIsWhole) {
  const BookCheckResult result = CheckBook(BookPath(), kDeep);
  EXPECT_THAT(result.findings, IsEmpty());
  EXPECT_EQ(result.format, engine::kBookFormat);
  EXPECT_GT(result.chunks, 10);
  EXPECT_EQ(result.entries, 1);
  EXPECT_EQ(result.images, 1);
}

TEST_F(BookCheckTest, TellsThatAnotherBookInTheFolderHasTheSameNameButForCase) {
  const std::filesystem::path book(BookPath());
  Text name = book.filename().string();
  name.front() = static_cast<char>(name.front() ^ ('a' ^ 'A'));
  std::filesystem::copy_file(book, book.parent_path() / name);
  EXPECT_THAT(Findings(kNotDeep), ElementsAre(Finding(FindingKind::kName, name)));
}

TEST_F(BookCheckTest, NamesAccountAndDatesOfEachChunkThatIsDamaged) {
  Meddle("UPDATE chunk SET figures = x'02' || substr(figures, 2) || x'00' WHERE key IN (101 << 24, (205 << 24) + 1)");
  const auto findings = Findings(kNotDeep);
  ASSERT_THAT(findings, ElementsAre(Finding(FindingKind::kChunk, "do not agree with their checksum"),
                                    Finding(FindingKind::kChunk, "do not agree with their checksum")));
  EXPECT_EQ(findings[0].account, 101);
  EXPECT_EQ(findings[0].code, "100");
  EXPECT_EQ(findings[0].first, Day(2003, 1, 1));
  EXPECT_EQ(findings[1].account, 205);
  EXPECT_GT(findings[1].first, Day(2003, 1, 5));
  EXPECT_GT(findings[1].last, findings[1].first);
}

TEST_F(BookCheckTest, NamesTheDatesOfAChunkThatIsMissing) {
  Meddle("DELETE FROM chunk WHERE key = (101 << 24) + 1");
  const auto findings = Findings(kNotDeep);
  ASSERT_THAT(findings, ElementsAre(Finding(FindingKind::kChunk, "these figures are missing")));
  EXPECT_EQ(findings[0].account, 101);
  EXPECT_GT(findings[0].first, Day(2003, 1, 5));
}

TEST_F(BookCheckTest, CountsWhatIsMissingOfAnAccountWhereItIsMore) {
  Meddle("DELETE FROM chunk WHERE key BETWEEN (101 << 24) + 1 AND (101 << 24) + 2");
  EXPECT_THAT(Findings(kNotDeep), ElementsAre(Finding(FindingKind::kSums, "chunks that were written")));
}

TEST_F(BookCheckTest, GoesOnWhereTheDescriptionIsDamaged) {
  Meddle("UPDATE field SET description = 'Other' WHERE number = 4");
  Meddle("UPDATE chunk SET figures = x'00' WHERE key = 101 << 24");
  EXPECT_THAT(Findings(kNotDeep), ElementsAre(Finding(FindingKind::kDescription, "does not agree with its checksum"),
                                              Finding(FindingKind::kChunk, "do not agree with their checksum")));
}

TEST_F(BookCheckTest, NamesTheEntryThatIsDamaged) {
  Meddle("UPDATE journal SET what = 'other'");
  const auto findings = Findings(kNotDeep);
  ASSERT_THAT(findings, ElementsAre(Finding(FindingKind::kJournal, "entry 1 does not agree with its checksum")));
  EXPECT_EQ(findings[0].entry, 1);
}

TEST_F(BookCheckTest, NamesEntryAndAccountOfAnImageThatIsDamaged) {
  Meddle("UPDATE image SET figures = x'00'");
  const auto findings = Findings(kNotDeep);
  ASSERT_THAT(findings, ElementsAre(Finding(FindingKind::kImage, "do not agree with their checksum")));
  EXPECT_EQ(findings[0].entry, 1);
  EXPECT_EQ(findings[0].account, 205);
}

TEST_F(BookCheckTest, TellsSumsThatAreDamagedOrMissing) {
  const std::string whole = folder.Read("North.tbk");
  Meddle("UPDATE account_sum SET sums = x'00'");
  EXPECT_THAT(Findings(kNotDeep), ElementsAre(Finding(FindingKind::kSums, "do not agree with their checksum")));
  folder.Write("North.tbk", whole);
  Meddle("DELETE FROM account_sum");
  EXPECT_THAT(Findings(kNotDeep), ElementsAre(Finding(FindingKind::kSums, "of 0 chunks that were written"),
                                              Finding(FindingKind::kSums, "of 0 chunks that were written")));
}

TEST_F(BookCheckTest, ReadsABookOfTheFirstFormat) {
  std::filesystem::copy_file(tallybook::testing::SampleBook("book-v1.tbk"), BookPath(),
                             std::filesystem::copy_options::overwrite_existing);
  const BookCheckResult result = CheckBook(BookPath(), kDeep);
  EXPECT_THAT(result.findings, IsEmpty());
  EXPECT_EQ(result.format, 1);
  EXPECT_EQ(result.chunks, 13);
  EXPECT_EQ(result.entries, 4);
}

TEST_F(BookCheckTest, ChangesNoByte) {
  const std::string before = folder.Read("North.tbk");
  Findings();
  EXPECT_EQ(folder.Read("North.tbk"), before);
}

TEST_F(BookCheckTest, RefusesWhatIsNoBook) {
  folder.Write("other", "some text that is no book");
  EXPECT_THAT([&] { static_cast<void>(CheckBook(folder.Path("other"), kDeep)); },
              FailsWith(FailureNumber::kPathOrAccess, "not a book"));
}

// Whatever is read with wrong figures or not at all is found.
class BookCheckFlips : public FlipTrial {};

TEST_F(BookCheckFlips, EndsWhateverBitIsFlippedAndFindsWhatReadersRefuse) {
  const std::string whole = folder.Read("North.tbk");
  std::mt19937 random(99);
  int found = 0;
  for (int flip = 0; flip < 60; ++flip) {
    const std::size_t bit = random() % (whole.size() * 8);
    SCOPED_TRACE("bit " + std::to_string(bit % 8) + " of byte " + std::to_string(bit / 8));
    std::string flipped = whole;
    flipped[bit / 8] = static_cast<char>(static_cast<unsigned char>(flipped[bit / 8]) ^ (1U << (bit % 8)));
    folder.Write("North.tbk", flipped);
    bool refused = false;
    try {
      FiguresOf(*OpenToRead());
    } catch (const Failure&) {
      refused = true;
    }
    bool clean = false;
    try {
      clean = CheckBook(BookPath(), kNotDeep).findings.empty();
    } catch (const Failure&) {
      clean = false;  // no book at all any more
    }
    if (!clean) ++found;
    EXPECT_FALSE(refused && clean);
  }
  EXPECT_GT(found, 2);  // much of a small book is room that nothing uses
}

}  // namespace
}  // namespace tallybook::testing
