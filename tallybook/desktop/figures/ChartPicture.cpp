#include "tallybook/desktop/figures/ChartPicture.h"

#include <QtGui/QFontMetricsF>
#include <QtGui/QPainter>
#include <QtGui/QPainterPath>
#include <algorithm>
#include <array>
#include <cmath>

#include "tallybook/desktop/figures/ChartScale.h"

namespace tallybook::desktop {

namespace {

constexpr double kTicksApart = 2.6;  // heights of a line of text, at least
// The sign of a number stays before it among words that go the other way (Unicode Standard Annex #9).
constexpr const char* kLeftToRight = "\u200E";
constexpr int kMostPoints = 32;  // of a line whose figures are marked one by one

// Told apart by people who see few colours, too, and 3 to 1 against both grounds at least; the first is the system's
// own.
constexpr std::array<QRgb, 6> kOnLight = {0, 0xFFB35900, 0xFF00695C, 0xFF8E24AA, 0xFF5D4037, 0xFF37474F};
constexpr std::array<QRgb, 6> kOnDark = {0, 0xFFFFB74D, 0xFF4DD0B8, 0xFFCE93D8, 0xFFBCAAA4, 0xFFB0BEC5};
constexpr std::array kStrokes = {Qt::SolidLine, Qt::DashLine, Qt::DotLine, Qt::DashDotLine, Qt::DashDotDotLine};

bool IsDark(const QPalette& palette) {
  return palette.color(QPalette::Base).lightness() < 128;
}

QColor Mixed(const QColor& one, const QColor& other, double share) {
  const auto mix = [share](int a, int b) { return static_cast<int>(std::lround(a * (1 - share) + b * share)); };
  return {mix(one.red(), other.red()), mix(one.green(), other.green()), mix(one.blue(), other.blue())};
}

}  // namespace

struct ChartPicture::Frame {
  QRectF plot;
  ChartScale scale;
  double line_height = 0;

