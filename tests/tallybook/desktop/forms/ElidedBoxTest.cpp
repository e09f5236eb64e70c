#include <algorithm>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tallybook/desktop/forms/ElidedBox.h"
#include "tests/tallybook/desktop/TextsPainted.h"

namespace tallybook::desktop {
namespace {

using testing::PaintedText;
using testing::TextsPainted;

constexpr const char* kLong = "Every figure of every account and of every field";

std::vector<PaintedText> PaintedBy(ElidedBox& box) {
  TextsPainted device(box.size());
  box.render(&device);
  return device.Texts();
}

TEST(ElidedBoxTest, ShowsByAnEllipsisThatItHasNoRoomForAllAndPaintsNothingBeyondItsEdge) {
  ElidedBox box;
  box.addItem(kLong);
  box.resize(150, box.sizeHint().height());
  const auto texts = PaintedBy(box);
  ASSERT_EQ(texts.size(), 1U);
  EXPECT_TRUE(texts[0].text.endsWith(QChar(0x2026))) << texts[0].text.toStdString();
  EXPECT_TRUE(texts[0].text.startsWith("Every fig")) << texts[0].text.toStdString();
  EXPECT_LE(texts[0].place.right(), box.width());
  EXPECT_EQ(box.currentText().toStdString(), kLong) << "what is chosen stays what it is";
}

TEST(ElidedBoxTest, ShowsAllOfItWhereThereIsRoom) {
  ElidedBox box;
  box.addItem(kLong);
  box.ensurePolished();
  box.resize(box.sizeHint());
  const auto texts = PaintedBy(box);
  ASSERT_EQ(texts.size(), 1U);
  EXPECT_EQ(texts[0].text.toStdString(), kLong);
}

}  // namespace
}  // namespace tallybook::desktop
