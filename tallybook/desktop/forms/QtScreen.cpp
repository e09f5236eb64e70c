#include "tallybook/desktop/forms/QtScreen.h"

#include <QApplication>
#include <QScreen>
#include <QStyle>
#include <QWindow>
#include <map>
#include <utility>

#include "forms/Form.h"
#include "tallybook/desktop/forms/FormWindow.h"
#include "tallybook/desktop/forms/Handles.h"
#include "tallybook/desktop/forms/ProgramFocus.h"
#include "views/Views.h"

namespace tallybook::desktop {

namespace {

constexpr const char* kFormClass = "ThunderForm";
constexpr const char* kHostClass = "HostWindow";

// The window with its frame. A widget keeps what it has once heard of its frame, which may be what a window manager had
// half made by then; its native window asks anew.
QRect FrameOf(const QWidget& window) {
  const QWindow* const native = window.windowHandle();
  return native == nullptr || !window.isVisible() ? window.frameGeometry() : native->frameGeometry();
}

// A window may be taken away in the middle of an event of its own: it goes once that is over.
struct Later {
  void operator()(FormWindow* window) const {
    window->Detach();
    window->hide();
    window->deleteLater();
  }
};

}  // namespace

struct QtScreen::State {
  ViewSource views;
  Additions additions;
  Handles handles;
  std::map<Long, std::unique_ptr<FormWindow, Later>> forms;
  std::map<Long, Long> parents;
  bool is_busy = false;
};

QtScreen::QtScreen() : QtScreen(ViewSource(views::ViewOf)) {}

QtScreen::QtScreen(ViewSource views) : state_(std::make_unique<State>()) {
  state_->views = std::move(views);
  WatchProgramFocus();
}

QtScreen::~QtScreen() {
  SetPointer(Pointer::kDefault);
  state_->forms.clear();
  QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

void QtScreen::SetAdditions(Additions additions) {
  state_->additions = std::move(additions);
}

Long QtScreen::HandleOf(QWidget& widget) {
  return state_->handles.Of(widget);
}

QWidget* QtScreen::WidgetOf(Long window) const {
  return state_->handles.Find(window);
}

FormWindow* QtScreen::FormWindowOf(Long window) const {
  const auto found = state_->forms.find(window);
  return found == state_->forms.end() ? nullptr : found->second.get();
}

FormWindow* QtScreen::WindowOf(const Form& form) const {
  return FormWindowOf(form.Hwnd());
}

void QtScreen::SetPointer(Pointer pointer) {
  const bool busy = pointer == Pointer::kBusy;
  if (std::exchange(state_->is_busy, busy) == busy) return;
  if (busy)
    QApplication::setOverrideCursor(Qt::WaitCursor);
  else
    QApplication::restoreOverrideCursor();
}

Long QtScreen::CreateWindow(Form& form) {
  const FormAddition addition = state_->additions ? state_->additions(form) : FormAddition();
  std::unique_ptr<FormWindow, Later> window(
      new FormWindow(form, state_->views(form.Name()), state_->handles, addition));
  const Long handle = state_->handles.Of(*window);
  state_->forms.emplace(handle, std::move(window));
  return handle;
}

void QtScreen::DestroyWindow(Long window) {
  state_->forms.erase(window);
  state_->parents.erase(window);
}

void QtScreen::ShowWindow(Long window) {
  QWidget* const widget = WidgetOf(window);
  if (widget == nullptr) return;
  if (FormWindow* const form = FormWindowOf(window)) form->BeforeShown();
  widget->show();
  ActivateWindow(window);
}

void QtScreen::HideWindow(Long window) {
  if (QWidget* const widget = WidgetOf(window)) widget->hide();
}

bool QtScreen::IsVisible(Long window) {
  const QWidget* const widget = WidgetOf(window);
  return widget != nullptr && widget->isVisible();
}

bool QtScreen::IsWindow(Long window) {
  return WidgetOf(window) != nullptr;
}

Long QtScreen::WindowAt(Long left, Long top) {
  for (const QWidget* widget = QApplication::widgetAt(left, top); widget != nullptr; widget = widget->parentWidget())
    if (const Long handle = state_->handles.IfKnown(*widget); handle != 0) return handle;
  return 0;
}

void QtScreen::FreezeWindow(Long window, bool frozen) {
  if (QWidget* const widget = WidgetOf(window)) widget->setUpdatesEnabled(!frozen);
}

void QtScreen::RefreshWindow(Long window) {
  if (FormWindow* const form = FormWindowOf(window))
    form->DrawNow();
  else if (QWidget* const widget = WidgetOf(window))
    widget->repaint();
}

void QtScreen::EnableWindow(Long window, bool enabled) {
  if (QWidget* const widget = WidgetOf(window)) widget->setEnabled(enabled);
}

Long QtScreen::ActiveWindow() {
  const QWidget* const active = QApplication::activeWindow();
  return active == nullptr ? 0 : state_->handles.IfKnown(*active);
}

void QtScreen::ActivateWindow(Long window) {
  QWidget* const widget = WidgetOf(window);
  if (widget == nullptr || !widget->isVisible() || !widget->isEnabled()) return;
  widget->raise();
  widget->activateWindow();
}

Text QtScreen::ClassName(Long window) {
  if (FormWindowOf(window) != nullptr) return kFormClass;
  return WidgetOf(window) != nullptr ? kHostClass : "";
}

// The window manager keeps the dialog above its owner; each goes on belonging to whom it belongs to.
Long QtScreen::SetParent(Long window, Long owner) {
  QWidget* const widget = WidgetOf(window);
  if (widget == nullptr) return 0;
  const Long before = std::exchange(state_->parents[window], owner);
  QWidget* const above = WidgetOf(owner);
  widget->winId();  // which makes the window that has an owner
  if (above != nullptr) above->window()->winId();
  widget->windowHandle()->setTransientParent(above == nullptr ? nullptr : above->window()->windowHandle());
  return before;
}

Place QtScreen::WindowPlace(Long window) {
  QWidget* const widget = WidgetOf(window);
  if (widget == nullptr) return {};
  if (FormWindow* const form = FormWindowOf(window)) form->FitContents();
  const QRect place = widget->isWindow() ? FrameOf(*widget) : QRect(widget->mapToGlobal(QPoint(0, 0)), widget->size());
  return {place.x(), place.y(), place.width(), place.height()};
}

void QtScreen::SetWindowPlace(Long window, const Place& place) {
  QWidget* const widget = WidgetOf(window);
  if (widget == nullptr) return;
  const QSize borders = FrameOf(*widget).size() - widget->size();
  const QSize size = QSize(place.width, place.height) - borders;
  if (size != widget->size()) widget->resize(size);
  widget->move(place.left, place.top);
}

Integer QtScreen::WindowState(Long window) {
  const QWidget* const widget = WidgetOf(window);
  if (widget == nullptr) return kNormalWindow;
  const int minimised = widget->isMinimized() ? kMinimisedWindow : 0;
  const int maximised = widget->isMaximized() ? kMaximisedWindow : 0;
  return static_cast<Integer>(minimised + maximised);
}

void QtScreen::SetWindowState(Long window, Integer state) {
  QWidget* const widget = WidgetOf(window);
  if (widget == nullptr) return;
  Qt::WindowStates states = widget->windowState();
  states.setFlag(Qt::WindowMinimized, (state & kMinimisedWindow) != 0);
  states.setFlag(Qt::WindowMaximized, (state & kMaximisedWindow) != 0);
  widget->setWindowState(states);
}

Place QtScreen::WorkArea() {
  const QRect area = QGuiApplication::primaryScreen()->availableGeometry();
  return {area.x(), area.y(), area.width(), area.height()};
}

Long QtScreen::ScrollBarWidth() {
  return QApplication::style()->pixelMetric(QStyle::PM_ScrollBarExtent);
}

}  // namespace tallybook::desktop
