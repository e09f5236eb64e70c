#include "tallybook/desktop/window/SettingsDialog.h"

#include <QtWidgets/QCheckBox>
#include <QtWidgets/QDialogButtonBox>
#include <QtWidgets/QFormLayout>
#include <QtWidgets/QLabel>
#include <QtWidgets/QMessageBox>
#include <QtWidgets/QSpinBox>
#include <filesystem>
#include <utility>

#include "base/Failure.h"
#include "base/Narrow.h"
#include "tallybook/desktop/figures/LocaleStyle.h"
#include "tallybook/settings/SettingsFile.h"

namespace tallybook::desktop {

namespace {

constexpr const char* kSection = "Files";
constexpr const char* kJournalKey = "WriteRollback";
constexpr const char* kCacheKey = "CacheMiB";
constexpr int kUsualCache = 256;
constexpr int kMostCache = 1 << 20;

int NumberIn(settings::SettingsFile& file, const Text& key, int usual) {
  const Double number = LeadingNumber(file.ReadValue(key, std::to_string(usual)));
  return number >= 0 && number <= kMostCache ? static_cast<int>(number) : usual;
}

bool KeepsJournal(settings::SettingsFile& file) {
  return ToBoolean(file.ReadValue(kJournalKey, "-1"));
}

QLabel* NewHint(const QString& words) {
  auto* label = new QLabel(words);
  label->setWordWrap(true);
  label->setForegroundRole(QPalette::PlaceholderText);
  return label;
}

}  // namespace

SettingsDialog::SettingsDialog(QWidget* parent, Text settings_file)
    : QDialog(parent),
      settings_file_(std::move(settings_file)),
      keep_journal_(new QCheckBox("&Keep what imports change, so that they can be taken back")),
      cache_(new QSpinBox) {
  setWindowTitle("Settings");
  cache_->setRange(1, kMostCache);
  cache_->setSuffix(" MiB");
  cache_->setAccessibleName("Memory for a book that is worked on");
  settings::SettingsFile file(settings_file_);
  file.SetSection(kSection);
  try {
    keep_journal_->setChecked(KeepsJournal(file));
    cache_->setValue(NumberIn(file, kCacheKey, kUsualCache));
  } catch (const Failure&) {
    keep_journal_->setChecked(true);  // what the file holds cannot be read; writing it tells why
    cache_->setValue(kUsualCache);
  }
  auto* form = new QFormLayout(this);
  form->addRow(keep_journal_);
  form->addRow(
      NewHint("Without this an import is done for good. What is typed and pasted can be taken back in any case."));
  form->addRow("&Memory for a book that is worked on", cache_);
  form->addRow(
      NewHint("These settings hold for every book of this user, and for the command \u201ctallybook\u201d as well."));
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
  form->addRow(buttons);
  connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
  setMinimumWidth(fontMetrics().height() * 30);
}

void SettingsDialog::accept() {
  try {
    std::filesystem::create_directories(std::filesystem::path(settings_file_).parent_path());
    settings::SettingsFile file(settings_file_);
    file.SetSection(kSection);
    const bool journal_differs = KeepsJournal(file) != keep_journal_->isChecked();
    if (journal_differs) file.WriteValue(kJournalKey, keep_journal_->isChecked() ? "-1" : "0");
    if (NumberIn(file, kCacheKey, kUsualCache) != cache_->value())
      file.WriteValue(kCacheKey, std::to_string(cache_->value()));
  } catch (...) {
    QMessageBox::critical(this, "Settings", ToQt(CurrentFailure().Description()));
    return;
  }
  QDialog::accept();
}

}  // namespace tallybook::desktop
