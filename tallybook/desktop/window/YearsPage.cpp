#include "tallybook/desktop/window/YearsPage.h"

#include <QtCore/QSignalBlocker>
#include <QtWidgets/QFormLayout>
#include <QtWidgets/QHeaderView>
#include <QtWidgets/QLabel>
#include <QtWidgets/QSpinBox>
#include <QtWidgets/QTableWidget>
#include <QtWidgets/QVBoxLayout>
#include <algorithm>
#include <array>

#include "base/Failure.h"
#include "base/Narrow.h"
#include "tallybook/application/ListEdits.h"
#include "tallybook/desktop/window/ListsDraft.h"
#include "tallybook/engine/Calendar.h"

namespace tallybook::desktop {

namespace {

constexpr int kLeastTarget = 24;
constexpr int kColumns = 4;

QSpinBox* NewCount(const char* object_name, const QString& name) {
  auto* box = new QSpinBox;
  box->setObjectName(object_name);
  box->setAccessibleName(name);
  box->setKeyboardTracking(false);
  return box;
}

}  // namespace

YearsPage::YearsPage(QWidget* parent, ListsDraft& draft, const LocaleStyle& style)
    : QWidget(parent),
      draft_(draft),
      style_(style),
      held_(NewCount("held", "Years held")),
      in_use_(NewCount("in-use", "Years in use")),
      accounts_(NewCount("max-accounts", "Highest number of an account")),
      fields_(NewCount("max-fields", "Highest number of a field")),
      hint_(new QLabel),
      years_(new QTableWidget) {
  auto* form = new QFormLayout;
  form->setFieldGrowthPolicy(QFormLayout::FieldsStayAtSizeHint);
  form->addRow("Years &held", held_);
  form->addRow("Years in &use", in_use_);
  form->addRow("Account num&bers up to", accounts_);
  form->addRow("Field numbers up &to", fields_);
  hint_->setWordWrap(true);
  hint_->setTextFormat(Qt::PlainText);
  years_->setObjectName("years");
  years_->setAccessibleName("Years of the book");
  years_->setColumnCount(kColumns);
  years_->setHorizontalHeaderLabels({"Year", "From", "To", "In use"});
  years_->setEditTriggers(QAbstractItemView::NoEditTriggers);
  years_->setSelectionBehavior(QAbstractItemView::SelectRows);
  years_->setTabKeyNavigation(false);
  years_->setShowGrid(false);
  years_->setAlternatingRowColors(true);
  years_->verticalHeader()->hide();
  years_->verticalHeader()->setDefaultSectionSize(std::max(fontMetrics().height() * 3 / 2, kLeastTarget));
  years_->horizontalHeader()->setSectionResizeMode(QHeaderView::Stretch);
  years_->horizontalHeader()->setHighlightSections(false);
  years_->horizontalHeader()->setDefaultAlignment(Qt::AlignLeading | Qt::AlignVCenter);
  auto* layout = new QVBoxLayout(this);
  layout->addLayout(form);
  layout->addWidget(hint_);
  layout->addWidget(years_, 1);
  for (QSpinBox* box : {held_, in_use_}) {
    connect(box, &QSpinBox::valueChanged, this, [this] { Take(&YearsPage::TakeYears); });
  }
  for (QSpinBox* box : {accounts_, fields_}) {
    connect(box, &QSpinBox::valueChanged, this, [this] { Take(&YearsPage::TakeLimits); });
  }
  ShowAnew();
}

// A book never holds fewer years than before, and numbers never go less high.
void YearsPage::ShowAnew() {
  const engine::CalendarDescription& calendar = draft_.Now().calendar;
  const QSignalBlocker no_held(held_);
  const QSignalBlocker no_in_use(in_use_);
  held_->setRange(draft_.Stored().description.calendar.years, engine::kMaxYears);
  held_->setValue(calendar.years);
  in_use_->setRange(1, calendar.years);
  in_use_->setValue(calendar.years_in_use);
  const QSignalBlocker no_accounts(accounts_);
  const QSignalBlocker no_fields(fields_);
  const engine::BookDescription& own = draft_.Stored().description;
  accounts_->setRange(own.max_accounts, engine::kMaxAccountNumber);
  accounts_->setValue(draft_.Now().max_accounts);
  fields_->setRange(own.max_fields, engine::kMaxListLength);
  fields_->setValue(draft_.Now().max_fields);
  Text words = "Further years come behind the last one. Years beyond those in use are held and not offered.";
  for (const Text& trouble : application::BeyondExchangeFiles(draft_.Now())) {
    words += "\nThe book cannot be exported as an exchange file: it has " + trouble + ".";
  }
  hint_->setText(ToQt(words));
  FillTable();
}

void YearsPage::FillTable() {
  const engine::BookDescription& book = draft_.Now();
  const engine::Calendar calendar(book.calendar, book.data_level);
  years_->setRowCount(book.calendar.years);
  for (int row = 0; row < book.calendar.years; ++row) {
    const Integer name = ToInteger(book.calendar.first_year + row);
    const std::array<QString, kColumns> texts = {QString::number(name), ToQt(style_.dates(calendar.YearStart(name))),
                                                 ToQt(style_.dates(calendar.YearStart(ToInteger(name + 1)) - 1)),
                                                 row < book.calendar.years_in_use ? "yes" : "no"};
    for (int column = 0; column < kColumns; ++column) {
      years_->setItem(row, column, new QTableWidgetItem(texts[static_cast<std::size_t>(column)]));
    }
  }
}

void YearsPage::TakeYears() {
  draft_.SetYears(held_->value(), std::min(in_use_->value(), held_->value()));
}

void YearsPage::TakeLimits() {
  draft_.SetLimits(accounts_->value(), fields_->value());
}

void YearsPage::Take(void (YearsPage::*step)()) {
  Text refusal;
  try {
    (this->*step)();
  } catch (const Failure& failure) {
    refusal = failure.Description();
  }
  ShowAnew();
  if (!refusal.empty()) return refused_ ? refused_(refusal) : void();
  if (changed_) changed_();
}

}  // namespace tallybook::desktop
