// What of the window lies outside the form's rules.
#include "desktop/color_pick_dialog.h"
#include "desktop/edit_box.h"
#include "desktop/placing.h"
#include "desktop/qt_text.h"
#include "desktop/search_box.h"
#include "desktop/twips.h"
#include "desktop/view/script_view.h"
#include "main_window_fixture.h"
#include "support/driver.h"

namespace dravenna {

namespace {

TEST_F(MainWindowTest, FileDialogsStartBesideTheScriptAndSpareIt) {
  for (const auto& pair : {std::pair(u"sub/gate.txt", "gate.lxf"), std::pair(u"sub/gate", "lxf")}) {
    const char16_t* const script = pair.first;
    const char* const name = pair.second;
    start(script);
    inDialog(&Principal::mnu_Export_Click, [&](QFileDialog& dialog) {
      EXPECT_EQ(fromQt(dialog.directory().absolutePath()), folder.path("sub"));
      EXPECT_EQ(dialog.findChild<QLineEdit*>(QStringLiteral("fileNameEdit"))->text(), QLatin1String(name));
      save(dialog);
    });
    EXPECT_EQ(folder.get(std::string("sub/") + name), "1:one\r\n2:two\r\n");
    inDialog(&Principal::mnu_Export_Click, [&](QFileDialog& dialog) {
      dialog.selectFile(QFileInfo(toQt(script)).fileName());
      said = 0;
      save(dialog);
    });
    EXPECT_EQ(said, 1);  // why the dialog comes back
    EXPECT_EQ(folder.get("sub/gate.txt"), folder.get("sub/gate"));
    inDialog(&Principal::mnu_Abrir_Click, [](QFileDialog& dialog) {
      auto* filters = dialog.findChild<QComboBox*>(QStringLiteral("fileTypeCombo"));
      EXPECT_EQ(filters->itemText(1), QStringLiteral("All files (*.*)"));
      const auto* list = dialog.findChild<QListView*>(QStringLiteral("listView"));
      const auto lists = [&](int count) {
        return QTest::qWaitFor([&] { return list->model()->rowCount(list->rootIndex()) == count; }, kPatience);
      };
      EXPECT_TRUE(lists(1));
      Q_EMIT filters->activated(1);
      EXPECT_TRUE(lists(3 + static_cast<int>(dialog.directory().exists(QStringLiteral("lxf")))));
    });
  }
}

TEST_F(MainWindowTest, IsShownWhenItsStartHasEnded) {
  Registry(store).SetRegValue(HKEY_LOCAL_MACHINE_ID, kDesktopKey, u"StatusPlace", u"0");
  Registry(store).SetRegValue(HKEY_LOCAL_MACHINE_ID, kDesktopKey, u"Zoom", u"2");
  start(u"no such file");
  EXPECT_EQ(saidBefore, 1);
  EXPECT_EQ(window->scriptView().zoomed(), 2);
  window->scriptView().zoom(-3);
  window->close();
  EXPECT_EQ(read(window->principal().registry(), settings::Zoom), u"-1");
  window->show();
  window->showStatus();
  EXPECT_EQ(window->findChild<QWidget*>(QStringLiteral("Status")), nullptr);
  window->resize(1, 1);
  QCoreApplication::processEvents();
  const QWidget& box = window->editBox();
  EXPECT_TRUE(box.parentWidget()->rect().contains(box.geometry()));

  // Below the smallest size the frame keeps its thickness.
  Principal& form = window->principal();
  form.form.Width = form.form.Height = 3000;
  form.form.ScaleWidth = 2900;
  form.form.ScaleHeight = 2400;
  form.Form_Resize();
  EXPECT_EQ(form.N.Width, 4400);
  EXPECT_EQ(form.N.Height + form.EDT.Height, 3400);
}

TEST_F(MainWindowTest, ThePickerTakesThePixelUnderThePointer) {
  start(u"sub/gate.txt");
  QTimer::singleShot(0, window.get(), [this] {
    ColorPickDialog& dialog = *window->colorPickDialog();
    auto& field = *dialog.findChild<QFrame*>(QStringLiteral("picBigBox"));
    const QImage seen = field.grab().toImage();
    const double scale = seen.devicePixelRatio();
    const QRectF inner(field.contentsRect());
    for (int at = 0; at < 300; ++at) {  // a diagonal of the screen's pixels
      const QPointF place = inner.topLeft() + QPointF(at, at) / scale;
      if (place.x() >= inner.left() + 254 || place.y() >= inner.top() + 254) break;
      QMouseEvent move(QEvent::MouseMove, place.toPoint(), place + field.pos(), field.mapToGlobal(place), Qt::NoButton,
                       Qt::NoButton, Qt::NoModifier);
      QCoreApplication::sendEvent(&field, &move);
      const auto color = window->principal().colorPick->iPreview.BackColor;
      EXPECT_EQ(toQt(color), seen.pixelColor((place * scale).toPoint())) << place.x();
    }
    dialog.reject();
  });
  window->handle([this] {
    std::int16_t key = kKeyF5;
    window->principal().Form_KeyDown(key, 0);
  });
}

TEST_F(MainWindowTest, AltIsForMenusAndButtons) {
  Registry(store).SetRegValue(HKEY_LOCAL_MACHINE_ID, kLangKey, u"btnNext", u"&Weiter");
  EditBox& box = start(u"sub/gate.txt").editBox();
  const auto press = [](QWidget& target, Qt::Key key, const char16_t* text, Qt::KeyboardModifiers modifiers) {
    QTest::sendKeyEvent(QTest::Click, &target, key, toQt(text), modifiers);
  };
  press(box, Qt::Key_A, u"a", Qt::AltModifier);
  press(box, Qt::Key_Left, u"", Qt::AltModifier);
  EXPECT_EQ(box.selectedText(), QStringLiteral("one"));
  press(box, Qt::Key_At, u"@", Qt::GroupSwitchModifier);
  press(box, Qt::Key_E, u"\u20AC", Qt::ControlModifier | Qt::AltModifier);
  QInputMethodEvent composed;
  composed.setCommitString(QStringLiteral("\u00E9\n"));
  QCoreApplication::sendEvent(&box, &composed);
  EXPECT_EQ(window->principal().EDT.Text(), u"@\u20AC\u00E9");

  window->handle([this] { window->principal().mnu_Search_Click(); });
  auto& word = *window->searchBox()->findChild<QWidget*>(QStringLiteral("txtSearch"));
  press(word, Qt::Key_T, u"t", Qt::NoModifier);
  press(word, Qt::Key_X, u"x", Qt::AltModifier);
  press(word, Qt::Key_W, u"w", Qt::AltModifier);
  EXPECT_EQ(window->principal().LastSearch, u"t");
  EXPECT_EQ(window->principal().N.SelText(), u"two");
}

TEST_F(MainWindowTest, TheSearchBoxSparesTheTextAndTheRightButtonItsMenu) {
  start(u"sub/gate.txt");
  window->handle([this] { window->principal().mnu_Search_Click(); });
  EXPECT_TRUE(QTest::qWaitForWindowExposed(window->searchBox(), kPatience));
  const auto onScreen = [](const QWidget& widget, QRect rect) {
    return QRect(widget.mapToGlobal(rect.topLeft()), rect.size());
  };
  ScriptView& view = window->scriptView();
  QWidget& page = *view.viewport();
  const QRect box = window->searchBox()->frameGeometry();
  EXPECT_TRUE(onScreen(page, page.rect()).contains(box));
  EXPECT_FALSE(onScreen(page, view.rectOfSelection()).intersects(box));
  const QRect all = page.rect();
  EXPECT_EQ(freeCorner(all, box.size(), QRect(all.width() / 2, 0, all.width(), 9)),
            QPoint(all.width() - box.width(), all.height() - box.height()));
  window->searchBox()->move(onScreen(page, view.rectOf(18)).topLeft());  // the next hit lies under it
  window->handle([this] { window->principal().Buscar(u"two", true); });
  EXPECT_EQ(window->principal().N.SelText(), u"two");
  EXPECT_FALSE(onScreen(page, view.rectOfSelection()).intersects(window->searchBox()->frameGeometry()));

  QString entries;
  view.onMenu = [&](QPoint, std::size_t offset) {
    entries = window->editBox().text();
    view.copyLine(offset);
  };
  QTest::mouseClick(&page, Qt::RightButton, {}, view.rectOf(18).center());
  EXPECT_EQ(entries, QStringLiteral("two"));  // it has been selected by then
  EXPECT_EQ(QGuiApplication::clipboard()->text(), QStringLiteral("mes \"two\";"));
}

TEST_F(MainWindowTest, TheErrorLinesAreShownOneAfterTheOther) {
  std::string script = "mes \"odd;\r\n" + std::string("mes \"one\";\r\n") + "mes \"odd too; // \"\r\n";
  for (int i = 0; i < 200; ++i) script += "end;\r\n";
  const std::size_t second = script.find("mes \"odd too"), last = script.size();
  folder.put("sub/gate.txt", script + "mes \"odd;");
  start(u"sub/gate.txt");
  const auto shown = [&] { return window->scriptView().placeShown() - 1; };
  for (const std::size_t line : {std::size_t{0}, second, last, std::size_t{0}}) {
    QTest::keyClick(&window->editBox(), Qt::Key_F9);
    EXPECT_EQ(shown(), line);
  }
  EXPECT_EQ(window->principal().N.SelText(), u"one");
  window->scriptView().verticalScrollBar()->setValue(100);
  QTest::keyClick(&window->editBox(), Qt::Key_F9);
  EXPECT_EQ(shown(), last);
}

TEST_F(MainWindowTest, AnOlderTextComesBackIntoTheBox) {
  folder.put("sub/gate.txt", "mes \"[who]\";\r\nmes \"one\";\r\nmes \"[who]\";\r\n");
  Principal& form = start(u"sub/gate.txt").principal();
  const auto type = [&](std::u16string_view text, std::int16_t key = 0, std::int16_t shift = 0) {
    window->handle([&] {
      form.EDT.userEdited(text, 0, 0);
      form.dispatchKey({key, shift, 0, Control::EDT});
    });
  };
  const auto choose = [&](int row) {
    QTimer::singleShot(0, window.get(), [row] {
      auto& dialog = *qobject_cast<QDialog*>(QApplication::activeModalWidget());
      auto& list = *dialog.findChild<QTreeWidget*>();
      list.setCurrentItem(list.topLevelItem(row));
      EXPECT_EQ(list.currentItem()->text(0), row == 0 ? QStringLiteral("2") : QStringLiteral("1"));
      dialog.accept();
    });
    QTest::keyClick(&window->editBox(), Qt::Key_F6);
  };
  type(u"a longer one", kKeyUp, kShift);  // to the title
  type(u"him", kKeyEnter);
  type(u"\"her\"");
  choose(0);
  const std::u16string later = u"mes \"['her']\";\r\nmes \"a longer one\";\r\nmes \"['her']\";\r\n";
  EXPECT_EQ(form.N.Text(), later);  // what was typed has been committed, as by a step
  EXPECT_EQ(form.N.SelText(), u"a longer one");
  EXPECT_EQ(window->editBox().text(), QStringLiteral("one"));
  EXPECT_NE(form.EDT.BackColor, 0U);
  QTest::keyClick(&window->editBox(), Qt::Key_Escape);
  EXPECT_EQ(form.EDT.Text(), u"a longer one");
  choose(1);
  EXPECT_EQ(form.EDT.Text(), u"who");
  QTest::keyClick(&window->editBox(), Qt::Key_Return);
  EXPECT_EQ(form.N.Text(), u"mes \"[who]\";\r\nmes \"a longer one\";\r\nmes \"[who]\";\r\n");
  EXPECT_EQ(form.changes().size(), 4U);
  form.Modified = false;
  window->open(folder.path("sub/gate"));
  EXPECT_TRUE(form.changes().empty());
}

TEST_F(MainWindowTest, ScreenReadersAreToldWhatColourTellsTheEye) {
  folder.put("sub/gate.txt", "mes \"[who]\";\r\nmes \"one\"; // said\r\nmes \"odd;\r\n");
  start(u"sub/gate.txt");
  const auto told = [this](QWidget& control) {
    window->showStatus();
    return QAccessible::queryAccessibleInterface(&control)->text(QAccessible::Description);
  };
  EditBox& box = window->editBox();
  EXPECT_EQ(told(box), QStringLiteral("Message. Text 1 of 1. Line 2"));
  QTest::keyClicks(&box, QStringLiteral("x"));
  EXPECT_EQ(told(box), QStringLiteral("Message. Text 1 of 1. Line 2. Changed, not committed"));
  QTest::keyClick(&box, Qt::Key_Up, Qt::ShiftModifier);
  EXPECT_EQ(told(box), QStringLiteral("Title. Text \u2013 of 1. Line 1"));
  EXPECT_EQ(told(window->scriptView()), QStringLiteral("Title. Line 1"));  // what is selected
  QTest::keyClick(&box, Qt::Key_F9);
  EXPECT_EQ(box.accessibleDescription(), QStringLiteral("Line with errors. Line 3. mes \"odd;"));
  window->scriptView().moveCaret(window->principal().N.Text().find(u"said"), false);
  EXPECT_EQ(told(window->scriptView()), QStringLiteral("Comment. Line 2"));
  window->scriptView().moveCaret(0, false);
  EXPECT_EQ(told(window->scriptView()), QStringLiteral("Script. Line 1"));
  window->handle([this] { window->principal().mnu_Search_Click(); });
  window->handle([this] { window->principal().Buscar(u"X", true); });
  auto* word = window->searchBox()->findChild<QWidget*>(QStringLiteral("txtSearch"));
  EXPECT_EQ(told(*word), QStringLiteral("Message. Text 1 of 1. Line 2. x"));
}

}  // namespace

}  // namespace dravenna
