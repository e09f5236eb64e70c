// The chart in the window: which fields are shown, values under the pointer and by the arrow keys, and the picture for
// the clipboard or a file.
#pragma once

#include <QtWidgets/QWidget>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "tallybook/desktop/figures/ChartData.h"
#include "tallybook/desktop/forms/LocaleStyle.h"

namespace tallybook::desktop {

class ChartView final : public QWidget {
 public:
  ChartView(QWidget* parent, const LocaleStyle& style);
  ~ChartView() override;

  void Show(ChartData chart);
  [[nodiscard]] const ChartData& Data() const;
  // The unit whose values are shown; none while nobody asked.
  [[nodiscard]] std::optional<std::size_t> Unit() const { return unit_; }
  // What is shown of it, in words.
  [[nodiscard]] QString UnitWords() const;

  void CopyPicture();
  // The bytes of a file of that name: a vector picture for ".svg", else a PNG of twice the size.
  [[nodiscard]] std::string PictureFor(const QString& path) const;

  [[nodiscard]] QSize minimumSizeHint() const override;
  [[nodiscard]] QSize sizeHint() const override;

 protected:
  void paintEvent(QPaintEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;
  void leaveEvent(QEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void changeEvent(QEvent* event) override;
  bool event(QEvent* event) override;

 private:
  [[nodiscard]] class ChartPicture Picture() const;
  [[nodiscard]] QImage Image() const;
  void SetUnit(std::optional<std::size_t> unit);

  LocaleStyle style_;
  ChartData data_;
  std::optional<std::size_t> unit_;
};

}  // namespace tallybook::desktop
