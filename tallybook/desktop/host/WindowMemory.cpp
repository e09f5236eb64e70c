#include "tallybook/desktop/host/WindowMemory.h"

#include <QFontMetrics>
#include <QScreen>
#include <QSettings>
#include <QWidget>
#include <algorithm>

#include "tallybook/application/ReferenceApp.h"
#include "tallybook/desktop/host/QtTexts.h"

namespace tallybook::desktop {

WindowMemory::WindowMemory() : WindowMemory(application::UserStateFolder() + "/desktop.ini") {}

WindowMemory::WindowMemory(const Text& file) : file_(ToQt(file)) {}

QByteArray WindowMemory::Bytes(const QString& key) const {
  return QSettings(file_, QSettings::IniFormat).value(key).toByteArray();
}

void WindowMemory::Keep(const QString& key, const QByteArray& bytes) {
  QSettings(file_, QSettings::IniFormat).setValue(key, bytes);
}

int WindowMemory::Number(const QString& key, int otherwise) const {
  return QSettings(file_, QSettings::IniFormat).value(key, otherwise).toInt();
}

void WindowMemory::Keep(const QString& key, int number) {
  QSettings(file_, QSettings::IniFormat).setValue(key, number);
}

void WindowMemory::RestoreSize(QWidget& window, const QString& key, int width, int height) const {
  const QFontMetrics letters(window.font());
  QSize size(width * letters.averageCharWidth(), height * letters.height());
  const QSettings kept(file_, QSettings::IniFormat);
  size = kept.value(key + "/size", size).toSize();
  window.resize(size.boundedTo(window.screen()->availableSize()));
  if (kept.value(key + "/maximised", false).toBool()) window.setWindowState(Qt::WindowMaximized);
}

void WindowMemory::KeepSize(const QWidget& window, const QString& key) {
  QSettings kept(file_, QSettings::IniFormat);
  kept.setValue(key + "/maximised", window.isMaximized());
  if (!window.isMaximized()) kept.setValue(key + "/size", window.size());
}

}  // namespace tallybook::desktop
