#include "tallybook/desktop/forms/HostBinders.h"

#include <QCalendarWidget>
#include <QCheckBox>
#include <QDate>
#include <QDoubleSpinBox>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QPushButton>
#include <QTableView>
#include <QTextCharFormat>
#include <algorithm>
#include <cmath>
#include <utility>

#include "forms/HostControls.h"
#include "tallybook/desktop/forms/Fonts.h"
#include "tallybook/desktop/forms/Words.h"

namespace tallybook::desktop {

namespace {

// Dates count days from here.
QDate FirstDay() {
  return {1899, 12, 30};
}

QDate DayOf(Date date) {
  return FirstDay().addDays(static_cast<qint64>(std::floor(date)));
}

Date DateOf(const QDate& date) {
  return static_cast<Date>(FirstDay().daysTo(date));
}

}  // namespace

// --- Number box ------------------------------------------------------------------------------------------------------

NumberBoxBinder::NumberBoxBinder(NumberBox& box, QWidget& parent)
    : ControlBinder(box, *new QDoubleSpinBox(&parent)), box_(box), spin_(static_cast<QDoubleSpinBox&>(Widget())) {
  spin_.setFocusPolicy(Qt::StrongFocus);
  QObject::connect(&spin_, &QDoubleSpinBox::valueChanged, &Receiver(), [this](double value) {
    if (IsFollowing()) return;
    User([&] { box_.UserSetValue(value); });
    Follow({});
  });
}

void NumberBoxBinder::Follow(const Change& /*change*/) {
  const Following following(*this);
  spin_.setDecimals(box_.Decimals());
  spin_.setRange(box_.Min(), std::max(box_.Min(), box_.Max()));
  spin_.setSingleStep(box_.Step());
  spin_.setButtonSymbols(box_.HasSpinner() ? QAbstractSpinBox::UpDownArrows : QAbstractSpinBox::NoButtons);
  if (spin_.value() != box_.Value()) spin_.setValue(box_.Value());
}

// --- Save buttons ----------------------------------------------------------------------------------------------------

SaveButtonsBinder::SaveButtonsBinder(SaveButtons& buttons, QWidget& parent)
    : ControlBinder(buttons, *new QWidget(&parent)),
      buttons_(buttons),
      main_(*new QPushButton(&Widget())),
      cancel_(*new QPushButton(&Widget())) {
  auto* const row = new QHBoxLayout(&Widget());
  row->setContentsMargins(0, 0, 0, 0);
  row->setSpacing(2 * Unit(parent));
  row->addWidget(&main_);
  row->addWidget(&cancel_);
  main_.setObjectName(Widget().objectName() + QStringLiteral("Main"));
  cancel_.setObjectName(Widget().objectName() + QStringLiteral("Cancel"));
  main_.setDefault(true);
  cancel_.setAutoDefault(false);
  QObject::connect(&main_, &QPushButton::clicked, &Receiver(), [this] { Press(false); });
  QObject::connect(&cancel_, &QPushButton::clicked, &Receiver(), [this] { Press(true); });
}

const std::vector<QPushButton*>& SaveButtonsBinder::Add(FormAddition addition) {
  addition_ = std::move(addition);
  auto& row = static_cast<QHBoxLayout&>(*Widget().layout());
  for (std::size_t index = 0; index < addition_.buttons.size(); ++index) {
    const QString& caption = addition_.buttons[index].caption;
    auto* const button = new QPushButton(caption, &Widget());
    const QString place = index == 0 ? QString() : QString::number(index + 1);
    button->setObjectName(Widget().objectName() + QStringLiteral("Added") + place);
    button->setAccessibleName(SpokenName(FromQt(caption)));
    button->setAutoDefault(false);
    row.insertWidget(row.indexOf(&cancel_), button);
    QObject::connect(button, &QPushButton::clicked, &Receiver(), [this, index] { PressAdded(index); });
    added_.push_back(button);
  }
  if (addition_.choice) AddSwitch(*addition_.choice);
  return added_;
}

void SaveButtonsBinder::AddSwitch(const AddedSwitch& choice) {
  switch_ = new QCheckBox(choice.caption, &Widget());
  switch_->setObjectName(Widget().objectName() + QStringLiteral("Switch"));
  switch_->setAccessibleName(SpokenName(FromQt(choice.caption)));
  switch_->setAccessibleDescription(choice.help);
  switch_->setToolTip(choice.help);
  switch_->setChecked(choice.is_on);
  constexpr int kFirst = 0;
  static_cast<QHBoxLayout&>(*Widget().layout()).insertWidget(kFirst, switch_);
  QObject::connect(switch_, &QCheckBox::toggled, &Receiver(),
                   [this](bool on) { User([turned = addition_.choice->turned, on] { turned(on); }); });
}

std::vector<QAbstractButton*> SaveButtonsBinder::Row() const {
  std::vector<QAbstractButton*> row = {&main_};
  row.insert(row.end(), added_.begin(), added_.end());
  row.push_back(&cancel_);
  if (switch_ != nullptr) row.push_back(switch_);
  return row;
}

std::vector<QWidget*> SaveButtonsBinder::InputWidgets() const {
  const std::vector<QAbstractButton*> row = Row();
  return {row.begin(), row.end()};
}

QWidget& SaveButtonsBinder::FocusWidget() const {
  return main_;
}

std::vector<QPushButton*> SaveButtonsBinder::FootButtons() const {
  return {&main_, &cancel_};
}

std::size_t SaveButtonsBinder::Place() const {
  const std::vector<QAbstractButton*> row = Row();
  const auto at = std::ranges::find(row, Widget().window()->focusWidget());
  return at == row.end() ? 0 : static_cast<std::size_t>(at - row.begin());
}

bool SaveButtonsBinder::Move(bool backwards) {
  const std::vector<QAbstractButton*> row = Row();
  const std::size_t place = Place();
  if (backwards ? place == 0 : place + 1 == row.size()) return false;
  row[backwards ? place - 1 : place + 1]->setFocus(Qt::TabFocusReason);
  return true;
}

bool SaveButtonsBinder::TabWithin(bool backwards) {
  return Move(backwards);
}

bool SaveButtonsBinder::TakeKey(const KeyPress& press) {
  const bool forwards = press.key == kRightKey || press.key == kDownKey;
  const bool backwards = press.key == kLeftKey || press.key == kUpKey;
  if (!forwards && !backwards) return false;
  Move(backwards);
  return true;
}

bool SaveButtonsBinder::TakeEnter() {
  const QAbstractButton* const at = Row()[Place()];
  const auto added = std::ranges::find(added_, at);
  if (added != added_.end()) {
    PressAdded(static_cast<std::size_t>(added - added_.begin()));
  } else {
    Press(at == &cancel_);
  }
  return true;
}

void SaveButtonsBinder::Press(bool cancel) {
  if (cancel) {
    User([this] { buttons_.UserClick(SaveButtons::kCancelButton); });
  } else {
    PressMain();
  }
}

// Who is asked may end the window: what is held here goes with it.
void SaveButtonsBinder::PressMain() {
  User([&buttons = buttons_, may_press = addition_.may_press] {
    if (!may_press || may_press()) buttons.UserClick(SaveButtons::kMainButton);
  });
}

void SaveButtonsBinder::PressAdded(std::size_t index) {
  User([&buttons = buttons_, act = addition_.buttons[index].act, may_press = addition_.may_press] {
    if (act() && (!may_press || may_press())) buttons.UserClick(SaveButtons::kMainButton);
  });
}

void SaveButtonsBinder::Follow(const Change& /*change*/) {
  cancel_.setText(buttons_.CancelEnabled() ? QStringLiteral("&Cancel") : QStringLiteral("&Close"));
  cancel_.setAccessibleName(SpokenName(FromQt(cancel_.text())));
}

void SaveButtonsBinder::DrawCaption(const QString& caption) {
  main_.setText(caption);
  main_.setAccessibleName(SpokenName(FromQt(caption)));
}

// --- Calendar --------------------------------------------------------------------------------------------------------

CalendarBinder::CalendarBinder(CalendarBox& box, QWidget& parent)
    : ControlBinder(box, *new QCalendarWidget(&parent)), box_(box), calendar_(static_cast<QCalendarWidget&>(Widget())) {
  calendar_.setVerticalHeaderFormat(QCalendarWidget::NoVerticalHeader);
  // Qt's red for the end of the week is hard to read on a dark ground and means nothing here.
  for (const Qt::DayOfWeek day : {Qt::Saturday, Qt::Sunday}) calendar_.setWeekdayTextFormat(day, QTextCharFormat());
  QObject::connect(&calendar_, &QCalendarWidget::selectionChanged, &Receiver(), [this] {
    if (IsFollowing()) return;
    User([&] { box_.UserChoose(DateOf(calendar_.selectedDate())); });
    Follow({});
  });
}

std::vector<QWidget*> CalendarBinder::InputWidgets() const {
  return {&calendar_, &FocusWidget()};
}

// The days are a table within.
QWidget& CalendarBinder::FocusWidget() const {
  auto* const days = calendar_.findChild<QTableView*>();
  return days != nullptr ? static_cast<QWidget&>(*days) : calendar_;
}

void CalendarBinder::Follow(const Change& /*change*/) {
  if (!box_.Redraw()) return;
  const Following following(*this);
  calendar_.setDateRange(DayOf(box_.MinDate()), DayOf(std::max(box_.MinDate(), box_.MaxDate())));
  calendar_.setSelectedDate(DayOf(box_.Date()));
}

}  // namespace tallybook::desktop
