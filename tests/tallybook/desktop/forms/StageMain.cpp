// The start of a test program that carries its scripted conversations out on real widgets.
#include <QApplication>
#include <cstdio>
#include <gtest/gtest.h>

#include "tests/tallybook/desktop/forms/WidgetStage.h"

// Single tests may have nothing to click.
constexpr int kFew = 20;

int main(int argc, char** argv) {
  ::testing::InitGoogleTest(&argc, argv);
  QApplication application(argc, argv);
  QApplication::setQuitOnLastWindowClosed(false);
  // An animation would only be waited for.
  QApplication::setEffectEnabled(Qt::UI_AnimateCombo, false);
  QApplication::setEffectEnabled(Qt::UI_AnimateMenu, false);
  tallybook::desktop::testing::WidgetStage stage;
  tallybook::testing::UseStage(&stage);
  const int status = RUN_ALL_TESTS();
  tallybook::testing::UseStage(nullptr);
  // A run that never touched a widget has proved nothing.
  if (::testing::UnitTest::GetInstance()->test_to_run_count() > kFew &&
      tallybook::desktop::testing::WidgetStage::Acts() == 0) {
    std::fputs("no act was carried out on a widget\n", stderr);
    return 1;
  }
  return status;
}
