#include "tallybook/desktop/forms/LocaleStyle.h"

#include <QtCore/QDate>
#include <QtCore/QLocale>
#include <QtCore/QString>
#include <QtGui/QGuiApplication>

#include "base/Dates.h"

namespace tallybook::desktop {

namespace {

QDate DateOf(Date date) {
  const DateParts parts = PartsOf(date);
  return {parts.year, parts.month, parts.day};
}

// Years in full: of "03" nobody knows which.
QString FormatOf(const QLocale& locale) {
  QString format = locale.dateFormat(QLocale::ShortFormat);
  if (!format.contains("yyyy")) format.replace("yy", "yyyy");
  return format;
}

DateHabits HabitsOf(const QLocale& locale) {
  DateHabits habits;
  const QString format = FormatOf(locale);
  if (format.indexOf('M') < format.indexOf('d')) habits.order = DateOrder::kMonthFirst;
  for (int month = 1; month <= 12; ++month) habits.month_names.push_back(FromQt(locale.monthName(month)));
  return habits;
}

}  // namespace

LocaleStyle StyleOf(const QLocale& locale) {
  LocaleStyle style;
  style.numbers = {FromQt(locale.decimalPoint()), FromQt(locale.groupSeparator())};
  if (locale.language() == QLocale::C) {
    style.numbers.group = ",";
    style.dates = DateText;
    return style;
  }
  style.dates = [locale, format = FormatOf(locale)](Date date) {
    return FromQt(locale.toString(DateOf(date), format));
  };
  style.habits = HabitsOf(locale);
  return style;
}

QString Upright(const QString& number) {
  constexpr QChar kLeftToRight(0x200E);  // Unicode Standard Annex #9
  return QGuiApplication::isRightToLeft() ? kLeftToRight + number : number;
}

LocaleStyle SystemStyle() {
  return StyleOf(QLocale());
}

}  // namespace tallybook::desktop
