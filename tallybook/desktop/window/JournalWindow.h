// The journal of a book as a list, newest first, with undo.
#pragma once

#include <QtWidgets/QDialog>
#include <functional>

#include "tallybook/desktop/figures/BookReader.h"
#include "tallybook/desktop/figures/LocaleStyle.h"
#include "tallybook/engine/Journal.h"

class QLabel;
class QPushButton;
class QTreeView;
class QStandardItemModel;

namespace tallybook::desktop {

class JournalWindow final : public QDialog {
 public:
  // Takes an entry back, after a question; true where it is done. It tells what went wrong by itself.
  using Undo = std::function<bool(const engine::JournalEntry& entry)>;
  // `reader` must outlive it. Without `undo` the list is there to look at.
  JournalWindow(QWidget* parent, BookReader& reader, const LocaleStyle& style, Undo undo);

 private:
  void Fill();
  void Follow();
  void TakeBack();
  [[nodiscard]] const engine::JournalEntry* Current() const;

  BookReader& reader_;
  LocaleStyle style_;
  Undo undo_;
  std::vector<engine::JournalEntry> entries_;  // newest first
  QTreeView* list_;
  QStandardItemModel* rows_;
  QLabel* hint_;
  QPushButton* undo_button_ = nullptr;
};

}  // namespace tallybook::desktop
