// What windows remember from one time to the next: their place, the widths of columns, the order of rows. Kept for the
// user beside the log, never in a book. What cannot be kept is forgotten, and no reason to trouble anybody.
#pragma once

#include <QByteArray>
#include <QString>

#include "base/Types.h"

class QWidget;

namespace tallybook::desktop {

class WindowMemory {
 public:
  // The file of the user's state folder, desktop.ini; another one for tests.
  WindowMemory();
  explicit WindowMemory(const Text& file);

  [[nodiscard]] QByteArray Bytes(const QString& key) const;
  void Keep(const QString& key, const QByteArray& bytes);
  [[nodiscard]] int Number(const QString& key, int otherwise) const;
  void Keep(const QString& key, int number);

  // Size, and whether it filled the screen. A window that was never kept is given `width` times `height`, in letters of
  // its font, as far as the screen has room. Where it stands is the window manager's.
  void RestoreSize(QWidget& window, const QString& key, int width, int height) const;
  void KeepSize(const QWidget& window, const QString& key);

 private:
  QString file_;
};

}  // namespace tallybook::desktop
