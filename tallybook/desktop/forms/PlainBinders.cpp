#include "tallybook/desktop/forms/PlainBinders.h"

#include <QAction>
#include <QCheckBox>
#include <QLabel>
#include <QPushButton>
#include <QScrollBar>
#include <QStackedWidget>
#include <QStyle>
#include <QVBoxLayout>

#include "forms/PlainControls.h"
#include "tallybook/desktop/forms/Fonts.h"
#include "tallybook/desktop/forms/Words.h"

namespace tallybook::desktop {

namespace {

// The system's stock of icons, by number.
constexpr Long kStopStockIcon = 32513;
constexpr Long kQuestionStockIcon = 32514;
constexpr Long kExclamationStockIcon = 32515;
constexpr Long kInformationStockIcon = 32516;

struct StockIcon {
  Long number;
  QStyle::StandardPixmap pixmap;
  const char* words;
};
constexpr StockIcon kStockIcons[] = {
    {kStopStockIcon, QStyle::SP_MessageBoxCritical, "Error"},
    {kQuestionStockIcon, QStyle::SP_MessageBoxQuestion, "Question"},
    {kExclamationStockIcon, QStyle::SP_MessageBoxWarning, "Warning"},
    {kInformationStockIcon, QStyle::SP_MessageBoxInformation, "Information"},
};

const StockIcon* FindStockIcon(Long number) {
  for (const StockIcon& icon : kStockIcons)
    if (icon.number == number) return &icon;
  return nullptr;
}

// The width of the button that opens a picker, in units.
constexpr int kPickerWidth = 10;

// Keys with which Qt would walk from button to button, past the order that the form has.
bool IsArrow(Integer key) {
  return key == kLeftKey || key == kUpKey || key == kRightKey || key == kDownKey;
}

}  // namespace

// --- Label -----------------------------------------------------------------------------------------------------------

LabelBinder::LabelBinder(Label& label, QWidget& parent)
    : ControlBinder(label, *new QLabel(&parent)), label_(static_cast<QLabel&>(Widget())) {
  label_.setTextFormat(Qt::PlainText);
}

void LabelBinder::SetBuddy(QWidget& buddy) {
  label_.setBuddy(&buddy);
}

void LabelBinder::SetWrapping() {
  label_.setWordWrap(true);
}

// A label that is nobody's shows its marks as they stand.
void LabelBinder::DrawCaption(const QString& caption) {
  label_.setText(caption);
  // One that says nothing takes no room.
  if (caption.isEmpty()) label_.hide();
}

// --- Frame -----------------------------------------------------------------------------------------------------------

FrameBinder::FrameBinder(Frame& frame, QWidget& parent)
    : ControlBinder(frame, *new QWidget(&parent)), heading_(*new QLabel(&Widget())), contents_(*new QVBoxLayout) {
  auto* const rows = new QVBoxLayout(&Widget());
  rows->setContentsMargins(0, 0, 0, 0);
  rows->setSpacing(Unit(parent));
  rows->addWidget(&heading_);
  rows->addLayout(&contents_);
  heading_.setTextFormat(Qt::PlainText);
  heading_.setObjectName(Widget().objectName() + QStringLiteral("Heading"));
  contents_.setSpacing(2 * Unit(parent));
}

void FrameBinder::Follow(const Change& /*change*/) {
  if (pages_ != nullptr && Bound().Visible()) pages_->setCurrentWidget(&Widget());
}

void FrameBinder::DrawCaption(const QString& caption) {
  heading_.setText(caption);
  heading_.setVisible(!caption.isEmpty());
  QFont font = Widget().font();
  font.setBold(true);
  heading_.setFont(font);
}

// --- Picture ---------------------------------------------------------------------------------------------------------

PictureBinder::PictureBinder(Picture& picture, QWidget& parent)
    : ControlBinder(picture, *new QLabel(&parent)), picture_(picture), label_(static_cast<QLabel&>(Widget())) {
  label_.setAlignment(Qt::AlignTop);
  // Now, as nothing tells when it is drawn but the first time.
  picture_.Paint.Raise();
}

void PictureBinder::Follow(const Change& /*change*/) {
  const StockIcon* const icon = FindStockIcon(picture_.StandardIcon());
  const int size = label_.style()->pixelMetric(QStyle::PM_MessageBoxIconSize, nullptr, &label_);
  label_.setPixmap(icon == nullptr ? QPixmap() : label_.style()->standardIcon(icon->pixmap).pixmap(size));
}

QString PictureBinder::AccessibleName() const {
  const StockIcon* const icon = FindStockIcon(picture_.StandardIcon());
  return icon == nullptr ? QString() : QString::fromLatin1(icon->words);
}

// --- Button ----------------------------------------------------------------------------------------------------------

ButtonBinder::ButtonBinder(CommandButton& button, QWidget& parent)
    : ControlBinder(button, *new QPushButton(&parent)), button_(button), push_(static_cast<QPushButton&>(Widget())) {
  push_.setAutoDefault(false);
  QObject::connect(&push_, &QPushButton::clicked, &Receiver(), [this] { Press(false); });
}

bool ButtonBinder::TakeKey(const KeyPress& press) {
  return IsArrow(press.key);
}

bool ButtonBinder::TakeEnter() {
  Press(false);
  return true;
}

void ButtonBinder::Press(bool /*cancel*/) {
  User([this] { button_.UserClick(); });
}

void ButtonBinder::DrawCaption(const QString& caption) {
  // A button without words opens the picker for the box beside it; its hint says so.
  push_.setText(caption.isEmpty() ? QStringLiteral("\u2026") : caption);
  push_.setMaximumWidth(caption.isEmpty() ? kPickerWidth * Unit(push_) : QWIDGETSIZE_MAX);
}

// --- Check box -------------------------------------------------------------------------------------------------------

CheckBoxBinder::CheckBoxBinder(CheckBox& box, QWidget& parent)
    : ControlBinder(box, *new QCheckBox(&parent)), box_(box), check_(static_cast<QCheckBox&>(Widget())) {
  QObject::connect(&check_, &QCheckBox::clicked, &Receiver(), [this] {
    User([this] { box_.UserClick(); });
    Follow({});
  });
}

void CheckBoxBinder::Follow(const Change& /*change*/) {
  const Following following(*this);
  check_.setChecked(box_.Checked());
}

void CheckBoxBinder::DrawCaption(const QString& caption) {
  check_.setText(caption);
}

// --- Scroll bar ------------------------------------------------------------------------------------------------------

ScrollBarBinder::ScrollBarBinder(ScrollBar& bar, QWidget& parent)
    : ControlBinder(bar, *new QScrollBar(Qt::Vertical, &parent)),
      bar_(bar),
      scroll_(static_cast<QScrollBar&>(Widget())) {
  scroll_.setFocusPolicy(Qt::StrongFocus);
  QObject::connect(&scroll_, &QScrollBar::valueChanged, &Receiver(), [this](int value) {
    User([&] { bar_.UserScroll(value); });
    Follow({});
  });
}

void ScrollBarBinder::Follow(const Change& /*change*/) {
  const Following following(*this);
  scroll_.setRange(std::min(bar_.Min(), bar_.Max()), std::max(bar_.Min(), bar_.Max()));
  scroll_.setSingleStep(bar_.SmallChange());
  scroll_.setPageStep(bar_.LargeChange());
  scroll_.setValue(bar_.Value());
}

// --- Menu entry ------------------------------------------------------------------------------------------------------

MenuItemBinder::MenuItemBinder(MenuItem& item, QAction& action) : item_(item), action_(action) {
  QObject::connect(&action_, &QAction::triggered, &receiver_, [this] {
    CarryOut([this] { item_.UserClick(); });
    Follow();
  });
  item_.Changed.ConnectWhile(life_, [this] { Follow(); });
  Follow();
}

void MenuItemBinder::Follow() {
  action_.setText(DrawnCaption(item_.Caption()));
  action_.setEnabled(item_.Enabled());
  action_.setVisible(item_.Visible());
  action_.setCheckable(item_.Checked());
  action_.setChecked(item_.Checked());
  action_.setToolTip(ToQt(item_.Hint()));
}

}  // namespace tallybook::desktop
