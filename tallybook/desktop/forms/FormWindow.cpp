#include "tallybook/desktop/forms/FormWindow.h"

#include <QApplication>
#include <QCloseEvent>
#include <QKeyEvent>
#include <QLayout>
#include <QLineEdit>
#include <QMenuBar>
#include <QPushButton>
#include <QStackedWidget>
#include <QTimer>
#include <algorithm>
#include <utility>

#include "base/Raised.h"
#include "forms/Control.h"
#include "forms/Form.h"
#include "forms/ListControls.h"
#include "tallybook/desktop/forms/ControlBinder.h"
#include "tallybook/desktop/forms/Fonts.h"
#include "tallybook/desktop/forms/GridBinder.h"
#include "tallybook/desktop/forms/Handles.h"
#include "tallybook/desktop/forms/HostBinders.h"
#include "tallybook/desktop/forms/PlainBinders.h"
#include "tallybook/desktop/forms/ProgramFocus.h"
#include "tallybook/desktop/forms/TabStripBinder.h"
#include "tallybook/desktop/forms/UserActs.h"
#include "tallybook/desktop/forms/ViewLayout.h"
#include "tallybook/desktop/forms/Words.h"
#include "views/View.h"

namespace tallybook::desktop {

namespace {

// How often the form's timers are looked at, in milliseconds. They count seconds.
constexpr int kTimerLook = 100;

bool IsDropped(const Control* control) {
  const auto* const list = dynamic_cast<const ListControl*>(control);
  return list != nullptr && list->DroppedDown();
}

}  // namespace

FormWindow::FormWindow(Form& form, const views::FormView& view, Handles& handles, FormAddition addition)
    : QWidget(nullptr, Qt::Dialog | Qt::WindowTitleHint | Qt::WindowSystemMenuHint | Qt::WindowCloseButtonHint),
      form_(form),
      handles_(handles) {
  setObjectName(ToQt(form.Name()));
  setAttribute(Qt::WA_KeyboardFocusChange);  // where the keys go is always seen
  setFont(FontOf(form.FontName(), form.FontSize()));
  setEnabled(form.Enabled());
  made_ = std::make_unique<LaidOut>(ViewLayout(form, *this).Build(view));
  Add(std::move(addition));
  for (const auto& binder : made_->binders) ListenTo(*binder);
  form_.Changed.ConnectWhile(life_, [this] { FollowForm(); });
  FollowForm();
  if (!form.Timers().empty()) {
    clock_.start();
    timer_ = new QTimer(this);
    QObject::connect(timer_, &QTimer::timeout, this, [this] { TickTimers(); });
    timer_->start(kTimerLook);
  }
  FitContents();
}

FormWindow::~FormWindow() {
  Detach();
}

void FormWindow::Add(FormAddition addition) {
  before_shown_ = addition.before_shown;
  auto* const buttons = dynamic_cast<SaveButtonsBinder*>(made_->main);
  if (buttons == nullptr) return;
  for (QPushButton* const added : buttons->Add(std::move(addition))) made_->feet.back().push_back(added);
}

void FormWindow::ListenTo(ControlBinder& binder) {
  binder.Bound().SetHwnd(handles_.Of(binder.Widget()));
  for (QWidget* const input : binder.InputWidgets()) {
    binders_.insert(input, &binder);
    input->installEventFilter(this);
  }
}

void FormWindow::Detach() {
  if (std::exchange(detached_, true) || made_ == nullptr) return;
  life_.reset();
  if (timer_ != nullptr) timer_->stop();
  for (auto input = binders_.begin(); input != binders_.end(); ++input)
    const_cast<QObject*>(input.key())->removeEventFilter(this);
  binders_.clear();
  // A form that ends has lost the controls of its dialog by now.
  for (Control* const control : form_.Controls()) control->SetHwnd(0);
  made_ = std::make_unique<LaidOut>();
}

// --- What is shown ---------------------------------------------------------------------------------------------------

ControlBinder* FormWindow::BinderOf(const Control& control) const {
  const auto found =
      std::ranges::find_if(made_->binders, [&](const auto& binder) { return &binder->Bound() == &control; });
  return found == made_->binders.end() ? nullptr : found->get();
}

QWidget* FormWindow::WidgetOf(const Control& control) const {
  ControlBinder* const binder = BinderOf(control);
  return binder == nullptr ? nullptr : &binder->FocusWidget();
}

void FormWindow::FollowForm() {
  setWindowTitle(ToQt(form_.Caption()));
  const QFont wanted = FontOf(form_.FontName(), form_.FontSize());
  if (form_.FontName().empty() && form_.FontSize() == 0) return;
  if (font().family() != wanted.family() || font().pointSizeF() != wanted.pointSizeF()) setFont(wanted);
}

void FormWindow::BeforeShown() {
  if (before_shown_) before_shown_();
  FitContents();
}

void FormWindow::FitContents() {
  if (was_shown_) return;
  ensurePolished();
  for (const auto& binder : made_->binders) binder->BringUpToDate();
  LayOut();
  adjustSize();
}

void FormWindow::DrawNow() {
  for (const auto& binder : made_->binders) binder->BringUpToDate();
  repaint();
}

// The buttons of a foot are as wide as the widest; pages that are not shown are laid out like the one that is, so that
// what the form places on them lies right from the start.
void FormWindow::LayOut() {
  if (detached_ || laying_out_) return;
  const Raised laying_out(laying_out_);
  for (const auto& foot : made_->feet) {
    int width = 0;
    for (const QPushButton* const button : foot) width = std::max(width, button->sizeHint().width());
    for (QPushButton* const button : foot) button->setMinimumWidth(width);
  }
  layout()->activate();
  for (QStackedWidget* const pages : made_->pages) {
    for (int page = 0; page < pages->count(); ++page) {
      QWidget* const one = pages->widget(page);
      if (one == pages->currentWidget()) continue;
      one->setGeometry(pages->contentsRect());
      one->layout()->activate();
    }
  }
  ReportPlaces();
}

void FormWindow::MeasureGrids() {
  for (const auto& binder : made_->binders)
    if (auto* const grid = dynamic_cast<GridBinder*>(binder.get())) grid->MeasureRows();
}

void FormWindow::ReportPlaces() {
  for (const auto& binder : made_->binders) {
    if (binder->IsFloating()) {
      binder->PutFloat();
      continue;
    }
    const Control* const container = binder->Bound().Container();
    const ControlBinder* const outer = container == nullptr ? nullptr : BinderOf(*container);
    const QWidget& around = outer == nullptr ? *this : outer->Widget();
    const QRect place = Mirrored(binder->PlaceWithin(around), around);
    CarryOut([&] { binder->Bound().SetPlace({place.x(), place.y(), place.width(), place.height()}); });
  }
}

// --- Events of the window --------------------------------------------------------------------------------------------

bool FormWindow::event(QEvent* event) {
  if (detached_ || made_ == nullptr) return QWidget::event(event);
  // A key that its widget has not taken comes here as well; the form has had it by then.
  const bool is_new = event->type() == QEvent::KeyPress && !binders_.contains(QWidget::focusWidget());
  if (is_new && TakeKey(ToKeyPress(static_cast<QKeyEvent&>(*event)))) return true;
  const bool handled = QWidget::event(event);
  switch (event->type()) {
    case QEvent::LayoutRequest:
      if (!isVisible()) FitContents();
      [[fallthrough]];
    case QEvent::Resize:
    case QEvent::Show:
      LayOut();
      break;
    case QEvent::FontChange:
    case QEvent::StyleChange:
      MeasureGrids();
      break;
    case QEvent::WindowActivate:
      Activated();
      break;
    default:
      break;
  }
  return handled;
}

void FormWindow::showEvent(QShowEvent* event) {
  QWidget::showEvent(event);
  if (event->spontaneous() || detached_) return;
  was_shown_ = true;
  expects_activation_ = true;
  layout()->invalidate();  // whatever was set since it was laid out
  TakeFirstFocus();
}

void FormWindow::TakeFirstFocus() {
  Control* const active = form_.ActiveControl();
  if (active == nullptr || !active->IsReachable()) {
    CarryOut([this] { form_.UserTab(); });
  } else if (QWidget* const widget = WidgetOf(*active)) {
    widget->setFocus(Qt::OtherFocusReason);
  }
  SelectText();
}

// What stands in a box that is come to by keyboard, or with the window, is replaced by what is typed.
void FormWindow::SelectText() {
  if (auto* const edit = qobject_cast<QLineEdit*>(focusWidget())) edit->selectAll();
}

// Showing has told the form already, and coming back from another program is no act in this one.
void FormWindow::Activated() {
  if (std::exchange(expects_activation_, false) || CameFromOtherProgram() || !form_.Enabled()) return;
  CarryOut([this] { form_.UserActivate(); });
}

void FormWindow::closeEvent(QCloseEvent* event) {
  event->ignore();
  if (!detached_) CarryOut([this] { form_.UserClose(); });
}

void FormWindow::TickTimers() {
  const qint64 now = clock_.elapsed();
  const std::vector<Timer*> timers = form_.Timers();
  const std::weak_ptr<const void> alive = life_;
  for (const Timer* const timer : timers) {
    if (!timer->Enabled()) {
      ticked_.remove(timer);
      continue;
    }
    if (!ticked_.contains(timer)) ticked_.insert(timer, now);
    if (now - ticked_.value(timer) < timer->Interval()) continue;
    ticked_.insert(timer, now);
    CarryOut([timer] { timer->Elapse(); });
    if (alive.expired()) return;
  }
}

// --- The user --------------------------------------------------------------------------------------------------------

bool FormWindow::eventFilter(QObject* object, QEvent* event) {
  ControlBinder* const binder = detached_ ? nullptr : binders_.value(object);
  if (binder == nullptr) return QWidget::eventFilter(object, event);
  // What stands around a control gets the keys that the control has left, a shift key that goes down first of all.
  if (!binder->Bound().TakesFocus()) return false;
  if (event->type() == QEvent::FocusIn) TakeFocus(*binder);
  if (event->type() != QEvent::KeyPress) return false;
  TakeFocus(*binder);
  return TakeKey(ToKeyPress(static_cast<QKeyEvent&>(*event)));
}

void FormWindow::TakeFocus(ControlBinder& binder) {
  if (!binder.Bound().HasFocus()) CarryOut([&] { binder.Bound().UserFocus(); });
}

// True where the key is done with; false leaves it to the widget.
bool FormWindow::TakeKey(const KeyPress& press) {
  if (press.key == 0) return false;
  if (press.key == kTabKey && (press.shift == 0 || press.shift == kShiftState)) return TakeTab(press.shift != 0);
  const std::weak_ptr<const void> alive = life_;
  Control* const control = form_.ActiveControl();
  ControlBinder* const binder = control == nullptr ? nullptr : BinderOf(*control);
  const bool was_dropped = IsDropped(control);
  if (binder != nullptr) {
    binder->BeforeKey();
    binder->ExpectKey();
    bool is_left = false;
    CarryOut([&] { is_left = form_.UserKey(press.key, press.shift); });
    // What the key led to may have ended the window.
    if (alive.expired() || !is_left) return true;
    if (press.character != 0) CarryOut([&] { control->UserKeyPress(press.character); });
    if (alive.expired()) return true;
  }
  if (press.key == kEnterKey && press.shift == 0) {
    if (!was_dropped) TakeEnter(binder);
    return true;
  }
  if (press.key == kEscapeKey && press.shift == 0) {
    if (!was_dropped && made_->cancel != nullptr) PressCancel(control);
    return true;
  }
  const bool turns = press.shift == kControlState || press.shift == (kControlState | kShiftState);
  if (made_->tabs != nullptr && turns &&
      (press.key == kTabKey || press.key == kPageDownKey || press.key == kPageUpKey)) {
    made_->tabs->Turn(press.key == kPageUpKey || (press.shift & kShiftState) != 0);
    return true;
  }
  return binder != nullptr && binder->TakeKey(press);
}

// Who is asked, and thinks better of it, is where he was.
void FormWindow::PressCancel(Control* before) {
  const std::weak_ptr<const void> alive = life_;
  made_->cancel->Press(true);
  if (alive.expired() || detached_ || before == nullptr || !isVisible()) return;
  if (before->IsReachable() && !before->HasFocus()) CarryOut([before] { before->SetFocus(); });
}

bool FormWindow::TakeTab(bool backwards) {
  const Control* const control = form_.ActiveControl();
  ControlBinder* const binder = control == nullptr ? nullptr : BinderOf(*control);
  if (binder != nullptr && binder->TabWithin(backwards)) return true;
  const QWidget* const before = focusWidget();
  CarryOut([&] { form_.UserKey(kTabKey, backwards ? kShiftState : Integer{0}); });
  if (focusWidget() != before) SelectText();
  return true;
}

void FormWindow::TakeEnter(ControlBinder* at) {
  if (at != nullptr && (at->TakeEnter() || made_->keep_enter.contains(at))) return;
  if (made_->main != nullptr) made_->main->Press(false);
}

}  // namespace tallybook::desktop
