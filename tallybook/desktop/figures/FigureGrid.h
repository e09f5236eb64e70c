// The view of the figures' table: cells with their heads in sight, the row of totals below, and what keys do in a
// table.
//   Enter down · Tab right · typing begins a change, F2 changes what stands there, Escape gives the old figure back
//   Ctrl+C copies · Ctrl+V pastes · Delete asks for zeros
#pragma once

#include <QtWidgets/QTableView>
#include <functional>

#include "tallybook/desktop/figures/PasteBlock.h"

namespace tallybook::desktop {

class FigureGrid final : public QTableView {
 public:
  explicit FigureGrid(QWidget* parent);

  // Told why a cell does not take what is typed.
  void OnRefused(std::function<void(const QString& why)> listener) { refused_ = std::move(listener); }
  void OnCopy(std::function<void()> act) { copy_ = std::move(act); }
  void OnPaste(std::function<void()> act) { paste_ = std::move(act); }
  void OnClear(std::function<void()> act) { clear_ = std::move(act); }

  // The least range around what is selected, or around the current cell; first_row is -1 where there is none.
  [[nodiscard]] CellRange Selected() const;
  // Sets each column as wide as its head and the numbers in sight need.
  void FitColumns();
  // Ends a change that is being typed as Enter does, but for going down.
  void TakeWhatIsTyped();
  // Goes to a cell, as far as there is one.
  void GoTo(int row, int column);

  void keyPressEvent(QKeyEvent* event) override;

 protected:
  void closeEditor(QWidget* editor, QAbstractItemDelegate::EndEditHint hint) override;
  // A height in which whole rows fit is kept by the layout; this only asks for room.
  [[nodiscard]] QSize sizeHint() const override;

 private:
  void Move(int rows, int columns);
  void Refuse();
  void WidenFor(int column, int width);

  std::function<void(const QString&)> refused_;
  std::function<void()> copy_;
  std::function<void()> paste_;
  std::function<void()> clear_;
};

}  // namespace tallybook::desktop
