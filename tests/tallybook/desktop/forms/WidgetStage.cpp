#include "tests/tallybook/desktop/forms/WidgetStage.h"

#include <QAbstractButton>
#include <QAbstractItemView>
#include <QApplication>
#include <QCalendarWidget>
#include <QComboBox>
#include <QInputMethodEvent>
#include <QKeyEvent>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QPointer>
#include <QPushButton>
#include <QTabBar>
#include <QTableView>
#include <QTest>
#include <algorithm>
#include <gtest/gtest.h>
#include <map>

#include "base/CodePage.h"
#include "forms/Form.h"
#include "forms/Grid.h"
#include "forms/HostControls.h"
#include "forms/Keys.h"
#include "forms/ListControls.h"
#include "forms/PlainControls.h"
#include "forms/TextBox.h"
#include "platform/Keyboard.h"
#include "tallybook/desktop/forms/ControlBinder.h"
#include "tallybook/desktop/forms/FormWindow.h"
#include "tallybook/desktop/forms/KeyCodes.h"
#include "tallybook/desktop/forms/QtScreen.h"
#include "tallybook/desktop/forms/UserActs.h"
#include "tallybook/desktop/forms/Words.h"
#include "tests/support/ScriptedScreen.h"
#include "tests/tallybook/desktop/WindowCheck.h"
#include "views/Views.h"

namespace tallybook::desktop::testing {

using tallybook::testing::Hands;
using tallybook::testing::ScriptedScreen;

namespace {

long acts_on_widgets = 0;

// How long Qt may take for something that it does by a timer, in milliseconds.
constexpr int kMoment = 300;

bool HasView(const Text& form) {
  const auto& views = views::AllViews();
  return std::ranges::any_of(views, [&](const views::FormView& view) { return view.form == form; });
}

void Send(QWidget& widget, int key, Qt::KeyboardModifiers modifiers, const QString& text) {
  QTest::sendKeyEvent(QTest::Click, &widget, static_cast<Qt::Key>(key), text, modifiers);
}

// A key as the component's keyboard tells it.
void SendCode(QWidget& widget, Integer key, Integer shift, Integer character) {
  KeyEvent event;
  event.key = static_cast<std::uint16_t>(key);
  const auto press = ToQtEvent(event, shift);
  const QString text =
      character < ' ' ? press->text() : ToQt(FromCodePage(std::string(1, static_cast<char>(character))));
  Send(widget, press->key(), press->modifiers(), text);
}

// A character of the code page, or the shortcut that gives a control code.
void SendCharacter(QWidget& widget, Integer code) {
  constexpr Integer kBackspace = 8;
  constexpr Integer kEnter = 13;
  if (code == kBackspace) return Send(widget, Qt::Key_Backspace, Qt::NoModifier, {});
  if (code == kEnter) return Send(widget, Qt::Key_Return, Qt::NoModifier, {});
  if (code < ' ') return Send(widget, Qt::Key_A + code - 1, Qt::ControlModifier, {});
  const QString text = ToQt(FromCodePage(std::string(1, static_cast<char>(code))));
  Send(widget, text[0].toUpper().unicode(), Qt::NoModifier, text);
}

void ClickAt(QWidget& widget, const QPoint& place) {
  QTest::mouseClick(&widget, Qt::LeftButton, {}, place);
}

// Opens the menu that an entry stands in, and clicks the entry.
bool ClickEntry(const QWidget& window, const MenuItem& item) {
  auto* const bar = window.findChild<QMenuBar*>();
  if (bar == nullptr) return false;
  for (QMenu* const menu : bar->findChildren<QMenu*>()) {
    for (QAction* const action : menu->actions()) {
      if (action->text() != DrawnCaption(item.Caption())) continue;
      if (!action->isEnabled() || !action->isVisible() || !bar->isEnabled()) return false;
      ClickAt(*bar, bar->actionGeometry(menu->menuAction()).center());
      EXPECT_TRUE(menu->isVisible()) << "the menu did not open";
      ClickAt(*menu, menu->actionGeometry(action).center());
      return true;
    }
  }
  return false;
}

}  // namespace

// Hands everything to the windows in memory, and what is to be seen to Qt's as well.
class WidgetStage::MirrorScreen : public Screen {
 public:
  explicit MirrorScreen(ScriptedScreen& scripted) : scripted_(scripted) {}

