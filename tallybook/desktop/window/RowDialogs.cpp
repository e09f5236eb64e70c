#include "tallybook/desktop/window/RowDialogs.h"

#include <QtGui/QIntValidator>
#include <QtWidgets/QCheckBox>
#include <QtWidgets/QDialogButtonBox>
#include <QtWidgets/QFileDialog>
#include <QtWidgets/QFormLayout>
#include <QtWidgets/QHBoxLayout>
#include <QtWidgets/QLabel>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QPlainTextEdit>
#include <QtWidgets/QPushButton>
#include <QtWidgets/QVBoxLayout>
#include <utility>

#include "tallybook/application/Shown.h"
#include "tallybook/desktop/forms/Words.h"
#include "tallybook/desktop/window/ListFile.h"
#include "tallybook/engine/BookDescription.h"

namespace tallybook::desktop {

namespace {

QLabel* NewTrouble(const QWidget& window) {
  auto* label = new QLabel;
  label->setObjectName("trouble");
  label->setWordWrap(true);
  label->setTextFormat(Qt::PlainText);
  label->setMinimumHeight(window.fontMetrics().height() * 3);
  label->setAlignment(Qt::AlignTop | Qt::AlignLeading);
  return label;
}

void Show(QLabel& label, const Text& words) {
  label.setText(ToQt(application::Shown(words)));
  label.setTextInteractionFlags(words.empty() ? Qt::NoTextInteraction : Qt::TextSelectableByMouse);
  label.setAccessibleName(label.text());
}

}  // namespace

// --- One row ---------------------------------------------------------------------------------------------------------

RowDialog::RowDialog(QWidget* parent, const Words& words, const TypedRow& row, Taker take)
    : QDialog(parent), take_(std::move(take)), number_of_row_(row.number), trouble_(NewTrouble(*this)) {
  setWindowTitle(words.title);
  auto* form = new QFormLayout(this);
  const auto add_line = [&](const QString& label, const char* name, const Text& text) {
    auto* line = new QLineEdit(ToQt(text));
    line->setObjectName(name);
    line->setAccessibleName(SpokenName(FromQt(label)));
    form->addRow(label, line);
    connect(line, &QLineEdit::textEdited, this, [this] { Show(*trouble_, ""); });
    return line;
  };
  if (!words.is_field) code_ = add_line("&Code", "code", row.code);
  description_ = add_line("&Description", "description", row.description);
  if (words.has_number) {
    number_ = add_line("&Number", "number", row.number == 0 ? Text() : std::to_string(row.number));
    number_->setPlaceholderText("one that was never given");
    number_->setValidator(new QIntValidator(0, engine::kMaxAccountNumber, number_));
  }
  if (words.is_field) {
    system_ = new QCheckBox("&Kept by the book itself");
    system_->setObjectName("system");
    system_->setChecked(row.system);
    form->addRow(system_);
  }
  form->addRow(trouble_);
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
  form->addRow(buttons);
  connect(buttons, &QDialogButtonBox::accepted, this, &RowDialog::accept);
  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
  setMinimumWidth(fontMetrics().height() * 28);
}

TypedRow RowDialog::Typed() const {
  TypedRow row;
  if (code_ != nullptr) row.code = FromQt(code_->text().trimmed());
  row.description = FromQt(description_->text().trimmed());
  row.number = number_ == nullptr ? number_of_row_ : number_->text().toInt();
  row.system = system_ != nullptr && system_->isChecked();
  return row;
}

void RowDialog::accept() {
  const Text trouble = take_(Typed());
  if (trouble.empty()) return QDialog::accept();
  Show(*trouble_, trouble);
  QLineEdit* const first = code_ != nullptr ? code_ : description_;
  first->setFocus();
  first->selectAll();
}

// --- Many rows -------------------------------------------------------------------------------------------------------

PasteRowsDialog::PasteRowsDialog(QWidget* parent, const Words& words, const QString& lines, Reader read, Taker take)
    : QDialog(parent),
      read_(std::move(read)),
      take_(std::move(take)),
      lines_(new QPlainTextEdit(lines)),
      count_(new QLabel),
      trouble_(NewTrouble(*this)) {
  setWindowTitle(words.title);
  auto* hint = new QLabel(words.hint);
  hint->setWordWrap(true);
  hint->setBuddy(lines_);
  lines_->setObjectName("lines");
  lines_->setAccessibleName(words.title);
  lines_->setPlaceholderText(words.example);
  lines_->setTabChangesFocus(true);
  lines_->setLineWrapMode(QPlainTextEdit::NoWrap);
  auto* file = new QPushButton("Read from a &File\u2026");
  file->setAutoDefault(false);
  auto* row = new QHBoxLayout;
  row->addWidget(count_, 1);
  row->addWidget(file);
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Cancel);
  add_ = buttons->addButton("&Add", QDialogButtonBox::AcceptRole);
  add_->setObjectName("add");
  auto* layout = new QVBoxLayout(this);
  layout->addWidget(hint);
  layout->addWidget(lines_, 1);
  layout->addLayout(row);
  layout->addWidget(trouble_);
  layout->addWidget(buttons);
  add_->setDefault(true);
  connect(lines_, &QPlainTextEdit::textChanged, this, [this] { Follow(); });
  connect(file, &QPushButton::clicked, this, [this] { ReadFile(); });
  connect(buttons, &QDialogButtonBox::accepted, this, &PasteRowsDialog::accept);
  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
  resize(fontMetrics().height() * 40, fontMetrics().height() * 28);
  Follow();
  lines_->setFocus();
}

void PasteRowsDialog::Follow() {
  const Reading reading = read_(FromQt(lines_->toPlainText()));
  count_->setText(ToQt(reading.count));
  Show(*trouble_, reading.trouble);
  add_->setEnabled(!reading.is_empty && reading.trouble.empty());
}

void PasteRowsDialog::ReadFile() {
  const QString path = QFileDialog::getOpenFileName(this, "Read a List", {}, "Lists (*.csv *.txt);;All files (*)");
  if (path.isEmpty()) return;
  QString why;
  const QString text = TextOfList(path, why);
  if (why.isEmpty()) return lines_->setPlainText(text);
  Show(*trouble_, FromQt(QString("%1 cannot be read: %2").arg(path, why)));
}

void PasteRowsDialog::accept() {
  const Text trouble = take_(FromQt(lines_->toPlainText()));
  if (trouble.empty()) return QDialog::accept();
  Show(*trouble_, trouble);
}

}  // namespace tallybook::desktop
