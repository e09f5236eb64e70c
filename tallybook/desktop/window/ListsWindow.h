// Accounts, fields and years of a book in three pages. What is edited is kept here, checked at each step, and brought
// into the book by OK as one change, which is one entry of the journal; until then Ctrl+Z takes it back step by step.
//
// The book is not kept from anybody meanwhile. What others change of the lists is noticed and shown, with what was
// edited here done once more on top of it, and never overwritten.
#pragma once

#include <QtCore/QTimer>
#include <QtWidgets/QDialog>
#include <vector>

#include "tallybook/desktop/figures/BookReader.h"
#include "tallybook/desktop/forms/LocaleStyle.h"
#include "tallybook/desktop/window/ListsChange.h"
#include "tallybook/desktop/window/ListsDraft.h"

class QLabel;
class QPushButton;
class QTabWidget;

namespace tallybook::desktop {

class ListPage;
class YearsPage;

class ListsWindow final : public QDialog {
 public:
  static constexpr int kWatch = 1'000;  // between two looks at what others do, in milliseconds

  // All that is named outlives the window. Fails as Book::Open.
  ListsWindow(QWidget* parent, Conversations& conversations, application::WholeFiles& files, const Text& book,
              HostApp& app, const LocaleStyle& style);

  // Brings the change about. The window stays where that is not done, with what was edited.
  void accept() override;
  // Asks first where something was edited.
  void reject() override;

  // What the change left in the journal.
  [[nodiscard]] const std::vector<engine::JournalEntry>& Entries() const { return entries_; }

 private:
  void Build(const LocaleStyle& style);
  void Undo();
  void Find();
  void Watch();
  void TakeOthers();
  void ShowAnew();
  void Follow();
  void Refuse(const Text& words);

  Conversations& conversations_;
  application::WholeFiles& files_;
  BookReader reader_;
  ListsDraft draft_;
  QTimer watch_;
  std::vector<engine::JournalEntry> entries_;
  bool is_changing_ = false;
  QTabWidget* pages_ = nullptr;
  ListPage* accounts_ = nullptr;
  ListPage* fields_ = nullptr;
  YearsPage* years_ = nullptr;
  QLabel* state_ = nullptr;
  QPushButton* undo_ = nullptr;
};

}  // namespace tallybook::desktop
