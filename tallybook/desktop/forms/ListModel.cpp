#include "tallybook/desktop/forms/ListModel.h"

#include "forms/ListControls.h"
#include "tallybook/desktop/forms/Words.h"

namespace tallybook::desktop {

void ListModel::Freshen() {
  beginResetModel();
  count_ = list_->ListCount();
  endResetModel();
}

int ListModel::rowCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : count_;
}

QVariant ListModel::data(const QModelIndex& index, int role) const {
  const bool is_shown = role == Qt::DisplayRole || role == Qt::AccessibleTextRole;
  if (list_ == nullptr || !is_shown || index.row() < 0 || index.row() >= list_->ListCount()) return {};
  return ToQt(list_->List(static_cast<Integer>(index.row()))).trimmed();
}

}  // namespace tallybook::desktop
