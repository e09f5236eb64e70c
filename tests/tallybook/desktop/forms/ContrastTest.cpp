#include <gtest/gtest.h>

#include "tallybook/desktop/forms/Contrast.h"

namespace tallybook::desktop {
namespace {

TEST(ContrastTest, GoesFromOneToTwentyOne) {
  EXPECT_NEAR(ContrastOf(Qt::white, Qt::black), 21, 0.001);
  EXPECT_NEAR(ContrastOf(Qt::red, Qt::red), 1, 0.001);
  EXPECT_NEAR(ContrastOf(QColor(0x77, 0x77, 0x77), Qt::white), 4.48, 0.01);
}

TEST(ContrastTest, AColourThatCanBeReadStaysAsItIs) {
  EXPECT_EQ(Readable(QColor(0, 0, 255), Qt::white), QColor(0, 0, 255));
}

TEST(ContrastTest, AColourThatCannotBeReadGetsLighterOnADarkGroundAndDarkerOnALightOne) {
  for (const QColor& ground : {QColor(30, 30, 32), QColor(240, 240, 240)}) {
    for (const QColor& colour : {QColor(0, 0, 255), QColor(255, 255, 0), ground}) {
      EXPECT_GE(ContrastOf(Readable(colour, ground), ground), kLeastContrastOfText) << colour.name().toStdString();
    }
  }
  EXPECT_GT(Readable(QColor(0, 0, 255), QColor(30, 30, 32)).lightness(), QColor(0, 0, 255).lightness());
}

}  // namespace
}  // namespace tallybook::desktop
