#include "tests/tallybook/desktop/TextsPainted.h"

#include <QtGui/QPaintEngine>
#include <QtGui/QPainter>

namespace tallybook::desktop::testing {

class TextsPainted::Engine final : public QPaintEngine {
 public:
  Engine() : QPaintEngine(AllFeatures) {}

  [[nodiscard]] const std::vector<PaintedText>& Texts() const { return texts_; }

  bool begin(QPaintDevice* /*device*/) override { return true; }
  bool end() override { return true; }
  [[nodiscard]] Type type() const override { return User; }
  void updateState(const QPaintEngineState& /*state*/) override {}
  void drawTextItem(const QPointF& at, const QTextItem& item) override {
    const QRectF place(at.x(), at.y() - item.ascent(), item.width(), item.ascent() + item.descent());
    texts_.push_back({item.text(), painter()->combinedTransform().mapRect(place)});
  }
  // What is no text is not kept.
  void drawPixmap(const QRectF& /*to*/, const QPixmap& /*pixmap*/, const QRectF& /*from*/) override {}
  void drawPolygon(const QPointF* /*points*/, int /*count*/, PolygonDrawMode /*mode*/) override {}
  void drawPath(const QPainterPath& /*path*/) override {}

 private:
  std::vector<PaintedText> texts_;
};

TextsPainted::TextsPainted(QSize size) : size_(size), engine_(std::make_unique<Engine>()) {}

TextsPainted::~TextsPainted() = default;

const std::vector<PaintedText>& TextsPainted::Texts() const {
  return engine_->Texts();
}

QPaintEngine* TextsPainted::paintEngine() const {
  return engine_.get();
}

int TextsPainted::metric(PaintDeviceMetric metric) const {
  constexpr int kDotsPerInch = 96;
  constexpr double kMillimetresPerInch = 25.4;
  const auto millimetres = [](int dots) { return static_cast<int>(dots * kMillimetresPerInch / kDotsPerInch); };
  switch (metric) {
    case PdmWidth:
      return size_.width();
    case PdmHeight:
      return size_.height();
    case PdmWidthMM:
      return millimetres(size_.width());
    case PdmHeightMM:
      return millimetres(size_.height());
    case PdmDpiX:
    case PdmDpiY:
    case PdmPhysicalDpiX:
    case PdmPhysicalDpiY:
      return kDotsPerInch;
    case PdmDepth:
      return 32;
    case PdmDevicePixelRatio:
      return 1;
    default:
      return QPaintDevice::metric(metric);
  }
}

}  // namespace tallybook::desktop::testing
