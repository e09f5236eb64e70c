#include "tallybook/desktop/window/SettingsDialog.h"

#include <QtGui/QFontDatabase>
#include <QtWidgets/QCheckBox>
#include <QtWidgets/QComboBox>
#include <QtWidgets/QDialogButtonBox>
#include <QtWidgets/QFileDialog>
#include <QtWidgets/QFormLayout>
#include <QtWidgets/QHBoxLayout>
#include <QtWidgets/QLabel>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QMessageBox>
#include <QtWidgets/QPushButton>
#include <QtWidgets/QSpinBox>
#include <QtWidgets/QVBoxLayout>
#include <filesystem>
#include <utility>

#include "base/Failure.h"
#include "base/Narrow.h"
#include "tallybook/application/Shown.h"
#include "tallybook/settings/SettingsFile.h"

namespace tallybook::desktop {

namespace {

// The words of a caption without the mark of its mnemonic.
QString NameOf(const Preference& preference) {
  return QString(preference.caption).remove('&');
}

QLabel* NewHint(const QString& words) {
  auto* label = new QLabel(words);
  label->setWordWrap(true);
  return label;
}

QLabel* NewTitle(const QString& words) {
  auto* label = new QLabel(words);
  QFont bold = label->font();
  bold.setBold(true);
  label->setFont(bold);
  return label;
}

// A list of codes with their words.
QComboBox* NewList(const QString& name) {
  auto* list = new QComboBox;
  list->setAccessibleName(name);
  list->setSizeAdjustPolicy(QComboBox::AdjustToContents);
  return list;
}

Text CodeOf(const QComboBox& list) {
  return FromQt(list.currentData().toString());
}

}  // namespace

SettingsDialog::SettingsDialog(QWidget* parent, Text settings_file)
    : QDialog(parent), settings_file_(std::move(settings_file)) {
  setWindowTitle("Settings");
  const int unit = fontMetrics().height() / 4;
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(4 * unit, 4 * unit, 4 * unit, 4 * unit);
  for (const PreferenceGroup& group : AllPreferences()) AddGroup(*layout, group);
  ShowValues();
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
  layout->addStretch(1);
  layout->addWidget(buttons);
  connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
  setMinimumWidth(fontMetrics().height() * 34);
  rows_.front().widget->setFocus();
}

void SettingsDialog::AddGroup(QVBoxLayout& layout, const PreferenceGroup& group) {
  const int unit = fontMetrics().height() / 4;
  if (!rows_.empty()) layout.addSpacing(4 * unit);
  layout.addWidget(NewTitle(group.title));
  auto* form = new QFormLayout;
  form->setContentsMargins(4 * unit, 0, 0, 0);
  layout.addLayout(form);
  for (const Preference& preference : group.preferences) {
    Row row = NewRow(preference);
    row.widget->setObjectName(preference.key);
    QWidget* const shown = row.widget->parentWidget() != nullptr ? row.widget->parentWidget() : row.widget;
    if (preference.kind == PreferenceKind::kSwitch) {
      form->addRow(shown);
    } else {
      auto* label = new QLabel(preference.caption);
      label->setBuddy(row.widget);
      form->addRow(label, shown);
    }
    if (*preference.hint != 0) form->addRow(NewHint(preference.hint));
    rows_.push_back(std::move(row));
  }
}

SettingsDialog::Row SettingsDialog::NewRow(const Preference& preference) {
  switch (preference.kind) {
    case PreferenceKind::kSwitch:
      return NewSwitch(preference);
    case PreferenceKind::kNumber:
      return NewNumber(preference);
    case PreferenceKind::kFont:
      return NewFont(preference);
    case PreferenceKind::kChoice:
      return NewChoice(preference);
    case PreferenceKind::kFolder:
      return NewFolder(preference);
  }
  throw Failure(FailureNumber::kInternal, "A setting of no kind");
}

SettingsDialog::Row SettingsDialog::NewSwitch(const Preference& preference) {
  auto* box = new QCheckBox(preference.caption);
  return {&preference, box, [box] { return Text(box->isChecked() ? "-1" : "0"); },
          [box](const Text& value) { box->setChecked(ToBoolean(value)); }, ""};
}

SettingsDialog::Row SettingsDialog::NewNumber(const Preference& preference) {
  auto* box = new QSpinBox;
  box->setRange(preference.least, preference.most);
  box->setSuffix(preference.unit);
  box->setSpecialValueText(preference.words_of_least);
  box->setAccessibleName(NameOf(preference));
  box->setSizePolicy(QSizePolicy::Maximum, QSizePolicy::Fixed);
  return {&preference, box, [box] { return std::to_string(box->value()); },
          [box](const Text& value) { box->setValue(static_cast<int>(LeadingNumber(value))); }, ""};
}

SettingsDialog::Row SettingsDialog::NewFont(const Preference& preference) {
  QComboBox* const list = NewList(NameOf(preference));
  list->addItem("That of the system", QString());
  for (const QString& family : QFontDatabase::families())
    if (!QFontDatabase::isPrivateFamily(family)) list->addItem(family, family);
  list->setSizePolicy(QSizePolicy::Maximum, QSizePolicy::Fixed);
  const auto show = [list](const Text& value) {
    const QString family = ToQt(value);
    // One that is not there now is kept all the same.
    if (list->findData(family) < 0) list->addItem(family, family);
    list->setCurrentIndex(list->findData(family));
  };
  return {&preference, list, [list] { return CodeOf(*list); }, show, ""};
}

SettingsDialog::Row SettingsDialog::NewChoice(const Preference& preference) {
  QComboBox* const list = NewList(NameOf(preference));
  for (const PreferenceChoice& choice : preference.choices) list->addItem(choice.words, QString(choice.code));
  list->setSizePolicy(QSizePolicy::Maximum, QSizePolicy::Fixed);
  return {&preference, list, [list] { return CodeOf(*list); },
          [list](const Text& value) { list->setCurrentIndex(list->findData(ToQt(value))); }, ""};
}

SettingsDialog::Row SettingsDialog::NewFolder(const Preference& preference) {
  auto* both = new QWidget;
  auto* line = new QLineEdit(both);
  line->setAccessibleName(NameOf(preference));
  line->setPlaceholderText("Your documents");
  auto* choose = new QPushButton("&Choose\u2026", both);
  choose->setAutoDefault(false);
  connect(choose, &QPushButton::clicked, this, [this, line] {
    const QString chosen = QFileDialog::getExistingDirectory(this, "Choose a Folder", line->text());
    if (!chosen.isEmpty()) line->setText(chosen);
  });
  auto* beside = new QHBoxLayout(both);
  beside->setContentsMargins(0, 0, 0, 0);
  beside->addWidget(line, 1);
  beside->addWidget(choose);
  return {&preference, line, [line] { return FromQt(line->text()); },
          [line](const Text& value) { line->setText(ToQt(value)); }, ""};
}

void SettingsDialog::ShowValues() {
  for (Row& row : rows_) {
    try {
      row.show(ValueOf(*row.preference, settings_file_));
    } catch (const Failure&) {
      row.show(row.preference->usual);  // what the file holds cannot be read; writing it tells why
    }
    row.before = row.value();
  }
}

void SettingsDialog::Tell(const QString& words) {
  QMessageBox box(QMessageBox::Critical, windowTitle(), words, QMessageBox::Ok, this);
  box.setTextFormat(Qt::PlainText);
  box.setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
  box.exec();
}

bool SettingsDialog::HasFolders() {
  for (const Row& row : rows_) {
    const Text value = row.value();
    if (row.preference->kind != PreferenceKind::kFolder || value.empty()) continue;
    std::error_code trouble;
    if (std::filesystem::is_directory(value, trouble)) continue;
    Tell("There is no folder " + ToQt(application::Shown(value)) + ".");
    row.widget->setFocus();
    return false;
  }
  return true;
}

void SettingsDialog::accept() {
  if (!HasFolders()) return;
  try {
    std::filesystem::create_directories(std::filesystem::path(settings_file_).parent_path());
    settings::SettingsFile file(settings_file_);
    for (Row& row : rows_) {
      const Text value = row.value();
      if (value == row.before) continue;
      file.SetSection(row.preference->section);
      file.WriteValue(row.preference->key, value);
      row.before = value;
    }
  } catch (...) {
    return Tell(ToQt(application::Shown(CurrentFailure().Description())));
  }
  QDialog::accept();
}

}  // namespace tallybook::desktop
