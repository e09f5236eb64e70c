// The line above a list that filters it as one types, and from which the list can be gone through by keys. One thread.
#pragma once

#include <QtCore/QStringList>
#include <QtWidgets/QLineEdit>
#include <functional>

class QAbstractItemView;

namespace tallybook::desktop {

// What is searched for: every word of it must stand somewhere in a line, whatever its case.
class SearchWords {
 public:
  SearchWords() = default;
  explicit SearchWords(const QString& search) : words_(search.split(' ', Qt::SkipEmptyParts)) {}

  [[nodiscard]] bool IsEmpty() const { return words_.isEmpty(); }
  [[nodiscard]] bool StandIn(const QString& line) const;

 private:
  QStringList words_;
};

class SearchLine final : public QLineEdit {
 public:
  // `what` is what the user looks for, in a word. `list` gets the keys that go through it, and outlives this.
  SearchLine(const QString& what, QAbstractItemView& list);

  // Into the line, with what stands there selected.
  void Begin();
  // Told when the user is done with the search: Enter.
  void OnDone(std::function<void()> listener) { done_ = std::move(listener); }

 protected:
  void keyPressEvent(QKeyEvent* event) override;

 private:
  QAbstractItemView& list_;
  std::function<void()> done_;
};

}  // namespace tallybook::desktop
