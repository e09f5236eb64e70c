#include "tallybook/desktop/window/KeysDialog.h"

#include <QtWidgets/QDialog>
#include <QtWidgets/QDialogButtonBox>
#include <QtWidgets/QHeaderView>
#include <QtWidgets/QMessageBox>
#include <QtWidgets/QTableWidget>
#include <QtWidgets/QVBoxLayout>
#include <array>
#include <utility>

namespace tallybook::desktop {

namespace {

using KeyRow = std::pair<const char*, const char*>;

constexpr std::array kKeys = {
    KeyRow{"Type a number", "Begin a change of the cell"},
    KeyRow{"F2", "Change the figure that stands there"},
    KeyRow{"Enter, Tab", "Take it and go down, or right"},
    KeyRow{"Escape", "Give the old figure back"},
    KeyRow{"Delete", "Set what is selected to zero"},
    KeyRow{"Ctrl+Z", "Take back what was typed or pasted"},
    KeyRow{"Ctrl+C, Ctrl+V", "Copy and paste blocks, to and from spreadsheets"},
    KeyRow{"Ctrl+Shift+C", "Copy with the heads of rows and columns"},
    KeyRow{"Ctrl+Left, Ctrl+Right", "Earlier and later"},
    KeyRow{"Ctrl+T", "Today"},
    KeyRow{"Ctrl+G", "Go to a date: 3 Feb, 2024-02, yesterday, +7"},
    KeyRow{"Ctrl+F", "Find an account by any part of its code or description"},
    KeyRow{"Ctrl+Page Up, Ctrl+Page Down", "The account before, the next one"},
    KeyRow{"Ctrl+1, Ctrl+2, Ctrl+3", "One account, one date, one field"},
    KeyRow{"Ctrl+K", "The chart; the arrow keys go through its values"},
    KeyRow{"Ctrl+J", "The journal"},
    KeyRow{"Ctrl+H", "Where the figure under the cursor comes from"},
    KeyRow{"Ctrl+Shift+T", "Hold exchange files against the book"},
    KeyRow{"Ctrl+L", "Accounts, fields and years of the book"},
    KeyRow{"Ctrl+B", "Back up the book"},
    KeyRow{"F1", "What the guide tells of the window at hand"},
    KeyRow{"F6", "From accounts to figures to the chart"},
};

}  // namespace

void ShowKeys(QWidget* parent) {
  QDialog dialog(parent);
  dialog.setWindowTitle("Keys");
  auto* table = new QTableWidget(static_cast<int>(kKeys.size()), 2);
  table->setHorizontalHeaderLabels({"Key", "What it does"});
  for (std::size_t row = 0; row < kKeys.size(); ++row) {
    table->setItem(static_cast<int>(row), 0, new QTableWidgetItem(kKeys[row].first));
    table->setItem(static_cast<int>(row), 1, new QTableWidgetItem(kKeys[row].second));
  }
  table->setAccessibleName("Keys of the main window");
  table->setEditTriggers(QAbstractItemView::NoEditTriggers);
  table->setSelectionBehavior(QAbstractItemView::SelectRows);
  table->setTabKeyNavigation(false);
  table->setShowGrid(false);
  table->verticalHeader()->hide();
  table->resizeColumnsToContents();
  table->horizontalHeader()->setStretchLastSection(true);
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close);
  QObject::connect(buttons, &QDialogButtonBox::rejected, &dialog, &QDialog::reject);
  auto* layout = new QVBoxLayout(&dialog);
  layout->addWidget(table, 1);
  layout->addWidget(buttons);
  const int unit = dialog.fontMetrics().height();
  dialog.resize(unit * 38, unit * 30);
  dialog.exec();
}

void ShowAbout(QWidget* parent) {
  QMessageBox box(parent);
  box.setWindowTitle("About Tallybook");
  box.setIcon(QMessageBox::Information);
  box.setText(QString("Tallybook %1").arg(TALLYBOOK_VERSION));
  box.setInformativeText(
      "Keeps operating figures per account, field and date, and exchanges them between books. Imports check everything "
      "before one figure changes, and every import can be taken back.\n\nNo licence has been granted yet. It uses Qt "
      "(LGPL 3) "
      "and SQLite (public domain).");
  box.setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
  box.addButton(QMessageBox::Close);
  box.exec();
}

}  // namespace tallybook::desktop
