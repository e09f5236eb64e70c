// The history of a book: the entries of its journal as a list, newest first, all that is kept of each, and the way
// back. An entry that was never finished says so.
#pragma once

#include <QtWidgets/QDialog>
#include <functional>

#include "tallybook/desktop/figures/BookReader.h"
#include "tallybook/desktop/forms/LocaleStyle.h"
#include "tallybook/engine/Journal.h"
#include "tallybook/engine/JournalNotes.h"

class QLabel;
class QPushButton;
class QTextBrowser;

namespace tallybook::desktop {

class RowsView;

class JournalWindow final : public QDialog {
 public:
  // Takes an entry back, after a question; true where it is done. It tells what went wrong by itself.
  using Undo = std::function<bool(const engine::JournalEntry& entry)>;
  // `reader` must outlive it. Without `undo` the list is there to look at.
  JournalWindow(QWidget* parent, BookReader& reader, const LocaleStyle& style, Undo undo);

  // Goes to an entry, as far as the journal has it.
  void ShowEntry(Long id);

 private:
  void LayOut();
  void Read();
  void Fill();
  void Follow();
  void TakeBack();
  [[nodiscard]] const engine::NotedEntry* Current() const;
  [[nodiscard]] QString WhyNot(const engine::NotedEntry& noted) const;

  BookReader& reader_;
  LocaleStyle style_;
  Undo undo_;
  std::vector<engine::NotedEntry> entries_;  // newest first
  std::vector<engine::JournalEntry> plain_;  // the same, oldest first
  RowsView* list_;
  QTextBrowser* details_;
  QLabel* hint_;
  QPushButton* undo_button_ = nullptr;
};

}  // namespace tallybook::desktop
