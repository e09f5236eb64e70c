#include "tallybook/desktop/host/FigureNames.h"

#include <QLocale>
#include <algorithm>
#include <cmath>

#include "tallybook/application/PreviewReport.h"
#include "tallybook/desktop/forms/LocaleStyle.h"
#include "tallybook/desktop/host/QtTexts.h"

namespace tallybook::desktop {

namespace {

// Making one takes longer than writing a figure by it.
const LocaleStyle& StyleNow() {
  static QLocale locale;
  static LocaleStyle style = StyleOf(locale);
  if (locale != QLocale()) {
    locale = QLocale();
    style = StyleOf(locale);
  }
  return style;
}

}  // namespace

QString AccountName(const engine::BookDescription& book, Integer position) {
  const engine::AccountDescription& account = book.accounts[static_cast<std::size_t>(position - 1)];
  return ShownLine(account.code + "  " + account.description);
}

QString FieldName(const engine::BookDescription& book, Integer position) {
  const engine::FieldDescription& field = book.fields[static_cast<std::size_t>(position - 1)];
  return ShownLine(std::to_string(field.number) + "  " + field.description);
}

QString DateIn(Date date) {
  return ToQt(StyleNow().dates(date));
}

QString FigureIn(Double figure) {
  if (std::isnan(figure)) return "?";
  const Text plain = application::FigureText(figure);
  if (plain.find('e') != Text::npos) return ToQt(plain);
  const auto point = plain.find('.');
  const int decimals = point == Text::npos ? 0 : std::max(static_cast<int>(plain.size() - point) - 1, 2);
  return Upright(ToQt(NumberText(figure, decimals, StyleNow().numbers)));
}

}  // namespace tallybook::desktop
