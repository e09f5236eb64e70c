// Asks what is to become of figures that have been changed since an entry that is to be undone: they are listed with
// what they were, what the entry left, what they are now and which entry changed them last. Nothing has happened by
// then, and nothing happens where the user cancels. One thread.
#pragma once

#include <QDialog>
#include <optional>
#include <vector>

#include "tallybook/engine/Book.h"
#include "tallybook/engine/UndoRequest.h"

class QGridLayout;

namespace tallybook::desktop {

class UndoDialog final : public QDialog {
 public:
  // How many figures are listed; what there is besides is counted.
  static constexpr std::size_t kMostListed = 1000;

  // `outcome` is that of a look, and `entries` are all of the journal.
  UndoDialog(engine::Book& book, const std::vector<engine::JournalEntry>& entries, const engine::UndoOutcome& outcome,
             QWidget* owner);

  // Shows it and waits; nothing where the user cancels.
  [[nodiscard]] std::optional<engine::UndoWay> Ask();

 private:
  void AddChoice(QGridLayout& rows, engine::UndoWay way, const char* name, const QString& caption,
                 const QString& words);

  std::optional<engine::UndoWay> chosen_;
};

}  // namespace tallybook::desktop
