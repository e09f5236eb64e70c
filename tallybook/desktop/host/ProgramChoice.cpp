#include "tallybook/desktop/host/ProgramChoice.h"

#include <QCollator>
#include <QDialog>
#include <QDialogButtonBox>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPointer>
#include <QProcess>
#include <QPushButton>
#include <QRegularExpression>
#include <QSet>
#include <QTextStream>
#include <QUrl>
#include <QVBoxLayout>
#include <algorithm>
#include <optional>

#include "tallybook/application/Shown.h"
#include "tallybook/desktop/host/QtTexts.h"

namespace tallybook::desktop {

namespace {

// The program of an entry's file; nothing for one that is hidden, is none, or takes no file.
std::optional<InstalledProgram> ReadEntry(const QString& path) {
  QFile file(path);
  if (!file.open(QIODevice::ReadOnly | QIODevice::Text)) return std::nullopt;
  QTextStream lines(&file);
  InstalledProgram program;
  bool in_entry = false;
  bool hidden = false;
  for (QString line; lines.readLineInto(&line);) {
    if (line.startsWith('[')) in_entry = line == "[Desktop Entry]";
    if (!in_entry) continue;
    if (line.startsWith("Name=")) program.name = line.mid(5).trimmed();
    if (line.startsWith("Exec=")) program.command = line.mid(5).trimmed();
    if (line == "NoDisplay=true" || line == "Hidden=true" || line == "Terminal=true") hidden = true;
  }
  static const QRegularExpression takes_file("%[fFuU]");
  const bool usable = !hidden && !program.name.isEmpty() && program.command.contains(takes_file);
  return usable ? std::optional(program) : std::nullopt;
}

class ProgramDialog : public QDialog {
 public:
  ProgramDialog(const QString& file, const std::vector<InstalledProgram>& programs, QWidget* owner) : QDialog(owner) {
    setWindowTitle(tr("Open With"));
    auto* const layout = new QVBoxLayout(this);
    auto* const words = new QLabel(tr("&Program for %1").arg(PlainCaption(FromQt(QFileInfo(file).fileName()))), this);
    words->setTextFormat(Qt::PlainText);
    list_ = new QListWidget(this);
    list_->setObjectName("programs");
    list_->setAccessibleName(tr("Programs"));
    words->setBuddy(list_);
    for (const InstalledProgram& program : programs) {
      auto* const entry = new QListWidgetItem(ToQt(application::Shown(FromQt(program.name))), list_);
      entry->setData(Qt::UserRole, program.command);
    }
    if (programs.empty()) words->setText(tr("No program is installed that opens files. Type the name of one:"));
    auto* const other = new QLabel(tr("&Or a command"), this);
    command_ = new QLineEdit(this);
    command_->setObjectName("command");
    command_->setAccessibleName(tr("Command"));
    other->setBuddy(command_);
    auto* const buttons = new QDialogButtonBox(QDialogButtonBox::Open | QDialogButtonBox::Cancel, this);
    for (QWidget* const part : std::initializer_list<QWidget*>{words, list_, other, command_, buttons})
      layout->addWidget(part);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(list_, &QListWidget::itemActivated, this, &QDialog::accept);
    connect(list_, &QListWidget::currentItemChanged, this, [this](const QListWidgetItem* current) {
      if (current != nullptr) command_->setText(current->data(Qt::UserRole).toString());
    });
    if (list_->count() > 0) list_->setCurrentRow(0);
  }

  [[nodiscard]] QString Command() const { return command_->text(); }

 private:
  QListWidget* list_ = nullptr;
  QLineEdit* command_ = nullptr;
};

}  // namespace

std::vector<InstalledProgram> ProgramsIn(const QStringList& data_folders) {
  std::vector<InstalledProgram> programs;
  QSet<QString> seen;
  for (const QString& folder : data_folders) {
    const QDir applications(folder + "/applications");
    QDirIterator entries(applications.path(), {"*.desktop"}, QDir::Files, QDirIterator::Subdirectories);
    while (entries.hasNext()) {
      const QString path = entries.next();
      const QString name = applications.relativeFilePath(path);
      if (seen.contains(name)) continue;
      seen.insert(name);
      if (auto program = ReadEntry(path)) programs.push_back(*std::move(program));
    }
  }
  const QCollator order;
  std::ranges::sort(programs, [&](const InstalledProgram& a, const InstalledProgram& b) {
    return order.compare(a.name, b.name) < 0;
  });
  return programs;
}

QStringList CommandWords(const QString& command, const QString& file) {
  QStringList words;
  bool placed = false;
  for (QString word : QProcess::splitCommand(command)) {
    if (word == "%f" || word == "%F" || word == "%u" || word == "%U") {
      word = word.toLower() == "%u" ? QUrl::fromLocalFile(file).toString() : file;
      if (!placed) words.append(word);
      placed = true;
    } else if (word.size() == 2 && word.startsWith('%')) {
      continue;
    } else {
      words.append(word.replace("%%", "%"));
    }
  }
  if (!placed && !words.isEmpty()) words.append(file);
  return words;
}

QStringList ChooseProgram(const QString& file, const QStringList& data_folders, QWidget* owner) {
  const QPointer<ProgramDialog> dialog(new ProgramDialog(file, ProgramsIn(data_folders), owner));
  const bool chosen = dialog->exec() == QDialog::Accepted && !dialog.isNull();
  QStringList words = chosen ? CommandWords(dialog->Command(), file) : QStringList();
  delete dialog.data();
  return words;
}

}  // namespace tallybook::desktop
