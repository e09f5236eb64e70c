#include "tallybook/desktop/figures/ChartView.h"

#include <QtCore/QBuffer>
#include <QtGui/QAccessible>
#include <QtGui/QClipboard>
#include <QtGui/QImage>
#include <QtGui/QKeyEvent>
#include <QtGui/QMouseEvent>
#include <QtGui/QPainter>
#include <QtSvg/QSvgGenerator>
#include <QtWidgets/QApplication>
#include <QtWidgets/QStyle>
#include <QtWidgets/QStyleOptionFocusRect>
#include <utility>

#include "tallybook/desktop/figures/ChartPicture.h"

namespace tallybook::desktop {

namespace {

constexpr int kScaleOfImages = 2;

}  // namespace

ChartView::ChartView(QWidget* parent, const LocaleStyle& style) : QWidget(parent), style_(style) {
  setMouseTracking(true);
  setFocusPolicy(Qt::StrongFocus);
  setAccessibleName("Chart");
  setAutoFillBackground(false);
}

ChartView::~ChartView() = default;

void ChartView::Show(ChartData chart) {
  data_ = std::move(chart);
  if (unit_ && *unit_ >= data_.units.size()) unit_.reset();
  setAccessibleName("Chart, " + ToQt(data_.title));
  setAccessibleDescription("The arrow keys go through the values.");
  update();
}

const ChartData& ChartView::Data() const {
  return data_;
}

ChartPicture ChartView::Picture() const {
  return {data_, {palette(), font(), style_.numbers, isRightToLeft()}};
}

QString ChartView::UnitWords() const {
  return unit_ ? ToQt(Picture().WordsOf(*unit_)) : QString();
}

void ChartView::SetUnit(std::optional<std::size_t> unit) {
  if (unit == unit_) return;
  unit_ = unit;
  if (unit_) {
    setAccessibleDescription(UnitWords());
    QAccessibleEvent event(this, QAccessible::DescriptionChanged);
    QAccessible::updateAccessibility(&event);
  }
  update();
}

void ChartView::paintEvent(QPaintEvent* /*event*/) {
  QPainter painter(this);
  Picture().Paint(painter, rect(), unit_);
  if (data_.IsEmpty()) {
    painter.setPen(palette().color(QPalette::PlaceholderText));
    painter.drawText(rect(), Qt::AlignCenter | Qt::TextWordWrap, "The chart shows an account's figures over the year.");
  }
  if (!hasFocus()) return;
  QStyleOptionFocusRect option;
  option.initFrom(this);
  option.rect = rect().adjusted(1, 1, -1, -1);
  option.backgroundColor = palette().color(QPalette::Base);
  style()->drawPrimitive(QStyle::PE_FrameFocusRect, &option, &painter, this);
}

void ChartView::mouseMoveEvent(QMouseEvent* event) {
  SetUnit(Picture().UnitAt(rect(), event->position().x()));
}

void ChartView::leaveEvent(QEvent* /*event*/) {
  if (!hasFocus()) SetUnit(std::nullopt);
}

void ChartView::keyPressEvent(QKeyEvent* event) {
  if (data_.IsEmpty()) return QWidget::keyPressEvent(event);
  const std::size_t last = data_.units.size() - 1;
  const int forth = isRightToLeft() ? Qt::Key_Left : Qt::Key_Right;
  const int back = isRightToLeft() ? Qt::Key_Right : Qt::Key_Left;
  if (event->modifiers() != Qt::NoModifier && event->modifiers() != Qt::KeypadModifier)
    return QWidget::keyPressEvent(event);
  if (event->key() == forth) return SetUnit(unit_ ? std::min(*unit_ + 1, last) : 0);
  if (event->key() == back) return SetUnit(unit_ && *unit_ > 0 ? *unit_ - 1 : unit_ ? 0 : last);
  if (event->key() == Qt::Key_Home) return SetUnit(0);
  if (event->key() == Qt::Key_End) return SetUnit(last);
  if (event->key() == Qt::Key_Escape && unit_) return SetUnit(std::nullopt);
  QWidget::keyPressEvent(event);
}

void ChartView::changeEvent(QEvent* event) {
  if (event->type() == QEvent::PaletteChange || event->type() == QEvent::FontChange) update();
  QWidget::changeEvent(event);
}

bool ChartView::event(QEvent* event) {
  if (event->type() == QEvent::FocusIn || event->type() == QEvent::FocusOut) update();
  // Values are shown where the pointer or the keys are.
  const bool keys_leave = event->type() == QEvent::FocusOut && !underMouse();
  if (keys_leave && static_cast<QFocusEvent*>(event)->reason() != Qt::ActiveWindowFocusReason) SetUnit(std::nullopt);
  return QWidget::event(event);
}

QSize ChartView::minimumSizeHint() const {
  return {fontMetrics().height() * 12, fontMetrics().height() * 6};
}

QSize ChartView::sizeHint() const {
  return {fontMetrics().height() * 40, fontMetrics().height() * 12};
}

QImage ChartView::Image() const {
  QImage image(size() * kScaleOfImages, QImage::Format_ARGB32_Premultiplied);
  image.setDevicePixelRatio(kScaleOfImages);
  QPainter painter(&image);
  Picture().Paint(painter, rect(), std::nullopt);
  return image;
}

void ChartView::CopyPicture() {
  QApplication::clipboard()->setImage(Image());
}

std::string ChartView::PictureFor(const QString& path) const {
  QBuffer buffer;
  buffer.open(QIODevice::WriteOnly);
  if (path.endsWith(".svg", Qt::CaseInsensitive)) {
    QSvgGenerator generator;
    generator.setOutputDevice(&buffer);
    generator.setSize(size());
    generator.setViewBox(rect());
    generator.setTitle(ToQt(data_.title));
    QPainter painter(&generator);
    Picture().Paint(painter, rect(), std::nullopt);
  } else {
    Image().save(&buffer, "PNG");
  }
  return buffer.data().toStdString();
}

}  // namespace tallybook::desktop
