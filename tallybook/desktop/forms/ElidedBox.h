// A combo box that shows by an ellipsis that it has no room for all of what is chosen. One thread.
#pragma once

#include <QComboBox>

namespace tallybook::desktop {

class ElidedBox : public QComboBox {
 public:
  using QComboBox::QComboBox;

 protected:
  void paintEvent(QPaintEvent* event) override;
};

}  // namespace tallybook::desktop
