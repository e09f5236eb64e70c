// What an import would do: its figures as a list that can be chosen from and sorted, totals, days that go into one
// record, and the files with what becomes of them; and the import itself from there. One thread.
#pragma once

#include <QDialog>

#include "tallybook/desktop/host/PreviewRun.h"

class QTabWidget;

namespace tallybook::desktop {

class FigureListPane;

class PreviewWindow final : public QDialog {
 public:
  // Reads the preview whole; `book` outlives the window. `owner` may be null.
  PreviewWindow(PreviewRun& run, const engine::Book& book, QWidget* owner);

  // Shows it and waits: whether the user wants the import done.
  [[nodiscard]] bool WantsImport() { return exec() == QDialog::Accepted; }

 private:
  QWidget* NewChanges(PreviewRun& run);
  QWidget* NewTotals(PreviewRun& run);
  QWidget* NewFiles(PreviewRun& run);
  QWidget* NewReport(const PreviewRun& run);
  void AddDays(PreviewRun& run, QTabWidget& pages);

  const engine::Book& book_;
  bool is_dropped_ = false;  // the import would fail, and nothing of it would stay
  FigureListPane* changes_ = nullptr;
};

}  // namespace tallybook::desktop
