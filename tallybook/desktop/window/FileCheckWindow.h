// A look at a file before it is imported: which file and how it will be imported, and then the findings as a list, the
// file around the one that is looked at with its place marked, the lines of a text file with findings saved to be
// mended, and the import from there. It is nobody's child, so that it stands beside the main window. One thread.
#pragma once

#include <QtWidgets/QDialog>
#include <functional>
#include <optional>
#include <vector>

#include "tallybook/application/DefinitionLook.h"
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
class FindingModel;

class FileCheckWindow final : public QDialog {
 public:
  struct Means {
    // The exchange definitions of the book. May fail, which the window tells.
    std::function<std::vector<application::SeenDefinition>()> definitions;
    // Looks at a file. Nothing where that failed or was cancelled, which has been told.
    std::function<std::optional<FileCheckResult>(const FileCheckWish& wish)> check;
    // Ends that, as soon as it can be.
    std::function<void()> ask_to_end;
    // Begins the import of a file in its prompt.
    std::function<void(const FileCheckWish& wish)> import;
    Text book;
    Text folder;  // that is looked in for files first
  };
  explicit FileCheckWindow(Means means);
  ~FileCheckWindow() override;

  // Reads the definitions anew, and stays with the one that is chosen.
  void FillDefinitions();
  // Fills in all of it, and checks.
  void Begin(const FileCheckWish& wish);

 protected:
  // Also Close and Escape: while a file is looked at that ends first, and the window behind it.
  void done(int result) override;

 private:
  QWidget* NewChoices();
  QWidget* NewFilters();
  void AddDelimitedChoices(QGridLayout& rows);
  QWidget* NewFindings();
  QWidget* NewButtons();
  void Browse();
  void FollowFile();
  void Follow();
  void FollowMath();
  [[nodiscard]] ImportKind Kind() const;
  [[nodiscard]] FileCheckWish Wish() const;
  void Check();
  void Show(FileCheckResult result);
  void FillEffects();
  void ShowNothing(const QString& words);
  void Choose();
  void SortBy(int column);
  void ShowPlace();
  void SaveLines();

  Means means_;
  std::vector<application::SeenDefinition> definitions_;
  Text why_no_definition_;
  QString said_;  // where there is no result
  std::optional<FileCheckResult> result_;
  LongWork work_;
  QLineEdit* file_;
  QComboBox* kind_;
  QComboBox* math_;
  QComboBox* definition_;
  QComboBox* encoding_;
  QComboBox* date_order_;
  QComboBox* line_ends_;
  QCheckBox* date_parts_;
  QCheckBox* system_fields_;
  QWidget* delimited_ = nullptr;
  QLabel* definition_label_ = nullptr;
  QLabel* encoding_label_ = nullptr;
  QLabel* summary_;
  QComboBox* effect_;
  QLineEdit* part_;
  QTableView* table_;
  FindingModel* model_ = nullptr;
  QLabel* detail_;  // of the finding at hand, all of its words
  FilePane* text_;
  QSplitter* found_ = nullptr;
  QPushButton* check_ = nullptr;
  QPushButton* save_ = nullptr;
  QPushButton* import_ = nullptr;
};

}  // namespace tallybook::desktop
