// Asks for a date in any plain form, and shows what was understood while it is typed.
#pragma once

#include <QtWidgets/QDialog>
#include <optional>

#include "tallybook/desktop/forms/LocaleStyle.h"

class QLabel;
class QLineEdit;
class QPushButton;

namespace tallybook::desktop {

class DateDialog final : public QDialog {
 public:
  // `from` is the date that is shown now; `first` to `last` are those that the book holds.
  DateDialog(QWidget* parent, const LocaleStyle& style, Date from, Date first, Date last);

  // The date that was understood; none while nothing can be.
  [[nodiscard]] std::optional<Date> Chosen() const { return chosen_; }

 private:
  void Read(const QString& typed);

  LocaleStyle style_;
  Date from_;
  Date first_;
  Date last_;
  std::optional<Date> chosen_;
  QLineEdit* line_;
  QLabel* understood_;
  QPushButton* go_;
};

}  // namespace tallybook::desktop
