#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "base/Dates.h"
#include "tallybook/application/CareWords.h"

namespace tallybook::application {
namespace {

using ::testing::ElementsAre;

TEST(CareWords, AFindingIsToldAsFarAsItIsKnown) {
  EXPECT_THAT(CellsOf({engine::FindingKind::kChunk, 101, "100", DateFromParts(2003, 1, 1), DateFromParts(2003, 1, 31),
                       4, "its checksum does not hold"}),
              ElementsAre("chunk", "100", "2003-01-01", "2003-01-31", "4", "its checksum does not hold"));
  EXPECT_THAT(CellsOf({engine::FindingKind::kSums, 101, "", kNoDate, kNoDate, 0, "they differ"}),
              ElementsAre("sums", "101", "", "", "", "they differ"));
}

TEST(CareWords, ACheckSaysWhatWasLookedAtAndFound) {
  engine::BookCheckResult result;
  result.format = 3;
  result.chunks = 1200;
  result.entries = 1;
  EXPECT_EQ(CheckWords("north.tbk", result),
            "north.tbk: format 3, 1,200 chunks, 1 journal entry with 0 images; nothing is damaged");
  result.format = 1;
  result.findings.resize(2);
  EXPECT_EQ(CheckWords("north.tbk", result),
            "north.tbk: format 1 (without checksums), 1,200 chunks, 1 journal entry with 0 images; 2 findings");
}

TEST(CareWords, ABackupAndARestoreSayWhatTheyMade) {
  EXPECT_EQ(BackupWords("north.tbk", "north.backup", {{"north", 0, 3, 2}, 20'480}),
            "Wrote north.backup: north.tbk with 2 companion files, 20,480 bytes.");
  RestoreDone done = {{"north", DateFromParts(2024, 3, 1) + 0.5, 3, 1}, "south.tbk", "", ""};
  EXPECT_EQ(RestoreWords(done), "Made south.tbk as north was on 2024-03-01 12:00:00, with 1 companion file.");
  EXPECT_EQ(KeptWords(done), "");
  EXPECT_EQ(WaitingWords(done), "");
  done.kept_as = "south.tbk-replaced";
  done.companions_wait = "the folder takes no new file";
  EXPECT_EQ(KeptWords(done), "The book that was there is kept as south.tbk-replaced.");
  EXPECT_EQ(
      WaitingWords(done),
      "the companion files are put in place by the next command that opens the book: the folder takes no new file");
  EXPECT_EQ(CompactWords("north.tbk", {40'960, 20'480}), "north.tbk: 40,960 bytes before, 20,480 bytes after.");
}

TEST(CareWords, ASalvageSaysWhatItMadeAndHowMuchIsLost) {
  engine::SalvageResult result;
  result.chunks = 1200;
  result.entries = 1;
  EXPECT_EQ(SalvageWords("saved.tbk", result),
            "Made saved.tbk with 1,200 chunks, 1 journal entry and 0 companion files; nothing is lost.");
  result.lost.resize(1);
  EXPECT_EQ(SalvageWords("saved.tbk", result),
            "Made saved.tbk with 1,200 chunks, 1 journal entry and 0 companion files; 1 finding.");
}

}  // namespace
}  // namespace tallybook::application