  [[nodiscard]] double X(std::size_t unit, std::size_t count, bool mirrored) const {
    const double share = (static_cast<double>(unit) + 0.5) / static_cast<double>(std::max<std::size_t>(count, 1));
    return plot.left() + plot.width() * (mirrored ? 1 - share : share);
  }
  [[nodiscard]] double Y(Double value) const { return plot.bottom() - plot.height() * scale.ShareOf(value); }
};

Text ChartPicture::NumberOf(Double value) const {
  const Text text = CopiedText(value, DecimalsNeeded(value), look_.numbers);
  const Text shown = text.starts_with('-') ? "\u2212" + text.substr(1) : text;
  return look_.right_to_left ? kLeftToRight + shown : shown;
}

ChartPicture::Frame ChartPicture::FrameIn(const QRectF& area) const {
  const QFontMetricsF metrics(look_.font);
  const double unit = metrics.height() / 4;
  Frame frame;
  frame.line_height = metrics.height();
  const double top = area.top() + 2 * unit + metrics.height() * 1.5;
  const double bottom = area.bottom() - 2 * unit - metrics.height();
  const int most_ticks = std::max(2, static_cast<int>((bottom - top) / (metrics.height() * kTicksApart)) + 1);
  frame.scale = RoundScale(data_.Least(), data_.Most(), most_ticks);
  double widest = 0;
  for (const Double tick : frame.scale.Ticks())
    widest = std::max(widest, metrics.horizontalAdvance(ToQt(NumberOf(tick))));
  const double room = widest + 4 * unit;
  frame.plot = QRectF(QPointF(area.left() + (look_.right_to_left ? 2 * unit : room), top),
                      QPointF(area.right() - (look_.right_to_left ? room : 2 * unit), bottom));
  return frame;
}

QPen ChartPicture::PenOf(std::size_t line) const {
  // A line and that of the year before share colour and stroke.
  std::size_t field = 0;
  for (std::size_t each = 0; each < line; ++each) field += data_.lines[each + 1].year_before ? 0U : 1U;
  const bool dark = IsDark(look_.palette);
  const QColor accent =
      dark ? look_.palette.color(QPalette::Highlight).lighter(140) : look_.palette.color(QPalette::Highlight);
  const std::size_t colour = field % kOnLight.size();
  const QColor strong = colour == 0 ? accent : QColor(dark ? kOnDark[colour] : kOnLight[colour]);
  const bool faint = data_.lines[line].year_before;
  // On a dark ground the same share would be lost.
  const QColor weak = Mixed(strong, look_.palette.color(QPalette::Base), dark ? 0.3 : 0.55);
  QPen pen(faint ? weak : strong, faint ? 1.5 : 2.25);
  pen.setStyle(kStrokes[field % kStrokes.size()]);
  pen.setJoinStyle(Qt::RoundJoin);
  pen.setCapStyle(Qt::RoundCap);
  return pen;
}

void ChartPicture::Paint(QPainter& painter, const QRectF& area, std::optional<std::size_t> unit) const {
  painter.save();
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setFont(look_.font);
  painter.fillRect(area, look_.palette.color(QPalette::Base));
  const Frame frame = FrameIn(area);
  if (!data_.IsEmpty() && frame.plot.width() > 1 && frame.plot.height() > 1) {
    PaintLegend(painter, area);
    PaintAxis(painter, frame);
    PaintCuts(painter, frame);
    // What is faint lies below.
    for (const bool faint : {true, false}) {
      for (std::size_t line = 0; line < data_.lines.size(); ++line) {
        if (data_.lines[line].year_before == faint) PaintLine(painter, frame, line);
      }
    }
    if (unit && *unit < data_.units.size()) PaintUnit(painter, frame, *unit);
  }
  painter.restore();
}

void ChartPicture::PaintLegend(QPainter& painter, const QRectF& area) const {
  const QFontMetricsF metrics(look_.font);
  const double unit = metrics.height() / 4;
  const double middle = area.top() + unit + metrics.height() / 2;
  const double direction = look_.right_to_left ? -1 : 1;
  double x = look_.right_to_left ? area.right() - 2 * unit : area.left() + 2 * unit;
  // Each has its share of what is left, so that none is pushed out. That a line is the year before's stands at the end.
  const auto write = [&](const ChartLine& line, std::size_t lines_left) {
    const double room = (look_.right_to_left ? x - area.left() : area.right() - x) + unit;
    const double sample = metrics.height() * 1.5 + 5.5 * unit;
    const double share = (room - static_cast<double>(lines_left - 1) * sample) / static_cast<double>(lines_left);
    const auto where = line.year_before ? Qt::ElideMiddle : Qt::ElideRight;
    const QString text = metrics.elidedText(ToQt(line.name), where, std::max(share - 2 * unit, 0.0));
    const double width = metrics.horizontalAdvance(text);
    const double left = look_.right_to_left ? x - width : x;
    painter.drawText(QRectF(left, middle - metrics.height() / 2, width + 1, metrics.height()), Qt::AlignCenter, text);
    x += direction * (width + 4 * unit);
  };
  painter.setPen(look_.palette.color(QPalette::Text));
  QFont bold = look_.font;
  bold.setBold(true);
  painter.setFont(bold);
  const QString title = QFontMetricsF(bold).elidedText(ToQt(data_.title), Qt::ElideRight, area.width() / 3);
  const double title_width = QFontMetricsF(bold).horizontalAdvance(title);
  painter.drawText(QRectF(look_.right_to_left ? x - title_width : x, middle - metrics.height() / 2, title_width + 1,
                          metrics.height()),
                   Qt::AlignCenter, title);
  x += direction * (title_width + 6 * unit);
  painter.setFont(look_.font);
  for (std::size_t line = 0; line < data_.lines.size(); ++line) {
    const double sample = metrics.height() * 1.5;
    painter.setPen(PenOf(line));
    painter.drawLine(QPointF(x, middle), QPointF(x + direction * sample, middle));
    x += direction * (sample + 1.5 * unit);
    painter.setPen(look_.palette.color(QPalette::Text));
    write(data_.lines[line], data_.lines.size() - line);
  }
}

void ChartPicture::PaintAxis(QPainter& painter, const Frame& frame) const {
  const QColor text = look_.palette.color(QPalette::Text);
  const QColor ground = look_.palette.color(QPalette::Base);
  const double gap = frame.line_height / 3;
  for (const Double tick : frame.scale.Ticks()) {
    const double y = frame.Y(tick);
    const bool is_zero = std::abs(tick) < frame.scale.step / 2;
    painter.setPen(QPen(Mixed(text, ground, is_zero ? 0.35 : 0.85), is_zero ? 1.5 : 1));
    painter.drawLine(QPointF(frame.plot.left(), y), QPointF(frame.plot.right(), y));
    painter.setPen(Mixed(text, ground, 0.25));
    const QString number = is_zero ? QString("0") : ToQt(NumberOf(tick));
    const double width = frame.plot.left();
    const QRectF room = look_.right_to_left
                            ? QRectF(frame.plot.right() + gap, y - frame.line_height / 2, 1000, frame.line_height)
                            : QRectF(0, y - frame.line_height / 2, width - gap, frame.line_height);
    painter.drawText(
        room,
        static_cast<int>((look_.right_to_left ? Qt::AlignLeft : Qt::AlignRight) | Qt::AlignAbsolute | Qt::AlignVCenter),
        number);
  }
}

// Where names would run into each other, every second, third ... one is left: those that stand at the same distance.
std::size_t ChartPicture::NamesApart(const Frame& frame) const {
  const QFontMetricsF metrics(look_.font);
  const double step = frame.plot.width() / static_cast<double>(data_.units.size());
  for (std::size_t apart = 1; apart < data_.cuts.size(); ++apart) {
    bool fit = true;
    for (std::size_t index = 0; fit && index + apart < data_.cuts.size(); index += apart) {
      const ChartCut& cut = data_.cuts[index];
      const ChartCut& next = data_.cuts[index + apart];
      const double room = static_cast<double>(next.unit - cut.unit) * step - frame.line_height / 2;
      fit = (metrics.horizontalAdvance(ToQt(cut.name)) + metrics.horizontalAdvance(ToQt(next.name))) / 2 <= room;
    }
    if (fit) return apart;
  }
  return std::max<std::size_t>(data_.cuts.size(), 1);
}

// A cut stands before its first unit.
void ChartPicture::PaintCuts(QPainter& painter, const Frame& frame) const {
  const QFontMetricsF metrics(look_.font);
  const QColor text = look_.palette.color(QPalette::Text);
  const QColor ground = look_.palette.color(QPalette::Base);
  const double step = frame.plot.width() / static_cast<double>(data_.units.size());
  const double direction = look_.right_to_left ? -1 : 1;
  const std::size_t apart = NamesApart(frame);
  for (std::size_t index = 0; index < data_.cuts.size(); ++index) {
    const ChartCut& cut = data_.cuts[index];
    const double x = frame.X(cut.unit, data_.units.size(), look_.right_to_left) - direction * step / 2;
    painter.setPen(QPen(Mixed(text, ground, 0.85), 1));
    if (cut.unit > 0)
      painter.drawLine(QPointF(x, frame.plot.top()), QPointF(x, frame.plot.bottom() + frame.line_height / 4));
    const std::size_t next = index + 1 < data_.cuts.size() ? data_.cuts[index + 1].unit : data_.units.size();
    const double room = static_cast<double>(next - cut.unit) * step;
    const QString name = ToQt(cut.name);
    const double width = metrics.horizontalAdvance(name);
    const double middle = x + direction * room / 2;
    const bool leaves = middle + width / 2 > frame.plot.right() + frame.line_height ||
                        middle - width / 2 < frame.plot.left() - frame.line_height;
    if (index % apart != 0 || leaves) continue;
    painter.setPen(Mixed(text, ground, 0.25));
    painter.drawText(
        QRectF(middle - width / 2, frame.plot.bottom() + frame.line_height / 4, width + 1, frame.line_height),
        Qt::AlignCenter, name);
  }
}

void ChartPicture::PaintLine(QPainter& painter, const Frame& frame, std::size_t line) const {
  const auto& values = data_.lines[line].values;
  QPainterPath path;
  bool down = false;
  for (std::size_t unit = 0; unit < values.size(); ++unit) {
    if (!values[unit]) {
      down = false;
      continue;
    }
    const QPointF point(frame.X(unit, values.size(), look_.right_to_left), frame.Y(*values[unit]));
    down ? path.lineTo(point) : path.moveTo(point);
    down = true;
  }
  const QPen pen = PenOf(line);
  painter.setPen(pen);
  painter.setBrush(Qt::NoBrush);
  painter.drawPath(path);
  if (values.size() > kMostPoints) return;
  painter.setPen(Qt::NoPen);
  painter.setBrush(pen.color());
  for (std::size_t unit = 0; unit < values.size(); ++unit) {
    if (values[unit])
      painter.drawEllipse(QPointF(frame.X(unit, values.size(), look_.right_to_left), frame.Y(*values[unit])), 2.5, 2.5);
  }
}

void ChartPicture::PaintUnit(QPainter& painter, const Frame& frame, std::size_t unit) const {
  const QFontMetricsF metrics(look_.font);
  const double gap = metrics.height() / 4;
  const double x = frame.X(unit, data_.units.size(), look_.right_to_left);
  painter.setPen(QPen(look_.palette.color(QPalette::Text), 1));
  painter.drawLine(QPointF(x, frame.plot.top()), QPointF(x, frame.plot.bottom()));
  QStringList lines(ToQt(data_.units[unit]));
  for (std::size_t line = 0; line < data_.lines.size(); ++line) {
    const auto& value = data_.lines[line].values[unit];
    lines << QString("%1  %2").arg(ToQt(data_.lines[line].name), value ? ToQt(NumberOf(*value)) : QString("\u2013"));
    if (!value) continue;
    painter.setBrush(PenOf(line).color());
    painter.drawEllipse(QPointF(x, frame.Y(*value)), 4, 4);
  }
  double width = 0;
  for (const QString& line : lines) width = std::max(width, metrics.horizontalAdvance(line));
  QRectF box(x + 2 * gap, frame.plot.top(), width + 4 * gap,
             static_cast<double>(lines.size()) * metrics.height() + 2 * gap);
  if (box.right() > frame.plot.right()) box.moveRight(x - 2 * gap);
  if (box.left() < gap) box.moveLeft(gap);
  painter.setPen(QPen(Mixed(look_.palette.color(QPalette::Text), look_.palette.color(QPalette::Base), 0.5), 1));
  painter.setBrush(look_.palette.color(QPalette::ToolTipBase));
  painter.drawRoundedRect(box, gap, gap);
  painter.setPen(look_.palette.color(QPalette::ToolTipText));
  double y = box.top() + gap;
  for (const QString& line : lines) {
    painter.drawText(QRectF(box.left() + 2 * gap, y, width + 1, metrics.height()), Qt::AlignLeading | Qt::AlignVCenter,
                     line);
    y += metrics.height();
  }
}

std::optional<std::size_t> ChartPicture::UnitAt(const QRectF& area, double x) const {
  if (data_.IsEmpty()) return std::nullopt;
  const Frame frame = FrameIn(area);
  if (frame.plot.width() <= 0) return std::nullopt;
  double share = (x - frame.plot.left()) / frame.plot.width();
  if (look_.right_to_left) share = 1 - share;
  if (share < 0 || share >= 1) return std::nullopt;
  return static_cast<std::size_t>(share * static_cast<double>(data_.units.size()));
}

Text ChartPicture::WordsOf(std::size_t unit) const {
  if (unit >= data_.units.size()) return "";
  Text words = data_.units[unit];
  const char* separator = ": ";
  for (const ChartLine& line : data_.lines) {
    if (!line.values[unit]) continue;
    words += separator + line.name + " " + NumberOf(*line.values[unit]);
    separator = "; ";
  }
  return words;
}

}  // namespace tallybook::desktop
