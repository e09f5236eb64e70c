// A picture of a fiscal year as a calendar cuts it: a row for each period, its days as a strip with the weeks marked,
// and lines between the quarters. The same in words for whoever cannot see it.
#pragma once

#include <QtWidgets/QWidget>
#include <vector>

#include "tallybook/desktop/forms/LocaleStyle.h"
#include "tallybook/engine/Calendar.h"

namespace tallybook::desktop {

// What the picture shows of a period.
struct PeriodRow {
  Text name;
  engine::DateSpan days;
  Integer quarter = 0;
  bool operator==(const PeriodRow&) const = default;
};

// The periods of the first year; empty for a calendar that no book could have.
[[nodiscard]] std::vector<PeriodRow> FirstYearOf(const engine::CalendarDescription& calendar, Integer data_level);

class CalendarPicture final : public QWidget {
 public:
  CalendarPicture(QWidget* parent, const LocaleStyle& style);

  void Show(const engine::CalendarDescription& calendar, Integer data_level);

  [[nodiscard]] QSize sizeHint() const override;
  [[nodiscard]] QSize minimumSizeHint() const override;

 protected:
  void paintEvent(QPaintEvent* event) override;

 private:
  void PaintRow(QPainter& painter, const PeriodRow& row, const QRectF& area) const;

  LocaleStyle style_;
  std::vector<PeriodRow> rows_;
  Integer week_ends_on_ = 7;
};

}  // namespace tallybook::desktop
