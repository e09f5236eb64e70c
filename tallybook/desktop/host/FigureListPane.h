// A list of figures in pairs in a window: chosen by account, field and file, sorted by a click on a head, with the
// count of what is chosen and what it comes to. Rows are asked for as they come into view. Enter or a double click acts
// on the current one. One thread.
#pragma once

#include <QString>
#include <QStringList>
#include <QWidget>
#include <functional>
#include <memory>
#include <vector>

#include "base/Types.h"
#include "tallybook/application/FigureList.h"

class QComboBox;
class QLabel;
class QLineEdit;

namespace tallybook::desktop {

class FigureListPane final : public QWidget {
 public:
  struct Shown {
    const engine::BookDescription& book;  // what the list's accounts and fields are called by; outlives the pane
    application::FigureList list;
    std::vector<Integer> fields;  // by position: those that can be chosen
    std::vector<QString> files;
    QStringList heads;  // of the two figures and their difference
    QString name;       // what is listed, to who does not see it
  };
  FigureListPane(Shown shown, QWidget* parent);
  ~FigureListPane() override;

  // Done at Enter and at a double click on a figure.
  void OnChosen(std::function<void()> act) { chosen_ = std::move(act); }
  // Null where none is current.
  [[nodiscard]] const application::FigureLine* Current() const;

 private:
  class Model;
  class Table;

  QWidget* NewFilters();
  void BuildTable();
  void Choose();
  void SortBy(int column);
  void ShowAnew();
  void Count();

  Shown shown_;
  std::function<void()> chosen_;
  Model* model_ = nullptr;
  Table* table_ = nullptr;
  QLineEdit* account_ = nullptr;
  QComboBox* field_ = nullptr;
  QComboBox* file_ = nullptr;
  QLabel* count_ = nullptr;
  int sorted_by_ = -1;
  bool descending_ = false;
};

}  // namespace tallybook::desktop
