// The list of accounts, with a line above it that filters as one types. One thread.
#pragma once

#include <QtWidgets/QWidget>
#include <functional>
#include <vector>

#include "tallybook/engine/BookDescription.h"

class QLabel;
class QListView;
class QStringListModel;

namespace tallybook::desktop {

class SearchLine;

class AccountPane final : public QWidget {
 public:
  explicit AccountPane(QWidget* parent);
  ~AccountPane() override;

  void Show(const std::vector<engine::AccountDescription>& accounts);
  // Marks an account as the current one, by its position; nobody is told.
  void SetCurrent(Integer position);
  // The position of the account that is current; 0 for none.
  [[nodiscard]] Integer Current() const;
  // By so many rows of what the filter leaves.
  void Move(int rows);
  // Into the line, with what stands there selected.
  void BeginSearch();

  // Told when the user goes to an account in the list.
  void OnChosen(std::function<void(Integer position)> listener) { chosen_ = std::move(listener); }
  // Told when the user is done with the search: Enter.
  void OnDone(std::function<void()> listener);

 protected:
  void changeEvent(QEvent* event) override;

 private:
  class Filter;
  void TellFilter();
  void LeaveMargin();

  QListView* list_;
  SearchLine* search_;
  QLabel* nothing_;
  QStringListModel* names_;
  Filter* filter_;
  std::function<void(Integer)> chosen_;
  bool telling_ = true;
};

}  // namespace tallybook::desktop