  [[nodiscard]] FormWindow* WindowOf(const Form& form) const {
    return static_cast<FormWindow*>(qt_.WidgetOf(HandleOf(form.Hwnd())));
  }

  void SetPointer(Pointer pointer) override {
    scripted_.SetPointer(pointer);
    qt_.SetPointer(pointer);
  }
  [[nodiscard]] Long CreateWindow(Form& form) override {
    const Long handle = scripted_.CreateWindow(form);
    if (HasView(form.Name())) handles_[handle] = qt_.CreateWindow(form);
    return handle;
  }
  void DestroyWindow(Long window) override {
    scripted_.DestroyWindow(window);
    qt_.DestroyWindow(HandleOf(window));
    handles_.erase(window);
  }
  void ShowWindow(Long window) override {
    scripted_.ShowWindow(window);
    qt_.ShowWindow(HandleOf(window));
  }
  void HideWindow(Long window) override {
    scripted_.HideWindow(window);
    qt_.HideWindow(HandleOf(window));
  }
  [[nodiscard]] bool IsVisible(Long window) override { return scripted_.IsVisible(window); }
  [[nodiscard]] bool IsWindow(Long window) override { return scripted_.IsWindow(window); }
  [[nodiscard]] Long WindowAt(Long left, Long top) override { return scripted_.WindowAt(left, top); }
  void FreezeWindow(Long window, bool frozen) override {
    scripted_.FreezeWindow(window, frozen);
    qt_.FreezeWindow(HandleOf(window), frozen);
  }
  void RefreshWindow(Long window) override {
    scripted_.RefreshWindow(window);
    qt_.RefreshWindow(HandleOf(window));
  }
  void EnableWindow(Long window, bool enabled) override {
    scripted_.EnableWindow(window, enabled);
    qt_.EnableWindow(HandleOf(window), enabled);
  }
  [[nodiscard]] Long ActiveWindow() override { return scripted_.ActiveWindow(); }
  void ActivateWindow(Long window) override {
    scripted_.ActivateWindow(window);
    qt_.ActivateWindow(HandleOf(window));
  }
  [[nodiscard]] Text ClassName(Long window) override { return scripted_.ClassName(window); }
  Long SetParent(Long window, Long owner) override { return scripted_.SetParent(window, owner); }
  [[nodiscard]] Place WindowPlace(Long window) override { return scripted_.WindowPlace(window); }
  void SetWindowPlace(Long window, const Place& place) override { scripted_.SetWindowPlace(window, place); }
  [[nodiscard]] Integer WindowState(Long window) override { return scripted_.WindowState(window); }
  void SetWindowState(Long window, Integer state) override { scripted_.SetWindowState(window, state); }
  [[nodiscard]] Place WorkArea() override { return scripted_.WorkArea(); }
  [[nodiscard]] Long ScrollBarWidth() override { return qt_.ScrollBarWidth(); }

 private:
  [[nodiscard]] Long HandleOf(Long window) const {
    const auto found = handles_.find(window);
    return found == handles_.end() ? 0 : found->second;
  }

