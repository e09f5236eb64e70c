// A chart as it is painted, on the screen and into files: lines over an axis in round numbers, the zero line, marks at
// the calendar's own cuts, this year strong and the year before faint. Lines differ by their strokes as well as by
// colour.
#pragma once

#include <QtCore/QRectF>
#include <QtGui/QFont>
#include <QtGui/QPalette>
#include <optional>

#include "tallybook/desktop/figures/ChartData.h"
#include "tallybook/desktop/forms/LocaleStyle.h"

class QPainter;

namespace tallybook::desktop {

struct ChartLook {
  QPalette palette;
  QFont font;
  NumberStyle numbers;
  bool right_to_left = false;
};

class ChartPicture {
 public:
  ChartPicture(ChartData data, ChartLook look) : data_(std::move(data)), look_(std::move(look)) {}

  [[nodiscard]] const ChartData& Data() const { return data_; }
  // Paints it all, with the values of one unit written beside their line where `unit` names one.
  void Paint(QPainter& painter, const QRectF& area, std::optional<std::size_t> unit) const;
  // The unit that is painted nearest to a place.
  [[nodiscard]] std::optional<std::size_t> UnitAt(const QRectF& area, double x) const;
  // "January 2024: Sales 1,234.50; Sales, year before 1,100.00".
  [[nodiscard]] Text WordsOf(std::size_t unit) const;

 private:
  struct Frame;
  [[nodiscard]] Frame FrameIn(const QRectF& area) const;
  void PaintLegend(QPainter& painter, const QRectF& area) const;
  void PaintAxis(QPainter& painter, const Frame& frame) const;
  [[nodiscard]] std::size_t NamesApart(const Frame& frame) const;
  void PaintCuts(QPainter& painter, const Frame& frame) const;
  void PaintLine(QPainter& painter, const Frame& frame, std::size_t line) const;
  void PaintUnit(QPainter& painter, const Frame& frame, std::size_t unit) const;
  [[nodiscard]] QPen PenOf(std::size_t line) const;
  [[nodiscard]] Text NumberOf(Double value) const;

  ChartData data_;
  ChartLook look_;
};

}  // namespace tallybook::desktop
