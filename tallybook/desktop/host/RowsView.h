// A list of rows in columns, to be read: rows that a pointer hits easily, numbers to the right, columns as wide as what
// they show. Enter or a double click acts on the current row. One thread.
#pragma once

#include <QString>
#include <QStringList>
#include <QTreeView>
#include <functional>
#include <set>
#include <vector>

class QAbstractItemModel;
class QStandardItemModel;
class QTableView;

namespace tallybook::desktop {

class RowsView : public QTreeView {
 public:
  // `name` says what is listed, to who does not see it.
  RowsView(const QString& name, QWidget* parent);

  // The columns, with those whose numbers stand to the right; no row is left.
  void SetColumns(const QStringList& heads, const std::set<int>& numbers = {});
  void AddRow(const QStringList& cells);
  // Takes each column to the width of what it shows, as far as that is no whole sentence.
  void FitColumns();
  // Goes to a row; the last one where there are fewer.
  void GoTo(int row);
  // From 0; -1 where none is current.
  [[nodiscard]] int CurrentRow() const { return currentIndex().row(); }
  [[nodiscard]] int RowCount() const;
  // What a cell shows.
  [[nodiscard]] QString TextAt(int row, int column) const;

  // Told when another row is current.
  void OnRow(std::function<void()> listener) { row_ = std::move(listener); }
  // Done at Enter and at a double click on a row.
  void OnChosen(std::function<void()> act) { chosen_ = std::move(act); }

 protected:
  void keyPressEvent(QKeyEvent* event) override;
  void currentChanged(const QModelIndex& current, const QModelIndex& previous) override;

 private:
  QStandardItemModel* rows_;
  std::set<int> numbers_;
  std::function<void()> row_;
  std::function<void()> chosen_;
};

// Has a table look and behave as such a list, for rows that are asked for as they come into view. Columns keep the
// widths that are given here, in letters; the last one takes what is left.
void ShowAsRows(QTableView& table, const std::vector<int>& widths);

}  // namespace tallybook::desktop
