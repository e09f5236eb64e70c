// Exchange files held against the book: which definition, which files, and then the figures that differ, totals, and
// how each file was held. It is nobody's child, so that it stands beside the main window and not over it; from a figure
// of its list that window goes to the figure. One thread.
#pragma once

#include <QtWidgets/QDialog>
#include <functional>
#include <vector>

#include "tallybook/desktop/figures/FigurePane.h"
#include "tallybook/desktop/host/LongWork.h"
#include "tallybook/desktop/host/TieOutRun.h"

class QComboBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QTabWidget;

namespace tallybook::desktop {

class FigureListPane;

class TieOutWindow final : public QDialog {
 public:
  struct Means {
    // The definitions of the book. May fail, which the window tells.
    std::function<std::vector<application::SeenDefinition>()> definitions;
    // Holds files against the book. Nothing where that failed or was cancelled, which has been told.
    std::function<std::optional<TieOutResult>(const TieOutWish& wish)> hold;
    // Ends that, as soon as it can be.
    std::function<void()> ask_to_end;
    // Shows a figure in the main window.
    std::function<void(const FigureSpot& spot)> go_to;
    Text folder;  // that is looked in for files first
  };
  explicit TieOutWindow(Means means);
  ~TieOutWindow() override;

  // Reads the definitions anew, and stays with the one that is chosen.
  void FillDefinitions();

 protected:
  // Also Close and Escape: while files are held that ends first, and the window behind it.
  void done(int result) override;

 private:
  QWidget* NewChoices();
  QWidget* NewButtons();
  void Browse();
  void Follow();
  void Hold();
  void Show(TieOutResult result);
  void ShowNothing(const QString& words);
  QWidget* NewTotals() const;
  QWidget* NewFiles() const;
  void GoToFigure();
  [[nodiscard]] const application::SeenDefinition* Chosen() const;

  Means means_;
  std::vector<application::SeenDefinition> definitions_;
  TieOutResult result_;
  LongWork work_;
  QComboBox* definition_;
  QLineEdit* file_;
  QComboBox* math_;
  QLabel* summary_;
  QTabWidget* pages_;
  QPushButton* hold_ = nullptr;
  QPushButton* go_ = nullptr;
  FigureListPane* figures_ = nullptr;
};

}  // namespace tallybook::desktop
