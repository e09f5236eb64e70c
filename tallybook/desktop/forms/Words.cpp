#include "tallybook/desktop/forms/Words.h"

#include <QGuiApplication>

namespace tallybook::desktop {

QString ToQt(const Text& text) {
  return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

Text FromQt(const QString& text) {
  return text.toStdString();
}

QString SpokenName(const Text& caption) {
  QString spoken;
  const QString drawn = DrawnCaption(caption);
  for (qsizetype i = 0; i < drawn.size(); ++i) {
    // Of two marks the second is a letter like any other.
    if (drawn[i] == u'&' && ++i == drawn.size()) break;
    spoken += drawn[i];
  }
  while (spoken.endsWith(u':') || spoken.endsWith(u' ')) spoken.chop(1);
  return spoken;
}

QString DrawnCaption(const Text& caption) {
  return ToQt(caption).trimmed();
}

QString AsWritten(const QString& text) {
  constexpr QChar kLeftToRight(0x200E);  // Unicode Standard Annex #9: a mark that is not seen
  return QGuiApplication::isRightToLeft() && !text.isEmpty() ? kLeftToRight + text + kLeftToRight : text;
}

QChar Mnemonic(const Text& caption) {
  const QString drawn = DrawnCaption(caption);
  for (qsizetype i = 0; i + 1 < drawn.size(); ++i) {
    if (drawn[i] != u'&') continue;
    if (drawn[++i] != u'&') return drawn[i].toLower();
  }
  return {};
}

}  // namespace tallybook::desktop
