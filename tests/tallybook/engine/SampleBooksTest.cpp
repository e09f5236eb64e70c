// The books in samples/ are read as the programs wrote them that made them.

#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "tallybook/engine/Journal.h"
#include "tallybook/engine/JournalNotes.h"
#include "tests/tallybook/engine/BookFixture.h"
#include "tests/tallybook/engine/SampleBook.h"

namespace tallybook::testing {
namespace {

using engine::Journal;
using engine::JournalEntry;
using engine::JournalState;

std::filesystem::path Sample(const char* name) {
  return tallybook::testing::SampleBook(name);
}

// A listed figure: account number, date, field number, value.
FigureMap ListedFigures() {
  std::ifstream list(Sample("figures.txt"));
  FigureMap figures;
  Long account = 0;
  Text date;
  Integer field = 0;
  Text value;
  while (list >> account >> date >> field >> value) {
    const Date day = Day(std::stoi(date.substr(0, 4)), std::stoi(date.substr(5, 2)), std::stoi(date.substr(8, 2)));
    figures[{account, day, field}] = std::stod(value);
  }
  return figures;
}

class SampleBooksTest : public BookFixture, public ::testing::WithParamInterface<const char*> {
 protected:
  void SetUp() override { std::filesystem::copy_file(Sample(GetParam()), BookPath()); }
};

TEST_P(SampleBooksTest, HoldTheFiguresThatAreListed) {
  const FigureMap listed = ListedFigures();
  ASSERT_EQ(listed.size(), 8474U);
  EXPECT_EQ(FiguresOf(*OpenToRead()), listed);
  EXPECT_EQ(FiguresOf(*Open()), listed);
}

TEST_P(SampleBooksTest, TellTheirJournal) {
  std::vector<JournalEntry> imports;
  for (const JournalEntry& entry : Journal(*OpenToRead()).Entries()) {
    if (!entry.what_ran.empty() && entry.undoes == 0) imports.push_back(entry);
  }
  ASSERT_EQ(imports.size(), 4U);
  EXPECT_EQ(imports[0].what_ran, "import qdx #1");
  EXPECT_EQ(imports[0].state, JournalState::kClosed);
  EXPECT_EQ(imports[0].chunks, 2);
  EXPECT_EQ(imports[1].what_ran, "import csv");
  EXPECT_EQ(imports[1].state, JournalState::kUndone);
  EXPECT_EQ(imports[3].state, JournalState::kOpen);
  EXPECT_EQ(imports[3].first, Day(2003, 1, 1) + 110);
  EXPECT_EQ(imports[3].time, Day(2004, 2, 3) + 0.5);
  EXPECT_EQ(imports[3].chunks, 2);
}

TEST_P(SampleBooksTest, CanBeTakenBackToWhatStoodBeforeTheLastEntry) {
  const auto book = Open();
  ASSERT_EQ(Journal(*book).UndoNewest().front().what_ran, "import qdx #2");
  // Account 512 has figures by the last entry only.
  for (const auto& [key, value] : FiguresOf(*book)) ASSERT_NE(std::get<0>(key), 512);
}

INSTANTIATE_TEST_SUITE_P(OfEachVersion, SampleBooksTest,
                         ::testing::Values("book-v1.tbk", "book-v2.tbk", "book-v3.tbk", "book-v4.tbk"));

using GrownSampleTest = BookFixture;

TEST_F(GrownSampleTest, HoldsItsListsAndTheWayBackToThoseOfBefore) {
  std::filesystem::copy_file(Sample("book-v3.tbk"), BookPath());
  const auto book = Open();
  EXPECT_EQ(book->AccountNumber(1), 950);
  EXPECT_EQ(book->FieldNumber(1), 50);
  EXPECT_EQ(book->FieldNumber(2), 20);
  EXPECT_THAT(book->Stored().retired_accounts, ::testing::ElementsAre(960));
  EXPECT_THAT(book->Stored().retired_fields, ::testing::ElementsAre(60));
  std::vector<Long> changes;
  for (const JournalEntry& entry : Journal(*book).Entries()) {
    if (entry.kind == engine::JournalKind::kLists) changes.push_back(entry.id);
  }
  ASSERT_EQ(changes.size(), 2U);
  Journal(*book).Undo(changes[1]);
  EXPECT_EQ(Get(*book, 960, Day(2003, 1, 1), 60), 1.5);
  EXPECT_EQ(Get(*book, 101, Day(2003, 1, 1), 60), 1.5);
}

using NotedSampleTest = BookFixture;

TEST_F(NotedSampleTest, HoldsTheFilesOfItsImports) {
  std::filesystem::copy_file(Sample("book-v4.tbk"), BookPath());
  const auto book = OpenToRead();
  std::vector<Text> files;
  for (const JournalEntry& entry : Journal(*book).Entries()) {
    const engine::EntryNotes notes = engine::JournalNotes(*book).Of(entry);
    for (const engine::EntryFile& file : notes.files) files.push_back(file.path + " " + std::to_string(*file.size));
    EXPECT_EQ(notes.facts, notes.files.empty() ? "" : R"({"math":"add"})");
  }
  EXPECT_THAT(files, ::testing::ElementsAre("in/1.QDX 1001", "in/2.QDX 1002", "in/3.QDX 1003", "in/3.QDX 1003"));
}

}  // namespace
}  // namespace tallybook::testing
