#include "desktop/edit_box.h"

#include <gtest/gtest.h>

#include <QtGui/QClipboard>
#include <QtGui/QGuiApplication>
#include <QtTest/QtTest>

#include "desktop/portal/font_name.h"
#include "desktop/qt_text.h"

namespace dravenna {

namespace {

class EditBoxTest : public testing::Test {
 protected:
  void SetUp() override {
    box.resize(300, 21);
    box.show();
    box.onUserEdit = [this] { ++edits; };
  }
  void paste(const QString& text) {
    QGuiApplication::clipboard()->setText(text);
    QTest::keyClick(&box, Qt::Key_V, Qt::ControlModifier);
  }

  TextBox model;
  EditBox box{model};
  int edits = 0;
};

TEST_F(EditBoxTest, TellsTheModelOnlyWhatTheUserDid) {
  int changes = 0;
  model.setText(u"one two");
  model.onChange = [&] { ++changes; };
  model.selectAll();
  box.synchronise();
  EXPECT_EQ(changes, 0);
  EXPECT_EQ(box.selectedText(), QStringLiteral("one two"));
  QTest::keyClicks(&box, QStringLiteral("x"));
  EXPECT_EQ(model.Text(), u"x");
  EXPECT_EQ(edits, 1);
  box.synchronise();
  EXPECT_EQ(box.cursorPosition(), 1);
  QTest::keyClick(&box, Qt::Key_Z, Qt::ControlModifier);  // the box's undo survives a synchronise
  EXPECT_EQ(model.Text(), u"one two");
}

TEST_F(EditBoxTest, ShowsTheBeginningOfALongTextAndItsColour) {
  model.ForeColor = 0xFFFF00;
  model.BackColor = 0x000080;
  model.setText(std::u16string(400, u'w'));
  model.selectAll();
  box.synchronise();
  EXPECT_EQ(box.cursorPosition(), 0);
  EXPECT_EQ(box.selectionLength(), 400);
  EXPECT_EQ(box.palette().color(QPalette::HighlightedText), QColor(0, 0xFF, 0xFF));
  QTest::keyClick(&box, Qt::Key_Left, Qt::ShiftModifier);  // still extends and shortens at the end
  EXPECT_EQ(box.selectionStart(), 0);
  EXPECT_EQ(box.selectionLength(), 399);
}

TEST_F(EditBoxTest, JoinsTheLinesOfAPaste) {
  model.setText(u"a\rb");  // a lone CR of the script is none
  model.setSelStart(3);
  box.synchronise();
  paste(QStringLiteral("cd\r\nef"));
  EXPECT_EQ(model.Text(), u"a\rbcd ef");
  paste(QStringLiteral("\n\u2028"));
  paste(QStringLiteral("\rg\u2029\nh\n"));
  EXPECT_EQ(model.Text(), u"a\rbcd efg h");
}

TEST_F(EditBoxTest, LeavesATextAloneThatIsTooLongForIt) {
  model.setText(std::u16string(2'000'000, u'x'));
  box.synchronise();
  QTest::keyClicks(&box, QStringLiteral("y"));
  paste(QStringLiteral("z"));
  box.takeOver();
  EXPECT_EQ(model.Text().size(), 2'000'000U);
  EXPECT_EQ(edits, 0);
  model.setText(u"short");
  box.synchronise();
  QTest::keyClick(&box, Qt::Key_End);
  QTest::keyClicks(&box, QStringLiteral("er"));
  EXPECT_EQ(model.Text(), u"shorter");
}

TEST(FontName, IsReadInBothForms) {
  const QFont usual(QStringLiteral("Sans"), 9);
  const auto read = [&](const char* name) {
    const QFont font = fontNamed(QLatin1String(name), usual);
    const QString size = QString::number(font.pointSizeF()), weight = QString::number(font.weight());
    return QStringList{font.family(), size, weight, font.italic() ? "i" : ""}.join(u'|').toStdString();
  };
  EXPECT_EQ(read(""), "Sans|9|400|");
  EXPECT_EQ(read("Cantarell 11.5"), "Cantarell|11.5|400|");
  EXPECT_EQ(read("Noto Sans, Semi-Bold Italic 12"), "Noto Sans|12|600|i");
  EXPECT_EQ(read("Bold 900"), "Bold|9|400|");
  EXPECT_EQ(read("Noto Sans,10,-1,5,75,1,0,0,0,0"), "Noto Sans|10|700|i");
}

}  // namespace

}  // namespace dravenna
