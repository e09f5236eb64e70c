#include <gtest/gtest.h>

#include "tests/tallybook/inspect/Findings.h"

namespace tallybook::testing {
namespace {

using inspect::Piece;

TEST(PieceSplitterTest, TheHeadStandsInBothAndARecordInItsPart) {
  FindingList list;
  list.Passed(Piece::kHead, "head\n", false);
  list.Passed(Piece::kRecord, "good\n", false);
  list.Passed(Piece::kRecord, "bad\n", true);
  EXPECT_EQ(list.sound, "head\ngood\n");
  EXPECT_EQ(list.rejects, "head\nbad\n");
}

TEST(PieceSplitterTest, ADateStandsBeforeTheFirstRecordThatDependsOnIt) {
  FindingList list;
  list.Passed(Piece::kDate, "one\n", false);
  list.Passed(Piece::kDate, "two\n", false);
  list.Passed(Piece::kRecord, "bad\n", true);
  list.Passed(Piece::kRecord, "worse\n", true);
  list.Passed(Piece::kRecord, "good\n", false);
  list.Passed(Piece::kDate, "three\n", false);
  EXPECT_EQ(list.rejects, "two\nbad\nworse\n");
  EXPECT_EQ(list.sound, "two\ngood\n");
}

TEST(PieceSplitterTest, RecordsGoWithTheDateThatMustBeMended) {
  FindingList list;
  list.Passed(Piece::kHead, "head\n", true);
  list.Passed(Piece::kRecord, "first\n", false);
  list.Passed(Piece::kDate, "one\n", false);
  list.Passed(Piece::kRecord, "second\n", false);
  list.Passed(Piece::kDate, "two\n", true);
  list.Passed(Piece::kRecord, "third\n", false);
  EXPECT_EQ(list.rejects, "head\nfirst\ntwo\nthird\n");
  EXPECT_EQ(list.sound, "head\none\nsecond\n");
}

TEST(PieceSplitterTest, APartThatNobodyWantsCostsNothing) {
  inspect::PieceSplitter splitter({}, {});
  splitter.Take(Piece::kHead, "head\n", false);
  splitter.Take(Piece::kRecord, "bad\n", true);
}

}  // namespace
}  // namespace tallybook::testing