  ScriptedScreen& scripted_;
  QtScreen qt_;
  std::map<Long, Long> handles_;  // Qt's, by those of the windows in memory
};

WidgetStage::WidgetStage() = default;

WidgetStage::~WidgetStage() = default;

long WidgetStage::Acts() {
  return acts_on_widgets;
}

Screen& WidgetStage::Enter(ScriptedScreen& screen) {
  mirror_ = std::make_unique<MirrorScreen>(screen);
  return *mirror_;
}

void WidgetStage::Leave() {
  mirror_.reset();
}

void WidgetStage::Run() {
  QCoreApplication::processEvents();
  RaiseKeptFailure();
}

QWidget* WidgetStage::Reach(Control& control, bool& reachable) const {
  FormWindow* const window = mirror_ == nullptr ? nullptr : mirror_->WindowOf(control.Parent());
  reachable = true;
  if (window == nullptr) return nullptr;
  ++acts_on_widgets;
  // What was set since the last turn is drawn by the time that a user sees it.
  QCoreApplication::sendPostedEvents(nullptr, QEvent::MetaCall);
  QWidget* const widget = window->WidgetOf(control);
  reachable = widget != nullptr && widget->isEnabled() && widget->isVisible();
  return widget;
}

bool WidgetStage::Click(Control& control, Integer index) {
  if (const auto* const item = dynamic_cast<const MenuItem*>(&control)) {
    FormWindow* const window = mirror_->WindowOf(control.Parent());
    return window == nullptr ? Hands::Click(control, index) : ClickEntry(*window, *item);
  }
  bool reachable = false;
  QWidget* widget = Reach(control, reachable);
  if (!reachable) return false;
  if (widget == nullptr) return Hands::Click(control, index);
  if (dynamic_cast<SaveButtons*>(&control) != nullptr) {
    const auto buttons = mirror_->WindowOf(control.Parent())->BinderOf(control)->FootButtons();
    widget = buttons.at(index == SaveButtons::kMainButton ? 0 : 1);
  }
  // Where the box or the ring is that takes the click.
  constexpr int kFromEdge = 8;
  ClickAt(*widget, {kFromEdge, widget->height() / 2});
  RaiseKeptFailure();
  return true;
}

bool WidgetStage::Replace(TextBox& box, const Text& text) {
  bool reachable = false;
  auto* const edit = qobject_cast<QLineEdit*>(Reach(box, reachable));
  if (!reachable || box.Locked()) return false;
  if (edit == nullptr) return Hands::Replace(box, text);
  edit->setFocus(Qt::OtherFocusReason);
  edit->selectAll();
  // A text that comes as a whole, as from the clipboard or an input method.
  QInputMethodEvent commit;
  commit.setCommitString(ToQt(text));
  if (text.empty())
    Send(*edit, Qt::Key_Delete, Qt::NoModifier, {});
  else
    QApplication::sendEvent(edit, &commit);
  RaiseKeptFailure();
  return true;
}

bool WidgetStage::TypeKeys(TextBox& box, const Text& keys) {
  bool reachable = false;
  QWidget* const edit = Reach(box, reachable);
  if (!reachable) return false;
  if (edit == nullptr) return Hands::TypeKeys(box, keys);
  edit->setFocus(Qt::OtherFocusReason);
  for (const char code : ToCodePage(keys)) SendCharacter(*edit, static_cast<unsigned char>(code));
  RaiseKeptFailure();
  return true;
}

// Drops the list down, and clicks the entry.
bool WidgetStage::Choose(ListControl& list, Integer entry) {
  bool reachable = false;
  auto* const box = qobject_cast<QComboBox*>(Reach(list, reachable));
  if (!reachable) return false;
  if (box == nullptr) return Hands::Choose(list, entry);
  box->setFocus(Qt::OtherFocusReason);
  Send(*box, Qt::Key_Down, Qt::AltModifier, {});
  EXPECT_TRUE(box->view()->isVisible()) << list.Name() << " did not drop its list down";
  const QModelIndex index = box->model()->index(entry, 0);
  box->view()->scrollTo(index);
  ClickAt(*box->view()->viewport(), box->view()->visualRect(index).center());
  RaiseKeptFailure();
  return true;
}

bool WidgetStage::ChooseTab(TabStrip& tabs, Integer tab) {
  bool reachable = false;
  auto* const bar = qobject_cast<QTabBar*>(Reach(tabs, reachable));
  if (!reachable) return false;
  if (bar == nullptr) return Hands::ChooseTab(tabs, tab);
  ClickAt(*bar, bar->tabRect(tab - 1).center());
  RaiseKeptFailure();
  return true;
}

// Turns to the month, and clicks the day.
bool WidgetStage::ChooseDate(CalendarBox& calendar, Date date) {
  bool reachable = false;
  auto* const days = qobject_cast<QTableView*>(Reach(calendar, reachable));
  if (!reachable || date < calendar.MinDate() || date > calendar.MaxDate()) return false;
  if (days == nullptr) return Hands::ChooseDate(calendar, date);
  auto* const widget = qobject_cast<QCalendarWidget*>(days->parentWidget());
  const QDate day = QDate(1899, 12, 30).addDays(static_cast<qint64>(date));
  widget->setCurrentPage(day.year(), day.month());
  // The days of the month before begin the first row; row 0 and, where there are week numbers, column 0 are heads.
  const int first = days->model()->columnCount() - 7;
  for (int row = 1; row < days->model()->rowCount(); ++row) {
    for (int column = first; column < days->model()->columnCount(); ++column) {
      const QModelIndex index = days->model()->index(row, column);
      const bool in_month = row > 2 || index.data().toInt() <= 7 + 7 * (row - 1);
      if (index.data().toInt() != day.day() || !in_month || (row > 4 && day.day() < 15)) continue;
      ClickAt(*days->viewport(), days->visualRect(index).center());
      RaiseKeptFailure();
      return true;
    }
  }
  return false;
}

bool WidgetStage::TypeAt(ListControl& list, const Text& keys) {
  bool reachable = false;
  QWidget* const widget = Reach(list, reachable);
  if (widget == nullptr && reachable) return Hands::TypeAt(list, keys);
  if (!reachable) return false;
  widget->setFocus(Qt::OtherFocusReason);
  for (const char code : ToCodePage(keys)) SendCharacter(*widget, static_cast<unsigned char>(code));
  RaiseKeptFailure();
  return true;
}

bool WidgetStage::Press(Control& control, Integer key, Integer shift) {
  bool reachable = false;
  QWidget* const widget = Reach(control, reachable);
  if (!reachable) return false;
  if (widget == nullptr) return Hands::Press(control, key, shift);
  widget->setFocus(Qt::OtherFocusReason);
  SendCode(*widget, key, shift, 0);
  RaiseKeptFailure();
  return true;
}

void WidgetStage::Key(Form& form, Integer key, Integer shift, Integer character) {
  FormWindow* const window = mirror_ == nullptr ? nullptr : mirror_->WindowOf(form);
  if (window == nullptr) return Hands::Key(form, key, shift, character);
  ++acts_on_widgets;
  QWidget* const focused = window->focusWidget();
  QWidget& target = focused == nullptr ? *window : *focused;
  const bool is_mnemonic = shift == kAltState && key >= 'A' && key <= 'Z';
  if (!is_mnemonic) {
    SendCode(target, key, shift, character);
  } else {
    // Mnemonics are those of the window that has the input, and a button that one presses goes down before it is
    // clicked.
    RunUntil([&] { return QApplication::activeWindow() == window; }, kMoment);
    const QPointer<QWidget> pressed = window;
    SendCode(target, key, shift, character);
    const auto is_up = [&] {
      const auto buttons = pressed == nullptr ? QList<QAbstractButton*>() : pressed->findChildren<QAbstractButton*>();
      return std::ranges::none_of(buttons, [](const QAbstractButton* button) { return button->isDown(); });
    };
    RunUntil(is_up, kMoment);
  }
  RaiseKeptFailure();
}

void WidgetStage::Close(Form& form) {
  FormWindow* const window = mirror_ == nullptr ? nullptr : mirror_->WindowOf(form);
  if (window == nullptr) return Hands::Close(form);
  ++acts_on_widgets;
  window->close();
  RaiseKeptFailure();
}

}  // namespace tallybook::desktop::testing
