// A look at a text file before it is imported: which file and how it will be imported, and then the findings as a list,
// the file's text around the one that is looked at with its line and its place marked, the lines with findings saved to
// be mended, and the import from there. It is nobody's child, so that it stands beside the main window. One thread.
#pragma once

#include <QtWidgets/QDialog>
#include <functional>
#include <optional>

#include "tallybook/desktop/host/FileCheck.h"
#include "tallybook/desktop/host/LongWork.h"

class QCheckBox;
class QComboBox;
class QGridLayout;
class QLabel;
class QLineEdit;
class QPushButton;
class QSplitter;
class QTableView;

namespace tallybook::desktop {

class FilePane;

class FileCheckWindow final : public QDialog {
 public:
  struct Means {
    // Looks at a file. Nothing where that failed or was cancelled, which has been told.
    std::function<std::optional<FileCheckResult>(const FileCheckWish& wish)> check;
    // Ends that, as soon as it can be.
    std::function<void()> ask_to_end;
    // Begins the import of a file in its prompt.
    std::function<void(const Text& file, bool is_delimited)> import;
    Text book;
    Text folder;  // that is looked in for files first
  };
  explicit FileCheckWindow(Means means);
  ~FileCheckWindow() override;

 protected:
  // Also Close and Escape: while a file is looked at that ends first, and the window behind it.
  void done(int result) override;

 private:
  class Model;

  QWidget* NewChoices();
  void AddDelimitedChoices(QGridLayout& rows);
  QWidget* NewFindings();
  QWidget* NewButtons();
  void Browse();
  void Follow();
  [[nodiscard]] FileCheckWish Wish() const;
  void Check();
  void Show(FileCheckResult result);
  void ShowNothing(const QString& words);
  void Choose();
  void ShowLine();
  void SaveLines();

  Means means_;
  std::optional<FileCheckResult> result_;
  LongWork work_;
  QLineEdit* file_;
  QComboBox* kind_;
  QComboBox* math_;
  QComboBox* encoding_;
  QComboBox* date_order_;
  QComboBox* line_ends_;
  QCheckBox* date_parts_;
  QCheckBox* system_fields_;
  QWidget* delimited_ = nullptr;
  QLabel* summary_;
  QComboBox* effect_;
  QTableView* table_;
  Model* model_ = nullptr;
  FilePane* text_;
  QSplitter* found_ = nullptr;
  QPushButton* check_ = nullptr;
  QPushButton* save_ = nullptr;
  QPushButton* import_ = nullptr;
};

}  // namespace tallybook::desktop
