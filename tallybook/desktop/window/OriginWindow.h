// Where a figure came from: every entry of the journal that changed it, oldest first, with what it was before and after
// and the file; from a line to that entry in the journal.
#pragma once

#include <QtWidgets/QDialog>
#include <functional>

#include "tallybook/application/FigureOrigin.h"
#include "tallybook/desktop/forms/LocaleStyle.h"

class QPushButton;

namespace tallybook::desktop {

class RowsView;

class OriginWindow final : public QDialog {
 public:
  // Shows an entry of the journal over the window.
  using ShowEntry = std::function<void(Long entry, QWidget& over)>;
  // `figure` says which one it is: "4110 Bakery, Sales, Tue 2024-01-02".
  OriginWindow(QWidget* parent, const LocaleStyle& style, const QString& figure,
               const application::FigureOrigin& origin, ShowEntry show_entry);

 private:
  void Fill(const LocaleStyle& style, const application::FigureOrigin& origin);
  void GoToEntry();

  ShowEntry show_entry_;
  std::vector<Long> entries_;  // of the rows
  RowsView* list_;
  QPushButton* journal_;
};

}  // namespace tallybook::desktop
