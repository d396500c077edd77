// The main function of test programs with widgets: one application for all test cases, without a
// display.

#include "ZApplication.h"

#include <gtest/gtest.h>

int main(int count, char** arguments) {
  qputenv("QT_QPA_PLATFORM", "offscreen");
  qputenv("ULO_THEME", "light");
  ZApplication application(count, arguments);
  QApplication::setQuitOnLastWindowClosed(false);
  testing::InitGoogleTest(&count, arguments);
  return RUN_ALL_TESTS();
}
