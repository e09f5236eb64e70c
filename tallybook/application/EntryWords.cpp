#include "tallybook/application/EntryWords.h"

#include <fmt/format.h>

namespace tallybook::application {

Text StateText(const engine::JournalEntry& entry) {
  switch (entry.state) {
    case engine::JournalState::kOpen:
      return "not finished";
    case engine::JournalState::kClosed:
      return entry.keeps_images ? "done" : "done for good";
    case engine::JournalState::kUndone:
      return "undone";
  }
  return "";
}

Text KindText(engine::JournalKind kind) {
  switch (kind) {
    case engine::JournalKind::kImport:
      return "import";
    case engine::JournalKind::kSet:
      return "set";
    case engine::JournalKind::kUndo:
      return "undo";
    case engine::JournalKind::kLists:
      return "lists";
  }
  return "";
}

Text WhatRan(const engine::JournalEntry& entry) {
  return entry.undoes == 0 ? entry.what_ran : fmt::format("{} of {}", entry.what_ran, entry.undoes);
}

}  // namespace tallybook::application
