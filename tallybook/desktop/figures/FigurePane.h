// The pane of figures: what is shown (view, dates, level), the table with its totals, typing, pasting and taking back,
// and the watch for what others change. It asks the book through a reader of its own.
#pragma once

#include <QtWidgets/QWidget>
#include <functional>
#include <memory>
#include <optional>

#include "host/HostApp.h"
#include "tallybook/desktop/figures/BookReader.h"
#include "tallybook/desktop/figures/FigureTable.h"
#include "tallybook/desktop/forms/LocaleStyle.h"

namespace tallybook::desktop {

class FigureGrid;
class FigureModel;

// A figure by what stays the same when lists change.
struct FigureSpot {
  Long account_number = 0;
  Date date = 0;
  Integer field_number = 0;
};

class FigurePane final : public QWidget {
 public:
  // `app` must outlive it.
  FigurePane(QWidget* parent, HostApp& app, const LocaleStyle& style);
  ~FigurePane() override;

  // Shows a book, with nothing left of the one before. What waited to be written there is given up: ask Waits first.
  void Open(std::unique_ptr<BookReader> reader);
  void CloseBook();
  [[nodiscard]] bool HasBook() const;

  // With a book alone, from here on.
  [[nodiscard]] FigureTable& Table();
  void Choose(const FigureChoice& choice);
  // By so many stretches of time, or units where one date is shown.
  void Go(int steps);
  void GoToDate(Date date);
  // In the view of one account that account is shown, in the others its row is gone to.
  void GoToAccount(Integer position);
  // Shows a record of one account at the book's own level and goes to its figure. Why that cannot be done, in words;
  // empty where it is.
  [[nodiscard]] QString GoToFigure(const FigureSpot& spot);
  // The account of the row that is current.
  [[nodiscard]] Integer CurrentAccount() const;
  [[nodiscard]] Integer CurrentField() const;
  // What the current cell shows, where that is one record's figure; nothing for a sum, and where no cell is current.
  [[nodiscard]] std::optional<FigurePlace> CurrentRecord() const;

  // While a conversation works on the book nothing can be typed, and the reader is at rest but for refreshes.
  void SetWritable(bool writable);
  // Shows what is in the book by now, in the same place.
  void LookAgain();

  void Copy(bool with_heads);
  void Paste();
  void Clear();
  void Undo();
  // What was done to the book elsewhere in this program, by one entry of the journal: Undo takes it back in its turn.
  void NoteWritten(Long entry, const Text& what_ran);
  // It has been taken back elsewhere as well.
  void ForgetWritten(Long entry);
  // The entry that Undo would take back; 0 for none, and for what waits to be written.
  [[nodiscard]] Long NextUndoEntry() const;
  [[nodiscard]] bool CanUndo() const;
  [[nodiscard]] QString NextUndo() const;
  // Ends a change that is being typed, as Enter does.
  void TakeWhatIsTyped();
  // Whether something typed is not in the book yet; giving it up leaves the book as it is.
  [[nodiscard]] bool Waits() const;
  void GiveUpWaiting();
  // Whether a cell holds something typed that could not be read.
  [[nodiscard]] bool HasUnreadable() const;

  [[nodiscard]] FigureGrid& Grid();
  [[nodiscard]] FigureModel& Model();

  // Whether the totals below the table are all added up.
  [[nodiscard]] bool TotalsAreDone() const;

  // "12 figures selected: 4,210.00  avg 350.83"; empty where there is none.
  [[nodiscard]] QString SelectionText() const;
  // "All is saved", or what waits for whom.
  [[nodiscard]] QString SavedText() const;

  // Told whenever a text above, or what can be done, may be another.
  void OnState(std::function<void()> listener);
  // Told when another account, field, date or level is shown, or figures may be others.
  void OnShown(std::function<void()> listener);
  // Told when the book has other accounts, fields or dates than before.
  void OnLists(std::function<void()> listener);
  // Told of what the user must see: a refused key, a paste that cannot be done, a book that cannot be read.
  void OnMessage(std::function<void(const QString& words)> listener);
  // Asked before the date is chosen by hand.
  void OnAskDate(std::function<void()> act);

 private:
  class Parts;
  std::unique_ptr<Parts> parts_;
};

}  // namespace tallybook::desktop
