#include "tallybook/desktop/forms/ControlBinder.h"

#include <QFont>
#include <QLabel>
#include <QStyle>
#include <QWidget>
#include <algorithm>
#include <utility>

#include "forms/Control.h"
#include "tallybook/desktop/forms/Fonts.h"
#include "tallybook/desktop/forms/Words.h"
#include "views/View.h"

namespace tallybook::desktop {

ControlBinder::ControlBinder(Control& control, QWidget& widget) : control_(control), widget_(widget) {
  widget_.setObjectName(
      ToQt(control.Index() == kNoIndex ? control.Name() : control.Name() + std::to_string(control.Index())));
}

ControlBinder::~ControlBinder() = default;

void ControlBinder::Start() {
  control_.Changed.ConnectWhile(life_, [this](const Change& change) { Hear(change); });
  control_.Repainted.ConnectWhile(life_, [this] { widget_.repaint(); });
  control_.GotFocus.ConnectWhile(life_, [this] { TakeFocusBack(); });
  // Behind the dialog, which may have changed it.
  control_.KeyPress.ConnectWhile(life_, [this](Integer& code) { character_left_ = code; });
  Hear({});
}

QLabel& ControlBinder::MakeCaptionLabel(QWidget& parent) {
  caption_label_ = new QLabel(&parent);
  caption_label_->setTextFormat(Qt::PlainText);
  caption_label_->setBuddy(&FocusWidget());
  caption_label_->setObjectName(widget_.objectName() + QStringLiteral("Caption"));
  return *caption_label_;
}

void ControlBinder::SetNamedBy(Control& label) {
  named_by_ = &label;
  label.Changed.ConnectWhile(life_, [this] { ShowState(); });
}

void ControlBinder::SetBehind(std::vector<Control*> others) {
  before_ = std::move(others);
  for (Control* const other : before_) other->Changed.ConnectWhile(life_, [this] { ShowState(); });
}

bool ControlBinder::IsSeen() const {
  return control_.Visible() && std::ranges::none_of(before_, [](const Control* other) { return other->Visible(); });
}

void ControlBinder::SetLeastSize(const views::Part& part) {
  if (part.characters > 0) FocusWidget().setMinimumWidth(CharacterWidth(widget_) * part.characters);
}

void ControlBinder::SetFloating() {
  floats_ = true;
  const QSize size = widget_.sizeHint();
  control_.SetPlace({0, 0, size.width(), size.height()});
  widget_.resize(size);
}

void ControlBinder::PutFloat() {
  if (!floats_) return;
  const tallybook::Place& place = control_.Place();
  widget_.setGeometry(Mirrored({place.left, place.top, place.width, place.height}, *widget_.parentWidget()));
}

QRect Mirrored(const QRect& place, const QWidget& around) {
  return QStyle::visualRect(around.layoutDirection(), around.rect(), place);
}

QRect ControlBinder::PlaceWithin(const QWidget& around) const {
  return {widget_.mapTo(&around, QPoint(0, 0)), widget_.size()};
}

std::vector<QWidget*> ControlBinder::InputWidgets() const {
  return {&widget_};
}

QWidget& ControlBinder::FocusWidget() const {
  return widget_;
}

bool ControlBinder::TakeKey(const KeyPress& /*press*/) {
  return false;
}

QString ControlBinder::AccessibleName() const {
  const Text& caption = named_by_ != nullptr ? named_by_->Caption() : control_.Caption();
  if (!caption.empty()) return SpokenName(caption);
  return SpokenName(spoken_.empty() ? control_.Hint() : spoken_);
}

std::vector<QWidget*> ControlBinder::NamedWidgets() const {
  return {&FocusWidget()};
}

void ControlBinder::Hear(const Change& change) {
  const Following following(*this);
  switch (change.kind) {
    case Change::Kind::kPlace:
      return PutFloat();
    case Change::Kind::kFront:
      widget_.raise();
      return;
    case Change::Kind::kAll:
      ShowState();
      [[fallthrough]];
    default:
      Follow(change);
  }
}

// What all kinds of controls have.
void ControlBinder::ShowState() {
  const Following following(*this);
  widget_.setEnabled(control_.Enabled());
  if (ShowsItself()) widget_.setVisible(IsSeen());
  widget_.setToolTip(ToQt(control_.Hint()));
  widget_.setFont(FontOf(control_.FontName(), control_.FontSize()));
  DrawCaption(DrawnCaption(control_.Caption()));
  const QString name = AccessibleName();
  for (QWidget* const named : NamedWidgets()) named->setAccessibleName(name);
  if (caption_label_ != nullptr) {
    caption_label_->setText(DrawnCaption(control_.Caption()));
    caption_label_->setVisible(control_.Visible() && !control_.Caption().empty());
    caption_label_->setEnabled(control_.Enabled());
    caption_label_->setFont(widget_.font());
  }
  TakeFocusBack();
}

// A widget that was disabled or hidden has lost the focus, while the control has it still.
void ControlBinder::TakeFocusBack() {
  if (!control_.HasFocus()) return;
  QWidget& widget = FocusWidget();
  const QWidget* const now = widget.window()->focusWidget();
  const std::vector<QWidget*> inputs = InputWidgets();
  if (now != nullptr && std::find(inputs.begin(), inputs.end(), now) != inputs.end()) return;
  if (widget.isEnabled() && !widget.isHidden()) widget.setFocus(Qt::OtherFocusReason);
}

}  // namespace tallybook::desktop
