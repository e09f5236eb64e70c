// What an import would do: its figures as a list that can be chosen from and sorted, totals, days that go into one record, and
// the files with what becomes of them; and the import itself from there. One thread.
#pragma once

#include <QDialog>
#include <memory>

#include "tallybook/desktop/host/PreviewRun.h"

class QComboBox;
class QLabel;
class QLineEdit;
class QTabWidget;
class QTableView;

namespace tallybook::application {
class PreviewList;
}

namespace tallybook::desktop {

class PreviewWindow final : public QDialog {
 public:
  // Reads the preview whole; `book` outlives the window. `owner` may be null.
  PreviewWindow(PreviewRun& run, const engine::Book& book, QWidget* owner);
  ~PreviewWindow() override;

  // Shows it and waits: whether the user wants the import done.
  [[nodiscard]] bool WantsImport() { return exec() == QDialog::Accepted; }

 private:
  class ChangesModel;

  QWidget* NewChanges(PreviewRun& run);
  QWidget* NewTotals(PreviewRun& run);
  QWidget* NewFiles(PreviewRun& run);
  QWidget* NewReport(const PreviewRun& run);
  void AddDays(PreviewRun& run, QTabWidget& pages);
  void Choose();
  void SortBy(int column);
  void Count();

  const engine::Book& book_;
  std::unique_ptr<application::PreviewList> list_;
  ChangesModel* changes_ = nullptr;
  QTableView* table_ = nullptr;
  QLineEdit* account_ = nullptr;
  QComboBox* field_ = nullptr;
  QComboBox* file_ = nullptr;
  QLabel* count_ = nullptr;
  int sorted_by_ = -1;
  bool descending_ = false;
};

}  // namespace tallybook::desktop
