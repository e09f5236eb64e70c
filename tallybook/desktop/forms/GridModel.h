// The cells of a grid below its head rows as Qt's views ask for them, and the heads. It reads the control itself and
// copies nothing. Before the
// control goes, the model lets go of it.
#pragma once

#include <QAbstractTableModel>

#include "base/Types.h"

namespace tallybook {
class Grid;
}

namespace tallybook::desktop {

class GridModel : public QAbstractTableModel {
 public:
  GridModel(const Grid& grid, QObject* parent) : QAbstractTableModel(parent), grid_(&grid) {}

  // Shows as many rows and columns as there are now.
  void Reset();
  // The control goes: there are no cells any more.
  void LetGo() { grid_ = nullptr; }
  // A cell of this text is drawn faint: something is missing there.
  void SetMissing(const Text& text) { missing_ = text; }
  [[nodiscard]] bool IsMissing(Long row) const;
  // Rows of the grid whose cells have changed.
  void TellRows(Long first, Long last);

  [[nodiscard]] int rowCount(const QModelIndex& parent) const override;
  [[nodiscard]] int columnCount(const QModelIndex& parent) const override;
  [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
  [[nodiscard]] QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
  [[nodiscard]] Qt::ItemFlags flags(const QModelIndex& index) const override;

 private:
  [[nodiscard]] bool IsShaded(int column) const;
  [[nodiscard]] QVariant FontOfCell(Long row, Long column) const;

  const Grid* grid_;
  Text missing_;
  int rows_ = 0;
  int columns_ = 0;
};

}  // namespace tallybook::desktop
