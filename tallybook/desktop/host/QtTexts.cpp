#include "tallybook/desktop/host/QtTexts.h"

#include <QStringList>

#include "tallybook/application/Shown.h"

namespace tallybook::desktop {

QString ShownLines(const Text& text) {
  QString lines = ToQt(text);
  lines.replace("\r\n", "\n").replace('\r', '\n');
  QStringList shown;
  for (const QString& line : lines.split('\n')) shown.append(ToQt(application::Shown(FromQt(line))));
  return shown.join('\n');
}

QString ShownLine(const Text& text) {
  return ToQt(application::OnOneLine(text));
}

QString PlainCaption(const Text& text) {
  return ShownLine(text).replace('&', "&&");
}

}  // namespace tallybook::desktop
