// The binder of a grid: a table that draws the rows in sight alone. Its rows stand just where the grid counts them, so
// that what the form lays over a cell lies on that cell. The grid has no keys of its own; in one that only shows, the
// arrow keys move the current cell.
#pragma once

#include "tallybook/desktop/forms/ControlBinder.h"

namespace tallybook {
class Grid;
}

namespace tallybook::desktop {

class GridModel;
class GridTable;

class GridBinder : public ControlBinder {
 public:
  GridBinder(Grid& grid, QWidget& parent);
  ~GridBinder() override;
  void SetLeastSize(const views::Part& part) override;
  [[nodiscard]] QRect PlaceWithin(const QWidget& around) const override;
  bool TakeKey(const KeyPress& press) override;
  // A list of this height is laid over the current cell.
  void SetRoomForList(int height);
  // Marks the rows where a cell has this text, and counts them in a label, which belongs to `parent`.
  QLabel& CountMissing(const Text& text, QWidget& parent);
  // The rows have the height that the font and the list over them need.
  void MeasureRows();

 protected:
  void Follow(const Change& change) override;

 private:
  void FollowAll();
  void FollowColumns();
  void FollowCurrent();
  void FollowScroll();
  void HoldScroll();
  void CountAll();
  void CountRows(Long first, Long last);
  void ShowCount();

  Grid& grid_;
  GridTable& table_;
  GridModel& model_;
  int list_height_ = 0;
  QPointer<QLabel> count_label_;
  std::vector<bool> missing_;  // by rows of the grid
  Long missing_count_ = 0;
};

}  // namespace tallybook::desktop
