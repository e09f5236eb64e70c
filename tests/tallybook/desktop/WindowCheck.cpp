#include "tests/tallybook/desktop/WindowCheck.h"

#include <QAbstractButton>
#include <QAbstractItemView>
#include <QAbstractSpinBox>
#include <QAccessible>
#include <QApplication>
#include <QCalendarWidget>
#include <QComboBox>
#include <QGroupBox>
#include <QLabel>
#include <QMenuBar>
#include <QPalette>
#include <QScrollBar>
#include <QTabBar>
#include <QWidget>
#include <algorithm>
#include <cstdlib>
#include <map>

namespace tallybook::desktop::testing {

namespace {

std::string NameOf(const QWidget& widget) {
  const std::string name = widget.objectName().toStdString();
  return name.empty() ? widget.metaObject()->className() : name;
}

// What Qt's own widgets are made of is Qt's to lay out.
bool IsInside(const QWidget& widget) {
  for (const QWidget* outer = widget.parentWidget(); outer != nullptr; outer = outer->parentWidget()) {
    if (qobject_cast<const QCalendarWidget*>(outer) != nullptr || qobject_cast<const QComboBox*>(outer) != nullptr ||
        qobject_cast<const QAbstractSpinBox*>(outer) != nullptr ||
        qobject_cast<const QAbstractItemView*>(outer) != nullptr || qobject_cast<const QTabBar*>(outer) != nullptr ||
        qobject_cast<const QMenuBar*>(outer) != nullptr)
      return true;
  }
  return false;
}

bool IsLeaf(const QWidget& widget) {
  const QList<QWidget*> inner = widget.findChildren<QWidget*>(QString(), Qt::FindDirectChildrenOnly);
  return std::ranges::all_of(inner, [](const QWidget* child) { return IsInside(*child) || !child->isVisible(); });
}

std::vector<const QWidget*> ShownIn(const QWidget& window) {
  std::vector<const QWidget*> shown;
  for (const QWidget* const widget : window.findChildren<QWidget*>())
    if (widget->isVisible() && !widget->isWindow() && widget->window() == window.window() && !IsInside(*widget))
      shown.push_back(widget);
  return shown;
}

bool CanBeActedOn(const QWidget& widget) {
  return widget.isEnabled() && widget.focusPolicy() != Qt::NoFocus;
}

QRect PlaceOf(const QWidget& widget, const QWidget& window) {
  return {widget.mapTo(&window, QPoint(0, 0)), widget.size()};
}

// A button that was made narrower than usual on purpose shows its words all the same; a list or table that was given a
// widest size cuts or scrolls what is longer.
QSize LeastSizeOf(const QWidget& widget) {
  QSize least = widget.minimumSizeHint();
  const bool is_bounded =
      qobject_cast<const QAbstractItemView*>(&widget) != nullptr || qobject_cast<const QComboBox*>(&widget) != nullptr;
  if (is_bounded) return least.boundedTo(widget.maximumSize());
  const auto* const button = qobject_cast<const QAbstractButton*>(&widget);
  if (button != nullptr && button->maximumWidth() < QWIDGETSIZE_MAX)
    least.setWidth(button->fontMetrics().horizontalAdvance(button->text()) + 4);
  return least;
}

void FindCutOff(const QWidget& window, const std::vector<const QWidget*>& shown, std::vector<std::string>& faults) {
  for (const QWidget* const widget : shown) {
    const QRect place = PlaceOf(*widget, window);
    if (!window.rect().contains(place)) faults.push_back(NameOf(*widget) + " reaches beyond the window");
    const QWidget* const around = widget->parentWidget();
    if (around != nullptr && !around->rect().contains(widget->geometry()))
      faults.push_back(NameOf(*widget) + " reaches beyond what stands around it");
    if (!IsLeaf(*widget)) continue;
    const QSize least = LeastSizeOf(*widget);
    const auto* const label = qobject_cast<const QLabel*>(widget);
    const int height = label != nullptr && label->wordWrap() ? label->heightForWidth(label->width()) : least.height();
    const bool is_short = widget->width() < least.width() && !(label != nullptr && label->wordWrap());
    if (is_short || widget->height() < height) faults.push_back(NameOf(*widget) + " is smaller than what it shows");
  }
}

void FindOverlaps(const QWidget& window, const std::vector<const QWidget*>& shown, const Allowed& allowed,
                  std::vector<std::string>& faults) {
  const auto floats = [&](const QWidget& widget) {
    return std::ranges::find(allowed.floating, NameOf(widget)) != allowed.floating.end();
  };
  for (std::size_t i = 0; i < shown.size(); ++i) {
    if (!IsLeaf(*shown[i]) || floats(*shown[i])) continue;
    for (std::size_t j = i + 1; j < shown.size(); ++j) {
      if (!IsLeaf(*shown[j]) || floats(*shown[j])) continue;
      if (PlaceOf(*shown[i], window).intersects(PlaceOf(*shown[j], window)))
        faults.push_back(NameOf(*shown[i]) + " and " + NameOf(*shown[j]) + " overlap");
    }
  }
}

void FindNameless(const std::vector<const QWidget*>& shown, std::vector<std::string>& faults) {
  for (const QWidget* const widget : shown) {
    if (!CanBeActedOn(*widget)) continue;
    QAccessibleInterface* const read = QAccessible::queryAccessibleInterface(const_cast<QWidget*>(widget));
    if (read == nullptr || read->text(QAccessible::Name).isEmpty())
      faults.push_back(NameOf(*widget) + " has no accessible name");
    if (read != nullptr && read->role() == QAccessible::NoRole) faults.push_back(NameOf(*widget) + " has no role");
  }
}

std::string MnemonicOf(const QString& text) {
  for (qsizetype i = 0; i + 1 < text.size(); ++i) {
    if (text[i] != u'&') continue;
    if (text[++i] != u'&') return QString(text[i].toLower()).toStdString();
  }
  return {};
}

void FindSameMnemonics(const std::vector<const QWidget*>& shown, const Allowed& allowed,
                       std::vector<std::string>& faults) {
  std::map<std::string, std::vector<std::string>> bearers;
  const auto note = [&](const QString& text) {
    if (const std::string letter = MnemonicOf(text); !letter.empty()) bearers[letter].push_back(text.toStdString());
  };
  for (const QWidget* const widget : shown) {
    if (const auto* const label = qobject_cast<const QLabel*>(widget); label != nullptr && label->buddy() != nullptr)
      note(label->text());
    if (const auto* const button = qobject_cast<const QAbstractButton*>(widget)) note(button->text());
    if (const auto* const box = qobject_cast<const QGroupBox*>(widget)) note(box->title());
    if (const auto* const tabs = qobject_cast<const QTabBar*>(widget))
      for (int tab = 0; tab < tabs->count(); ++tab) note(tabs->tabText(tab));
    if (const auto* const bar = qobject_cast<const QMenuBar*>(widget))
      for (const QAction* const menu : bar->actions()) note(menu->text());
  }
  for (const auto& [letter, texts] : bearers) {
    const bool are_stated = std::ranges::all_of(texts, [&](const std::string& text) {
      return std::ranges::find(allowed.same_mnemonics, text) != allowed.same_mnemonics.end();
    });
    if (texts.size() < 2 || are_stated) continue;
    std::string fault = "the mnemonic " + letter + " is that of";
    for (const std::string& text : texts) fault += " \"" + text + "\"";
    faults.push_back(fault);
  }
}

QPalette DarkPalette() {
  const QColor ground(0x2B, 0x2B, 0x2B);
  const QColor text(0xF0, 0xF0, 0xF0);
  QPalette palette(QColor(0x3A, 0x3A, 0x3A), ground);
  for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText, QPalette::ToolTipText})
    palette.setColor(role, text);
  palette.setColor(QPalette::Base, QColor(0x1E, 0x1E, 0x1E));
  palette.setColor(QPalette::AlternateBase, ground);
  palette.setColor(QPalette::Highlight, QColor(0x2A, 0x6F, 0xB5));
  palette.setColor(QPalette::HighlightedText, Qt::white);
  for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
    palette.setColor(QPalette::Disabled, role, QColor(0x80, 0x80, 0x80));
  return palette;
}

}  // namespace

