#include <gtest/gtest.h>

#include "tallybook/application/EntryWords.h"

namespace tallybook::application {
namespace {

using engine::JournalEntry;
using engine::JournalKind;
using engine::JournalState;

JournalEntry In(JournalState state, bool keeps_images = true) {
  JournalEntry entry;
  entry.state = state;
  entry.keeps_images = keeps_images;
  return entry;
}

TEST(EntryWords, TellHowFarAnEntryIsAndWhetherItCanBeTakenBack) {
  EXPECT_EQ(StateText(In(JournalState::kOpen)), "not finished");
  EXPECT_EQ(StateText(In(JournalState::kClosed)), "done");
  EXPECT_EQ(StateText(In(JournalState::kClosed, false)), "done for good");
  EXPECT_EQ(StateText(In(JournalState::kUndone)), "undone");
}

TEST(EntryWords, NameTheEntryThatAnUndoTookBack) {
  JournalEntry entry;
  entry.what_ran = "undo";
  EXPECT_EQ(WhatRan(entry), "undo");
  entry.undoes = 3;
  EXPECT_EQ(WhatRan(entry), "undo of 3");
}

TEST(EntryWords, NameTheKindsOfEntries) {
  EXPECT_EQ(KindText(JournalKind::kImport), "import");
  EXPECT_EQ(KindText(JournalKind::kSet), "set");
  EXPECT_EQ(KindText(JournalKind::kUndo), "undo");
  EXPECT_EQ(KindText(JournalKind::kLists), "lists");
}

}  // namespace
}  // namespace tallybook::application
