#include "tallybook/desktop/window/DateDialog.h"

#include <QtWidgets/QDialogButtonBox>
#include <QtWidgets/QFormLayout>
#include <QtWidgets/QLabel>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QPushButton>
#include <cmath>

#include "base/Dates.h"
#include "platform/Clock.h"

namespace tallybook::desktop {

DateDialog::DateDialog(QWidget* parent, const LocaleStyle& style, Date from, Date first, Date last)
    : QDialog(parent),
      style_(style),
      from_(from),
      first_(first),
      last_(last),
      line_(new QLineEdit),
      understood_(new QLabel) {
  setWindowTitle("Go to a Date");
  line_->setAccessibleName("Date");
  line_->setPlaceholderText(QString("%1, 3 Feb, yesterday, +7").arg(ToQt(style_.dates(from_))));
  understood_->setMinimumWidth(fontMetrics().height() * 22);
  understood_->setMinimumHeight(fontMetrics().height() * 2);
  understood_->setWordWrap(true);
  auto* form = new QFormLayout(this);
  form->addRow("&Date", line_);
  form->addRow("", understood_);
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Cancel);
  go_ = buttons->addButton("&Go", QDialogButtonBox::AcceptRole);
  form->addRow(buttons);
  go_->setDefault(true);  // once it is the dialog's: before, it would be nobody's
  connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
  connect(line_, &QLineEdit::textChanged, this, [this](const QString& typed) { Read(typed); });
  Read({});
  line_->setFocus();
}

void DateDialog::Read(const QString& typed) {
  chosen_ = ReadPlainDate(FromQt(typed), from_, std::floor(Now()), style_.habits);
  const bool held = chosen_ && *chosen_ >= first_ && *chosen_ <= last_;
  const QString range = QString("The book holds %1 to %2.").arg(ToQt(style_.dates(first_)), ToQt(style_.dates(last_)));
  if (typed.trimmed().isEmpty()) {
    understood_->setText(range);
  } else if (!chosen_) {
    understood_->setText("This is no date yet.");
  } else {
    const QString date = ToQt(LongDateText(*chosen_));
    understood_->setText(held ? date : QString("%1. %2").arg(date, range));
  }
  understood_->setAccessibleName(understood_->text());
  if (!held) chosen_.reset();
  go_->setEnabled(held);
}

}  // namespace tallybook::desktop
