#include <gtest/gtest.h>

#include <QtWidgets/QApplication>

#include "desktop/program_style.h"

int main(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  qputenv("QT_SCALE_FACTOR", "1.5");  // pixels of the screen are not those of the layout
  QApplication::setStyle(new dravenna::ProgramStyle);
  const QApplication application(argc, argv);
  return RUN_ALL_TESTS();
}
