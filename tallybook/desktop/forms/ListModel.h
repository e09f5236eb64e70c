// The entries of a list control as Qt's views ask for them. It reads the control itself and copies nothing. A list is
// filled entry by entry, thousands at a time, so that the model follows only when it is told to: until then its views
// see as many entries as before. Before the control goes, the model lets go of it.
#pragma once

#include <QAbstractListModel>

namespace tallybook {
class ListControl;
}

namespace tallybook::desktop {

class ListModel : public QAbstractListModel {
 public:
  ListModel(const ListControl& list, QObject* parent) : QAbstractListModel(parent), list_(&list) {}

  // Shows the entries that there are now.
  void Freshen();
  // The control goes: there are no entries any more.
  void LetGo() { list_ = nullptr; }

  [[nodiscard]] int rowCount(const QModelIndex& parent) const override;
  [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;

 private:
  const ListControl* list_;
  int count_ = 0;
};

}  // namespace tallybook::desktop
