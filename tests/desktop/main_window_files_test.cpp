// What reaches the window from outside: dropped files, what was not saved, pages, changes on disk.
#include "desktop/edit_box.h"
#include "desktop/qt_text.h"
#include "desktop/view/script_view.h"
#include "main_window_fixture.h"

namespace dravenna {

namespace {

TEST_F(MainWindowTest, ADroppedFileIsOpened) {
  start(u"sub/gate.txt");
  const auto local = [this](const char* name) { return QUrl::fromLocalFile(toQt(folder.path(name))); };
  const auto drop = [&](const char* name, QWidget& over) {
    QMimeData data;
    data.setText(QLatin1String(name));  // as file managers do
    const QUrl url = QUrl::fromEncoded(name);
    data.setUrls({url.isRelative() ? local(name) : url});
    if (data.urls().constFirst() == local("sub/gate")) data.setUrls({local("sub/gate"), local("sub/gate.txt")});
    QWidget* target = &over;  // the first one that takes it, as the toolkit does
    for (; target != nullptr; target = target->parentWidget()) {
      QDragEnterEvent enter(QPoint(), Qt::CopyAction | Qt::MoveAction, &data, Qt::LeftButton, Qt::NoModifier);
      if (target->acceptDrops()) QCoreApplication::sendEvent(target, &enter);
      if (target->acceptDrops() && enter.isAccepted()) break;
    }
    if (target == nullptr) return false;
    QDropEvent event(QPointF(), Qt::CopyAction | Qt::MoveAction, &data, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(target, &event);
    EXPECT_EQ(event.dropAction(), Qt::CopyAction);  // not moved away
    QCoreApplication::processEvents();
    return event.isAccepted();
  };
  Principal& form = window->principal();
  form.Modified = true;
  EXPECT_TRUE(drop("sub/gate", window->editBox()));  // the question is answered by Cancel
  EXPECT_EQ(form.ScriptPath, u"sub/gate.txt");
  form.Modified = false;
  for (const char* other : {"http://host/sub/gate", "sub", "sub/none"}) EXPECT_FALSE(drop(other, *window)) << other;
  EXPECT_TRUE(drop("sub/gate", window->editBox()));
  EXPECT_EQ(form.ScriptPath, folder.path("sub/gate"));
  EXPECT_EQ(window->editBox().text(), QStringLiteral("one"));
  window->showStatus();
  EXPECT_EQ(window->findChild<QLabel*>(QStringLiteral("Status.Notice"))->accessibleName(),
            QStringLiteral("Not opened: gate.txt"));
}

TEST_F(MainWindowTest, WhatWasNotSavedIsFoundAndRestored) {
  for (const char* variable : {"XDG_STATE_HOME", "LOCALAPPDATA"}) qputenv(variable, toQt(folder.path("")).toUtf8());
  rescue = makeRescueFolder();
  start(u"sub/gate.txt");
  window->handle([this] {
    window->principal().EDT.userEdited(u"uno", 0, 0);
    window->principal().dispatchKey({kKeyEnter, 0, 0, Control::EDT});
  });
  window.reset();
  start(u"sub/gate");
  window->showStatus();
  auto* button = window->findChild<QToolButton*>(QStringLiteral("Status.Rescued"));
  ASSERT_TRUE(button->isVisible());
  QTimer::singleShot(0, window.get(), [] {
    auto* list = qobject_cast<QDialog*>(QApplication::activeModalWidget());
    ASSERT_NE(list, nullptr);
    EXPECT_EQ(list->findChild<QPlainTextEdit*>()->toPlainText().trimmed(), QStringLiteral("one\n\u2192 uno"));
    list->accept();
  });
  button->click();
  EXPECT_EQ(window->principal().N.Text(), u"mes \"uno\";\r\nmes \"two\";\r\n");
  EXPECT_TRUE(window->principal().Modified);
  window->showStatus();
  EXPECT_FALSE(button->isVisible());
}

TEST_F(MainWindowTest, AClickOnTheCodePageLoadsTheScriptInAnother) {
  folder.put("sub/gate.txt", "mes \"caf\xC3\xA9 \xC3\x81\";\r\n");
  folder.put("sub/gate", "mes \"\x81\x8D\";\r\n");
  Principal& form = start(u"sub/gate.txt").principal();
  const auto page = [this] {
    window->showStatus();
    return window->findChild<QToolButton*>(QStringLiteral("Status.Page"));
  };
  const auto choose = [&](const QString& name) {
    page()->click();
    auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
    ASSERT_NE(menu, nullptr);
    for (QAction* action : menu->actions()) {
      if (action->text() != name) continue;
      menu->setActiveAction(action);
      return QTest::keyClick(menu, Qt::Key_Return);
    }
    ADD_FAILURE();
  };
  EXPECT_EQ(page()->accessibleName(), QStringLiteral("Windows-1252: looks like UTF-8"));
  // The question comes first, and what it calls off does not come with the next script.
  form.Modified = true;
  choose(QStringLiteral("UTF-8"));
  EXPECT_EQ(said, 1);
  EXPECT_TRUE(form.Modified);
  form.Modified = false;
  window->open(form.ScriptPath);
  EXPECT_EQ(form.N.SelText(), u"caf\u00C3\u00A9 \u00C3\xDC81");
  choose(QStringLiteral("UTF-8"));
  EXPECT_EQ(form.N.SelText(), u"caf\u00E9 \u00C1");
  EXPECT_EQ(page()->accessibleName(), QStringLiteral("UTF-8"));
  window->handle([&] { form.Salvar(); });
  EXPECT_EQ(folder.get("sub/gate.txt"), "mes \"caf\xC3\xA9 \xC3\x81\";\r\n");
  // The next script is in the page that was named.
  window->open(folder.path("sub/gate"));
  EXPECT_EQ(page()->accessibleName(), QStringLiteral("Windows-1252: 2 byte(s) unknown"));
}

TEST_F(MainWindowTest, TheStatusTellsWhatHappensOnDisk) {
  start(u"sub/gate.txt");
  const auto notice = [this] {
    QEvent activated(QEvent::ActivationChange);
    QCoreApplication::sendEvent(window.get(), &activated);
    window->showStatus();
    return window->findChild<QLabel*>(QStringLiteral("Status.Notice"))->accessibleName();
  };
  EXPECT_EQ(notice(), QString());
  QAccessibleInterface* part = QAccessible::queryAccessibleInterface(
      window->findChild<QWidget*>(QStringLiteral("Status.Notice")));  // the screen reader comes to it from the window
  for (; part->object() != window.get(); part = part->parent()) ASSERT_GE(part->parent()->indexOfChild(part), 0);
  const QString changed = toQt(desktop_words::ChangedOnDisk.fallback);
  const auto setTime = [&](int hours) {
    std::filesystem::last_write_time(folder.file("sub/gate.txt"),
                                     std::filesystem::file_time_type::clock::now() + std::chrono::hours(hours));
  };
  setTime(1);  // the same text
  EXPECT_EQ(notice(), QString());
  folder.put("sub/gate.txt", "mes \"two\";\r\nmes \"one\";\r\n");  // of the same size
  EXPECT_EQ(notice(), changed);
  EXPECT_TRUE(window->editBox().accessibleDescription().startsWith(changed));
  window->handle([this] { window->principal().Salvar(); });
  window->showStatus();
  EXPECT_FALSE(window->editBox().accessibleDescription().startsWith(changed));
  EXPECT_EQ(notice(), QString());
  setTime(2);
  EXPECT_EQ(notice(), QString());
  std::filesystem::remove(folder.file("sub/gate.txt"));
  EXPECT_EQ(notice(), changed);
  window->open(folder.path("sub/gate"));
  EXPECT_EQ(notice(), QString());
  for (int i = 0; i < 2; ++i) {
    window->principal().Modified = true;
    QCloseEvent close;
    QCoreApplication::sendEvent(window.get(), &close);
  }
  EXPECT_EQ(said, 3) << "twice that it was saved, and one question";
  EXPECT_EQ(process.opened.back(), folder.path("sub/gate"));
}

}  // namespace

}  // namespace dravenna
