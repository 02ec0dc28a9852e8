// The window with the real form, over files of its own.
#pragma once

#include "desktop/main_window.h"

#include <gtest/gtest.h>

#include <QtTest/QtTest>
#include <QtWidgets/QtWidgets>

#include "platform/rescue_folder.h"
#include "platform/scratch_folder.h"
#include "platform/system.h"
#include "support/memory_registry.h"
#include "support/scripted_platform.h"

namespace dravenna {

constexpr int kPatience = 60000;  // milliseconds

class MainWindowTest : public testing::Test {
 protected:
  void SetUp() override {
    std::filesystem::create_directory(folder.file("sub"));
    std::filesystem::current_path(folder.file(""));
    for (const char* name : {"sub/gate.txt", "sub/gate"}) folder.put(name, "mes \"one\";\r\nmes \"two\";\r\n");
  }
  void TearDown() override { std::filesystem::current_path("/"); }

  MainWindow& start(const char16_t* line) {
    process.line = line;
    window = std::make_unique<MainWindow>(*files, store, process, rescue.get());
    window->answerBy([this](std::u16string_view) { ++(window->isVisible() ? said : saidBefore); });
    window->start();
    EXPECT_TRUE(QTest::qWaitForWindowActive(window.get(), kPatience));
    return *window;
  }

  // Runs a menu entry; `act` works on its file dialog.
  void inDialog(void (Principal::*click)(), const std::function<void(QFileDialog&)>& act) {
    QTimer::singleShot(0, window.get(), [&] {
      auto* dialog = qobject_cast<QFileDialog*>(QApplication::activeModalWidget());
      ASSERT_NE(dialog, nullptr);
      act(*dialog);
      QTimer::singleShot(0, dialog, &QDialog::reject);  // if it is still there, or again
    });
    window->handle([&] { (window->principal().*click)(); });
  }
  static void save(QFileDialog& dialog) {
    QTimer::singleShot(0, &dialog, [] {
      auto* question = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
      if (question != nullptr) question->button(QMessageBox::Yes)->click();
    });
    dialog.findChild<QDialogButtonBox*>()->button(QDialogButtonBox::Save)->click();
  }

  ScratchFolder folder;
  MemoryRegistry store;
  ScriptedProcess process{u"/opt/dravenna"};
  std::unique_ptr<TextFiles> files = makeTextFiles(codePageByName("1252"));
  std::unique_ptr<RescueFolder> rescue;
  int saidBefore = 0, said = 0;  // boxes before there was a window, and since
  std::unique_ptr<MainWindow> window;
};

}  // namespace dravenna
