// A list of a book, accounts or fields, as it is edited: a search that filters as one types, the rows, and what can be
// done with them. It edits a draft; what the draft refuses is told where it was typed, or by the listener.
//
//   letters         go to the search; Up and Down there move in the list
//   Insert, F2 or Enter, Delete, Alt+Up, Alt+Down: add, edit, remove, move
//   Ctrl+V          adds what the clipboard holds, after a look at it
//
// One thread.
#pragma once

#include <QtWidgets/QWidget>
#include <functional>
#include <memory>

#include "base/Types.h"

class QLabel;
class QPushButton;
class QTableView;

namespace tallybook::desktop {

class ListsDraft;
class SearchLine;

class ListPage final : public QWidget {
 public:
  enum class Kind { kAccounts, kFields };

  // `draft` outlives the page.
  ListPage(QWidget* parent, ListsDraft& draft, Kind kind);
  ~ListPage() override;

  // Shows the draft as it is now; the current row stays current where it is there.
  void ShowAnew();
  // Told when the draft was changed here, and with what was refused.
  void OnChanged(std::function<void()> listener) { changed_ = std::move(listener); }
  void OnRefused(std::function<void(const Text& words)> listener) { refused_ = std::move(listener); }

  void BeginSearch();
  void Add();
  void Paste();

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  class Rows;
  class Filter;

  void Build();
  QPushButton* AddButton(const QString& words, const char* name, const QString& keys, void (ListPage::*act)());
  void Edit();
  void Remove();
  void MoveUp() { Move(-1); }
  void MoveDown() { Move(1); }
  void Move(int rows);
  void Follow();
  [[nodiscard]] Long CurrentNumber() const;
  [[nodiscard]] Integer PositionOf(Long number) const;
  void GoTo(Long number);
  // Does it to the draft; gives why it was refused, empty where it was done.
  Text Try(const std::function<void()>& act);
  void Changed(Long number);
  bool AnswerKey(QKeyEvent& key);

  ListsDraft& draft_;
  Kind kind_;
  std::unique_ptr<Rows> rows_;
  std::unique_ptr<Filter> filter_;
  SearchLine* search_ = nullptr;
  QTableView* table_ = nullptr;
  QLabel* nothing_ = nullptr;
  QPushButton* edit_ = nullptr;
  QPushButton* up_ = nullptr;
  QPushButton* down_ = nullptr;
  QPushButton* remove_ = nullptr;
  std::function<void()> changed_;
  std::function<void(const Text&)> refused_;
};

}  // namespace tallybook::desktop
