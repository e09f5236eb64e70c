// The findings of a look at a file as rows for a table: columns by what kind of file it was, chosen by what the import
// does with them and by a part of what a row shows, and sorted. Each is marked by a picture besides its words, and
// notes stand in italics, so that nobody takes them for errors. Rows are asked for as they come into view. One thread.
#pragma once

#include <QtCore/QAbstractTableModel>
#include <optional>
#include <vector>

#include "tallybook/desktop/host/FileCheck.h"

namespace tallybook::desktop {

class FindingModel final : public QAbstractTableModel {
 public:
  using QAbstractTableModel::QAbstractTableModel;

  // `result` stays as it is until another is set; null for none. All of it is chosen, in its own order but for notes,
  // which come last.
  void SetResult(const FileCheckResult* result);
  // Those of one effect, or of all, that have `part` in one of their cells, in any case; empty for all.
  void Choose(std::optional<inspect::Effect> effect, const QString& part);
  // Rows that are alike there stay in the order in which they were found.
  void SortBy(std::optional<int> column, Qt::SortOrder order);

  // Of the rows chosen, as they are sorted.
  [[nodiscard]] const inspect::Finding& At(int row) const;
  // How wide each column is, in letters; the last one takes what is left.
  [[nodiscard]] std::vector<int> Widths() const;

  [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
  [[nodiscard]] int columnCount(const QModelIndex& parent = {}) const override;
  [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
  [[nodiscard]] QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

 private:
  [[nodiscard]] bool HasPart(const inspect::Finding& finding) const;
  void Order();

  const FileCheckResult* result_ = nullptr;
  std::optional<inspect::Effect> effect_;
  QString part_;
  std::optional<int> column_;
  Qt::SortOrder order_ = Qt::AscendingOrder;
  std::vector<std::size_t> rows_;
};

}  // namespace tallybook::desktop
