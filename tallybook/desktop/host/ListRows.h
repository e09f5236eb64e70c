// The rows of a list window as a table model: what was added, in the order in which it is shown. Changing many rows at
// once is cheap: the order is made anew when somebody looks. One thread.
#pragma once

#include <QAbstractTableModel>
#include <optional>
#include <vector>

#include "base/Types.h"

namespace tallybook::desktop {

class ListRows : public QAbstractTableModel {
 public:
  struct Row {
    Text key;
    Integer record = 0;
    std::vector<Text> cells;  // may be fewer than there are columns
  };
  struct Order {
    int column = 0;
    bool descending = false;
    bool operator==(const Order&) const = default;
  };

  void AddColumn(const Text& caption, bool numeric);
  void Clear();
  void Add(Row row);
  // A cell of the row added last; it is dropped where that has been removed.
  void AddCell(const Text& text);
  // Of several rows of one key the first goes. False: none has it.
  bool Remove(const Text& key);

  // Tells the views what has changed since. Whoever looks at rows by their place calls it before.
  void Update();
  [[nodiscard]] bool IsStale() const { return stale_; }

  // How rows are sorted; nothing: as they were added. Numeric columns by the number that their text begins with. Rows
  // that are alike stay as they were added.
  [[nodiscard]] std::optional<Order> Sorting() const { return sorting_; }
  void Sort(std::optional<Order> order);

  // Keys that are shown in bold.
  void SetMarked(std::vector<Text> keys);

  // By place from 0, of rows up to date.
  [[nodiscard]] const Row& At(int place) const { return rows_[order_[static_cast<std::size_t>(place)]]; }
  // The first place of a key, or of a record; -1 where there is none.
  [[nodiscard]] int PlaceOf(const Text& key) const;
  [[nodiscard]] int PlaceOfRecord(Integer record) const;
  // The next place from `start` on, round the end, whose text in the column begins so, without regard to case and to
  // blanks in front; -1 where there is none.
  [[nodiscard]] int Find(const QString& beginning, int column, int start) const;

  // QAbstractTableModel.
  [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
  [[nodiscard]] int columnCount(const QModelIndex& parent = {}) const override;
  [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
  [[nodiscard]] QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

 private:
  struct Column {
    QString caption;
    bool numeric = false;
  };

  [[nodiscard]] const Text& Cell(const Row& row, int column) const;
  [[nodiscard]] bool IsBefore(const Row& left, const Row& right) const;
  void MakeOrder();

  std::vector<Column> columns_;
  std::vector<Row> rows_;           // as they were added
  std::vector<std::size_t> order_;  // positions in rows_, as they are shown
  std::vector<Text> marked_;
  std::optional<Order> sorting_;
  bool stale_ = false;
  bool last_is_there_ = false;  // the row added last has not been removed
};

}  // namespace tallybook::desktop