std::vector<std::string> FaultsOf(const QWidget& window, const Allowed& allowed) {
  std::vector<std::string> faults;
  const std::vector<const QWidget*> shown = ShownIn(window);
  if (shown.empty()) faults.emplace_back("the window shows nothing");
  FindCutOff(window, shown, faults);
  FindOverlaps(window, shown, allowed, faults);
  FindNameless(shown, faults);
  FindSameMnemonics(shown, allowed, faults);
  return faults;
}

bool BringToFront(QWidget& window) {
  constexpr int kLimit = 10'000;  // milliseconds
  constexpr int kTurnsPerWish = 200;
  int turns = 0;
  return RunUntil(
      [&] {
        if (window.isActiveWindow()) return true;
        if (turns++ % kTurnsPerWish == 0) window.activateWindow();
        return false;
      },
      kLimit);
}

void Picture(QWidget& window, const std::string& name) {
  const char* const folder = std::getenv("TALLYBOOK_PICTURES");
  if (folder == nullptr) return;
  const auto save = [&](const std::string& file) {
    QCoreApplication::processEvents();
    window.grab().save(QString::fromStdString(std::string(folder) + "/" + file + ".png"));
  };
  save(name);
  const QPalette light = QApplication::palette();
  QApplication::setPalette(DarkPalette());
  save(name + "-dark");
  QApplication::setPalette(light);
  QCoreApplication::processEvents();
}

}  // namespace tallybook::desktop::testing
