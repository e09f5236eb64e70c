// The start of a test program that shows windows: one application for all its tests. A test that opens a window closes
// it.
#include <QApplication>
#include <gtest/gtest.h>

int main(int argc, char** argv) {
  ::testing::InitGoogleTest(&argc, argv);
  QApplication application(argc, argv);
  // The last window of a test is not the last of the program.
  QApplication::setQuitOnLastWindowClosed(false);
  return RUN_ALL_TESTS();
}
