#include <gtest/gtest.h>

#include <QtWidgets/QApplication>

#include "desktop/program_style.h"

int main(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  QApplication::setStyle(new dravenna::ProgramStyle);
  const QApplication application(argc, argv);
  return RUN_ALL_TESTS();
}
