#include "tallybook/desktop/window/CalendarPicture.h"

#include <QtGui/QPainter>
#include <algorithm>

#include "base/Dates.h"
#include "base/Failure.h"

namespace tallybook::desktop {

namespace {

constexpr std::size_t kMostRows = 60;  // of a custom calendar; more would be too thin to see
constexpr double kWeekLine = 1.5;      // between weeks

}  // namespace

std::vector<PeriodRow> FirstYearOf(const engine::CalendarDescription& description, Integer data_level) {
  std::vector<PeriodRow> rows;
  const bool has_lengths =
      std::ranges::all_of(description.periods, [](const auto& period) { return period.length > 0; });
  const bool needs_periods = description.kind == engine::CalendarKind::kCustom && description.periods.empty();
  if (!has_lengths || needs_periods) return rows;
  try {
    const engine::Calendar calendar(description, data_level);
    const Date end = calendar.YearStart(description.first_year + 1);
    for (Date day = calendar.YearStart(description.first_year); day < end && rows.size() < kMostRows;) {
      const engine::DateSpan span = calendar.UnitOf(day, kPeriodLevel);
      const engine::FiscalPlace place = calendar.PlaceOf(day);
      rows.push_back({calendar.PeriodName(place.period), span, place.quarter});
      day = span.last + 1;
    }
  } catch (const Failure&) {
    rows.clear();  // told in words beside the picture
  }
  return rows;
}

CalendarPicture::CalendarPicture(QWidget* parent, const LocaleStyle& style) : QWidget(parent), style_(style) {
  setAccessibleName("Picture of the first year");
}

void CalendarPicture::Show(const engine::CalendarDescription& calendar, Integer data_level) {
  rows_ = FirstYearOf(calendar, data_level);
  week_ends_on_ = calendar.week_ends_on;
  QStringList words;
  for (const PeriodRow& row : rows_) {
    words << QString("%1 %2 to %3")
                 .arg(ToQt(row.name), ToQt(style_.dates(row.days.first)), ToQt(style_.dates(row.days.last)));
  }
  setAccessibleDescription(words.join("; "));
  setToolTip(words.join('\n'));
  update();
}

QSize CalendarPicture::sizeHint() const {
  return {fontMetrics().height() * 26, fontMetrics().height() * 17};
}

QSize CalendarPicture::minimumSizeHint() const {
  return {fontMetrics().height() * 18, fontMetrics().height() * 10};
}

void CalendarPicture::paintEvent(QPaintEvent* /*event*/) {
  QPainter painter(this);
  painter.fillRect(rect(), palette().color(QPalette::Base));
  if (rows_.empty()) {
    painter.setPen(palette().color(QPalette::PlaceholderText));
    painter.drawText(rect(), Qt::AlignCenter | Qt::TextWordWrap, "The year as it will be cut is shown here.");
    return;
  }
  const double gap = fontMetrics().height() / 4.0;
  const double height = (this->height() - 2 * gap) / static_cast<double>(rows_.size());
  for (std::size_t index = 0; index < rows_.size(); ++index) {
    const QRectF area(gap, gap + static_cast<double>(index) * height, width() - 2 * gap, height);
    PaintRow(painter, rows_[index], area);
    const bool quarter_begins = index > 0 && rows_[index].quarter != rows_[index - 1].quarter;
    if (!quarter_begins) continue;
    painter.setPen(QPen(palette().color(QPalette::Text), 1.5));
    painter.drawLine(area.topLeft(), area.topRight());
  }
}

void CalendarPicture::PaintRow(QPainter& painter, const PeriodRow& row, const QRectF& area) const {
  const QFontMetricsF metrics(font());
  const bool mirrored = isRightToLeft();
  double head = 0;
  double dates = 0;
  Date longest = 0;
  for (const PeriodRow& each : rows_) {
    head = std::max(head, metrics.horizontalAdvance(ToQt(each.name)));
    dates = std::max(dates, metrics.horizontalAdvance(ToQt(style_.dates(each.days.first))));
    longest = std::max(longest, each.days.last - each.days.first + 1);
  }
  const double gap = metrics.height() / 2;
  const bool readable = area.height() >= metrics.height();
  const double left_room = head + dates + 2 * gap;
  const double strip = area.width() - left_room;
  const auto place = [&](double x, double width) {
    return QRectF(mirrored ? area.right() - x - width : area.left() + x, area.top(), width, area.height());
  };
  painter.setPen(palette().color(QPalette::Text));
  if (readable) {
    painter.drawText(place(0, head + 1), Qt::AlignLeading | Qt::AlignVCenter, ToQt(row.name));
    painter.drawText(place(head + gap, dates + 1), Qt::AlignLeading | Qt::AlignVCenter,
                     ToQt(style_.dates(row.days.first)));
  }
  const double day_width = strip / longest;
  const Date day_count = row.days.last - row.days.first + 1;
  const double inset = std::min(area.height() / 6, 3.0);
  const auto fill = [&](double x, double width, const QColor& colour) {
    painter.fillRect(place(left_room + x, width).adjusted(0, inset, 0, -inset), colour);
  };
  QColor tint = palette().color(QPalette::Highlight);
  tint.setAlphaF(0.25F);
  fill(0, day_count * day_width, palette().color(QPalette::AlternateBase));
  fill(0, day_count * day_width, tint);
  for (Date day = row.days.first; day < row.days.last; ++day) {
    const double end = (day - row.days.first + 1) * day_width;
    if (DayOfWeek(day) == week_ends_on_) fill(end - kWeekLine / 2, kWeekLine, palette().color(QPalette::Base));
  }
  const QString count = QString("%1 days").arg(static_cast<int>(day_count));
  painter.setPen(palette().color(QPalette::Text));
  if (readable && metrics.horizontalAdvance(count) < strip) {
    painter.drawText(place(left_room + gap, strip - gap), Qt::AlignLeading | Qt::AlignVCenter, count);
  }
}

}  // namespace tallybook::desktop
