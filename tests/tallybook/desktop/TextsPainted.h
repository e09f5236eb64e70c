// Something to paint on that keeps the texts and their places, so that a test can say what a reader sees.
#pragma once

#include <QtCore/QRectF>
#include <QtCore/QString>
#include <QtGui/QPaintDevice>
#include <memory>
#include <vector>

namespace tallybook::desktop::testing {

struct PaintedText {
  QString text;
  QRectF place;
};

class TextsPainted : public QPaintDevice {
 public:
  explicit TextsPainted(QSize size);
  ~TextsPainted() override;
  TextsPainted(const TextsPainted&) = delete;
  TextsPainted& operator=(const TextsPainted&) = delete;

  // In the order in which they were painted.
  [[nodiscard]] const std::vector<PaintedText>& Texts() const;

  [[nodiscard]] QPaintEngine* paintEngine() const override;

 protected:
  [[nodiscard]] int metric(PaintDeviceMetric metric) const override;

 private:
  class Engine;
  QSize size_;
  std::unique_ptr<Engine> engine_;
};

}  // namespace tallybook::desktop::testing
