// A report in a window: what changed at its head, the report below it as text whose columns stand under each other, and
// what can be done with it: search, look at its pages, print, save as PDF, HTML or text, and take the import back that
// it tells of. Opens as fast with a hundred thousand lines as with ten.
//
//   Ctrl+F          the search box; F3 and Shift+F3, or Enter and Shift+Enter in the box: next and previous
//   Ctrl+P, Ctrl+S  print and save; Escape in the box leaves it, elsewhere closes
//
// A window by itself: it belongs to its owner and deletes itself when it is closed. One thread.
#pragma once

#include <QWidget>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "platform/FileDialogs.h"
#include "tallybook/desktop/host/WindowMemory.h"
#include "tallybook/report/Report.h"

class QLabel;
class QLineEdit;
class QPagedPaintDevice;
class QPlainTextEdit;
class QPrinter;
class QPushButton;

namespace tallybook::desktop {

// What a report is shown with besides itself.
struct ReportSetting {
  std::vector<Text> changes = {};  // what the operation changed, one line each
  // Takes the import back, having asked and told; gives whether it did. Empty where there is nothing to take back.
  std::function<bool()> undo = {};
};

class ReportWindow : public QWidget {
 public:
  // `head` is that of the report's pages. `owner` may be null; then whoever made the window deletes it, if nobody
  // closes it before.
  ReportWindow(report::Report report, report::Blocks head, ReportSetting setting, QWidget* owner,
               WindowMemory memory = WindowMemory());
  ~ReportWindow() override;

  // Writes the report whole, in the form that the extension names; told over the window where that fails. False then.
  bool SaveAs(const Text& path);
  // Sets the report's pages on a printer, or anything else that has pages.
  void PrintOn(QPagedPaintDevice& pages) const;
  // As the print dialog left the printer. A file is written whole and never onto a book. Told over the window where it
  // fails; false then.
  bool Print(QPrinter& printer);

 protected:
  void keyPressEvent(QKeyEvent* event) override;
  void closeEvent(QCloseEvent* event) override;
  bool eventFilter(QObject* object, QEvent* event) override;

 private:
  void MakeHead();
  void MakeText();
  void MakeButtons();
  void LayOut();
  void Search(bool backwards);
  void CountFound();
  void AskSave();
  void AskPrint();
  void AskPrintOn(QPrinter& printer, QWidget& over);
  void Preview();
  void Undo();
  [[nodiscard]] std::string PdfLike(const QPrinter& printer) const;
  bool Guarded(const std::function<void()>& act) const;
  QPushButton* MakeButton(const QString& caption, const char* name, void (ReportWindow::*act)());

  report::Report report_;
  report::Blocks head_;
  ReportSetting setting_;
  WindowMemory memory_;
  QLabel* title_ = nullptr;
  QLabel* created_ = nullptr;
  QLabel* changes_ = nullptr;
  QPlainTextEdit* text_ = nullptr;
  QLineEdit* search_ = nullptr;
  QLabel* found_ = nullptr;
  QPushButton* next_ = nullptr;
  QPushButton* previous_ = nullptr;
  QPushButton* save_ = nullptr;
  QPushButton* print_ = nullptr;
  QPushButton* preview_ = nullptr;
  QPushButton* undo_ = nullptr;
  QPushButton* close_ = nullptr;
};

}  // namespace tallybook::desktop
