#include "tallybook/desktop/window/ListFile.h"

#include <QtCore/QFile>

#include "base/CodePage.h"
#include "tallybook/desktop/forms/Words.h"

namespace tallybook::desktop {

namespace {

constexpr qint64 kMostBytesOfAList = qint64{8} << 20;

}  // namespace

QString TextOfList(const QString& path, QString& why) {
  QFile file(path);
  if (!file.open(QIODevice::ReadOnly) || file.size() > kMostBytesOfAList) {
    why = file.isOpen() ? QString("the file is too large for a list") : file.errorString();
    return {};
  }
  const Text text = file.readAll().toStdString();
  return ToQt(IsUtf8(text) ? text : FromCodePage(text));
}

}  // namespace tallybook::desktop
