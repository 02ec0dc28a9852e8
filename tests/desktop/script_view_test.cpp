#include "desktop/view/script_view.h"

#include <gtest/gtest.h>

#include <QtGui/QAccessible>
#include <QtGui/QClipboard>
#include <QtGui/QGuiApplication>
#include <QtTest/QtTest>
#include <QtWidgets/QScrollBar>

#include "desktop/qt_text.h"
#include "desktop/selection_colors.h"

namespace dravenna {

namespace {

class ScriptViewTest : public testing::Test {
 protected:
  void fill(std::u16string_view text) {
    model.setSelText(text);
    model.setSelStart(0);
    view.resize(400, 200);
    view.show();
    view.synchronise();
  }
  std::size_t afterKey(Qt::Key key, Qt::KeyboardModifiers modifiers = {}) {
    QKeyEvent event(QEvent::KeyPress, key, modifiers);
    view.keyPressEvent(&event);
    return view.caret();
  }

  RichTextBox model;
  ScriptView view{model};
};

TEST_F(ScriptViewTest, KeysMoveOverLineEndsAndWholeCharacters) {
  fill(u"a\rb\r\n\U0001F600 word\r\n\r\nend");
  const std::size_t smile = 5;
  EXPECT_EQ(afterKey(Qt::Key_End), 3U);  // a lone CR is a character of its line
  EXPECT_EQ(afterKey(Qt::Key_Right), smile);
  EXPECT_EQ(afterKey(Qt::Key_Right), smile + 2);
  EXPECT_EQ(afterKey(Qt::Key_Left), smile);
  EXPECT_EQ(afterKey(Qt::Key_Left), 3U);
  EXPECT_EQ(afterKey(Qt::Key_End, Qt::ControlModifier), model.Text().size());
  EXPECT_EQ(afterKey(Qt::Key_Home, Qt::ShiftModifier), model.Text().size() - 3);
  EXPECT_EQ(fromQt(toQt(model.SelText())), u"end");
  EXPECT_EQ(afterKey(Qt::Key_Left), model.Text().size() - 3);  // to the front of the selection, which ends
  EXPECT_EQ(model.SelLength(), 0);
  EXPECT_EQ(afterKey(Qt::Key_A, Qt::ControlModifier), model.Text().size());
  afterKey(Qt::Key_C, Qt::ControlModifier);
  EXPECT_EQ(fromQt(QGuiApplication::clipboard()->text()), model.Text());
}

TEST_F(ScriptViewTest, WrapsAndFindsEveryOffsetUnderItsRectangle) {
  std::u16string text;
  for (int i = 0; i < 9; ++i) text += u"some words that wrap ";
  fill(text + u"\r\n");
  EXPECT_GT(view.rectOf(text.size() - 1).top(), view.rectOf(0).top());
  for (std::size_t at = 0; at < text.size(); at += 7) {
    const QRect rect = view.rectOf(at);
    ASSERT_EQ(view.offsetAt(QPoint(rect.left(), rect.center().y())), at);
  }
  const std::size_t below = afterKey(Qt::Key_Down);
  EXPECT_EQ(view.rectOf(below).left(), view.rectOf(0).left());
  EXPECT_EQ(afterKey(Qt::Key_Up), 0U);
}

TEST_F(ScriptViewTest, IndentsWrappedRowsAndSelectsThemWithoutGaps) {
  std::u16string text = u" \t ";
  for (int i = 0; i < 9; ++i) text += u"some words that wrap ";
  fill(text);
  const QRect first = view.rectOf(3);
  std::size_t below = 4;
  while (view.rectOf(below).top() == first.top()) ++below;
  EXPECT_EQ(view.rectOf(below).left(), first.left());
  EXPECT_EQ(view.offsetAt(QPoint(0, view.rectOf(below).center().y())), below);
  view.select(3, text.size());
  const QImage seen = view.viewport()->grab().toImage();
  for (int y = 0; y < 3 * first.height(); ++y) {
    bool filled = false;
    for (int x = first.left(); x < first.left() + 3 * first.width(); ++x) {
      filled = filled || seen.pixelColor(QPoint(x, y) * seen.devicePixelRatio()) == kSelectionGround;
    }
    EXPECT_TRUE(filled) << y;
  }
  const int height = first.height();
  view.select(3, 3);
  view.zoom(6);
  EXPECT_GT(view.rectOf(3).height(), height);
  view.zoom(0);
  EXPECT_EQ(view.rectOf(3).height(), height);
}

TEST_F(ScriptViewTest, ShowsWhatIsBoldAndASelectedLineEnd) {
  fill(u"a text\r\n");
  view.select(6, 8);
  const QImage selected = view.viewport()->grab().toImage();
  EXPECT_EQ(selected.pixelColor(view.rectOf(6).center() * selected.devicePixelRatio()), kSelectionGround);
  model.clear();
  fill(u"a text");
  const QImage plain = view.viewport()->grab().toImage();
  model.clear();
  model.setSelBold(true);
  fill(u"a text");
  EXPECT_NE(view.viewport()->grab().toImage(), plain);
}

TEST_F(ScriptViewTest, BringsSelectionsIntoViewUntilTheUserScrolls) {
  std::u16string text;
  for (int i = 0; i < 3000; ++i) text += u"a line of the script\r\n";
  fill(text);
  const auto show = [&](std::int32_t at, std::int32_t length) {
    model.setSelStart(at);
    model.setSelLength(length);
    view.synchronise();
    return view.rectOf(static_cast<std::size_t>(at));
  };
  for (const std::int32_t at : {22 * 1500, 22 * 2999, 22 * 20, 22 * 21, 0}) {
    const QRect rect = show(at, 6);
    EXPECT_FALSE(rect.isNull());
    const int margin = at == 0 ? 0 : 3 * rect.height();
    EXPECT_TRUE(view.viewport()->rect().contains(rect.adjusted(0, -margin, 0, 0))) << at;
    EXPECT_TRUE(at == 22 * 2999 || view.viewport()->rect().contains(rect.adjusted(0, 0, 0, margin))) << at;
  }
  view.verticalScrollBar()->setValue(2000);
  view.synchronise();
  EXPECT_TRUE(view.rectOf(0).isNull());
  view.verticalScrollBar()->setValue(view.verticalScrollBar()->maximum());
  EXPECT_FALSE(view.rectOf(text.size()).isNull());
  view.resize(300, 150);
  show(22 * 700, 6);
  view.resize(250, 90);
  EXPECT_FALSE(view.rectOf(std::size_t{22} * 700).isNull());
}

TEST_F(ScriptViewTest, SpeaksTheModelsOffsetsAndLines) {
  fill(u"mes \"x\";\r\nab\rc\r\n");
  QAccessibleTextInterface& text = *QAccessible::queryAccessibleInterface(&view)->textInterface();
  int start = -1, end = -1;
  EXPECT_EQ(text.characterCount(), static_cast<int>(model.Text().size()));
  EXPECT_EQ(text.textAtOffset(12, QAccessible::LineBoundary, &start, &end), QStringLiteral("ab\rc\r\n"));
  EXPECT_EQ(start, 10);
  EXPECT_EQ(end, 16);
  EXPECT_EQ(text.textBeforeOffset(12, QAccessible::LineBoundary, &start, &end), QStringLiteral("mes \"x\";\r\n"));
  EXPECT_EQ(text.textAtOffset(1, QAccessible::WordBoundary, &start, &end), QStringLiteral("mes"));
  EXPECT_EQ(text.textAfterOffset(14, QAccessible::CharBoundary, &start, &end), QString());
  text.setSelection(0, 4, 7);
  EXPECT_EQ(model.SelStart(), 4);
  EXPECT_EQ(model.SelLength(), 3);
}

TEST_F(ScriptViewTest, StaysWithAnEmptyModel) {
  fill(u"");
  for (const auto key : {Qt::Key_Left, Qt::Key_Right, Qt::Key_Up, Qt::Key_Down, Qt::Key_PageDown, Qt::Key_End}) {
    EXPECT_EQ(afterKey(key), 0U);
  }
  QTest::mouseDClick(view.viewport(), Qt::LeftButton, {}, QPoint(50, 50));
  fill(u"one\r\ntwo");
  model.setSelStart(8);
  view.synchronise();
  model.clear();
  view.synchronise();
  EXPECT_FALSE(view.grab().isNull());
  EXPECT_EQ(view.caret(), 0U);
}

}  // namespace

}  // namespace dravenna
